"""The checks of the sample site beyond its links: how a picture page fits a
phone and a wide window, that no photo's words became markup, what axe-core
and the Nu HTML checker say of the pages, and that the
publishing pass put each photo's words in the places the templates give them.

Each check takes what the browser saw of the pages (facts, from FACTS_SCRIPT,
by page) or the site's files, and returns a list of failures as texts.
"""

import html.parser
import json
import os
import re
import subprocess

import sample_photos as photos

PHONE = (390, 844, True)  # width, height, mobile
WIDE = (1280, 800, False)
MIN_PAINTED_WIDTH = 330  # on a phone, a portrait is painted at least this wide...
MIN_PAINTED_HEIGHT = 0.7  # ...or this share of the window's height tall
LANDSCAPE_MARGINS = 40  # on a phone, a landscape picture is as wide as the window less these
SHAPE_TOLERANCE = 0.02  # the picture's box and the picture differ in shape by at most this

PICTURE_PAGE = re.compile(r"dir_(\d{4})/img_(\d{3})\.htm")
# The pieces of the head and foot that the site holds beside its pages.
FRAGMENTS = {"intestaz.htm", "intest_2.htm", "piede.htm", "piede_2.htm"}

# Run in a page once it has loaded: waits for the pictures that are not lazy,
# then tells every place (an element with data-vf) with its box, the nav's box,
# the window and the page's size, and each card of the index with what its
# ::before and ::after show.
FACTS_SCRIPT = r"""(async () => {
  const pause = ms => new Promise(r => setTimeout(r, ms));
  for (let i = 0; i < 100 && [...document.images].some(
           p => p.loading !== "lazy" && p.checkVisibility() && !p.complete); i++)
    await pause(100);
  const box = e => { const r = e.getBoundingClientRect(); return [r.left, r.top, r.width, r.height]; };
  const attrs = ["src", "alt", "width", "height", "datetime"];
  const places = [...document.querySelectorAll("[data-vf]")].map(e => ({
    vf: e.dataset.vf, tag: e.localName, text: e.textContent, shown: e.checkVisibility(),
    box: box(e), natural: e.naturalWidth ? [e.naturalWidth, e.naturalHeight] : null,
    attrs: Object.fromEntries(attrs.filter(a => e.hasAttribute(a)).map(a => [a, e.getAttribute(a)]))
  }));
  const cards = [...document.querySelectorAll("body table:not(table table) > tbody > tr > td")].map(
    td => ({href: td.querySelector("a[href]")?.getAttribute("href"),
            cover: getComputedStyle(td, "::before").backgroundImage,
            line: getComputedStyle(td, "::after").content}));
  const nav = document.querySelector("nav");
  const root = document.documentElement;
  return {places, cards, nav: nav && box(nav), view: [innerWidth, innerHeight],
          page: [root.scrollWidth, root.scrollHeight]};
})()"""


def is_picture_page(page):
    return PICTURE_PAGE.fullmatch(page) is not None


def photo_of(page, album_size):
    """The sample photo that a picture page shows."""
    m = PICTURE_PAGE.fullmatch(page)
    return photos.PHOTOS[(int(m.group(1)) - 1) * album_size + int(m.group(2)) - 1]


def places(facts, vf, tag=None):
    return [p for p in facts["places"] if p["vf"] == vf and (tag is None or p["tag"] == tag)]


def painted(place):
    """The size the picture is painted at inside its box, fitted whole as object-fit:contain
    does: for a box of the picture's own shape, the box."""
    _, _, w, h = place["box"]
    nw, nh = place["natural"]
    scale = min(w / nw, h / nh)
    return nw * scale, nh * scale


# ---------------------------------------------------------------- the layout

def picture_layout_failures(page, facts, viewport):
    """A picture page as the window of viewport showed it: its picture's box has the
    picture's shape; on a phone the picture is large, on a wide window the page
    fits without scrolling, nav and picture included."""
    width, height, mobile = viewport
    where = "%s at %dx%d" % (page, width, height)
    pictures = [p for p in places(facts, "foto", "img") if p["shown"]]
    if len(pictures) != 1 or not pictures[0]["natural"]:
        return ["%s: not one picture shown, but %d" % (where, len(pictures))]
    picture = pictures[0]
    failures = []
    _, top, w, h = picture["box"]
    nw, nh = picture["natural"]
    if abs((w / h) / (nw / nh) - 1) > SHAPE_TOLERANCE:
        failures.append("%s: the picture's box is %.0fx%.0f, not of the picture's shape %dx%d"
                        % (where, w, h, nw, nh))
    pw, ph = painted(picture)
    if mobile:
        if pw < MIN_PAINTED_WIDTH and ph < MIN_PAINTED_HEIGHT * height:
            failures.append("%s: the picture is painted %.0fx%.0f, under %d wide and %.0f tall"
                            % (where, pw, ph, MIN_PAINTED_WIDTH, MIN_PAINTED_HEIGHT * height))
        if nw > nh and pw < width - LANDSCAPE_MARGINS:
            failures.append("%s: a landscape picture painted %.0f wide, not across the window"
                            % (where, pw))
    else:
        page_w, page_h = facts["page"]
        if page_h > height or page_w > width:
            failures.append("%s: the page is %dx%d, it scrolls" % (where, page_w, page_h))
        nav = facts["nav"]
        if not nav or nav[0] < 0 or nav[1] < 0 or nav[0] + nav[2] > width or nav[1] + nav[3] > height:
            failures.append("%s: the navigation is not on screen: %s" % (where, nav))
        if top + h > height:
            failures.append("%s: the picture ends below the window, at %.0f" % (where, top + h))
    return failures


