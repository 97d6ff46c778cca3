#ifndef VF_SHELL_CONTROLS_H_
#define VF_SHELL_CONTROLS_H_

#include <cstdint>
#include <string>
#include <vector>

namespace vf {

// One control of a window, as a plain value. A text box keeps its text in
// Text, every other control its caption in Caption. Value is 0 or 1 for a
// check box and an option button. Positions are in twips.
struct Control {
  enum Kind { kTextBox, kButton, kOption, kCheck, kLabel, kFrame, kShape, kListBox, kDialog };

  std::string Name;
  Kind kind = kLabel;
  std::string Text;
  std::string Caption;
  int Value = 0;
  bool Enabled = true;
  bool Visible = true;
  int64_t Left = 0, Top = 0, Width = 0, Height = 0;
  int tab = -1;           // tab position, -1 for controls without one
  std::string container;  // the frame that holds the control, "" for the form
};

// The list box: an ordered list of texts, each selected or not, and one
// current position (-1 for none). Positions count from 0. A position past the
// end reads as the empty text. `revision` changes at every change of the
// list, so a view can tell cheaply whether it must look again.
class ListBox {
 public:
  int64_t ListCount() const { return static_cast<int64_t>(items_.size()); }
  // The text at a position; "" for a position outside the list.
  const std::string& List(int64_t pos) const;
  bool Selected(int64_t pos) const;
  void SetSelected(int64_t pos, bool selected);
  // How many entries are selected.
  int64_t SelCount() const;
  int64_t ListIndex = -1;

  void AddItem(std::string text);
  void RemoveItem(int64_t pos);
  void Clear();
  // Replaces the whole content in one step (used by rebuilds of the list).
  void Assign(std::vector<std::string> texts);
  uint64_t revision() const { return revision_; }

 private:
  std::vector<std::string> items_;
  std::vector<char> selected_;
  uint64_t revision_ = 0;
};

}  // namespace vf

#endif  // VF_SHELL_CONTROLS_H_
