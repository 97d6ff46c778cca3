#include "platform/typed_path.h"

#include <filesystem>

namespace vf {

std::optional<std::string> WindowsFormOfTyped(const std::string& text, const std::string& home,
                                              const HostFileSystem& fs) {
  std::string host;
  if (!text.empty() && text.front() == '/') {
    host = text;
  } else if (text == "~" || text.rfind("~/", 0) == 0) {
    host = home + text.substr(1);
  } else {
    return std::nullopt;
  }
  const bool folder = host.back() == '/';
  std::optional<std::string> windows =
      fs.WindowsPath(std::filesystem::path(host).lexically_normal().string());
  if (windows && folder && windows->back() != '\\') *windows += '\\';
  return windows;
}

}  // namespace vf
