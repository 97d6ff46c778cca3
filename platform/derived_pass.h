#ifndef VF_PLATFORM_DERIVED_PASS_H_
#define VF_PLATFORM_DERIVED_PASS_H_

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include "platform/host_file_system.h"

namespace vf {

struct DerivedPass {
  // Italian messages for the user, in order: the sizes file's bad lines,
  // then the pictures that could only be copied. Empty when all went well.
  std::vector<std::string> messages;
  bool stopped = false;  // `progress` asked to stop
};

// What a finished build hands over: when the program's folder (a Windows
// path) holds DIMENSIONI.TXT, every picture that the build copied into an
// album folder (a target named IMG_nnn.* in a folder DIR_nnnn) gets its
// derived pictures, one per size. Without the file nothing is written. The
// copies recorded by `fs` are taken in either case, so a build never
// derives the copies of an earlier one. `progress(done, total)` as for
// DerivePictures.
DerivedPass RunDerivedPass(HostFileSystem& fs, const std::string& program_folder, bool capitals,
                           const std::function<bool(size_t, size_t)>& progress);

}  // namespace vf

#endif  // VF_PLATFORM_DERIVED_PASS_H_
