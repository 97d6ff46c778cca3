// A typed path, then on a second line the current folder to go to first.
// Whatever its bytes, a path reads back the same from its Windows form, and
// the host file layer names it back and changes things only inside its drives.

#include "platform/case_fold.h"
#include "platform/host_file_system.h"
#include "tests/fuzz/fuzz_support.h"

void vf::fuzz::FuzzOne(std::string_view input) {
  const size_t newline = input.find('\n');
  const std::string text(input.substr(0, newline));
  const fs::path root = HostFolderWith({"c/Foto/a.jpg", "c/Foto/A.JPG", "c/due.txt", "d/tre.txt"});
  HostFileSystem host({{'C', (root / "c").string(), false}, {'D', (root / "d").string(), false}});
  if (newline != input.npos) host.SetCurrentFolder(std::string(input.substr(newline + 1)));
  const std::string normal = host.Normalize(text);
  Check(host.Normalize(normal) == normal, "the Windows form reads back otherwise", text);
  const std::optional<std::string> found = host.HostPath(text);
  Check(!found || ToUpper(host.WindowsPath(*found).value_or("")) == normal, "named back", text);
  host.MakeFolder(text);
  host.Copy("C:\\Foto\\a.jpg", text);
  host.Rename("C:\\due.txt", text);
  Check(std::distance(fs::directory_iterator(root), {}) == 2, "a change beside the drives", text);
}
