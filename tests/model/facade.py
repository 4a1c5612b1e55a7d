"""What callers reach: one template's rules, and whole documents in and out."""

from __future__ import annotations

import log
import rules
import template as templates
from errors import UNSTATED, CommonError
from exporting import TemplateExport
from importing import TemplateImport
from manager import TemplateManager
from process import Process


class TemplateParse:
    """Holds the text of one `template` element; the document operations do not use it."""

    def __init__(self, process: Process, content: str = "") -> None:
        self.process = process
        self.content = content

    def parse_content(self, rule_texts: list[str], operators: list[str]) -> bool:
        """Appends one rule text and one operator text per rule."""
        found = templates.template_from_text(self.content).rules
        rules.format_match_rules(found, rule_texts, operators)
        return True

    def save_to_xml_str(
        self,
        rule_texts: list[str],
        operators: list[str],
        name: str,
        display_name: str,
        description: str,
    ) -> bool:
        """Replaces the content; what cannot be written leaves it."""
        one = templates.template_from_rules(
            name, display_name, description, rule_texts, operators
        )
        self.content = templates.to_xml_string(self.process.log, one) or self.content
        return True

    def do_template_import(self, scope: str, text: str) -> tuple[int, TemplateImport]:
        one = TemplateImport(TemplateManager(self.process, scope))
        return one.run(text), one

    def do_template_export(
        self, scope: str, names: list[str], expressions: set[str], keywords: set[str]
    ) -> str:
        manager = TemplateManager(self.process, scope)
        return TemplateExport(manager, expressions, keywords).run(names)

    def import_from_file(self, data: bytes | None) -> bool:
        """False only when the file cannot be read as text; the import's code is logged."""
        try:
            text = file_text(data)
        except CommonError as error:
            self._trace("Get exception: %s", error.message)
            return False
        if text:
            code, _ = self.do_template_import("", text)
            self._trace("nImportResult value is = %d", code)
        return True

    def _trace(self, message: str, *arguments: object) -> None:
        self.process.log.add(log.INFORMATION, log.PARSE, message, *arguments)


def file_text(data: bytes | None) -> str:
    """The text from the first markup on, empty without any; raises CommonError."""
    if data is None:
        raise CommonError("Open DLP template policy file failed!")
    start = data.find(b"<")
    try:
        return "" if start < 0 else data[start:].decode("utf-8")
    except UnicodeDecodeError as error:
        raise CommonError(UNSTATED) from error
