// A build of a phone's folder: HEIC, AVIF and JPEG XL photos get web sizes
// as JPEG under their copies' names, every scaled picture an AVIF beside it,
// and "avif no" writes none and makes nothing again.
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <string>
#include <tuple>
#include <vector>
#include <vips/vips8>

#include "tests/support/e2e.h"
#include "tests/support/host_checks.h"

namespace vf::test {
namespace {

using Texts = std::vector<std::string>;

std::string Loader(const TempTree& tree, const std::string& relative) {
  return vips::VImage::new_from_file(tree.Path(relative).c_str()).get_string("vips-loader");
}

TEST(PhoneSite, PhonePhotosGetJpegSizesAndEveryScaledPictureAnAvif) {
  TempTree tree;
  CopyTemplates(tree, "c/PROG");
  tree.Write("c/PROG/DIMENSIONI.TXT", "mini 48\r\nweb 96\r\n");
  tree.MakeFolder("c/foto");
  tree.MakeFolder("c/sito");
  Painted(150, 100, kOrange).write_to_file(tree.Path("base.png").c_str());
  const std::string base =
      "'" + tree.Path("base.png").string() + "' '" + tree.Path("c/foto").string();
  Output("vips heifsave " + base + "/a.heic' --compression hevc");
  Output("vips heifsave " + base + "/b.avif' --compression av1");
  Output("vips jxlsave " + base + "/c.jxl' 2>&1");
  Output("vips jpegsave " + base + "/d.jpg'");
  tree.Write("c/foto/e.heic", "non è una foto");
  // The copies' names end in the sources' last three characters.
  Texts photos = {"a.heic", "b.avif", "d.jpg", "e.heic"};
  std::map<std::string, std::string> copy = {{"a.heic", "img_001.eic"},
                                             {"b.avif", "img_002.vif"},
                                             {"d.jpg", "img_003.jpg"},
                                             {"e.heic", "img_004.eic"}};
  if (tree.Exists("c/foto/c.jxl")) {
    photos.push_back("c.jxl");
    copy["c.jxl"] = "img_005.jxl";
  }
  std::string script = "drive C c\nprogram C:\\PROG\nstart\n";
  for (const std::string& photo : photos) script += "add C:\\foto\\" + photo + "\n";
  script += "set txtNUM_FILE " + std::to_string(photos.size()) +
            "\nset txtNOME_FILE_HTM C:\\sito\\index.htm\nanswer yes\nclick Command1\n";
  RunResult r = RunScript(script, tree.root());
  ASSERT_EQ(r.status, 0) << r.err;
  std::string rewritten = "{CR}C:\\foto\\a.heic{CR}C:\\foto\\b.avif";
  if (copy.contains("c.jxl")) rewritten += "{CR}C:\\foto\\c.jxl";
  EXPECT_EQ(r.Messages(),
            (Texts{"Immagini non riducibili, copiate come sono:{CR}C:\\foto\\e.heic - non è "
                   "un'immagine",
                   "Queste foto sono state scritte di nuovo senza i loro dati:" + rewritten +
                       "{CR}{CR}Queste foto sono pubblicate con i loro dati, posizione "
                       "compresa:{CR}C:\\foto\\e.heic"}));
  Texts expected;
  for (const char* size : {"mini/", "web/"}) {
    for (const auto& [photo, name] : copy) {
      const std::string derived = "c/sito/dir_0001/" + std::string(size) + name;
      const std::string avif = name.substr(0, 7) + ".avif";
      expected.push_back(size + name);
      if (photo == "e.heic") {
        EXPECT_EQ(tree.Read(derived), "non è una foto");
        continue;
      }
      expected.push_back(size + avif);
      SCOPED_TRACE(derived);
      const vips::VImage made = vips::VImage::new_from_file(tree.Path(derived).c_str());
      EXPECT_EQ(std::tuple(Loader(tree, derived), made.width()),
                std::tuple(std::string("jpegload"), size[0] == 'm' ? 48 : 96));
      EXPECT_EQ(Loader(tree, "c/sito/dir_0001/" + std::string(size) + avif), "heifload");
    }
  }
  Texts found;
  for (const std::string& name : tree.Tree("c/sito/dir_0001")) {
    if ((name.starts_with("mini/") || name.starts_with("web/")) && name.back() != '/') {
      found.push_back(name);
    }
  }
  std::sort(expected.begin(), expected.end());
  EXPECT_EQ(found, expected);

  // With "avif no" the next build writes no AVIF and makes nothing again.
  std::map<std::string, Stamp> before;
  for (const std::string& name : found)
    before[name] = StampOf(tree.Path("c/sito/dir_0001/" + name));
  tree.Write("c/PROG/DIMENSIONI.TXT", "mini 48\r\nweb 96\r\navif no\r\n");
  r = RunScript(script, tree.root());
  ASSERT_EQ(r.status, 0) << r.err;
  EXPECT_EQ(r.Messages().size(), 2u);
  for (const auto& [name, stamp] : before) {
    EXPECT_EQ(StampOf(tree.Path("c/sito/dir_0001/" + name)), stamp) << name;
  }
}

}  // namespace
}  // namespace vf::test
