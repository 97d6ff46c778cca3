#!/usr/bin/env bash
# A rebuild through vetrina-foto-script with the sizes file and nothing
# changed, set against the same build with no sizes file: the web-size pass
# must then only confirm what it made, and the cleaning of the album copies
# take back the clean copies the first build kept. Prints one line:
#   rebuild unchanged vs no sizes: rebuild time / build time without sizes
# over 2,000 pictures of 1200x900 in two sizes (240 and 800 pixels). A first
# build with the sizes file makes the web-sized pictures and is not timed;
# then builds without the file and rebuilds with it take turns, five of each,
# over the same site, and each side is the median of its five. A time is the
# processor time, user and system, of the runner, its picture threads
# included, so neither the disk's write-back of an earlier run nor a build
# beside the benchmark counts in it. Every rebuild must leave every web-sized
# picture as it was.
#
# The pictures are four made with vips, each linked to 500 names: the pass
# knows a picture by its path, so every name is a picture of its own.
#
#   bench/rebuild_derived.sh [BUILD_DIR]   (default build-bench)
#
# The runner keeps the clean copies of the album copies in the user's cache
# ($XDG_CACHE_HOME), which is set to a folder of the work folder: on the
# same file system as the site, as for a user whose site and cache are both
# in the home folder, so that the rebuild takes back by a hard link what the
# first build cleaned; and so that the benchmark leaves the real cache alone.
#
# The work folder is under $TMPDIR, else /dev/shm: on a disk, ext4 without a
# journal makes a new file skip one by one the inodes freed in the last 30
# seconds, and a build replaces its 2,000 copies, so each run would pay for
# the files of the one before.
set -euo pipefail
cd "$(dirname "$0")/.."
source bench/lib.sh

dir=${1:-build-bench}
count=2000
runs=5
command -v vips >/dev/null || { echo "rebuild derived: vips is missing" >&2; exit 1; }
vf_build "$dir" vetrina-foto-script vf_templates
runner=$(realpath "$dir/bin/vetrina-foto-script")
bin=$(realpath "$dir/bin")
vf_workdir /dev/shm
cd "$VF_WORK"
vf_spread .
export XDG_CACHE_HOME=$VF_WORK/cache

mkdir -p c/Foto c/Sito prog
cp -r "$bin"/*.HTM "$bin"/*.jpg "$bin"/*.gif "$bin"/VETRINA-FOTO_DEFAULT prog/
if [ -n "$(find prog -iname dimensioni.txt)" ]; then
  echo "rebuild derived: the template set holds a sizes file" >&2
  exit 1
fi
printf 'mini 240\r\nweb 800\r\n' >sizes.txt

# Four pictures of smooth colour and grain, as a camera gives.
for i in 1 2 3 4; do
  camera_picture "base$i.jpg" 1200 900 $((6 + 3 * i)) "0.15 0.2 0.12" "$((30 * i)) 40 70" 85
done
for ((n = 1; n <= count; n++)); do
  ln "base$(((n - 1) % 4 + 1)).jpg" "$(printf 'c/Foto/p%04d.jpg' "$n")"
done

cat >build.txt <<SCRIPT
drive C c
drive P prog
program P:\\
start
answer yes
set txtPATH_RICERCA C:\\Foto
click cmdCONFERMA
set txtNOME_FILE_HTM C:\\Sito\\index.htm
click Command1
SCRIPT

build() { "$runner" build.txt >out.txt; }

# The build must have finished and copied every picture.
check_build() {
  local copies
  check_finished out.txt
  copies=$(find c/Sito -mindepth 2 -maxdepth 2 -type f -regextype posix-extended \
    -regex '.*/Sito/dir_[0-9]{4}/img_[0-9]{3}\.jpg' | wc -l)
  if [ "$copies" -ne "$count" ]; then
    echo "rebuild derived: the build made $copies copies, not $count" >&2
    exit 1
  fi
}

# The web-sized pictures of one size, as dir_NNNN/SIZE/img_NNN.jpg; the AVIF
# beside each is not counted.
derived_count() {
  find c/Sito -mindepth 3 -maxdepth 3 -type f -path "*/$1/img_*.jpg" | wc -l
}

cp sizes.txt prog/DIMENSIONI.TXT
build
check_build
for size in mini web; do
  made=$(derived_count "$size")
  if [ "$made" -ne "$count" ]; then
    echo "rebuild derived: the first build with sizes made $made $size pictures, not $count" >&2
    exit 1
  fi
done
touch made

plain=() again=()
for ((i = 1; i <= runs; i++)); do
  rm prog/DIMENSIONI.TXT
  plain+=("$(cpu_seconds_of build)")
  check_build
  cp sizes.txt prog/DIMENSIONI.TXT
  again+=("$(cpu_seconds_of build)")
  check_build
  remade=$(find c/Sito -mindepth 3 -maxdepth 3 -type f -newer made \( -path '*/mini/*' -o -path '*/web/*' \) | wc -l)
  if [ "$remade" -ne 0 ]; then
    echo "rebuild derived: a rebuild with nothing changed remade $remade web-sized pictures" >&2
    exit 1
  fi
done
print_ratio "rebuild unchanged vs no sizes" "$(median "${again[@]}")" "$(median "${plain[@]}")" 1.2
