#!/usr/bin/env python3
"""Writes the nine picture pages of the sample template set,
templates/VETRINA-FOTO_DEFAULT/dir_0001/IMG_001.HTM ... IMG_009.HTM, from the
one page below: they differ only in their place's numbers and in where the
first and the last page lead.

    make-picture-pages.py            writes the pages
    make-picture-pages.py --check    says which pages differ from what it would
                                     write, and exits 1 if any does

Edit the page here and run this again; the browser check runs --check.
The pages are ASCII with CR LF line ends; the program rewrites in them the
picture names img_NNN.jpg (to each entry's extension) and, on the last page,
../dir_000s/menu.htm (to the next album or the index), each the first of its
kind on a line, so every picture name stands on a line of its own.
"""

import os
import sys

PLACES = 9
FOLDER = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "templates",
                      "VETRINA-FOTO_DEFAULT", "dir_0001")

PAGE = """\
<!DOCTYPE html>
<html lang="it">
<head>
<meta charset="utf-8">
<meta name="viewport" content="width=device-width, initial-scale=1">
<title data-vf="titolo">Foto {n}</title>
<style>
html{{color:#ece6dc;font:16px/1.5 system-ui,"Segoe UI",Roboto,"Helvetica Neue",Arial,"Liberation Sans",sans-serif}}
body{{margin:0;min-height:100vh;min-height:100dvh;display:flex;flex-direction:column;background:#17191e url(sfondo_2.gif)}}
.bar{{display:flex;align-items:center;gap:16px;padding:12px 20px}}
.title{{flex:1;min-width:0}}
.home{{color:#a89e92;font-size:12px;font-weight:600;letter-spacing:.14em;text-transform:uppercase;text-decoration:none}}
.home:hover{{color:#f3c78f}}
h1{{margin:2px 0 0;font:700 22px/1.2 Georgia,"P052","Palatino Linotype",serif;white-space:nowrap;overflow:hidden;text-overflow:ellipsis}}
.nav{{display:flex;gap:10px}}
.nav a{{display:block;width:44px;height:44px;border-radius:50%;overflow:hidden;box-shadow:0 2px 10px rgba(0,0,0,.45);transition:transform .15s ease}}
.nav a:hover{{transform:scale(1.06)}}
.nav a:focus-visible,.orig:focus-visible{{outline:3px solid #f3c78f;outline-offset:3px}}
.nav img{{display:block;width:100%;height:100%}}
main{{flex:1;display:flex;flex-direction:column;align-items:center;padding:4px 16px 12px}}
/* The picture's box is the picture in its own shape: as large as the file allows, within the window's width
   and its height less the bar and the lines under the picture, so that a wide window shows it all at once */
.photo{{position:relative;max-width:100%;margin-top:auto}}
picture{{display:contents}}
.photo img{{display:block;width:auto;height:auto;max-width:100%;max-height:calc(100vh - 136px);max-height:calc(100dvh - 136px);border-radius:6px;box-shadow:0 12px 40px rgba(0,0,0,.55);color:#a89e92}}
main:has(.didascalia:not(:empty)) .photo img{{max-height:calc(100dvh - 184px)}}
/* A phone held upright shows the picture across its whole width, whatever the file's own size; the page scrolls
   when a tall picture and its caption need it */
@media (max-width:600px) and (orientation:portrait){{
.bar{{padding:10px 12px}}
h1{{font-size:19px;white-space:normal}}
main{{padding:2px 8px 12px}}
.photo,.photo img{{width:100%}}
.photo img,main:has(.didascalia:not(:empty)) .photo img{{max-height:none}}
}}
.next{{position:absolute;inset:0;border-radius:6px}}
.didascalia{{max-width:40em;margin:12px 0 0;font-size:15px;line-height:1.45;text-align:center;overflow-wrap:anywhere}}
.meta{{display:flex;flex-wrap:wrap;justify-content:center;gap:2px 18px;margin:6px 0 auto;color:#a89e92;font-size:13px;line-height:20px;letter-spacing:.04em}}
.didascalia:empty,.meta time:empty{{display:none}}
.orig{{color:#a89e92;text-decoration:none}}
.orig:hover{{color:#f3c78f}}
/* The next place of the last album may hold no picture: its name ends in "." and its links are not shown */
.nav a[data-seguente$="."],.next[data-seguente$="."]{{display:none}}
</style>
</head>
<body>
<header class="bar">
<div class="title"><a class="home" href="../index.htm" data-vf="sito">Vetrina Foto</a>
<h1 data-vf="titolo">Foto {n}</h1></div>
<nav class="nav">
{previous}
<a href="menu.htm" title="Torna all&#39;album"><img src="puls_su3.jpg" alt="Torna all&#39;album" width="44" height="44" decoding="async"></a>
{next_button}
</nav>
</header>
<main>
<div class="photo">
<picture>
<source data-vf="avif" type="image/avif" srcset="mini/img_{nnn}.avif 480w, web/img_{nnn}.avif 1600w" sizes="(min-width:1232px) 1200px, calc(100vw - 32px)">
<source srcset="mini/img_{nnn}.jpg 480w,
web/img_{nnn}.jpg 1600w"
sizes="(min-width:1232px) 1200px, calc(100vw - 32px)">
<img data-vf="foto" src="web/img_{nnn}.jpg" alt="Foto {n}" width="1200" height="800" decoding="async">
</picture>
{next_layer}
</div>
<p class="didascalia" data-vf="didascalia"></p>
<p class="meta"><time data-vf="data" datetime="P0D"></time>
<a class="orig" href="img_{nnn}.jpg" download title="Scarica la foto originale">&#8595; Originale</a></p>
</main>
</body>
</html>
"""

