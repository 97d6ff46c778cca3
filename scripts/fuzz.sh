#!/usr/bin/env bash
# Builds the libFuzzer targets of tests/fuzz with clang and runs each one for
# a bounded time, on a copy of its seed corpus so that the repository stays
# as it is. Fails on any crash, hang, memory blow-up or sanitizer report and
# keeps the input that caused it.
#   FUZZ_SECONDS   time of each target (default 20)
#   FUZZ_BUILD     build folder (default build-fuzz)
#   FUZZ_OUT       where failing inputs are kept (default fuzz-findings)
set -euo pipefail
cd "$(dirname "$0")/.."
seconds=${FUZZ_SECONDS:-20}
dir=${FUZZ_BUILD:-build-fuzz}
findings=${FUZZ_OUT:-fuzz-findings}

CC=clang CXX=clang++ cmake -S . -B "$dir" -G Ninja -DCMAKE_BUILD_TYPE=Debug \
  "-DCMAKE_CXX_FLAGS_DEBUG=-O1 -gline-tables-only" -DVF_FUZZ=ON -DVF_BUILD_GUI=OFF \
  -DVF_BUILD_TESTS=OFF >/dev/null
cmake --build "$dir" --target vf_fuzzers -j "$(nproc)"

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# One target: its corpus copied, then fuzzed. A failure leaves a mark file.
run_one() {
  local target=$1
  local here="$work/$target"
  mkdir -p "$here/corpus" "$here/artifacts"
  cp tests/fuzz/corpus/"$target"/* "$here/corpus/"
  if ! "$dir/bin/${target}_fuzz" -max_total_time="$seconds" -timeout=10 -rss_limit_mb=2048 \
      -max_len=4096 -artifact_prefix="$here/artifacts/" "$here/corpus" >"$here/log" 2>&1; then
    touch "$here/failed"
  fi
}

targets=()
for corpus in tests/fuzz/corpus/*/; do targets+=("$(basename "$corpus")"); done

# As many targets at once as there are cores.
for target in "${targets[@]}"; do
  while [ "$(jobs -rp | wc -l)" -ge "$(nproc)" ]; do wait -n || true; done
  run_one "$target" &
done
wait

status=0
for target in "${targets[@]}"; do
  here="$work/$target"
  runs=$(grep -o 'Done [0-9]* runs' "$here/log" | tail -1 || true)
  if [ -e "$here/failed" ]; then
    status=1
    echo "fuzz $target: FAILED"
    grep -v '^#[0-9]' "$here/log" | tail -60
    mkdir -p "$findings/$target"
    cp "$here"/artifacts/* "$findings/$target/" 2>/dev/null || true
    echo "failing inputs kept in $findings/$target"
  else
    echo "fuzz $target: ${runs:-no runs counted}, no faults"
  fi
done
exit $status
