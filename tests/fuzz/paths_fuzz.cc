// A typed path, then on a second line the current folder to go to first.
// Whatever its dots, slashes and bytes, a path reads back the same from its
// Windows form, and the host file layer finds it and changes things at it
// only inside the folders of its drives.

#include <fstream>
#include <memory>

#include "platform/case_fold.h"
#include "platform/failure.h"
#include "platform/host_file_system.h"
#include "tests/fuzz/fuzz_support.h"

void vf::fuzz::FuzzOne(std::string_view input) {
  const size_t newline = input.find('\n');
  const std::string text(input.substr(0, newline));
  const fs::path root = EmptyHostFolder();
  for (const char* file : {"c/Foto/a.jpg", "c/Foto/A.JPG", "c/due.txt", "d/Dati/tre.txt"}) {
    fs::create_directories((root / file).parent_path());
    std::ofstream(root / file) << file;
  }
  HostFileSystem host({{'C', (root / "c").string(), false}, {'D', (root / "d").string(), false}});
  if (newline != input.npos) host.SetCurrentFolder(std::string(input.substr(newline + 1)));
  const std::string normal = host.Normalize(text);
  Check(host.Normalize(normal) == normal, "the Windows form reads back otherwise", text);
  if (std::optional<std::string> found = host.HostPath(text)) {
    const std::string below =
        fs::path(*found).lexically_normal().lexically_relative(root).string() + '/';
    Check(below.rfind("c/", 0) == 0 || below.rfind("d/", 0) == 0, "found outside", *found);
    Check(ToUpper(host.WindowsPath(*found).value_or("")) == normal, "named back", *found);
  }
  host.MakeFolder(text);
  std::unique_ptr<OutputFile> file;
  if (host.OpenOutput(text, &file) == kOk) file->Close();
  host.Copy("C:\\Foto\\a.jpg", text);
  host.Rename("C:\\due.txt", text);
  Check(std::distance(fs::directory_iterator(root), {}) == 2, "a change beside the drives", text);
}
