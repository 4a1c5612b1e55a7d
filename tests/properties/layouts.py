#!/usr/bin/env python3
"""What dlpctl fmt and dlpctl convert make of made-up documents, held against what dlpctl import makes of both."""

from __future__ import annotations

import argparse
import sys
import tempfile
import xml.parsers.expat
from collections import Counter
from pathlib import Path

sys.dont_write_bytecode = True
sys.path.insert(0, str(Path(__file__).resolve().parent))
sys.path.insert(0, str(Path(__file__).resolve().parent.parent / "model"))

import generator  # noqa: E402
from checks import ROOT, Tool, documents, mutated  # noqa: E402

EXAMPLES = [path.read_bytes() for path in sorted((ROOT / "examples").glob("*.xml"))]


def events(data: bytes) -> list[tuple[object, ...]]:
    """What a document says: tags, comments, instructions, and text that is not blank."""
    said: list[tuple[object, ...]] = []
    text: list[str] = []

    def add(*event: object) -> None:
        if "".join(text).strip(" \t\r\n"):
            said.append(("text", "".join(text)))
        text.clear()
        said.append(event)

    parser = xml.parsers.expat.ParserCreate("UTF-8")
    parser.ordered_attributes = True
    parser.StartElementHandler = lambda name, attributes: add("start", name, *attributes)
    parser.EndElementHandler = lambda name: add("end", name)
    parser.CommentHandler = lambda comment: add("comment", comment)
    parser.ProcessingInstructionHandler = lambda target, value: add("instruction", target, value.rstrip(" \t\n"))
    parser.CharacterDataHandler = text.append
    parser.Parse(data[data.find(b"<"):], True)
    return said


def meanings(tool: Tool, first: Path, second: Path) -> tuple[tuple[object, ...], ...]:
    """What imports of two files into empty stores end with."""
    found = []
    for store, file in (("one.db", first), ("two.db", second)):
        code, _ = tool.run(store, "import", str(file))
        found.append((code, tool.meaning(store)))
        for made in tool.file.parent.glob(store + "*"):
            made.unlink()
    return tuple(found)


def faults_of_form(tool: Tool, data: bytes, met: Counter[str]) -> list[str]:
    """What is wrong with the form of a document."""
    form = tool.file.with_name("form.xml")
    again = tool.file.with_name("again.xml")
    checked, _ = tool.run("none.db", "fmt", "--check", str(tool.file))
    code, _ = tool.run("none.db", "fmt", str(tool.file), "-o", str(form))
    met[f"fmt {code}"] += 1
    if code != 0:
        taken, _ = tool.run("one.db", "import", str(tool.file))
        return [f"fmt refuses what import ends with {taken} for"] if taken != 2 or checked != 2 else []
    wrong = []
    if checked != int(form.read_bytes() != data):
        wrong.append(f"fmt --check ends with {checked}")
    if events(form.read_bytes()) != events(data):
        wrong.append("the form says something else")
    tool.run("none.db", "fmt", str(form), "-o", str(again))
    if again.read_bytes() != form.read_bytes():
        wrong.append("the form has another form")
    before, after = meanings(tool, tool.file, form)
    if before != after:
        wrong.append("an import of the form means something else")
    return wrong


def faults_of_conversion(tool: Tool, met: Counter[str]) -> list[str]:
    """What is wrong with the conversion of a document."""
    result = tool.file.with_name("result.xml")
    checked, report = tool.run("none.db", "convert", "--check", str(tool.file))
    code, _ = tool.run("none.db", "convert", str(tool.file), "-o", str(result))
    met[f"convert {report.get('layout', report['verdict'])}"] += 1
    if checked == 2 or code == 2:
        return [] if checked == code else [f"convert ends with {code}, --check with {checked}"]
    wrong = []
    if tool.run("none.db", "convert", "--check", str(result))[0] != 0:
        wrong.append("the result is to be converted again")
    if (result.read_bytes() == tool.file.read_bytes()) != (checked == 0):
        wrong.append(f"convert --check ends with {checked}")
    (before, meant), (after, means) = meanings(tool, tool.file, result)
    if meant != means or (before == 2) != (after == 2):
        wrong.append(f"an import of the result means something else: {after} after {before}")
    return wrong


def main() -> int:
    """The command line; 1 when something is wrong."""
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--seed", type=int, default=1, help="the first seed")
    parser.add_argument("--count", type=int, default=20, help="how many sequences of documents")
    parser.add_argument("--tool", required=True, help="path of dlpctl")
    arguments = parser.parse_args()
    met: Counter[str] = Counter()
    failed = 0
    for seed in range(arguments.seed, arguments.seed + arguments.count):
        sequence = generator.make(seed)
        made = [mutated(seed), mutated(seed).replace(b" template_version=", b" x="), *documents(sequence["operations"])]
        for index, data in enumerate(made + (EXAMPLES if seed == arguments.seed else [])):
            with tempfile.TemporaryDirectory() as folder:
                tool = Tool(arguments.tool, Path(folder), sequence["home"])
                tool.file.write_bytes(data)
                for wrong in faults_of_form(tool, data, met) + faults_of_conversion(tool, met):
                    print(f"seed {seed}, document {index}: {wrong}")
                    failed += 1
    print(", ".join(f"{what}: {count}" for what, count in sorted(met.items())))
    if met["fmt 0"] == 0 or met["convert older"] == 0 or met["convert standard"] == 0:
        print("the documents say nothing about it")
        failed += 1
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
