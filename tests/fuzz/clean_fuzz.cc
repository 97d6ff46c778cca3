// Any bytes as a copy to publish. Cleaning refuses them with the bytes
// untouched, or gives a file that cleans to itself again and is no larger
// than its source but for the orientation put back (at most PNG's eXIf
// chunk: 12 bytes around 26 of EXIF).

#include "metadata/metadata_sift.h"
#include "tests/fuzz/fuzz_support.h"

void vf::fuzz::FuzzOne(std::string_view input) {
  std::string bytes(input);
  Removed removed;
  if (!CleanCopy(&bytes, &removed)) {
    Check(bytes == input && !removed.anything, "refused, yet changed", input.substr(0, 8));
    return;
  }
  Check(bytes.size() <= input.size() + (removed.orientation != 0 ? 38 : 0), "grew", bytes);
  Check(removed.anything == (bytes != input), "anything told wrongly", bytes);
  std::string again = bytes;
  Removed twice;
  Check(CleanCopy(&again, &twice) && again == bytes && !twice.anything &&
            twice.orientation == removed.orientation,
        "cleans otherwise a second time", bytes);
}
