#ifndef VF_DESKTOP_SITE_WORDS_H_
#define VF_DESKTOP_SITE_WORDS_H_

#include <string>

#include "pages/page_words.h"
#include "platform/host_file_system.h"
#include "publish/hand_over.h"
#include "publish/sizes_file.h"

namespace vf {

// What the pages of a build are told, in host terms: its pictures with
// their pages, its menu and index pages, and the site's title. The title is
// the sizes file's "titolo", else the name of the deepest folder that holds
// every picture of the albums. No folder name is shown, as title or in an
// album's line, that is `home` or a folder above it, or a drive's root: a
// site must not publish its owner's user name. Pages that the file layer
// cannot place on the host are left out.
SiteWords WordsOfSite(const BuiltSite& site, HostFileSystem& fs, const SizesFile& sizes,
                      const std::string& home);

}  // namespace vf

#endif  // VF_DESKTOP_SITE_WORDS_H_
