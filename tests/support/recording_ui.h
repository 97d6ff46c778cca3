#ifndef VF_TESTS_SUPPORT_RECORDING_UI_H_
#define VF_TESTS_SUPPORT_RECORDING_UI_H_

#include <deque>
#include <functional>
#include <string>
#include <vector>

#include "platform/user_ops.h"

namespace vf::test {

// A UserOps for unit tests. Every beep, message, question, cursor change,
// dialog and started command is recorded as one line, in the forms the
// script runner prints ("BEEP", "MSG: text", "ASK: text -> YES",
// "CURSOR: BUSY", "DIALOG: title | start | pattern -> result",
// "RUN: line -> OK", "END"). Answers and dialog results are taken from
// queues; an empty queue answers No and gives the empty path. Repaints are
// counted, not recorded, and may run a hook (a command "at a repaint point").
class RecordingUi : public UserOps {
 public:
  void Message(const std::string& text) override;
  bool Question(const std::string& text) override;
  void Beep() override;
  void Cursor(bool busy) override;
  void Repaint() override;
  std::string FileDialog(const std::string& title, const std::string& start_folder,
                         const std::string& pattern) override;
  double ScreenWidthTwips() override { return screen_pixels * 15.0; }
  double TwipsPerPixelX() override { return 15.0; }
  std::string ProgramFolder() override { return program_folder; }
  bool StartCommand(const std::string& line) override;
  [[noreturn]] void End() override;

  std::vector<std::string> events;
  std::deque<bool> answers;
  std::deque<std::string> dialog_results;
  int repaints = 0;
  std::function<void()> on_repaint;
  double screen_pixels = 1024;
  std::string program_folder = "C:\\VETRINA";
  bool start_fails = false;
};

}  // namespace vf::test

#endif  // VF_TESTS_SUPPORT_RECORDING_UI_H_
