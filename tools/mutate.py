"""What tools/mutate.sh does: tries the changes that mutations.py finds."""
import argparse
import collections
import contextlib
import difflib
import fnmatch
import hashlib
import json
import math
import os
import pathlib
import re
import shlex
import shutil
import signal
import subprocess
import sys
import threading
import time

from mutations import mutations

ROOT = pathlib.Path(__file__).resolve().parents[1]
HOME = ROOT / 'build' / 'mutate'
COPY = HOME / 'tree'            # the sources as they were at the start: work on the others can go on
BUILD = COPY / 'build' / 'checked'
BUILT = BUILD / 'bin'
RESULTS = HOME / 'results.jsonl'
MARK = 'QX_MUTATE_RUN'          # in the environment of everything that a test starts

# By program of tests: what has a change in it while they run. Sessions have it in the module alone.
PROGRAMS = {name: f'bin/tests/{name}.exe' for name in
            ['unit_tests', 'platform_tests', 'exception_tests', 'dialog_tests', 'session_tests']}
CHANGED = {**PROGRAMS, 'session_tests': 'bin/qxfaxui.dll'}
CHANGED_AS_WELL = {'platform.dialog_templates': 'bin/qxfaxui.dll',
                   'platform.phone_book_processes': 'bin/tests/phone_book_worker.exe'}
UNKNOWN_SECONDS = 10            # what a test is taken to last before it has run
SLOW = 30                       # seconds that a test may take, and five times what it took, before it counts as hanging
MOST_OTHER_FAILURES = 3         # of a test, before it is given up: it does not fail because of the change


# ---- the copy and its build ------------------------------------------------------------------------------------------

def update_copy():
    """Makes the copy the same as the sources, and leaves alone what already is."""
    listed = subprocess.run(['git', 'ls-files', '-z', '--cached', '--others', '--exclude-standard'], cwd=ROOT,
                            check=True, stdout=subprocess.PIPE, encoding='utf-8').stdout
    names = {name for name in listed.split('\0') if name and (ROOT / name).is_file()}
    for folder in {name.split('/')[0] for name in names}:
        for old in (COPY / folder).rglob('*'):
            if old.is_file() and str(old.relative_to(COPY)) not in names:
                old.unlink()
    for name in names:
        source, copy = ROOT / name, COPY / name
        if not copy.is_file() or copy.read_bytes() != source.read_bytes():
            copy.parent.mkdir(parents=True, exist_ok=True)
            shutil.copyfile(source, copy) # with the time of today: it is to be built
        shutil.copymode(source, copy)


def build_copy():
    subprocess.run(['cmake', '--preset', 'checked'], cwd=COPY, check=True, stdout=subprocess.DEVNULL)
    subprocess.run(['cmake', '--build', BUILD, '--target', *PROGRAMS], check=True)


# ---- which test can reach what ---------------------------------------------------------------------------------------

