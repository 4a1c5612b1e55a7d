"""Kills dlpctl (-9) at a random point of a command that writes, and looks at the store that is left.

Every other one is killed while it writes, which the note beside the store tells; the others anywhere. A command that had
ended before is not counted.

A fresh process must find the store as it was before or as it is after the command, and sound; then the same command,
run to its end, must succeed.
"""
import argparse
import collections
import pathlib
import random
import shutil
import sys
import time

import stores


MOST_TRIES = 20  # for each one that is to be killed


def wait_for_note(store, process):
    """Until it writes, or has ended."""
    note = pathlib.Path(f"{store}-writer")
    while not note.exists() and process.poll() is None:
        time.sleep(0.0002)


class Command:
    """A command that writes, with what it makes of the store and how long it takes."""

    def __init__(self, tool, before, folder, *arguments):
        self.arguments = arguments
        store = folder / "measured.db"
        stores.remove(store)
        shutil.copy(before, store)
        start = time.perf_counter()
        process = tool.start(store, *arguments)
        wait_for_note(store, process)
        note = time.perf_counter()
        process.communicate()
        if process.returncode != 0:
            raise RuntimeError(f"{' '.join(map(str, arguments))} ended with {process.returncode}")
        self.seconds = time.perf_counter() - start
        self.writing = time.perf_counter() - note
        self.after = tool.get(store, "store", "dump")


def make_commands(tool, before, folder):
    """Imports, edits and what replaces the whole store."""
    more, dump, backup = folder / "more.xml", folder / "dump.json", folder / "backup.db"
    more.write_text(stores.policy(150, "other"))
    (folder / "again.xml").write_text(stores.policy(60, "number").replace("[0-9]", "[0-8]"))
    other = folder / "other.db"
    tool.get(other, "-q", "import", more)
    dump.write_bytes(tool.get(other, "store", "dump"))
    tool.get(other, "store", "backup", backup)
    lines = (("-q", "import", more), ("-q", "import", folder / "again.xml"), ("store", "load", dump),
             ("store", "restore", backup), ("rename", "expression", "number 7", "renamed"),
             ("delete", "template", "number template 3"))
    return [Command(tool, before, folder, *line) for line in lines]


def find_fault(tool, store, before, command):
    """Returns (state, what is wrong with the store)."""
    dump = tool.run(store, "store", "dump")
    if dump.returncode != 0:
        return "unreadable", dump.stderr.decode()
    if dump.stdout not in (before, command.after):
        return "wrong", "neither as before nor as after"
    state = "before" if dump.stdout == before else "after"
    check = tool.run(store, "store", "check")
    if check.returncode != 0:
        return "wrong", (check.stdout + check.stderr).decode()
    if state == "before":
        again = tool.run(store, *command.arguments)
        if again.returncode != 0 or tool.get(store, "store", "dump") != command.after:
            return "wrong", "run again: " + again.stderr.decode()
    return state, None


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--tool", required=True)
    parser.add_argument("--count", type=int, default=50)
    parser.add_argument("--seed", type=int, default=1)
    arguments = parser.parse_args()
    states = collections.Counter()
    with stores.scratch() as folder:
        folder = pathlib.Path(folder)
        tool = stores.Tool(arguments.tool)
        first = folder / "before.db"
        (folder / "policy.xml").write_text(stores.policy(60))
        tool.get(first, "-q", "import", folder / "policy.xml")
        before = tool.get(first, "store", "dump")
        commands = make_commands(tool, first, folder)
        killed, late = 0, 0
        for seed in range(arguments.seed, arguments.seed + arguments.count * MOST_TRIES):
            if killed == arguments.count:
                break
            dice = random.Random(seed)
            command = dice.choice(commands)
            store = folder / "store" / "killed.db"
            shutil.rmtree(store.parent, ignore_errors=True)
            store.parent.mkdir()
            shutil.copy(first, store)
            process = tool.start(store, *command.arguments)
            if seed % 2 == 0:
                wait_for_note(store, process)
            time.sleep(dice.uniform(0, command.writing if seed % 2 == 0 else command.seconds))
            process.kill()
            process.communicate()
            killed += process.returncode != 0
            late += process.returncode == 0
            state, fault = find_fault(tool, store, before, command)
            if process.returncode != 0 or fault:
                states[state] += 1
            if fault:
                print(f"seed {seed}, {' '.join(map(str, command.arguments))}: {fault}")
    print(f"{killed} killed ({late} more had ended): " + ", ".join(f"{count} {state}" for state, count in sorted(states.items()))
          + f"; {states['wrong']} wrong, {states['unreadable']} unreadable")
    return 1 if states["wrong"] + states["unreadable"] or killed < arguments.count else 0


if __name__ == "__main__":
    sys.exit(main())
