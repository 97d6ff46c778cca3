#include "metadata/exif_read.h"

#include <utility>

#include "metadata/iptc_walk.h"
#include "metadata/tiff_walk.h"

namespace vf {
namespace {

constexpr uint32_t kOrientation = 0x0112, kShort = 3;

// EXIF tags whose value names the device or a person.
constexpr std::pair<uint32_t, bool Removed::*> kTellingTags[] = {
    {0xA431, &Removed::device},  // BodySerialNumber
    {0xC62F, &Removed::device},  // CameraSerialNumber
    {0xA435, &Removed::device},  // LensSerialNumber
    {0x013B, &Removed::person},  // Artist
    {0x8298, &Removed::person},  // Copyright
    {0xA430, &Removed::person},  // CameraOwnerName
    {0x9C9D, &Removed::person},  // XPAuthor
};

// XMP properties by their usual prefixes; a prefix bound to another name
// space is not followed, as no writer of pictures does that.
constexpr std::pair<std::string_view, bool Removed::*> kTellingXmp[] = {
    {"exif:GPS", &Removed::position},
    {"aux:SerialNumber", &Removed::device},
    {"aux:LensSerialNumber", &Removed::device},
    {"exifEX:BodySerialNumber", &Removed::device},
    {"exifEX:LensSerialNumber", &Removed::device},
    {"dc:creator", &Removed::person},
    {"dc:rights", &Removed::person},
    {"photoshop:Author", &Removed::person},
    {"tiff:Artist", &Removed::person},
    {"xmpRights:Owner", &Removed::person},
    {"exifEX:CameraOwnerName", &Removed::person},
    {"aux:OwnerName", &Removed::person},
};

// IPTC-NAA datasets, as in IPTC's record 2, that name a person: by-line,
// copyright notice, caption writer.
void ReadIptc(std::string_view iptc, Removed* found) {
  WalkIptc(iptc, [found](const IptcDataset& d) {
    if (d.record == 2 && (d.dataset == 80 || d.dataset == 116 || d.dataset == 122) && d.size > 0) {
      found->person = true;
    }
  });
}

}  // namespace

int ReadExif(std::string_view tiff, Removed* found) {
  int orientation = 0;
  WalkTiff(tiff, [found, &orientation](const TiffEntry& e) {
    if (e.via == kGpsIfdTag) found->position = true;
    if (e.first && e.tag == kOrientation && e.type == kShort && e.count > 0) {
      orientation = static_cast<int>(e.short_value);
    }
    for (const auto& [telling, flag] : kTellingTags) {
      if (e.tag == telling && e.count > 0) found->*flag = true;
    }
  });
  return orientation;
}

void ReadXmp(std::string_view packet, Removed* found) {
  for (const auto& [name, flag] : kTellingXmp) {
    if (packet.find(name) != packet.npos) found->*flag = true;
  }
}

void ReadPhotoshop(std::string_view resources, Removed* found) {
  ReadIptc(PhotoshopIptc(resources, true), found);
}

std::string OrientationExif(int orientation) {
  // "II", 42, IFD0 at 8; one entry: tag 0x0112, SHORT, count 1, the value;
  // no next IFD.
  return {'I',
          'I',
          '*',
          0,
          8,
          0,
          0,
          0,
          1,
          0,
          0x12,
          0x01,
          3,
          0,
          1,
          0,
          0,
          0,
          static_cast<char>(orientation),
          0,
          0,
          0,
          0,
          0,
          0,
          0};
}

}  // namespace vf
