// The platform layer on the host: files and folders reached through Windows
// paths, the user's area, and the web-sized pictures of an album.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <tuple>
#include <vector>
#include <vips/vips8>

#include "platform/case_fold.h"
#include "platform/derived_pictures.h"
#include "platform/derived_record.h"
#include "platform/failure.h"
#include "platform/host_file_system.h"
#include "platform/host_files.h"
#include "platform/typed_path.h"
#include "platform/user_area.h"
#include "tests/support/e2e.h"

namespace vf {
namespace {

namespace fs = std::filesystem;
using Names = std::vector<std::string>;
using Stamp = std::pair<ino_t, int64_t>;
const std::vector<double> kBlue{0, 0, 255}, kOrange{200, 120, 40};

// Runs `work` while no file may grow past `bytes`, as on a full disk.
template <typename Work>
auto WithFilesUpTo(rlim_t bytes, Work work) {
  struct rlimit old {};
  ::getrlimit(RLIMIT_FSIZE, &old);
  const struct rlimit small = {bytes, old.rlim_max};
  auto was = std::signal(SIGXFSZ, SIG_IGN);
  ::setrlimit(RLIMIT_FSIZE, &small);
  auto result = work();
  ::setrlimit(RLIMIT_FSIZE, &old);
  std::signal(SIGXFSZ, was);
  return result;
}

vips::VImage Painted(int width, int height, const std::vector<double>& colour) {
  VIPS_INIT("vf_tests");
  return (vips::VImage::black(width, height, vips::VImage::option()->set("bands", 3)) + colour)
      .cast(VIPS_FORMAT_UCHAR)
      .copy(vips::VImage::option()->set("interpretation", VIPS_INTERPRETATION_sRGB));
}

// Grain compresses badly: a JPEG of it is mostly data, and slow to scale.
vips::VImage Grain(int width, int height) {
  return (Painted(width, height, {0, 0, 0}) +
          vips::VImage::gaussnoise(width, height, vips::VImage::option()->set("sigma", 60.0)))
      .cast(VIPS_FORMAT_UCHAR);
}

vips::VImage Load(const fs::path& path) {
  return vips::VImage::new_from_file(path.c_str()).copy_memory();
}

bool Tagged(const vips::VImage& image) {
  for (const char* field : {"exif-data", "xmp-data", "iptc-data", "icc-profile-data"}) {
    if (image.get_typeof(field) != 0) return true;
  }
  return false;
}

// A file rewritten, even with the same bytes, gets another inode through the
// rename that puts it in place.
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
  // The picture saved as src/<name> by libvips' saver for its extension, with
  // `options` as libvips takes them after a file name ("[Q=90]").
  CopyRecord Place(const std::string& name, const vips::VImage& image, const char* options = "") {
    fs::create_directories(tree_->Path("src"));
    image.write_to_file((tree_->Path("src/" + name).string() + options).c_str());
    return Copy(name);
  }
  fs::path Derived(const std::string& relative) const {
    return tree_->Path("site/dir_0001/" + relative);
  }