# By file of src, without its ending: the tests that run it, besides the one of the file's name.
REACH = [
    ('base/abandoned_files', 'platform.phone_book_file platform.help platform.phone_book_failures'),
    ('base/activation_context', 'platform.file_dialog ui.dialog ui.send_session ui.two_sessions ui.failing_calls'),
    ('base/apartment', 'platform.phone_book_file platform.file_dialog ui.help_viewer_apartment ui.failing_calls'),
    ('base/file_in_use', 'platform.phone_book_failures platform.help'),
    ('base/guarded', 'unit.trace ui.failing_calls'),
    ('base/gue*', 'platform.guest platform.apartment ui.name_box_guest ui.guest_windows ui.guest_session'),
    ('base/lock', 'platform.guest ui.two_sessions'),
    ('base/module', 'unit.phone_book_changed platform.guest ui.dialog ui.guest_session'),
    ('base/number_text', 'unit.recipient_rules unit.import_rules ui.name_box ui.entry_dialog'),
    ('base/printer', 'platform.device_state platform.registry platform.help ui.send_session'),
    ('base/process_heap', 'unit.fax_job_data unit.escape_data unit.items ui.failing_calls'),
    ('base/stack_guard', 'host.send_fax_session'),
    ('base/text*', 'unit.text unit.text_template unit.text_rules unit.send_fax unit.phone_book unit.items'
                   ' platform.localized_text platform.registry platform.recent_list platform.help ui.import_export'),
    ('base/trace', 'platform.help'),
    ('base/unique', 'platform.registry platform.phone_book_file ui.session_leaks'),
    ('base/user_text_key', 'unit.sort_order platform.csv_import ui.name_box'),
    ('base/window_procedure', 'ui.name_box_guest ui.guest_windows ui.two_sessions'),
    ('record/*', 'unit.fax_job_data unit.recipient_picks platform.fax_defaults ui.fax_job_page host.send_fax_session'
                 ' ui.send_session ui.setup_page ui.failing_calls'),
    ('settings/*', 'platform.registry platform.device_state platform.fax_defaults platform.recent_list'
                   ' ui.edit_defaults_dialog ui.send_session ui.edit_defaults ui.setup_page'),
    ('text/help*', 'unit.help_names platform.help ui.help_viewer ui.help_viewer_apartment ui.help'),
    ('text/[lt]*', 'unit.text_template unit.send_round platform.localized_text platform.string_library ui.dialog'
                   ' ui.send_session ui.dialog_texts'),
    ('dialog/access_key', 'ui.announcements ui.picture_button ui.dialog_texts'),
    ('dialog/announcements', 'ui.name_box ui.accessible_names'),
    ('dialog/[bc]*', 'ui.dialog ui.phone_book_list ui.picture_button ui.help ui.entry_dialog ui.high_contrast'
                     ' ui.dialog_texts'),
    ('dialog/d*', 'ui.dialog ui.phone_book_list ui.picture_button ui.entry_dialog ui.high_contrast ui.dialog_texts'
                  ' ui.accessible_names'),
    ('dialog/file_dialog', 'platform.file_dialog ui.import_export ui.guest_session ui.edit_defaults'
                           ' ui.fax_job_session'),
    ('dialog/list_view', 'ui.phone_book_list ui.map_custom_fields ui.fax_job_page ui.add_recipients ui.dialog_texts'),
    ('dialog/number_filter', 'ui.dialog ui.name_box ui.entry_dialog ui.setup_page ui.fax_job_session'),
    ('dialog/type*', 'ui.name_box ui.name_box_guest ui.phone_book_list ui.fax_job_session'),
    ('phonebook/book/*', 'unit.items unit.item_id unit.phone_book unit.sort_order unit.recipient_picks'
                         ' platform.recent_list platform.csv_import platform.phone_book_file'
                         ' platform.phone_book_failures ui.phone_book_list ui.edit_phone_book ui.phone_book_leaks'),
    ('phonebook/csv/*', 'unit.csv_text unit.import_rules platform.csv_table platform.csv_import ui.map_custom_fields'
                        ' ui.import_export ui.csv_session'),
    ('phonebook/file/*', 'unit.xml_text unit.xml_prolog platform.file_guard platform.phone_book_file'
                         ' platform.hostile_phone_book_file platform.phone_book_failures'
                         ' platform.phone_book_processes ui.phone_book_sharing'),
    ('phonebook/recent/*', 'unit.entry_text_block platform.recent_list platform.address_book_import ui.fax_job_page'
                           ' ui.fax_job_session'),
    ('phonebook/ui/add*', 'ui.add_recipients ui.phone_book_changed ui.accessible_names'),
    ('phonebook/ui/button_rules', 'ui.group_dialog ui.add_recipients ui.edit_phone_book'),
    ('phonebook/ui/details*', 'ui.add_recipients ui.group_dialog ui.edit_phone_book'),
    ('phonebook/ui/e*', 'ui.entry_dialog ui.csv_session ui.phone_book_changed ui.edit_phone_book'),
    ('phonebook/ui/group*', 'ui.accessible_names ui.announcements ui.group_dialog ui.edit_phone_book'),
    ('phonebook/ui/[im]*', 'ui.import_export ui.map_custom_fields ui.csv_session'),
    ('phonebook/ui/phone_book_*', 'ui.phone_book_list ui.announcements ui.guest_windows ui.phone_book_changed'
                                  ' ui.add_recipients ui.edit_phone_book ui.high_contrast'),
    ('phonebook/ui/recipient_picks', 'ui.add_recipients'),
    ('pages/[cfr]*', 'ui.fax_job_page ui.name_box ui.send_session ui.picture_button ui.fax_job_session'
                     ' ui.failing_calls'),
    ('pages/edit_defaults_dialog', 'ui.edit_defaults ui.setup_page'),
    ('pages/picture_button', 'ui.fax_job_page ui.high_contrast ui.accessible_names'),
    ('pages/send_button', 'ui.fax_job_page ui.two_sessions ui.fax_job_session'),
    ('pages/send_[pr]*', 'unit.send_round ui.fax_job_page ui.setup_page ui.fax_job_session'),
    ('pages/s[eh]*', 'ui.edit_defaults_dialog ui.edit_defaults ui.setup_page'),
    ('entry/*', 'host.send_fax_session ui.send_session ui.guest_session ui.guest_windows ui.two_sessions'
                ' ui.picture_button ui.setup_page ui.help ui.fax_job_session ui.failing_calls'),
    # Texts, captions and help topics of tables.
    ('[dpe]*/*', 'platform.string_library platform.help_pages'),
    ('pages/*', 'ui.help'),
]


