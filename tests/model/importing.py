"""The import: format check, conversion of the older layout, assets, check, then each template."""

from __future__ import annotations

import log
from checking import TEMPLATES_PATH, ImportCheck
from errors import CommonError
from manager import FIELD_ELEMENT_NAME, TemplateManager
from normalizer import XmlNormalizer
from records import TEMPLATE_PREFIX, Template
from texts import same_ignoring_case
from xmltree import Document, Element

DONE, NO_TEMPLATE_DOCUMENT, FAILED = 0, 1, 3
INCOMPATIBLE = " Unable to find node %s. The xml file format is incompatible."


class TemplateImport:
    """One import and the three lists that it fills."""

    def __init__(self, manager: TemplateManager) -> None:
        self.manager = manager
        self.process = manager.process
        self.trace = manager.trace
        self.imported: list[str] = []
        self.skipped: list[str] = []
        self.skipped_assets: list[str] = []
        self.industries: dict[str, list[str]] = {}
        self.regions: dict[str, list[str]] = {}

    def run(self, xml: str) -> int:
        entry = "CTemplateMgr::ImportTemplate(strXmlContent length = [%d])"
        self.trace(log.ENTER, entry, len(xml))
        code = NO_TEMPLATE_DOCUMENT
        known, convert = self.check_format(xml)
        if known:
            code = self._convert_and_import(xml) if convert else self._import(xml)
        self.trace(log.LEAVE, "CTemplateMgr::ImportTemplate result = %d", code)
        return code

    def check_format(self, xml: str) -> tuple[bool, bool]:
        """Whether it is a policy document, and whether of the older layout."""
        self.trace(log.ENTER, "CTemplateMgr::CheckFormat()")
        document = Document()
        document.load_xml(xml)
        root = document.select_single("/SAPolicy")
        if root is None:
            message = "CTemplateMgr::IsStandardFormat" + INCOMPATIBLE
            self.trace(log.FAILED, message, "SAPolicy")
            return False, False
        convert = not root.get_attribute("template_version")
        self.trace(log.LEAVE, "CTemplateMgr::CheckFormat() bNeedConvert = %d", convert)
        return True, convert

    def make_category_map(self, xml: str, container: str, item: str) -> dict[str, list[str]]:
        """The categories of each template name, in document order."""
        self.trace(log.ENTER, "CTemplateMgr::MakeCategoryMap()")
        document = Document()
        document.load_xml(xml)
        found: dict[str, list[str]] = {}
        for node in document.select_nodes(f"/SAPolicy/{container}/{item}/template_id") or []:
            found.setdefault(node.get_text(), []).append(node.parent.get_attribute("name"))
        return found

    def _convert_and_import(self, xml: str) -> int:
        normalizer = XmlNormalizer(self.process)
        normalizer.init_mapping_table()
        converted, text = normalizer.normalize_xml(xml)
        return self._import(text) if converted else FAILED

    def _import(self, xml: str) -> int:
        self.trace(log.ENTER, "CTemplateMgr::ImportTemplateImpl()")
        try:
            return self._import_all(xml)
        except CommonError as error:
            message = "Fail to construct ImportTemplateImpl, Error: %s"
            self.trace(log.CAUGHT, message, error.message)
            return FAILED

    def _import_all(self, xml: str) -> int:
        self.industries = self.make_category_map(xml, "industries", "industry")
        self.regions = self.make_category_map(xml, "regions", "region")
        code = self.process.assets.import_all(self.manager.scope, xml, self.skipped_assets)
        if code != DONE:
            return code
        invalid: list[str] = []
        if not ImportCheck(self.manager).run(xml, invalid):
            return FAILED
        document = Document()
        document.load_xml(xml)
        nodes = document.select_nodes(TEMPLATES_PATH)
        if nodes is None:
            message = "CTemplateMgr::ImportTemplate" + INCOMPATIBLE
            self.trace(log.FAILED, message, TEMPLATES_PATH)
            return FAILED
        for node in nodes:
            display_name = node.get_attribute("display_name")
            done = self._import_template(node, invalid)
            (self.imported if done else self.skipped).append(display_name)
        self.trace(log.LEAVE, "CTemplateMgr::ImportTemplateImpl")
        return DONE

    def _import_template(self, node: Element, invalid: list[str]) -> bool:
        """False when the template is skipped."""
        name = node.get_attribute("name")
        display_name = node.get_attribute("display_name")
        if not name or not display_name:
            self._trace_skip("it's name attribute is empty", name, display_name)
            return False
        if name in invalid:
            self._trace_skip("it contain unsupported digital assets", name, display_name)
            return False
        imported = self._record_of(node)
        stored = self.manager.find_template(FIELD_ELEMENT_NAME, name)
        if stored is None:
            self.process.store.save(imported)
            return True
        if stored.pre_defined and not imported.pre_defined:
            message = "existed one is pre-defined but imported one is not, skip"
            self.trace(log.INFORMATION, message)
            return False
        imported.subject = stored.subject
        if not self.manager.edit_template(imported):
            return False
        self.process.store.save(imported)
        return True

    def _trace_skip(self, reason: str, name: str, display_name: str) -> None:
        names = "(strInternalName = %s, strDisplayName = %s)"
        message = f"Skip this template since {reason} {names}"
        self.trace(log.CAUGHT, message, name, display_name)

    def _record_of(self, node: Element) -> Template:
        """The record as it would be new; what is taken out of the element has its own field."""
        name = node.get_attribute("name")
        record = Template(TEMPLATE_PREFIX + name)
        record.set_unique_name(self.manager.scope, node.get_attribute("display_name"))
        record.description = node.get_attribute("description")
        record.pre_defined = same_ignoring_case(node.get_attribute("pre-defined"), "true")
        for attribute in ("display_name", "description", "pre-defined"):
            node.remove_attribute(attribute)
        record.element = node.get_xml()
        record.industries = list(self.industries.get(name, []))
        record.regions = list(self.regions.get(name, []))
        return record