  std::optional<test::TempTree> tree_{std::in_place};
};

TEST_F(DerivedPicturesTest, EachKindKeepsItsFormatStandsUprightInSrgbAndLosesItsMetadata) {
  // Read back, the JPEG carries EXIF and XMP blocks, which the other savers
  // write as well.
  vips::VImage tagged = Painted(90, 60, kOrange).copy();
  static const char kXmp[] = "<x:xmpmeta xmlns:x=\"adobe:ns:meta/\">Via Roma 1</x:xmpmeta>";
  vips_image_set_blob_copy(tagged.get_image(), "xmp-data", kXmp, sizeof kXmp - 1);
  vips::VImage orange = Load(Place("tagged.jpg", tagged).source);
  // Two frames, orange then blue: only the first is taken.
  vips::VImage frames = orange.join(Painted(90, 60, kBlue), VIPS_DIRECTION_VERTICAL).copy();
  frames.set("page-height", 60);
  // Stored on its side, with the turn that makes it stand; the smaller size,
  // scaled from the larger one, must not be turned twice.
  vips::VImage turned = orange.rot270().copy();
  turned.set("orientation", 6);
  struct Case {
    const char* name;
    vips::VImage image;
    const char* loader;
    int width, height;  // upright
    bool tagged;        // the source carries metadata
    std::vector<double> colour = kOrange;
    double tolerance = 12;
  } cases[] = {
      {"camera.jpg", orange, "jpegload", 90, 60, true},
      {"frames.gif", frames, "gifload", 90, 60, false},
      {"upright.webp", orange.rot90(), "webpload", 60, 90, true},
      {"turned.jpg", turned, "jpegload", 90, 60, true},
      {"png-named.jpg", orange, "pngload", 90, 60, true},
      {"scan.tif", orange, "jpegload", 90, 60, false},
      {"small.bmp", Painted(24, 16, kOrange), "jpegload", 24, 16, false},
      {"clear.tif", orange.bandjoin_const({0}), "jpegload", 90, 60, false, {255, 255, 255}, 3},
      {"print.jpg", orange.icc_transform("cmyk"), "jpegload", 90, 60, false, kOrange, 40},
  };
  std::vector<CopyRecord> copies;
  for (const Case& c : cases) {
    copies.push_back(Place(c.name, c.image));
    if (c.loader == std::string("pngload")) c.image.pngsave(copies.back().source.c_str());
    EXPECT_TRUE(!c.tagged || Tagged(Load(copies.back().source))) << c.name;
  }
  DeriveOutcome outcome = DerivePictures(copies, {{"mini", 30}, {"web", 45}}, false, nullptr);
  EXPECT_TRUE(outcome.plain_copies.empty() && outcome.failed.empty());
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    // The longest side fits the size; a smaller picture keeps its own.
    for (const auto& [folder, pixels] : {std::pair("mini", 30), std::pair("web", 45)}) {
      const int longest = std::max({c.width, c.height, pixels});
      vips::VImage made = Load(Derived(folder) / c.name);
      EXPECT_EQ(
          std::tuple(made.get_string("vips-loader"), made.width(), made.height(), Tagged(made)),
          std::tuple(std::string(c.loader), c.width * pixels / longest, c.height * pixels / longest,
                     false))
          << folder;
    }
    std::vector<double> pixel = Load(Derived("web") / c.name).getpoint(10, 10);
    for (int i = 0; i < 3; ++i) EXPECT_NEAR(pixel[i], c.colour[i], c.tolerance);
  }
}

TEST_F(DerivedPicturesTest, PictureThatCannotBeScaledIsCopiedAndListed) {
  Place("whole.jpg", Grain(200, 200), "[Q=95]");
  const std::string whole = tree_->Read("src/whole.jpg");
  tree_->Write("src/text.jpg", "non è una foto\n");
  tree_->Write("src/cut.jpg", whole.substr(0, whole.size() / 2));
  std::vector<CopyRecord> copies = {
      Copy("text.jpg"), Copy("cut.jpg"),
      // More pixels than a picture decoded whole may have.
      Place("huge.tif", vips::VImage::black(10001, 10000), "[compression=deflate,tile]")};
  // Sizes that would lead out of the album or onto its record, that come
  // twice, or that are empty are left out.
  std::vector<DerivedSize> sizes = {{"mini", 40}, {"Web 80", 80}, {"MINI", 60}, {"zero", 0}};
  for (const char* unsafe : {"..", ".derivate", "a/b", "a\\b", ""}) sizes.push_back({unsafe, 40});
  DeriveOutcome outcome = DerivePictures(copies, sizes, false, nullptr);
  std::vector<std::string> expected;
  for (const std::string name : {"text.jpg", "cut.jpg", "huge.tif"}) {
    for (const std::string folder : {"mini/", "web 80/"}) {
      expected.push_back(Derived(folder + name));
      EXPECT_EQ(tree_->Read("site/dir_0001/" + folder + name), tree_->Read("src/" + name));
    }
  }
  EXPECT_EQ(outcome.plain_copies, expected);
  for (const std::string& path : tree_->Tree("site/dir_0001")) {
    EXPECT_TRUE(path.starts_with("mini/") || path.starts_with("web 80/") || path == ".derivate")
        << path;
  }
}

