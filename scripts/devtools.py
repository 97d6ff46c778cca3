"""Chromium driven through --remote-debugging-pipe, with only the standard
library: one browser, a new tab for each page, and scripts evaluated in it."""

import fcntl
import json
import os
import select
import shutil
import subprocess
import tempfile
import time

CHROMIUM = os.environ.get("CHROMIUM", "/usr/bin/chromium")
CHROMIUM_FLAGS = [
    "--headless", "--no-sandbox", "--disable-gpu", "--disable-quic", "--no-first-run",
    "--disable-background-networking", "--disable-component-update", "--disable-sync",
    "--hide-scrollbars",
]
PAGE_TIMEOUT = 90  # seconds for one page


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
        self.dialogs = []  # (session, message) of each alert, confirm or prompt a page opened

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
        message = json.loads(message)
        if message.get("method") == "Page.javascriptDialogOpening":
            # A dialog stops the page until it is answered: answer it at once, by an id
            # no call waits for, and keep it to be told.
            session = message.get("sessionId")
            self.dialogs.append((session, message["params"].get("message", "")))
            answer = {"id": -len(self.dialogs), "method": "Page.handleJavaScriptDialog",
                      "params": {"accept": True}, "sessionId": session}
            os.write(self.out, json.dumps(answer).encode() + b"\0")
        return message

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


def evaluate_pages(work, urls, scripts, viewport=None, ax_names=False):
    """Loads each url of the dict urls (by page) in a new tab and evaluates the
    scripts in it in order, each a JavaScript expression whose value, or the
    value of the promise it gives, is taken as JSON. Returns a dict by page of
    the list of values, or None for a page that did not load or whose script
    failed. viewport is (width, height, mobile) for the tab, else the
    browser's own. With ax_names the list ends with the names of the nodes of
    the page's accessibility tree, what a screen reader is given."""
    out = {}
    browser = None
    try:
        for page, url in urls.items():
            deadline = time.time() + PAGE_TIMEOUT
            browser = browser or DevTools(work)
            try:
                target = browser.call("Target.createTarget", deadline,
                                      url="about:blank")["targetId"]
                session = browser.call("Target.attachToTarget", deadline, targetId=target,
                                       flatten=True)["sessionId"]
                if viewport:
                    width, height, mobile = viewport
                    browser.call("Emulation.setDeviceMetricsOverride", deadline, session,
                                 width=width, height=height, deviceScaleFactor=1, mobile=mobile)
                browser.call("Page.enable", deadline, session)
                browser.call("Page.navigate", deadline, session, url=url)
                browser.wait_event("Page.loadEventFired", session, deadline)
                values = []
                for script in scripts:
                    result = browser.call("Runtime.evaluate", deadline, session,
                                          expression=script, awaitPromise=True,
                                          returnByValue=True)
                    if "exceptionDetails" in result:
                        raise RuntimeError("script failed: %s" % result["exceptionDetails"].get(
                            "exception", {}).get("description", "?"))
                    values.append(result["result"].get("value"))
                if ax_names:
                    tree = browser.call("Accessibility.getFullAXTree", deadline, session)
                    values.append([n.get("name", {}).get("value", "") for n in tree["nodes"]])
                ran = [m for s, m in browser.dialogs if s == session]
                if ran:
                    raise RuntimeError("a script of the page opened a dialog: " + ran[0])
                out[page] = values
                browser.call("Target.closeTarget", deadline, targetId=target)
                browser.events.clear()
            except (TimeoutError, EOFError, RuntimeError, KeyError, ValueError) as e:
                print("  %s: %s" % (page, e), flush=True)
                out[page] = None
                browser.close()  # a fresh browser for the next page
                browser = None
    finally:
        if browser:
            browser.close()
    return out
