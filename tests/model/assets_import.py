"""Elements of a document as stored expressions and keyword lists."""
from __future__ import annotations

from collections.abc import Callable
from dataclasses import dataclass

import log
from assets_export import CONDITION_NUMBERS, TYPE_NUMBERS
from errors import CommonError
from log import Log, narrow_view
from records import (EXPRESSION_PREFIX, KEYWORD_PREFIX, Asset, Expression, KeywordList, Store)
from subkeywords import incompatible
from texts import same_ignoring_case, wtoi
from xmltree import Document, Element

PARSER = "CDLPDigitalAssetsParser::"
NO_TAG = "Fail to find tag %s, skip entity: %s"


@dataclass
class Scene:
    """What every step of one pass works with."""

    store: Store
    lines: Log
    scope: str
    skipped: list[str]

    def log(self, level: int, message: str, *arguments: object) -> None:
        self.lines.add(level, log.ASSETS, message, *arguments)


@dataclass
class Pass:
    """One kind of asset: where it stands, how it is read, and the words of its log lines."""

    tag: str
    kind: type
    prefix: str
    fill: Callable[[Scene, Element, Asset], bool]
    enter: str
    leave: str
    no_node: str
    failed: str
    pass_failed: str
    what: str
    find: str
    add: str

    def path(self) -> str:
        return "/SAPolicy/digitalAssets/" + self.tag


def run(parser, scope: str, text: str, skipped: list[str], passes: tuple[str, ...]) -> int:
    """The language check, then each pass: 0, 2 or 3."""
    scene = Scene(parser.store, parser.lines, scope, skipped)
    if not check_language(parser, scene, text):
        scene.log(log.FAILED, "Invalid localization_language, skip import.")
        return 2
    for one in passes:
        if not run_pass(scene, text, PASSES[one]):
            scene.log(log.FAILED, PASSES[one].pass_failed)
            return 3
    name = "ImportEntityWithCheck()" if passes == EXPRESSIONS else "ImportDigitalAssets()"
    scene.log(log.LEAVE, PARSER + name)
    return 0


def check_language(parser, scene: Scene, text: str) -> bool:
    """Refuses another language; otherwise the parser takes the document's version."""
    scene.log(log.ENTER, PARSER + "CheckImportVersion()")
    document = Document()
    document.load_xml(text)
    root = document.select_single("/SAPolicy")
    if root is None:
        scene.log(log.FAILED, "Fail to find node %s", "SAPolicy")
        return False
    language = root.get_attribute("localization_language")
    if language and not same_ignoring_case(language, parser.get_language()):
        message = "old language is: %s, new language is: %s, not match, skip import"
        scene.log(log.INFORMATION, message, parser.get_language(), language)
        return False
    parser.version = root.get_attribute("template_version")
    scene.log(log.LEAVE, PARSER + "CheckImportVersion(), result = %d", True)
    return True


def run_pass(scene: Scene, text: str, one: Pass) -> bool:
    """Imports every node of one kind; a record that cannot be saved ends the pass."""
    if one.enter:
        scene.log(log.ENTER, one.enter)
    try:
        document = Document()
        document.load_xml(text)
        nodes = document.select_nodes(one.path())
        if nodes is None:
            scene.log(log.FAILED, one.no_node + incompatible(), one.path())
            return False
        for node in nodes:
            import_node(scene, node, one)
    except CommonError as error:
        scene.log(log.FAILED, one.failed, error.message)
        return False
    scene.log(log.LEAVE, one.leave)
    return True


def import_node(scene: Scene, node: Element, one: Pass) -> None:
    name, display_name = node.get_attribute("name"), node.get_attribute("display_name")
    if not name or not display_name:
        return
    record = find(scene, name, one)
    if record is None:
        done = add(scene, node, one)
    else:
        message = f"there exists a {one.what} with the same internal name: %s"
        scene.log(log.INFORMATION, message, name)
        done = replace(scene, node, record, one)
    if not done:
        scene.skipped.append(display_name)


def replace(scene: Scene, node: Element, record: Asset, one: Pass) -> bool:
    """A built-in record gives way unless the node says that it is none."""
    if record.pre_defined and same_ignoring_case(node.get_attribute("pre-defined"), "false"):
        scene.log(log.INFORMATION, "existed one is pre-defined but imported one is not, skip")
        return False
    return one.fill(scene, node, record)


