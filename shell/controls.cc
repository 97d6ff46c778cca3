#include "shell/controls.h"

#include <algorithm>

namespace vf {
namespace {
const std::string kEmpty;
}

const std::string& ListBox::List(int64_t pos) const {
  if (pos < 0 || pos >= ListCount()) return kEmpty;
  return items_[static_cast<size_t>(pos)];
}

bool ListBox::Selected(int64_t pos) const {
  if (pos < 0 || pos >= ListCount()) return false;
  return selected_[static_cast<size_t>(pos)] != 0;
}

int64_t ListBox::SelCount() const { return std::count(selected_.begin(), selected_.end(), 1); }

void ListBox::SetSelected(int64_t pos, bool selected) {
  if (pos < 0 || pos >= ListCount()) return;
  selected_[static_cast<size_t>(pos)] = selected ? 1 : 0;
  ++revision_;
}

void ListBox::AddItem(std::string text) {
  items_.push_back(std::move(text));
  selected_.push_back(0);
  ++revision_;
}

void ListBox::RemoveItem(int64_t pos) {
  if (pos < 0 || pos >= ListCount()) return;
  items_.erase(items_.begin() + pos);
  selected_.erase(selected_.begin() + pos);
  // The current position follows the list box: it is lost when its entry goes.
  if (ListIndex == pos) {
    ListIndex = -1;
  } else if (ListIndex > pos) {
    --ListIndex;
  }
  ++revision_;
}

void ListBox::Clear() {
  items_.clear();
  selected_.clear();
  ListIndex = -1;
  ++revision_;
}

void ListBox::Assign(std::vector<std::string> texts) {
  items_ = std::move(texts);
  selected_.assign(items_.size(), 0);
  ListIndex = -1;
  ++revision_;
}

}  // namespace vf
