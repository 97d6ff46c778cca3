#include <fcntl.h>
#include <gtest/gtest.h>
#include <pwd.h>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <climits>
#include <cmath>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <optional>
#include <thread>
#include <vips/vips8>

#include "desktop/site_publishing.h"
#include "desktop/typed_path.h"
#include "desktop/user_area.h"
#include "platform/case_fold.h"
#include "platform/failure.h"
#include "platform/folder_cache.h"
#include "platform/host_file_system.h"
#include "platform/host_files.h"
#include "publish/derived_memory.h"
#include "publish/derived_pictures.h"
#include "publish/derived_record.h"
#include "publish/metadata_sift.h"
#include "tests/support/banco.h"
#include "tests/support/e2e.h"

namespace vf {
namespace {

namespace fs = std::filesystem;
using namespace std::string_literals;
using Names = std::vector<std::string>;
using Stamp = std::pair<ino_t, int64_t>;
const std::vector<double> kBlue{0, 0, 255}, kOrange{200, 120, 40};

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

vips::VImage Painted(int width, int height, const std::vector<double>& colour) {
  VIPS_INIT("vf_tests");
  return (vips::VImage::black(width, height, vips::VImage::option()->set("bands", 3)) + colour)
      .cast(VIPS_FORMAT_UCHAR);
}

// Grain compresses badly: a JPEG of it is mostly data, and slow to scale.
vips::VImage Grain(int width, int height) {
  return (Painted(width, height, {0, 0, 0}) +
          vips::VImage::gaussnoise(width, height, vips::VImage::option()->set("sigma", 60.0)))
      .cast(VIPS_FORMAT_UCHAR);
}

vips::VImage Load(const fs::path& path) { return vips::VImage::new_from_file(path.c_str()); }

bool Tagged(const vips::VImage& image) {
  return image.get_typeof("exif-data") || image.get_typeof("xmp-data") ||
         image.get_typeof("iptc-data") || image.get_typeof("icc-profile-data");
}

// A file rewritten in place, even with the same bytes, gets another inode.
Stamp StampOf(const fs::path& path) {
  struct stat st {};
  ::stat(path.c_str(), &st);
  return {st.st_ino, int64_t{st.st_mtim.tv_sec} * 1'000'000'000 + st.st_mtim.tv_nsec};
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
                     p.cause);
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
    auto again = [&](int q) {
      void* bytes = nullptr;
      size_t length = 0;
      made.write_to_buffer(std::string(name).substr(5).c_str(), &bytes, &length,
                           vips::VImage::option()->set("Q", q)->set("strip", true));
      g_free(bytes);
      return std::abs(double(length) - size);
    };
    EXPECT_LT(again(quality), again(75)) << name;
  }
}

TEST(SitePublishingTest, TheBuildsAlbumCopiesGetSizesAndEachPhotoIsNamedOncePerCause) {
  test::TempTree tree;
  tree.Write("Foto/testo.jpg", "non è una foto");
  Painted(90, 60, kOrange).write_to_file(tree.Path("Foto/a.jpg").c_str());
  HostFileSystem fs({{'C', tree.root().string(), false}});
  test::RecordingUi ui;
  ui.program_folder = "C:\\PROG";
  SitePublishing publishing(fs, ui);
  // Only what the build handed over gets sizes, whatever the names; a copy
  // that is not there is passed over.
  BuiltSite site;
  for (const char* copy : {"dir_0001\\img_001.jpg", "Altro\\foto.jpg", "dir_0002\\IMG_009.JPG"}) {
    tree.Write("Sito/" + std::string(copy).replace(std::string(copy).find('\\'), 1, "/"), "");
    site.Add({"C:\\Foto\\a.jpg", std::string("C:\\Sito\\") + copy, 1, 1});
  }
  tree.Write("Sito/dir_0001/img_002.jpg", "");
  site.Add({"C:\\Foto\\a.jpg", "C:\\Sito\\dir_0001\\img_002.jpg", 1, 2});
  site.Add(
      {"C:\\Foto\\testo.jpg", "C:\\Sito\\DIR_0001\\IMG_002.JPG", 1, 2});  // the last one counts
  site.Add({"C:\\Foto\\a.jpg", "C:\\Sito\\manca\\img_003.jpg", 1, 3});
  ASSERT_EQ(site.copies.size(), 5u);
  EXPECT_EQ(site.copies[3].source + site.copies[3].copy,
            "C:\\Foto\\testo.jpgC:\\Sito\\DIR_0001\\IMG_002.JPG");
  for (const bool sizes : {false, true}) {
    if (sizes) tree.Write("PROG/DIMENSIONI.TXT", "mini 20\r\nweb 30\r\n");
    publishing.Publish(site);
    // Without the sizes file nothing is made and nothing told.
    EXPECT_EQ(ui.events, sizes
                             ? Names{"MSG: Immagini non riducibili, copiate come sono:\rC:\\Foto\\"
                                     "testo.jpg - non è un'immagine"}
                             : Names{});
    Names web;
    for (const std::string& path : tree.Tree("Sito")) {
      if (path.find("/web/") != std::string::npos && path.back() != '/') web.push_back(path);
    }
    EXPECT_EQ(web, sizes ? (Names{"Altro/web/foto.jpg", "dir_0001/web/img_001.jpg",
                                  "dir_0001/web/img_002.jpg", "dir_0002/web/IMG_009.JPG"})
                         : Names{});
    ui.events.clear();
  }
  EXPECT_EQ(BadLinesMessage(ParseSizesFile("a 1\nb\n")),
            "Righe non valide nel file DIMENSIONI.TXT, non considerate:\rriga 2: b");
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
              1'700'000'001'456, true, "file\ttroncato"});
  EXPECT_EQ(DerivedRecord::Parse(record.Text()).Text(), record.Text());
  EXPECT_NE(DerivedRecord::Parse(record.Text()).Find("mini", "img\t1\\2\n.jpg"), nullptr);
  // A good line is read; a line with any one field spoilt is left out: one
  // field short or more, not a number, no such escape, out of the album, no
  // such kind. A record of an older form is read as empty.
  const Names good = {"web", "1600", "a.jpg", "/a.jpg", "1", "2", "3", "4", "c", "cut"};
  auto line = [&good](size_t field, const std::string& value) {
    Names fields = good;
    fields[field] = value;
    if (value == "(none)") fields.erase(fields.begin() + field);
    std::string text = "vetrina-derivate 2\n" + fields[0];
    for (size_t i = 1; i < fields.size(); ++i) text += "\t" + fields[i];
    return text + "\n";
  };
  EXPECT_EQ(DerivedRecord::Parse(line(0, "web")).size(), 1u);
  EXPECT_EQ(DerivedRecord::Parse("vetrina-derivate 1" + line(0, "web").substr(18)).size(), 0u);
  const std::pair<size_t, std::string> spoilt[] = {
      {9, "(none)"}, {9, "cut\textra"}, {1, "molti"}, {4, "1x"}, {5, ""},    {6, "-"},
      {7, "4.5"},    {0, "w\\q"},       {2, "d\\q"},  {3, "\\"}, {9, "a\\"}, {2, "../e.jpg"},
      {0, ""},       {2, "a/b"},        {8, "x"},     {8, ""}};
  for (const auto& [field, value] : spoilt) {
    EXPECT_EQ(DerivedRecord::Parse(line(field, value)).size(), 0u) << field << " " << value;
  }
}