def empty_places_failures(page, facts):
    """A caption, a date or an album line is shown when it holds words, and
    hidden when it is empty, whether or not the pass has filled it."""
    failures = []
    for vf in ("didascalia", "data", "album"):
        for p in places(facts, vf):
            if p["tag"] in ("title", "style"):
                continue
            if p["shown"] != (p["text"].strip() != ""):
                failures.append("%s: the %s place %s is %s" % (
                    page, vf, json.dumps(p["text"]), "shown" if p["shown"] else "hidden"))
    return failures


# ---------------------------------------------------------------- no markup from words

class _LiveMarkup(html.parser.HTMLParser):
    """Collects the script elements and the event attributes (onerror, onload...) of a page."""

    def __init__(self):
        super().__init__(convert_charrefs=True)
        self.found = []

    def handle_starttag(self, tag, attrs):
        if tag == "script":
            self.found.append("<script>")
        self.found += ["%s on <%s>" % (name, tag) for name, _ in attrs if name.startswith("on")]


def markup_failures(site):
    """Every file of the site that holds "<script" in any case, and every page
    with a script element or an event attribute such as onerror. A description is
    written as text: escaped, "onerror" may stand in a caption or an alt as a
    word, so in a page it is looked for as an attribute; in any other file it
    must not stand at all."""
    failures = []
    for folder, _, files in os.walk(site):
        for name in files:
            path = os.path.join(folder, name)
            where = os.path.relpath(path, site)
            with open(path, "rb") as f:
                data = f.read()
            words = [b"<script"]
            if name.lower().endswith((".htm", ".html")):
                parser = _LiveMarkup()
                parser.feed(data.decode("utf-8", "replace"))
                parser.close()
                failures += ["%s holds %s" % (where, found) for found in parser.found]
            else:
                words.append(b"onerror")
            failures += ["%s holds %s" % (where, w.decode()) for w in words if w in data.lower()]
    return failures


# ---------------------------------------------------------------- axe-core

def axe_scripts(axe_source):
    """The scripts that load axe-core into a page and run it: the second gives the
    violations, each {id, impact, help, nodes}."""
    load = axe_source + "\n;true"
    run = ("axe.run(document, {resultTypes: ['violations']}).then(r => r.violations.map("
           "v => ({id: v.id, impact: v.impact, help: v.help,"
           " nodes: v.nodes.map(n => n.target.join(' '))})))")
    return [load, run]


def axe_failures(page, violations):
    """axe-core's violations, less html-has-lang: the index page's <HTML> line is the
    program's own, and gives no language."""
    return ["%s: axe %s (%s): %s at %s" % (page, v["id"], v["impact"], v["help"],
                                           ", ".join(v["nodes"][:3]))
            for v in violations if v["id"] != "html-has-lang"]


# ---------------------------------------------------------------- the Nu HTML checker

# The lines of a page that the program writes itself, not the template set nor the
# publishing pass: the checker's errors on them are not the templates' to mend, so they
# are left out by matching the text of the line an error ends on, as the program writes
# them (generator/scheletro.cc, generator/cella.cc): the index's first line "<HTML>", the
# link home of a page not named index, the table of albums with its rows and the lines
# of a single blank between cells, each card's cells and link, its label ending in
# "</A>", and "</center></div>", which closes the table. No line of the sample template
# set matches, which page_checks_test.py checks.
PROGRAM_LINE = re.compile(r"""
    <HTML>
  | <H2><a\ href="[^"]*"\ target="_top">.*Ritorna\ alla\ pagina\ iniziale.*</H2>
  | \ *</?tr>|\ +
  | \ *<table\ border="0"\ cellpadding="0"\ cellspacing="\d+"\ width="\ ?130"(\ height="30")?>
  | \ *<td\ valign="Top">
  | \ *<td\ background="[^"]*"\ width="130"\ height="30">
  | \ *<td><p\ align="center">
  | \ *<A\ HREF="[^"]*">
  | [^<>]*</A>
  | \ *</td>|\ *</table>|</table></td>
  | </center></div>
""", re.X)


def nu_messages(jar, files):
    """The Nu HTML checker's errors over the files: (file, line, message), the line
    being the one the error ends on."""
    # The checker's one run is short: the quick compiler alone and the plain collector
    # halve its time; that compiler's code wants a deeper stack than the default.
    r = subprocess.run(["java", "-Xss16m", "-XX:TieredStopAtLevel=1", "-XX:+UseSerialGC", "-jar",
                        jar, "--errors-only", "--exit-zero-always", "--stdout",
                        "--format", "json", "--html"] + files,
                       stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True, timeout=300)
    try:
        messages = json.loads(r.stdout)["messages"]
    except (ValueError, KeyError):
        raise SystemExit("the Nu HTML checker said: " + (r.stdout + r.stderr).strip()[:2000])
    out = []
    for m in messages:
        path = m.get("url", "")
        path = path[len("file:"):] if path.startswith("file:") else path
        out.append((path, m.get("lastLine", 0), m.get("message", "")))
    return out


