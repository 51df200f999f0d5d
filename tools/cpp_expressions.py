"""Which texts the expressions of a C++ source make, as far as tokens tell.

An expression is a list of pieces: literals, gaps (values, names, calls) and choices. So

  "port " + std::to_string(port) + (up ? " is up" : " is down")

is [Literal, GAP, Choice], and has two variants.
"""

import re
from collections import namedtuple
from itertools import product

GAP = None
Literal = namedtuple("Literal", "text line is_string")
Choice = namedtuple("Choice", "branches")  # those of ?:, each a list of pieces
# `target` is the name that the expression is assigned or streamed to, `calls` those around it,
# outermost first.
Expression = namedtuple("Expression", "pieces calls target")
Use = namedtuple("Use", "name calls")  # of a variable

TOKEN = re.compile(
    r"""
    (?P<skip> //[^\n]* | /\*.*?\*/ | ^[ \t]*\#[ \t]*include[^\n]* )
  | (?P<raw> (?:u8|[uUL])?R"(?P<fence>[^()\\\s]{0,16})\((?P<body>.*?)\)(?P=fence)"(?:sv?\b)? )
  | (?P<string> (?:u8|[uUL])?"(?P<inner>(?:[^"\\\n]|\\.)*)"(?:sv?\b)? )
  | (?P<char> '(?P<single>(?:[^'\\\n]|\\.)+)' )
  | (?P<number> \.?\d(?:[\w.]|'\w)* )
  | (?P<name> [A-Za-z_]\w* )
  | (?P<sign> << | -> | :: | == | != | <= | >= | && | \|\| | \+= | \S )
    """,
    re.S | re.M | re.X,
)
ESCAPE = re.compile(r"\\(?:x([0-9a-fA-F]+)|([0-7]{1,3})|u([0-9a-fA-F]{4})|(.))", re.S)
SIMPLE_ESCAPES = {"n": "\n", "t": "\t", "r": "\r", "a": "\a", "b": "\b", "f": "\f", "v": "\v"}

NO_CALLS = {"return", "throw", "case", "else", "if", "while", "for", "switch"}
STRING_TYPES = {"string", "string_view"}
BOUNDARIES = {"=", "+=", ",", ";", "#", "return", "throw", "case", "else"}
# A literal beside one of these is looked at and goes nowhere.
COMPARISONS = {"==", "!=", "&&", "||"}

Token = namedtuple("Token", "kind sign text line")  # sign: a name, number or operator as it stands


def unescape(text):
    def character(match):
        for group, base in ((1, 16), (2, 8), (3, 16)):
            if match[group]:
                return chr(int(match[group], base))
        return SIMPLE_ESCAPES.get(match[4], match[4])

    return ESCAPE.sub(character, text)


def tokens(source):
    line = 1
    at = 0
    for match in TOKEN.finditer(source):
        line += source.count("\n", at, match.start())
        at = match.start()
        if match["raw"]:
            yield Token("string", None, match["body"], line)
        elif match["string"]:
            yield Token("string", None, unescape(match["inner"]), line)
        elif match["char"]:
            yield Token("char", None, unescape(match["single"]), line)
        elif not match["skip"]:
            yield Token("name" if match["name"] else "sign", match[0], None, line)


class Bracket:
    """An open bracket, and the expression that is being read in it."""

    def __init__(self, calls, only_groups=False):
        self.calls = calls
        self.only_groups = only_groups  # as in a + (b ? c : d)
        self.begin()

    def begin(self):
        self.pieces = []
        self.branches = None
        self.is_compared = False
        self.target = None

    def add(self, piece):
        if piece is not GAP or not self.pieces or self.pieces[-1] is not GAP:
            self.pieces.append(piece)

    def take(self, keep_compared):
        pieces = self.pieces
        if self.branches is not None:
            pieces = [Choice(self.branches + [pieces])]
        if self.is_compared and not keep_compared:
            pieces = [GAP]
        self.begin()
        return pieces


class Reader:
    """Finds all expressions with literals; those that are only compared if they are wanted."""

    def __init__(self, source, keep_compared):
        self.keep_compared = keep_compared
        self.expressions = []
        self.uses = []
        self.brackets = [Bracket(())]
        previous = Token("sign", ";", None, 0)
        for token in tokens(source):
            self.read(token, previous)
            previous = token
        while self.brackets:
            self.close()

    def read(self, token, previous):
        bracket = self.brackets[-1]
        if token.text is not None:
            self.read_literal(token, previous)
        elif token.sign in BOUNDARIES:
            self.end_expression()
            if token.sign in ("=", "+="):
                bracket.target = previous.sign
        elif token.sign in COMPARISONS:
            bracket.is_compared = True
            bracket.add(GAP)
        elif token.sign == "?":  # what was read is the condition
            bracket.branches = bracket.branches or []
            bracket.pieces = []
            bracket.is_compared = False
        elif token.sign == ":":
            if bracket.branches is None:  # of a label, a loop or a constructor
                self.end_expression()
            else:
                bracket.branches.append(bracket.pieces)
                bracket.pieces = []
        elif token.sign in ("(", "{", "["):
            self.open(token, previous)
        elif token.sign in (")", "}", "]"):
            if len(self.brackets) > 1:
                self.close()
        elif token.sign == "<<":
            if bracket.pieces == [GAP]:  # the stream
                bracket.pieces = []
                bracket.target = previous.sign
        elif token.sign == "endl":
            bracket.add(Literal("\n", token.line, False))
        elif token.sign not in ("+", "::", ".", "->", "std"):
            bracket.add(GAP)
            self.uses.append(Use(token.sign, bracket.calls))

    def read_literal(self, token, previous):
        pieces = self.brackets[-1].pieces
        if token.kind == previous.kind == "string" and pieces:
            pieces[-1] = pieces[-1]._replace(text=pieces[-1].text + token.text)
        else:
            pieces.append(Literal(token.text, token.line, token.kind == "string"))

    def open(self, token, previous):
        """f(...) and, among arguments, Type{...} are calls; std::string("a") is as good as "a"."""
        bracket = self.brackets[-1]
        follows_name = previous.kind == "name" and previous.sign not in NO_CALLS
        calls = bracket.calls
        only_groups = False
        if token.sign == "(":
            if previous.sign in STRING_TYPES and bracket.pieces[-1:] == [GAP]:
                bracket.pieces.pop()
                only_groups = True
            else:
                only_groups = not follows_name and previous.sign not in (")", "]", ">")
        is_object = token.sign == "{" and follows_name and bool(calls)
        if is_object or token.sign == "(" and not only_groups:
            calls += (previous.sign,)
        self.brackets.append(Bracket(calls, only_groups))

    def close(self):
        if self.brackets[-1].only_groups:
            for piece in self.brackets.pop().take(self.keep_compared):
                self.brackets[-1].add(piece)
            return
        self.end_expression()
        self.brackets.pop()
        if self.brackets:
            self.brackets[-1].add(GAP)

    def end_expression(self):
        bracket = self.brackets[-1]
        target = bracket.target
        pieces = bracket.take(self.keep_compared)
        if any(piece is not GAP for piece in pieces):
            self.expressions.append(Expression(pieces, bracket.calls, target))


def variants(pieces):
    """The pieces with every choice made in every way."""
    ways = [[way for branch in piece.branches for way in variants(branch)]
            if isinstance(piece, Choice) else [[piece]] for piece in pieces]
    for way in product(*ways):
        yield [piece for part in way for piece in part]
