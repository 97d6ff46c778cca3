#include "metadata/jpeg_header.h"

#include <gtest/gtest.h>

namespace vf {
namespace {

using namespace std::string_literals;

// A marker segment: FF, the marker, the length and the data.
std::string Segment(unsigned char marker, const std::string& data) {
  const size_t n = data.size() + 2;
  return "\xFF"s + static_cast<char>(marker) + static_cast<char>(n >> 8) +
         static_cast<char>(n & 0xFF) + data;
}
// A start of frame of 8 bits, `width` x `height`, one component.
std::string Frame(unsigned char marker, int width, int height) {
  return Segment(marker, "\x08"s + static_cast<char>(height >> 8) + static_cast<char>(height) +
                             static_cast<char>(width >> 8) + static_cast<char>(width) +
                             "\x01\x01\x11\x00"s);
}

TEST(JpegHeader, TheSegmentsBeforeTheFirstScanGiveSizeAndBlocks) {
  const std::string soi = "\xFF\xD8"s, sos = Segment(0xDA, "\x01\x01\x00\x00\x3F\x00"s);
  const std::string exif = "Exif\0\0II*\0"s, xmp = "<x:xmpmeta/>";
  const std::string app13 = "Photoshop 3.0\0008BIM\x04\x04"s;
  struct Row {
    std::string file;
    bool read;
    int width, height;
    std::string exif, xmp, iptc;
  } rows[] = {
      {soi + Segment(0xE0, "JFIF\0"s) + Segment(0xE1, exif) +
           Segment(0xE1, "http://ns.adobe.com/xap/1.0/\0"s + xmp) + Segment(0xED, app13) +
           Frame(0xC0, 1200, 800) + sos + "scan",
       true, 1200, 800, exif, xmp, app13},
      // Progressive, fill bytes, a restart-like marker; a DHT is no frame.
      {soi + "\xFF\xFF"s + Frame(0xC2, 300, 4000) + Segment(0xC4, "x") + sos, true, 300, 4000, "",
       "", ""},
      {soi + Segment(0xC4, "xxxxxxx") + sos, false, 0, 0, "", "", ""},    // no frame
      {soi + Frame(0xC0, 0, 800) + sos, false, 0, 0, "", "", ""},         // no width
      {soi + Frame(0xC0, 10, 10), false, 0, 0, "", "", ""},               // cut before the scan
      {soi + Segment(0xE1, exif).substr(0, 8), false, 0, 0, "", "", ""},  // cut segment
      {soi + "\xFF\xE1\x00\x01" + Frame(0xC0, 10, 10) + sos, false, 0, 0, "", "", ""},
      {soi + "\x00"s + Frame(0xC0, 10, 10) + sos, false, 0, 0, "", "", ""},
      {"\x89PNG\r\n\x1A\n"s, false, 0, 0, "", "", ""},
      {soi + "\xFF\xD9"s, false, 0, 0, "", "", ""},
  };
  for (const Row& row : rows) {
    const std::optional<JpegHeader> h = ReadJpegHeader(row.file);
    ASSERT_EQ(h.has_value(), row.read) << testing::PrintToString(row.file);
    if (!h) continue;
    EXPECT_EQ(h->width, row.width);
    EXPECT_EQ(h->height, row.height);
    EXPECT_EQ(h->exif, row.exif);
    EXPECT_EQ(h->xmp, row.xmp);
    EXPECT_EQ(h->iptc, row.iptc);
  }
}

}  // namespace
}  // namespace vf
