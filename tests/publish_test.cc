#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cmath>
#include <filesystem>
#include <map>
#include <optional>
#include <set>
#include <string_view>
#include <thread>
#include <vips/vips8>

#include "desktop/reason_words.h"
#include "metadata/metadata_sift.h"
#include "platform/case_fold.h"
#include "platform/host_files.h"
#include "publish/derived_memory.h"
#include "publish/derived_pictures.h"
#include "publish/derived_record.h"
#include "publish/reason.h"
#include "tests/support/e2e.h"
#include "tests/support/host_checks.h"

namespace vf {
namespace {

namespace fs = std::filesystem;
using namespace std::string_literals;
using namespace vf::test;
using Names = std::vector<std::string>;

vips::VImage Load(const fs::path& path) { return vips::VImage::new_from_file(path.c_str()); }

bool Tagged(const vips::VImage& image) {
  return image.get_typeof("exif-data") || image.get_typeof("xmp-data") ||
         image.get_typeof("iptc-data") || image.get_typeof("icc-profile-data");
}

class DerivedPicturesTest : public ::testing::Test {
 protected:
  // src/<name>, copied by the build as site/dir_0001/<name>.
  CopyRecord Copy(const std::string& name) {
    fs::create_directories(tree_->Path("site/dir_0001"));
    return {tree_->Path("src/" + name).string(), Derived(name).string()};
  }
  // The picture saved as src/<name>, with libvips' `options` ("[Q=90]").
  CopyRecord Place(const std::string& name, const vips::VImage& image, const char* options = "") {
    fs::create_directories(tree_->Path("src"));
    image.write_to_file((tree_->Path("src/" + name).string() + options).c_str());
    return Copy(name);
  }
  fs::path Derived(const std::string& name) const { return tree_->Path("site/dir_0001/" + name); }
  // "SOURCE NAME > DERIVED: CAUSE", the derived picture inside the album.
  Names Told(const std::vector<DeriveProblem>& problems) const {
    Names told;
    for (const DeriveProblem& p : problems) {
      told.push_back(fs::path(p.source).filename().string() + " > " +
                     fs::relative(p.derived, tree_->Path("site/dir_0001")).string() + ": " +
                     ReasonWords(p.why));
    }
    return told;
  }

