#include "platform/host_file_system.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "platform/failure.h"
#include "platform/host_files.h"
#include "tests/support/e2e.h"

namespace vf {
namespace {

using Names = std::vector<std::string>;

class HostFileSystemTest : public ::testing::Test {
 protected:
  HostFileSystemTest() {
    tree_.MakeFolder("c");
    tree_.MakeFolder("d");
    fs_ = std::make_unique<HostFileSystem>(
        std::vector<DriveMapping>{{'d', Host("d"), true}, {'c', Host("c"), false}});
  }

  std::string Host(const std::string& relative) const { return tree_.Path(relative).string(); }

  std::string Read(const std::string& path) {
    std::unique_ptr<InputFile> file;
    if (int failure = fs_->OpenInput(path, &file)) return "ERR " + std::to_string(failure);
    std::string bytes;
    char buffer[4096];
    size_t got = 0;
    while (file->Read(buffer, sizeof buffer, &got) == kOk && got > 0) bytes.append(buffer, got);
    return bytes;
  }

  int Write(const std::string& path, const std::string& bytes) {
    std::unique_ptr<OutputFile> file;
    if (int failure = fs_->OpenOutput(path, &file)) return failure;
    file->Write(bytes.data(), bytes.size());
    return file->Close();
  }

  Names Listed(const std::string& path) {
    Names names;
    for (const FolderEntry& entry : fs_->ListFolder(path).entries) names.push_back(entry.name);
    return names;
  }

