#include "platform/fault_injection.h"

#include <gtest/gtest.h>

#include "platform/failure.h"
#include "tests/support/memory_file_system.h"

namespace vf {
namespace {

TEST(FaultInjectionTest, RulesMatchTheSamePlace) {
  MemoryFileSystem memory;
  memory.AddFile("C:\\a.jpg", "a");
  memory.AddFolder("C:\\sito");
  FaultInjectingFileSystem fs(memory);
  fs.AddFailure("C:\\SITO\\index.htm", kDiscoPieno);
  fs.AddFailure("c:/sito/./dir_0001", kErroreAccesso);
  fs.AddFailure("<bad>", kDiscoPieno);  // names nothing: no rule
  ASSERT_EQ(fs.SetCurrentFolder("C:\\Sito"), kOk);

  std::unique_ptr<OutputFile> file;
  EXPECT_EQ(fs.OpenOutput("index.htm", &file), kDiscoPieno);
  EXPECT_EQ(fs.Copy("C:\\a.jpg", "C:\\sito\\INDEX.HTM"), kDiscoPieno);
  EXPECT_EQ(fs.Rename("C:\\a.jpg", "\\sito\\index.htm"), kDiscoPieno);
  EXPECT_EQ(fs.MakeFolder("dir_0001"), kErroreAccesso);
  // Reads of a faulted path and changes elsewhere pass through.
  EXPECT_EQ(fs.Copy("C:\\a.jpg", "C:\\sito\\index.htm.bak"), kOk);
  EXPECT_EQ(fs.Copy("C:\\sito\\index.htm.bak", "C:\\b.jpg"), kOk);
  EXPECT_EQ(fs.CurrentFolder(), "C:\\Sito\\");
  EXPECT_EQ(memory.log(), (std::vector<std::string>{
                              "COPY C:\\a.jpg -> C:\\sito\\index.htm.bak",
                              "COPY C:\\sito\\index.htm.bak -> C:\\b.jpg",
                          }));
}

}  // namespace
}  // namespace vf
