#include "platform/windows_path.h"

#include <gtest/gtest.h>

#include <string>

#include "platform/failure.h"

namespace vf {
namespace {

std::string Parsed(std::string_view text) {
  const ParsedPath current{'C', {"sito", "foto"}};
  ParsedPath out;
  int failure = ParseWindowsPath(text, current, &out);
  return failure == kOk ? FormatWindowsPath(out) : "ERR " + std::to_string(failure);
}

TEST(WindowsPathTest, DrivesCurrentFolderAndParts) {
  EXPECT_EQ(Parsed("index.htm"), "C:\\sito\\foto\\index.htm");
  EXPECT_EQ(Parsed("\\sito\\index.htm"), "C:\\sito\\index.htm");
  EXPECT_EQ(Parsed("c:name"), "C:\\sito\\foto\\name");
  EXPECT_EQ(Parsed("d:name"), "D:\\name");
  EXPECT_EQ(Parsed("D:"), "D:\\");
  EXPECT_EQ(Parsed("c:"), "C:\\sito\\foto");
  EXPECT_EQ(Parsed("c:\\sito\\\\index.htm"), "C:\\sito\\index.htm");
  EXPECT_EQ(Parsed("C:/a/b\\c/"), "C:\\a\\b\\c");
  EXPECT_EQ(Parsed("C:\\a\\.\\b\\..\\c"), "C:\\a\\c");
  EXPECT_EQ(Parsed("..\\..\\..\\..\\x"), "C:\\x");
  EXPECT_EQ(Parsed("C:\\..\\.."), "C:\\");
  EXPECT_EQ(Parsed("\\\\server\\share"), "C:\\server\\share");
  // Blanks and dots at the ends of a name are part of it.
  EXPECT_EQ(Parsed("C:\\a. \\ b...\\..."), "C:\\a. \\ b...\\...");
}

TEST(WindowsPathTest, RefusedNames) {
  for (std::string text : {"", "<C:\\Foto\\Sub>", "C:\\a:b", "a?.jpg", "C:\\*.*", "x|y", "\"q\"",
                           "1:\\x", "CC:\\x", "C:\\a>b", "C:\\tab\there"}) {
    EXPECT_EQ(Parsed(text), "ERR 52") << text;
  }
  EXPECT_EQ(Parsed(std::string("a\0b", 3)), "ERR 52");
}

}  // namespace
}  // namespace vf
