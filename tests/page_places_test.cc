#include "pages/page_places.h"

#include <gtest/gtest.h>

namespace vf {
namespace {

PlaceTexts Words() {
  PlaceTexts t;
  t.sito = "Vacanze 2025";
  t.titolo = "Tronco d&#39;albero";
  t.didascalia = "Tronco nel bosco";
  t.data = "14 luglio 2025";
  t.data_iso = "2025-07-14";
  t.album = "Casa &#183; Mare";
  t.album_rules = "td{--vf-album:\"x\"}";
  t.picture = [](std::string_view src) {
    if (src == "web/img_002.jpg") return PictureFacts{"Un faro", 1067, 1600};
    if (src == "mini/img_003.jpg") return PictureFacts{"", 300, 200};
    return PictureFacts{};
  };
  t.exists = [](std::string_view url) { return url.ends_with("img_002.avif"); };
  return t;
}

TEST(PagePlaces, EachPlaceTakesItsTextAndNothingElseMoves) {
  struct Case {
    const char* page;
    const char* filled;  // nullptr: the page stays as it is
  } cases[] = {
      {"<title data-vf=\"titolo\">Foto 2</title>\r\n",
       "<title data-vf=\"titolo\">Tronco d&#39;albero</title>\r\n"},
      {"<H1 DATA-VF='sito' class=x>Vetrina Foto</H1>\r\n",
       "<H1 DATA-VF='sito' class=x>Vacanze 2025</H1>\r\n"},
      {"<p data-vf=\"didascalia\"></p><p data-vf=\"album\">a</p>\r\n",
       "<p data-vf=\"didascalia\">Tronco nel bosco</p><p data-vf=\"album\">Casa &#183; "
       "Mare</p>\r\n"},
      {"<time data-vf=\"data\"></time>",
       "<time data-vf=\"data\" datetime=\"2025-07-14\">14 luglio 2025</time>"},
      {"<time datetime=\"1999\" data-vf=\"data\">x</time>",
       "<time datetime=\"2025-07-14\" data-vf=\"data\">14 luglio 2025</time>"},
      {"<style data-vf=\"album\"></style>\r\n",
       "<style data-vf=\"album\">td{--vf-album:\"x\"}</style>\r\n"},
      // The picture's alt and size, replaced or added; another src gets only its size.
      // An AVIF source stays only when all its files are there.
      {"<source data-vf=\"avif\" type=\"image/avif\" srcset=\"mini/img_002.avif 480w, "
       "web/img_002.avif 1600w\">\r\n",
       nullptr},
      {"<picture><source data-vf=\"avif\" srcset=\"mini/img_002.avif 480w,web/img_003.avif "
       "1600w\"><img src=x></picture>",
       "<picture><img src=x></picture>"},
      // A source that names no file asks for nothing; one with no srcset goes.
      {"<source data-vf=avif srcset=\"\"><source data-vf=avif>",
       "<source data-vf=avif srcset=\"\">"},
      {"<img data-vf=\"foto\" src=\"web/img_002.jpg\" alt=\"Foto 2\" width=\"1200\" "
       "height=\"800\">",
       "<img data-vf=\"foto\" src=\"web/img_002.jpg\" alt=\"Un faro\" width=\"1067\" "
       "height=\"1600\">"},
      {"<img src=mini/img_003.jpg data-vf=foto alt=\"Foto 3\"/>",
       "<img src=mini/img_003.jpg data-vf=foto alt=\"Foto 3\" width=\"300\" height=\"200\"/>"},
      {"<img data-vf=\"foto\" src=\"web/img_009.jpg\" alt=\"Foto 9\">", nullptr},
      // Places that cannot be filled stay as written.
      {"<title data-vf=\"titolo\">Foto 2\r\n</title>", nullptr},
      {"<h1 data-vf=\"titolo\"\r\n>Foto 2</h1>", nullptr},
      {"<p data-vf=\"ignoto\">x</p><p data-vf=\"titolo\">x</div>", nullptr},
      {"<p>data-vf=\"titolo\"</p> <!-- <p data-vf=\"x\"> -->", nullptr},
      {"2 <3 data-vf=\"titolo\">x</3>", nullptr},
      {"<img data-vf=\"foto\" src=\"web/img_002.jpg", nullptr},
  };
  const PlaceTexts words = Words();
  for (const Case& c : cases) {
    std::string page = c.page;
    const bool changed = FillPlaces(&page, words);
    EXPECT_EQ(changed, c.filled != nullptr) << c.page;
    EXPECT_EQ(page, c.filled ? c.filled : c.page) << c.page;
  }
}

TEST(PagePlaces, EmptyTextsLeaveTheTemplatesWords) {
  const std::string original =
      "<title data-vf=\"titolo\">Foto 2</title>\r\n<time data-vf=\"data\"></time>\r\n"
      "<img data-vf=\"foto\" src=\"web/img_002.jpg\" alt=\"Foto 2\">\r\n";
  std::string page = original;
  EXPECT_FALSE(FillPlaces(&page, PlaceTexts{}));
  EXPECT_EQ(page, original);
  // A date in words without its machine form is no date.
  PlaceTexts half;
  half.data = "14 luglio 2025";
  EXPECT_FALSE(FillPlaces(&page, half));
}

}  // namespace
}  // namespace vf
