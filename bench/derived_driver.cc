// Makes the derived pictures of every picture in a folder, as a build does,
// for bench/derived.sh and bench/derived_memory.sh: the pictures go, a
// hundred an album, to SITE/dir_0001, SITE/dir_0002, ... named as a build
// names its copies (img_001.jpg, img_002.eic for a .heic...), with their
// sizes, and with -a an AVIF beside each.
//
//   derived_driver [-a] [-w WORKERS] [-b BUDGET_MB] SOURCES SITE FOLDER:PIXELS...
//
// Prints the number of pictures, of plain copies, of failures and of
// pictures without their AVIF, then the workers, the budget, the largest
// picture's estimated decoded size and the peak resident size of the
// process, in MB; exits 1 when a derived picture or an AVIF asked for could
// not be written.
#include <sys/resource.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

#include "publish/derived_memory.h"
#include "publish/derived_pictures.h"
#include "publish/site_names.h"

int main(int argc, char** argv) {
  vf::DeriveOptions options;
  int arg = 1;
  if (arg < argc && std::string(argv[arg]) == "-a") {
    options.avif = true;
    ++arg;
  }
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
    std::fprintf(stderr,
                 "usage: %s [-a] [-w WORKERS] [-b BUDGET_MB] SOURCES SITE FOLDER:PIXELS...\n",
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
    const std::string album = vf::AlbumFolderName(static_cast<int64_t>(i / 100 + 1), false);
    const std::string name =
        vf::CopyName(static_cast<int64_t>(i % 100 + 1), vf::CopyExtension(sources[i]), false);
    fs::create_directories(fs::path(site) / album);
    copies.push_back({sources[i], site + "/" + album + "/" + name});
  }
  vf::DeriveOutcome outcome = vf::DerivePictures(copies, sizes, false, nullptr, options);
  std::printf("%zu pictures, %zu plain copies, %zu failed, %zu without AVIF\n", copies.size(),
              outcome.plain_copies.size(), outcome.failed.size(), outcome.avif_missing.size());
  rusage usage{};
  ::getrusage(RUSAGE_SELF, &usage);
  const int64_t budget =
      options.memory_budget > 0 ? options.memory_budget : vf::DefaultDecodeBudget();
  std::printf("workers %zu, budget %.1f MB, largest picture %.1f MB, peak resident %.1f MB\n",
              options.workers, budget / 1048576.0, outcome.largest_cost / 1048576.0,
              usage.ru_maxrss / 1024.0);
  return outcome.failed.empty() && outcome.avif_missing.empty() ? 0 : 1;
}
