#!/usr/bin/env bash
# A build through vetrina-foto-script set against a plain `cp -r` of the same
# pictures on the same disk, and the cost of a picture in a large build set
# against a small one. Prints two lines:
#   build vs copy: build time of 2,000 pictures of 500 KB / cp -r time
#   build scale:   time per picture at 20,000 small pictures / at 2,000
# Each figure is the median of three runs. The build is in small letters, so
# every picture is renamed to p00001.jpg and every path goes through the
# case-blind lookup.
#
#   bench/build_copy.sh [BUILD_DIR]   (default build-bench)
#
# The work folder is under $TMPDIR (or /tmp). On a disk where making a file
# costs far more than copying 500 KB, the first ratio mostly counts files:
# a build makes about 2.7 files a picture (the copy, its page, and per album
# five assets and a menu) where cp makes one. TMPDIR=/dev/shm gives the
# program's own share.
set -euo pipefail
cd "$(dirname "$0")/.."
source bench/lib.sh

dir=${1:-build-bench}
vf_build "$dir" vetrina-foto-script vf_templates
runner=$(realpath "$dir/bin/vetrina-foto-script")
vf_workdir
cd "$VF_WORK"
# The template set without its sizes file: this times the build's copies,
# not the web-size pass (bench/derived.sh does).
mkdir prog
cp -r "$(realpath "$OLDPWD/$dir/bin")"/{*.HTM,*.jpg,*.gif,VETRINA-FOTO_DEFAULT} prog/
program=$PWD/prog

cat >build.txt <<EOF
drive C c
drive P $program
program P:\\
start
set txtPATH_RICERCA C:\\Foto
click cmdCONFERMA
set txtNOME_FILE_HTM C:\\Sito\\index.htm
click Command1
EOF

# A folder c/Foto of COUNT pictures P00001.JPG ... of SIZE random bytes each.
make_pictures() {
  local count=$1 size=$2
  rm -rf c
  mkdir -p c/Foto
  head -c $((count * size)) /dev/urandom |
    (cd c/Foto && split -b "$size" -d -a 5 --numeric-suffixes=1 --additional-suffix=.JPG - P)
}

# Every run starts from names in capitals and no site. Whatever a run wrote
# is removed before the next sync, so little of it ever goes to the disk.
fresh_run() {
  perl -e 'for (glob "c/Foto/p*.jpg") { (my $n = $_) =~ s{/p(\d+)\.jpg$}{/P$1.JPG}; rename $_, $n or die }'
  rm -rf c/Sito c/Copia
  mkdir c/Sito
}

build() { "$runner" build.txt >out.txt; }

# The build must have done its work: every picture renamed and copied.
check_build() {
  local count=$1 copies
  check_finished out.txt
  copies=$(find c/Sito -name 'img_*.jpg' | wc -l)
  if [ ! -f "$(printf 'c/Foto/p%05d.jpg' "$count")" ] || [ "$copies" -ne "$count" ]; then
    echo "build of $count pictures incomplete: $copies copies" >&2
    exit 1
  fi
  rm -rf c/Sito
}

# Median build time, in seconds, of three runs over COUNT pictures of SIZE
# bytes; with "copy" it also prints the median time of cp -r after it.
time_builds() {
  local count=$1 size=$2 with_copy=${3:-} builds=() copies=()
  make_pictures "$count" "$size"
  for run in 1 2 3; do
    fresh_run
    builds+=("$(seconds_of build)")
    check_build "$count"
    if [ -n "$with_copy" ]; then copies+=("$(seconds_of cp -r c/Foto c/Copia)"); fi
  done
  echo "$(median "${builds[@]}")" "$(median "${copies[@]:-0}")"
}

# Command substitutions, so that a failed build ends the script.
result=$(time_builds 2000 500000 copy)
read -r build_time copy_time <<<"$result"
print_ratio "build vs copy" "$build_time" "$copy_time" 1.5

result=$(time_builds 2000 1000)
read -r small _ <<<"$result"
result=$(time_builds 20000 1000)
read -r large _ <<<"$result"
rm -rf c
print_ratio "build scale" "$(awk -v t="$large" 'BEGIN { print t / 20000 }')" \
  "$(awk -v t="$small" 'BEGIN { print t / 2000 }')" 1.3
