#!/usr/bin/env python3
"""Kills dlpctl (-9) at a random point of a command that writes, and looks at the store that is left.

Every other one is killed while it writes, which the note beside the store tells; the others anywhere. A command that had
ended before is not counted.

A fresh process must find the store as it was before or as it is after the command, and sound; then the same command,
run to its end, must succeed. A backup of another store into the same place must be refused, or stay there.
"""
import argparse
import collections
import pathlib
import random
import shutil
import sys
import tempfile
import time

import stores


MOST_TRIES = 20  # for each one that is to be killed


def wait_for_note(store, process):
    """Until it writes, or has ended."""
    note = pathlib.Path(f"{store}-writer")
    while not note.exists() and process.poll() is None:
        time.sleep(0.0002)


def start_with(store, before):
    """The store as it was before; before may not be there, then there is none."""
    stores.remove(store)
    if before.exists():
        shutil.copy(before, store)


def dump(tool, store):
    """A store that is not there yet holds nothing."""
    if not store.exists():
        with tempfile.NamedTemporaryFile() as empty:
            return tool.run(empty.name, "store", "dump")
    return tool.run(store, "store", "dump")


class Command:
    """A command that writes, with what it finds and makes of the store and how long it takes."""

    def __init__(self, tool, before, folder, *arguments):
        self.arguments = arguments
        self.start = before
        store = folder / "measured.db"
        start_with(store, before)
        self.before = dump(tool, store).stdout
        start_with(store, before)
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
    """Imports, edits, what replaces the whole store, and what brings up one of the first version."""
    more, records, backup = folder / "more.xml", folder / "dump.json", folder / "backup.db"
    more.write_text(stores.policy(150, "other"))
    (folder / "again.xml").write_text(stores.policy(60, "number").replace("[0-9]", "[0-8]"))
    other = folder / "other.db"
    tool.get(other, "-q", "import", more)
    records.write_bytes(tool.get(other, "store", "dump"))
    tool.get(other, "store", "backup", backup)
    lines = (("-q", "import", more), ("-q", "import", folder / "again.xml"), ("store", "load", records),
             ("store", "restore", backup), ("rename", "expression", "number 7", "renamed"),
             ("delete", "template", "number template 3"))
    missing = folder / "missing.db"
    first = (("-q", "import", folder / "policy.xml"), ("store", "load", records), ("store", "restore", backup))
    older = folder / "older.db"
    shutil.copy(before, older)
    stores.make_first_version(older)
    return ([Command(tool, before, folder, *line) for line in lines]
            + [Command(tool, missing, folder, *line) for line in first]
            + [Command(tool, older, folder, *line) for line in (lines[4], lines[0])])


def find_backup_fault(tool, store, other):
    """What is wrong with a backup in the place of what a killed one has left: it is refused, or there to stay."""
    target = store.parent.with_name("target") / store.name
    shutil.rmtree(target.parent, ignore_errors=True)
    shutil.copytree(store.parent, target.parent)
    saved = tool.run(other, "store", "backup", target)
    if saved.returncode != 0:
        return None if b"it is a store that is in use" in saved.stderr else "backup: " + saved.stderr.decode()
    check = tool.run(target, "store", "check")
    if check.returncode != 0 or tool.get(target, "store", "dump") != tool.get(other, "store", "dump"):
        return "a backup did not stay: " + (check.stdout + check.stderr).decode()
    return None


def find_fault(tool, store, command):
    """Returns (state, what is wrong with the store). A store that is still to be made is none yet, or an empty file."""
    found = dump(tool, store)
    if found.returncode != 0:
        return "unreadable", found.stderr.decode()
    if found.stdout not in (command.before, command.after):
        return "wrong", "neither as before nor as after"
    state = "before" if found.stdout == command.before else "after"
    made = store.exists() and store.stat().st_size > 0
    check = tool.run(store, "store", "check")
    if check.returncode != 0 and (made or command.start.exists()):
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
            start_with(store, command.start)
            process = tool.start(store, *command.arguments)
            if seed % 2 == 0:
                wait_for_note(store, process)
            time.sleep(dice.uniform(0, command.writing if seed % 2 == 0 else command.seconds))
            process.kill()
            process.communicate()
            killed += process.returncode != 0
            late += process.returncode == 0
            backup_fault = find_backup_fault(tool, store, first)
            state, fault = ("wrong", backup_fault) if backup_fault else find_fault(tool, store, command)
            if process.returncode != 0 or fault:
                states[state] += 1
            if fault:
                print(f"seed {seed}, {' '.join(map(str, command.arguments))}: {fault}")
    print(f"{killed} killed ({late} more had ended): " + ", ".join(f"{count} {state}" for state, count in sorted(states.items()))
          + f"; {states['wrong']} wrong, {states['unreadable']} unreadable")
    return 1 if states["wrong"] + states["unreadable"] or killed < arguments.count else 0


if __name__ == "__main__":
    sys.exit(main())
