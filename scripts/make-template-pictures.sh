#!/usr/bin/env bash
# Draws the thirteen pictures of the sample template set into templates/.
# Needs ImageMagick's `convert` (Debian package imagemagick).
# The pictures are committed; run this again only after changing a drawing.
#
#   scripts/make-template-pictures.sh [OUTDIR]     (default: templates/)
#
# Colours shared with the page templates:
#   paper #f6f1e9, ink #2b2622, terracotta #c4552f / #9c3f20, night #17191e
set -euo pipefail
cd "$(dirname "$0")/.."
out=${1:-templates}
mkdir -p "$out"

if ! convert -version 2>/dev/null | grep -q ImageMagick; then
  echo "make-template-pictures: ImageMagick 'convert' is needed (apt-get install imagemagick)" >&2
  exit 1
fi

# Same bytes on every run: no metadata, no timestamps.
jpeg_opts=(-strip -sampling-factor 4:2:0 -interlace none)

# --- Buttons of the album pages: left, up, right --------------------------
# A terracotta square with a white chevron; the pages round it into a circle.
arrow() { # NAME POINTS
  convert -size 96x96 gradient:'#d2683f-#a9452a' \
    -fill none -stroke white -strokewidth 9 -draw "stroke-linecap round stroke-linejoin round polyline $2" \
    "${jpeg_opts[@]}" -quality 88 "$out/$1"
}
arrow puls_sx3.jpg "56,28 36,48 56,68"
arrow puls_dx3.jpg "40,28 60,48 40,68"
arrow puls_su3.jpg "28,56 48,36 68,56"

# --- Button of the index page, 130 x 30 ------------------------------------
convert -size 130x30 gradient:'#cf6440-#a8462a' \
  -fill '#ffffff30' -draw 'rectangle 0,0 129,0' \
  -fill '#00000030' -draw 'rectangle 0,29 129,29' \
  "${jpeg_opts[@]}" -quality 90 "$out/pulsante.jpg"

# --- Tiled backgrounds of the album pages ----------------------------------
# sfondo_1.gif: light paper with a faint diagonal weave (menu page).
convert -size 64x64 xc:'#f6f1e9' \
  -stroke '#e8dfd1' -strokewidth 1 \
  -draw 'line 0,0 63,63' -draw 'line 32,0 63,31' -draw 'line 0,32 31,63' \
  -stroke '#ece4d8' -draw 'line 63,0 0,63' \
  +antialias -colors 4 "$out/sfondo_1.gif"
# sfondo_2.gif: night grey with a fine dot grid (picture page).
convert -size 24x24 xc:'#17191e' \
  -fill '#1e2128' -draw 'rectangle 0,0 1,1' -draw 'rectangle 12,12 13,13' \
  +antialias -colors 2 "$out/sfondo_2.gif"

# --- Backgrounds of the index page -----------------------------------------
# A warm paper wash with two soft light blots; large for wide screens,
# narrow and small for phones.
wash() { # NAME WxH blot1 blot2
  convert -size "$2" gradient:'#f8f3ea-#eadfce' \
    \( -size "$2" xc:none -fill '#ffffffb0' -draw "circle $3" \
       -fill '#dcb49c38' -draw "circle $4" -blur 0x60 \) \
    -composite "${jpeg_opts[@]}" -quality 70 "$out/$1"
}
wash sfondo1g.jpg 1600x1000 "300,220 520,220" "1350,820 1600,820"
wash sfondo1p.jpg 600x1000 "120,160 300,160" "520,860 640,860"

# --- Pictures of the index page: slide, film, music, page, camera ------------
# Cards of 260 x 180, shown at half size on the index page.
card() { # NAME then drawing arguments
  local name=$1; shift
  convert -size 260x180 xc:'#f1e9dd' "$@" "${jpeg_opts[@]}" -quality 84 "$out/$name"
}

