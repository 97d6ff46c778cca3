#include "tests/support/memory_file_system.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "platform/failure.h"

namespace vf {
namespace {

int Write(FileSystem& fs, const std::string& path, const std::string& bytes) {
  std::unique_ptr<OutputFile> file;
  int failure = fs.OpenOutput(path, &file);
  if (failure != kOk) return failure;
  file->Write(bytes.data(), bytes.size());
  return file->Close();
}

std::vector<std::string> Names(FileSystem& fs, const std::string& folder) {
  std::vector<std::string> names;
  for (const FolderEntry& entry : fs.ListFolder(folder).entries) names.push_back(entry.name);
  return names;
}

TEST(MemoryFileSystemTest, JournalGivesTypedPaths) {
  MemoryFileSystem fs;
  fs.AddFile("C:\\Foto\\A.JPG", "jpeg");
  fs.AddFolder("C:\\Sito");
  ASSERT_EQ(fs.SetCurrentFolder("c:\\sito"), kOk);
  EXPECT_EQ(fs.MakeFolder("dir_0001"), kOk);
  EXPECT_EQ(Write(fs, "index.htm", "<html>"), kOk);
  EXPECT_EQ(fs.Copy("C:\\foto\\a.jpg", "dir_0001\\img_001.jpg"), kOk);
  EXPECT_EQ(fs.Rename("C:\\Foto\\A.JPG", "C:\\Foto\\a.jpg"), kOk);
  EXPECT_EQ(fs.MakeFolder("dir_0001"), kErroreAccesso);
  EXPECT_EQ(fs.log(), (std::vector<std::string>{
                          "MKDIR C:\\sito\\dir_0001",
                          "WRITE C:\\sito\\index.htm",
                          "COPY C:\\foto\\a.jpg -> C:\\sito\\dir_0001\\img_001.jpg",
                          "RENAME C:\\Foto\\A.JPG -> C:\\Foto\\a.jpg",
                      }));
  EXPECT_EQ(Names(fs, "C:\\"), (std::vector<std::string>{"Foto", "Sito"}));
  EXPECT_EQ(Names(fs, "C:\\FOTO"), (std::vector<std::string>{"a.jpg"}));
  EXPECT_EQ(fs.Contents("C:\\SITO\\DIR_0001\\IMG_001.JPG"), "jpeg");
}

TEST(MemoryFileSystemTest, WindowsRules) {
  MemoryFileSystem fs;
  fs.AddDrive('D', true);
  fs.AddFile("C:\\a.jpg", "small");
  fs.AddFile("C:\\A.JPG", "capital");
  fs.AddFile("C:\\b.jpg", "b");
  fs.AddFile("D:\\cd.jpg", "cd");

  // Exact spelling first, else the first in name order; nothing else is hit.
  EXPECT_EQ(Write(fs, "C:\\a.jpg", "new"), kOk);
  EXPECT_EQ(fs.Contents("C:\\A.JPG"), "capital");
  EXPECT_EQ(Write(fs, "C:\\A.jpg", "first"), kOk);
  EXPECT_EQ(Names(fs, "C:\\"), (std::vector<std::string>{"A.jpg", "a.jpg", "b.jpg"}));
  EXPECT_EQ(fs.Contents("C:\\A.jpg"), "first");

  EXPECT_EQ(fs.Copy("C:\\b.jpg", "C:\\B.JPG"), kErroreAccesso);
  EXPECT_EQ(fs.Rename("C:\\b.jpg", "C:\\a.jpg"), kFileEsistente);
  EXPECT_EQ(fs.Rename("C:\\nope.jpg", "C:\\x.jpg"), kFileNonTrovato);
  EXPECT_EQ(Names(fs, "C:\\"), (std::vector<std::string>{"A.jpg", "a.jpg", "b.jpg"}));

  EXPECT_EQ(fs.Copy("D:\\cd.jpg", "C:\\cd.jpg"), kOk);
  EXPECT_EQ(Write(fs, "D:\\x.htm", ""), kErroreAccesso);
  EXPECT_EQ(fs.Copy("C:\\b.jpg", "D:\\b.jpg"), kErroreAccesso);
  EXPECT_EQ(fs.MakeFolder("D:\\dir"), kErroreAccesso);
  EXPECT_EQ(fs.Rename("D:\\cd.jpg", "D:\\CD.JPG"), kErroreAccesso);
  EXPECT_EQ(Write(fs, "C:\\nope\\x.htm", ""), kPercorsoNonTrovato);
  EXPECT_EQ(Write(fs, "Q:\\x.htm", ""), kPercorsoNonTrovato);
  EXPECT_EQ(fs.Copy("C:\\b.jpg", "C:\\b.jpg\\x.jpg"), kPercorsoNonTrovato);
  EXPECT_EQ(fs.Copy("<C:\\Foto\\Sub>", "C:\\x.jpg"), kNomeNonValido);
  // A text ending in a backslash names a folder, never a file to make.
  EXPECT_EQ(fs.Copy("C:\\b.jpg", "C:\\new\\"), kPercorsoNonTrovato);
  EXPECT_EQ(Write(fs, "C:\\b.jpg\\", ""), kPercorsoNonTrovato);
  std::unique_ptr<InputFile> in;
  EXPECT_EQ(fs.OpenInput("C:\\b.jpg/", &in), kPercorsoNonTrovato);
  EXPECT_EQ(fs.OpenInput("C:\\new\\", &in), kPercorsoNonTrovato);

  // A folder cannot move below itself; a folder made again keeps failing but
  // takes the typed spelling.
  fs.AddFolder("C:\\Dir\\Sub");
  EXPECT_EQ(fs.Rename("C:\\dir", "C:\\DIR\\sub\\x"), kErroreAccesso);
  EXPECT_EQ(fs.MakeFolder("C:\\DIR"), kErroreAccesso);
  EXPECT_EQ(Names(fs, "C:\\"),
            (std::vector<std::string>{"A.jpg", "a.jpg", "b.jpg", "cd.jpg", "DIR"}));
}

}  // namespace
}  // namespace vf
