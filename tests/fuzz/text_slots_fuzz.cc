// The template line reader over fuzzed file bytes, the first byte being how many each read gives,
// so that CR LF falls across refills. The lines read are the file's, each ended by CR LF, a lone CR
// or the file's end, and written back and read again they come back the same.

#include <sstream>

#include "platform/failure.h"
#include "platform/text_slots.h"
#include "tests/fuzz/fuzz_support.h"
#include "tests/support/banco.h"

struct ChunkedFiles : vf::TempTreeFileSystem {
  static inline size_t chunk = 1;
  struct Input : vf::InputFile {
    std::unique_ptr<InputFile> whole;
    int Read(char* to, size_t capacity, size_t* got) override {
      return whole->Read(to, capacity < chunk ? capacity : chunk, got);
    }
  };
  int ReadFile(const Place& file, std::unique_ptr<vf::InputFile>* out) override {
    *out = std::make_unique<Input>();
    return TempTreeFileSystem::ReadFile(file, &static_cast<Input&>(**out).whole);
  }
};

void vf::fuzz::FuzzOne(std::string_view input) {
  if (input.empty()) return;
  ChunkedFiles::chunk = input[0] == 0 ? 65536 : static_cast<unsigned char>(input[0]);
  std::string bytes(input.substr(1));
  ChunkedFiles files;
  files.AddFile("C:\\MODELLO.HTM", bytes);
  TextSlots slots(files);
  auto read_all = [&](const char* path) {
    std::vector<std::string> lines;
    Check(slots.OpenForReading(3, path) == kOk, "a file does not open", path);
    while (!slots.AtEnd(3)) Check(slots.ReadLine(3, &lines.emplace_back()) == kOk, "a line fails");
    return lines;
  };
  const std::vector<std::string> lines = read_all("c:\\modello.htm");
  for (size_t at = 0; (at = bytes.find("\r\n", at)) != bytes.npos;) bytes.erase(++at, 1);
  std::istringstream split(bytes);
  std::vector<std::string> want;
  for (std::string line; std::getline(split, line, '\r');) want.push_back(line);
  Check(lines == want, "the lines read are not the file's", input);
  slots.OpenForWriting(4, "C:\\COPIA.HTM");
  for (const std::string& line : lines) slots.WriteLine(4, line);
  Check(slots.Close(4) == kOk && read_all("C:\\COPIA.HTM") == lines, "the copy reads back");
}
