// The directory scanner: filter, entry forms, order, depth, links and
// folders that cannot be read.
#include <gtest/gtest.h>
#include <unistd.h>

#include "filelist/legge_dir.h"
#include "platform/host_file_system.h"
#include "shell/avvio.h"
#include "tests/support/banco.h"
#include "tests/support/e2e.h"

namespace vf::test {
namespace {

using Voci = std::vector<std::string>;

TEST(PassaFiltro, ExtensionAfterTheFirstDot) {
  struct Caso {
    const char *nome, *filtro;
    bool passa;
  };
  for (Caso c : {Caso{"foto.2003.jpg", "jpg", false}, Caso{"foto.2003.jpg", "*", false},
                 Caso{"a.JPG", "  Jpg  ", true}, Caso{"a. jpg", "jpg", true},
                 Caso{"x.jpeg", "jpeg", true}, Caso{"x.jpeg", "*", false},
                 Caso{"r.\xC3\xA0v", "\xC3\x80V", true}, Caso{"jpg", "jpg", false},
                 Caso{"fine.", "*", false}, Caso{"a.jpg", " ", false}, Caso{"x.htm", "*", false},
                 Caso{"b.BMP", "*", true}, Caso{"c.Tif", "*", true}, Caso{"d.gif", " * ", true},
                 Caso{"e.wmf", "*", true}, Caso{"x.png", "*", false}, Caso{"a.jpg", "**", false}}) {
    EXPECT_EQ(Passa_Filtro(c.nome, c.filtro), c.passa) << c.nome << " / " << c.filtro;
  }
}

TEST(LeggeDir, OrderFormsAndHiddenNames) {
  Banco b;
  for (const char* p : {"C:\\R\\b.jpg", "C:\\R\\A.JPG", "C:\\R\\note.txt", "C:\\R\\A\\x.gif",
                        "C:\\R\\A\\X\\deep.bmp", "C:\\R\\A\\Y\\y.tif", "C:\\R\\B\\z.wmf",
                        "C:\\R\\.nascosta.jpg", "C:\\R\\.h\\in.jpg", "C:\\S\\solo.jpg"}) {
    b.fs.AddFile(p, "");
  }
  auto& f = b.v.frmALBUM;
  f.txtESTENSIONE.Text = "*";
  Legge_Dir(b.v, "C:\\R");
  EXPECT_EQ(b.Voci(), (Voci{"C:\\R\\A.JPG", "C:\\R\\b.jpg", "C:\\R\\A\\x.gif",
                            "C:\\R\\A\\X\\deep.bmp", "C:\\R\\A\\Y\\y.tif", "C:\\R\\B\\z.wmf"}));
  EXPECT_TRUE(b.ui.events.empty());
  // With a trailing backslash: the same entries again, in the typed case.
  Legge_Dir(b.v, "c:\\r\\");
  ASSERT_EQ(f.List1.ListCount(), 12);
  EXPECT_EQ(f.List1.List(11), "c:\\r\\B\\z.wmf");

  // No filter: folders only, each before its tree, the start folder left out.
  f.List1.Clear();
  f.txtESTENSIONE.Text = "  ";
  Legge_Dir(b.v, "C:\\R");
  EXPECT_EQ(b.Voci(), (Voci{"<C:\\R\\A>", "<C:\\R\\A\\X>", "<C:\\R\\A\\Y>", "<C:\\R\\B>"}));
  Legge_Dir(b.v, "C:\\S");
  EXPECT_EQ(f.List1.ListCount(), 4);
}

TEST(LeggeDir, NoLimitOnNamesPerFolderButOnDepth) {
  Banco b;
  auto& f = b.v.frmALBUM;
  for (int i = 0; i < 600; ++i) {
    b.fs.AddFile("C:\\R\\p" + std::to_string(1000 + i) + ".jpg", "");
    b.fs.AddFile("C:\\R\\d" + std::to_string(1000 + i) + "\\in.jpg", "");
  }
  f.txtESTENSIONE.Text = "*";
  Legge_Dir(b.v, "C:\\R");
  ASSERT_EQ(f.List1.ListCount(), 1200);
  EXPECT_EQ(f.List1.List(599), "C:\\R\\p1599.jpg");
  EXPECT_EQ(f.List1.List(1100), "C:\\R\\d1500\\in.jpg");

  // Folders at levels 0 to 52, one picture each: levels 0 to 50 are read.
  std::string cartella = "C:\\L", livello50;
  for (int livello = 0; livello <= 52; ++livello, cartella += "\\s") {
    b.fs.AddFile(cartella + "\\p.jpg", "");
    if (livello == 50) livello50 = cartella;
  }
  f.List1.Clear();
  Legge_Dir(b.v, "C:\\L");
  ASSERT_EQ(f.List1.ListCount(), 51);
  EXPECT_EQ(f.List1.List(50), livello50 + "\\p.jpg");
  // Without a filter level 50 still names its subfolder.
  f.List1.Clear();
  f.txtESTENSIONE.Text = "";
  Legge_Dir(b.v, "C:\\L");
  ASSERT_EQ(f.List1.ListCount(), 51);
  EXPECT_EQ(f.List1.List(50), "<" + livello50 + "\\s>");
  EXPECT_EQ(f.scansione.Livello, 0);
}

TEST(LeggeDir, RepaintPointsAndCommandsRunThere) {
  Banco b;
  for (const char* p : {"C:\\R\\1.jpg", "C:\\R\\2.jpg", "C:\\R\\3.jpg", "C:\\R\\A\\4.jpg",
                        "C:\\R\\B\\5.jpg", "C:\\R\\B\\C\\6.jpg"}) {
    b.fs.AddFile(p, "");
  }
  auto& f = b.v.frmALBUM;
  f.txtESTENSIONE.Text = "*";
  Legge_Dir(b.v, "C:\\R");
  // One per entry and one at the end of each folder with subfolders (R, B).
  EXPECT_EQ(b.ui.repaints, 8);
  // The list emptied after the second entry, the filter cleared after the
  // fourth: the scan appends to what is left and reads the filter anew.
  f.List1.Clear();
  int n = 0;
  b.ui.on_repaint = [&] {
    if (++n == 2) f.List1.Clear();
    if (n == 4) f.txtESTENSIONE.Text = "";
  };
  Legge_Dir(b.v, "C:\\R");
  EXPECT_EQ(b.Voci(), (Voci{"C:\\R\\3.jpg", "C:\\R\\A\\4.jpg", "<C:\\R\\B>", "<C:\\R\\B\\C>"}));
}

TEST(LeggeDir, HostLinksOddBytesAndRefusedFolders) {
  TempTree t;
  HostFileSystem fs{{DriveMapping{'C', t.root().string(), false}}};
  RecordingUi ui;
  Vetrina v{fs, ui};
  Main(v);
  const std::string strano = "\xff\xfe \xC3\xA9t\xC3\xA9 .jpg ";
  for (const std::string& p :
       Voci{"R/a.jpg", "R/A/b.jpg", "R/" + strano, "R/a?b/no.jpg", "X/c.jpg"}) {
    t.Write(p, "");
  }
  for (auto [target, at] : {std::pair{"..", "R/A/su"}, {"../X", "R/L"}, {"../X", "R/M"}}) {
    ASSERT_EQ(::symlink(target, t.Path(at).c_str()), 0);
  }
  v.frmALBUM.txtESTENSIONE.Text = "jpg";
  Legge_Dir(v, "C:\\R");
  // The loop back to R ends, X is read once, the folder with "?" is skipped.
  Voci voci;
  for (int64_t i = 0; i < v.frmALBUM.List1.ListCount(); ++i)
    voci.push_back(v.frmALBUM.List1.List(i));
  EXPECT_EQ(voci, (Voci{"C:\\R\\a.jpg", "C:\\R\\" + strano, "C:\\R\\A\\b.jpg", "C:\\R\\L\\c.jpg"}));
  EXPECT_TRUE(ui.events.empty());
}

}  // namespace
}  // namespace vf::test
