// The runner's script language over fuzzed scripts, on the real file layer.
// Drive C: is a fresh temporary folder for each script, D: a read-only
// folder with a small template set and every other letter a second
// temporary folder. These mappings go in right before the script's "start",
// after any "drive" line of its own, so the script's lines are all read but
// no script reaches another host folder. A script may do anything the
// language allows, but the runner must give one of its exit statuses and
// never crash.

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <string_view>

#include "script/script_runner.h"
#include "tests/fuzz/fuzz_support.h"

namespace vf::fuzz {
namespace {

namespace fs = std::filesystem;

// Builds cost a folder of files each; more of them only lengthen the run.
constexpr int kMaxClicks = 8;
constexpr int kMaxLines = 120;

void WriteFile(const fs::path& path, const std::string& bytes) {
  fs::create_directories(path.parent_path());
  std::ofstream(path, std::ios::binary) << bytes;
}

// The program folder: templates with every marker, made once.
class ProgramFolder {
 public:
  ProgramFolder() {
    const fs::path& root = temp_.root();
    WriteFile(root / "MENU.HTM",
              CrLf("<title>Menu immagini - pag.1</title>\n"
                   "<a href=\"../dir_000p/menu.htm\">prev</a> <a href=\"../dir_000s/menu.htm\">"
                   "next</a>\n<img src=\"img_001.jpg\"><img src=\"img_002.jpg\">\n"));
    WriteFile(root / "INTESTAZ.HTM",
              CrLf("<head><title>Foto</title></head>\n<body background=x>\n"));
    WriteFile(root / "PIEDE.HTM", CrLf("</body>\n"));
    for (const char* place : {"001", "002", "003"}) {
      WriteFile(root / "VETRINA-FOTO_DEFAULT" / "dir_0001" / ("IMG_" + std::string(place) + ".HTM"),
                CrLf("<img src=\"img_" + std::string(place) +
                     ".jpg\">\n<a href=\"../dir_000s/menu.htm\">next</a>\n"));
    }
    for (const char* picture : {"pulsante.jpg", "puls_sx3.jpg", "sfondo_1.gif"}) {
      WriteFile(root / picture, picture);
    }
  }
  std::string Host() const { return temp_.root().string(); }

 private:
  TempFolder temp_;
};

std::string FirstWord(const std::string& line) {
  std::istringstream in(line);
  std::string word;
  in >> word;
  return word;
}

// The fuzzed script with the harness's drives put in before its start.
std::string Script(std::string_view input, const fs::path& temp, const std::string& program) {
  std::string drives = "drive C " + (temp / "c").string() + "\n";
  drives += "drive D " + program + " readonly\n";
  for (char letter = 'A'; letter <= 'Z'; ++letter) {
    if (letter != 'C' && letter != 'D') {
      drives += std::string("drive ") + letter + " " + (temp / "altri").string() + "\n";
    }
  }
  std::string script = "program D:\\\n";
  bool started = false;
  int clicks = 0;
  int lines = 0;
  size_t pos = 0;
  while (pos < input.size() && lines < kMaxLines) {
    size_t end = input.find('\n', pos);
    if (end == std::string_view::npos) end = input.size();
    std::string line(input.substr(pos, end - pos));
    pos = end + 1;
    std::string word = FirstWord(line);
    if (word == "click" && ++clicks > kMaxClicks) continue;
    if (word == "start" && !started) {
      script += drives;
      started = true;
    }
    script += line + "\n";
    ++lines;
  }
  return script;
}

}  // namespace
}  // namespace vf::fuzz

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace vf;
  using namespace vf::fuzz;
  namespace fs = std::filesystem;
  static const ProgramFolder program;
  TempFolder temp;
  fs::create_directories(temp.root() / "altri");
  WriteFile(temp.root() / "c" / "Foto" / "Mare" / "a.jpg", "a");
  WriteFile(temp.root() / "c" / "Foto" / "Mare" / "B.JPG", "b");
  WriteFile(temp.root() / "c" / "Foto" / "c.jpg", "c");

  std::istringstream script(Script(std::string_view(reinterpret_cast<const char*>(data), size),
                                   temp.root(), program.Host()));
  std::ostringstream out;
  std::ostringstream err;
  ScriptRunner runner(out, err, temp.root().string());
  int status = runner.Run(script);
  Check(status == kScriptFinito || status == kScriptErrore || status == kScriptNonCapito,
        "an exit status outside the runner's three");
  for (const fs::directory_entry& entry : fs::directory_iterator(temp.root())) {
    std::string name = entry.path().filename().string();
    Check(name == "c" || name == "altri", "the script wrote beside its drive folders", name);
  }
  return 0;
}
