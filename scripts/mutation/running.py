"""Runs the tests: each case alone, which tells the mutants that it reaches, and mutants with the cases that reach them."""
import concurrent.futures
import glob
import json
import mmap
import os
import re
import shutil
import signal
import subprocess
import tempfile
import time
from collections import defaultdict, namedtuple

import mutants as schemata
from common import BUILD, ROOT, WORK, read, stop
from rooms import ROOMS, room_of

TIMES, LEAST_SECONDS = 10, 5
# Of a case without a mutant.
LONGEST_CASE_SECONDS = 900

# command: without a filter of cases. environment: {name: value}.
Test = namedtuple('Test', 'name command environment filter')
# seconds: of computing; time: from start to end, which grows with what else the machine does.
Case = namedtuple('Case', 'test name seconds time')


def modified(environment, modifications):
    """ctest's ENVIRONMENT_MODIFICATION."""
    for modification in modifications:
        name, rest = modification.split('=', 1)
        action, value = rest.split(':', 1)
        old = environment.get(name, os.environ.get(name, ''))
        if action == 'set':
            environment[name] = value
        elif action == 'string_append':
            environment[name] = old + value
        elif action == 'path_list_prepend':
            environment[name] = value + (':' + old if old else '')
    return environment


def commands():
    """{test: command}. ctest itself names no program that is not built yet."""
    found = {}
    for folder, _, names in os.walk(BUILD):
        if 'CTestTestfile.cmake' in names:
            for name, words in re.findall(r'^add_test\(\[=*\[(.*?)\]=*\] (.*)\)$', read(os.path.join(folder, 'CTestTestfile.cmake')), re.M):
                found[name] = [re.sub(r'\\(.)', r'\1', word) for word in re.findall(r'"((?:[^"\\]|\\.)*)"', words)]
    return found


def read_test(name):
    """A test of ctest, and the target to build."""
    described = json.loads(subprocess.check_output(['ctest', '--test-dir', BUILD, '--show-only=json-v1']))
    found = next((test for test in described['tests'] if test['name'] == name), None)
    if not found:
        stop('%s: there is no test %s' % (ROOMS, name))
    environment = {'VELMORA_REQUIRE_GL': '1', 'VELMORA_REQUIRE_PHOTOGRAPHS': '1'}
    for one in found.get('properties', ()):
        if one['name'] == 'ENVIRONMENT':
            environment.update(value.split('=', 1) for value in one['value'])
        elif one['name'] == 'ENVIRONMENT_MODIFICATION':
            modified(environment, one['value'])
    environment.pop('GTEST_OUTPUT', None)
    words = commands()[name]
    filters = [word.split('=', 1)[1] for word in words if word.startswith('--gtest_filter=')]
    # Without velmora-require-gl in front, which takes as long as many a case; the programs refuse a wrong GL too.
    first = max(at for at, word in enumerate(words) if word.startswith(BUILD + '/'))
    command = [word for word in words[first:] if not word.startswith('--gtest_filter=')]
    return Test(name, command, environment, filters[0] if filters else '*'), os.path.basename(command[0])


def state_of(pid):
    """Seconds of computing of a process that still runs, and whether one of its threads computes, waits for a core or for the
    disk."""
    seconds, is_busy = 0.0, False
    for path in glob.glob('/proc/%d/task/*/stat' % pid):
        try:
            with open(path, encoding='latin-1') as file:
                fields = file.read().rpartition(')')[2].split()
        except OSError:
            continue
        is_busy |= fields[0] in 'RD'
        seconds += (int(fields[11]) + int(fields[12])) / os.sysconf('SC_CLK_TCK')
    return seconds, is_busy


def wait(process, most, idle):
    """(exit code, or None where it was ended, seconds of computing). Ended where it computes longer than `most`, or sleeps for
    `idle`. Time alone says nothing: a machine that does other things may let a program wait for long."""
    last = time.monotonic()
    seconds, pause = 0.0, 0.002
    while True:
        pid, status, usage = os.wait4(process.pid, os.WNOHANG)
        if pid:
            process.returncode = os.waitstatus_to_exitcode(status)
            return process.returncode, usage.ru_utime + usage.ru_stime
        now, (used, is_busy) = time.monotonic(), state_of(process.pid)
        if used > seconds or is_busy:
            seconds, last = max(used, seconds), now
        if used > most or now - last > idle:
            return None, used
        time.sleep(pause)
        pause = min(pause * 1.5, 0.1)


