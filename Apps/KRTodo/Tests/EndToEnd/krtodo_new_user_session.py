#!/usr/bin/env python3
"""KRTodo as a new user tries it, with real keys on an X server of its own.

1. Characters outside the Basic Multilingual Plane arrive whole: "a🎉b" and a family joined by zero-width
   joiners are typed into titles.
2. Ctrl+N then Escape leaves no empty item behind.
3. Escape then Down edits the item below the one that was edited; a letter typed there lands in it.
4. In a list of 200 items (pasted from the clipboard), Page Down scrolls the window by a page and the
   title being edited stays edited: a letter typed afterwards lands in it.
5. Tab goes from the edited title to the checklists' sidebar and Tab again comes back to the list, whose
   keys work: Return adds an item below the one Tab selected, and it is typed into. A click on the empty
   area below the rows ends that editing: letters typed afterwards land nowhere.
Every title is read from the dump the app writes as it quits.

Exits 77 (skipped) only when Xvfb, xdotool, xwd or xclip is missing.
"""

import os
import sys

from krtodo_clipboard_session import App, put_text_on_clipboard
from krtodo_keyboard_session import (SessionError, XSession, capture_window, decode_xwd, keys, run_main,
                                     type_text, wait_until, xdotool)

PARTY = "a\U0001F389b"
FAMILY = "\U0001F469\u200D\U0001F469\u200D\U0001F467"
LONG_LIST = 200


def scroll_bar_strip(env, window):
    """The pixels of the window's right edge, where the scroll bar is (the caret never is)."""
    width, height, rgb = decode_xwd(capture_window(env, window))
    return [rgb[(y * width + x) * 3:(y * width + x) * 3 + 3]
            for y in range(height) for x in range(width - 12, width)]


def window_size(env, window):
    geometry = dict(line.split("=", 1) for line in xdotool(env, "getwindowgeometry", "--shell", window).splitlines())
    return int(geometry["WIDTH"]), int(geometry["HEIGHT"])


def titles(items):
    return [title for _, title in items]


def run_session(app_path, out_dir):
    with XSession(out_dir, "new-user-session.log") as session:
        app = session.launch(
            lambda env: App(app_path, env, session.log, os.path.join(out_dir, "KRTodo-new-user.txt"),
                            "--empty"))
        env = session.env
        app.focus()
        keys(env, "ctrl+n")
        type_text(env, PARTY, delay_ms=150)
        keys(env, "Return")
        type_text(env, FAMILY, delay_ms=150)
        keys(env, "Return")
        type_text(env, "third")
        # An item made and left empty goes away again.
        keys(env, "ctrl+n", "Escape")
        # The Escape above selected "third", the item the new one was inserted below; Up edits the family,
        # Escape selects it, and Down edits the item below it.
        keys(env, "Up", "Escape", "Down", "End")
        type_text(env, "!")
        items = app.quit_and_read_items()
        print("typed:", titles(items))
        if titles(items) != [PARTY, FAMILY, "third!"]:
            raise SessionError(f"expected {[PARTY, FAMILY, 'third!']}, got {titles(items)}")

        # Page Down in a long list.
        long_list = session.launch(
            lambda env: App(app_path, env, session.log, os.path.join(out_dir, "KRTodo-page-down.txt"),
                            "--empty"))
        put_text_on_clipboard(env, "".join(f"- item {number}\n" for number in range(1, LONG_LIST + 1)))
        long_list.focus()
        # The paste edits its last item; Ctrl+A twice, then Left, edits the first.
        keys(env, "ctrl+v")
        keys(env, "ctrl+a", "ctrl+a", "Left")
        # The edit of the first item scrolls the window back to the top: wait until it has.
        strips = []

        def still():
            strips.append(scroll_bar_strip(env, long_list.window))
            return len(strips) >= 3 and strips[-1] == strips[-2] == strips[-3]

        wait_until(still, "the window to stop scrolling")
        before = strips[-1]
        keys(env, "Next")
        wait_until(lambda: scroll_bar_strip(env, long_list.window) != before,
                   "Page Down to move the scroll bar")
        type_text(env, "#")
        items = long_list.quit_and_read_items()
        if len(items) != LONG_LIST or items[0][1] != "#item 1":
            raise SessionError(f"expected the first of {LONG_LIST} items to read '#item 1'; got "
                               f"{len(items)} items, the first {items[0] if items else None}")
        print(f"page down: {len(items)} items, the first is {items[0][1]!r}")

        # Tab round the window and back, then a click below the rows.
        round_trip = session.launch(
            lambda env: App(app_path, env, session.log, os.path.join(out_dir, "KRTodo-tab.txt"), "--empty"))
        round_trip.focus()
        keys(env, "ctrl+n")
        type_text(env, "one")
        keys(env, "Return")
        type_text(env, "two")
        # To the sidebar, and back into the list, which selects its first item.
        keys(env, "Tab", "Tab", "Return")
        type_text(env, "back")
        width, height = window_size(env, round_trip.window)
        xdotool(env, "mousemove", "--window", round_trip.window, str(width - 40), str(height - 40))
        xdotool(env, "click", "1")
        type_text(env, "zz")
        items = round_trip.quit_and_read_items()
        print("tab and click below:", titles(items))
        if titles(items) != ["one", "back", "two"]:
            raise SessionError(f"expected ['one', 'back', 'two'], got {titles(items)}")


def main():
    return run_main(__doc__, run_session, "new-user-session.log", ("Xvfb", "xdotool", "xwd", "xclip"))


if __name__ == "__main__":
    sys.exit(main())
