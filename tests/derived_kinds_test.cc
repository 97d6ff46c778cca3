// The web sizes of a phone's pictures (HEIC, HEIF, AVIF, JPEG XL), told by
// their bytes and not their names, and the AVIF beside every scaled picture:
// what it holds, what a rebuild makes of it, and what a pass says when it
// cannot write one.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <tuple>
#include <vector>
#include <vips/vips8>

#include "desktop/reason_words.h"
#include "metadata/picture_kind.h"
#include "publish/derived_pictures.h"
#include "publish/site_names.h"
#include "tests/support/e2e.h"
#include "tests/support/host_checks.h"

namespace vf {
namespace {

namespace fs = std::filesystem;
using namespace std::string_literals;
using namespace vf::test;
using Names = std::vector<std::string>;

vips::VImage Load(const fs::path& path) { return vips::VImage::new_from_file(path.c_str()); }

// The picture as libvips' saver of `suffix` writes it ("[compression=av1]"
// and other options may follow).
std::string Saved(const vips::VImage& image, const std::string& suffix) {
  void* buffer = nullptr;
  size_t size = 0;
  image.write_to_buffer(suffix.c_str(), &buffer, &size);
  std::string bytes(static_cast<const char*>(buffer), size);
  g_free(buffer);
  return bytes;
}

bool CanSave(const char* suffix) {
  const bool can = vips_foreign_find_save_buffer(suffix) != nullptr;
  vips_error_clear();
  return can;
}

bool Tagged(const vips::VImage& image) {
  return image.get_typeof("exif-data") || image.get_typeof("xmp-data") ||
         image.get_typeof("iptc-data") || image.get_typeof("icc-profile-data");
}

// The bytes with the first `box` type's 4 bytes at `at` past it replaced.
std::string Patched(std::string bytes, const std::string& box, size_t at, const std::string& with) {
  const size_t found = bytes.find(box);
  if (found != std::string::npos) bytes.replace(found + at, with.size(), with);
  return bytes;
}

const std::vector<DerivedSize> kSizes = {{"mini", 30}, {"web", 45}};
const std::vector<double> kWhite = {255, 255, 255}, kRed = {255, 0, 0};

class DerivedKindsTest : public ::testing::Test {
 protected:
  // src/<source>, and its copy in the album named as a build names it, by
  // its place and the last three characters of the source's name.
  CopyRecord Place(const std::string& source, const std::string& bytes) {
    tree_->Write("src/" + source, bytes);
    const std::string copy = CopyName(++places_, CopyExtension(source), false);
    tree_->Write("site/dir_0001/" + copy, bytes);
    return {tree_->Path("src/" + source).string(), Album(copy).string()};
  }
  fs::path Album(const std::string& name) const { return tree_->Path("site/dir_0001/" + name); }
  // "SOURCE > DERIVED: CAUSE", the derived picture inside the album.
  Names Told(const std::vector<DeriveProblem>& problems) const {
    Names told;
    for (const DeriveProblem& p : problems) {
      told.push_back(fs::path(p.source).filename().string() + " > " +
                     fs::relative(p.derived, Album("")).string() + ": " + ReasonWords(p.why));
    }
    return told;
  }
  // Every file of the album but the copies, with its stamp.
  std::map<std::string, Stamp> Made() const {
    std::map<std::string, Stamp> made;
    for (const std::string& name : tree_->Tree("site/dir_0001")) {
      if (name.find('/') != std::string::npos && name.back() != '/')
        made[name] = StampOf(Album(name));
      if (name == ".derivate") made[name] = StampOf(Album(name));
    }
    return made;
  }