class HostFileSystemTest : public ::testing::Test {
 protected:
  HostFileSystemTest() {
    tree_.Write("d/cd.jpg", "cd");
    tree_.Write("c/a.jpg", "small");
    tree_.Write("c/A.JPG", "capital");
    tree_.MakeFolder("e");
  }
  std::string Host(const std::string& relative) const { return tree_.Path(relative).string(); }
  // The bytes of the file, or its failure number as "ERR n".
  std::string Read(const std::string& path) {
    std::unique_ptr<InputFile> file;
    if (int failure = fs_.OpenInput(path, &file)) return "ERR " + std::to_string(failure);
    char bytes[4096];
    size_t got = 0;
    return file->Read(bytes, sizeof bytes, &got) == kOk ? std::string(bytes, got) : "ERR";
  }
  int Write(const std::string& path, const std::string& bytes = "") {
    std::unique_ptr<OutputFile> file;
    if (int failure = fs_.OpenOutput(path, &file)) return failure;
    file->Write(bytes.data(), bytes.size());
    return file->Close();
  }

  test::TempTree tree_;
  HostFileSystem fs_{{{'d', Host("d"), true},
                      {'c', Host("c"), false},
                      {'e', Host("e"), false},
                      {'m', Host("missing"), false}}};
};

TEST_F(HostFileSystemTest, NamesMatchIgnoringCaseExactSpellingFirstAndNothingIsReplaced) {
  tree_.Write("c/Sito/Index.HTM", "old");
  for (const char* name : {"F/SUB/Q.JPG", "F/sub/o.jpg", "F/SUB/r.jpg", "F/SUB/R.JPG"})
    tree_.Write(std::string("c/") + name, name);
  EXPECT_EQ(Read("C:\\SITO\\index.htm") + Read("C:\\a.jpg") + Read("C:\\A.jpg"), "oldsmallcapital");
  ASSERT_EQ(Write("c:\\sito\\index.htm", "new") + Write("C:\\a.jpg", "x"), kOk);
  ASSERT_EQ(fs_.MakeFolder("c:\\SITO\\Dir_0001") + fs_.SetCurrentFolder("c:\\sito\\DIR_0001"), kOk);
  EXPECT_EQ(
      fs_.Copy("..\\INDEX.HTM", "Img.jpg") + fs_.Copy("..\\..\\..\\sito\\index.htm", "IMG.JPG"),
      kOk);  // and no way above the root
  EXPECT_EQ(fs_.MakeFolder("C:\\sito\\DIR_0001"), kErroreAccesso);
  EXPECT_EQ(fs_.Copy("C:\\a.JPG", "C:\\.\\A.JPG"), kErroreAccesso);  // onto itself
  EXPECT_EQ(fs_.Rename("C:\\a.jpg", "C:\\A.JPG"), kFileEsistente);
  // A case-only rename keeps the file in its own folder, even beside a
  // folder whose name differs only in case, and never replaces a file.
  EXPECT_EQ(fs_.Rename("C:\\F\\SUB\\R.JPG", "c:\\f\\sub\\r.jpg"), kFileEsistente);
  EXPECT_EQ(fs_.Rename("C:\\F\\SUB\\Q.JPG", "c:\\f\\sub\\q.jpg"), kOk);
  EXPECT_EQ(tree_.Tree("c"),
            (Names{"A.JPG", "F/", "F/SUB/", "F/SUB/R.JPG", "F/SUB/q.jpg", "F/SUB/r.jpg", "F/sub/",
                   "F/sub/o.jpg", "Sito/", "Sito/DIR_0001/", "Sito/DIR_0001/IMG.JPG",
                   "Sito/index.htm", "a.jpg"}));
  EXPECT_EQ(tree_.Read("c/Sito/DIR_0001/IMG.JPG") + tree_.Read("c/A.JPG") + tree_.Read("c/a.jpg") +
                tree_.Read("c/F/SUB/R.JPG"),
            "newcapitalxF/SUB/R.JPG");
  EXPECT_EQ(
      fs_.HostPath("c:\\SITO\\new.htm").value_or("") + fs_.HostPath("D:\\CD.JPG").value_or(""),
      Host("c/Sito/new.htm") + Host("d/cd.jpg"));
  // Failures have their numbers and write nothing.
  EXPECT_EQ(Read("D:\\CD.JPG") + Read("C:\\nothing.jpg"), "cdERR 53");
  EXPECT_EQ(Read("C:\\no\\a.jpg") + Read("C:\\a.jpg\\b.jpg") + Read("Q:\\a.jpg"),
            "ERR 76ERR 76ERR 76");
  EXPECT_EQ(Write("D:\\x.htm"), kErroreAccesso);  // read-only
  EXPECT_EQ(fs_.Rename("C:\\gone.jpg", "C:\\x.jpg"), kFileNonTrovato);
  EXPECT_EQ(fs_.SetCurrentFolder("C:\\a.jpg"), kPercorsoNonTrovato);
  EXPECT_EQ(fs_.SetCurrentDrive("Q"), kPercorsoNonTrovato);
  EXPECT_EQ(Write("C:\\a?.htm"), kNomeNonValido);
  EXPECT_EQ(tree_.Tree("d"), Names{"cd.jpg"});
  EXPECT_FALSE(tree_.Exists("c/a?.htm") || tree_.Exists("c/x.jpg"));
  // Between file systems the kernel copies nothing, and plain reads take over.
  Fd memory(::memfd_create("vf", MFD_CLOEXEC)), copy;
  const std::string big(300000, 'b');
  ASSERT_EQ(::pwrite(memory.get(), big.data(), big.size(), 0), 300000);  // read from the start
  ASSERT_EQ(OpenHostOutput(Host("c/copia"), &copy) + CopyHostData(memory.get(), copy.get()), kOk);
  EXPECT_EQ(tree_.Read("c/copia"), big);
  // Only a plain file is read, and a read that fails is told, not retried.
  Fd none, folder(::open(Host("c").c_str(), O_RDONLY | O_CLOEXEC));
  EXPECT_EQ(OpenHostInput(Host("c"), &none) + OpenHostInput(Host("c/none"), &none),
            kErroreAccesso + kFileNonTrovato);
  size_t got = 0;
  char byte = 0;
  EXPECT_EQ(HostInputFile(Fd(::dup(folder.get()))).Read(&byte, 1, &got), kErroreAccesso);
  EXPECT_EQ(CopyHostData(folder.get(), copy.get()), kErroreAccesso);
  // A full disk shows when the buffer is written out, at the latest on closing;
  // a whole buffer goes out at once.
  HostOutputFile small(Fd(::open("/dev/full", O_WRONLY | O_CLOEXEC)));
  EXPECT_EQ(small.Write("x", 1), kOk);
  EXPECT_EQ(small.Close(), kDiscoPieno);
  EXPECT_EQ(small.Write("x", 1), kDiscoPieno);
  HostOutputFile whole(Fd(::open("/dev/full", O_WRONLY | O_CLOEXEC)));
  EXPECT_EQ(whole.Write(big.data(), 64 * 1024), kDiscoPieno);
  EXPECT_EQ(Fd(INT_MAX).Close(), kErroreAccesso);  // a close that fails is told
  // A descriptor replaced by another is closed.
  const int first = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
  Fd fd(first);
  fd = Fd(::open("/dev/null", O_RDONLY | O_CLOEXEC));
  EXPECT_EQ(::fcntl(first, F_GETFD), -1);
}

