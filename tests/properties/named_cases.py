#!/usr/bin/env python3
"""What does not come back after an export, case by case, and the order of attributes in what is exported."""

from __future__ import annotations

import itertools
import os
import sys
import unittest
from pathlib import Path

sys.dont_write_bytecode = True
sys.path.insert(0, str(Path(__file__).resolve().parent.parent / "model"))

import spellings  # noqa: E402
from documents_read import elements, misordered  # noqa: E402
from generator import EXPRESSION_PREFIX, KEYWORD_PREFIX, TEMPLATE_PREFIX, Operation  # noqa: E402
from runners import Result, run_driver  # noqa: E402

DRIVER = "DLP_MODEL_DRIVER"
FLAGS = (False, True)
NUMBER_FIELDS = ("min_length", "max_length", "suffix_length", "min_left_radius", "max_left_radius", "max_right_radius")


def run(*operations: Operation) -> list[Result]:
    """The results of operations on an empty store."""
    home = {"PredefinedDLPPolicy.xml": None, "cfg_dlp_da_map.txt": None, "strings.txt": None}
    return run_driver(os.environ[DRIVER], "memory:", [{"seed": 0, "home": home, "operations": list(operations)}])[0]


def put(kind: str, name: str, **fields: object) -> Operation:
    """The writing of a record, shown by its name."""
    prefix = {"expression": EXPRESSION_PREFIX, "keyword": KEYWORD_PREFIX, "template": TEMPLATE_PREFIX}[kind]
    record = {"subject": prefix + name, "name": name, "display_name": name, **fields}
    return {"op": "put", "kind": kind, "record": record}


def put_template(content: str, **fields: object) -> Operation:
    """The writing of the template "pay"."""
    return put("template", "pay", **{"element": f'<template name="pay">{content}</template>', **fields})


def imported(text: str) -> Operation:
    """The import of a document."""
    return {"op": "import", "scope": "", "text": text}


def exported(*names: str) -> Operation:
    """The export of templates."""
    return {"op": "export", "names": list(names)}


def assets_exported(expressions: list[str], keywords: list[str]) -> Operation:
    """The export of assets."""
    return {"op": "assets_export", "which": "document",
            "expressions": [EXPRESSION_PREFIX + name for name in expressions],
            "keywords": [KEYWORD_PREFIX + name for name in keywords]}


def assets_imported(text: str) -> Operation:
    """The import of assets."""
    return {"op": "assets_import", "which": "all", "scope": "", "text": text}


WORDS = put("keyword", "words", condition="All", text="<dictionary><keyword>a</keyword></dictionary>")
BLOCK = '<buildingBlock sourceType="KEYWORD" sourceName="words"/>'


