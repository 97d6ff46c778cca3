#ifndef VF_TESTS_SUPPORT_BANCO_H_
#define VF_TESTS_SUPPORT_BANCO_H_

#include <deque>
#include <filesystem>
#include <functional>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "platform/failure.h"
#include "platform/host_file_system.h"
#include "platform/user_ops.h"
#include "publish/hand_over.h"
#include "shell/avvio.h"
#include "shell/vetrina.h"
#include "tests/support/e2e.h"

namespace vf {

// The folder of a TempTreeFileSystem's drives; a base, so that it is there before the layer.
struct Drives {
  test::TempTree tree;
};

// The file layer of the logic's tests: the host layer itself, with drives C:
// and D: in a temporary folder, and a journal of every change it made with the path as
// typed: "MKDIR C:\sito\dir_0001", "WRITE C:\sito\index.htm" (at the open),
// "COPY C:\a.jpg -> C:\sito\x.jpg", "RENAME C:\A.JPG -> C:\a.jpg".
class TempTreeFileSystem : private Drives, public HostFileSystem {
 public:
  TempTreeFileSystem() : HostFileSystem({{'C', Drive(tree, "C")}, {'D', Drive(tree, "D")}}) {}

  // Seeding, outside the journal: names exactly as given, folders on the way.
  void AddFile(const std::string& winpath, const std::string& bytes) { Seed(winpath, &bytes); }
  // The same by a host path below the drives' folder ("D/Foto/a<b.mp3"), for
  // names that no Windows path can spell.
  void AddHostFile(const std::string& relative, const std::string& bytes) {
    tree.Write(relative, bytes);
  }
  void AddFolder(const std::string& winpath) { Seed(winpath, nullptr); }
  // The bytes of a file, found as a read finds it.
  std::optional<std::string> Contents(const std::string& winpath) {
    const std::optional<std::string> host = HostPath(winpath);
    if (!host || !std::filesystem::is_regular_file(*host)) return std::nullopt;
    return tree.Read(std::filesystem::relative(*host, tree.root()).string());
  }
  const std::vector<std::string>& log() const { return log_; }

  // A disk with this many bytes free for what is written through it; none: no limit.
  // Lines written wait in the file's buffer, as on the host, and a full disk
  // shows when they are handed over (Flush or Close); a copy that does not
  // fit fails whole.
  std::optional<size_t> free_bytes;

  int OpenOutput(const std::string& path, std::unique_ptr<OutputFile>* file) override {
    int failure = HostFileSystem::OpenOutput(path, file);
    if (failure == kOk && free_bytes) *file = std::make_unique<Filling>(std::move(*file), *this);
    return Log(failure, "WRITE " + Typed(path));
  }
  int Copy(const std::string& from, const std::string& to) override {
    if (free_bytes) {
      const std::optional<std::string> bytes = Contents(from);
      if (bytes && bytes->size() > *free_bytes) return kDiscoPieno;
      if (bytes) *free_bytes -= bytes->size();
    }
    return Log(HostFileSystem::Copy(from, to), "COPY " + Typed(from) + " -> " + Typed(to));
  }
  int MakeFolder(const std::string& path) override {
    return Log(HostFileSystem::MakeFolder(path), "MKDIR " + Typed(path));
  }
  int Rename(const std::string& from, const std::string& to) override {
    return Log(HostFileSystem::Rename(from, to), "RENAME " + Typed(from) + " -> " + Typed(to));
  }

 private:
  static std::string Drive(const test::TempTree& tree, const char* letter) {
    tree.MakeFolder(letter);
    return tree.Path(letter).string();
  }
  void Seed(const std::string& winpath, const std::string* bytes) {
    ParsedPath path;
    if (Parse(winpath, &path) != kOk || (path.drive != 'C' && path.drive != 'D')) return;
    std::string relative(1, path.drive);
    for (const std::string& part : path.parts) relative += "/" + part;
    bytes != nullptr ? tree.Write(relative, *bytes) : tree.MakeFolder(relative);
  }
  std::string Typed(const std::string& path) const {
    ParsedPath parsed;
    Parse(path, &parsed);
    return FormatWindowsPath(parsed);
  }
  int Log(int failure, std::string line) {
    if (failure == kOk) log_.push_back(std::move(line));
    return failure;
  }

