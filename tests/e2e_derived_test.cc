// End-to-end tests of the web-sized pictures that a build makes when the
// template set asks for them.
#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "tests/support/e2e.h"

namespace vf::test {
namespace {

std::string Picture(const std::string& name) {
  std::ifstream in(std::string(VF_SOURCE_DIR) + "/templates/" + name, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), {});
}

const char kBuild[] =
    "drive C c\nprogram C:\\PROG\nstart\nset txtMAX_N_FILES 9\n"
    "add C:\\foto\\a.jpg\nadd C:\\foto\\rotta.jpg\nadd C:\\foto\\note.txt\nadd C:\\foto\\b.JPEG\n"
    "set txtNUM_FILE 4\nset txtNOME_FILE_HTM C:\\sito\\index.htm\n";

TEST(Derived, SizesFileMakesScaledPicturesAndTellsWhatItOnlyCopied) {
  TempTree tree;
  WriteFixtureTemplates(tree, "c/PROG");
  tree.Write("c/foto/a.jpg", Picture("diaposit.jpg"));
  tree.Write("c/foto/b.JPEG", Picture("film-1a.jpg"));
  tree.Write("c/foto/rotta.jpg", "non sono una foto");
  tree.Write("c/foto/note.txt", "testo");
  tree.MakeFolder("c/sito");

  // Without the sizes file the build writes what it always wrote.
  RunResult r = RunScript(std::string(kBuild) + "click Command1\n", tree.root());
  ASSERT_EQ(r.status, 0) << r.err;
  const std::vector<std::string> before = tree.Tree("c/sito");
  for (const std::string& name : tree.Tree("c/sito/dir_0001")) {
    EXPECT_EQ(name.find('/'), std::string::npos) << name;
  }
  EXPECT_EQ(r.out.find("MSG:"), std::string::npos) << r.out;

  tree.Write("c/PROG/DIMENSIONI.TXT", "# prove\r\nmini 100\r\nweb 0\r\nWeb 1600\r\n");
  r = RunScript(std::string(kBuild) + "answer yes\nclick Command1\n", tree.root());
  ASSERT_EQ(r.status, 0) << r.err;
  // One message for the bad line, one for the picture only copied, then the
  // preview question: the pass comes after the site and before the question.
  const size_t righe = r.out.find("MSG: Righe non valide nel file DIMENSIONI.TXT");
  const size_t copiate = r.out.find("MSG: Immagini non riducibili, copiate come sono:");
  const size_t domanda = r.out.find("ASK: Visualizzo la pagina creata");
  ASSERT_NE(righe, std::string::npos) << r.out;
  EXPECT_NE(r.out.find("{CR}riga 3: web 0\n"), std::string::npos) << r.out;
  ASSERT_NE(copiate, std::string::npos) << r.out;
  EXPECT_LT(righe, copiate);
  EXPECT_LT(copiate, domanda);
  EXPECT_NE(r.out.find("{CR}C:\\sito\\dir_0001\\mini\\img_002.jpg"), std::string::npos) << r.out;

  for (const char* size : {"mini", "web"}) {
    const std::string folder = std::string("c/sito/dir_0001/") + size + "/";
    const std::string a = tree.Read(folder + "img_001.jpg");
    ASSERT_GT(a.size(), 2u) << folder;
    EXPECT_EQ(a.substr(0, 2), "\xFF\xD8");
    // The scaled picture of a picture smaller than the size is not larger.
    EXPECT_EQ(tree.Read(folder + "img_002.jpg"), "non sono una foto");
    EXPECT_FALSE(tree.Exists(folder + "img_003.txt"));
    EXPECT_TRUE(tree.Exists(folder + "img_004.peg"));
  }
  EXPECT_LT(tree.Read("c/sito/dir_0001/mini/img_001.jpg").size(),
            tree.Read("c/sito/dir_0001/img_001.jpg").size());
  // Nothing of the pass beside the pages or above the album folder.
  for (const std::string& name : tree.Tree("c/sito")) {
    if (std::find(before.begin(), before.end(), name) != before.end()) continue;
    EXPECT_TRUE(name.rfind("dir_0001/mini/", 0) == 0 || name.rfind("dir_0001/web/", 0) == 0 ||
                name.rfind("dir_0001/.", 0) == 0)
        << name;
  }
}

}  // namespace
}  // namespace vf::test
