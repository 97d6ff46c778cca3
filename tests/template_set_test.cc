// The sample template set: each file the program reads stands under its exact
// name as ASCII CR LF lines with a marker at most to a line; the pictures are
// real and small. What the built site looks like is the browser check's.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <regex>
#include <string>

namespace vf {
namespace {

namespace fs = std::filesystem;

TEST(TemplateSet, FilesTextFormAndMarkers) {
  const fs::path set = fs::path(VF_SOURCE_DIR) / "templates";
  const std::regex marker(R"(img_00[1-9]\.jpg|\.\./dir_000[ps]/menu\.htm|menu immagini - pag\.1)");
  const std::regex text_line(R"([\t -~]*\r\n)");
  std::string files[28] = {"MENU.HTM",     "INTESTAZ.HTM",   "INTEST_2.HTM", "PIEDE.HTM",
                           "PIEDE_2.HTM",  "DIMENSIONI.TXT", "puls_sx3.jpg", "puls_su3.jpg",
                           "puls_dx3.jpg", "sfondo_1.gif",   "sfondo_2.gif", "pulsante.jpg",
                           "diaposit.jpg", "film-1a.jpg",    "foto-1a.jpg",  "htm-1a.jpg",
                           "music-1a.jpg", "sfondo1g.jpg",   "sfondo1p.jpg"};
  for (int i = 1; i <= 9; ++i)
    files[18 + i] = "VETRINA-FOTO_DEFAULT/dir_0001/IMG_00" + std::to_string(i) + ".HTM";
  for (const std::string& name : files) {
    SCOPED_TRACE(name);
    bool exact = false;  // the name as listed, not one matching it ignoring case
    for (const auto& e : fs::directory_iterator((set / name).parent_path()))
      exact = exact || e.path().filename() == fs::path(name).filename();
    ASSERT_TRUE(exact);
    std::ifstream in(set / name, std::ios::binary);
    const std::string bytes(std::istreambuf_iterator<char>(in), {});
    if (name.ends_with(".jpg") || name.ends_with(".gif")) {
      EXPECT_LT(bytes.size(), 30u * 1024);
      EXPECT_TRUE(bytes.starts_with(name.ends_with(".jpg") ? "\xFF\xD8\xFF" : "GIF8"));
      continue;
    }
    int markers = 0;
    for (auto line = std::sregex_iterator(bytes.begin(), bytes.end(), text_line);
         line != std::sregex_iterator(); ++line) {
      const std::string text = line->str();
      const auto found = std::distance(std::sregex_iterator(text.begin(), text.end(), marker),
                                       std::sregex_iterator());
      EXPECT_LE(found, 1) << text;
      markers += static_cast<int>(found);
    }
    EXPECT_EQ(std::regex_replace(bytes, text_line, ""), "") << "a line that is not ASCII CR LF";
    EXPECT_TRUE(name.ends_with(".TXT") || name.starts_with("INTEST") || name.starts_with("PIEDE") ||
                markers > 0);
  }
}

}  // namespace
}  // namespace vf
