#!/usr/bin/env bash
# Installs what is missing, builds, and starts Vetrina Foto.
#
# With a display the window opens. Without one ($DISPLAY and
# $WAYLAND_DISPLAY both unset) the same logic builds a demo site through the
# headless runner, from a few sample pictures made here, and prints where
# its index page is.
set -euo pipefail
cd "$(dirname "$0")/.."
root=$(pwd)

bash scripts/install-deps.sh
bash scripts/build.sh build

if [ -n "${DISPLAY:-}" ] || [ -n "${WAYLAND_DISPLAY:-}" ]; then
  exec build/bin/vetrina-foto
fi

echo "No display (neither \$DISPLAY nor \$WAYLAND_DISPLAY is set): the window cannot open."
echo "Building a demo site with the headless runner build/bin/vetrina-foto-script instead."

demo="$root/build/demo"
rm -rf "$demo"
mkdir -p "$demo/foto/mare" "$demo/foto/monti" "$demo/sito"

# Six sample pictures in two folders: drawn with ImageMagick when it is
# there, else taken from the pictures of the template set.
if convert -version 2>/dev/null | grep -q ImageMagick; then
  picture() { # FILE FROM TO
    convert -size 640x480 gradient:"$2-$3" -fill '#ffffff90' -draw 'circle 460,150 460,200' \
      -fill '#00000040' -draw 'polygon 0,480 0,330 180,250 360,340 520,280 640,330 640,480' \
      -quality 85 "$1"
  }
  picture "$demo/foto/mare/spiaggia.jpg" '#8ecae6' '#219ebc'
  picture "$demo/foto/mare/scogli.jpg" '#a8dadc' '#1d3557'
  picture "$demo/foto/mare/tramonto.jpg" '#ffb703' '#fb8500'
  picture "$demo/foto/monti/vetta.jpg" '#e9f5db' '#718355'
  picture "$demo/foto/monti/lago.jpg" '#caf0f8' '#0077b6'
  picture "$demo/foto/monti/bosco.jpg" '#b7e4c7' '#2d6a4f'
else
  i=0
  for f in diaposit.jpg film-1a.jpg foto-1a.jpg htm-1a.jpg music-1a.jpg sfondo1g.jpg; do
    if [ $i -lt 3 ]; then sub=mare; else sub=monti; fi
    cp "templates/$f" "$demo/foto/$sub/foto_$i.jpg"
    i=$((i + 1))
  done
fi

# Drive C: is the demo folder, P: the program folder with the template set.
cat >"$demo/demo.vfs" <<SCRIPT
drive C $demo
drive P $root/build/bin
program P:\\
start
set txtPATH_RICERCA C:\\foto\\
click cmdCONFERMA
print txtNUM_FILE.Text
set txtNOME_FILE_HTM C:\\sito\\index.htm
click Command1
SCRIPT

build/bin/vetrina-foto-script "$demo/demo.vfs"
if [ ! -f "$demo/sito/index.htm" ]; then
  echo "The demo site was not built: no $demo/sito/index.htm" >&2
  exit 1
fi
echo
echo "Demo site: $demo/sito/index.htm"
