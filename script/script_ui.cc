#include "script/script_ui.h"

namespace vf {

std::string Escape(const std::string& text) {
  std::string out;
  out.reserve(text.size());
  for (char c : text) {
    if (c == '\r') {
      out += "{CR}";
    } else if (c == '\n') {
      out += "{LF}";
    } else {
      out += c;
    }
  }
  return out;
}

void ScriptUi::Message(const std::string& text) { out_ << "MSG: " << Escape(text) << '\n'; }

bool ScriptUi::Question(const std::string& text) {
  bool yes = false;
  if (!answers.empty()) {
    yes = answers.front();
    answers.pop_front();
  }
  out_ << "ASK: " << Escape(text) << (yes ? " -> YES" : " -> NO") << '\n';
  return yes;
}

void ScriptUi::Beep() { out_ << "BEEP\n"; }

void ScriptUi::Cursor(bool busy) { out_ << (busy ? "CURSOR: BUSY\n" : "CURSOR: NORMAL\n"); }

std::string ScriptUi::FileDialog(const std::string& title, const std::string& start_folder,
                                 const std::string& pattern) {
  std::string result;
  if (!choices.empty()) {
    result = choices.front();
    choices.pop_front();
  }
  out_ << "DIALOG: " << Escape(title) << " | " << Escape(start_folder) << " | " << Escape(pattern)
       << " -> " << Escape(result) << '\n';
  return result;
}

bool ScriptUi::StartCommand(const std::string& line) {
  out_ << "RUN: " << Escape(line) << (start_fails ? " -> FAILED" : " -> OK") << '\n';
  return !start_fails;
}

void ScriptUi::End() {
  out_ << "END\n";
  throw FineProgramma{};
}

}  // namespace vf
