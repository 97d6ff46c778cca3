#!/usr/bin/env bash
# A build through vetrina-foto-script set against a plain `cp -r` of the same
# pictures on the same disk, and the cost of a picture in a large build set
# against a small one. Prints two lines:
#   build vs copy: build time of 2,000 pictures of 500 KB / cp -r time
#   build scale:   time per picture at 20,000 small pictures / at 2,000
# A time is the processor time, user and system, of the runner or of cp, so
# neither the disk's write-back of an earlier run nor a build beside the
# benchmark counts in it. The runs of each figure alternate (build, cp,
# build, cp...; small, large, small, large...) five times, and each side is
# the median of its five. Every build must have made one numbered copy
# (dir_NNNN/img_NNN.jpg) per picture. The template set has no sizes file
# DIMENSIONI.TXT, so that no web-sized picture is made: bench/derived.sh and
# bench/rebuild_derived.sh time that pass. The build is in small letters, so
# every picture is renamed to p00001.jpg and every path goes through the
# case-blind lookup.
#
#   bench/build_copy.sh [BUILD_DIR]   (default build-bench)
#
# The work folder is under $TMPDIR, else /dev/shm. On a disk the cost of
# making a file depends on who else uses it: ext4 without a journal makes a
# new file skip, one by one, the inodes of its group that anyone freed in the
# last 30 seconds. A build makes about 2.7 files a picture (the copy, its
# page, and per album five assets and a menu) where cp makes one, so where
# making a file costs much against copying 500 KB the first ratio mostly
# counts files.
set -euo pipefail
cd "$(dirname "$0")/.."
source bench/lib.sh

dir=${1:-build-bench}
runs=5
vf_build "$dir" vetrina-foto-script vf_templates
runner=$(realpath "$dir/bin/vetrina-foto-script")
bin=$(realpath "$dir/bin")
vf_workdir /dev/shm
cd "$VF_WORK"
vf_spread .

# The template set without its sizes file, named in any case.
mkdir prog
cp -r "$bin"/*.HTM "$bin"/*.jpg "$bin"/*.gif "$bin"/VETRINA-FOTO_DEFAULT prog/
if [ -n "$(find prog -iname dimensioni.txt)" ] || [ ! -f prog/MENU.HTM ] ||
  [ ! -d prog/VETRINA-FOTO_DEFAULT ]; then
  echo "the template set is not the one without sizes:" >&2
  ls prog >&2
  exit 1
fi
program=$PWD/prog
mkdir c
vf_spread c

# A folder c/NAME of COUNT pictures P00001.JPG ... of SIZE random bytes each.
make_pictures() {
  local name=$1 count=$2 size=$3
  mkdir "c/$name"
  head -c $((count * size)) /dev/urandom |
    (cd "c/$name" && split -b "$size" -d -a 5 --numeric-suffixes=1 --additional-suffix=.JPG - P)
}

# Nothing of a run is removed before the end: on ext4 without a journal the
# next run's new files would have to skip the freed inodes (see vf_spread).
# Emptying the files gives their memory and disk back and keeps the inodes.
empty_files() {
  find "$@" -type f -exec truncate -s 0 {} +
}

# Each run writes a site of its own, c/SNNN: a new folder of c, which
# vf_spread puts in a group of its own.
run=0

# Builds the pictures of c/NAME, first put back in capitals, into a new site;
# sets `site`.
start_build() {
  local name=$1
  run=$((run + 1))
  site=$(printf 'S%03d' "$run")
  perl -e 'for (glob "c/$ARGV[0]/p*.jpg") { (my $n = $_) =~ s{/p(\d+)\.jpg$}{/P$1.JPG}; rename $_, $n or die }' "$name"
  mkdir "c/$site"
  cat >build.txt <<EOF
drive C c
drive P $program
program P:\\
start
set txtPATH_RICERCA C:\\$name
click cmdCONFERMA
set txtNOME_FILE_HTM C:\\$site\\index.htm
click Command1
EOF
}

build() { "$runner" build.txt >out.txt; }

# The build must have done its work: every picture renamed and copied once,
# as dir_NNNN/img_NNN.jpg right under the site.
check_build() {
  local name=$1 count=$2 copies
  check_finished out.txt
  copies=$(find "c/$site" -mindepth 2 -maxdepth 2 -type f -regextype posix-extended \
    -regex ".*/$site/dir_[0-9]{4}/img_[0-9]{3}\.jpg" | wc -l)
  if [ ! -f "$(printf 'c/%s/p%05d.jpg' "$name" "$count")" ] || [ "$copies" -ne "$count" ]; then
    echo "build of $count pictures incomplete: $copies copies" >&2
    exit 1
  fi
}

# Build vs copy: builds and copies in turn. Command substitutions, so that a
# failed build ends the script.
make_pictures Foto 2000 500000
builds=() copies=()
for ((i = 1; i <= runs; i++)); do
  start_build Foto
  builds+=("$(cpu_seconds_of build)")
  check_build Foto 2000
  empty_files "c/$site"
  copies+=("$(cpu_seconds_of cp -r c/Foto "c/K$i")")
  if [ "$(find "c/K$i" -type f | wc -l)" -ne 2000 ]; then
    echo "cp -r did not copy 2,000 pictures" >&2
    exit 1
  fi
  empty_files "c/K$i"
done
empty_files c/Foto
print_ratio "build vs copy" "$(median "${builds[@]}")" "$(median "${copies[@]}")" 1.5

# Build scale: 2,000 and 20,000 pictures of 1 KB in turn.
make_pictures Poche 2000 1000
make_pictures Molte 20000 1000
small=() large=()
for ((i = 1; i <= runs; i++)); do
  start_build Poche
  small+=("$(cpu_seconds_of build)")
  check_build Poche 2000
  empty_files "c/$site"
  start_build Molte
  large+=("$(cpu_seconds_of build)")
  check_build Molte 20000
  empty_files "c/$site"
done
print_ratio "build scale" "$(awk -v t="$(median "${large[@]}")" 'BEGIN { print t / 20000 }')" \
  "$(awk -v t="$(median "${small[@]}")" 'BEGIN { print t / 2000 }')" 1.3
