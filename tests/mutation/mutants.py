"""The mutants of a C++ source: small changes, each of which a test should notice.

A source is read with libclang and written anew with all mutants in it, each behind a switch (see
switch.h), so that one build serves them all. A change of an expression becomes

  a < b        ->  (On(3) ? (a <= b) : On(4) ? (a >= b) : (a < b))

and one of a statement

  Forget(x);   ->  if (On(5)) {} else Forget(x);

Since one mutant at most is on, the changed side always holds the source as it was; only the other
side holds the mutants of what stands inside.
"""

import re
from collections import Counter
from dataclasses import dataclass, field

from clang.cindex import Config, CursorKind as Kind, Index, TranslationUnit, TypeKind

Config.set_compatibility_check(False)

COMPARISONS = {"<": ("<=", ">="), "<=": ("<", ">"), ">": (">=", "<="), ">=": (">", "<"),
               "==": ("!=",), "!=": ("==",)}
LOGIC = {"&&": "||", "||": "&&"}
ARITHMETIC = {"+": "-", "-": "+", "*": "/", "/": "*", "%": "/", "&": "|", "|": "&", "^": "&",
              "<<": ">>", ">>": "<<"}
ASSIGNMENTS = {"+=": "-=", "-=": "+=", "*=": "/=", "/=": "*=", "&=": "|=", "|=": "&=",
               "<<=": ">>=", ">>=": "<<=", "^=": "&="}
STEPS = {"++": "--", "--": "++"}

FUNCTIONS = {Kind.FUNCTION_DECL, Kind.CXX_METHOD, Kind.CONSTRUCTOR, Kind.DESTRUCTOR,
             Kind.FUNCTION_TEMPLATE, Kind.CONVERSION_FUNCTION}
SCOPES = FUNCTIONS | {Kind.CLASS_DECL, Kind.STRUCT_DECL, Kind.CLASS_TEMPLATE, Kind.ENUM_DECL}
JUMPS = {Kind.RETURN_STMT, Kind.BREAK_STMT, Kind.CONTINUE_STMT}
# Implicit, or without an effect of their own.
TRANSPARENT = {Kind.UNEXPOSED_EXPR, Kind.PAREN_EXPR}
NUMBERS = {TypeKind.CHAR_U, TypeKind.UCHAR, TypeKind.USHORT, TypeKind.UINT, TypeKind.ULONG,
           TypeKind.ULONGLONG, TypeKind.CHAR_S, TypeKind.SCHAR, TypeKind.SHORT, TypeKind.INT,
           TypeKind.LONG, TypeKind.LONGLONG, TypeKind.DOUBLE, TypeKind.FLOAT}

# What these do nobody can see in a result: room made ahead, memory given back (the leak checker
# of the sanitized tests sees that), and words for the log.
UNSEEN_CALLS = {"reserve", "Reserve", "ReserveNodes", "ReserveLinks", "shrink_to_fit",
                "release_container_data", "dump_to_log_file"}
# The latter ask for unordered pairs.
SYMMETRIC_CALLS = {"min", "max", "swap", "minmax", "Normalised", "Contains", "IsReportedLinkIssue",
                   "AddNewLinkIssue"}


@dataclass
class Mutant:
    file: str
    function: str
    line: int
    column: int
    kind: str
    before: str
    after: str
    source: str  # the whole line
    edits: list = field(default_factory=list)  # (start, end, is statement, replacement)
    number: int = 0

    def what(self):
        return f"{self.before} -> {self.after}"

    def key(self):
        """Names it as long as its line stays, wherever that moves in its function."""
        return self.file, self.function, self.source, self.what()


@dataclass
class Thaw:
    """A constant that has mutants, and so must not be one for the compiler.

    The text stands instead of its `constexpr` (nothing instead of nothing for a variable that
    merely lives as long as the program); `until` is where its value ends.
    """
    start: int
    end: int
    until: int
    text: str
    line: int

    def holds(self, place):
        return self.end <= place.start and place.end <= self.until


@dataclass
class Source:
    text: str
    mutants: list
    left_out: Counter  # by reason
    thaws: list


def kind_of(cursor):
    """None for what the Python side of libclang has no name for."""
    try:
        return cursor.kind
    except ValueError:
        return None