// Every operation on paths that name the wrong thing, in order, with its
// number or what it gives; the renames leave the tree shown at the end.
TEST_F(HostFileSystemTest, EachOperationsNumbersAndWhereRenamesLeaveNames) {
  tree_.Write("c/F/SUB/R.JPG", "R");
  tree_.Write("c/F/SUB/r.jpg", "r");
  const auto run = [&](const std::string& op, const std::string& a, const std::string& b) {
    int failure = kOk, attributes = 0;
    if (op == "read") return Read(a);
    if (op == "write") failure = Write(a);
    if (op == "mkdir") failure = fs_.MakeFolder(a);
    if (op == "ren") failure = fs_.Rename(a, b);
    if (op == "cd") failure = fs_.SetCurrentFolder(a);
    if (op == "drive") failure = fs_.SetCurrentDrive(a);
    if (op == "pwd") return fs_.CurrentFolder();
    if (op == "list") failure = fs_.ListFolder(a).failure;
    if (op == "attr" && (failure = fs_.Attributes(a, &attributes)) == kOk) {
      return std::to_string(attributes);
    }
    return failure == kOk ? std::string() : "ERR " + std::to_string(failure);
  };
  const std::array<std::string, 4> rows[] = {
      {"read", "C:\\a.jpg\\", "", "ERR 76"},  // a file named as a folder
      {"read", "C:\\F\\", "", "ERR 75"},
      {"write", "C:\\new\\", "", "ERR 76"},
      {"write", "C:\\", "", "ERR 75"},
      {"write", "M:\\x.htm", "", "ERR 76"},  // a drive whose folder is missing
      {"mkdir", "C:\\", "", "ERR 75"},
      {"mkdir", "C:\\A.jpg", "", "ERR 75"},  // the file keeps its name
      {"cd", "C:\\missing", "", "ERR 76"},
      {"cd", "D:\\", "", ""},  // a read-only drive is read
      {"cd", "C:\\F", "", ""},
      {"drive", "c", "", ""},  // the current drive keeps its folder
      {"drive", "m", "", "ERR 76"},
      {"drive", "", "", ""},
      {"pwd", "", "", "C:\\F\\"},
      {"drive", "E", "", ""},
      {"pwd", "", "", "E:\\"},
      {"cd", "C:\\", "", ""},
      {"list", "C:\\missing", "", "ERR 76"},
      {"list", "C:\\a.jpg", "", "ERR 76"},
      {"attr", "C:\\", "", "16"},
      {"attr", "C:\\none", "", "ERR 53"},
      {"attr", "Q:\\tmp", "", "ERR 76"},  // no drive that is not mapped reaches the host
      {"ren", "C:\\", "C:\\x", "ERR 75"},
      {"ren", "C:\\A.JPG", "C:\\", "ERR 75"},
      {"ren", "C:\\a.jpg", "E:\\a.jpg", "ERR 75"},
      {"ren", "C:\\F", "C:\\F\\SUB\\G", "ERR 75"},  // below itself
      {"ren", "C:\\a.jpg", "C:\\F\\moved.jpg", ""},
      {"ren", "C:\\F\\moved.jpg", "C:\\A.JPG", "ERR 58"},
      {"ren", "C:\\F\\MOVED.JPG", "C:\\F\\Moved.jpg", ""},
      {"read", "C:\\F\\moved.jpg", "", "small"},              // by its old spelling too
      {"ren", "C:\\F\\SUB\\r.jpg", "C:\\F\\SUB\\R.jpg", ""},  // beside R.JPG
      {"read", "C:\\F\\SUB\\R.jpg", "", "r"},
      {"ren", "C:\\F\\SUB\\R.jpg", "C:\\F\\SUB\\R.jpg", ""},
  };
  for (const auto& [op, a, b, expected] : rows) EXPECT_EQ(run(op, a, b), expected) << op << a;
  EXPECT_EQ(tree_.Tree("c"),
            (Names{"A.JPG", "F/", "F/Moved.jpg", "F/SUB/", "F/SUB/R.JPG", "F/SUB/R.jpg"}));
}

