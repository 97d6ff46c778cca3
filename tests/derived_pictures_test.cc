#include "platform/derived_pictures.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
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
  // Saves src/<name> with libvips' saver for its extension, `options` as
  // libvips takes them after a file name ("[Q=90]"), and places it as
  // site/dir_0001/<copy_name> (default: the same name).
  CopyRecord Place(const std::string& name, const vips::VImage& image,
                   const std::string& options = "", std::string copy_name = "") {
    fs::create_directories(tree_->Path("src"));
    std::string source = tree_->Path("src/" + name).string();
    image.write_to_file((source + options).c_str());
    return PlaceFile(source, copy_name.empty() ? name : copy_name);
  }
  CopyRecord PlaceFile(const std::string& source, const std::string& copy_name) {
    fs::create_directories(tree_->Path("site/dir_0001"));
    return {source, tree_->Path("site/dir_0001/" + copy_name).string()};
  }
  fs::path Derived(const std::string& relative) const {
    return tree_->Path("site/dir_0001/" + relative);
  }
  std::string Read(const fs::path& path) const {
    return tree_->Read(fs::relative(path, tree_->root()).string());
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
  for (const Case& c : cases) copies.push_back(Place(c.name, Painted(c.width, c.height, kOrange)));
  DerivePictures(copies, {{"mini", 60}, {"web", 150}}, false, nullptr);
  for (const Case& c : cases) {
    test::PictureFacts mini = Inspect(Derived(std::string("mini/") + c.name));
    test::PictureFacts web = Inspect(Derived(std::string("web/") + c.name));
    EXPECT_EQ(std::tie(mini.width, mini.height, web.width, web.height),
              std::tie(c.mini_width, c.mini_height, c.web_width, c.web_height))
        << c.name;
  }
}

TEST_F(DerivedPicturesTest, EveryOrientationEndsUpright) {
  // Stored 64x32 with a red top left corner: where that corner must show.
  struct Case {
    int orientation;
    bool standing, right, bottom;
  } cases[] = {{1, false, false, false}, {2, false, true, false}, {3, false, true, true},
               {4, false, false, true},  {5, true, false, false}, {6, true, true, false},
               {7, true, true, true},    {8, true, false, true}};
  std::vector<CopyRecord> copies;
  for (const Case& c : cases) {
    vips::VImage image = Painted(64, 32, kBlue, 24).copy();
    image.set("orientation", c.orientation);
    copies.push_back(Place("o" + std::to_string(c.orientation) + ".jpg", image));
  }
  DerivePictures(copies, {{"web", 32}}, false, nullptr);
  for (const Case& c : cases) {
    SCOPED_TRACE(c.orientation);
    test::PictureFacts web = Inspect(Derived("web/o" + std::to_string(c.orientation) + ".jpg"));
    ASSERT_EQ(std::pair(web.width, web.height), c.standing ? std::pair(16, 32) : std::pair(32, 16));
    int left = 2, right = web.width - 3, top = 2, bottom = web.height - 3;
    Colour mark = web.Pixel(c.right ? right : left, c.bottom ? bottom : top);
    Colour across = web.Pixel(c.right ? left : right, c.bottom ? top : bottom);
    EXPECT_TRUE(mark.red > 150 && mark.blue < 110);
    EXPECT_TRUE(across.red < 110 && across.blue > 150);
  }
}

TEST_F(DerivedPicturesTest, MetadataIsLeftOut) {
  // The JPEG saver builds the EXIF block from these fields; the PNG and WebP
  // savers carry the block that reading the JPEG gives.
  vips::VImage image = Painted(120, 80, kOrange).copy();
  image.set("exif-ifd2-BodySerialNumber", "SN123456");
  image.set("exif-ifd3-GPSLatitude", "45/1 27/1 0/1");
  static const char kXmp[] = "<x:xmpmeta xmlns:x=\"adobe:ns:meta/\">Via Roma 1</x:xmpmeta>";
  vips_image_set_blob_copy(image.get_image(), "xmp-data", kXmp, sizeof kXmp - 1);
  std::vector<CopyRecord> copies = {Place("camera.jpg", image)};
  vips::VImage with_exif = vips::VImage::new_from_file(copies[0].source.c_str());
  copies.push_back(Place("camera.png", with_exif));
  copies.push_back(Place("camera.webp", with_exif));
  for (const CopyRecord& copy : copies) {
    std::vector<std::string> carried = Inspect(copy.source).metadata;
    for (const char* field : {"exif-ifd3-GPSLatitude", "exif-ifd2-BodySerialNumber", "xmp-data"}) {
      ASSERT_NE(std::find(carried.begin(), carried.end(), field), carried.end()) << copy.source;
    }
  }
  DerivePictures(copies, {{"web", 60}}, false, nullptr);
  for (const CopyRecord& copy : copies) {
    test::PictureFacts web = Inspect(Derived("web") / fs::path(copy.copy).filename());
    EXPECT_TRUE(web.read && web.metadata.empty()) << copy.copy;
  }
}

