"""Log lines: level, source unit, message; formatted by the caller's arguments."""
from __future__ import annotations

ENTER = 0x110
LEAVE = 0x111
INFORMATION = 0x102
INVALID = 0x1001
CAUGHT = 0x1003
FAILED = 0x1004

ASSETS = ".\\util_ParseDLPDigitalAssets.cpp"
PARSE = ".\\util_ParseDLPTemplate.cpp"
TEMPLATE = ".\\DLPTemplate.cpp"
MANAGER = ".\\DLPTemplateMgr.cpp"
MANAGER_HEADER = ".\\DLPTemplateMgr.h"

POINTER = "<pointer>"
"""Stands for an address in a message."""


class Log:
    """Collects [level, source, message] in order."""

    def __init__(self) -> None:
        self.lines: list[list[int | str]] = []

    def add(self, level: int, source: str, message: str, *arguments: object) -> None:
        """Adds a line; `%s` and `%d` take the arguments in turn, booleans as numbers."""
        values = tuple(int(value) if isinstance(value, bool) else value for value in arguments)
        self.lines.append([level, source, message % values if values else message])

    def take(self) -> list[list[int | str]]:
        """The lines since the last call."""
        lines, self.lines = self.lines, []
        return lines


def narrow_view(text: str) -> str:
    """What a byte format shows of a wide text: the bytes of its characters up to the first zero.

    A wide character has 32 bits, the low byte first, and its high byte is always zero.
    """
    data = text.encode("utf-32-le", "surrogatepass")
    return data.partition(b"\0")[0].decode("latin-1")