def masked(text):
    """The text without what comments and literals say; every offset stays."""
    pattern = re.compile(r'//[^\n]*|/\*.*?\*/|R"([^(\s]*)\(.*?\)\1"|"(?:[^"\\\n]|\\.)*"'
                         r"|(?<![0-9a-fA-F])'(?:[^'\\\n]|\\.)+'", re.S)
    return pattern.sub(lambda match: re.sub(r"[^\n]", " " if match[0][0] == "/" else "_",
                                            match[0]), text)


def one_line(text, limit=70):
    text = re.sub(r"\s+", " ", text).strip()
    return text if len(text) <= limit else text[:limit - 3] + "..."


def changed_text(literal):
    """A string literal with one character changed, or None when it has none to change."""
    raw = re.match(r'R"[^(]*\(', literal)
    start, end = (raw.end(), literal.rindex(")")) if raw else (1, literal.rindex('"'))
    # What the text's reader does not see stays: escapes, the marks of formats, joins of literals.
    marks = r'\{[^{}]*\}|%[-0-9.]*\w' if raw else r'\\x[0-9a-f]+|\\.|"\s*"|\{[^{}]*\}|%[-0-9.]*\w'
    body = re.sub(marks, lambda match: "\0" * len(match[0]), literal[start:end])
    found = re.search(r"\w", body) or re.search(r"[^\0\n]", body)
    if not found:
        return None
    at = start + found.start()
    return literal[:at] + ("Y" if literal[at] == "X" else "X") + literal[at + 1:]


