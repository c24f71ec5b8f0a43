"""Running the administrator's tool, and a printer of the test's own for it."""

import json
import os
import pathlib
import sys
import tempfile
import unittest

SOURCES = pathlib.Path(os.environ["QX_SOURCE_DIR"])
BINARIES = pathlib.Path(os.environ["QX_BINARY_DIR"])
sys.path.insert(0, str(SOURCES / "tests/support"))
from windows_program import run

CONTACTS = SOURCES / "tests/data/contacts"

DONE, REFUSED, WRONG_USAGE = 0, 1, 2


def tool(*arguments, folder=None):
    return run(BINARIES / "qxfaxadm.exe", *arguments, folder=folder)


def faxhost(*arguments):
    return run(BINARIES / "faxhost.exe", *arguments)


class ToolTest(unittest.TestCase):
    """Each class has a printer, provisioned with --no-help unless PROVISION says otherwise, and each test a folder."""

    PROVISION = ["--no-help"]

    @classmethod
    def setUpClass(cls):
        cls.printer = f"QX admin test {cls.__name__} {os.getpid()}"
        cls.guid = f"{{admin-{cls.__name__}-{os.getpid()}}}"
        done = faxhost("provision", "--printer", cls.printer, "--guid", cls.guid, *cls.PROVISION)
        if done.returncode != 0:
            raise RuntimeError(done.stderr)
        cls.addClassCleanup(cls.clean_up)
        if "--no-help" not in cls.PROVISION:  # a run with an earlier build may have left its own
            tool("traces", "clear", "--printer", cls.printer, "--help-files")

    @classmethod
    def clean_up(cls):
        faxhost("unprovision", "--printer", cls.printer)
        run("reg", "delete", rf"HKCU\Software\Quillmarsh\{cls.guid}", "/f")

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)

    def ask(self, *arguments, code=DONE):
        """The tool's JSON answer."""
        done = tool(*arguments, "--json", folder=self.folder)
        self.assertEqual(done.returncode, code, done.stdout + done.stderr)
        answer = json.loads(done.stdout)
        self.assertEqual(answer["done"], code == DONE)
        return answer

    def refused(self, *arguments, code=REFUSED):
        """The only reason why the tool refuses, as people read it."""
        done = tool(*arguments, folder=self.folder)
        self.assertEqual(done.returncode, code, done.stdout + done.stderr)
        return done.stderr.strip()

    def user_value(self, key, name):
        """A value of the user's registry as reg prints it, or None."""
        done = run("reg", "query", rf"HKCU\Software\Quillmarsh\{self.guid}\{key}", "/v", name)
        lines = [line for line in done.stdout.splitlines() if line.strip().startswith(name)]
        return lines[0].split(None, 2)[2] if done.returncode == 0 and lines else None

    def findings(self, code=DONE):
        """What doctor finds: (about, state) -> sentences."""
        found = {}
        for finding in self.ask("doctor", "--printer", self.printer, code=code)["findings"]:
            found.setdefault((finding["about"], finding["state"]), []).append(finding["what"])
        return found


def entry(name, number, company="", identifier=0):
    return f'<qxfax_pbentry entry_id="{identifier}" name="{name}" fax_number="{number}" company_name="{company}"/>'


def group(name, members, identifier):
    ids = "".join(f"<m_entry_id>{member}</m_entry_id>" for member in members)
    return f'<qxfax_group group_name="{name}" entry_id="{identifier}"><member_list>{ids}</member_list></qxfax_group>'


def book(*items):
    return ("<device><software><component><name>QX Fax Address Book</name><qxfax_phonebook>" + "".join(items) +
            "</qxfax_phonebook></component></software></device>")


