"""The exceptions of the library and what stands for their texts."""
from __future__ import annotations

UNSTATED = "<error>"
"""Stands in log lines for a message that no format states: any text matches it."""


class CommonError(Exception):
    """The common library's exception."""

    def __init__(self, message: str) -> None:
        super().__init__(message)
        self.message = message


class XmlError(CommonError):
    """The XML library's exception, a common one told apart by its type."""
