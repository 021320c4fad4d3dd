#!/usr/bin/env python3
"""KRTodo driven by real keys: the app runs on an X server of its own (Xvfb) and xdotool types.

Starting with no items, the session writes three items, splits one title with Return, merges two titles
with Backspace, moves an item with Ctrl+Down and Ctrl+Up, marks one completed with the Item menu's Ctrl+D,
ends editing with Escape, captures the window and quits with Ctrl+Q. The app writes its items to a file as
it quits, and every title and status is checked against what the keys should have made.

Nothing waits a fixed time: the X server reports its display when it is ready, the window, the focus, the
capture and the exit are polled against a deadline, and xdotool waits for the focus to arrive.

Exits 77 (skipped) only when Xvfb or xdotool is missing.
"""

import argparse
import os
import shutil
import struct
import subprocess
import sys
import tempfile
import time
import zlib

SKIPPED = 77
DEADLINE_SECONDS = 60.0
POLL_SECONDS = 0.05

EXPECTED = [
    ("open", "Call Sam"),
    ("completed", "Buy milk and eggs"),
    ("open", "Write report"),
    ("open", "Send invoice"),
]


class SessionError(Exception):
    pass


def wait_until(condition, what, deadline_seconds=DEADLINE_SECONDS):
    """Polls condition until it answers something true, or fails after the deadline."""
    deadline = time.monotonic() + deadline_seconds
    while True:
        result = condition()
        if result:
            return result
        if time.monotonic() > deadline:
            raise SessionError(f"timed out waiting for {what}")
        time.sleep(POLL_SECONDS)


def start_x_server(log):
    """Starts Xvfb on a display it picks itself and answers (process, display) once it accepts clients."""
    read_end, write_end = os.pipe()
    server = subprocess.Popen(
        # -noreset: a server resets when its last client leaves, and an app connecting meanwhile fails.
        ["Xvfb", "-displayfd", str(write_end), "-screen", "0", "800x700x24", "-nolisten", "tcp", "-noreset"],
        pass_fds=(write_end,), stdout=log, stderr=log)
    os.close(write_end)
    number = b""
    # Xvfb writes the display number once it is ready; the read ends at the newline or when it exits.
    while not number.endswith(b"\n"):
        chunk = os.read(read_end, 16)
        if not chunk:
            break
        number += chunk
    os.close(read_end)
    if not number.strip():
        server.kill()
        raise SessionError("Xvfb did not report a display")
    return server, ":" + number.decode().strip()


# Where KRTodo keeps its database unless --database says otherwise: never the user's own during a test.
TEST_DATA_HOME = tempfile.mkdtemp(prefix="krtodo-data-")


def fresh_database(path):
    """path with no database, nor its log, index or lock beside it: KRTodo makes a new one there."""
    for suffix in ("", "-wal", "-shm", ".lock"):
        if os.path.exists(path + suffix):
            os.remove(path + suffix)
    return path


def app_environment(display):
    """The environment of programs on the session's display."""
    env = dict(os.environ)
    env["XDG_DATA_HOME"] = TEST_DATA_HOME
    env["DISPLAY"] = display
    env["QT_QPA_PLATFORM"] = "xcb"
    env.pop("WAYLAND_DISPLAY", None)
    # Under AddressSanitizer: libxkbcommon-x11 hands strndup buffers that end without a NUL, which the
    # strict string checks report as overflows inside the system library before the window exists.
    if env.get("ASAN_OPTIONS"):
        env["ASAN_OPTIONS"] += ":strict_string_checks=0"
    return env


class XSession:
    """An X server of its own and the apps started on it; leaving it ends them all."""

    def __init__(self, out_dir, log_name):
        os.makedirs(out_dir, exist_ok=True)
        self.log = open(os.path.join(out_dir, log_name), "w")
        self.apps = []
        self.server = None
        self.env = None

    def __enter__(self):
        self.server, display = start_x_server(self.log)
        self.env = app_environment(display)
        return self

    def launch(self, make_app):
        """make_app(env) started on the session's display. Servers starting and stopping at the same
        moment can race for a display, so an app that ends before its window shows, when it is the
        session's first, is tried again on a new server."""
        for attempt in range(3):
            try:
                app = make_app(self.env)
                self.apps.append(app)
                return app
            except SessionError:
                if self.apps or attempt == 2:
                    raise
                print("KRTodo could not start on this display; trying another")
                self.server.terminate()
                self.server.wait()
                self.server, display = start_x_server(self.log)
                self.env = app_environment(display)
        raise SessionError("KRTodo could not start")

    def __exit__(self, *exception):
        for app in self.apps:
            if app.process.poll() is None:
                app.process.kill()
                app.process.wait()
        self.server.terminate()
        self.server.wait()
        self.log.close()
        return False


