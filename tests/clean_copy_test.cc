#include <gtest/gtest.h>

#include <string>
#include <tuple>
#include <vector>
#include <vips/vips8>

#include "metadata/clean_walk.h"
#include "metadata/metadata_sift.h"
#include "tests/support/host_checks.h"
#include "tests/support/tiff_builder.h"

namespace vf {
namespace {

using namespace std::string_literals;
using test::Entry;
using test::IfdAt;
using test::Num;
using test::Tiff;

std::string Seg(char marker, const std::string& body) {
  return "\xFF"s + marker + Num(body.size() + 2, 2) + body;
}
std::string Chunk(const std::string& type, const std::string& data) {
  return Num(data.size(), 4) + type + data + Num(PngCrc(type + data), 4);
}
std::string Riff(const std::string& type, const std::string& body) {
  return type + Num(body.size(), 4, false) + body + (body.size() % 2 ? "\0"s : "");
}

std::string Turned(int orientation) { return Tiff(false, {{{0x0112, 3, 1, orientation}}}); }

std::string Saved(const vips::VImage& image, const char* format) {
  void* buffer = nullptr;
  size_t size = 0;
  image.write_to_buffer(format, &buffer, &size);
  std::string bytes(static_cast<const char*>(buffer), size);
  g_free(buffer);
  return bytes;
}
std::string Pixels(const std::string& file) {
  const vips::VImage image = vips::VImage::new_from_buffer(file.data(), file.size(), "");
  size_t size = 0;
  void* pixels = image.write_to_memory(&size);
  std::string bytes(static_cast<const char*>(pixels), size);
  g_free(pixels);
  return bytes;
}

// Small noisy pictures, so that the compressed data holds every kind of
// byte: a progressive JPEG with restart markers and without JFIF, a PNG with
// a profile, a WebP's VP8 chunk, a GIF with its looping extension.
struct Made {
  std::string jpeg, png, vp8, webp, gif;
};
const Made& Pictures() {
  static const Made made = [] {
    const vips::VImage noisy =
        (test::Painted(24, 16, {90, 140, 200}) +
         vips::VImage::gaussnoise(24, 16, vips::VImage::option()->set("sigma", 50.0)))
            .cast(VIPS_FORMAT_UCHAR);
    const std::string webp = Saved(noisy, ".webp[strip]");
    const size_t vp8 = webp.find("VP8 "), size = (webp[vp8 + 4] & 0xFF) | (webp[vp8 + 5] & 0xFF)
                                                                              << 8;
    return Made{Saved(noisy, ".jpg[strip,interlace,restart_interval=1]"),
                Saved(noisy, ".png[profile=sRGB]"), webp.substr(vp8, 8 + size + size % 2), webp,
                Saved(noisy, ".gif")};
  }();
  return made;
}

// The made pictures with metadata put in: JPEG segments right after SOI, PNG
// chunks after IHDR, WebP chunks after the picture (with VP8X `flags` and a
// profile before it), GIF extensions after the global colour table.
std::string InJpeg(const std::string& segments) {
  return "\xFF\xD8"s + segments + Pictures().jpeg.substr(2);
}
std::string InPng(const std::string& chunks) {
  return Pictures().png.substr(0, 33) + chunks + Pictures().png.substr(33);
}
std::string InWebp(char flags, const std::string& chunks) {
  const std::string body = "WEBP" +
                           Riff("VP8X", flags + "\0\0\0"s + Num(23, 3, false) + Num(15, 3, false)) +
                           Riff("ICCP", "profile") + Pictures().vp8 + chunks;
  return "RIFF" + Num(body.size(), 4, false) + body;
}
std::string InGif(const std::string& extensions) {
  const std::string& gif = Pictures().gif;
  const size_t at = 13 + (gif[10] & 0x80 ? 3 << ((gif[10] & 7) + 1) : 0);
  return gif.substr(0, at) + extensions + gif.substr(at);
}

// A JPEG's first scan, found by walking its segments.
size_t FirstScan(const std::string& jpeg) {
  size_t at = 2;
  while (jpeg[at + 1] != '\xDA') at += 2 + (jpeg[at + 2] & 0xFF) * 256 + (jpeg[at + 3] & 0xFF);
  return at;
}

std::tuple<bool, bool, bool, bool, int> Told(const Removed& r) {
  return {r.position, r.device, r.person, r.anything, r.orientation};
}

TEST(CleanCopyTest, AJpegKeepsItsPictureProfileAndTurnByteForByte) {
  const std::string& made = Pictures().jpeg;
  const std::string scans = made.substr(FirstScan(made)),
                    tables = made.substr(2, FirstScan(made) - 2);
  const std::string jfif = Seg('\xE0', "JFIF\0\1\2\0\0\1\0\1\0\0"s),
                    adobe = Seg('\xEE', "Adobe\0\x64\0\0\0\0\1"s),
                    icc = Seg('\xE2', "ICC_PROFILE\0\1\1profile"s);
  const std::string source = "\xFF\xD8"s + jfif + Seg('\xE1', "Exif\0\0"s + Turned(6)) +
                             Seg('\xE1', "http://ns.adobe.com/xap/1.0/\0<x dc:creator='Ann'/>"s) +
                             "\xFF\xFF" + icc + Seg('\xE2', "MPF\0II*\0"s) + Seg('\xEC', "Ducky") +
                             adobe + Seg('\xFE', "nota") + tables +
                             scans.substr(0, scans.size() - 2) + Seg('\xFE', "after the scans") +
                             "\xFF\xD9" + "motion photo\xFF\xD9"s;
  std::string clean = source;
  Removed removed;
  ASSERT_TRUE(CleanCopy(&clean, &removed));
  EXPECT_EQ(clean, "\xFF\xD8"s + jfif + Seg('\xE1', "Exif\0\0"s + Turned(6)) + icc + adobe +
                       tables + scans);
  EXPECT_EQ(clean.substr(FirstScan(clean)), made.substr(FirstScan(made)));
  EXPECT_EQ(Pixels(clean), Pixels(made));
  EXPECT_EQ(Told(removed), Told({false, false, true, true, 6}));
  // Nothing more goes a second time; a picture without metadata stays as it is.
  for (const auto& [bare, turn] : {std::pair(clean, 6), {made, 0}}) {
    std::string again = bare;
    EXPECT_TRUE(CleanCopy(&again, &removed) && again == bare);
    EXPECT_EQ(Told(removed), Told({.orientation = turn}));
  }
}

TEST(CleanCopyTest, TheExifSaysWhereWhatAndWhoAndTheTurnGoesBackInEachFormat) {
  // 65535 entries announced, one there (whose count overflows any size), one cut.
  const std::string count_past_end = "II*\0\x08\0\0\0\xFF\xFF"s +
                                     Tiff(false, {{{0xA431, 2, 0xFFFFFFFF, 0}}}).substr(10, 12) +
                                     Tiff(false, {{{0x013B, 2, 4, 0}}}).substr(10, 10);
  // By rows: artist (Motorola order); GPS, an empty GPS IFD; a body and a
  // camera serial; owner; copyright in IFD1; an orientation of another type,
  // one and an artist of no value; loops and offsets outside; entries past
  // the end; no TIFF header.
  const Removed person{.person = true, .anything = true}, only{.anything = true};
  const std::tuple<std::string, Removed> rows[] = {
      {Tiff(true, {{{0x0112, 3, 1, 8}, {0x013B, 2, 4, 0}}}), {false, false, true, true, 8}},
      {Tiff(false, {{{0x0112, 3, 1, 1}, {0x8825, 4, 1, IfdAt(1)}}, {{0, 1, 4, 0x0202}}}),
       {true, false, false, true, 0}},
      {Tiff(false, {{{0x0112, 3, 1, 0}, {0x8825, 4, 1, IfdAt(1)}}, {}}), only},
      {Tiff(false, {{{0x0112, 3, 1, 9}, {0x8769, 4, 1, IfdAt(1)}}, {{0xA431, 2, 4, 0}}}),
       {false, true, false, true, 0}},
      {Tiff(false, {{{0x0112, 3, 1, 2}, {0xC62F, 2, 4, 0}}}), {false, true, false, true, 2}},
      {Tiff(false, {{{0x8769, 4, 1, IfdAt(1)}}, {{0xA430, 2, 4, 0}}}), person},
      {Tiff(false, {{{0x0112, 3, 1, 7}}, {{0x8298, 2, 4, 0}}}, IfdAt(1)),
       {.person = true, .anything = true, .orientation = 7}},
      {Tiff(false, {{{0x0112, 4, 1, 6}, {0x0112, 3, 0, 6}, {0x013B, 2, 0, 0}}}), only},
      {Tiff(false, {{{0x8769, 4, 1, IfdAt(0)}, {0x8825, 4, 1, 0xFFFFFFF0}, {0xA005, 4, 1, 7}}},
            IfdAt(0)),
       only},
      {count_past_end, {.device = true, .anything = true}},
      {"Exif", only},
  };
  // Each block is followed by a second one, whose orientation readers never look at.
  const std::string late = Turned(3);
  for (const auto& row : rows) {
    const auto& [tiff, told] = row;
    const int o = told.orientation;
    const std::tuple<std::string, std::string> formats[] = {
        {InJpeg(Seg('\xE1', "Exif\0\0"s + tiff) + Seg('\xE1', "Exif\0\0"s + late)),
         InJpeg(o ? Seg('\xE1', "Exif\0\0"s + Turned(o)) : "")},
        {InPng(Chunk("eXIf", tiff) + Chunk("eXIf", late)),
         InPng(o ? Chunk("eXIf", Turned(o)) : "")},
        {InWebp(0x28, Riff("EXIF", "Exif\0\0"s + tiff) + Riff("EXIF", late)),
         InWebp(o ? 0x28 : 0x20, o ? Riff("EXIF", Turned(o)) : "")}};
    for (const auto& [source, cleaned] : formats) {
      std::string bytes = source;
      Removed removed;
      EXPECT_TRUE(CleanCopy(&bytes, &removed) && bytes == cleaned)
          << "row " << &row - rows << " " << source.substr(0, 4);
      EXPECT_EQ(Told(removed), Told(told)) << "row " << &row - rows << " " << source.substr(0, 4);
    }
  }
}

TEST(CleanCopyTest, OtherMetadataAndTrailersGoWhileProfilesAndLoopingStay) {
  const std::string xmp = "<x:xmpmeta><rdf:Description exif:GPSLatitude='1' aux:SerialNumber='2'/>";
  // IPTC's by-line (2:80) after a dataset of the extended form, in
  // Photoshop's resources after one of another kind.
  const auto photoshop = [](const std::string& by_line) {
    const std::string iptc = "\x1C\x02\x05\x80\x02"s + Num(1, 2) + "t" + "\x1C\x02\x50"s + by_line;
    return "Photoshop 3.0\0"s + "8BIM\x03\xED\1a"s + Num(1, 4) + "x\0"s + "8BIM\x04\x04\0\0"s +
           Num(iptc.size(), 4) + iptc;
  };
  const std::string named = photoshop(Num(3, 2) + "Ann"),
                    png_xmp = "XML:com.adobe.xmp\0\0\0\0\0"s + xmp,
                    gif_xmp =
                        "\x21\xFF\x0BXMP DataXMP"s + static_cast<char>(xmp.size()) + xmp + "\0"s,
                    simple_webp =
                        "RIFF" + Num(4 + Pictures().vp8.size(), 4, false) + "WEBP" + Pictures().vp8;
  // Fill bytes before the end of image belong to the compressed data.
  const std::string filled = InJpeg("").insert(InJpeg("").size() - 2, "\xFF");
  const Removed gps_serial{true, true, false, true, 0}, person{.person = true, .anything = true},
      only{.anything = true};
  const std::tuple<std::string, std::string, Removed> rows[] = {
      {InJpeg(Seg('\xE1', "http://ns.adobe.com/xap/1.0/\0"s + xmp)), InJpeg(""), gps_serial},
      {InJpeg(Seg('\xED', named)), InJpeg(""), person},
      {InJpeg(Seg('\xED', named.substr(0, named.size() - 3))), InJpeg(""), only},
      {InJpeg(Seg('\xED', photoshop(Num(0, 2)))), InJpeg(""), only},
      {filled, filled, {}},
      {InJpeg(Seg('\xE2', "FPXR\0"s) + Seg('\xE5', "RMETA")) + "\0\0", InJpeg(""), only},
      {InPng(Chunk("tEXt", "Author\0Ann"s) + Chunk("tIME", "\x07\xE8\1\1\0\0\0"s)), InPng(""),
       person},
      {InPng(Chunk("zTXt", "Copyright\0\0x"s)), InPng(""), person},
      {InPng(Chunk("iTXt", png_xmp)) + Chunk("tEXt", "after\0IEND"s), InPng(""), gps_serial},
      {InWebp(0x24, Riff("XMP ", xmp)), InWebp(0x20, ""), gps_serial},
      {InWebp(0x24, Riff("XMP ", "")) + "trailer", InWebp(0x20, ""), only},
      {simple_webp + "trailer", simple_webp, only},
      {InGif("\x21\xFE\4nota\0"s + gif_xmp) + "trailer", InGif(""), gps_serial},
      {InGif("\x21\xFE\0"s), InGif(""), only},
  };
  for (const auto& [source, cleaned, told] : rows) {
    std::string bytes = source;
    Removed removed;
    EXPECT_TRUE(CleanCopy(&bytes, &removed) && bytes == cleaned) << source.substr(0, 4);
    EXPECT_EQ(Told(removed), Told(told)) << source.substr(0, 4);
  }
  // What stays decodes as the pictures that libvips made.
  EXPECT_EQ(Pixels(InPng("")), Pixels(Pictures().png));
  EXPECT_EQ(Pixels(InWebp(0x20, "")), Pixels(Pictures().webp));
  EXPECT_EQ(Pixels(InGif("")), Pixels(Pictures().gif));
}

TEST(CleanCopyTest, WhatIsNotAWholeFileOfAFormatIsRefusedUntouched) {
  const std::string jpeg = InJpeg(""), png = InPng(""), webp = InWebp(0x20, ""), gif = InGif("");
  std::vector<std::string> refused = {"",
                                      "text named .jpg",
                                      "II*\0\x08\0\0\0"s,
                                      "\xFF\xD8\xFF\xD9"s,
                                      "\xFF\xD8\xFF\xD0"s + jpeg.substr(2),
                                      "\xFF\xD8\xFF\xD8"s + jpeg.substr(2),
                                      png.substr(0, 8) + png.substr(33),
                                      png.substr(0, 33) + png.substr(8),
                                      "RIFF\4\0\0\0WEBP"s,
                                      webp.substr(0, 12) + Riff("EXIF", "") + webp.substr(12),
                                      InGif("\x01")};
  for (const std::string* file : {&jpeg, &png, &webp, &gif}) {
    for (size_t size = 0; size < file->size(); ++size) refused.push_back(file->substr(0, size));
  }
  // One byte spoilt: PNG's signature (as text mode does) or a CRC, the RIFF
  // size (past the file, inside a chunk), GIF's version.
  for (const auto& [file, at, flip] : {std::tuple(&png, size_t{4}, '\x07'),
                                       {&png, 20, 1},
                                       {&png, png.size() - 1, 1},
                                       {&webp, 4, 2},
                                       {&webp, 4, '\xF0'},
                                       {&gif, 4, 1}}) {
    refused.emplace_back(*file)[at] ^= flip;
  }
  for (const std::string& bad : refused) {
    std::string bytes = bad;
    Removed removed{true, true, true, true, 6};
    EXPECT_FALSE(CleanCopy(&bytes, &removed)) << bad.size() << " " << bad.substr(0, 4);
    EXPECT_TRUE(bytes == bad && Told(removed) == Told({})) << bad.size();
  }
}

}  // namespace
}  // namespace vf
