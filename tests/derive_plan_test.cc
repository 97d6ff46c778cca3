#include <gtest/gtest.h>

#include <atomic>
#include <cerrno>
#include <functional>
#include <string>
#include <thread>
#include <tuple>
#include <vector>

#include "publish/derive_plan.h"
#include "publish/derive_pool.h"
#include "publish/derived_record.h"
#include "publish/site_names.h"
#include "tests/support/memory_site_disk.h"

namespace vf {
namespace {

using Names = std::vector<std::string>;
using What = Reason::What;

constexpr char kAlbum[] = "/site/dir_0001";

std::string In(const std::string& relative) { return kAlbum + ("/" + relative); }

// An album whose copy img_001.jpg got both its sizes in an earlier pass,
// with the record that pass wrote, ready to be changed by a test.
struct Site {
  Site() {
    for (const char* folder : {"/src", "/site", kAlbum}) disk.PutFolder(folder);
    disk.PutFile("/src/A.jpg", "source", 500);
    for (size_t s = 0; s < sizes.size(); ++s) {
      const std::string folder = In(sizes[s].folder);
      disk.PutFolder(folder);
      disk.PutFile(folder + "/img_001.jpg", std::string(10 + s, 'd'), 700 + s);
      record.Put({sizes[s].folder, sizes[s].pixels, "img_001.jpg", SourceKey("/src/a.jpg"), 6, 500,
                  int64_t(10 + s), int64_t(700 + s), std::nullopt});
    }
  }
  std::string Derived(const std::string& folder) const { return In(folder + "/img_001.jpg"); }
  std::string Avif(const std::string& folder) const { return In(folder + "/img_001.avif"); }
  // The AVIF beside each derived picture, as a pass with AVIF wrote it.
  void WithAvif() {
    for (size_t s = 0; s < sizes.size(); ++s) {
      disk.PutFile(Avif(sizes[s].folder), std::string(20 + s, 'a'), 800 + s);
      record.Put({sizes[s].folder, sizes[s].pixels, "img_001.jpg", SourceKey("/src/a.jpg"), 6, 500,
                  int64_t(20 + s), int64_t(800 + s), std::nullopt, true});
    }
  }

  test::MemorySiteDisk disk;
  DerivedRecord record;
  std::vector<DerivedSize> sizes = {{"mini", 60}, {"web", 150}};
  // The record knows the source by its path ignoring case.
  CopyRecord copy = {"/src/A.jpg", In("img_001.jpg")};
  bool capitals = false;
  bool write_record = true;
  bool avif = false;  // the pass makes AVIF
};

// What planning the copy did, with the album's path left out of the paths;
// `kept` holds the AVIF pictures the record vouches for by their names.
struct Planned {
  Names to_make = {}, failed = {}, plain = {}, changes = {}, kept = {}, harmless = {};
  Names avif_to_make = {};
  bool avif = false;

