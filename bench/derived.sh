#!/usr/bin/env bash
# The web-sized pictures of 300 camera pictures (4000x3000 JPEG, about
# 5 MB each), in two sizes (480 and 1600 pixels), made three ways:
#   ours:          DerivePictures, through bench/derived_driver.cc
#   vipsthumbnail: once per size over the same files, Q 82, metadata stripped
#   ImageMagick:   convert IN -auto-orient -thumbnail NxN -strip OUT, once per
#                  picture and size, as users run it
# Prints the pictures per second of each and two lines:
#   derived vs vipsthumbnail: our time / vipsthumbnail's (target <= 1.2)
#   derived vs imagemagick:   our time / ImageMagick's (target <= 0.33)
# Ours and vipsthumbnail are the median of three runs. ImageMagick takes over
# a second a picture, so it makes the first 40 pictures once
# (VF_BENCH_MAGICK=N for another count) and is set against ours per picture.
#
#   bench/derived.sh [BUILD_DIR]   (default build-bench)
set -euo pipefail
cd "$(dirname "$0")/.."
source bench/lib.sh

dir=${1:-build-bench}
count=300
magick_count=${VF_BENCH_MAGICK:-40}
for tool in vipsthumbnail vips /usr/bin/convert; do
  command -v "$tool" >/dev/null || { echo "derived: $tool is missing" >&2; exit 1; }
done
vf_build "$dir" derived_driver
driver=$(realpath "$dir/bin/derived_driver")
vf_workdir
cd "$VF_WORK"

# Three different pictures of smooth colour and grain, as a camera gives,
# each copied to a hundred names.
mkdir src
for i in 1 2 3; do
  camera_picture "base$i.jpg" 4000 3000 $((10 + 4 * i)) "0.04 0.05 0.05" "$((20 * i)) 30 60" 90
done
for n in $(seq 1 $count); do
  cp "base$(((n - 1) % 3 + 1)).jpg" "$(printf 'src/p%04d.jpg' "$n")"
done
rm -f base*.jpg

ours() {
  rm -rf site
  "$driver" src site mini:480 web:1600
}

vipsthumbnail_both() {
  rm -rf vt
  mkdir -p vt/mini vt/web
  # The output pattern is taken from each picture's folder unless absolute.
  vipsthumbnail src/*.jpg -s 480 -o "$PWD/vt/mini/%s.jpg[Q=82,strip]"
  vipsthumbnail src/*.jpg -s 1600 -o "$PWD/vt/web/%s.jpg[Q=82,strip]"
}

imagemagick_both() {
  rm -rf im
  mkdir -p im/mini im/web
  local files=(src/*.jpg) file
  for file in "${files[@]:0:magick_count}"; do
    /usr/bin/convert "$file" -auto-orient -thumbnail 480x480 -strip "im/mini/${file##*/}"
    /usr/bin/convert "$file" -auto-orient -thumbnail 1600x1600 -strip "im/web/${file##*/}"
  done
}

# Every way must have made every picture at its size.
check_made() {
  local folder=$1 expected=$2 made
  made=$(find "$folder" -name '*.jpg' | wc -l)
  if [ "$made" -ne "$expected" ]; then
    echo "derived: $folder holds $made pictures, not $expected" >&2
    exit 1
  fi
}

ours_times=() vips_times=()
for run in 1 2 3; do
  ours_times+=("$(seconds_of ours)")
  vips_times+=("$(seconds_of vipsthumbnail_both)")
  if [ "$run" -eq 1 ]; then
    check_made site $((2 * count))
    check_made vt $((2 * count))
  fi
done
if [ "$(vipsheader -f width site/dir_0001/web/img_001.jpg)" -ne 1600 ] ||
  [ "$(vipsheader -f width site/dir_0001/mini/img_001.jpg)" -ne 480 ]; then
  echo "derived: our pictures are not 1600 and 480 pixels wide" >&2
  exit 1
fi
magick_time=$(seconds_of imagemagick_both)
check_made im $((2 * magick_count))

ours_time=$(median "${ours_times[@]}")
vips_time=$(median "${vips_times[@]}")
awk -v n="$count" -v m="$magick_count" -v a="$ours_time" -v b="$vips_time" -v c="$magick_time" \
  'BEGIN { printf "pictures per second (two sizes each): ours %.1f, vipsthumbnail %.1f, ImageMagick %.1f\n", n / a, n / b, m / c }'
print_ratio "derived vs vipsthumbnail" "$ours_time" "$vips_time" 1.2
print_ratio "derived vs imagemagick" "$(awk -v t="$ours_time" -v n="$count" 'BEGIN { print t / n }')" \
  "$(awk -v t="$magick_time" -v n="$magick_count" 'BEGIN { print t / n }')" 0.33
