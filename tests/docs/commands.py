#!/usr/bin/env python3
"""commands.py ROOT PROGRAM BUILD: the commands in the fenced blocks of README.md, CONTRIBUTING.md and docs/.

Those of velmora run, in their order and for each document in a folder of its own, and must end with 0. The pictures and
stores of the reader, slide.tif and the like, are pieces of the built-in picture there, or files of readersfiles.py; a region that lies beyond one is moved
into it, and a viewer gets a script that ends it. Of other commands what they name must exist: presets, targets, tests,
scripts and their options.
"""
import json
import os
import re
import shlex
import shutil
import subprocess
import sys
import tempfile

import documents
import readersfiles

PICTURE = re.compile(r'[\w.-]+\.(tif|tiff|svs|jpg|png|jp2|fits)')
STORE = re.compile(r'[\w-]+\.(vlm|store)')
ANNOTATIONS = re.compile(r'[\w-]+\.geojson')
# A part of the built-in picture, in place of the reader's own ones.
PIECE = (8192, 2048, 2048, 1536)
OUTPUT_OPTIONS = ('-o', '--output', '--screenshot')
REGION_OPTIONS = ('-r', '--region')
ASSIGNMENT = re.compile(r'[A-Z_]+=.*')
STARTS = re.compile(r'([A-Z_]+=\S* )*((velmora|cmake|ctest|setarch)\b|(\./|build/|scripts/|bench/)\w)')


class Reader:
    """Does what a reader of one document does, from top to bottom."""

    def __init__(self, program, folder):
        self.velmora = documents.Velmora(program, folder)
        self.folder = folder
        with open(os.path.join(folder, 'end.txt'), 'w', encoding='utf-8') as script:
            script.write('wait\nquit\n')

    def run(self, arguments):
        kinds = (PICTURE, STORE, ANNOTATIONS)
        files = [word for word in arguments[1:] if any(kind.fullmatch(word) for kind in kinds)]
        outputs = [arguments[at + 1] for at, word in enumerate(arguments[:-1]) if word in OUTPUT_OPTIONS]
        if arguments[0] in ('import', 'export') and files:
            outputs.append(files[-1])
        for file in files:
            if file not in outputs and not os.path.exists(os.path.join(self.folder, file)):
                self.provide(file)
        return self.velmora.run(self.adapted(arguments, files, outputs))

    def provide(self, file):
        if self.provide_special(file):
            return
        piece = os.path.join(self.folder, 'piece.tif')
        if not os.path.exists(piece):
            self.make('render', '-o', piece, '-r', '%d,%d,%d,%d' % PIECE)
        if STORE.fullmatch(file):
            self.make('import', piece, file)
        else:
            shutil.copy(piece, os.path.join(self.folder, file))

    def provide_special(self, file):
        """Whether the file is one of those that hold more than a piece of the built-in picture."""
        path = os.path.join(self.folder, file)
        if file.endswith('.fits'):
            readersfiles.write_frame(path)
        elif file.endswith('.ome.tif'):
            readersfiles.write_stack(path)
        elif file.endswith('.geojson'):
            readersfiles.write_annotations(path)
        elif file == 'landsat.tif':
            readersfiles.write_tiff(path, 1, 11)
        else:
            return False
        return True

    def make(self, *arguments):
        failure = self.velmora.run(arguments)
        if failure:
            raise RuntimeError('velmora %s: %s' % (shlex.join(arguments), failure))

    @staticmethod
    def adapted(arguments, files, outputs):
        adapted = list(arguments)
        for at, word in enumerate(arguments):
            if at > 0 and arguments[at - 1] in REGION_OPTIONS and set(files) - set(outputs):
                adapted[at] = ','.join(map(str, moved([int(number) for number in word.split(',')])))
        if arguments[0] == 'view' and '--screenshot' not in arguments and '--script' not in arguments:
            adapted += ['--script', 'end.txt']
        return adapted


def moved(region):
    """The region as it is where it lies in the piece; otherwise as much of it as fits, moved into the piece."""
    x, y, width, height = region
    width, height = min(width, PIECE[2]), min(height, PIECE[3])
    return [min(x, PIECE[2] - width), min(y, PIECE[3] - height), width, height]


