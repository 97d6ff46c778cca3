#!/usr/bin/env python3
"""Builds a sample site with the headless runner and looks at it in Chromium.

    browser_check.py check BUILD_DIR [--keep]      every page loads, every reference shown
                                                   resolves, nothing requested fails; the
                                                   picture pages fit a phone and a wide
                                                   window; no description became markup;
                                                   axe-core and the Nu HTML checker find
                                                   nothing to mend in the templates' lines
    browser_check.py shots BUILD_DIR OUTDIR [--keep] screenshots at 390 and 1280 px
    browser_check.py check-site SITE_DIR           the check alone, on a site built
                                                   elsewhere from the sample photos
    browser_check.py shots-site SITE_DIR OUTDIR    the screenshots alone, of such a site

The site is made from the 25 photos of sample_photos.py (P01.JPG ... in the
folders of "Vacanze 2025", some with a description and a date, one a portrait
lying on its side) by the runner BUILD_DIR/bin/vetrina-foto-script, in small
letters, albums of ALBUM_SIZE pictures, into a temporary folder, and served on
127.0.0.1 by `python3 -m http.server`.  The standard library, ImageMagick's
`convert`, exiftool, Chromium, Java and the npm packages of
scripts/package.json (axe-core, vnu-jar: `npm ci --ignore-scripts` in
scripts/) are used; Chromium is driven through --remote-debugging-pipe, which
tells what each page shows and what it hides.

The check also wants the photos' words in the pages:
the site's title, album lines and covers, captions, dates, alt texts and the
pictures' sizes, which the publishing pass writes (page_checks.check_words).

A place past the end of the last album still has its links and picture name
in the menu and in the page before it, but the pages hide them: such a
reference is allowed only inside an element the page does not show, and the
browser must never request it.  Every reference a page shows must resolve,
and every element it hides must be there for such a place.
"""

import collections
import html.parser
import json
import os
import re
import shutil
import socket
import subprocess
import sys
import tempfile
import time
import urllib.parse

import page_checks
import sample_photos
from devtools import CHROMIUM, CHROMIUM_FLAGS, PAGE_TIMEOUT, evaluate_pages

PICTURES = sample_photos.COUNT
ALBUM_SIZE = 9
PER_ROW = 5

ALBUM_ASSETS = ["puls_sx3.jpg", "puls_su3.jpg", "puls_dx3.jpg", "sfondo_1.gif", "sfondo_2.gif"]
SITE_FILES = ["intestaz.htm", "intest_2.htm", "piede.htm", "piede_2.htm", "diaposit.jpg",
              "film-1a.jpg", "foto-1a.jpg", "htm-1a.jpg", "music-1a.jpg", "sfondo1g.jpg",
              "sfondo1p.jpg", "pulsante.jpg", "sfondo_1.gif", "sfondo_2.gif"]


# ---------------------------------------------------------------- site model

def album_sizes(pictures, album_size):
    """Pictures per album, in album order: [9, 9, 7] for 25 pictures by 9."""
    sizes = []
    left = pictures
    while left > 0:
        sizes.append(min(album_size, left))
        left -= album_size
    return sizes


def expected_dead(site_path, sizes, album_size):
    """True for a site path (relative, '/'-separated) that the program is known to
    leave dead: a picture, one of its copies, or a page of a place past the end
    of a partly filled album, such as dir_0003/img_008.htm, dir_0003/img_009.
    (empty extension) or dir_0003/mini/img_009."""
    m = re.fullmatch(r"dir_(\d{4})/(?:[^/]+/)?img_(\d{3})\.[^/]*", site_path)
    if not m:
        return False
    album, place = int(m.group(1)), int(m.group(2))
    if album < 1 or album > len(sizes):
        return False
    return sizes[album - 1] < place <= album_size