// A link, a pipe or a dangling link where a page or a copy goes is replaced by
// the new file; what a link pointed to stays as it was. A copy that cannot be
// finished leaves the old file or nothing, and no temporary file; a new file
// gets the mode of any new file, so that a web server can read it.
TEST_F(HostFileSystemTest, TargetsAreReplacedNotWrittenThroughAndCopiesAreWhole) {
  tree_.Write("outside/secret.jpg", "the owner's");
  tree_.MakeFolder("c/s/dir");
  for (const char* name : {"page.htm", "copy.jpg"})
    fs::create_symlink(Host("outside/secret.jpg"), Host(std::string("c/s/") + name));
  fs::create_symlink(Host("outside/gone.htm"), Host("c/s/dangling.htm"));
  ASSERT_EQ(::mkfifo(Host("c/s/pipe.htm").c_str(), 0600), 0);
  fs::create_directory_symlink(Host("outside"), Host("c/s/linked"));
  tree_.Write("c/s/old.jpg", "old");
  tree_.Write("c/big.jpg", std::string(10000, 'x'));
  for (const char* page :
       {"C:\\S\\page.htm", "C:\\s\\dangling.htm", "C:\\s\\pipe.htm", "C:\\s\\linked\\new.htm"}) {
    EXPECT_EQ(Write(page, "page"), kOk) << page;
  }
  EXPECT_EQ(fs_.Copy("C:\\a.jpg", "C:\\s\\copy.jpg"), kOk);
  // A plain file is emptied in place and keeps its inode; a long page is whole.
  ASSERT_EQ(Write("C:\\s\\big.htm", "short"), kOk);
  const ino_t inode = StampOf(Host("c/s/big.htm")).first;
  ASSERT_EQ(Write("C:\\s\\BIG.htm", std::string(70000, 'p')), kOk);
  EXPECT_EQ(StampOf(Host("c/s/BIG.htm")).first, inode);
  EXPECT_EQ(tree_.Read("c/s/BIG.htm"), std::string(70000, 'p'));
  // The new file is made beside its target, so that the rename never crosses
  // file systems: a file at the top of a mounted one is written too.
  if (fs::is_directory("/dev/shm")) {
    const std::string top = "/dev/shm/vf-" + std::to_string(::getpid());
    Fd from(::open(Host("c/a.jpg").c_str(), O_RDONLY | O_CLOEXEC));
    EXPECT_EQ(CopyHostFile(from.get(), top), kOk);
    EXPECT_EQ(fs::file_size(top), 5u);
    fs::remove(top);
  }
  EXPECT_EQ(Write("C:\\s\\dir") + fs_.Copy("C:\\a.jpg", "C:\\s\\DIR"), 2 * kErroreAccesso);
  Fd held, source(::open(Host("c/a.jpg").c_str(), O_RDONLY | O_CLOEXEC));
  EXPECT_EQ(OpenHostOutput(Host("c/s/dir"), &held), kErroreAccesso);  // below the layer, too
  EXPECT_EQ(CopyHostFile(source.get(), Host("c/none/x.jpg")), kPercorsoNonTrovato);
  EXPECT_EQ(OnAFullDisk([&] {
              return fs_.Copy("C:\\big.jpg", "C:\\s\\old.jpg") +
                     fs_.Copy("C:\\big.jpg", "C:\\s\\none.jpg");
            }),
            2 * kErroreAccesso);
  fs::remove(Host("c/s/linked"));  // a link among the folders was followed
  EXPECT_EQ(tree_.Tree("c/s"), (Names{"BIG.htm", "copy.jpg", "dangling.htm", "dir/", "old.jpg",
                                      "page.htm", "pipe.htm"}));
  for (const char* name : {"page.htm", "copy.jpg", "dangling.htm", "pipe.htm"}) {
    EXPECT_TRUE(fs::is_regular_file(fs::symlink_status(Host(std::string("c/s/") + name)))) << name;
  }
  EXPECT_EQ(tree_.Read("c/s/page.htm") + tree_.Read("c/s/copy.jpg") + tree_.Read("c/s/old.jpg") +
                tree_.Read("outside/secret.jpg") + tree_.Read("outside/new.htm"),
            "pagesmalloldthe owner'spage");
  EXPECT_FALSE(tree_.Exists("outside/gone.htm"));
  const mode_t mask = ::umask(0);
  ::umask(mask);
  for (const char* name : {"c/s/copy.jpg", "c/s/pipe.htm"}) {
    EXPECT_EQ(fs::status(Host(name)).permissions(), fs::perms(0666 & ~mask)) << name;
  }
  // A folder's listing sets apart the names that no page can link to.
  for (const char* name : {"n<.jpg", "javascript&#58;x.mp3", "ok&.jpg"})
    tree_.Write("c/h/" + std::string(name), "");
  const FolderListing listing = fs_.ListFolder("C:\\H");
  ASSERT_EQ(listing.entries.size() + listing.unusable.size(), 3u);
  EXPECT_EQ(listing.entries[0].name + listing.unusable[0].name + listing.unusable[1].name,
            "ok&.jpgjavascript&#58;x.mp3n<.jpg");
}

