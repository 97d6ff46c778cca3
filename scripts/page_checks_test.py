#!/usr/bin/env python3
"""Tests of page_checks.py over made-up facts and small sites, without a browser or a build."""

import glob
import os
import shutil
import sys
import tempfile
import unittest

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
import page_checks as pc  # noqa: E402
import sample_photos  # noqa: E402

REPO = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..")


def seen(places=(), page=(1280, 700), nav=(1108, 16, 152, 44), view=(1280, 800), cards=()):
    return {"places": list(places), "page": list(page), "nav": nav and list(nav),
            "view": list(view), "cards": list(cards)}


def picture(box, natural, shown=True, **attrs):
    return {"vf": "foto", "tag": "img", "text": "", "shown": shown, "box": list(box),
            "natural": list(natural), "attrs": attrs}


def place(vf, text, shown, tag="p", **attrs):
    return {"vf": vf, "tag": tag, "text": text, "shown": shown, "box": [0, 0, 0, 0],
            "natural": None, "attrs": attrs}


def jpeg(width, height):
    """The first bytes of a JPEG file: SOI, an APP0 segment, then a baseline frame header."""
    app0 = b"\xff\xe0\x00\x10JFIF\x00\x01\x01\x00\x00\x01\x00\x01\x00\x00"
    sof = b"\xff\xc0\x00\x11\x08" + height.to_bytes(2, "big") + width.to_bytes(2, "big") + b"\x03"
    return b"\xff\xd8" + app0 + sof + b"\x01\x22\x00\x02\x11\x01\x03\x11\x01"


class PictureLayout(unittest.TestCase):
    def test_verdicts_on_a_phone_and_a_wide_window(self):
        portrait = (1067, 1600)
        cases = [  # viewport, what the page showed, the failures' starts
            (pc.PHONE, seen([picture((8, 140, 374, 561), portrait)]), []),
            # A portrait fitted into a landscape box: too small, and the box is no picture.
            (pc.PHONE, seen([picture((16, 300, 358, 239), (238, 358))]),
             ["the picture's box is 358x239", "the picture is painted 159x239"]),
            (pc.PHONE, seen([picture((45, 140, 300, 450), portrait)]), ["the picture is painted"]),
            # Tall enough counts as much as wide enough.
            (pc.PHONE, seen([picture((45, 140, 296, 592), (1000, 2000))]), []),
            (pc.PHONE, seen([picture((25, 300, 340, 227), (1600, 1067))]),
             ["a landscape picture painted 340 wide"]),
            (pc.WIDE, seen([picture((419, 89, 442, 664), portrait)]), []),
            (pc.WIDE, seen([picture((419, 89, 442, 664), portrait)], page=(1280, 801)),
             ["the page is 1280x801, it scrolls"]),
            (pc.WIDE, seen([picture((419, 89, 442, 664), portrait)], page=(1300, 700)),
             ["the page is 1300x700"]),
            (pc.WIDE, seen([picture((419, 89, 442, 664), portrait)], nav=(1108, 790, 152, 44)),
             ["the navigation is not on screen"]),
            (pc.WIDE, seen([picture((419, 89, 442, 664), portrait)], nav=None),
             ["the navigation is not on screen"]),
            (pc.WIDE, seen([picture((300, 140, 700, 700), (1000, 1000))]),
             ["the picture ends below the window, at 840"]),
            (pc.WIDE, seen([picture((0, 0, 10, 10), portrait, shown=False)]),
             ["not one picture shown, but 0"]),
        ]
        for viewport, facts, wanted in cases:
            with self.subTest(viewport=viewport, box=facts["places"][0]["box"]):
                failures = pc.picture_layout_failures("dir_0001/img_002.htm", facts, viewport)
                self.assertEqual(len(failures), len(wanted), failures)
                for failure, start in zip(failures, wanted):
                    self.assertIn(start, failure)

    def test_a_painted_size_is_the_picture_fitted_whole_into_its_box(self):
        for box, natural, size in [((358, 239), (238, 358), (159, 239)),
                                   ((374, 561), (1067, 1600), (374, 561)),
                                   ((400, 100), (100, 100), (100, 100))]:
            self.assertEqual(tuple(round(n) for n in pc.painted(picture((0, 0) + box, natural))),
                             size)


