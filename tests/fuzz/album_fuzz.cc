// A whole build over fuzzed templates and list entries, in memory; none may
// crash it or end the program. Lines of "%%" split the input into: album size,
// pictures per row, flags (U capitals, 1 and 2 the check boxes, P paged, Y yes
// to all) and page name, one a line; MENU.HTM; every place's picture template;
// the head and foot templates; the entries, each a picture that exists.

#include <sstream>

#include "commands/creazione_index.h"
#include "commands/creazione_pagine.h"
#include "shell/avvio.h"
#include "shell/vetrina.h"
#include "tests/fuzz/fuzz_support.h"
#include "tests/support/banco.h"
#include "tests/support/memory_file_system.h"

void vf::fuzz::FuzzOne(std::string_view input) {
  std::vector<std::string> lines[5];
  std::string text[5];  // the lines ended with CR LF, as templates are on disk
  size_t at = 0;
  std::istringstream in{std::string(input)};
  for (std::string line; at < 5 && std::getline(in, line); at += line == "%%") {
    if (!line.empty() && line.back() == '\r') line.pop_back();
    if (line == "%%") continue;
    lines[at].push_back(line);
    text[at] += line + "\r\n";
  }
  auto setting = [&](size_t i) { return i < lines[0].size() ? lines[0][i] : std::string(); };
  auto flag = [&](char c) { return setting(2).find(c) != std::string::npos; };
  MemoryFileSystem fs;
  for (char place = '1'; place <= '9'; ++place) {
    fs.AddFile(std::string("C:\\VETRINA\\VETRINA-FOTO_DEFAULT\\dir_0001\\IMG_00") + place + ".HTM",
               text[2]);
  }
  for (std::string name : {"MENU.HTM", "INTESTAZ.HTM", "INTEST_2.HTM", "PIEDE.HTM", "PIEDE_2.HTM",
                           "puls_sx3.jpg", "puls_dx3.jpg", "sfondo_1.gif", "pulsante.jpg"}) {
    const bool page = name.back() == 'M';
    fs.AddFile("C:\\VETRINA\\" + name, !page ? name : name[0] == 'M' ? text[1] : text[3]);
  }
  fs.AddFolder("C:\\SITO");
  test::RecordingUi ui;
  ui.answers.assign(1000, flag('Y'));
  Vetrina v(fs, ui);
  Main(v);
  v.frmALBUM.txtMAX_N_FILES.Text = setting(0);
  v.frmALBUM.txtMAX_PER_RIGA.Text = setting(1);
  v.frmALBUM.txtNOME_FILE_HTM.Text = setting(3);
  v.frmALBUM.Option1.Value = flag('U');
  v.frmALBUM.Check1.Value = flag('1');
  v.frmALBUM.Check2.Value = flag('2');
  // More entries only repeat the same work with a longer run.
  for (size_t i = 0; i < lines[4].size() && i < 12; ++i) {
    fs.AddFile(lines[4][i], "picture");
    v.frmALBUM.List1.AddItem(lines[4][i]);
  }
  v.frmALBUM.txtNUM_FILE.Text = std::to_string(v.frmALBUM.List1.ListCount());
  // Should a build end the program, FineProgramma escapes here: a crash.
  flag('P') ? Command4_Click(v) : Command1_Click(v);
}
