#ifndef VF_TESTS_SUPPORT_HOST_CHECKS_H_
#define VF_TESTS_SUPPORT_HOST_CHECKS_H_

#include <sys/resource.h>
#include <sys/stat.h>

#include <csignal>
#include <cstdint>
#include <filesystem>
#include <utility>
#include <vector>
#include <vips/vips8>

// What the tests of the file layer and of the publishing pass both do on
// the host.
namespace vf::test {

inline const std::vector<double> kBlue{0, 0, 255}, kOrange{200, 120, 40};

// What `work` gives while no file may grow past 4 KB, as on a full disk.
auto OnAFullDisk(auto work) {
  std::signal(SIGXFSZ, SIG_IGN);  // the write that crosses the limit fails instead
  rlimit old{};
  ::getrlimit(RLIMIT_FSIZE, &old);
  const rlimit small{4096, old.rlim_max};
  ::setrlimit(RLIMIT_FSIZE, &small);
  auto result = work();
  ::setrlimit(RLIMIT_FSIZE, &old);
  return result;
}

// A file rewritten in place, even with the same bytes, gets another inode.
using Stamp = std::pair<ino_t, int64_t>;
inline Stamp StampOf(const std::filesystem::path& path) {
  struct stat st {};
  ::stat(path.c_str(), &st);
  return {st.st_ino, int64_t{st.st_mtim.tv_sec} * 1'000'000'000 + st.st_mtim.tv_nsec};
}

// A picture of one colour, in 8-bit sRGB.
inline vips::VImage Painted(int width, int height, const std::vector<double>& colour) {
  VIPS_INIT("vf_tests");
  return (vips::VImage::black(width, height, vips::VImage::option()->set("bands", 3)) + colour)
      .cast(VIPS_FORMAT_UCHAR);
}

// A colour with grain over it: grain compresses badly, so a JPEG of it is
// mostly data, and slow to scale.
inline vips::VImage Grain(int width, int height, const std::vector<double>& colour = {0, 0, 0},
                          double sigma = 60) {
  return (Painted(width, height, colour) +
          vips::VImage::gaussnoise(width, height, vips::VImage::option()->set("sigma", sigma)))
      .cast(VIPS_FORMAT_UCHAR);
}

}  // namespace vf::test

#endif  // VF_TESTS_SUPPORT_HOST_CHECKS_H_
