// The file and folder dialogs and the path split they share.
#include <gtest/gtest.h>

#include <stdexcept>

#include "filelist/dialoghi.h"
#include "tests/support/banco.h"

namespace vf::test {
namespace {

using Testi = std::vector<std::string>;

std::string Dialogo(const std::string& inizio, const std::string& risultato) {
  return "DIALOG: Ricerca cartelle/directory contenenti Foto/Film/Suoni | " + inizio +
         " | *.* -> " + risultato;
}

TEST(Command3, SplitAndInputFolder) {
  PercorsoDiviso d = Taglia_Percorso("C:\\Foto\\Mare\\a.jpg");
  EXPECT_EQ(d.Cartella + "|" + d.Nome, "C:\\Foto\\Mare\\|a.jpg");
  d = Taglia_Percorso("C:a/b.htm");
  EXPECT_EQ(d.Cartella + "|" + d.Nome, "|C:a/b.htm");

  Banco b;
  auto& f = b.v.frmALBUM;
  f.txtPATH_RICERCA.Text = "C:\\Foto\\scatto.jpg";
  Command3_Click(b.v);  // given up
  EXPECT_EQ(b.ui.events, (Testi{"BEEP", Dialogo("C:\\Foto\\", "")}));
  EXPECT_EQ(b.ui.repaints, 1);
  EXPECT_EQ(f.txtPATH_RICERCA.Text, "C:\\Foto\\scatto.jpg");
  EXPECT_EQ(b.v.Module1.Dir_Base, "C:\\Foto\\");

  b.ui.dialog_results = {" D:\\Img\\Mare\\a.jpg ", "E:\\Uno\\x.jpg/altro\\y.jpg"};
  Command3_Click(b.v);
  EXPECT_EQ(f.txtPATH_RICERCA.Text + b.v.Module1.Dir_Base, "D:\\Img\\Mare\\D:\\Img\\Mare\\");
  Command7_Click(b.v);  // what follows a "/" goes before the split
  EXPECT_EQ(f.txtPATH_RICERCA.Text + b.v.Module1.Dir_Base, "E:\\Uno\\E:\\Uno\\");

  // No backslash in the result: the old text's folder part comes back.
  f.txtPATH_RICERCA.Text = "C:\\Foto\\scatto.jpg";
  b.ui.dialog_results = {"*.*"};
  Command3_Click(b.v);
  EXPECT_EQ(f.txtPATH_RICERCA.Text, "C:\\Foto\\");
}

TEST(Command6, OutputFolderKeepsThePageName) {
  Banco b;
  auto& f = b.v.frmALBUM;
  f.txtNOME_FILE_HTM.Text = "C:\\Sito\\index.htm";
  b.ui.dialog_results = {"D:\\Web\\x.htm", "x.htm/y", "D:\\W\\a\\b.htm/c\\d"};
  Command6_Click(b.v);
  EXPECT_EQ(f.txtNOME_FILE_HTM.Text + b.v.Module1.Dir_Base, "D:\\Web\\index.htmD:\\Web\\");
  Command6_Click(b.v);  // no backslash: the page moves to the program's folder
  EXPECT_EQ(f.txtNOME_FILE_HTM.Text, "C:\\VETRINA\\index.htm");
  f.txtNOME_FILE_HTM.Text = "pagina.htm";
  Command6_Click(b.v);
  EXPECT_EQ(f.txtNOME_FILE_HTM.Text, "D:\\W\\a\\pagina.htm");
}

// A dialog that breaks down is taken as one the user gave up on.
class DialogoRotto : public RecordingUi {
 public:
  std::string FileDialog(const std::string&, const std::string&, const std::string&) override {
    throw std::runtime_error("componente mancante");
  }
};

TEST(Command6, AFailingDialogGivesTheEmptyResult) {
  MemoryFileSystem fs;
  DialogoRotto ui;
  Vetrina v(fs, ui);
  v.frmALBUM.txtPATH_RICERCA.Text = "C:\\Foto\\x";
  v.frmALBUM.txtNOME_FILE_HTM.Text = "C:\\Sito\\index.htm";
  Command3_Click(v);
  Command6_Click(v);
  EXPECT_EQ(v.frmALBUM.txtPATH_RICERCA.Text + v.frmALBUM.txtNOME_FILE_HTM.Text,
            "C:\\Foto\\xC:\\Sito\\index.htm");
  EXPECT_EQ(ui.repaints, 2);
}

}  // namespace
}  // namespace vf::test
