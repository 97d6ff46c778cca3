#include "platform/derived_pictures.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <functional>
#include <map>
#include <optional>
#include <tuple>

#include "platform/case_fold.h"
#include "platform/derived_record.h"
#include "tests/support/e2e.h"
#include "tests/support/test_pictures.h"

namespace vf {
namespace {

namespace fs = std::filesystem;
using test::Colour;
using test::Inspect;
using test::Painted;

constexpr Colour kBlue{0, 0, 255};
constexpr Colour kOrange{200, 120, 40};

class DerivedPicturesTest : public ::testing::Test {
 protected:
  // Saves `image` as src/<name> with libvips' saver for its extension;
  // `options` as libvips takes them after a file name ("[Q=90]").
  std::string Source(const std::string& name, const vips::VImage& image,
                     const std::string& options = "") {
    fs::create_directories(tree_->Path("src"));
    std::string path = tree_->Path("src/" + name).string();
    image.write_to_file((path + options).c_str());
    return path;
  }
  std::string SourceBytes(const std::string& name, const std::string& bytes) {
    tree_->Write("src/" + name, bytes);
    return tree_->Path("src/" + name).string();
  }
  // The copy of `source` as site/dir_0001/<copy_name>.
  CopyRecord Place(const std::string& source, const std::string& copy_name) {
    fs::create_directories(tree_->Path("site/dir_0001"));
    return {source, tree_->Path("site/dir_0001/" + copy_name).string()};
  }
  fs::path Derived(const std::string& relative) const {
    return tree_->Path("site/dir_0001/" + relative);
  }
  std::string Read(const fs::path& path) const {
    return tree_->Read(fs::relative(path, tree_->root()).string());
  }
  void FreshTree() {
    tree_.reset();
    tree_.emplace();
  }

