#ifndef VF_PAGES_ITALIAN_DATE_H_
#define VF_PAGES_ITALIAN_DATE_H_

#include <string>

#include "metadata/photo_words.h"

namespace vf {

// The days pictures were taken, as the pages write them, in UTF-8. Each
// takes real dates (as WordsFromBlobs gives them); a month outside 1 to 12
// gives "".

// "14 luglio 2025", "1 maggio 2024": the day without a leading zero.
std::string DateInItalian(TakenDate d);

// "2025-07-14", for <time datetime>.
std::string IsoDate(TakenDate d);

// The span of an album's days, from the earliest and latest found, in
// either order:
//   the same day                          "14 luglio 2025"
//   the same month, at most 7 days apart  "14–16 luglio 2025" (an en dash)
//   the same month, further apart         "luglio 2025"
//   the same year, other months           "giugno – luglio 2025"
//   other years                           "dicembre 2024 – gennaio 2025"
std::string SpanInItalian(TakenDate first, TakenDate last);

}  // namespace vf

#endif  // VF_PAGES_ITALIAN_DATE_H_
