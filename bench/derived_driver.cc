// Makes the derived pictures of every picture in a folder, as a build does,
// for bench/derived.sh and bench/derived_memory.sh: the pictures go, a
// hundred an album, to SITE/dir_0001, SITE/dir_0002, ... as img_001.jpg, ...
// with their sizes.
//
//   derived_driver [-w WORKERS] [-b BUDGET_MB] SOURCES SITE FOLDER:PIXELS...
//
// Prints the number of pictures and of plain copies, then the workers, the
// budget, the largest picture's estimated decoded size and the peak resident
// size of the process, in MB; exits 1 when a derived picture could not be
// written.
#include <sys/resource.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

#include "publish/derived_memory.h"
#include "publish/derived_pictures.h"

int main(int argc, char** argv) {
  vf::DeriveOptions options;
  int arg = 1;
  for (; arg + 1 < argc && argv[arg][0] == '-'; arg += 2) {
    const std::string flag = argv[arg];
    if (flag == "-w") {
      options.workers = std::stoul(argv[arg + 1]);
    } else if (flag == "-b") {
      options.memory_budget = std::stoll(argv[arg + 1]) << 20;
    } else {
      return 2;
    }
  }
  if (argc - arg < 3) {
    std::fprintf(stderr, "usage: %s [-w WORKERS] [-b BUDGET_MB] SOURCES SITE FOLDER:PIXELS...\n",
                 argv[0]);
    return 2;
  }
  namespace fs = std::filesystem;
  const std::string from = argv[arg], site = argv[arg + 1];
  std::vector<std::string> sources;
  for (const fs::directory_entry& entry : fs::directory_iterator(from)) {
    if (entry.is_regular_file()) sources.push_back(entry.path().string());
  }
  std::sort(sources.begin(), sources.end());
  std::vector<vf::DerivedSize> sizes;
  for (int i = arg + 2; i < argc; ++i) {
    std::string size = argv[i];
    size_t colon = size.find(':');
    if (colon == std::string::npos) return 2;
    sizes.push_back({size.substr(0, colon), std::stoi(size.substr(colon + 1))});
  }
  std::vector<vf::CopyRecord> copies;
  for (size_t i = 0; i < sources.size(); ++i) {
    char album[32], name[32];
    std::snprintf(album, sizeof album, "dir_%04zu", i / 100 + 1);
    std::string extension = fs::path(sources[i]).extension().string();
    std::snprintf(name, sizeof name, "img_%03zu", i % 100 + 1);
    fs::create_directories(fs::path(site) / album);
    copies.push_back({sources[i], site + "/" + album + "/" + name + extension});
  }
  vf::DeriveOutcome outcome = vf::DerivePictures(copies, sizes, false, nullptr, options);
  std::printf("%zu pictures, %zu plain copies, %zu failed\n", copies.size(),
              outcome.plain_copies.size(), outcome.failed.size());
  rusage usage{};
  ::getrusage(RUSAGE_SELF, &usage);
  const int64_t budget =
      options.memory_budget > 0 ? options.memory_budget : vf::DefaultDecodeBudget();
  std::printf("workers %zu, budget %.1f MB, largest picture %.1f MB, peak resident %.1f MB\n",
              options.workers, budget / 1048576.0, outcome.largest_cost / 1048576.0,
              usage.ru_maxrss / 1024.0);
  return outcome.failed.empty() ? 0 : 1;
}