  // An output file on a disk that fills: the bytes not yet handed over are
  // counted against the free bytes when they are.
  struct Filling : OutputFile {
    Filling(std::unique_ptr<OutputFile> file, TempTreeFileSystem& disk)
        : inner(std::move(file)), disk(disk) {}
    int Write(const char* data, size_t size) override {
      pending += size;
      return inner->Write(data, size);
    }
    int Flush() override {
      if (failure == kOk && pending > *disk.free_bytes) failure = kDiscoPieno;
      if (failure != kOk) return failure;
      *disk.free_bytes -= pending;
      pending = 0;
      return inner->Flush();
    }
    int Close() override {
      int flushed = Flush();
      int closed = inner->Close();
      return flushed != kOk ? flushed : closed;
    }
    std::unique_ptr<OutputFile> inner;
    TempTreeFileSystem& disk;
    size_t pending = 0;
    int failure = kOk;
  };

  std::vector<std::string> log_;
};

}  // namespace vf

namespace vf::test {

// UserOps that records each event as one line in the runner's printed forms
// ("BEEP", "MSG: text", "ASK: text -> YES", "CURSOR: BUSY", "DIALOG: title |
// start | pattern -> result", "RUN: line -> OK", "END"). Answers and dialog
// results come from queues (empty: No and ""). Repaints are counted and may
// run a hook, as a command started at a repaint point would.
class RecordingUi : public UserOps {
 public:
  void Message(const std::string& text) override { events.push_back("MSG: " + text); }
  bool Question(const std::string& text) override {
    const bool yes = !answers.empty() && answers.front();
    if (!answers.empty()) answers.pop_front();
    events.push_back("ASK: " + text + (yes ? " -> YES" : " -> NO"));
    return yes;
  }
  void Beep() override { events.push_back("BEEP"); }
  void Cursor(bool busy) override { events.push_back(busy ? "CURSOR: BUSY" : "CURSOR: NORMAL"); }
  void Repaint() override {
    ++repaints;
    if (on_repaint) on_repaint();
  }
  std::string FileDialog(const std::string& title, const std::string& start,
                         const std::string& pattern) override {
    if (dialog_breaks) throw std::runtime_error("componente mancante");
    std::string result = dialog_results.empty() ? "" : dialog_results.front();
    if (!dialog_results.empty()) dialog_results.pop_front();
    events.push_back("DIALOG: " + title + " | " + start + " | " + pattern + " -> " + result);
    return result;
  }
  double ScreenWidthTwips() override { return screen_pixels * 15.0; }
  double TwipsPerPixelX() override { return 15.0; }
  std::string ProgramFolder() override { return program_folder; }
  bool StartCommand(const std::string& line) override {
    events.push_back("RUN: " + line + " -> OK");
    return true;
  }
  [[noreturn]] void End() override {
    events.push_back("END");
    throw FineProgramma{};
  }

  std::vector<std::string> events;
  std::deque<bool> answers;
  std::deque<std::string> dialog_results;
  int repaints = 0;
  std::function<void()> on_repaint;
  double screen_pixels = 1024;
  std::string program_folder = "C:\\VETRINA";
  bool dialog_breaks = false;
};

// The publishing step of the logic's tests: keeps what each build handed over.
class RecordingPublishing : public PublishingStep {
 public:
  void Publish(const BuiltSite& site) override { handed.push_back(site); }
  std::vector<BuiltSite> handed;
};

// A started program over a file layer in a temporary tree, the start's
// events dropped.
struct Banco {
  Banco() {
    Main(v);
    ui.events.clear();
  }
  std::vector<std::string> Voci() const {
    std::vector<std::string> voci;
    for (int64_t i = 0; i < v.frmALBUM.List1.ListCount(); ++i)
      voci.push_back(v.frmALBUM.List1.List(i));
    return voci;
  }
  // The events since the last call, joined by "|".
  std::string Eventi() {
    std::string out;
    for (const std::string& e : ui.events) out += (out.empty() ? "" : "|") + e;
    ui.events.clear();
    return out;
  }
  void Aggiungi(const std::vector<std::string>& voci) {
    for (const std::string& voce : voci) v.frmALBUM.List1.AddItem(voce);
  }

  TempTreeFileSystem fs;
  RecordingUi ui;
  RecordingPublishing publishing;
  Vetrina v{fs, ui, publishing};
};

}  // namespace vf::test

#endif  // VF_TESTS_SUPPORT_BANCO_H_
