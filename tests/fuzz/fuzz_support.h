#ifndef VF_TESTS_FUZZ_FUZZ_SUPPORT_H_
#define VF_TESTS_FUZZ_FUZZ_SUPPORT_H_

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>

namespace vf::fuzz {

namespace fs = std::filesystem;
void FuzzOne(std::string_view input);  // what a target does with one input

// A broken property is turned into a crash, so that libFuzzer keeps the input.
inline void Check(bool ok, const char* what, std::string_view detail = {}) {
  if (ok) return;
  std::fprintf(stderr, "fuzz check failed: %s [%s]\n", what, std::string(detail).c_str());
  std::abort();
}

// A host folder of this run's own holding these files, emptied for each input, gone at the end.
inline fs::path HostFolderWith(std::initializer_list<fs::path> files) {
  static char root[] = "/tmp/vf-fuzz-XXXXXX";
  static std::error_code ignored;
  static const bool made = ::mkdtemp(root) && !std::atexit([] { fs::remove_all(root, ignored); });
  Check(made && fs::remove_all(root) && fs::create_directory(root), "no host folder", root);
  for (const fs::path& file : files) {
    fs::create_directories(root / file.parent_path());
    std::ofstream(root / file) << file.filename().string();
  }
  return root;
}

}  // namespace vf::fuzz

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  vf::fuzz::FuzzOne(std::string_view(reinterpret_cast<const char*>(data), size));
  return 0;
}

#endif  // VF_TESTS_FUZZ_FUZZ_SUPPORT_H_
