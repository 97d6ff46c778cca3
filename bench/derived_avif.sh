#!/usr/bin/env bash
# What the AVIF beside each web-sized picture costs: the pass over the same
# 300 camera pictures as bench/derived.sh (4000x3000 JPEG, two sizes, 480
# and 1600 pixels), with an AVIF beside each picture and without, through
# bench/derived_driver.cc. Prints one line:
#   derived with avif vs without: processor time with / without (target <= 2.5)
# A time is the processor time, user and system, of one run, the pass's
# threads and the encoder's included (bench/lib.sh).
#
#   bench/derived_avif.sh [BUILD_DIR]   (default build-bench)
set -euo pipefail
cd "$(dirname "$0")/.."
source bench/lib.sh

dir=${1:-build-bench}
count=300
command -v vips >/dev/null || { echo "derived avif: vips is missing" >&2; exit 1; }
vf_build "$dir" derived_driver
driver=$(realpath "$dir/bin/derived_driver")
vf_workdir
cd "$VF_WORK"
camera_pictures src "$count"

without() {
  rm -rf site
  "$driver" src site mini:480 web:1600
}
with() {
  rm -rf site
  "$driver" -a src site mini:480 web:1600
}

without_time=$(cpu_seconds_of without)
with_time=$(cpu_seconds_of with)
made=$(find site -name '*.avif' | wc -l)
if [ "$made" -ne $((2 * count)) ]; then
  echo "derived avif: the pass made $made AVIF pictures, not $((2 * count))" >&2
  exit 1
fi
if [ "$(vipsheader -f width site/dir_0001/web/img_001.avif)" -ne 1600 ]; then
  echo "derived avif: the AVIF pictures are not of the web size" >&2
  exit 1
fi
awk -v n="$count" -v a="$without_time" -v b="$with_time" \
  'BEGIN { printf "processor seconds a picture (two sizes each): without AVIF %.3f, with %.3f\n", a / n, b / n }'
print_ratio "derived with avif vs without" "$with_time" "$without_time" 2.5
