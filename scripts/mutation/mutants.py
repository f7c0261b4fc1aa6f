"""Finds what can be mutated in C++ sources, by clang's syntax tree, and writes sources that contain all mutants.

A mutant is a small change of one expression. In the written source each is an arm of a conditional expression, and the
environment of the program chooses the arm:

    count = total - rest;
    count = (velmora_mutant(4711U) ? (total + rest) : (total - rest));

Left out, because they have no arm at run time or change nothing: constant expressions, what comes from macros, sizeof,
static_assert, swapped arguments of min and max, the memory that is reserved for a container. Offsets and columns are those of
bytes: texts are read as Latin-1.
"""
import hashlib
import re
import shlex
from collections import defaultdict, namedtuple

from clang.cindex import CursorKind, Index, TypeKind

# edits: (start, end, text), a text of None for a removed statement, NEGATED for a condition. place: the line, with the change in [[ ]]; it stays when lines
# above it come or go.
Mutant = namedtuple('Mutant', 'id file line column operator original replacement place edits')

ID_BITS = 24
NEGATED = False

OPERATORS = {
    'arithmetic': {'+': '-', '-': '+', '*': '/', '/': '*', '%': '*', '+=': '-=', '-=': '+=', '*=': '/=', '/=': '*=', '%=': '*='},
    'comparison': {'<': '<= >=', '<=': '< >', '>': '>= <=', '>=': '> <', '==': '!=', '!=': '=='},
    'logic': {'&&': '||', '||': '&&'},
    'bits': {'&': '|', '|': '&', '^': '|', '<<': '>>', '>>': '<<', '&=': '|=', '|=': '&=', '^=': '|=', '<<=': '>>=', '>>=': '<<='},
}
KIND_OF = {operator: kind for kind, pairs in OPERATORS.items() for operator in pairs}
COMPARISONS = OPERATORS['comparison']

SCALARS = {
    TypeKind.BOOL, TypeKind.CHAR_U, TypeKind.UCHAR, TypeKind.CHAR_S, TypeKind.SCHAR, TypeKind.SHORT, TypeKind.USHORT, TypeKind.INT,
    TypeKind.UINT, TypeKind.LONG, TypeKind.ULONG, TypeKind.LONGLONG, TypeKind.ULONGLONG, TypeKind.FLOAT, TypeKind.DOUBLE,
    TypeKind.ENUM, TypeKind.POINTER,
}
SKIPPED = {CursorKind.STATIC_ASSERT, CursorKind.ENUM_CONSTANT_DECL, CursorKind.CXX_UNARY_EXPR, CursorKind.CXX_TYPEID_EXPR,
           CursorKind.TYPE_ALIAS_DECL, CursorKind.TYPEDEF_DECL}
DECLARATIONS = {CursorKind.VAR_DECL, CursorKind.FIELD_DECL, CursorKind.PARM_DECL, CursorKind.FUNCTION_DECL, CursorKind.CXX_METHOD,
                CursorKind.FUNCTION_TEMPLATE}
INTEGER = re.compile(r"(0[xX][0-9a-fA-F']+|[0-9][0-9']*)([uUlLzZ]*)")
FLOATING = re.compile(r"[0-9.][0-9.eE+\-']*[fFlL]?")
COMMENT = re.compile(r'/\*.*?\*/|//[^\n]*', re.S)
MACRO_CALL = re.compile(r'[A-Z][A-Z0-9_]+\s*\(')


def collapsed(text):
    return ' '.join(COMMENT.sub(' ', text).split())


def unwrapped(cursor):
    """Without implicit conversions and temporaries around it."""
    while cursor.kind == CursorKind.UNEXPOSED_EXPR:
        inner = [child for child in cursor.get_children() if child.kind.is_expression()]
        if len(inner) != 1:
            break
        cursor = inner[0]
    return cursor


