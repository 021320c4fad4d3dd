#!/usr/bin/env python3
"""KRTodo keeps what was typed through a crash, and keeps what was undone, with real keys on Xvfb.

1. KRTodo starts on a new database with no items. Three items are typed (the third as two titles, split
   with Return), one more is typed after them, and one is completed with Ctrl+D. The database file itself is
   read until it holds all of it (structural changes are committed before the next key, typing a moment
   after the last keystroke); then KRTodo is killed with SIGKILL.
2. KRTodo starts again on the same file (taking over the lock the killed one left). A second KRTodo on the
   same file says in a dialog and on stderr that it is already open, and exits 1 once the dialog is
   answered, the file's bytes unchanged. The window is moved and resized, and KRTodo quits: its dump holds
   every item.
3. KRTodo starts again: Item > Insert at Bottom adds "Extra", Return adds an item below it, "More" is typed
   into that, Ctrl+D completes it and Ctrl+Up moves it up; then Ctrl+Z three times takes back the move, the
   status and the typing. KRTodo quits and starts once more: the dump is the undone state, the item Return
   made still there and empty.

Exits 77 (skipped) only when Xvfb or xdotool is missing.
"""

import hashlib
import os
import signal
import sqlite3
import subprocess
import sys

from krtodo_clipboard_session import App, expect_items
from krtodo_keyboard_session import (DEADLINE_SECONDS, SessionError, XSession, fresh_database, keys,
                                     run_main, type_text, wait_until, xdotool)

TYPED = [
    ("open", "Buy milk"),
    ("completed", "Call Sam"),
    ("open", "Write report"),
    ("open", "Send invoice"),
    ("open", "Pay rent"),
]
UNDONE = TYPED + [("open", "Extra"), ("open", "")]


def stored_items(database):
    """The items as the file holds them now, read the way any other SQLite reader would."""
    try:
        connection = sqlite3.connect(f"file:{database}?mode=ro", uri=True, timeout=1.0)
    except sqlite3.Error:
        return None
    try:
        rows = connection.execute("SELECT status, title FROM items ORDER BY position").fetchall()
    except sqlite3.Error:
        return None
    finally:
        connection.close()
    names = {0: "open", 1: "completed", 2: "canceled"}
    return [(names.get(status, "open"), title) for status, title in rows]


def digest(path):
    with open(path, "rb") as file:
        return hashlib.sha256(file.read()).hexdigest()


def expect_already_open(app_path, env, database):
    """A second KRTodo on a database another one holds: a dialog and a line on stderr, exit status 1, and
    the file as it was."""
    before = digest(database)
    second = subprocess.Popen([app_path, "--database", database], env=env, stdout=subprocess.PIPE,
                              stderr=subprocess.PIPE, text=True)
    def answer_dialog():
        # The dialog's window can come and go while it is set up: Return goes to whichever one shows.
        for window in find_window_of(env, second):
            focused = subprocess.run(["xdotool", "windowfocus", "--sync", window], env=env, capture_output=True,
                                     timeout=DEADLINE_SECONDS)
            if focused.returncode == 0 and xdotool(env, "getwindowfocus") == window:
                keys(env, "Return")
                break
        return second.poll() is not None

    try:
        wait_until(answer_dialog, "the second KRTodo to show its dialog and end once it is answered")
        _, stderr = second.communicate(timeout=DEADLINE_SECONDS)
    finally:
        if second.poll() is None:
            second.kill()
            second.wait()
    line = f'KRTodo: "{database}" is already open in another KRTodo.'
    if second.returncode != 1 or line not in stderr:
        raise SessionError(f"a second KRTodo: status {second.returncode}, stderr {stderr!r}")
    if digest(database) != before:
        raise SessionError("a second KRTodo changed the file")
    print("a second KRTodo said: " + stderr.strip().splitlines()[-1])


def find_window_of(env, process):
    if process.poll() is not None:
        return []
    found = subprocess.run(["xdotool", "search", "--all", "--onlyvisible", "--pid", str(process.pid)], env=env,
                           capture_output=True, text=True, timeout=DEADLINE_SECONDS)
    return found.stdout.split()


def window_geometry(env, window):
    """The window's position and size, as xdotool reports them."""
    values = {}
    for line in xdotool(env, "getwindowgeometry", "--shell", window).splitlines():
        name, _, value = line.partition("=")
        values[name] = int(value) if value.lstrip("-").isdigit() else value
    return values["X"], values["Y"], values["WIDTH"], values["HEIGHT"]


def run_session(app_path, out_dir):
    database = fresh_database(os.path.join(out_dir, "KRTodo-persistence.sqlite"))
    with XSession(out_dir, "persistence-session.log") as session:
        log = session.log
        typed = session.launch(lambda env: App(app_path, env, log, os.path.join(out_dir, "KRTodo-killed.txt"),
                                               "--empty", database=database))
        env = session.env
        typed.focus()
        keys(env, "ctrl+n")
        type_text(env, "Buy milk")
        keys(env, "Return")
        type_text(env, "Call Sam")
        keys(env, "Return")
        type_text(env, "Write reportSend invoice")
        keys(env, *["Left"] * len("Send invoice"))
        keys(env, "Return")
        keys(env, "End", "Return")
        type_text(env, "Pay rent")
        # Up to "Call Sam" and Item > Toggle Completed.
        keys(env, "Up", "Up", "Up", "ctrl+d")
        wait_until(lambda: stored_items(database) == TYPED, f"the file to hold {TYPED}")
        typed.process.send_signal(signal.SIGKILL)
        typed.process.wait()
        print("killed with SIGKILL after the file held every item")

        reopened = session.launch(lambda env: App(app_path, env, log,
                                                  os.path.join(out_dir, "KRTodo-after-kill.txt"),
                                                  database=database))
        expect_already_open(app_path, env, database)
        xdotool(env, "windowmove", "--sync", reopened.window, "40", "30")
        xdotool(env, "windowsize", "--sync", reopened.window, "700", "500")
        placed = window_geometry(env, reopened.window)
        print(f"window placed at {placed}")
        expect_items("after the kill", reopened.quit_and_read_items(), TYPED)

        undoing = session.launch(lambda env: App(app_path, env, log, os.path.join(out_dir, "KRTodo-undoing.txt"),
                                                 database=database))
        undoing.focus()
        keys(env, "ctrl+alt+n")
        type_text(env, "Extra")
        keys(env, "Return")
        type_text(env, "More")
        keys(env, "ctrl+d", "ctrl+Up")
        wait_until(lambda: stored_items(database) == TYPED + [("completed", "More"), ("open", "Extra")],
                   "the file to hold the completed More moved up")
        keys(env, "ctrl+z", "ctrl+z", "ctrl+z")
        expect_items("undone, as the app quits", undoing.quit_and_read_items(), UNDONE)

        restarted = session.launch(lambda env: App(app_path, env, log,
                                                   os.path.join(out_dir, "KRTodo-undone.txt"), database=database))
        reopened_at = window_geometry(env, restarted.window)
        if reopened_at != placed:
            raise SessionError(f"the window reopened at {reopened_at}, not at {placed}")
        expect_items("undone, after a restart", restarted.quit_and_read_items(), UNDONE)


def main():
    return run_main(__doc__, run_session, "persistence-session.log")


if __name__ == "__main__":
    sys.exit(main())