class WhatDoesNotComeBack(unittest.TestCase):
    """An export that an import does not take, or does not take whole."""

    def taken(self, *operations: Operation) -> Result:
        """What an empty store makes of the export of "pay"."""
        text = run(*operations, exported("pay"))[-1]["text"]
        self.assertIn('<template name="pay"', text)
        return run(imported(text))[0]

    def assert_skipped(self, *operations: Operation) -> None:
        """The template was exported, and no import takes it."""
        result = self.taken(*operations)
        self.assertEqual((0, [], ["pay"]), (result["result"], result["imported"], result["skipped"]))

    def test_what_comes_back(self) -> None:
        result = self.taken(WORDS, put_template(f"<matchRule>{BLOCK}</matchRule>"))
        self.assertEqual((0, ["pay"], []), (result["result"], result["imported"], result["skipped"]))

    def test_except_is_written_but_not_taken(self) -> None:
        self.assert_skipped(WORDS, put_template(f'<matchRule operation="EXCEPT">{BLOCK}</matchRule>'))
        self.assert_skipped(WORDS, put_template('<matchRule>' + BLOCK[:-2] + ' operation="EXCEPT"/></matchRule>'))

    def test_foreign_child_of_a_template_is_written_as_a_rule(self) -> None:
        # An import looks at the rules alone, so it stores what it then would refuse.
        template = ('<template name="pay" display_name="pay"><other operation="EXCEPT"/><other><part/></other>'
                    '</template>')
        section = f"<complianceTemplates>{template}</complianceTemplates>"
        document = f'<SAPolicy template_version="1">{section}</SAPolicy>'
        first, second = run(imported(document), exported("pay"))
        self.assertEqual(["pay"], first["imported"])
        self.assertIn('<matchRule operation="EXCEPT"/>'
                      '<matchRule><buildingBlock sourceType="UNKNOWN" sourceName=""/></matchRule>', second["text"])
        self.assert_skipped(imported(document))

    def test_foreign_child_of_a_rule_is_written_as_a_block(self) -> None:
        self.assert_skipped(put_template("<matchRule><other/></matchRule>"))

    def test_prefixed_rule_is_written_without_its_prefix(self) -> None:
        self.assert_skipped(put_template('<p:matchRule xmlns:p="u"><p:buildingBlock/></p:matchRule>'))

    def test_source_type_in_small_letters_is_exported_in_capitals(self) -> None:
        block = BLOCK.replace("KEYWORD", "keyword")
        result = self.taken(WORDS, put_template(f"<matchRule>{block}</matchRule>"))
        self.assertEqual(["pay"], result["imported"])
        self.assertEqual("KEYWORD", result["dump"]["templates"][0]["match_rules"][0]["blocks"][0]["source_type"])

    def test_record_without_display_name_is_skipped_or_passed_over(self) -> None:
        words = {**WORDS, "record": {**WORDS["record"], "display_name": ""}}
        *_, templates, assets = run(words, put_template("", display_name=""), exported("pay"),
                                    assets_exported([], ["words"]))
        self.assertEqual([""], run(imported(templates["text"]))[0]["skipped"])
        again = run(assets_imported(assets["text"]))[0]
        self.assertEqual((0, [], []), (again["result"], again["skipped"], again["dump"]["keyword_lists"]))

    def test_template_that_refers_to_nothing_is_not_exported(self) -> None:
        text = run(put_template(f"<matchRule>{BLOCK}</matchRule>"), exported("pay"))[-1]["text"]
        self.assertIn("<complianceTemplates command=\"overwrite\"/>", text)

    def test_export_of_another_language_is_refused(self) -> None:
        language = {"op": "set_language", "value": "English"}
        text = run(language, put_template(""), exported("pay"))[-1]["text"]
        self.assertEqual(2, run({"op": "set_language", "value": "German"}, imported(text))[-1]["result"])

    def test_text_that_xml_cannot_carry_stops_the_export(self) -> None:
        for bad in spellings.NEVER_IN_XML:
            with self.subTest(bad):
                self.assertEqual("", run(put_template("", description=bad), exported("pay"))[-1]["text"])
                result = run(put("expression", "card", pattern=bad), assets_exported(["card"], []))[-1]
                self.assertEqual((False, None), (result["returned"], result["text"]))

    def test_categories_come_back_in_the_order_of_their_names(self) -> None:
        result = self.taken(put_template("", industries=["b", "a", "b"]))
        self.assertEqual(["a", "b", "b"], result["dump"]["templates"][0]["industries"])

    def test_fields_of_other_types_and_the_scope_are_not_written(self) -> None:
        numbers = dict.fromkeys(NUMBER_FIELDS, 7)
        card = put("expression", "card", type="Type 1", scope="company", modified=True, **numbers)
        text = run(card, assets_exported(["card"], []))[-1]["text"]
        record = run(assets_imported(text))[0]["dump"]["expressions"][0]
        self.assertEqual([7, 7, 0, 0, 0, 0], [record[field] for field in NUMBER_FIELDS])
        self.assertEqual(("", False), (record["scope"], record["modified"]))


