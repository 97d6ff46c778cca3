#ifndef VF_METADATA_XMP_DESCRIPTION_H_
#define VF_METADATA_XMP_DESCRIPTION_H_

#include <string>
#include <string_view>
#include <vector>

namespace vf {

// The descriptions an XMP packet gives in dc:description, best first: the
// x-default language of its list, the first language, a simple value, the
// attribute form (dc:description="..."). Each is UTF-8 with XML's entities
// and CDATA sections read, not yet cleaned; forms with no text but white
// space are left out. The packet is UTF-8 or UTF-16, told by its byte order
// mark or else by its first two bytes. It is read by a tolerant scan, not
// parsed: anything that is not XML, or stops halfway, gives what was found
// before that, with work linear in the size and no stack however deep the
// elements nest. As usual for pictures' XMP, dc is taken to be the prefix of
// Dublin Core and rdf that of RDF.
std::vector<std::string> XmpDescriptions(std::string_view packet);

}  // namespace vf

#endif  // VF_METADATA_XMP_DESCRIPTION_H_
