#!/usr/bin/env python3
"""pictures.py ROOT PROGRAM: makes the pictures in docs/pictures again, by the commands that the documents give for them, and
compares each with the one that is there, byte for byte; of the viewer's all pixels but those of the time that a frame took.

A command is a span of code that names a file in docs/pictures. Capitals in the file's name stand for anything, and OPTIONS
for the span of code that stands in the table above the picture. A store that a command reads comes from the span of code of
`velmora import` that names it, a picture from docs/pictures/samples where the document names that. What docs/pictures has and no
command makes is a fault.
"""
import os
import re
import shlex
import subprocess
import sys
import tempfile

import documents
import pngpixels

FOLDER = 'docs/pictures/'
PICTURE = re.compile(r'docs/pictures/[\w.-]+\.png')
SAMPLES = FOLDER + 'samples'
# Left, top, right and bottom of the text "4.1 ms" in the upper left panel.
FRAME_TIME = {'docs/pictures/viewer.png': (56, 104, 130, 118)}


def options_of(text, picture):
    """Of a table the cell above the picture: its span of code, or nothing for a cell without one."""
    rows = [line for line in text.split('\n') if line.startswith('|')]
    for above, row in zip(rows, rows[2:]):
        for header, cell in zip(documents.table_cells(above), documents.table_cells(row)):
            if '(%s)' % picture in cell:
                return ' '.join(documents.spans(header))
    return None


def made_by(text, root):
    """(picture, command) for every picture that a document has a command for."""
    existing = sorted(FOLDER + name for name in os.listdir(os.path.join(root, FOLDER)) if name.endswith('.png'))
    for span in documents.spans(documents.without_blocks(text)):
        if not span.startswith('velmora ') or FOLDER not in span:
            continue
        words = shlex.split(span)
        script = next((word for word in words if word.startswith(FOLDER) and word.endswith('.txt')), None)
        named = next((word for word in words if word.startswith(FOLDER) and word.endswith('.png')), None)
        if script:
            for picture in PICTURE.findall(documents.read(root, script)):
                yield picture, words[1:]
            continue
        template = re.compile(re.sub(r'[A-Z]+', '.+', re.escape(named)))
        for picture in filter(template.fullmatch, existing):
            options = options_of(text, picture) if 'OPTIONS' in words else ''
            if options is not None:
                yield picture, [word for given in words[1:] for word in
                                (shlex.split(options) if given == 'OPTIONS' else [picture if given == named else given])]


def import_of(text, store):
    for span in documents.spans(documents.without_blocks(text)):
        words = shlex.split(span) if span.startswith('velmora import ') else []
        if store in words:
            return words[1:]
    return None


def without(rectangle, path):
    left, top, right, bottom = rectangle
    step, rows = pngpixels.read(path)
    return step, [row[:left * step] + row[right * step:] if top <= y < bottom else row for y, row in enumerate(rows)]


def difference(picture, first, second):
    if not os.path.exists(second):
        return 'is not what the command writes'
    with open(first, 'rb') as one, open(second, 'rb') as other:
        if one.read() == other.read():
            return None
    time = FRAME_TIME.get(picture)
    return None if time and without(time, first) == without(time, second) else 'is not what the command draws'


def main():
    root, program = map(os.path.abspath, sys.argv[1:3])
    faults, made = [], set()
    for path in documents.paths(root):
        text = documents.read(root, path)
        with tempfile.TemporaryDirectory() as folder:
            velmora = documents.Velmora(program, folder)
            os.makedirs(os.path.join(folder, FOLDER))
            for name in os.listdir(os.path.join(root, FOLDER)):
                if name.endswith('.txt'):
                    os.symlink(os.path.join(root, FOLDER, name), os.path.join(folder, FOLDER, name))
            if any(span.startswith(SAMPLES) for span in documents.spans(documents.without_blocks(text))):
                subprocess.run([os.path.join(root, SAMPLES), folder], check=True)
            for picture, command in made_by(text, root):
                for store in (word for word in command if re.fullmatch(r'[\w-]+\.(vlm|store)', word)):
                    if not os.path.exists(os.path.join(folder, store)):
                        command_of_store = import_of(text, store)
                        failure = velmora.run(command_of_store) if command_of_store else 'no command says how it is made'
                        faults += ['%s: the store %s: %s' % (path, store, failure)] if failure else []
                print('%s: velmora %s' % (picture, shlex.join(command)), flush=True)
                failure = velmora.run(command) or difference(picture, os.path.join(root, picture),
                                                              os.path.join(folder, picture))
                faults += ['%s: %s %s' % (path, picture, failure)] if failure else []
                made.add(picture)
    for name in sorted(os.listdir(os.path.join(root, FOLDER))):
        if name.endswith('.png') and FOLDER + name not in made:
            faults.append('%s%s: no document gives a command that makes it' % (FOLDER, name))
    documents.finish(faults, '%d pictures made again' % len(made))


if __name__ == '__main__':
    main()