def xdotool(env, *arguments, timeout=DEADLINE_SECONDS):
    result = subprocess.run(["xdotool", *arguments], env=env, capture_output=True, text=True,
                            timeout=timeout)
    if result.returncode != 0:
        raise SessionError(f"xdotool {' '.join(arguments)} failed: {result.stderr.strip()}")
    return result.stdout.strip()


def keys(env, *names):
    xdotool(env, "key", "--clearmodifiers", *names)


def type_text(env, text, delay_ms=None):
    # Characters missing from the keyboard map are typed by remapping a spare key for each; a longer delay
    # lets the app see each new mapping before the key that uses it.
    delay = ["--delay", str(delay_ms)] if delay_ms is not None else []
    xdotool(env, "type", "--clearmodifiers", *delay, text)


# Capture ---------------------------------------------------------------------------------------------------

def capture_window(env, window):
    """The window's contents as an XWD dump."""
    result = subprocess.run(["xwd", "-silent", "-id", window], env=env, capture_output=True,
                            timeout=DEADLINE_SECONDS)
    if result.returncode != 0:
        raise SessionError("xwd failed: " + result.stderr.decode(errors="replace").strip())
    return result.stdout


def decode_xwd(data):
    """Decodes an XWD dump of a true-colour window (ZPixmap, 24 or 32 bits per pixel)."""
    header = struct.unpack(">25I", data[:100])
    header_size, version, pixmap_format, depth, width, height = header[:6]
    byte_order, bits_per_pixel, bytes_per_line = header[7], header[11], header[12]
    red_mask, green_mask, blue_mask = header[14], header[15], header[16]
    colormap_entries = header[19]
    if version != 7 or pixmap_format != 2 or bits_per_pixel not in (24, 32):
        raise SessionError(f"unexpected xwd image (format {pixmap_format}, {bits_per_pixel} bpp)")
    offset = header_size + 12 * colormap_entries
    step = bits_per_pixel // 8
    order = "<" if byte_order == 0 else ">"

    def shift_of(mask):
        return (mask & -mask).bit_length() - 1

    shifts = [shift_of(mask) for mask in (red_mask, green_mask, blue_mask)]
    pixels = bytearray()
    for row in range(height):
        line = data[offset + row * bytes_per_line: offset + row * bytes_per_line + width * step]
        for column in range(width):
            chunk = line[column * step: column * step + step]
            value = int.from_bytes(chunk, "little" if order == "<" else "big")
            pixels += bytes(((value & mask) >> shift) & 0xFF
                            for mask, shift in zip((red_mask, green_mask, blue_mask), shifts))
    return width, height, bytes(pixels)


def write_png(path, width, height, rgb):
    def chunk(kind, payload):
        body = kind + payload
        return struct.pack(">I", len(payload)) + body + struct.pack(">I", zlib.crc32(body) & 0xFFFFFFFF)

    rows = b"".join(b"\x00" + rgb[row * width * 3:(row + 1) * width * 3] for row in range(height))
    with open(path, "wb") as png:
        png.write(b"\x89PNG\r\n\x1a\n")
        png.write(chunk(b"IHDR", struct.pack(">IIBBBBB", width, height, 8, 2, 0, 0, 0)))
        png.write(chunk(b"IDAT", zlib.compress(rows, 6)))
        png.write(chunk(b"IEND", b""))


def capture_when_still(env, window, path):
    """Captures the window once three captures in a row agree (the app has drawn its last change)."""
    if not shutil.which("xwd"):
        print("xwd is missing: no screenshot")
        return
    captures = []

    def still():
        captures.append(capture_window(env, window))
        return len(captures) >= 3 and captures[-1] == captures[-2] == captures[-3]

    wait_until(still, "the window to stop changing")
    width, height, rgb = decode_xwd(captures[-1])
    write_png(path, width, height, rgb)
    print(f"screenshot: {path} ({width}x{height})")


# Session ---------------------------------------------------------------------------------------------------

def find_window(env, app_process):
    """The KRTodo window once it is mapped; fails at once when the app has ended. Found by the process,
    since its title names the checklist."""
    if app_process.poll() is not None:
        raise SessionError(f"KRTodo ended early with status {app_process.returncode}")
    found = subprocess.run(["xdotool", "search", "--all", "--onlyvisible", "--pid", str(app_process.pid),
                            "--name", "KRTodo$"], env=env, capture_output=True, text=True,
                           timeout=DEADLINE_SECONDS)
    return found.stdout.split()


