#!/usr/bin/env bash
# Starts the window on a virtual X display and saves a picture of it.
#
#   scripts/screenshot-window.sh OUT.png [BUILD_DIR]
#
# BUILD_DIR defaults to build; it is built first when the program is not
# there. Needs xvfb-run (xvfb, xauth) and ImageMagick (import, convert).
set -euo pipefail
if [ $# -lt 1 ]; then
  echo "usage: $0 OUT.png [BUILD_DIR]" >&2
  exit 2
fi
out=$(realpath -m "$1")
cd "$(dirname "$0")/.."
build=${2:-build}
[ -x "$build/bin/vetrina-foto" ] || bash scripts/build.sh "$build"
program=$(realpath "$build/bin/vetrina-foto")
shot=$(mktemp --suffix=.png)
trap 'rm -f "$shot"' EXIT

export XDG_RUNTIME_DIR=${XDG_RUNTIME_DIR:-$(mktemp -d)}
# A display with no window manager: the window stands alone on a black
# screen, without a frame, so the picture is cut to it by trimming the black.
xvfb-run -a -s "-screen 0 1024x768x24 -dpi 96" bash -c '
  "$1" & pid=$!
  trap "kill $pid 2>/dev/null || true" EXIT
  if command -v xwininfo >/dev/null; then
    for _ in $(seq 100); do
      xwininfo -root -tree 2>/dev/null | grep -q "Vetrina Foto Digitali" && break
      sleep 0.1
    done
    sleep 1
  else
    sleep 3
  fi
  import -window root "$2"
' _ "$program" "$shot"
convert "$shot" -bordercolor black -border 1 -trim +repage "$out"
echo "$out: $(identify -format '%wx%h' "$out")"
