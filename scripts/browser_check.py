#!/usr/bin/env python3
"""Builds a sample site with the headless runner and looks at it in Chromium.

    browser_check.py check BUILD_DIR [--keep]      every page loads, every reference resolves
    browser_check.py shots BUILD_DIR OUTDIR [--keep] screenshots at 390 and 1280 px
    browser_check.py check-site SITE_DIR           the check alone, on a site built
                                                   elsewhere from 25 pictures
    browser_check.py shots-site SITE_DIR OUTDIR    the screenshots alone, of such a site

The site is made from PICTURES small JPEG files (P01.JPG ...) by the runner
BUILD_DIR/bin/vetrina-foto-script, in small letters, albums of ALBUM_SIZE
pictures, into a temporary folder, and served on 127.0.0.1 by
`python3 -m http.server`.  Only the standard library, ImageMagick's `convert`
and Chromium are used.
"""

import concurrent.futures
import html.parser
import os
import re
import shutil
import socket
import subprocess
import sys
import tempfile
import time
import urllib.parse

PICTURES = 25
ALBUM_SIZE = 9
PER_ROW = 5

CHROMIUM = os.environ.get("CHROMIUM", "/usr/bin/chromium")
CHROMIUM_FLAGS = [
    "--headless", "--no-sandbox", "--disable-gpu", "--disable-quic", "--no-first-run",
    "--disable-background-networking", "--disable-component-update", "--disable-sync",
    "--hide-scrollbars",
]
PAGE_TIMEOUT = 90  # seconds for one Chromium run
# The numbers drawn on the sample pictures use this font file by its path
# (Debian package fonts-dejavu-core, installed by scripts/install-deps.sh):
# ImageMagick's own default font is only there when its recommended font
# packages are.
FONT = "/usr/share/fonts/truetype/dejavu/DejaVuSans-Bold.ttf"

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
    leave dead: a picture or page of a place past the end of a partly filled album,
    such as dir_0003/img_008.jpg or dir_0003/img_009. (empty extension)."""
    m = re.fullmatch(r"dir_(\d{4})/img_(\d{3})\.[^/]*", site_path)
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
    """Collects (kind, reference) pairs of a page: links, pictures, cell
    backgrounds and url(...) of style sheets and style attributes."""

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


def check_site(site, dumps, sizes, album_size):
    """Checks a built site.  dumps maps each page path to its DOM as Chromium
    gave it, or None when the page did not load.  Returns (passed, failures,
    dead) where failures and dead are lists of texts."""
    passed = 0
    failures = []
    dead = []

    for path in expected_files(sizes):
        if os.path.isfile(os.path.join(site, path)):
            passed += 1
        else:
            failures.append("missing file: %s" % path)

    links = {}
    for page, dom in sorted(dumps.items()):
        if dom is None or "<body" not in dom.lower():
            failures.append("page did not load: %s" % page)
            continue
        passed += 1
        links[page] = set()
        for kind, ref in page_refs(dom):
            target = resolve(page, ref)
            if target is None:
                continue
            if target == "EXTERNAL":
                failures.append("%s: %s leaves the site: %s" % (page, kind, ref))
            elif os.path.isfile(os.path.join(site, target)):
                passed += 1
                if kind == "link":
                    links[page].add(target)
            elif expected_dead(target, sizes, album_size):
                dead.append("%s: %s %s" % (page, kind, ref))
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
    return passed, failures, dead


# ---------------------------------------------------------------- the build

def run(cmd, **kw):
    return subprocess.run(cmd, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True, **kw)


def make_pictures(folder, count):
    """count JPEG pictures P01.JPG ... of a camera's proportions, every fourth
    one upright, each showing its number."""
    os.makedirs(folder, exist_ok=True)
    for n in range(1, count + 1):
        size = "600x800" if n % 4 == 0 else "1200x800"
        hue = (n * 47) % 360
        r = run(["convert", "-size", size,
                 "gradient:hsl(%d,55%%,62%%)-hsl(%d,50%%,28%%)" % (hue, (hue + 40) % 360),
                 "-gravity", "center", "-font", FONT, "-pointsize", "220", "-fill", "white",
                 "-annotate", "+0+0", "%02d" % n, "-quality", "60",
                 os.path.join(folder, "P%02d.JPG" % n)])
        if r.returncode != 0:
            raise SystemExit("convert failed: " + r.stderr.strip())


def build_site(build_dir, work, count=PICTURES):
    """Builds the sample site with the runner; returns the site folder."""
    runner = os.path.join(build_dir, "bin", "vetrina-foto-script")
    if not os.access(runner, os.X_OK):
        raise SystemExit("no runner at %s: build the target vetrina-foto-script first" % runner)
    c = os.path.join(work, "c")
    make_pictures(os.path.join(c, "foto"), count)
    site = os.path.join(c, "sito")
    os.makedirs(site)
    lines = [
        "drive C %s" % c,
        "drive D %s readonly" % os.path.abspath(build_dir),
        "program D:\\bin",
        "start",
        "click Option2",
        "set txtMAX_N_FILES %d" % ALBUM_SIZE,
        "set txtMAX_PER_RIGA %d" % PER_ROW,
    ]
    lines += ["add C:\\foto\\P%02d.JPG" % n for n in range(1, count + 1)]
    lines += [
        "set txtNUM_FILE %d" % count,
        "set txtNOME_FILE_HTM C:\\sito\\index.htm",
        "click Command1",
    ]
    script = os.path.join(work, "build.txt")
    with open(script, "w") as f:
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


def dump_dom(server, page, work):
    try:
        r = chromium(["--dump-dom", server.url(page)], work)
    except subprocess.TimeoutExpired:
        return None
    return r.stdout if r.returncode == 0 else None


def site_pages(site):
    pages = []
    for folder, _, files in os.walk(site):
        for name in files:
            if name.lower().endswith(".htm"):
                pages.append(os.path.relpath(os.path.join(folder, name), site).replace(os.sep, "/"))
    return sorted(pages)


# ---------------------------------------------------------------- commands

def cmd_check(build_dir, keep, site=None):
    work = tempfile.mkdtemp(prefix="vf-browser-check-")
    server = None
    try:
        site = site or build_site(build_dir, work)
        server = Server(site, os.path.join(work, "http.log"))
        pages = site_pages(site)
        with concurrent.futures.ThreadPoolExecutor(max_workers=2) as pool:
            dumps = dict(zip(pages, pool.map(lambda p: dump_dom(server, p, work), pages)))
        sizes = album_sizes(PICTURES, ALBUM_SIZE)
        passed, failures, dead = check_site(site, dumps, sizes, ALBUM_SIZE)
        requests = failed_requests(server.log_text())
        for path, status in requests:
            if path == "favicon.ico":
                continue
            if expected_dead(path, sizes, ALBUM_SIZE):
                continue
            failures.append("HTTP %d for /%s" % (status, path))
        print("browser check: %d pictures, albums of %d, site in %s" % (PICTURES, ALBUM_SIZE, site))
        print("  pages loaded: %d of %d" % (sum(1 for d in dumps.values() if d), len(pages)))
        print("  dead references past the end of the last album (expected): %d" % len(dead))
        for d in dead:
            print("    " + d)
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
    ("picture", "dir_0001/img_002.htm"),
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