class Finder:
    """Collects the edits of the files `texts` = {path: text}."""

    def __init__(self, texts):
        self.texts = texts
        self.found = set()
        self.finished = set()

    def search(self, unit):
        """What a translation unit contains of files that no earlier one has contained."""
        seen = set()
        for cursor in unit.cursor.get_children():
            file = cursor.location.file
            if file and file.name in self.texts and file.name not in self.finished:
                seen.add(file.name)
                self.path, self.text = file.name, self.texts[file.name]
                self.visit(cursor)
        self.finished |= seen

    def span(self, cursor):
        """Offsets, or None for what is written elsewhere or nowhere."""
        extent = cursor.extent
        if not extent.start.file or extent.start.file.name != self.path:
            return None
        start, end = extent.start.offset, extent.end.offset
        return (start, end) if start < end else None

    def add(self, operator, *edits, shown=None):
        """shown: the part of the edit that differs, where that is less than the whole."""
        if not any('\n#' in self.text[start:end] for start, end, _ in edits):
            self.found.add((self.path, operator, edits, shown or edits[0]))

    def visit(self, cursor):
        if cursor.kind in SKIPPED:
            return
        span = self.span(cursor)
        if cursor.kind in (CursorKind.VAR_DECL, CursorKind.FIELD_DECL) and span:
            if re.search(r'\bconstexpr\b', self.text[span[0]:span[1]].split('=')[0].split('{')[0]):
                return
        children = list(cursor.get_children())
        if cursor.kind in DECLARATIONS:
            # What stands before the name belongs to the type: std::array<int, 3> corners.
            name = cursor.location.offset
            children = [child for child in children if not child.kind.is_expression() or child.extent.start.offset > name]
        if span:
            self.mutate(cursor, children, *span)
        for child in children:
            self.visit(child)

    def mutate(self, cursor, children, start, end):
        kind = cursor.kind
        text = self.text[start:end]
        if kind in (CursorKind.BINARY_OPERATOR, CursorKind.COMPOUND_ASSIGNMENT_OPERATOR) and len(children) == 2:
            self.binary(start, end, *children)
        elif kind == CursorKind.UNARY_OPERATOR and children:
            self.unary(start, end, text)
        elif kind == CursorKind.INTEGER_LITERAL:
            match = INTEGER.fullmatch(text)
            if match:
                digits = match.group(1).replace("'", '')
                value = int(digits, 16 if digits[:2].lower() == '0x' else 8 if re.fullmatch('0[0-7]+', digits) else 10)
                self.add('constant', (start, end, '%d%s' % (value + 1, match.group(2))))
                if value > 0:
                    self.add('constant', (start, end, '%d%s' % (value - 1, match.group(2))))
        elif kind == CursorKind.FLOATING_LITERAL:
            if FLOATING.fullmatch(text):
                self.add('constant', (start, end, '%s + 1' % text))
        elif kind == CursorKind.CXX_BOOL_LITERAL_EXPR:
            if text in ('true', 'false'):
                self.add('constant', (start, end, 'false' if text == 'true' else 'true'))
        elif kind == CursorKind.CALL_EXPR:
            self.call(cursor, start, end, text)
        elif kind == CursorKind.INIT_LIST_EXPR:
            self.swaps(children, start, end)
        elif kind in (CursorKind.IF_STMT, CursorKind.WHILE_STMT, CursorKind.CONDITIONAL_OPERATOR):
            self.condition(children)
        self.statements(kind, children)

    def binary(self, start, end, left, right):
        left, right = self.span(left), self.span(right)
        if not left or not right or not start <= left[0] < left[1] <= right[0] < right[1] <= end:
            return
        operator = COMMENT.sub(' ', self.text[left[1]:right[0]]).strip()
        kind = KIND_OF.get(operator)
        if kind:
            at = self.text.index(operator, left[1])
            for replacement in OPERATORS[kind][operator].split():
                self.add(kind, (start, end, self.text[start:at] + replacement + self.text[at + len(operator):end]),
                         shown=(at, at + len(operator), replacement))

    def unary(self, start, end, text):
        for operator, replacement in (('++', '--'), ('--', '++')):
            if text.startswith(operator):
                self.add('arithmetic', (start, end, replacement + text[2:]), shown=(start, start + 2, replacement))
                return
            if text.endswith(operator):
                self.add('arithmetic', (start, end, text[:-2] + replacement), shown=(end - 2, end, replacement))
                return
        if text.startswith('!'):
            self.add('logic', (start, end, '!!(%s)' % text[1:]), shown=(start, start + 1, ''))
        elif text[0] in '-~':
            self.add('arithmetic' if text[0] == '-' else 'bits', (start, end, text[1:]), shown=(start, start + 1, ''))

    def call(self, cursor, start, end, text):
        arguments = [argument for argument in cursor.get_arguments() if argument]
        if re.fullmatch(r'operator(==|!=|<=?|>=?)', cursor.spelling) and len(arguments) == 2:
            self.binary(start, end, *arguments)
        elif not cursor.spelling.startswith('operator') and cursor.spelling not in ('min', 'max') and not MACRO_CALL.match(text):
            self.swaps(arguments, start, end)

    def swaps(self, arguments, start, end):
        """Neighbours of the same scalar type."""
        for one, other in zip(arguments, arguments[1:]):
            a, b = self.span(one), self.span(other)
            if not a or not b or not start <= a[0] < a[1] < b[0] < b[1] <= end:
                continue
            types = [argument.type.get_canonical() for argument in (one, other)]
            if types[0].kind not in SCALARS or len({type.spelling.replace('const ', '') for type in types}) != 1:
                continue
            first, second = self.text[a[0]:a[1]], self.text[b[0]:b[1]]
            if first != second and self.text[a[1]:b[0]].strip() == ',':
                self.add('swapped', (a[0], a[1], second), (b[0], b[1], first), shown=(a[0], b[1], '%s, %s' % (second, first)))

    def condition(self, children):
        """A condition that no other operator changes."""
        if not children or not children[0].kind.is_expression():
            return
        inner = unwrapped(children[0])
        span = self.span(children[0])
        if span and inner.kind in (CursorKind.DECL_REF_EXPR, CursorKind.MEMBER_REF_EXPR, CursorKind.CALL_EXPR) \
                and not re.fullmatch(r'operator(==|!=|<=?|>=?)', inner.spelling):
            self.add('condition', (*span, NEGATED), shown=(*span, '!(%s)' % self.text[span[0]:span[1]]))

    def statements(self, kind, children):
        """Calls and assignments whose value nobody uses."""
        if kind == CursorKind.COMPOUND_STMT:
            bodies = children
        elif kind in (CursorKind.IF_STMT, CursorKind.WHILE_STMT):
            bodies = children[1:]
        elif kind in (CursorKind.FOR_STMT, CursorKind.CXX_FOR_RANGE_STMT):
            bodies = children[-1:]
        else:
            return
        for body in bodies:
            span = self.span(body)
            if not span or not body.kind.is_expression():
                continue
            text = self.text[slice(*span)]
            inner = unwrapped(body)
            if inner.kind == CursorKind.CALL_EXPR and inner.spelling == 'reserve':
                continue
            isAssignment = inner.kind == CursorKind.BINARY_OPERATOR and self.assigns(inner)
            if (inner.kind == CursorKind.CALL_EXPR and text.endswith(')') or isAssignment
                    or inner.kind == CursorKind.CALL_EXPR and inner.spelling == 'operator=') and not MACRO_CALL.match(text):
                self.add('removed', (*span, None), shown=(*span, ''))

    def assigns(self, cursor):
        left, right = (self.span(child) for child in cursor.get_children())
        return left and right and COMMENT.sub(' ', self.text[left[1]:right[0]]).strip() == '='


