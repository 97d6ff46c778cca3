#ifndef VF_PAGES_PICTURE_HEADER_H_
#define VF_PAGES_PICTURE_HEADER_H_

#include <optional>
#include <string>

#include "pages/page_words.h"

namespace vf {

// Reads the header of the picture file at the host path `path` with
// libvips, which must be started: its size and its EXIF, XMP and IPTC
// blocks, without decoding its pixels. Nothing when libvips reads no picture
// there; no exception leaves. Safe on any thread.
std::optional<PictureHeader> ReadPictureHeader(const std::string& path);

// Starts libvips for ReadPictureHeader; false when it cannot start, and
// then no header can be read.
bool StartPictureHeaders();

// Frees what libvips keeps for the calling thread; for a worker thread that
// read headers, as it ends.
void EndPictureHeaderThread();

}  // namespace vf

#endif  // VF_PAGES_PICTURE_HEADER_H_
