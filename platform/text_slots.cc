#include "platform/text_slots.h"

#include <string_view>

#include "platform/failure.h"

namespace vf {

TextSlots::~TextSlots() { CloseAll(); }

int TextSlots::OpenForReading(int slot, const std::string& path) {
  Close(slot);
  std::unique_ptr<InputFile> file;
  int failure = fs_.OpenInput(path, &file);
  if (failure != kOk) return failure;
  Slot& s = slots_[slot];
  s.input = std::move(file);
  s.where = fs_.Normalize(path);
  return kOk;
}

int TextSlots::OpenForWriting(int slot, const std::string& path) {
  Close(slot);
  std::string where = fs_.Normalize(path);
  for (const auto& [number, open] : slots_) {
    if (!where.empty() && open.where == where) return kErroreAccesso;
  }
  std::unique_ptr<OutputFile> file;
  int failure = fs_.OpenOutput(path, &file);
  if (failure != kOk) return failure;
  Slot& s = slots_[slot];
  s.output = std::move(file);
  s.where = std::move(where);
  return kOk;
}

void TextSlots::Fill(Slot& s) {
  if (s.pos < s.buffer.size() || s.eof) return;
  s.buffer.clear();
  s.pos = 0;
  char chunk[65536];
  size_t got = 0;
  int failure = s.input->Read(chunk, sizeof chunk, &got);
  if (failure != kOk) {
    s.failure = failure;
    s.eof = true;
    return;
  }
  if (got == 0) {
    s.eof = true;
    return;
  }
  s.buffer.assign(chunk, got);
}

int TextSlots::ReadLine(int slot, std::string* line) {
  auto it = slots_.find(slot);
  if (it == slots_.end() || !it->second.input) return kNomeNonValido;
  Slot& s = it->second;
  line->clear();
  Fill(s);
  if (s.pos >= s.buffer.size()) {
    if (s.failure != kOk) return s.failure;
    return kErroreAccesso;  // read past the end
  }
  while (true) {
    Fill(s);
    if (s.pos >= s.buffer.size()) return kOk;  // last line without an end mark
    size_t cr = s.buffer.find('\r', s.pos);
    if (cr == std::string::npos) {
      line->append(s.buffer, s.pos, std::string::npos);
      s.pos = s.buffer.size();
      continue;
    }
    line->append(s.buffer, s.pos, cr - s.pos);
    s.pos = cr + 1;
    Fill(s);
    if (std::string_view(s.buffer).substr(s.pos).starts_with('\n')) ++s.pos;
    return kOk;
  }
}

int TextSlots::WriteLine(int slot, const std::string& line) {
  auto it = slots_.find(slot);
  if (it == slots_.end() || !it->second.output) return kNomeNonValido;
  std::string data = line;
  data += "\r\n";
  return it->second.output->Write(data.data(), data.size());
}

int TextSlots::Flush(int slot) {
  auto it = slots_.find(slot);
  if (it == slots_.end() || !it->second.output) return kNomeNonValido;
  return it->second.output->Flush();
}

bool TextSlots::AtEnd(int slot) {
  auto it = slots_.find(slot);
  if (it == slots_.end() || !it->second.input) return true;
  Fill(it->second);
  return it->second.pos >= it->second.buffer.size();
}

int TextSlots::Close(int slot) {
  auto it = slots_.find(slot);
  if (it == slots_.end()) return kOk;
  int failure = kOk;
  if (it->second.output) failure = it->second.output->Close();
  slots_.erase(it);
  return failure;
}

void TextSlots::CloseAll() {
  while (!slots_.empty()) Close(slots_.begin()->first);
}

}  // namespace vf
