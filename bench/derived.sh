#!/usr/bin/env bash
# The web-sized pictures of 300 camera pictures (4000x3000 JPEG, about
# 5 MB each), in two sizes (480 and 1600 pixels), made three ways:
#   ours:          DerivePictures without AVIF, through bench/derived_driver.cc
#   vipsthumbnail: to 1600 from the originals, then to 480 from those, Q 82,
#                  metadata stripped
#   ImageMagick:   convert IN -auto-orient -thumbnail NxN -strip OUT, once per
#                  picture and size, as users run it
# Prints the pictures per second of each and two lines:
#   derived vs vipsthumbnail: our time / vipsthumbnail's (target <= 0.7)
#   derived vs imagemagick:   our time / ImageMagick's (target <= 0.33)
# A time is the processor time, user and system, of one run, threads
# included (bench/lib.sh), so a build beside the benchmark does not count in
# it. ImageMagick takes over a second a picture, so it makes the first 40
# pictures (VF_BENCH_MAGICK=N for another count) and is set against ours per
# picture.
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
camera_pictures src "$count"

ours() {
  rm -rf site
  "$driver" src site mini:480 web:1600
}

# The smaller size from the larger, as our pass scales it from the decoded
# larger one. The output pattern is taken from each picture's folder unless
# absolute.
vipsthumbnail_both() {
  rm -rf vt
  mkdir -p vt/mini vt/web
  vipsthumbnail src/*.jpg -s 1600 -o "$PWD/vt/web/%s.jpg[Q=82,strip]"
  vipsthumbnail vt/web/*.jpg -s 480 -o "$PWD/vt/mini/%s.jpg[Q=82,strip]"
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

ours_time=$(cpu_seconds_of ours)
check_made site $((2 * count))
if [ -n "$(find site -name '*.avif' | head -1)" ]; then
  echo "derived: the pass without AVIF wrote AVIF pictures" >&2
  exit 1
fi
if [ "$(vipsheader -f width site/dir_0001/web/img_001.jpg)" -ne 1600 ] ||
  [ "$(vipsheader -f width site/dir_0001/mini/img_001.jpg)" -ne 480 ]; then
  echo "derived: our pictures are not 1600 and 480 pixels wide" >&2
  exit 1
fi
vips_time=$(cpu_seconds_of vipsthumbnail_both)
check_made vt $((2 * count))
magick_time=$(cpu_seconds_of imagemagick_both)
check_made im $((2 * magick_count))

awk -v n="$count" -v m="$magick_count" -v a="$ours_time" -v b="$vips_time" -v c="$magick_time" \
  'BEGIN { printf "processor seconds a picture (two sizes each): ours %.3f, vipsthumbnail %.3f, ImageMagick %.3f\n", a / n, b / n, c / m }'
print_ratio "derived vs vipsthumbnail" "$ours_time" "$vips_time" 0.7
print_ratio "derived vs imagemagick" "$(awk -v t="$ours_time" -v n="$count" 'BEGIN { print t / n }')" \
  "$(awk -v t="$magick_time" -v n="$magick_count" 'BEGIN { print t / n }')" 0.33
