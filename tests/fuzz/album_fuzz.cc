// A build in memory over fuzzed templates and entries neither crashes nor ends the program. Lines
// "%%" split the input: album size, per row, flags (U capitals, 1 2 check boxes, P paged, Y yes to
// all) and page name, one a line; MENU.HTM; the picture page; the head and foot; the entries.

#include <filesystem>
#include <sstream>

#include "commands/creazione_index.h"
#include "commands/creazione_pagine.h"
#include "tests/fuzz/fuzz_support.h"
#include "tests/support/banco.h"

void vf::fuzz::FuzzOne(std::string_view input) {
  std::vector<std::string> lines[5];
  std::string text[5];  // the lines ended with CR LF, as templates are on disk
  size_t at = 0;
  std::istringstream in{std::string(input)};
  for (std::string line; at < 5 && std::getline(in, line); at += line == "%%") {
    if (line == "%%") continue;
    lines[at].push_back(line);
    text[at] += line + "\r\n";
  }
  lines[0].resize(4);
  auto flag = [&](char c) { return lines[0][2].find(c) != std::string::npos; };
  test::Banco b;
  const std::string place = "C:\\VETRINA\\VETRINA-FOTO_DEFAULT\\dir_0001\\IMG_00";
  for (char n = '1'; n <= '9'; ++n) b.fs.AddFile(place + n + ".HTM", text[2]);
  for (std::string name : {"MENU.HTM", "INTESTAZ.HTM", "INTEST_2.HTM", "PIEDE.HTM", "PIEDE_2.HTM",
                           "puls_sx3.jpg", "puls_dx3.jpg", "sfondo_1.gif", "pulsante.jpg"}) {
    b.fs.AddFile("C:\\VETRINA\\" + name, name.back() != 'M' ? name : text[name[0] == 'M' ? 1 : 3]);
  }
  b.fs.AddFolder("C:\\SITO");
  b.ui.answers.assign(1000, flag('Y'));
  FrmAlbum& f = b.v.frmALBUM;
  f.txtMAX_N_FILES.Text = lines[0][0];
  f.txtMAX_PER_RIGA.Text = lines[0][1];
  f.txtNOME_FILE_HTM.Text = lines[0][3];
  f.Option1.Value = flag('U');
  f.Check1.Value = flag('1');
  f.Check2.Value = flag('2');
  if (lines[4].size() > 12) lines[4].resize(12);  // more entries only make a longer run
  for (const std::string& entry : lines[4]) {
    // An entry below another entry's file cannot be on a disk; the list keeps it all the same.
    try {
      b.fs.AddFile(entry, "picture");
    } catch (const std::filesystem::filesystem_error&) {
    }
  }
  b.Aggiungi(lines[4]);
  f.txtNUM_FILE.Text = std::to_string(f.List1.ListCount());
  flag('P') ? Command4_Click(b.v) : Command1_Click(b.v);  // ending the program: a crash
}
