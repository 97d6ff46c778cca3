#ifndef VF_PLATFORM_TEXT_SLOTS_H_
#define VF_PLATFORM_TEXT_SLOTS_H_

#include <map>
#include <memory>
#include <string>

#include "platform/file_system.h"

namespace vf {

// Text files by slot number, over a FileSystem that the caller owns and that
// outlives this object. A line read ends at CR LF or at a lone CR and the end
// mark is not part of it; a lone LF is part of the line. A line written gets
// CR LF. Bytes pass through unchanged. Every call returns a failure number.
class TextSlots {
 public:
  explicit TextSlots(FileSystem& fs) : fs_(fs) {}
  ~TextSlots();

  int OpenForReading(int slot, const std::string& path);
  // Creates the file or empties an existing one. A file open in another slot
  // is refused with 75: emptying it would lose what is still to be read from
  // it, as when a page is written over its own template.
  int OpenForWriting(int slot, const std::string& path);
  // A slot that is not open, or open for writing: 52. Past the end: 75.
  int ReadLine(int slot, std::string* line);
  int WriteLine(int slot, const std::string& line);
  // Hands the lines written so far to the system, so that a full disk shows
  // now. A slot that is not open for writing: 52.
  int Flush(int slot);
  // True at the end of a file open for reading; a slot not open reads as
  // at its end.
  bool AtEnd(int slot);
  // Closing a free slot does nothing. The failure of a late write (a full
  // disk) is given back.
  int Close(int slot);
  void CloseAll();

 private:
  struct Slot {
    std::unique_ptr<InputFile> input;
    std::unique_ptr<OutputFile> output;
    std::string buffer;  // bytes read but not yet given as lines
    size_t pos = 0;
    bool eof = false;   // the InputFile has no more bytes
    int failure = 0;    // a read failure, given at the next ReadLine
    std::string where;  // the path as the file layer normalizes it
  };
  // Makes sure at least one byte is buffered unless the file has ended.
  void Fill(Slot& s);

  FileSystem& fs_;
  std::map<int, Slot> slots_;
};

}  // namespace vf

#endif  // VF_PLATFORM_TEXT_SLOTS_H_
