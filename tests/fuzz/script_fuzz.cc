// The runner over fuzzed scripts on the host's files, where none may crash it:
// C: an emptied host folder with pictures, every other drive the templates, read
// only, set right before "start" so that no script's drives reach beyond them.

#include <sstream>
#include <utility>

#include "script/script_runner.h"
#include "tests/fuzz/fuzz_support.h"

void vf::fuzz::FuzzOne(std::string_view input) {
  const fs::path root = HostFolderWith({"c/Foto/Mare/a.jpg", "c/Foto/Mare/B.JPG", "c/Foto/c.jpg"});
  std::string drives, script = "program D:\\\n";
  for (char d = 'A'; d <= 'Z'; ++d)
    drives += std::string("drive ") + d + " " VF_TEMPLATES " readonly\n";
  drives += "drive C " + (root / "c").string() + '\n';
  int clicks = 0;  // each build makes a folder of files: a few are enough
  std::istringstream lines{std::string(input)};
  for (std::string line, word; std::getline(lines, line); word.clear()) {
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
