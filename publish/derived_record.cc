#include "publish/derived_record.h"

#include <glib.h>

#include <charconv>
#include <memory>
#include <utility>
#include <vector>

#include "platform/case_fold.h"

namespace vf {
namespace {

constexpr std::string_view kFirstLine = "vetrina-derivate 5";

// No name holds a "/", so the AVIF's key cannot be a picture's.
std::string Key(std::string_view folder, std::string_view copy_name, bool avif) {
  std::string key = ToLower(folder);
  key += '/';
  key += ToLower(copy_name);
  if (avif) key += "/avif";
  return key;
}

void AppendEscaped(std::string* out, std::string_view text) {
  for (char c : text) {
    switch (c) {
      case '\\':
        *out += "\\\\";
        break;
      case '\t':
        *out += "\\t";
        break;
      case '\n':
        *out += "\\n";
        break;
      case '\r':
        *out += "\\r";
        break;
      default:
        *out += c;
    }
  }
}

bool Unescape(std::string_view text, std::string* out) {
  out->clear();
  for (size_t i = 0; i < text.size(); ++i) {
    if (text[i] != '\\') {
      *out += text[i];
      continue;
    }
    if (++i == text.size()) return false;
    switch (text[i]) {
      case '\\':
        *out += '\\';
        break;
      case 't':
        *out += '\t';
        break;
      case 'n':
        *out += '\n';
        break;
      case 'r':
        *out += '\r';
        break;
      default:
        return false;
    }
  }
  return true;
}

template <typename Number>
bool ReadNumber(std::string_view text, Number* value) {
  const char* end = text.data() + text.size();
  auto [at, error] = std::from_chars(text.data(), end, *value);
  return error == std::errc() && at == end;
}

std::vector<std::string_view> SplitFields(std::string_view line) {
  std::vector<std::string_view> fields;
  size_t start = 0;
  while (true) {
    size_t tab = line.find('\t', start);
    fields.push_back(line.substr(start, tab - start));
    if (tab == std::string_view::npos) return fields;
    start = tab + 1;
  }
}

// "key" or "key detail", as ReasonText writes it.
bool ParseReason(std::string_view text, std::optional<Reason>* reason) {
  const size_t space = text.find(' ');
  const std::optional<Reason::What> what = ReasonFromKey(text.substr(0, space));
  if (!what) return false;
  reason->emplace();
  (*reason)->what = *what;
  if (space != std::string_view::npos) (*reason)->detail = text.substr(space + 1);
  return true;
}

std::string ReasonText(const Reason& reason) {
  std::string text(ReasonKey(reason.what));
  if (reason.what == Reason::What::kTooLarge) text += " " + reason.detail;
  return text;
}

bool ParseLine(std::string_view line, DerivedEntry* entry) {
  std::vector<std::string_view> fields = SplitFields(line);
  if (fields.size() != 10) return false;
  std::string why;
  if (!Unescape(fields[0], &entry->folder) || !Unescape(fields[2], &entry->copy_name) ||
      !Unescape(fields[3], &entry->source) || !Unescape(fields[9], &why)) {
    return false;
  }
  if (!ReadNumber(fields[1], &entry->pixels) || !ReadNumber(fields[4], &entry->bytes) ||
      !ReadNumber(fields[5], &entry->mtime_ns) || !ReadNumber(fields[6], &entry->made_bytes) ||
      !ReadNumber(fields[7], &entry->made_mtime_ns)) {
    return false;
  }
  if (fields[8] == "c") {
    if (!ParseReason(why, &entry->plain)) return false;
  } else if ((fields[8] != "s" && fields[8] != "a") || !why.empty()) {
    return false;
  }
  entry->avif = fields[8] == "a";
  // A name is one step inside the album folder; anything else is not one
  // this program wrote, and must not lead a rename elsewhere.
  auto one_step = [](const std::string& name) {
    return !name.empty() && name.find_first_of(std::string_view("/\0", 2)) == std::string::npos;
  };
  return one_step(entry->folder) && one_step(entry->copy_name);
}

}  // namespace

std::string SourceKey(std::string_view host_path) {
  const std::string folded = ToLower(host_path);
  const std::unique_ptr<gchar, decltype(&g_free)> digest(
      g_compute_checksum_for_string(G_CHECKSUM_SHA256, folded.data(),
                                    static_cast<gssize>(folded.size())),
      g_free);
  return digest ? std::string(digest.get()) : std::string();
}

DerivedRecord DerivedRecord::Parse(std::string_view text) {
  DerivedRecord record;
  size_t end = text.find('\n');
  if (text.substr(0, end) != kFirstLine) return record;
  while (end != std::string_view::npos) {
    size_t start = end + 1;
    end = text.find('\n', start);
    DerivedEntry entry;
    if (ParseLine(text.substr(start, end - start), &entry)) record.Put(std::move(entry));
  }
  return record;
}

const DerivedEntry* DerivedRecord::Find(std::string_view folder, std::string_view copy_name,
                                        bool avif) const {
  auto found = entries_.find(Key(folder, copy_name, avif));
  return found == entries_.end() ? nullptr : &found->second;
}

void DerivedRecord::Put(DerivedEntry entry) {
  std::string key = Key(entry.folder, entry.copy_name, entry.avif);
  entries_.insert_or_assign(std::move(key), std::move(entry));
}

void DerivedRecord::Erase(std::string_view folder, std::string_view copy_name, bool avif) {
  entries_.erase(Key(folder, copy_name, avif));
}

std::string DerivedRecord::Text() const {
  std::string text(kFirstLine);
  text += '\n';
  for (const auto& [key, entry] : entries_) {
    AppendEscaped(&text, entry.folder);
    text += '\t' + std::to_string(entry.pixels) + '\t';
    AppendEscaped(&text, entry.copy_name);
    text += '\t';
    AppendEscaped(&text, entry.source);
    for (int64_t number : {entry.bytes, entry.mtime_ns, entry.made_bytes, entry.made_mtime_ns}) {
      text += '\t' + std::to_string(number);
    }
    text += entry.plain ? "\tc\t" : entry.avif ? "\ta\t" : "\ts\t";
    if (entry.plain) AppendEscaped(&text, ReasonText(*entry.plain));
    text += '\n';
  }
  return text;
}

}  // namespace vf
