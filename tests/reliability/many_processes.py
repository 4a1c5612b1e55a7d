"""Lets many processes import, export and edit one store at the same time.

Each worker owns items of its own, which it imports again and again, each time as the next version, whole; now and then it
renames or deletes one and imports anew. Every export and every backup must show each worker's items in one version (it is
one state), and in one that is not older than what that worker had imported before it began; every check must find the
store whole. In the end every item has its last version. A command may fail with 4 only when it says that another process
is writing. Nobody restores a backup: what the others did meanwhile would go, as it should; bringing_up.py has that.
"""
import argparse
import collections
import pathlib
import random
import re
import sys
import threading
import time

import stores

ITEMS = 6
KEYWORDS = 9
VERSION = re.compile(rb'<(entity|template|keyword)\b[^>]* description="worker (\d+) version (\d+) "')
ALL = {b"entity": ITEMS, b"template": ITEMS, b"keyword": ITEMS * KEYWORDS}
EXPLAINED = re.compile(rb"another process is writing to it")


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


class Workers:
    def __init__(self, tool, folder, count, seconds):
        self.tool, self.folder, self.store = tool, folder, folder / "store.db"
        self.kept = [0] * count  # the version that each worker has imported
        self.done = collections.Counter()
        self.faults = []
        self.end = time.monotonic() + seconds

    def run(self, *arguments):
        """Runs to its end; returns standard output, or None after a failure that explains itself."""
        run = self.tool.run(self.store, *arguments)
        if run.returncode == 0:
            words = [word for word in arguments if word != "-q"]
            self.done[" ".join(words[:2]) if words[0] == "store" else words[0]] += 1
            return run.stdout
        if run.returncode == 4 and EXPLAINED.search(run.stderr):
            self.done["waited in vain"] += 1
        else:
            self.faults.append(f"{' '.join(map(str, arguments))} ended with {run.returncode}: {run.stderr.decode()}")
        return None

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
        """A command that ends a worker is a fault, told with the others."""
        try:
            self.go_on(worker, random.Random(worker))
        except RuntimeError as error:
            self.faults.append(str(error))

    def go_on(self, worker, dice):
        while time.monotonic() < self.end and not self.faults:
            choice = dice.random()
            if choice < 0.45 or self.kept[worker] == 0:
                self.take_version(worker)
            elif choice < 0.65:
                self.look()
            elif choice < 0.75:
                self.back_up(worker)
            elif choice < 0.85:
                self.run("store", "check")
            else:
                self.edit(worker, dice)

    def finish(self):
        """After the last process: nothing is lost."""
        seen = find_versions(self.run("export", "--all") or b"")
        for worker, version in enumerate(self.kept):
            if version and seen[worker] != ({version}, ALL):
                self.faults.append(f"worker {worker} has {seen[worker]} in the end, and version {version} was kept")
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
        workers.finish()
    for fault in workers.faults:
        print(fault)
    done = ", ".join(f"{count} {what}" for what, count in sorted(workers.done.items()))
    print(f"{arguments.processes} processes for {arguments.seconds:g} s: {done}; {len(workers.faults)} faults")
    return 1 if workers.faults or not workers.done["import"] else 0


if __name__ == "__main__":
    sys.exit(main())
