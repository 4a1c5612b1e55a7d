"""Finds the places of a C++ source where one thing can be changed, and what it would be changed to."""

import bisect
import ctypes
import dataclasses
import re

from clang import cindex
from clang.cindex import CursorKind as Kind
from clang.cindex import TypeKind

# How a change is written into the source; {old} is what stands there.
CHOICE = "(mutate::Is({id}) ? ({new}) : ({old}))"
NEGATION = "(mutate::Is({id}) != static_cast<bool>({old}))"
DROP = "{{ if (!mutate::Is({id})) {{ {old} }} }}"
EARLY_RETURN = "{{ if (mutate::Is({id})) {{ {new} }} {old} }}"

COMPARISONS = {"==": "!=", "!=": "==", "<": "<=", "<=": "<", ">": ">=", ">=": ">"}
LOGIC = {"&&": "||", "||": "&&"}
ARITHMETIC = {"+": "-", "-": "+", "*": "/", "/": "*", "%": "*", "<<": ">>", ">>": "<<", "&": "|", "|": "&", "^": "&"}
ASSIGNMENTS = {sign + "=": other + "=" for sign, other in ARITHMETIC.items()}
STEPS = {"++": "--", "--": "++"}

# Calls that change how fast something is, never what comes out.
ROOM = {"reserve", "shrink_to_fit"}
# Nothing below these is computed at run time.
FIXED = {Kind.ENUM_CONSTANT_DECL, Kind.STATIC_ASSERT, Kind.TEMPLATE_NON_TYPE_PARAMETER,
         Kind.TEMPLATE_TYPE_PARAMETER, Kind.CXX_UNARY_EXPR, Kind.USING_DECLARATION}
FUNCTIONS = {Kind.FUNCTION_DECL, Kind.CXX_METHOD, Kind.CONSTRUCTOR, Kind.DESTRUCTOR, Kind.CONVERSION_FUNCTION,
             Kind.FUNCTION_TEMPLATE}
VARIABLES = {Kind.VAR_DECL, Kind.FIELD_DECL, Kind.PARM_DECL}
STATEMENTS = {Kind.CALL_EXPR, Kind.BINARY_OPERATOR, Kind.COMPOUND_ASSIGNMENT_OPERATOR, Kind.UNARY_OPERATOR,
              Kind.UNEXPOSED_EXPR, Kind.CXX_DELETE_EXPR}
LITERALS = {Kind.INTEGER_LITERAL, Kind.FLOATING_LITERAL, Kind.CHARACTER_LITERAL, Kind.STRING_LITERAL,
            Kind.CXX_BOOL_LITERAL_EXPR}


@dataclasses.dataclass(frozen=True)
class Edit:
    """Offsets count bytes."""
    start: int
    end: int
    form: str
    new: str = ""


@dataclasses.dataclass(frozen=True)
class Site:
    file: str
    line: int
    column: int
    kind: str
    was: str
    now: str
    edits: tuple
    plain: tuple = ()  # (start, end, text): what must change for the edits to compile


class Source:
    """A file, its tokens and the spans of its macros."""

    def __init__(self, path, unit):
        self.path = path
        self.text = path.read_bytes()
        everything = unit.get_extent(str(path), (0, len(self.text)))
        self.tokens = [(token.extent.start.offset, token.extent.end.offset, token.spelling)
                       for token in unit.get_tokens(extent=everything)
                       if token.kind != cindex.TokenKind.COMMENT]
        self.starts = [token[0] for token in self.tokens]
        self.macros = {span(cursor) for cursor in unit.cursor.get_children()
                       if cursor.kind == Kind.MACRO_INSTANTIATION and self.holds(cursor)}

    def holds(self, cursor):
        return cursor.location.file is not None and cursor.location.file.name == str(self.path)

    def within(self, start, end):
        """The tokens of a span."""
        return self.tokens[bisect.bisect_left(self.starts, start):bisect.bisect_left(self.starts, end)]

    def at(self, offset):
        """The first token at or behind an offset."""
        index = bisect.bisect_left(self.starts, offset)
        return self.tokens[index] if index < len(self.tokens) else (len(self.text), len(self.text), "")

    def before(self, offset):
        index = bisect.bisect_left(self.starts, offset)
        return self.tokens[index - 1] if index else (0, 0, "")

    def flat(self, start, end):
        """The span on one line and without comments."""
        words, last = [], start
        for token in self.within(start, end):
            words.append(" " if token[0] > last and words else "")
            words.append(token[2])
            last = token[1]
        return "".join(words)


def file_offset(location):
    """What cindex offers itself says of a macro's argument only where the macro stands."""
    file, line, column, offset = cindex.c_object_p(), ctypes.c_uint(), ctypes.c_uint(), ctypes.c_uint()
    cindex.conf.lib.clang_getFileLocation(location, *map(ctypes.byref, (file, line, column, offset)))
    return offset.value