  std::optional<test::TempTree> tree_{std::in_place};
};

TEST_F(DerivedPicturesTest, EachKindKeepsItsFormatStandsUprightInSrgbBareOrIsCopiedAsItIs) {
  // Read back, the JPEG carries EXIF and XMP, which all the savers write.
  vips::VImage tagged = Painted(90, 60, kOrange).copy();
  static const char kXmp[] = "<x:xmpmeta xmlns:x=\"adobe:ns:meta/\">Via Roma 1</x:xmpmeta>";
  vips_image_set_blob_copy(tagged.get_image(), "xmp-data", kXmp, sizeof kXmp - 1);
  vips::VImage orange = Load(Place("tagged.jpg", tagged).source);
  // Stored on its side with a turn to stand, which the smaller size must not repeat.
  vips::VImage turned = orange.rot270().copy();
  turned.set("orientation", 6);
  struct Case {
    std::string name, loader;
    vips::VImage image;
    int width, height;  // upright
    std::vector<double> colour = kOrange;
    double tolerance = 12;
  } cases[] = {
      {"camera.jpg", "jpegload", orange, 90, 60},
      {"still.gif", "gifload", orange, 90, 60},
      {"upright.webp", "webpload", orange.rot90(), 60, 90},
      {"turned.jpg", "jpegload", turned, 90, 60},
      {"png-named.jpg", "pngload", orange, 90, 60},
      {"small.bmp", "jpegload", Painted(24, 16, kOrange), 24, 16},
      {"clear.tif", "jpegload", orange.bandjoin_const({0}), 90, 60, {255, 255, 255}, 3},
      {"print.jpg", "jpegload", orange.icc_transform("cmyk"), 90, 60, kOrange, 40},
  };
  std::vector<CopyRecord> copies;
  for (const Case& c : cases) {
    copies.push_back(Place(c.name, c.image));
    if (c.loader == "pngload") c.image.pngsave(copies.back().source.c_str());
  }
  for (int i : {0, 2, 4}) EXPECT_TRUE(Tagged(Load(copies[i].source))) << i;
  // Copied as they are: no picture, a cut one, and one with more pixels than
  // a picture decoded whole may have.
  Place("whole.jpg", Grain(200, 200), "[Q=95]");
  const std::string whole = tree_->Read("src/whole.jpg");
  tree_->Write("src/text.jpg", "non è una foto\n");
  tree_->Write("src/cut.jpg", whole.substr(0, whole.size() / 2));
  copies.insert(copies.end(), {Copy("text.jpg"), Copy("cut.jpg"),
                               Place("huge.tif", vips::VImage::black(10001, 10000),
                                     "[compression=deflate,tile]")});
  // Sizes that would lead out of the album or onto its record, that come
  // twice, or that are empty are left out.
  std::vector<DerivedSize> sizes = {{"mini", 30}, {"Web 45", 45}, {"MINI", 60}, {"zero", 0}};
  for (const char* unsafe : {"..", ".derivate", "a/b", "a\\b", ""}) sizes.push_back({unsafe, 40});
  DeriveOutcome outcome = DerivePictures(copies, sizes, false, nullptr);
  // No source stays open once the pass is over, not even in libvips' cache.
  for (const fs::directory_entry& fd : fs::directory_iterator("/proc/self/fd")) {
    std::error_code error;
    const std::string target = fs::read_symlink(fd.path(), error).string();
    EXPECT_FALSE(target.starts_with(tree_->root().string())) << target;
  }
  Names plain;
  for (const std::string name : {"text.jpg", "cut.jpg", "huge.tif"}) {
    const std::string cause = name == "text.jpg"  ? "non è un'immagine"
                              : name == "cut.jpg" ? "file troncato"
                                                  : "troppo grande: 10001×10000";
    for (const std::string folder : {"mini/", "web 45/"}) {
      plain.push_back(name + " > " + folder + name + ": " + cause);
      EXPECT_EQ(tree_->Read("site/dir_0001/" + folder + name), tree_->Read("src/" + name));
    }
  }
  EXPECT_EQ(std::pair(Told(outcome.plain_copies), Told(outcome.failed)), std::pair(plain, Names{}));
  // The album holds its record and a folder per size with every copy, nothing else.
  EXPECT_EQ(tree_->Tree("site").size(), 1 + 1 + 2 * (1 + copies.size()));
  for (const Case& c : cases) {
    // The longest side fits the size; a smaller picture keeps its own.
    for (const auto& [folder, pixels] : {std::pair("mini", 30), std::pair("web 45", 45)}) {
      const int longest = std::max({c.width, c.height, pixels});
      vips::VImage made = Load(Derived(folder) / c.name);
      EXPECT_EQ(
          std::tuple(made.get_string("vips-loader"), made.width(), made.height(), Tagged(made)),
          std::tuple(c.loader, c.width * pixels / longest, c.height * pixels / longest, false))
          << c.name << folder;
    }
    std::vector<double> pixel = Load(Derived("web 45") / c.name).getpoint(10, 10);
    for (int i = 0; i < 3; ++i) EXPECT_NEAR(pixel[i], c.colour[i], c.tolerance) << c.name;
  }
}

TEST_F(DerivedPicturesTest, RebuildRedoesOnlyWhatChangedAndTheRecordOnlyThen) {
  enum Change {
    kNothing,
    kTouched,
    kGrown,
    kSwapped,
    kResized,
    kRemoved,
    kCapitals,
    kNames,
    kMadeTouched,
    kMadeRewritten,
    kOldRecord
  };
  const Names all = {".derivate", "mini/0.jpg", "mini/1.jpg", "mini/2.jpg",
                     "web/0.jpg", "web/1.jpg",  "web/2.jpg"};
  const std::map<Change, Names> redone = {
      {kNothing, {}},
      {kTouched, {".derivate", "mini/1.jpg", "web/1.jpg"}},
      {kGrown, {".derivate", "mini/2.jpg", "web/2.jpg"}},
      {kSwapped, {".derivate", "mini/0.jpg", "mini/1.jpg", "web/0.jpg", "web/1.jpg"}},
      {kResized, {".derivate", "web/0.jpg", "web/1.jpg", "web/2.jpg"}},
      {kRemoved, {".derivate", "web/2.jpg"}},
      {kCapitals, {".derivate"}},  // renamed, not made again
      {kNames, {".derivate"}},     // only the copies' names in capitals
      // Someone else's hand on a derived picture, its time or its bytes.
      {kMadeTouched, {".derivate", "mini/1.jpg"}},
      {kMadeRewritten, {".derivate", "web/0.jpg"}},
      {kOldRecord, all}};
  for (const auto& [change, expected] : redone) {
    tree_.emplace();
    std::vector<CopyRecord> copies = {Place("0.jpg", Painted(300, 200, kOrange)),
                                      Place("1.jpg", Painted(200, 300, kBlue)),
                                      Place("2.jpg", Painted(99, 99, kOrange))};
    std::vector<DerivedSize> sizes = {{"mini", 60}, {"web", 150}};
    DerivePictures(copies, sizes, false, nullptr);
    std::map<std::string, Stamp> before;
    for (const std::string& name : tree_->Tree("site/dir_0001")) {
      if (!name.ends_with('/')) before[name] = StampOf(Derived(name));
    }
    const bool capitals = change == kCapitals, names = capitals || change == kNames;
    if (change == kTouched) fs::last_write_time(copies[1].source, fs::file_time_type{});
    if (change == kSwapped) std::swap(copies[0].source, copies[1].source);
    if (change == kResized) sizes[1].pixels = 120;
    if (change == kRemoved) fs::remove(Derived("web/2.jpg"));
    // What is changed by hand below keeps its time, or is taken as it is then.
    auto keeping_time = [](const fs::path& path, auto change) {
      const fs::file_time_type time = fs::last_write_time(path);
      change();
      fs::last_write_time(path, time);
    };
    if (change == kGrown) {
      keeping_time(copies[2].source,
                   [&] { tree_->Write("src/2.jpg", tree_->Read("src/2.jpg") + "x"); });
    }
    if (change == kMadeRewritten) {
      keeping_time(Derived("web/0.jpg"),
                   [&] { tree_->Write("site/dir_0001/web/0.jpg", tree_->Read("src/1.jpg")); });
    }
    if (change == kMadeTouched) {
      fs::last_write_time(Derived("mini/1.jpg"), fs::file_time_type{});
      before["mini/1.jpg"] = StampOf(Derived("mini/1.jpg"));
    }
    if (change == kOldRecord) {
      const std::string record = tree_->Read("site/dir_0001/.derivate");
      tree_->Write("site/dir_0001/.derivate", "vetrina-derivate 1" + record.substr(18));
    }
    for (int i = 0; names && i < 3; ++i) copies[i].copy = Derived(std::to_string(i) + ".JPG");
    DerivePictures(copies, sizes, capitals, nullptr);
    Names changed;
    for (const auto& [name, stamp] : before) {
      const size_t file = capitals ? 0 : name.find('/') + 1;
      const std::string now =
          names && name[0] != '.' ? name.substr(0, file) + ToUpper(name.substr(file)) : name;
      if (StampOf(Derived(now)) != stamp) changed.push_back(name);
    }
    EXPECT_EQ(changed, expected) << change;
  }
}

TEST_F(DerivedPicturesTest, APassCutShortLeavesWholePicturesOnlyAndTheNextGoesOn) {
  // On a full disk the scaled picture and the copy fail, and leave nothing.
  tree_->Write("src/text.jpg", std::string(10000, 'x'));
  std::vector<CopyRecord> full = {Place("a.jpg", Grain(200, 200), "[Q=95]"), Copy("text.jpg")};
  EXPECT_EQ(Told(OnAFullDisk([&] {
                   return DerivePictures(full, {{"web", 150}}, false, nullptr);
                 }).failed),
            (Names{"a.jpg > web/a.jpg: scrittura non riuscita",
                   "text.jpg > web/text.jpg: scrittura non riuscita"}));
  EXPECT_EQ(tree_->Tree("site"), (Names{"dir_0001/", "dir_0001/web/"}));
  // A stop leaves what is made whole, and the next pass keeps it.
  std::vector<CopyRecord> copies;
  for (int i = 0; i < 12; ++i) copies.push_back(Place(std::to_string(i) + ".jpg", Grain(400, 300)));
  EXPECT_TRUE(
      DerivePictures(copies, {{"web", 200}}, false, [](size_t, size_t) { return false; }).stopped);
  std::map<std::string, Stamp> made;
  for (const std::string& name : tree_->Tree("site/dir_0001")) {
    if (name == "web/" || name == ".derivate") continue;
    EXPECT_TRUE(name.ends_with(".jpg") && Load(Derived(name)).width() == 200) << name;  // whole
    made[name] = StampOf(Derived(name));
  }
  EXPECT_TRUE(made.size() >= 1 && made.size() < copies.size()) << made.size();
  EXPECT_FALSE(
      DerivePictures(copies, {{"web", 200}}, false, [](size_t, size_t) { return true; }).stopped);
  for (const auto& [name, stamp] : made) EXPECT_EQ(StampOf(Derived(name)), stamp) << name;
}

// The CRC of a PNG chunk, over its type and body.
uint32_t Crc32(const std::string& bytes) {
  uint32_t crc = 0xFFFFFFFF;
  for (unsigned char c : bytes) {
    crc ^= c;
    for (int k = 0; k < 8; ++k) crc = (crc >> 1) ^ (0xEDB88320 & (0 - (crc & 1)));
  }
  return ~crc;
}

std::string Big32(uint32_t n) { return {char(n >> 24), char(n >> 16), char(n >> 8), char(n)}; }

// A PNG whose header claims `width` x `height` 8-bit RGB pixels.
std::string PngHeaderOnly(uint32_t width, uint32_t height) {
  auto chunk = [](const std::string& type, const std::string& body) {
    return Big32(body.size()) + type + body + Big32(Crc32(type + body));
  };
  return "\x89PNG\r\n\x1A\n" + chunk("IHDR", Big32(width) + Big32(height) + "\x08\x02\0\0\0"s) +
         chunk("IDAT", "\x78\x9C\x03\0\0\0\0\x01"s) + chunk("IEND", "");
}

TEST_F(DerivedPicturesTest, PlainCopiesAndFailuresNameTheirCause) {
  const vips::VImage grain = Grain(64, 48);
  std::vector<CopyRecord> copies;
  Names expected;
  // Each kind of picture cut in half, and one spoilt inside but whole.
  for (const char* kind : {"jpg", "png", "gif", "webp", "tif", "bmp"}) {
    const std::string name = std::string("whole.") + kind;
    Place(name, grain);
    const std::string whole = tree_->Read("src/" + name);
    tree_->Write("src/cut." + std::string(kind), whole.substr(0, whole.size() / 2));
    copies.push_back(Copy("cut." + std::string(kind)));
    expected.push_back("cut." + std::string(kind) + " > web/cut." + kind + ": file troncato");
  }
  std::string spoilt = tree_->Read("src/whole.jpg");
  spoilt.replace(spoilt.find("\xFF\xC4") + 4, 24, std::string(24, '\xFF'));  // the code tables
  Place("whole.tif", grain, "[compression=deflate]");
  std::string spoilt_tiff = tree_->Read("src/whole.tif");
  spoilt_tiff.replace(100, 200, std::string(200, 'x'));
  const std::tuple<std::string, std::string, std::string> rows[] = {
      {"spoilt.jpg", spoilt, "file danneggiato"},
      {"spoilt.tif", spoilt_tiff, "file danneggiato"},
      {"text.jpg", "non è una foto, solo testo\n", "non è un'immagine"},
      // Only what starts as a BMP is handed to ImageMagick.
      {"bx.bmp", "BX non è una foto, solo testo\n", "non è un'immagine"},
      {"xm.bmp", "xM non è una foto, solo testo\n", "non è un'immagine"},
      {"pixmap.jpg", "P6\n2 1\n255\n\1\2\3\4\5\6", "formato non gestito"},
      {"short.webp", "RIFF\1\0", "non è un'immagine"},
      {"sound.webp",
       "RIFF\x24\0\0\0WAVEfmt \x10\0\0\0\1\0\1\0\x40\x1F\0\0\x80\x3E\0\0\2\0\x10\0data\0\0\0\0"s,
       "non è un'immagine"},
      {"huge.png", PngHeaderOnly(60000, 60000), "troppo grande: 60000×60000"},
  };
  for (const auto& [name, bytes, cause] : rows) {
    tree_->Write("src/" + name, bytes);
    copies.push_back(Copy(name));
    expected.push_back(name + " > web/" + name + ": " + cause);
  }
  // A source gone before the pass, and a size folder that a file stands for.
  copies.push_back(Copy("gone.jpg"));
  tree_->Write("site/dir_0001/mini", "not a folder");
  const DeriveOutcome outcome = DerivePictures(copies, {{"web", 40}, {"mini", 20}}, false, nullptr);
  EXPECT_EQ(Told(outcome.plain_copies), expected);
  Names failed;
  for (const CopyRecord& copy : copies) {
    const std::string name = fs::path(copy.source).filename().string();
    if (name != "gone.jpg") failed.push_back(name + " > mini/" + name + ": cartella non creata");
  }
  failed.insert(failed.end(), {"gone.jpg > web/gone.jpg: sorgente mancante",
                               "gone.jpg > mini/gone.jpg: cartella non creata"});
  EXPECT_EQ(Told(outcome.failed), failed);
}

TEST_F(DerivedPicturesTest, JpegAndWebpAreSavedAtTheirQuality) {
  // Encoded again at its own quality a picture keeps about its size; at
  // libvips' default (75) it would not.
  for (const auto& [name, quality] : {std::pair("grain.jpg", 82), std::pair("grain.webp", 80)}) {
    DerivePictures({Place(name, Grain(300, 200), "[Q=95]")}, {{"web", 150}}, false, nullptr);
    const vips::VImage made = Load(Derived(std::string("web/") + name));
    const double size = tree_->Read("site/dir_0001/web/" + std::string(name)).size();
    const std::string suffix = std::string(name).substr(5);
    auto again = [&](int q) {
      void* bytes = nullptr;
      size_t length = 0;
      made.write_to_buffer(suffix.c_str(), &bytes, &length,
                           vips::VImage::option()->set("Q", q)->set("strip", true));
      g_free(bytes);
      return std::abs(double(length) - size);
    };
    EXPECT_LT(again(quality), again(75)) << name;
  }
}

TEST_F(DerivedPicturesTest, MadeFilesHaveTheModeOfAnyNewFile) {
  // Not the 0600 of a temporary file: a web server running as another user
  // must read them.
  for (const mode_t mask : {0022, 0002, 0027}) {
    tree_.emplace();
    tree_->Write("src/text.jpg", "non è una foto");
    const std::vector<CopyRecord> copies = {Place("a.jpg", Painted(90, 60, kOrange)),
                                            Copy("text.jpg")};
    const mode_t old = ::umask(mask);
    DerivePictures(copies, {{"web", 40}}, false, nullptr);
    ::umask(old);
    for (const char* name : {"web", "web/a.jpg", "web/text.jpg", ".derivate"}) {
      struct stat st {};
      ::stat(Derived(name).c_str(), &st);
      const mode_t normal = (S_ISDIR(st.st_mode) ? 0777 : 0666) & ~mask;
      EXPECT_EQ(st.st_mode & 0777, normal) << name << " " << mask;
    }
  }
}

TEST_F(DerivedPicturesTest, APassWaitsWhileAnotherWorksInTheSameSite) {
  // The copies go to two sites; a lock held on either keeps the pass waiting.
  for (const char* held : {"site", "other"}) {
    tree_.emplace();
    fs::create_directories(tree_->Path("other/dir_0001"));
    std::vector<CopyRecord> copies = {Place("a.jpg", Painted(90, 60, kOrange)),
                                      Place("b.jpg", Painted(60, 90, kBlue))};
    copies[1].copy = tree_->Path("other/dir_0001/b.jpg");
    Fd site(::open(tree_->Path(held).c_str(), O_RDONLY | O_DIRECTORY));
    ASSERT_EQ(::flock(site.get(), LOCK_EX), 0);
    std::atomic<bool> done = false;
    // While it works, the pass holds the lock of both sites itself.
    std::atomic<int> free_meanwhile = 0;
    auto progress = [&](size_t, size_t) {
      for (const char* site : {"site", "other"}) {
        Fd other(::open(tree_->Path(site).c_str(), O_RDONLY | O_DIRECTORY));
        free_meanwhile += ::flock(other.get(), LOCK_EX | LOCK_NB) == 0;
      }
      return true;
    };
    std::thread pass([&] {
      DerivePictures(copies, {{"web", 40}}, false, progress);
      done = true;
    });
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
    EXPECT_FALSE(done) << held;
    EXPECT_FALSE(tree_->Exists("site/dir_0001/web") || tree_->Exists("other/dir_0001/web"));
    ::flock(site.get(), LOCK_UN);
    pass.join();
    EXPECT_EQ(free_meanwhile, 0);
    // Nothing is left in the sites for the lock.
    EXPECT_EQ(tree_->Tree("site"),
              (Names{"dir_0001/", "dir_0001/.derivate", "dir_0001/web/", "dir_0001/web/a.jpg"}));
    EXPECT_EQ(tree_->Tree("other").size(), 4u);
  }
}

TEST(DerivedMemoryTest, PicturesGoInWithinTheBudgetInTurnOrAlone) {
  constexpr int64_t kGB = int64_t{1} << 30;
  const std::pair<int64_t, int64_t> budgets[] = {
      {0, kGB / 2},           {-4096, kGB / 2},       {4 * kGB, kGB},     {8 * kGB, 2 * kGB},
      {8 * kGB + 4, 2 * kGB}, {6 * kGB, 3 * kGB / 2}, {64 * kGB, 2 * kGB}};
  for (const auto& [memory, budget] : budgets) EXPECT_EQ(DecodeBudgetFor(memory), budget) << memory;
  EXPECT_EQ(DefaultDecodeBudget(),
            DecodeBudgetFor(int64_t{::sysconf(_SC_PHYS_PAGES)} * ::sysconf(_SC_PAGE_SIZE)));

  MemoryGate gate(100);
  EXPECT_TRUE(gate.TryAdmit(60));
  EXPECT_FALSE(gate.TryAdmit(41));
  EXPECT_TRUE(gate.TryAdmit(40));  // just the budget
  gate.Release(40);
  // One that waits is let in once memory comes back, and none passes it
  // meanwhile, even one that would fit.
  std::atomic<bool> in = false;
  std::thread waiting([&] {
    gate.Admit(50);
    in = true;
  });
  std::this_thread::sleep_for(std::chrono::milliseconds(200));
  EXPECT_FALSE(in);
  EXPECT_FALSE(gate.TryAdmit(10));
  gate.Release(60);
  waiting.join();
  EXPECT_TRUE(in);
  gate.Release(50);
  // More than the budget goes in alone, and nothing beside it.
  EXPECT_TRUE(gate.TryAdmit(150));
  EXPECT_FALSE(gate.TryAdmit(1));
  gate.Release(150);
  EXPECT_TRUE(gate.TryAdmit(1));
  EXPECT_EQ(gate.peak(), 150);
}

TEST_F(DerivedPicturesTest, APictureStartsWhenItsDecodedSizeFitsTheBudget) {
  // A picture's cost, from its header: the decoded pixels once for the
  // decoders that read line by line, twice for those that hold the whole
  // picture, five times for BMP, which ImageMagick copies; with two sizes the
  // larger scaled picture is kept as well.
  const vips::VImage orange = Painted(90, 60, kOrange);
  const std::tuple<const char*, vips::VImage, const char*, int64_t> kinds[] = {
      {"base.jpg", orange, "", 90 * 60 * 3},
      {"prog.jpg", orange, "[interlace]", 90 * 60 * 3 * 2},
      {"plain.png", orange, "", 90 * 60 * 3},
      {"deep.png", orange.cast(VIPS_FORMAT_USHORT), "[interlace,bitdepth=16]", 90 * 60 * 6 * 2},
      {"still.gif", orange, "", 90 * 60 * 4 * 2},
      {"strips.tif", orange, "", 90 * 60 * 3 * 2},
      {"small.bmp", orange, "", 90 * 60 * 3 * 5},
      {"photo.webp", orange, "", 90 * 60 * 3}};
  for (const auto& [name, image, options, cost] : kinds) {
    tree_.emplace();
    EXPECT_EQ(
        DerivePictures({Place(name, image, options)}, {{"web", 40}}, false, nullptr).largest_cost,
        cost)
        << name;
  }
  tree_.emplace();
  EXPECT_EQ(DerivePictures({Place("base.jpg", orange)}, {{"web", 40}, {"mini", 20}}, false, nullptr)
                .largest_cost,
            90 * 60 * 3 + 41 * 27 * 3);
  // Six pictures on four workers: what is in work at once stays within the
  // budget, and a picture larger than the budget is made alone.
  tree_.emplace();
  std::vector<CopyRecord> copies;
  for (int i = 0; i < 6; ++i) copies.push_back(Place(std::to_string(i) + ".png", Grain(300, 200)));
  const int64_t each = 300 * 200 * 3;
  for (const int64_t budget : {int64_t{1}, each, 5 * each / 2, 100 * each}) {
    for (const CopyRecord& copy : copies) fs::remove_all(fs::path(copy.copy).parent_path() / "web");
    const DeriveOutcome outcome = DerivePictures(copies, {{"web", 40}}, false, nullptr,
                                                 {.workers = 4, .memory_budget = budget});
    EXPECT_EQ(outcome.largest_cost, each);
    EXPECT_TRUE(outcome.peak_cost >= each && outcome.peak_cost <= std::max(budget, each))
        << budget << " " << outcome.peak_cost;
    EXPECT_EQ(tree_->Tree("site/dir_0001/web").size(), copies.size());
  }
}

// Segments and chunks as the three formats lay them out, with made-up bodies.
std::string Seg(char marker, const std::string& body) {
  return std::string{'\xFF', marker, char((body.size() + 2) >> 8), char(body.size() + 2)} + body;
}
std::string Png(const std::string& type, const std::string& body) {
  return std::string{0, 0, char(body.size() >> 8), char(body.size())} + type + body + "crc!";
}
std::string Riff(const std::string& type, const std::string& body) {
  return type + std::string{char(body.size()), 0, 0, 0} + body + (body.size() % 2 ? "\0"s : "");
}

TEST(MetadataSiftTest, OnlyThePictureStaysAndACutFileIsRefused) {
  const std::string soi = "\xFF\xD8", jfif = Seg('\xE0', "JFIF"), adobe = Seg('\xEE', "Adobe"),
                    tables = Seg('\xDB', std::string(300, 't')), scan = "\xFF\xDA\xE1 scan";
  std::string jpeg = soi + jfif + Seg('\xE1', "Exif GPS") + "\xFF" + Seg('\xE2', "ICC") +
                     Seg('\xEF', "") + adobe + Seg('\xFE', "nota") + tables + scan;
  const std::string png_head = "\x89PNG\r\n\x1A\n" + Png("IHDR", "head"), idat = Png("IDAT", "px");
  std::string png = png_head;
  for (const char* meta : {"iCCP", "eXIf", "tEXt", "zTXt", "iTXt", "tIME"}) png += Png(meta, "m");
  png += idat + Png("IEND", "");
  const std::string vp8 = Riff("VP8 ", "odd");
  std::string webp = "RIFFsizeWEBP" + Riff("VP8X", "\xFF\1\2\3\4\5\6\7\x08\x09") +
                     Riff("ICCP", "p") + vp8 + Riff("EXIF", "gps") + Riff("XMP ", "x");
  for (auto [sift, bytes] : {std::pair(&SiftJpeg, jpeg), {&SiftPng, png}, {&SiftWebp, webp}}) {
    // Cut short or not of the format: refused, and the bytes stay as they are.
    for (const std::string& bad :
         {bytes.substr(0, 1), bytes.substr(0, 5), "x" + bytes, bytes.substr(0, bytes.size() / 2),
          bytes.substr(0, bytes.size() - 14)}) {
      std::string kept = bad;
      EXPECT_FALSE(sift(&kept) || kept != bad) << bad.size();
    }
  }
  ASSERT_TRUE(SiftJpeg(&jpeg) && SiftPng(&png) && SiftWebp(&webp));
  EXPECT_EQ(jpeg, soi + jfif + adobe + tables + scan);
  EXPECT_EQ(png, png_head + idat + Png("IEND", ""));
  EXPECT_EQ(webp, "RIFF\x22\0\0\0WEBP"s + Riff("VP8X", "\xD3\1\2\3\4\5\6\7\x08\x09") + vp8);
}

TEST(DerivedRecordTest, TextKeepsAnyNameAndDropsWhatItCannotRead) {
  DerivedRecord record;
  record.Put({"MINI", 480, "IMG\t1\\2\n.JPG", "/foto/a\rb.jpg", 12345, 1'700'000'000'123, 678,
              1'700'000'001'456, Reason{Reason::What::kTooLarge, false, "60000x60000"}});
  record.Put({"web", 1600, "b.jpg", "/foto/b.jpg", 1, 2, 3, 4, std::nullopt});
  EXPECT_EQ(DerivedRecord::Parse(record.Text()).Text(), record.Text());
  // A source is known by a digest of its path ignoring case, never by the path.
  EXPECT_EQ(SourceKey("/home/giulia/Foto/A.jpg"),
            "ffc3af227010fa269aafcb347914a4a44c87a80aec472e6c1491d33a5c64199c");
  EXPECT_EQ(SourceKey("/HOME/Giulia/foto/a.JPG"), SourceKey("/home/giulia/foto/a.jpg"));
  const DerivedRecord parsed = DerivedRecord::Parse(record.Text());
  const DerivedEntry* read = parsed.Find("mini", "img\t1\\2\n.jpg");
  ASSERT_NE(read, nullptr);
  EXPECT_EQ(read->plain, (Reason{Reason::What::kTooLarge, false, "60000x60000"}));
  // A good line is read; a line with any one field spoilt is left out: one
  // field short or more, not a number, no such escape, out of the album, no
  // such kind or reason. A record of an older form is read as empty.
  const Names good = {"web", "1600", "a.jpg", "/a.jpg", "1", "2", "3", "4", "c", "cut"};
  auto line = [&good](size_t field, const std::string& value) {
    Names fields = good;
    fields[field] = value;
    if (value == "(none)") fields.erase(fields.begin() + field);
    std::string text = "vetrina-derivate 5\n" + fields[0];
    for (size_t i = 1; i < fields.size(); ++i) text += "\t" + fields[i];
    return text + "\n";
  };
  EXPECT_EQ(DerivedRecord::Parse(line(0, "web")).size(), 1u);
  EXPECT_EQ(DerivedRecord::Parse(line(9, "too-large 1x2")).size(), 1u);
  // A scaled picture and the AVIF beside it are two entries of one name.
  const DerivedRecord both = DerivedRecord::Parse(
      "vetrina-derivate 5\n"
      "web\t1\ta.jpg\t/a\t1\t2\t3\t4\ts\t\n"
      "WEB\t1\tA.JPG\t/a\t1\t2\t5\t6\ta\t\n");
  ASSERT_EQ(both.size(), 2u);
  const DerivedEntry* avif = both.Find("web", "a.jpg", true);
  ASSERT_NE(avif, nullptr);
  EXPECT_EQ(std::tuple(avif->avif, avif->made_bytes, both.Find("web", "a.jpg")->made_bytes),
            std::tuple(true, 5, 3));
  EXPECT_EQ(DerivedRecord::Parse(both.Text()).Text(), both.Text());
  for (const char* older :
       {"vetrina-derivate 1", "vetrina-derivate 2", "vetrina-derivate 3", "vetrina-derivate 4"}) {
    EXPECT_EQ(DerivedRecord::Parse(older + line(0, "web").substr(18)).size(), 0u) << older;
  }
  const std::pair<size_t, std::string> spoilt[] = {
      {9, "(none)"},   {9, "cut\textra"}, {1, "molti"}, {4, "1x"}, {5, ""},    {6, "-"},
      {7, "4.5"},      {0, "w\\q"},       {2, "d\\q"},  {3, "\\"}, {9, "a\\"}, {2, "../e.jpg"},
      {0, ""},         {2, "a/b"},        {8, "x"},     {8, ""},   {9, ""},    {9, "Cut"},
      {9, "troncato"}, {8, "s"},          {8, "a"},     {8, "A"}};
  for (const auto& [field, value] : spoilt) {
    EXPECT_EQ(DerivedRecord::Parse(line(field, value)).size(), 0u) << field << " " << value;
  }
}

TEST(ReasonTest, EachReasonHasItsWordsAndGoesThroughTheRecordAsIs) {
  using What = Reason::What;
  const std::pair<What, const char*> words[] = {
      {What::kCut, "file troncato"},
      {What::kDamaged, "file danneggiato"},
      {What::kUnknownFormat, "formato non gestito"},
      {What::kNotAPicture, "non è un'immagine"},
      {What::kTooLarge, "troppo grande: 60000×4"},
      {What::kScaleFailed, "riduzione non riuscita"},
      {What::kNoScaler, "riduzione non disponibile"},
      {What::kSourceMissing, "sorgente mancante"},
      {What::kSourceUnreadable, "sorgente non leggibile"},
      {What::kFolderNotMade, "cartella non creata"},
      {What::kDiskFull, "disco pieno"},
      {What::kFolderMissing, "cartella mancante"},
      {What::kWriteFailed, "scrittura non riuscita"},
      {What::kAvifFailed, "codifica AVIF non riuscita"},
  };
  std::set<std::string_view> keys;
  for (const auto& [what, expected] : words) {
    // libvips' words, or any other detail, stay out of what the user reads
    // and of the record; only the dimensions of a picture too large show.
    const Reason why{what, false, what == What::kTooLarge ? "60000x4" : "vips: bad\tdata"};
    EXPECT_EQ(ReasonWords(why), expected);
    EXPECT_EQ(ReasonWords({what, true, why.detail}),
              "registro delle immagini ridotte non scritto: "s + expected);
    keys.insert(ReasonKey(what));
    DerivedRecord record;
    record.Put({"web", 1, "a.jpg", "/a.jpg", 1, 2, 3, 4, why});
    const DerivedRecord parsed = DerivedRecord::Parse(record.Text());
    const DerivedEntry* read = parsed.Find("web", "a.jpg");
    ASSERT_NE(read, nullptr) << ReasonKey(what);
    EXPECT_EQ(read->plain,
              (Reason{what, false, what == What::kTooLarge ? why.detail : std::string()}));
  }
  EXPECT_EQ(keys.size(), std::size(words));
  EXPECT_EQ(ReasonFromKey("nothing"), std::nullopt);
}

}  // namespace
}  // namespace vf