TEST_F(DerivedPicturesTest, FormatFollowsTheContentAndColoursComeOutInSrgb) {
  vips::VImage orange = Painted(90, 60, kOrange);
  // Two frames, orange then blue: only the first is taken.
  vips::VImage frames = orange.join(Painted(90, 60, kBlue), VIPS_DIRECTION_VERTICAL).copy();
  frames.set("page-height", 60);
  struct Case {
    const char* name;
    vips::VImage image;
    const char* loader;
    Colour colour;
    double tolerance;
  } cases[] = {{"frames.gif", frames, "gifload", kOrange, 12},
               {"web.webp", orange, "webpload", kOrange, 12},
               {"scan.tif", orange, "jpegload", kOrange, 12},
               {"paint.bmp", orange, "jpegload", kOrange, 12},
               {"clear.tif", orange.bandjoin_const({0}), "jpegload", {255, 255, 255}, 3},
               {"print.jpg", orange.icc_transform("cmyk"), "jpegload", kOrange, 40},
               {"png-named.jpg", orange, "pngload", kOrange, 3}};
  std::vector<CopyRecord> copies;
  for (const Case& c : cases) {
    copies.push_back(Place(c.name, c.image));
    if (c.loader == std::string("pngload")) c.image.pngsave(copies.back().source.c_str());
  }
  DeriveOutcome outcome = DerivePictures(copies, {{"web", 45}}, false, nullptr);
  EXPECT_EQ(outcome.plain_copies, std::vector<std::string>{});
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    test::PictureFacts web = Inspect(Derived(std::string("web/") + c.name));
    EXPECT_EQ(web.loader, c.loader);
    EXPECT_EQ(std::tuple(web.width, web.height, std::min(web.bands, 3)), std::tuple(45, 30, 3));
    Colour pixel = web.Pixel(20, 10);
    EXPECT_NEAR(pixel.red, c.colour.red, c.tolerance);
    EXPECT_NEAR(pixel.green, c.colour.green, c.tolerance);
    EXPECT_NEAR(pixel.blue, c.colour.blue, c.tolerance);
  }
}

TEST_F(DerivedPicturesTest, PictureThatCannotBeScaledIsCopiedAndListed) {
  std::string whole = Read(Place("whole.jpg", test::Grain(200, 200), "[Q=95]").source);
  tree_->Write("src/text.jpg", "non è una foto\n");
  tree_->Write("src/cut.jpg", whole.substr(0, whole.size() / 2));
  std::vector<CopyRecord> copies = {PlaceFile(tree_->Path("src/text.jpg"), "img_001.jpg"),
                                    PlaceFile(tree_->Path("src/cut.jpg"), "img_002.jpg"),
                                    // More pixels than a picture decoded whole may have.
                                    Place("huge.tif", vips::VImage::black(10001, 10000),
                                          "[compression=deflate,tile]", "img_003.tif")};
  DeriveOutcome outcome = DerivePictures(copies, {{"mini", 40}, {"web", 80}}, false, nullptr);
  std::vector<std::string> expected;
  for (const CopyRecord& copy : copies) {
    for (const char* folder : {"mini", "web"}) {
      expected.push_back((Derived(folder) / fs::path(copy.copy).filename()).string());
      EXPECT_EQ(Read(expected.back()), Read(copy.source)) << expected.back();
    }
  }
  EXPECT_EQ(outcome.plain_copies, expected);
}

TEST_F(DerivedPicturesTest, RebuildRedoesOnlyWhatChanged) {
  enum Change { kNothing, kSourceTouched, kPlacesSwapped, kSizeChanged, kRemoved, kCapitals };
  struct Case {
    Change change;
    std::vector<std::string> redone;  // named as the first pass wrote them
  } cases[] = {
      {kNothing, {}},
      {kSourceTouched, {"mini/img_002.jpg", "web/img_002.jpg"}},
      {kPlacesSwapped,
       {"mini/img_001.jpg", "mini/img_002.jpg", "web/img_001.jpg", "web/img_002.jpg"}},
      {kSizeChanged, {"web/img_001.jpg", "web/img_002.jpg", "web/img_003.jpg"}},
      {kRemoved, {"web/img_003.jpg"}},
      {kCapitals, {}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.change);
    tree_.reset();
    tree_.emplace();
    std::vector<CopyRecord> copies = {Place("a.jpg", Painted(300, 200, kOrange), "", "img_001.jpg"),
                                      Place("b.jpg", Painted(200, 300, kBlue), "", "img_002.jpg"),
                                      Place("c.jpg", Painted(99, 99, kOrange), "", "img_003.jpg")};
    std::vector<DerivedSize> sizes = {{"mini", 60}, {"web", 150}};
    DerivePictures(copies, sizes, false, nullptr);
    std::map<std::string, test::FileStamp> before;
    for (const char* name : {"img_001.jpg", "img_002.jpg", "img_003.jpg"}) {
      for (std::string folder : {"mini/", "web/"}) {
        before[folder + name] = test::StampOf(Derived(folder + name));
      }
    }
    bool capitals = c.change == kCapitals;
    struct timespec times[2] = {{0, UTIME_OMIT}, {1'000'000, 0}};
    if (c.change == kSourceTouched) ::utimensat(AT_FDCWD, copies[1].source.c_str(), times, 0);
    if (c.change == kPlacesSwapped) std::swap(copies[0].source, copies[1].source);
    if (c.change == kSizeChanged) sizes[1].pixels = 120;
    if (c.change == kRemoved) fs::remove(Derived("web/img_003.jpg"));
    for (CopyRecord& copy : copies) {
      fs::path path(copy.copy);
      if (capitals) copy.copy = path.parent_path() / ToUpper(path.filename().string());
    }

    DeriveOutcome outcome = DerivePictures(copies, sizes, capitals, nullptr);
    EXPECT_TRUE(outcome.failed.empty() && outcome.plain_copies.empty());
    std::vector<std::string> redone;
    for (const auto& [name, stamp] : before) {
      fs::path now = Derived(capitals ? ToUpper(name) : name);
      ASSERT_TRUE(fs::exists(now)) << now;
      if (test::StampOf(now) != stamp) redone.push_back(name);
    }
    EXPECT_EQ(redone, c.redone);
    EXPECT_EQ(fs::exists(Derived("mini")), !capitals);
    // The first place shows the picture its source now holds.
    test::PictureFacts first = Inspect(Derived(capitals ? "MINI/IMG_001.JPG" : "mini/img_001.jpg"));
    EXPECT_EQ(first.width > first.height, copies[0].source.ends_with("a.jpg"));
  }
}