# A framed slide showing hills under a sun.
card diaposit.jpg \
  -fill '#fbf8f3' -stroke '#dccfbc' -strokewidth 2 -draw 'roundrectangle 48,14 212,166 10,10' \
  \( -size 124x96 gradient:'#f3c78f-#e9886a' \
     -fill '#fff4d6' -stroke none -draw 'circle 86,30 86,44' \
     -fill '#b8573a' -draw 'polygon 0,96 0,62 30,44 58,66 84,48 124,74 124,96' \
     -fill '#7e3b2a' -draw 'polygon 0,96 0,80 40,64 76,84 104,72 124,82 124,96' \) \
  -geometry +68+42 -composite \
  -fill none -stroke '#bfae97' -strokewidth 1 -draw 'rectangle 67,41 192,138'

# A strip of film with three frames.
card film-1a.jpg \
  -fill '#2b2622' -stroke none -draw 'roundrectangle 30,34 230,146 8,8' \
  -fill '#f1e9dd' \
  -draw 'rectangle 40,42 50,50' -draw 'rectangle 64,42 74,50' -draw 'rectangle 88,42 98,50' \
  -draw 'rectangle 112,42 122,50' -draw 'rectangle 136,42 146,50' -draw 'rectangle 160,42 170,50' \
  -draw 'rectangle 184,42 194,50' -draw 'rectangle 208,42 218,50' \
  -draw 'rectangle 40,130 50,138' -draw 'rectangle 64,130 74,138' -draw 'rectangle 88,130 98,138' \
  -draw 'rectangle 112,130 122,138' -draw 'rectangle 136,130 146,138' -draw 'rectangle 160,130 170,138' \
  -draw 'rectangle 184,130 194,138' -draw 'rectangle 208,130 218,138' \
  -fill '#e9886a' -draw 'rectangle 42,60 98,120' \
  -fill '#f3c78f' -draw 'rectangle 102,60 158,120' \
  -fill '#c4552f' -draw 'rectangle 162,60 218,120'

# Two joined notes.
card music-1a.jpg \
  -fill '#c4552f' -stroke none \
  -draw 'ellipse 100,128 20,15 0,360' -draw 'ellipse 172,114 20,15 0,360' \
  -draw 'rectangle 114,44 122,128' -draw 'rectangle 186,30 194,114' \
  -draw 'polygon 114,44 194,30 194,50 114,64'

# A page with lines of text and a folded corner.
card htm-1a.jpg \
  -fill white -stroke '#d8cbb8' -strokewidth 2 -draw 'polygon 88,20 154,20 180,46 180,160 88,160' \
  -fill '#efe6d8' -draw 'polygon 154,20 154,46 180,46' \
  -stroke '#c4552f' -strokewidth 5 -draw 'line 102,66 164,66' \
  -stroke '#bfae97' -strokewidth 4 \
  -draw 'line 102,86 164,86' -draw 'line 102,102 164,102' -draw 'line 102,118 150,118' \
  -draw 'line 102,134 158,134'

# The camera of the site's heading, square.
convert -size 128x128 gradient:'#d2683f-#a9452a' \
  -fill white -stroke none -draw 'roundrectangle 22,42 106,100 10,10' -draw 'rectangle 46,32 76,44' \
  -fill '#a9452a' -draw 'circle 64,71 64,91' \
  -fill white -draw 'circle 64,71 64,83' \
  -fill '#f3c78f' -draw 'circle 92,52 92,56' \
  "${jpeg_opts[@]}" -quality 86 "$out/foto-1a.jpg"

for f in puls_sx3.jpg puls_su3.jpg puls_dx3.jpg sfondo_1.gif sfondo_2.gif pulsante.jpg \
         diaposit.jpg film-1a.jpg foto-1a.jpg htm-1a.jpg music-1a.jpg sfondo1g.jpg sfondo1p.jpg; do
  size=$(stat -c %s "$out/$f")
  if [ "$size" -ge 30720 ]; then
    echo "make-template-pictures: $f is $size bytes, over 30 KB" >&2
    exit 1
  fi
  printf '%-14s %6d bytes  %s\n' "$f" "$size" "$(identify -format '%wx%h %m' "$out/$f[0]")"
done
