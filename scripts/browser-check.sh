#!/usr/bin/env bash
# Builds a site of 25 photos with the headless runner of BUILD_DIR and loads
# every page of it in headless Chromium: every page must load, every link and
# picture it shows (the web-sized copies too) must lead to a file of the site,
# and no request may fail. The places past the end of the last, partly filled
# album are hidden by the pages and never requested. The picture pages must
# show a portrait large on a phone and fit a wide window without scrolling, no
# photo's description may become markup, and axe-core and the Nu HTML checker
# must find nothing on the lines the template set writes, and the photos' words
# must stand in their places. Prints a summary; exits
# non-zero on a failure.
#
#   scripts/browser-check.sh BUILD_DIR [--keep]
#
# Needs python3, chromium, ImageMagick's convert, exiftool and java
# (scripts/install-deps.sh), and axe-core and vnu-jar from scripts/package.json,
# which it installs with npm when they are missing.
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
if [ $# -lt 1 ]; then
  echo "usage: $0 BUILD_DIR [--keep]" >&2
  exit 2
fi
build=$(cd "$1" && pwd)
shift
for tool in python3 "${CHROMIUM:-/usr/bin/chromium}" exiftool java npm; do
  command -v "$tool" >/dev/null || { echo "browser-check: $tool is missing" >&2; exit 1; }
done
convert -version 2>/dev/null | grep -q ImageMagick ||
  { echo "browser-check: ImageMagick's convert is missing (apt-get install imagemagick)" >&2; exit 1; }

if [ ! -f "$here/node_modules/axe-core/axe.min.js" ] || [ ! -f "$here/node_modules/vnu-jar/build/dist/vnu.jar" ]; then
  # Without its install script, which would fetch a Java of its own: the machine's serves.
  (cd "$here" && npm ci --ignore-scripts --no-audit --no-fund --prefer-offline >/dev/null)
fi

# The checker's own tests first: a checker that misses faults passes anything.
python3 "$here/browser_check_test.py" 2>&1 | tail -n 1
python3 "$here/page_checks_test.py" 2>&1 | tail -n 1
# The picture pages of the template set are one page, written nine times.
python3 "$here/make-picture-pages.py" --check
python3 "$here/browser_check.py" check "$build" "$@"
