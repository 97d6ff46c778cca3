#!/usr/bin/env bash
# A rebuild through vetrina-foto-script with the sizes file and nothing
# changed, set against the same build with no sizes file: the web-size pass
# must then only confirm what it made. Prints one line:
#   rebuild unchanged vs no sizes: rebuild time / build time without sizes
# over 300 camera pictures of 4000x3000 (made with vips), two sizes, the
# median of three runs each. The first build with sizes is not timed.
#
#   bench/rebuild_derived.sh [BUILD_DIR]   (default build-bench)
set -euo pipefail
cd "$(dirname "$0")/.."
source bench/lib.sh

dir=${1:-build-bench}
vf_build "$dir" vetrina-foto-script vf_templates
runner=$(realpath "$dir/bin/vetrina-foto-script")
vf_workdir
cd "$VF_WORK"

mkdir -p c/Foto c/Sito prog
cp -r "$(realpath "$OLDPWD/$dir/bin")"/{*.HTM,*.jpg,*.gif,VETRINA-FOTO_DEFAULT} prog/
rm -f prog/DIMENSIONI.TXT
vips black base.v 4000 3000 --bands 3
vips gaussnoise noise.v 4000 3000
vips add base.v noise.v pic.v
for i in $(seq -w 1 300); do vips copy pic.v "c/Foto/p$i.jpg[Q=85]"; done
rm -f ./*.v

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

plain=()
for run in 1 2 3; do
  plain+=("$(seconds_of build)")
  check_finished out.txt
done
printf 'mini 480\r\nweb 1600\r\n' >prog/DIMENSIONI.TXT
build
check_finished out.txt
made=$(find c/Sito -path '*/web/img_*' | wc -l)
if [ "$made" -ne 300 ]; then
  echo "the first build with sizes made $made web pictures, not 300" >&2
  exit 1
fi
again=()
for run in 1 2 3; do
  again+=("$(seconds_of build)")
  check_finished out.txt
done
print_ratio "rebuild unchanged vs no sizes" "$(median "${again[@]}")" "$(median "${plain[@]}")" 1.2
