#ifndef VF_PUBLISH_DERIVED_PASS_H_
#define VF_PUBLISH_DERIVED_PASS_H_

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include "platform/host_file_system.h"
#include "publish/derived_pictures.h"

namespace vf {

struct DerivedPass {
  // Italian messages for the user, in order: the sizes file's bad lines
  // ("Righe non valide nel file DIMENSIONI.TXT, non considerate:", then
  // each line, long ones cut, the first 20 and "(e altre N righe)"); the source photos whose
  // derived pictures are plain copies ("Immagini non riducibili, copiate come sono:"); the source
  // photos whose derived pictures could not be written and the album folders
  // whose record could not be ("Immagini ridotte non scritte:"). A photo is
  // named by its Windows path, once per cause, as "PATH - CAUSE"; lines are
  // separated by a CR. Empty when all went well.
  std::vector<std::string> messages;
  bool stopped = false;  // `progress` asked to stop
};

// What a finished build hands over: when the program's folder (a Windows
// path) holds DIMENSIONI.TXT, every picture that the build copied into an
// album folder (a target named IMG_nnn.* in a folder DIR_nnnn) gets its
// derived pictures, one per size. Without the file nothing is written. The
// copies recorded by `fs` are taken in either case, so a build never
// derives the copies of an earlier one; without the file no lock is taken
// either. `progress(done, total)` and `options` as for DerivePictures.
DerivedPass RunDerivedPass(HostFileSystem& fs, const std::string& program_folder, bool capitals,
                           const std::function<bool(size_t, size_t)>& progress,
                           const DeriveOptions& options = {});

}  // namespace vf

#endif  // VF_PUBLISH_DERIVED_PASS_H_
