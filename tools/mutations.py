"""Finds the places in C++ sources where one operator, constant, condition or statement can be changed.

Comments, texts and preprocessor lines are left alone, and so is what nobody could notice: static_assert, the extents of
arrays, the parameters that a message does not have, and room that is made ahead. It relies on the format of the tree:
binary operators, and only they, have white space on both sides.
"""
import collections
import dataclasses
import re

TOKEN = re.compile(r'''
    (?P<comment>//[^\n]*|/\*.*?\*/)
  | (?P<directive>^[ \t]*\#(?:\\\n|[^\n])*)
  | (?P<text>(?:u8|[uUL])?(?:R"(?P<mark>[^(\s]*)\(.*?\)(?P=mark)"|"(?:\\.|[^"\\\n])*"|'(?:\\.|[^'\\\n])*'))
  | (?P<number>\d(?:'?[\w.])*)
  | (?P<word>[A-Za-z_]\w*)
  | (?P<operator><=>|<<=|>>=|\.\.\.|->|::|\+\+|--|[-+*/%&|^=!<>]=|&&|\|\||<<|>>|[^\s\w])
''', re.VERBOSE | re.MULTILINE | re.DOTALL)

BINARY = {'==': '!=', '!=': '==', '<': '<=', '<=': '<', '>': '>=', '>=': '>', '&&': '||', '||': '&&',
          '+': '-', '-': '+', '*': '/', '/': '*', '&': '|', '|': '&', '<<': '>>', '>>': '<<',
          '+=': '-=', '-=': '+=', '|=': '&=', '&=': '|='}
UNARY = {'!': '', '++': '--', '--': '++'}
WORDS = {'true': 'false', 'false': 'true', 'break': 'continue', 'continue': 'break'}
DECISIVE = {'==', '!=', '<', '<=', '>', '>=', '&&', '||', '!'} # a condition that has one is changed there
INTEGER = re.compile(r"(0[xX][0-9A-Fa-f']+|[\d']+)([uUlLzZ]*)")
PARTNERS = {'(': ')', '[': ']', '{': '}'}
HEADS = {'if', 'while', 'for', 'switch', 'catch'}
NOT_A_CALL = HEADS | {'return', 'static_assert', 'case', 'default', 'else', 'do', 'goto', 'delete', 'throw', 'sizeof'}


@dataclasses.dataclass(frozen=True)
class Mutation:
    file: str
    begin: int
    end: int
    new: str
    line: int
    key: str # stays the same while other lines of the file change

    def apply(self, source):
        return source[:self.begin] + self.new + source[self.end:]


class Tokens:
    """The tokens of a source: texts, places, and for each bracket its partner."""

    def __init__(self, source):
        found = [m for m in TOKEN.finditer(source) if m.lastgroup not in {'comment', 'directive'}]
        self.source = source
        self.kinds = ['text' if m['text'] else m.lastgroup for m in found]
        self.texts = [m[0] for m in found]
        self.places = [m.span() for m in found]
        self.partner = {}
        open_brackets = []
        for i, text in enumerate(self.texts):
            if self.kinds[i] != 'operator':
                continue
            if text in PARTNERS:
                open_brackets.append(i)
            elif text in PARTNERS.values() and open_brackets:
                self.partner[open_brackets[-1]] = i
                self.partner[i] = open_brackets.pop()

    def __len__(self):
        return len(self.texts)

    def is_spaced(self, i):
        begin, end = self.places[i]
        return self.source[begin - 1].isspace() and self.source[end:end + 1].isspace()

    def next(self, i, text):
        """The place of a text from i on in the same brackets; where there is none, the end of all tokens."""
        while i < len(self) and self.texts[i] != text:
            if self.texts[i] in PARTNERS.values():
                return len(self)
            i = self.partner.get(i, i) + 1
        return i


def token_changes(tokens):
    """(first token, last token, new text) of each operator, constant and jump that can be another."""
    i = 0
    while i < len(tokens):
        kind, text = tokens.kinds[i], tokens.texts[i]
        before = tokens.texts[i - 1] if i else ''
        if text == 'static_assert':
            i = tokens.next(i, ';')
        elif kind == 'operator' and text in BINARY and tokens.is_spaced(i) and before != 'template':
            yield i, i, BINARY[text]
        elif kind == 'operator' and text in UNARY and before != 'operator':
            yield i, i, UNARY[text]
        elif kind == 'word' and text in WORDS:
            yield i, i, WORDS[text]
        elif kind == 'number' and (number := INTEGER.fullmatch(text)) and not is_unused(tokens, i):
            digits = number[1].replace("'", '')
            more = hex(int(digits, 16) + 1) if digits[:2] in {'0x', '0X'} else str(int(digits) + 1)
            yield i, i, more + number[2]
        i += 1