def add(scene: Scene, node: Element, one: Pass) -> bool:
    record = one.kind(one.prefix + node.get_attribute("name"))
    if one.fill(scene, node, record):
        scene.log(log.LEAVE, one.add)
        return True
    what = "expression" if one.kind is Expression else "keyword"
    scene.log(log.FAILED, f"{one.add} fail to add {what}.")
    return False


def find(scene: Scene, name: str, one: Pass) -> Asset | None:
    scene.log(log.ENTER, one.find + ", internalName = %s", name)
    record = scene.store.find_asset(one.kind, name)
    scene.log(log.LEAVE, one.find if record else f"Unable to find the {one.what}")
    return record


def edit_expression(scene: Scene, node: Element, record: Expression) -> bool:
    """Fills and saves the record; False, the record as it was, when a needed child is missing."""
    stored_type = known_spelling(TYPE_NUMBERS, node.get_attribute("type"), "Generic")
    display_name = node.get_attribute("display_name")
    pattern = node.select_single("./regularExpression")
    if pattern is None:
        arguments = (narrow_view("./regularExpression"), narrow_view(display_name))
        scene.log(log.FAILED, NO_TAG, *arguments)
        return False
    charset = node.select_single("./alphabetCharset") if stored_type != "Generic" else None
    if stored_type != "Generic" and charset is None:
        scene.log(log.FAILED, NO_TAG, "./alphabetCharset", display_name)
        return False
    fill_common(scene, node, record)
    record.validator = node.get_attribute("validator")
    record.type = stored_type
    record.case_sensitive = same_ignoring_case(node.get_attribute("caseSensitive"), "true")
    fill_numbers(node, record, TYPE_NUMBERS, stored_type)
    record.pattern = pattern.get_text()
    record.display_format = text_of(node.select_single("./patternForDisplay"))
    record.example = text_of(node.select_single("./examples"))
    record.alphabet_charset = text_of(charset)
    scene.store.save(record)
    scene.log(log.LEAVE, PARSER + "EditExpression()")
    return True


def edit_dictionary(scene: Scene, node: Element, record: KeywordList) -> bool:
    """Fills and saves the record; the whole element is its keyword text."""
    fill_common(scene, node, record)
    record.condition = known_spelling(CONDITION_NUMBERS, node.get_attribute("type"), "All")
    fill_numbers(node, record, CONDITION_NUMBERS, record.condition)
    record.text = node.get_xml()
    scene.store.save(record)
    scene.log(log.LEAVE, PARSER + "EditDictionary()")
    return True


def fill_common(scene: Scene, node: Element, record: Asset) -> None:
    record.set_unique_name(scene.scope, node.get_attribute("display_name"))
    record.name = node.get_attribute("name")
    record.description = node.get_attribute("description")
    record.pre_defined = same_ignoring_case(node.get_attribute("pre-defined"), "true")


def fill_numbers(node: Element, record: Asset, table: dict, spelling: str) -> None:
    """The numbers of its own type are read, all others become 0."""
    for columns in table.values():
        for _, member in columns:
            setattr(record, member, 0)
    for name, member in table[spelling]:
        setattr(record, member, wtoi(node.get_attribute(name)))


def known_spelling(table: dict, text: str, otherwise: str) -> str:
    return next((name for name in table if same_ignoring_case(name, text)), otherwise)


def text_of(node: Element | None) -> str:
    return "" if node is None else node.get_text()


EXPRESSIONS = ("entity",)
KEYWORDS = ("dictionary",)
BOTH = EXPRESSIONS + KEYWORDS
PASSES = {
    "entity": Pass(
        tag="entity", kind=Expression, prefix=EXPRESSION_PREFIX, fill=edit_expression,
        enter=PARSER + "ImportEntity()", leave=PARSER + "ImportEntity()",
        no_node=PARSER + "ImportEntity()", failed="Fail to import expression xml file, Error: %s",
        pass_failed="fail to import entity.", what="expression", find=PARSER + "FindExpression",
        add=PARSER + "AddExpression()"),
    "dictionary": Pass(
        tag="dictionary", kind=KeywordList, prefix=KEYWORD_PREFIX, fill=edit_dictionary,
        enter="", leave=PARSER + "ImportDictionary()",
        no_node=PARSER + "ImportDictionary", failed="Fail to import dictionary xml file, Error: %s",
        pass_failed="fail to import dictionary.", what="keyword", find=PARSER + "FindKeyword",
        add=PARSER + "AddDictionary()"),
}
