#include "tests/support/recording_ui.h"

namespace vf::test {

void RecordingUi::Message(const std::string& text) { events.push_back("MSG: " + text); }

bool RecordingUi::Question(const std::string& text) {
  bool yes = false;
  if (!answers.empty()) {
    yes = answers.front();
    answers.pop_front();
  }
  events.push_back("ASK: " + text + (yes ? " -> YES" : " -> NO"));
  return yes;
}

void RecordingUi::Beep() { events.push_back("BEEP"); }

void RecordingUi::Cursor(bool busy) { events.push_back(busy ? "CURSOR: BUSY" : "CURSOR: NORMAL"); }

void RecordingUi::Repaint() {
  ++repaints;
  if (on_repaint) on_repaint();
}

std::string RecordingUi::FileDialog(const std::string& title, const std::string& start_folder,
                                    const std::string& pattern) {
  std::string result;
  if (!dialog_results.empty()) {
    result = dialog_results.front();
    dialog_results.pop_front();
  }
  events.push_back("DIALOG: " + title + " | " + start_folder + " | " + pattern + " -> " + result);
  return result;
}

bool RecordingUi::StartCommand(const std::string& line) {
  events.push_back("RUN: " + line + (start_fails ? " -> FAILED" : " -> OK"));
  return !start_fails;
}

void RecordingUi::End() {
  events.push_back("END");
  throw FineProgramma{};
}

}  // namespace vf::test