TEST_F(DerivedPicturesTest, PictureThatCannotBeWrittenIsListedAndLeavesNoPart) {
  tree_->Write("src/text.jpg", std::string(10000, 'x'));
  std::vector<CopyRecord> copies = {Place("a.jpg", Grain(200, 200), "[Q=95]"), Copy("text.jpg")};
  DeriveOutcome outcome = WithFilesUpTo(4096, [&] {
    return DerivePictures(copies, {{"web", 150}}, false, nullptr);
  });
  EXPECT_EQ(outcome.failed, (Names{Derived("web/a.jpg"), Derived("web/text.jpg")}));
  EXPECT_EQ(tree_->Tree("site"), (Names{"dir_0001/", "dir_0001/web/"}));
}

TEST_F(DerivedPicturesTest, RebuildRedoesOnlyWhatChangedAndTheRecordOnlyThen) {
  enum Change { kNothing, kSourceTouched, kPlacesSwapped, kSizeChanged, kRemoved, kCapitals };
  const std::map<Change, Names> redone = {
      {kNothing, {}},
      {kSourceTouched, {".derivate", "mini/2.jpg", "web/2.jpg"}},
      {kPlacesSwapped, {".derivate", "mini/1.jpg", "mini/2.jpg", "web/1.jpg", "web/2.jpg"}},
      {kSizeChanged, {".derivate", "web/1.jpg", "web/2.jpg", "web/3.jpg"}},
      {kRemoved, {".derivate", "web/3.jpg"}},
      {kCapitals, {".derivate"}}};  // renamed, not made again
  for (const auto& [change, expected] : redone) {
    SCOPED_TRACE(change);
    tree_.emplace();
    std::vector<CopyRecord> copies = {Place("1.jpg", Painted(300, 200, kOrange)),
                                      Place("2.jpg", Painted(200, 300, kBlue)),
                                      Place("3.jpg", Painted(99, 99, kOrange))};
    std::vector<DerivedSize> sizes = {{"mini", 60}, {"web", 150}};
    DerivePictures(copies, sizes, false, nullptr);
    std::map<std::string, Stamp> before;
    for (const char* name : {".derivate", "mini/1.jpg", "mini/2.jpg", "mini/3.jpg", "web/1.jpg",
                             "web/2.jpg", "web/3.jpg"}) {
      before[name] = StampOf(Derived(name));
    }
    const bool capitals = change == kCapitals;
    struct timespec times[2] = {{0, UTIME_OMIT}, {1'000'000, 0}};
    if (change == kSourceTouched) ::utimensat(AT_FDCWD, copies[1].source.c_str(), times, 0);
    if (change == kPlacesSwapped) std::swap(copies[0].source, copies[1].source);
    if (change == kSizeChanged) sizes[1].pixels = 120;
    if (change == kRemoved) fs::remove(Derived("web/3.jpg"));
    for (int i = 0; capitals && i < 3; ++i) {
      copies[i].copy = Derived(std::to_string(i + 1) + ".JPG");
    }
    DeriveOutcome outcome = DerivePictures(copies, sizes, capitals, nullptr);
    EXPECT_TRUE(outcome.failed.empty() && outcome.plain_copies.empty());
    Names changed;
    for (const auto& [name, stamp] : before) {
      if (StampOf(Derived(capitals && name[0] != '.' ? ToUpper(name) : name)) != stamp) {
        changed.push_back(name);
      }
    }
    EXPECT_EQ(changed, expected);
    // The first place shows the picture its source now holds.
    vips::VImage first = Load(Derived(capitals ? "MINI/1.JPG" : "mini/1.jpg"));
    EXPECT_EQ(first.width() > first.height(), change != kPlacesSwapped);
  }
}

