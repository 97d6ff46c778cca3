#include "metadata/photo_words.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <string>
#include <tuple>

#include "metadata/text_decode.h"
#include "tests/support/tiff_builder.h"

namespace vf {
namespace {

using namespace std::string_literals;
using test::Ascii;
using test::Entry;
using test::IfdAt;
using test::Num;
using test::Tiff;

constexpr uint16_t kDescription = 0x010E, kTaken = 0x9003;

// EXIF as libvips gives it, IFD0 holding `ifd0` and an EXIF IFD `exif`.
std::string Exif(std::vector<Entry> ifd0, std::vector<Entry> exif = {}, bool big = false) {
  if (!exif.empty()) ifd0.push_back({0x8769, 4, 1, IfdAt(1)});
  return "Exif\0\0"s + Tiff(big, exif.empty() ? std::vector<std::vector<Entry>>{ifd0}
                                              : std::vector<std::vector<Entry>>{ifd0, exif});
}
std::string Described(const std::string& text) { return Exif({Ascii(kDescription, text)}); }

std::string Packet(const std::string& inside) {
  return "<?xpacket begin='\xEF\xBB\xBF' id='W5M0MpCehiHzreSzNTczkc9d'?>"
         "<x:xmpmeta xmlns:x='adobe:ns:meta/'><rdf:RDF "
         "xmlns:rdf='http://www.w3.org/1999/02/22-rdf-syntax-ns#'>" +
         inside + "</rdf:RDF></x:xmpmeta><?xpacket end='w'?>";
}
std::string Alt(const std::string& items) {
  return Packet(
      "<rdf:Description xmlns:dc='http://purl.org/dc/elements/1.1/'><dc:description>"
      "<rdf:Alt>" +
      items + "</rdf:Alt></dc:description></rdf:Description>");
}
std::string Item(const std::string& lang, const std::string& text) {
  return "<rdf:li xml:lang='" + lang + "'>" + text + "</rdf:li>";
}

std::string Dataset(int record, int dataset, const std::string& data) {
  return "\x1C"s + static_cast<char>(record) + static_cast<char>(dataset) + Num(data.size(), 2) +
         data;
}
// Records in Photoshop's resources, after one resource of another kind.
std::string Photoshop(const std::string& records) {
  const std::string pad = records.size() % 2 ? "\0"s : "";
  return "Photoshop 3.0\0"s + "8BIM\x03\xED\0\0"s + Num(2, 4) + "xy" + "8BIM\x04\x04\0\0"s +
         Num(records.size(), 4) + records + pad;
}

std::string Utf16(const std::string& ascii, bool big) {
  std::string out;
  for (const char c : ascii) out += big ? "\0"s + c : c + "\0"s;
  return out;
}

std::string Words(const std::string& exif, const std::string& xmp, const std::string& iptc) {
  return WordsFromBlobs(exif, xmp, iptc).description;
}

TEST(PhotoWordsTest, EachSourceGivesWayOnlyToAnEarlierOneWithADescriptionOfItsOwn) {
  const std::string exif = Described("Dalla EXIF"), xmp = Alt(Item("x-default", "Dalla XMP")),
                    iptc = Photoshop(Dataset(2, 120, "Dalla IPTC"));
  const struct {
    std::string exif, xmp, iptc, description;
  } cases[] = {
      {exif, xmp, iptc, "Dalla EXIF"},
      {"", xmp, iptc, "Dalla XMP"},
      {"", "", iptc, "Dalla IPTC"},
      {Described(" \t\r\n"), xmp, iptc, "Dalla XMP"},
      {Described("OLYMPUS DIGITAL CAMERA"), xmp, iptc, "Dalla XMP"},
      {Described("  sony dsc "), "", iptc, "Dalla IPTC"},
      {Described("Konica Minolta  Digital Camera"), xmp, "", "Dalla XMP"},
      {Described("DEFAULT"), Alt(Item("x-default", "OLYMPUS DIGITAL CAMERA")), iptc, "Dalla IPTC"},
      {Described("SONY DSC di Anna"), xmp, iptc, "SONY DSC di Anna"},
      {Exif({Ascii(0x010F, "Dalla marca")}), xmp, iptc, "Dalla XMP"},
      // ImageDescription counts in IFD0 only.
      {Exif({}, {Ascii(kDescription, "Nella EXIF")}), "", iptc, "Dalla IPTC"},
      {"Exif\0\0"s + Tiff(true, {{Ascii(kDescription, "Motorola")}}), xmp, iptc, "Motorola"},
      {Tiff(false, {{Ascii(kDescription, "Senza intestazione")}}), xmp, "", "Senza intestazione"},
      {Exif({{kDescription, 2, 4, 0, "Ok!\0"s}}), xmp, "", "Ok!"},
      {"", "", "", ""},
  };
  for (const auto& c : cases) EXPECT_EQ(Words(c.exif, c.xmp, c.iptc), c.description) << c.exif;
}

// A seed of the fuzz target: blocks that exiftool wrote into a JPEG, as
// libvips hands them over, split at "|VF|".
std::vector<std::string> Seed(const std::string& name) {
  std::ifstream file(VF_SOURCE_DIR "/tests/fuzz/corpus/words/" + name, std::ios::binary);
  std::stringstream bytes;
  bytes << file.rdbuf();
  std::vector<std::string> parts{""};
  for (const char c : bytes.str()) {
    parts.back() += c;
    if (parts.back().ends_with("|VF|")) {
      parts.back().resize(parts.back().size() - 4);
      parts.push_back("");
    }
  }
  parts.resize(3);
  return parts;
}

TEST(PhotoWordsTest, WhatExiftoolWritesIsRead) {
  const auto all = Seed("exiftool_all_three");
  const PhotoWords words = WordsFromBlobs(all[0], all[1], all[2]);
  EXPECT_EQ(words.description, "Tramonto sul lago di Garda");
  ASSERT_TRUE(words.taken);
  EXPECT_EQ(std::tuple(words.taken->year, words.taken->month, words.taken->day),
            std::tuple(2025, 7, 14));
  EXPECT_EQ(Words("", all[1], all[2]), "Il lago, d’estate & al tramonto");
  EXPECT_EQ(Words("", "", all[2]), "Città vecchia, sera");
  EXPECT_EQ(Words("", Seed("xmp_utf16le")[1], ""), "Il lago, d’estate & al tramonto");
}

TEST(PhotoWordsTest, XmpGivesItsDefaultLanguageThenItsFirstThenASimpleValue) {
  const std::string simple = Packet(
      "<rdf:Description xmlns:dc='http://purl.org/dc/elements/1.1/'><dc:description>Semplice "
      "&amp; chiaro</dc:description></rdf:Description>");
  const std::string attribute = Packet(
      "<rdf:Description dc:title='no' dc:description=\"Tramonto &quot;rosso&quot; "
      "&#224; &#xE8; &lt;3&gt; &apos;x&apos; &bogus; &\"/>");
  // The list inside 10,000 elements that are never closed.
  std::string deep = Alt(Item("x-default", "Profondo")), nest;
  for (int k = 0; k < 10000; ++k) nest += "<a>";
  deep.insert(deep.find("<rdf:Alt>"), nest);
  const struct {
    std::string xmp, description;
  } cases[] = {
      {Alt(Item("it", "Italiano") + Item("x-default", "Predefinito")), "Predefinito"},
      {Alt(Item("X-Default", "Maiuscolo") + Item("it", "Italiano")), "Maiuscolo"},
      {Alt(Item("it", "Italiano") + Item("en", "English")), "Italiano"},
      {Alt(Item("x-default", " ") + Item("it", "Italiano")), "Italiano"},
      {Alt("<rdf:li>Senza lingua</rdf:li>"), "Senza lingua"},
      {Alt(Item("x-default", "uno <b>due</b> tre")), "uno due tre"},
      {Alt(Item("it", "Italiano") + "<rdf:li a='>' xml:lang='x-default'>Giusto</rdf:li>"),
       "Giusto"},
      {Alt(Item("x-default", "<![CDATA[a <b> & c]]>")), "a <b> & c"},
      {Alt(Item("x-default", "uno<!-- commento -->due")), "unodue"},
      {simple, "Semplice & chiaro"},
      {attribute, "Tramonto \"rosso\" à è <3> 'x' &bogus; &"},
      {"\xEF\xBB\xBF" + Alt(Item("x-default", "Con BOM")), "Con BOM"},
      {"\xFE\xFF" + Utf16(Alt(Item("x-default", "UTF-16 BE")), true), "UTF-16 BE"},
      {"\xFF\xFE" + Utf16(Alt(Item("x-default", "UTF-16 LE")), false), "UTF-16 LE"},
      {Utf16(Alt(Item("x-default", "BE senza BOM")), true), "BE senza BOM"},
      {Utf16(Alt(Item("x-default", "LE senza BOM")), false), "LE senza BOM"},
      {deep, "Profondo"},
      {Packet("<dc:title><rdf:Alt>" + Item("x-default", "Titolo") + "</rdf:Alt></dc:title>"), ""},
      {Packet("<rdf:li>Fuori</rdf:li>"), ""},
      {Alt(Item("x-default", "Tronco")).substr(0, Alt("").find("<rdf:Alt>") + 30), ""},
      {"Questo non è XML", ""},
      {Packet("<dc:description"), ""},
      {Packet("<dc:description x='"), ""},
  };
  for (const auto& c : cases) EXPECT_EQ(Words("", c.xmp, ""), c.description) << c.xmp;
}

TEST(PhotoWordsTest, HostileXmpTakesLittleWork) {
  // Each would take minutes to a reader that goes back over what it read.
  const std::string many[] = {
      std::string(1 << 20, '<'),
      Packet("<dc:description>" + std::string(1 << 20, '&')),
      Packet(std::string(1 << 19, ' ') + "<dc:description a='"),
  };
  std::string deep;
  for (int k = 0; k < 100000; ++k) deep += "<dc:description><rdf:li>";
  for (const std::string& xmp : many) EXPECT_EQ(Words("", xmp, ""), "");
  EXPECT_EQ(Words("", deep + "x", ""), "");
}

TEST(PhotoWordsTest, IptcCaptionsAreUtf8OnlyWhenTheRecordsSaySo) {
  const std::string utf8 = Dataset(1, 90, "\x1B%G"), caption = "Citt\xC3\xA0";
  const struct {
    std::string iptc, description;
  } cases[] = {
      {Photoshop(utf8 + Dataset(2, 120, caption)), "Città"},
      {Photoshop(Dataset(2, 120, "Citt\xE0 \x80")), "Città €"},
      {Photoshop(Dataset(2, 120, caption + "!")), "CittÃ !"},
      {Photoshop(Dataset(1, 90, "\x1B%@") + Dataset(2, 120, "Citt\xE0")), "Città"},
      {Photoshop(Dataset(2, 5, "Titolo") + Dataset(2, 120, "Didascalia")), "Didascalia"},
      {Photoshop(Dataset(2, 120, "Prima") + Dataset(2, 120, "Seconda")), "Prima"},
      {Photoshop(Dataset(2, 120, "")), ""},
      {Photoshop(Dataset(2, 120, "Ok")).substr(14), "Ok"},
      {utf8 + Dataset(2, 120, caption), "Città"},
      // Sizes that lie: past the end, or in the extended form.
      {(utf8 + Dataset(2, 120, "Bugia")).substr(0, 11), ""},
      {"\x1C\x02\x78\x80\x02"s + Num(3, 2) + "Tre", ""},
      {"\x1C\x02\x78\x80\x04"s + Num(0xFFFFFFFF, 4) + "Tanto", ""},
      {"\x1C\x02\x05\x80\x02"s + Num(1, 2) + "x" + Dataset(2, 120, "Dopo"), "Dopo"},
      {"Photoshop 3.0\0"s + "8BIM\x04\x04\0\0"s + Num(0x7FFFFFFF, 4) + Dataset(2, 120, "x"), ""},
      {"Photoshop 3.0\0"s + "8BIM\x04\x04\xFF"s, ""},
      {"8BIM", ""},
  };
  for (const auto& c : cases) EXPECT_EQ(Words("", "", c.iptc), c.description) << c.iptc;
}

TEST(PhotoWordsTest, TheDayTakenIsARealDateFromTheExifIfd) {
  const auto taken = [](const std::string& exif) {
    const auto date = WordsFromBlobs(exif, "", "").taken;
    return date ? std::tuple(date->year, date->month, date->day) : std::tuple(0, 0, 0);
  };
  const struct {
    std::string exif;
    std::tuple<int, int, int> date;
  } cases[] = {
      {Exif({}, {Ascii(kTaken, "2025:07:14 10:22:33")}), {2025, 7, 14}},
      {Exif({}, {Ascii(kTaken, "2025:07:14 10:22:33")}, true), {2025, 7, 14}},
      {Exif({}, {Ascii(kTaken, "2024:02:29 00:00:00")}), {2024, 2, 29}},
      {Exif({}, {Ascii(kTaken, "2000:02:29 23:59:60")}), {2000, 2, 29}},
      {Exif({}, {Ascii(kTaken, "1800:01:01")}), {1800, 1, 1}},
      {Exif({}, {Ascii(kTaken, "2200:12:31 12:00:00  ")}), {2200, 12, 31}},
      {Exif({}, {Ascii(kTaken, "2023:02:29 00:00:00")}), {0, 0, 0}},
      {Exif({}, {Ascii(kTaken, "1900:02:29 00:00:00")}), {0, 0, 0}},
      {Exif({}, {Ascii(kTaken, "0000:00:00 00:00:00")}), {0, 0, 0}},
      {Exif({}, {Ascii(kTaken, "2025:13:45 10:00:00")}), {0, 0, 0}},
      {Exif({}, {Ascii(kTaken, "2025:04:31 10:00:00")}), {0, 0, 0}},
      {Exif({}, {Ascii(kTaken, "2025:07:00 10:00:00")}), {0, 0, 0}},
      {Exif({}, {Ascii(kTaken, "1799:12:31 10:00:00")}), {0, 0, 0}},
      {Exif({}, {Ascii(kTaken, "2201:01:01 10:00:00")}), {0, 0, 0}},
      {Exif({}, {Ascii(kTaken, "2025:07:14 24:00:00")}), {0, 0, 0}},
      {Exif({}, {Ascii(kTaken, "2025:07:14 10:60:00")}), {0, 0, 0}},
      {Exif({}, {Ascii(kTaken, "2025:07:14 10:00:61")}), {0, 0, 0}},
      {Exif({}, {Ascii(kTaken, "2025-07-14 10:00:00")}), {0, 0, 0}},
      {Exif({}, {Ascii(kTaken, "2025:07:14T10:00:00")}), {0, 0, 0}},
      {Exif({}, {Ascii(kTaken, "2025:7:14 10:00:00")}), {0, 0, 0}},
      {Exif({}, {Ascii(kTaken, "2025:07:14 10:00")}), {0, 0, 0}},
      {Exif({}, {Ascii(kTaken, "    :  :     :  :  ")}), {0, 0, 0}},
      {Exif({}, {Ascii(kTaken, "+025:07:14 10:00:00")}), {0, 0, 0}},
      // Only the EXIF IFD's DateTimeOriginal, not one in IFD0 nor the
      // DateTime of the file's last change.
      {Exif({Ascii(kTaken, "2025:07:14 10:22:33")}), {0, 0, 0}},
      {Exif({}, {Ascii(0x0132, "2025:07:14 10:22:33")}), {0, 0, 0}},
  };
  for (const auto& c : cases) EXPECT_EQ(taken(c.exif), c.date) << c.exif;
}

TEST(PhotoWordsTest, BrokenExifGivesWhatLiesInsideTheBlockAndNoMore) {
  const std::string looped =
      "Exif\0\0"s + Tiff(false, {{Ascii(kDescription, "Giro"), {0x8769, 4, 1, IfdAt(0)}}}, 8);
  std::string outside = Described("Fuori dal blocco");
  outside.resize(outside.size() - 4);
  const struct {
    std::string exif, description;
  } cases[] = {
      {looped, "Giro"},
      {outside, ""},
      {Exif({{kDescription, 2, 0xFFFFFFFF, 0x10}}), ""},
      {Exif({{kDescription, 3, 1, 0x41}}), ""},
      {"Exif\0\0II*\0\xF0\xFF\xFF\xFF"s, ""},
      {"Exif\0\0MM"s, ""},
  };
  for (const auto& c : cases) EXPECT_EQ(Words(c.exif, "", ""), c.description) << c.exif;
}

TEST(PhotoWordsTest, ASidecarGivesTheFirstParagraphOfItsText) {
  std::string cut_read;
  while (cut_read.size() < 400) cut_read += "parola ";
  cut_read += "par";
  const struct {
    std::string bytes;
    bool longer;
    std::string description;
  } cases[] = {
      {"Una gita al lago.\nCon gli amici.\n\nNote private", false,
       "Una gita al lago. Con gli amici."},
      {"\r\n  \nDopo righe vuote\r\n\t \r\nNo", false, "Dopo righe vuote"},
      {"Solo\rCR\r\rNo", false, "Solo CR"},
      {"\xEF\xBB\xBF"
       "Citt\xC3\xA0",
       false, "Città"},
      {"\xFF\xFE" + Utf16("Sedici LE\n\nNo", false), false, "Sedici LE"},
      {"\xFE\xFF" + Utf16("Sedici BE", true) + "\xD8\x3D\xDE\x00"s, false, "Sedici BE😀"},
      {"Caff\xE8 \x93"
       "corretto\x94",
       false, "Caffè “corretto”"},
      {"Citt\xC3\xA0 e caff\xE8", false, "CittÃ e caffè"},
      {"Testo\0binario"s, false, ""},
      {"\xFF\xFE" + Utf16("Con\0NUL"s, false), false, ""},
      {"\xFF\xFE" + Utf16("x", false) + "\x00\xDC"s + Utf16("y", false), false, "x\uFFFDy"},
      {"\x01\x02\x03\x04 ab", false, ""},
      {"\x01\x02 abcdefghi", false, "abcdefghi"},
      {"", false, ""},
      {" \n\t\n", false, ""},
      // A read that stopped inside a word, or inside a character.
      {"Una frase tronc", true, "Una frase…"},
      {"Citt\xC3\xA0 e citt\xC3", true, "Città e…"},
      {"\xFF\xFE" + Utf16("Fine a met", false) + "\x3D\xD8"s, true, "Fine a…"},
      {"Finito.\n\nAltro", true, "Finito."},
      {cut_read, true, CleanDescription(cut_read)},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(SidecarDescription(c.bytes, c.longer), c.description) << c.bytes;
  }
  EXPECT_TRUE(CleanDescription(cut_read).ends_with("parola…"));
}

// The number of characters of well-formed UTF-8, -1 for any other bytes.
int Chars(const std::string& text) {
  int chars = 0;
  for (size_t at = 0; at < text.size(); ++chars) {
    const size_t start = at;
    if (NextChar(text, &at) == FromWindows1252(text[start] & 0xFF) && text[start] & 0x80) return -1;
  }
  return chars;
}

TEST(PhotoWordsTest, CleaningLeavesOneLineOfAtMostThreeHundredCharacters) {
  std::string words, megabyte;
  for (int k = 0; k < 100; ++k) words += "àbc ";  // 4 characters, 5 bytes each
  while (megabyte.size() < (1 << 20)) megabyte += "Parola\u00A0lunga\r\n";
  const std::string one_word(400, 'w'), emoji_word(150, 'e');
  const struct {
    std::string text, cleaned;
  } cases[] = {
      {"  Riga\r\nsotto\triga \u00A0\u2003 fine  ", "Riga sotto riga fine"},
      {"a\x01\x1F\x7F"
       "b\xC2\x85"
       "c\xC2\x9D"
       "d",
       "ab cd"},
      {"\u202Eevil\u202C \u2066iso\u2069 \uFEFFbom", "evil iso bom"},
      {"\xE8 \x80 \xC3\x28 \xED\xA0\x80 \xF4\x90\x80\x80 \xC0\xAF", "è € Ã( í € ô€€ À¯"},
      {" \t\r\n\u00A0\u3000", ""},
      {"\x01\x02", ""},
      {words.substr(0, 5 * 75), words.substr(0, 5 * 75 - 1)},
      {words + "x", words.substr(0, 5 * 74 + 4) + "\u2026"},
      {words.substr(0, 5 * 75) + "x", words.substr(0, 5 * 74 + 4) + "\u2026"},
      {one_word, std::string(300, 'w') + "\u2026"},
      {"ab " + one_word, "ab\u2026"},
      {std::string(299, 'y') + " zz", std::string(299, 'y') + "\u2026"},
      {std::string(300, 'y') + " zz", std::string(300, 'y') + "\u2026"},
      {std::string(300, 'y') + "   ", std::string(300, 'y')},
  };
  for (const auto& c : cases) EXPECT_EQ(CleanDescription(c.text), c.cleaned) << c.text;
  const std::string cut = CleanDescription(megabyte);
  EXPECT_EQ(Chars(cut), 300 - 1) << cut;  // "Parola lunga " ×23, ending "lunga…"
  EXPECT_TRUE(cut.ends_with("lunga\u2026")) << cut;
  EXPECT_EQ(Chars(CleanDescription(words + words)), 300);
}

}  // namespace
}  // namespace vf
