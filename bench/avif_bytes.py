#!/usr/bin/env python3
"""The bytes a browser loads for a site's pages with AVIF beside the web sizes
and without, for bench/avif_bytes.sh.

    avif_bytes.py BUILD_DIR TEMPLATES PHOTOS WORK

Builds two sites of the photographs in PHOTOS (JPEG files) with the runner
BUILD_DIR/bin/vetrina-foto-script and the template set TEMPLATES, one with
the sizes file as the set has it and one with "avif no" added, serves each on
127.0.0.1 and loads in headless Chromium, over --remote-debugging-pipe with
the browser check's helpers (scripts/browser_check.py), the first album's menu
page and a picture page at 390 and 1,280 pixels wide, with the cache off.
Prints the bytes each page loaded (bodies as sent, headers included, as
Chromium counts them) and one line:

    avif bytes: ratio X.XX (target <= 0.5)

the bytes with AVIF over the bytes without; or "avif bytes: skipped (...)"
when no page of the site with AVIF holds type="image/avif", as pages made
from a template set without <picture> elements do.
"""

import os
import shutil
import sys
import time

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "scripts"))
import browser_check as bc  # noqa: E402
from devtools import DevTools  # noqa: E402

PAGES = ["dir_0001/menu.htm", "dir_0001/img_002.htm"]
WIDTHS = [(390, 844), (1280, 800)]
TARGET = 0.5


def build(runner, templates, photos, work, avif):
    """Builds the site of the photographs; returns its folder."""
    prog = os.path.join(work, "prog")
    shutil.copytree(templates, prog)
    if not avif:
        with open(os.path.join(prog, "DIMENSIONI.TXT"), "a") as f:
            f.write("\navif no\n")
    c = os.path.join(work, "c")
    os.makedirs(os.path.join(c, "foto"))
    os.makedirs(os.path.join(c, "sito"))
    names = []
    for n, photo in enumerate(photos, 1):
        names.append("P%02d.JPG" % n)
        shutil.copyfile(photo, os.path.join(c, "foto", names[-1]))
    lines = ["drive C %s" % c, "drive P %s" % prog, "program P:\\", "start", "click Option2",
             "set txtMAX_N_FILES %d" % bc.ALBUM_SIZE, "set txtMAX_PER_RIGA %d" % bc.PER_ROW]
    lines += ["add C:\\foto\\%s" % name for name in names]
    lines += ["set txtNUM_FILE %d" % len(names), "set txtNOME_FILE_HTM C:\\sito\\index.htm",
              "click Command1"]
    script = os.path.join(work, "build.txt")
    with open(script, "w") as f:
        f.write("\n".join(lines) + "\n")
    r = bc.run([runner, script], cwd=work, timeout=900)
    if r.returncode != 0 or "ASK: Visualizzo la pagina creata" not in r.stdout:
        sys.stderr.write(r.stdout + r.stderr)
        raise SystemExit("avif bytes: the build did not finish")
    return os.path.join(c, "sito")


def loaded_bytes(server, page, width, height, work):
    """The bytes Chromium loaded for the page at that window size, every
    picture it shows included."""
    browser = DevTools(work)
    try:
        deadline = time.time() + bc.PAGE_TIMEOUT
        target = browser.call("Target.createTarget", deadline, url="about:blank")["targetId"]
        session = browser.call("Target.attachToTarget", deadline, targetId=target,
                               flatten=True)["sessionId"]
        browser.call("Network.enable", deadline, session)
        browser.call("Network.setCacheDisabled", deadline, session, cacheDisabled=True)
        browser.call("Emulation.setDeviceMetricsOverride", deadline, session, width=width,
                     height=height, deviceScaleFactor=1, mobile=width < 600)
        browser.call("Page.enable", deadline, session)
        browser.call("Page.navigate", deadline, session, url=server.url(page))
        browser.wait_event("Page.loadEventFired", session, deadline)
        browser.call("Runtime.evaluate", deadline, session, expression=bc.SHOWN_SCRIPT,
                     awaitPromise=True, returnByValue=True)
        time.sleep(0.5)  # the last responses' events
        browser.call("Runtime.evaluate", deadline, session, expression="1")
        return sum(m["params"].get("encodedDataLength", 0) for m in browser.events
                   if m.get("method") == "Network.loadingFinished"
                   and m.get("sessionId") == session)
    finally:
        browser.close()


def measure(site, work):
    server = bc.Server(site, os.path.join(work, "http.log"))
    try:
        sizes = {}
        for page in PAGES:
            for width, height in WIDTHS:
                sizes[(page, width)] = loaded_bytes(server, page, width, height, work)
        return sizes
    finally:
        server.stop()


def holds_avif(site):
    for page in bc.site_pages(site):
        with open(os.path.join(site, page), encoding="latin-1") as f:
            if 'type="image/avif"' in f.read():
                return True
    return False


def main(argv):
    if len(argv) != 4:
        print(__doc__.strip(), file=sys.stderr)
        return 2
    build_dir, templates, photos_dir, work = argv
    runner = os.path.join(build_dir, "bin", "vetrina-foto-script")
    photos = sorted(os.path.join(photos_dir, p) for p in os.listdir(photos_dir)
                    if p.lower().endswith((".jpg", ".jpeg")))
    totals = {}
    for avif in (True, False):
        name = "with" if avif else "without"
        folder = os.path.join(work, name)
        os.makedirs(folder)
        site = build(runner, templates, photos, folder, avif)
        if avif and not holds_avif(site):
            print('avif bytes: skipped (no page of the site holds type="image/avif")')
            return 0
        sizes = measure(site, folder)
        for (page, width), size in sorted(sizes.items()):
            print("%s AVIF: %s at %d px: %d bytes" % (name, page, width, size))
        totals[avif] = sum(sizes.values())
    print("avif bytes: ratio %.2f (target <= %s)"
          % (totals[True] / max(totals[False], 1), TARGET))
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