TEST_F(DerivedPicturesTest, StopLeavesWholePicturesOnlyAndTheNextPassGoesOn) {
  std::vector<CopyRecord> copies;
  for (int i = 1; i <= 12; ++i)
    copies.push_back(Place(std::to_string(i) + ".jpg", Grain(400, 300)));
  EXPECT_TRUE(
      DerivePictures(copies, {{"web", 200}}, false, [](size_t, size_t) { return false; }).stopped);
  std::map<std::string, Stamp> made;
  for (const std::string& name : tree_->Tree("site/dir_0001")) {
    if (name == "web/" || name == ".derivate") continue;
    // A whole picture, and no temporary file.
    EXPECT_TRUE(name.ends_with(".jpg") && Load(Derived(name)).width() == 200) << name;
    made[name] = StampOf(Derived(name));
  }
  EXPECT_TRUE(made.size() >= 1 && made.size() < copies.size()) << made.size();
  size_t calls = 0;
  DeriveOutcome outcome =
      DerivePictures(copies, {{"web", 200}}, false, [&](size_t done, size_t total) {
        EXPECT_EQ(std::pair(done, total), std::pair(++calls, copies.size()));
        return true;
      });
  EXPECT_EQ(std::pair(outcome.stopped, calls), std::pair(false, copies.size()));
  for (const auto& [name, stamp] : made) EXPECT_EQ(StampOf(Derived(name)), stamp) << name;
}

TEST(DerivedRecordTest, TextKeepsAnyNameAndDropsWhatItCannotRead) {
  DerivedRecord record;
  record.Put({"MINI", 480, "IMG\t1\\2\n.JPG", "/foto/a\rb.jpg", 12345, 1'700'000'000'123, true});
  record.Put({"web", 1600, "img_002.jpg", "/foto/b.jpg", 1, 2, false});
  EXPECT_EQ(DerivedRecord::Parse(record.Text()).Text(), record.Text());
  EXPECT_NE(DerivedRecord::Parse(record.Text()).Find("mini", "img\t1\\2\n.jpg"), nullptr);
  const std::string head = "vetrina-derivate 1\n";
  EXPECT_EQ(DerivedRecord::Parse(head + "web\t1600\ta.jpg\t/a.jpg\t1\t2\ts\n").size(), 1u);
  for (const std::string& bad :
       Names{head + "web\t1600\ta.jpg\t/a.jpg\t1\t2\n",        // a field short
             head + "web\tmolti\ta.jpg\t/a.jpg\t1\t2\ts\n",    // not a number
             head + "web\t1600\ta\\q.jpg\t/a.jpg\t1\t2\ts\n",  // no such escape
             head + "web\t1600\t../a.jpg\t/a.jpg\t1\t2\ts\n",  // not one step in
             "vetrina-derivate 2\nweb\t1600\ta.jpg\t/a.jpg\t1\t2\ts\n"}) {
    EXPECT_EQ(DerivedRecord::Parse(bad).size(), 0u) << bad;
  }
}

class HostFileSystemTest : public ::testing::Test {
 protected:
  HostFileSystemTest() {
    tree_.Write("d/cd.jpg", "cd");
    tree_.Write("c/a.jpg", "small");
    tree_.Write("c/A.JPG", "capital");
  }
  std::string Host(const std::string& relative) const { return tree_.Path(relative).string(); }
  // The bytes of the file, or its failure number as "ERR n".
  std::string Read(const std::string& path) {
    std::unique_ptr<InputFile> file;
    if (int failure = fs_.OpenInput(path, &file)) return "ERR " + std::to_string(failure);
    std::string bytes(4096, ' ');
    size_t got = 0;
    file->Read(bytes.data(), bytes.size(), &got);
    return bytes.substr(0, got);
  }
  int Write(const std::string& path, const std::string& bytes = "") {
    std::unique_ptr<OutputFile> file;
    if (int failure = fs_.OpenOutput(path, &file)) return failure;
    file->Write(bytes.data(), bytes.size());
    return file->Close();
  }

