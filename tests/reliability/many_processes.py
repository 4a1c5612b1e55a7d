#!/usr/bin/env python3
"""Lets many processes import, export and edit one store at the same time.

Each worker owns items of its own, which it imports again and again, each time as the next version, whole; now and then it
renames or deletes one and imports anew. Every export and every backup must show each worker's items in one version (it is
one state), and in one that is not older than what that worker had imported before it began; every check must find the
store whole. In the end every item has its last version.

All of them also edit the same three records: they add words of their own to one keyword list, describe it and a template,
and give a new name to the expression that the template refers to. Every word that was said to be added is there from then on;
every name that was said to be given comes after another one, without a fork, and the template follows it.

A command may fail with 4 only when it says which process is writing, on which host and since when; in a run of 30 seconds or
more one that is stopped while it writes makes another one wait in vain. Nobody restores a backup: what the others did
meanwhile would go, as it should; bringing_up.py has that.
"""
import argparse
import collections
import json
import pathlib
import random
import re
import signal
import socket
import sys
import threading
import time

import stores

ITEMS = 6
KEYWORDS = 9
VERSION = re.compile(rb'<(entity|template|keyword)\b[^>]* description="worker (\d+) version (\d+) "')
ALL = {b"entity": ITEMS, b"template": ITEMS, b"keyword": ITEMS * KEYWORDS}
EXPLAINED = re.compile(rb"another process is writing to it \(process (\d+) on " + re.escape(socket.gethostname().encode())
                       + rb", since \d{4}-\d\d-\d\dT\d\d:\d\d:\d\dZ\); try again\n$")
LIST, TEMPLATE, NAME = "shared words", "shared template", "shared"
FIRST_WORD = "first"
GROUPS = ("store", "keywords", "template")
GONE = re.compile(rb'no expression is named "shared[^"]*"')  # another one has renamed it meanwhile
HELD = 30  # seconds that a run lasts at least in which one is stopped


def document(worker, version):
    """All items of a worker in one version, which stands in every description; lists have it in their keywords."""
    text = stores.policy(ITEMS, f"w{worker} item")
    versioned = f'description="worker {worker} version {version} "'
    return text.replace(f'description="w{worker} item"', versioned).replace('<keyword description=""', f"<keyword {versioned}")


def find_versions(text):
    """What an export holds of each worker: (versions, how many of each element)."""
    seen = collections.defaultdict(lambda: (set(), collections.Counter()))
    for element, worker, version in VERSION.findall(text):
        seen[int(worker)][0].add(int(version))
        seen[int(worker)][1][element] += 1
    return seen