def expected_files(sizes):
    """Files that a build of albums of these sizes must leave, relative paths."""
    files = ["index.htm"] + SITE_FILES
    for a, count in enumerate(sizes, 1):
        d = "dir_%04d/" % a
        files += [d + "menu.htm"] + [d + x for x in ALBUM_ASSETS]
        for i in range(1, count + 1):
            files += [d + "img_%03d.htm" % i, d + "img_%03d.jpg" % i]
    return files


# ---------------------------------------------------------------- references

class RefParser(html.parser.HTMLParser):
    """Collects (kind, reference) pairs of a page: links, pictures, the
    candidates of a srcset, cell backgrounds and url(...) of style sheets and
    style attributes."""

    URL_ATTRS = {"href": "link", "src": "picture", "background": "picture"}
    CSS_URL = re.compile(r"""url\(\s*(?:"([^"]*)"|'([^']*)'|([^)\s]*))\s*\)""")

    def __init__(self):
        super().__init__(convert_charrefs=True)
        self.refs = []
        self._in_style = False

    def handle_starttag(self, tag, attrs):
        for name, value in attrs:
            if value is None:
                continue
            if name in self.URL_ATTRS:
                self.refs.append((self.URL_ATTRS[name], value))
            elif name == "srcset":
                # "a.jpg 480w, b.jpg 1600w": a name, then a descriptor.
                for candidate in value.split(","):
                    if candidate.strip():
                        self.refs.append(("picture", candidate.split()[0]))
            elif name == "style":
                self._css(value)
        if tag == "style":
            self._in_style = True

    def handle_endtag(self, tag):
        if tag == "style":
            self._in_style = False

    def handle_data(self, data):
        if self._in_style:
            self._css(data)

    def _css(self, text):
        for m in self.CSS_URL.finditer(text):
            self.refs.append(("picture", next(g for g in m.groups() if g is not None)))


def page_refs(html_text):
    p = RefParser()
    p.feed(html_text)
    p.close()
    return p.refs


def resolve(page_path, ref):
    """The site path (relative to the site root, '/'-separated) that a reference
    of the page at page_path leads to, as a browser reads it: a backslash counts
    as a slash, query and fragment are dropped, %xx is decoded.  None for a
    reference to nothing to check (a bare fragment, mailto:, data:); the text
    'EXTERNAL' for a reference that leaves the site."""
    ref = ref.strip().replace("\\", "/")
    if ref == "" or ref.startswith("#"):
        return None
    scheme = urllib.parse.urlsplit(ref).scheme.lower()
    if scheme in ("mailto", "data", "javascript"):
        return None
    if scheme:
        return "EXTERNAL"
    base = "http://site/" + page_path
    url = urllib.parse.urljoin(base, ref)
    parts = urllib.parse.urlsplit(url)
    if parts.netloc != "site":
        return "EXTERNAL"
    return urllib.parse.unquote(parts.path).lstrip("/")


HTTP_LOG_LINE = re.compile(r'"(?:GET|HEAD) (\S+) HTTP/[\d.]+" (\d{3})')


def failed_requests(log_text):
    """(site path, status) of every request in an http.server log that did not
    answer 200 or 304."""
    out = []
    for m in HTTP_LOG_LINE.finditer(log_text):
        status = int(m.group(2))
        if status not in (200, 304):
            path = urllib.parse.unquote(urllib.parse.urlsplit(m.group(1)).path).lstrip("/")
            out.append((path, status))
    return out


# A page as Chromium showed it: its DOM, and the HTML of each outermost
# element of its body that it does not show (display: none).
Rendered = collections.namedtuple("Rendered", "dom hidden")


def empty_place(element):
    """True for the HTML of an element with a data-vf attribute and no words: a
    caption, a date or an album line that the pass left empty, which the page hides."""
    return (re.match(r"<[a-z]+\b[^>]*\sdata-vf=", element) is not None
            and re.sub(r"<[^>]*>", "", element).strip() == "")


