// The template line reader over fuzzed file bytes. The first byte is how many
// bytes each read of the file gives, so that CR LF pairs fall across the
// reader's refills; the rest is the file. The lines read must be the file's,
// and written back and read again they must come back the same.

#include <algorithm>
#include <sstream>

#include "platform/failure.h"
#include "platform/text_slots.h"
#include "tests/fuzz/fuzz_support.h"
#include "tests/support/memory_file_system.h"

namespace vf::fuzz {

size_t chunk = 1;  // the bytes each read of a file gives, set by the input

struct ChunkedFiles : MemoryFileSystem {
  struct Input : InputFile {
    std::unique_ptr<InputFile> whole;
    int Read(char* to, size_t capacity, size_t* got) override {
      return whole->Read(to, std::min(capacity, chunk), got);
    }
  };
  int ReadFile(const Place& file, std::unique_ptr<InputFile>* out) override {
    auto input = std::make_unique<Input>();
    int failure = MemoryFileSystem::ReadFile(file, &input->whole);
    *out = std::move(input);
    return failure;
  }
};

std::vector<std::string> ReadAll(TextSlots& slots, const std::string& path) {
  std::vector<std::string> lines;
  Check(slots.OpenForReading(3, path) == kOk, "a file does not open", path);
  while (!slots.AtEnd(3)) Check(slots.ReadLine(3, &lines.emplace_back()) == kOk, "a line fails");
  return lines;
}

void FuzzOne(std::string_view input) {
  if (input.empty()) return;
  chunk = input[0] == 0 ? 65536 : static_cast<unsigned char>(input[0]);
  std::string bytes(input.substr(1));
  ChunkedFiles files;
  files.AddFile("C:\\MODELLO.HTM", bytes);
  TextSlots slots(files);
  const std::vector<std::string> lines = ReadAll(slots, "c:\\modello.htm");
  // A line ends at CR LF or at a lone CR; a last line without an end counts.
  for (size_t at = 0; (at = bytes.find("\r\n", at)) != bytes.npos;) bytes.erase(++at, 1);
  std::istringstream split(bytes);
  std::vector<std::string> want;
  for (std::string line; std::getline(split, line, '\r');) want.push_back(line);
  Check(lines == want, "the lines read are not the file's", input);
  Check(slots.OpenForWriting(4, "C:\\COPIA.HTM") == kOk, "the copy does not open");
  for (const std::string& line : lines) Check(slots.WriteLine(4, line) == kOk, "a line write");
  Check(slots.Close(4) == kOk && ReadAll(slots, "C:\\COPIA.HTM") == lines, "the copy reads back");
}

}  // namespace vf::fuzz
