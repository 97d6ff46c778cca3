#!/usr/bin/env bash
# Installs what building, running and testing Vetrina Foto needs on Debian.
# Does nothing when everything is there already.
set -euo pipefail
packages=(cmake ninja-build g++ pkg-config qt6-base-dev libgl-dev libgtest-dev libgmock-dev
  clang libclang-rt-14-dev xvfb xauth chromium imagemagick python3 file)
missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
[ ${#missing[@]} -eq 0 ] && exit 0
echo "Installing: ${missing[*]}"
SUDO=""
[ "$(id -u)" -eq 0 ] || SUDO="sudo"
export DEBIAN_FRONTEND=noninteractive
$SUDO apt-get update -qq
$SUDO apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
