# Helpers shared by the benchmark scripts; sourced, not run.
#
# Every benchmark works in its own folder under $TMPDIR (or /tmp, or for
# those that time the making of many files /dev/shm), removed on exit, and
# prints one line: "NAME: ratio X.XX (target <= T)".

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

# A fresh work folder, removed when the script ends however it ends: under
# $TMPDIR when it is set, else under the folder given, else under /tmp.
vf_workdir() {
  local parent=${TMPDIR:-${1:-/tmp}}
  if [ ! -d "$parent" ] || [ ! -w "$parent" ]; then parent=/tmp; fi
  VF_WORK=$(mktemp -d "$parent/vf-bench-XXXXXX")
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

# Runs a command with its output thrown away and prints the processor time,
# user and system, that it and the processes it waited for took, in seconds.
# Unlike the clock, this leaves out waiting for the disk, whose write-back of
# an earlier step may land in any later one, and waiting for the processors
# that a build beside the benchmark holds. Dirty pages of the previous step
# are written out first all the same, so that no step is slowed down to let
# the kernel catch up.
cpu_seconds_of() {
  sync
  local report
  report=$("$@" >/dev/null && times) || return
  # The second line of `times` is the children's "XmY.YYYs XmY.YYYs"; the
  # decimal point follows the locale.
  awk 'NR == 2 {
    gsub(/,/, ".")
    split($1, u, /[ms]/)
    split($2, s, /[ms]/)
    printf "%.3f\n", u[1] * 60 + u[2] + s[1] * 60 + s[2]
  }' <<<"$report"
}

# Makes ext4 put each folder made directly in the given ones in a block
# group of its own (chattr +T), away from where other programs make and
# remove files. Without a journal, a new file skips one lookup at a time
# every inode of its group freed in the last 30 seconds, which can cost more
# than the file itself. Elsewhere this does nothing.
vf_spread() {
  chattr +T "$@" 2>/dev/null || true
}

# A JPEG of smooth colour and grain, as a camera gives, made with vips in the
# current folder: camera_picture OUT WIDTH HEIGHT SIGMA "R G B SCALE" "R G B
# OFFSET" QUALITY.
camera_picture() {
  local out=$1 width=$2 height=$3 sigma=$4 scale=$5 offset=$6 quality=$7
  vips gaussnoise noise.v "$width" "$height" --sigma "$sigma" --mean 0
  vips xyz xy.v "$width" "$height"
  vips extract_band xy.v x.v 0
  vips extract_band xy.v y.v 1
  vips bandjoin "x.v y.v x.v" xyx.v
  vips linear xyx.v ramp.v "$scale" "$offset"
  vips add ramp.v noise.v sum.v
  vips cast sum.v base.v uchar
  vips jpegsave base.v "$out" --Q "$quality"
  rm -f noise.v xy.v x.v y.v xyx.v ramp.v sum.v base.v
}

# COUNT camera pictures in the folder OUT (made), p0001.jpg ...: three
# different 4000x3000 JPEGs of about 5 MB, each copied to a third of the
# names, made in the current folder: camera_pictures OUT COUNT.
camera_pictures() {
  local out=$1 count=$2 i n
  mkdir -p "$out"
  for i in 1 2 3; do
    camera_picture "base$i.jpg" 4000 3000 $((10 + 4 * i)) "0.04 0.05 0.05" "$((20 * i)) 30 60" 90
  done
  for n in $(seq 1 "$count"); do
    cp "base$(((n - 1) % 3 + 1)).jpg" "$(printf '%s/p%04d.jpg' "$out" "$n")"
  done
  rm -f base*.jpg
}

# Sets VF_PHOTOS to a folder of real photographs (JPEG files): the folder
# VF_BENCH_PHOTOS names, or else the nature/ folder of Debian's package
# mate-backgrounds, fetched with apt-get download into the current folder.
# Prints why and fails when there are none to be had.
vf_photographs() {
  VF_PHOTOS=${VF_BENCH_PHOTOS:-}
  if [ -z "$VF_PHOTOS" ]; then
    if ! apt-get download mate-backgrounds >/dev/null 2>&1; then
      echo "the photographs of mate-backgrounds could not be fetched"
      return 1
    fi
    dpkg-deb -x mate-backgrounds_*.deb deb
    VF_PHOTOS=$PWD/deb/usr/share/backgrounds/mate/nature
  fi
  if [ -z "$(find "$VF_PHOTOS" -maxdepth 1 -iname '*.jpg' 2>/dev/null | head -1)" ]; then
    echo "no photographs in $VF_PHOTOS"
    return 1
  fi
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
