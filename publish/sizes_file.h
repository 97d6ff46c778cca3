#ifndef VF_PUBLISH_SIZES_FILE_H_
#define VF_PUBLISH_SIZES_FILE_H_

#include <string>
#include <vector>

#include "publish/derived_pictures.h"

namespace vf {

// The sizes file of a template set, DIMENSIONI.TXT: one size a line, a
// folder name and a longest side in pixels ("mini 480"), separated by
// blanks or tabs; blank lines and lines starting with "#" say nothing.
struct SizesFile {
  std::vector<DerivedSize> sizes;
  // The setting "metadati tieni": the published copies of the pictures stay
  // byte for byte as their sources, metadata and all. The default,
  // "metadati togli", cleans them.
  bool keep_metadata = false;
  // The setting "avif no": no derived picture gets an AVIF beside it. The
  // default, "avif si", writes one beside each (publish/derived_pictures.h).
  bool avif = true;
  // The setting "titolo Vacanze in Liguria": the site's title, as written
  // (UTF-8, inner blanks kept); empty when the file gives none.
  std::string title;
  // A line that says something but no usable size: its number (from 1) and
  // its text, cut after 80 characters with "…" so that a huge line makes no
  // huge message.
  struct BadLine {
    int number = 0;
    std::string text;
  };
  std::vector<BadLine> bad_lines;
};

// Reads the file's text, UTF-8 with or without a byte order mark, CR LF or
// LF lines. A setting line is a reserved word and its value: "metadati
// tieni" or "metadati togli", "avif si" or "avif no" (either word in any
// case), or "titolo" and the rest of the line; a second line of the same
// setting, or one with a value it cannot have, is bad, and no size line may
// take a reserved word as its folder. A line is bad when it is not
// well-formed UTF-8, and a size line when it does not
// hold exactly a name and a whole number from 1 to 20000, when the name
// could lead out of the album folder, is no Windows name or is longer than
// 64 characters, or when an earlier line already names the folder (ignoring
// case).
SizesFile ParseSizesFile(const std::string& text);

}  // namespace vf

#endif  // VF_PUBLISH_SIZES_FILE_H_