class EmptyPlaces(unittest.TestCase):
    def test_a_place_is_shown_exactly_when_it_holds_words(self):
        cases = [  # the place, failures
            (place("didascalia", "", False), 0),
            (place("didascalia", "Onde sul molo", True), 0),
            (place("didascalia", " \n", True), 1),
            (place("data", "14 luglio 2025", False, tag="time"), 1),
            (place("album", "", True), 1),
            # A title and a style are never shown, words or not.
            (place("album", "Casa \u00b7 Mare", False, tag="title"), 0),
            (place("album", 'td:has(a[href="dir_0001\\\\menu.htm"]){--vf-album:"Casa"}', False,
                   tag="style"), 0),
            (place("titolo", "", True, tag="h1"), 0),  # a heading keeps the template's words
        ]
        for p, failures in cases:
            with self.subTest(place=p):
                self.assertEqual(len(pc.empty_places_failures("p.htm", seen([p]))), failures)


class Markup(unittest.TestCase):
    def setUp(self):
        self.site = tempfile.mkdtemp(prefix="vf-markup-test-")
        self.addCleanup(shutil.rmtree, self.site)

    def write(self, name, data):
        path = os.path.join(self.site, name)
        os.makedirs(os.path.dirname(path), exist_ok=True)
        with open(path, "wb") as f:
            f.write(data)

    def test_words_that_stay_text_pass_and_live_markup_fails(self):
        told = sample_photos.HOSTILE.replace("&", "&amp;").replace("<", "&lt;").replace(
            ">", "&gt;").replace('"', "&quot;")
        self.write("dir_0001/img_006.htm", ('<title>%s</title><img src="a.jpg" alt="%s">'
                                            '<p data-vf="didascalia">%s</p>' % (told, told, told)).encode())
        self.write("dir_0001/img_006.jpg", b"\xff\xd8 a picture with no words")
        self.assertEqual(pc.markup_failures(self.site), [])
        self.write("dir_0001/img_001.htm", b'<p><img src=x onerror=alert(1)></p>')
        self.write("dir_0001/img_002.HTM", b"<p><SCRIPT>alert(1)</SCRIPT></p>")
        self.write("dir_0001/img_003.htm", b'<body onload="go()">')
        self.write("dir_0001/web/img_001.jpg", b"\xff\xd8 ... onerror=alert(1)")
        self.write(".derivate", b"<script")
        self.assertCountEqual(pc.markup_failures(self.site), [
            "dir_0001/img_001.htm holds onerror on <img>",
            "dir_0001/img_002.HTM holds <script>", "dir_0001/img_002.HTM holds <script",
            "dir_0001/img_003.htm holds onload on <body>",
            "dir_0001/web/img_001.jpg holds onerror", ".derivate holds <script"])


class Axe(unittest.TestCase):
    def test_only_the_programs_missing_language_is_forgiven(self):
        violations = [
            {"id": "html-has-lang", "impact": "serious", "help": "lang", "nodes": ["html"]},
            {"id": "image-alt", "impact": "critical", "help": "alt", "nodes": ["img", "img.b"]},
        ]
        self.assertEqual(pc.axe_failures("index.htm", violations),
                         ["index.htm: axe image-alt (critical): alt at img, img.b"])


class NuChecker(unittest.TestCase):
    # The lines the program writes into the index page, as generator/scheletro.cc and
    # generator/cella.cc write them, in both cases of names.
    PROGRAM = [
        "<HTML>", '<table border="0" cellpadding="0" cellspacing="10" width="130">', "<tr>", " ",
        " </tr>", "</tr>", "</table>", "</center></div>", '<td valign="Top">',
        '  <table border="0" cellpadding="0" cellspacing="0" width=" 130">', "  <tr>",
        '   <td background="pulsante.jpg" width="130" height="30">',
        '   <td background="PULSANTE.JPG" width="130" height="30">',
        '    <table border="0" cellpadding="0" cellspacing="0" width="130" height="30">',
        "     <tr>", '      <td><p align="center">', '        <A HREF="dir_0001\\menu.htm">',
        '        <A HREF="DIR_0002\\MENU.HTM">', "SCELTA  1</A>", "gita &amp; mare.mp3</A>",
        "      </td>", "     </tr>", "    </table>", "   </td>", "  </tr>", "</table></td>",
        '<H2><a href="index.htm" target="_top"><p align="center"><font color="#FFFF80"><strong>'
        "<em>Ritorna alla pagina iniziale</strong></em></font></p></a></H2>",
    ]

    def test_the_programs_lines_match_and_no_template_line_does(self):
        for line in self.PROGRAM:
            self.assertIsNotNone(pc.PROGRAM_LINE.fullmatch(line), line)
        files = glob.glob(os.path.join(REPO, "templates", "*.HTM")) + glob.glob(
            os.path.join(REPO, "templates", "VETRINA-FOTO_DEFAULT", "dir_0001", "*.HTM"))
        self.assertGreater(len(files), 10)
        for path in files:
            with open(path, "rb") as f:
                lines = f.read().decode("ascii").split("\r\n")[:-1]
            for line in lines:
                self.assertIsNone(pc.PROGRAM_LINE.fullmatch(line), "%s: %s" % (path, line))

    def test_errors_on_the_programs_lines_are_left_out(self):
        site = tempfile.mkdtemp(prefix="vf-nu-test-")
        self.addCleanup(shutil.rmtree, site)
        page = os.path.join(site, "index.htm")
        with open(page, "wb") as f:
            f.write(b"<HTML>\r\n<head>\r\n<center>\r\n</center></div>\r\n")
        messages = [(page, 1, "doctype"), (page, 3, "center is obsolete"), (page, 4, "stray"),
                    (page, 9, "past the end")]
        self.assertEqual(pc.nu_failures(site, messages),
                         ["index.htm:3: center is obsolete  [<center>]",
                          "index.htm:9: past the end  []"])