class Test:
    def __init__(self, name, program, seconds, long):
        self.name, self.program = name, program
        self.file = name.split('.')[1]
        self.usual_seconds = math.inf if long else seconds
        self.seconds = seconds # of its last run without a failure

    def is_named_after(self, unit):
        return os.path.basename(unit) in {self.file, f'{self.file}_dialog', f'{self.file}_page'}


def tests_of_the_build():
    """Those of the programs, in their first language, with the times that ./test.sh took for them."""
    times = ROOT / 'build' / 'checked' / 'Testing' / 'Temporary' / 'CTestCostData.txt'
    rows = [line.split() for line in times.read_text().splitlines()] if times.exists() else []
    seconds = {row[0]: float(row[2]) for row in rows if len(row) == 3}
    shown = subprocess.run(['ctest', '--test-dir', BUILD, '--show-only=json-v1'], check=True, stdout=subprocess.PIPE)
    for test in json.loads(shown.stdout)['tests']:
        program, file = pathlib.Path(test['command'][-2]).stem, test['command'][-1]
        if program in PROGRAMS and test['name'].split('.')[1:] == [file]:
            labels = [label for given in test['properties'] if given['name'] == 'LABELS' for label in given['value']]
            yield Test(test['name'], program, seconds.get(test['name'], UNKNOWN_SECONDS), 'long' in labels)


def tests_of(unit, tests, longest):
    """Those that can reach a unit: those of its name first, then the quickest, up to the longest."""
    found = {test.name: test for test in tests}
    named = [test for test in tests if test.is_named_after(unit)]
    names = {name for pattern, names in REACH if fnmatch.fnmatchcase(unit, pattern) for name in names.split()}
    if unknown := names - set(found):
        sys.exit(f'mutate.sh: there is no test {" ".join(sorted(unknown))}')
    others = {found[name] for name in names if found[name].usual_seconds <= longest} - set(named)
    return named + sorted(others, key=lambda test: test.usual_seconds)


class Includes:
    """Who includes whom."""

    def __init__(self):
        self.includers = collections.defaultdict(set)
        for folder in ['src', 'tests', 'host', 'admin']:
            for file in (ROOT / folder).rglob('*'):
                if file.suffix in {'.cpp', '.h'}:
                    for name in re.findall(r'^#include "([^"]+)"', file.read_text(encoding='utf-8'), re.MULTILINE):
                        self.includers[name].add(str(file.relative_to(ROOT)))

    def units(self, file):
        """The .cpp files that a change of a file has to be compiled with."""
        seen, todo = set(), [file]
        while todo:
            name = todo.pop()
            if name not in seen:
                seen.add(name)
                todo += self.includers[re.sub('^(src|tests)/', '', name)]
        return sorted(name for name in seen if name.endswith('.cpp'))


# ---- what has the change in it ---------------------------------------------------------------------------------------

class NotBuilt(Exception):
    """With the first error."""


def checked_run(command):
    made = subprocess.run(command, cwd=BUILD, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, encoding='utf-8',
                          errors='replace')
    if made.returncode != 0:
        errors = [line for line in made.stdout.splitlines() if re.search(r'error|undefined reference', line)]
        raise NotBuilt(errors[0] if errors else made.stdout[-300:])