class Others:
    """Commands that are not run: whether all that they name is there."""

    def __init__(self, root, build):
        self.root = root
        self.build = build
        presets = json.loads(documents.read(root, 'CMakePresets.json'))
        self.presets = {kind: {preset['name'] for preset in presets[kind + 'Presets'] if not preset.get('hidden')}
                        for kind in ('configure', 'build', 'test')}

    def fault(self, words):
        if words[:2] == ['setarch', '-R']:
            words = words[2:]
        if words[0] == 'cmake':
            return self.cmake(words[1:])
        if words[0] == 'ctest':
            return self.ctest(words[1:])
        if words[0].startswith('build/'):
            return self.built(words)
        return self.script(words)

    def preset(self, kind, words):
        if '--preset' not in words:
            return None
        name = words[words.index('--preset') + 1]
        return None if name in self.presets[kind] else 'there is no %s preset %s' % (kind, name)

    def cmake(self, words):
        if '--install' in words:
            folder = words[words.index('--install') + 1]
            return None if folder in {'build/' + name for name in self.presets['configure']} else 'no preset builds in ' + folder
        if '--target' in words:
            target = words[words.index('--target') + 1]
            if self.output('cmake', '--build', self.build, '--target', target, '--', '-n') is None:
                return 'there is no target ' + target
        return self.preset('build' if '--build' in words else 'configure', words)

    def ctest(self, words):
        selection = words[words.index('--preset') + 2:] if '--preset' in words else words
        listed = self.output('ctest', '--test-dir', self.build, '-N', *selection) or ''
        if not re.search(r'^Total Tests: [1-9]', listed, re.M):
            return 'it selects no test'
        return self.preset('test', words)

    def built(self, words):
        program = os.path.join(self.build, words[0].split('/', 2)[2])
        if not os.access(program, os.X_OK):
            return 'nothing builds ' + words[0]
        if any(word.startswith('--gtest_filter') for word in words):
            if not (self.output(program, *words[1:], '--gtest_list_tests') or '').strip():
                return 'it selects no case'
        return None

    def script(self, words):
        path = os.path.join(self.root, words[0])
        if not os.access(path, os.X_OK):
            return 'there is no ' + words[0]
        text = documents.read(self.root, words[0])
        unknown = [word for word in words[1:] if word.startswith('--') and word.split('=')[0] not in text]
        return '%s has no option %s' % (words[0], unknown[0]) if unknown else None

    def output(self, *command):
        done = subprocess.run(command, cwd=self.root, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True, check=False)
        return done.stdout if done.returncode == 0 else None


def commands(block):
    """Line number and words of each command of a block; none of a block that shows something else."""
    lines = block.text.replace('\\\n', '  ').split('\n')
    if block.language not in ('', 'sh', 'bash', 'console') or not any(STARTS.match(line) for line in lines):
        return
    for number, line in enumerate(lines, block.line):
        words = shlex.split(line, comments=True)
        while words:
            end = words.index('&&') if '&&' in words else len(words)
            # Assignments of environment variables before a command are no part of it.
            begin = next(at for at, word in enumerate(words) if not ASSIGNMENT.fullmatch(word))
            yield number, words[begin:end]
            words = words[end + 1:]


def main():
    root, program, build = map(os.path.abspath, sys.argv[1:4])
    faults, ran, looked = [], 0, 0
    others = Others(root, build)
    for path in documents.paths(root):
        with tempfile.TemporaryDirectory() as folder:
            reader = Reader(program, folder)
            for block in documents.blocks(root, path):
                if block.skipped:
                    print('%s:%d: not run: %s' % (path, block.line, block.skipped))
                    continue
                for line, words in commands(block):
                    is_ours = words[0] == 'velmora'
                    fault = reader.run(words[1:]) if is_ours else others.fault(words)
                    print('%s:%d: %s' % (path, line, shlex.join(words)), flush=True)
                    if fault:
                        faults.append('%s:%d: %s: %s' % (path, line, shlex.join(words), fault))
                    ran += is_ours
                    looked += not is_ours
    if min(ran, looked) < 5:
        faults.append('hardly any command was found: the reading is broken')
    documents.finish(faults, '%d commands of velmora run, %d others looked at' % (ran, looked))


if __name__ == '__main__':
    main()
