#!/usr/bin/env python3
"""Tests of the site checker of browser_check.py, without a browser or a build."""

import os
import shutil
import sys
import tempfile
import unittest

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
import browser_check as bc  # noqa: E402


class DeadReferences(unittest.TestCase):
    def test_albums_of_a_list(self):
        self.assertEqual(bc.album_sizes(25, 9), [9, 9, 7])
        self.assertEqual(bc.album_sizes(18, 9), [9, 9])
        self.assertEqual(bc.album_sizes(0, 9), [])

    def test_only_places_past_the_end_of_a_short_album_are_dead(self):
        sizes = [9, 9, 7]
        for path in ["dir_0003/img_008.jpg", "dir_0003/img_009.htm", "dir_0003/img_008.",
                     "dir_0003/mini/img_009."]:
            self.assertTrue(bc.expected_dead(path, sizes, 9), path)
        for path in ["dir_0003/img_007.jpg", "dir_0002/img_009.jpg", "dir_0004/img_001.jpg",
                     "dir_0003/img_010.jpg", "dir_0003/menu.htm", "img_008.jpg",
                     "dir_0003/web/img_007.jpg", "dir_0003/a/b/img_008.jpg"]:
            self.assertFalse(bc.expected_dead(path, sizes, 9), path)


class References(unittest.TestCase):
    def test_resolve_as_a_browser_does(self):
        self.assertEqual(bc.resolve("index.htm", "dir_0001\\menu.htm"), "dir_0001/menu.htm")
        self.assertEqual(bc.resolve("dir_0002/menu.htm", "../dir_0001/menu.htm"), "dir_0001/menu.htm")
        self.assertEqual(bc.resolve("dir_0001/img_001.htm", "img_002.htm#top"), "dir_0001/img_002.htm")
        self.assertEqual(bc.resolve("dir_0001/img_001.htm", "img%20a.jpg?x=1"), "dir_0001/img a.jpg")
        self.assertEqual(bc.resolve("dir_0001/menu.htm", "/sfondo_1.gif"), "sfondo_1.gif")
        self.assertEqual(bc.resolve("index.htm", "../../x.htm"), "x.htm")
        self.assertEqual(bc.resolve("dir_0003/menu.htm", "img_008."), "dir_0003/img_008.")

    def test_references_to_nothing_and_outside(self):
        for ref in ["#", "#top", "", "mailto:a@b.c", "data:image/gif;base64,R0lG"]:
            self.assertIsNone(bc.resolve("index.htm", ref), ref)
        self.assertEqual(bc.resolve("index.htm", "http://example.org/a.jpg"), "EXTERNAL")
        self.assertEqual(bc.resolve("index.htm", "//example.org/a.jpg"), "EXTERNAL")

    def test_collects_links_pictures_and_style_urls(self):
        page = """<html><head><style>
            body{background:url(sfondo1g.jpg)} td::before{content:image-set(url("a b.jpg") 2x)}
            </style></head><body style="x:url('c.gif')">
            <p>url(not-a-reference.jpg)</p>
            <a href="dir_0001\\menu.htm">x</a><img src="img_001.jpg">
            <img src="web/img_002.png" srcset="mini/img_002.png 480w,
            web/img_002.png 1600w">
            <td background="pulsante.jpg"></td><link rel="stylesheet" href="s.css"></body></html>"""
        refs = bc.page_refs(page)
        self.assertCountEqual(refs, [
            ("picture", "sfondo1g.jpg"), ("picture", "a b.jpg"), ("picture", "c.gif"),
            ("link", "dir_0001\\menu.htm"), ("picture", "img_001.jpg"),
            ("picture", "web/img_002.png"), ("picture", "mini/img_002.png"),
            ("picture", "web/img_002.png"), ("picture", "pulsante.jpg"), ("link", "s.css")])

    def test_failed_requests_of_the_server_log(self):
        log = ('127.0.0.1 - - [01/Jan/2025 10:00:00] "GET /index.htm HTTP/1.1" 200 -\n'
               '127.0.0.1 - - [01/Jan/2025 10:00:00] code 404, message File not found\n'
               '127.0.0.1 - - [01/Jan/2025 10:00:00] "GET /dir_0003/img_008. HTTP/1.1" 404 -\n'
               '127.0.0.1 - - [01/Jan/2025 10:00:00] "GET /a%20b.jpg?x HTTP/1.1" 404 -\n'
               '127.0.0.1 - - [01/Jan/2025 10:00:00] "GET /x.gif HTTP/1.1" 304 -\n')
        self.assertEqual(bc.failed_requests(log), [("dir_0003/img_008.", 404), ("a b.jpg", 404)])


