#!/usr/bin/env python3
"""filters.py ROOT NAME...: docs/FILTERS.md beside the names that the build registers.

Its table has a row for each of them and no other, each row leads to a section that is there, and its count of names and
classes is theirs. This is where a name that is added or taken away is told to hosts; no other text counts the filters.
"""
import re
import sys

import documents

DOCUMENT = 'docs/FILTERS.md'


def anchors(text):
    """Those of the headings, as GitHub makes them."""
    headings = re.findall(r'^#+ (.*)$', documents.without_blocks(text), re.M)
    return {re.sub(r'[^\w\- ]', '', heading).lower().replace(' ', '-') for heading in headings}


def faults(root, names):
    text = documents.read(root, DOCUMENT)
    rows = re.findall(r'^\| \[`(\w+)`\]\(#([\w-]+)\) \|', text, re.M)
    documented = [name for name, _ in rows]
    for name in sorted(set(names) - set(documented)):
        yield '%s has no row in the table of %s: add one, and a section with its formula' % (name, DOCUMENT)
    for name in sorted(set(documented) - set(names)):
        yield '%s has a row in the table of %s and is not registered' % (name, DOCUMENT)
    for name in sorted({name for name in documented if documented.count(name) > 1}):
        yield '%s has several rows in the table of %s' % (name, DOCUMENT)
    known = anchors(text)
    for name, anchor in rows:
        if anchor not in known:
            yield '%s: the row of %s leads to #%s, and there is no such section' % (DOCUMENT, name, anchor)
    listing = documents.read(root, 'gles3renderbackend/CMakeLists.txt')
    classes = re.findall(r'^velmora_filter\((\w+) NAMES', listing, re.M)
    counts = '%d names, %d classes.' % (len(names), len(classes))
    if counts not in text:
        yield '%s does not say "%s"' % (DOCUMENT, counts)
    for path in documents.paths(root):
        for count in re.findall(r'\b(\d+) (?:filters|filter names)\b', documents.read(root, path)):
            yield '%s counts %s filters: %s alone does' % (path, count, DOCUMENT)


def main():
    root, names = sys.argv[1], sys.argv[2:]
    documents.finish(list(faults(root, names)), '%d filters' % len(names))


if __name__ == '__main__':
    main()