def is_unused(tokens, i):
    """Whether a number is the extent in 'type name[number]', a zero that is sent with a message, or room ahead."""
    texts = tokens.texts
    if i > 2 and texts[i - 1] == '[' and texts[i + 1] == ']':
        return tokens.kinds[i - 2] == tokens.kinds[i - 3] == 'word' and texts[i - 3] != 'return'
    call = texts[tokens.partner.get(tokens.next(i, ')'), 0) - 1]
    return call == 'reserve' or texts[i] == '0' and call in {'SendMessageW', 'PostMessageW'}


def statements(tokens):
    """(first token, whether a bool is to be returned here) of each statement of each function."""
    scopes = [] # what is open: True or False inside a function that returns a bool or not, None elsewhere
    start = 0   # of the statement, the declaration or the expression that is being read
    for i, text in enumerate(tokens.texts):
        inside = scopes[-1] if scopes else None
        if i == start and inside is not None and text not in '{};':
            yield i, inside
        head = tokens.texts[start:i]
        if text == '{':
            scopes.append(kind_of_scope(head, inside))
        elif text == '}' and scopes:
            scopes.pop()
        ends_head = text == ')' and tokens.texts[tokens.partner.get(i, i) - 1] in HEADS | {'constexpr'} and \
            tokens.texts[start] in HEADS
        ends_label = text == ':' and head and head[0] in {'case', 'default'}
        # The end of an initialiser or of a lambda ends no statement, but what is inside a lambda are statements.
        if text in {';', '{', '}', 'else', 'do'} or ends_head or ends_label:
            start = i + 1


def kind_of_scope(head, outside):
    """What a brace opens after the tokens of head: see statements()."""
    if outside is not None and (not head or head[0] in HEADS | {'else', 'do', 'try'}):
        return outside
    if '[' in head and head[-1] in {')', ']', 'noexcept', 'mutable'} or '->' in head[-4:]:
        return head[-1] == 'bool'
    if outside is None and '(' in head and '=' not in head and head[0] not in {'struct', 'class', 'enum', 'namespace'}:
        return 'bool' in head[:head.index('(')]
    return None


def statement_changes(tokens):
    """(first token, last token, new text) of each condition and answer turned round, each statement removed."""
    for first, returns_bool in statements(tokens):
        text, end = tokens.texts[first], tokens.next(first, ';')
        if end >= len(tokens):
            continue
        if text in {'if', 'while'} and tokens.texts[first + 1] == '(':
            yield from turned_round(tokens, first + 2, tokens.partner[first + 1] - 1)
        elif text == 'return' and returns_bool and tokens.texts[first + 1] not in {'true', 'false'}:
            yield from turned_round(tokens, first + 1, end - 1)
        elif is_removable(tokens, first, end):
            yield first, end, '{}'


def turned_round(tokens, first, last):
    if first <= last and not (DECISIVE | {';', '=', '{'}) & set(tokens.texts[first:last + 1]):
        begin, end = tokens.places[first][0], tokens.places[last][1]
        yield first, last, f'!({tokens.source[begin:end]})'


def is_removable(tokens, first, end):
    """Whether a statement is a call or an assignment: a name of members and calls, then perhaps an operator of '='."""
    i = first
    if tokens.kinds[i] != 'word' or tokens.texts[i] in NOT_A_CALL:
        return False
    while i + 1 < end and (tokens.texts[i + 1] in {'.', '->', '::', '(', '['} or tokens.texts[i] in {'.', '->', '::'}):
        i = tokens.partner.get(i + 1, i + 1)
    if {'reserve', 'LVM_SETITEMCOUNT'} & set(tokens.texts[first:i]):
        return False
    return i + 1 == end and tokens.texts[i] == ')' or tokens.texts[i + 1] in {'=', '+=', '-=', '|=', '&='}


def mutations(file, source):
    """All that can be changed in a file, in the order of the file."""
    tokens = Tokens(source)
    seen = collections.Counter()
    for first, last, new in sorted([*token_changes(tokens), *statement_changes(tokens)]):
        begin, end = tokens.places[first][0], tokens.places[last][1]
        line_begin = source.rfind('\n', 0, begin) + 1
        line = source[line_begin:source.find('\n', begin)].strip()
        what = f'{file}: {line} @{begin - line_begin}: {source[begin:end]} -> {new}'
        seen[what] += 1
        yield Mutation(file, begin, end, new, source.count('\n', 0, begin) + 1, f'{what} #{seen[what]}')
