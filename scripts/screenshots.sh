#!/usr/bin/env bash
# Builds a site of 25 photos with the headless runner of BUILD_DIR and takes
# screenshots of the index page, an album menu, the picture pages of a portrait
# and of a landscape, and the menu of the last, partly filled album, each 390
# and 1280 pixels wide, into OUTDIR (index-390.png, index-1280.png,
# menu-390.png, picture-390.png, picture-landscape-390.png, ...).
#
#   scripts/screenshots.sh BUILD_DIR OUTDIR [--keep]
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
if [ $# -lt 2 ]; then
  echo "usage: $0 BUILD_DIR OUTDIR [--keep]" >&2
  exit 2
fi
build=$(cd "$1" && pwd)
out=$2
shift 2
python3 "$here/browser_check.py" shots "$build" "$out" "$@"
