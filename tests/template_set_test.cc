// The sample template set in templates/: every file the program reads or
// copies stands there under its exact name, in the text form the program
// reads, with the markers it rewrites once to a line; the pictures are real
// and small. What the built site looks like is the browser check's.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <regex>
#include <set>
#include <string>
#include <vector>

namespace vf {
namespace {

namespace fs = std::filesystem;
const fs::path kSet = fs::path(VF_SOURCE_DIR) / "templates";

std::string Read(const std::string& name) {
  std::ifstream in(kSet / name, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), {});
}

std::string Place(int i) {
  return "VETRINA-FOTO_DEFAULT/dir_0001/IMG_00" + std::to_string(i) + ".HTM";
}

TEST(TemplateSet, FilesStandUnderTheirNamesAsAsciiCrLfText) {
  std::vector<std::string> texts = {"MENU.HTM",  "INTESTAZ.HTM", "INTEST_2.HTM",
                                    "PIEDE.HTM", "PIEDE_2.HTM",  "DIMENSIONI.TXT"};
  for (int i = 1; i <= 9; ++i) texts.push_back(Place(i));
  const std::vector<std::string> pictures = {
      "puls_sx3.jpg", "puls_su3.jpg", "puls_dx3.jpg", "sfondo_1.gif", "sfondo_2.gif",
      "pulsante.jpg", "diaposit.jpg", "film-1a.jpg",  "foto-1a.jpg",  "htm-1a.jpg",
      "music-1a.jpg", "sfondo1g.jpg", "sfondo1p.jpg"};
  std::set<std::string> names;
  for (const auto& entry : fs::recursive_directory_iterator(kSet)) {
    names.insert(fs::relative(entry.path(), kSet).string());
  }
  for (const std::string& name : texts) {
    ASSERT_TRUE(names.count(name)) << name;  // the exact name, not one ignoring case
    const std::string t = Read(name);
    EXPECT_TRUE(t.ends_with("\r\n")) << name;
    const std::string rest = std::regex_replace(t, std::regex("\r\n"), "");
    EXPECT_TRUE(std::all_of(rest.begin(), rest.end(),
                            [](unsigned char c) { return c == '\t' || (c >= 32 && c < 127); }))
        << name << ": a lone CR or LF or a byte outside printable ASCII";
  }
  for (const std::string& name : pictures) {
    ASSERT_TRUE(names.count(name)) << name;
    const std::string bytes = Read(name);
    EXPECT_LT(bytes.size(), 30u * 1024) << name;
    EXPECT_TRUE(bytes.starts_with(name.ends_with(".jpg") ? "\xFF\xD8\xFF" : "GIF8")) << name;
  }
}

TEST(TemplateSet, MarkersStandOnceToALineAndTheBoxesDropWhatTheySay) {
  const std::regex marker(R"(img_00[1-9]\.jpg|\.\./dir_000[ps]/menu\.htm|menu immagini - pag\.1)");
  for (int n = 0; n <= 9; ++n) {  // 0 is the menu
    const std::string text = Read(n == 0 ? "MENU.HTM" : Place(n));
    std::set<std::string> found;
    size_t start = 0;
    for (size_t end; (end = text.find("\r\n", start)) != std::string::npos; start = end + 2) {
      const std::string line = text.substr(start, end - start);
      auto first = std::sregex_iterator(line.begin(), line.end(), marker);
      EXPECT_LE(std::distance(first, std::sregex_iterator()), 1) << line;
      for (auto it = first; it != std::sregex_iterator(); ++it) found.insert(it->str());
    }
    if (n == 0) {
      EXPECT_EQ(found.size(), 12u);  // nine pictures, the title, previous and next
    } else {
      EXPECT_TRUE(found.count("img_00" + std::to_string(n) + ".jpg")) << n;
      // Only the last place's page has its next-album marker rewritten.
      EXPECT_EQ(found.count("../dir_000s/menu.htm"), n == 9 ? 1u : 0u) << n;
    }
  }
  // "Elimino sfondo" drops the lines with "background", "Elimino titolo"
  // those with "marquee": the background picture and the title go with them.
  for (const char* head : {"INTESTAZ.HTM", "INTEST_2.HTM"}) {
    std::string kept_without_background, kept_without_title;
    const std::string text = Read(head);
    size_t start = 0;
    for (size_t end; (end = text.find("\r\n", start)) != std::string::npos; start = end + 2) {
      std::string line = text.substr(start, end - start);
      std::string lower = line;
      for (char& c : lower) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
      if (lower.find("background") == std::string::npos) kept_without_background += lower;
      if (lower.find("marquee") == std::string::npos) kept_without_title += lower;
    }
    EXPECT_EQ(kept_without_background.find("sfondo1g.jpg"), std::string::npos) << head;
    EXPECT_NE(kept_without_background.find("<title>"), std::string::npos) << head;
    EXPECT_NE(kept_without_title.find("<title>"), std::string::npos) << head;
  }
}

}  // namespace
}  // namespace vf
