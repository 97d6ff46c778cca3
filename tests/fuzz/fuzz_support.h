#ifndef VF_TESTS_FUZZ_FUZZ_SUPPORT_H_
#define VF_TESTS_FUZZ_FUZZ_SUPPORT_H_

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

#include "platform/user_ops.h"

namespace vf::fuzz {

// A fault the harness found: printed and turned into a crash, so that
// libFuzzer keeps the input.
[[noreturn]] inline void Fail(const char* what, std::string_view detail = {}) {
  std::fprintf(stderr, "fuzz check failed: %s [%.*s]\n", what, static_cast<int>(detail.size()),
               detail.data());
  std::abort();
}

inline void Check(bool ok, const char* what, std::string_view detail = {}) {
  if (!ok) Fail(what, detail);
}

// Splits the input at every line holding only "%%", so that one seed can
// carry several files in a form a person can read and edit.
inline std::vector<std::string> Sections(std::string_view input) {
  std::vector<std::string> sections(1);
  size_t pos = 0;
  while (pos <= input.size()) {
    size_t end = input.find('\n', pos);
    std::string_view line = input.substr(pos, end == std::string_view::npos ? end : end - pos);
    if (line == "%%" || line == "%%\r") {
      sections.emplace_back();
    } else {
      sections.back().append(line);
      if (end != std::string_view::npos) sections.back() += '\n';
    }
    if (end == std::string_view::npos) break;
    pos = end + 1;
  }
  return sections;
}

// Lines joined with CR LF, the way templates are written on disk.
inline std::string CrLf(std::string_view text) {
  std::string out;
  for (char c : text) {
    if (c == '\n') out += '\r';
    out += c;
  }
  return out;
}

// The user operations of a fuzzed run: nothing is shown, questions take
// their answers from the bits of `answers` in turn, dialogs give up.
class SilentUi : public UserOps {
 public:
  explicit SilentUi(std::string program_folder, uint32_t answers = 0)
      : program_folder_(std::move(program_folder)), answers_(answers) {}

  void Message(const std::string&) override {}
  bool Question(const std::string&) override {
    bool yes = (answers_ & 1u) != 0;
    answers_ = (answers_ >> 1) | (yes ? 0x80000000u : 0u);
    return yes;
  }
  void Beep() override {}
  void Cursor(bool) override {}
  void Repaint() override {}
  std::string FileDialog(const std::string&, const std::string&, const std::string&) override {
    return "";
  }
  double ScreenWidthTwips() override { return 1024 * 15.0; }
  double TwipsPerPixelX() override { return 15.0; }
  std::string ProgramFolder() override { return program_folder_; }
  bool StartCommand(const std::string&) override { return true; }
  [[noreturn]] void End() override { throw FineProgramma{}; }

 private:
  std::string program_folder_;
  uint32_t answers_;
};

// A host folder made for one run and removed with everything in it.
class TempFolder {
 public:
  TempFolder() {
    std::error_code ec;
    std::string pattern = (std::filesystem::temp_directory_path(ec) / "vf-fuzz-XXXXXX").string();
    std::vector<char> name(pattern.begin(), pattern.end());
    name.push_back('\0');
    if (::mkdtemp(name.data()) == nullptr) Fail("mkdtemp", pattern);
    root_ = name.data();
  }
  ~TempFolder() {
    std::error_code ec;
    std::filesystem::remove_all(root_, ec);
  }
  TempFolder(const TempFolder&) = delete;
  TempFolder& operator=(const TempFolder&) = delete;

  const std::filesystem::path& root() const { return root_; }

 private:
  std::filesystem::path root_;
};

}  // namespace vf::fuzz

#endif  // VF_TESTS_FUZZ_FUZZ_SUPPORT_H_
