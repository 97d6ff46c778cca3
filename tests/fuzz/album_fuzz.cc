// A whole build over fuzzed templates and list entries, in memory. The input
// is read in sections split by "%%" lines:
//   0: album size, pictures per row, flags, page name (one a line); the flags
//      are letters: U capitals, 1 and 2 the two check boxes, P the paged
//      build, Y yes to every question
//   1: MENU.HTM
//   2: the per-picture template, for every place of an album
//   3: the head and foot templates
//   4: the list entries, one a line; each names a picture that exists
// Every marker rewriting, split and album step runs on what the person
// supplied, and none of it may crash.

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "commands/creazione_index.h"
#include "commands/creazione_pagine.h"
#include "tests/support/memory_file_system.h"
#include "shell/avvio.h"
#include "shell/vetrina.h"
#include "tests/fuzz/fuzz_support.h"

namespace vf::fuzz {
namespace {

// More entries than this only repeat the same work with a longer run.
constexpr size_t kMaxEntries = 12;
constexpr int kTemplatePlaces = 12;

std::vector<std::string> Lines(const std::string& text) {
  std::vector<std::string> lines;
  size_t pos = 0;
  while (pos < text.size()) {
    size_t end = text.find('\n', pos);
    if (end == std::string::npos) end = text.size();
    std::string line = text.substr(pos, end - pos);
    if (!line.empty() && line.back() == '\r') line.pop_back();
    lines.push_back(std::move(line));
    pos = end + 1;
  }
  return lines;
}

std::string Line(const std::vector<std::string>& lines, size_t i, std::string fallback) {
  return i < lines.size() ? lines[i] : fallback;
}

}  // namespace
}  // namespace vf::fuzz

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace vf;
  using namespace vf::fuzz;
  const std::vector<std::string> sections =
      Sections(std::string_view(reinterpret_cast<const char*>(data), size));
  auto section = [&](size_t i) { return i < sections.size() ? sections[i] : std::string(); };
  const std::vector<std::string> settings = Lines(section(0));
  const std::string flags = Line(settings, 2, "");
  auto flag = [&](char c) { return flags.find(c) != std::string::npos; };

  MemoryFileSystem fs;
  const std::string program = "C:\\VETRINA";
  fs.AddFile(program + "\\MENU.HTM", CrLf(section(1)));
  for (int place = 1; place <= kTemplatePlaces; ++place) {
    std::string nnn = std::to_string(place);
    nnn.insert(0, 3 - nnn.size(), '0');
    fs.AddFile(program + "\\VETRINA-FOTO_DEFAULT\\dir_0001\\IMG_" + nnn + ".HTM", CrLf(section(2)));
  }
  for (const char* name : {"INTESTAZ.HTM", "INTEST_2.HTM", "PIEDE.HTM", "PIEDE_2.HTM"}) {
    fs.AddFile(program + "\\" + name, CrLf(section(3)));
  }
  for (const char* name : {"puls_sx3.jpg", "puls_dx3.jpg", "sfondo_1.gif", "pulsante.jpg"}) {
    fs.AddFile(program + "\\" + name, name);
  }
  fs.AddFolder("C:\\SITO");

  SilentUi ui(program, flag('Y') ? 0xFFFFFFFFu : 0u);
  Vetrina v(fs, ui);
  Main(v);
  FrmAlbum& f = v.frmALBUM;
  f.txtMAX_N_FILES.Text = Line(settings, 0, "9");
  f.txtMAX_PER_RIGA.Text = Line(settings, 1, "5");
  f.txtNOME_FILE_HTM.Text = Line(settings, 3, "C:\\SITO\\index.htm");
  f.Option1.Value = flag('U') ? 1 : 0;
  f.Option2.Value = flag('U') ? 0 : 1;
  f.Check1.Value = flag('1') ? 1 : 0;
  f.Check2.Value = flag('2') ? 1 : 0;

  std::vector<std::string> entries = Lines(section(4));
  if (entries.size() > kMaxEntries) entries.resize(kMaxEntries);
  for (const std::string& entry : entries) {
    fs.AddFile(entry, "picture " + entry);
    f.List1.AddItem(entry);
  }
  f.txtNUM_FILE.Text = std::to_string(f.List1.ListCount());

  try {
    if (flag('P')) {
      Command4_Click(v);
    } else {
      Command1_Click(v);
    }
  } catch (const FineProgramma&) {
    Fail("a build ended the program");
  }

  return 0;
}