def span(cursor):
    return file_offset(cursor.extent.start), file_offset(cursor.extent.end)


def bare(cursor):
    """The expression without what the compiler put around it."""
    while cursor.kind in (Kind.UNEXPOSED_EXPR, Kind.PAREN_EXPR):
        inner = list(cursor.get_children())
        if len(inner) != 1:
            break
        cursor = inner[0]
    return cursor


def plain_type(type_):
    spelling = type_.get_canonical().spelling
    return re.sub(r"(char|wchar_t) *\[\d+\]", r"\1[]", re.sub(r"\bconst\b|&", "", spelling)).strip()


def altered_text(token):
    """A string or character literal with one character changed, of the same length where it has any."""
    prefix, quote, content = re.fullmatch(r"""((?:u8|[LuU])?)(["'])(.*)\2""", token, re.S).groups()
    for match in re.finditer(r"[A-Za-z0-9]", content):
        index, letter = match.start(), match.group()
        if index and content[index - 1] in "\\%":
            continue
        other = {"z": "a", "Z": "A", "9": "0"}.get(letter, chr(ord(letter) + 1))
        return f"{prefix}{quote}{content[:index]}{other}{content[index + 1:]}{quote}"
    if quote == "'":
        return f"{prefix}'x'"
    return f"{prefix}\"x{content if content.startswith(chr(92)) else content[1:]}\""


