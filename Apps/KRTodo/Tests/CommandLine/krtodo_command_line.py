#!/usr/bin/env python3
"""KRTodo's command line: --help and --version answer and exit 0; a wrong option or argument says what is
wrong on stderr, points at --help and exits 2 without opening a window (it exits long before any window
could appear, and writes no dump).

--database <path> keeps the items in that file: a new one gets the welcome checklist (written to the file,
read back by sqlite3 here). A file KRTodo can't use (not SQLite, another application's, written by a newer
KRTodo) is named on stderr with what is wrong, KRTodo exits 1, writes no dump, and the file's bytes are
unchanged. A read-only file opens read-only: stderr says so, the items show (in the dump), and the file's
bytes are unchanged. A file with two checklists opens on the one the window showed last. Without a display
KRTodo draws a screenshot instead of opening a window, so it ends by itself."""

import hashlib
import os
import sqlite3
import subprocess
import sys
import tempfile

OPTIONS = ["--help", "--version", "--database", "--empty", "--sample", "--dump", "--dump-file", "--screenshot"]


def run(app, *arguments, data_home=None):
    env = dict(os.environ)
    env["QT_QPA_PLATFORM"] = "offscreen"
    # Never the user's own database.
    env["XDG_DATA_HOME"] = data_home or tempfile.mkdtemp(prefix="krtodo-data-")
    return subprocess.run([app, *arguments], env=env, capture_output=True, text=True, timeout=60)


def digest(path):
    with open(path, "rb") as file:
        return hashlib.sha256(file.read()).hexdigest()


def check_databases(app):
    failures = []
    with tempfile.TemporaryDirectory() as directory:
        screenshot = os.path.join(directory, "shot.png")
        dump = os.path.join(directory, "dump.txt")

        # A new file: the welcome checklist, in the dump and in the file.
        new = os.path.join(directory, "new.sqlite")
        made = run(app, "--database", new, "--screenshot", screenshot, "--dump-file", dump)
        if made.returncode != 0:
            failures.append(f"a new database: exited {made.returncode}: {made.stderr!r}")
        else:
            with open(dump, encoding="utf-8") as lines:
                dumped = lines.read().splitlines()
            connection = sqlite3.connect(f"file:{new}?mode=ro", uri=True)
            stored = connection.execute("SELECT title FROM items ORDER BY position").fetchall()
            connection.close()
            if not dumped or not dumped[0].startswith("open\tWelcome to KRTodo"):
                failures.append(f"a new database does not start with the welcome checklist: {dumped}")
            if [title for (title,) in stored] != [line.split("\t", 1)[1] for line in dumped]:
                failures.append(f"the new database holds {stored}, the dump {dumped}")

        # Files KRTodo must leave alone.
        text = os.path.join(directory, "notes.txt")
        with open(text, "w", encoding="utf-8") as file:
            file.write("milk\neggs\n")
        foreign = os.path.join(directory, "photos.sqlite")
        connection = sqlite3.connect(foreign)
        connection.execute("CREATE TABLE photos (id INTEGER PRIMARY KEY, name TEXT)")
        connection.execute("INSERT INTO photos (name) VALUES ('beach.jpg')")
        connection.commit()
        connection.close()
        newer = os.path.join(directory, "newer.sqlite")
        connection = sqlite3.connect(newer)
        connection.execute("PRAGMA application_id = 1263686735")
        connection.execute("CREATE TABLE items (x)")
        connection.execute("PRAGMA user_version = 99")
        connection.commit()
        connection.close()
        for path, wording in ((text, "is not a KRTodo database"),
                              (foreign, "is not a KRTodo database"),
                              (newer, "was written by a newer KRTodo (schema version 99")):
            before = digest(path)
            if os.path.exists(dump):
                os.remove(dump)
            refused = run(app, "--database", path, "--screenshot", screenshot, "--dump-file", dump)
            name = os.path.basename(path)
            if refused.returncode != 1:
                failures.append(f"{name}: exited {refused.returncode}, not 1")
            line = f"KRTodo: \"{path}\" {wording}"
            if line not in refused.stderr:
                failures.append(f"{name}: stderr does not say {line!r}: {refused.stderr!r}")
            if digest(path) != before:
                failures.append(f"{name}: the file changed")
            if os.path.exists(dump):
                failures.append(f"{name}: KRTodo went on and wrote a dump")
            leftovers = [suffix for suffix in ("-wal", "-shm", ".lock") if os.path.exists(path + suffix)]
            if leftovers:
                failures.append(f"{name}: KRTodo left {leftovers} beside it")

        # Two checklists; the window showed the second one last.
        two = os.path.join(directory, "two.sqlite")
        run(app, "--database", two, "--empty", "--screenshot", screenshot)
        connection = sqlite3.connect(two)
        connection.execute("INSERT INTO checklists (id, name, position) VALUES (2, 'Work', 2.0)")
        connection.execute("INSERT INTO items (checklist, identifier, position, status, title) "
                           "VALUES (2, 'w1', 1.0, 0, 'Write report'), (1, 't1', 1.0, 1, 'Buy milk')")
        connection.execute("INSERT OR REPLACE INTO settings (key, value) VALUES ('window/checklist', '2')")
        connection.commit()
        connection.close()
        reopened = run(app, "--database", two, "--screenshot", screenshot, "--dump")
        if reopened.returncode != 0 or "open\tWrite report" not in reopened.stdout:
            failures.append(f"two checklists: not reopened on the last one shown: {reopened.stdout!r}")

        # Read-only: shown, refused, untouched.
        os.chmod(two, 0o444)
        before = digest(two)
        read_only = run(app, "--database", two, "--screenshot", screenshot, "--dump")
        line = f'KRTodo: "{two}" is read-only: KRTodo shows its items and refuses every change.'
        if read_only.returncode != 0 or line not in read_only.stderr:
            failures.append(f"read-only: status {read_only.returncode}, stderr {read_only.stderr!r}")
        if "open\tWrite report" not in read_only.stdout:
            failures.append(f"read-only: the items do not show: {read_only.stdout!r}")
        if digest(two) != before:
            failures.append("read-only: the file changed")
        os.chmod(two, 0o644)
    return failures


