#!/usr/bin/env bash
# The bytes a browser loads for a site built from real photographs, with an
# AVIF beside each web-sized picture and without (the sizes file's "avif
# no"): the first album's menu page and a picture page, each at 390 and 1,280
# pixels wide, in headless Chromium. Prints one line:
#   avif bytes: bytes with AVIF / bytes without (target <= 0.5)
# or "avif bytes: skipped (...)" when Chromium, python3 or the photographs are
# missing, or when the pages of the repository's template set name no AVIF.
#
# The photographs are those of Debian's package mate-backgrounds (its
# nature/ folder), fetched with apt-get download into the work folder;
# VF_BENCH_PHOTOS=FOLDER takes the JPEG files of FOLDER instead.
#
#   bench/avif_bytes.sh [BUILD_DIR]   (default build-bench)
set -euo pipefail
cd "$(dirname "$0")/.."
source bench/lib.sh

dir=${1:-build-bench}
root=$PWD
chromium=${CHROMIUM:-/usr/bin/chromium}
for tool in python3 "$chromium" dpkg-deb; do
  command -v "$tool" >/dev/null || { echo "avif bytes: skipped ($tool is missing)"; exit 0; }
done
vf_build "$dir" vetrina-foto-script
build=$(realpath "$dir")
vf_workdir
cd "$VF_WORK"

if ! vf_photographs >why.txt; then
  echo "avif bytes: skipped ($(cat why.txt))"
  exit 0
fi
mkdir work
CHROMIUM=$chromium python3 "$root/bench/avif_bytes.py" "$build" "$root/templates" "$VF_PHOTOS" \
  "$PWD/work"