class SharedRecords:
    """Those that all workers edit, with what each command has said to be done."""

    def __init__(self, workers, count):
        self.workers = workers
        self.words = [[] for _ in range(count)]
        self.described = {LIST: [""] * count, TEMPLATE: [""] * count}
        self.names = {}  # what each name was replaced with
        self.name = NAME  # or a former one, when another worker has just given a new one
        for line in (("keywords", "new", LIST, FIRST_WORD), ("expression", "new", NAME, "--pattern", "a+"),
                     ("template", "new", TEMPLATE, f"P:{NAME}(1) AND K:{LIST}")):
            workers.tool.get(workers.store, *line)

    def add_word(self, worker):
        word = f"w{worker}-{len(self.words[worker])}"
        if self.workers.run("keywords", "add", LIST, word) is not None:
            self.words[worker].append(word)

    def edit(self, worker, dice):
        """One of them, by a command that reads it, changes it and writes it."""
        count = self.workers.count_done()
        choice = dice.random()
        if choice < 0.5:
            self.add_word(worker)
        elif choice < 0.75:
            kind, name = dice.choice((("keywords", LIST), ("template", TEMPLATE)))
            text = f"of {worker} after {count}"
            if self.workers.run(kind, "set", name, "--description", text) is not None:
                self.described[name][worker] = text
        else:
            former, latter = self.name, f"{NAME} {worker}-{count}"
            if self.workers.run("rename", "expression", former, latter, unless=GONE) is not None:
                if self.names.setdefault(former, latter) != latter:
                    self.workers.faults.append(f"{former} was given two names, {self.names[former]} and {latter}")
                self.name = latter

    def look(self):
        """Every word that was there before is there."""
        least = [word for words in self.words for word in list(words)]
        text = self.workers.run("keywords", "export", LIST)
        if text is not None:
            self.judge(text, least)

    def judge(self, text, least):
        """Returns the words in the order in which they stand."""
        words = [line.partition(",")[0] for line in text.decode().splitlines()[1:]]
        if lacking := set(least) - set(words):
            self.workers.faults.append(f"{sorted(lacking)} were added, and are not in the list")
        return words

    def finish(self):
        """After the last process: all that was said to be done is there, and nothing else."""
        words = self.judge(self.workers.run("keywords", "export", LIST) or b"", [word for words in self.words for word in words])
        of_workers = [[word for word in words if word.startswith(f"w{worker}-")] for worker in range(len(self.words))]
        if of_workers != self.words or len(words) != 1 + sum(map(len, self.words)):
            self.workers.faults.append(f"the list has {words} in the end, and {self.words} were added")
        name = NAME
        for _ in self.names:
            name = self.names.get(name, name)
        found = {kind: self.show(kind, of) for kind, of in (("expression", name), ("keyword", LIST), ("template", TEMPLATE))}
        followed = [block["source_name"] for rule in found["template"].get("match_rules", ()) for block in rule["blocks"]]
        if found["expression"].get("name") != name or followed != [name, LIST]:
            self.workers.faults.append(f"{name} is not the last name: {found}, {self.names}")
        for kind, of in (("keyword", LIST), ("template", TEMPLATE)):
            if found[kind].get("description") not in self.described[of]:
                self.workers.faults.append(f"{of} has a description that no worker gave it last: {found[kind]}, {self.described[of]}")

    def show(self, kind, name):
        return json.loads(self.workers.run("--json", "show", kind, name) or b'{"record": {}}')["record"]


