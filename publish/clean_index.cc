#include "publish/clean_index.h"

#include <glib.h>

#include <array>
#include <charconv>
#include <memory>
#include <optional>
#include <type_traits>
#include <utility>
#include <vector>

namespace vf {
namespace {

constexpr std::string_view kFirstLine = "vetrina-pulite 1";
constexpr size_t kFields = 8;

// Written into indexes on disk: a word may be added, never changed.
constexpr std::array<std::pair<CleanResult, std::string_view>, 3> kResults = {{
    {CleanResult::kQuiet, "quiet"},
    {CleanResult::kIdentifying, "identifying"},
    {CleanResult::kRewritten, "rewritten"},
}};

// 64 hexadecimal digits in small letters, as both digests are written.
bool IsDigest(std::string_view text) {
  return text.size() == 64 && text.find_first_not_of("0123456789abcdef") == std::string_view::npos;
}

// A number of the index is never negative: a size, a time since 1970, an
// inode.
template <typename Number>
bool ReadNumber(std::string_view text, Number* value) {
  const char* end = text.data() + text.size();
  auto [at, error] = std::from_chars(text.data(), end, *value);
  if (error != std::errc() || at != end) return false;
  if constexpr (std::is_signed_v<Number>) return *value >= 0;
  return true;
}

std::optional<CleanResult> ResultOf(std::string_view word) {
  for (const auto& [result, known] : kResults) {
    if (known == word) return result;
  }
  return std::nullopt;
}

bool ParseLine(std::string_view line, std::string* copy, StoredClean* entry) {
  std::vector<std::string_view> fields;
  for (size_t start = 0;;) {
    const size_t tab = line.find('\t', start);
    fields.push_back(line.substr(start, tab - start));
    if (tab == std::string_view::npos) break;
    start = tab + 1;
  }
  if (fields.size() != kFields || !IsDigest(fields[0]) || !IsDigest(fields[1])) return false;
  const std::optional<CleanResult> result = ResultOf(fields[7]);
  if (!result || !ReadNumber(fields[2], &entry->source_bytes) ||
      !ReadNumber(fields[3], &entry->source_mtime_ns) || !ReadNumber(fields[4], &entry->bytes) ||
      !ReadNumber(fields[5], &entry->mtime_ns) || !ReadNumber(fields[6], &entry->inode)) {
    return false;
  }
  *copy = fields[0];
  entry->source = fields[1];
  entry->result = *result;
  return true;
}

}  // namespace

std::string PathDigest(std::string_view host_path) {
  const std::unique_ptr<gchar, decltype(&g_free)> digest(
      g_compute_checksum_for_string(G_CHECKSUM_SHA256, host_path.data(),
                                    static_cast<gssize>(host_path.size())),
      g_free);
  return digest ? std::string(digest.get()) : std::string();
}

CleanIndex CleanIndex::Parse(std::string_view text) {
  CleanIndex index;
  size_t end = text.find('\n');
  if (text.substr(0, end) != kFirstLine) return index;
  while (end != std::string_view::npos) {
    const size_t start = end + 1;
    end = text.find('\n', start);
    std::string copy;
    StoredClean entry;
    if (ParseLine(text.substr(start, end - start), &copy, &entry)) {
      index.Put(std::move(copy), std::move(entry));
    }
  }
  return index;
}

const StoredClean* CleanIndex::Find(std::string_view copy) const {
  auto found = entries_.find(copy);
  return found == entries_.end() ? nullptr : &found->second;
}

void CleanIndex::Put(std::string copy, StoredClean entry) {
  entries_.insert_or_assign(std::move(copy), std::move(entry));
}

std::string CleanIndex::Text() const {
  std::string text(kFirstLine);
  text += '\n';
  for (const auto& [copy, entry] : entries_) {
    text += copy + '\t' + entry.source;
    for (int64_t number :
         {entry.source_bytes, entry.source_mtime_ns, entry.bytes, entry.mtime_ns}) {
      text += '\t' + std::to_string(number);
    }
    text += '\t' + std::to_string(entry.inode) + '\t';
    for (const auto& [result, word] : kResults) {
      if (result == entry.result) text += word;
    }
    text += '\n';
  }
  return text;
}

}  // namespace vf