def check_site(site, dumps, sizes, album_size):
    """Checks a built site.  dumps maps each page path to a Rendered, or None
    when the page did not load.  Every reference a page shows must lead to a
    file of the site; an element the page hides must hold a reference to a
    place past the end, which is why it is hidden, or be a place left empty.
    Returns (passed, failures, hidden) where failures and hidden are lists of
    texts: hidden lists the references to places past the end that the pages
    hide."""
    passed = 0
    failures = []
    hidden = []

    for path in expected_files(sizes):
        if os.path.isfile(os.path.join(site, path)):
            passed += 1
        else:
            failures.append("missing file: %s" % path)

    links = {}
    for page, shown in sorted(dumps.items()):
        if shown is None or "<body" not in shown.dom.lower():
            failures.append("page did not load: %s" % page)
            continue
        passed += 1
        links[page] = set()
        unseen = collections.Counter()
        for element in shown.hidden:
            if empty_place(element):
                passed += 1
                continue
            refs = page_refs(element)
            unseen.update(refs)
            past_end = ["%s %s" % r for r in refs
                        if expected_dead(resolve(page, r[1]) or "", sizes, album_size)]
            if past_end:
                passed += 1
                hidden += ["%s: %s" % (page, r) for r in past_end]
            else:
                failures.append("%s: hidden, yet no place past the end: %s"
                                % (page, element.split(">")[0][:120] + ">"))
        shown_refs = collections.Counter(page_refs(shown.dom)) - unseen
        for kind, ref in sorted(shown_refs.elements()):
            target = resolve(page, ref)
            if target is None:
                continue
            if target == "EXTERNAL":
                failures.append("%s: %s leaves the site: %s" % (page, kind, ref))
            elif os.path.isfile(os.path.join(site, target)):
                passed += 1
                if kind == "link":
                    links[page].add(target)
            else:
                failures.append("%s: %s %s -> %s does not exist" % (page, kind, ref, target))

    # Every album page is reached from the index page through links.
    seen, todo = set(), ["index.htm"]
    while todo:
        page = todo.pop()
        if page in seen:
            continue
        seen.add(page)
        todo.extend(t for t in links.get(page, ()) if t.endswith(".htm"))
    for page in sorted(dumps):
        if page.startswith("dir_"):
            if page in seen:
                passed += 1
            else:
                failures.append("page not reached from index.htm: %s" % page)
    return passed, failures, hidden


# ---------------------------------------------------------------- the build

def run(cmd, **kw):
    return subprocess.run(cmd, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True, **kw)


def build_site(build_dir, work):
    """Builds the sample site with the runner; returns the site folder."""
    runner = os.path.join(os.path.abspath(build_dir), "bin", "vetrina-foto-script")
    if not os.access(runner, os.X_OK):
        raise SystemExit("no runner at %s: build the target vetrina-foto-script first" % runner)
    c = os.path.join(work, "c")
    top = sample_photos.make_photos(c)
    site = os.path.join(c, "sito")
    os.makedirs(site)
    lines = [
        "drive C %s" % c,
        "drive D %s readonly" % os.path.abspath(build_dir),
        "program D:\\bin",
        "start",
        "set txtPATH_RICERCA C:\\%s" % os.path.basename(top),
        "click Option2",
        "set txtMAX_N_FILES %d" % ALBUM_SIZE,
        "set txtMAX_PER_RIGA %d" % PER_ROW,
    ]
    lines += ["add " + sample_photos.windows_path(p) for p in sample_photos.PHOTOS]
    lines += [
        "set txtNUM_FILE %d" % len(sample_photos.PHOTOS),
        "set txtNOME_FILE_HTM C:\\sito\\index.htm",
        "click Command1",
    ]
    script = os.path.join(work, "build.txt")
    with open(script, "w", encoding="utf-8") as f:
        f.write("\n".join(lines) + "\n")
    r = run([runner, script], cwd=work, timeout=300)
    problems = []
    if r.returncode != 0:
        problems.append("runner exit status %d" % r.returncode)
    for line in r.stdout.splitlines():
        if line.startswith("MSG:") or (line.startswith("ASK:")
                                       and not line.startswith("ASK: Visualizzo la pagina creata")):
            problems.append("runner said: " + line)
    if problems:
        sys.stderr.write(r.stdout + r.stderr)
        raise SystemExit("the build of the sample site failed:\n  " + "\n  ".join(problems))
    return site


