#!/usr/bin/env python3
"""errors.py ROOT: docs/ERRORS.md against the sources, in both directions.

Every name in the first column of its tables is the name of an exception that the libraries' sources construct, and each of
those has its row. The locations in the second column stand in the sources. Every HostError::Kind has a row with the exit
code that the program ends with, and every text that a HostError is constructed with begins as one of its row's texts.
"""
import os
import re
import sys

LIBRARIES = ('renderbackend', 'gles3renderbackend')
PROGRAM = ('host', 'apps')
LITERAL = r'"(?:[^"\\\n]|\\.)*"'
# Any text, for texts that are put together from parts and for omissions in the document.
GAP = '\0'


def read(path):
    with open(path, encoding='utf-8') as file:
        return file.read()


def without_comments(text):
    return re.sub(r'(%s)|//[^\n]*|/\*.*?\*/' % LITERAL, lambda found: found.group(1) or ' ', text, flags=re.S)


def value(literal):
    return re.sub(r'\\(.)', lambda found: {'n': '\n', 't': '\t'}.get(found.group(1), found.group(1)), literal[1:-1])


def joined_literals(expression):
    """The text of an expression of literals and other things, with a GAP for each of those; None without a literal."""
    expression = re.sub(r'\bstd::string\((%s)\)' % LITERAL, r'\1', expression)
    expression = re.sub(r'\bcounted\([^"()]*, "(\w+)"\)(?:\s*\+\s*("))?',
                        lambda found: 'number + " %ss%s' % (found.group(1), '' if found.group(2) else '"'), expression)
    parts = re.findall(r'%s|[^"]+' % LITERAL, expression)
    if not any(part.startswith('"') for part in parts):
        return None
    text = ''.join(value(part) if part.startswith('"') else ('' if not part.strip() else GAP) for part in parts)
    return re.sub(GAP + '+', GAP, text)


def first_argument(text, start):
    """What stands between the bracket before `start` and the first comma or the closing bracket on its level."""
    depth = 0
    for token in re.compile(r'%s|[^"]' % LITERAL, re.S).finditer(text, start):
        character = token.group()
        if character in '([{':
            depth += 1
        elif character in ')]}' and depth > 0:
            depth -= 1
        elif character in ')]}' or (character == ',' and depth == 0):
            return text[start:token.start()].strip()
    return text[start:].strip()


