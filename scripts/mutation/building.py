"""Finds the mutants that compile, and builds programs that contain them all."""
import hashlib
import json
import os
import re
import shlex
import subprocess
from collections import defaultdict

import mutants as schemata
from common import BUILD, ROOT, TREE, WORK, keep, kept, read, say, stop, write_if_changed

FOUND = os.path.join(WORK, 'found.json')
FETCHED = {'VELMORA_ANGLE_DIR': 'angle', 'VELMORA_PHOTOGRAPHS_DIR': 'photographs', 'VELMORA_FORMAT_PICTURES_DIR': 'format-pictures'}

HEADER = '''#pragma once
// Written by scripts/mutate.
extern "C" {
extern __attribute__((visibility("hidden"))) unsigned velmora_mutant_chosen;
extern __attribute__((visibility("hidden"))) unsigned char* velmora_mutant_reached;
}
inline __attribute__((always_inline)) bool velmora_mutant(unsigned id) {
    if (velmora_mutant_reached) velmora_mutant_reached[id] = 1;
    return id == velmora_mutant_chosen;
}
'''
# Linked into each program and each shared library, whose symbols may be hidden from each other.
CHOICE = '''#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstdlib>

unsigned velmora_mutant_chosen = 0;
unsigned char* velmora_mutant_reached = nullptr;

__attribute__((constructor(101))) static void choose() {
    if (char const* id = std::getenv("VELMORA_MUTANT")) velmora_mutant_chosen = static_cast<unsigned>(std::atol(id));
    char const* path = std::getenv("VELMORA_MUTANTS_REACHED");
    if (!path) return;
    int const file = open(path, O_RDWR);
    void* const bytes = mmap(nullptr, 1U << %d, PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
    if (file < 0 || bytes == MAP_FAILED) std::abort();
    close(file);
    velmora_mutant_reached = static_cast<unsigned char*>(bytes);
}
''' % schemata.ID_BITS


def logged(what, log, command, **options):
    with open(log, 'ab') as file:
        if subprocess.run(command, stdout=file, stderr=subprocess.STDOUT, **options).returncode != 0:
            stop('%s failed; see %s' % (what, log))


def configure():
    log = os.path.join(WORK, 'configure.log')
    open(log, 'w').close()
    header, choice = os.path.join(WORK, 'mutant.h'), os.path.join(WORK, 'mutant.o')
    write_if_changed(header, HEADER)
    source = os.path.join(WORK, 'mutant.cpp')
    write_if_changed(source, CHOICE)
    logged('compiling %s' % source, log, ['c++', '-std=c++17', '-O1', '-fPIC', '-c', source, '-o', choice])
    folders = ['-D%s=%s' % (name, os.path.abspath(os.environ.get(name) or os.path.join(ROOT, 'build', folder))) for name, folder in FETCHED.items()]
    # The library's assertions find what reads past the end of a vector.
    logged('configuring', log, [
        'cmake', '-S', TREE, '-B', BUILD, '-G', 'Ninja', '-DCMAKE_BUILD_TYPE=Debug', '-DCMAKE_CXX_FLAGS_DEBUG=-O1',
        '-DCMAKE_CXX_FLAGS=-D_GLIBCXX_ASSERTIONS -w -Wno-narrowing -include %s' % shlex.quote(header),
        # With -O1 in front, because CMake strips quotes around a whole value.
        '-DCMAKE_EXE_LINKER_FLAGS=-O1 %s' % shlex.quote(choice), '-DCMAKE_SHARED_LINKER_FLAGS=-O1 %s' % shlex.quote(choice),
        '-DCMAKE_EXPORT_COMPILE_COMMANDS=ON', '-DVELMORA_CHECKED=ON', '-DVELMORA_WERROR=OFF', '-DVELMORA_PRECOMPILED=ON',
        '-DVELMORA_BUILD_BENCH=OFF', *folders])


def all_headers(texts, commands):
    """A source that includes every header: its path, the commands, its texts and theirs."""
    path = os.path.join(TREE, 'headers.cpp')
    lines = ['#include "%s"\n' % os.path.relpath(header, TREE) for header in sorted(texts) if header.endswith('.h')]
    return path, list(commands.values()), {**texts, path: ''.join(lines)}


def find(texts):
    """All mutants, by clang's syntax tree, and the compiler's commands of their sources."""
    with open(os.path.join(BUILD, 'compile_commands.json'), encoding='utf-8') as file:
        entries = {entry['file']: entry['command'] for entry in json.load(file)}
    commands = {}
    for path in sorted(texts):
        if path.endswith('.cpp'):
            if path not in entries:
                stop('%s is not compiled' % os.path.relpath(path, TREE))
            commands[path] = entries[path]
    finder = schemata.Finder(texts)
    for unit in [all_headers(texts, commands), *((path, [command], texts) for path, command in commands.items())]:
        parsed = schemata.parse(*unit)
        errors = [str(diagnostic) for diagnostic in parsed.diagnostics if diagnostic.severity >= 3]
        if errors:
            stop('clang does not compile %s: %s' % (os.path.relpath(unit[0], TREE), errors[0]))
        finder.search(parsed)
    mutants = schemata.described(finder.found, texts, lambda path: os.path.relpath(path, TREE))
    return schemata.without_crossings(mutants), commands