def described(found, texts, name_of):
    """The mutants of {(path, operator, edits, shown)}, with ids that depend on the place's text alone."""
    mutants = []
    ordinals = defaultdict(int)
    taken = set()
    for path, operator, edits, shown in sorted(found, key=lambda key: (key[0], key[3][:2], key[1], str(key[2]))):
        text = texts[path]
        begin, finish, replacement = shown
        original = text[begin:finish]
        line_start = text.rfind('\n', 0, begin) + 1
        line_end = text.find('\n', finish)
        original, replacement = collapsed(original), collapsed(replacement)
        place = collapsed('%s[[%s -> %s]]%s' % (text[line_start:begin], original, replacement, text[finish:line_end]))
        file = name_of(path)
        ordinals[file, place] += 1
        if ordinals[file, place] > 1:
            place += ' #%d' % ordinals[file, place]
        number = int.from_bytes(hashlib.sha256(('%s\0%s' % (file, place)).encode()).digest()[:4], 'big') % (1 << ID_BITS) or 1
        while number in taken:
            number = number % ((1 << ID_BITS) - 1) + 1
        taken.add(number)
        mutants.append(Mutant(number, file, text.count('\n', 0, begin) + 1, begin - line_start + 1, operator, original, replacement,
                              place, edits))
    return mutants


