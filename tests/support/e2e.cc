#include "tests/support/e2e.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <map>
#include <set>
#include <sstream>

namespace vf::test {

namespace fs = std::filesystem;

namespace {

fs::path MakeTemp(const char* name) {
  std::string pattern = (fs::temp_directory_path() / name).string();
  return mkdtemp(pattern.data()) != nullptr ? fs::path(pattern) : fs::temp_directory_path();
}

std::string Slurp(const fs::path& p) {
  std::ifstream in(p, std::ios::binary);
  if (!in) return "<missing>";
  std::ostringstream s;
  s << in.rdbuf();
  return s.str();
}

std::string CrLf(const std::string& text) {
  std::string out;
  for (char c : text) out += c == '\n' ? std::string("\r\n") : std::string(1, c);
  return out;
}

// What IdentifyingTags looks for in exiftool's output, per file: the file a
// "======== " line names, or `only` before any such line.
std::map<std::string, std::string> TagsFound(const std::string& output, const std::string& only) {
  std::map<std::string, std::set<std::string>> found;
  std::string file = only;
  if (!only.empty()) found[only];
  std::istringstream lines(output);
  for (std::string line; std::getline(lines, line);) {
    if (line.starts_with("======== ")) {
      found[file = line.substr(9)];
      continue;
    }
    std::string group, tag;
    std::istringstream(line) >> group >> tag;
    for (const char* start : {"[GPS]", "[XMP", "[IPTC]"}) {
      if (group.starts_with(start)) found[file].insert(start);
    }
    for (const char* name : {"SerialNumber", "OwnerName", "Artist", "Author"}) {
      if (tag == name) found[file].insert(name);
    }
  }
  std::map<std::string, std::string> out;
  for (const auto& [name, tags] : found) {
    std::string& joined = out[name];
    for (const std::string& t : tags) joined += (joined.empty() ? "" : " ") + t;
  }
  return out;
}

}  // namespace

RunResult RunScript(const std::string& script, const fs::path& cwd, const std::string& home,
                    bool argument) {
  const fs::path work = MakeTemp("vf-run-XXXXXX");
  std::string arg = script;
  if (!argument) {
    std::ofstream(work / "script.txt", std::ios::binary) << script;
    arg = (work / "script.txt").string();
  }
  const std::string command = "cd '" + cwd.string() + "' && " +
                              (home.empty() ? "" : "HOME='" + home + "' ") + "'" VF_RUNNER "' '" +
                              arg + "' > '" + (work / "out").string() + "' 2> '" +
                              (work / "err").string() + "'";
  const int status = std::system(command.c_str());
  RunResult r;
  r.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  r.out = Slurp(work / "out");
  r.err = Slurp(work / "err");
  std::error_code ec;
  fs::remove_all(work, ec);
  return r;
}

std::string Output(const std::string& command) {
  std::string out;
  if (FILE* pipe = ::popen(command.c_str(), "r")) {
    char buffer[4096];
    for (size_t got; (got = std::fread(buffer, 1, sizeof buffer, pipe)) > 0;)
      out.append(buffer, got);
    ::pclose(pipe);
  }
  return out;
}

std::string IdentifyingTags(const fs::path& file) {
  return TagsFound(Output("exiftool -a -G1 -s '" + file.string() + "' 2>/dev/null"),
                   file.string())[file.string()];
}

std::map<std::string, std::string> IdentifyingTagsIn(const fs::path& folder) {
  std::map<std::string, std::string> out;
  const std::string prefix = folder.string() + "/";
  for (auto& [name, tags] :
       TagsFound(Output("exiftool -r -a -G1 -s '" + folder.string() + "' 2>/dev/null"), "")) {
    out[name.starts_with(prefix) ? name.substr(prefix.size()) : name] = tags;
  }
  return out;
}

TempTree::TempTree() : root_(MakeTemp("vf-test-XXXXXX")) {}

TempTree::~TempTree() {
  std::error_code ec;
  fs::remove_all(root_, ec);
}

void TempTree::Write(const std::string& relative, const std::string& bytes) const {
  fs::create_directories(Path(relative).parent_path());
  std::ofstream(Path(relative), std::ios::binary) << bytes;
}

void TempTree::MakeFolder(const std::string& relative) const {
  fs::create_directories(Path(relative));
}

std::string TempTree::Read(const std::string& relative) const { return Slurp(Path(relative)); }

std::string TempTree::Text(const std::string& relative) const {
  const std::string bytes = Read(relative);
  std::string text;
  for (size_t i = 0; i < bytes.size(); ++i) {
    if (bytes[i] != '\r' || i + 1 == bytes.size() || bytes[i + 1] != '\n') text += bytes[i];
  }
  return text;
}

bool TempTree::Exists(const std::string& relative) const {
  std::error_code ec;
  return fs::exists(fs::symlink_status(Path(relative), ec));
}

std::vector<std::string> TempTree::Tree(const std::string& relative) const {
  std::vector<std::string> out;
  std::error_code ec;
  for (auto it = fs::recursive_directory_iterator(Path(relative), ec);
       it != fs::recursive_directory_iterator(); it.increment(ec)) {
    out.push_back(fs::relative(it->path(), Path(relative)).string() +
                  (it->is_directory() ? "/" : ""));
  }
  std::sort(out.begin(), out.end());
  return out;
}

std::vector<std::string> RunResult::Messages() const {
  std::vector<std::string> out;
  std::istringstream lines(this->out);
  for (std::string l; std::getline(lines, l);) {
    if (l.starts_with("MSG: ")) out.push_back(l.substr(5));
  }
  return out;
}

void WriteFixtureTemplates(const TempTree& tree, const std::string& folder) {
  const std::string f = folder + "/";
  tree.Write(f + "INTESTAZ.HTM",
             CrLf("<head><title>Prova</title></head>\n<body BACKGROUND=\""
                  "sfondo1g.jpg\">\n<marquee>Titolo</marquee>\n<div><center>\n"));
  tree.Write(f + "INTEST_2.HTM", CrLf("<head><title>Prova 2</title></head>\n<body>\n"
                                      "<p background>via</p>\n<div><center>\n"));
  tree.Write(f + "PIEDE.HTM", CrLf("</body>\n</HTML>\n"));
  tree.Write(f + "PIEDE_2.HTM", CrLf("<p>piede 2</p>\n</HTML>\n"));
  std::string menu =
      "<html><head><title>menu immagini - pag.1</title></head>\n<a href=\"../"
      "dir_000p/menu.htm\">prec</a>\n<a href=\"../dir_000s/menu.htm\">succ</a>\n";
  auto img = [](int i) { return std::string(i < 10 ? "img_00" : "img_0") + std::to_string(i); };
  for (int i = 1; i <= 9; ++i) {
    const std::string n = img(i);
    menu += "<a href=\"" + n + ".htm\"><img src=\"" + n + ".jpg\"></a>\n";
    tree.Write(
        f + "VETRINA-FOTO_DEFAULT/dir_0001/IMG_00" + std::to_string(i) + ".HTM",
        CrLf("<html><body>\n<img src=\"" + n + ".jpg\">\n<a href=\"" + img(i - 1) +
             ".htm\">prev</a>\n<a href=\"" + img(i + 1) + ".htm\">next</a>\n" +
             (i == 9 ? "<a href=\"../dir_000s/menu.htm\">album</a>\n" : "") + "</body></html>\n"));
  }
  // Places count from 1: a picture name numbered 000 is no place.
  tree.Write(f + "MENU.HTM", CrLf(menu + "<img src=\"img_000.jpg\">\n</html>\n"));
  for (const char* picture :
       {"puls_sx3.jpg", "puls_su3.jpg", "puls_dx3.jpg", "sfondo_1.gif", "sfondo_2.gif",
        "pulsante.jpg", "diaposit.jpg", "film-1a.jpg", "foto-1a.jpg", "htm-1a.jpg", "music-1a.jpg",
        "sfondo1g.jpg", "sfondo1p.jpg"}) {
    tree.Write(f + picture, std::string("picture ") + picture);
  }
}

void CopyTemplates(const TempTree& tree, const std::string& folder, bool sizes) {
  tree.MakeFolder(folder);
  fs::copy(fs::path(VF_SOURCE_DIR) / "templates", tree.Path(folder), fs::copy_options::recursive);
  if (!sizes) fs::remove(tree.Path(folder + "/DIMENSIONI.TXT"));
}

}  // namespace vf::test
