#include "desktop/site_publishing.h"

#include <algorithm>
#include <memory>
#include <set>
#include <utility>
#include <vector>

#include "desktop/reason_words.h"
#include "desktop/site_words.h"
#include "desktop/user_area.h"
#include "pages/picture_header.h"
#include "publish/clean_copies.h"
#include "publish/host_site_disk.h"

namespace vf {
namespace {

constexpr size_t kMostLines = 20;

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

// `heading` and the first 20 of `lines`, each after a CR, then "(e altre
// N" and `more` when there are more: a long message would not fit a window.
std::string CutList(std::string heading, const std::vector<std::string>& lines,
                    const std::string& more = ")") {
  const size_t shown = std::min(lines.size(), kMostLines);
  for (size_t i = 0; i < shown; ++i) heading += "\r" + lines[i];
  if (shown < lines.size()) heading += "\r(e altre " + std::to_string(lines.size() - shown) + more;
  return heading;
}

// The failures of a write, the only reasons the user reads for a copy that
// still carries its data: the others come with a file that could not be
// cleaned at all, and say nothing the user can act on.
bool IsWriteFailure(const Reason& why) {
  return why.what == Reason::What::kDiskFull || why.what == Reason::What::kFolderMissing ||
         why.what == Reason::What::kWriteFailed;
}

}  // namespace

std::string BadLinesMessage(const SizesFile& sizes) {
  if (sizes.bad_lines.empty()) return {};
  // Each line is cut short already; a file of many bad lines is cut too.
  std::vector<std::string> lines;
  for (const SizesFile::BadLine& bad : sizes.bad_lines) {
    lines.push_back("riga " + std::to_string(bad.number) + ": " + bad.text);
  }
  return CutList("Righe non valide nel file DIMENSIONI.TXT, non considerate:", lines, " righe)");
}

std::string CleanMessage(const CleanOutcome& cleaned,
                         const std::function<std::string(const std::string&)>& photo) {
  std::vector<std::string> paragraphs;
  if (const size_t n = cleaned.identifying; n > 0) {
    paragraphs.push_back(
        "Dalle copie pubblicate sono stati tolti posizione GPS e dati dell'apparecchio di " +
        std::to_string(n) + (n == 1 ? " immagine." : " immagini."));
  }
  auto list = [&](const char* heading, const std::vector<CleanNote>& notes) {
    if (notes.empty()) return;
    // A photo in the list more than once is named once.
    std::vector<std::string> lines;
    std::set<std::string> told;
    for (const CleanNote& note : notes) {
      std::string line =
          photo(note.source) +
          (note.why && IsWriteFailure(*note.why) ? " - " + ReasonWords(*note.why) : "");
      if (told.insert(line).second) lines.push_back(std::move(line));
    }
    paragraphs.push_back(CutList(heading, lines));
  };
  list("Queste foto sono state scritte di nuovo senza i loro dati:", cleaned.rewritten);
  list("Queste foto sono pubblicate con i loro dati, posizione compresa:", cleaned.carrying);
  std::string m;
  for (const std::string& p : paragraphs) m += (m.empty() ? "" : "\r\r") + p;
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
    DeriveOptions options = options_;
    options.avif = sizes.avif;
    const DeriveOutcome outcome =
        DerivePictures(copies, sizes.sizes, site.capitals, progress_, options);
    // The copies are in the site already: they are cleaned even when the
    // user stops the pass, since cleaning takes a fraction of its time.
    std::optional<CleanOutcome> cleaned;
    if (!sizes.keep_metadata) {
      cleaned = CleanCopies(copies, options_.workers, CacheFolder() + "/pulite");
    }
    if (outcome.stopped) throw FineProgramma{};
    auto windows = [this](const std::string& host) { return fs_.WindowsPath(host).value_or(host); };
    // A photo with several sizes is named once for each cause.
    auto tell = [&](const char* heading, const std::vector<DeriveProblem>& problems) {
      if (problems.empty()) return;
      std::string m = heading;
      std::set<std::pair<std::string, std::string>> told;
      for (const DeriveProblem& p : problems) {
        const std::string words = ReasonWords(p.why);
        if (!told.insert({p.source, words}).second) continue;
        m += "\r" + windows(p.source) + " - " + words;
      }
      messages.push_back(m);
    };
    tell("Immagini non riducibili, copiate come sono:", outcome.plain_copies);
    tell("Immagini ridotte non scritte:", outcome.failed);
    tell("Immagini senza versione AVIF (le pagine mostrano la JPEG):", outcome.avif_missing);
    if (std::string m = cleaned ? CleanMessage(*cleaned, windows) : ""; !m.empty()) {
      messages.push_back(std::move(m));
    }
  }
  // The pages say what their photos are; a page that cannot be rewritten
  // keeps the template's words, which is no loss worth a message.
  if (StartPictureHeaders()) {
    HostSiteDisk disk;
    WritePageWords(WordsOfSite(site, fs_, sizes, HomeFolder()), disk, ReadPictureHeader,
                   options_.workers, EndPictureHeaderThread);
  }
  for (const std::string& m : messages) ui_.Message(m);
}

}  // namespace vf