class Server:
    """python3 -m http.server on 127.0.0.1, its log in a file."""

    def __init__(self, root, log_path):
        with socket.socket() as s:
            s.bind(("127.0.0.1", 0))
            self.port = s.getsockname()[1]
        self.log_path = log_path
        self.log = open(log_path, "w")
        self.proc = subprocess.Popen(
            [sys.executable, "-m", "http.server", str(self.port), "--bind", "127.0.0.1",
             "--directory", root],
            stdout=self.log, stderr=subprocess.STDOUT)
        deadline = time.time() + 15
        while True:
            try:
                socket.create_connection(("127.0.0.1", self.port), timeout=1).close()
                break
            except OSError:
                if time.time() > deadline or self.proc.poll() is not None:
                    self.stop()
                    raise SystemExit("the HTTP server did not start")
                time.sleep(0.1)

    def url(self, path):
        return "http://127.0.0.1:%d/%s" % (self.port, path)

    def stop(self):
        if self.proc.poll() is None:
            self.proc.terminate()
            try:
                self.proc.wait(timeout=10)
            except subprocess.TimeoutExpired:
                self.proc.kill()
                self.proc.wait()
        self.log.close()

    def log_text(self):
        self.log.flush()
        with open(self.log_path) as f:
            return f.read()


def chromium(args, work):
    profile = tempfile.mkdtemp(prefix="profile-", dir=work)
    try:
        return run([CHROMIUM] + CHROMIUM_FLAGS + ["--user-data-dir=" + profile] + args,
                   timeout=PAGE_TIMEOUT)
    finally:
        shutil.rmtree(profile, ignore_errors=True)


# Run in the page once it has loaded: scrolls to the end so that every
# picture the page shows is requested, waits for them, and returns the DOM
# and the outermost elements of the body that are not shown.
SHOWN_SCRIPT = r"""(async () => {
  const pause = ms => new Promise(r => setTimeout(r, ms));
  scrollTo(0, document.documentElement.scrollHeight);
  await pause(300);
  for (let i = 0; i < 100 && [...document.images].some(p => p.checkVisibility() && !p.complete); i++)
    await pause(100);
  // An element of display: contents has no box of its own, but its content shows.
  const shown = e => e.checkVisibility() ||
      (getComputedStyle(e).display === "contents" && shown(e.parentElement));
  const hidden = [...document.body.querySelectorAll("*")].filter(
      e => !["STYLE", "SCRIPT", "TEMPLATE"].includes(e.tagName) && !shown(e) &&
           shown(e.parentElement));
  return JSON.stringify({dom: document.documentElement.outerHTML,
                         hidden: hidden.map(e => e.outerHTML)});
})()"""


def render(server, pages, work):
    """Each page as Chromium shows it, a Rendered, or None when it did not load,
    in a dict by page; one browser, one new tab a page."""
    seen = evaluate_pages(work, {page: server.url(page) for page in pages}, [SHOWN_SCRIPT])
    return {page: None if values is None else Rendered(**json.loads(values[0]))
            for page, values in seen.items()}


def site_pages(site):
    pages = []
    for folder, _, files in os.walk(site):
        for name in files:
            if name.lower().endswith(".htm"):
                pages.append(os.path.relpath(os.path.join(folder, name), site).replace(os.sep, "/"))
    return sorted(pages)


# ---------------------------------------------------------------- the pages' own checks

