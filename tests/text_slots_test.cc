#include "platform/text_slots.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "platform/failure.h"
#include "tests/support/memory_file_system.h"

namespace vf {
namespace {

std::vector<std::string> Lines(const std::string& bytes) {
  MemoryFileSystem fs;
  fs.AddFile("C:\\t.txt", bytes);
  TextSlots slots(fs);
  EXPECT_EQ(slots.OpenForReading(3, "C:\\t.txt"), kOk);
  std::vector<std::string> lines;
  std::string line;
  while (!slots.AtEnd(3)) {
    EXPECT_EQ(slots.ReadLine(3, &line), kOk);
    lines.push_back(line);
  }
  EXPECT_EQ(slots.ReadLine(3, &line), kErroreAccesso);  // past the end
  return lines;
}

TEST(TextSlotsTest, LineEnds) {
  using V = std::vector<std::string>;
  EXPECT_EQ(Lines("a\r\nb\r\n"), (V{"a", "b"}));
  EXPECT_EQ(Lines("a\rb\n c\r\n\r\nlast"), (V{"a", "b\n c", "", "last"}));
  EXPECT_EQ(Lines(std::string("\0\xE0\xC3\xA8\r\n", 6)), (V{std::string("\0\xE0\xC3\xA8", 4)}));
  EXPECT_EQ(Lines("\r"), (V{""}));
  EXPECT_EQ(Lines(""), V{});
  // A CR LF split across the reading chunk still ends one line.
  std::string big(65535, 'x');
  EXPECT_EQ(Lines(big + "\r\nz"), (V{big, "z"}));
}

TEST(TextSlotsTest, WritingAndSlotsNotOpen) {
  MemoryFileSystem fs;
  TextSlots slots(fs);
  std::string line;
  EXPECT_EQ(slots.ReadLine(1, &line), kNomeNonValido);
  EXPECT_EQ(slots.WriteLine(1, "x"), kNomeNonValido);
  EXPECT_TRUE(slots.AtEnd(1));
  EXPECT_EQ(slots.Close(1), kOk);

  ASSERT_EQ(slots.OpenForWriting(1, "C:\\page.htm"), kOk);
  EXPECT_EQ(slots.ReadLine(1, &line), kNomeNonValido);
  EXPECT_EQ(slots.WriteLine(1, "<p>\n"), kOk);
  EXPECT_EQ(slots.WriteLine(1, ""), kOk);
  EXPECT_EQ(slots.Close(1), kOk);
  EXPECT_EQ(fs.Contents("C:\\page.htm"), "<p>\n\r\n\r\n");
  EXPECT_EQ(slots.OpenForReading(2, "C:\\missing.htm"), kFileNonTrovato);
  EXPECT_EQ(slots.ReadLine(2, &line), kNomeNonValido);
}

TEST(TextSlotsTest, AFileOpenInAnotherSlotIsNotEmptied) {
  MemoryFileSystem fs;
  fs.AddFile("C:\\T\\IMG_001.HTM", "template\r\n");
  TextSlots slots(fs);
  ASSERT_EQ(slots.OpenForReading(3, "C:\\T\\IMG_001.HTM"), kOk);
  // The same file by another spelling, open for reading or for writing.
  EXPECT_EQ(slots.OpenForWriting(4, "c:\\t\\.\\img_001.htm"), kErroreAccesso);
  ASSERT_EQ(slots.OpenForWriting(1, "C:\\T\\index.htm"), kOk);
  EXPECT_EQ(slots.OpenForWriting(4, "C:\\T\\INDEX.HTM"), kErroreAccesso);
  std::string line;
  EXPECT_EQ(slots.ReadLine(3, &line), kOk);
  EXPECT_EQ(line, "template");
  // Its own slot is closed first, and a closed file is free again.
  EXPECT_EQ(slots.OpenForWriting(1, "C:\\T\\index.htm"), kOk);
  EXPECT_EQ(slots.Close(3), kOk);
  EXPECT_EQ(slots.OpenForWriting(4, "C:\\T\\IMG_001.HTM"), kOk);
}

}  // namespace
}  // namespace vf
