"""The template manager: the stored templates are listed, found, replaced and saved."""

from __future__ import annotations

import log
from errors import CommonError
from log import POINTER
from process import Process
from records import Template

FIELD_SUBJECT, FIELD_NAME, FIELD_ELEMENT_NAME = 0, 1, 2


def field_text(template: Template, field: int) -> str | None:
    """The text that a search by the field compares; None never matches."""
    if field == FIELD_SUBJECT:
        return template.subject
    if field == FIELD_NAME:
        return template.display_name
    if field == FIELD_ELEMENT_NAME:
        return template.element_name()
    return None


class TemplateManager:
    """Lives for one operation; `scope` is stamped on what an import writes."""

    def __init__(self, process: Process, scope: str = "") -> None:
        self.process = process
        self.scope = scope

    def trace(self, level: int, message: str, *arguments: object) -> None:
        self.process.log.add(level, log.MANAGER, message, *arguments)

    def template_list(self) -> list[Template]:
        templates = self.process.store.all(Template)
        self.trace(log.INFORMATION, "CTemplateMgr::GetTemplateList successfully")
        return templates

    def save_setting(self, templates: list[Template]) -> bool:
        size_line = "CTemplateMgr::SaveSetting, vecTemplateList.size() = %d"
        self.trace(log.ENTER, size_line, len(templates))
        try:
            self.process.store.replace_templates(templates)
        except CommonError:
            self.trace(log.CAUGHT, "Fail to call SetTemplateList.")
            return False
        self.trace(log.ENTER, "CTemplateMgr::SaveSetting successfully")
        return True

    def find_template(self, field: int, value: str) -> Template | None:
        """The first in the list's order whose field is exactly the value."""
        entry = "CTemplateMgr::FindTemplate, iSearchField = %d, strFieldValue = %s"
        self.trace(log.ENTER, entry, field, value)
        for template in self.template_list():
            if field_text(template, field) == value:
                self.trace(log.LEAVE, "CTemplateMgr::FindTemplate")
                return template
        self.trace(log.LEAVE, "Unable to find the template")
        return None

    def edit_template(self, template: Template) -> bool:
        """Replaces the stored template of the same subject; never adds one."""
        self.trace(log.ENTER, "CTemplateMgr::EditTemplate (pTemplate = " + POINTER)
        templates = self.template_list()
        others = [one for one in templates if one.subject != template.subject]
        if len(others) == len(templates):
            self.trace(log.CAUGHT, "Unable to find the template (%s).", template.subject)
            return False
        self.trace(log.INFORMATION, "isBuildin = %d", template.pre_defined)
        saved = self.save_setting(others + [template])
        self.trace(log.LEAVE, "CTemplateMgr::EditTemplate = %d", saved)
        return saved
