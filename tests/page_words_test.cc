#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "pages/html_text.h"
#include "pages/italian_date.h"

namespace vf {
namespace {

using namespace std::string_literals;

TEST(PageWordsTest, DatesAndSpansInItalian) {
  const struct {
    TakenDate first, last;
    std::string date, iso, span;
  } cases[] = {
      {{2025, 7, 14}, {2025, 7, 14}, "14 luglio 2025", "2025-07-14", "14 luglio 2025"},
      {{2024, 5, 1}, {2024, 5, 8}, "1 maggio 2024", "2024-05-01", "1–8 maggio 2024"},
      {{2025, 7, 16}, {2025, 7, 14}, "16 luglio 2025", "2025-07-16", "14–16 luglio 2025"},
      {{2025, 1, 1}, {2025, 1, 9}, "1 gennaio 2025", "2025-01-01", "gennaio 2025"},
      {{2025, 2, 28}, {2025, 3, 1}, "28 febbraio 2025", "2025-02-28", "febbraio – marzo 2025"},
      {{2025, 7, 14}, {2025, 6, 30}, "14 luglio 2025", "2025-07-14", "giugno – luglio 2025"},
      {{2024, 12, 31},
       {2025, 1, 1},
       "31 dicembre 2024",
       "2024-12-31",
       "dicembre 2024 – gennaio 2025"},
      {{2025, 1, 1},
       {2024, 12, 31},
       "1 gennaio 2025",
       "2025-01-01",
       "dicembre 2024 – gennaio 2025"},
      {{2023, 4, 10}, {2023, 4, 10}, "10 aprile 2023", "2023-04-10", "10 aprile 2023"},
      {{1850, 8, 5}, {1850, 9, 5}, "5 agosto 1850", "1850-08-05", "agosto – settembre 1850"},
      {{2025, 10, 2}, {2025, 11, 2}, "2 ottobre 2025", "2025-10-02", "ottobre – novembre 2025"},
      {{2025, 10, 2}, {2025, 10, 31}, "2 ottobre 2025", "2025-10-02", "ottobre 2025"},
      {{2025, 0, 2}, {2025, 1, 2}, "", "", ""},
      {{2025, 13, 2}, {2025, 1, 2}, "", "", ""},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(DateInItalian(c.first), c.date) << c.date;
    EXPECT_EQ(IsoDate(c.first), c.iso) << c.date;
    EXPECT_EQ(SpanInItalian(c.first, c.last), c.span) << c.date;
  }
}

TEST(PageWordsTest, HtmlTextIsAsciiThatEndsNoElementAndNoAttribute) {
  const struct {
    std::string text, html;
  } cases[] = {
      {"<script>alert(1)</script>", "&lt;script&gt;alert(1)&lt;/script&gt;"},
      {"\"><img src=x onerror=alert(1)>", "&quot;&gt;&lt;img src=x onerror=alert(1)&gt;"},
      {"l'alba & il tramonto", "l&#39;alba &amp; il tramonto"},
      {"&amp;", "&amp;amp;"},
      {"Città’ 📷", "Citt&#224;&#8217; &#128247;"},
      {"\xE0 \x92 \xC3", "&#224; &#8217; &#195;"},
      {"a\tb\nc\x7F\xC2\x85"
       "d\xC2\xA0"
       "e",
       "abcd&#160;e"},
      {"\x81\x8D", ""},
      {"", ""},
  };
  for (const auto& c : cases) EXPECT_EQ(HtmlText(c.text), c.html) << c.text;
}

TEST(PageWordsTest, CssStringsCannotEndEarlyNorCloseTheirStyle) {
  const struct {
    std::string text, css;
  } cases[] = {
      {"Città", "Citt\\E0 "},
      {"Fine…", "Fine\\2026 "},
      {"say \"hi\" \\o/", "say \\\"hi\\\" \\\\o/"},
      {"</style><script>", "\\3C /style>\\3C script>"},
      {"due\nrighe\r", "due\\A righe\\D "},
      {"📷 'x' {a:b;}", "\\1F4F7  'x' {a:b;}"},
      {"\xE8\x7F", "\\E8 \\7F "},
      {"a\0b"s, "ab"},
  };
  for (const auto& c : cases) EXPECT_EQ(CssString(c.text), c.css) << c.text;
}

TEST(PageWordsTest, FolderListsNameEachFolderOnce) {
  const struct {
    std::vector<std::string> names;
    std::string list;
  } cases[] = {
      {{"Mare", "Montagna"}, "Mare · Montagna"},
      {{"Mare", "MARE", "mare", "Lago"}, "Mare · Lago"},
      {{"Lago", "Mare", "lago"}, "Lago · Mare"},
      {{"Città", "CITTÀ", "Città"}, "Città"},
      {{"Łódź", "ŁÓDŹ", "Ÿves", "ÿVES", "Œuvre", "œUVRE"}, "Łódź · Ÿves · Œuvre"},
      {{"Mare", "Mare "}, "Mare · Mare "},
      {{"Straße", "STRASSE"}, "Straße · STRASSE"},
      {{"", "Solo", ""}, "Solo"},
      {{"Uno"}, "Uno"},
      {{}, ""},
  };
  for (const auto& c : cases) EXPECT_EQ(FolderList(c.names), c.list) << c.list;
}

}  // namespace
}  // namespace vf
