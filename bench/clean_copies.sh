#!/usr/bin/env bash
# The cleaning of the album copies of 300 camera pictures (4000x3000 JPEG,
# about 5 MB each, with a GPS position, a serial number and the owner's name
# written by exiftool) set against making their derived pictures in two
# sizes (480 and 1600 pixels), as a build does one after the other. Prints
#   clean vs derived: cleaning's time / the derived pass's (target <= 0.15)
# Each time is the processor time, user and system, of its driver with its
# threads (bench/clean_driver.cc, bench/derived_driver.cc), the median of
# three runs taken in turns; each run cleans fresh byte copies, made
# untimed, and makes the derived pictures into an empty site.
#
#   bench/clean_copies.sh [BUILD_DIR]   (default build-bench)
#
# The work folder is under $TMPDIR, else /dev/shm, so that the copies cost
# memory and not a disk's write-back.
set -euo pipefail
cd "$(dirname "$0")/.."
source bench/lib.sh

dir=${1:-build-bench}
count=300
for tool in vips exiftool; do
  command -v "$tool" >/dev/null || { echo "clean copies: $tool is missing" >&2; exit 1; }
done
vf_build "$dir" derived_driver clean_driver
derived=$(realpath "$dir/bin/derived_driver")
clean=$(realpath "$dir/bin/clean_driver")
vf_workdir /dev/shm
cd "$VF_WORK"

# Three camera pictures: a slope of colour under grain, and what a camera
# and its owner write into them.
mkdir src
for i in 1 2 3; do
  vips xyz xy.v 4000 3000
  vips linear xy.v slope.v "0.03 0.05" "$((25 * i)) 60"
  vips bandjoin_const slope.v rgb.v 90
  vips gaussnoise grain.v 4000 3000 --sigma $((9 + 5 * i)) --mean 0
  vips add rgb.v grain.v sum.v
  vips cast sum.v camera.v uchar
  vips jpegsave camera.v "camera$i.jpg" --Q 92
  exiftool -q -overwrite_original -Make=Vetrina -Model="Prova $i" -SerialNumber="SN00$i" \
    -OwnerName="Anna Rossi" -Artist="Anna Rossi" -GPSLatitude=45.46 -GPSLatitudeRef=N \
    -GPSLongitude=9.19 -GPSLongitudeRef=E -DateTimeOriginal="2024:05:0$i 10:00:00" "camera$i.jpg"
done
rm -f ./*.v
# The pass knows a source by its path: links are as good as copies.
for n in $(seq 1 $count); do
  ln "camera$(((n - 1) % 3 + 1)).jpg" "$(printf 'src/p%04d.jpg' "$n")"
done

# The album copies as derived_driver lays them out: a hundred an album.
copy_site() {
  rm -rf site
  local n=0 file
  for file in src/*.jpg; do
    mkdir -p "$(printf 'site/dir_%04d' $((n / 100 + 1)))"
    cp "$file" "$(printf 'site/dir_%04d/img_%03d.jpg' $((n / 100 + 1)) $((n % 100 + 1)))"
    n=$((n + 1))
  done
}

clean_times=() derived_times=()
for run in 1 2 3; do
  rm -rf derived
  derived_times+=("$(cpu_seconds_of "$derived" src derived mini:480 web:1600)")
  copy_site
  clean_times+=("$(cpu_seconds_of "$clean" site)")
done
# Every copy must have lost what the camera wrote, and kept its picture.
if [ -n "$(exiftool -q -q -if '$GPSLatitude or $SerialNumber or $OwnerName' -p '$FileName' \
  site/dir_0001/img_001.jpg)" ] || [ "$(vipsheader -f width site/dir_0003/img_100.jpg)" -ne 4000 ]; then
  echo "clean copies: site/dir_0001/img_001.jpg still tells where or who" >&2
  exit 1
fi
clean_time=$(median "${clean_times[@]}")
derived_time=$(median "${derived_times[@]}")
echo "processor seconds: clean $clean_time, derived $derived_time"
print_ratio "clean vs derived" "$clean_time" "$derived_time" 0.15
