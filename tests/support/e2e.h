#ifndef VF_TESTS_SUPPORT_E2E_H_
#define VF_TESTS_SUPPORT_E2E_H_

#include <filesystem>
#include <map>
#include <string>
#include <vector>

namespace vf::test {

// A temporary folder, removed with everything in it when the object goes.
class TempTree {
 public:
  TempTree();
  ~TempTree();
  TempTree(const TempTree&) = delete;
  TempTree& operator=(const TempTree&) = delete;

  const std::filesystem::path& root() const { return root_; }
  std::filesystem::path Path(const std::string& relative) const { return root_ / relative; }
  // Writes a file, making its folders.
  void Write(const std::string& relative, const std::string& bytes) const;
  void MakeFolder(const std::string& relative) const;
  // The file's bytes; "<missing>" when there is no such file.
  std::string Read(const std::string& relative) const;
  // The same with every CR LF read as a line feed.
  std::string Text(const std::string& relative) const;
  bool Exists(const std::string& relative) const;
  // Every file and folder below, as sorted relative paths; folders end in "/".
  std::vector<std::string> Tree(const std::string& relative = "") const;

 private:
  std::filesystem::path root_;
};

struct RunResult {
  int status = -1;
  std::string out, err;
  // The texts of the "MSG: " lines.
  std::vector<std::string> Messages() const;
  bool Has(const std::string& text) const { return out.find(text) != std::string::npos; }
};

// Runs vetrina-foto-script on `script` in `cwd`, with `home` as its home
// folder when given; with `argument`, on that text (a path, an option).
RunResult RunScript(const std::string& script, const std::filesystem::path& cwd,
                    const std::string& home = "", bool argument = false);

// The standard output of a shell command line (exiftool, grep...).
std::string Output(const std::string& command);

// The tags exiftool finds in a file that tell where or who, those found of
// "Artist Author OwnerName SerialNumber [GPS] [IPTC] [XMP" (groups by their
// start); empty for a clean file.
std::string IdentifyingTags(const std::filesystem::path& file);
// The same for every file below `folder` that exiftool reads (pictures by
// their names), by their paths inside it.
std::map<std::string, std::string> IdentifyingTagsIn(const std::filesystem::path& folder);

// exiftool's arguments that give a picture all of them, and an orientation
// of 6 (turned a quarter clockwise to stand).
inline const std::string kIdentifyingTags =
    "-GPSLatitude=45.4 -GPSLatitudeRef=N -GPSLongitude=9.2 -GPSLongitudeRef=E "
    "-SerialNumber=SN4711 -OwnerName=Anna -Artist=Anna -XMP-dc:Creator=Anna -IPTC:By-line=Anna "
    "-PNG:Author=Anna -Orientation#=6";

// A small template set in `folder`: the five page templates, the thirteen
// pictures (short texts) and per-picture templates 001 to 009.
void WriteFixtureTemplates(const TempTree& tree, const std::string& folder);
// The real template set, without its sizes file unless `sizes`.
void CopyTemplates(const TempTree& tree, const std::string& folder, bool sizes = false);

}  // namespace vf::test

#endif  // VF_TESTS_SUPPORT_E2E_H_
