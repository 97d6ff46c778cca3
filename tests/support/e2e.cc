#include "tests/support/e2e.h"

#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <sstream>

namespace vf::test {

namespace fs = std::filesystem;

TempTree::TempTree() {
  std::string pattern = (fs::temp_directory_path() / "vf-test-XXXXXX").string();
  char* made = mkdtemp(pattern.data());
  root_ = made != nullptr ? fs::path(made) : fs::temp_directory_path() / "vf-test-fallback";
  fs::create_directories(root_);
}

TempTree::~TempTree() {
  std::error_code ec;
  // Read-only folders left by a test must not keep the tree from going.
  for (auto it = fs::recursive_directory_iterator(root_, ec);
       it != fs::recursive_directory_iterator(); it.increment(ec)) {
    fs::permissions(it->path(), fs::perms::owner_all, fs::perm_options::add, ec);
  }
  fs::remove_all(root_, ec);
}

void TempTree::Write(const std::string& relative, const std::string& bytes) const {
  fs::path p = Path(relative);
  fs::create_directories(p.parent_path());
  std::ofstream(p, std::ios::binary) << bytes;
}

void TempTree::MakeFolder(const std::string& relative) const {
  fs::create_directories(Path(relative));
}

std::string TempTree::Read(const std::string& relative) const {
  std::ifstream in(Path(relative), std::ios::binary);
  if (!in) return "<missing>";
  std::ostringstream s;
  s << in.rdbuf();
  return s.str();
}

bool TempTree::Exists(const std::string& relative) const {
  std::error_code ec;
  return fs::exists(fs::symlink_status(Path(relative), ec));
}

std::vector<std::string> TempTree::Tree(const std::string& relative) const {
  std::vector<std::string> out;
  fs::path base = Path(relative);
  std::error_code ec;
  for (auto it = fs::recursive_directory_iterator(base, ec);
       it != fs::recursive_directory_iterator(); it.increment(ec)) {
    std::string name = fs::relative(it->path(), base).string();
    if (it->is_directory()) name += "/";
    out.push_back(name);
  }
  std::sort(out.begin(), out.end());
  return out;
}

namespace {

// Runs the runner with `argument`, in a folder of its own for its outputs
// (and for the script, when one is written first).
RunResult Run(const std::string* script, const std::string& argument, const fs::path& cwd,
              const std::string& home) {
  RunResult r;
  std::string pattern = (fs::temp_directory_path() / "vf-run-XXXXXX").string();
  char* made = mkdtemp(pattern.data());
  fs::path work = made != nullptr ? fs::path(made) : cwd;
  std::string arg = argument;
  if (script != nullptr) {
    std::ofstream(work / "script.txt", std::ios::binary) << *script;
    arg = (work / "script.txt").string();
  }
  std::string command = "cd '" + cwd.string() + "' && " +
                        (home.empty() ? "" : "HOME='" + home + "' ") + "'" VF_RUNNER "' '" + arg +
                        "' > '" + (work / "out").string() + "' 2> '" + (work / "err").string() +
                        "'";
  int status = std::system(command.c_str());
  r.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  auto slurp = [](const fs::path& p) {
    std::ifstream in(p, std::ios::binary);
    std::ostringstream s;
    s << in.rdbuf();
    return s.str();
  };
  r.out = slurp(work / "out");
  r.err = slurp(work / "err");
  std::istringstream lines(r.out);
  for (std::string line; std::getline(lines, line);) r.lines.push_back(line);
  std::error_code ec;
  fs::remove_all(work, ec);
  return r;
}

}  // namespace

RunResult RunScript(const std::string& script, const fs::path& cwd, const std::string& home) {
  return Run(&script, "", cwd, home);
}

RunResult RunRunner(const std::string& argument, const fs::path& cwd) {
  return Run(nullptr, argument, cwd, "");
}

std::string CrLf(const std::vector<std::string>& lines) {
  std::string out;
  for (const std::string& l : lines) out += l + "\r\n";
  return out;
}

void WriteFixtureTemplates(const TempTree& tree, const std::string& folder, int places) {
  const std::string f = folder.empty() ? "" : folder + "/";
  tree.Write(f + "INTESTAZ.HTM",
             CrLf({"<head><title>Prova</title></head>", "<body BACKGROUND=\"sfondo1g.jpg\">",
                   "<marquee>Titolo</marquee>", "<div><center>"}));
  tree.Write(f + "INTEST_2.HTM", CrLf({"<head><title>Prova 2</title></head>", "<body>",
                                       "<p background>via</p>", "<div><center>"}));
  tree.Write(f + "PIEDE.HTM", CrLf({"</body>", "</HTML>"}));
  tree.Write(f + "PIEDE_2.HTM", CrLf({"<p>piede 2</p>", "</HTML>"}));
  std::vector<std::string> menu = {"<html><head><title>menu immagini - pag.1</title></head>",
                                   "<a href=\"../dir_000p/menu.htm\">prec</a>",
                                   "<a href=\"../dir_000s/menu.htm\">succ</a>"};
  for (int i = 1; i <= places; ++i) {
    char name[32];
    std::snprintf(name, sizeof name, "img_%03d", i);
    menu.push_back(std::string("<a href=\"") + name + ".htm\"><img src=\"" + name + ".jpg\"></a>");
  }
  menu.push_back("</html>");
  tree.Write(f + "MENU.HTM", CrLf(menu));
  for (const char* picture :
       {"puls_sx3.jpg", "puls_su3.jpg", "puls_dx3.jpg", "sfondo_1.gif", "sfondo_2.gif",
        "pulsante.jpg", "diaposit.jpg", "film-1a.jpg", "foto-1a.jpg", "htm-1a.jpg", "music-1a.jpg",
        "sfondo1g.jpg", "sfondo1p.jpg"}) {
    tree.Write(f + picture, std::string("picture ") + picture);
  }
  for (int i = 1; i <= places; ++i) {
    char name[32], prev[32], next[32];
    std::snprintf(name, sizeof name, "img_%03d", i);
    std::snprintf(prev, sizeof prev, "img_%03d", i - 1);
    std::snprintf(next, sizeof next, "img_%03d", i + 1);
    std::vector<std::string> page = {"<html><body>", std::string("<img src=\"") + name + ".jpg\">",
                                     std::string("<a href=\"") + prev + ".htm\">prev</a>",
                                     std::string("<a href=\"") + next + ".htm\">next</a>"};
    if (i == places) page.push_back("<a href=\"../dir_000s/menu.htm\">album</a>");
    page.push_back("</body></html>");
    char file[64];
    std::snprintf(file, sizeof file, "VETRINA-FOTO_DEFAULT/dir_0001/IMG_%03d.HTM", i);
    tree.Write(f + file, CrLf(page));
  }
}

}  // namespace vf::test
