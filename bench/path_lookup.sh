#!/usr/bin/env bash
# Builds the path lookup timing in an optimised build folder (default
# build-bench) and prints its one line: the cost of resolving 20,000 names
# typed in the other case, as a ratio to a plain stat of the same files.
set -euo pipefail
cd "$(dirname "$0")/.."
dir=${1:-build-bench}
cmake -S . -B "$dir" -G Ninja -DCMAKE_BUILD_TYPE=Release -DVF_BUILD_GUI=OFF -DVF_BUILD_TESTS=OFF >/dev/null
cmake --build "$dir" --target path_lookup_bench >/dev/null
"$dir/bin/path_lookup_bench"
