#ifndef VF_PLATFORM_USER_OPS_H_
#define VF_PLATFORM_USER_OPS_H_

#include <string>

namespace vf {

// Thrown by UserOps::End: the program ends at once, whatever runs. Front ends
// catch it where a command was started and close down.
struct FineProgramma {};

// What the program asks of the person in front of it and of the desktop. The
// window and the script runner each give one implementation; the logic only
// calls these.
class UserOps {
 public:
  virtual ~UserOps() = default;

  // A message with an OK button and no title. CR alone breaks a line.
  virtual void Message(const std::string& text) = 0;
  // A question with Yes and No buttons; true only for Yes.
  virtual bool Question(const std::string& text) = 0;
  virtual void Beep() = 0;
  // Hourglass (true) or normal mouse cursor for the whole screen.
  virtual void Cursor(bool busy) = 0;
  // Lets pending window events run: a second command may start here.
  virtual void Repaint() = 0;
  // A file chooser: the chosen path as a Windows path, or "" when the user
  // gave up or the dialog failed.
  virtual std::string FileDialog(const std::string& title, const std::string& start_folder,
                                 const std::string& pattern) = 0;
  // The screen's width in twips and the twips per pixel across.
  virtual double ScreenWidthTwips() = 0;
  virtual double TwipsPerPixelX() = 0;
  // The folder of the program's executable as a Windows path, without a
  // trailing backslash unless it is a drive's root.
  virtual std::string ProgramFolder() = 0;
  // Starts a command line and returns at once; false when starting failed.
  virtual bool StartCommand(const std::string& line) = 0;
  // Ends the program at once. Never returns: throws FineProgramma after the
  // front end has done what ending means to it.
  [[noreturn]] virtual void End() = 0;
};

}  // namespace vf

#endif  // VF_PLATFORM_USER_OPS_H_
