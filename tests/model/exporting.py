"""The export: chosen templates, the assets they use and their categories as one document."""

from __future__ import annotations

import log
import rules
import template as templates
from checking import references_are_stored
from errors import XmlError
from manager import FIELD_ELEMENT_NAME, TemplateManager
from records import EXPRESSION_PREFIX, KEYWORD_PREFIX, Expression, KeywordList
from records import Template as Record
from template import Template
from texts import flag
from xmltree import Document, Element, empty_element

CategoryMap = dict[str, list[str]]


class TemplateExport:
    """One export; the subject sets are added to."""

    def __init__(self, manager: TemplateManager, expressions: set[str], keywords: set[str]) -> None:
        self.manager = manager
        self.process = manager.process
        self.trace = manager.trace
        self.expression_subjects = expressions
        self.keyword_subjects = keywords
        self.exported: list[Template] = []
        self.industries: CategoryMap = {}
        self.regions: CategoryMap = {}

    def run(self, names: list[str]) -> str:
        """The document's text, empty when the export failed."""
        entry = "CTemplateMgr::ExportTemplate(lstTemplateName.size() = %d"
        self.trace(log.ENTER, entry, len(names))
        try:
            return self._export(names)
        except XmlError as error:
            message = "CTemplateMgr::ExportTemplate(), Error: %s"
            self.trace(log.CAUGHT, message, error.message)
            return ""

    def _export(self, names: list[str]) -> str:
        document = Document()
        document.load_xml(self.process.assets.generate_root_xml() or "")
        root = document.select_single("/SAPolicy")
        if root is None:
            self.trace(log.FAILED, "Fail to find %s.", "SAPolicy")
            return ""
        self._collect(names)
        template_list = self._template_list_node()
        assets = None if template_list is None else self._assets_node()
        if assets is None:
            return ""
        sections = [assets, template_list] + self._category_nodes()
        for section in sections:
            root.append_child(section)
        text = document.save_xml()
        self.trace(log.LEAVE, "CTemplateMgr::ExportTemplate returns <%s>", text)
        return text

    def _collect(self, names: list[str]) -> None:
        expressions = self.process.store.internal_names(Expression)
        keywords = self.process.store.internal_names(KeywordList)
        for name in names:
            record = self.manager.find_template(FIELD_ELEMENT_NAME, name)
            if record is None:
                self.trace(log.CAUGHT, "Unable to find template.")
            elif references_are_stored(self.manager, record.element, expressions, keywords):
                self._add(record)
            else:
                self.trace(log.CAUGHT, "template contain invalid digital assets.")

    def _add(self, record: Record) -> None:
        document = Document()
        document.load_xml(record.element)
        node = document.select_single("/template")
        if node is None:
            self.trace(log.CAUGHT, "Unable to find template node. skip this one.")
            return
        node.set_attribute("display_name", record.display_name)
        node.set_attribute("description", record.description)
        node.set_attribute("pre-defined", flag(record.pre_defined))
        node.set_attribute("severity", "medium")
        one = templates.read_template(node)
        self.exported.append(one)
        for industry in record.industries:
            self.industries.setdefault(industry, []).append(one.name)
        for region in record.regions:
            self.regions.setdefault(region, []).append(one.name)

    def _template_list_node(self) -> Element | None:
        text = templates.make_compliance_templates_xml(self.process.log, self.exported)
        return self._root_of(text, "complianceTemplates")

    def _assets_node(self) -> Element | None:
        """The assets of all blocks, ascending by name; the caller's sets are filled after it."""
        expressions = [EXPRESSION_PREFIX + name for name in self._names_used(rules.ENTITY)]
        keywords = [KEYWORD_PREFIX + name for name in self._names_used(rules.KEYWORD)]
        text = self.process.assets.generate_digital_assets_xml(expressions, keywords)
        node = self._root_of(text or "", "digitalAssets")
        if node is not None:
            self.expression_subjects.update(expressions)
            self.keyword_subjects.update(keywords)
        return node

    def _names_used(self, kind: int) -> list[str]:
        blocks = [b for one in self.exported for rule in one.rules for b in rule.elements]
        return sorted({block.name for block in blocks if block.type == kind})

    def _root_of(self, text: str, tag: str) -> Element | None:
        document = Document()
        document.load_xml(text)
        node = document.select_single("/" + tag)
        if node is None:
            self.trace(log.FAILED, "Fail to find node %s", tag)
        return node

    def _category_nodes(self) -> list[Element]:
        nodes = []
        for tag, sub_tag, categories in (
            ("industries", "industry", self.industries),
            ("regions", "region", self.regions),
        ):
            _, names, display_names = self.process.policy_lists().get(tag)
            shown = dict(zip(names, display_names))
            nodes.append(self._category_node(tag, sub_tag, shown, categories))
        return nodes

    def _category_node(
        self, tag: str, sub_tag: str, shown: dict[str, str], categories: CategoryMap
    ) -> Element:
        self.trace(log.INFORMATION, "strTag = %s, strSubTag = %s", tag, sub_tag)
        document = Document()
        document.load_xml(empty_element(tag))
        parent = document.select_single("/" + tag)
        for name in sorted(categories):
            category = document.create_node(sub_tag)
            category.set_attribute("name", name)
            category.set_attribute("display_name", shown.get(name, ""))
            for template_name in categories[name]:
                node = document.create_node("template_id")
                node.set_text(template_name)
                category.append_child(node)
            parent.append_child(category)
        return parent