def run_test(test, arguments, environment, most, idle):
    """What wait returns, seconds from start to end, and the output. Leaves no file and no process behind."""
    folder = tempfile.mkdtemp(dir=os.path.join(WORK, 'tmp'))
    variables = {**os.environ, **test.environment, **environment, 'TMPDIR': folder}
    for name in ('GTEST_OUTPUT', 'VELMORA_LONG'):
        variables.pop(name, None)
    # A mutant may write or allocate without end, and must not outlive this script, however that ends.
    limits = 'ulimit -c 0; ulimit -f 8388608; ulimit -v 16777216; exec setpriv --pdeathsig KILL -- "$@"'
    start = time.monotonic()
    output = tempfile.TemporaryFile(dir=folder)
    process = subprocess.Popen(['sh', '-c', limits, 'sh', *test.command, *arguments], env=variables, cwd=BUILD, stdin=subprocess.DEVNULL,
                               stdout=output, stderr=subprocess.STDOUT, start_new_session=True)
    try:
        code, seconds = wait(process, most, idle)
    finally:
        try:
            os.killpg(process.pid, signal.SIGKILL)
        except ProcessLookupError:
            pass
        process.wait()
        output.seek(0)
        text = output.read(1 << 20).decode(errors='replace')
        output.close()
        shutil.rmtree(folder, ignore_errors=True)
    return code, seconds, time.monotonic() - start, text


def cases_of(test):
    code, _, _, output = run_test(test, ['--gtest_list_tests', '--gtest_filter=' + test.filter], {}, 60, 60)
    if code != 0:
        stop('%s does not list its cases: %s' % (test.name, output.strip()[-300:]))
    suite = None
    for line in output.splitlines():
        line = line.split('#')[0].rstrip()
        if re.fullmatch(r'\S+\.', line):
            suite = line
        elif line.startswith('  ') and suite and 'DISABLED_' not in suite + line:
            yield suite + line.strip()


def reach(test, mutants, jobs):
    """Runs each case alone. Returns [(Case, ids of the mutants it reaches)], and the cases that fail without a mutant."""
    ids = [mutant.id for mutant in mutants]

    def one(name):
        with tempfile.NamedTemporaryFile(dir=os.path.join(WORK, 'tmp')) as file:
            file.truncate(1 << schemata.ID_BITS)
            code, seconds, duration, _ = run_test(test, ['--gtest_filter=' + name], {'VELMORA_MUTANTS_REACHED': file.name},
                                                  LONGEST_CASE_SECONDS, LONGEST_CASE_SECONDS)
            with mmap.mmap(file.fileno(), 0, prot=mmap.PROT_READ) as marks:
                return Case(test.name, name, seconds, duration), [id for id in ids if marks[id]] if code == 0 else None

    with concurrent.futures.ThreadPoolExecutor(jobs) as pool:
        results = list(pool.map(one, cases_of(test)))
    return [result for result in results if result[1] is not None], [case.name for case, reached in results if reached is None]


def own_suites(file):
    """The suites of tests/FOLDER/X*Test.cpp, for FOLDER/X.cpp and FOLDER/X.h."""
    suites = set()
    for path in glob.glob(os.path.join(glob.escape(os.path.join(ROOT, 'tests', os.path.splitext(file)[0])) + '*Test.cpp')):
        suites.update(re.findall(r'\b(?:TYPED_)?TEST(?:_[FP])?\(\s*(\w+)', read(path)))
    return suites


def is_of(suites, case):
    return any(part in suites for part in case.name.split('.')[0].split('/'))


class Runner:
    def __init__(self, tests, rooms, reached):
        self.tests = tests
        self.rooms = rooms
        self.cases = defaultdict(list)
        for case, ids in reached:
            for id in ids:
                self.cases[id].append(case)
        self.suites = {}

    def steps(self, mutant):
        """Lists of cases, each of one test: the file's own, then the quickest, then all others."""
        room = room_of(mutant.file, self.rooms)
        if mutant.file not in self.suites:
            self.suites[mutant.file] = own_suites(mutant.file)
        suites = self.suites[mutant.file]
        cases = [case for case in self.cases[mutant.id] if case.test in room.tests]
        cases.sort(key=lambda case: (not is_of(suites, case), case.seconds))
        own = [case for case in cases if is_of(suites, case)]
        others = [case for case in cases if not is_of(suites, case)]
        for group in (own[:20], own[20:], others[:20], others[20:]):
            for name in room.tests:
                part = [case for case in group if case.test == name]
                if part:
                    yield part

    def run(self, mutant):
        """(outcome, what noticed, seconds): killed, timed out, survived or unreached."""
        total, noticed = 0.0, ''
        outcome = 'unreached'
        for cases in self.steps(mutant):
            outcome = 'survived'
            test = self.tests[cases[0].test]
            most = max(LEAST_SECONDS, TIMES * sum(case.seconds for case in cases))
            idle = max(LEAST_SECONDS, sum(case.time for case in cases))
            with tempfile.NamedTemporaryFile('w', dir=os.path.join(WORK, 'tmp')) as flags:
                flags.write('--gtest_filter=%s\n--gtest_fail_fast\n' % ':'.join(case.name for case in cases))
                flags.flush()
                code, _, duration, output = run_test(test, ['--gtest_flagfile=' + flags.name], {'VELMORA_MUTANT': str(mutant.id)}, most, idle)
            total += duration
            if code != 0:
                started = re.findall(r'^\[ RUN      \] (\S+)', output, re.M)
                noticed = '%s: %s' % (test.name, started[-1] if started else 'before the first case')
                outcome = 'timed out' if code is None else 'killed'
                self.output = output
                break
        return outcome, noticed, total
