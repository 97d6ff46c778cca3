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
#include <functional>
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
#include "tests/support/banco.h"
#include "tests/support/e2e.h"
#include "tests/support/host_checks.h"

namespace vf {
namespace {

namespace fs = std::filesystem;
using namespace std::string_literals;
using namespace vf::test;
using Names = std::vector<std::string>;

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
  const std::string plain =
      "MSG: Immagini non riducibili, copiate come sono:\rC:\\Foto\\testo.jpg - non è un'immagine";
  const Names pictures = {"Altro/web/foto.jpg", "dir_0001/web/img_001.jpg",
                          "dir_0001/web/img_002.jpg", "dir_0002/web/IMG_009.JPG"};
  const Names with_avif = {"Altro/web/foto.avif",       "Altro/web/foto.jpg",
                           "dir_0001/web/img_001.avif", "dir_0001/web/img_001.jpg",
                           "dir_0001/web/img_002.jpg",  "dir_0002/web/IMG_009.AVIF",
                           "dir_0002/web/IMG_009.JPG"};
  // The sizes file, then what a round finds before its build, what the
  // build tells and which files the web size holds after it.
  const struct {
    std::string sizes;
    std::function<void()> before;
    Names told, web;
  } rounds[] = {
      // Without the sizes file nothing is made and nothing told.
      {"", [] {}, {}, {}},
      {"avif no\r\nmini 20\r\nweb 30\r\n", [] {}, {plain}, pictures},
      // AVIF is the default; a folder where an AVIF goes keeps it out, and
      // the photo is named.
      {"mini 20\r\nweb 30\r\n",
       [&] { tree.MakeFolder("Sito/Altro/web/foto.avif"); },
       {plain,
        "MSG: Immagini senza versione AVIF (le pagine mostrano la JPEG):\rC:\\Foto\\a.jpg - "
        "scrittura non riuscita"},
       Names(with_avif.begin() + 1, with_avif.end())},
      {"mini 20\r\nweb 30\r\n",
       [&] { fs::remove(tree.Path("Sito/Altro/web/foto.avif")); },
       {plain},
       with_avif},
  };
  for (const auto& round : rounds) {
    if (!round.sizes.empty()) tree.Write("PROG/DIMENSIONI.TXT", round.sizes);
    round.before();
    publishing.Publish(site);
    EXPECT_EQ(ui.events, round.told) << round.sizes;
    Names web;
    for (const std::string& path : tree.Tree("Sito")) {
      if (path.find("/web/") != std::string::npos && path.back() != '/') web.push_back(path);
    }
    EXPECT_EQ(web, round.web) << round.sizes;
    ui.events.clear();
  }
  EXPECT_EQ(BadLinesMessage(ParseSizesFile("a 1\nb\n")),
            "Righe non valide nel file DIMENSIONI.TXT, non considerate:\rriga 2: b");
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
