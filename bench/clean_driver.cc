// Cleans the album copies of a site as a build does after its derived
// pictures, for bench/clean_copies.sh: every SITE/dir_*/img_* file, each
// standing for its own source.
//
//   clean_driver [-w WORKERS] SITE
//
// Prints the number of copies, of those that lost a position, a serial
// number or a name, of those written again and of those that still carry
// their data; exits 1 unless every copy lost one of them.
#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

#include "publish/clean_copies.h"

int main(int argc, char** argv) {
  size_t workers = 0;
  int arg = 1;
  if (argc == 4 && std::string(argv[1]) == "-w") {
    workers = std::stoul(argv[2]);
    arg = 3;
  }
  if (argc != arg + 1) {
    std::fprintf(stderr, "usage: %s [-w WORKERS] SITE\n", argv[0]);
    return 2;
  }
  namespace fs = std::filesystem;
  std::vector<vf::CopyRecord> copies;
  for (const fs::directory_entry& album : fs::directory_iterator(argv[arg])) {
    if (!album.is_directory() || !album.path().filename().string().starts_with("dir_")) continue;
    for (const fs::directory_entry& file : fs::directory_iterator(album.path())) {
      const std::string name = file.path().string();
      if (file.is_regular_file() && file.path().filename().string().starts_with("img_")) {
        copies.push_back({name, name});
      }
    }
  }
  std::sort(copies.begin(), copies.end(),
            [](const vf::CopyRecord& a, const vf::CopyRecord& b) { return a.copy < b.copy; });
  const vf::CleanOutcome outcome = vf::CleanCopies(copies, workers);
  std::printf("%zu copies, %zu identifying, %zu written again, %zu carrying\n", copies.size(),
              outcome.identifying, outcome.rewritten.size(), outcome.carrying.size());
  return outcome.identifying == copies.size() ? 0 : 1;
}
