#include "desktop/user_area.h"

#include <fcntl.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <system_error>

#include "platform/failure.h"
#include "platform/host_files.h"

namespace vf {
namespace {

namespace fs = std::filesystem;

// Copies one file to `to` unless `to` exists, through a temporary name in
// the same folder, so that a failure halfway leaves no half file under the
// real name. A failure number, kOk also when the file was already there.
int CopyIfMissing(const fs::path& from, const fs::path& to) {
  struct stat st;
  if (::lstat(to.c_str(), &st) == 0) return kOk;
  const fs::path temporary = to.parent_path() / ("." + to.filename().string() + ".nuovo");
  Fd in;
  int failure = OpenHostInput(from.string(), &in);
  if (failure != kOk) return failure;
  Fd out(::open(temporary.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644));
  if (!out.valid()) return FailureFromErrno(errno);
  failure = CopyHostData(in.get(), out.get());
  if (failure == kOk) failure = out.Close();
  // link() never replaces: a file that appeared meanwhile stays.
  if (failure == kOk && ::link(temporary.c_str(), to.c_str()) != 0 && errno != EEXIST) {
    failure = FailureFromErrno(errno);
  }
  ::unlink(temporary.c_str());
  return failure;
}

int FailureOf(const std::error_code& error) {
  return error ? FailureFromErrno(error.value()) : kOk;
}

}  // namespace

std::string HomeFolder() {
  const char* home = std::getenv("HOME");
  if (home != nullptr && *home == '/') return home;
  if (const passwd* user = ::getpwuid(::getuid()); user != nullptr && user->pw_dir != nullptr) {
    return user->pw_dir;
  }
  return "/";
}

std::string CacheFolder() {
  // A relative or empty value is to be ignored, by the rules of the desktop's
  // base folders.
  const char* cache = std::getenv("XDG_CACHE_HOME");
  const fs::path base =
      cache != nullptr && *cache == '/' ? fs::path(cache) : fs::path(HomeFolder()) / ".cache";
  return (base / "vetrina-foto").lexically_normal().string();
}

UserArea UserAreaOf(const std::string& home) {
  fs::path folder = fs::path(home) / "Vetrina-Foto";
  return {folder.lexically_normal().string(), (folder / "Disco C").lexically_normal().string()};
}

std::vector<DriveMapping> UserDrives(const UserArea& area) {
  return {{'C', area.drive_c, false}, {'Z', "/", false}};
}

std::string InstalledTemplates(const std::string& executable_folder) {
  return (fs::path(executable_folder).parent_path() / "share" / "vetrina-foto")
      .lexically_normal()
      .string();
}

bool MakeFolders(const std::string& host_folder) {
  std::error_code error;
  fs::create_directories(host_folder, error);
  return fs::is_directory(host_folder, error);
}

std::string PrepareUserArea(const UserArea& area, const std::string& templates) {
  // The drive folder stands inside the program folder: one call makes both.
  std::error_code error;
  fs::create_directories(area.drive_c, error);
  int failure = FailureOf(error);
  if (failure == kOk && !fs::is_directory(area.drive_c, error)) failure = kErroreAccesso;
  if (failure == kOk) {
    fs::recursive_directory_iterator walk(templates, error), end;
    if (error) failure = FailureOf(error);
    for (; !error && walk != end; walk.increment(error)) {
      const fs::path relative = walk->path().lexically_relative(templates);
      if (walk->path().filename().string().front() == '.') {
        if (walk->is_directory(error)) walk.disable_recursion_pending();
        continue;
      }
      const fs::path target = fs::path(area.program_folder) / relative;
      int step = kOk;
      if (walk->is_directory(error)) {
        step = MakeFolders(target.string()) ? kOk : kErroreAccesso;
      } else if (walk->is_regular_file(error)) {
        step = CopyIfMissing(walk->path(), target);
      }
      if (failure == kOk) failure = step;
    }
    if (failure == kOk) failure = FailureOf(error);
  }
  if (failure == kOk) return "";
  return "Impossibile preparare la cartella del programma " + area.program_folder +
         "\r\rI modelli delle pagine potrebbero mancare.\r\r ERR= " + std::to_string(failure) +
         " - " + FailureText(failure);
}

}  // namespace vf