class Finder:
    """Collects the mutants of one source."""

    def __init__(self, name, text, unit):
        self.name = name
        self.text = text
        self.masked = masked(text)
        self.lines = text.split("\n")
        self.line_starts = [0]
        for line in self.lines:
            self.line_starts.append(self.line_starts[-1] + len(line) + 1)
        self.mutants = []
        self.left_out = Counter()
        self.thaws = []
        self.seen = set()
        self.scopes = []
        self.functions = []  # cursors of functions and lambdas
        self.frozen = 0  # inside of a constant expression
        self.path = unit.spelling
        self.macros = []
        for cursor in unit.cursor.get_children():
            if not self.is_here(cursor):
                continue
            if cursor.kind == Kind.MACRO_INSTANTIATION:
                self.macros.append(self.range(cursor))
        self.asserted = self.find_asserted(unit)
        for cursor in unit.cursor.get_children():
            if self.is_here(cursor) and not cursor.kind.is_preprocessing():
                self.visit(cursor, [])

    def find_asserted(self, unit):
        """Where that begins of which the compiler asserts something: constants and functions."""
        asserted = set()
        todo = [cursor for top in unit.cursor.get_children() if self.is_here(top)
                for cursor in top.walk_preorder() if kind_of(cursor) == Kind.STATIC_ASSERT]
        while todo:
            for cursor in todo.pop().walk_preorder():
                named = cursor.referenced
                named = named and (named.get_definition() or named)
                if not named or kind_of(named) not in (Kind.VAR_DECL, Kind.FUNCTION_DECL) or \
                        not self.is_here(named) or named.location.offset in asserted:
                    continue
                asserted.add(named.location.offset)
                todo.append(named)
        return asserted

    # --- The text of the tree.

    def is_here(self, cursor):
        place = cursor.location.file
        return place is not None and place.name == self.path

    @staticmethod
    def range(cursor):
        return cursor.extent.start.offset, cursor.extent.end.offset

    def source(self, cursor):
        start, end = self.range(cursor)
        return self.text[start:end]

    def closing(self, at):
        """The offset of the parenthesis that closes the one at `at`."""
        depth = 0
        for place in range(at, len(self.masked)):
            depth += {"(": 1, ")": -1}.get(self.masked[place], 0)
            if depth == 0:
                return place
        return len(self.masked)

    def bare(self, cursor):
        """Behind parentheses and what is implicit."""
        while cursor.kind in TRANSPARENT:
            children = list(cursor.get_children())
            if len(children) != 1:
                break
            if (cursor.kind == Kind.UNEXPOSED_EXPR and cursor.spelling == "" and
                    children[0].kind == Kind.UNARY_OPERATOR and
                    self.range(children[0])[0] > self.range(cursor)[0]):
                # a != b that is made of ==.
                children = list(children[0].get_children())
            cursor = children[0]
        return cursor

    def operator(self, cursor):
        """(operator, left, right) of a binary expression, or None."""
        children = list(cursor.get_children())
        if cursor.kind == Kind.CALL_EXPR:
            if not cursor.spelling.startswith("operator") or len(children) != 3:
                return None
            left, _, right = children
        elif cursor.kind in (Kind.BINARY_OPERATOR, Kind.COMPOUND_ASSIGNMENT_OPERATOR):
            if len(children) != 2:
                return None
            left, right = children
        else:
            return None
        between = self.masked[self.range(left)[1]:self.range(right)[0]].strip()
        return between, left, right

    # --- Mutants.

    def add(self, kind, cursor, edits, before, after, reason=None):
        start, end = edits[0][0], edits[-1][1]
        key = (kind, start, end, after)
        if key in self.seen or start >= end:
            return
        self.seen.add(key)
        if any(low < end and start < high for low, high in self.macros):
            self.left_out["inside a macro"] += 1
            return
        if reason or self.frozen:
            self.left_out[reason or "constant for the compiler"] += 1
            return
        line = self.text.count("\n", 0, start) + 1
        self.mutants.append(Mutant(
            self.name, "::".join(self.scopes), line, start - self.line_starts[line - 1] + 1, kind,
            one_line(before), one_line(after), self.lines[line - 1].strip(), edits))

    def change(self, kind, cursor, replacement, before=None, after=None):
        start, end = self.range(cursor)
        self.add(kind, cursor, [(start, end, False, replacement)],
                 before or self.text[start:end], after or replacement)

    def negate(self, cursor, kind="condition"):
        """Of an expression that is true or false: its contrary, where no other mutant gives it."""
        bare = self.bare(cursor)
        found = self.operator(bare)
        if found and found[0] in (*COMPARISONS, *LOGIC):
            return
        if bare.kind in (Kind.CXX_BOOL_LITERAL_EXPR, Kind.LAMBDA_EXPR):
            return
        if bare.kind == Kind.UNARY_OPERATOR and self.source(bare).startswith("!"):
            return
        start, end = self.range(cursor)
        text = self.text[start:end]
        self.add(kind, cursor, [(start, end, "truth", text)], text, f"!({text})")

    def remove(self, cursor, name=None):
        bare = self.bare(cursor)
        if bare.kind == Kind.CXX_DELETE_EXPR:
            self.left_out["memory given back"] += 1
            return
        if bare.kind == Kind.CALL_EXPR and bare.spelling in UNSEEN_CALLS:
            return
        start, end = self.range(cursor)
        self.add("statement", cursor, [(start, end, True, "")], self.text[start:end], "(removed)")

    # --- The walk.

    def visit(self, cursor, parents):
        kind = cursor.kind
        if kind == Kind.CALL_EXPR and cursor.spelling in UNSEEN_CALLS:
            self.left_out["log, room made ahead"] += 1
            return
        if kind in SCOPES and cursor.is_definition():
            self.scopes.append(cursor.spelling if kind != Kind.FUNCTION_TEMPLATE
                               else cursor.spelling.split("<")[0])
            # Of a function that is defined outside of its class.
            parent = cursor.semantic_parent
            if kind in FUNCTIONS and parent is not None and parent != cursor.lexical_parent:
                self.scopes[-1] = f"{parent.spelling}::{self.scopes[-1]}"
        if kind in FUNCTIONS or kind == Kind.LAMBDA_EXPR:
            self.functions.append(cursor)
        handler = getattr(self, "visit_" + kind.name.lower(), None)
        if handler is not None:
            handler(cursor, parents)
        frozen = self.is_frozen(cursor)
        self.frozen += frozen
        children = list(cursor.get_children())
        for child in children:
            if not self.is_here(child):
                continue
            of_type = self.is_of_type(cursor, child)
            self.frozen += of_type
            self.visit(child, [*parents, cursor])
            self.frozen -= of_type
        self.frozen -= frozen
        if kind in FUNCTIONS or kind == Kind.LAMBDA_EXPR:
            self.functions.pop()
        if kind in SCOPES and cursor.is_definition():
            self.scopes.pop()

    def is_of_type(self, cursor, child):
        """Whether the child is part of a type's name, not of what is computed."""
        if cursor.kind in (Kind.DECL_REF_EXPR, Kind.MEMBER_REF_EXPR):
            return child.kind in (Kind.INTEGER_LITERAL, Kind.CXX_BOOL_LITERAL_EXPR)
        if cursor.kind == Kind.CASE_STMT:
            return child == next(cursor.get_children())
        if cursor.kind in (Kind.VAR_DECL, Kind.FIELD_DECL, Kind.PARM_DECL, *FUNCTIONS):
            return (child.kind.is_expression() and
                    self.range(child)[0] < cursor.location.offset and
                    self.range(child)[1] <= cursor.location.offset)
        return False

    def is_frozen(self, cursor):
        if cursor.kind in (Kind.ENUM_DECL, Kind.STATIC_ASSERT, Kind.TYPE_ALIAS_DECL):
            return True
        if cursor.kind in (Kind.VAR_DECL, Kind.FUNCTION_DECL) and \
                cursor.location.offset in self.asserted:
            return True
        if cursor.kind == Kind.IF_STMT:
            return False
        if cursor.kind != Kind.VAR_DECL:
            return False
        start, end = self.range(cursor)
        head = self.masked[start:cursor.location.offset]
        keyword = re.search(r"\bconstexpr\b", head)
        if keyword:
            owner = cursor.semantic_parent.kind
            if owner in (Kind.CLASS_DECL, Kind.STRUCT_DECL, Kind.CLASS_TEMPLATE):
                return True
            text = "const"
            if re.search(r"\bconst\b", head):
                text = "inline" if owner in (Kind.NAMESPACE, Kind.TRANSLATION_UNIT) else ""
            low, high = start + keyword.start(), start + keyword.end()
            self.thaws.append(Thaw(low, high, end, text, cursor.location.line))
        elif cursor.lexical_parent.kind in (Kind.NAMESPACE, Kind.TRANSLATION_UNIT):
            # The compiler could work out its first value as well.
            place = cursor.location.offset
            self.thaws.append(Thaw(place, place, end, "", cursor.location.line))
        return False

    # --- Expressions.

    def visit_binary_operator(self, cursor, parents):
        found = self.operator(cursor)
        if not found:
            return
        sign, left, right = found
        one, other = self.source(left), self.source(right)
        self.compare(cursor, found)
        if sign in LOGIC:
            self.change("logic", cursor, f"static_cast<bool>({one}) {LOGIC[sign]} "
                        f"static_cast<bool>({other})", after=f"{one} {LOGIC[sign]} {other}")
            self.negate(left)
            self.negate(right)
        pointers = all(side.type.get_canonical().kind == TypeKind.POINTER for side in (left, right))
        if sign in ARITHMETIC and cursor.type.get_canonical().kind in NUMBERS and not pointers:
            self.change("arithmetic", cursor, f"{one} {ARITHMETIC[sign]} {other}")

    def compare(self, cursor, found):
        sign, left, right = found
        # n > 10 with >= is n > 9, which the changed constant gives.
        counts = any(self.bare(side).kind == Kind.INTEGER_LITERAL for side in (left, right))
        one, other = self.source(left), self.source(right)
        for after in COMPARISONS.get(sign, ()):
            if counts and {sign, after} in ({"<", "<="}, {">", ">="}):
                continue
            replacement = f"{one} {after} {other}"
            if cursor.kind == Kind.CALL_EXPR and sign in "<>":
                # A class need not have all the operators.
                sides = (other, one) if after in ("<=", ">=") and after[0] == sign else (one, other)
                replacement = f"!({sides[0]} {sign} {sides[1]})"
            self.change("comparison", cursor, replacement, after=f"{one} {after} {other}")

    def visit_compound_assignment_operator(self, cursor, parents):
        found = self.operator(cursor)
        if found and found[0] in ASSIGNMENTS:
            _, left, right = found
            self.change("arithmetic", cursor,
                        f"{self.source(left)} {ASSIGNMENTS[found[0]]} {self.source(right)}")

    def visit_unary_operator(self, cursor, parents):
        text = self.source(cursor)
        operand = next(cursor.get_children(), None)
        if operand is None:
            return
        inner = self.source(operand)
        (start, end), (low, high) = self.range(cursor), self.range(operand)
        for step, contrary in STEPS.items():
            if self.text[start:low].strip() == step:
                self.change("arithmetic", cursor, contrary + inner)
            elif self.text[high:end].strip() == step:
                self.change("arithmetic", cursor, inner + contrary)
        if text.startswith("!") and self.range(operand)[0] > self.range(cursor)[0]:
            found = self.operator(self.bare(operand))
            if text.startswith("!=") or (found and found[0] in (*COMPARISONS, *LOGIC)):
                return
            self.add("condition", cursor, [(start, end, "truth", inner)], text, inner)
        if text.startswith("-") and not text.startswith("--"):
            self.change("arithmetic", cursor, inner)
        if text.startswith("~"):
            self.change("arithmetic", cursor, inner)

    def visit_conditional_operator(self, cursor, parents):
        self.negate(next(cursor.get_children()))

    def visit_call_expr(self, cursor, parents):
        found = self.operator(cursor)
        if found:
            self.compare(cursor, found)
            return
        if cursor.spelling.startswith("operator") and cursor.spelling not in ("operator()",):
            return
        if cursor.spelling in SYMMETRIC_CALLS:
            return
        self.swap([argument for argument in cursor.get_arguments() if argument is not None])

    def visit_init_list_expr(self, cursor, parents):
        self.swap(list(cursor.get_children()))

    def swap(self, arguments):
        for one, other in zip(arguments, arguments[1:]):
            (start, end), (start2, end2) = self.range(one), self.range(other)
            if not (0 < start < end <= start2 < end2):
                continue
            before, after = self.text[start:end], self.text[start2:end2]
            if before == after or before[0] in "{[" or after[0] in "{[":
                continue
            kinds = [self.bare(argument).type.get_canonical() for argument in (one, other)]
            plain = [re.sub(r"\bconst\b|[& ]|(?<=\[)\d+", "", kind.spelling) for kind in kinds]
            numbers = all(kind.kind in NUMBERS for kind in kinds)
            if plain[0] != plain[1] and not numbers:
                continue
            if any(kind.kind == TypeKind.POINTER for kind in kinds) and \
                    len({kind.get_pointee().is_const_qualified() for kind in kinds}) > 1:
                continue
            if "dependent" in plain[0] or "lambda" in plain[0] or "boundmember" in plain[0]:
                continue
            texts = [after, before]
            if plain[0] != plain[1]:
                # Each in the type of the other's place.
                texts = [f"static_cast<{kind.spelling.removeprefix('const ')}>({text})"
                         for kind, text in zip(kinds, texts)]
            self.add("arguments", one,
                     [(start, end, False, texts[0]), (start2, end2, False, texts[1])],
                     f"{before}, {after}", f"{after}, {before}")

    # --- Constants.

    def visit_integer_literal(self, cursor, parents):
        text = self.source(cursor)
        match = re.fullmatch(r"(0[xX][0-9a-fA-F']+|0[0-7']+|[0-9']+)([uUlLzZ]*)", text)
        if not match:
            return
        digits, suffix = match[1].replace("'", ""), match[2]
        value = int(digits, 0 if not re.fullmatch(r"0[0-7]+", digits) else 8)
        for changed in [value + 1] + ([value - 1] if value > 0 else []):
            self.change("constant", cursor, f"{changed}{suffix}")

    def visit_floating_literal(self, cursor, parents):
        text = self.source(cursor)
        self.change("constant", cursor, f"({text} + 1.0)")

    def visit_cxx_bool_literal_expr(self, cursor, parents):
        text = self.source(cursor)
        if text in ("true", "false"):
            self.change("constant", cursor, "false" if text == "true" else "true")

    def visit_character_literal(self, cursor, parents):
        text = self.source(cursor)
        self.change("constant", cursor, f"static_cast<char>({text} + 1)", after=f"{text} + 1")

    def visit_string_literal(self, cursor, parents):
        text = self.source(cursor)
        if '"' not in text or "#include" in text:
            return
        if text == '""':
            self.change("text", cursor, '"X"')
            return
        after = changed_text(text)
        if after is None:
            size = re.search(r"\[(\d+)\]", cursor.type.spelling)
            if not size:
                return
            after = '"' + "X" * (int(size[1]) - 1) + '"'
        is_format = any("format_string" in parent.type.spelling for parent in parents[-6:]
                        if parent.kind in (Kind.UNEXPOSED_EXPR, Kind.CALL_EXPR))
        if not is_format:
            self.change("text", cursor, after)
            return
        start, end = self.range(cursor)
        self.add("text", cursor, [(start, end, "format", after)], text, after)

    # --- Statements.

    def statement(self, cursor):
        """What may be taken out, if a cursor in a statement's place is one."""
        if cursor.kind.is_expression() or cursor.kind in (Kind.BREAK_STMT, Kind.CONTINUE_STMT):
            self.remove(cursor)
        elif cursor.kind == Kind.RETURN_STMT and self.may_go_on(cursor):
            self.remove(cursor)

    def may_go_on(self, cursor):
        """Whether a function still ends with a return when this one is taken out."""
        if not self.functions:
            return False
        body = list(self.functions[-1].get_children())[-1]
        statements = list(body.get_children())
        if not statements:
            return False
        last = statements[-1]
        return (last.kind == Kind.RETURN_STMT and self.range(last) != self.range(cursor)) or \
            not list(cursor.get_children())

    def visit_compound_stmt(self, cursor, parents):
        for child in cursor.get_children():
            self.statement(child)

    def head_and_bodies(self, cursor):
        """The children inside of the parentheses, where those end, and the statements behind."""
        start, _ = self.range(cursor)
        opening = self.masked.index("(", start)
        closing = self.closing(opening)
        children = list(cursor.get_children())
        return ([child for child in children if self.range(child)[0] < closing], opening,
                closing, [child for child in children if self.range(child)[0] > closing])

    def condition(self, cursor):
        head, opening, closing, bodies = self.head_and_bodies(cursor)
        declared = [child for child in head if child.kind == Kind.VAR_DECL]
        if declared:
            # if (const auto code = Read()): negated behind a semicolon.
            start, end = self.range(declared[0])
            name = declared[0].spelling
            if cursor.kind == Kind.IF_STMT:
                self.add("condition", cursor, [(start, end, "declared", name)],
                         self.text[start:end], f"!({name})")
        elif head:
            self.negate(head[-1])
        for body in bodies:
            self.statement(body)

    def visit_if_stmt(self, cursor, parents):
        if self.masked.startswith("if constexpr", self.range(cursor)[0]):
            self.left_out["constant for the compiler"] += 1
            return
        self.condition(cursor)

    def visit_while_stmt(self, cursor, parents):
        self.condition(cursor)

    def visit_do_stmt(self, cursor, parents):
        self.negate(list(cursor.get_children())[-1])

    def visit_for_stmt(self, cursor, parents):
        head, opening, closing, bodies = self.head_and_bodies(cursor)
        first = self.masked.index(";", opening)
        second = self.masked.index(";", first + 1)
        for child in head:
            if first < self.range(child)[0] < second:
                self.negate(child)
        for body in bodies:
            self.statement(body)

    def visit_cxx_for_range_stmt(self, cursor, parents):
        for body in self.head_and_bodies(cursor)[3]:
            self.statement(body)

    def visit_case_stmt(self, cursor, parents):
        children = list(cursor.get_children())
        self.left_out["constant for the compiler"] += 1
        self.statement(children[-1])

    def visit_default_stmt(self, cursor, parents):
        self.statement(list(cursor.get_children())[-1])

    def visit_return_stmt(self, cursor, parents):
        value = next(cursor.get_children(), None)
        if value is None or not self.functions:
            return
        function = self.functions[-1]
        bare = self.bare(value)
        text = self.source(value)
        kind = value.type.get_canonical().kind
        if kind == TypeKind.BOOL:
            self.negate(value, "return")
            return
        result = function.result_type.get_canonical().kind
        if result in (TypeKind.LVALUEREFERENCE, TypeKind.RVALUEREFERENCE):
            return
        found = self.operator(bare)
        literal = bare.kind in (Kind.INTEGER_LITERAL, Kind.CHARACTER_LITERAL,
                                Kind.FLOATING_LITERAL, Kind.CXX_NULL_PTR_LITERAL_EXPR)
        if kind in NUMBERS:
            if not literal and not (found and found[0] in ARITHMETIC):
                self.change("return", value, f"({text}) + 1", after=f"{text} + 1")
        elif kind == TypeKind.POINTER:
            if not literal and bare.kind != Kind.STRING_LITERAL:
                self.change("return", value, "nullptr")
        elif kind == TypeKind.RECORD and function.kind != Kind.LAMBDA_EXPR:
            if text not in ("{}", "std::nullopt") and not re.fullmatch(r"[\w:<>]+[({][)}]", text):
                start, end = self.range(cursor)
                self.add("return", cursor, [(start, end, True, "return {};")],
                         self.text[start:end], "return {}")


