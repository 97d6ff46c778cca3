#!/usr/bin/env python3
"""Builds a sample site with the headless runner and looks at it in Chromium.

    browser_check.py check BUILD_DIR [--keep]      every page loads, every reference shown
                                                   resolves, nothing requested fails
    browser_check.py shots BUILD_DIR OUTDIR [--keep] screenshots at 390 and 1280 px
    browser_check.py check-site SITE_DIR           the check alone, on a site built
                                                   elsewhere from 25 pictures
    browser_check.py shots-site SITE_DIR OUTDIR    the screenshots alone, of such a site

The site is made from PICTURES small JPEG files (P01.JPG ...) by the runner
BUILD_DIR/bin/vetrina-foto-script, in small letters, albums of ALBUM_SIZE
pictures, into a temporary folder, and served on 127.0.0.1 by
`python3 -m http.server`.  Only the standard library, ImageMagick's `convert`
and Chromium are used; Chromium is driven through --remote-debugging-pipe,
which tells what each page shows and what it hides.

A place past the end of the last album still has its links and picture name
in the menu and in the page before it, but the pages hide them: such a
reference is allowed only inside an element the page does not show, and the
browser must never request it.  Every reference a page shows must resolve,
and every element it hides must be there for such a place.
"""

import collections
import fcntl
import html.parser
import json
import os
import re
import select
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


def check_site(site, dumps, sizes, album_size):
    """Checks a built site.  dumps maps each page path to a Rendered, or None
    when the page did not load.  Every reference a page shows must lead to a
    file of the site; an element the page hides must hold a reference to a
    place past the end, which is why it is hidden.  Returns (passed,
    failures, hidden) where failures and hidden are lists of texts: hidden
    lists the references to places past the end that the pages hide."""
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


class DevTools:
    """Chromium driven through --remote-debugging-pipe: JSON messages ended by
    a NUL byte, read by Chromium on its fd 3 and written on its fd 4."""

    def __init__(self, work, args=()):
        self.profile = tempfile.mkdtemp(prefix="profile-", dir=work)
        to_chromium, self.out = os.pipe()
        self.inp, from_chromium = os.pipe()
        # Numbers above 4, so that the shell's redirections cannot clash.
        ends = [fcntl.fcntl(fd, fcntl.F_DUPFD, 10) for fd in (to_chromium, from_chromium)]
        for fd in (to_chromium, from_chromium):
            os.close(fd)
        shell = 'exec "$@" 3<&%d 4>&%d %d<&- %d>&-' % (ends[0], ends[1], ends[0], ends[1])
        self.proc = subprocess.Popen(
            ["bash", "-c", shell, "bash", CHROMIUM] + CHROMIUM_FLAGS +
            ["--user-data-dir=" + self.profile, "--remote-debugging-pipe"] + list(args),
            stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
            pass_fds=ends)
        for fd in ends:
            os.close(fd)
        self.buffer = b""
        self.events = []
        self.next_id = 0

    def _read(self, deadline):
        while b"\0" not in self.buffer:
            left = deadline - time.time()
            if left <= 0 or not select.select([self.inp], [], [], left)[0]:
                raise TimeoutError("no answer from Chromium")
            chunk = os.read(self.inp, 1 << 16)
            if not chunk:
                raise EOFError("Chromium closed its pipe")
            self.buffer += chunk
        message, self.buffer = self.buffer.split(b"\0", 1)
        return json.loads(message)

    def call(self, method, deadline, session=None, **params):
        self.next_id += 1
        message = {"id": self.next_id, "method": method, "params": params}
        if session:
            message["sessionId"] = session
        os.write(self.out, json.dumps(message).encode() + b"\0")
        while True:
            m = self._read(deadline)
            if m.get("id") == self.next_id:
                if "error" in m:
                    raise RuntimeError("%s: %s" % (method, m["error"].get("message")))
                return m.get("result", {})
            self.events.append(m)

    def wait_event(self, method, session, deadline):
        while True:
            for i, m in enumerate(self.events):
                if m.get("method") == method and m.get("sessionId") == session:
                    return self.events.pop(i)
            self.events.append(self._read(deadline))

    def close(self):
        try:
            os.write(self.out, json.dumps({"id": 0, "method": "Browser.close"}).encode() + b"\0")
            self.proc.wait(timeout=10)
        except (OSError, subprocess.TimeoutExpired):
            self.proc.kill()
            self.proc.wait()
        os.close(self.out)
        os.close(self.inp)
        shutil.rmtree(self.profile, ignore_errors=True)


def render(server, pages, work):
    """Each page as Chromium shows it, a Rendered, or None when it did not load,
    in a dict by page; one browser, one new tab a page."""
    out = {}
    browser = None
    try:
        for page in pages:
            deadline = time.time() + PAGE_TIMEOUT
            browser = browser or DevTools(work)
            try:
                target = browser.call("Target.createTarget", deadline,
                                      url="about:blank")["targetId"]
                session = browser.call("Target.attachToTarget", deadline, targetId=target,
                                       flatten=True)["sessionId"]
                browser.call("Page.enable", deadline, session)
                browser.call("Page.navigate", deadline, session, url=server.url(page))
                browser.wait_event("Page.loadEventFired", session, deadline)
                result = browser.call("Runtime.evaluate", deadline, session,
                                      expression=SHOWN_SCRIPT, awaitPromise=True,
                                      returnByValue=True)
                value = json.loads(result["result"]["value"])
                out[page] = Rendered(value["dom"], value["hidden"])
                browser.call("Target.closeTarget", deadline, targetId=target)
                browser.events.clear()
            except (TimeoutError, EOFError, RuntimeError, KeyError, ValueError):
                out[page] = None
                browser.close()  # a fresh browser for the next page
                browser = None
    finally:
        if browser:
            browser.close()
    return out


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
        dumps = render(server, pages, work)
        sizes = album_sizes(PICTURES, ALBUM_SIZE)
        passed, failures, hidden = check_site(site, dumps, sizes, ALBUM_SIZE)
        # Nothing the pages request may fail; Chromium asks for the site's
        # icon by itself.
        requests = failed_requests(server.log_text())
        for path, status in requests:
            if path != "favicon.ico":
                failures.append("HTTP %d for /%s" % (status, path))
        print("browser check: %d pictures, albums of %d, site in %s" % (PICTURES, ALBUM_SIZE, site))
        print("  pages loaded: %d of %d" % (sum(1 for d in dumps.values() if d), len(pages)))
        print("  references to places past the end of the last album, not shown: %d" % len(hidden))
        for d in hidden:
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
