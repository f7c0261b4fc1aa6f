#!/usr/bin/env python3
"""code.py ROOT PROGRAM READING: the code in the fenced blocks of README.md, CONTRIBUTING.md and docs/.

Every block that names a language is compiled or run by some test, or has a comment <!-- not run: REASON --> before it. The
statements of SQL are those of a store that PROGRAM makes, letter for letter, and READING, the program that `code.py --write`
has made of the lines of C++ in docs/STORE.md, reads that store.

code.py --write ROOT DOCUMENT FILE: the block of C++ of a document as a program, its includes first.
"""
import os
import sqlite3
import subprocess
import sys
import tempfile

import documents

# By document and language: the test that compiles or runs the block. There is one block of each, so that it is
# unambiguous.
LOOKED_AT = {
    ('README.md', 'cpp'): 'tests/consumer, which builds and runs it',
    ('README.md', 'cmake'): 'tests/consumer, which builds with it',
    ('docs/STORE.md', 'cpp'): 'the program that --write makes of it',
    ('docs/STORE.md', 'sql'): 'the comparison with a store',
}


def blocks_of_code(root):
    for path in documents.paths(root):
        for block in documents.blocks(root, path):
            if block.language and block.language not in ('sh', 'bash', 'console') and not block.skipped:
                yield block


def the_block(root, path, language):
    found = [block for block in blocks_of_code(root) if (block.path, block.language) == (path, language)]
    if len(found) != 1:
        raise SystemExit('%s has %d blocks of %s, not one' % (path, len(found), language))
    return found[0]


def write(root, path, file):
    lines = the_block(root, path, 'cpp').text.splitlines()
    includes = [line for line in lines if line.startswith('#include')]
    others = [line for line in lines if not line.startswith('#include')]
    with open(file, 'w', encoding='utf-8') as program:
        program.write('\n'.join([*includes, '', 'int main() {', *others, '}', '']))


def nobody_looks_at(root):
    blocks = list(blocks_of_code(root))
    seen = set()
    for block in blocks:
        key = block.path, block.language
        if key not in LOOKED_AT:
            yield ('%s:%d: no test compiles or runs this block of %s: add one to tests/docs/code.py, or <!-- not run: REASON --> '
                   'before it' % (block.path, block.line, block.language))
        elif key in seen:
            yield '%s:%d: a second block of %s, which no test compiles or runs' % (block.path, block.line, block.language)
        seen.add(key)
    for path, language in sorted(set(LOOKED_AT) - seen):
        yield '%s has no block of %s any more: tests/docs/code.py counts on it' % (path, language)


def statements_that_differ(root, store):
    """The block beside the schema of a store; SQLite itself must take its statements."""
    block = the_block(root, 'docs/STORE.md', 'sql')
    documented = block.text.splitlines()
    empty = sqlite3.connect(':memory:')
    for statement in documented:
        empty.execute(statement)
    opened = sqlite3.connect('file:%s?mode=ro' % store, uri=True)
    stored = [sql for (sql,) in opened.execute('SELECT sql FROM sqlite_master WHERE sql IS NOT NULL')]
    opened.close()
    for statement in sorted(set(stored) ^ set(documented)):
        yield '%s:%d: only %s has: %s' % (block.path, block.line, 'a store' if statement in stored else 'the document', statement)


def main():
    if sys.argv[1] == '--write':
        write(*sys.argv[2:5])
        return
    root, program, reading = map(os.path.abspath, sys.argv[1:4])
    faults = list(nobody_looks_at(root))
    with tempfile.TemporaryDirectory() as folder:
        velmora = documents.Velmora(program, folder)
        # Six rows of tiles in level 1.
        for command in (['render', '-o', 'slide.tif', '-r', '8192,2048,512,1024'],
                        ['import', '--tile', '64', 'slide.tif', 'slide.vlm']):
            fault = velmora.run(command)
            if fault:
                documents.finish(faults + ['velmora %s: %s' % (command[0], fault)], 'no store')
        faults += statements_that_differ(root, os.path.join(folder, 'slide.vlm'))
        done = subprocess.run([reading], cwd=folder, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, check=False)
        if done.returncode != 0:
            faults.append('the lines of C++ in docs/STORE.md: exit code %d: %s' % (done.returncode, done.stdout.strip()))
    documents.finish(faults, '%d blocks of code' % len(LOOKED_AT))


if __name__ == '__main__':
    main()