TOOLS = os.path.join(os.path.dirname(os.path.abspath(__file__)), "node_modules")
AXE = os.path.join(TOOLS, "axe-core", "axe.min.js")
VNU = os.path.join(TOOLS, "vnu-jar", "build", "dist", "vnu.jar")
PORTRAIT_PAGE = "dir_0001/img_%03d.htm" % sample_photos.PORTRAIT
AXE_PAGES = ["index.htm", "dir_0001/menu.htm", PORTRAIT_PAGE]


def check_pages(server, site, pages, work):
    """The checks of page_checks.py over the pages of the site; prints a line for
    each and returns (passed, failures)."""
    for tool in (AXE, VNU):
        if not os.path.isfile(tool):
            raise SystemExit("%s is missing: run `npm ci --ignore-scripts` in scripts/" % tool)
    pages = [p for p in pages if p not in page_checks.FRAGMENTS]
    urls = {p: server.url(p) for p in pages}
    facts = {}
    for viewport in (page_checks.PHONE, page_checks.WIDE):
        # On a phone only the picture pages are measured.
        wanted = {p: u for p, u in urls.items()
                  if viewport == page_checks.WIDE or page_checks.is_picture_page(p)}
        seen = evaluate_pages(work, wanted, [page_checks.FACTS_SCRIPT], viewport)
        facts[viewport] = {p: v and v[0] for p, v in seen.items()}
    layout = []
    for viewport, by_page in facts.items():
        for page, seen in sorted(by_page.items()):
            if seen is None:
                layout.append("%s did not load at %dx%d" % ((page,) + viewport[:2]))
            elif page_checks.is_picture_page(page):
                layout += page_checks.picture_layout_failures(page, seen, viewport)
    wide = facts[page_checks.WIDE]
    # The sample's portrait lies on its side in its file: the check of its size is
    # worth something only if the page shows it upright.
    portrait = [p["natural"] for p in page_checks.places(wide.get(PORTRAIT_PAGE) or {"places": []},
                                                          "foto") if p["natural"]]
    if not portrait or portrait[0][0] >= portrait[0][1]:
        layout.append("%s: the portrait is not shown upright: %s" % (PORTRAIT_PAGE, portrait))
    places = []
    for page, seen in sorted(wide.items()):
        places += page_checks.empty_places_failures(page, seen) if seen else []

    with open(AXE, encoding="utf-8") as f:
        scripts = page_checks.axe_scripts(f.read())
    axe = []
    for page, values in evaluate_pages(work, {p: urls[p] for p in AXE_PAGES}, scripts,
                                       page_checks.WIDE).items():
        axe += ["axe did not run on " + page] if values is None else page_checks.axe_failures(
            page, values[1])
    # The album lines of the index stand in CSS generated text: a screen reader
    # must be given them all the same.
    names = evaluate_pages(work, {"index.htm": urls["index.htm"]}, ["1"], page_checks.WIDE,
                           ax_names=True).get("index.htm")
    spoken = " ".join(names[-1]) if names else ""
    if page_checks.ALBUM_1_LINE not in spoken:
        axe.append("index.htm: the accessibility tree does not hold the album line %r"
                   % page_checks.ALBUM_1_LINE)
    nu = page_checks.nu_failures(site, page_checks.nu_messages(
        VNU, [os.path.join(site, p) for p in pages]))

    results = [
        ("picture pages at %dx%d and %dx%d" % (page_checks.PHONE[:2] + page_checks.WIDE[:2]),
         layout),
        ("captions, dates and album lines shown only with words", places),
        ("no words became markup (<script, onerror and other event attributes)",
         page_checks.markup_failures(site)),
        ("axe-core on " + ", ".join(AXE_PAGES) + ", and the album lines in the accessibility tree", axe),
        ("the Nu HTML checker on %d pages, less the program's own lines" % len(pages), nu),
    ]
    results.append(("the photos' words in their places",
                    page_checks.check_words(wide, ALBUM_SIZE, site)))
    failures = []
    for name, failed in results:
        print("  %s: %s" % (name, "%d failed" % len(failed) if failed else "ok"))
        failures += failed
    return sum(1 for _, failed in results if not failed), failures