def name(mutant):
    return '%s:%d:%d %s %s -> %s' % (mutant.file, mutant.line, mutant.column, mutant.operator, mutant.original, mutant.replacement)


def written(text, mutants):
    """The text with all mutants, and where each of them lies in it: [(start, end, ids)], inner ones first."""
    regions = defaultdict(list)
    for mutant in mutants:
        for start, end, replacement in mutant.edits:
            regions[start, end].append((mutant.id, replacement))
    order = sorted(regions, key=lambda region: (region[0], -region[1]))
    spans = []

    def between(start, end, at, base):
        """The text from start to end, with the regions from order[at] on; where it ends in `order`."""
        parts, length, position = [], 0, start
        while at < len(order) and order[at][0] < end:
            inner_start, inner_end = order[at]
            assert inner_start >= position and inner_end <= end
            before = text[position:inner_start]
            parts.append(before)
            length += len(before)
            alternatives = regions[order[at]]
            opening = '('
            for id, replacement in sorted(alternatives, key=lambda item: (item[1] is not None, item[1] is NEGATED)):
                if replacement is None:
                    opening += 'velmora_mutant(%dU) ? void() : static_cast<void>(' % id
                elif replacement is NEGATED:
                    opening += 'velmora_mutant(%dU) != static_cast<bool>(' % id
                else:
                    opening += 'velmora_mutant(%dU) ? (%s) : ' % (id, replacement)
            opening += '('
            closing = ')' * sum(not replacement for _, replacement in alternatives) + '))'
            middle, at = between(inner_start, inner_end, at + 1, base + length + len(opening))
            spans.append((base + length, base + length + len(opening) + len(middle) + len(closing), [id for id, _ in alternatives]))
            parts += [opening, middle, closing]
            length += len(opening) + len(middle) + len(closing)
            position = inner_end
        parts.append(text[position:end])
        return ''.join(parts), at

    result, _ = between(0, len(text), 0, 0)
    return result, spans


def without_crossings(mutants):
    """Drops mutants whose edits cut through others', as macros can make them."""
    kept = []
    by_file = defaultdict(list)
    for mutant in mutants:
        spans = by_file[mutant.file]
        if not any(a < start < b < end or start < a < end < b for start, end, _ in mutant.edits for a, b in spans):
            spans += [(start, end) for start, end, _ in mutant.edits]
            kept.append(mutant)
    return kept


def arguments_of(command):
    """Of a compiler's command line, what libclang needs."""
    arguments, words = [], iter(shlex.split(command)[1:])
    for word in words:
        if word in ('-include', '-isystem', '-I'):
            value = next(words)
            if 'cmake_pch' not in value:
                arguments.append((word, value))
        elif word.startswith(('-I', '-D', '-std=')):
            arguments.append((word,))
    return arguments


def parse(path, commands, unsaved):
    """A source, compiled as one of these commands does, with texts in place of files."""
    arguments = dict.fromkeys(argument for command in commands for argument in arguments_of(command))
    words = [word for argument in arguments for word in argument]
    files = [(path, text.encode('latin-1').decode('utf-8')) for path, text in unsaved.items()]
    return Index.create().parse(path, args=[*words, '-w', '-Wno-c++11-narrowing', '-ferror-limit=0'], unsaved_files=files)