class Words(unittest.TestCase):
    """check_words over the facts of one picture page, the first of album 1."""

    def setUp(self):
        self.site = tempfile.mkdtemp(prefix="vf-words-test-")
        self.addCleanup(shutil.rmtree, self.site)
        os.makedirs(os.path.join(self.site, "dir_0001", "web"))
        with open(os.path.join(self.site, "dir_0001", "web", "img_001.jpg"), "wb") as f:
            f.write(jpeg(1600, 1067))
        told = "La casa al mattino"
        self.facts = {"dir_0001/img_001.htm": seen([
            place("titolo", told, False, tag="title"), place("titolo", told, True, tag="h1"),
            place("sito", sample_photos.SITE_TITLE, True, tag="a"),
            dict(picture((0, 0, 900, 600), (1600, 1067)), attrs={
                "src": "web/img_001.jpg", "alt": told, "width": "1600", "height": "1067"}),
            place("didascalia", told, True),
            place("data", "14 luglio 2025", True, tag="time", datetime="2025-07-14"),
        ])}

    def test_the_words_the_pass_is_to_write_pass(self):
        self.assertEqual(pc.check_words(self.facts, 9, self.site), [])

    def test_each_wrong_word_fails(self):
        cases = [  # index of the place, what it gets wrong, the failure's part
            (3, {"attrs": {"src": "web/img_001.jpg", "alt": "Foto 1", "width": "1600",
                           "height": "1067"}}, "the picture's alt"),
            (3, {"attrs": {"src": "web/img_001.jpg", "alt": "La casa al mattino",
                           "width": "1200", "height": "800"}}, "the picture's size"),
            (4, {"shown": False}, "the caption"),
            (5, {"text": "14/07/2025"}, "the date"),
            (5, {"attrs": {"datetime": "P0D"}}, "the date"),
            (1, {"text": "Foto 1"}, "<h1>"),
            (2, {"text": "Vetrina Foto"}, "the link home"),
        ]
        for at, wrong, part in cases:
            with self.subTest(part=part, wrong=wrong):
                facts = {p: dict(f, places=list(f["places"])) for p, f in self.facts.items()}
                places = facts["dir_0001/img_001.htm"]["places"]
                places[at] = dict(places[at], **wrong)
                failures = pc.check_words(facts, 9, self.site)
                self.assertEqual(len(failures), 1, failures)
                self.assertIn(part, failures[0])


class JpegSize(unittest.TestCase):
    def test_the_frame_header_gives_the_size(self):
        folder = tempfile.mkdtemp(prefix="vf-jpeg-test-")
        self.addCleanup(shutil.rmtree, folder)
        cases = [(jpeg(1067, 1600), (1067, 1600)),
                 (jpeg(480, 320).replace(b"\xff\xc0", b"\xff\xc2"), (480, 320)),  # progressive
                 (b"\xff\xd8\xff\xe0\x00\x04ab", None), (b"GIF89a", None)]
        for data, size in cases:
            path = os.path.join(folder, "a.jpg")
            with open(path, "wb") as f:
                f.write(data)
            self.assertEqual(pc.jpeg_size(path), size)


if __name__ == "__main__":
    unittest.main()