def source_of(path, name, include, arguments=()):
    """Reads a source and finds its mutants; they have no numbers yet."""
    unit = Index.create().parse(
        str(path), args=["-x", "c++", "-std=c++20", f"-I{include}", *arguments],
        options=TranslationUnit.PARSE_DETAILED_PROCESSING_RECORD)
    errors = [d for d in unit.diagnostics if d.severity >= d.Error]
    if errors:
        raise SystemExit(f"mutate: {errors[0].location.file}:{errors[0].location.line}: "
                         f"{errors[0].spelling}")
    # libclang counts bytes.
    text = path.read_bytes().decode("latin-1")
    finder = Finder(name, text, unit)
    mutants = sorted(finder.mutants, key=lambda m: (m.edits[0][0], -m.edits[-1][1], m.after))
    return Source(text, mutants, finder.left_out, finder.thaws)


@dataclass
class Place:
    """One range of the source, and what may stand there instead."""
    start: int
    end: int
    form: object
    choices: list  # (number, replacement)
    inside: list = field(default_factory=list)


def places_of(source):
    places = {}
    for mutant in source.mutants:
        for start, end, form, replacement in mutant.edits:
            place = places.setdefault((start, end, form), Place(start, end, form, []))
            place.choices.append((mutant.number, replacement))
    order = {True: 0, "declared": 1, "format": 2, "truth": 3, False: 4}
    root = Place(0, len(source.text), None, [])
    stack = [root]
    for place in sorted(places.values(), key=lambda p: (p.start, -p.end, order[p.form])):
        while not (stack[-1].start <= place.start and place.end <= stack[-1].end):
            stack.pop()
        stack[-1].inside.append(place)
        stack.append(place)
    return root


