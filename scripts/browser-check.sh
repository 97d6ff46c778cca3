#!/usr/bin/env bash
# Builds a site of 25 pictures with the headless runner of BUILD_DIR and loads
# every page of it in headless Chromium: every page must load, every link and
# picture it shows (the web-sized copies too) must lead to a file of the site,
# and no request may fail. The places past the end of the last, partly filled
# album are hidden by the pages and never requested. Prints a summary; exits
# non-zero on a failure.
#
#   scripts/browser-check.sh BUILD_DIR [--keep]
#
# Needs python3, chromium and ImageMagick's convert (scripts/install-deps.sh).
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
if [ $# -lt 1 ]; then
  echo "usage: $0 BUILD_DIR [--keep]" >&2
  exit 2
fi
build=$(cd "$1" && pwd)
shift
for tool in python3 "${CHROMIUM:-/usr/bin/chromium}"; do
  command -v "$tool" >/dev/null || { echo "browser-check: $tool is missing" >&2; exit 1; }
done
convert -version 2>/dev/null | grep -q ImageMagick ||
  { echo "browser-check: ImageMagick's convert is missing (apt-get install imagemagick)" >&2; exit 1; }

# The checker's own tests first: a checker that misses faults passes anything.
python3 "$here/browser_check_test.py" 2>&1 | tail -n 1
python3 "$here/browser_check.py" check "$build" "$@"
