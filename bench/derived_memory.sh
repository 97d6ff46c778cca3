#!/usr/bin/env bash
# The memory of the web-size pass over eight pictures that its decoders must
# hold whole: 4000x3000 RGB PNGs of 16 bits a band, interlaced, with eight
# workers forced and a budget of 160 MB of decoded memory (one picture at a
# time). Prints one line:
#   derived memory: peak resident / (max(budget, largest picture) + 300 MB)
# (target <= 1), where the largest picture is the pass's own estimate of
# what decoding it costs. Without the budget the eight workers would hold
# eight pictures at once, some 590 MB, and the ratio would be about 1.3.
#
#   bench/derived_memory.sh [BUILD_DIR]   (default build-bench)
set -euo pipefail
cd "$(dirname "$0")/.."
source bench/lib.sh

dir=${1:-build-bench}
budget_mb=160
command -v vips >/dev/null || { echo "derived memory: vips is missing" >&2; exit 1; }
vf_build "$dir" derived_driver
driver=$(realpath "$dir/bin/derived_driver")
vf_workdir
cd "$VF_WORK"

# Smooth ramps compress well, so the files are small and quick to make, but
# decoded each is 72 MB.
mkdir src
vips xyz xy.v 4000 3000
vips extract_band xy.v x.v 0
vips extract_band xy.v y.v 1
vips bandjoin "x.v y.v x.v" xyx.v
vips linear xyx.v ramp.v "16 21 9" "0 300 900"
vips cast ramp.v deep.v ushort
vips copy deep.v deep16.v --interpretation rgb16
vips pngsave deep16.v src/p1.png --interlace --bitdepth 16 --compression 1
rm -f ./*.v
if [ "$(vipsheader -f interlaced src/p1.png)" != 1 ] || ! vipsheader src/p1.png | grep -q "ushort, 3 bands"; then
  echo "derived memory: the picture is not an interlaced 16-bit PNG" >&2
  exit 1
fi
for n in 2 3 4 5 6 7 8; do cp src/p1.png "src/p$n.png"; done

"$driver" -w 8 -b "$budget_mb" src site web:1600 >out.txt
cat out.txt
made=$(find site -path '*/web/img_*.png' | wc -l)
if [ "$made" -ne 8 ]; then
  echo "derived memory: the pass made $made pictures, not 8" >&2
  exit 1
fi
read -r budget largest peak < <(sed -nE \
  's/.*budget ([0-9.]+) MB, largest picture ([0-9.]+) MB, peak resident ([0-9.]+) MB$/\1 \2 \3/p' out.txt)
print_ratio "derived memory" "$peak" \
  "$(awk -v b="$budget" -v l="$largest" 'BEGIN { print (b > l ? b : l) + 300 }')" 1
