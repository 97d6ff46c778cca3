#ifndef VF_METADATA_EXIF_READ_H_
#define VF_METADATA_EXIF_READ_H_

#include <string>
#include <string_view>

#include "metadata/metadata_sift.h"

namespace vf {

// What a picture's metadata tells of a place, a device or a person, read
// just before it goes, so that its owner can be told. Each reader takes
// bytes that anyone may have written, reads only inside them and sets the
// flags of `found` it has seen a reason for, leaving the others as they are.

// An EXIF block from its TIFF header on, in either byte order. Position: a
// GPS IFD with an entry. Device: a body, camera (DNG) or lens serial number.
// Person: the artist, the copyright, the camera's owner or the Windows
// author. Each IFD is visited once, and a bounded number of them and of
// their entries. Returns IFD0's orientation, 0 when it has none.
int ReadExif(std::string_view tiff, Removed* found);

// An XMP packet, by the properties' usual prefixes: position for exif:GPS…,
// device for the aux: and exifEX: serial numbers, person for the creator,
// the rights, the author, the artist and the owner.
void ReadXmp(std::string_view packet, Removed* found);

// Photoshop's resources in a JPEG's APP13: IPTC's by-line, copyright notice
// and caption writer each tell of a person.
void ReadPhotoshop(std::string_view resources, Removed* found);

// A little-endian EXIF block (no "Exif" header) holding only `orientation`,
// in IFD0's single entry.
std::string OrientationExif(int orientation);

}  // namespace vf

#endif  // VF_METADATA_EXIF_READ_H_
