"""Makes one build that holds all mutants: a copy of the tree with every change written beside what it changes."""

import hashlib
import json
import multiprocessing
import os
import pathlib
import random
import re
import shlex
import subprocess

from mutation import sites

RUNTIME = pathlib.Path(__file__).with_name("mutate.h")
NO_SOURCES = re.compile(r"(\..*|build|build-.*|B|__pycache__)")  # folders at the top of a tree
SUFFIXES = (".cpp", ".h")


def files_of(root, folders=None):
    """Relative paths of the tree's files, or of the sources of some folders."""
    found = []
    for folder, below, names in os.walk(root):
        if pathlib.Path(folder) == root:
            below[:] = [name for name in below if not NO_SOURCES.fullmatch(name)]
        below.sort()
        path = pathlib.Path(folder).relative_to(root)
        found += [path / name for name in sorted(names)]
    if folders is None:
        return found
    return [path for path in found if path.parts[0] in folders and path.suffix in SUFFIXES]


def digest(root, paths):
    sum_ = hashlib.sha256()
    for path in paths:
        sum_.update(str(path).encode() + b"\0" + (root / path).read_bytes())
    return sum_.hexdigest()


def rewrite(text, mutants):
    """The text of a file with the changes of its mutants, which are pairs of number and site. No line moves."""
    spans = {}
    for number, site in mutants:
        for edit in site.edits:
            spans.setdefault((edit.start, -edit.end), []).append((number, edit))
        for start, end, word in site.plain:
            spans[(start, -end)] = word
    order = sorted(spans)

    def write(start, end, index):
        """What stands between two offsets, with the spans from an index on that lie in there."""
        parts = []
        while index < len(order) and order[index][0] < end:
            inner_start, inner_end = order[index][0], -order[index][1]
            parts.append(text[start:inner_start].decode())
            content = spans[order[index]]
            old, index = write(inner_start, inner_end, index + 1)
            if isinstance(content, str):
                old = content
            else:
                for number, edit in content:
                    old = edit.form.format(id=number, new=edit.new, old=old)
            parts.append(old)
            start = inner_end
        parts.append(text[start:end].decode())
        return "".join(parts), index

    return write(0, len(text), 0)[0].encode()


class Build:
    def __init__(self, root, folder, folders, targets, jobs):
        self.root, self.folder, self.folders, self.targets, self.jobs = root, folder, folders, targets, jobs
        self.tree, self.out = folder / "tree", folder / "out"

    def sources(self):
        return files_of(self.root, self.folders)

    def copy(self, mutants):
        """Writes what differs, so that only that is built again."""
        by_file = {}
        for number, site in mutants.items():
            by_file.setdefault(site.file, []).append((number, site))
        wanted = files_of(self.root)
        for path in wanted:
            target = self.tree / path
            source = self.root / path
            text = source.read_bytes()
            if str(path) in by_file:
                text = rewrite(text, by_file[str(path)])
            if target.is_file() and target.read_bytes() == text:
                continue
            target.parent.mkdir(parents=True, exist_ok=True)
            target.write_bytes(text)
            target.chmod(source.stat().st_mode)
        if self.tree.is_dir():
            for path in set(files_of(self.tree)) - set(wanted):
                (self.tree / path).unlink()

    def configure(self):
        subprocess.run(["cmake", "-S", self.tree, "-B", self.out, "-G", "Ninja", "-DCMAKE_BUILD_TYPE=Mutants",
                        "-DDLP_BUILD_TESTS=ON", "--no-warn-unused-cli",
                        f"-DCMAKE_CXX_FLAGS=-O0 -w -Wno-narrowing -include {RUNTIME}"],
                       check=True, stdout=subprocess.DEVNULL)
        return json.loads((self.out / "compile_commands.json").read_text())

    def find_sites(self, commands):
        flags = {}
        for command in commands:
            words = [word.replace(str(self.tree), str(self.root)) for word in shlex.split(command["command"])]
            flags[command["file"].replace(str(self.tree) + "/", "")] = [
                option for word, follower in zip(words, words[1:] + [""])
                for option in ((word, follower) if word == "-isystem" else (word,))
                if word.startswith(("-I", "-D", "-std=", "-isystem"))]
        paths = [str(path) for path in self.sources()]
        rooms = {path.split("/")[0]: value for path, value in flags.items()}  # a header is read as one of its room
        tasks = [(self.root, path, flags.get(path, rooms.get(path.split("/")[0], []))) for path in paths]
        with multiprocessing.Pool(self.jobs) as pool:
            return [site for found in pool.starmap(sites.find, tasks, chunksize=1) for site in found]

    def draw(self, found, seed, count, log):
        """Builds a random choice of the sites; those that do not compile are replaced. Returns them by number, and how
        many did not compile."""
        order = list(found)
        random.Random(seed).shuffle(order)
        count = min(count, len(order))
        mutants = dict(enumerate(order[:count], 1))
        spare = iter(order[count:])
        refused = 0
        while True:
            self.copy(mutants)
            log(f"building {len(mutants)} mutants")
            if (output := self.make()) is None:
                return mutants, refused
            guilty = self.guilty(output, mutants)
            if not guilty:
                raise RuntimeError("the mutated tree does not build:\n" + output[-4000:])
            refused += len(guilty)
            log(f"{len(guilty)} do not compile: " + ", ".join(
                f"{mutants[number].file}:{mutants[number].line} {mutants[number].kind}" for number in sorted(guilty)))
            for number in guilty:
                del mutants[number]
                if (another := next(spare, None)) is not None:
                    mutants[number] = another

    def make(self):
        """The sources of the folders first, for the tests wait for them. None, or what the compiler said."""
        commands = json.loads((self.out / "compile_commands.json").read_text())
        ours = [shlex.split(command["command"]) for command in commands
                if any(command["file"].startswith(f"{self.tree / folder}/") for folder in self.folders)]
        objects = [words[words.index("-o") + 1] for words in ours]
        needed = subprocess.run(["ninja", "-C", self.out, "-t", "inputs", *self.targets], check=True,
                                capture_output=True, text=True).stdout.split()
        for targets in (sorted(set(objects) & set(needed)), self.targets):
            done = subprocess.run(["ninja", "-C", self.out, "-k", "0", "-j", str(self.jobs), *targets],
                                  capture_output=True, text=True, errors="replace")
            if done.returncode != 0:
                return done.stdout + done.stderr
        return None

    def guilty(self, output, mutants):
        """The mutants that the errors name; those on their lines; else on the lines of the notes beside them; else
        those of the files that failed."""
        named = set(map(int, re.findall(r"error:.*mutate::Is\((\d+)\)", output))) & set(mutants)
        for kind in ("error", "note|warning|required from here", ""):
            places = set()
            for match in re.finditer(rf"^(?:In file included from |\s+from )?([^\s:]+):(\d+)[:,](?:\d+:)?\s*(?:{kind})",
                                     output, re.M):
                path = pathlib.Path(match.group(1))
                path = path if path.is_absolute() else self.out / path
                places.add((os.path.normpath(path), int(match.group(2))))
            found = {number for number, site in mutants.items() if self.is_at(site, places)}
            if found | named:
                return found | named
        names = {path for path, _ in places}
        return {number for number, site in mutants.items() if str(self.tree / site.file) in names}

    def is_at(self, site, places):
        text = (self.root / site.file).read_bytes()
        last = max(text[:edit.end].count(b"\n") + 1 for edit in site.edits)
        return any((str(self.tree / site.file), line) in places for line in range(site.line, last + 1))