TEST_F(DerivedPicturesTest, StopLeavesWholePicturesOnlyAndTheNextPassGoesOn) {
  std::vector<CopyRecord> copies;
  for (int i = 1; i <= 12; ++i) {
    copies.push_back(Place("p" + std::to_string(i) + ".jpg", test::Grain(400, 300)));
  }
  DeriveOutcome outcome =
      DerivePictures(copies, {{"web", 200}}, false, [](size_t, size_t) { return false; });
  EXPECT_TRUE(outcome.stopped);
  for (const std::string& path : tree_->Tree()) {
    EXPECT_EQ(path.find(kDerivedTemporaryPrefix), std::string::npos) << path;
  }
  std::map<fs::path, test::FileStamp> made;
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
    EXPECT_EQ(std::pair(done, total), std::pair(++calls, copies.size()));
    return true;
  });
  EXPECT_FALSE(outcome.stopped);
  EXPECT_EQ(calls, copies.size());
  for (const auto& [path, stamp] : made) EXPECT_EQ(test::StampOf(path), stamp) << path;
}

TEST(SizeFolderTest, OnlyPlainNamesAreSafeAndOthersWriteNothing) {
  for (const char* safe : {"mini", "Web 1600"}) EXPECT_TRUE(SizeFolderIsSafe(safe)) << safe;
  for (const char* unsafe : {"", ".", "..", ".derivate", "a/b", "a\\b"}) {
    EXPECT_FALSE(SizeFolderIsSafe(unsafe)) << unsafe;
  }
  test::TempTree tree;
  tree.Write("site/dir_0001/a.jpg", "x");
  DeriveOutcome outcome =
      DerivePictures({{tree.Path("site/dir_0001/a.jpg"), tree.Path("site/dir_0001/b.jpg")}},
                     {{"..", 40}, {"../x", 40}, {"", 40}}, false, nullptr);
  EXPECT_TRUE(outcome.plain_copies.empty() && outcome.failed.empty());
  EXPECT_EQ(tree.Tree(),
            (std::vector<std::string>{"site/", "site/dir_0001/", "site/dir_0001/a.jpg"}));
}

TEST(DerivedRecordTest, TextKeepsAnyNameAndDropsWhatItCannotRead) {
  DerivedRecord record;
  record.Put({"MINI", 480, "IMG\t1\\2\n.JPG", "/foto/a\rb.jpg", 12345, 1'700'000'000'123, true});
  record.Put({"web", 1600, "img_002.jpg", "/foto/b.jpg", 1, 2, false});
  EXPECT_EQ(DerivedRecord::Parse(record.Text()).Text(), record.Text());
  EXPECT_NE(DerivedRecord::Parse(record.Text()).Find("mini", "img\t1\\2\n.jpg"), nullptr);

  const std::string head = "vetrina-derivate 1\n";
  struct Case {
    std::string text;
    size_t entries;
  } cases[] = {{head + "web\t1600\ta.jpg\t/a.jpg\t1\t2\ts\n", 1},
               {head + "web\t1600\ta.jpg\t/a.jpg\t1\t2\n", 0},        // a field short
               {head + "web\tmolti\ta.jpg\t/a.jpg\t1\t2\ts\n", 0},    // not a number
               {head + "web\t1600\ta\\q.jpg\t/a.jpg\t1\t2\ts\n", 0},  // no such escape
               {head + "web\t1600\t../a.jpg\t/a.jpg\t1\t2\ts\n", 0},  // not in the folder
               {"vetrina-derivate 2\nweb\t1600\ta.jpg\t/a.jpg\t1\t2\ts\n", 0}};
  for (const Case& c : cases) EXPECT_EQ(DerivedRecord::Parse(c.text).size(), c.entries) << c.text;
}

}  // namespace
}  // namespace vf