class Commands:
    """What the build of the copy runs."""

    def __init__(self):
        self.objects = collections.defaultdict(list) # by source: the commands that compile it
        for entry in json.loads((BUILD / 'compile_commands.json').read_text(encoding='utf-8')):
            command = shlex.split(entry['command'])
            if os.path.basename(command[0]) == 'ccache':
                del command[0]
            self.objects[os.path.relpath(entry['file'], COPY)].append(command)
        self.links = {}
        for target in {*CHANGED.values(), *CHANGED_AS_WELL.values()}:
            if (BUILD / target).exists():
                shown = subprocess.run(['ninja', '-C', BUILD, '-t', 'commands', '-s', target], check=True,
                                       stdout=subprocess.PIPE, encoding='utf-8').stdout
                self.links[target] = next(shlex.split(part) for part in shown.split('&&') if f' -o {target} ' in part)


class Change:
    """Sources with a change in them, and what is built from them: one object per unit, nothing else is compiled."""

    def __init__(self, desk, mutation, commands, includes):
        self.desk, self.commands, self.includes = desk, commands, includes
        self.mutation = mutation
        self.objects = {} # made of the changed sources, by the name of the copy's

    def __enter__(self):
        source = (COPY / self.mutation.file).read_text(encoding='utf-8')
        (self.desk.tree / self.mutation.file).write_text(self.mutation.apply(source), encoding='utf-8')
        return self

    def __exit__(self, *_):
        shutil.copyfile(COPY / self.mutation.file, self.desk.tree / self.mutation.file)
        for target in list(self.desk.changed):
            self.desk.restore(target)

    def build(self, target):
        """Makes the desk's program or module one with the change. Throws NotBuilt."""
        if target in self.desk.changed:
            return
        link, scratch = list(self.commands.links[target]), self.desk.folder / 'scratch'
        for unit in self.includes.units(self.mutation.file):
            for command in self.commands.objects[unit]:
                made = command[command.index('-o') + 1]
                library = f"lib/lib{re.search(r'([^/]+)[.]dir/', made)[1]}.a"
                if made in link:
                    link[link.index(made)] = self.compiled(command, made)
                elif library in link: # what comes before a library is not taken from it
                    link.insert(link.index(next(part for part in link if part.startswith('lib/'))),
                                self.compiled(command, made))
        link[link.index('-o') + 1] = self.desk.built / pathlib.Path(target).relative_to('bin')
        self.desk.changed.add(target)
        checked_run([re.sub('^-Wl,--out-implib,.*', f'-Wl,--out-implib,{scratch}/import.a', str(part))
                     for part in link] + ['-s'])

    def compiled(self, command, made):
        if made not in self.objects:
            self.objects[made] = str(self.desk.folder / 'scratch' / made.replace('/', '_'))
            command = [part.replace(str(COPY / 'src'), str(self.desk.tree / 'src')) for part in command]
            command[command.index('-o') + 1] = self.objects[made]
            checked_run([*command, '-g0', '-w']) # a function whose only call is gone is no error here
        return self.objects[made]


# ---- running tests ---------------------------------------------------------------------------------------------------