class Sources:
    def __init__(self, root, folders):
        self.texts = {}
        for folder in folders:
            for place, _, files in os.walk(os.path.join(root, folder)):
                for file in files:
                    if file.endswith(('.cpp', '.h')):
                        path = os.path.join(place, file)
                        self.texts[os.path.relpath(path, root)] = without_comments(read(path))

    def literals(self):
        """Neighbouring literals count as one, as they do to the compiler."""
        for text in self.texts.values():
            for found in re.finditer(r'%s(?:\s*%s)*' % (LITERAL, LITERAL), text):
                yield joined_literals(found.group())

    def constants(self, name):
        for text in self.texts.values():
            for found in re.finditer(r'\b%s\b(?:\[\])?\s*(?:=|\{)\s*((?:%s\s*)+)' % (name, LITERAL), text):
                yield joined_literals(found.group(1))

    def names(self):
        """{name: where} of all exceptions that are constructed with a name of their own."""
        names = {}
        for path, text in self.texts.items():
            if os.path.basename(path).startswith('VelmoraException.'):
                continue  # the classes themselves, which pass names on
            for start in self.constructions(text):
                argument = first_argument(text, start)
                if not re.match(r'$|(std::string|Velmora\w+) const\s*&', argument):  # no declaration
                    for name in self.possible_names(argument, text, start):
                        names.setdefault(name, path)
        return names

    @staticmethod
    def constructions(text):
        """Where the arguments begin: of VelmoraException(...), and of return {...} in a function that returns one."""
        for found in re.finditer(r'\bVelmora\w*Exception\s*[({]', text):
            yield found.end()
        for function in re.finditer(r'\bVelmora\w*Exception\s+\w+\([^;{}]*\{(.*?)\n\}', text, re.S):
            for found in re.finditer(r'\breturn\s*\{', function.group(1)):
                yield function.start(1) + found.end()

    def possible_names(self, argument, text, start):
        direct = joined_literals(argument)
        if direct is not None:
            return [direct]
        if re.fullmatch(r'k\w+', argument):
            return list(self.constants(argument)) or ['(the constant %s)' % argument]
        # A parameter: the arguments of the function's calls. A member: every sentence of the file is possible.
        headers = re.findall(r'\b(\w+)\([^(){};]*\b%s\b[^(){};]*\)[^(){};]*\{' % re.escape(argument), text[:start])
        calls = [text[found.end():] for found in re.finditer(r'\b%s\(' % headers[-1], text)] if headers else []
        passed = [call[:call.find(';')] for call in calls]
        return [sentence for part in passed or [re.sub(r'\bVELMORA_\w+\([^;]*;', '', text)]
                for sentence in map(joined_literals, re.findall(r'(?:%s\s*)+' % LITERAL, part)) if is_sentence(sentence)]

    def host_errors(self):
        """(kind, text, where) of every HostError that is constructed with a text of its own."""
        for path, text in self.texts.items():
            for found in re.finditer(r'\bKind::(\w+)\s*,', text):
                message = joined_literals(first_argument(text, found.end()))
                if message is not None:
                    yield found.group(1), message, path
            # Functions that make an error of a text.
            for made in re.finditer(r'\bHostError (\w+)\(std::string const& (\w+)\) \{\s*return HostError\('
                                    r'(?:HostError::)?Kind::(\w+), \2\);', text):
                for found in re.finditer(r'\bthrow %s\(' % made.group(1), text):
                    yield made.group(3), joined_literals(first_argument(text, found.end())), path


def is_sentence(text):
    """Neither a signature nor a piece of another text."""
    return ' ' in text and text[0] not in ' ,<>#' and '(' not in text and '::' not in text


def pattern(text):
    """A text with gaps as a regular expression."""
    return '.+'.join(re.escape(part) for part in text.split(GAP))


def fits(first, second):
    """Whether two texts, each with gaps, can be the same."""
    return re.fullmatch(pattern(first), second, re.S) or re.fullmatch(pattern(second), first, re.S)


class Document:
    def __init__(self, path):
        self.rows = []
        self.stray = []  # numbers of rows that belong to no table, because there is no head above them
        section = ''
        lines = read(path).split('\n')
        for number, line in enumerate(lines, 1):
            begins = line.startswith('|') and not lines[number - 2].startswith('|')
            if begins and not re.fullmatch(r'\|[|: -]*-[|: -]*', lines[number]):
                self.stray.append(number)
            if line.startswith('## '):
                section = line[3:]
            cells = [cell.strip() for cell in re.split(r'(?<!\\)\|', line)[1:-1]]
            if cells and not set(line) <= set('|-: '):
                self.rows.append((section, number, cells))

    @staticmethod
    def spans(cell):
        return re.findall(r'`([^`]+)`', cell)

    def backend_rows(self):
        return [row for row in self.rows if not row[0].startswith('The program') and row[2][0] != 'Name']

    def names(self):
        """`<NAME>` and single capitals stand for anything, as does "..."; classes are no names."""
        for _, number, cells in self.backend_rows():
            for span in self.spans(cells[0]):
                if not span.startswith('std::') and span != 'VelmoraException':
                    text = re.sub(r'(?<=<)[A-Z]+(?=>)|\b[A-Z]\b|\.\.\.', GAP, span)
                    yield number, span, text

    def locations(self):
        for _, number, cells in self.backend_rows():
            for span in self.spans(cells[1]):
                if '(' in span and '::' in span:
                    yield number, span, re.sub(r'\.\.\.', GAP, span)


