#ifndef VF_SHELL_FRM_ALBUM_H_
#define VF_SHELL_FRM_ALBUM_H_

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "shell/controls.h"

namespace vf {

// State of a scan, shared by all levels of the recursion of the scanner: the
// level of the folder in work, 0 between scans. The subfolders of a level are
// kept by that level's own visit, so no folder has a limit on its names.
struct StatoScansione {
  int64_t Livello = 0;
  // Names of the latest scan that no page could link to, so left out: how
  // many, and the full paths of the first few (a folder's with its trailing
  // backslash).
  int64_t Scartati = 0;
  std::vector<std::string> Primi_Scartati;
};

// The main window "Vetrina Foto Digitali .HTML per Internet" as a model:
// every control with its properties as the window first has them, before
// Form_Load sets its defaults.
struct FrmAlbum {
  FrmAlbum();

  static constexpr const char* kTitolo = "Vetrina Foto Digitali .HTML per Internet";
  static constexpr int64_t kLeft = 1215, kTop = 825, kWidth = 9285, kHeight = 7095;

  Control txtPATH_RICERCA, txtESTENSIONE, txtNOME_FILE_HTM;
  Control Command7, Command6, Command2, Command3, cmdCONFERMA, cmdCONFERMA_Tutti;
  Control Command1, Command4, txtMAX_N_FILES, txtMAX_PER_RIGA, cmdIns_File, cmdCANC_FILE;
  Control txtNUM_FILE, Check1, Check2, Option1, Option2, Command5, cmdFINE;
  Control List1Frame;  // position and tab of List1
  ListBox List1;
  Control Label1, Label2, Label3, Label4, Label5;
  Control Label6[7];
  Control Label7, Label8, Frame1;
  Control Option3[2];
  Control Shape1, CommonDialog1, CommonDialog2;

  StatoScansione scansione;

  // Every control, List1's place included, in tab order, then those with no
  // tab position.
  std::vector<Control*> Controls();
  // A control by name: "txtNUM_FILE", "Label6(3)", "Option3(1)", "List1".
  // nullptr for an unknown name.
  Control* Find(std::string_view name);
};

// The usage selection dialog "ALB-VIS".
struct FrmAlbum1 {
  FrmAlbum1();

  static constexpr const char* kTitolo = "ALB-VIS";
  static constexpr int64_t kLeft = 3570, kTop = 3735, kWidth = 4170, kHeight = 2040;

  Control Frame1, Option1, Option2, Command1, Command2;
  bool Loaded = false;  // shown by a start-up that opens it

  std::vector<Control*> Controls();
  Control* Find(std::string_view name);
};

}  // namespace vf

#endif  // VF_SHELL_FRM_ALBUM_H_
