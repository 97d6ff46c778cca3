// End-to-end tests that a build loses nothing: source pictures keep their
// bytes, templates stay as they are, an older site keeps what the new build
// does not write, and no file or folder ever goes, also when the disk is full
// or a drive is read-only. Each test works on real folders through the runner.
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "tests/support/e2e.h"

namespace vf::test {
namespace {

namespace fs = std::filesystem;

std::string Lower(std::string text) {
  for (char& c : text) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return text;
}

// A printf form with one number, such as "P%02d.JPG".
std::string Numbered(const char* form, int number) {
  char text[64];
  std::snprintf(text, sizeof text, form, number);
  return text;
}

// Every file (with its bytes) and folder (ending in "/", no bytes) below a
// folder of the tree, by relative path.
using Snapshot = std::map<std::string, std::string>;

Snapshot Take(const TempTree& tree, const std::string& under = "") {
  Snapshot shot;
  for (const std::string& path : tree.Tree(under)) {
    const std::string full = under.empty() ? path : under + "/" + path;
    shot[full] = path.back() == '/' ? "" : tree.Read(full);
  }
  return shot;
}

// The same snapshot keyed by the path ignoring case, as the program sees it.
// Names that clash ignoring case keep all their contents.
std::map<std::string, std::multiset<std::string>> CaseBlind(const Snapshot& shot,
                                                            const std::string& prefix = "") {
  std::map<std::string, std::multiset<std::string>> out;
  for (const auto& [path, bytes] : shot) {
    if (Lower(path).rfind(Lower(prefix), 0) == 0) out[Lower(path)].insert(bytes);
  }
  return out;
}

// Paths of `from` that no path of `to` matches ignoring case, except those
// under `allowed` when given.
std::vector<std::string> Unmatched(const Snapshot& from, const Snapshot& to,
                                   const std::string& allowed = "") {
  std::set<std::string> present;
  for (const auto& kept : to) present.insert(Lower(kept.first));
  std::vector<std::string> out;
  for (const auto& [path, bytes] : from) {
    const std::string key = Lower(path);
    if (present.count(key) == 0 && (allowed.empty() || key.rfind(Lower(allowed), 0) != 0)) {
      out.push_back(path);
    }
  }
  return out;
}

// Bytes of the files under `prefix`; with `album`, only the pictures copied
// into its album folders, in either case.
std::multiset<std::string> Files(const Snapshot& shot, const std::string& prefix,
                                 bool album = false) {
  std::multiset<std::string> files;
  for (const auto& [path, bytes] : shot) {
    const std::string key = Lower(path);
    if (key.rfind(Lower(prefix), 0) != 0 || path.back() == '/') continue;
    if (!album || (key.find("/dir_") == prefix.size() && key.find("/img_") != std::string::npos &&
                   key.ends_with(".jpg"))) {
      files.insert(bytes);
    }
  }
  return files;
}

std::vector<std::string> Messages(const RunResult& r) {
  std::vector<std::string> messages;
  for (const std::string& line : r.lines) {
    if (line.rfind("MSG: ", 0) == 0) messages.push_back(line.substr(5));
  }
  return messages;
}

bool Finished(const RunResult& r) {
  return std::any_of(r.lines.begin(), r.lines.end(), [](const std::string& line) {
    return line.rfind("ASK: Visualizzo la pagina creata ", 0) == 0;
  });
}

// The real template set as a program folder of the tree, without its sizes
// file: what a build does with web sizes has tests of its own.
void CopyTemplates(const TempTree& tree, const std::string& folder) {
  tree.MakeFolder(folder);
  fs::copy(fs::path(VF_SOURCE_DIR) / "templates", tree.Path(folder), fs::copy_options::recursive);
  fs::remove(tree.Path(folder + "/DIMENSIONI.TXT"));
}

// A load of `folder` and a build of `page` (the default name when empty),
// with `options` set between the start and the load.
std::string Build(const std::string& setup, const std::string& options, const std::string& folder,
                  const std::string& page) {
  std::string script =
      setup + "start\n" + options + "set txtPATH_RICERCA " + folder + "\nclick cmdCONFERMA\n";
  if (!page.empty()) script += "set txtNOME_FILE_HTM " + page + "\n";
  return script + "click Command1\n";
}

// A source tree with names in capitals and in small letters, subfolders, a
// file that is no picture, and names that differ only in case.
void WriteSources(const TempTree& tree, const std::string& root) {
  for (int i = 1; i <= 12; ++i) {
    tree.Write(root + Numbered("/P%02d.JPG", i),
               Numbered("picture %d ", i) + std::string(i * 100, 'x'));
  }
  tree.Write(root + "/note.txt", "not a picture");
  tree.Write(root + "/SUB/Q01.JPG", "q one");
  tree.Write(root + "/SUB/q02.jpg", "q two");
  tree.Write(root + "/Sub2/Deep/R01.Jpg", "r one");
  tree.Write(root + "/Doppi/a.jpg", "small a");
  tree.Write(root + "/Doppi/A.JPG", "capital A");
  tree.Write(root + "/Misti/B.jpg", "B dot jpg");
  tree.Write(root + "/Misti/b.JPG", "b dot JPG");
}

TEST(NothingLost, BuildRenamesSourcesToTheChosenCaseButNeverOntoAnotherFile) {
  struct Case {
    bool capitals;
    std::vector<std::string> renamed;  // exact names after the build
    std::vector<std::string> kept;     // names that could not change
  };
  const Case cases[] = {
      {false,
       {"Foto/p01.jpg", "Foto/p12.jpg", "Foto/SUB/q01.jpg", "Foto/Sub2/Deep/r01.jpg",
        "Foto/Misti/b.jpg"},
       {"Foto/Doppi/a.jpg", "Foto/Doppi/A.JPG", "Foto/Misti/b.JPG", "Foto/note.txt"}},
      {true,
       {"Foto/P01.JPG", "Foto/SUB/Q02.JPG", "Foto/Sub2/Deep/R01.JPG", "Foto/Misti/B.JPG"},
       {"Foto/Doppi/a.jpg", "Foto/Doppi/A.JPG", "Foto/Misti/b.JPG"}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.capitals ? "capitals" : "small letters");
    TempTree tree;
    WriteSources(tree, "Foto");
    CopyTemplates(tree, "PROG");
    tree.MakeFolder("Sito");
    const Snapshot before = Take(tree);
    RunResult r =
        RunScript(Build("drive C .\nprogram C:\\PROG\n", c.capitals ? "click Option1\n" : "",
                        "C:\\Foto", "C:\\Sito\\index.htm"),
                  tree.root());
    ASSERT_EQ(r.status, 0) << r.err;
    EXPECT_TRUE(Finished(r)) << r.out;
    EXPECT_EQ(Messages(r), std::vector<std::string>{});
    const Snapshot after = Take(tree);

    EXPECT_EQ(Unmatched(before, after), std::vector<std::string>{});
    EXPECT_EQ(Unmatched(after, before, "Sito/"), std::vector<std::string>{});
    // Every source holds its own bytes under its own name, ignoring case;
    // the two files of a clash are both still there with their bytes.
    EXPECT_EQ(CaseBlind(after, "Foto/"), CaseBlind(before, "Foto/"));
    for (const std::string& name : c.renamed) EXPECT_TRUE(tree.Exists(name)) << name;
    for (const std::string& name : c.kept) {
      EXPECT_EQ(tree.Read(name), before.at(name)) << name;
    }
    // Each picture was copied once into the site, whatever its name became.
    std::multiset<std::string> pictures = Files(before, "Foto/");
    pictures.erase("not a picture");
    EXPECT_EQ(Files(after, "Sito", true), pictures);
    for (const auto& [path, bytes] : before) {
      if (path.rfind("PROG/", 0) == 0) {
        EXPECT_EQ(after.count(path) == 1 ? after.at(path) : "<missing>", bytes) << path;
      }
    }
  }
}

TEST(NothingLost, BuildIntoTheProgramFolderKeepsEveryTemplate) {
  // The default output name is the program folder's index page. A site
  // built in the folder of the per-picture templates would write each page
  // over its own template: that page is refused and the run stops there.
  const std::string over_template =
      "Errore nella copia singoli HTML ERR= 75 - Errore di accesso al percorso/file{CR}{CR}Copia ";
  struct Case {
    bool capitals;
    std::string page;
    std::string ask;
    std::vector<std::string> messages;
    std::string written;
  };
  const Case cases[] = {
      {false, "", "c:\\prog\\index.htm", {}, "PROG/dir_0002/img_002.jpg"},
      {true, "", "C:\\PROG\\INDEX.HTM", {}, "PROG/DIR_0002/IMG_002.JPG"},
      {false,
       "C:\\PROG\\VETRINA-FOTO_DEFAULT\\index.htm",
       "c:\\prog\\vetrina-foto_default\\index.htm",
       {over_template + "c:\\prog\\vetrina-foto_default\\dir_0001\\img_001.htm "
                        "c:\\prog\\vetrina-foto_default\\dir_0001\\img_001.htm"},
       "PROG/VETRINA-FOTO_DEFAULT/dir_0001/img_001.jpg"},
      {true,
       "C:\\PROG\\VETRINA-FOTO_DEFAULT\\index.htm",
       "C:\\PROG\\VETRINA-FOTO_DEFAULT\\INDEX.HTM",
       {over_template + "C:\\PROG\\VETRINA-FOTO_DEFAULT\\DIR_0001\\IMG_001.HTM "
                        "C:\\PROG\\VETRINA-FOTO_DEFAULT\\DIR_0001\\IMG_001.HTM"},
       "PROG/VETRINA-FOTO_DEFAULT/DIR_0001/IMG_001.JPG"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.ask);
    TempTree tree;
    CopyTemplates(tree, "PROG");
    for (int i = 1; i <= 11; ++i) tree.Write(Numbered("Foto/P%d.JPG", i), Numbered("p%d", i));
    const Snapshot templates = Take(tree, "PROG");
    const Snapshot before = Take(tree);
    const std::string setup = "drive C .\nprogram C:\\PROG\n";
    const std::string options = c.capitals ? "click Option1\n" : "";
    RunResult r = RunScript(Build(setup, options, "C:\\Foto", c.page), tree.root());
    ASSERT_EQ(r.status, 0) << r.err;
    EXPECT_EQ(Messages(r), c.messages);
    EXPECT_EQ(r.lines.back(), "ASK: Visualizzo la pagina creata " + c.ask + " (S/N)  -> NO");
    // A second build finds the page and is let go on.
    r = RunScript(Build(setup, options + "answer yes\n", "C:\\Foto", c.page), tree.root());
    ASSERT_EQ(r.status, 0) << r.err;
    EXPECT_TRUE(Finished(r)) << r.out;
    EXPECT_TRUE(tree.Exists(c.written)) << c.written;

    // Every template keeps its bytes, and those beside the program their
    // exact names: the site files are copies of themselves, which change
    // nothing. The template folder takes the case of an album folder.
    const Snapshot after = Take(tree);
    const auto now = CaseBlind(after);
    for (const auto& [path, bytes] : CaseBlind(templates)) {
      EXPECT_TRUE(now.count(path) == 1 && now.at(path) == bytes) << path;
    }
    for (const auto& [path, bytes] : templates) {
      if (path.find('/', 5) != std::string::npos) continue;
      ASSERT_EQ(after.count(path), 1u) << path;
      EXPECT_EQ(after.at(path), bytes) << path;
    }
    EXPECT_EQ(Unmatched(before, after), std::vector<std::string>{});
    EXPECT_EQ(Unmatched(after, before, "PROG/"), std::vector<std::string>{});
  }
}

TEST(NothingLost, ShorterBuildReplacesOnlyWhatItWrites) {
  // The second build is always in small letters; the first site was in
  // small letters or in capitals.
  for (bool first_in_capitals : {false, true}) {
    SCOPED_TRACE(first_in_capitals ? "older site in capitals" : "older site in small letters");
    TempTree tree;
    CopyTemplates(tree, "PROG");
    for (int i = 1; i <= 20; ++i) {
      tree.Write(Numbered("Vecchie/V%02d.JPG", i), Numbered("old %d", i));
    }
    for (int i = 1; i <= 5; ++i) tree.Write(Numbered("Nuove/N%d.JPG", i), Numbered("new %d", i));
    tree.MakeFolder("Sito");
    const std::string setup = "drive C .\nprogram C:\\PROG\n";
    RunResult r = RunScript(Build(setup, first_in_capitals ? "click Option1\n" : "", "C:\\Vecchie",
                                  "C:\\Sito\\index.htm"),
                            tree.root());
    ASSERT_EQ(r.status, 0) << r.err;
    ASSERT_TRUE(
        tree.Exists(first_in_capitals ? "Sito/DIR_0003/IMG_002.JPG" : "Sito/dir_0003/img_002.jpg"));
    const Snapshot before = Take(tree);
    r = RunScript(Build(setup, "answer yes\n", "C:\\Nuove", "C:\\Sito\\index.htm"), tree.root());
    ASSERT_EQ(r.status, 0) << r.err;
    EXPECT_TRUE(Finished(r)) << r.out;
    EXPECT_EQ(Messages(r), std::vector<std::string>{});
    const Snapshot after = Take(tree);

    // What the second build writes, by its names in small letters.
    std::set<std::string> written = {"sito/index.htm", "sito/dir_0001/", "sito/dir_0001/menu.htm"};
    for (const char* f :
         {"intestaz.htm", "intest_2.htm", "piede.htm", "piede_2.htm", "diaposit.jpg", "film-1a.jpg",
          "foto-1a.jpg", "htm-1a.jpg", "music-1a.jpg", "sfondo1g.jpg", "sfondo1p.jpg",
          "pulsante.jpg", "sfondo_1.gif", "sfondo_2.gif"}) {
      written.insert(std::string("sito/") + f);
    }
    for (const char* f :
         {"puls_sx3.jpg", "puls_su3.jpg", "puls_dx3.jpg", "sfondo_1.gif", "sfondo_2.gif"}) {
      written.insert(std::string("sito/dir_0001/") + f);
    }
    for (int i = 1; i <= 5; ++i) {
      written.insert(Numbered("sito/dir_0001/img_%03d.jpg", i));
      written.insert(Numbered("sito/dir_0001/img_%03d.htm", i));
      EXPECT_EQ(tree.Read(Numbered("Sito/dir_0001/img_%03d.jpg", i)), Numbered("new %d", i));
    }
    const auto old_site = CaseBlind(before, "Sito/");
    const auto new_site = CaseBlind(after, "Sito/");
    for (const auto& [path, bytes] : old_site) {
      if (written.count(path) == 1) continue;
      ASSERT_EQ(new_site.count(path), 1u) << path;
      EXPECT_EQ(new_site.at(path), bytes) << path;
    }
    for (const auto& kept : new_site) {
      EXPECT_TRUE(old_site.count(kept.first) == 1 || written.count(kept.first) == 1) << kept.first;
    }
    // The older pictures of album 1 and the albums after it are still there.
    EXPECT_EQ(
        tree.Read(first_in_capitals ? "Sito/dir_0001/IMG_006.JPG" : "Sito/dir_0001/img_006.jpg"),
        "old 6");
    EXPECT_EQ(
        tree.Read(first_in_capitals ? "Sito/DIR_0003/IMG_002.JPG" : "Sito/dir_0003/img_002.jpg"),
        "old 20");
    EXPECT_EQ(Unmatched(before, after), std::vector<std::string>{});
    EXPECT_EQ(CaseBlind(after, "Vecchie/"), CaseBlind(before, "Vecchie/"));
    EXPECT_EQ(CaseBlind(after, "Nuove/"), CaseBlind(before, "Nuove/"));
  }
}

TEST(NothingLost, FullDiskAndReadOnlyDrivesAtEachStep) {
  // Sources on D:, the program on E:, the site on C: unless a case says so.
  struct Case {
    const char* name;
    std::string readonly;  // drive letters mapped read-only
    std::string fails;     // a path the runner fails with a full disk
    std::vector<std::string> messages;
    std::string written;  // a file the run still writes
    std::string page = "C:\\Sito\\index.htm";
    bool site_folder = true;  // whether C:\Sito exists
  };
  const std::string page_failed = "Errore in registrazione Elenco c:\\sito\\index.htm{CR}{CR} ERR=";
  const std::string cd_rom =
      "Errore in registrazione Elenco (forse e' un CD-ROM) d:\\sito\\index.htm{CR}{CR}Tento di "
      "registrare sul disco C: {CR}{CR} ERR= 75 - Errore di accesso al percorso/file";
  const std::string no_folder =
      "Errore in registrazione Elenco (non esiste stessa cartella) "
      "C:\\sito\\index.htm{CR}{CR}Tento "
      "di registrare sul disco con il nome C:\\index.htm {CR}{CR} ERR=";
  auto page_000 = [](const std::string& err, const std::string& album) {
    return "Errore nella copia singoli HTML ERR= " + err +
           "{CR}{CR}Copia e:\\prog\\vetrina-foto_default\\dir_0001\\img_000.htm "
           "c:\\sito\\dir_000" +
           album + "\\img_000.htm";
  };
  const std::string unopened = page_failed + " 52 - Nome o numero di file non valido";
  const Case cases[] = {
      {"page",
       "",
       "C:\\Sito\\index.htm",
       {page_failed + " 61 - Disco pieno", unopened, unopened, unopened, unopened},
       "Sito/dir_0003/img_001.jpg"},
      {"copy target",
       "",
       "C:\\Sito\\dir_0001\\img_002.jpg",
       {"Errore nella copia delle immagini ERR= 61 - Disco pieno{CR}{CR}Copia "
        "d:\\foto\\p02.jpg c:\\sito\\dir_0001\\img_002.jpg",
        page_000("53 - Impossibile trovare il file", "1")},
       "Sito/index.htm"},
      {"album folder",
       "",
       "C:\\Sito\\dir_0002",
       {"Errore nella copia delle immagini ERR= 76 - Impossibile trovare il percorso{CR}{CR}Copia "
        "d:\\foto\\p10.jpg c:\\sito\\dir_0002\\img_001.jpg",
        page_000("76 - Impossibile trovare il percorso", "2")},
       "Sito/dir_0001/menu.htm"},
      {"menu page", "", "C:\\Sito\\dir_0001\\menu.htm", {}, "Sito/dir_0002/menu.htm"},
      {"picture page",
       "",
       "C:\\Sito\\dir_0001\\img_003.htm",
       {"Errore nella copia singoli HTML ERR= 61 - Disco pieno{CR}{CR}Copia "
        "e:\\prog\\vetrina-foto_default\\dir_0001\\img_003.htm c:\\sito\\dir_0001\\img_003.htm"},
       "Sito/dir_0001/img_003.jpg"},
      {"album asset",
       "",
       "C:\\Sito\\dir_0002\\puls_su3.jpg",
       {"Errore nella copia dell'immagine puls_su3.jpg{CR}{LF}ERR= 61 - Disco pieno{CR}{CR}Copia "
        "E:\\PROG\\puls_su3.jpg c:\\sito\\dir_0002\\puls_su3.jpg"},
       "Sito/dir_0002/menu.htm"},
      {"site file", "", "C:\\Sito\\pulsante.jpg", {}, "Sito/sfondo_2.gif"},
      {"rename of a source", "", "D:\\Foto\\p03.jpg", {}, "Sito/dir_0001/img_003.jpg"},
      {"read-only sources", "D", "", {}, "Sito/dir_0003/menu.htm"},
      {"read-only program", "E", "", {}, "Sito/dir_0003/menu.htm"},
      {"read-only site, first fallback",
       "D",
       "",
       {cd_rom},
       "Sito/dir_0003/menu.htm",
       "D:\\Sito\\index.htm"},
      {"read-only site, second fallback",
       "D",
       "",
       {cd_rom, no_folder + " 76 - Impossibile trovare il percorso"},
       "dir_0003/menu.htm",
       "D:\\Sito\\index.htm",
       false},
      {"everything read-only",
       "CDE",
       "",
       {cd_rom.substr(0, 52) + "c:" + cd_rom.substr(54),
        no_folder + " 75 - Errore di accesso al percorso/file",
        "Errore in registrazione Elenco C:\\index.htm{CR}{CR} ERR= 75 - Errore di accesso al "
        "percorso/file"},
       ""},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    TempTree tree;
    CopyTemplates(tree, "e/PROG");
    WriteSources(tree, "d/Foto");
    tree.MakeFolder("d/Sito");
    if (c.site_folder) tree.MakeFolder("c/Sito");
    tree.MakeFolder("c");
    std::string setup;
    for (char drive : {'C', 'D', 'E'}) {
      setup += std::string("drive ") + drive + " " + static_cast<char>(std::tolower(drive)) +
               (c.readonly.find(drive) != std::string::npos ? " readonly\n" : "\n");
    }
    setup += "program E:\\PROG\n";
    if (!c.fails.empty()) setup += "fail " + c.fails + " 61\n";
    const Snapshot before = Take(tree);
    RunResult r = RunScript(Build(setup, "", "D:\\Foto", c.page), tree.root());
    ASSERT_EQ(r.status, 0) << r.err;
    EXPECT_TRUE(Finished(r)) << r.out;
    EXPECT_EQ(Messages(r), c.messages);
    const Snapshot after = Take(tree);
    EXPECT_EQ(Unmatched(before, after), std::vector<std::string>{});
    EXPECT_EQ(CaseBlind(after, "d/Foto/"), CaseBlind(before, "d/Foto/"));
    for (const auto& [path, bytes] : before) {
      if (path.rfind("e/", 0) != 0) continue;
      ASSERT_EQ(after.count(path), 1u) << path;
      EXPECT_EQ(after.at(path), bytes) << path;
    }
    if (!c.written.empty()) {
      EXPECT_TRUE(tree.Exists("c/" + c.written)) << c.written;
    }
    // A source whose rename failed keeps its name; the first one took the
    // case unless its drive is read-only.
    const bool renamed = c.readonly.find('D') == std::string::npos;
    EXPECT_EQ(tree.Exists("d/Foto/p01.jpg"), renamed);
    if (c.fails.find("Foto") != std::string::npos) {
      EXPECT_TRUE(tree.Exists("d/Foto/P03.JPG"));
    }
  }
}

}  // namespace
}  // namespace vf::test
