#include "desktop/reason_words.h"

namespace vf {
namespace {

std::string WordsOf(const Reason& why) {
  using What = Reason::What;
  switch (why.what) {
    case What::kCut:
      return "file troncato";
    case What::kDamaged:
      return "file danneggiato";
    case What::kUnknownFormat:
      return "formato non gestito";
    case What::kNotAPicture:
      return "non è un'immagine";
    case What::kTooLarge: {
      // The dimensions come as "WIDTHxHEIGHT"; the user reads a times sign.
      std::string size = why.detail;
      if (const size_t x = size.find('x'); x != std::string::npos) size.replace(x, 1, "×");
      return "troppo grande: " + size;
    }
    case What::kScaleFailed:
      return "riduzione non riuscita";
    case What::kNoScaler:
      return "riduzione non disponibile";
    case What::kAvifFailed:
      return "codifica AVIF non riuscita";
    case What::kSourceMissing:
      return "sorgente mancante";
    case What::kSourceUnreadable:
      return "sorgente non leggibile";
    case What::kFolderNotMade:
      return "cartella non creata";
    case What::kDiskFull:
      return "disco pieno";
    case What::kFolderMissing:
      return "cartella mancante";
    case What::kWriteFailed:
      break;
  }
  return "scrittura non riuscita";
}

}  // namespace

std::string ReasonWords(const Reason& why) {
  const std::string words = WordsOf(why);
  return why.of_record ? "registro delle immagini ridotte non scritto: " + words : words;
}

}  // namespace vf
