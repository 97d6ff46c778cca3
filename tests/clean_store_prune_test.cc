// What no build uses leaves the cache of clean copies: the stored copies of
// a site that this build did not make, and the stores of sites that are
// gone or idle.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <chrono>
#include <filesystem>
#include <string>

#include "tests/support/clean_site.h"

namespace vf {
namespace {

namespace fs = std::filesystem;
using namespace vf::test;

TEST(CleanStoreTest, WhatNoBuildUsesLeavesTheCache) {
  const std::string jpeg = Tagged("a.jpg", Saved(Grain(64, 48, kOrange, 30), ".jpg"));
  {
    // A copy this build did not make loses its stored file; a store left
    // with nothing goes whole.
    Site site;
    const CopyRecord a = site.Add("a.jpg", jpeg), b = site.Add("b.jpg", jpeg);
    const CopyRecord bare = site.Add("b.bmp", kBmp);
    site.Clean({a, b});
    EXPECT_TRUE(fs::exists(site.Stored(b)));
    Site::Recopy(a);
    site.Clean({a});
    EXPECT_TRUE(fs::exists(site.Stored(a)));
    EXPECT_FALSE(fs::exists(site.Stored(b)));
    site.Clean({bare});
    EXPECT_FALSE(fs::exists(site.Store()));
  }
  // The store of another site, as the pass into "uno" finds it.
  const struct {
    const char* what;
    bool site_gone;
    int idle_days;
    bool held;              // by another pass
    const char* site_file;  // written over the store's, when given
    bool stays;
  } cases[] = {
      {"its site there", false, 0, false, nullptr, true},
      {"its site gone", true, 0, false, nullptr, false},
      {"idle for 61 days", false, 61, false, nullptr, false},
      {"idle for 59 days", false, 59, false, nullptr, true},
      {"its site gone, held by another pass", true, 0, true, nullptr, true},
      {"its site file cut short", false, 0, false, "/altrove", true},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    Site site;
    const CopyRecord one = site.Add("a.jpg", jpeg, "uno");
    const CopyRecord two = site.Add("b.jpg", jpeg, "due");
    site.Clean({two});
    ASSERT_TRUE(fs::exists(site.Stored(two, "due")));
    if (c.site_gone) fs::remove_all(site.Path("due"));
    if (c.site_file != nullptr) site.Write(site.Store("due") + "/sito", c.site_file);
    if (c.idle_days > 0) {
      const auto then = std::chrono::system_clock::now() - std::chrono::hours(24 * c.idle_days);
      const timespec times[2] = {{0, UTIME_OMIT}, {std::chrono::system_clock::to_time_t(then), 0}};
      ::utimensat(AT_FDCWD, site.Store("due").c_str(), times, 0);
    }
    Fd held(c.held ? ::open(site.Store("due").c_str(), O_RDONLY | O_DIRECTORY) : -1);
    if (c.held) {
      ASSERT_EQ(::flock(held.get(), LOCK_EX), 0);
    }
    site.Clean({one});
    EXPECT_EQ(fs::exists(site.Store("due")), c.stays);
    EXPECT_TRUE(fs::exists(site.Stored(one, "uno")));
  }
}

}  // namespace
}  // namespace vf
