#!/usr/bin/env bash
# Builds the path lookup timing in an optimised build folder (default
# build-bench) and prints its one line: the cost of resolving 20,000 names
# typed in the other case, as a ratio to a plain stat of the same files.
set -euo pipefail
cd "$(dirname "$0")/.."
source bench/lib.sh
dir=${1:-build-bench}
vf_build "$dir" path_lookup_bench
"$dir/bin/path_lookup_bench"
