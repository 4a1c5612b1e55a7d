"""What a program has changed in a folder, as a library has recorded it, and the disks that a power cut may leave of it.

What was synchronised is on the disk: a file's bytes after fsync of the file, a name after fsync of its folder. Of what
came later any part may be, in any order, torn within a write, or as zeros in a file that has grown.
"""

from __future__ import annotations

import hashlib
import os
import random
import shutil
from collections.abc import Callable
from dataclasses import dataclass
from pathlib import Path

SECTOR = 512
STANDARD_OUTPUT = 1
FOLDER = -1  # stands for a file's number
KEPT, DROPPED, ZEROS, TORN = range(4)
MAPPED = "-shm"  # is written through memory, and made anew by whoever opens the store next


@dataclass(frozen=True, eq=False)
class Write:
    """Bytes of a file."""

    file: int
    place: int
    data: bytes

    def apply(self, content: bytearray, how: int, chance: random.Random) -> None:
        """A sector is written whole or not at all."""
        end = self.place + len(self.data)
        if how == ZEROS:
            grow(content, end)
        at = self.place if how in (KEPT, TORN) else end
        while at < end:
            to = end if how == KEPT else min(end, at // SECTOR * SECTOR + SECTOR)
            if how == KEPT or chance.random() < 0.5:
                grow(content, at)
                content[at:to] = self.data[at - self.place:to - self.place]
            at = to


@dataclass(frozen=True, eq=False)
class Length:
    """A file is cut, or grows."""

    file: int
    size: int

    def apply(self, content: bytearray, how: int, _chance: random.Random) -> None:
        """Whole or not at all."""
        if how != DROPPED:
            del content[self.size:]
            grow(content, self.size)


@dataclass(frozen=True, eq=False)
class Names:
    """Paths get files, or lose them (None), in one step."""

    files: dict[str, int | None]

    @property
    def folder(self) -> str:
        """Where they stand."""
        return os.path.dirname(next(iter(self.files)))


@dataclass(frozen=True, eq=False)
class Synchronised:
    """What was done before to the file, or to the names in the folder, is on the disk."""

    file: int | None = None
    folder: str | None = None


@dataclass(frozen=True, eq=False)
class Told:
    """A line of standard output has come to its end."""


Change = Write | Length | Names | Synchronised | Told
Pick = Callable[[Change], int]


def grow(content: bytearray, size: int) -> None:
    """With zeros."""
    content.extend(bytes(max(0, size - len(content))))


def clear(folder: Path) -> None:
    """Removes all that is in it."""
    for path in folder.iterdir():
        if path.is_dir():
            shutil.rmtree(path)
        else:
            path.unlink()


@dataclass(frozen=True)
class State:
    """Files by their paths; one may have several."""

    paths: dict[str, int]
    contents: dict[int, bytes]

    @staticmethod
    def of(folder: Path) -> State:
        """What is there now."""
        paths = {str(path.relative_to(folder)): path for path in folder.rglob("*") if not path.name.endswith(MAPPED)}
        files = {name: FOLDER if path.is_dir() else path.stat().st_ino for name, path in paths.items()}
        return State(files, {path.stat().st_ino: path.read_bytes() for path in paths.values() if not path.is_dir()})

    def get(self, path: str) -> bytes | None:
        """None when there is no such file."""
        return self.contents.get(self.paths.get(path, FOLDER))

    def mark(self) -> str:
        """The same for the same files."""
        marks = hashlib.sha1()
        first: dict[int, str] = {}
        for path, file in sorted(self.paths.items()):
            content = hashlib.sha1(self.contents.get(file, b"")).hexdigest()
            marks.update(f"{path}\0{first.setdefault(file, path)}\0{content}\0".encode())
        return marks.hexdigest()

    def put(self, folder: Path) -> None:
        """Into the folder, in place of all that is there."""
        clear(folder)
        made: dict[int, Path] = {}
        for path, file in sorted(self.paths.items()):
            if file == FOLDER:
                (folder / path).mkdir(mode=0o700)
            elif file in made:
                os.link(made[file], folder / path)
            else:
                made[file] = folder / path
                made[file].write_bytes(self.contents[file])
                made[file].chmod(0o600)


class Record:
    """The changes to a folder that a program has made, read from what was recorded of it."""

    def __init__(self, folder: Path, start: State, trace: bytes) -> None:
        self._folder = str(folder)
        self._names = dict(start.paths)
        self.called = {file: path for path, file in start.paths.items()}  # at first
        self._last = max(start.paths.values(), default=0)
        self._opened: dict[int, int | str] = {}  # files, and paths of folders, by their descriptors
        self.changes: list[Change] = []
        at = 0
        while at < len(trace):
            end = trace.index(b"\n", at)
            function, first, second, path, other, size = trace[at:end].decode().split("\t")
            at = end + 1 + int(size)
            if function in ("open", "mkostemp", "close"):
                self._opened.pop(int(first), None)
            if path == "":
                self._change_opened(function, int(first), int(second), trace[end + 1:at])
            elif self._is_inside(path):
                self._change_named(function, int(first), int(second), self._relative(path), self._relative(other))

    def _is_inside(self, path: str) -> bool:
        return os.path.normpath(path) == self._folder or path.startswith(self._folder + "/")

    def _relative(self, path: str) -> str:
        """The folder itself is called ""."""
        return os.path.normpath(path)[len(self._folder) + 1:]

    def _change_opened(self, function: str, descriptor: int, number: int, data: bytes) -> None:
        found = self._opened.get(descriptor)
        if found is None:
            if function == "write" and descriptor == STANDARD_OUTPUT and data.endswith(b"\n"):
                self.changes.append(Told())
            return
        if function == "sync":
            self.changes.append(Synchronised(folder=found) if isinstance(found, str) else Synchronised(found))
        elif function == "write":
            self.changes.append(Write(found, number, data))
        elif function == "length":
            self.changes.append(Length(found, number))

    def _change_named(self, function: str, descriptor: int, flags: int, path: str, other: str) -> None:
        if function in ("open", "mkostemp"):
            self._open(descriptor, flags, path)
        elif function == "mkdir":
            self._name({path: FOLDER})
        elif function == "unlink":
            self._name({path: None})
        elif function == "link":
            self._name({other: self._names[path]})
        elif function == "rename":
            self._name({other: self._names[path], path: None})

    def _name(self, files: dict[str, int | None]) -> None:
        self.changes.append(Names(files))
        self._names.update(files)
        self._names = {path: file for path, file in self._names.items() if file is not None}

    def _open(self, descriptor: int, flags: int, path: str) -> None:
        if path == "" or self._names.get(path) == FOLDER:
            self._opened[descriptor] = path
            return
        if path not in self._names:
            self._last += 1
            self.called[self._last] = path
            self._name({path: self._last})
        elif flags & os.O_TRUNC:
            self.changes.append(Length(self._names[path], 0))
        self._opened[descriptor] = self._names[path]


class Disk:
    """What it holds for certain, and what was changed since."""

    def __init__(self, start: State) -> None:
        self._paths = dict(start.paths)
        self._contents = {file: bytearray(content) for file, content in start.contents.items()}
        self._names: list[Names] = []
        self._bytes: dict[int, list[Write | Length]] = {}

    def change(self, change: Change) -> None:
        """The next one."""
        if isinstance(change, Names):
            self._names.append(change)
        elif isinstance(change, (Write, Length)):
            self._bytes.setdefault(change.file, []).append(change)
        elif isinstance(change, Told):
            return
        elif change.file is not None:
            self._contents[change.file] = self._content(change.file, lambda _: KEPT, random.Random())
            self._bytes.pop(change.file, None)
        else:
            for names in (names for names in self._names if names.folder == change.folder):
                self._rename(self._paths, names)
            self._names = [names for names in self._names if names.folder != change.folder]

    @staticmethod
    def _rename(paths: dict[str, int], names: Names) -> None:
        for path, file in names.files.items():
            paths.pop(path, None)
            if file is not None:
                paths[path] = file

    def _content(self, file: int, pick: Pick, chance: random.Random) -> bytearray:
        content = bytearray(self._contents.get(file, b""))
        for change in self._bytes.get(file, []):
            change.apply(content, pick(change), chance)
        return content

    def state(self, pick: Pick, chance: random.Random) -> State:
        """What is there when of the changes since only those are that pick tells."""
        paths = dict(self._paths)
        for names in self._names:
            if pick(names) == KEPT:
                self._rename(paths, names)
        there = {path: file for path, file in paths.items()
                 if all(paths.get(str(above)) == FOLDER for above in Path(path).parents if str(above) != ".")}
        return State(there, {file: bytes(self._content(file, pick, chance)) for file in set(there.values()) - {FOLDER}})