class Finder:
    def __init__(self, source, name):
        self.source = source
        self.name = name
        self.found = {}

    # Each of these looks at one kind of place.

    def literal(self, cursor, parent):
        start, end = span(cursor)
        tokens = self.source.within(start, end)
        if not tokens or (start, end) in self.source.macros:
            return
        if parent.kind in (Kind.DECL_REF_EXPR, Kind.MEMBER_REF_EXPR, Kind.TYPE_REF):
            return  # a template's argument
        if cursor.kind == Kind.CXX_BOOL_LITERAL_EXPR:
            self.add("constant", start, end, {"true": "false", "false": "true"}.get(tokens[0][2]))
        elif cursor.kind in (Kind.INTEGER_LITERAL, Kind.FLOATING_LITERAL):
            if len(tokens) == 1 and tokens[0][2][0].isdigit():
                self.add("constant", start, end, f"{tokens[0][2]} + 1")
        elif parent.kind == Kind.VAR_DECL and "[" in parent.type.spelling and "*" not in parent.type.spelling:
            return  # what fills an array of characters cannot be chosen
        elif re.match(r"""(u8|[LuU])?["']""", tokens[0][2]):
            rest = self.source.flat(tokens[0][1], end)
            self.add("text", start, end, altered_text(tokens[0][2]) + (" " + rest if rest else ""))

    def name_of_constant(self, cursor):
        """An enumerator, or a constant that stands among others of its type, gives way to the next one."""
        constant = cursor.referenced
        if constant is None or constant.kind not in (Kind.ENUM_CONSTANT_DECL, Kind.VAR_DECL):
            return
        if "memory_order" in constant.type.spelling:
            return  # seen by no test that ends
        start, end = span(cursor)
        tokens = self.source.within(start, end)
        home = constant.semantic_parent
        if not tokens or tokens[-1][2] != constant.spelling or home is None:
            return
        if constant.kind == Kind.VAR_DECL:
            if home.kind not in (Kind.NAMESPACE, Kind.CLASS_DECL, Kind.STRUCT_DECL) or "const" not in \
                    constant.type.get_canonical().spelling:
                return
        others = [other.spelling for other in home.get_children()
                  if other.kind == constant.kind and plain_type(other.type) == plain_type(constant.type) and
                  (not self.source.holds(other) or file_offset(other.location) < start)]
        if constant.spelling in others and len(others) > 1:
            other = others[(others.index(constant.spelling) + 1) % len(others)]
            self.add("constant", start, end, self.source.flat(start, tokens[-1][0]) + other)

    def operator(self, cursor, parent):
        operands = [child for child in cursor.get_children() if not child.spelling.startswith("operator")]
        called = cursor.kind == Kind.CALL_EXPR
        if len(operands) != 2 or (called and not cursor.spelling.startswith("operator")):
            return
        (start, left_end), (right_start, end) = sorted(map(span, operands))
        sign = self.source.at(left_end)
        while sign[2] == ")":  # of the left operand
            sign = self.source.at(sign[1])
        table = COMPARISONS if called else {**COMPARISONS, **LOGIC, **ARITHMETIC, **ASSIGNMENTS}
        start, end = span(cursor)
        if sign[2] not in table or sign[0] >= right_start:
            return
        kind = "comparison" if sign[2] in COMPARISONS else "logic" if sign[2] in LOGIC else "arithmetic"
        new = table[sign[2]]
        self.add(kind, start, end,
                 f"{self.source.flat(start, sign[0])} {new} {self.source.flat(sign[1], end)}")

    def sign(self, cursor):
        start, end = span(cursor)
        first, last = self.source.at(start), self.source.before(end)
        if first[2] == "!":
            self.add("condition", start, end, self.source.flat(first[1], end), NEGATION)
        elif first[2] in STEPS:
            self.add("arithmetic", start, end, STEPS[first[2]] + self.source.flat(first[1], end))
        elif last[2] in STEPS:
            self.add("arithmetic", start, end, self.source.flat(start, last[0]) + STEPS[last[2]])
        elif first[2] == "-":
            self.add("arithmetic", start, end, self.source.flat(first[1], end))

    def condition(self, cursor):
        """The condition of a statement, or of a ?: expression."""
        children = list(cursor.get_children())
        if cursor.kind == Kind.CONDITIONAL_OPERATOR:
            self.negate("condition", children[0])
            return
        open_ = next((t for t in self.source.within(*span(cursor)) if t[2] == "("), None)
        if open_ is None or self.source.before(open_[0])[2] == "constexpr":
            return
        blocks = [child for child in children if child.kind == Kind.COMPOUND_STMT] or children[-1:]
        wanted = [child for child in children if child.kind.is_expression() and
                  (cursor.kind == Kind.DO_STMT or span(child)[0] < span(blocks[0])[0])]
        if cursor.kind == Kind.FOR_STMT:
            wanted = [c for c in wanted if self.source.at(span(c)[1])[2] == ";"]
        if wanted and not any(c.kind == Kind.VAR_DECL for c in children):
            self.negate("condition", wanted[-1])

    def negate(self, kind, cursor):
        """Unless turning its comparison, or dropping its !, does the same."""
        inner = bare(cursor)
        start, end = span(cursor)
        sign = self.source.at(span(next(inner.get_children(), inner))[1])[2]
        if inner.kind in (Kind.CXX_BOOL_LITERAL_EXPR, Kind.UNARY_OPERATOR) or \
                (inner.kind in (Kind.BINARY_OPERATOR, Kind.CALL_EXPR) and sign in ("==", "!=")):
            return
        self.add(kind, start, end, f"!({self.source.flat(start, end)})", NEGATION)

    def statement(self, cursor):
        start, end = span(cursor)
        semicolon = self.source.at(end)
        if semicolon[2] != ";":
            return
        if (start, end) not in self.source.macros:
            first = self.source.at(start)[2]
            inner = bare(cursor)
            if cursor.kind not in STATEMENTS or first in ("throw", "(", "static_cast"):
                return
            if inner.kind == Kind.BINARY_OPERATOR and "=" not in [t[2] for t in self.source.within(start, end)]:
                return
        self.add("dropped", start, semicolon[1], "", DROP)

    def returned(self, cursor, function):
        value = next(cursor.get_children(), None)
        if value is None:
            return
        start, end = span(value)
        inner = bare(value)
        type_ = value.type.get_canonical()
        if inner.kind in LITERALS or inner.kind in (Kind.INIT_LIST_EXPR, Kind.LAMBDA_EXPR):
            return
        if type_.kind == TypeKind.BOOL:
            self.negate("return", value)
        elif TypeKind.BOOL.value < type_.kind.value <= TypeKind.LONGDOUBLE.value:
            self.add("return", start, end, f"({self.source.flat(start, end)}) + 1")
        elif type_.kind in (TypeKind.RECORD, TypeKind.POINTER) and not self.is_reference(function):
            text = self.source.flat(start, end)
            made = inner.kind == Kind.CALL_EXPR and inner.referenced is not None and \
                inner.referenced.kind == Kind.CONSTRUCTOR and not list(inner.get_arguments())
            if not made and not re.match(r"""\{|L?"|nullptr$|std::nullopt$|\*this$""", text):
                semicolon = self.source.at(end)
                self.add("return", span(cursor)[0], semicolon[1],
                         f"return std::remove_cvref_t<decltype({text})>();", EARLY_RETURN)

    @staticmethod
    def is_reference(function):
        return function is not None and "&" in function.result_type.spelling

    def arguments(self, cursor):
        if cursor.spelling.startswith("operator") and cursor.spelling != "operator()":
            return
        arguments = list(cursor.get_arguments())
        for left, right in zip(arguments, arguments[1:]):
            if left is None or right is None or plain_type(left.type) != plain_type(right.type):
                continue
            (start, left_end), (right_start, end) = span(left), span(right)
            if not start < left_end < right_start < end or self.source.at(left_end)[2] != ",":
                continue
            first, second = self.source.flat(start, left_end), self.source.flat(right_start, end)
            if first != second and not first.startswith("{") and not second.startswith("{"):
                self.add_edits("swap", start, end, f"{second}, {first}",
                               (Edit(start, left_end, CHOICE, second), Edit(right_start, end, CHOICE, first)))

    def add(self, kind, start, end, new, form=CHOICE):
        if new is not None:
            self.add_edits(kind, start, end, new, (Edit(start, end, form, new),))

    def add_edits(self, kind, start, end, now, edits):
        tokens = self.source.within(start, end)
        if not tokens or (start, end) in self.source.macros or any("\n" in t[2] or t[2] == "#" for t in tokens):
            return
        was = self.source.flat(start, end)
        before = self.source.text[:start]
        self.found.setdefault((start, end, now), Site(
            self.name, before.count(b"\n") + 1, len(before[before.rfind(b"\n") + 1:].decode()) + 1, kind, was, now,
            edits, tuple(self.frozen)))

    # The walk.

    def thaw(self, cursor):
        """A constant that is computed by the compiler has to be computed at run time to be chosen."""
        start, end = span(cursor)
        tokens = self.source.within(start, end)
        for token in tokens[:6]:
            if token[2] == "constexpr":
                words = [t[2] for t in tokens[:6]]
                in_class = cursor.semantic_parent.kind in (Kind.CLASS_DECL, Kind.STRUCT_DECL)
                if cursor.kind in FUNCTIONS:
                    word = "" if "inline" in words or "friend" in words else "inline"
                elif in_class:
                    word = "inline const"
                else:
                    shared = cursor.linkage == cindex.LinkageKind.EXTERNAL or "static" in words
                    word = "const" if shared or cursor.semantic_parent.kind in FUNCTIONS else "static const"
                if word.endswith("const") and ("const" in words or "&" in words):
                    word = word[:-len("const")]
                return [(token[0], token[1], word)]
        return []

    def walk(self, cursor, parent, function):
        kind = cursor.kind
        if kind in FIXED or kind.is_attribute() or (kind == Kind.FIELD_DECL and cursor.is_bitfield()):
            return
        if kind == Kind.CALL_EXPR and cursor.spelling in ROOM:
            return
        if kind in FUNCTIONS:
            function = cursor
        self.look(cursor, parent, function)
        frozen = self.thaw(cursor) if kind in FUNCTIONS or kind in VARIABLES else []
        self.frozen += frozen
        children = list(cursor.get_children())
        if kind in FUNCTIONS or kind in VARIABLES:  # not what is a part of the type
            name = file_offset(cursor.location)
            children = [child for child in children
                        if span(child)[0] >= name and self.source.before(span(child)[0])[2] != "["]
        if kind == Kind.CASE_STMT:
            children = children[1:]
        if kind == Kind.IF_STMT and any(t[2] == "constexpr" for t in self.source.within(*span(cursor))[:2]):
            children = children[1:]
        for child in children:
            self.walk(child, cursor, function)
        if frozen:
            del self.frozen[-len(frozen):]

    def look(self, cursor, parent, function):
        kind = cursor.kind
        if parent.kind in (Kind.COMPOUND_STMT, Kind.CASE_STMT, Kind.DEFAULT_STMT):
            self.statement(cursor)
        if kind in LITERALS:
            self.literal(cursor, parent)
        elif kind == Kind.DECL_REF_EXPR:
            self.name_of_constant(cursor)
        elif kind in (Kind.BINARY_OPERATOR, Kind.COMPOUND_ASSIGNMENT_OPERATOR):
            self.operator(cursor, parent)
        elif kind == Kind.UNARY_OPERATOR:
            self.sign(cursor)
        elif kind in (Kind.IF_STMT, Kind.WHILE_STMT, Kind.FOR_STMT, Kind.DO_STMT, Kind.CONDITIONAL_OPERATOR):
            if span(cursor) not in self.source.macros:
                self.condition(cursor)
        elif kind == Kind.RETURN_STMT:
            self.returned(cursor, function)
        elif kind == Kind.CALL_EXPR:
            self.operator(cursor, parent)
            self.arguments(cursor)

    def run(self, unit):
        self.frozen = []
        for cursor in unit.cursor.get_children():
            if self.source.holds(cursor) and not cursor.kind.is_preprocessing():
                self.walk(cursor, unit.cursor, None)
        return [self.found[key] for key in sorted(self.found)]


def find(root, name, flags):
    """The sites of one file, in its order."""
    path = root / name
    language = ["-x", "c++"]
    options = cindex.TranslationUnit.PARSE_DETAILED_PROCESSING_RECORD
    unit = cindex.Index.create().parse(str(path), language + flags, options=options)
    errors = [str(d) for d in unit.diagnostics if d.severity >= cindex.Diagnostic.Error]
    if errors:
        raise RuntimeError(f"{name} cannot be read: {errors[0]}")
    return Finder(Source(path, unit), name).run(unit)
