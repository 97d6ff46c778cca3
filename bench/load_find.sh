#!/usr/bin/env bash
# A load through vetrina-foto-script (txtPATH_RICERCA, cmdCONFERMA with the
# filter "*") of 100,000 pictures in 1,000 folders, set against `find` listing
# the same tree. Prints "load vs find: ratio X.XX (target <= 3)", medians of
# five runs each with warm caches; the runner's start-up is inside its time.
#
#   bench/load_find.sh [BUILD_DIR]   (default build-bench)
set -euo pipefail
cd "$(dirname "$0")/.."
source bench/lib.sh

dir=${1:-build-bench}
vf_build "$dir" vetrina-foto-script vf_templates
runner=$(realpath "$dir/bin/vetrina-foto-script")
program=$(realpath "$dir/bin")
vf_workdir
cd "$VF_WORK"

mkdir -p c/Albero
for ((d = 1; d <= 1000; d++)); do
  folder=$(printf 'c/Albero/D%04d' "$d")
  mkdir "$folder"
  (cd "$folder" && touch P{00001..00100}.JPG)
done

cat >load.txt <<EOF
drive C c
drive P $program
program P:\\
start
set txtPATH_RICERCA C:\\Albero
click cmdCONFERMA
print txtNUM_FILE.Text
EOF

load() { "$runner" load.txt >out.txt; }
list() { find c/Albero -type f -name '*.JPG'; }

list >/dev/null # warm the caches
loads=()
finds=()
for run in 1 2 3 4 5; do
  loads+=("$(seconds_of load)")
  if ! grep -qx 'txtNUM_FILE.Text = 100000' out.txt; then
    echo "the load did not find 100,000 pictures:" >&2
    cat out.txt >&2
    exit 1
  fi
  finds+=("$(seconds_of list)")
done
print_ratio "load vs find" "$(median "${loads[@]}")" "$(median "${finds[@]}")" 3
