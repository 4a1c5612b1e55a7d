"""The table of a few items: every row comes out, as text and as JSON. usage: table_test.py BUILD"""
import importlib.machinery
import importlib.util
import json
import os
import subprocess
import sys
import tempfile

TABLE = os.path.join(os.path.dirname(os.path.abspath(__file__)), "table")
NO_YARDSTICKS = 77  # counts as skipped
ITEMS = 500

# The names of all rows, in order, and their goals.
ROWS = {
    "import / least work": 1.5,
    "import / script": 0.85,
    "peak memory of an import / document": 8,
    "export / least work": 1.5,
    "exported call, wide / least work": 2.5,
    "export / script": 0.4,
    "peak memory of an export / document": None,
    "import, all updated / into an empty store": 1.2,
    "import, all unchanged / into an empty store": 0.8,
    "one new template into 5000: ms beyond the start": 15,
    "one new template into 5000 / into 50, beyond the start": 1.3,
    "import, time(5000) / time(500)": 11,
    "export, time(5000) / time(500)": 11,
    "peak memory of an import / document, 5000": 8,
    "check / import": 3,
    "diff of two stores / export": 2,
    "dlpctl --version, ms": 10,
    "DoTemplateImport on memory: / least work's check, tree, walk and store": 1.5,
}


def run(build, *words, environment=None):
    """Returns the lines of the text and the object of --json."""
    with tempfile.TemporaryDirectory() as scratch:
        file = os.path.join(scratch, "table.json")
        command = [sys.executable, TABLE, "--build", build, "--items", str(ITEMS), "--runs", "1", "--json", file]
        table = subprocess.run([*command, *words], stdout=subprocess.PIPE, text=True,
                               env={**os.environ, **(environment or {})})
        if table.returncode == NO_YARDSTICKS:
            sys.exit(NO_YARDSTICKS)
        if table.returncode != 0:
            sys.exit(f"bench/table {words} ended with {table.returncode}")
        with open(file, encoding="utf-8") as source:
            return table.stdout.splitlines(), json.load(source)


def expect(what, expected, found):
    if expected != found:
        sys.exit(f"{what}: expected {expected}, found {found}")


def names(answer):
    return [row["what"] for row in answer["rows"]]


def expect_rows_as_text(lines, answer):
    heads = [line for line in lines if line.startswith(("N = ", "the script is left out"))]
    expect("lines", names(answer), [line[:75].rstrip() for line in lines if line not in heads])


def test_every_row(build):
    lines, answer = run(build)
    expect("rows", ROWS, {row["what"]: row["goal"] for row in answer["rows"]})
    expect("order", list(ROWS), names(answer))
    expect_rows_as_text(lines, answer)
    expect("items and runs", (ITEMS, 1), (answer["items"], answer["runs"]))
    expect("head", ["commit", "machine", "items", "runs", "rows"], list(answer))
    for row in answer["rows"]:
        if "left_out" not in row and not (row["ratio"] > 0 and row["figure"] > 0 and row["against"] > 0):
            sys.exit(f"no figures: {row}")


def test_one_row_against_another_build(build):
    lines, answer = run(build, "--against", build, "check")
    rows = ["check / import", f"check / import ({build})", f"check: this build / check ({build})"]
    expect("rows", rows, names(answer))
    expect("goals", [3, None, None], [row["goal"] for row in answer["rows"]])
    expect_rows_as_text([line[:75] for line in lines], {"rows": [{"what": name[:75]} for name in names(answer)]})


def test_every_goal_is_shown_of_both_builds(build):
    _, answer = run(build, "--against", build, "one", "check", "start")
    goals = [row["what"] for row in answer["rows"] if row["goal"] is not None]
    expect("goals", 4, len(goals))
    expect("of the other build", [f"{what} ({build})" for what in goals],
           [what for what in names(answer) if what.endswith(f"({build})") and ": this build / " not in what])


def test_script_that_cannot_run(build):
    with tempfile.TemporaryDirectory() as scratch:
        with open(os.path.join(scratch, "lxml.py"), "w", encoding="utf-8") as target:
            target.write("raise ImportError\n")
        lines, answer = run(build, "import", environment={"PYTHONPATH": scratch})
    why = "python3-lxml is not installed"
    expect("first line", "the script is left out: " + why, lines[0])
    expect("row", {"what": "import / script", "goal": 0.85, "left_out": why}, answer["rows"][1])
    expect("line", f"{'import / script':75} left out: {why}", lines[3])
    expect_rows_as_text(lines, answer)


class MadeUpJob:
    def __init__(self, seconds, cpu_seconds=(), peaks=()):
        self.name, self.seconds, self.cpu_seconds, self.peaks = "job", seconds, cpu_seconds, peaks

    def median(self, figures="seconds"):
        return sorted(getattr(self, figures))[len(getattr(self, figures)) // 2]


def test_which_figure_is_divided():
    sys.path.insert(0, os.path.dirname(TABLE))
    loader = importlib.machinery.SourceFileLoader("table", TABLE)
    table = importlib.util.module_from_spec(importlib.util.spec_from_loader("table", loader))
    loader.exec_module(table)
    bench = table.Bench.__new__(table.Bench)
    bench.rows, bench.builds = [], {"this": "a", "other": "b"}
    mine, theirs = MadeUpJob([9, 3, 6], [4, 2, 8], [50, 60, 40]), MadeUpJob([1, 2, 12], [1, 1, 1])
    bench.add_pairs("pair", [mine, theirs], theirs, 1.5)
    bench.add_peaks("peak", [mine], 10, 8)
    bench.add_builds("build", [mine, theirs])
    expect("figures", [("pair", 3, 4, 1.5), ("pair (other)", 1, 1, None), ("peak", 5, None, 8),
                       ("build: this build / job", 3, 4, None)],
           [(row["what"], row["ratio"], row.get("cpu_ratio"), row["goal"]) for row in bench.rows])
    expect("runs", ([9, 3, 6], [1, 2, 12]), (bench.rows[0]["runs"], bench.rows[0]["runs_against"]))
    expect("line", f"{'pair':75}     3.00  cpu 4.00  goal 1.5  MISSED  (6000.0 / 2000.0 ms)", table.format_row(bench.rows[0]))


def test_tool_that_does_nothing(build):
    """Whatever is left undone by the command that a row measures is found."""
    for row, undone in (("import", "import"), ("export", "export"), ("again", "--json import"),
                        ("one", "new.xml"), ("check", "check"), ("diff", "diff")):
        with tempfile.TemporaryDirectory() as fake:
            os.mkdir(os.path.join(fake, "bin"))
            os.symlink(os.path.join(build, "bin/dlp_calls"), os.path.join(fake, "bin/dlp_calls"))
            tool = os.path.join(fake, "bin/dlpctl")
            with open(tool, "w", encoding="utf-8") as target:
                target.write(f'#!/bin/sh\ncase "$*" in *"{undone}"*) exit 0;; esac\nexec "{build}/bin/dlpctl" "$@"\n')
            os.chmod(tool, 0o755)
            table = subprocess.run([sys.executable, TABLE, "--build", fake, "--items", "50", "--runs", "1", row],
                                   capture_output=True, text=True)
            if table.returncode == 0:
                sys.exit(f"{row}: nobody noticed that this was not done: {undone}\n{table.stdout}")


test_which_figure_is_divided()
test_every_row(sys.argv[1])
test_tool_that_does_nothing(sys.argv[1])
test_one_row_against_another_build(sys.argv[1])
test_every_goal_is_shown_of_both_builds(sys.argv[1])
test_script_that_cannot_run(sys.argv[1])
