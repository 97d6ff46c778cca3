#ifndef VF_TESTS_SUPPORT_FILELIST_BANCO_H_
#define VF_TESTS_SUPPORT_FILELIST_BANCO_H_

#include <string>
#include <vector>

#include "tests/support/memory_file_system.h"
#include "shell/vetrina.h"
#include "tests/support/recording_ui.h"

namespace vf::test {

// A started program over a file layer in memory and a recording UserOps,
// with the start-up's own events dropped.
struct Banco {
  Banco();
  // The entries of List1, in order.
  std::vector<std::string> Voci() const;
  // Appends texts to List1 as a load would.
  void Aggiungi(const std::vector<std::string>& voci);

  MemoryFileSystem fs;
  RecordingUi ui;
  Vetrina v{fs, ui};
};

}  // namespace vf::test

#endif  // VF_TESTS_SUPPORT_FILELIST_BANCO_H_
