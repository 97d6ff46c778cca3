#include "desktop/site_publishing.h"

#include <algorithm>
#include <memory>
#include <set>
#include <utility>
#include <vector>

#include "desktop/reason_words.h"

namespace vf {
namespace {

constexpr size_t kMostBadLines = 20;

// The whole text of a file, or nothing when it cannot be opened; a failed
// read keeps what was read.
bool ReadAll(FileSystem& fs, const std::string& path, std::string* text) {
  std::unique_ptr<InputFile> file;
  if (fs.OpenInput(path, &file) != 0) return false;
  char buffer[4096];
  size_t got = 0;
  while (file->Read(buffer, sizeof buffer, &got) == 0 && got > 0) text->append(buffer, got);
  return true;
}

}  // namespace

std::string BadLinesMessage(const SizesFile& sizes) {
  if (sizes.bad_lines.empty()) return {};
  std::string m = "Righe non valide nel file DIMENSIONI.TXT, non considerate:";
  // Each line is cut short already; a file of many bad lines is cut too.
  const size_t shown = std::min(sizes.bad_lines.size(), kMostBadLines);
  for (size_t i = 0; i < shown; ++i) {
    m += "\rriga " + std::to_string(sizes.bad_lines[i].number) + ": " + sizes.bad_lines[i].text;
  }
  if (shown < sizes.bad_lines.size()) {
    m += "\r(e altre " + std::to_string(sizes.bad_lines.size() - shown) + " righe)";
  }
  return m;
}

SitePublishing::SitePublishing(HostFileSystem& fs, UserOps& ui,
                               std::function<bool(size_t, size_t)> progress,
                               const DeriveOptions& options)
    : fs_(fs), ui_(ui), progress_(std::move(progress)), options_(options) {}

void SitePublishing::Publish(const BuiltSite& site) {
  std::string folder = ui_.ProgramFolder(), text;
  if (!folder.ends_with('\\')) folder += '\\';
  if (!ReadAll(fs_, folder + "DIMENSIONI.TXT", &text)) return;
  const SizesFile sizes = ParseSizesFile(text);
  std::vector<std::string> messages;
  if (std::string bad = BadLinesMessage(sizes); !bad.empty()) messages.push_back(std::move(bad));

  std::vector<CopyRecord> copies;
  for (const AlbumCopy& c : site.copies) {
    std::optional<std::string> source = fs_.HostPath(c.source), copy = fs_.HostPath(c.copy);
    if (source && copy) copies.push_back({*source, *copy});
  }
  if (!copies.empty()) {
    const DeriveOutcome outcome =
        DerivePictures(copies, sizes.sizes, site.capitals, progress_, options_);
    if (outcome.stopped) throw FineProgramma{};
    // A photo with several sizes is named once for each cause.
    auto tell = [&](const char* heading, const std::vector<DeriveProblem>& problems) {
      if (problems.empty()) return;
      std::string m = heading;
      std::set<std::pair<std::string, std::string>> told;
      for (const DeriveProblem& p : problems) {
        const std::string words = ReasonWords(p.why);
        if (!told.insert({p.source, words}).second) continue;
        m += "\r" + fs_.WindowsPath(p.source).value_or(p.source) + " - " + words;
      }
      messages.push_back(m);
    };
    tell("Immagini non riducibili, copiate come sono:", outcome.plain_copies);
    tell("Immagini ridotte non scritte:", outcome.failed);
  }
  for (const std::string& m : messages) ui_.Message(m);
}

}  // namespace vf
