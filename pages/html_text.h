#ifndef VF_PAGES_HTML_TEXT_H_
#define VF_PAGES_HTML_TEXT_H_

#include <string>
#include <string_view>
#include <vector>

namespace vf {

// Text made safe for the pages, whose bytes stay ASCII whatever a picture,
// a file or a folder name holds. Each takes UTF-8, reading a byte that is
// not part of a well-formed sequence as Windows-1252.

// For an element's content or an attribute value (in either quotes):
// & < > " ' as &amp; &lt; &gt; &quot; &#39;, every other character outside
// ASCII as a decimal reference (&#224;), control characters dropped.
std::string HtmlText(std::string_view utf8);

// For a CSS string in double quotes (content:"..." in a <style> element):
// " and \ behind a backslash, and every character outside printable ASCII,
// and "<", as a hex escape followed by one blank ("\E0 ", "\3C "), so that
// the string cannot end early, break its line or close the element. NUL,
// which CSS cannot hold, is dropped.
std::string CssString(std::string_view utf8);

// The folder part of an album's line: the names in order, each only the
// first time it comes (case aside, for ASCII and the Latin letters of
// Western Europe), joined by " · "; empty names are left out. The names are
// returned as given, to be escaped for the page as any text.
std::string FolderList(const std::vector<std::string>& names);

}  // namespace vf

#endif  // VF_PAGES_HTML_TEXT_H_
