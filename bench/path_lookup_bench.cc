// Times the case-blind lookup of the host file layer against a plain stat of
// the same files: 20,000 names in one folder, each typed in the other case.
// Every timed round starts with a fresh file layer, so its one listing of the
// folder is paid inside the round.
#include <sys/stat.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "platform/failure.h"
#include "platform/host_file_system.h"

namespace {

constexpr int kNames = 20000;
constexpr int kRounds = 5;

template <typename Body>
double BestSeconds(Body body) {
  double best = 1e9;
  for (int round = 0; round < kRounds; ++round) {
    auto start = std::chrono::steady_clock::now();
    body();
    std::chrono::duration<double> took = std::chrono::steady_clock::now() - start;
    best = std::min(best, took.count());
  }
  return best;
}

}  // namespace

int main() {
  namespace fs = std::filesystem;
  std::string pattern = (fs::temp_directory_path() / "vf-bench-XXXXXX").string();
  if (mkdtemp(pattern.data()) == nullptr) return 1;
  const fs::path root = pattern;
  fs::create_directory(root / "fotos");
  std::vector<std::string> host_paths;
  std::vector<std::string> win_paths;
  for (int i = 1; i <= kNames; ++i) {
    char name[32];
    std::snprintf(name, sizeof name, "p%05d.jpg", i);
    host_paths.push_back((root / "fotos" / name).string());
    std::ofstream(host_paths.back());
    std::snprintf(name, sizeof name, "P%05d.JPG", i);
    win_paths.push_back(std::string("C:\\FOTOS\\") + name);
  }

  int missed = 0;
  double plain = BestSeconds([&] {
    struct stat st;
    for (const std::string& path : host_paths) missed += ::stat(path.c_str(), &st) != 0;
  });
  double layer = BestSeconds([&] {
    vf::HostFileSystem files({{'C', root.string(), false}});
    int attributes = 0;
    for (const std::string& path : win_paths) {
      missed += files.Attributes(path, &attributes) != vf::kOk;
    }
  });
  fs::remove_all(root);
  if (missed != 0) {
    std::fprintf(stderr, "path lookup: %d names not found\n", missed);
    return 1;
  }
  std::printf("path lookup: ratio %.2f (target <= 3)\n", layer / plain);
  return 0;
}
