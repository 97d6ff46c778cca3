// The places of the sample template set, the elements with a data-vf attribute
// whose words the publishing pass fills in: each stands where the pass finds
// it, its start tag within one line and, but for a picture, its end tag on
// that line too; each page has the places it should; and the lines that the
// index's cards take their covers and album lines from survive both check
// boxes of the window. docs/templates.md tells template authors the same.
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

namespace vf {
namespace {

namespace fs = std::filesystem;

struct Place {
  std::string tag;
  std::string vf;
  std::string text;  // what the template holds between the tags; empty for a picture
  bool operator==(const Place&) const = default;
};

void PrintTo(const Place& p, std::ostream* out) {
  *out << "<" << p.tag << " data-vf=" << p.vf << ">" << p.text;
}

std::string Upper(std::string s) {
  std::transform(s.begin(), s.end(), s.begin(), [](unsigned char c) { return std::toupper(c); });
  return s;
}

std::vector<std::string> Lines(const std::string& name) {
  std::ifstream in(fs::path(VF_SOURCE_DIR) / "templates" / name, std::ios::binary);
  const std::string bytes(std::istreambuf_iterator<char>(in), {});
  std::vector<std::string> lines;
  for (size_t at = 0, end; (end = bytes.find("\r\n", at)) != std::string::npos; at = end + 2)
    lines.push_back(bytes.substr(at, end - at));
  return lines;
}

// The places of a template as the pass reads them, line by line; what stands
// where the pass could not fill it goes into `faults`.
std::vector<Place> PlacesOf(const std::vector<std::string>& lines,
                            std::vector<std::string>* faults) {
  std::vector<Place> places;
  const std::string attribute = " data-vf=\"";
  for (const std::string& line : lines) {
    for (size_t at = line.find(attribute); at != std::string::npos;
         at = line.find(attribute, at + 1)) {
      const size_t open = line.rfind('<', at);
      const size_t close = line.find('>', at);
      const size_t quote = line.find('"', at + attribute.size());
      if (open == std::string::npos || close == std::string::npos || line.find('>', open) < at ||
          quote > close) {
        faults->push_back("start tag not within its line: " + line);
        continue;
      }
      Place p{line.substr(open + 1, line.find_first_of(" >", open) - open - 1),
              line.substr(at + attribute.size(), quote - at - attribute.size()), ""};
      if (p.tag != "img" && p.tag != "source") {
        const size_t end = line.find("</" + p.tag + ">", close);
        const size_t inner = line.find("<" + p.tag, close);
        if (end == std::string::npos || inner < end) {
          faults->push_back("not closed on its line, alone: " + line);
          continue;
        }
        p.text = line.substr(close + 1, end - close - 1);
      }
      places.push_back(p);
    }
  }
  return places;
}

TEST(TemplatePlaces, WhereThePassFindsThem) {
  const std::vector<Place> index_head = {
      {"title", "sito", "Vetrina Foto"}, {"style", "album", ""}, {"h1", "sito", "Vetrina Foto"}};
  std::vector<Place> menu = {{"title", "album", "menu immagini - pag.1"},
                             {"a", "sito", "Vetrina Foto"},
                             {"p", "album", ""}};
  for (int i = 1; i <= 9; ++i) {
    menu.push_back({"source", "avif", ""});
    menu.push_back({"img", "foto", ""});
  }
  std::vector<std::pair<std::string, std::vector<Place>>> files = {
      {"INTESTAZ.HTM", index_head},
      // Both check boxes ticked: the head without the site's heading.
      {"INTEST_2.HTM", {index_head[0], index_head[1]}},
      {"PIEDE.HTM", {}},
      {"PIEDE_2.HTM", {}},
      {"MENU.HTM", menu}};
  for (int i = 1; i <= 9; ++i) {
    const std::string foto = "Foto " + std::to_string(i);
    files.push_back({"VETRINA-FOTO_DEFAULT/dir_0001/IMG_00" + std::to_string(i) + ".HTM",
                     {{"title", "titolo", foto},
                      {"a", "sito", "Vetrina Foto"},
                      {"h1", "titolo", foto},
                      {"source", "avif", ""},
                      {"img", "foto", ""},
                      {"p", "didascalia", ""},
                      {"time", "data", ""}}});
  }
  for (const auto& [name, wanted] : files) {
    SCOPED_TRACE(name);
    const std::vector<std::string> lines = Lines(name);
    ASSERT_FALSE(lines.empty());
    std::vector<std::string> faults;
    EXPECT_EQ(PlacesOf(lines, &faults), wanted);
    EXPECT_EQ(faults, std::vector<std::string>{});
    bool in_head = name.starts_with("INTEST");
    for (const std::string& line : lines) {
      const std::string upper = Upper(line);
      in_head = in_head && upper.find("</HEAD>") == std::string::npos;
      // The window's check boxes leave out the head's lines that name a background
      // or a marquee: the album rules and what uses them must not go with them.
      if (line.find("data-vf=\"album\"") != std::string::npos ||
          line.find("--vf-") != std::string::npos) {
        EXPECT_EQ(upper.find("BACKGROUND"), std::string::npos) << line;
        EXPECT_EQ(upper.find("MARQUEE"), std::string::npos) << line;
      }
      if (line.starts_with("<style data-vf=")) {
        EXPECT_TRUE(in_head) << line;
      }
    }
  }
}

TEST(TemplatePlaces, FaultsOfAPlace) {
  const std::vector<std::pair<std::string, std::string>> rows = {
      {"<img data-vf=\"foto\" src=\"web/img_001.jpg\"", "start tag not within its line"},
      {"<p data-vf=\"didascalia\">", "not closed on its line"},
      {"<p data-vf=\"didascalia\"><p>a</p></p>", "not closed on its line"},
      {"<p class=\"a\"> data-vf=\"didascalia\"</p>", "start tag not within its line"},
  };
  for (const auto& [line, fault] : rows) {
    std::vector<std::string> faults;
    EXPECT_EQ(PlacesOf({line}, &faults), std::vector<Place>{}) << line;
    ASSERT_EQ(faults.size(), 1u) << line;
    EXPECT_TRUE(faults[0].starts_with(fault)) << faults[0];
  }
}

}  // namespace
}  // namespace vf