TEST_F(HostFileSystemTest, ListingOrderKindsAndOutsideChanges) {
  for (const char* name : {"b.txt", "a.txt", "A.txt", ".hidden", "Zeta", "_u", "end. "})
    tree_.Write(std::string("c/l/") + name, "");
  tree_.MakeFolder("c/l/dir");
  ASSERT_EQ(::mkfifo(Host("c/l/pipe").c_str(), 0600), 0);
  fs::create_directory_symlink(".", Host("c/l/loop"));
  std::string shown;
  for (const FolderEntry& e : fs_.ListFolder("C:\\L").entries)
    shown += e.name + "=" + "FDS"[e.kind] + (e.hidden ? "h" : "") + " ";
  // Ordered by capitals, as Windows orders a folder: "_" after the letters.
  EXPECT_EQ(shown,
            ".hidden=Fh A.txt=F a.txt=F b.txt=F dir=D end. =F loop=D pipe=S "
            "Zeta=F _u=F ");
  int pipe = 0, hidden = 0, cd = -1;  // a file on a read-only drive has attributes too
  EXPECT_EQ(fs_.Attributes("C:\\l\\PIPE", &pipe) + fs_.Attributes("C:\\l\\.HIDDEN", &hidden) +
                fs_.Attributes("D:\\CD.JPG", &cd),
            kOk);
  EXPECT_EQ(std::tuple(pipe, hidden, cd), std::tuple(4, 2, 0));
  EXPECT_EQ(Read("C:\\l\\pipe"), "ERR 75");  // without waiting
  // What changes outside the program is seen at once.
  EXPECT_EQ(Read("C:\\NEW.JPG"), "ERR 53");
  tree_.Write("c/new.jpg", "n");
  EXPECT_EQ(Read("C:\\NEW.JPG"), "n");
  fs::remove(Host("c/new.jpg"));
  tree_.Write("c/New.jpg", "N");
  tree_.Write("c/f/x.jpg", "x");
  EXPECT_EQ(Read("C:\\NEW.JPG") + Read("C:\\f\\X.JPG"), "Nx");
}