  test::TempTree tree_;
  HostFileSystem fs_{{{'d', Host("d"), true}, {'c', Host("c"), false}}};
};

TEST_F(HostFileSystemTest, NamesMatchIgnoringCaseExactSpellingFirstAndNothingReplaced) {
  tree_.Write("c/Sito/Index.HTM", "old");
  for (const char* name : {"F/SUB/Q.JPG", "F/sub/o.jpg", "F/SUB/r.jpg", "F/SUB/R.JPG"}) {
    tree_.Write(std::string("c/") + name, name);
  }
  EXPECT_EQ(Read("C:\\SITO\\index.htm") + Read("C:\\a.jpg") + Read("C:\\A.jpg"), "oldsmallcapital");
  ASSERT_EQ(Write("c:\\sito\\index.htm", "new") + Write("C:\\a.jpg", "x"), kOk);
  ASSERT_EQ(fs_.MakeFolder("c:\\SITO\\Dir_0001") + Write("C:/sito/Nuova.Htm"), kOk);
  ASSERT_EQ(fs_.SetCurrentFolder("c:\\sito\\DIR_0001"), kOk);
  EXPECT_EQ(fs_.CurrentFolder(), "C:\\sito\\DIR_0001\\");
  EXPECT_EQ(fs_.Copy("..\\nuova.htm", "Img.jpg"), kOk);
  EXPECT_EQ(fs_.Copy("..\\..\\..\\sito\\index.htm", "c:IMG.JPG"), kOk);  // no way above the root
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
                   "Sito/Nuova.Htm", "Sito/index.htm", "a.jpg"}));
  EXPECT_EQ(tree_.Read("c/Sito/DIR_0001/IMG.JPG") + tree_.Read("c/A.JPG") + tree_.Read("c/a.jpg") +
                tree_.Read("c/F/SUB/R.JPG"),
            "newcapitalxF/SUB/R.JPG");
  EXPECT_EQ(fs_.HostPath("c:\\SITO\\new.htm"), Host("c/Sito/new.htm"));
}

TEST_F(HostFileSystemTest, ReadOnlyMissingUnmappedRefusedAndFullWriteNothing) {
  EXPECT_EQ(Read("D:\\CD.JPG") + Read("C:\\nothing.jpg"), "cdERR 53");
  for (const char* path : {"C:\\no\\a.jpg", "C:\\a.jpg\\b.jpg", "Q:\\a.jpg"}) {
    EXPECT_EQ(Read(path), "ERR 76") << path;
  }
  EXPECT_EQ(Write("D:\\x.htm"), kErroreAccesso);
  EXPECT_EQ(fs_.Rename("C:\\gone.jpg", "C:\\x.jpg"), kFileNonTrovato);
  EXPECT_EQ(fs_.ListFolder("C:\\no").failure, kPercorsoNonTrovato);
  EXPECT_EQ(fs_.SetCurrentFolder("C:\\a.jpg"), kPercorsoNonTrovato);
  EXPECT_EQ(fs_.SetCurrentDrive("Q"), kPercorsoNonTrovato);
  EXPECT_EQ(Write("C:\\a?.htm"), kNomeNonValido);
  EXPECT_EQ(tree_.Tree(), (Names{"c/", "c/A.JPG", "c/a.jpg", "d/", "d/cd.jpg"}));
  tree_.Write("c/big.jpg", std::string(10000, 'x'));
  EXPECT_EQ(WithFilesUpTo(4096, [&] { return fs_.Copy("C:\\big.jpg", "C:\\copia.jpg"); }),
            kErroreAccesso);
}

