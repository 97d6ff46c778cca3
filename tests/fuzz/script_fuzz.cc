// The runner over fuzzed scripts, on the host's files: C: is an emptied host
// folder with a few pictures, every other drive the program's templates, read
// only. These go in right before "start", after any "drive" line of the
// script, so that no script reaches beyond them; none may crash the runner.

#include <fstream>
#include <sstream>
#include <utility>

#include "script/script_runner.h"
#include "tests/fuzz/fuzz_support.h"

void vf::fuzz::FuzzOne(std::string_view input) {
  const fs::path root = EmptyHostFolder();
  const std::string foto = (root / "c" / "Foto").string() + '/';
  fs::create_directories(foto + "Mare");
  for (const char* file : {"Mare/a.jpg", "Mare/B.JPG", "c.jpg"}) std::ofstream(foto + file) << file;
  std::string drives, script = "program D:\\\n";
  for (char d = 'A'; d <= 'Z'; ++d) {
    drives += std::string("drive ") + d + " " VF_TEMPLATES " readonly\n";
  }
  drives += "drive C " + (root / "c").string() + '\n';
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