def exit_codes(root):
    codes = dict(re.findall(r'\b(kExit\w+)\s*=\s*(\d+)', read(os.path.join(root, 'apps/velmora/ExitCodes.h'))))
    switch = without_comments(read(os.path.join(root, 'apps/velmora/ExitCodes.cpp')))
    groups = re.findall(r'((?:case HostError::Kind::\w+:\s*)+)return (\w+);', switch)
    return {kind: codes[code] for cases, code in groups for kind in re.findall(r'Kind::(\w+)', cases)}


def kinds(root):
    body = re.search(r'enum class Kind \{(.*?)\}', without_comments(read(os.path.join(root, 'host/HostError.h'))), re.S)
    return re.findall(r'\w+', body.group(1))


def compare(root):
    sources = Sources(root, LIBRARIES)
    document = Document(os.path.join(root, 'docs/ERRORS.md'))
    faults = ['docs/ERRORS.md:%d: a row without the head of its table' % number for number in document.stray]
    built = sources.names()
    written = list(document.names())
    for number, span, text in written:
        if not any(fits(text, name) for name in built):
            faults.append('docs/ERRORS.md:%d: no exception of the sources has the name "%s"' % (number, span))
    for name, path in sorted(built.items()):
        if not any(fits(text, name) for _, _, text in written):
            faults.append('%s: docs/ERRORS.md has no row for "%s"' % (path, name.replace(GAP, '...')))
    literals = [literal for literal in sources.literals() if literal]
    for number, span, text in document.locations():
        if not any(re.search(pattern(text).replace('.+', '.*'), literal) for literal in literals):
            faults.append('docs/ERRORS.md:%d: no text of the sources has the location "%s"' % (number, span))

    compared = compare_program(root, document, faults)
    return faults, len(built), len(written), compared


def compare_program(root, document, faults):
    """Adds to `faults`; returns how many kinds there are."""
    codes = exit_codes(root)
    rows = {kind: cells for section, _, cells in document.rows if section.startswith('The program')
            for kind in document.spans(cells[0])}
    for kind in kinds(root):
        if kind not in rows:
            faults.append('host/HostError.h: docs/ERRORS.md has no row for HostError::Kind::%s' % kind)
        elif rows[kind][1] != codes.get(kind):
            faults.append('docs/ERRORS.md: %s ends with %s, not with %s' % (kind, codes.get(kind), rows[kind][1]))
    for kind in sorted(set(rows) - set(kinds(root))):
        faults.append('docs/ERRORS.md: HostError has no kind %s' % kind)

    # Words in capitals stand for varying parts; the advice at the end of a text is left out.
    texts = {(kind, span): re.sub(r'\b[A-Z]+\b', GAP, span) + GAP for kind in rows for span in document.spans(rows[kind][2])}
    used = set()
    for kind, message, path in Sources(root, PROGRAM).host_errors():
        fitting = [key for key, text in texts.items() if key[0] == kind and fits(text, message + GAP)]
        used.update(fitting)
        if not fitting and kind in rows:
            faults.append('%s: the row of %s in docs/ERRORS.md lacks "%s"' % (path, kind, message.replace(GAP, '...')))
    for kind, span in sorted(set(texts) - used):
        faults.append('docs/ERRORS.md: no HostError of the kind %s says "%s"' % (kind, span))
    return len(rows)


def main():
    faults, built, written, program = compare(sys.argv[1])
    for fault in faults:
        print(fault)
    print('%d names in the sources, %d in docs/ERRORS.md, %d kinds of HostError: %d faults'
          % (built, written, program, len(faults)))
    # Too few finds mean that the parsing is broken, not that the sources are sound.
    sys.exit(1 if faults or min(built, written, program) < 10 else 0)


if __name__ == '__main__':
    main()
