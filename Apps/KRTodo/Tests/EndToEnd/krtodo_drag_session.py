#!/usr/bin/env python3
"""KRTodo's rows reordered by dragging their handles with a real pointer, on an X server of its own.

1. Five items typed into an empty KRTodo. The handle of "one" is pressed and moved down three rows in
   several steps (a screenshot is taken while the row is lifted), then released: "one" lands fourth.
2. Two items selected with the keyboard are dragged together by the handle of the first of them.
3. In a window shorter than its list, the first item's handle is pressed and held at the bottom edge of the
   window: the list scrolls by itself until the end shows, and the release drops the item last.
The orders are read from the dumps the app writes as it quits.

Where the rows are is read from the window itself: Escape leaves the item that was edited selected, and a
selected row is the one row drawn with a fill, so a capture of the window finds its top and height.

Exits 77 (skipped) only when Xvfb, xdotool or xwd is missing.
"""

import os
import sys

from krtodo_clipboard_session import App
from krtodo_keyboard_session import (SessionError, XSession, capture_window, decode_xwd, keys, run_main,
                                     type_text, wait_until, write_png, xdotool)

# Where a row's handle is, from the row's top right corner: the handle is 20 points wide and 16 high, 2 from
# the right edge and 6 below the top.
HANDLE_FROM_RIGHT = 12
HANDLE_FROM_TOP = 14
DRAG_STEPS = 6


def selected_row_extent(env, window):
    """The selected row's top, bottom and right edge (window coordinates), read from a capture; None while
    no row is drawn selected."""
    width, height, rgb = decode_xwd(capture_window(env, window))

    def is_fill(x, y):
        # The window's own background is grey; a selected row's fill is a light blue.
        offset = (y * width + x) * 3
        red, _, blue = rgb[offset:offset + 3]
        return blue > red + 8

    # Near the right edge: the rows are there, the checklists' sidebar (whose current row is drawn
    # selected too) is on the left.
    column = width - 60
    top = next((y for y in range(height) if is_fill(column, y)), None)
    if top is None:
        return None
    bottom = top
    while bottom + 1 < height and is_fill(column, bottom + 1):
        bottom += 1
    middle = (top + bottom) // 2
    right = max(x for x in range(width) if is_fill(x, middle))
    return top, bottom, right


def selected_row_after_escape(env, app):
    """Escape ends editing and leaves the edited item selected; its extent in the window."""
    keys(env, "Escape")
    return wait_until(lambda: selected_row_extent(env, app.window), "a selected row")


def row_geometry(env, app):
    """With the last of one-line rows edited: the top of the row above it, the distance from one row's top
    to the next one's, and the rows' right edge."""
    top, _, right = selected_row_after_escape(env, app)
    keys(env, "Up")
    above_top, _, _ = selected_row_after_escape(env, app)
    if above_top >= top:
        raise SessionError(f"the row above is not above: {above_top} >= {top}")
    return above_top, top - above_top, right


def drag(env, app, from_point, to_point, screenshot_path=None, hold_until_still=False):
    """Presses at from_point, moves to to_point in steps, and releases there."""
    x, y = from_point
    xdotool(env, "mousemove", "--window", app.window, str(x), str(y))
    xdotool(env, "mousedown", "1")
    for step in range(1, DRAG_STEPS + 1):
        step_x = x + (to_point[0] - x) * step // DRAG_STEPS
        step_y = y + (to_point[1] - y) * step // DRAG_STEPS
        xdotool(env, "mousemove", "--window", app.window, str(step_x), str(step_y))
    if screenshot_path or hold_until_still:
        captures = []

        def still():
            captures.append(capture_window(env, app.window))
            return len(captures) >= 3 and captures[-1] == captures[-2] == captures[-3]

        wait_until(still, "the dragged rows to come to rest")
        if screenshot_path:
            width, height, rgb = decode_xwd(captures[-1])
            write_png(screenshot_path, width, height, rgb)
            print(f"screenshot: {screenshot_path} ({width}x{height})")
    xdotool(env, "mouseup", "1")


def titles(items):
    return [title for _, title in items]


def run_session(app_path, out_dir):
    with XSession(out_dir, "drag-session.log") as session:
        log = session.log

        # One row, then two selected rows, down the list.
        app = session.launch(
            lambda env: App(app_path, env, log, os.path.join(out_dir, "KRTodo-dragged.txt"), "--empty"))
        env = session.env
        app.focus()
        keys(env, "ctrl+n")
        for index, title in enumerate(["one", "two", "three", "four", "five"]):
            if index:
                keys(env, "Return")
            type_text(env, title)
        # "four" is selected now: its top and the row pitch give every row's place.
        four_top, pitch, right = row_geometry(env, app)
        handle_x = right - HANDLE_FROM_RIGHT
        first_top = four_top - 3 * pitch
        handle_y = first_top + HANDLE_FROM_TOP
        drag(env, app, (handle_x, handle_y), (handle_x, handle_y + 3 * pitch),
             screenshot_path=os.path.join(out_dir, "KRTodo-mid-drag.png"))
        # "two" and "three" are now the first two rows: select both (the caret at the end of "two", then
        # Shift+Down) and drag them by the handle of "two" down two rows.
        keys(env, "ctrl+a", "ctrl+a", "Left", "End", "shift+Down")
        drag(env, app, (handle_x, handle_y), (handle_x, handle_y + 2 * pitch))
        dragged = app.quit_and_read_items()
        print("dragged:", titles(dragged))
        if titles(dragged) != ["four", "one", "two", "three", "five"]:
            raise SessionError(f"expected four, one, two, three, five; got {titles(dragged)}")

        # A list longer than its window: the first item held at the bottom edge goes all the way down.
        long_list = session.launch(
            lambda env: App(app_path, env, log, os.path.join(out_dir, "KRTodo-dragged-to-the-end.txt"),
                            "--sample"))
        xdotool(env, "windowsize", "--sync", long_list.window, "480", "220")
        long_list.focus()
        # The first item edited, then selected: where its handle is.
        keys(env, "ctrl+a", "ctrl+a", "Left")
        top, _, right = selected_row_after_escape(env, long_list)
        handle = (right - HANDLE_FROM_RIGHT, top + HANDLE_FROM_TOP)
        window_bottom = 219
        drag(env, long_list, handle, (handle[0], window_bottom), hold_until_still=True)
        items = long_list.quit_and_read_items()
        print("dragged to the end:", titles(items))
        if not items or titles(items)[-1] != "Renew passport" or len(items) != 12:
            raise SessionError(f"expected the first item last of 12; got {titles(items)}")

def main():
    return run_main(__doc__, run_session, "drag-session.log", ("Xvfb", "xdotool", "xwd"))


if __name__ == "__main__":
    sys.exit(main())
