"""The copy of the sources, in which they are mutated."""
import hashlib
import os
import re
import shutil

import mutants as schemata
from common import ROOT, TREE, read, write_if_changed
from rooms import room_of


def repository_files():
    for folder, folders, names in os.walk(ROOT):
        here = os.path.relpath(folder, ROOT)
        folders[:] = sorted(name for name in folders
                            if name not in ('.git', '.cache', 'node_modules') and os.path.normpath(os.path.join(here, name)) not in ('build', 'docs/quality')
                            and not os.path.exists(os.path.join(folder, name, 'CMakeCache.txt')))
        # In a worktree .git is a file.
        for name in sorted(set(names) - {'.git'}):
            path = os.path.normpath(os.path.join(here, name))
            if not os.path.islink(os.path.join(ROOT, path)) or os.path.isfile(os.path.join(ROOT, path)):
                yield path


def copy_sources(rooms):
    """Brings the copy up to date but for what is mutated. Returns the texts of that, and a digest of what decides outcomes."""
    texts, there, digest = {}, set(), hashlib.sha256(read(schemata.__file__).encode('latin-1'))
    for path in repository_files():
        text = read(os.path.join(ROOT, path))
        if not path.startswith(('scripts/', 'tests/scripts/')) and not re.fullmatch(r'[^/]*\.md', path):
            digest.update(('%s\0%d\0' % (path, len(text))).encode() + text.encode('latin-1'))
        copy = os.path.join(TREE, path)
        there.add(copy)
        if path.endswith(('.cpp', '.h')) and room_of(path, rooms):
            texts[copy] = text
            if not os.path.exists(copy):
                write_if_changed(copy, text)
        else:
            write_if_changed(copy, text)
            shutil.copymode(os.path.join(ROOT, path), copy)
    for folder, _, names in os.walk(TREE):
        for name in names:
            if os.path.join(folder, name) not in there:
                os.unlink(os.path.join(folder, name))
    return texts, digest.hexdigest()[:16]