class Desk:
    """A Wine session, sources and programs of one's own: of several desks, none sees another's change."""

    def __init__(self, number):
        self.folder = HOME / f'desk{number}'
        self.tree, self.built = self.folder / 'tree', self.folder / 'bin'
        self.changed = set() # what has a change in it
        shutil.rmtree(self.folder, ignore_errors=True)
        self.tree.mkdir(parents=True)
        (self.folder / 'scratch').mkdir()
        for file in COPY.iterdir():
            if file.name not in {'src', 'build'}:
                (self.tree / file.name).symlink_to(file)
        shutil.copytree(COPY / 'src', self.tree / 'src')
        shutil.copytree(BUILT, self.built) # what a session looks for stands beside the module

        # The session stays for as long as somebody is there.
        command = [COPY / 'tools' / 'with-wine.sh', '--desk', f'mutate{number}', 'sh', '-c',
                   "env -0; printf '\\0'; exec cat"]
        self.session = subprocess.Popen(command, stdin=subprocess.PIPE, stdout=subprocess.PIPE)
        text = b''
        while not text.endswith(b'\0\0'):
            read = self.session.stdout.read1()
            if not read:
                sys.exit('mutate.sh: there is no Wine session')
            text += read
        self.mark = f'{os.getpid()}.{number}'
        self.environment = {**dict(line.split('=', 1) for line in text.decode().rstrip('\0').split('\0')),
                            MARK: self.mark}
        self.driver = pathlib.Path(self.environment['WINEPREFIX'],
                                   'drive_c/windows/system32/spool/drivers/x64/3/qxfaxui.dll')

    def close(self):
        self.session.stdin.close()
        self.session.wait()

    def restore(self, target):
        shutil.copy(BUILD / target, self.built / pathlib.Path(target).relative_to('bin'))
        self.changed.discard(target)

    def end_what_is_left(self):
        """Ends what a test has started and left behind, and only that."""
        for process in pathlib.Path('/proc').glob('[0-9]*'):
            with contextlib.suppress(OSError):
                if f'{MARK}={self.mark}'.encode() in (process / 'environ').read_bytes().split(b'\0'):
                    os.kill(int(process.name), signal.SIGKILL)

    def run(self, test, cases='*', changed=True):
        """(how it failed or None, the case that failed)"""
        tree, built = (self.tree, self.built) if changed else (COPY, BUILT)
        environment = {**self.environment, 'QX_SOURCE_DIR': str(tree), 'QX_BINARY_DIR': str(built)}
        command = ['wine64', built / 'tests' / f'{test.program}.exe', test.file, '--gtest_fail_fast',
                   f'--gtest_filter={cases}']
        self.driver.unlink(missing_ok=True) # a session installs what it does not find
        begun = time.monotonic()
        # Into a file: what is left behind by a test would keep a pipe open.
        with (self.folder / 'output.log').open('wb') as output:
            process = subprocess.Popen(command, cwd=tree, env=environment, stdin=subprocess.DEVNULL, stdout=output,
                                       stderr=subprocess.STDOUT, start_new_session=True)
            try:
                status = process.wait(timeout=SLOW + 5 * test.seconds if cases[0] in '*-' else 3 * SLOW)
            except subprocess.TimeoutExpired:
                status = None
                process.kill()
                process.wait()
        if status == 0:
            if cases == '*':
                test.seconds = time.monotonic() - begun
            return None, None
        self.end_what_is_left()
        told = re.findall(r'^\[ +(RUN|FAILED|OK) +\] ([^\s,]+)',
                          (self.folder / 'output.log').read_text(errors='replace'), re.MULTILINE)
        failed = [name for what, name in told if what == 'FAILED']
        how = 'hung' if status is None else 'failed' if failed else 'crashed'
        return how, failed[0] if failed else told[-1][1] if told else '*'

    def notices(self, test):
        """How and with which case a test notices what was changed, or (None, None)."""
        others = []
        while len(others) < MOST_OTHER_FAILURES:
            how, case = self.run(test, f"-{':'.join(others)}" if others else '*')
            if how is None or case in others:
                break
            # The machine may be busy, the prefix spoilt by what crashed: it has to be the change.
            again = self.run(test, case)[0]
            if again and self.run(test, case, changed=False)[0] is None:
                return how, f'{test.name} {case}'
            print(f"  {test.name} {case} {how}, but {'without the change, too' if again else 'not again'}", flush=True)
            others.append(case)
        return None, None

    def tried(self, mutation, tests, commands, includes):
        """What comes out, as a line of the results."""
        result = {'key': mutation.key, 'line': mutation.line, 'tests': []}
        with Change(self, mutation, commands, includes) as change:
            for test in tests:
                try:
                    change.build(CHANGED[test.program])
                    if test.name in CHANGED_AS_WELL:
                        change.build(CHANGED_AS_WELL[test.name])
                except NotBuilt as error:
                    return {**result, 'outcome': 'not built', 'error': str(error)}
                result['tests'].append(test.name)
                how, case = self.notices(test)
                if how:
                    return {**result, 'outcome': 'noticed', 'how': how, 'case': case}
        return {**result, 'outcome': 'unnoticed'}


# ---- results ---------------------------------------------------------------------------------------------------------

def read_results():
    """The last result of each change."""
    if not RESULTS.exists():
        return {}
    return {result['key']: result for result in map(json.loads, RESULTS.read_text(encoding='utf-8').splitlines())}


