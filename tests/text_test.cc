// Case folding, numbers read from and written into texts, Windows paths and
// the sizes file's lines.
#include <gtest/gtest.h>

#include <string>

#include "desktop/site_publishing.h"
#include "generator/cella.h"
#include "platform/case_fold.h"
#include "platform/failure.h"
#include "platform/windows_path.h"
#include "publish/site_names.h"
#include "publish/sizes_file.h"
#include "shell/testo.h"

namespace vf {
namespace {

TEST(Text, CaseFoldingOfAsciiAndLatin1) {
  EXPECT_EQ(ToUpper("Città.jpg azAZ"), "CITTÀ.JPG AZAZ");
  EXPECT_EQ(ToLower("ÀÉÌÒÙ ÞÖ azAZ@[`{"), "àéìòù þö azaz@[`{");
  // × ÷ ß ÿ have no partner in the same range and stay as they are.
  EXPECT_EQ(ToUpper("×÷ßÿ") + ToLower("×÷ßÿ"), "×÷ßÿ×÷ßÿ");
  EXPECT_TRUE(EqualIgnoringCase("Foto À.JPG", "foto à.jpg") && !EqualIgnoringCase("a", "ab"));
  // A lone lead byte is no letter and must not swallow the byte after it;
  // C3 80 and C3 BF are the ends of the folded range.
  EXPECT_EQ(ToLower("\xC3\x41\x42"), "\xC3\x61\x62");
  EXPECT_EQ(ToUpper("\xC3\xC3\xA0\xC3\xBE"), "\xC3\xC3\x80\xC3\x9E");
  EXPECT_EQ(ToLower("\xC3\x80\xC3\x7F"), "\xC3\xA0\xC3\x7F");
  EXPECT_EQ(ToUpper("end\xC3"), "END\xC3");
  // Other letters' bytes after any lead byte but C3 stay as they are.
  EXPECT_EQ(ToUpper("中€") + ToLower("中€"), "中€中€");
}

TEST(Text, MediaExtensionsAreExactOrStartWithMP) {
  for (const char* e : {"HTM", "WAV", "MP3", "MID", "WMA", "AVI", "MPG"})
    EXPECT_TRUE(Voce_Multimediale(e)) << e;
  for (const char* e : {"JPG", "HTML", "htm", "M", ""}) EXPECT_FALSE(Voce_Multimediale(e)) << e;
}

TEST(Text, LeadingNumbersAndNumberForms) {
  const std::pair<const char*, double> leading[] = {
      {"12abc", 12}, {"  9", 9},   {"2.5", 2.5},  {"-3x", -3},   {".5", 0.5},
      {"1e3", 1000}, {"9e", 9},    {"abc", 0},    {"", 0},       {"-", 0},
      {".", 0},      {"1e999", 0}, {"5e-1", 0.5}, {"1E+2", 100}, {"1e-", 1},
      {"10", 10},    {"\t+4", 4},  {"+-3", 0},    {"inf", 0},    {"0x10", 0}};
  for (auto [text, value] : leading) EXPECT_EQ(NumeroIniziale(text), value) << text;
  EXPECT_EQ(Trim("  a b  ") + Trim(" "), "a b");
  EXPECT_EQ(ConBlank(1) + ConBlank(-1) + ConBlank(0) + Decimale(18) + " " + Decimale(2.5) + " " +
                Decimale(9e15),
            " 1-1 018 2.5 9e+15");
  EXPECT_EQ(ArrotondaPari(2.5) * 100 + ArrotondaPari(3.5) * 10 + ArrotondaPari(1.4), 241);
  EXPECT_EQ(Intero(1e300), Intero(9.3e18));
}

std::string Parsed(std::string_view text) {
  ParsedPath out;
  int failure = ParseWindowsPath(text, ParsedPath{'C', {"sito", "foto"}}, &out);
  return failure == kOk ? FormatWindowsPath(out) : "ERR " + std::to_string(failure);
}

TEST(Text, SiteNamesInEitherCaseKeepTheLastDigits) {
  // Names in small letters, in capitals, and the numbers' last digits.
  const std::vector<std::pair<std::string, std::string>> names = {
      {AlbumFolderName(1, false), "dir_0001"},
      {AlbumFolderName(12345, true), "DIR_2345"},
      {CopyName(7, "JpG", false), "img_007.jpg"},
      {CopyName(1000, "tif", true), "IMG_000.TIF"},
      {PicturePageName(12, false) + PicturePageName(3, true), "img_012.htmIMG_003.HTM"},
      {MenuLinkFromIndex(2, true), "DIR_0002\\MENU.HTM"},
      {MenuLinkFromAlbum(9, false), "../dir_0009/menu.htm"},
      {IndexLinkFromAlbum(true) + IndexLinkFromAlbum(false), "../INDEX.HTM../index.htm"},
      {SizeFolderName("Mini", true) + SizeFolderName("WEB", false), "MINIweb"},
      {CopyExtension("C:\\F\\a.jpeg") + CopyExtension("ab") + CopyExtension(""), "pegab"},
      // The AVIF beside a derived picture: the copy's name to its first dot,
      // in the case of the copy's name.
      {AvifName("img_001.eic"), "img_001.avif"},
      {AvifName("IMG_001.JPG"), "IMG_001.AVIF"},
      {AvifName("IMG_002.vif"), "IMG_002.avif"},
      {AvifName("img_003..jp"), "img_003.avif"},
      {AvifName("img_004.") + " " + AvifName("IMG_005"), "img_004.avif IMG_005.AVIF"},
      // Names read back: the place, or 0 for another form.
      {std::to_string(PlaceOfPictureName("web/IMG_003.JPG") * 1000 +
                      PlaceOfPictureName("img_120.") * 10 + PlaceOfPictureName("../img_7.jpg") +
                      PlaceOfPictureName("img_00x.jpg") + PlaceOfPictureName("pic_001.jpg") +
                      PlaceOfPictureName("img_001jpg")),
       "4200"}};
  for (const auto& [made, expected] : names) EXPECT_EQ(made, expected);
}

TEST(Text, WindowsPaths) {
  // Typed|form, the current folder being C:\sito\foto. Blanks and dots at
  // the ends of a name are part of it.
  const char* const rows[] = {"index.htm|C:\\sito\\foto\\index.htm",
                              "\\sito\\index.htm|C:\\sito\\index.htm",
                              "c:name|C:\\sito\\foto\\name",
                              "z:name|Z:\\name",
                              "A:|A:\\",
                              "a:x|A:\\x",
                              "c:|C:\\sito\\foto",
                              "c:\\sito\\\\index.htm|C:\\sito\\index.htm",
                              "Z:/a/b\\c/|Z:\\a\\b\\c",
                              "C:\\a\\.\\b\\..\\c|C:\\a\\c",
                              "..\\..\\..\\..\\x|C:\\x",
                              "\\\\server\\share|C:\\server\\share",
                              "C:\\a. \\ b...\\...|C:\\a. \\ b...\\..."};
  for (const std::string row : rows) {
    const size_t bar = row.rfind('|');
    EXPECT_EQ(Parsed(row.substr(0, bar)), row.substr(bar + 1)) << row;
  }
  for (std::string text : std::initializer_list<std::string>{
           "", "<C:\\Foto\\Sub>", "C:\\a:b", "a?.jpg", "C:\\*.*", "x|y", "\"q\"", "1:\\x", "CC:\\x",
           "C:\\a>b", "C:\\tab\there", std::string("a\0b", 3)}) {
    EXPECT_EQ(Parsed(text), "ERR 52") << text;
  }
}

// The message of the sizes file's bad lines, one a line.
std::string Lines(const std::vector<std::string>& lines) {
  std::string m = "Righe non valide nel file DIMENSIONI.TXT, non considerate:";
  for (const std::string& line : lines) m += "\r" + line;
  return m;
}

TEST(Text, SizesFileLinesGiveSizesAndBadOnesAreNamed) {
  const SizesFile f = ParseSizesFile(
      "# formato: cartella pixel\r\nmini 480\r\n\r\n  web\t1600  \r\nzero 0\nmeno -5\nmezzo 2.5\n"
      "troppo 20001\ntanto 20000\nuno 1\n../fuori 300\na/b 300\na\\b 300\n.. 300\npunto. 300\n"
      "due:punti 300\nMINI 200\nsolo\ntre parole 300\n300");
  std::vector<std::string> sizes;
  for (const DerivedSize& s : f.sizes) sizes.push_back(s.folder + " " + std::to_string(s.pixels));
  EXPECT_EQ(sizes, (std::vector<std::string>{"mini 480", "web 1600", "tanto 20000", "uno 1"}));
  EXPECT_EQ(
      BadLinesMessage(f),
      Lines({"riga 5: zero 0", "riga 6: meno -5", "riga 7: mezzo 2.5", "riga 8: troppo 20001",
             "riga 11: ../fuori 300", "riga 12: a/b 300", "riga 13: a\\b 300", "riga 14: .. 300",
             "riga 15: punto. 300", "riga 16: due:punti 300", "riga 17: MINI 200", "riga 18: solo",
             "riga 19: tre parole 300", "riga 20: 300"}));
  EXPECT_EQ(BadLinesMessage(ParseSizesFile("mini 480")), "");
}

TEST(Text, TheSettingsAreSaidOnceAndTheFileIsUtf8) {
  // The file's text; whether copies keep their metadata; the sizes; the bad
  // lines; the site's title.
  struct Row {
    std::string text;
    bool keep;
    size_t sizes;
    std::string bad;
    std::string title = "";
    bool avif = true;
  };
  const Row rows[] = {
      {"mini 480\n", false, 1, ""},
      {"metadati tieni\r\nmini 480\r\n", true, 1, ""},
      {"Metadati TOGLI\n", false, 0, ""},
      {"metadati tieni\nmetadati togli\n", true, 0, "riga 2: metadati togli"},
      {"metadati forse\nmetadati\nmetadati 300\nMETADATI tieni x\n", false, 0,
       "riga 1: metadati forse\rriga 2: metadati\rriga 3: metadati 300\rriga 4: METADATI tieni x"},
      {"\xEF\xBB\xBFmini 480\nweb\xE9 900\nmedia\xC3\xA9 700\n\xED\xA0\x80 5\n", false, 2,
       "riga 2: web\xE9 900\rriga 4: \xED\xA0\x80 5"},
      {"titolo  Vacanze  in Liguria \t\r\nmini 480\n", false, 1, "", "Vacanze  in Liguria"},
      {"TITOLO Citt\xC3\xA0\ntitolo Altro\ntitolo\ntitolo \xE9\n", false, 0,
       "riga 2: titolo Altro\rriga 3: titolo\rriga 4: titolo \xE9", "Citt\xC3\xA0"},
      {"a\xC0\x80 1\nb\xF4\x90\x80\x80 1\nc\xE2\x82 1\nd\xF0\x9F\x98\x80 1\ne\xE0\x80\x80 1\n",
       false, 1,
       "riga 1: a\xC0\x80 1\rriga 2: b\xF4\x90\x80\x80 1\rriga 3: c\xE2\x82 1\rriga 5: "
       "e\xE0\x80\x80 1"},
      // AVIF beside the web sizes: "si" or "no", said once; "avif" names no size.
      {"avif no\r\nmini 480\r\n", false, 1, "", "", false},
      {"AVIF Si\nAvif NO\n", false, 0, "riga 2: Avif NO"},
      {"avif NO\navif si\n", false, 0, "riga 2: avif si", "", false},
      {"avif\navif s\xC3\xAC\navif 480\navif no grazie\navif sì no\n", false, 0,
       "riga 1: avif\rriga 2: avif s\xC3\xAC\rriga 3: avif 480\rriga 4: avif no grazie\rriga 5: "
       "avif sì no"},
      {"Avif 480\nmetadati tieni\navif no\n", true, 0, "riga 1: Avif 480", "", false},
  };
  for (const Row& row : rows) {
    const SizesFile f = ParseSizesFile(row.text);
    EXPECT_EQ(f.keep_metadata, row.keep) << row.text;
    EXPECT_EQ(f.sizes.size(), row.sizes) << row.text;
    EXPECT_EQ(f.title, row.title) << row.text;
    EXPECT_EQ(f.avif, row.avif) << row.text;
    EXPECT_EQ(BadLinesMessage(f), row.bad.empty() ? "" : Lines({}) + "\r" + row.bad) << row.text;
  }
}

TEST(Text, SizeFolderNamesHaveAtMost64CharactersAndBadLinesAreCut) {
  auto repeat = [](const std::string& piece, size_t n) {
    std::string text;
    for (size_t i = 0; i < n; ++i) text += piece;
    return text;
  };
  const std::string a64 = repeat("a", 64), e64 = repeat("è", 64);
  const SizesFile f = ParseSizesFile(a64 + " 100\n" + e64 + " 200\n" + repeat("b", 65) + " 300\n" +
                                     repeat("é", 65) + " 400\n" + repeat("x", 100000) + " 500\n" +
                                     "z " + repeat("9", 78) + "\n" + "y " + repeat("à", 79) + "\n");
  ASSERT_EQ(f.sizes.size(), 2u);
  EXPECT_EQ(f.sizes[0].folder + f.sizes[1].folder, a64 + e64);
  // A line is shown whole up to 80 characters, else its first 80 and "…".
  EXPECT_EQ(BadLinesMessage(f),
            Lines({"riga 3: " + repeat("b", 65) + " 300", "riga 4: " + repeat("é", 65) + " 400",
                   "riga 5: " + repeat("x", 80) + "…", "riga 6: z " + repeat("9", 78),
                   "riga 7: y " + repeat("à", 78) + "…"}));
}

}  // namespace
}  // namespace vf
