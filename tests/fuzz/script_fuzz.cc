// The runner over fuzzed scripts, on the host's files: every drive is one
// emptied host folder with a few pictures, but D: the program's templates,
// read-only. These go in right before "start", after any "drive" line of the
// script, so that no script reaches beyond them; none may crash the runner.

#include <fstream>
#include <sstream>
#include <utility>

#include "script/script_runner.h"
#include "tests/fuzz/fuzz_support.h"

void vf::fuzz::FuzzOne(std::string_view input) {
  const fs::path root = EmptyHostFolder();
  const std::string c = (root / "c").string();
  for (const char* file : {"/Foto/Mare/a.jpg", "/Foto/Mare/B.JPG", "/Foto/c.jpg"}) {
    fs::create_directories(fs::path(c + file).parent_path());
    std::ofstream(c + file) << file;
  }
  std::string drives, script = "program D:\\\n";
  for (char d = 'A'; d <= 'Z'; ++d) drives += std::string("drive ") + d + ' ' + c + '\n';
  drives += "drive D " VF_TEMPLATES " readonly\n";
  int clicks = 0;  // each build makes a folder of files: a few are enough
  std::istringstream lines{std::string(input)};
  for (std::string line; std::getline(lines, line);) {
    std::string word;
    std::istringstream(line) >> word;
    if (word == "click" && ++clicks > 8) continue;
    if (word == "start") script += std::exchange(drives, "");
    script += line + '\n';
  }
  std::istringstream in(script);
  std::ostringstream out;
  ScriptRunner(out, out, root.string()).Run(in);
  Check(std::distance(fs::directory_iterator(root), {}) == 1, "made beside the drives");
}
