// A build loses nothing: sources keep their bytes, templates stay as they
// are, an older site keeps what the new build does not write, and no file or
// folder goes, also on a full disk or a read-only drive. Real folders, run
// through the runner.
#include <gtest/gtest.h>

#include <map>
#include <set>
#include <string>
#include <vector>

#include "platform/case_fold.h"
#include "tests/support/e2e.h"

namespace vf::test {
namespace {

using Texts = std::vector<std::string>;
using Snapshot = std::map<std::string, std::string>;  // path -> bytes ("" for a folder)
using Blind = std::map<std::string, std::multiset<std::string>>;

Snapshot Take(const TempTree& tree) {
  Snapshot shot;
  for (const std::string& p : tree.Tree()) shot[p] = p.back() == '/' ? "" : tree.Read(p);
  return shot;
}

// The files and folders under `prefix` keyed ignoring case, as the program
// sees them; names that clash keep all their contents.
Blind CaseBlind(const Snapshot& shot, const std::string& prefix) {
  Blind out;
  for (const auto& [path, bytes] : shot)
    if (ToLower(path).starts_with(ToLower(prefix))) out[ToLower(path)].insert(bytes);
  return out;
}

// Paths of `from` that nothing of `to` matches ignoring case, outside `allowed`.
Texts Unmatched(const Snapshot& from, const Snapshot& to, const std::string& allowed = "\n") {
  std::set<std::string> present;
  for (const auto& kept : to) present.insert(ToLower(kept.first));
  Texts out;
  for (const auto& entry : from) {
    const std::string key = ToLower(entry.first);
    if (present.count(key) == 0 && !key.starts_with(ToLower(allowed))) out.push_back(entry.first);
  }
  return out;
}

// Every path under `prefix` is there after with the same name and bytes.
void Unchanged(const Snapshot& before, const Snapshot& after, const std::string& prefix) {
  for (const auto& [path, bytes] : before) {
    if (!path.starts_with(prefix)) continue;
    EXPECT_EQ(after.count(path) ? after.at(path) : "<missing>", bytes) << path;
  }
}

std::string Build(const std::string& setup, const std::string& folder, const std::string& page,
                  const std::string& options = "") {
  return setup + "start\n" + options + "set txtPATH_RICERCA " + folder + "\nclick cmdCONFERMA\n" +
         (page.empty() ? "" : "set txtNOME_FILE_HTM " + page + "\n") + "click Command1\n";
}

// Names in capitals and small letters, subfolders, a file that is no
// picture, and names that differ only in case.
void WriteSources(const TempTree& tree, const std::string& root) {
  for (int i = 1; i <= 12; ++i)
    tree.Write(root + (i < 10 ? "/P0" : "/P") + std::to_string(i) + ".JPG",
               "picture " + std::to_string(i) + std::string(i * 100, 'x'));
  for (auto [name, bytes] : {std::pair{"/note.txt", "not a picture"},
                             {"/SUB/Q01.JPG", "q one"},
                             {"/SUB/q02.jpg", "q two"},
                             {"/Sub2/Deep/R01.Jpg", "r one"},
                             {"/Doppi/a.jpg", "small a"},
                             {"/Doppi/A.JPG", "capital A"},
                             {"/Misti/B.jpg", "B dot jpg"},
                             {"/Misti/b.JPG", "b dot JPG"}})
    tree.Write(root + name, bytes);
}

TEST(NothingLost, SourcesTakeTheChosenCaseButNeverAnotherFilesName) {
  const struct {
    const char* option;
    Texts renamed;
  } cases[] = {
      {"", {"Foto/p01.jpg", "Foto/SUB/q01.jpg", "Foto/Sub2/Deep/r01.jpg", "Foto/Misti/b.jpg"}},
      {"click Option1\n", {"Foto/P01.JPG", "Foto/SUB/Q02.JPG", "Foto/Misti/B.JPG"}}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.option);
    TempTree tree;
    WriteSources(tree, "Foto");
    CopyTemplates(tree, "PROG");
    tree.MakeFolder("Sito");
    const Snapshot before = Take(tree);
    RunResult r = RunScript(
        Build("drive C .\nprogram C:\\PROG\n", "C:\\Foto", "C:\\Sito\\index.htm", c.option),
        tree.root());
    ASSERT_EQ(r.status, 0) << r.err;
    EXPECT_TRUE(r.Has("ASK: Visualizzo la pagina creata ")) << r.out;
    EXPECT_EQ(r.Messages(), Texts{});
    const Snapshot after = Take(tree);
    EXPECT_EQ(Unmatched(before, after), Texts{});
    EXPECT_EQ(Unmatched(after, before, "Sito/"), Texts{});
    EXPECT_EQ(CaseBlind(after, "Foto/"), CaseBlind(before, "Foto/"));
    for (const std::string& name : c.renamed) EXPECT_TRUE(tree.Exists(name)) << name;
    // A clash keeps both files under their names.
    Unchanged(before, after, "Foto/Doppi/");
    Unchanged(before, after, "PROG/");
    // Each picture was copied once into the album folders.
    std::multiset<std::string> sources, copies;
    for (const auto& [path, bytes] : before) {
      if (path.starts_with("Foto/") && ToLower(path).ends_with(".jpg")) sources.insert(bytes);
    }
    for (const auto& [path, bytes] : after) {
      if (ToLower(path).starts_with("sito/dir_") && ToLower(path).ends_with(".jpg") &&
          ToLower(path).find("/img_") != std::string::npos) {
        copies.insert(bytes);
      }
    }
    EXPECT_EQ(copies, sources);
  }
}

TEST(NothingLost, ABuildIntoTheProgramFolderKeepsEveryTemplate) {
  // The default page is the program folder's index. A site in the folder of
  // the per-picture templates would write each page over its template: that
  // page is refused, and the run stops there.
  const std::string over =
      "Errore nella copia singoli HTML ERR= 75 - Errore di accesso al percorso/file{CR}{CR}Copia ";
  const struct {
    bool capitals;
    std::string page, asked, message, written;
  } cases[] = {
      {false, "", "c:\\prog\\index.htm", "", "PROG/dir_0002/img_002.jpg"},
      {false, "C:\\PROG\\VETRINA-FOTO_DEFAULT\\index.htm",
       "c:\\prog\\vetrina-foto_default\\index.htm",
       over + "c:\\prog\\vetrina-foto_default\\dir_0001\\img_001.htm "
              "c:\\prog\\vetrina-foto_default\\dir_0001\\img_001.htm",
       "PROG/VETRINA-FOTO_DEFAULT/dir_0001/img_001.jpg"},
      {true, "C:\\PROG\\VETRINA-FOTO_DEFAULT\\index.htm",
       "C:\\PROG\\VETRINA-FOTO_DEFAULT\\INDEX.HTM",
       over + "C:\\PROG\\VETRINA-FOTO_DEFAULT\\DIR_0001\\IMG_001.HTM "
              "C:\\PROG\\VETRINA-FOTO_DEFAULT\\DIR_0001\\IMG_001.HTM",
       "PROG/VETRINA-FOTO_DEFAULT/DIR_0001/IMG_001.JPG"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.asked);
    TempTree tree;
    CopyTemplates(tree, "PROG");
    for (int i = 1; i <= 11; ++i) tree.Write("Foto/P" + std::to_string(i) + ".JPG", "p");
    const Snapshot before = Take(tree);
    const std::string setup = "drive C .\nprogram C:\\PROG\n";
    const std::string option = c.capitals ? "click Option1\n" : "";
    RunResult r = RunScript(Build(setup, "C:\\Foto", c.page, option), tree.root());
    ASSERT_EQ(r.status, 0) << r.err;
    EXPECT_EQ(r.Messages(), c.message.empty() ? Texts{} : Texts{c.message});
    EXPECT_TRUE(r.out.ends_with("ASK: Visualizzo la pagina creata " + c.asked + " (S/N)  -> NO\n"))
        << r.out;
    // A second build finds the page and is let go on.
    r = RunScript(Build(setup, "C:\\Foto", c.page, option + "answer yes\n"), tree.root());
    EXPECT_TRUE(r.Has("ASK: Visualizzo la pagina creata ")) << r.out;
    EXPECT_TRUE(tree.Exists(c.written)) << c.written;
    // Every template keeps its bytes, and those beside the program their
    // names: a site file copied onto itself changes nothing.
    const Snapshot after = Take(tree);
    for (const auto& [path, bytes] : CaseBlind(before, "PROG/"))
      EXPECT_EQ(CaseBlind(after, path)[path], bytes) << path;
    for (const auto& [path, bytes] : before) {
      if (path.starts_with("PROG/") && path.find('/', 5) == std::string::npos) {
        EXPECT_EQ(after.count(path) ? after.at(path) : "<missing>", bytes) << path;
      }
    }
    EXPECT_EQ(Unmatched(before, after), Texts{});
    EXPECT_EQ(Unmatched(after, before, "PROG/"), Texts{});
  }
}

TEST(NothingLost, AShorterBuildReplacesOnlyWhatItWrites) {
  for (bool capitals : {false, true}) {
    SCOPED_TRACE(capitals ? "older site in capitals" : "older site in small letters");
    TempTree tree;
    CopyTemplates(tree, "PROG");
    for (int i = 1; i <= 20; ++i)
      tree.Write("Old/V" + std::to_string(100 + i) + ".JPG", "old " + std::to_string(i));
    for (int i = 1; i <= 5; ++i)
      tree.Write("New/N" + std::to_string(i) + ".JPG", "new " + std::to_string(i));
    tree.MakeFolder("Sito");
    const std::string setup = "drive C .\nprogram C:\\PROG\n";
    RunResult r =
        RunScript(Build(setup, "C:\\Old", "C:\\Sito\\index.htm", capitals ? "click Option1\n" : ""),
                  tree.root());
    ASSERT_EQ(r.status, 0) << r.err;
    const Snapshot before = Take(tree);
    r = RunScript(Build(setup, "C:\\New", "C:\\Sito\\index.htm", "answer yes\n"), tree.root());
    EXPECT_TRUE(r.Has("ASK: Visualizzo la pagina creata ")) << r.out;
    EXPECT_EQ(r.Messages(), Texts{});
    const Snapshot after = Take(tree);
    // What the second build writes: what it writes into an empty folder.
    tree.MakeFolder("Vuota");
    RunScript(Build(setup, "C:\\New", "C:\\Vuota\\index.htm"), tree.root());
    std::set<std::string> written;
    for (const std::string& p : tree.Tree("Vuota")) written.insert("sito/" + ToLower(p));
    ASSERT_EQ(written.size(), 32u);
    for (int i = 1; i <= 5; ++i)
      EXPECT_EQ(tree.Read("Sito/dir_0001/img_00" + std::to_string(i) + ".jpg"),
                "new " + std::to_string(i));
    Blind old_site = CaseBlind(before, "Sito/"), new_site = CaseBlind(after, "Sito/");
    for (const auto& [path, bytes] : old_site)
      EXPECT_TRUE(written.count(path) || new_site[path] == bytes) << path;
    for (const auto& kept : new_site)
      EXPECT_TRUE(old_site.count(kept.first) || written.count(kept.first)) << kept.first;
    EXPECT_EQ(tree.Read(capitals ? "Sito/DIR_0003/IMG_002.JPG" : "Sito/dir_0003/img_002.jpg"),
              "old 20");
    EXPECT_EQ(Unmatched(before, after), Texts{});
    EXPECT_EQ(CaseBlind(after, "Old/"), CaseBlind(before, "Old/"));
  }
}

// Names that a Linux folder can hold and no Windows disk can never reach a
// page, and the rest of the list builds whole; links in an older site are
// replaced, and what they pointed to keeps its bytes.
TEST(NothingLost, HostileNamesAndLinksInTheSite) {
  TempTree tree;
  CopyTemplates(tree, "e/PROG");
  for (const char* name :
       {"\"><svg onload=document['title']='pwned'>.htm", "x\" onmouseover=\"alert(5).mp3",
        "javascript:alert(4).mp3", "javascript&#58;alert(1).mp3", "a.jpg", "b.mp3", "c.htm",
        "Sub/d.jpg", "e|f/g.jpg"}) {
    tree.Write(std::string("d/Foto/") + name, name);
  }
  tree.Write("outside/secret.jpg", "the owner's");
  tree.MakeFolder("c/Sito/dir_0003");
  for (const char* link : {"c/Sito/dir_0003/img_001.jpg", "c/Sito/pulsante.jpg"})
    std::filesystem::create_symlink(tree.Path("outside/secret.jpg"), tree.Path(link));
  std::string script =
      "drive C c\ndrive D d\ndrive E e\nprogram E:\\PROG\nstart\n"
      "set txtPATH_RICERCA D:\\Foto\nset txtMAX_N_FILES 1\n";
  for (const char* filter : {"htm", "mp3", "jpg"})
    script += std::string("set txtESTENSIONE ") + filter + "\nclick cmdCONFERMA\n";
  script += "set txtNOME_FILE_HTM C:\\Sito\\index.htm\nclick Command1\nprint List1\n";
  const RunResult r = RunScript(script, tree.root());
  ASSERT_EQ(r.status, 0) << r.err;
  // A folder is counted at each load, since its whole tree is left out.
  const std::string folder = "{CR}D:\\Foto\\e|f\\";
  EXPECT_EQ(
      r.Messages(),
      (Texts{
          "2 file con nomi non utilizzabili in una pagina web non sono stati caricati:{CR}"
          "D:\\Foto\\\"><svg onload=document['title']='pwned'>.htm" +
              folder,
          "4 file con nomi non utilizzabili in una pagina web non sono stati caricati:" + folder +
              "{CR}D:\\Foto\\javascript&#58;alert(1).mp3{CR}D:\\Foto\\javascript:"
              "alert(4).mp3{CR}D:\\Foto\\x\" onmouseover=\"alert(5).mp3",
          "1 file con nome non utilizzabile in una pagina web non è stato caricato:" + folder}));
  EXPECT_TRUE(r.Has("List1.ListCount = 4")) << r.out;
  const std::string index = ToLower(tree.Read("c/Sito/index.htm"));
  for (const char* bad : {"<svg", "onmouseover", "javascript", "pwned"})
    EXPECT_EQ(index.find(bad), std::string::npos) << bad;
  EXPECT_EQ(tree.Read("outside/secret.jpg"), "the owner's");
  EXPECT_EQ(tree.Read("c/Sito/dir_0004/img_001.jpg"), "Sub/d.jpg");
  for (const char* made : {"c/Sito/dir_0003/img_001.jpg", "c/Sito/pulsante.jpg"}) {
    EXPECT_TRUE(std::filesystem::is_regular_file(std::filesystem::symlink_status(tree.Path(made))))
        << made;
  }
  EXPECT_EQ(tree.Read("c/Sito/dir_0003/img_001.jpg"), "a.jpg");
}

TEST(NothingLost, FullDiskAndReadOnlyDrivesAtEachStep) {
  // Sources on D:, the program on E:, the site on C: unless a case says so.
  const std::string page_failed = "Errore in registrazione Elenco c:\\sito\\index.htm{CR}{CR} ERR=";
  const std::string cd_rom =
      "Errore in registrazione Elenco (forse e' un CD-ROM) d:\\sito\\index.htm{CR}{CR}Tento di "
      "registrare sul disco C: {CR}{CR} ERR= 75 - Errore di accesso al percorso/file";
  const std::string no_folder =
      "Errore in registrazione Elenco (non esiste stessa cartella) C:\\sito\\index.htm{CR}{CR}"
      "Tento di registrare sul disco con il nome C:\\index.htm {CR}{CR} ERR=";
  auto page_000 = [](const std::string& err, const std::string& album) {
    return "Errore nella copia singoli HTML ERR= " + err +
           "{CR}{CR}Copia e:\\prog\\vetrina-foto_default\\dir_0001\\img_000.htm "
           "c:\\sito\\dir_000" +
           album + "\\img_000.htm";
  };
  const std::string unopened = page_failed + " 52 - Nome o numero di file non valido";
  const struct {
    std::string readonly, fails;  // drives mapped read-only; a path failing with a full disk
    Texts messages;
    std::string written, page = "C:\\Sito\\index.htm";  // a file the run still writes
    bool site_folder = true;
  } cases[] = {
      {"",
       "C:\\Sito\\index.htm",
       {page_failed + " 61 - Disco pieno", unopened, unopened, unopened, unopened},
       "Sito/dir_0003/img_001.jpg"},
      {"",
       "C:\\Sito\\dir_0001\\img_002.jpg",
       {"Errore nella copia delle immagini ERR= 61 - Disco pieno{CR}{CR}Copia "
        "d:\\foto\\p02.jpg c:\\sito\\dir_0001\\img_002.jpg",
        page_000("53 - Impossibile trovare il file", "1")},
       "Sito/index.htm"},
      {"",
       "C:\\Sito\\dir_0002",
       {"Errore nella copia delle immagini ERR= 76 - Impossibile trovare il percorso{CR}{CR}Copia "
        "d:\\foto\\p10.jpg c:\\sito\\dir_0002\\img_001.jpg",
        page_000("76 - Impossibile trovare il percorso", "2")},
       "Sito/dir_0001/menu.htm"},
      {"", "C:\\Sito\\dir_0001\\menu.htm", {}, "Sito/dir_0002/menu.htm"},
      {"",
       "C:\\Sito\\dir_0001\\img_003.htm",
       {"Errore nella copia singoli HTML ERR= 61 - Disco pieno{CR}{CR}Copia "
        "e:\\prog\\vetrina-foto_default\\dir_0001\\img_003.htm c:\\sito\\dir_0001\\img_003.htm"},
       "Sito/dir_0001/img_003.jpg"},
      {"",
       "C:\\Sito\\dir_0002\\puls_su3.jpg",
       {"Errore nella copia dell'immagine puls_su3.jpg{CR}{LF}ERR= 61 - Disco pieno{CR}{CR}Copia "
        "E:\\PROG\\puls_su3.jpg c:\\sito\\dir_0002\\puls_su3.jpg"},
       "Sito/dir_0002/menu.htm"},
      {"", "C:\\Sito\\pulsante.jpg", {}, "Sito/sfondo_2.gif"},
      {"", "D:\\Foto\\p03.jpg", {}, "Sito/dir_0001/img_003.jpg"},
      {"D", "", {}, "Sito/dir_0003/menu.htm"},
      {"E", "", {}, "Sito/dir_0003/menu.htm"},
      {"D", "", {cd_rom}, "Sito/dir_0003/menu.htm", "D:\\Sito\\index.htm"},
      {"D",
       "",
       {cd_rom, no_folder + " 76 - Impossibile trovare il percorso"},
       "dir_0003/menu.htm",
       "D:\\Sito\\index.htm",
       false},
      {"CDE",
       "",
       {cd_rom.substr(0, 52) + "c:" + cd_rom.substr(54),
        no_folder + " 75 - Errore di accesso al percorso/file",
        "Errore in registrazione Elenco C:\\index.htm{CR}{CR} ERR= 75 - Errore di accesso al "
        "percorso/file"},
       ""},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.readonly + " " + c.fails + " " + c.page);
    TempTree tree;
    CopyTemplates(tree, "e/PROG");
    WriteSources(tree, "d/Foto");
    tree.MakeFolder("d/Sito");
    tree.MakeFolder(c.site_folder ? "c/Sito" : "c");
    std::string setup;
    for (std::string d : {"C", "D", "E"})
      setup += "drive " + d + " " + ToLower(d) +
               (c.readonly.find(d) != std::string::npos ? " readonly\n" : "\n");
    setup += "program E:\\PROG\n" + (c.fails.empty() ? "" : "fail " + c.fails + " 61\n");
    const Snapshot before = Take(tree);
    RunResult r = RunScript(Build(setup, "D:\\Foto", c.page), tree.root());
    ASSERT_EQ(r.status, 0) << r.err;
    EXPECT_TRUE(r.Has("ASK: Visualizzo la pagina creata ")) << r.out;
    EXPECT_EQ(r.Messages(), c.messages);
    const Snapshot after = Take(tree);
    EXPECT_EQ(Unmatched(before, after), Texts{});
    EXPECT_EQ(CaseBlind(after, "d/Foto/"), CaseBlind(before, "d/Foto/"));
    Unchanged(before, after, "e/");
    EXPECT_TRUE(c.written.empty() || tree.Exists("c/" + c.written)) << c.written;
    // A source whose rename failed keeps its name.
    EXPECT_EQ(tree.Exists("d/Foto/p01.jpg"), c.readonly.find('D') == std::string::npos);
    EXPECT_TRUE(c.fails.find("Foto") == std::string::npos || tree.Exists("d/Foto/P03.JPG"));
  }
}

}  // namespace
}  // namespace vf::test
