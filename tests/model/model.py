"""The operations of a sequence over one process of the second implementation."""

from __future__ import annotations

from collections.abc import Callable

import subkeywords
from checking import ImportCheck
from errors import CommonError
from facade import TemplateParse
from importing import TemplateImport
from manager import TemplateManager
from normalizer import XmlNormalizer
from process import Process
from records import KINDS, record_from_entry
from template import dump_rules


class Model:
    """Starts with an empty store; runs one operation after the other."""

    def __init__(self, home: dict[str, bytes | None]) -> None:
        self.process = Process(home)
        self.facade = TemplateParse(self.process)

    def run(self, operation: dict) -> dict:
        """The fields of the operation, then what every result has."""
        fields: dict = {}
        threw = None
        try:
            fields = OPERATIONS[operation["op"]](self, operation)
        except CommonError as error:
            threw = error.message
        return fields | {
            "threw": threw,
            "log": self.process.log.take(),
            "dump": self.process.store.dump(dump_rules),
            "version": self.process.assets.version,
        }

    def set_version(self, operation: dict) -> dict:
        self.process.assets.version = operation["value"]
        return {}

    def set_language(self, operation: dict) -> dict:
        self.process.assets.language = operation["value"]
        return {}

    def import_text(self, operation: dict) -> dict:
        code, one = self.facade.do_template_import(operation["scope"], operation["text"])
        return {
            "result": code,
            "imported": one.imported,
            "skipped": one.skipped,
            "skipped_assets": one.skipped_assets,
        }

    def import_file(self, operation: dict) -> dict:
        data = operation["bytes"]
        read = None if data is None else bytes.fromhex(data)
        return {"returned": self.facade.import_from_file(read)}

    def export(self, operation: dict) -> dict:
        expressions: set[str] = set()
        keywords: set[str] = set()
        names = operation["names"]
        text = self.facade.do_template_export("", names, expressions, keywords)
        return {"text": text, "expressions": sorted(expressions), "keywords": sorted(keywords)}

    def assets_import(self, operation: dict) -> dict:
        assets = self.process.assets
        run = {
            "all": assets.import_all,
            "expressions": assets.import_expressions,
            "keywords": assets.import_keywords,
        }[operation["which"]]
        skipped: list[str] = []
        return {
            "result": run(operation["scope"], operation["text"], skipped),
            "skipped": skipped,
        }

    def assets_export(self, operation: dict) -> dict:
        assets = self.process.assets
        run = {"document": assets.export, "assets": assets.generate_digital_assets_xml}
        text = run[operation["which"]](operation["expressions"], operation["keywords"])
        return {"returned": text is not None, "text": text}

    def root(self, _operation: dict) -> dict:
        text = self.process.assets.generate_root_xml()
        return {"returned": text is not None, "text": text}

    def keywords_to_xml(self, operation: dict) -> dict:
        entries = [tuple(entry) for entry in operation["keywords"]]
        return {"text": subkeywords.to_xml_format(self.process.log, entries)}

    def keywords_from_xml(self, operation: dict) -> dict:
        entries = [tuple(entry) for entry in operation["keywords"]]
        subkeywords.to_ui_format(self.process.log, operation["text"], entries)
        return {"keywords": [list(entry) for entry in entries]}

    def template_to_rules(self, operation: dict) -> dict:
        rules, operators = list(operation["rules"]), list(operation["operators"])
        returned = TemplateParse(self.process, operation["text"]).parse_content(rules, operators)
        return {"returned": returned, "rules": rules, "operators": operators}

    def rules_to_template(self, operation: dict) -> dict:
        facade = TemplateParse(self.process, operation["before"])
        keys = ("rules", "operators", "name", "display_name", "description")
        returned = facade.save_to_xml_str(*(operation[key] for key in keys))
        return {"returned": returned, "text": facade.content}

    def check(self, operation: dict) -> dict:
        invalid: list[str] = []
        result = ImportCheck(TemplateManager(self.process)).run(operation["text"], invalid)
        return {"result": result, "invalid": invalid}

    def format(self, operation: dict) -> dict:
        one = TemplateImport(TemplateManager(self.process))
        result, convert = one.check_format(operation["text"])
        return {"result": result, "convert": convert}

    def normalize(self, operation: dict) -> dict:
        normalizer = XmlNormalizer(self.process)
        normalizer.init_mapping_table()
        result, text = normalizer.normalize_xml(operation["text"])
        return {"result": result, "text": text}

    def categories(self, operation: dict) -> dict:
        one = TemplateImport(TemplateManager(self.process))
        keys = ("text", "container", "item")
        found = one.make_category_map(*(operation[key] for key in keys))
        return {"result": True, "map": found}

    def put(self, operation: dict) -> dict:
        self.process.store.save(record_from_entry(operation["kind"], operation["record"]))
        return {}

    def remove(self, operation: dict) -> dict:
        self.process.store.remove(KINDS[operation["kind"]], operation["subject"])
        return {}

    def find(self, operation: dict) -> dict:
        manager = TemplateManager(self.process)
        found = manager.find_template(operation["field"], operation["value"])
        return {"returned": found is not None, "subject": found and found.subject}

    def metadata(self, operation: dict) -> dict:
        returned, names, display_names = self.process.new_policy_lists().get(operation["list"])
        return {"returned": returned, "names": names, "display_names": display_names}


OPERATIONS: dict[str, Callable[[Model, dict], dict]] = {
    name: getattr(Model, "import_text" if name == "import" else name)
    for name in (
        "set_version", "set_language", "import", "import_file", "export", "assets_import",
        "assets_export", "root", "keywords_to_xml", "keywords_from_xml", "template_to_rules",
        "rules_to_template", "check", "format", "normalize", "categories", "put", "remove",
        "find", "metadata",
    )
}
