#!/usr/bin/env python3
"""Runs sequences of operations through the library and the model, and tells what differs."""

from __future__ import annotations

import argparse
import json
import re
import sys
from collections.abc import Iterator
from concurrent.futures import ProcessPoolExecutor
from itertools import groupby
from pathlib import Path
from typing import NamedTuple

sys.dont_write_bytecode = True

import generator  # noqa: E402
from errors import UNSTATED  # noqa: E402
from runners import Result, Sequence, run_driver, run_model  # noqa: E402
from shrinking import shrunk  # noqa: E402

BATCH = 25
SHOWN = 60


class Difference(NamedTuple):
    """Where two results part; `path` leads to the place inside the result."""

    operation: int
    path: str
    model: object
    library: object


class Batch(NamedTuple):
    """What a batch of sequences gave; only those that differ are kept."""

    sequences: int
    operations: int
    differing: list[tuple[Sequence, list[Difference]]]


def _same_text(model: str, library: str) -> bool:
    if UNSTATED not in model:
        return model == library
    pattern = ".+".join(re.escape(part) for part in model.split(UNSTATED))
    return re.fullmatch(pattern, library, re.DOTALL) is not None


def _differences(path: str, model: object, library: object) -> Iterator[tuple[str, object, object]]:
    """The places where two values part: the first one of a list, all of an object."""
    if isinstance(model, dict) and isinstance(library, dict):
        for key in {**model, **library}:
            yield from _differences(f"{path}.{key}", model.get(key), library.get(key))
    elif isinstance(model, list) and isinstance(library, list):
        for index in range(max(len(model), len(library))):
            left, right = (v[index] if index < len(v) else None for v in (model, library))
            found = list(_differences(f"{path}[{index}]", left, right))
            if found:
                yield from found[:1]
                return
    elif isinstance(model, str) and isinstance(library, str):
        if not _same_text(model, library):
            yield path, model, library
    elif type(model) is not type(library) or model != library:
        yield path, model, library


def _settled(operation: dict[str, object], result: Result) -> Result:
    """The result with what nothing orders in one order."""
    result = dict(result)
    if operation["op"] == "keywords_from_xml" and "keywords" in result:
        runs = groupby(result["keywords"], key=lambda keyword: keyword[0])
        result["keywords"] = [keyword for _, run in runs for keyword in sorted(run)]
    if operation["op"] == "metadata" and operation["list"] == "validators" and "names" in result:
        pairs = zip(result["display_names"], result["names"])
        runs = groupby(pairs, key=lambda pair: pair[0])
        result["names"] = [name for _, run in runs for name in sorted(pair[1] for pair in run)]
    return result


def compare(sequence: Sequence, library: list[Result]) -> list[Difference]:
    """The differences of the first operation that has any; later ones may only follow from them."""
    try:
        model = run_model(sequence)
    except Exception as error:  # the model's own fault is a difference, too
        return [Difference(-1, "model", f"{type(error).__name__}: {error}", None)]
    for index, operation in enumerate(sequence["operations"]):
        given = _settled(operation, library[index]) if index < len(library) else None
        found = list(_differences("", _settled(operation, model[index]), given))
        if found:
            return [Difference(index, *difference) for difference in found]
    if len(library) > len(model):
        return [Difference(len(model), "end", None, library[-1])]
    return []


def shortened(model: object, library: object) -> tuple[str, str]:
    """Both values around the first place where they differ."""
    left, right = (json.dumps(value, ensure_ascii=False) for value in (model, library))
    same = next((i for i, (a, b) in enumerate(zip(left, right)) if a != b),
                min(len(left), len(right)))
    start = max(0, same - SHOWN)

    def cut(text: str) -> str:
        end = same + SHOWN
        return ("..." if start else "") + text[start:end] + ("..." if end < len(text) else "")
    return cut(left), cut(right)


def report(sequence: Sequence, differences: list[Difference]) -> str:
    """The differences of one sequence for people."""
    lines = []
    operations = sequence["operations"]
    for index, path, model, library in differences:
        name = operations[index]["op"] if 0 <= index < len(operations) else "?"
        left, right = shortened(model, library)
        lines.append(f"seed {sequence['seed']}, operation {index} ({name}), {path}")
        lines += [f"  model:   {left}", f"  library: {right}"]
    return "\n".join(lines)


def _compared(sequence: Sequence, arguments: argparse.Namespace) -> list[Difference]:
    return compare(sequence, run_driver(arguments.driver, arguments.store, [sequence])[0])


def _batch(seeds: range, arguments: argparse.Namespace) -> Batch:
    """Compares the sequences of some seeds."""
    sequences = [generator.make(seed) for seed in seeds]
    libraries = run_driver(arguments.driver, arguments.store, sequences)
    pairs = zip(sequences, libraries, strict=True)
    compared = [(sequence, compare(sequence, library)) for sequence, library in pairs]
    operations = sum(len(sequence["operations"]) for sequence in sequences)
    return Batch(len(sequences), operations, [pair for pair in compared if pair[1]])


def _tell(sequence: Sequence, differences: list[Difference], arguments: argparse.Namespace) -> None:
    print(report(sequence, differences), flush=True)
    if arguments.shrink and differences[0].operation >= 0:
        small = shrunk(sequence, lambda candidate: bool(_compared(candidate, arguments)))
        path = Path(arguments.shrink) / f"seed-{sequence['seed']}.json"
        path.write_text(json.dumps(small, indent=1), encoding="utf-8")
        print(f"  shrunk: {path}", report(small, _compared(small, arguments)), sep="\n", flush=True)


def run(arguments: argparse.Namespace) -> int:
    """Compares and prints; 1 with differences."""
    end = arguments.seed + arguments.count
    batches = [range(seed, min(seed + BATCH, end)) for seed in range(arguments.seed, end, BATCH)]
    sequences = operations = differing = 0
    with ProcessPoolExecutor(arguments.jobs) as pool:
        for counted, ran, found in pool.map(_batch, batches, [arguments] * len(batches)):
            sequences += counted
            operations += ran
            differing += len(found)
            for sequence, differences in found:
                _tell(sequence, differences, arguments)
    return _sum_up(sequences, operations, differing)


def _sum_up(sequences: int, operations: int, differing: int) -> int:
    print(f"{sequences} sequences, {operations} operations, {differing} differences")
    return 1 if differing else 0


def run_file(arguments: argparse.Namespace) -> int:
    """Compares one sequence from a file, such as --shrink writes."""
    sequence = json.loads(Path(arguments.file).read_text(encoding="utf-8"))
    differences = _compared(sequence, arguments)
    if differences:
        _tell(sequence, differences, arguments)
    return _sum_up(1, len(sequence["operations"]), 1 if differences else 0)


def main() -> int:
    """The command line."""
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--seed", type=int, default=1, help="the first seed")
    parser.add_argument("--count", type=int, default=500, help="how many sequences")
    parser.add_argument("--jobs", type=int, default=2, help="how many processes")
    parser.add_argument("--driver", required=True, help="path of dlp_model_driver")
    parser.add_argument("--store", choices=["memory:", "sqlite"], default="memory:")
    parser.add_argument("--shrink", metavar="FOLDER",
                        help="write each differing sequence there, as small as it gets")
    parser.add_argument("--file", help="compare the sequence of this file instead")
    arguments = parser.parse_args()
    return run_file(arguments) if arguments.file else run(arguments)


if __name__ == "__main__":
    sys.exit(main())