def written_texts(mutants, texts):
    by_file = defaultdict(list)
    for mutant in mutants:
        by_file[os.path.join(TREE, mutant.file)].append(mutant)
    return {path: schemata.written(text, by_file[path]) for path, text in texts.items()}


class Refusals:
    """Which mutants do not compile, told by the places of errors."""

    def __init__(self, outputs):
        self.outputs = outputs
        self.ids = set()
        self.unknown = []

    def at(self, path, line, column):
        """Whether a mutant lies there; the innermost is refused."""
        if path not in self.outputs:
            return False
        text, spans = self.outputs[path]
        begin = 0
        for _ in range(line - 1):
            begin = text.index('\n', begin) + 1
        offset = begin + column - 1
        inside = [span for span in spans if span[0] <= offset < span[1]]
        if inside:
            self.ids.update(min(inside, key=lambda span: span[1] - span[0])[2])
            return True
        end = text.find('\n', begin)
        on_line = [id for a, b, ids in spans if begin <= a < end for id in ids]
        self.ids.update(on_line)
        return bool(on_line)

    def any_of(self, places, message):
        if not any(self.at(*place) for place in places):
            self.unknown.append(message)


def refused_in_headers(outputs, commands):
    """By clang, which takes seconds for all headers, where the compiler would compile most sources in vain."""
    refusals = Refusals(outputs)
    for diagnostic in schemata.parse(*all_headers({path: text for path, (text, _) in outputs.items()}, commands)).diagnostics:
        if diagnostic.severity >= 3:
            spots = [diagnostic.location, *(child.location for child in diagnostic.children)]
            refusals.any_of([(spot.file.name, spot.line, spot.column) for spot in spots if spot.file], str(diagnostic))
    return refusals.ids


PLACE = re.compile(r'^(?:.*from )?([^:\s]+):(\d+):(\d+)[:,] *(.*)$')


def refused_by_compiler(output, outputs):
    """Of an error, its own place, the places of the templates that lead there, and those of its notes."""
    refusals, leading, error = Refusals(outputs), [], None
    errors = []
    for line in output.splitlines():
        match = PLACE.match(line)
        if line.startswith('FAILED: '):
            leading = []
        if not match:
            continue
        place = os.path.realpath(os.path.join(BUILD, match.group(1))), int(match.group(2)), int(match.group(3))
        if match.group(4).startswith(('error:', 'fatal error:')):
            error = [place, *reversed(leading)]
            errors.append((error, line))
            leading = []
        elif match.group(4).startswith('note:') and error:
            error.append(place)
        else:
            leading.append(place)
    for places, line in errors:
        refusals.any_of(places, line)
    return refusals


def build(targets, jobs):
    """None, or the compiler's output."""
    result = subprocess.run(['cmake', '--build', BUILD, '-j', str(jobs), '--target', *targets, '--', '-k', '0'], stdout=subprocess.PIPE,
                            stderr=subprocess.STDOUT, text=True, errors='replace')
    with open(os.path.join(WORK, 'build.log'), 'w', encoding='utf-8') as file:
        file.write(result.stdout)
    return None if result.returncode == 0 else result.stdout


def refine(mutants, texts, refused):
    """Without the mutants that refused(written texts) names, asked until it names none."""
    while True:
        outputs = written_texts(mutants, texts)
        ids = refused(outputs)
        if not ids:
            return mutants
        say('%d mutants do not compile' % len(ids))
        mutants = [mutant for mutant in mutants if mutant.id not in ids]


def digest_of_sources(texts):
    return hashlib.sha256(str(sorted(texts.items())).encode() + read(schemata.__file__).encode('latin-1')).hexdigest()


def found_mutants(texts):
    """Those that compile, as far as is known. Sources are searched again where one has changed, not for new tests."""
    found = kept(FOUND, {})
    if found.get('digest') == digest_of_sources(texts):
        return [schemata.Mutant(*fields) for fields in found['mutants']]
    mutants, commands = find(texts)
    keep(FOUND, {'digest': digest_of_sources(texts), 'mutants': mutants})
    say('%d mutants found' % len(mutants))
    return refine(mutants, texts, lambda outputs: refused_in_headers(outputs, commands))


def build_all(mutants, texts, targets, jobs):
    """Builds with all mutants that compile, and returns these."""
    def refused(outputs):
        for path, (text, _) in outputs.items():
            write_if_changed(path, text)
        output = build(targets, jobs)
        if output is None:
            return None
        refusals = refused_by_compiler(output, {os.path.realpath(path): value for path, value in outputs.items()})
        if not refusals.ids:
            stop('the build failed, not for a mutant: %s; see %s' % ([*refusals.unknown, ''][0], os.path.join(WORK, 'build.log')))
        return refusals.ids

    mutants = refine(mutants, texts, refused)
    keep(FOUND, {'digest': digest_of_sources(texts), 'mutants': mutants})
    return mutants
