// The windows' models: every control is set up once, with a name of its own
// and a place, and the tab positions run without a gap.
#include <gtest/gtest.h>

#include <set>
#include <string>

#include "shell/frm_album.h"

namespace vf {
namespace {

template <typename Form>
void ExpectEveryControlSetUp(Form& form, size_t count) {
  std::set<std::string> names;
  std::set<int> tabs;
  for (const Control* c : form.Controls()) {
    names.insert(c->Name);
    using K = Control::Kind;
    EXPECT_TRUE(c->kind == K::kDialog || (c->Width > 0 && c->Height > 0)) << c->Name;
    const bool captioned = c->kind == K::kButton || c->kind == K::kOption || c->kind == K::kCheck ||
                           c->kind == K::kLabel;
    EXPECT_TRUE(!captioned || !c->Caption.empty()) << c->Name;
    if (c->tab >= 0) {
      EXPECT_TRUE(tabs.insert(c->tab).second) << c->Name;
    }
  }
  EXPECT_EQ(names.size(), count);
  EXPECT_FALSE(names.count(""));
  EXPECT_EQ(tabs.empty() ? 0 : *tabs.rbegin() + 1, static_cast<int>(tabs.size()));
}

TEST(WindowModel, EveryControlIsSetUp) {
  FrmAlbum main_window;
  ExpectEveryControlSetUp(main_window, 43);
  EXPECT_EQ(main_window.txtPATH_RICERCA.Text + main_window.txtESTENSIONE.Text,
            "C:\\VETRINA-FOTO\\*");
  EXPECT_FALSE(main_window.cmdCONFERMA_Tutti.Visible || main_window.Command4.Visible);
  FrmAlbum1 usage;
  ExpectEveryControlSetUp(usage, 5);
  EXPECT_EQ(usage.Option1.Value, 1);
}

}  // namespace
}  // namespace vf
