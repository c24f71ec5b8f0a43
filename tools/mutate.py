"""What tools/mutate.sh does: tries the changes that mutations.py finds."""
import argparse
import collections
import contextlib
import difflib
import fnmatch
import hashlib
import json
import os
import pathlib
import re
import shutil
import signal
import subprocess
import sys
import time

from mutations import mutations

ROOT = pathlib.Path(__file__).resolve().parents[1]
HOME = ROOT / 'build' / 'mutate'
COPY = HOME / 'tree'            # the sources, one of them changed
BUILD = COPY / 'build' / 'checked'
BUILT = BUILD / 'bin'
UNCHANGED = HOME / 'unchanged'  # what was built from the sources as they are
RESULTS = HOME / 'results.jsonl'
OUTPUT = HOME / 'output.log'
MARK = 'QX_MUTATE_RUN'          # in the environment of everything that a test starts

PROGRAMS = ['unit_tests', 'platform_tests', 'exception_tests', 'dialog_tests', 'session_tests']
UNKNOWN_SECONDS = 10            # what a test is taken to last before it has run
SLOW = 30                       # seconds that a test may take, and five times what it took, before it counts as hanging


# ---- the copy and its builds -----------------------------------------------------------------------------------------

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


def build(program):
    """Whether it can be built, and if not, the first error."""
    made = subprocess.run(['cmake', '--build', BUILD, '--target', program], stdout=subprocess.PIPE,
                          stderr=subprocess.STDOUT, encoding='utf-8', errors='replace')
    errors = [line for line in made.stdout.splitlines() if re.search(r'error|undefined reference', line)]
    return made.returncode == 0, errors[0] if errors else made.stdout[-300:]


def build_unchanged():
    subprocess.run(['cmake', '--preset', 'checked'], cwd=COPY, check=True, stdout=subprocess.DEVNULL)
    for program in PROGRAMS:
        good, error = build(program)
        if not good:
            sys.exit(f'mutate.sh: {program} cannot be built: {error}')
    # What a session looks for stands beside the module.
    shutil.rmtree(UNCHANGED, ignore_errors=True)
    shutil.copytree(BUILT, UNCHANGED)


@contextlib.contextmanager
def applied(mutation):
    file = COPY / mutation.file
    source = file.read_text(encoding='utf-8')
    try:
        file.write_text(mutation.apply(source), encoding='utf-8')
        yield
    finally:
        file.write_text(source, encoding='utf-8')


# ---- which test can reach what ---------------------------------------------------------------------------------------

# By file of src, without its ending: the tests that run it, in this order, after the one of the file's name.
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
    ('phonebook/ui/add*', 'ui.add_recipients ui.phone_book_changed'),
    ('phonebook/ui/button_rules', 'ui.group_dialog ui.add_recipients ui.edit_phone_book'),
    ('phonebook/ui/details*', 'ui.add_recipients ui.group_dialog ui.edit_phone_book'),
    ('phonebook/ui/e*', 'ui.entry_dialog ui.csv_session ui.phone_book_changed ui.edit_phone_book'),
    ('phonebook/ui/group*', 'ui.announcements ui.group_dialog ui.edit_phone_book'),
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
    ('entry/*', 'host.send_fax_session ui.send_session ui.guest_session ui.two_sessions ui.picture_button'
                ' ui.setup_page ui.fax_job_session ui.failing_calls'),
    # Texts, captions and help topics of tables.
    ('[dpe]*/*', 'platform.string_library platform.help_pages'),
    ('pages/*', 'ui.help'),
]


class Test:
    def __init__(self, name, program, seconds):
        self.name, self.program = name, program
        self.file = name.split('.')[1]
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
            yield Test(test['name'], program, seconds.get(test['name'], UNKNOWN_SECONDS))


def tests_of(unit, tests):
    """Those that can reach a unit, in the order in which they are to run."""
    found = {test.name: test for test in tests}
    named = [test.name for test in tests if test.is_named_after(unit)]
    named += [name for pattern, names in REACH if fnmatch.fnmatchcase(unit, pattern) for name in names.split()]
    if unknown := set(named) - set(found):
        sys.exit(f'mutate.sh: there is no test {" ".join(sorted(unknown))}')
    return [found[name] for name in dict.fromkeys(named)]


class Includes:
    """Who includes whom."""

    def __init__(self):
        self.includers = collections.defaultdict(set)
        for folder, top in [('src', 'src'), ('tests', 'tests'), ('host', '.'), ('admin', '.')]:
            for file in (ROOT / folder).rglob('*'):
                if file.suffix in {'.cpp', '.h'}:
                    for name in re.findall(r'^#include "([^"]+)"', file.read_text(encoding='utf-8'), re.MULTILINE):
                        self.includers[name].add(str(file.relative_to(ROOT / top)))

    def units(self, header):
        """How many .cpp files a change of a header has to be compiled with."""
        seen, todo = set(), [header]
        while todo:
            new = self.includers[todo.pop()] - seen
            seen |= new
            todo += new
        return sum(name.endswith('.cpp') for name in seen)


