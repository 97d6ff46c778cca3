#include "metadata/photo_words.h"

#include <array>

#include "metadata/iptc_walk.h"
#include "metadata/text_decode.h"
#include "metadata/tiff_walk.h"
#include "metadata/xmp_description.h"

namespace vf {
namespace {

constexpr uint32_t kImageDescription = 0x010E, kDateTimeOriginal = 0x9003;

// What cameras write when nobody wrote anything.
constexpr std::array<std::string_view, 14> kCameraDefaults = {
    "OLYMPUS DIGITAL CAMERA",
    "SONY DSC",
    "KONICA MINOLTA DIGITAL CAMERA",
    "MINOLTA DIGITAL CAMERA",
    "DIGITAL CAMERA",
    "SAMSUNG DIGITAL CAMERA",
    "SAMSUNG CAMERA PICTURES",
    "SANYO DIGITAL CAMERA",
    "LEICA DIGITAL CAMERA",
    "KODAK Digital Still Camera",
    "Exif_JPEG_PICTURE",
    "DCF 1.0",
    "Default",
    "Image",
};

bool IsCameraDefault(std::string_view cleaned) {
  for (const std::string_view fixed : kCameraDefaults) {
    if (fixed.size() != cleaned.size()) continue;
    size_t k = 0;
    while (k < fixed.size() && (fixed[k] | 0x20) == (cleaned[k] | 0x20)) ++k;
    if (k == fixed.size()) return true;
  }
  return false;
}

// A text value of EXIF, up to its first NUL.
std::string_view ExifText(const TiffEntry& entry) {
  constexpr uint32_t kByte = 1, kAscii = 2, kUndefined = 7;
  if (entry.type != kAscii && entry.type != kByte && entry.type != kUndefined) return {};
  return entry.bytes.substr(0, entry.bytes.find('\0'));
}

// IPTC's caption (2:120) as UTF-8: UTF-8 when the coded character set
// (1:90) is ESC % G, else taken as Windows-1252, the Latin-1 that Windows
// programs write.
std::string IptcCaption(std::string_view iptc) {
  if (!iptc.starts_with('\x1C')) {
    const bool header = iptc.starts_with("Photoshop 3.0");
    iptc = PhotoshopIptc(iptc, header);
  }
  bool utf8 = false;
  std::optional<std::string_view> caption;
  WalkIptc(iptc, [&](const IptcDataset& d) {
    if (d.record == 1 && d.dataset == 90) utf8 = d.data == "\x1B%G";
    if (d.record == 2 && d.dataset == 120 && !caption) caption = d.data;
  });
  if (!caption) return "";
  if (utf8) return std::string(*caption);
  std::string text;
  for (const char byte : *caption)
    AppendUtf8(FromWindows1252(static_cast<unsigned char>(byte)), &text);
  return text;
}

int Digits(std::string_view text, size_t at, size_t count) {
  int n = 0;
  for (size_t k = at; k < at + count; ++k) {
    if (text[k] < '0' || text[k] > '9') return -1;
    n = n * 10 + (text[k] - '0');
  }
  return n;
}

int DaysIn(int year, int month) {
  constexpr int kDays[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  const bool leap = (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
  return month == 2 && leap ? 29 : kDays[month - 1];
}

}  // namespace

std::optional<TakenDate> ExifDate(std::string_view text) {
  text = text.substr(0, text.find_last_not_of(std::string_view(" \0", 2)) + 1);
  if (text.size() != 10 && text.size() != 19) return std::nullopt;
  if (text[4] != ':' || text[7] != ':') return std::nullopt;
  const TakenDate date{Digits(text, 0, 4), Digits(text, 5, 2), Digits(text, 8, 2)};
  if (date.year < 1800 || date.year > 2200 || date.month < 1 || date.month > 12 || date.day < 1 ||
      date.day > DaysIn(date.year, date.month)) {
    return std::nullopt;
  }
  if (text.size() == 19) {
    if (text[10] != ' ' || text[13] != ':' || text[16] != ':') return std::nullopt;
    const int hour = Digits(text, 11, 2), minute = Digits(text, 14, 2),
              second = Digits(text, 17, 2);
    // A leap second may end a minute.
    if (hour < 0 || hour > 23 || minute < 0 || minute > 59 || second < 0 || second > 60) {
      return std::nullopt;
    }
  }
  return date;
}

PhotoWords WordsFromBlobs(std::string_view exif, std::string_view xmp, std::string_view iptc) {
  PhotoWords words;
  if (exif.starts_with(std::string_view("Exif\0\0", 6))) exif.remove_prefix(6);
  std::string_view exif_description;
  WalkTiff(exif, [&](const TiffEntry& e) {
    if (e.first && e.tag == kImageDescription && exif_description.empty()) {
      exif_description = ExifText(e);
    }
    if (e.via == kExifIfdTag && e.tag == kDateTimeOriginal && !words.taken) {
      words.taken = ExifDate(ExifText(e));
    }
  });
  // Each source in turn, until one gives a description of its own; the
  // later ones are read only when needed.
  const auto take = [&words](std::string_view candidate) {
    std::string cleaned = CleanDescription(candidate);
    if (!cleaned.empty() && !IsCameraDefault(cleaned)) words.description = std::move(cleaned);
    return !words.description.empty();
  };
  if (take(exif_description)) return words;
  for (const std::string& candidate : XmpDescriptions(xmp)) {
    if (take(candidate)) return words;
  }
  take(IptcCaption(iptc));
  return words;
}

}  // namespace vf
