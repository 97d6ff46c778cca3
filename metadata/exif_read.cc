#include "metadata/exif_read.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "metadata/clean_walk.h"

namespace vf {
namespace {

constexpr uint32_t kOrientation = 0x0112, kExifIfd = 0x8769, kGpsIfd = 0x8825, kInteropIfd = 0xA005,
                   kShort = 3;
// Real files have a handful of IFDs of a few hundred entries at most.
constexpr size_t kMostIfds = 16, kMostEntries = 1000;

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
  for (size_t at = 0; at + 5 <= iptc.size() && iptc[at] == 0x1C;) {
    const unsigned char record = Byte(iptc, at + 1), dataset = Byte(iptc, at + 2);
    size_t size = Number(iptc, at + 3, 2, true), head = 5;
    if (size & 0x8000) {  // an extended dataset: its size follows, in this many bytes
      const size_t digits = size & 0x7FFF;
      if (digits > 4 || at + 5 + digits > iptc.size()) return;
      size = Number(iptc, at + 5, static_cast<int>(digits), true);
      head += digits;
    }
    if (record == 2 && (dataset == 80 || dataset == 116 || dataset == 122) && size > 0) {
      found->person = true;
    }
    at += head + size;
  }
}

}  // namespace

int ReadExif(std::string_view tiff, Removed* found) {
  if (tiff.size() < 8) return 0;
  const bool big = tiff.substr(0, 4) == std::string_view("MM\0*", 4);
  if (!big && tiff.substr(0, 4) != std::string_view("II*\0", 4)) return 0;
  const auto read = [tiff, big](size_t at, int size) { return Number(tiff, at, size, big); };
  int orientation = 0;
  // The IFDs still to visit, each with whether a GPS pointer led to it.
  std::vector<std::pair<uint32_t, bool>> todo{{read(4, 4), false}};
  std::vector<uint32_t> seen;
  while (!todo.empty() && seen.size() < kMostIfds) {
    const auto [ifd, gps] = todo.back();
    todo.pop_back();
    if (ifd > tiff.size() - 2 || std::find(seen.begin(), seen.end(), ifd) != seen.end()) continue;
    const bool first = seen.empty();
    seen.push_back(ifd);
    const size_t count = read(ifd, 2);
    const size_t fits = std::min({count, (tiff.size() - ifd - 2) / 12, kMostEntries});
    if (gps && fits > 0) found->position = true;
    for (size_t at = ifd + 2; at < ifd + 2 + 12 * fits; at += 12) {
      const uint32_t tag = read(at, 2), count_of = read(at + 4, 4), value = read(at + 8, 4);
      if (first && tag == kOrientation && read(at + 2, 2) == kShort && count_of > 0) {
        orientation = static_cast<int>(read(at + 8, 2));
      }
      if (tag == kExifIfd || tag == kGpsIfd || tag == kInteropIfd) {
        todo.emplace_back(value, tag == kGpsIfd);
      }
      for (const auto& [telling, flag] : kTellingTags) {
        if (tag == telling && count_of > 0) found->*flag = true;
      }
    }
    // The next IFD (IFD1, the thumbnail's, after IFD0) follows the entries.
    const size_t next = ifd + 2 + 12 * count;
    if (next + 4 <= tiff.size() && read(next, 4) != 0) todo.emplace_back(read(next, 4), false);
  }
  return orientation;
}

void ReadXmp(std::string_view packet, Removed* found) {
  for (const auto& [name, flag] : kTellingXmp) {
    if (packet.find(name) != packet.npos) found->*flag = true;
  }
}

void ReadPhotoshop(std::string_view resources, Removed* found) {
  constexpr std::string_view kHead("Photoshop 3.0\0", 14);
  if (!resources.starts_with(kHead)) return;
  // Image resources: "8BIM", an id, a Pascal name and a size, each padded
  // to an even length. IPTC's records are resource 0x0404.
  for (size_t at = kHead.size(); at + 12 <= resources.size();) {
    if (resources.substr(at, 4) != "8BIM") return;
    const size_t name = 1 + Byte(resources, at + 6);
    const size_t size_at = at + 6 + name + (name & 1);
    if (size_at + 4 > resources.size()) return;
    const size_t size = Number(resources, size_at, 4, true);
    if (size > resources.size() - size_at - 4) return;
    if (Number(resources, at + 4, 2, true) == 0x0404) {
      ReadIptc(resources.substr(size_at + 4, size), found);
    }
    at = size_at + 4 + size + (size & 1);
  }
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