# ---- running them ----------------------------------------------------------------------------------------------------

def end_what_is_left():
    """Ends what a test has started and left behind, and only that."""
    for process in pathlib.Path('/proc').glob('[0-9]*'):
        with contextlib.suppress(OSError):
            if f'{MARK}={os.getpid()}'.encode() in (process / 'environ').read_bytes().split(b'\0'):
                os.kill(int(process.name), signal.SIGKILL)


def run(test, binaries, case='*'):
    """(how it failed or None, the case that failed)"""
    environment = {**os.environ, 'QX_SOURCE_DIR': str(COPY), 'QX_BINARY_DIR': str(binaries), MARK: str(os.getpid())}
    command = ['wine64', binaries / 'tests' / f'{test.program}.exe', test.file, '--gtest_fail_fast',
               f'--gtest_filter={case}']
    (binaries / 'qxfaxui.dll').touch() # a session installs what is newer than the driver that is there
    begun = time.monotonic()
    # Into a file: what is left behind by a test would keep a pipe open.
    with OUTPUT.open('wb') as output:
        process = subprocess.Popen(command, cwd=COPY, env=environment, stdin=subprocess.DEVNULL, stdout=output,
                                   stderr=subprocess.STDOUT, start_new_session=True)
        try:
            status = process.wait(timeout=SLOW + 5 * test.seconds if case == '*' else 3 * SLOW)
        except subprocess.TimeoutExpired:
            status = None
            process.kill()
            process.wait()
    if status == 0:
        if case == '*':
            test.seconds = time.monotonic() - begun
        return None, None
    end_what_is_left()
    cases = re.findall(r'^\[ +(RUN|FAILED|OK) +\] ([^\s,]+)', OUTPUT.read_text(errors='replace'), re.MULTILINE)
    failed = [name for what, name in cases if what == 'FAILED']
    how = 'hung' if status is None else 'failed' if failed else 'crashed'
    return how, failed[0] if failed else cases[-1][1] if cases else case


def notices(test):
    """How and with which case a test notices what was changed, or (None, None)."""
    how, case = run(test, BUILT)
    # The machine may be busy, the prefix spoilt by what crashed: it has to be the change.
    if how and run(test, BUILT, case)[0] and run(test, UNCHANGED, case)[0] is None:
        return how, f'{test.name} {case}'
    if how:
        print(f'  {test.name} {case} {how}, but not because of the change', flush=True)
    return None, None


def tried(mutation, tests):
    """What comes out, as a line of the results."""
    result = {'key': mutation.key, 'line': mutation.line, 'tests': []}
    built = set()
    with applied(mutation):
        for test in tests:
            if test.program not in built:
                good, error = build(test.program)
                if not good:
                    return {**result, 'outcome': 'not built', 'error': error}
                built.add(test.program)
            result['tests'].append(test.name)
            how, case = notices(test)
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
                    includes.units(str(file.relative_to(ROOT / 'src'))) <= arguments.units:
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
    for option, default in [('seed', 1), ('count', 20), ('units', 40)]:
        parser.add_argument(f'--{option}', type=int, default=default)
    for option in ['all', 'again', 'report']:
        parser.add_argument(f'--{option}', action='store_true')
    parser.add_argument('files', nargs='*')
    arguments = parser.parse_args()

    if not arguments.report and os.environ.get('QX_WINE_SESSION', '') != str(COPY / 'build' / 'wine' / 'en'):
        update_copy()
        os.execv(COPY / 'tools' / 'with-wine.sh', ['with-wine.sh', sys.executable, '-B', *sys.argv])

    changes, results = sample(arguments), read_results()
    if not arguments.report:
        build_unchanged()
        try_changes(arguments, changes, results, list(tests_of_the_build()))
    report(changes, results)


def try_changes(arguments, changes, results, tests):
    built = 0
    for mutation in changes:
        if built == arguments.count:
            break
        outcome = results.get(mutation.key, {}).get('outcome')
        if outcome is None or outcome == 'unnoticed' and arguments.again:
            outcome = try_change(arguments, mutation, results, tests)
        built += outcome != 'not built'


def try_change(arguments, mutation, results, tests):
    begun = time.monotonic()
    unit = str(pathlib.PurePath(mutation.file).relative_to('src').with_suffix(''))
    result = tried(mutation, tests if arguments.all else tests_of(unit, tests))
    result['seconds'] = round(time.monotonic() - begun, 1)
    results[mutation.key] = result
    with RESULTS.open('a', encoding='utf-8') as file:
        file.write(json.dumps(result) + '\n')
    print(f"{mutation.key}: {result['outcome']} {result.get('how', '')} {result.get('case', '')}"
          f" {result['seconds']} s", flush=True)
    return result['outcome']


if __name__ == '__main__':
    main()
