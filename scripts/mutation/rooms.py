"""The folders that are mutated, the order in which mutants are selected, and the mutants that no test can notice."""
import hashlib
import os
from collections import Counter, namedtuple

from common import ROOT, read, stop

ROOMS = 'tests/mutated-rooms.txt'
LISTED = 'docs/quality/mutants.txt'
SEED = 'velmora'

Room = namedtuple('Room', 'folder tests')
Entry = namedtuple('Entry', 'file place reason line')


def read_rooms():
    rooms = []
    for line in read(os.path.join(ROOT, ROOMS)).splitlines():
        if line.strip() and not line.startswith('#'):
            folder, *tests = line.split()
            rooms.append(Room(folder, tests))
    return rooms


def room_of(file, rooms):
    return next((room for room in rooms if file.startswith(room.folder + '/')), None)


def read_listed():
    """Blocks of: the file, the line with its change in [[ ]], the reason in one or more lines."""
    entries, block = [], []
    path = os.path.join(ROOT, LISTED)
    lines = read(path).encode('latin-1').decode().splitlines() if os.path.exists(path) else []
    for number, line in enumerate([*lines, ''], 1):
        if line.startswith('#'):
            continue
        if line.strip():
            block.append(line.strip())
            continue
        if block:
            if len(block) < 3 or '[[' not in block[1]:
                stop('%s:%d: expected the file, the line with [[the change]], and the reason' % (LISTED, number - len(block)))
            entries.append(Entry(block[0], block[1], ' '.join(block[2:]), number - len(block)))
        block = []
    return entries


def order(mutants, rooms):
    """The same at every run: by a hash, and folders in turn."""
    ranks, keys = Counter(), {}
    for mutant in sorted(mutants, key=lambda mutant: hashlib.sha256(('%s\0%s\0%s' % (SEED, mutant.file, mutant.place)).encode()).digest()):
        room = room_of(mutant.file, rooms).folder
        keys[mutant.id] = ranks[room], room
        ranks[room] += 1
    return sorted(mutants, key=lambda mutant: keys[mutant.id])
