// The store of clean copies: a rebuild takes back what the last cleaning
// made instead of cleaning again, only while nothing changed, tells the
// same, and costs no picture when the store fails.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "tests/support/clean_site.h"

namespace vf {
namespace {

namespace fs = std::filesystem;
using namespace vf::test;
using Names = std::vector<std::string>;

TEST(CleanStoreTest, ARebuildTakesBackEveryCleanCopyAndTellsTheSame) {
  Site site;
  const vips::VImage grain = Grain(64, 48, kOrange, 30);
  const struct {
    std::string name, bytes;
    bool tags, kept;  // kept: the rebuild takes the clean copy back
  } cases[] = {
      {"a.jpg", Saved(grain, ".jpg"), true, true},       // loses a position
      {"plain.jpg", Saved(grain, ".jpg"), false, true},  // loses libvips' own EXIF
      {"p.png", Saved(grain, ".png"), true, true},       // loses names
      {"t.tif", Saved(grain, ".tif"), true, true},       // written again
      {"note.jpg", "non è una foto", false, false},      // carries what it carries
      {"b.bmp", kBmp, false, false},                     // has nothing to lose
  };
  std::vector<CopyRecord> copies;
  for (const auto& c : cases) {
    copies.push_back(site.Add(c.name, c.tags ? Tagged(c.name, c.bytes) : c.bytes));
  }

  const CleanOutcome first = site.Clean(copies);
  std::vector<Held> made;
  for (const CopyRecord& copy : copies) made.emplace_back(site, copy);
  for (const CopyRecord& copy : copies) Site::Recopy(copy);
  const CleanOutcome again = site.Clean(copies);

  EXPECT_EQ(first.identifying, 2u);
  EXPECT_EQ(first.rewritten.size(), 1u);
  EXPECT_EQ(first.carrying.size(), 1u);
  EXPECT_EQ(Message(again), Message(first));
  Names stored = {"indice", "sito"};
  for (size_t i = 0; i < std::size(cases); ++i) {
    SCOPED_TRACE(cases[i].name);
    // A copy taken back is the very file the first pass wrote: nothing was
    // written this time. The others are the build's fresh byte copies.
    EXPECT_EQ(made[i].Is(copies[i]), cases[i].kept);
    EXPECT_EQ(site.Read(copies[i].copy), made[i].bytes);
    EXPECT_TRUE(cases[i].name == "note.jpg" || site.Safe(copies[i]));
    if (cases[i].kept) stored.push_back(PathDigest(copies[i].copy));
  }
  // The store holds the clean copies, its index and the site's path, only
  // the user may look into it, and none of it is in the site.
  std::sort(stored.begin(), stored.end());
  Names in_store;
  for (const auto& entry : fs::directory_iterator(site.Store())) {
    in_store.push_back(entry.path().filename().string());
  }
  std::sort(in_store.begin(), in_store.end());
  EXPECT_EQ(in_store, stored);
  EXPECT_EQ(site.Read(site.Store() + "/sito"), site.Path("site").string() + "\n");
  // A build that could not copy again leaves the clean copies, which are
  // taken back as they stand; no temporary name is left in the site.
  EXPECT_EQ(Message(site.Clean(copies)), Message(first));
  EXPECT_EQ(site.Tree("site").size(), std::size(cases) + 1);
  for (const std::string& folder : {site.Path("cache").string(), site.stores, site.Store()}) {
    struct stat st {};
    ::stat(folder.c_str(), &st);
    EXPECT_EQ(st.st_mode & 0777, 0700u) << folder;
  }
}

TEST(CleanStoreTest, ACopyIsCleanedAgainWhenItsSourceOrItsStoredFileChanged) {
  const std::string jpeg = Tagged("a.jpg", Saved(Grain(64, 48, kOrange, 30), ".jpg"));
  using Change = std::function<void(const Site&, const CopyRecord&)>;
  auto touch = [](const std::string& path) {
    const timespec times[2] = {{0, UTIME_OMIT}, {1'000'000'000, 0}};
    ::utimensat(AT_FDCWD, path.c_str(), times, 0);
  };
  auto edit_index = [](const std::string& from, const std::string& to) -> Change {
    return [from, to](const Site& s, const CopyRecord&) {
      std::string text = s.Read(s.Store() + "/indice");
      ASSERT_NE(text.find(from), std::string::npos);
      s.Write(s.Store() + "/indice", text.replace(text.find(from), from.size(), to));
    };
  };
  const struct {
    const char* what;
    Change change;
    bool taken_back;
  } cases[] = {
      {"nothing", [](const Site&, const CopyRecord&) {}, true},
      {"the source's time", [&](const Site&, const CopyRecord& c) { touch(c.source); }, false},
      {"the source, for another picture",
       [](const Site& s, const CopyRecord& c) { s.Write(c.source, s.Read(c.source) + "coda"); },
       false},
      {"the stored file's time", [&](const Site& s, const CopyRecord& c) { touch(s.Stored(c)); },
       false},
      {"the stored file, written through the copy",
       [](const Site& s, const CopyRecord& c) { s.Write(c.copy, "scritto sopra"); }, false},
      {"the stored file gone", [](const Site& s, const CopyRecord& c) { fs::remove(s.Stored(c)); },
       false},
      {"a broken index line", edit_index("\tidentifying", " identifying"), false},
      {"an index of another form", edit_index("vetrina-pulite 1", "vetrina-pulite 2"), false},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    Site site;
    const CopyRecord copy = site.Add("a.jpg", jpeg);
    ASSERT_EQ(Message(site.Clean({copy})), kOneIdentifying);
    const Held first(site, copy);
    c.change(site, copy);
    Site::Recopy(copy);
    EXPECT_EQ(Message(site.Clean({copy})), kOneIdentifying);
    EXPECT_EQ(first.Is(copy), c.taken_back);
    EXPECT_TRUE(site.Safe(copy));
    // Cleaned again, the copy is kept again, and the next build takes it back.
    const Held second(site, copy);
    Site::Recopy(copy);
    EXPECT_EQ(Message(site.Clean({copy})), kOneIdentifying);
    EXPECT_TRUE(second.Is(copy));
  }
}

TEST(CleanStoreTest, ACopyOlderThanItsSourceIsCleanedButNotKept) {
  // The source changed after the build copied it, even to a time older
  // than the copy's: the clean copy is of the bytes before, and must not be
  // taken back for the source as it is now.
  Site site;
  const CopyRecord copy = site.Add("a.jpg", Tagged("a.jpg", Saved(Grain(64, 48, kOrange), ".jpg")));
  const timespec copied[2] = {{0, UTIME_OMIT}, {2, 0}}, changed[2] = {{0, UTIME_OMIT}, {1, 0}};
  ::utimensat(AT_FDCWD, copy.copy.c_str(), copied, 0);
  ::utimensat(AT_FDCWD, copy.source.c_str(), changed, 0);
  EXPECT_EQ(Message(site.Clean({copy})), kOneIdentifying);
  EXPECT_TRUE(site.Safe(copy));
  EXPECT_FALSE(fs::exists(site.Stored(copy)));
}

TEST(CleanStoreTest, AStoreThatFailsCostsNoPictureAndSaysNothing) {
  const std::string jpeg = Tagged("a.jpg", Saved(Grain(64, 48, kOrange, 30), ".jpg"));
  // A folder on another file system than the test's, when there is one.
  std::string shm = "/dev/shm/vf-test-XXXXXX";
  if (::mkdtemp(shm.data()) == nullptr) shm.clear();
  const struct {
    const char* what;
    std::function<void(Site*)> prepare;  // before each build
  } cases[] = {
      {"another file system",
       [&](Site* s) {
         struct stat here {
         }, there{};
         ::stat(s->root().c_str(), &here);
         ::stat(shm.c_str(), &there);
         if (!shm.empty() && here.st_dev != there.st_dev) s->stores = shm + "/pulite";
       }},
      {"a file where the cache should be", [](Site* s) { s->Write("cache", "un file"); }},
      {"the cache inside the site",
       [](Site* s) { s->stores = s->Path("site/.cache/pulite").string(); }},
      {"a folder where the stored copy should be",
       [](Site* s) {
         fs::create_directories(s->Stored({"", s->Path("site/dir_0001/a.jpg").string()}));
       }},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    Site site;
    const CopyRecord copy = site.Add("a.jpg", jpeg);
    for (int build = 0; build < 2; ++build) {
      c.prepare(&site);
      Site::Recopy(copy);
      const Held copied(site, copy);
      EXPECT_EQ(Message(site.Clean({copy})), kOneIdentifying);
      EXPECT_TRUE(site.Safe(copy));
      EXPECT_FALSE(copied.Is(copy));  // cleaned, not taken back
      // Nothing was added to the site, and no store keeps anything.
      EXPECT_EQ(site.Tree("site"), (Names{"dir_0001/", "dir_0001/a.jpg"}));
      std::error_code error;
      for (fs::recursive_directory_iterator it(site.stores, error), end; !error && it != end;
           it.increment(error)) {
        EXPECT_FALSE(it->is_regular_file()) << it->path();
      }
    }
  }
  std::error_code error;
  if (!shm.empty()) fs::remove_all(shm, error);
}

}  // namespace
}  // namespace vf