  bool operator==(const Planned&) const = default;
};

std::ostream& operator<<(std::ostream& out, const Names& names) {
  for (const std::string& name : names) out << "[" << name << "] ";
  return out;
}

std::ostream& operator<<(std::ostream& out, const Planned& p) {
  return out << "\n  to_make " << p.to_make << "\n  failed " << p.failed << "\n  plain " << p.plain
             << "\n  changes " << p.changes << "\n  kept " << p.kept << "\n  harmless "
             << p.harmless << "\n  avif_to_make " << p.avif_to_make << "\n  avif " << p.avif;
}

std::string Short(std::string text) {
  for (size_t at; (at = text.find(kAlbum)) != std::string::npos;) {
    text.erase(at, std::char_traits<char>::length(kAlbum) + 1);
  }
  return text;
}

// "folder: key detail" for each problem.
Names Told(const SizeProblems& problems) {
  Names told;
  for (const auto& [size, p] : problems) {
    told.push_back(Short(p.derived) + ": " + std::string(ReasonKey(p.why.what)) +
                   (p.why.detail.empty() ? "" : " " + Short(p.why.detail)));
  }
  return told;
}

Planned Plan(Site& site) {
  if (site.write_record) {
    site.disk.PutFile(In(".derivate"), site.record.Text(), 1);
  }
  AlbumFolder album = OpenAlbumFolder(site.disk, kAlbum, site.sizes, site.capitals);
  const std::string name = site.copy.copy.substr(site.copy.copy.rfind('/') + 1);
  CopyPlan plan = PlanCopy(site.disk, &album, site.copy, name, site.sizes, site.avif);
  WriteRecordIfChanged(site.disk, &album);
  EXPECT_EQ(plan.name, name);
  Planned planned;
  for (size_t s : plan.to_make) planned.to_make.push_back(site.sizes[s].folder);
  for (size_t s : plan.avif_to_make) planned.avif_to_make.push_back(site.sizes[s].folder);
  planned.avif = plan.avif;
  planned.failed = Told(plan.failed);
  planned.plain = Told(plan.plain);
  for (const std::string& change : site.disk.changes()) planned.changes.push_back(Short(change));
  // The entries the record on disk still vouches for.
  std::string text;
  site.disk.Read(In(".derivate"), &text);
  const DerivedRecord written = DerivedRecord::Parse(text);
  for (const std::string& folder : album.folders) {
    if (const DerivedEntry* entry = written.Find(folder, name)) {
      planned.kept.push_back(entry->folder + "/" + entry->copy_name);
    }
    if (const DerivedEntry* entry = written.Find(folder, name, true)) {
      planned.kept.push_back(entry->folder + "/" + AvifName(entry->copy_name));
    }
  }
  for (const DiskResult& failure : album.harmless_failures) {
    planned.harmless.push_back(Short(failure.path) + " " + std::to_string(failure.error));
  }
  return planned;
}

// One change to the site, and what planning then does.
struct Row {
  const char* change;
  std::function<void(Site&)> apply;
  Planned expected;
};

void ExpectPlans(const std::vector<Row>& rows) {
  for (const Row& row : rows) {
    Site site;
    row.apply(site);
    EXPECT_EQ(Plan(site), row.expected) << row.change;
  }
}

const Names kBoth = {"mini/img_001.jpg", "web/img_001.jpg"};
const Names kRecordWritten = {"write .derivate"};

TEST(DerivePlanTest, OnlyWhatChangedIsMadeAgainAndItsEntryForgottenFirst) {
  const Planned all_again = {.to_make = {"mini", "web"}, .changes = kRecordWritten};
  auto again = [](const char* folder, const char* kept) {
    return Planned{.to_make = {folder}, .changes = kRecordWritten, .kept = {kept}};
  };
  ExpectPlans({
      {"nothing", [](Site&) {}, {.kept = kBoth}},
      {"source grown, same time", [](Site& s) { s.disk.Find("/src/A.jpg")->content += "x"; },
       all_again},
      {"source touched", [](Site& s) { s.disk.Find("/src/A.jpg")->mtime_ns += 1; }, all_again},
      {"source gone", [](Site& s) { s.disk.Drop("/src/A.jpg"); }, all_again},
      {"source is a folder now",
       [](Site& s) { s.disk.Find("/src/A.jpg")->type = DiskStatus::Type::kFolder; }, all_again},
      {"source reached through a link",
       [](Site& s) {
         s.disk.PutFile("/src/real.jpg", "source", 500);
         s.disk.PutLink("/src/A.jpg", "/src/real.jpg");
       },
       {.kept = kBoth}},
      {"another source",
       [](Site& s) {
         s.disk.PutFile("/src/b.jpg", "source", 500);
         s.copy.source = "/src/b.jpg";
       },
       all_again},
      {"a size of other pixels", [](Site& s) { s.sizes[1].pixels = 120; },
       again("web", "mini/img_001.jpg")},
      {"made picture touched", [](Site& s) { s.disk.Find(s.Derived("web"))->mtime_ns += 1; },
       again("web", "mini/img_001.jpg")},
      {"made picture rewritten, same time",
       [](Site& s) { s.disk.Find(s.Derived("mini"))->content += "x"; },
       again("mini", "web/img_001.jpg")},
      {"made picture gone", [](Site& s) { s.disk.Drop(s.Derived("web")); },
       again("web", "mini/img_001.jpg")},
      {"made picture a link now",
       [](Site& s) { s.disk.PutLink(s.Derived("web"), s.Derived("mini")); },
       again("web", "mini/img_001.jpg")},
      {"no record", [](Site& s) { s.write_record = false; }, {.to_make = {"mini", "web"}}},
      {"a record that cannot be read",
       [](Site& s) { s.disk.Fail("read", In(".derivate"), EACCES); },
       {.to_make = {"mini", "web"},
        .kept = kBoth,
        .harmless = {".derivate " + std::to_string(EACCES)}}},
      {"an older record",
       [](Site& s) {
         s.write_record = false;
         s.disk.PutFile(In(".derivate"), "vetrina-derivate 4" + s.record.Text().substr(18), 1);
       },
       {.to_make = {"mini", "web"}}},
      {"a plain copy kept",
       [](Site& s) {
         DerivedEntry entry = *s.record.Find("web", "img_001.jpg");
         entry.plain = Reason{What::kTooLarge, false, "60000x60000"};
         s.record.Put(entry);
       },
       {.plain = {"web/img_001.jpg: too-large 60000x60000"}, .kept = kBoth}},
  });
}

TEST(DerivePlanTest, AnAvifIsKeptMadeOrLeftByItsOwnEntry) {
  const Names all = {"mini/img_001.jpg", "mini/img_001.avif", "web/img_001.jpg",
                     "web/img_001.avif"};
  auto on = [](std::function<void(Site&)> change) {
    return [change](Site& s) {
      s.avif = true;
      change(s);
    };
  };
  auto with_avif = [](std::function<void(Site&)> change) {
    return [change](Site& s) {
      s.WithAvif();
      change(s);
    };
  };
  auto nothing = [](Site&) {};
  ExpectPlans({
      {"kept with its picture", on(with_avif(nothing)), {.kept = all, .avif = true}},
      {"turned on: the AVIF pictures alone",
       on(nothing),
       {.kept = kBoth, .avif_to_make = {"mini", "web"}, .avif = true}},
      {"turned off: nothing made, nothing forgotten", with_avif(nothing), {.kept = all}},
      {"an AVIF touched",
       on(with_avif([](Site& s) { s.disk.Find(s.Avif("web"))->mtime_ns += 1; })),
       {.changes = kRecordWritten,
        .kept = {"mini/img_001.jpg", "mini/img_001.avif", "web/img_001.jpg"},
        .avif_to_make = {"web"},
        .avif = true}},
      {"an AVIF gone",
       on(with_avif([](Site& s) { s.disk.Drop(s.Avif("mini")); })),
       {.changes = kRecordWritten,
        .kept = {"mini/img_001.jpg", "web/img_001.jpg", "web/img_001.avif"},
        .avif_to_make = {"mini"},
        .avif = true}},
      {"an AVIF of other pixels",
       on(with_avif([](Site& s) {
         DerivedEntry entry = *s.record.Find("mini", "img_001.jpg", true);
         entry.pixels = 99;
         s.record.Put(entry);
       })),
       {.changes = kRecordWritten,
        .kept = {"mini/img_001.jpg", "web/img_001.jpg", "web/img_001.avif"},
        .avif_to_make = {"mini"},
        .avif = true}},
      {"the source touched: both made, both forgotten",
       on(with_avif([](Site& s) { s.disk.Find("/src/A.jpg")->mtime_ns += 1; })),
       {.to_make = {"mini", "web"}, .changes = kRecordWritten, .avif = true}},
      {"the source touched, AVIF off: its entries forgotten all the same",
       with_avif([](Site& s) { s.disk.Find("/src/A.jpg")->mtime_ns += 1; }),
       {.to_make = {"mini", "web"}, .changes = kRecordWritten}},
      {"a picture made again keeps no AVIF entry",
       on(with_avif([](Site& s) { s.disk.Drop(s.Derived("web")); })),
       {.to_make = {"web"},
        .changes = kRecordWritten,
        .kept = {"mini/img_001.jpg", "mini/img_001.avif"},
        .avif = true}},
      {"a plain copy gets none",
       on([](Site& s) {
         DerivedEntry entry = *s.record.Find("web", "img_001.jpg");
         entry.plain = Reason{What::kCut, false, ""};
         s.record.Put(entry);
       }),
       {.plain = {"web/img_001.jpg: cut"}, .kept = kBoth, .avif_to_make = {"mini"}, .avif = true}},
      {"names in capitals: both renamed",
       on(with_avif([](Site& s) { s.copy.copy = In("IMG_001.JPG"); })),
       {.changes = {"rename mini/img_001.jpg > mini/IMG_001.JPG",
                    "rename mini/img_001.avif > mini/IMG_001.AVIF",
                    "rename web/img_001.jpg > web/IMG_001.JPG",
                    "rename web/img_001.avif > web/IMG_001.AVIF", "write .derivate"},
        .kept = {"mini/IMG_001.JPG", "mini/IMG_001.AVIF", "web/IMG_001.JPG", "web/IMG_001.AVIF"},
        .avif = true}},
      {"an AVIF that cannot be renamed is made again",
       on(with_avif([](Site& s) {
         s.copy.copy = In("IMG_001.JPG");
         s.disk.Fail("rename", s.Avif("web"), EACCES);
       })),
       {.changes = {"rename mini/img_001.jpg > mini/IMG_001.JPG",
                    "rename mini/img_001.avif > mini/IMG_001.AVIF",
                    "rename web/img_001.jpg > web/IMG_001.JPG", "write .derivate"},
        .kept = {"mini/IMG_001.JPG", "mini/IMG_001.AVIF", "web/IMG_001.JPG"},
        .harmless = {"web/img_001.avif " + std::to_string(EACCES)},
        .avif_to_make = {"web"},
        .avif = true}},
      {"a copy named as its AVIF gets none",
       on([](Site& s) { s.copy.copy = In("img_001.Avif"); }),
       {.to_make = {"mini", "web"}}},
      {"an older record: all made again",
       on(with_avif([](Site& s) {
         s.write_record = false;
         s.disk.PutFile(In(".derivate"), "vetrina-derivate 4" + s.record.Text().substr(18), 1);
       })),
       {.to_make = {"mini", "web"}, .avif = true}},
  });
}

TEST(DerivePlanTest, NamesInAnotherCaseAreRenamedAndKeptUnlessTheRenameFails) {
  ExpectPlans({
      {"name in capitals",
       [](Site& s) { s.copy.copy = In("IMG_001.JPG"); },
       {.changes = {"rename mini/img_001.jpg > mini/IMG_001.JPG",
                    "rename web/img_001.jpg > web/IMG_001.JPG", "write .derivate"},
        .kept = {"mini/IMG_001.JPG", "web/IMG_001.JPG"}}},
      {"folders in capitals",
       [](Site& s) { s.capitals = true; },
       {.changes = {"rename mini > MINI", "rename web > WEB", "write .derivate"},
        .kept = {"MINI/img_001.jpg", "WEB/img_001.jpg"}}},
      {"a rename that fails makes the picture again",
       [](Site& s) {
         s.copy.copy = In("IMG_001.JPG");
         s.disk.Fail("rename", s.Derived("mini"), EACCES);
       },
       {.to_make = {"mini"},
        .changes = {"rename web/img_001.jpg > web/IMG_001.JPG", "write .derivate"},
        .kept = {"web/IMG_001.JPG"},
        .harmless = {"mini/img_001.jpg " + std::to_string(EACCES)}}},
      {"a folder that cannot be renamed is not made",
       [](Site& s) {
         s.capitals = true;
         s.disk.Fail("rename", In("web"), EACCES);
       },
       {.failed = {"WEB/img_001.jpg: folder-not-made web: Permission denied"},
        .changes = {"rename mini > MINI", "write .derivate"},
        .kept = {"MINI/img_001.jpg", "web/img_001.jpg"}}},
  });
}

TEST(DerivePlanTest, SizeFoldersAreMadeReadyOrSayWhyNot) {
  ExpectPlans({
      {"a new size's folder is made",
       [](Site& s) {
         s.sizes.push_back({"big", 900});
       },
       {.to_make = {"big"}, .changes = {"mkdir big"}, .kept = kBoth}},
      {"a file stands for the folder",
       [](Site& s) {
         s.disk.Drop(s.Derived("web"));
         s.disk.PutFile(In("web"), "a file", 1);
       },
       {.failed = {"web/img_001.jpg: folder-not-made web: not a folder"}, .kept = kBoth}},
      {"a file in another case is not the folder",
       [](Site& s) {
         s.disk.Drop(s.Derived("web"));
         s.disk.Drop(In("web"));
         s.disk.PutFile(In("Web"), "a file", 1);
       },
       {.to_make = {"web"},
        .changes = {"mkdir web", "write .derivate"},
        .kept = {"mini/img_001.jpg"}}},
      {"a folder that cannot be made",
       [](Site& s) {
         s.sizes.push_back({"big", 900});
         s.disk.Fail("mkdir", In("big"), ENOSPC);
       },
       {.failed = {"big/img_001.jpg: folder-not-made big: No space left on device"},
        .kept = kBoth}},
      {"a crash's leftovers are removed, nothing else",
       [](Site& s) {
         s.disk.PutFile(In("web/.derivate-0123abcd"), "part", 1);
         s.disk.PutFile(In("web/.derivata"), "someone's", 1);
         s.disk.PutFile(In(".derivate-0123abcd"), "beside the record", 1);
       },
       {.changes = {"remove web/.derivate-0123abcd"}, .kept = kBoth}},
      {"a leftover that stays costs nothing",
       [](Site& s) {
         s.disk.PutFile(In("mini/.derivate-1"), "part", 1);
         s.disk.Fail("remove", In("mini/.derivate-1"), EROFS);
       },
       {.kept = kBoth, .harmless = {"mini/.derivate-1 " + std::to_string(EROFS)}}},
  });
}

TEST(DerivePlanTest, ARecordThatCannotBeWrittenIsKeptWithItsCause) {
  for (const auto& [error, what] :
       {std::pair(ENOSPC, What::kDiskFull), std::pair(ENOENT, What::kFolderMissing),
        std::pair(EACCES, What::kWriteFailed)}) {
    Site site;
    site.disk.PutFile(In(".derivate"), site.record.Text(), 1);
    site.disk.Find("/src/A.jpg")->mtime_ns += 1;
    site.disk.Fail("write", kAlbum, error);
    AlbumFolder album = OpenAlbumFolder(site.disk, kAlbum, site.sizes, false);
    PlanCopy(site.disk, &album, site.copy, "img_001.jpg", site.sizes, false);
    ASSERT_TRUE(album.dirty);
    WriteRecordIfChanged(site.disk, &album);
    ASSERT_TRUE(album.record_failure.has_value()) << error;
    EXPECT_EQ(std::tuple(album.record_failure->what, album.record_failure->of_record, album.dirty),
              std::tuple(what, true, false));
    // The next write that goes through clears it.
    album.dirty = true;
    WriteRecordIfChanged(site.disk, &album);
    EXPECT_FALSE(album.record_failure.has_value());
  }
}

TEST(DerivePoolTest, JobsFinishOnTheCallersThreadAndAStopStartsNoMore) {
  const std::thread::id caller = std::this_thread::get_id();
  constexpr size_t kJobs = 40;
  for (const size_t stop_after : {size_t{0}, size_t{3}}) {
    for (const size_t workers : {size_t{1}, size_t{4}}) {
      std::atomic<size_t> worked = 0, left = 0, told = 0;
      std::atomic<bool> said_stop = false;
      std::vector<bool> seen(kJobs, false);
      size_t finished = 0;
      PoolWork calls;
      calls.work = [&](size_t i) {
        EXPECT_NE(std::this_thread::get_id(), caller);
        // No job runs further ahead of the caller than the workers can.
        while (told + workers <= i && !said_stop) std::this_thread::yield();
        ++worked;
      };
      calls.finished = [&](size_t i) {
        EXPECT_EQ(std::this_thread::get_id(), caller);
        EXPECT_FALSE(seen[i]) << i;
        seen[i] = true;
        ++finished;
      };
      calls.progress = [&](size_t done, size_t total) {
        EXPECT_EQ(std::tuple(std::this_thread::get_id(), done, total),
                  std::tuple(caller, finished, kJobs));
        said_stop = ++told == stop_after;
        return !said_stop;
      };
      calls.leaving = [&] { ++left; };
      EXPECT_EQ(RunPool(kJobs, workers, calls), stop_after != 0);
      EXPECT_EQ(std::tuple(finished, left.load()), std::tuple(worked.load(), workers));
      if (stop_after == 0) {
        EXPECT_EQ(std::tuple(finished, told.load()), std::tuple(kJobs, kJobs));
      } else {
        // The jobs in hand when it stopped end, unheard of; no others start.
        EXPECT_EQ(told, stop_after);
        EXPECT_LE(finished, stop_after + 2 * workers) << workers;
      }
    }
  }
}

}  // namespace
}  // namespace vf