class Writer:
    """Writes a source with its mutants; knows afterwards what stands where."""

    def __init__(self, source, thaws):
        self.source = source
        self.thaws = sorted(thaws, key=lambda thaw: thaw.start)
        self.parts = []
        self.size = 0
        self.spans = []  # (start, end, number) in what is written
        self.place(places_of(source))
        self.text = "".join(self.parts)

    def put(self, text):
        self.parts.append(text)
        self.size += len(text)

    def copy(self, start, end):
        """The source as it was, but for constants that are none any more."""
        for thaw in self.thaws:
            if start <= thaw.start and thaw.end <= end:
                self.put(self.source.text[start:thaw.start] + thaw.text)
                start = thaw.end
        self.put(self.source.text[start:end])

    def inner(self, place):
        at = place.start
        for inside in place.inside:
            self.copy(at, inside.start)
            self.place(inside)
            at = inside.end
        self.copy(at, place.end)

    def place(self, place):
        start = self.size
        numbers = [number for number, _ in place.choices]
        if place.form is None:
            self.inner(place)
            return
        if place.form is True:
            for number, replacement in place.choices:
                self.put(f"if (fabscope::internal::mutation::OnNow({number})) {{")
                self.choice(number, replacement)
                self.put("} else ")
            self.inner(place)
        elif place.form == "declared":
            [(number, name)] = place.choices
            self.inner(place)
            self.put(f"; static_cast<bool>({name}) != fabscope::internal::mutation::OnNow({number})")
        elif place.form == "truth":
            [(number, _)] = place.choices
            self.put("(static_cast<bool>(")
            self.inner(place)
            self.put(f") != fabscope::internal::mutation::{self.switch(place)}({number}))")
        else:
            is_format = place.form == "format"
            self.put("fmt::runtime(" if is_format else "(")
            switch = "OnNow" if is_format else self.switch(place)
            for number, replacement in place.choices:
                self.put(f"fabscope::internal::mutation::{switch}({number}) ? ")
                self.choice(number, f"({replacement})")
                self.put(" : ")
            self.put("(")
            self.inner(place)
            self.put("))")
        self.spans += [(start, self.size, number) for number in numbers]

    def choice(self, number, replacement):
        self.spans.append((self.size, self.size + len(replacement), number))
        self.put(replacement)

    def switch(self, place):
        """In the value of a constant that is none any more, nothing is known ahead."""
        return "OnNow" if any(thaw.holds(place) for thaw in self.thaws) else "On"

    def innermost(self, line, column):
        """The numbers of the mutants in whose text an error of the compiler stands."""
        at = 0
        for _ in range(line - 1):
            at = self.text.index("\n", at) + 1
        at += column - 1
        around = [(end - start, number) for start, end, number in self.spans if start <= at < end]
        return [number for size, number in around if size == min(around)[0]]
