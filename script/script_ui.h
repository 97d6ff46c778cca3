#ifndef VF_SCRIPT_SCRIPT_UI_H_
#define VF_SCRIPT_SCRIPT_UI_H_

#include <deque>
#include <ostream>
#include <string>

#include "platform/user_ops.h"

namespace vf {

// A CR written {CR} and a LF {LF}; nothing else is escaped.
std::string Escape(const std::string& text);

// The runner's user operations: every event is printed as one line on `out`
// as it happens. Questions and dialogs take their answers from queues that
// the script fills; an empty queue answers No and gives the empty path.
class ScriptUi : public UserOps {
 public:
  explicit ScriptUi(std::ostream& out) : out_(out) {}

  void Message(const std::string& text) override;
  bool Question(const std::string& text) override;
  void Beep() override;
  void Cursor(bool busy) override;
  void Repaint() override {}
  std::string FileDialog(const std::string& title, const std::string& start_folder,
                         const std::string& pattern) override;
  double ScreenWidthTwips() override { return screen_pixels * 15.0; }
  double TwipsPerPixelX() override { return 15.0; }
  std::string ProgramFolder() override { return program_folder; }
  bool StartCommand(const std::string& line) override;
  // The web-sized pictures of the build, as the window makes them; what
  // could not be made is told as messages.
  [[noreturn]] void End() override;

  std::deque<bool> answers;
  std::deque<std::string> choices;
  double screen_pixels = 1024;
  bool start_fails = false;
  std::string program_folder;

 private:
  std::ostream& out_;
};

}  // namespace vf

#endif  // VF_SCRIPT_SCRIPT_UI_H_
