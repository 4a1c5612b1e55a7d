"""Expressions and keyword lists to and from documents, with the version and language shared by all.

One object stands for the process: version and language outlive every operation.
"""
from __future__ import annotations

import assets_export
import assets_import
import log
from errors import CommonError
from log import Log
from records import Store
from xmltree import DECLARATION, Document, empty_element

LANGUAGE_NUMBER = 1009
FIRST_VERSION = "3.0.1000"


class DigitalAssets:
    """The parser of digital assets; `strings` are the localised texts by number."""

    def __init__(self, store: Store, lines: Log, strings: dict[int, str]) -> None:
        self.store = store
        self.lines = lines
        self.version = FIRST_VERSION
        self.language = ""
        self._strings = strings

    def get_language(self) -> str:
        """The language; an empty one is first filled from the localised texts and kept."""
        if not self.language:
            self.language = self._strings.get(LANGUAGE_NUMBER, "")
        return self.language

    def generate_root_xml(self) -> str | None:
        """The empty policy document; None when it cannot be written."""
        self.lines.add(log.ENTER, log.ASSETS, "CDLPDigitalAssetsParser::GenerateRootXML()")
        try:
            document = Document()
            document.load_xml(DECLARATION + empty_element("SAPolicy"))
            root = document.select_single("/SAPolicy")
            root.set_attribute("template_version", self.version)
            root.set_attribute("localization_language", self.get_language())
            return document.save_xml()
        except CommonError as error:
            message = "Fail to generate xml file root part, Error: %s"
            self.lines.add(log.FAILED, log.ASSETS, message, error.message)
            return None

    def generate_digital_assets_xml(self, expressions: list[str],
                                    keywords: list[str]) -> str | None:
        """The `digitalAssets` element of the records of these subjects; None on any failure."""
        return assets_export.digital_assets_xml(self.store, self.lines, expressions, keywords)

    def export(self, expressions: list[str], keywords: list[str]) -> str | None:
        """The whole document of the records of these subjects; None on any failure."""
        self.lines.add(log.ENTER, log.ASSETS, "CDLPDigitalAssetsParser::ExportDigitalAssets()")
        root_text = self.generate_root_xml()
        root_document = self._part(root_text, "SAPolicy")
        if root_document is None:
            return None
        assets_text = self.generate_digital_assets_xml(expressions, keywords)
        assets_document = self._part(assets_text, "digitalAssets")
        if assets_document is None:
            return None
        root_document.root().append_child(assets_document.root())
        return root_document.save_xml()

    def _part(self, text: str | None, name: str) -> Document | None:
        if text is None:
            message = "Fail to generate xml file digital assets part."
            self.lines.add(log.FAILED, log.ASSETS, message)
            return None
        document = Document()
        document.load_xml(text)
        if document.select_single("/" + name) is None:
            self.lines.add(log.FAILED, log.ASSETS, "Fail to find %s.", name)
            return None
        return document

    def import_all(self, scope: str, text: str, skipped: list[str]) -> int:
        """Expressions, then keyword lists: 0, 2 for the language, 3 for a pass that failed."""
        return assets_import.run(self, scope, text, skipped, assets_import.BOTH)

    def import_expressions(self, scope: str, text: str, skipped: list[str]) -> int:
        return assets_import.run(self, scope, text, skipped, assets_import.EXPRESSIONS)

    def import_keywords(self, scope: str, text: str, skipped: list[str]) -> int:
        return assets_import.run(self, scope, text, skipped, assets_import.KEYWORDS)


def read_strings(data: bytes | None) -> dict[int, str]:
    """Texts by number: number, tab, text in each line that is no comment."""
    strings = {}
    for line in (data or b"").removeprefix(b"\xef\xbb\xbf").split(b"\n"):
        number, tab, text = line.decode("utf-8", "replace").removesuffix("\r").partition("\t")
        if tab and number.isascii() and number.isdigit():
            strings[int(number)] = text
    return strings
