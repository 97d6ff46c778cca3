// Makes the derived pictures of every picture in a folder, as a build does,
// for bench/derived.sh to time: the pictures go, a hundred an album, to
// SITE/dir_0001, SITE/dir_0002, ... as img_001.jpg, ... with their sizes.
//
//   derived_driver SOURCES SITE FOLDER:PIXELS...
//
// Prints the number of pictures and of plain copies; exits 1 when a derived
// picture could not be written.
#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

#include "platform/derived_pictures.h"

int main(int argc, char** argv) {
  if (argc < 4) {
    std::fprintf(stderr, "usage: %s SOURCES SITE FOLDER:PIXELS...\n", argv[0]);
    return 2;
  }
  namespace fs = std::filesystem;
  std::vector<std::string> sources;
  for (const fs::directory_entry& entry : fs::directory_iterator(argv[1])) {
    if (entry.is_regular_file()) sources.push_back(entry.path().string());
  }
  std::sort(sources.begin(), sources.end());
  std::vector<vf::DerivedSize> sizes;
  for (int i = 3; i < argc; ++i) {
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
    fs::create_directories(fs::path(argv[2]) / album);
    copies.push_back({sources[i], std::string(argv[2]) + "/" + album + "/" + name + extension});
  }
  vf::DeriveOutcome outcome = vf::DerivePictures(copies, sizes, false, nullptr);
  std::printf("%zu pictures, %zu plain copies, %zu failed\n", copies.size(),
              outcome.plain_copies.size(), outcome.failed.size());
  return outcome.failed.empty() ? 0 : 1;
}
