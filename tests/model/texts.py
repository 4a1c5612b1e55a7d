"""Small text operations whose letters matter: numbers, case, blanks, escaping."""
from __future__ import annotations

import re

BLANKS = " \t\n\v\f\r"
INT_MAX = 2147483647
INT_MIN = -2147483648

_NUMBER = re.compile(r"[ \t\n\v\f\r]*([+-]?)([0-9]*)")
_LOWER = {code: code + 32 for code in range(ord("A"), ord("Z") + 1)}
_UPPER = {code: code - 32 for code in range(ord("a"), ord("z") + 1)}
_SPECIAL = (("&", "&amp;"), ("<", "&lt;"), (">", "&gt;"), ('"', "&quot;"), ("'", "&apos;"))


def wtoi(text: str) -> int:
    """Blanks, one sign, leading digits; 0 without digits, the nearest bound when too large."""
    sign, digits = _NUMBER.match(text).groups()
    value = int(digits.lstrip("0")[:20] or "0") * (-1 if sign == "-" else 1)
    return max(INT_MIN, min(INT_MAX, value))


def same_ignoring_case(left: str, right: str) -> bool:
    """Equal when ASCII letters are folded; all other characters must be the same."""
    return left.translate(_LOWER) == right.translate(_LOWER)


def upper(text: str) -> str:
    """Upper case of ASCII letters alone."""
    return text.translate(_UPPER)


def trim(text: str) -> str:
    """Without the six ASCII blanks at both ends."""
    return text.strip(BLANKS)


def trim_right(text: str) -> str:
    """Without the six ASCII blanks at the end."""
    return text.rstrip(BLANKS)


def escape_special(text: str) -> str:
    """The five special characters as entities; what is escaped already is escaped again."""
    for character, entity in _SPECIAL:
        text = text.replace(character, entity)
    return text


def flag(value: bool) -> str:
    return "true" if value else "false"
