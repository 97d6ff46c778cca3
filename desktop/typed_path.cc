#include "desktop/typed_path.h"

#include <filesystem>

namespace vf {

std::optional<std::string> WindowsFormOfTyped(const std::string& text, const std::string& home,
                                              const HostFileSystem& fs) {
  std::string host;
  if (text.starts_with('/')) {
    host = text;
  } else if (text == "~" || text.starts_with("~/")) {
    host = home + text.substr(1);
  } else {
    return std::nullopt;
  }
  std::optional<std::string> windows =
      fs.WindowsPath(std::filesystem::path(host).lexically_normal().string());
  if (!windows) return std::nullopt;
  if (host.ends_with('/') && !windows->ends_with('\\')) *windows += '\\';
  return windows;
}

}  // namespace vf
