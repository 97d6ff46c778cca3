// Every test, and every runner a test starts, keeps its cache in a folder
// of its own, removed at the end: a build keeps its clean copies in the
// user's cache, and the tests must neither fill the real one nor find what
// an earlier run left there.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>
#include <system_error>

namespace vf::test {
namespace {

namespace fs = std::filesystem;

class PrivateCache : public ::testing::Environment {
 public:
  void SetUp() override {
    std::string pattern = (fs::temp_directory_path() / "vf-cache-XXXXXX").string();
    if (::mkdtemp(pattern.data()) == nullptr) return;
    folder_ = pattern;
    ::setenv("XDG_CACHE_HOME", folder_.c_str(), 1);
  }
  void TearDown() override {
    std::error_code error;
    if (!folder_.empty()) fs::remove_all(folder_, error);
  }

 private:
  std::string folder_;
};

// gtest owns the environment from here on.
[[maybe_unused]] ::testing::Environment* const kPrivateCache =
    ::testing::AddGlobalTestEnvironment(std::make_unique<PrivateCache>().release());

}  // namespace
}  // namespace vf::test