TEST_F(HostFileSystemTest, ListingOrderAndKinds) {
  for (const char* name : {"b.txt", "a.txt", "A.txt", ".hidden", "Zeta", "_u", "end. "}) {
    tree_.Write(std::string("c/l/") + name, "");
  }
  tree_.MakeFolder("c/l/dir");
  ASSERT_EQ(::mkfifo(Host("c/l/pipe").c_str(), 0600), 0);
  fs::create_directory_symlink(".", Host("c/l/loop"));
  fs::create_symlink("nowhere", Host("c/l/dangling"));
  std::string shown;
  for (const FolderEntry& e : fs_.ListFolder("C:\\L").entries) {
    shown += e.name + "=" + "FDS"[e.kind] + (e.hidden ? "h" : "") + " ";
  }
  // Ignoring case means comparing capitals, as Windows orders a folder: "_"
  // comes after the letters.
  EXPECT_EQ(shown,
            ".hidden=Fh A.txt=F a.txt=F b.txt=F dangling=S dir=D end. =F loop=D pipe=S "
            "Zeta=F _u=F ");
  int pipe = 0, hidden = 0;
  EXPECT_EQ(fs_.Attributes("C:\\l\\PIPE", &pipe) + fs_.Attributes("C:\\l\\.HIDDEN", &hidden), kOk);
  EXPECT_EQ(std::pair(pipe, hidden), std::pair(4, 2));
  EXPECT_EQ(Read("C:\\l\\pipe"), "ERR 75");  // without waiting
}

TEST_F(HostFileSystemTest, OutsideChangesAreSeen) {
  int attributes = 0;
  EXPECT_EQ(fs_.Attributes("C:\\NEW.JPG", &attributes), kFileNonTrovato);
  EXPECT_EQ(Write("C:\\B.JPG", "b"), kOk);
  tree_.Write("c/new.jpg", "n");
  EXPECT_EQ(Read("C:\\b.jpg") + Read("C:\\NEW.JPG"), "bn");
  fs::remove(Host("c/new.jpg"));
  tree_.Write("c/New.jpg", "N");
  tree_.Write("c/f/x.jpg", "x");
  EXPECT_EQ(Read("C:\\NEW.JPG") + Read("C:\\f\\X.JPG"), "Nx");
  fs::rename(Host("c/f"), Host("c/g"));
  tree_.MakeFolder("c/F");
  EXPECT_EQ(Read("C:\\f\\X.JPG") + Read("C:\\G\\x.jpg"), "ERR 53x");
}

TEST_F(HostFileSystemTest, WindowsFormOfHostAndTypedPaths) {
  HostFileSystem fs({{'Z', "/", false}, {'C', Host("c"), false}, {'E', Host("c/e"), true}});
  EXPECT_EQ(fs.CurrentFolder() + HostFileSystem({{'Z', "/", false}}).CurrentFolder(), "C:\\Z:\\");
  for (const auto& [typed, windows] : std::vector<std::pair<std::string, std::string>>{
           {Host("c"), "C:\\"},
           {Host("c/e/x/"), "E:\\x\\"},
           {"/etc/./hosts", "Z:\\etc\\hosts"},
           {"~", "C:\\casa"},
           {"~/Città d'arte/", "C:\\casa\\Città d'arte\\"},
           {"~/../casa/./Sito//index.htm", "C:\\casa\\Sito\\index.htm"}}) {
    EXPECT_EQ(WindowsFormOfTyped(typed, Host("c/casa"), fs).value_or(""), windows) << typed;
  }
  // Windows paths, names, other users' homes, and names that no Windows path
  // can spell are left as typed.
  for (const char* typed : {"C:\\Foto/", " /usr", "~anna/Foto", "/tmp/a:b", "/tmp/a\\b", ""}) {
    EXPECT_FALSE(WindowsFormOfTyped(typed, Host("c/casa"), fs)) << typed;
  }
}

TEST(HostFilesTest, FullDiskShowsAtFlushOrCloseAndAReplacedDescriptorCloses) {
  HostOutputFile small(Fd(::open("/dev/full", O_WRONLY | O_CLOEXEC)));
  EXPECT_EQ(small.Write("x", 1), kOk);  // still in the buffer
  EXPECT_EQ(small.Close(), kDiscoPieno);
  EXPECT_EQ(small.Write("x", 1), kDiscoPieno);
  HostOutputFile large(Fd(::open("/dev/full", O_WRONLY | O_CLOEXEC)));
  const std::string chunk(100000, 'x');
  EXPECT_EQ(large.Write(chunk.data(), chunk.size()), kDiscoPieno);
  const int first = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
  Fd fd(first);
  fd = Fd(::open("/dev/null", O_RDONLY | O_CLOEXEC));
  EXPECT_EQ(::fcntl(first, F_GETFD), -1);
}