def run_session(app, out_dir):
    os.makedirs(out_dir, exist_ok=True)
    dump_path = os.path.join(out_dir, "KRTodo-dump.txt")
    screenshot_path = os.path.join(out_dir, "KRTodo-keyboard-session.png")
    for stale in (dump_path, screenshot_path):
        if os.path.exists(stale):
            os.remove(stale)

    log = open(os.path.join(out_dir, "session.log"), "w")
    # Servers starting and stopping at the same moment can race for a display (one server's clean-up can
    # take the socket of the next one on the same number): another attempt picks another display.
    server = app_process = None
    try:
        for attempt in range(3):
            try:
                server, display = start_x_server(log)
            except SessionError:
                if attempt == 2:
                    raise
                continue
            env = app_environment(display)
            database = fresh_database(os.path.join(out_dir, "KRTodo-keyboard-session.sqlite"))
            app_process = subprocess.Popen([app, "--empty", "--database", database, "--dump-file", dump_path],
                                           env=env, stdout=log, stderr=log)
            try:
                window = wait_until(lambda: find_window(env, app_process), "the KRTodo window")[0]
                break
            except SessionError:
                if app_process.poll() is None or attempt == 2:
                    raise
                print(f"KRTodo could not start on display {display}; trying another display")
                server.terminate()
                server.wait()
                server = None

        xdotool(env, "windowfocus", "--sync", window)
        wait_until(lambda: xdotool(env, "getwindowfocus") == window, "the focus on KRTodo")

        # Three items, written with Return between them (Item > Insert Below makes the first).
        keys(env, "ctrl+n")
        type_text(env, "Buy milk")
        keys(env, "Return")
        type_text(env, " and eggs")
        keys(env, "Return")
        type_text(env, "Call Sam")
        keys(env, "Return")
        # Two titles typed as one, split with Return after "Write report".
        type_text(env, "Write reportSend invoice")
        keys(env, *["Left"] * len("Send invoice"))
        keys(env, "Return")
        # Up to " and eggs", to its start, and Backspace merges it into "Buy milk".
        keys(env, "Up", "Up", "Up", "Home", "BackSpace")
        # "Buy milk and eggs" moves down two rows and back up one.
        keys(env, "ctrl+Down", "ctrl+Down", "ctrl+Up")
        # Item > Toggle Completed.
        keys(env, "ctrl+d")
        # No caret blinking in the picture.
        keys(env, "Escape")
        capture_when_still(env, window, screenshot_path)
        keys(env, "ctrl+q")

        status = wait_until(lambda: app_process.poll() is not None and [app_process.returncode],
                            "KRTodo to quit")[0]
        if status != 0:
            raise SessionError(f"KRTodo exited with status {status}")
        if not os.path.exists(dump_path):
            raise SessionError("KRTodo wrote no dump")
        with open(dump_path, encoding="utf-8") as dump:
            lines = dump.read().splitlines()
        items = [tuple(line.split("\t", 1)) for line in lines]
        print("items:")
        for status_name, title in items:
            print(f"  {status_name}\t{title}")
        if items != EXPECTED:
            raise SessionError(f"expected {EXPECTED}, got {items}")
    finally:
        if app_process and app_process.poll() is None:
            app_process.kill()
            app_process.wait()
        if server:
            server.terminate()
            server.wait()
        log.close()


def run_main(description, run_session, log_name, tools=("Xvfb", "xdotool")):
    """The command line of a session: --app and --out; exits 77 when a tool is missing, 1 on a failure."""
    parser = argparse.ArgumentParser(description=description)
    parser.add_argument("--app", required=True, help="the KRTodo executable")
    parser.add_argument("--out", required=True, help="where the dumps, the screenshot and the log go")
    arguments = parser.parse_args()

    missing = [tool for tool in tools if not shutil.which(tool)]
    if missing:
        print("skipped: missing " + ", ".join(missing))
        return SKIPPED
    try:
        run_session(arguments.app, arguments.out)
    except (SessionError, subprocess.TimeoutExpired, subprocess.CalledProcessError, OSError) as error:
        print(f"FAILED: {error}")
        log_path = os.path.join(arguments.out, log_name)
        if os.path.exists(log_path):
            with open(log_path, encoding="utf-8", errors="replace") as log:
                print(log.read()[-4000:])
        return 1
    print("passed")
    return 0


def main():
    return run_main(__doc__, run_session, "session.log")


if __name__ == "__main__":
    sys.exit(main())
