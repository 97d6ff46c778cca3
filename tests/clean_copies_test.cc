// Cleaning the album copies: what each kind of file becomes, what a full
// disk leaves, and the report the user reads.
#include <gtest/gtest.h>

#include <filesystem>
#include <optional>
#include <string>
#include <vector>
#include <vips/vips8>

#include "desktop/site_publishing.h"
#include "publish/clean_copies.h"
#include "publish/rewritten_picture.h"
#include "tests/support/e2e.h"
#include "tests/support/host_checks.h"

namespace vf {
namespace {

namespace fs = std::filesystem;
using namespace std::string_literals;
using namespace vf::test;
using Names = std::vector<std::string>;
using Kind = std::optional<RewriteKind>;

// src/NAME, tagged when `tags`, and its byte copy site/NAME.
CopyRecord Place(const TempTree& tree, const std::string& name, const std::string& bytes,
                 bool tags = false) {
  tree.Write("src/" + name, bytes);
  if (tags)
    Output("exiftool -q -m -overwrite_original " + kIdentifyingTags + " " + "'" +
           tree.Path("src/" + name).string() + "'");
  tree.Write("site/" + name, tree.Read("src/" + name));
  return {tree.Path("src/" + name).string(), tree.Path("site/" + name).string()};
}

std::string Saved(const vips::VImage& image, const char* suffix) {
  void* buffer = nullptr;
  size_t size = 0;
  image.write_to_buffer(suffix, &buffer, &size);
  std::string bytes(static_cast<const char*>(buffer), size);
  g_free(buffer);
  return bytes;
}

Names FileNames(const std::vector<CleanNote>& notes) {
  Names names;
  for (const CleanNote& note : notes) names.push_back(fs::path(note.source).filename().string());
  return names;
}

// A BMP of two pixels: its size, the size of its header, its pixels.
const std::string kBmp = "BM\x3E\0\0\0\0\0\0\0\x36\0\0\0\x28\0\0\0\2\0\0\0\1\0\0\0\1\0\x18\0"s +
                         std::string(24, '\0') + std::string(8, '\xFF');

TEST(CleanCopiesTest, PicturesOfOtherContainersAreWrittenAgainAndTheRestNamed) {
  TempTree tree;
  const vips::VImage grain = Grain(64, 48, kOrange, 30);
  vips::VImage pages = grain.join(grain, VIPS_DIRECTION_VERTICAL).copy();
  pages.set("page-height", 48);
  const std::string tiff = Saved(grain, ".tif");
  const struct {
    std::string name, bytes;
    Kind kind;  // written again as
  } cases[] = {
      {"t.tif", tiff, RewriteKind::kTiff},
      {"h.heic", Saved(grain, ".heic"), RewriteKind::kHeic},
      {"a.avif", Saved(grain, ".heif[compression=av1]"), RewriteKind::kAvif},
      {"x.jxl", Saved(grain, ".jxl"), RewriteKind::kJxl},
      {"note.jpg", "non è una foto", {}},
      {"cut.tif", tiff.substr(0, tiff.size() / 2), {}},
      {"pages.tif", Saved(pages, ".tif"), {}},
      {"text.bmp", "BM and whatever follows", {}},
      {"odd.bmp", kBmp.substr(0, 14) + "\x63" + kBmp.substr(15), {}},  // no such header
      {"b.bmp", kBmp, {}},
      {"empty.jpg", "", {}},
  };
  std::vector<CopyRecord> copies;
  for (const auto& c : cases) copies.push_back(Place(tree, c.name, c.bytes, c.kind.has_value()));
  copies.push_back({tree.Path("src/t.tif").string(), tree.Path("site/gone.tif").string()});
  const std::vector<std::string> before = {tree.Read("src/t.tif"), tree.Read("src/x.jxl")};
  const Stamp stamp = StampOf(tree.Path("src/t.tif"));
  ASSERT_EQ(IdentifyingTags(copies[0].copy),
            "Artist OwnerName SerialNumber [GPS] [IPTC] [XMP");  // TIFF has no Author

  const CleanOutcome outcome = CleanCopies(copies, 2);
  EXPECT_EQ(outcome.identifying, 0u);
  EXPECT_EQ(FileNames(outcome.rewritten), (Names{"t.tif", "h.heic", "a.avif", "x.jxl"}));
  EXPECT_EQ(FileNames(outcome.carrying),
            (Names{"note.jpg", "cut.tif", "pages.tif", "text.bmp", "odd.bmp"}));
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    const fs::path copy = tree.Path("site/" + c.name);
    if (!c.kind) {
      EXPECT_EQ(tree.Read("site/" + c.name), c.bytes);
      continue;
    }
    EXPECT_EQ(RewriteKindOfStart(tree.Read("site/" + c.name).substr(0, 64)), c.kind);
    EXPECT_EQ(IdentifyingTags(copy), "");
    const vips::VImage again = vips::VImage::new_from_file(copy.c_str());
    EXPECT_FALSE(again.get_typeof("orientation") && again.get_int("orientation") != 1);
    // TIFF stands by its EXIF orientation and loses nothing; in HEIF and JPEG
    // XL the container's own turn counts (none here), and they stay close.
    const bool tiff = c.kind == RewriteKind::kTiff;
    const vips::VImage upright =
        vips::VImage::new_from_file(tree.Path("src/" + c.name).c_str()).autorot();
    ASSERT_EQ(std::pair(again.width(), again.height()),
              std::pair(upright.width(), upright.height()));
    EXPECT_LE((again - upright).abs().avg(), tiff ? 0 : 3) << (again - upright).abs().avg();
  }
  // The sources are as they were, never written; nothing else is left in the site.
  EXPECT_EQ((std::vector<std::string>{tree.Read("src/t.tif"), tree.Read("src/x.jxl")}), before);
  EXPECT_EQ(StampOf(tree.Path("src/t.tif")), stamp);
  EXPECT_EQ(tree.Tree("site").size(), std::size(cases));
}

TEST(CleanCopiesTest, AFullDiskLeavesTheByteCopyWholeAndTellsTheWrite) {
  TempTree tree;
  const CopyRecord copy = Place(tree, "t.tif", Saved(Grain(200, 150, kOrange, 30), ".tif"), true);
  const std::string copied = tree.Read("site/t.tif");
  const CleanOutcome outcome = OnAFullDisk([&] { return CleanCopies({copy}); });
  ASSERT_EQ(FileNames(outcome.carrying), Names{"t.tif"});
  EXPECT_EQ(outcome.carrying[0].why->what, Reason::What::kWriteFailed);  // EFBIG is no full disk
  EXPECT_TRUE(outcome.rewritten.empty());
  EXPECT_EQ(tree.Read("site/t.tif"), copied);
  EXPECT_EQ(tree.Tree("site"), Names{"t.tif"});
}

TEST(CleanCopiesTest, TheKindOfACopyIsReadFromItsFirstBytes) {
  const auto box = [](const std::string& brands) {
    return std::string("\0\0\0"s + static_cast<char>(8 + brands.size()) + "ftyp" + brands);
  };
  const std::pair<std::string, Kind> cases[] = {
      {"II*\0"s, RewriteKind::kTiff},
      {"MM\0*"s, RewriteKind::kTiff},
      {"II+\0"s, RewriteKind::kTiff},
      {"\xFF\x0A", RewriteKind::kJxl},
      {"\0\0\0\x0CJXL \r\n\x87\n"s, RewriteKind::kJxl},
      {box("heic\0\0\0\0mif1heic"s), RewriteKind::kHeic},
      {box("mif1\0\0\0\0mif1heic"s), RewriteKind::kHeic},
      {box("avif\0\0\0\0avifmif1"s), RewriteKind::kAvif},
      {box("avif\0\0\0\0"s), RewriteKind::kAvif},
      {box("mif1\0\0\0\0mif1avif"s), RewriteKind::kAvif},
      {box("isom\0\0\0\0isomavc1"s), {}},      // a video
      {box("mp42\0\0\0\0mp42") + "heic", {}},  // past the box
      {"MM\0\0"s, {}},
      {"\xFF\xD8\xFF", {}},
      {"", {}},
  };
  for (const auto& [start, kind] : cases) EXPECT_EQ(RewriteKindOfStart(start), kind) << start;
}

TEST(CleanCopiesTest, TheReportCountsNamesAndCutsItsLists) {
  const auto note = [](const std::string& name, Reason::What what = Reason::What::kNotAPicture) {
    return CleanNote{name, "", Reason{what, false, "detail"}};
  };
  CleanOutcome many;
  for (int i = 1; i <= 22; ++i) many.carrying.push_back(note("f" + std::to_string(i)));
  std::string cut = "Queste foto sono pubblicate con i loro dati, posizione compresa:";
  for (int i = 1; i <= 20; ++i) cut += "\rC:\\f" + std::to_string(i);
  const std::string gone =
      "Dalle copie pubblicate sono stati tolti posizione GPS e dati "
      "dell'apparecchio di ";
  const std::pair<CleanOutcome, std::string> cases[] = {
      {{}, ""},
      {{1, {}, {}}, gone + "1 immagine."},
      {{12,
        {CleanNote{"t.tif", "", {}}},
        {note("v.mp4"), note("a.jpg", Reason::What::kDiskFull), note("b.jpg", Reason::What::kCut),
         note("c.jpg", Reason::What::kWriteFailed)}},
       gone + "12 immagini.\r\rQueste foto sono state scritte di nuovo senza i loro dati:\r"
              "C:\\t.tif\r\rQueste foto sono pubblicate con i loro dati, posizione compresa:\r"
              "C:\\v.mp4\rC:\\a.jpg - disco pieno\rC:\\b.jpg\rC:\\c.jpg - scrittura non "
              "riuscita"},
      {{0, {CleanNote{"h.heic", "", {}}}, {}},
       "Queste foto sono state scritte di nuovo senza i loro dati:\rC:\\h.heic"},
      {many, cut + "\r(e altre 2)"},
  };
  for (const auto& [outcome, message] : cases) {
    EXPECT_EQ(CleanMessage(outcome, [](const std::string& s) { return "C:\\" + s; }), message);
  }
}

}  // namespace
}  // namespace vf
