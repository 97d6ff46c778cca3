#!/usr/bin/env bash
# How close the AVIF beside a web-sized picture is to the picture, against
# the JPEG beside it: the butteraugli distance (its largest, Debian's
# butteraugli) of each from the scaled picture before saving, over real
# photographs (see vf_photographs in bench/lib.sh) at both sizes of the
# sample set, 480 and 1600 pixels, made by the pass itself through
# bench/derived_driver.cc. The AVIF's quality was chosen so; this keeps it
# there. Prints the mean distances and one line:
#   avif vs jpeg distance: mean AVIF distance / mean JPEG distance (target <= 1.05)
# or "avif vs jpeg distance: skipped (...)" without butteraugli or photographs.
#
#   bench/avif_quality.sh [BUILD_DIR]   (default build-bench)
set -euo pipefail
cd "$(dirname "$0")/.."
source bench/lib.sh
export LC_ALL=C  # the photographs in the order the pass sorts them

dir=${1:-build-bench}
for tool in butteraugli vips dpkg-deb; do
  command -v "$tool" >/dev/null || { echo "avif vs jpeg distance: skipped ($tool is missing)"; exit 0; }
done
vf_build "$dir" derived_driver
driver=$(realpath "$dir/bin/derived_driver")
vf_workdir
cd "$VF_WORK"
if ! vf_photographs >why.txt; then
  echo "avif vs jpeg distance: skipped ($(cat why.txt))"
  exit 0
fi

mkdir src
cp "$VF_PHOTOS"/*.jpg src/
"$driver" -a src site mini:480 web:1600 >/dev/null
jpeg=() avif=()
n=0
for photo in src/*.jpg; do
  n=$((n + 1))
  name=$(printf 'img_%03d' "$n")
  for size in mini:480 web:1600; do
    folder=${size%:*} pixels=${size#*:}
    # The pass's own scaling, to a picture that nothing has compressed.
    vips thumbnail "$photo" "ref.png[strip]" "$pixels" --height "$pixels" --size down
    vips copy "site/dir_0001/$folder/$name.jpg" jpeg.png
    vips copy "site/dir_0001/$folder/$name.avif" avif.png 2>/dev/null
    jpeg+=("$(butteraugli ref.png jpeg.png)")
    avif+=("$(butteraugli ref.png avif.png)")
  done
done
mean() { printf '%s\n' "$@" | awk '{ s += $1 } END { printf "%.3f\n", s / NR }'; }
echo "butteraugli distance, mean over $n photographs at 480 and 1600 pixels: JPEG $(mean "${jpeg[@]}"), AVIF $(mean "${avif[@]}")"
print_ratio "avif vs jpeg distance" "$(mean "${avif[@]}")" "$(mean "${jpeg[@]}")" 1.05