  std::optional<TempTree> tree_{std::in_place};
  int places_ = 0;
};

TEST_F(DerivedKindsTest, PhonePicturesAreToldByTheirBytesAndScaledToJpeg) {
  const vips::VImage orange = Painted(90, 60, kOrange);
  const std::string heic = Saved(orange, ".heic[compression=hevc]");
  const std::string avif = Saved(orange, ".heif[compression=av1]");
  struct Row {
    std::string source, bytes;
    std::string loader = "jpegload";  // of the derived pictures; empty for a plain copy
    std::vector<double> colour = kOrange;
    std::string cause = "";
  };
  std::vector<Row> rows = {
      {"phone.heic", heic},
      {"phone.HEIF", heic},
      {"camera.hif", heic},
      {"photo.avif", avif},
      // A name says nothing: what the bytes are is made.
      {"jpeg.heic", Saved(orange, ".jpg")},
      {"png.avif", Saved(orange, ".png"), "pngload"},
      {"text.heic", "non è una foto", "", {}, "non è un'immagine"},
      // Transparent on white, deeper than 8 bits brought to 8.
      {"clear.heic", Saved(orange.bandjoin_const({0}), ".heic[compression=hevc]"), "jpegload",
       kWhite},
      {"deep.heic", Saved(orange, ".heic[compression=hevc,bitdepth=10]")},
      {"cut.heic", heic.substr(0, heic.size() * 2 / 3), "", {}, "file troncato"},
      {"noprimary.heic", Patched(heic, "pitm", 0, "pitx"), "", {}, "file danneggiato"},
      {"huge.avif",
       Patched(avif, "ispe", 8, "\0\0\x40\0\0\0\x40\0"s),
       "",
       {},
       "troppo grande: 16384×16384"},
  };
  if (CanSave(".jxl")) {
    rows.push_back({"photo.jxl", Saved(orange, ".jxl")});
    // An animation's frames, red then blue, when cjxl can make one: one of
    // them is the picture.
    vips::VImage frames =
        Painted(90, 60, kRed).join(Painted(90, 60, kBlue), VIPS_DIRECTION_VERTICAL);
    frames = frames.copy();
    frames.set("page-height", 60);
    frames.write_to_file(tree_->Path("moving.gif").c_str());
    const std::string moving = tree_->Path("moving.jxl").string();
    Output("cjxl '" + tree_->Path("moving.gif").string() + "' '" + moving + "' 2>&1");
    if (tree_->Exists("moving.jxl")) rows.push_back({"moving.jxl", tree_->Read("moving.jxl")});
  }
  std::vector<CopyRecord> copies;
  Names plain;
  for (const Row& row : rows) {
    copies.push_back(Place(row.source, row.bytes));
    if (!row.cause.empty()) {
      for (const DerivedSize& size : kSizes) {
        plain.push_back(row.source + " > " + size.folder + "/" +
                        fs::path(copies.back().copy).filename().string() + ": " + row.cause);
      }
    }
  }
  const DeriveOutcome outcome = DerivePictures(copies, kSizes, false, nullptr, {.avif = true});
  EXPECT_EQ(Told(outcome.plain_copies), plain);
  EXPECT_EQ(Told(outcome.failed), Names{});
  EXPECT_EQ(Told(outcome.avif_missing), Names{});
  for (size_t i = 0; i < rows.size(); ++i) {
    const Row& row = rows[i];
    SCOPED_TRACE(row.source);
    const std::string name = fs::path(copies[i].copy).filename().string();
    for (const DerivedSize& size : kSizes) {
      const fs::path derived = Album(size.folder + "/" + name);
      const fs::path avif_path = Album(size.folder + "/" + AvifName(name));
      if (row.loader.empty()) {
        EXPECT_EQ(tree_->Read(fs::relative(derived, tree_->root())), row.bytes);
        EXPECT_FALSE(fs::exists(avif_path));
        continue;
      }
      const vips::VImage made = Load(derived);
      EXPECT_EQ(
          std::tuple(made.get_string("vips-loader"), made.width(), made.height(), Tagged(made)),
          std::tuple(row.loader, size.pixels, size.pixels * 2 / 3, false))
          << size.folder;
      EXPECT_TRUE(fs::exists(avif_path)) << size.folder;
    }
    if (row.loader.empty()) continue;
    const std::vector<double> pixel = Load(Album("web/" + name)).getpoint(20, 15);
    if (row.source == "moving.jxl") {
      EXPECT_TRUE(pixel[0] > 200 || pixel[2] > 200) << pixel[0] << " " << pixel[2];
      continue;
    }
    for (int band = 0; band < 3; ++band) EXPECT_NEAR(pixel[band], row.colour[band], 16) << band;
  }
  // A HEIF is decoded whole, so it counts twice its pixels, as a GIF does.
  tree_.emplace();
  EXPECT_EQ(DerivePictures({Place("one.heic", heic)}, {{"web", 40}}, false, nullptr).largest_cost,
            90 * 60 * 3 * 2);
}

TEST_F(DerivedKindsTest, AnAvifOfTheSamePixelsStandsBesideEachScaledPicture) {
  const vips::VImage orange = Painted(90, 60, kOrange);
  vips::VImage frames = orange.join(Painted(90, 60, kBlue), VIPS_DIRECTION_VERTICAL).copy();
  frames.set("page-height", 60);
  const struct {
    std::string source, bytes;
    int bands;  // of the AVIF
    std::vector<double> colour = kOrange;
  } rows[] = {
      {"camera.jpg", Saved(orange, ".jpg"), 3},
      // 16 bits a band, brought to 8 by value, not cut off.
      {"deep.png",
       Saved((orange.cast(VIPS_FORMAT_USHORT) * 257)
                 .cast(VIPS_FORMAT_USHORT)
                 .copy(vips::VImage::option()->set("interpretation", VIPS_INTERPRETATION_RGB16)),
             ".png[bitdepth=16]"),
       3},
      // Transparent where the picture keeps its transparency.
      {"clear.png", Saved(orange.bandjoin_const({128}), ".png"), 4},
      {"moving.gif", Saved(frames, ".gif"), 4},  // its first frame, as GIF's decoder gives it
      {"phone.heic", Saved(orange, ".heic[compression=hevc]"), 3},
      // On white as the JPEG shows it.
      {"clear.tif", Saved(orange.bandjoin_const({0}), ".tif"), 3, kWhite},
  };
  std::vector<CopyRecord> copies;
  for (const auto& row : rows) copies.push_back(Place(row.source, row.bytes));
  copies.push_back(Place("text.jpg", "non è una foto"));
  const DeriveOutcome outcome = DerivePictures(copies, kSizes, false, nullptr, {.avif = true});
  EXPECT_EQ(Told(outcome.avif_missing), Names{});
  // Every scaled picture has its AVIF; the plain copy has none.
  Names mini;
  for (const CopyRecord& copy : copies) {
    const std::string name = fs::path(copy.copy).filename().string();
    mini.push_back("mini/" + name);
    if (name != "img_007.jpg") mini.push_back("mini/" + AvifName(name));
  }
  std::sort(mini.begin(), mini.end());
  Names found;
  for (const auto& [name, stamp] : Made()) {
    if (name.starts_with("mini/")) found.push_back(name);
  }
  EXPECT_EQ(found, mini);
  for (size_t i = 0; i < std::size(rows); ++i) {
    SCOPED_TRACE(rows[i].source);
    const std::string name = fs::path(copies[i].copy).filename().string();
    for (const DerivedSize& size : kSizes) {
      const vips::VImage derived = Load(Album(size.folder + "/" + name));
      const vips::VImage avif = Load(Album(size.folder + "/" + AvifName(name)));
      EXPECT_EQ(std::tuple(avif.get_string("vips-loader"), avif.get_string("heif-compression"),
                           avif.get_int("heif-bitdepth"), avif.width(), avif.height(), avif.bands(),
                           avif.get_typeof("exif-data") != 0),
                std::tuple("heifload"s, "av1"s, 8, derived.width(), derived.height(), rows[i].bands,
                           false))
          << size.folder;
    }
    const std::vector<double> pixel = Load(Album("web/" + AvifName(name))).getpoint(20, 15);
    for (int band = 0; band < 3; ++band) EXPECT_NEAR(pixel[band], rows[i].colour[band], 16) << band;
  }
}

TEST_F(DerivedKindsTest, ARebuildMakesOnlyTheAvifPicturesItLacks) {
  const std::vector<CopyRecord> copies = {
      Place("a.jpg", Saved(Painted(90, 60, kOrange), ".jpg")),
      Place("b.heic", Saved(Painted(60, 90, kBlue), ".heic[compression=hevc]"))};
  const Names avif_files = {"mini/img_001.avif", "mini/img_002.avif", "web/img_001.avif",
                            "web/img_002.avif"};
  DerivePictures(copies, kSizes, false, nullptr);
  EXPECT_FALSE(tree_->Exists("site/dir_0001/mini/img_001.avif"));
  // Each step: AVIF or not, a change before the pass, and the files it
  // wrote, made again or removed.
  const struct {
    const char* step;
    bool avif;
    std::function<void()> change;
    Names changed;
  } steps[] = {
      {"turned on", true, [] {}, {".derivate"}},
      {"nothing changed", true, [] {}, {}},
      {"turned off", false, [] {}, {}},
      {"an AVIF gone",
       true,
       [&] { fs::remove(Album("web/img_002.avif")); },
       {".derivate", "web/img_002.avif"}},
      // A picture that can no more be scaled keeps no AVIF, not even off.
      {"a source that is no picture now",
       false,
       [&] { tree_->Write("src/a.jpg", "non più una foto"); },
       {".derivate", "mini/img_001.avif", "mini/img_001.jpg", "web/img_001.avif",
        "web/img_001.jpg"}},
      {"and on again", true, [] {}, {}},
  };
  for (const auto& step : steps) {
    const std::map<std::string, Stamp> before = Made();
    step.change();
    const DeriveOutcome outcome =
        DerivePictures(copies, kSizes, false, nullptr, {.avif = step.avif});
    EXPECT_EQ(Told(outcome.avif_missing), Names{}) << step.step;
    std::map<std::string, Stamp> after = Made();
    Names changed;
    for (const auto& [name, stamp] : before) {
      if (!after.contains(name) || after[name] != stamp) changed.push_back(name);
    }
    for (const auto& [name, stamp] : after) {
      if (!before.contains(name)) changed.push_back(name);
    }
    std::sort(changed.begin(), changed.end());
    Names expected = step.changed;
    if (std::string(step.step) == "turned on") {
      expected.insert(expected.end(), avif_files.begin(), avif_files.end());
    }
    EXPECT_EQ(changed, expected) << step.step;
  }
  EXPECT_FALSE(tree_->Exists("site/dir_0001/web/img_001.avif"));
  EXPECT_TRUE(tree_->Exists("site/dir_0001/web/img_002.avif"));
}

TEST_F(DerivedKindsTest, AnAvifThatCannotBeWrittenIsNamedAndNoStaleOneStays) {
  const std::vector<CopyRecord> copies = {Place("grain.jpg", Saved(Grain(300, 200), ".jpg[Q=95]"))};
  DerivePictures(copies, {{"web", 200}}, false, nullptr);
  const Stamp picture = StampOf(Album("web/img_001.jpg"));
  tree_->Write("site/dir_0001/web/img_001.avif", "an AVIF of another picture");
  const DeriveOutcome outcome = OnAFullDisk([&] {
    return DerivePictures(copies, {{"web", 200}}, false, nullptr, {.avif = true});
  });
  EXPECT_EQ(std::pair(Told(outcome.avif_missing), Told(outcome.failed)),
            std::pair(Names{"grain.jpg > web/img_001.avif: scrittura non riuscita"}, Names{}));
  EXPECT_EQ(tree_->Tree("site/dir_0001/web"), Names{"img_001.jpg"});
  EXPECT_EQ(StampOf(Album("web/img_001.jpg")), picture);
  // The next pass with room makes it.
  EXPECT_TRUE(
      DerivePictures(copies, {{"web", 200}}, false, nullptr, {.avif = true}).avif_missing.empty());
  EXPECT_EQ(Load(Album("web/img_001.avif")).width(), 200);
}

TEST(PictureKindTest, HeifAndJpegXlAreToldByTheirFirstBytes) {
  using Kind = std::optional<PictureKind>;
  auto ftyp = [](const std::string& brands) {
    const std::string body = "ftyp" + brands;
    return std::string{0, 0, 0, char(body.size() + 4)} + body + "\0\0\0\x08meta"s;
  };
  const struct {
    std::string start;
    Kind kind;
    bool avif = false;
  } rows[] = {
      {ftyp("heic\0\0\0\0mif1heic"s), PictureKind::kHeif},
      {ftyp("mif1\0\0\0\0mif1heic"s), PictureKind::kHeif},
      {ftyp("msf1\0\0\0\0"s), PictureKind::kHeif},
      {ftyp("avif\0\0\0\0avifmif1miaf"s), PictureKind::kHeif, true},
      {ftyp("mif1\0\0\0\0miafavis"s), PictureKind::kHeif, true},
      // A video, a camera's raw file, a brand in the minor version's place.
      {ftyp("isom\0\0\0\0isomiso2mp41"s), {}},
      {ftyp("crx \0\0\0\1crx isom"s), {}},
      {ftyp("mp42heic"), {}},
      {"\xFF\x0A\xFA\x7F"s, PictureKind::kJxl},
      {"\0\0\0\x0CJXL \r\n\x87\n\0\0\0\x14"s, PictureKind::kJxl},
      {"\0\0\0\x0CJXL \r\n\x87"s, {}},
      {"\0\0\0\x18"s + "ftyp", {}},
      {"\0\0\0\x0C"s + "ftypheic", PictureKind::kHeif},  // a box of its major brand alone
  };
  for (const auto& row : rows) {
    EXPECT_EQ(std::pair(KindOfStart(row.start), AnnouncesAvif(row.start)),
              std::pair(row.kind, row.avif))
        << row.start;
  }
}

}  // namespace
}  // namespace vf
