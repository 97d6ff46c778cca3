#include "tests/support/memory_file_system.h"

#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include "platform/failure.h"

namespace vf {

namespace fs = std::filesystem;

MemoryFolder::MemoryFolder() {
  std::error_code ec;
  std::string pattern =
      (fs::is_directory("/dev/shm", ec) ? fs::path("/dev/shm") : fs::temp_directory_path()) /
      "vf-memoria-XXXXXX";
  root = mkdtemp(pattern.data()) != nullptr ? pattern : fs::temp_directory_path().string();
  fs::create_directories(root + "/C");
  fs::create_directories(root + "/D");
}

MemoryFolder::~MemoryFolder() {
  std::error_code ec;
  fs::remove_all(root, ec);
}

MemoryFileSystem::MemoryFileSystem()
    : HostFileSystem({DriveMapping{'C', root + "/C"}, DriveMapping{'D', root + "/D"}}) {}

void MemoryFileSystem::Seed(const std::string& winpath, const std::string* bytes) {
  ParsedPath path;
  if (Parse(winpath, &path) != kOk || (path.drive != 'C' && path.drive != 'D')) return;
  fs::path host = fs::path(root) / std::string(1, path.drive);
  for (const std::string& part : path.parts) host /= part;
  std::error_code ec;
  fs::create_directories(bytes != nullptr ? host.parent_path() : host, ec);
  if (bytes != nullptr) std::ofstream(host, std::ios::binary) << *bytes;
}

std::optional<std::string> MemoryFileSystem::Contents(const std::string& winpath) {
  std::optional<std::string> host = HostPath(winpath);
  std::ifstream in(host.value_or(""), std::ios::binary);
  if (!host || !in || fs::is_directory(*host)) return std::nullopt;
  std::ostringstream bytes;
  bytes << in.rdbuf();
  return bytes.str();
}

std::string MemoryFileSystem::Typed(const std::string& path) const {
  ParsedPath parsed;
  Parse(path, &parsed);
  return FormatWindowsPath(parsed);
}

int MemoryFileSystem::Log(int failure, std::string line) {
  if (failure == kOk) log_.push_back(std::move(line));
  return failure;
}

}  // namespace vf