  test::TempTree tree_;
  std::unique_ptr<HostFileSystem> fs_;
};

TEST_F(HostFileSystemTest, NamesMatchIgnoringCaseAndTargetsTakeTheTypedSpelling) {
  tree_.Write("c/Sito/Index.HTM", "old");
  EXPECT_EQ(Read("C:\\SITO\\index.htm"), "old");
  EXPECT_EQ(Write("c:\\sito\\index.htm", "new"), kOk);
  EXPECT_EQ(Write("C:/sito/Nuova.Htm", "n"), kOk);
  EXPECT_EQ(fs_->MakeFolder("c:\\SITO\\Dir_0001"), kOk);
  EXPECT_EQ(fs_->Copy("c:\\sito\\nuova.htm", "C:\\sito\\DIR_0001\\Img.jpg"), kOk);
  EXPECT_EQ(fs_->Copy("c:\\sito\\index.htm", "C:\\sito\\dir_0001\\IMG.JPG"), kOk);
  EXPECT_EQ(fs_->MakeFolder("C:\\sito\\DIR_0001"), kErroreAccesso);
  EXPECT_EQ(tree_.Tree("c"), (Names{"Sito/", "Sito/DIR_0001/", "Sito/DIR_0001/IMG.JPG",
                                    "Sito/Nuova.Htm", "Sito/index.htm"}));
  EXPECT_EQ(tree_.Read("c/Sito/DIR_0001/IMG.JPG"), "new");
  int attributes = -1;
  EXPECT_EQ(fs_->Attributes("c:\\sito\\dir_0001", &attributes), kOk);
  EXPECT_EQ(attributes, 16);
  EXPECT_EQ(fs_->Attributes("C:\\", &attributes), kOk);
  EXPECT_EQ(attributes, 16);
  EXPECT_EQ(fs_->HostPath("c:\\SITO\\new.htm"), Host("c/Sito/new.htm"));
}

TEST_F(HostFileSystemTest, ExactSpellingWinsAndNothingElseIsWritten) {
  tree_.Write("c/a.jpg", "small");
  tree_.Write("c/A.JPG", "capital");
  EXPECT_EQ(Read("C:\\a.jpg"), "small");
  EXPECT_EQ(Read("C:\\A.JPG"), "capital");
  EXPECT_EQ(Read("C:\\A.jpg"), "capital");  // first in name order
  EXPECT_EQ(Write("C:\\a.jpg", "x"), kOk);
  EXPECT_EQ(tree_.Read("c/A.JPG"), "capital");
  EXPECT_EQ(fs_->Rename("C:\\a.jpg", "C:\\A.JPG"), kFileEsistente);
  EXPECT_EQ(fs_->Copy("C:\\a.jpg", "C:\\A.JPG"), kOk);
  EXPECT_EQ(tree_.Tree("c"), (Names{"A.JPG", "a.jpg"}));
  EXPECT_EQ(tree_.Read("c/A.JPG"), "x");
}

TEST_F(HostFileSystemTest, SelfCopyAndRenames) {
  tree_.Write("c/P1.JPG", "p1");
  tree_.Write("c/p2.jpg", "p2");
  EXPECT_EQ(fs_->Copy("C:\\P1.JPG", "C:\\p1.jpg"), kErroreAccesso);
  EXPECT_EQ(fs_->Copy("C:\\p1.jpg", "C:\\.\\P1.JPG"), kErroreAccesso);
  EXPECT_EQ(tree_.Tree("c"), (Names{"P1.JPG", "p2.jpg"}));
  EXPECT_EQ(fs_->Rename("C:\\P1.JPG", "C:\\p1.jpg"), kOk);
  EXPECT_EQ(fs_->Rename("C:\\p1.jpg", "C:\\P2.JPG"), kFileEsistente);
  EXPECT_EQ(fs_->Rename("C:\\gone.jpg", "C:\\x.jpg"), kFileNonTrovato);
  EXPECT_EQ(fs_->Rename("C:\\p2.jpg", "C:\\no\\x.jpg"), kPercorsoNonTrovato);
  EXPECT_EQ(fs_->Rename("C:\\p2.jpg", "C:\\Tre.jpg"), kOk);
  EXPECT_EQ(tree_.Tree("c"), (Names{"Tre.jpg", "p1.jpg"}));
  EXPECT_EQ(tree_.Read("c/p1.jpg"), "p1");

  // A case-only rename keeps the file in its own folder, even beside a
  // folder whose name differs only in case, and never replaces another file.
  tree_.Write("c/F/SUB/Q.JPG", "q");
  tree_.Write("c/F/sub/other.jpg", "o");
  tree_.Write("c/F/SUB/r.jpg", "small r");
  tree_.Write("c/F/SUB/R.JPG", "capital R");
  EXPECT_EQ(fs_->Rename("C:\\F\\SUB\\Q.JPG", "c:\\f\\sub\\q.jpg"), kOk);
  EXPECT_EQ(fs_->Rename("C:\\F\\SUB\\R.JPG", "c:\\f\\sub\\r.jpg"), kFileEsistente);
  EXPECT_EQ(tree_.Tree("c/F"),
            (Names{"SUB/", "SUB/R.JPG", "SUB/q.jpg", "SUB/r.jpg", "sub/", "sub/other.jpg"}));
  EXPECT_EQ(tree_.Read("c/F/SUB/R.JPG"), "capital R");
}

TEST_F(HostFileSystemTest, ReadOnlyMissingUnmappedAndRefused) {
  tree_.Write("d/cd.jpg", "cd");
  tree_.Write("c/a.jpg", "a");
  EXPECT_EQ(Read("D:\\CD.JPG"), "cd");
  EXPECT_EQ(fs_->Copy("D:\\cd.jpg", "C:\\cd.jpg"), kOk);
  EXPECT_EQ(Write("D:\\x.htm", ""), kErroreAccesso);
  EXPECT_EQ(Write("D:\\missing\\x.htm", ""), kErroreAccesso);
  EXPECT_EQ(fs_->Copy("C:\\a.jpg", "D:\\a.jpg"), kErroreAccesso);
  EXPECT_EQ(fs_->MakeFolder("D:\\dir"), kErroreAccesso);
  EXPECT_EQ(fs_->Rename("D:\\cd.jpg", "D:\\CD.JPG"), kErroreAccesso);
  EXPECT_EQ(tree_.Tree("d"), (Names{"cd.jpg"}));

  EXPECT_EQ(Read("C:\\nothing.jpg"), "ERR 53");
  EXPECT_EQ(Read("C:\\no\\a.jpg"), "ERR 76");
  EXPECT_EQ(Read("C:\\a.jpg\\b.jpg"), "ERR 76");
  EXPECT_EQ(Read("Q:\\a.jpg"), "ERR 76");
  EXPECT_EQ(Write("C:\\no\\x.htm", ""), kPercorsoNonTrovato);
  EXPECT_EQ(fs_->MakeFolder("C:\\no\\sub"), kPercorsoNonTrovato);
  EXPECT_EQ(fs_->ListFolder("C:\\no").failure, kPercorsoNonTrovato);
  EXPECT_EQ(fs_->ListFolder("Q:\\").failure, kPercorsoNonTrovato);
  EXPECT_EQ(fs_->SetCurrentFolder("C:\\no"), kPercorsoNonTrovato);
  EXPECT_EQ(fs_->SetCurrentFolder("C:\\a.jpg"), kPercorsoNonTrovato);
  EXPECT_EQ(fs_->SetCurrentDrive("Q"), kPercorsoNonTrovato);
  EXPECT_EQ(fs_->Copy("<C:\\Foto\\Sub>", "C:\\x.jpg"), kNomeNonValido);
  EXPECT_EQ(Write("C:\\a?.htm", ""), kNomeNonValido);
  EXPECT_EQ(fs_->ListFolder("C:\\*.*").failure, kNomeNonValido);
  EXPECT_EQ(fs_->Normalize("C:\\a:b"), "");
  EXPECT_EQ(tree_.Tree("c"), (Names{"a.jpg", "cd.jpg"}));
}

TEST_F(HostFileSystemTest, CurrentFolderAndDriveAndNoEscape) {
  tree_.MakeFolder("c/Sito");
  EXPECT_EQ(fs_->CurrentFolder(), "C:\\");
  ASSERT_EQ(fs_->SetCurrentFolder("c:\\Sito"), kOk);
  EXPECT_EQ(fs_->CurrentFolder(), "C:\\Sito\\");
  EXPECT_EQ(Write("index.htm", "i"), kOk);
  EXPECT_EQ(Write("c:pag_1.htm", "p"), kOk);
  EXPECT_EQ(Write("..\\..\\..\\..\\up.htm", "u"), kOk);
  EXPECT_EQ(fs_->Normalize("c:x\\..\\y.htm"), "C:\\SITO\\Y.HTM");
  EXPECT_EQ(fs_->SetCurrentDrive("d:\\whatever"), kOk);
  EXPECT_EQ(fs_->CurrentFolder(), "D:\\");
  EXPECT_EQ(Write("c:root.htm", "r"), kOk);
  EXPECT_EQ(fs_->SetCurrentFolder("C:\\SITO"), kOk);
  EXPECT_EQ(fs_->SetCurrentDrive(""), kOk);
  EXPECT_EQ(fs_->SetCurrentDrive("c"), kOk);
  EXPECT_EQ(fs_->CurrentFolder(), "C:\\SITO\\");
  EXPECT_EQ(fs_->SetCurrentFolder("D:\\"), kOk);
  EXPECT_EQ(fs_->CurrentFolder(), "D:\\");
  EXPECT_EQ(tree_.Tree(""), (Names{"c/", "c/Sito/", "c/Sito/index.htm", "c/Sito/pag_1.htm",
                                   "c/root.htm", "c/up.htm", "d/"}));
}

TEST_F(HostFileSystemTest, ListingOrderKindsAndLinks) {
  for (const char* name : {"b.txt", "a.txt", "A.txt", ".hidden", "Zeta", "_u", "end. "}) {
    tree_.Write(std::string("c/l/") + name, "");
  }
  tree_.MakeFolder("c/l/dir");
  ASSERT_EQ(::mkfifo(Host("c/l/pipe").c_str(), 0600), 0);
  std::filesystem::create_directory_symlink(".", Host("c/l/loop"));
  std::filesystem::create_symlink("nowhere", Host("c/l/dangling"));
  FolderListing listing = fs_->ListFolder("C:\\L");
  ASSERT_EQ(listing.failure, kOk);
  std::string shown;
  for (const FolderEntry& e : listing.entries) {
    shown += e.name + "=" + "FDS"[e.kind] + (e.hidden ? "h" : "") + " ";
  }
  // Ignoring case means comparing capitals, as Windows orders a folder: "_"
  // comes after the letters.
  EXPECT_EQ(shown,
            ".hidden=Fh A.txt=F a.txt=F b.txt=F dangling=S dir=D end. =F loop=D pipe=S "
            "Zeta=F _u=F ");
  struct stat st;
  ASSERT_EQ(::stat(Host("c/l").c_str(), &st), 0);
  EXPECT_EQ(listing.device, st.st_dev);
  EXPECT_EQ(listing.inode, st.st_ino);
  FolderListing through_link = fs_->ListFolder("C:\\l\\LOOP\\loop\\");
  EXPECT_EQ(through_link.inode, st.st_ino);
  EXPECT_EQ(through_link.entries.size(), listing.entries.size());
  int attributes = 0;
  EXPECT_EQ(fs_->Attributes("C:\\l\\PIPE", &attributes), kOk);
  EXPECT_EQ(attributes, 4);
  EXPECT_EQ(Read("C:\\l\\pipe"), "ERR 75");  // and does not hang
}

TEST_F(HostFileSystemTest, OutsideChangesAreSeen) {
  tree_.Write("c/f/a.jpg", "a");
  int attributes = 0;
  EXPECT_EQ(fs_->Attributes("C:\\F\\NEW.JPG", &attributes), kFileNonTrovato);
  EXPECT_EQ(Write("C:\\F\\B.JPG", "b"), kOk);
  EXPECT_EQ(Read("C:\\f\\b.jpg"), "b");
  tree_.Write("c/f/new.jpg", "n");
  EXPECT_EQ(Read("C:\\F\\NEW.JPG"), "n");
  std::filesystem::remove(Host("c/f/new.jpg"));
  tree_.Write("c/f/New.jpg", "N");
  EXPECT_EQ(Read("C:\\F\\NEW.JPG"), "N");
  std::filesystem::rename(Host("c/f"), Host("c/g"));
  tree_.MakeFolder("c/F");
  EXPECT_EQ(Read("C:\\f\\NEW.JPG"), "ERR 53");
  EXPECT_EQ(Read("C:\\G\\new.jpg"), "N");
}

TEST_F(HostFileSystemTest, WindowsFormOfHostPaths) {
  HostFileSystem fs({{'Z', "/", false}, {'C', Host("c"), false}, {'E', Host("c/e"), true}});
  EXPECT_EQ(fs.WindowsPath(Host("c/Pictures/a b.jpg")), "C:\\Pictures\\a b.jpg");
  EXPECT_EQ(fs.WindowsPath(Host("c")), "C:\\");
  EXPECT_EQ(fs.WindowsPath(Host("c/e/x")), "E:\\x");
  EXPECT_EQ(fs.WindowsPath("/etc/./hosts"), "Z:\\etc\\hosts");
  EXPECT_EQ(fs.WindowsPath("/tmp/a\\b"), std::nullopt);
  EXPECT_EQ(fs.CurrentFolder(), "C:\\");
  EXPECT_EQ(HostFileSystem({{'Z', "/", false}}).CurrentFolder(), "Z:\\");
}

TEST(HostOutputFileTest, FullDiskShowsAtFlushOrClose) {
  HostOutputFile small(Fd(::open("/dev/full", O_WRONLY | O_CLOEXEC)));
  EXPECT_EQ(small.Write("x", 1), kOk);  // still in the buffer
  EXPECT_EQ(small.Close(), kDiscoPieno);
  EXPECT_EQ(small.Write("x", 1), kDiscoPieno);
  HostOutputFile large(Fd(::open("/dev/full", O_WRONLY | O_CLOEXEC)));
  const std::string chunk(100000, 'x');
  EXPECT_EQ(large.Write(chunk.data(), chunk.size()), kDiscoPieno);
  EXPECT_EQ(large.Close(), kDiscoPieno);
}

}  // namespace
}  // namespace vf