TEST_F(HostFileSystemTest, WindowsFormOfHostAndTypedPaths) {
  // Two drives on one folder: the first letter names it.
  HostFileSystem fs({{'Z', "/", false},
                     {'C', Host("c"), false},
                     {'E', Host("c/e"), true},
                     {'Y', Host("c/e"), false}});
  EXPECT_EQ(fs.CurrentFolder() + HostFileSystem({{'Z', "/", false}}).CurrentFolder(), "C:\\Z:\\");
  EXPECT_EQ(fs.ListFolder("Z:\\").failure, kOk);
  for (const auto& [typed, windows] : std::vector<std::pair<std::string, std::string>>{
           {Host("c/e/x/"), "E:\\x\\"},
           {Host("c/e/"), "E:\\"},
           {"/tmp/x/", "Z:\\tmp\\x\\"},
           {"~", "C:\\casa"},
           {"~/Città d'arte/", "C:\\casa\\Città d'arte\\"},
           {"~/../casa/./Sito//index.htm", "C:\\casa\\Sito\\index.htm"}}) {
    EXPECT_EQ(WindowsFormOfTyped(typed, Host("c/casa"), fs).value_or(""), windows) << typed;
  }
  // Windows paths, names, other users' homes, and names that no Windows path
  // can spell are left as typed.
  for (const char* typed : {"C:\\Foto/", " /usr", "~anna/Foto", "/tmp/a:b", "/tmp/a\\b", ""})
    EXPECT_FALSE(WindowsFormOfTyped(typed, Host("c/casa"), fs)) << typed;
}