class SiteCheck(unittest.TestCase):
    """check_site over a hand-made site of one album of 2 pictures, album size 3,
    whose pages hide what leads to the third place."""

    PLACE_3_TILE = '<a href="img_003.htm"><img src="img_003."></a>'
    PLACE_3_NEXT = '<a href="img_003.htm">n</a>'

    def setUp(self):
        self.site = tempfile.mkdtemp(prefix="vf-check-test-")
        self.addCleanup(shutil.rmtree, self.site)
        self.pages = {
            "index.htm": '<body><a href="dir_0001\\menu.htm">SCELTA  1</a>'
                         '<td background="pulsante.jpg"></td></body>',
            "dir_0001/menu.htm": '<body><a href="../index.htm">i</a>'
                                 '<a href="img_001.htm"><img src="img_001.jpg"></a>'
                                 '<a href="img_002.htm"><img src="img_002.jpg"></a>'
                                 + self.PLACE_3_TILE + '</body>',
            "dir_0001/img_001.htm": '<body><a href="img_002.htm">n</a><img src="img_001.jpg"></body>',
            "dir_0001/img_002.htm": '<body>' + self.PLACE_3_NEXT + '<img src="img_002.jpg">'
                                    '<a href="menu.htm">m</a></body>',
        }
        self.hidden = {"dir_0001/menu.htm": [self.PLACE_3_TILE],
                       "dir_0001/img_002.htm": [self.PLACE_3_NEXT]}
        files = bc.expected_files([2])
        for path in files:
            full = os.path.join(self.site, path)
            os.makedirs(os.path.dirname(full), exist_ok=True)
            with open(full, "w") as f:
                f.write(self.pages.get(path, ""))

    def check(self, pages=None, hidden=None):
        pages = pages or self.pages
        hidden = self.hidden if hidden is None else hidden
        shown = {p: None if dom is None else bc.Rendered(dom, hidden.get(p, []))
                 for p, dom in pages.items()}
        return bc.check_site(self.site, shown, [2], 3)

    def test_a_good_site_passes_with_its_hidden_places_listed(self):
        passed, failures, hidden = self.check()
        self.assertEqual(failures, [])
        self.assertEqual(len(hidden), 3)  # img_003.htm twice, img_003. once
        self.assertGreater(passed, 20)

    def test_what_a_page_hides_or_shows_wrongly_fails(self):
        tile_2 = '<a href="img_002.htm"><img src="img_002.jpg"></a>'
        cases = [  # what the pages hide, a failure it must give
            ({"dir_0001/menu.htm": [self.PLACE_3_TILE]},
             "dir_0001/img_002.htm: link img_003.htm -> dir_0001/img_003.htm does not exist"),
            ({}, "dir_0001/menu.htm: picture img_003. -> dir_0001/img_003. does not exist"),
            (dict(self.hidden, **{"dir_0001/menu.htm": [self.PLACE_3_TILE, tile_2]}),
             'dir_0001/menu.htm: hidden, yet no place past the end: <a href="img_002.htm">'),
        ]
        for hidden, failure in cases:
            _, failures, _ = self.check(hidden=hidden)
            self.assertIn(failure, failures)

    def test_an_empty_place_may_be_hidden_and_nothing_else(self):
        cases = [  # a hidden element beside the places past the end, its failures
            ('<p class="didascalia" data-vf="didascalia"></p>', []),
            ('<time data-vf="data" datetime="P0D">\n</time>', []),
            ('<p class="didascalia" data-vf="didascalia">Onde sul molo</p>',
             ['dir_0001/img_001.htm: hidden, yet no place past the end: '
              '<p class="didascalia" data-vf="didascalia">']),
            ('<p class="didascalia"></p>',
             ['dir_0001/img_001.htm: hidden, yet no place past the end: <p class="didascalia">']),
        ]
        for element, wanted in cases:
            with self.subTest(element=element):
                _, failures, _ = self.check(hidden=dict(self.hidden, **{
                    "dir_0001/img_001.htm": [element]}))
                self.assertEqual(failures, wanted)

    def test_a_missing_picture_fails(self):
        os.remove(os.path.join(self.site, "dir_0001/img_002.jpg"))
        _, failures, _ = self.check()
        self.assertIn("missing file: dir_0001/img_002.jpg", failures)
        self.assertTrue(any("img_002.jpg -> dir_0001/img_002.jpg does not exist" in f
                            for f in failures), failures)

    def test_a_link_in_the_wrong_case_fails(self):
        pages = dict(self.pages)
        pages["index.htm"] = '<body><a href="DIR_0001\\MENU.HTM">x</a></body>'
        _, failures, _ = self.check(pages)
        self.assertTrue(any("DIR_0001/MENU.HTM does not exist" in f for f in failures), failures)

    def test_a_page_that_did_not_load_fails(self):
        pages = dict(self.pages)
        pages["dir_0001/img_001.htm"] = None
        _, failures, _ = self.check(pages)
        self.assertIn("page did not load: dir_0001/img_001.htm", failures)

    def test_an_album_page_not_reached_from_the_index_fails(self):
        pages = dict(self.pages)
        pages["dir_0001/menu.htm"] = '<body><img src="img_001.jpg"></body>'
        _, failures, _ = self.check(pages)
        self.assertIn("page not reached from index.htm: dir_0001/img_001.htm", failures)
        self.assertIn("page not reached from index.htm: dir_0001/img_002.htm", failures)

    def test_an_external_reference_fails(self):
        pages = dict(self.pages)
        pages["index.htm"] = self.pages["index.htm"].replace(
            "</body>", '<img src="http://example.org/x.jpg"></body>')
        _, failures, _ = self.check(pages)
        self.assertTrue(any("leaves the site" in f for f in failures), failures)


if __name__ == "__main__":
    unittest.main()
