#!/usr/bin/env bash
# Installs what building, running and testing Vetrina Foto needs on Debian.
# Does nothing when everything is there already.
#
# Every program that a script of the project starts comes from a package
# named here, installed without its recommended packages; so does the one font
# that a picture step draws text with (DejaVu Sans Bold, fonts-dejavu-core).
#   build: cmake ninja-build g++ pkg-config, Qt (qt6-base-dev, libgl-dev),
#          libvips (libvips-dev), GoogleTest; clang and its sanitizer/fuzzer runtime for scripts/fuzz.sh
#   window: qt6-qpa-plugins (the X11 platform plugin), qt6-translations-l10n
#          (Qt's Italian texts in the file dialogs)
#   pictures and screenshots: imagemagick (convert, identify, import),
#          fonts-dejavu-core, xvfb + xauth (xvfb-run), x11-utils (xwininfo)
#   browser check: chromium, python3, default-jre-headless (java, for the Nu HTML
#          checker); nodejs and npm, which install axe-core and the checker from
#          scripts/package.json, when the machine has no npm of its own
#   benchmarks: libvips-tools (vipsthumbnail), butteraugli (bench/avif_quality.sh
#          sets the AVIF's distance from its picture against the JPEG's)
#   tests: libjxl-tools (cjxl, which makes a JPEG XL animation to derive)
#   metadata: libimage-exiftool-perl (exiftool, with which the tests tag
#          pictures and read what their published copies still carry)
#   Debian package (cpack -G DEB): dpkg-dev (dpkg-shlibdeps), file
set -euo pipefail
packages=(cmake ninja-build g++ pkg-config qt6-base-dev qt6-qpa-plugins libgl-dev libvips-dev
  libgtest-dev libgmock-dev qt6-translations-l10n clang libclang-rt-14-dev xvfb xauth x11-utils chromium
  imagemagick fonts-dejavu-core python3 file dpkg-dev libvips-tools libimage-exiftool-perl
  default-jre-headless butteraugli libjxl-tools)
missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
# A Node.js from elsewhere brings its own npm, which Debian's npm package would clash with.
command -v npm >/dev/null || missing+=(nodejs npm)
[ ${#missing[@]} -eq 0 ] && exit 0
echo "Installing: ${missing[*]}"
SUDO=""
[ "$(id -u)" -eq 0 ] || SUDO="sudo"
export DEBIAN_FRONTEND=noninteractive
$SUDO apt-get update -qq
$SUDO apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