  std::optional<test::TempTree> tree_{std::in_place};
};

TEST_F(DerivedPicturesTest, LongestSideFitsAndSmallPicturesKeepTheirSize) {
  struct Case {
    const char* name;
    int width, height, mini_width, mini_height, web_width, web_height;
  } cases[] = {{"landscape.jpg", 300, 200, 60, 40, 150, 100},
               {"portrait.png", 200, 300, 40, 60, 100, 150},
               {"small.jpg", 50, 30, 50, 30, 50, 30}};
  std::vector<CopyRecord> copies;
  for (const Case& c : cases) {
    copies.push_back(Place(Source(c.name, Painted(c.width, c.height, kOrange)), c.name));
  }
  DeriveOutcome outcome = DerivePictures(copies, {{"mini", 60}, {"web", 150}}, false, nullptr);
  EXPECT_TRUE(outcome.plain_copies.empty() && outcome.failed.empty());
  for (const Case& c : cases) {
    test::PictureFacts mini = Inspect(Derived(std::string("mini/") + c.name));
    test::PictureFacts web = Inspect(Derived(std::string("web/") + c.name));
    EXPECT_EQ(std::pair(mini.width, mini.height), std::pair(c.mini_width, c.mini_height)) << c.name;
    EXPECT_EQ(std::pair(web.width, web.height), std::pair(c.web_width, c.web_height)) << c.name;
  }
}

TEST_F(DerivedPicturesTest, EveryOrientationEndsUpright) {
  // Stored 64x32 with a red top left corner; where that corner must show.
  enum Corner { kTopLeft, kTopRight, kBottomLeft, kBottomRight };
  struct Case {
    int orientation;
    bool turned;  // a quarter turn: the picture stands
    Corner corner;
  } cases[] = {{1, false, kTopLeft},    {2, false, kTopRight}, {3, false, kBottomRight},
               {4, false, kBottomLeft}, {5, true, kTopLeft},   {6, true, kTopRight},
               {7, true, kBottomRight}, {8, true, kBottomLeft}};
  std::vector<CopyRecord> copies;
  for (const Case& c : cases) {
    vips::VImage image = Painted(64, 32, kBlue, 24).copy();
    image.set("orientation", c.orientation);
    std::string name = "o" + std::to_string(c.orientation) + ".jpg";
    copies.push_back(Place(Source(name, image), name));
  }
  DerivePictures(copies, {{"web", 32}}, false, nullptr);
  for (const Case& c : cases) {
    test::PictureFacts web = Inspect(Derived("web/o" + std::to_string(c.orientation) + ".jpg"));
    ASSERT_EQ(std::pair(web.width, web.height), c.turned ? std::pair(16, 32) : std::pair(32, 16));
    int left = 2, right = web.width - 3, top = 2, bottom = web.height - 3;
    bool at_right = c.corner == kTopRight || c.corner == kBottomRight;
    bool at_bottom = c.corner == kBottomLeft || c.corner == kBottomRight;
    Colour mark = web.Pixel(at_right ? right : left, at_bottom ? bottom : top);
    Colour across = web.Pixel(at_right ? left : right, at_bottom ? top : bottom);
    EXPECT_TRUE(mark.red > 150 && mark.blue < 110) << "orientation " << c.orientation;
    EXPECT_TRUE(across.red < 110 && across.blue > 150) << "orientation " << c.orientation;
  }
}

TEST_F(DerivedPicturesTest, MetadataIsLeftOut) {
  // The JPEG saver builds the EXIF block from the fields; the others carry
  // the block the JPEG gives them.
  vips::VImage image = Painted(120, 80, kOrange).copy();
  image.set("exif-ifd0-Model", "Fotocamera");
  image.set("exif-ifd2-BodySerialNumber", "SN123456");
  image.set("exif-ifd3-GPSLatitude", "45/1 27/1 0/1");
  image.set("exif-ifd3-GPSLatitudeRef", "N");
  static const char kXmp[] = "<x:xmpmeta xmlns:x=\"adobe:ns:meta/\">Via Roma 1</x:xmpmeta>";
  vips_image_set_blob_copy(image.get_image(), "xmp-data", kXmp, sizeof kXmp - 1);
  std::vector<CopyRecord> copies = {Place(Source("camera.jpg", image), "camera.jpg")};
  vips::VImage with_exif = vips::VImage::new_from_file(copies[0].source.c_str());
  for (const char* name : {"camera.png", "camera.webp"}) {
    copies.push_back(Place(Source(name, with_exif), name));
  }
  for (const CopyRecord& copy : copies) {
    std::vector<std::string> carried = Inspect(copy.source).metadata;
    for (const char* field : {"exif-ifd3-GPSLatitude", "exif-ifd2-BodySerialNumber", "xmp-data"}) {
      ASSERT_NE(std::find(carried.begin(), carried.end(), field), carried.end())
          << copy.source << " lacks " << field;
    }
  }
  DerivePictures(copies, {{"web", 60}}, false, nullptr);
  for (const CopyRecord& copy : copies) {
    std::string name = fs::path(copy.copy).filename();
    test::PictureFacts web = Inspect(Derived("web/" + name));
    EXPECT_TRUE(web.read) << name;
    EXPECT_EQ(web.metadata, std::vector<std::string>{}) << name;
  }
}

TEST_F(DerivedPicturesTest, FormatFollowsTheContentAndColoursComeOutInSrgb) {
  vips::VImage orange = Painted(90, 60, kOrange);
  // Two frames, orange then blue: only the first is taken.
  vips::VImage frames = orange.join(Painted(90, 60, kBlue), VIPS_DIRECTION_VERTICAL).copy();
  frames.set("page-height", 60);
  vips::VImage deep =
      (orange.cast(VIPS_FORMAT_USHORT) * 257)
          .cast(VIPS_FORMAT_USHORT)
          .copy(vips::VImage::option()->set("interpretation", VIPS_INTERPRETATION_RGB16));
  struct Case {
    const char* name;
    vips::VImage image;
    const char* loader;
    Colour colour;
    double tolerance;
  } cases[] = {
      {"frames.gif", frames, "gifload", kOrange, 12},
      {"web.webp", orange, "webpload", kOrange, 12},
      {"scan.tif", orange, "jpegload", kOrange, 12},
      {"paint.bmp", orange, "jpegload", kOrange, 12},
      {"deep.tif", deep, "jpegload", kOrange, 12},
      {"clear.tif", orange.bandjoin_const({0}), "jpegload", {255, 255, 255}, 3},  // transparent
      {"print.jpg", orange.icc_transform("cmyk"), "jpegload", kOrange, 40},
      {"png-named.jpg", orange, "pngload", kOrange, 3},
  };
  std::vector<CopyRecord> copies;
  for (const Case& c : cases) {
    std::string source = Source(c.name, c.image);
    if (std::string_view(c.name) == "png-named.jpg") c.image.pngsave(source.c_str());
    copies.push_back(Place(source, c.name));
  }
  DeriveOutcome outcome = DerivePictures(copies, {{"web", 45}}, false, nullptr);
  EXPECT_EQ(outcome.plain_copies, std::vector<std::string>{});
  for (const Case& c : cases) {
    test::PictureFacts web = Inspect(Derived(std::string("web/") + c.name));
    EXPECT_EQ(web.loader, c.loader) << c.name;
    EXPECT_EQ(std::tuple(web.width, web.height, std::min(web.bands, 3)), std::tuple(45, 30, 3))
        << c.name;
    Colour pixel = web.Pixel(20, 10);
    EXPECT_NEAR(pixel.red, c.colour.red, c.tolerance) << c.name;
    EXPECT_NEAR(pixel.green, c.colour.green, c.tolerance) << c.name;
    EXPECT_NEAR(pixel.blue, c.colour.blue, c.tolerance) << c.name;
  }
}

TEST_F(DerivedPicturesTest, PictureThatCannotBeScaledIsCopiedAndListed) {
  std::string bytes = Read(Source("whole.jpg", test::Grain(200, 200), "[Q=95]"));
  std::vector<CopyRecord> copies = {
      Place(SourceBytes("text.jpg", "non è una foto\n"), "img_001.jpg"),
      Place(SourceBytes("cut.jpg", bytes.substr(0, bytes.size() / 2)), "img_002.jpg"),
      // Larger than a picture that is decoded whole may be.
      Place(Source("huge.tif", vips::VImage::black(10001, 10000), "[compression=deflate,tile]"),
            "img_003.tif")};
  DeriveOutcome outcome = DerivePictures(copies, {{"mini", 40}, {"web", 80}}, false, nullptr);
  std::vector<std::string> expected;
  for (const char* name : {"img_001.jpg", "img_002.jpg", "img_003.tif"}) {
    for (const char* folder : {"mini/", "web/"}) {
      expected.push_back(Derived(folder + std::string(name)).string());
    }
  }
  EXPECT_EQ(outcome.plain_copies, expected);
  for (size_t i = 0; i < copies.size(); ++i) {
    EXPECT_EQ(Read(expected[2 * i + 1]), Read(copies[i].source)) << i;
  }
}

TEST_F(DerivedPicturesTest, RebuildRedoesOnlyWhatChanged) {
  struct Run {
    std::vector<CopyRecord> copies;
    std::vector<DerivedSize> sizes = {{"mini", 60}, {"web", 150}};
    bool capitals = false;
  };
  struct Case {
    const char* what;
    std::function<void(Run*, test::TempTree&)> change;
    std::vector<std::string> redone;  // derived pictures rewritten, named as the first run did
  } cases[] = {
      {"nothing", [](Run*, test::TempTree&) {}, {}},
      {"a source touched",
       [](Run* run, test::TempTree&) {
         struct timespec times[2] = {{0, UTIME_OMIT}, {1'000'000, 0}};
         ::utimensat(AT_FDCWD, run->copies[1].source.c_str(), times, 0);
       },
       {"mini/img_002.jpg", "web/img_002.jpg"}},
      {"two places swapped",
       [](Run* run, test::TempTree&) { std::swap(run->copies[0].source, run->copies[1].source); },
       {"mini/img_001.jpg", "mini/img_002.jpg", "web/img_001.jpg", "web/img_002.jpg"}},
      {"a size changed",
       [](Run* run, test::TempTree&) { run->sizes[1].pixels = 120; },
       {"web/img_001.jpg", "web/img_002.jpg", "web/img_003.jpg"}},
      {"a derived picture removed",
       [](Run*, test::TempTree& tree) { fs::remove(tree.Path("site/dir_0001/web/img_003.jpg")); },
       {"web/img_003.jpg"}},
      {"capitals",
       [](Run* run, test::TempTree&) {
         run->capitals = true;
         for (CopyRecord& copy : run->copies) {
           fs::path path(copy.copy);
           copy.copy = (path.parent_path() / ToUpper(path.filename().string())).string();
         }
       },
       {}},
  };
  for (Case& c : cases) {
    SCOPED_TRACE(c.what);
    FreshTree();
    Run run;
    run.copies = {Place(Source("a.jpg", Painted(300, 200, kOrange)), "img_001.jpg"),
                  Place(Source("b.jpg", Painted(200, 300, kBlue)), "img_002.jpg"),
                  Place(Source("c.jpg", Painted(100, 100, kOrange)), "img_003.jpg")};
    DerivePictures(run.copies, run.sizes, run.capitals, nullptr);
    std::map<std::string, test::FileStamp> before;
    for (const char* folder : {"mini/", "web/"}) {
      for (const char* name : {"img_001.jpg", "img_002.jpg", "img_003.jpg"}) {
        before[folder + std::string(name)] = test::StampOf(Derived(folder + std::string(name)));
      }
    }
    c.change(&run, *tree_);
    DeriveOutcome outcome = DerivePictures(run.copies, run.sizes, run.capitals, nullptr);
    EXPECT_TRUE(outcome.failed.empty() && outcome.plain_copies.empty());
    std::vector<std::string> redone;
    for (const auto& [name, stamp] : before) {
      fs::path now = Derived(run.capitals ? ToUpper(name) : name);
      ASSERT_TRUE(fs::exists(now)) << now;
      if (test::StampOf(now) != stamp) redone.push_back(name);
    }
    EXPECT_EQ(redone, c.redone);
    EXPECT_EQ(fs::exists(Derived("mini")), !run.capitals);
    // What is now in the first place is the picture its source holds.
    test::PictureFacts first =
        Inspect(Derived(run.capitals ? "MINI/IMG_001.JPG" : "mini/img_001.jpg"));
    EXPECT_EQ(first.width > first.height, run.copies[0].source.ends_with("a.jpg"));
  }
}

TEST_F(DerivedPicturesTest, StopLeavesWholePicturesOnlyAndTheNextPassGoesOn) {
  std::vector<CopyRecord> copies;
  for (int i = 1; i <= 12; ++i) {
    std::string name = "p" + std::to_string(i) + ".jpg";
    copies.push_back(Place(Source(name, test::Grain(400, 300)), name));
  }
  DeriveOutcome outcome =
      DerivePictures(copies, {{"web", 200}}, false, [](size_t done, size_t) { return done < 1; });
  EXPECT_TRUE(outcome.stopped);
  EXPECT_EQ(test::FilesStartingWith(tree_->root(), std::string(kDerivedTemporaryPrefix)),
            std::vector<std::string>{});
  std::map<std::string, test::FileStamp> made;
  for (const CopyRecord& copy : copies) {
    fs::path web = Derived("web") / fs::path(copy.copy).filename();
    if (!fs::exists(web)) continue;
    EXPECT_EQ(Inspect(web).width, 200) << web;  // whole, not a part
    made[web] = test::StampOf(web);
  }
  EXPECT_GE(made.size(), 1u);
  EXPECT_LT(made.size(), copies.size());

  size_t calls = 0;
  outcome = DerivePictures(copies, {{"web", 200}}, false, [&](size_t done, size_t total) {
    EXPECT_EQ(total, copies.size());
    EXPECT_EQ(done, ++calls);
    return true;
  });
  EXPECT_FALSE(outcome.stopped);
  EXPECT_EQ(calls, copies.size());
  for (const auto& [path, stamp] : made) EXPECT_EQ(test::StampOf(path), stamp) << path;
}

TEST(SizeFolderTest, OnlyPlainNamesAreSafeAndOthersWriteNothing) {
  struct Case {
    const char* folder;
    bool safe;
  } cases[] = {{"mini", true}, {"Web 1600", true},   {"", false},    {".", false},
               {"..", false},  {".derivate", false}, {"a/b", false}, {"a\\b", false}};
  for (const Case& c : cases) EXPECT_EQ(SizeFolderIsSafe(c.folder), c.safe) << c.folder;

  test::TempTree tree;
  tree.MakeFolder("site/dir_0001");
  tree.Write("a.jpg", "x");
  DeriveOutcome outcome =
      DerivePictures({{tree.Path("a.jpg").string(), tree.Path("site/dir_0001/a.jpg").string()}},
                     {{"..", 40}, {"../x", 40}, {"", 40}}, false, nullptr);
  EXPECT_TRUE(outcome.plain_copies.empty() && outcome.failed.empty());
  EXPECT_EQ(tree.Tree(), (std::vector<std::string>{"a.jpg", "site/", "site/dir_0001/"}));
}

TEST(DerivedRecordTest, TextKeepsAnyNameAndDropsWhatItCannotRead) {
  DerivedRecord record;
  DerivedEntry odd{
      "MINI", 480, "IMG\t1\\2\n.JPG", "/foto/a\rb.jpg", 12345, 1'700'000'000'123'456'789, true};
  record.Put(odd);
  record.Put({"web", 1600, "img_002.jpg", "/foto/b.jpg", 1, 2, false});
  std::string text = record.Text();
  DerivedRecord read = DerivedRecord::Parse(text);
  ASSERT_EQ(read.size(), 2u);
  const DerivedEntry* found = read.Find("mini", "img\t1\\2\n.jpg");
  ASSERT_NE(found, nullptr);
  EXPECT_EQ(std::tie(found->folder, found->pixels, found->copy_name, found->source, found->bytes,
                     found->mtime_ns, found->plain),
            std::tie(odd.folder, odd.pixels, odd.copy_name, odd.source, odd.bytes, odd.mtime_ns,
                     odd.plain));

  struct Case {
    const char* text;
    size_t entries;
  } cases[] = {{"vetrina-derivate 1\nweb\t1600\ta.jpg\t/a.jpg\t1\t2\ts\n", 1},
               {"vetrina-derivate 1\nweb\t1600\ta.jpg\t/a.jpg\t1\t2\n", 0},        // a field short
               {"vetrina-derivate 1\nweb\tmolti\ta.jpg\t/a.jpg\t1\t2\ts\n", 0},    // not a number
               {"vetrina-derivate 1\nweb\t1600\ta\\q.jpg\t/a.jpg\t1\t2\ts\n", 0},  // bad escape
               {"vetrina-derivate 1\nweb\t1600\t../a.jpg\t/a.jpg\t1\t2\ts\n", 0},  // not one step
               {"vetrina-derivate 2\nweb\t1600\ta.jpg\t/a.jpg\t1\t2\ts\n", 0}};    // another format
  for (const Case& c : cases) EXPECT_EQ(DerivedRecord::Parse(c.text).size(), c.entries) << c.text;
}

}  // namespace
}  // namespace vf
