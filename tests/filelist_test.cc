// The file list: loading a folder tree, the filter, editing the list, and
// the dialogs that choose folders and files; and the windows' models, every
// control set up once with a name of its own, a place and its text.
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "commands/clic.h"
#include "filelist/caricamento.h"
#include "filelist/dialoghi.h"
#include "filelist/legge_dir.h"
#include "filelist/modifica_elenco.h"
#include "shell/frm_album.h"
#include "tests/support/banco.h"
#include "tests/support/e2e.h"

namespace vf::test {
namespace {

using Voci = std::vector<std::string>;
const std::string kDialogo = "DIALOG: Ricerca cartelle/directory contenenti Foto/Film/Suoni | ";
const std::string kCarica = "CURSOR: BUSY|BEEP|CURSOR: NORMAL";

void Files(Banco& b, const Voci& paths) {
  for (const std::string& p : paths) b.fs.AddFile(p, "");
}

std::pair<std::string, std::string> Split(const std::string& row) {
  return {row.substr(0, row.find('|')), row.substr(row.find('|') + 1)};
}

TEST(Filelist, FilterAndFolderTexts) {
  // Name|filter: the extension is what follows the first dot.
  for (const char* row : {"a.JPG|  Jpg  ", "a. jpg|jpg", "x.jpeg|jpeg", "r.\xC3\xA0v|\xC3\x80V",
                          "b.BMP|*", "c.Tif|*", "d.gif| * ", "e.wmf|*"}) {
    EXPECT_TRUE(Passa_Filtro(Split(row).first, Split(row).second)) << row;
  }
  for (const char* row : {"foto.2003.jpg|jpg", "foto.2003.jpg|*", "x.jpeg|*", "jpg|jpg", "fine.|*",
                          "a.jpg| ", "x.htm|*", "x.png|*", "a.jpg|**"}) {
    EXPECT_FALSE(Passa_Filtro(Split(row).first, Split(row).second)) << row;
  }
  for (const char* row : {"C:\\Foto\\*.*|C:\\Foto\\", "C:\\Foto\\*.jpg|C:\\Foto\\*.jpg",
                          "C:\\Foto\\a*b|C:\\Foto\\a", "x*yz|x", "ab*|ab", "***|"}) {
    EXPECT_EQ(Togli_Asterischi(Split(row).first), Split(row).second) << row;
  }
  PercorsoDiviso d = Taglia_Percorso("C:\\Foto\\Mare\\a.jpg");
  EXPECT_EQ(d.Cartella + "|" + d.Nome, "C:\\Foto\\Mare\\|a.jpg");
  d = Taglia_Percorso("C:a/b.htm");
  EXPECT_EQ(d.Cartella + "|" + d.Nome, "|C:a/b.htm");
}

TEST(Filelist, LoadRefusesADotAppendsCountsAndSetsTheButtons) {
  Banco b;
  auto& f = b.v.frmALBUM;
  Files(b, {"C:\\radice.jpg", "D:\\Foto\\p0.jpg", "D:\\Foto\\p1.jpg", "D:\\Foto\\p2.jpg"});
  f.txtESTENSIONE.Text = "a.b";
  cmdCONFERMA_Click(b.v);
  EXPECT_EQ(b.Eventi() + f.txtNUM_FILE.Text,
            "BEEP|MSG: Indicare solo l'estensione dei files da cercare !!!");
  // A blank folder text is "c:\"; stars only, the root of the current drive.
  f.txtESTENSIONE.Text = "jpg";
  f.txtPATH_RICERCA.Text = "   ";
  cmdCONFERMA_Click(b.v);
  f.txtPATH_RICERCA.Text = "***";
  cmdCONFERMA_Tutti_Click(b.v);
  EXPECT_EQ(b.Voci(), (Voci{"c:\\radice.jpg", "\\radice.jpg"}));
  EXPECT_EQ(f.txtESTENSIONE.Text, "*");

  f.List1.Clear();
  b.Aggiungi({"voce di prima"});
  b.Eventi();
  f.txtPATH_RICERCA.Text = "  D:\\Foto\\*.*  ";
  f.txtMAX_PER_RIGA.Text = "9";
  int durante = 0;
  b.ui.on_repaint = [&] {
    durante += !f.cmdCONFERMA.Enabled && !f.cmdCONFERMA_Tutti.Enabled && b.v.occupato;
  };
  cmdCONFERMA_Click(b.v);
  EXPECT_EQ(durante, 3);
  EXPECT_EQ(b.Eventi() + f.List1.List(1), kCarica + "D:\\Foto\\p0.jpg");
  EXPECT_EQ(f.txtNUM_FILE.Text + f.txtMAX_PER_RIGA.Text, "41");
  EXPECT_TRUE(f.Command1.Enabled && f.Command4.Enabled && !f.Command5.Enabled);
  EXPECT_TRUE(f.cmdCONFERMA.Enabled && f.cmdCONFERMA_Tutti.Enabled && !b.v.occupato);
  // Start folders that give nothing: no message, the load ends as usual.
  for (const char* cartella : {"C:\\Manca", "Q:\\Foto", "C:\\a|b", "D:\\Foto\\*.jpg"}) {
    f.List1.Clear();
    f.txtPATH_RICERCA.Text = cartella;
    cmdCONFERMA_Click(b.v);
    EXPECT_EQ(b.Eventi(), kCarica) << cartella;
    EXPECT_EQ(f.txtNUM_FILE.Text, "0");
    EXPECT_TRUE(f.Command1.Enabled && f.cmdCONFERMA.Enabled && f.cmdCONFERMA_Tutti.Enabled);
  }
  // Pictures per row by the count (a second load counts the first one's
  // entries too) and the screen's width.
  const struct {
    int immagini;
    double pixel;
    const char *prima, *seconda;
  } rows[] = {{54, 1024, "1", "5"}, {55, 799.5, "4", "4"}, {55, 800, "5", "5"}};
  for (const auto& r : rows) {
    Banco c;
    for (int i = 0; i < r.immagini; ++i) c.fs.AddFile("C:\\F\\p" + std::to_string(i) + ".jpg", "");
    c.ui.screen_pixels = r.pixel;
    c.v.frmALBUM.txtPATH_RICERCA.Text = "C:\\F";
    cmdCONFERMA_Click(c.v);
    EXPECT_EQ(c.v.frmALBUM.txtMAX_PER_RIGA.Text, r.prima) << r.immagini << " " << r.pixel;
    cmdCONFERMA_Click(c.v);
    EXPECT_EQ(c.v.frmALBUM.txtMAX_PER_RIGA.Text, r.seconda) << r.immagini << " " << r.pixel;
  }
}

TEST(Filelist, ScanOrderFormsDepthAndHiddenNames) {
  Banco b;
  Files(b, {"C:\\R\\b.jpg", "C:\\R\\A.JPG", "C:\\R\\note.txt", "C:\\R\\A\\x.gif",
            "C:\\R\\A\\X\\deep.bmp", "C:\\R\\A\\Y\\y.tif", "C:\\R\\B\\z.wmf",
            "C:\\R\\.nascosta.jpg", "C:\\R\\.jpg", "C:\\R\\.h\\in.jpg", "C:\\S\\solo.jpg"});
  auto& f = b.v.frmALBUM;
  f.txtESTENSIONE.Text = "*";
  Legge_Dir(b.v, "C:\\R");
  EXPECT_EQ(b.Voci(), (Voci{"C:\\R\\A.JPG", "C:\\R\\b.jpg", "C:\\R\\A\\x.gif",
                            "C:\\R\\A\\X\\deep.bmp", "C:\\R\\A\\Y\\y.tif", "C:\\R\\B\\z.wmf"}));
  // One repaint per entry and one at the end of each folder with subfolders.
  EXPECT_EQ(b.ui.repaints, 8);
  EXPECT_EQ(b.Eventi(), "");
  // A trailing backslash gives the same entries, in the typed case.
  Legge_Dir(b.v, "c:\\r\\");
  ASSERT_EQ(f.List1.ListCount(), 12);
  EXPECT_EQ(f.List1.List(11), "c:\\r\\B\\z.wmf");
  // No filter: folders only, each before its tree, the start folder left out.
  f.List1.Clear();
  f.txtESTENSIONE.Text = "  ";
  Legge_Dir(b.v, "C:\\R");
  Legge_Dir(b.v, "C:\\S");
  EXPECT_EQ(b.Voci(), (Voci{"<C:\\R\\A>", "<C:\\R\\A\\X>", "<C:\\R\\A\\Y>", "<C:\\R\\B>"}));
  // The list emptied after the second entry, the filter cleared after the
  // fourth: the scan appends to what is left and reads the filter anew.
  f.List1.Clear();
  f.txtESTENSIONE.Text = "*";
  int n = 0;
  b.ui.on_repaint = [&] {
    if (++n == 2) f.List1.Clear();
    if (n == 4) f.txtESTENSIONE.Text = "";
  };
  Legge_Dir(b.v, "C:\\R");
  EXPECT_EQ(b.Voci(),
            (Voci{"C:\\R\\A\\x.gif", "C:\\R\\A\\X\\deep.bmp", "<C:\\R\\A\\Y>", "<C:\\R\\B>"}));
  // Links: a loop back to R ends, a folder reached twice is read once; a
  // name no Windows path can spell is skipped, odd bytes are kept.
  const std::string r = *b.fs.HostPath("C:\\R"), strano = "\xff\xfe \xC3\xA9t\xC3\xA9 .jpg ";
  Files(b, {"C:\\X\\c.jpg", "C:\\R\\" + strano});
  std::filesystem::create_directories(r + "/a?b");
  std::ofstream(r + "/a?b/no.jpg") << "";
  for (auto [target, at] : {std::pair{"..", "/A/su"}, {"../X", "/L"}, {"../X", "/M"}})
    ASSERT_EQ(::symlink(target, (r + at).c_str()), 0);
  f.List1.Clear();
  f.txtESTENSIONE.Text = "jpg";
  b.ui.on_repaint = nullptr;
  Legge_Dir(b.v, "C:\\R");
  EXPECT_EQ(b.Voci(),
            (Voci{"C:\\R\\A.JPG", "C:\\R\\b.jpg", "C:\\R\\" + strano, "C:\\R\\L\\c.jpg"}));
  EXPECT_EQ(b.Eventi(), "");

  // Folders at levels 0 to 52 with one picture each: levels 0 to 50 are
  // read, and without a filter level 50 still names its subfolder.
  Banco d;
  std::string cartella = "C:\\L", livello50;
  for (int livello = 0; livello <= 52; ++livello, cartella += "\\s") {
    d.fs.AddFile(cartella + "\\p.jpg", "");
    if (livello == 50) livello50 = cartella;
  }
  for (const char* filtro : {"*", ""}) {
    d.v.frmALBUM.List1.Clear();
    d.v.frmALBUM.txtESTENSIONE.Text = filtro;
    Legge_Dir(d.v, "C:\\L");
    ASSERT_EQ(d.v.frmALBUM.List1.ListCount(), 51);
    EXPECT_EQ(d.v.frmALBUM.List1.List(50),
              *filtro ? livello50 + "\\p.jpg" : "<" + livello50 + "\\s>");
    EXPECT_EQ(d.v.frmALBUM.scansione.Livello, 0);
  }
}

TEST(Filelist, RemovalAskAboutTheCurrentEntryOrRebuildInOrder) {
  Banco b;
  auto& l = b.v.frmALBUM.List1;
  cmdCANC_FILE_Click(b.v);  // empty list: nothing
  b.Aggiungi({"C:\\F\\a.jpg", "C:\\F\\b.jpg", "C:\\F\\c.jpg"});
  l.SetSelected(2, true);
  for (int64_t corrente : {-1, 3}) {  // none, or past the end
    l.ListIndex = corrente;
    cmdCANC_FILE_Click(b.v);
  }
  const std::string msg = "BEEP|MSG: SELEZIONARE UN FILE IN ELENCO tra i possibili  3 files !!!";
  EXPECT_EQ(b.Eventi(), msg + "|" + msg);
  // The entry named and removed is the current one, not the selected one.
  l.ListIndex = 0;
  cmdCANC_FILE_Click(b.v);
  EXPECT_EQ(b.Eventi(),
            "ASK: Confermi la cancellazione di C:\\F\\a.jpg dal solo elenco (S/N)  -> NO");
  b.ui.answers.push_back(true);
  cmdCANC_FILE_Click(b.v);
  EXPECT_EQ(b.Voci(), (Voci{"C:\\F\\b.jpg", "C:\\F\\c.jpg"}));
  EXPECT_TRUE(l.Selected(1));
  b.Eventi();

  // Several selected, far past the 1000 entries of the old table: the rest
  // stays in order, the position goes, the counter stays as typed.
  l.Clear();
  Voci tutte, rimaste;
  for (int i = 0; i < 2500; ++i) tutte.push_back("p" + std::to_string(i));
  b.Aggiungi(tutte);
  l.ListIndex = 7;
  cmdCANC_FILE_Click(b.v);  // nothing selected: all stay
  EXPECT_EQ(b.Voci(), tutte);
  EXPECT_EQ(l.ListIndex, -1);
  for (int i = 0; i < 2500; ++i) {
    if (i % 3 == 0) l.SetSelected(i, true);
    if (i % 3 != 0) rimaste.push_back(tutte[static_cast<size_t>(i)]);
  }
  b.v.frmALBUM.txtNUM_FILE.Text = "2500";
  cmdCANC_FILE_Click(b.v);
  EXPECT_EQ(b.Voci(), rimaste);
  EXPECT_FALSE(l.Selected(0));
  EXPECT_EQ(b.v.frmALBUM.txtNUM_FILE.Text + b.Eventi(), "2500");
  Option3_Click(b.v, 0);  // all selected
  cmdCANC_FILE_Click(b.v);
  EXPECT_EQ(l.ListCount(), 0);
}

TEST(Filelist, SelectAllNewListAndAddOneFile) {
  Banco b;
  auto& f = b.v.frmALBUM;
  f.txtPATH_RICERCA.Text = "C:\\Manca";  // a load that finds nothing enables nothing
  cmdCONFERMA_Click(b.v);
  EXPECT_FALSE(f.Command1.Enabled || f.Command4.Enabled);
  b.Aggiungi({"a", "b"});
  Option3_Click(b.v, 0);
  EXPECT_TRUE(f.List1.Selected(0) && f.List1.Selected(1));
  Option3_Click(b.v, 7);  // any index but 0 deselects
  EXPECT_FALSE(f.List1.Selected(0) || f.List1.Selected(1));
  f.txtNUM_FILE.Text = "2";
  Command2_Click(b.v);
  EXPECT_EQ(std::to_string(f.List1.ListCount()) + f.txtNUM_FILE.Text, "02");
  // Given up: Dir_Base is set all the same, nothing else happens.
  f.txtPATH_RICERCA.Text = "C:\\Foto\\scatto.jpg";
  cmdIns_File_Click(b.v);
  EXPECT_EQ(b.v.Module1.Dir_Base, "C:\\Foto\\");
  EXPECT_FALSE(f.Command5.Enabled);
  // A film, trimmed only, the "/" kept; the folder text does not follow.
  b.ui.dialog_results = {"  D:\\Film\\vacanze.avi/x  ", "D:\\Film\\vacanze.avi/x"};
  cmdIns_File_Click(b.v);
  cmdIns_File_Click(b.v);
  EXPECT_EQ(b.Voci(), (Voci{"D:\\Film\\vacanze.avi/x", "D:\\Film\\vacanze.avi/x"}));
  EXPECT_EQ(f.txtNUM_FILE.Text, "2");
  EXPECT_TRUE(f.Command1.Enabled && f.Command4.Enabled && f.Command5.Enabled);
  EXPECT_EQ(f.txtPATH_RICERCA.Text + b.v.Module1.Dir_Base, "C:\\Foto\\scatto.jpgC:\\Foto\\");
}

TEST(Filelist, FolderDialogs) {
  Banco b;
  auto& f = b.v.frmALBUM;
  f.txtPATH_RICERCA.Text = "C:\\Foto\\scatto.jpg";
  Command3_Click(b.v);  // given up
  EXPECT_EQ(b.Eventi(), "BEEP|" + kDialogo + "C:\\Foto\\ | *.* -> ");
  EXPECT_EQ(b.ui.repaints, 1);
  EXPECT_EQ(f.txtPATH_RICERCA.Text + b.v.Module1.Dir_Base, "C:\\Foto\\scatto.jpgC:\\Foto\\");
  b.ui.dialog_results = {" D:\\Img\\Mare\\a.jpg ", "E:\\Uno\\x.jpg/altro\\y.jpg", "*.*"};
  Command3_Click(b.v);
  EXPECT_EQ(f.txtPATH_RICERCA.Text + b.v.Module1.Dir_Base, "D:\\Img\\Mare\\D:\\Img\\Mare\\");
  Command7_Click(b.v);  // what follows a "/" goes before the split
  EXPECT_EQ(f.txtPATH_RICERCA.Text + b.v.Module1.Dir_Base, "E:\\Uno\\E:\\Uno\\");
  // No backslash in the result: the old text's folder part comes back.
  f.txtPATH_RICERCA.Text = "C:\\Foto\\scatto.jpg";
  Command3_Click(b.v);
  EXPECT_EQ(f.txtPATH_RICERCA.Text, "C:\\Foto\\");
  // The output folder keeps the page's name; without a backslash in the
  // result the page moves to the program's folder.
  f.txtNOME_FILE_HTM.Text = "C:\\Sito\\index.htm";
  b.ui.dialog_results = {"D:\\Web\\x.htm", "x.htm/y", "D:\\W\\a\\b.htm/c\\d"};
  b.Eventi();
  Command6_Click(b.v);
  EXPECT_EQ(b.Eventi(), "BEEP|" + kDialogo + "C:\\VETRINA\\ | *.* -> D:\\Web\\x.htm");
  EXPECT_EQ(f.txtNOME_FILE_HTM.Text + b.v.Module1.Dir_Base, "D:\\Web\\index.htmD:\\Web\\");
  Command6_Click(b.v);
  EXPECT_EQ(f.txtNOME_FILE_HTM.Text, "C:\\VETRINA\\index.htm");
  f.txtNOME_FILE_HTM.Text = "pagina.htm";
  Command6_Click(b.v);
  EXPECT_EQ(f.txtNOME_FILE_HTM.Text, "D:\\W\\a\\pagina.htm");
  // A dialog that breaks down is taken as one the user gave up on.
  b.ui.dialog_breaks = true;
  Command3_Click(b.v);
  Command6_Click(b.v);
  EXPECT_EQ(f.txtPATH_RICERCA.Text + f.txtNOME_FILE_HTM.Text, "C:\\Foto\\D:\\W\\a\\pagina.htm");
}

template <typename Form>
void ExpectEveryControlSetUp(Form& form, size_t count) {
  std::set<std::string> names;
  std::set<int> tabs;
  for (const Control* c : form.Controls()) {
    names.insert(c->Name);
    using K = Control::Kind;
    EXPECT_TRUE(c->kind == K::kDialog || (c->Width > 0 && c->Height > 0)) << c->Name;
    const bool captioned = c->kind == K::kButton || c->kind == K::kOption || c->kind == K::kCheck ||
                           c->kind == K::kLabel;
    EXPECT_TRUE(!captioned || !c->Caption.empty()) << c->Name;
    EXPECT_TRUE(c->tab < 0 || tabs.insert(c->tab).second) << c->Name;
  }
  EXPECT_EQ(names.size(), count);
  EXPECT_FALSE(names.count(""));
  EXPECT_EQ(tabs.empty() ? 0 : *tabs.rbegin() + 1, static_cast<int>(tabs.size()));
}

TEST(WindowModel, EveryControlIsSetUp) {
  FrmAlbum main_window;
  ExpectEveryControlSetUp(main_window, 43);
  EXPECT_EQ(main_window.txtPATH_RICERCA.Text + main_window.txtESTENSIONE.Text,
            "C:\\VETRINA-FOTO\\*");
  EXPECT_FALSE(main_window.cmdCONFERMA_Tutti.Visible || main_window.Command4.Visible);
  FrmAlbum1 usage;
  ExpectEveryControlSetUp(usage, 5);
  EXPECT_EQ(usage.Option1.Value, 1);
  // The current position and the selection follow their entries when one
  // before them goes, and the position goes with its own; past the end
  // nothing is selected or named.
  for (auto [removed, current, after, left] : {std::tuple{1, 3, 2, 3},
                                               {1, 1, -1, 3},
                                               {2, 1, 1, 3},
                                               {0, 1, 0, 3},
                                               {4, 1, 1, 4},
                                               {-1, 1, 1, 4}}) {
    ListBox l;
    l.Assign({"a", "b", "c", "d"});
    for (int i : {-1, 3, 4}) l.SetSelected(i, true);
    l.ListIndex = current;
    l.RemoveItem(removed);
    EXPECT_EQ(l.ListIndex * 10 + l.ListCount(), after * 10 + left) << removed;
    EXPECT_EQ(l.List(left - 1) + l.List(left), "d") << removed;
    EXPECT_TRUE(l.Selected(left - 1) && !l.Selected(left - 2) && !l.Selected(left)) << removed;
  }
}

TEST(WindowModel, TheUsageDialogGivesTheSimplifiedOrTheCompleteWindow) {
  for (bool simplified : {true, false}) {
    TempTreeFileSystem fs;
    RecordingUi ui;
    ui.program_folder = "C:\\";
    ui.screen_pixels = simplified ? 800 : 799.5;
    NoPublishing publishing;
    Vetrina v{fs, ui, publishing};
    Main_Con_Scelta(v);
    EXPECT_EQ(v.frmALBUM1.Option1.Value * 10 + v.Module1.Tipo_Utilizzo, 10);
    EXPECT_TRUE(v.frmALBUM1.Loaded && !v.frmALBUM_Loaded);  // the window comes at Conferma
    EXPECT_FALSE(Clic(v, "Command2") || Clic(v, "frmALBUM1.Nessuno"));
    // Each option in turn; the last one clicked is the choice.
    for (const char* o : {"Option2", "Option1", simplified ? "Option1" : "Option2"})
      EXPECT_TRUE(Clic(v, std::string("frmALBUM1.") + o)) << o;
    EXPECT_EQ(v.frmALBUM1.Option1.Value * 10 + v.frmALBUM1.Option2.Value, simplified ? 10 : 1);
    EXPECT_EQ(v.Module1.Tipo_Utilizzo, simplified ? 1 : 2);
    v.Module1.Tipo_Utilizzo = 0;  // Conferma reads the options, not what their clicks left
    EXPECT_TRUE(Clic(v, "frmALBUM1.Command1") && Clic(v, "Option3(0)"));
    // An option clears only the options of its own frame; a check box flips.
    FrmAlbum& f = v.frmALBUM;
    f.Check2.Value = 1;
    for (const char* c : {"Option1", "Option3(1)", "Check1"}) EXPECT_TRUE(Clic(v, c)) << c;
    for (const Control* c : {&f.Option1, &f.Option2, &f.Option3[0], &f.Option3[1], &f.Check1})
      EXPECT_EQ(c->Value, c != &f.Option2 && c != &f.Option3[0]) << c->Name;
    EXPECT_EQ(f.Check2.Value, 1);
    EXPECT_EQ(std::to_string(v.Module1.Tipo_Utilizzo) + f.txtMAX_PER_RIGA.Text,
              simplified ? "15" : "24");
    EXPECT_EQ(f.Command1.Visible, !simplified);
    if (!simplified) continue;
    EXPECT_TRUE(f.Command4.Visible &&
                !(f.Label6[0].Visible || f.txtNOME_FILE_HTM.Visible || f.Option2.Visible));
    EXPECT_EQ(f.Label6[1].Caption + f.Label6[6].Caption + f.Label6[3].Caption, "143");
    EXPECT_EQ(std::to_string(f.Label6[3].Top) + f.txtNOME_FILE_HTM.Text, "2940C:\\\\index.htm");
    EXPECT_THROW(Clic(v, "frmALBUM1.Command2"), FineProgramma);  // Annulla ends the program
  }
}

}  // namespace
}  // namespace vf::test
