// Paths as a person types them: the splits of the list entries and of the
// page name, case folding, Windows path reading, and the host file layer's
// resolution. The first line of the input is the path, the second (if any)
// the current folder to go to first. A path resolved on the host must stay
// inside the folder of its drive, whatever its dots, slashes and bytes, and
// so must every change made at it.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "commands/creazione_index.h"
#include "filelist/dialoghi.h"
#include "generator/ciclo_voci.h"
#include "platform/case_fold.h"
#include "platform/failure.h"
#include "platform/host_file_system.h"
#include "tests/support/memory_file_system.h"
#include "platform/windows_path.h"
#include "shell/avvio.h"
#include "shell/testo.h"
#include "tests/fuzz/fuzz_support.h"

namespace vf::fuzz {
namespace {

namespace fs = std::filesystem;

// Two drive folders with a few names that differ only in case, made once.
class HostDrives {
 public:
  HostDrives() {
    for (const char* folder : {"c/Foto/Vacanze", "c/FOTO2", "c/sito/dir_0001", "d/Dati"}) {
      fs::create_directories(temp_.root() / folder);
    }
    for (const char* file : {"c/Foto/a.jpg", "c/Foto/A.JPG", "c/sito/index.htm", "d/leggimi.txt"}) {
      std::ofstream(temp_.root() / file) << file;
    }
  }
  std::string Root(char drive) const {
    return (temp_.root() / std::string(1, drive == 'C' ? 'c' : 'd')).string();
  }

