#!/usr/bin/env python3
"""KRTodo's copy and paste through the X clipboard, with two KRTodo processes and another program.

On one X server (Xvfb):
1. KRTodo A starts with its sample checklist (--sample) (open, completed and canceled items); Ctrl+A twice selects
   every item, and Ctrl+C copies them.
2. KRTodo B starts empty; Ctrl+V pastes A's items with their statuses, then B quits and writes its items.
3. xclip, another program, puts three lines of text with "-" and "+" markers on the clipboard; KRTodo C
   (empty) pastes them as three items. Then C makes a new item, types "Call ", and a single line from
   xclip ("Sam") pasted while the title is edited goes into the title.
Every title and status is read from the dumps the apps write as they quit.

Exits 77 (skipped) only when Xvfb, xdotool or xclip is missing.
"""

import os
import subprocess
import sys

from krtodo_keyboard_session import (SessionError, XSession, find_window, fresh_database, keys, run_main,
                                     type_text, wait_until, xdotool)

SAMPLE = [
    ("completed", "Renew passport"),
    ("completed", "Book flights to Lisbon"),
    ("open", "Ask Sam whether the flat in Alfama is still free for the second week of May; if it isn't, "
             "find two others near a tram stop, with a kitchen and a washing machine"),
    ("open", "Buy a travel adapter"),
    ("completed", "Tell the bank the card will be used abroad"),
    ("canceled", "Reserve a table at the fado place Rita recommended"),
    ("open", "Download offline maps of Lisbon and Sintra"),
    ("open", "Print the boarding passes and the car rental confirmation and put them in the blue folder "
             "with the insurance papers"),
    ("open", "Ask the neighbours to water the plants and take in the post"),
    ("completed", "Charge the camera batteries"),
    ("open", "Pack sunscreen, hats and the good walking shoes"),
    ("open", "Set an out-of-office reply"),
]

FROM_TEXT = [
    ("open", "Water the plants"),
    ("completed", "Pay the rent"),
    ("open", "Book a dentist appointment"),
    ("open", "Call Sam"),
]


class App:
    """One KRTodo process on the session's display, with its window once it is mapped."""

    def __init__(self, path, env, log, dump_path, *options, database=None):
        """Each app keeps its own database beside its dump, new unless one is given (to start again on
        what an earlier app left)."""
        if os.path.exists(dump_path):
            os.remove(dump_path)
        self.dump_path = dump_path
        self.database = database or fresh_database(os.path.splitext(dump_path)[0] + ".sqlite")
        self.env = env
        self.process = subprocess.Popen([path, "--database", self.database, "--dump-file", dump_path, *options],
                                        env=env, stdout=log, stderr=log)
        self.window = wait_until(self._find_window, f"the window of KRTodo {options}")[0]

    def _find_window(self):
        return find_window(self.env, self.process)

    def focus(self):
        xdotool(self.env, "windowfocus", "--sync", self.window)
        wait_until(lambda: xdotool(self.env, "getwindowfocus") == self.window, "the focus on KRTodo")

    def quit_and_read_items(self):
        self.focus()
        keys(self.env, "ctrl+q")
        status = wait_until(lambda: self.process.poll() is not None and [self.process.returncode],
                            "KRTodo to quit")[0]
        if status != 0:
            raise SessionError(f"KRTodo exited with status {status}")
        with open(self.dump_path, encoding="utf-8") as dump:
            return [tuple(line.split("\t", 1)) for line in dump.read().splitlines()]



def put_text_on_clipboard(env, text):
    """xclip owns the clipboard (it stays in the background until another program takes it)."""
    subprocess.run(["xclip", "-selection", "clipboard", "-i"], input=text.encode(), env=env, check=True,
                   timeout=30)
    wait_until(lambda: subprocess.run(["xclip", "-selection", "clipboard", "-o"], env=env,
                                      capture_output=True, timeout=30).stdout == text.encode(),
               "the text on the clipboard")


def expect_items(name, items, expected):
    print(f"{name}:")
    for status, title in items:
        print(f"  {status}\t{title}")
    if items != expected:
        raise SessionError(f"{name}: expected {expected}, got {items}")


def run_session(app_path, out_dir):
    with XSession(out_dir, "clipboard-session.log") as session:
        log = session.log

        # Items with their statuses, from one KRTodo to another.
        source = session.launch(
            lambda env: App(app_path, env, log, os.path.join(out_dir, "KRTodo-copied-from.txt"), "--sample"))
        env = session.env
        source.focus()
        # The first Select All takes the edited title, the second every item.
        keys(env, "ctrl+a", "ctrl+a")
        keys(env, "ctrl+c")
        target = session.launch(
            lambda env: App(app_path, env, log, os.path.join(out_dir, "KRTodo-pasted-into.txt"), "--empty"))
        target.focus()
        keys(env, "ctrl+v")
        expect_items("pasted from another KRTodo", target.quit_and_read_items(), SAMPLE)
        expect_items("copied from", source.quit_and_read_items(), SAMPLE)

        # Text from another program, then a single line typed into an edited title.
        text_target = session.launch(
            lambda env: App(app_path, env, log, os.path.join(out_dir, "KRTodo-pasted-text.txt"), "--empty"))
        put_text_on_clipboard(env, "- Water the plants\n  +  Pay the rent\nBook a dentist appointment\n")
        text_target.focus()
        # The last pasted item is edited; Item > Insert Below adds one after it.
        keys(env, "ctrl+v")
        keys(env, "ctrl+n")
        type_text(env, "Call ")
        put_text_on_clipboard(env, "Sam")
        text_target.focus()
        keys(env, "ctrl+v")
        expect_items("pasted text", text_target.quit_and_read_items(), FROM_TEXT)

def main():
    return run_main(__doc__, run_session, "clipboard-session.log", ("Xvfb", "xdotool", "xclip"))


if __name__ == "__main__":
    sys.exit(main())
