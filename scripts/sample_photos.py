"""The photographs of the browser check's sample site: 25 JPEG files in four
named folders of one folder, "Vacanze 2025", some of them telling what they
show and when.

P02 is stored lying on its side, 1600 x 1067 with EXIF orientation 6, so that
upright, as the web copies are written, it is a portrait of 1067 x 1600.
P01 is large, 2400 x 1600, so that its web copy is as large as web copies
get. Every fourth picture is a small upright one of 600 x 800; the others are
1200 x 800. Descriptions come from the EXIF ImageDescription, the XMP
dc:description or a text file of the same name beside the photo (P03.txt),
and one of them is markup that must stay text on every page.
"""

import collections
import os
import subprocess

SITE_TITLE = "Vacanze 2025"
COUNT = 25
PORTRAIT = 2  # the photo that is a portrait once upright
HOSTILE = '<script>alert(1)</script>"><img src=x onerror=alert(1)>'

# The numbers drawn on the pictures use this font file by its path (Debian package
# fonts-dejavu-core, installed by scripts/install-deps.sh): ImageMagick's own default
# font is only there when its recommended font packages are.
FONT = "/usr/share/fonts/truetype/dejavu/DejaVuSans-Bold.ttf"

# source: where the description stands: "exif", "xmp" or "txt"; taken: EXIF date and time.
Photo = collections.namedtuple("Photo", "number folder description source taken")

_TOLD = {  # number: (description, source, taken)
    1: ("La casa al mattino", "exif", "2025:07:14 08:30:00"),
    2: ("Ritratto sulla scala", "exif", "2025:07:14 18:05:00"),
    3: ("Caff\u00e8 in terrazza", "txt", "2025:07:15 09:10:00"),
    5: ("Il giardino di citt\u00e0 dopo la pioggia", "xmp", "2025:07:15 17:00:00"),
    6: (HOSTILE, "exif", "2025:07:16 10:00:00"),
    8: ("Onde sul molo", "exif", "2025:07:16 19:30:00"),
}


def folder_of(number):
    if number <= 4:
        return "Casa"
    if number <= 7:
        return "Giardino di Citt\u00e0"
    if number <= 13:
        return "Mare"
    return "Montagna"


PHOTOS = [Photo(n, folder_of(n), *_TOLD.get(n, (None, None, None))) for n in range(1, COUNT + 1)]


def upright_size(number):
    """The photo's size as it is seen, upright."""
    return {1: (2400, 1600), PORTRAIT: (1067, 1600)}.get(
        number, (600, 800) if number % 4 == 0 else (1200, 800))


def file_name(photo):
    return "P%02d.JPG" % photo.number


def windows_path(photo):
    """The photo as the list holds it, on drive C."""
    return "C:\\%s\\%s\\%s" % (SITE_TITLE, photo.folder, file_name(photo))


def _run(cmd):
    r = subprocess.run(cmd, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)
    if r.returncode != 0:
        raise SystemExit("%s failed: %s" % (cmd[0], r.stderr.strip()))


def make_photos(drive_c):
    """Writes the photos under drive_c/Vacanze 2025 and returns that folder."""
    top = os.path.join(drive_c, SITE_TITLE)
    commands = []
    for photo in PHOTOS:
        folder = os.path.join(top, photo.folder)
        os.makedirs(folder, exist_ok=True)
        path = os.path.join(folder, file_name(photo))
        n = photo.number
        upright = "%dx%d" % upright_size(n)
        hue = (n * 47) % 360
        _run(["convert", "-size", upright,
              "gradient:hsl(%d,55%%,62%%)-hsl(%d,50%%,28%%)" % (hue, (hue + 40) % 360),
              "-gravity", "center", "-font", FONT, "-pointsize", "220", "-fill", "white",
              "-annotate", "+0+0", "%02d" % n]
             + (["-rotate", "-90"] if n == PORTRAIT else []) + ["-quality", "60", path])
        told = []
        if n == PORTRAIT:
            told.append("-Orientation=6")
        if photo.taken:
            told.append("-DateTimeOriginal=" + photo.taken)
        if photo.source == "exif":
            told.append("-ImageDescription=" + photo.description)
        elif photo.source == "xmp":
            told.append("-XMP-dc:Description=" + photo.description)
        elif photo.source == "txt":
            with open(os.path.splitext(path)[0] + ".txt", "w", encoding="utf-8") as f:
                f.write(photo.description + "\n")
        if told:
            commands.append(["-overwrite_original", "-n"] + told + [path])
    # One exiftool for all the photos, a command each: its start is what takes time.
    args = os.path.join(drive_c, "exiftool-args.txt")
    with open(args, "w", encoding="utf-8") as f:
        f.write("\n".join("\n-execute\n".join("\n".join(c) for c in commands).split("\n")) + "\n")
    _run(["exiftool", "-q", "-@", args])
    os.remove(args)
    return top
