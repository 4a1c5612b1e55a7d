"""The check of a document before its templates are imported, and that of a stored template."""

from __future__ import annotations

import log
import rules
from manager import TemplateManager
from records import Expression, KeywordList
from texts import same_ignoring_case
from xmltree import Document, Element

TEMPLATES_PATH = "/SAPolicy/complianceTemplates/template"


def accepts_operation(text: str) -> bool:
    return text == "" or rules.operator_from_text(text) in (rules.AND, rules.OR)


class ImportCheck:
    """Lists the templates of a document that cannot be imported as they stand."""

    def __init__(self, manager: TemplateManager) -> None:
        self.manager = manager
        self.expressions: list[str] = []
        self.keywords: list[str] = []

    def run(self, xml: str, invalid: list[str]) -> bool:
        """False for a document without templates; appends the names of the offending ones."""
        text = "CTemplateMgr::CheckImportTemplate"
        trace = self.manager.trace
        trace(log.ENTER, text + "(strXmlContent = %s)", xml)
        self.expressions = self.manager.process.store.internal_names(Expression)
        self.keywords = self.manager.process.store.internal_names(KeywordList)
        document = Document()
        document.load_xml(xml)
        templates = document.select_nodes(TEMPLATES_PATH)
        if not templates:
            missing = text + " Unable to find node %s. The xml file format is incompatible."
            trace(log.FAILED, missing, TEMPLATES_PATH)
            return False
        for template in templates:
            self._check_template(template, invalid)
        trace(log.LEAVE, text)
        return True

    def _check_template(self, template: Element, invalid: list[str]) -> None:
        """A template may be appended twice: for its blocks and for its rules."""
        name = template.get_attribute("name")
        if not name:
            return
        if not all(map(self._accepts_block, template.select_nodes("./matchRule/buildingBlock"))):
            invalid.append(name)
        if not all(map(self._accepts_rule, template.select_nodes("./matchRule"))):
            invalid.append(name)

    def _accepts_block(self, block: Element) -> bool:
        kind = block.get_attribute("sourceType")
        name = block.get_attribute("sourceName")
        operation = block.get_attribute("operation")
        if kind == "ENTITY" and name not in self.expressions:
            return self._refuse("expression internal name %s is invalid", name)
        if kind == "KEYWORD" and name not in self.keywords:
            return self._refuse("keyword internal name %s is invalid", name)
        if kind not in ("ENTITY", "KEYWORD"):
            return self._refuse("this digital asset type is not supported type = %s", kind)
        if not accepts_operation(operation):
            return self._refuse("buildingblock operation %s is invalid", operation)
        return True

    def _accepts_rule(self, rule: Element) -> bool:
        operation = rule.get_attribute("operation")
        if not accepts_operation(operation):
            return self._refuse("matchRule operation %s is invalid", operation)
        return True

    def _refuse(self, message: str, value: str) -> bool:
        self.manager.trace(log.INFORMATION, message, value)
        return False


def references_are_stored(
    manager: TemplateManager, element: str, expressions: list[str], keywords: list[str]
) -> bool:
    """Whether every block of a stored element names a stored asset; types in any letter case."""
    document = Document()
    document.load_xml(element)
    for block in document.select_nodes("/template/matchRule/buildingBlock") or []:
        kind = block.get_attribute("sourceType")
        name = block.get_attribute("sourceName")
        message, value = "", name
        if same_ignoring_case(kind, "ENTITY"):
            if name not in expressions:
                message = "template contain invalid expression %s"
        elif same_ignoring_case(kind, "KEYWORD"):
            if name not in keywords:
                message = "template contain invalid keyword %s"
        else:
            message, value = "this digital asset type is not supported type = %s", kind
        if message:
            manager.trace(log.INVALID, message, value)
            return False
    return True