 private:
  TempFolder temp_;
};

bool IsSplitAtLastBackslash(std::string_view whole, const std::string& folder,
                            const std::string& name) {
  return folder + name == whole && name.find('\\') == std::string::npos &&
         (folder.empty() || folder.back() == '\\');
}

void CheckSplits(const std::string& text, const std::string& base) {
  PercorsoDiviso diviso = Taglia_Percorso(text);
  Check(IsSplitAtLastBackslash(text, diviso.Cartella, diviso.Nome), "Taglia_Percorso", text);

  MemoryFileSystem memory;
  SilentUi ui("C:\\VETRINA");
  Vetrina v(memory, ui);
  Main(v);
  for (int upper : {0, 1}) {
    v.frmALBUM.Option1.Value = upper;
    v.frmALBUM.Option2.Value = 1 - upper;
    StatoEsecuzione s;
    s.Riga = text;
    Dividi_Percorso(v, s);
    Check(IsSplitAtLastBackslash(CasoScelto(v, text), s.Dir_File, s.Nome_File), "Dividi_Percorso",
          text);
    v.Module1.Dir_Base = base;
    Calcola_Dir_Relativa(v, s);
    Check(s.Dir_Relativa.size() <= s.Dir_File.size() &&
              s.Dir_File.compare(s.Dir_File.size() - s.Dir_Relativa.size(), std::string::npos,
                                 s.Dir_Relativa) == 0,
          "Calcola_Dir_Relativa", text);

    v.frmALBUM.txtNOME_FILE_HTM.Text = text;
    Nome_Output parti = Dividi_Nome_Output(v);
    Check(IsSplitAtLastBackslash(CasoScelto(v, Trim(text)), parti.cartella, parti.nome),
          "Dividi_Nome_Output", text);
  }
}

void CheckCaseFolding(const std::string& text) {
  const std::string upper = ToUpper(text);
  const std::string lower = ToLower(text);
  Check(upper.size() == text.size() && lower.size() == text.size(), "folding changes the length");
  Check(ToUpper(upper) == upper && ToLower(lower) == lower, "folding twice changes the text", text);
  Check(ToLower(upper) == lower && ToUpper(lower) == upper, "the two foldings disagree", text);
  Check(EqualIgnoringCase(text, upper) && EqualIgnoringCase(lower, text), "not equal to its fold",
        text);
  for (size_t i = 0; i < text.size(); ++i) {
    unsigned char c = static_cast<unsigned char>(text[i]);
    if (c >= 0x80) continue;
    char up = c >= 'a' && c <= 'z' ? static_cast<char>(c - 32) : static_cast<char>(c);
    // An ASCII byte after a C3 lead byte is a letter of its own.
    Check(upper[i] == up, "an ASCII byte folds wrongly", text);
  }
}

void CheckParsing(const std::string& text, const std::string& current_text) {
  ParsedPath current;
  if (!current_text.empty() && ParseWindowsPath(current_text, ParsedPath{}, &current) != kOk) {
    current = ParsedPath{};
  }
  ParsedPath parsed;
  if (ParseWindowsPath(text, current, &parsed) != kOk) return;
  Check(parsed.drive >= 'A' && parsed.drive <= 'Z', "a drive that is no capital", text);
  for (const std::string& part : parsed.parts) {
    Check(!part.empty() && part != "." && part != "..", "a dot part or empty part kept", text);
    for (char c : part) {
      unsigned char b = static_cast<unsigned char>(c);
      Check(b >= 0x20 && std::string_view("\\/<>\"|?*:").find(c) == std::string_view::npos,
            "a refused byte in a part", text);
    }
  }
  ParsedPath again;
  Check(ParseWindowsPath(FormatWindowsPath(parsed), ParsedPath{'Q', {"x"}}, &again) == kOk &&
            again.drive == parsed.drive && again.parts == parsed.parts,
        "the formatted path reads back otherwise", text);
}

void CheckHost(const HostDrives& drives, const std::string& text, const std::string& current) {
  HostFileSystem host({{'C', drives.Root('C'), false}, {'D', drives.Root('D'), true}});
  if (!current.empty()) {
    host.SetCurrentFolder(current);
    host.SetCurrentDrive(current);
  }
  std::optional<std::string> found = host.HostPath(text);
  if (found) {
    const std::string& path = *found;
    bool inside = false;
    for (char drive : {'C', 'D'}) {
      const std::string root = drives.Root(drive);
      if (path == root) inside = true;
      if (path.size() > root.size() && path.compare(0, root.size(), root) == 0 &&
          path[root.size()] == '/') {
        fs::path below = fs::path(path.substr(root.size() + 1));
        inside = true;
        for (const fs::path& part : below) {
          if (part.empty() || part == "." || part == "..") inside = false;
        }
      }
    }
    Check(inside, "a path resolved outside its drive's folder", path);
    std::optional<std::string> back = host.WindowsPath(path);
    Check(back.has_value(), "a resolved path has no Windows form", path);
    Check(host.Normalize(*back) == host.Normalize(text), "the Windows form names another place",
          path);
  }
  // Reads only: none of these may reach beyond the two folders either.
  int attributes = 0;
  host.Attributes(text, &attributes);
  host.ListFolder(text);
  std::unique_ptr<InputFile> file;
  if (host.OpenInput(text, &file) == kOk) {
    char buffer[64];
    size_t got = 0;
    file->Read(buffer, sizeof buffer, &got);
  }
}

// Changes at the fuzzed path, on drives of a folder made for this input:
// whatever they make must land in one of the two drive folders.
void CheckHostChanges(const std::string& text, const std::string& current) {
  TempFolder temp;
  for (const char* file : {"c/uno.txt", "c/due.txt", "d/tre.txt"}) {
    fs::create_directories((temp.root() / file).parent_path());
    std::ofstream(temp.root() / file) << file;
  }
  HostFileSystem host(
      {{'C', (temp.root() / "c").string(), false}, {'D', (temp.root() / "d").string(), false}});
  if (!current.empty()) host.SetCurrentFolder(current);
  host.MakeFolder(text);
  std::unique_ptr<OutputFile> file;
  if (host.OpenOutput(text, &file) == kOk) {
    file->Write("x", 1);
    file->Close();
  }
  host.Copy("C:\\uno.txt", text);
  host.Rename("C:\\due.txt", text);
  host.Rename("D:\\tre.txt", text);
  std::vector<std::string> names;
  for (const fs::directory_entry& entry : fs::directory_iterator(temp.root())) {
    names.push_back(entry.path().filename().string());
  }
  std::sort(names.begin(), names.end());
  Check(names == std::vector<std::string>{"c", "d"}, "a change landed beside the drive folders",
        text);
}

}  // namespace
}  // namespace vf::fuzz

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace vf::fuzz;
  static const HostDrives drives;
  std::string_view input(reinterpret_cast<const char*>(data), size);
  size_t newline = input.find('\n');
  const std::string text(input.substr(0, newline));
  const std::string second(newline == std::string_view::npos ? std::string_view()
                                                             : input.substr(newline + 1));
  CheckSplits(text, second);
  CheckCaseFolding(std::string(input));
  CheckParsing(text, second);
  CheckHost(drives, text, second);
  CheckHostChanges(text, second);
  return 0;
}