def sample(arguments):
    """All changes of the files that were asked for, in an order of chance that depends on nothing but them."""
    found, includes = [], Includes()
    for top in arguments.files or ['src']:
        path = ROOT / top
        for file in sorted(path.rglob('*')) if path.is_dir() else [path]:
            if file.suffix == '.cpp' or file.suffix == '.h' and \
                    len(includes.units(str(file.relative_to(ROOT)))) <= arguments.units:
                found += mutations(str(file.relative_to(ROOT)), file.read_text(encoding='utf-8'))
    return sorted(found, key=lambda mutation: hashlib.sha256(f'{arguments.seed} {mutation.key}'.encode()).digest())


def as_diff(mutation):
    source = (ROOT / mutation.file).read_text(encoding='utf-8')
    lines = difflib.unified_diff(source.splitlines(), mutation.apply(source).splitlines(), n=0, lineterm='')
    return '\n'.join(f'    {line}' for line in lines if not line.startswith(('---', '+++', '@@')))


def report(changes, results):
    known = [(mutation, results[mutation.key]) for mutation in changes if mutation.key in results]
    count = collections.Counter(result['outcome'] for _, result in known)
    for mutation, result in sorted(known, key=lambda pair: (pair[0].file, pair[0].begin)):
        if result['outcome'] == 'unnoticed':
            print(f"{mutation.file}:{mutation.line}: not noticed by {' '.join(result['tests']) or 'any test'}")
            print(as_diff(mutation))
    built = count['noticed'] + count['unnoticed']
    share = 100 * count['noticed'] / max(built, 1)
    print(f"{len(known)} changes tried, {built} of them built, {count['noticed']} noticed ({share:.1f} %)")
    how = collections.Counter(result['how'] for _, result in known if result['outcome'] == 'noticed')
    print(', '.join(f'{number} {what}' for what, number in sorted(how.items())))


def main():
    parser = argparse.ArgumentParser(prog='mutate.sh', description=__doc__)
    for option, default in [('seed', 1), ('count', 20), ('units', 40), ('desks', os.cpu_count()), ('longest', math.inf)]:
        parser.add_argument(f'--{option}', type=type(default), default=default)
    for option in ['all', 'again', 'report']:
        parser.add_argument(f'--{option}', action='store_true')
    parser.add_argument('files', nargs='*')
    arguments = parser.parse_args()

    if not arguments.report:
        update_copy()
        build_copy()
        Trial(arguments).run()
    report(sample(arguments), read_results())


class Trial:
    """Desks that try what there is to be tried, one change each at a time."""

    def __init__(self, arguments):
        self.arguments = arguments
        self.changes, self.results = iter(sample(arguments)), read_results()
        self.tests, self.commands, self.includes = list(tests_of_the_build()), Commands(), Includes()
        self.counted = 0 # changes that are built, or are being tried
        self.lock = threading.Lock()

    def run(self):
        desks = [Desk(number) for number in range(1, self.arguments.desks + 1)]
        threads = [threading.Thread(target=self.work, args=[desk]) for desk in desks]
        for thread in threads:
            thread.start()
        for thread in threads:
            thread.join()
        for desk in desks:
            desk.close()

    def next(self):
        """One that is not known yet, or None."""
        with self.lock:
            while self.counted < self.arguments.count and (mutation := next(self.changes, None)):
                outcome = self.results.get(mutation.key, {}).get('outcome')
                self.counted += outcome != 'not built'
                if outcome is None or outcome == 'unnoticed' and self.arguments.again:
                    return mutation
        return None

    def work(self, desk):
        while mutation := self.next():
            begun = time.monotonic()
            unit = str(pathlib.PurePath(mutation.file).relative_to('src').with_suffix(''))
            tests = self.tests if self.arguments.all else tests_of(unit, self.tests, self.arguments.longest)
            result = desk.tried(mutation, tests, self.commands, self.includes)
            result['seconds'] = round(time.monotonic() - begun, 1)
            with self.lock:
                self.counted -= result['outcome'] == 'not built'
                with RESULTS.open('a', encoding='utf-8') as file:
                    file.write(json.dumps(result) + '\n')
                print(f"{mutation.key}: {result['outcome']} {result.get('how', '')} {result.get('case', '')}"
                      f" {result['seconds']} s", flush=True)


if __name__ == '__main__':
    main()
