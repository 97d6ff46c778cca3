#ifndef VF_DESKTOP_REASON_WORDS_H_
#define VF_DESKTOP_REASON_WORDS_H_

#include <string>

#include "publish/reason.h"

namespace vf {

// The few Italian words the user reads for why a derived picture is a plain
// copy or could not be written: "file troncato", "non è un'immagine",
// "troppo grande: 60000×60000", "disco pieno", "sorgente mancante"...; for
// the record of an album folder, "registro delle immagini ridotte non
// scritto: " and the words of the write's failure. The reason's detail shows
// only in the dimensions of a picture too large.
std::string ReasonWords(const Reason& why);

}  // namespace vf

#endif  // VF_DESKTOP_REASON_WORDS_H_
