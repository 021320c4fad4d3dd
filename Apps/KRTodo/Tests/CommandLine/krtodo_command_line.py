#!/usr/bin/env python3
"""KRTodo's command line: --help and --version answer and exit 0; a wrong option or argument says what is
wrong on stderr, points at --help and exits 2 without opening a window (it exits long before any window
could appear, and writes no dump)."""

import os
import subprocess
import sys
import tempfile

OPTIONS = ["--help", "--version", "--empty", "--dump", "--dump-file", "--screenshot"]


def run(app, *arguments):
    env = dict(os.environ)
    env["QT_QPA_PLATFORM"] = "offscreen"
    return subprocess.run([app, *arguments], env=env, capture_output=True, text=True, timeout=60)


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

    for failure in failures:
        print("FAILED: " + failure)
    if not failures:
        print("passed")
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