def nu_failures(site, messages):
    """The checker's errors on lines that are not the program's own."""
    failures = []
    lines = {}
    for path, line, message in messages:
        if path not in lines:
            with open(path, "rb") as f:
                lines[path] = f.read().decode("utf-8", "replace").replace("\r\n", "\n").split("\n")
        text = lines[path][line - 1] if 0 < line <= len(lines[path]) else ""
        if PROGRAM_LINE.fullmatch(text):
            continue
        failures.append("%s:%d: %s  [%s]" % (os.path.relpath(path, site), line, message,
                                             text.strip()[:100]))
    return failures


# ---------------------------------------------------------------- the photos' words

MONTHS = ["gennaio", "febbraio", "marzo", "aprile", "maggio", "giugno", "luglio", "agosto",
          "settembre", "ottobre", "novembre", "dicembre"]
ALBUM_1_LINE = "Casa \u00b7 Giardino di Citt\u00e0 \u00b7 Mare \u2014 14\u201316 luglio 2025"


def jpeg_size(path):
    """A JPEG file's width and height, from its frame header; None when there is none."""
    with open(path, "rb") as f:
        data = f.read()
    at = 2
    while at + 9 <= len(data) and data[at] == 0xFF:
        marker, length = data[at + 1], int.from_bytes(data[at + 2:at + 4], "big")
        if 0xC0 <= marker <= 0xCF and marker not in (0xC4, 0xC8, 0xCC):
            return (int.from_bytes(data[at + 7:at + 9], "big"),
                    int.from_bytes(data[at + 5:at + 7], "big"))
        at += 2 + length
    return None


def check_words(facts, album_size, site):
    """What the publishing pass writes into the places, from the sample photos: the
    site's title, the album line and cover of album 1, and on each picture page its
    photo's description, date and picture size."""
    failures = []

    def expect(page, what, got, wanted):
        if got != wanted:
            failures.append("%s: %s is %s, not %s" % (page, what, json.dumps(got),
                                                      json.dumps(wanted)))

    index = facts.get("index.htm")
    if index:
        for p in places(index, "sito"):
            expect("index.htm", "the site's title in <%s>" % p["tag"], p["text"], photos.SITE_TITLE)
        card = next((c for c in index["cards"] if c["href"] == "dir_0001\\menu.htm"), None)
        if not card or "dir_0001/mini/img_" not in card["cover"]:
            failures.append("index.htm: album 1 shows no cover of its own: %s" % card)
        else:
            expect("index.htm", "album 1's line", card["line"], '"%s"' % ALBUM_1_LINE)
    menu = facts.get("dir_0001/menu.htm")
    if menu:
        for p in places(menu, "album"):
            expect("dir_0001/menu.htm", "the album line in <%s>" % p["tag"], p["text"], ALBUM_1_LINE)
        for p in places(menu, "sito"):
            expect("dir_0001/menu.htm", "the link home", p["text"], photos.SITE_TITLE)
        for place, tile in enumerate(places(menu, "foto"), 1):
            told = photos.PHOTOS[place - 1].description
            expect("dir_0001/menu.htm", "the alt of tile %d" % place, tile["attrs"].get("alt"),
                   told or "Foto %d" % place)
    for page in sorted(p for p in facts if is_picture_page(p) and facts[p]):
        photo = photo_of(page, album_size)
        seen = facts[page]
        place = int(PICTURE_PAGE.fullmatch(page).group(2))
        told = photo.description or "Foto %d" % place
        for p in places(seen, "titolo"):
            expect(page, "<%s>" % p["tag"], p["text"], told)
        for p in places(seen, "foto"):
            expect(page, "the picture's alt", p["attrs"].get("alt"), told)
            src = os.path.join(site, os.path.dirname(page), p["attrs"].get("src", ""))
            expect(page, "the picture's size", (p["attrs"].get("width"), p["attrs"].get("height")),
                   tuple(str(n) for n in (os.path.isfile(src) and jpeg_size(src) or ())))
        for p in places(seen, "didascalia"):
            expect(page, "the caption", (p["text"], p["shown"]), (photo.description or "", bool(
                photo.description)))
        for p in places(seen, "data"):
            if photo.taken:
                y, m, d = (int(n) for n in photo.taken[:10].split(":"))
                expect(page, "the date", (p["text"], p["attrs"].get("datetime"), p["shown"]),
                       ("%d %s %d" % (d, MONTHS[m - 1], y), "%04d-%02d-%02d" % (y, m, d), True))
            else:
                expect(page, "the date shown", p["shown"], False)
        for p in places(seen, "sito"):
            expect(page, "the link home", p["text"], photos.SITE_TITLE)
    return failures
