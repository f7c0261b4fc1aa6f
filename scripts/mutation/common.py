"""Folders, messages and files that all parts of scripts/mutate use."""
import json
import os
import sys

ROOT = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
WORK = os.path.join(ROOT, 'build', 'mutate')
TREE = os.path.join(WORK, 'tree')
BUILD = os.path.join(WORK, 'objects')


def say(message):
    print('mutate: ' + message, flush=True)


def stop(message):
    print('mutate: ' + message, file=sys.stderr)
    sys.exit(2)


def read(path):
    with open(path, encoding='latin-1', newline='') as file:
        return file.read()


def write_if_changed(path, text):
    """Keeps the time of a file that stays the same, so that nothing is compiled again."""
    data = text.encode('latin-1')
    if os.path.exists(path):
        with open(path, 'rb') as file:
            if file.read() == data:
                return
    os.makedirs(os.path.dirname(path), exist_ok=True)
    with open(path, 'wb') as file:
        file.write(data)


def keep(path, value):
    with open(path + '.new', 'w', encoding='utf-8') as file:
        json.dump(value, file)
    os.rename(path + '.new', path)


def kept(path, otherwise):
    """What keep has written there."""
    if not os.path.exists(path):
        return otherwise
    with open(path, encoding='utf-8') as file:
        return json.load(file)
