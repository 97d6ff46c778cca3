#ifndef VF_METADATA_PHOTO_WORDS_H_
#define VF_METADATA_PHOTO_WORDS_H_

#include <optional>
#include <string>
#include <string_view>

namespace vf {

// What a picture says in words for its page: its description and the day it
// was taken. Every function here takes bytes that anyone may have written,
// reads only inside them, does work linear in their size and never fails:
// what cannot be read is simply not there.

// A real calendar date, 1800 to 2200.
struct TakenDate {
  int year = 0;
  int month = 0;
  int day = 0;
};

struct PhotoWords {
  std::string description;         // UTF-8, as CleanDescription gives it; empty for none
  std::optional<TakenDate> taken;  // EXIF's DateTimeOriginal; never a file's time
};

// The words of a picture from its metadata blobs as libvips gives them, each
// possibly empty: `exif` ("Exif\0\0" then a TIFF header, or the TIFF header
// itself), `xmp` (an XMP packet in UTF-8 or UTF-16, with or without a byte
// order mark) and `iptc` (a JPEG's APP13 payload: "Photoshop 3.0\0" and
// Photoshop's resources, the resources alone or bare IPTC records).
// The description is the first of these that is something once cleaned and
// is not a camera's own default ("OLYMPUS DIGITAL CAMERA"): EXIF's
// ImageDescription in IFD0; XMP's dc:description (its x-default language,
// else its first, else a simple value or attribute); IPTC's caption (2:120),
// UTF-8 when 1:90 says so, else Windows-1252. The date is EXIF's
// DateTimeOriginal, in the EXIF IFD, when it is a real date.
PhotoWords WordsFromBlobs(std::string_view exif, std::string_view xmp, std::string_view iptc);

// The description in a sidecar text file, from the first bytes the caller
// read of it (at most 64 KiB; `longer_than_read` when the file goes on past
// them): UTF-8 (a byte order mark skipped), UTF-16 with a byte order mark,
// else Windows-1252. Only the first paragraph counts, up to the first blank
// line (blank lines before it are passed over). A binary file (a NUL, or
// more than a quarter control characters) gives "", as does one with no
// text. A paragraph that the read cuts loses its last, cut word and ends
// with "…".
std::string SidecarDescription(std::string_view bytes, bool longer_than_read);

// Text from anywhere made fit for a page: bytes that are not UTF-8 are taken
// as Windows-1252; control characters and the bidirectional embeddings,
// overrides and isolates are dropped; each run of white space (line breaks,
// tabs, no-break spaces...) becomes one blank, and the ends are trimmed.
// Longer text is cut to at most 300 characters (code points) at the end of
// a word, the last word cut only when it alone is longer, and "…" (U+2026)
// is added. "" when nothing is left.
std::string CleanDescription(std::string_view text);

// "YYYY:MM:DD HH:MM:SS" (the time may be missing; NULs or blanks may
// follow) as EXIF writes dates, when it is a real date from 1800 to 2200
// and the time, if given, is a real time.
std::optional<TakenDate> ExifDate(std::string_view text);

}  // namespace vf

#endif  // VF_METADATA_PHOTO_WORDS_H_
