# Helpers shared by the benchmark scripts; sourced, not run.
#
# Every benchmark works in its own folder under $TMPDIR (or /tmp), removed on
# exit, and prints one line: "NAME: ratio X.XX (target <= T)".

# Configures and builds the given targets in an optimised build folder. The
# options are left as the folder has them, so a developer's build-bench keeps
# its tests.
vf_build() {
  local dir=$1
  shift
  if [ ! -f "$dir/CMakeCache.txt" ]; then
    cmake -S . -B "$dir" -G Ninja -DCMAKE_BUILD_TYPE=Release -DVF_BUILD_GUI=OFF >/dev/null
  fi
  cmake --build "$dir" --target "$@" >/dev/null
}

# A fresh work folder, removed when the script ends however it ends.
vf_workdir() {
  VF_WORK=$(mktemp -d "${TMPDIR:-/tmp}/vf-bench-XXXXXX")
  trap 'chmod -R u+w "$VF_WORK" 2>/dev/null || true; rm -rf "$VF_WORK"' EXIT
}

now_ns() { date +%s%N; }

# Runs a command with its output thrown away and prints how long it took, in
# seconds. Dirty pages of the previous step are written out first, so that
# one step does not pay for the disk writes of another.
seconds_of() {
  sync
  local t0 t1
  t0=$(now_ns)
  "$@" >/dev/null
  t1=$(now_ns)
  awk -v a="$t0" -v b="$t1" 'BEGIN { printf "%.6f\n", (b - a) / 1e9 }'
}

# The middle value of the numbers given.
median() {
  printf '%s\n' "$@" | sort -g | awk '{ v[NR] = $1 } END { print v[int((NR + 1) / 2)] }'
}

# "NAME: ratio X.XX (target <= T)" for a / b.
print_ratio() {
  local name=$1 a=$2 b=$3 target=$4
  awk -v n="$name" -v a="$a" -v b="$b" -v t="$target" \
    'BEGIN { if (b <= 0) b = 1e-6; printf "%s: ratio %.2f (target <= %s)\n", n, a / b, t }'
}

# Fails the script, with the runner's output, when a run did not finish.
check_finished() {
  local output=$1
  if ! grep -q '^ASK: Visualizzo la pagina creata' "$output"; then
    echo "the build did not finish; the runner printed:" >&2
    tail -20 "$output" >&2
    exit 1
  fi
}
