"""Makes a sequence smaller while something about it stays true."""

from __future__ import annotations

import copy
import re
import time
from collections.abc import Callable, Iterator

Sequence = dict[str, object]
Holds = Callable[[Sequence], bool]

SECONDS = 60
TAG = re.compile(r"<(/?)([^\s<>/!?]+)((?:[^<>\"']|\"[^\"]*\"|'[^']*')*?)(/?)>")
ATTRIBUTE = re.compile(r"\s+[^\s=<>/\"']+\s*=\s*(?:\"[^\"]*\"|'[^']*')")
TEXT = re.compile(r"(?<=>)[^<]+(?=<)|<!--.*?-->|<\?.*?\?>|\S{8,}", re.DOTALL)


def shrunk(sequence: Sequence, holds: Holds) -> Sequence:
    """The sequence without the operations, elements, attributes and texts that do not matter."""
    until = time.monotonic() + SECONDS
    smaller = _without_operations(copy.deepcopy(sequence), holds, until)
    for name in smaller["home"]:
        smaller = _first_that_holds([_with_home(smaller, name)], holds) or smaller
    again = True
    while again and time.monotonic() < until:
        again = False
        for index, operation in enumerate(smaller["operations"]):
            for key in operation:
                reduced = _smaller_value(smaller, index, key, holds, until)
                again = again or reduced is not smaller
                smaller = reduced
    return smaller


def _without_operations(sequence: Sequence, holds: Holds, until: float) -> Sequence:
    index = 0
    while index < len(sequence["operations"]) and time.monotonic() < until:
        candidate = copy.deepcopy(sequence)
        del candidate["operations"][index]
        if candidate["operations"] and holds(candidate):
            sequence = candidate
        else:
            index += 1
    return sequence


def _with_home(sequence: Sequence, name: str) -> Sequence:
    candidate = copy.deepcopy(sequence)
    candidate["home"][name] = None
    return candidate


def _first_that_holds(candidates: list[Sequence], holds: Holds) -> Sequence | None:
    return next((candidate for candidate in candidates if holds(candidate)), None)


def _smaller_value(sequence: Sequence, index: int, key: str, holds: Holds,
                   until: float) -> Sequence:
    """The sequence with one argument of one operation made smaller, again and again."""
    progress = True
    while progress and time.monotonic() < until:
        progress = False
        for value in _smaller(key, sequence["operations"][index][key]):
            candidate = copy.deepcopy(sequence)
            candidate["operations"][index][key] = value
            if time.monotonic() < until and holds(candidate):
                sequence, progress = candidate, True
                break
    return sequence


def _smaller(key: str, value: object) -> Iterator[object]:
    """Values with a piece left out."""
    if key in ("op", "which", "kind", "list", "container", "item", "field", "subject"):
        return
    if isinstance(value, str) and value:
        if key == "bytes":
            for text in _smaller_texts(bytes.fromhex(value).decode("utf-8", "surrogateescape")):
                yield text.encode("utf-8", "surrogateescape").hex()
        else:
            yield from _smaller_texts(value)
    elif isinstance(value, list):
        for index in range(len(value)):
            yield value[:index] + value[index + 1:]
    elif isinstance(value, dict):
        for name in value:
            if name not in ("subject", "name"):
                yield {other: kept for other, kept in value.items() if other != name}
                for smaller in _smaller(name, value[name]):
                    yield {**value, name: smaller}


def _smaller_texts(text: str) -> Iterator[str]:
    """Texts without an element, an attribute or a run of characters; the largest pieces first."""
    if len(text) < 40:
        for index in range(len(text)):
            yield text[:index] + text[index + 1:]
        return
    pieces = _elements(text)
    pieces += [found.span() for pattern in (ATTRIBUTE, TEXT) for found in pattern.finditer(text)]
    for start, end in sorted(pieces, key=lambda piece: piece[0] - piece[1]):
        if end - start < len(text):
            yield text[:start] + text[end:]


def _elements(text: str) -> list[tuple[int, int]]:
    """Where the elements of a text stand, as far as it has any."""
    found: list[tuple[int, int]] = []
    opened: list[tuple[str, int]] = []
    for tag in TAG.finditer(text):
        closing, name, _, alone = tag.groups()
        if alone:
            found.append(tag.span())
        elif not closing:
            opened.append((name, tag.start()))
        elif opened and opened[-1][0] == name:
            found.append((opened.pop()[1], tag.end()))
    return found
