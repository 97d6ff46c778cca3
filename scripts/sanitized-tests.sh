#!/usr/bin/env bash
# Builds the tests with AddressSanitizer and UndefinedBehaviorSanitizer into
# their own folder (default build-asan) and runs the whole suite there. The
# end-to-end tests run that build's runner, so it is checked too. After any
# report a process exits with 99, a status no test expects of the runner,
# and AddressSanitizer's reports also go to files that fail the run.
set -euo pipefail
cd "$(dirname "$0")/.."
dir=${1:-build-asan}
# -O1 and line tables only: half the build time of -O2 -g, and still exact
# source lines in every report.
bash scripts/build.sh "$dir" -DVF_SANITIZE=ON -DVF_BUILD_GUI=OFF -DCMAKE_BUILD_TYPE=Debug \
  "-DCMAKE_CXX_FLAGS_DEBUG=-O1 -g1"

reports=$(mktemp -d)
trap 'rm -rf "$reports"' EXIT
export ASAN_OPTIONS="log_path=$reports/asan:exitcode=99:detect_leaks=1"
export UBSAN_OPTIONS="print_stacktrace=1:halt_on_error=1:exitcode=99"
# The HEIC encoder that libvips reaches through libheif keeps a little memory
# of its own to the end of the process; a leak of this program is still told.
printf 'leak:libx265.so\n' >"$reports.lsan"
trap 'rm -rf "$reports" "$reports.lsan"' EXIT
export LSAN_OPTIONS="suppressions=$reports.lsan:print_suppressions=0"
status=0
(cd "$dir" && ctest --output-on-failure -j "$(nproc)") || status=1
if [ -n "$(ls -A "$reports")" ]; then
  echo "Sanitizer reports:"
  cat "$reports"/*
  status=1
fi
exit $status
