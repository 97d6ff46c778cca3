#include "script/script_runner.h"

#include <cstdlib>
#include <filesystem>
#include <sstream>

#include "commands/clic.h"
#include "desktop/user_area.h"
#include "platform/host_file_system.h"
#include "script/fault_injection.h"
#include "shell/avvio.h"
#include "shell/testo.h"
#include "shell/vetrina.h"

namespace vf {
namespace {

std::vector<std::string> Words(const std::string& line) {
  std::istringstream in(line);
  std::vector<std::string> words;
  for (std::string w; in >> w;) words.push_back(w);
  return words;
}

// Everything after the single blank that follows the first `n` words.
std::optional<std::string> TextAfter(const std::string& line, int n) {
  size_t pos = 0;
  for (int i = 0; i < n; ++i) {
    pos = line.find_first_not_of(' ', pos);
    if (pos == std::string::npos) return std::nullopt;
    pos = line.find(' ', pos);
    if (pos == std::string::npos) return std::string();
  }
  return line.substr(pos + 1);
}

bool WholeNumber(const std::string& text, long long* value) {
  if (text.empty()) return false;
  char* end = nullptr;
  errno = 0;
  *value = std::strtoll(text.c_str(), &end, 10);
  return *end == '\0' && errno == 0;
}

const char* Bool(bool b) { return b ? "True" : "False"; }

// "Name(3)" gives "Name" and 3.
bool Indexed(const std::string& text, const std::string& name, long long* index) {
  if (text.size() < name.size() + 3 || text.compare(0, name.size() + 1, name + "(") != 0 ||
      text.back() != ')') {
    return false;
  }
  return WholeNumber(text.substr(name.size() + 1, text.size() - name.size() - 2), index);
}

}  // namespace

ScriptRunner::ScriptRunner(std::ostream& out, std::ostream& err, std::string runner_folder)
    : out_(out), err_(err), runner_folder_(std::move(runner_folder)), ui_(out) {}

ScriptRunner::~ScriptRunner() = default;

int ScriptRunner::Run(std::istream& in) {
  std::string line;
  long long number = 0;
  while (std::getline(in, line)) {
    ++number;
    if (!line.empty() && line.back() == '\r') line.pop_back();
    // Blank in the sense the words are split by, so that a statement always
    // has a first word.
    size_t first = line.find_first_not_of(" \t\n\v\f\r");
    if (first == std::string::npos || line[first] == '#') continue;
    bool understood = false;
    try {
      understood = Statement(line);
    } catch (const FineProgramma&) {
      out_.flush();
      return kScriptFinito;
    }
    if (fatal_) {
      out_.flush();
      return kScriptErrore;
    }
    if (!understood) {
      out_.flush();
      err_ << "vetrina-foto-script: riga " << number << " non compresa: " << line << '\n';
      return kScriptNonCapito;
    }
  }
  out_.flush();
  return kScriptFinito;
}

bool ScriptRunner::Statement(const std::string& line) {
  std::vector<std::string> words = Words(line);
  const std::string& word = words[0];
  if (word == "drive" || word == "program" || word == "screen" || word == "startfails" ||
      word == "fail") {
    return !started_ && SetUp(word, line);
  }
  if (word == "start") {
    if (started_ || words.size() > 2) return false;
    if (words.size() == 2 && words[1] != "usage") return false;
    return Start(words.size() == 2);
  }
  if (word == "answer") {
    if (words.size() != 2 || (words[1] != "yes" && words[1] != "no")) return false;
    ui_.answers.push_back(words[1] == "yes");
    return true;
  }
  if (word == "choose") {
    ui_.choices.push_back(words.size() == 1 ? std::string() : *TextAfter(line, 1));
    return true;
  }
  if (!started_) return false;
  if (word == "print") return words.size() == 2 && Print(words[1]);
  if (word == "set") return Set(line);
  if (word == "click") return words.size() == 2 && Clic(*v_, words[1]);
  if (!v_->frmALBUM_Loaded) return false;
  ListBox& list = v_->frmALBUM.List1;
  if (word == "add") {
    list.AddItem(words.size() == 1 ? std::string() : *TextAfter(line, 1));
    return true;
  }
  if (word == "select" || word == "unselect") return Positions(words, word == "select");
  if (word == "current") {
    long long n = 0;
    if (words.size() != 2 || !WholeNumber(words[1], &n) || n < -1 || n >= list.ListCount()) {
      return false;
    }
    list.ListIndex = n;
    return true;
  }
  return false;
}

bool ScriptRunner::SetUp(const std::string& word, const std::string& line) {
  std::vector<std::string> words = Words(line);
  if (word == "drive") {
    if (words.size() < 3 || words[1].size() != 1 ||
        !std::isalpha(static_cast<unsigned char>(words[1][0]))) {
      return false;
    }
    // Words split at tabs too, so the text after them may be missing.
    std::string path = TextAfter(line, 2).value_or("");
    bool readonly = false;
    const std::string suffix = " readonly";
    if (words.size() >= 4 && words.back() == "readonly" && path.size() > suffix.size() &&
        path.compare(path.size() - suffix.size(), suffix.size(), suffix) == 0) {
      readonly = true;
      path.resize(path.size() - suffix.size());
    }
    if (path.empty()) return false;
    std::error_code ec;
    std::filesystem::path absolute = std::filesystem::absolute(path, ec);
    drives_.push_back({static_cast<char>(std::toupper(static_cast<unsigned char>(words[1][0]))),
                       ec ? path : absolute.lexically_normal().string(), readonly});
    return true;
  }
  if (word == "program") {
    std::optional<std::string> path = TextAfter(line, 1);
    if (!path || path->empty()) return false;
    program_ = *path;
    return true;
  }
  if (word == "screen") {
    long long n = 0;
    if (words.size() != 2 || !WholeNumber(words[1], &n) || n <= 0) return false;
    ui_.screen_pixels = static_cast<double>(n);
    return true;
  }
  if (word == "startfails") {
    if (words.size() != 1) return false;
    ui_.start_fails = true;
    return true;
  }
  // fail WINPATH N: the path may hold blanks; the number is the last word.
  long long n = 0;
  if (words.size() < 3 || !WholeNumber(words.back(), &n) || n <= 0) return false;
  std::string rest = *TextAfter(line, 1);
  std::string path = rest.substr(0, rest.rfind(' '));
  failures_.push_back({path, static_cast<int>(n)});
  return true;
}

bool ScriptRunner::Start(bool usage) {
  std::vector<DriveMapping> mapping;
  if (drives_.empty()) {
    // The window's drives; drive C:'s folder is made so that a fallback of
    // the build finds it, as in the window.
    const UserArea area = UserAreaOf(HomeFolder());
    MakeFolders(area.drive_c);
    mapping = UserDrives(area);
  } else {
    for (const Drive& d : drives_) mapping.push_back({d.letter, d.host_folder, d.readonly});
  }
  host_ = std::make_unique<HostFileSystem>(mapping);
  if (program_) {
    ui_.program_folder = *program_;
  } else {
    // In a build tree the set also stands beside the runner, its folder of old.
    std::error_code error;
    const std::string templates =
        std::filesystem::is_regular_file(runner_folder_ + "/INTESTAZ.HTM", error)
            ? runner_folder_
            : InstalledTemplates(runner_folder_);
    std::optional<std::string> own = host_->WindowsPath(templates);
    if (!own) {
      err_ << "vetrina-foto-script: la cartella del programma " << templates
           << " non sta su nessun disco: indicarla con program\n";
      fatal_ = true;
      return true;
    }
    ui_.program_folder = *own;
  }
  fs_ = std::make_unique<FaultInjectingFileSystem>(*host_);
  for (const Failure& f : failures_) fs_->AddFailure(f.path, f.number);
  publishing_ = std::make_unique<SitePublishing>(*host_, ui_);
  v_ = std::make_unique<Vetrina>(*fs_, ui_, *publishing_);
  started_ = true;
  if (usage) {
    Main_Con_Scelta(*v_);
  } else {
    Main(*v_);
  }
  return true;
}

bool ScriptRunner::Set(const std::string& line) {
  std::vector<std::string> words = Words(line);
  if (words.size() < 2) return false;
  std::string text = TextAfter(line, 2).value_or("");
  Control* c = nullptr;
  const std::string kDialogo = "frmALBUM1.";
  if (words[1].compare(0, kDialogo.size(), kDialogo) == 0) {
    if (v_->frmALBUM1.Loaded) c = v_->frmALBUM1.Find(words[1].substr(kDialogo.size()));
  } else if (v_->frmALBUM_Loaded) {
    c = v_->frmALBUM.Find(words[1]);
  }
  if (c == nullptr) return false;
  if (c->kind == Control::kTextBox) {
    c->Text = text;
    return true;
  }
  if (c->kind == Control::kCheck && (text == "0" || text == "1")) {
    c->Value = text == "1" ? 1 : 0;
    return true;
  }
  return false;
}

bool ScriptRunner::Positions(const std::vector<std::string>& words, bool selected) {
  ListBox& list = v_->frmALBUM.List1;
  if (words.size() < 2) return false;
  std::vector<long long> positions;
  for (size_t i = 1; i < words.size(); ++i) {
    long long n = 0;
    if (!WholeNumber(words[i], &n) || n < 0 || n >= list.ListCount()) return false;
    positions.push_back(n);
  }
  for (long long n : positions) list.SetSelected(n, selected);
  return true;
}

bool ScriptRunner::Print(const std::string& what) {
  if (what == "List1") return v_->frmALBUM_Loaded && PrintList();
  if (what.compare(0, 8, "Module1.") == 0) return PrintModule1(what);
  size_t dot = what.rfind('.');
  if (dot == std::string::npos) return false;
  std::string name = what.substr(0, dot);
  std::string property = what.substr(dot + 1);
  std::string value;
  if (name == "List1") {
    if (!v_->frmALBUM_Loaded) return false;
    const ListBox& list = v_->frmALBUM.List1;
    long long i = 0;
    if (property == "ListCount") {
      value = std::to_string(list.ListCount());
    } else if (property == "ListIndex") {
      value = std::to_string(list.ListIndex);
    } else if (Indexed(property, "List", &i)) {
      value = Escape(list.List(i));
    } else if (Indexed(property, "Selected", &i)) {
      value = Bool(list.Selected(i));
    } else {
      return false;
    }
    out_ << what << " = " << value << '\n';
    return true;
  }
  Control* c = nullptr;
  const std::string kDialogo = "frmALBUM1.";
  if (name.compare(0, kDialogo.size(), kDialogo) == 0) {
    if (v_->frmALBUM1.Loaded) c = v_->frmALBUM1.Find(name.substr(kDialogo.size()));
  } else if (v_->frmALBUM_Loaded) {
    c = v_->frmALBUM.Find(name);
  }
  if (c == nullptr) return false;
  if (property == "Text" && c->kind == Control::kTextBox) {
    value = Escape(c->Text);
  } else if (property == "Caption" && c->kind != Control::kTextBox) {
    value = Escape(c->Caption);
  } else if (property == "Value" && c->kind == Control::kOption) {
    value = Bool(c->Value != 0);
  } else if (property == "Value" && c->kind == Control::kCheck) {
    value = std::to_string(c->Value);
  } else if (property == "Enabled") {
    value = Bool(c->Enabled);
  } else if (property == "Visible") {
    value = Bool(c->Visible);
  } else if (property == "Left") {
    value = std::to_string(c->Left);
  } else if (property == "Top") {
    value = std::to_string(c->Top);
  } else if (property == "Width") {
    value = std::to_string(c->Width);
  } else if (property == "Height") {
    value = std::to_string(c->Height);
  } else if (property == "TabIndex" && c->tab >= 0) {
    value = std::to_string(c->tab);
  } else {
    return false;
  }
  out_ << what << " = " << value << '\n';
  return true;
}

bool ScriptRunner::PrintList() {
  const ListBox& list = v_->frmALBUM.List1;
  out_ << "List1.ListCount = " << list.ListCount() << '\n';
  for (int64_t i = 0; i < list.ListCount(); ++i) {
    out_ << "List1(" << i << ") = " << Escape(list.List(i)) << (list.Selected(i) ? " [x]" : "")
         << '\n';
  }
  out_ << "List1.ListIndex = " << list.ListIndex << '\n';
  return true;
}

bool ScriptRunner::PrintModule1(const std::string& what) {
  const Module1& m = v_->Module1;
  std::string name = what.substr(8);
  std::string value;
  long long i = 0;
  if (name == "Tipo_Utilizzo") {
    value = std::to_string(m.Tipo_Utilizzo);
  } else if (name == "Nome_File_Input") {
    value = Escape(m.Nome_File_Input);
  } else if (name == "Nome_File_Output") {
    value = Escape(m.Nome_File_Output);
  } else if (name == "Dir_Base") {
    value = Escape(m.Dir_Base);
  } else if (name == "Dir_Output") {
    value = Escape(m.Dir_Output);
  } else if (name == "Num_File") {
    value = std::to_string(m.Num_File);
  } else if (name == "Primo_File") {
    value = Decimale(m.Primo_File);
  } else if (name == "Ultimo_File") {
    value = Decimale(m.Ultimo_File);
  } else if (name == "Num_Pagina") {
    value = std::to_string(m.Num_Pagina);
  } else if (name == "Conferma_Esistente") {
    value = std::to_string(m.Conferma_Esistente);
  } else if (Indexed(name, "Elenco_Pagine", &i) && i >= 0 && i <= 1000) {
    value = Escape(m.Elenco_Pagine[static_cast<size_t>(i)]);
  } else {
    return false;
  }
  out_ << what << " = " << value << '\n';
  return true;
}

}  // namespace vf
