// The index of a store of clean copies, and the cache folder that the
// stores stand in.
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <tuple>
#include <utility>

#include "desktop/user_area.h"
#include "publish/clean_index.h"

namespace vf {
namespace {

TEST(CleanIndexTest, ALineThatDoesNotReadIsLeftOutAndTheRestReadsBackAsWritten) {
  const std::string copy(64, 'c'), source(64, '5');
  const std::string good = copy + "\t" + source + "\t300\t17\t280\t18\t99\t";
  const std::pair<std::string, bool> cases[] = {
      {good + "identifying", true},
      {good + "quiet", true},
      {good + "rewritten", true},
      {good + "carrying", false},
      {good + "identifying\t", false},
      {copy + "\t" + source + "\t300\t17\t280\t18\tidentifying", false},
      {copy.substr(1) + "\t" + source + "\t300\t17\t280\t18\t99\tquiet", false},
      {std::string(64, 'C') + "\t" + source + "\t300\t17\t280\t18\t99\tquiet", false},
      {copy + "\t" + source + "\t300\t-17\t280\t18\t99\tquiet", false},
      {copy + "\t" + source + "\t300\t17\t280x\t18\t99\tquiet", false},
      {copy + "\t" + source + "\t300\t17\t280\t\t99\tquiet", false},
      {copy + "\t../x\t300\t17\t280\t18\t99\tquiet", false},
  };
  for (const auto& [line, kept] : cases) {
    SCOPED_TRACE(line);
    const CleanIndex index = CleanIndex::Parse("vetrina-pulite 1\n" + line + "\n");
    ASSERT_EQ(index.size(), kept ? 1u : 0u);
    EXPECT_EQ(CleanIndex::Parse("vetrina-pulite 0\n" + line + "\n").size(), 0u);
    if (!kept) continue;
    const StoredClean* entry = index.Find(copy);
    ASSERT_NE(entry, nullptr);
    EXPECT_EQ(std::tuple(entry->source, entry->source_bytes, entry->source_mtime_ns, entry->bytes,
                         entry->mtime_ns, entry->inode),
              std::tuple(source, 300, 17, 280, 18, 99u));
    EXPECT_EQ(index.Text(), "vetrina-pulite 1\n" + line + "\n");
  }
}

TEST(CacheFolderTest, AnAbsoluteXdgCacheHomeElseTheHomesCache) {
  const char* const saved = std::getenv("XDG_CACHE_HOME");
  const std::string kept = saved != nullptr ? saved : "";
  const char* const saved_home = std::getenv("HOME");
  const std::string kept_home = saved_home != nullptr ? saved_home : "";
  ::setenv("HOME", "/casa/anna", 1);
  std::string folders;
  for (const char* cache :
       {"/var/cache/anna/", "relativa", "", static_cast<const char*>(nullptr)}) {
    cache != nullptr ? ::setenv("XDG_CACHE_HOME", cache, 1) : ::unsetenv("XDG_CACHE_HOME");
    folders += CacheFolder() + "|";
  }
  saved != nullptr ? ::setenv("XDG_CACHE_HOME", kept.c_str(), 1) : ::unsetenv("XDG_CACHE_HOME");
  saved_home != nullptr ? ::setenv("HOME", kept_home.c_str(), 1) : ::unsetenv("HOME");
  EXPECT_EQ(folders,
            "/var/cache/anna/vetrina-foto|/casa/anna/.cache/vetrina-foto|"
            "/casa/anna/.cache/vetrina-foto|/casa/anna/.cache/vetrina-foto|");
}

}  // namespace
}  // namespace vf
