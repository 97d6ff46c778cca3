// What is typed into a box. The leading number of the text, which nothing
// after it changes, and the number forms built on it: a number's text reads
// back as that number; the first eight bytes also go in as a raw double, so
// that NaN, infinities and values far beyond int64_t reach the conversions.
// Then the text as a path, with on a second line the current folder to go to
// first: it reads back the same from its Windows form, and the host file
// layer names it back and changes things only inside its drives.

#include <cmath>
#include <cstring>

#include "platform/case_fold.h"
#include "platform/host_file_system.h"
#include "publish/site_names.h"
#include "shell/testo.h"
#include "tests/fuzz/fuzz_support.h"

void vf::fuzz::FuzzOne(std::string_view input) {
  const double number = NumeroIniziale(input);
  Check(std::isfinite(number) && NumeroIniziale(std::string(input) + "x") == number,
        "the leading number", input);
  double raw = 0;
  if (input.size() >= sizeof raw) std::memcpy(&raw, input.data(), sizeof raw);
  for (double value : {number, raw}) {
    const int64_t rounded = ArrotondaPari(value);
    const std::string text = Decimale(value),
                      forms = ConBlank(rounded) + AlbumFolderName(Intero(value), false);
    if (!(std::fabs(value) < 1e15)) continue;
    const double off = std::fabs(NumeroIniziale(text) - value);
    Check(off <= (value == std::floor(value) ? 0 : 1e-14 * std::fabs(value)), "Decimale", text);
    Check(std::fabs(static_cast<double>(rounded) - value) <= 0.5, "ArrotondaPari", forms);
  }

  const size_t newline = input.find('\n');
  const std::string path(input.substr(0, newline));
  const fs::path root = HostFolderWith({"c/Foto/a.jpg", "c/Foto/A.JPG", "c/due.txt", "d/tre.txt"});
  HostFileSystem host({{'C', (root / "c").string(), false}, {'D', (root / "d").string(), false}});
  if (newline != input.npos) host.SetCurrentFolder(std::string(input.substr(newline + 1)));
  const std::string normal = host.Normalize(path);
  Check(host.Normalize(normal) == normal, "the Windows form reads back otherwise", path);
  const std::optional<std::string> found = host.HostPath(path);
  Check(!found || ToUpper(host.WindowsPath(*found).value_or("")) == normal, "named back", path);
  host.MakeFolder(path);
  host.Copy("C:\\Foto\\a.jpg", path);
  host.Rename("C:\\due.txt", path);
  Check(std::distance(fs::directory_iterator(root), {}) == 2, "a change beside the drives", path);
}