class OrderOfAttributes(unittest.TestCase):
    """Every element that an export writes, for records of every type and flag."""

    def assert_ordered(self, text: str, *counts: tuple[str, int]) -> None:
        """Attributes stand in their order, and so many elements of a name are there."""
        self.assertEqual([], misordered(text))
        names = [element.name for element in elements(text)]
        self.assertEqual(list(counts), [(name, names.count(name)) for name, _ in counts])

    def test_expressions(self) -> None:
        types = spellings.TYPES + spellings.ODD_TYPES
        cases = list(enumerate(itertools.product(types, FLAGS, FLAGS)))
        puts = [put("expression", f"e{i}", type=kind, case_sensitive=case, pre_defined=built_in,
                    **dict.fromkeys(NUMBER_FIELDS, i))
                for i, (kind, case, built_in) in cases]
        text = run(*puts, assets_exported([f"e{i}" for i, _ in cases], []))[-1]["text"]
        self.assert_ordered(text, ("entity", len(cases)), ("examples", len(cases)))
        children = [element.name for element in elements(text) if len(element.path) == 4]
        texts = ["regularExpression", "alphabetCharset", "patternForDisplay", "examples"]
        self.assertEqual(texts * len(cases), children)

    def test_keyword_lists(self) -> None:
        cases = list(enumerate(itertools.product(spellings.CONDITIONS + spellings.ODD_CONDITIONS, FLAGS)))
        stored = ('<dictionary pre-defined="true" name="n"><keyword score="1" caseSensitive="true" description="d">a'
                  '</keyword></dictionary>')
        puts = [put("keyword", f"k{i}", condition=condition, pre_defined=built_in, threshold=i, number=-i, text=stored)
                for i, (condition, built_in) in cases]
        text = run(*puts, assets_exported([], [f"k{i}" for i, _ in cases]))[-1]["text"]
        self.assert_ordered(text, ("dictionary", len(cases)), ("keyword", len(cases)))
        keywords = [element.attributes for element in elements(text) if element.name == "keyword"]
        self.assertEqual({(("score", "1"), ("caseSensitive", "true"), ("description", "d"))}, set(keywords))

    def test_keywords(self) -> None:
        text = run({"op": "keywords_to_xml", "keywords": [["a", "d", "1", "true"], ["", "", "", ""]]})[-1]["text"]
        attributes = [element.attributes for element in elements(text)]
        self.assertEqual([(), (("description", "d"), ("score", "1"), ("caseSensitive", "true")),
                          (("description", ""), ("score", ""), ("caseSensitive", ""))], attributes)

    def test_templates(self) -> None:
        sources = (("card", "ENTITY"), ("card", "entity"), ("words", "KEYWORD"), ("words", "Keyword"))
        blocks = [f'<buildingBlock {operation} sourceName="{name}" entityHits="3" sourceType="{kind}"/>'
                  for operation in ("", 'operation="and"', 'operation="OR"', 'operation="EXCEPT"', 'operation="NONE"')
                  for name, kind in sources]
        rules = "".join(f"<matchRule {operation}>{''.join(blocks)}<other/></matchRule>" for operation in
                        ("", 'operation="AND"', 'operation="or"', 'operation="EXCEPT"', 'operation="NONE"'))
        puts = [put("template", f"t{i}", pre_defined=built_in, industries=["b", "a"], regions=["c"],
                    element=f'<template severity="low" pre-defined="no" name="t{i}" extra="x">{rules}</template>')
                for i, built_in in enumerate(FLAGS)]
        text = run(WORDS, put("expression", "card", type="Type 2"), *puts, exported("t0", "t1"))[-1]["text"]
        self.assert_ordered(text, ("template", 2), ("matchRule", 10), ("buildingBlock", 210), ("industry", 2),
                            ("region", 1), ("template_id", 6), ("entity", 1), ("dictionary", 1))
        written = [element.get("operation") for element in elements(text) if element.name == "matchRule"]
        self.assertEqual([None, "AND", "OR", "EXCEPT", None] * 2, written)

    def test_template_of_rule_texts(self) -> None:
        rules = ["P:card(1) AND K:words EXCEPT nothing", "K:words"]
        text = run({"op": "rules_to_template", "before": "", "rules": rules, "operators": ["OR", "SKIP"],
                    "name": "n", "display_name": "d", "description": "e"})[-1]["text"]
        self.assert_ordered(text, ("template", 1), ("matchRule", 2), ("buildingBlock", 4))


if __name__ == "__main__":
    unittest.main()
