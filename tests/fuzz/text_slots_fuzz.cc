// The template line reader over fuzzed file bytes. The first byte chooses
// how many bytes each read of the file gives, so that CR LF pairs fall across
// the reader's buffer refills; the rest is the file. The lines must be the
// ones a plain split at CR LF and lone CR gives, and writing them back and
// reading again must give them once more.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "platform/failure.h"
#include "tests/support/memory_file_system.h"
#include "platform/text_slots.h"
#include "tests/fuzz/fuzz_support.h"

namespace vf::fuzz {
namespace {

class ChunkedInput : public InputFile {
 public:
  ChunkedInput(std::unique_ptr<InputFile> inner, size_t chunk)
      : inner_(std::move(inner)), chunk_(chunk) {}
  int Read(char* buffer, size_t capacity, size_t* got) override {
    return inner_->Read(buffer, std::min(capacity, chunk_), got);
  }

 private:
  std::unique_ptr<InputFile> inner_;
  size_t chunk_;
};

// The memory file layer whose files are read a few bytes at a time.
class ChunkedFileSystem : public FileSystem {
 public:
  ChunkedFileSystem(MemoryFileSystem& inner, size_t chunk) : inner_(inner), chunk_(chunk) {}

  int OpenInput(const std::string& path, std::unique_ptr<InputFile>* file) override {
    std::unique_ptr<InputFile> inner;
    int failure = inner_.OpenInput(path, &inner);
    if (failure == kOk) *file = std::make_unique<ChunkedInput>(std::move(inner), chunk_);
    return failure;
  }
  int OpenOutput(const std::string& path, std::unique_ptr<OutputFile>* file) override {
    return inner_.OpenOutput(path, file);
  }
  int Copy(const std::string& from, const std::string& to) override {
    return inner_.Copy(from, to);
  }
  int MakeFolder(const std::string& path) override { return inner_.MakeFolder(path); }
  int Rename(const std::string& from, const std::string& to) override {
    return inner_.Rename(from, to);
  }
  int SetCurrentFolder(const std::string& path) override { return inner_.SetCurrentFolder(path); }
  int SetCurrentDrive(const std::string& drive) override { return inner_.SetCurrentDrive(drive); }
  FolderListing ListFolder(const std::string& path) override { return inner_.ListFolder(path); }
  int Attributes(const std::string& path, int* attributes) override {
    return inner_.Attributes(path, attributes);
  }
  std::string Normalize(const std::string& path) override { return inner_.Normalize(path); }
  std::string CurrentFolder() override { return inner_.CurrentFolder(); }

 private:
  MemoryFileSystem& inner_;
  size_t chunk_;
};

std::vector<std::string> PlainSplit(const std::string& bytes) {
  std::vector<std::string> lines;
  std::string line;
  for (size_t i = 0; i < bytes.size(); ++i) {
    if (bytes[i] != '\r') {
      line += bytes[i];
      continue;
    }
    lines.push_back(std::move(line));
    line.clear();
    if (i + 1 < bytes.size() && bytes[i + 1] == '\n') ++i;
  }
  if (!line.empty()) lines.push_back(std::move(line));
  return lines;
}

std::vector<std::string> ReadAll(TextSlots& slots, int slot) {
  std::vector<std::string> lines;
  while (!slots.AtEnd(slot)) {
    std::string line;
    Check(slots.ReadLine(slot, &line) == kOk, "a line before the end fails");
    lines.push_back(std::move(line));
  }
  std::string past;
  Check(slots.ReadLine(slot, &past) == kErroreAccesso, "a read past the end gives no 75");
  return lines;
}

}  // namespace
}  // namespace vf::fuzz

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace vf;
  using namespace vf::fuzz;
  if (size == 0) return 0;
  const size_t chunk = data[0] == 0 ? 65536 : data[0];
  const std::string bytes(reinterpret_cast<const char*>(data) + 1, size - 1);

  MemoryFileSystem memory;
  memory.AddFile("C:\\MODELLO.HTM", bytes);
  ChunkedFileSystem fs(memory, chunk);
  TextSlots slots(fs);

  Check(slots.OpenForReading(3, "c:\\modello.htm") == kOk, "the template does not open");
  const std::vector<std::string> lines = ReadAll(slots, 3);
  Check(lines == PlainSplit(bytes), "lines differ from a plain split", bytes);

  Check(slots.OpenForWriting(4, "C:\\COPIA.HTM") == kOk, "the copy does not open");
  std::string line;
  Check(slots.ReadLine(4, &line) == kNomeNonValido, "a slot open for writing reads");
  std::string expected;
  for (const std::string& l : lines) {
    Check(slots.WriteLine(4, l) == kOk, "a line does not write");
    expected += l + "\r\n";
  }
  Check(slots.Close(4) == kOk, "the copy does not close");
  Check(memory.Contents("C:\\COPIA.HTM") == expected, "the copy holds other bytes");

  Check(slots.OpenForReading(4, "C:\\COPIA.HTM") == kOk, "the copy does not open again");
  Check(ReadAll(slots, 4) == lines, "the copy reads back other lines");
  slots.CloseAll();
  Check(slots.ReadLine(3, &line) == kNomeNonValido, "a closed slot reads");
  return 0;
}