# ---------------------------------------------------------------- commands

def cmd_check(build_dir, keep, site=None):
    work = tempfile.mkdtemp(prefix="vf-browser-check-")
    server = None
    try:
        site = site or build_site(build_dir, work)
        server = Server(site, os.path.join(work, "http.log"))
        pages = site_pages(site)
        dumps = render(server, pages, work)
        sizes = album_sizes(PICTURES, ALBUM_SIZE)
        passed, failures, hidden = check_site(site, dumps, sizes, ALBUM_SIZE)
        print("browser check: %d pictures, albums of %d, site in %s" % (PICTURES, ALBUM_SIZE, site))
        print("  pages loaded: %d of %d" % (sum(1 for d in dumps.values() if d), len(pages)))
        print("  references to places past the end of the last album, not shown: %d" % len(hidden))
        for d in hidden:
            print("    " + d)
        more_passed, more_failures = check_pages(server, site, pages, work)
        passed += more_passed
        failures += more_failures
        # Nothing the pages request, at any window size, may fail; Chromium asks
        # for the site's icon by itself.
        requests = failed_requests(server.log_text())
        for path, status in requests:
            if path != "favicon.ico":
                failures.append("HTTP %d for /%s" % (status, path))
        for f in failures:
            print("  FAIL " + f)
        print("browser-check: %d passed, %d failed" % (passed, len(failures)))
        return 1 if failures else 0
    finally:
        if server:
            server.stop()
        if keep:
            print("kept: " + work)
        else:
            shutil.rmtree(work, ignore_errors=True)


SHOTS = [  # name, page
    ("index", "index.htm"),
    ("menu", "dir_0001/menu.htm"),
    ("picture", PORTRAIT_PAGE),
    ("picture-landscape", "dir_0001/img_001.htm"),
    ("menu-last-album", "dir_0003/menu.htm"),
]
SIZES = [(390, 844), (1280, 800)]


def cmd_shots(build_dir, outdir, keep, site=None):
    os.makedirs(outdir, exist_ok=True)
    work = tempfile.mkdtemp(prefix="vf-screenshots-")
    server = None
    failed = 0
    try:
        site = site or build_site(build_dir, work)
        server = Server(site, os.path.join(work, "http.log"))
        for name, page in SHOTS:
            for w, h in SIZES:
                out = os.path.abspath(os.path.join(outdir, "%s-%d.png" % (name, w)))
                # Pictures marked decoding="async" are painted a frame after
                # the rest; without this flag the one frame headless Chromium
                # captures shows their places still empty.
                r = chromium(["--window-size=%d,%d" % (w, h), "--disable-checker-imaging",
                              "--screenshot=" + out, server.url(page)], work)
                if r.returncode == 0 and os.path.isfile(out):
                    print(out)
                else:
                    failed += 1
                    print("screenshot failed: %s at %d px" % (page, w), file=sys.stderr)
        return 1 if failed else 0
    finally:
        if server:
            server.stop()
        if keep:
            print("kept: " + work)
        else:
            shutil.rmtree(work, ignore_errors=True)


def main(argv):
    keep = "--keep" in argv
    args = [a for a in argv if a != "--keep"]
    if len(args) == 2 and args[0] == "check":
        return cmd_check(args[1], keep)
    if len(args) == 2 and args[0] == "check-site":
        return cmd_check(None, keep, site=os.path.abspath(args[1]))
    if len(args) == 3 and args[0] == "shots":
        return cmd_shots(args[1], args[2], keep)
    if len(args) == 3 and args[0] == "shots-site":
        return cmd_shots(None, args[2], keep, site=os.path.abspath(args[1]))
    print(__doc__.strip(), file=sys.stderr)
    return 2


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
