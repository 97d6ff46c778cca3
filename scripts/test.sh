#!/usr/bin/env bash
# Installs what is missing, builds, and runs every test.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/install-deps.sh
bash scripts/build.sh build
export QT_QPA_PLATFORM=offscreen
(cd build && ctest --output-on-failure -j "$(nproc)")
# The sample site, built by the runner, loaded page by page in Chromium, with
# axe-core and the Nu HTML checker from scripts/package.json (installed without
# their install scripts: vnu-jar's would fetch a Java of its own).
(cd scripts && npm ci --ignore-scripts --no-audit --no-fund --prefer-offline >/dev/null)
bash scripts/browser-check.sh build
# The suite again under AddressSanitizer and UndefinedBehaviorSanitizer.
bash scripts/sanitized-tests.sh build-asan
# Fuzzing of what people hand in: templates, list entries, what is typed into boxes, scripts.
bash scripts/fuzz.sh