class Workers:
    def __init__(self, tool, folder, count, seconds):
        self.tool, self.folder, self.store = tool, folder, folder / "store.db"
        self.kept = [0] * count  # the version that each worker has imported
        self.done = collections.Counter()
        self.faults = []
        self.shared = SharedRecords(self, count)
        self.end = time.monotonic() + seconds

    def run(self, *arguments, unless=None):
        """Runs to its end; returns standard output, or None after a failure that explains itself, or is to be expected."""
        run = self.tool.run(self.store, *arguments)
        if run.returncode == 0:
            words = [str(word) for word in arguments if not str(word).startswith("-")]
            self.done[" ".join(words[:2]) if words[0] in GROUPS else words[0]] += 1
            return run.stdout
        if run.returncode == 4 and EXPLAINED.search(run.stderr):
            self.done["waited in vain"] += 1
        elif run.returncode == 1 and unless is not None and unless.search(run.stderr):
            self.done["too late"] += 1
        else:
            self.faults.append(f"{' '.join(map(str, arguments))} ended with {run.returncode}: {run.stderr.decode()}")
        return None

    def count_done(self):
        """A number that grows."""
        return sum(list(self.done.values()))

    def take_version(self, worker):
        version = self.kept[worker] + 1
        path = self.folder / f"{worker}.xml"
        path.write_text(document(worker, version))
        if self.run("-q", "import", path) is not None:
            self.kept[worker] = version

    def edit(self, worker, dice):
        item = dice.randrange(ITEMS)
        if dice.random() < 0.5:
            self.run("delete", "template", f"w{worker} item template {item}")
        else:
            self.run("rename", "expression", f"w{worker} item {item}", f"w{worker} item x")
            self.run("rename", "expression", f"w{worker} item x", f"w{worker} item {item}")
        self.take_version(worker)

    def look(self):
        least = list(self.kept)
        text = self.run("export", "--all")
        if text is not None:
            self.judge("an export", text, least)

    def back_up(self, worker):
        least = list(self.kept)
        backup = self.folder / f"{worker}.db"
        if self.run("store", "backup", backup) is not None:
            self.tool.get(backup, "store", "check")
            self.judge("a backup", self.tool.get(backup, "export", "--all"), least)

    def judge(self, what, text, least):
        """The text must show every worker in one version, which is not older than the least."""
        seen = find_versions(text)
        for worker, version in enumerate(least):
            versions, counts = seen[worker]
            if version > 0 and not versions or len(versions) > 1 or any(found < version for found in versions):
                self.faults.append(f"{what} shows worker {worker} in {sorted(versions)}, {version} was kept")
            # Its own edit may have deleted one template for now, without which its assets are not exported.
            whole = (ALL, {element: count // ITEMS * (ITEMS - 1) for element, count in ALL.items()})
            if versions and counts not in whole:
                self.faults.append(f"{what} shows {dict(counts)} of worker {worker}")

    def work(self, worker):
        """Whatever ends a worker is a fault, told with the others."""
        try:
            self.go_on(worker, random.Random(worker))
        except Exception as error:
            self.faults.append(f"worker {worker}: {error!r}")

    def go_on(self, worker, dice):
        # However slow the machine is, all come upon the one list.
        self.shared.add_word(worker)
        while time.monotonic() < self.end and not self.faults:
            choice = dice.random()
            if choice < 0.3 or self.kept[worker] == 0:
                self.take_version(worker)
            elif choice < 0.6:
                self.shared.edit(worker, dice)
            elif choice < 0.65:
                self.shared.look()
            elif choice < 0.75:
                self.look()
            elif choice < 0.82:
                self.back_up(worker)
            elif choice < 0.9:
                self.run("store", "check")
            else:
                self.edit(worker, dice)

    def hold(self):
        """One that is stopped while it writes: who waits for it in vain says so."""
        large = self.folder / "large.xml"
        large.write_text(stores.policy(3000, "held"))
        process = self.tool.start(self.store, "-q", "import", large)
        note = pathlib.Path(f"{self.store}-writer")
        while not note.exists() and process.poll() is None:
            time.sleep(0.0002)
        process.send_signal(signal.SIGSTOP)
        run = self.tool.run(self.store, "keywords", "add", LIST, "in vain")
        process.send_signal(signal.SIGCONT)
        process.communicate()
        told = EXPLAINED.search(run.stderr)
        if run.returncode != 4 or told is None or int(told[1]) != process.pid:
            self.faults.append(f"process {process.pid} was writing, and who waited ended with {run.returncode}: {run.stderr.decode()}")
        else:
            self.done["told who writes"] += 1

    def finish(self):
        """After the last process: nothing is lost."""
        seen = find_versions(self.run("export", "--all") or b"")
        for worker, version in enumerate(self.kept):
            if version and seen[worker] != ({version}, ALL):
                self.faults.append(f"worker {worker} has {seen[worker]} in the end, and version {version} was kept")
        self.shared.finish()
        if self.run("store", "check") is None:
            self.faults.append("the store is damaged")


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--tool", required=True)
    parser.add_argument("--processes", type=int, default=8)
    parser.add_argument("--seconds", type=float, default=5)
    arguments = parser.parse_args()
    with stores.scratch() as folder:
        folder = pathlib.Path(folder)
        workers = Workers(stores.Tool(arguments.tool), folder, arguments.processes, arguments.seconds)
        threads = [threading.Thread(target=workers.work, args=(i,)) for i in range(arguments.processes)]
        for thread in threads:
            thread.start()
        for thread in threads:
            thread.join()
        if arguments.seconds >= HELD:
            workers.hold()
        workers.finish()
    for fault in workers.faults:
        print(fault)
    done = ", ".join(f"{count} {what}" for what, count in sorted(workers.done.items()))
    print(f"{arguments.processes} processes for {arguments.seconds:g} s: {done}; {len(workers.faults)} faults")
    return 1 if workers.faults or not workers.done["import"] or not workers.done["keywords add"] else 0


if __name__ == "__main__":
    sys.exit(main())
