#include "publish/derived_pass.h"

#include <algorithm>
#include <filesystem>
#include <memory>
#include <set>
#include <utility>

#include "desktop/reason_words.h"
#include "platform/case_fold.h"
#include "publish/derived_pictures.h"
#include "publish/sizes_file.h"

namespace vf {
namespace {

constexpr size_t kMostBadLines = 20;

// "img_" + three digits + "." in any case: the copy of a list entry.
bool PlaceName(const std::string& name, const char* prefix, size_t digits) {
  const size_t n = std::char_traits<char>::length(prefix);
  if (name.size() < n + digits || !EqualIgnoringCase(name.substr(0, n), prefix)) return false;
  for (size_t i = n; i < n + digits; ++i) {
    if (name[i] < '0' || name[i] > '9') return false;
  }
  return true;
}

bool CopyOfAnEntry(const std::string& target) {
  const std::filesystem::path p(target);
  const std::string name = p.filename().string();
  return PlaceName(name, "img_", 3) && name.size() > 7 && name[7] == '.' &&
         PlaceName(p.parent_path().filename().string(), "dir_", 4) &&
         p.parent_path().filename().string().size() == 8;
}

// The whole text of a file, or nothing when it cannot be read.
bool ReadAll(FileSystem& fs, const std::string& path, std::string* text) {
  std::unique_ptr<InputFile> file;
  if (fs.OpenInput(path, &file) != 0) return false;
  char buffer[4096];
  size_t got = 0;
  while (file->Read(buffer, sizeof buffer, &got) == 0 && got > 0) text->append(buffer, got);
  return true;
}

}  // namespace

DerivedPass RunDerivedPass(HostFileSystem& fs, const std::string& program_folder, bool capitals,
                           const std::function<bool(size_t, size_t)>& progress,
                           const DeriveOptions& options) {
  DerivedPass pass;
  const std::vector<HostFileSystem::Copied> copied = fs.TakeCopies();
  std::string text;
  std::string folder = program_folder;
  if (!folder.ends_with('\\')) folder += '\\';
  if (!ReadAll(fs, folder + "DIMENSIONI.TXT", &text)) return pass;
  const SizesFile sizes = ParseSizesFile(text);
  if (!sizes.bad_lines.empty()) {
    std::string m = "Righe non valide nel file DIMENSIONI.TXT, non considerate:";
    // Each line is cut short already; a file of many bad lines is cut too.
    const size_t shown = std::min(sizes.bad_lines.size(), kMostBadLines);
    for (size_t i = 0; i < shown; ++i) m += "\r" + sizes.bad_lines[i];
    if (shown < sizes.bad_lines.size()) {
      m += "\r(e altre " + std::to_string(sizes.bad_lines.size() - shown) + " righe)";
    }
    pass.messages.push_back(m);
  }
  std::vector<CopyRecord> copies;
  for (const HostFileSystem::Copied& c : copied) {
    if (CopyOfAnEntry(c.to)) copies.push_back({c.from, c.to});
  }
  if (copies.empty()) return pass;
  const DeriveOutcome outcome = DerivePictures(copies, sizes.sizes, capitals, progress, options);
  pass.stopped = outcome.stopped;
  // A photo with several sizes is named once for each cause.
  auto tell = [&](const char* heading, const std::vector<DeriveProblem>& problems) {
    if (problems.empty()) return;
    std::string m = heading;
    std::set<std::pair<std::string, std::string>> told;
    for (const DeriveProblem& p : problems) {
      if (!told.insert({p.source, ReasonWords(p.why)}).second) continue;
      m += "\r" + fs.WindowsPath(p.source).value_or(p.source) + " - " + ReasonWords(p.why);
    }
    pass.messages.push_back(m);
  };
  tell("Immagini non riducibili, copiate come sono:", outcome.plain_copies);
  tell("Immagini ridotte non scritte:", outcome.failed);
  return pass;
}

}  // namespace vf
