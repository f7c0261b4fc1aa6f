"""What the runs of mutants gave: counts per folder, and docs/quality/mutation.txt."""
import datetime
import json
import os
import subprocess
from collections import Counter, defaultdict

import mutants as schemata
from common import ROOT, WORK, read
from rooms import LISTED, room_of

REPORT = 'docs/quality/mutation.txt'
RESULTS = os.path.join(WORK, 'results.jsonl')
GATE = 95
UNNOTICED = 'survived', 'unreached'


def commit():
    try:
        return subprocess.check_output(['git', '-C', ROOT, 'describe', '--always', '--dirty'], text=True, stderr=subprocess.DEVNULL).strip()
    except (OSError, subprocess.CalledProcessError):
        return 'no commit'


def read_results():
    results = {}
    if os.path.exists(RESULTS):
        for line in read(RESULTS).splitlines():
            result = json.loads(line)
            results[result['id']] = result
    return results


def percent(part, whole):
    return '%.1f %%' % (100.0 * part / whole) if whole else '-'


def summary(mutants, results, listed, rooms):
    """Lines of a table, and the folders below the gate."""
    lines = ['%-20s %8s %8s %8s %9s %9s %7s %9s %8s' % ('folder', 'mutants', 'run', 'killed', 'timed out', 'unnoticed', 'listed', 'unlisted', 'noticed')]
    below = []
    for room in rooms:
        here = [mutant for mutant in mutants if room_of(mutant.file, rooms) == room]
        run = [mutant for mutant in here if mutant.id in results]
        outcomes = Counter(results[mutant.id]['outcome'] for mutant in run)
        noticed = outcomes['killed'] + outcomes['timed out']
        known = sum(mutant.id in listed and results[mutant.id]['outcome'] in UNNOTICED for mutant in run)
        unnoticed = len(run) - noticed
        lines.append('%-20s %8d %8d %8d %9d %9d %7d %9d %8s' % (
            room.folder, len(here), len(run), outcomes['killed'], outcomes['timed out'], unnoticed, known, unnoticed - known,
            percent(noticed, len(run) - known)))
        if 100 * noticed < GATE * (len(run) - known):
            below.append(room.folder)
    return lines, below


def stale_entries(entries, by_place, results):
    """What the list has that does not exist, or that a test notices."""
    lines = []
    for entry in entries:
        mutant = by_place.get((entry.file, entry.place))
        result = results.get(mutant.id) if mutant else None
        if not mutant:
            lines.append('%s:%d: there is no such mutant: %s' % (LISTED, entry.line, entry.place))
        elif result and result['outcome'] not in UNNOTICED:
            lines.append('%s:%d: is noticed by %s: %s' % (LISTED, entry.line, result['by'], entry.place))
    return lines


def write_report(mutants, results, listed, rooms):
    commits = Counter(result['commit'] for result in results.values())
    with open('/proc/cpuinfo', encoding='utf-8') as file:
        processors = [line.split(':', 1)[1].strip() for line in file if line.startswith('model name')]
    lines = ['What scripts/mutate has found, written by it on %s.' % datetime.date.today().isoformat(),
             'Machine: %d x %s. Runs at: %s.' % (len(processors), processors[0] if processors else 'unknown',
                                                ', '.join('%s (%d mutants)' % item for item in sorted(commits.items()))),
             'unnoticed: no test fails; listed: docs/quality/mutants.txt says why; noticed: of those that are not listed.', '',
             *summary(mutants, results, listed, rooms)[0], '', 'By operator:']
    by_operator = defaultdict(Counter)
    for mutant in mutants:
        if mutant.id in results:
            by_operator[mutant.operator][results[mutant.id]['outcome']] += 1
    for operator, outcomes in sorted(by_operator.items()):
        lines.append('  %-11s %s' % (operator, ', '.join('%d %s' % (count, outcome) for outcome, count in sorted(outcomes.items()))))
    lines += ['', 'Unnoticed and not listed:']
    open_ones = [mutant for mutant in mutants
                 if mutant.id in results and mutant.id not in listed and results[mutant.id]['outcome'] in UNNOTICED]
    for mutant in open_ones:
        lines += ['  %s%s' % (schemata.name(mutant), ' (no test gets there)' if results[mutant.id]['outcome'] == 'unreached' else '')]
    if not open_ones:
        lines.append('  none')
    path = os.path.join(ROOT, REPORT)
    os.makedirs(os.path.dirname(path), exist_ok=True)
    with open(path, 'w', encoding='latin-1') as file:
        file.write('\n'.join(lines) + '\n')