// What the file layer reports is believed without reading the folder again
// while the folder's stamp is the one taken with the report; a folder moved
// away is forgotten with everything below it.
TEST(FolderCacheTest, ReportsAreBelievedUntilTheFolderChangesAgain) {
  test::TempTree t;
  t.Write("d/sub/x.jpg", "");
  const std::string d = t.Path("d").string(), sub = t.Path("d/sub").string();
  FolderCache cache;
  std::optional<NameMatch> match;  // reused: a miss must not keep an earlier match
  const auto find = [&](const std::string& dir, const std::string& part) {
    const int failure = cache.Find(dir, part, &match);
    return failure != kOk ? "ERR" : match ? match->name + "FDS"[match->kind] : "-";
  };
  EXPECT_EQ(find(d, "SUB") + find(sub, "X.JPG"), "subDx.jpgF");
  // Reports of what the disk does not hold, each after a change of its own
  // folder: only the report's fresh stamp keeps them.
  cache.Added(d, "Finta.htm", FolderEntry::kFile);
  t.Write("d/altro.txt", "");
  t.Write("d/sub/altro.txt", "");
  cache.Added(sub, "Cartella", FolderEntry::kFolder);
  cache.Moved(sub, "x.jpg", d, "Spostata.jpg");
  EXPECT_EQ(
      find(d, "FINTA.HTM") + find(d, "spostata.JPG") + find(sub, "cartella") + find(sub, "X.JPG"),
      "Finta.htmFSpostata.jpgFCartellaD-");
  EXPECT_EQ(find(sub, "x.jpg"), "x.jpgF");  // its exact spelling is still seen
  cache.ForgetTree(d);
  EXPECT_EQ(find(d, "FINTA.HTM") + find(sub, "CARTELLA") + find(sub, "X.JPG"), "--x.jpgF");
}

