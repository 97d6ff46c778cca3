#!/usr/bin/env bash
# Load benchmark through the window: a tree of 100,000 pictures in 1,000
# folders is loaded by clicking cmdCONFERMA in the offscreen window, and the
# time is set against `find` listing the same tree. Passes while the load
# takes at most three times as long as find (best of three runs each, warm
# caches).
#
#   bench/load_window.sh [BUILD_DIR] [TREE_DIR]
#
# BUILD_DIR defaults to build, TREE_DIR to $TMPDIR/vf-bench-100k; the tree is
# made once and kept for the next run.
set -euo pipefail
cd "$(dirname "$0")/.."
build=${1:-build}
tree=${2:-${TMPDIR:-/tmp}/vf-bench-100k}

cmake --build "$build" --target vf_bench_load_window >/dev/null
driver="$build/bin/vf_bench_load_window"

if [ ! -f "$tree/.fatto" ]; then
  echo "Making $tree: 1,000 folders of 100 pictures ..."
  rm -rf "$tree"
  mkdir -p "$tree"
  for ((d = 0; d < 1000; d++)); do
    folder=$(printf '%s/cartella_%04d' "$tree" "$d")
    mkdir "$folder"
    (cd "$folder" && touch foto_{000..099}.jpg)
  done
  touch "$tree/.fatto"
fi

now_ms() { date +%s%3N; }
best_find=""
best_load=""
find "$tree" -type f >/dev/null  # warm the caches
for run in 1 2 3; do
  t0=$(now_ms)
  n_find=$(find "$tree" -type f -name '*.jpg' | wc -l)
  t1=$(now_ms)
  ms=$((t1 - t0))
  if [ -z "$best_find" ] || [ "$ms" -lt "$best_find" ]; then best_find=$ms; fi

  out=$(QT_QPA_PLATFORM=offscreen "$driver" "$tree" 2>/dev/null)
  n_load=${out%% *}
  ms=$(echo "$out" | sed -E 's/.* in ([0-9]+) ms/\1/')
  if [ -z "$best_load" ] || [ "$ms" -lt "$best_load" ]; then best_load=$ms; fi
done

echo "find:        $n_find files in $best_find ms"
echo "window load: $n_load entries in $best_load ms"
if [ "$n_load" -ne "$n_find" ]; then
  echo "FAIL: the load found $n_load entries, find $n_find" >&2
  exit 1
fi
# A find faster than a millisecond still counts as one.
ratio=$(awk -v a="$best_load" -v b="$best_find" 'BEGIN { if (b < 1) b = 1; printf "%.2f", a / b }')
echo "ratio:       ${ratio}x find (limit 3x)"
awk -v r="$ratio" 'BEGIN { exit !(r <= 3) }' || { echo "FAIL: over 3x find" >&2; exit 1; }