TEST(UserAreaTest, TheStartCopiesWhatIsMissingAndReplacesNothing) {
  test::TempTree t;
  t.Write("set/MENU.HTM", "menu");
  t.Write("set/VETRINA-FOTO_DEFAULT/dir_0001/IMG_001.HTM", "pagina");
  t.Write("set/.gitattributes", "* -text");
  const UserArea area = UserAreaOf(t.Path("casa").string());
  ASSERT_EQ(area.drive_c, t.Path("casa/Vetrina-Foto/Disco C").string());
  EXPECT_EQ(HostFileSystem(UserDrives(area)).WindowsPath(area.drive_c + "/sito"), "C:\\sito");
  EXPECT_EQ(PrepareUserArea(area, t.Path("set").string()), "");
  EXPECT_EQ(t.Read("casa/Vetrina-Foto/MENU.HTM"), "menu");
  // The user's edit stays; a file the set gained since, or one the user
  // removed, arrives at the next start; no temporary file is left.
  t.Write("casa/Vetrina-Foto/MENU.HTM", "il mio menu");
  fs::remove(t.Path("casa/Vetrina-Foto/VETRINA-FOTO_DEFAULT/dir_0001/IMG_001.HTM"));
  t.Write("set/PIEDE.HTM", "piede");
  EXPECT_EQ(PrepareUserArea(area, t.Path("set").string()), "");
  EXPECT_EQ(t.Tree("casa/Vetrina-Foto"),
            (Names{"Disco C/", "MENU.HTM", "PIEDE.HTM", "VETRINA-FOTO_DEFAULT/",
                   "VETRINA-FOTO_DEFAULT/dir_0001/", "VETRINA-FOTO_DEFAULT/dir_0001/IMG_001.HTM"}));
  EXPECT_EQ(t.Read("casa/Vetrina-Foto/MENU.HTM") + t.Read("casa/Vetrina-Foto/PIEDE.HTM") +
                t.Read("casa/Vetrina-Foto/VETRINA-FOTO_DEFAULT/dir_0001/IMG_001.HTM"),
            "il mio menupiedepagina");
}

TEST(UserAreaTest, AnAreaThatCannotBeMadeOrFilledIsToldAndNothingIsWrittenElsewhere) {
  test::TempTree t;
  t.Write("set/MENU.HTM", "menu");
  t.Write("bloccata/Vetrina-Foto", "un file al posto della cartella");
  const std::string set = t.Path("set").string(), missing = "76 - Impossibile trovare il percorso";
  std::vector<std::tuple<std::string, std::string, std::string>> rows = {
      {t.Path("bloccata").string(), set, missing}, {t.Path("casa").string(), set + "x", missing}};
  // A file system that refuses every new folder, to root too.
  if (fs::is_directory("/sys/kernel")) {
    rows.push_back({"/sys/kernel/casa", set, "75 - Errore di accesso al percorso/file"});
  }
  for (const auto& [home, templates, failure] : rows) {
    EXPECT_EQ(
        PrepareUserArea(UserAreaOf(home), templates),
        "Impossibile preparare la cartella del programma " + home +
            "/Vetrina-Foto\r\rI modelli delle pagine potrebbero mancare.\r\r ERR= " + failure);
  }
  EXPECT_EQ(t.Tree(), (Names{"bloccata/", "bloccata/Vetrina-Foto", "casa/", "casa/Vetrina-Foto/",
                             "casa/Vetrina-Foto/Disco C/", "set/", "set/MENU.HTM"}));
}

}  // namespace
}  // namespace vf