TEST(UserAreaTest, TheStartCopiesWhatIsMissingReplacesNothingAndTellsWhatFailed) {
  test::TempTree t;
  t.Write("set/MENU.HTM", "menu");
  t.Write("set/VETRINA-FOTO_DEFAULT/dir_0001/IMG_001.HTM", "pagina");
  t.Write("set/.gitattributes", "* -text");
  const std::string mine = "casa/Vetrina-Foto/";
  EXPECT_EQ(PrepareUserArea(UserAreaOf(t.Path("casa").string()), t.Path("set").string()), "");
  EXPECT_EQ(t.Read(mine + "MENU.HTM"), "menu");
  // The user's edit stays; a file the set gained since, or one the user
  // removed, arrives at the next start; no temporary file is left.
  t.Write(mine + "MENU.HTM", "il mio menu");
  fs::remove(t.Path(mine + "VETRINA-FOTO_DEFAULT/dir_0001/IMG_001.HTM"));
  t.Write("set/PIEDE.HTM", "piede");
  EXPECT_EQ(PrepareUserArea(UserAreaOf(t.Path("casa").string()), t.Path("set").string()), "");
  EXPECT_EQ(t.Tree(mine),
            (Names{"Disco C/", "MENU.HTM", "PIEDE.HTM", "VETRINA-FOTO_DEFAULT/",
                   "VETRINA-FOTO_DEFAULT/dir_0001/", "VETRINA-FOTO_DEFAULT/dir_0001/IMG_001.HTM"}));
  EXPECT_EQ(t.Read(mine + "MENU.HTM") + t.Read(mine + "PIEDE.HTM") +
                t.Read(mine + "VETRINA-FOTO_DEFAULT/dir_0001/IMG_001.HTM"),
            "il mio menupiedepagina");
  // An area that cannot be made or filled is told; nothing is written elsewhere.
  t.Write("bloccata/Vetrina-Foto", "un file al posto della cartella");
  t.Write("set/GRANDE.HTM", std::string(10000, 'g'));  // more than a full disk takes
  const std::string set = t.Path("set").string(), missing = "76 - Impossibile trovare il percorso";
  std::vector<std::tuple<std::string, std::string, std::string>> rows = {
      {t.Path("bloccata").string(), set, missing},
      {t.Path("vuota").string(), set + "x", missing},
      {t.Path("piena").string(), set, "75 - Errore di accesso al percorso/file"}};
  // A file system that refuses every new folder, to root too.
  if (fs::is_directory("/sys/kernel")) {
    rows.push_back({"/sys/kernel/casa", set, "75 - Errore di accesso al percorso/file"});
  }
  OnAFullDisk([&] {
    for (const auto& [home, templates, failure] : rows)
      EXPECT_EQ(
          PrepareUserArea(UserAreaOf(home), templates),
          "Impossibile preparare la cartella del programma " + home +
              "/Vetrina-Foto\r\rI modelli delle pagine potrebbero mancare.\r\r ERR= " + failure);
    return 0;
  });
  EXPECT_EQ(t.Tree("bloccata"), Names{"Vetrina-Foto"});
  EXPECT_EQ(t.Tree("vuota"), (Names{"Vetrina-Foto/", "Vetrina-Foto/Disco C/"}));
  EXPECT_EQ(t.Tree("piena").size(), 7u);  // all but the big file, and no half of it
  EXPECT_FALSE(t.Exists("piena/Vetrina-Foto/GRANDE.HTM"));
  // The window's drives: C: is the area's own folder, Z: the root, both written.
  HostFileSystem window(UserDrives(UserAreaOf(t.Path("casa").string())));
  std::unique_ptr<OutputFile> c_file, z_file;
  EXPECT_EQ(window.OpenOutput("C:\\c.htm", &c_file) +
                window.OpenOutput(window.WindowsPath(t.Path("z.htm")).value_or(""), &z_file),
            kOk);
  EXPECT_TRUE(t.Exists(mine + "Disco C/c.htm") && t.Exists("z.htm"));
  // The home folder: an absolute $HOME, else the user's entry in the password file.
  const char* const saved = std::getenv("HOME");
  const std::string kept = saved != nullptr ? saved : "", own = ::getpwuid(::getuid())->pw_dir;
  std::string homes;
  for (const char* home : {"/altrove", "relativa", static_cast<const char*>(nullptr)}) {
    home != nullptr ? ::setenv("HOME", home, 1) : ::unsetenv("HOME");
    homes += HomeFolder() + "|";
  }
  saved != nullptr ? ::setenv("HOME", kept.c_str(), 1) : ::unsetenv("HOME");
  EXPECT_EQ(homes, "/altrove|" + own + "|" + own + "|");
}

}  // namespace
}  // namespace vf
