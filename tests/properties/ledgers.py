#!/usr/bin/env python3
"""What dlpctl import tells of each item of a document, held against the items that the document has."""

from __future__ import annotations

import argparse
import json
import os
import subprocess
import sys
import tempfile
from collections import Counter
from pathlib import Path
from typing import Iterator, NamedTuple
from xml.parsers import expat

sys.dont_write_bytecode = True
sys.path.insert(0, str(Path(__file__).resolve().parent.parent / "model"))

import generator  # noqa: E402
from runners import home_bytes  # noqa: E402

ROOT = Path(__file__).resolve().parent.parent.parent
TAKEN = ("created", "updated", "unchanged")
DISPOSITIONS = (*TAKEN, "skipped", "failed")
PASSED_OVER = "passed_over"

Report = dict[str, object]

KINDS = {("SAPolicy", "digitalAssets", "entity"): "expression",
         ("SAPolicy", "digitalAssets", "dictionary"): "keyword",
         ("SAPolicy", "complianceTemplates", "template"): "template",
         ("SAPolicy", "industries", "industry", "template_id"): "category",
         ("SAPolicy", "regions", "region", "template_id"): "category"}
CATEGORIES = {("SAPolicy", "industries", "industry"), ("SAPolicy", "regions", "region")}
SECTIONS = ("digitalAssets", "industries", "regions")
# What an asset is made of.
PARTS = {("SAPolicy", "digitalAssets", "entity"): ("regularExpression", "alphabetCharset", "patternForDisplay",
                                                   "examples"),
         ("SAPolicy", "digitalAssets", "dictionary"): ("keyword",)}
# Where items and parts of assets stand: every other element there is none.
HOLDERS = {path[:depth] for path in KINDS for depth in range(1, len(path))} | set(PARTS)
KNOWN = HOLDERS | set(KINDS) | {(*path, part) for path, parts in PARTS.items() for part in parts}
OLDER_HOLDERS = {("SAPolicy",), ("SAPolicy", "complianceTemplates")}
ASSET_HOLDERS = {("SAPolicy",), ("SAPolicy", "digitalAssets")} | set(PARTS)


class Place(NamedTuple):
    """Where an item stands, and what kind it is of."""

    line: int
    column: int
    kind: str
    name: str


