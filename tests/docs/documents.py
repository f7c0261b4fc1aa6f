"""The documents as tests read them: fenced blocks, spans of code, tables."""
import glob
import os
import re
import subprocess
import sys
from collections import namedtuple

# `skipped` is the reason of a comment <!-- not run: REASON --> before the block.
Block = namedtuple('Block', 'path line language text skipped')


def paths(root):
    """README.md, CONTRIBUTING.md and all of docs/, relative to the root."""
    found = glob.glob(os.path.join(root, 'docs', '**', '*.md'), recursive=True)
    return ['README.md', 'CONTRIBUTING.md'] + sorted(os.path.relpath(path, root) for path in found)


def read(root, path):
    with open(os.path.join(root, path), encoding='utf-8') as file:
        return file.read()


def blocks(root, path):
    text = read(root, path)
    for found in re.finditer(r'^(?:<!-- not run: (.*?) -->\n\s*)?```(\w*)\n(.*?)^```$', text, re.S | re.M):
        line = text.count('\n', 0, found.start(3)) + 1
        yield Block(path, line, found.group(2), found.group(3), found.group(1))


def without_blocks(text):
    return re.sub(r'^```.*?^```$', '', text, flags=re.S | re.M)


def spans(text):
    """Spans of code, each on one line however the document breaks it."""
    return [re.sub(r'\s+', ' ', span) for span in re.findall(r'`([^`]+)`', text)]


def table_cells(line):
    return [cell.strip() for cell in line.strip().strip('|').split('|')]


class Velmora:
    """Runs commands of the program in a folder, as a user does who has no display."""

    def __init__(self, program, folder):
        self.program = program
        self.folder = folder
        state = os.path.join(folder, 'state')
        self.environment = dict(os.environ, SDL_VIDEODRIVER='offscreen', XDG_CACHE_HOME=os.path.join(folder, 'cache'),
                                XDG_STATE_HOME=state)
        # Something has been opened before: the viewer does not greet.
        os.makedirs(os.path.join(state, 'velmora'))
        with open(os.path.join(state, 'velmora', 'recent'), 'w', encoding='utf-8'):
            pass
        # Without a runtime folder, drivers that ask for a window system write a line of their own.
        self.environment.setdefault('XDG_RUNTIME_DIR', folder)

    def run(self, arguments):
        """None, or what the program says where it fails."""
        done = subprocess.run([self.program, *arguments], cwd=self.folder, env=self.environment, stdin=subprocess.DEVNULL,
                              stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, check=False)
        return None if done.returncode == 0 else 'exit code %d: %s' % (done.returncode, done.stdout.strip())


def finish(faults, done):
    for fault in faults:
        print(fault)
    print('%s: %d faults' % (done, len(faults)))
    sys.exit(1 if faults else 0)
