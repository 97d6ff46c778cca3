// The runner over fuzzed scripts on the host's files, where none may crash it:
// C: an emptied host folder with pictures, every other drive the templates, read
// only, set right before "start" so that no script's drives reach beyond them.

#include <fstream>
#include <iterator>
#include <sstream>
#include <utility>

#include "script/script_runner.h"
#include "tests/fuzz/fuzz_support.h"

void vf::fuzz::FuzzOne(std::string_view input) {
  // Beside the pictures, names that no page may carry into a link: the
  // scanner must leave them out, whatever the script does.
  const fs::path root = HostFolderWith({"c/Foto/Mare/a.jpg", "c/Foto/Mare/B.JPG", "c/Foto/c.jpg",
                                        "c/Foto/x\" onmouseover=\"a.mp3", "c/Foto/javascript:a.mp3",
                                        "c/Foto/javascript&#58;b.jpg", "c/Foto/q<>|/d.jpg",
                                        "c/Foto/Mare/p\\q.htm", "c/Foto/t\tab.jpg"});
  std::string drives, script = "program D:\\\n";
  for (char d = 'A'; d <= 'Z'; ++d)
    drives += std::string("drive ") + d + " " VF_TEMPLATES " readonly\n";
  drives += "drive C " + (root / "c").string() + '\n';
  int clicks = 0;        // each build makes a folder of files: a few are enough
  bool by_hand = false;  // an entry added or chosen by hand is taken whole
  std::istringstream lines{std::string(input)};
  for (std::string line, word; std::getline(lines, line); word.clear()) {
    std::istringstream(line) >> word;
    if (word == "click" && ++clicks > 8) continue;
    by_hand |= word == "add" || word == "choose";
    if (word == "start") script += std::exchange(drives, "");
    script += line + '\n';
  }
  std::istringstream in(script);
  std::ostringstream out;
  ScriptRunner(out, out, root.string()).Run(in);
  Check(std::distance(fs::directory_iterator(root), {}) == 1, "made beside the drives");
  if (by_hand) return;
  for (const auto& e : fs::recursive_directory_iterator(root)) {
    // The pages a build wrote, not the sources, whose contents are their names.
    const std::string where = e.path().string();
    if (!e.is_regular_file() || where.find("/c/Foto/") != std::string::npos) continue;
    std::ifstream page(e.path());
    const std::string text{std::istreambuf_iterator<char>(page), {}};
    Check(text.find("onmouseover") == std::string::npos &&
              text.find("javascript") == std::string::npos,
          "a hostile name in a page", e.path().string());
  }
}