class Walk:
    """The items of a document, found by a parser of its own."""

    def __init__(self, data: bytes) -> None:
        self._data = data
        self._start = max(data.find(b"<"), 0)
        self._path: list[str] = []
        self._parents: list[str] = []
        self._entries: list[tuple[int, str, list[str]]] = []
        self._found: list[tuple[int, str, str]] = []
        self._nameless: list[int] = []  # industries and regions
        self._sections: list[tuple[int, str]] = []
        self._elements: list[tuple[int, tuple[str, ...]]] = []
        self.older = False
        self._parser = expat.ParserCreate("UTF-8")
        self._parser.StartElementHandler = self._begin
        self._parser.EndElementHandler = self._end
        self._parser.CharacterDataHandler = self._text
        self._parser.Parse(data[self._start:], True)

    def items(self) -> list[Place]:
        """What an import tells of, in the order of the file."""
        if self.older:
            found = [item for item in self._found if item[1] == "template"]
            found += [(offset, "section", name) for offset, name in dict.fromkeys(self._sections)]
            found += self._lost(OLDER_HOLDERS)
        else:
            names = {name for _, kind, name in self._found if kind == "template"}
            found = self._found + [(offset, "category", category) for offset, category, text in self._entries
                                   if "".join(text) not in names]
            found += [(offset, "category", "") for offset in self._nameless]
            found += self._lost(HOLDERS)
        return [Place(*self._place(offset), kind, name) for offset, kind, name in sorted(found)]

    def assets(self) -> int:
        """How many items there are to an import of assets alone, templates counted."""
        return len(self._found) + len(self._lost(ASSET_HOLDERS))

    def every(self, assets: bool) -> list[Place]:
        """The assets and templates, whatever becomes of them."""
        return [Place(*self._place(offset), kind, name) for offset, kind, name in sorted(self._found)
                if kind == "template" or assets]

    def _lost(self, holders: set[tuple[str, ...]]) -> list[tuple[int, str, str]]:
        return [(offset, "element", path[-1]) for offset, path in self._elements if path[:-1] in holders]

    def _begin(self, name: str, attributes: dict[str, str]) -> None:
        if not self._path:
            self.older = not attributes.get("template_version")
        if len(self._path) == 2 and self._path[0] == "SAPolicy" and self._path[1] in SECTIONS:
            self._sections.append((self._open[1], self._path[1]))
        self._path.append(name)
        self._parents.append(attributes.get("name", ""))
        offset = self._start + self._parser.CurrentByteIndex
        self._open = {**getattr(self, "_open", {}), len(self._path) - 1: offset}
        path = tuple(self._path)
        if path[:-1] in HOLDERS and path not in KNOWN:
            self._elements.append((offset, path))
        if path in CATEGORIES and not attributes.get("name"):
            self._nameless.append(offset)
        kind = KINDS.get(path)
        if kind == "category":
            self._entries.append((offset, self._parents[-2], []))
        elif kind:
            self._found.append((offset, kind, self._parents[-1]))

    def _end(self, _: str) -> None:
        self._path.pop()
        self._parents.pop()

    def _text(self, text: str) -> None:
        if KINDS.get(tuple(self._path[:4])) == "category":
            self._entries[-1][2].append(text)

    def _place(self, offset: int) -> tuple[int, int]:
        before = self._data[:offset].replace(b"\r\n", b"\n\n").replace(b"\r", b"\n")
        lines = self._data[:offset].replace(b"\r\n", b"\n").replace(b"\r", b"\n").count(b"\n")
        column = before.rfind(b"\n") + 1
        return lines + 1, sum(byte & 0xC0 != 0x80 for byte in self._data[column:offset]) + 1


class Tool:
    """dlpctl with a home, a language and a store of its own."""

    def __init__(self, path: str, folder: Path, home: dict[str, object]) -> None:
        self.file = folder / "policy.xml"
        (folder / "config").mkdir()
        for name, content in home_bytes(home).items():
            if content is not None:
                (folder / "config" / name).write_bytes(content)
        self._start = [path, "--home", str(folder), "--language", "English", "--json",
                       "--store", f"sqlite:{folder}/policy.db"]

    def run(self, *words: str) -> tuple[int, list[Report]]:
        """The exit code and the answers."""
        code, output = self._run(*words)
        return code, [json.loads(line) for line in output.splitlines()]

    def dump(self) -> bytes:
        """The whole store."""
        return self._run("store", "dump")[1]

    def _run(self, *words: str) -> tuple[int, bytes]:
        done = subprocess.run([*self._start, *words], stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, check=False)
        return done.returncode, done.stdout


def faults(report: Report, data: bytes) -> Iterator[str]:
    """What is wrong with the ledger of an import."""
    for item in report["items"]:
        if item["disposition"] not in DISPOSITIONS:
            yield f"no disposition: {item}"
        if (item["reason"] == "") != (item["disposition"] in TAKEN):
            yield f"taken with a reason, or not taken without one: {item}"
    if report["result"] is None:
        return
    told = [Place(item["line"], item["column"], item["kind"], item["name"]) for item in report["items"]]
    walk = Walk(data)
    expected = walk.items()
    if report["result"] != 0:
        if any(item["disposition"] in TAKEN for item in report["items"]):
            yield f"taken of what was refused: {report}"
        expected = walk.every(not walk.older) if report["result"] != 1 else []
        told = [place for place in told if place.kind in ("expression", "keyword", "template")]
    if told != expected:
        yield f"told of {told}, the document has {expected}"


