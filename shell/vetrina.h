#ifndef VF_SHELL_VETRINA_H_
#define VF_SHELL_VETRINA_H_

#include <cstdint>
#include <string>
#include <string_view>

#include "platform/file_system.h"
#include "platform/text_slots.h"
#include "platform/user_ops.h"
#include "publish/hand_over.h"
#include "shell/frm_album.h"
#include "shell/module1.h"

namespace vf {

// The program as a whole: the shared state, the two windows, and the
// platform it runs on. One exists per process; every command and procedure
// takes it. The platform objects and the publishing step are owned by the
// front end and outlive it.
struct Vetrina {
  Vetrina(FileSystem& file_system, UserOps& user_ops, PublishingStep& publishing_step)
      : fs(file_system), slots(file_system), ui(user_ops), publishing(publishing_step) {}

  FileSystem& fs;
  TextSlots slots;
  UserOps& ui;
  PublishingStep& publishing;

  vf::Module1 Module1;
  FrmAlbum frmALBUM;
  FrmAlbum1 frmALBUM1;
  bool frmALBUM_Loaded = false;

  // Album number that the next generator run starts at. 1 for a single
  // build; a paged build numbers its albums on from one run to the next so
  // that no run writes into the albums of another.
  int64_t Primo_Album = 1;
  // Album number after the last album that the latest run began.
  int64_t Album_Successivo = 1;
  // True while a build or a load runs, so that a front end can keep a second
  // one from starting at a repaint point.
  bool occupato = false;
  // The album copies of the build in progress, handed to `publishing` when
  // its site files are written.
  BuiltSite Sito_Costruito;
};

// Marks the program busy for the length of a build or a load, and puts the
// mark back as it was afterwards, also when the program ends in the middle.
class Occupato {
 public:
  explicit Occupato(Vetrina& v) : v_(v), prima_(v.occupato) { v_.occupato = true; }
  ~Occupato() { v_.occupato = prima_; }
  Occupato(const Occupato&) = delete;
  Occupato& operator=(const Occupato&) = delete;

 private:
  Vetrina& v_;
  bool prima_;
};

// The screen's width in pixels: its width in twips over the twips per pixel.
double Larghezza_Schermo(Vetrina& v);

// Upper-case mode: Option1 ("Maiuscole") is selected at this moment.
bool Maiuscole(const Vetrina& v);
// A text folded whole to the chosen case.
std::string CasoScelto(const Vetrina& v, std::string_view text);

}  // namespace vf

#endif  // VF_SHELL_VETRINA_H_