BUTTON = ('<a href="{href}"{rel} title="{title}"{more}><img src="{picture}" alt="{title}" '
          'width="44" height="44" decoding="async"></a>')
# The layer over the picture leads on too, for a click or a tap on it; the keyboard and
# screen readers have the button of the bar.
LAYER = '<a class="next" href="{href}" rel="next" title="{title}"{more} tabindex="-1" aria-hidden="true"></a>'


def page(n):
    back = "Torna all&#39;album"
    if n == 1:
        previous = BUTTON.format(href="menu.htm", rel="", title=back, more="", picture="puls_sx3.jpg")
    else:
        previous = BUTTON.format(href="img_%03d.htm" % (n - 1), rel=' rel="prev"',
                                 title="Foto precedente", more="", picture="puls_sx3.jpg")
    if n == PLACES:
        # The program leads the last place on to the next album, or home from the last album.
        href, title, more = "../dir_000s/menu.htm", "Album successivo", ""
    else:
        href, title = "img_%03d.htm" % (n + 1), "Foto successiva"
        # The next place's picture name: the program ends it in "." when the place is empty.
        more = ' data-seguente="img_%03d.jpg"' % (n + 1)
    next_button = BUTTON.format(href=href, rel=' rel="next"', title=title, more=more,
                                picture="puls_dx3.jpg")
    next_layer = LAYER.format(href=href, title=title, more=more)
    text = PAGE.format(n=n, nnn="%03d" % n, previous=previous, next_button=next_button,
                       next_layer=next_layer)
    return text.replace("\n", "\r\n").encode("ascii")


def main(argv):
    check = argv == ["--check"]
    if argv and not check:
        print(__doc__.strip(), file=sys.stderr)
        return 2
    differ = []
    for n in range(1, PLACES + 1):
        path = os.path.join(FOLDER, "IMG_%03d.HTM" % n)
        wanted = page(n)
        if check:
            try:
                with open(path, "rb") as f:
                    if f.read() != wanted:
                        differ.append(path)
            except OSError:
                differ.append(path)
        else:
            with open(path, "wb") as f:
                f.write(wanted)
    for path in differ:
        print("make-picture-pages: %s is not what this script writes; run it again"
              % os.path.relpath(path), file=sys.stderr)
    return 1 if differ else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