def trial(tool: Tool, data: bytes, met: Counter[str]) -> Iterator[str]:
    """What is wrong with a dry run, the import itself, and imports of a part."""
    tool.file.write_bytes(data)
    path = str(tool.file)
    before = tool.dump()
    code, preview = tool.run("import", "--dry-run", path)
    if tool.dump() != before:
        yield "a dry run has changed the store"
    if code in (0, 1):
        yield from parts(tool, data, met)
    real_code, real = tool.run("import", path)
    if code != real_code or [{**report, "dry_run": False} for report in preview] != real:
        yield "a dry run tells otherwise than the import"
    yield from faults(real[0], data)
    met[f"exit code {real_code}"] += 1
    met.update(f"{item['kind']} {item['disposition']}" for item in real[0]["items"])
    met["older layout"] += real_code in (0, 1) and Walk(data).older


def parts(tool: Tool, data: bytes, met: Counter[str]) -> Iterator[str]:
    """Of a document that is taken: nothing is lost between what is told of and what is passed over."""
    walk = Walk(data)
    names = sorted({item.name for item in walk.items() if item.name})
    for name in names[:2]:
        _, chosen = tool.run("import", "--dry-run", f"--only={name}", str(tool.file))
        met["chosen"] += len(chosen[0]["items"])
        if len(chosen[0]["items"]) + chosen[0][PASSED_OVER] != len(walk.items()):
            yield f"--only {name!r}: {chosen[0]}"
    _, assets = tool.run("assets", "import", "--dry-run", str(tool.file))
    if assets[0]["result"] == 0 and len(assets[0]["items"]) + assets[0][PASSED_OVER] != walk.assets():
        yield f"assets import: {assets[0]}"


def at_hand() -> list[Path]:
    """The documents of the tree, and those that others wrote."""
    found = [*(ROOT / "examples").glob("*.xml")]
    if corpora := os.environ.get("DLP_TEST_CORPORA"):
        found += Path(corpora).rglob("*.xml")
    return sorted(found)


def documents(operations: list[dict[str, object]]) -> list[bytes]:
    """The documents of a sequence, as files."""
    return [bytes.fromhex(str(operation["bytes"])) if operation["op"] == "import_file"
            else str(operation["text"]).encode(errors="surrogatepass") for operation in operations
            if operation["op"] == "import" or (operation["op"] == "import_file" and operation["bytes"] is not None)]


def run_files(path: str, met: Counter[str]) -> Iterator[str]:
    """The documents at hand, all in one run."""
    files = at_hand()
    with tempfile.TemporaryDirectory() as folder:
        tool = Tool(path, Path(folder), {})
        code, preview = tool.run("import", "--dry-run", *map(str, files))
        real_code, real = tool.run("import", *map(str, files))
        if code != real_code or [{**report, "dry_run": False} for report in preview] != real:
            yield "a dry run of the files at hand tells otherwise than the import"
        for file, report in zip(files, real, strict=True):
            met[f"file {report['verdict']}"] += 1
            yield from (f"{file}: {wrong}" for wrong in faults(report, file.read_bytes()))


def main() -> int:
    """The command line; 1 when a ledger is wrong."""
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--seed", type=int, default=1, help="the first seed")
    parser.add_argument("--count", type=int, default=20, help="how many sequences of documents")
    parser.add_argument("--tool", required=True, help="path of dlpctl")
    arguments = parser.parse_args()
    met: Counter[str] = Counter()
    failed = 0
    for wrong in run_files(arguments.tool, met):
        print(wrong)
        failed += 1
    for seed in range(arguments.seed, arguments.seed + arguments.count):
        sequence = generator.make(seed)
        with tempfile.TemporaryDirectory() as folder:
            tool = Tool(arguments.tool, Path(folder), sequence["home"])
            for index, data in enumerate(documents(sequence["operations"])):
                for wrong in trial(tool, data, met):
                    print(f"seed {seed}, document {index}: {wrong}")
                    failed += 1
    print(", ".join(f"{what}: {count}" for what, count in sorted(met.items())))
    for what in ("older layout", "category skipped", "section skipped", "template created", "keyword created", "chosen"):
        if met[what] == 0:
            print(f"the documents say nothing about it: {what}")
            failed += 1
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