def main():
    app = sys.argv[1]
    failures = []

    help_run = run(app, "--help")
    if help_run.returncode != 0:
        failures.append(f"--help exited {help_run.returncode}")
    missing = [option for option in OPTIONS if option not in help_run.stdout]
    if missing:
        failures.append(f"--help does not list {missing}:\n{help_run.stdout}")

    version_run = run(app, "--version")
    if version_run.returncode != 0 or not version_run.stdout.startswith("KRTodo "):
        failures.append(f"--version: status {version_run.returncode}, output {version_run.stdout!r}")

    with tempfile.TemporaryDirectory() as directory:
        dump = os.path.join(directory, "dump.txt")
        for arguments, expected in ((["--no-such-option"], "no-such-option"),
                                    (["stray-argument"], "stray-argument"),
                                    (["--dump-file"], "dump-file")):
            # With a dump file wherever the arguments leave room for one: a run that went on would write it.
            wrong = run(app, *arguments) if arguments == ["--dump-file"] else run(app, *arguments, "--dump-file", dump)
            if wrong.returncode != 2:
                failures.append(f"{arguments}: exited {wrong.returncode}, not 2")
            if expected not in wrong.stderr or "--help" not in wrong.stderr:
                failures.append(f"{arguments}: stderr does not say what is wrong: {wrong.stderr!r}")
            if wrong.stdout:
                failures.append(f"{arguments}: wrote to stdout: {wrong.stdout!r}")
        if os.path.exists(dump):
            failures.append("a wrong command line still ran the app (it wrote a dump)")

    failures += check_databases(app)

    for failure in failures:
        print("FAILED: " + failure)
    if not failures:
        print("passed")
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
