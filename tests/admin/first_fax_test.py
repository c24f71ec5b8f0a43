"""From a bare printer to a fax that goes to one of the user's contacts: the administrator's tool, then the dialogs."""

import json
import os
import subprocess
import time
import unittest

from admin_tool import BINARIES, CONTACTS, DONE, REFUSED, ToolTest, faxhost, run
from windows_program import WINE

PICK_THE_SECOND = """
page 1
press 271
wait 250
rows 250 2
press 209
press ok
wait 301
press send
"""

# The phone book is empty when the dialog opens.
PICK_WHAT_COMES = """
page 1
press 271
wait 250
picture open
rows 250 2
press 209
press ok
wait 301
press send
"""


class FirstFax(ToolTest):
    # As after the installation of the driver: its files are there, and nothing else.
    PROVISION = ["--no-guid"]

    def test_goes_to_a_contact_that_was_imported(self):
        problems = self.ask("doctor", "--printer", self.printer, code=REFUSED)["problems"]
        self.assertEqual(len(problems), 1)
        self.assertIn("QXRestrictedUserGuid", problems[0])

        self.ask("configure", "--printer", self.printer, "--guid", self.guid, "--pcfax-send-operational", 1)
        self.ask("doctor", "--printer", self.printer)
        imported = self.ask("phonebook", "import", CONTACTS / "phone_2_1.vcf", "--printer", self.printer,
                            "--international", "00")
        self.assertEqual(imported["added"], 2)
        phone_book = self.ask("doctor", "--printer", self.printer)["phoneBook"]
        self.addCleanup(lambda: os.unlink(run("winepath", "-u", phone_book).stdout.strip()))

        script = self.folder / "user.txt"
        script.write_text(PICK_THE_SECOND, encoding="utf-8")
        sent = faxhost("send", "--printer", self.printer, "--script", script, "--shots", self.folder)
        self.assertEqual((sent.returncode, sent.stderr), (DONE, ""))
        recipients = json.loads(sent.stdout)["Recipients"]
        self.assertEqual([(one["Name"], one["FaxNumber"], one["Company"]) for one in recipients],
                         [("Jürgen Weiß", "00493055501", "Büro")])

        listed = self.ask("traces", "list", "--printer", self.printer)["traces"]
        self.assertIn("recents", [trace["kind"] for trace in listed])
        self.ask("traces", "clear", "--printer", self.printer, "--recents")
        listed = self.ask("traces", "list", "--printer", self.printer)["traces"]
        self.assertNotIn("recents", [trace["kind"] for trace in listed])


class OpenDialog(ToolTest):
    def test_shows_a_contact_that_is_imported_meanwhile(self):
        phone_book = self.ask("doctor", "--printer", self.printer, code=REFUSED)["phoneBook"]  # there is no help
        script = self.folder / "user.txt"
        script.write_text(PICK_WHAT_COMES, encoding="utf-8")
        user = subprocess.Popen([WINE, BINARIES / "faxhost.exe", "send", "--printer", self.printer,
                                 "--script", script, "--shots", self.folder],
                                stdout=subprocess.PIPE, stderr=subprocess.PIPE, stdin=subprocess.DEVNULL,
                                encoding="utf-8")
        self.addCleanup(user.kill)
        deadline = time.monotonic() + 60
        while not (self.folder / "open.png").exists() and time.monotonic() < deadline and user.poll() is None:
            time.sleep(0.1)
        imported = self.ask("phonebook", "import", CONTACTS / "phone_2_1.vcf", "--printer", self.printer,
                            "--international", "00")
        self.addCleanup(lambda: os.unlink(run("winepath", "-u", phone_book).stdout.strip()))
        self.assertEqual(imported["added"], 2)
        output, errors = user.communicate(timeout=100)
        self.assertEqual((user.returncode, errors), (DONE, ""))
        recipients = json.loads(output)["Recipients"]
        self.assertEqual([(one["Name"], one["FaxNumber"]) for one in recipients], [("Jürgen Weiß", "00493055501")])


if __name__ == "__main__":
    unittest.main()
