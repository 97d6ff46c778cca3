#include "platform/user_area.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "platform/typed_path.h"
#include "tests/support/e2e.h"

namespace vf {
namespace {

namespace fs = std::filesystem;

TEST(UserAreaTest, TheStartCopiesWhatIsMissingAndReplacesNothing) {
  test::TempTree t;
  t.Write("set/MENU.HTM", "menu");
  t.Write("set/VETRINA-FOTO_DEFAULT/dir_0001/IMG_001.HTM", "pagina");
  t.Write("set/.gitattributes", "* -text");
  const UserArea area = UserAreaOf(t.Path("casa").string());
  ASSERT_EQ(area.program_folder, t.Path("casa/Vetrina-Foto").string());
  ASSERT_EQ(area.drive_c, t.Path("casa/Vetrina-Foto/Disco C").string());

  EXPECT_EQ(PrepareUserArea(area, t.Path("set").string()), "");
  const std::vector<std::string> filled = {"Disco C/", "MENU.HTM", "VETRINA-FOTO_DEFAULT/",
                                           "VETRINA-FOTO_DEFAULT/dir_0001/",
                                           "VETRINA-FOTO_DEFAULT/dir_0001/IMG_001.HTM"};
  EXPECT_EQ(t.Tree("casa/Vetrina-Foto"), filled);
  EXPECT_EQ(t.Read("casa/Vetrina-Foto/VETRINA-FOTO_DEFAULT/dir_0001/IMG_001.HTM"), "pagina");

  // The user's edit stays; a file the set gained since, or one the user
  // removed, arrives at the next start; no temporary file is left.
  t.Write("casa/Vetrina-Foto/MENU.HTM", "il mio menu");
  fs::remove(t.Path("casa/Vetrina-Foto/VETRINA-FOTO_DEFAULT/dir_0001/IMG_001.HTM"));
  t.Write("set/PIEDE.HTM", "piede");
  EXPECT_EQ(PrepareUserArea(area, t.Path("set").string()), "");
  EXPECT_EQ(t.Read("casa/Vetrina-Foto/MENU.HTM"), "il mio menu");
  EXPECT_EQ(t.Read("casa/Vetrina-Foto/PIEDE.HTM"), "piede");
  EXPECT_EQ(t.Read("casa/Vetrina-Foto/VETRINA-FOTO_DEFAULT/dir_0001/IMG_001.HTM"), "pagina");
  EXPECT_EQ(t.Tree("casa/Vetrina-Foto").size(), filled.size() + 1);
}

TEST(UserAreaTest, AnAreaThatCannotBeMadeOrFilledIsToldAndNothingIsWrittenElsewhere) {
  test::TempTree t;
  t.Write("set/MENU.HTM", "menu");
  t.Write("bloccata/Vetrina-Foto", "un file al posto della cartella");
  struct Row {
    std::string home, templates, failure;
  };
  std::vector<Row> rows = {
      {t.Path("bloccata").string(), t.Path("set").string(),
       " ERR= 76 - Impossibile trovare il percorso"},
      {t.Path("casa").string(), t.Path("manca").string(),
       " ERR= 76 - Impossibile trovare il percorso"},
  };
  // A file system that refuses every new folder, to root too.
  if (fs::is_directory("/sys/kernel")) {
    rows.push_back({"/sys/kernel/casa", t.Path("set").string(),
                    " ERR= 75 - Errore di accesso al percorso/file"});
  }
  for (const Row& row : rows) {
    const std::string message = PrepareUserArea(UserAreaOf(row.home), row.templates);
    EXPECT_EQ(message, "Impossibile preparare la cartella del programma " + row.home +
                           "/Vetrina-Foto\r\rI modelli delle pagine potrebbero mancare.\r\r" +
                           row.failure)
        << row.home;
  }
  EXPECT_EQ(t.Tree(), (std::vector<std::string>{"bloccata/", "bloccata/Vetrina-Foto", "casa/",
                                                "casa/Vetrina-Foto/", "casa/Vetrina-Foto/Disco C/",
                                                "set/", "set/MENU.HTM"}));
}

TEST(UserAreaTest, TypedLinuxPathsTakeTheirWindowsForm) {
  test::TempTree t;
  const UserArea area = UserAreaOf(t.Path("casa").string());
  const HostFileSystem host(UserDrives(area));
  const std::string home = t.Path("casa").string();
  std::string z = "Z:" + home;
  for (char& c : z) c = c == '/' ? '\\' : c;
  const struct {
    std::string typed, windows;
  } rows[] = {
      {"/usr/share", "Z:\\usr\\share"},
      {"/", "Z:\\"},
      {home + "/Immagini/Vacanze 2024", z + "\\Immagini\\Vacanze 2024"},
      {home + "/Immagini/Vacanze 2024/", z + "\\Immagini\\Vacanze 2024\\"},
      {"~/Immagini/Città d'arte/", z + "\\Immagini\\Città d'arte\\"},
      {"~", z},
      {"~/../casa/./Sito//index.htm", z + "\\Sito\\index.htm"},
      {"~/Vetrina-Foto/Disco C/sito", "C:\\sito"},
      // Left as typed: Windows paths, names, other users' homes, and names
      // that no Windows path can spell.
      {"C:\\Foto/", ""},
      {"z:\\home\\anna", ""},
      {"index.htm", ""},
      {" /usr", ""},
      {"~anna/Foto", ""},
      {"/tmp/a:b", ""},
      {"/tmp/a\\b", ""},
      {"", ""},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(WindowsFormOfTyped(row.typed, home, host).value_or(""), row.windows) << row.typed;
  }
}

}  // namespace
}  // namespace vf
