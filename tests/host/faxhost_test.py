"""The stand-in driver from the command line: what it installs, plays, prints and answers."""

import json
import os
import pathlib
import struct
import sys
import tempfile
import unittest

BINARIES = pathlib.Path(os.environ["QX_BINARY_DIR"])
SOURCES = pathlib.Path(os.environ["QX_SOURCE_DIR"])
sys.path.insert(0, str(SOURCES / "tests/support"))
from windows_program import run

PRINTER = f"QX faxhost test {os.getpid()}"
GUID = f"{{faxhost-test-{os.getpid()}}}"

SENT, FAILED, CANCELLED = 0, 1, 2


def faxhost(*arguments):
    return run(BINARIES / "faxhost.exe", *arguments, timeout=60)


class FaxHostTest(unittest.TestCase):
    @classmethod
    def tearDownClass(cls):
        faxhost("unprovision", "--printer", PRINTER)

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)

    def provision(self, *options):
        done = faxhost("provision", "--printer", PRINTER, "--guid", GUID, *options)
        self.assertEqual((done.returncode, done.stderr), (0, ""))

    def send(self, script, *options):
        file = self.folder / "user.txt"
        file.write_text(script, encoding="utf-8")
        return faxhost("send", "--printer", PRINTER, "--script", file, "--shots", self.folder, *options)

    def sent_job(self, script):
        done = self.send(script)
        self.assertEqual((done.returncode, done.stderr), (SENT, ""))
        return json.loads(done.stdout)


class Sending(FaxHostTest):
    def test_the_job_is_printed_as_it_was_typed(self):
        self.provision("--billing-code-enabled", 1)
        job = self.sent_job(
            "page 1\n"
            "type 301 Jürgen 山田 שלום\n"
            "type 262 (030)555-01#2*3,4\n"
            "type 263 Ärzte & Co.\n"
            "check 215\n"
            "type 217 first\\nsecond\n"
            "type 225 A \"subject\"\n"
            "type 276 0042\n"
            "press send\n")
        self.assertEqual(job["outcome"], "sent")
        self.assertEqual(job["Cancelled"], 0)
        self.assertEqual(job["Recipients"], [{"Name": "Jürgen 山田 שלום", "FaxNumber": "(030)555-01#2*3,4",
                                              "Company": "Ärzte & Co.", "Id": job["Recipients"][0]["Id"]}])
        self.assertEqual(job["AddCoverPage"], 1)
        self.assertEqual(job["CoverPageNotes"], "first\r\nsecond")
        self.assertEqual(job["CoverPageSubject"], 'A "subject"')
        self.assertEqual(job["BillingCode"], "0042")

    def test_the_example_sends_to_two_recipients_and_takes_pictures(self):
        self.provision()
        shots = self.folder / "shots"
        done = faxhost("send", "--printer", PRINTER, "--shots", shots,
                       "--script", SOURCES / "host/scripts/two_recipients.txt")
        self.assertEqual((done.returncode, done.stderr), (SENT, ""))
        job = json.loads(done.stdout)
        self.assertEqual([recipient["Name"] for recipient in job["Recipients"]], ["Ann Lee", "Jürgen Weiß"])
        self.assertEqual(job["AddCoverPage"], 1)
        self.assertEqual(job["SenderName"], "Nora Fields")
        for name in "setup", "typed-recipient", "fax-job":
            picture = (shots / f"{name}.png").read_bytes()
            self.assertEqual(picture[:8], b"\x89PNG\r\n\x1a\n", name)
            width, height = struct.unpack(">II", picture[16:24])
            self.assertGreater(width, 300, name)
            self.assertGreater(height, 300, name)

    def test_cancel_answers_2_and_says_so(self):
        self.provision()
        done = self.send("press cancel\n")
        self.assertEqual((done.returncode, done.stderr), (CANCELLED, ""))
        job = json.loads(done.stdout)
        self.assertEqual((job["outcome"], job["Cancelled"]), ("cancelled", 1))

    def test_a_device_that_is_off_is_told_once_before_the_sheet(self):
        self.provision("--pc-fax-send-operational", 0)
        job = self.sent_job(
            "answer ok may be disabled\n"
            "wait send\n"
            "page 1\n"
            "type 262 5550100\n"
            "press send\n")
        self.assertEqual(job["PcFaxSendOperational"], 0)

    def test_without_guid_nothing_of_the_user_is_read(self):
        self.provision("--no-guid")
        job = self.sent_job("answer ok\npage 1\ntype 262 1\npress send\n")
        self.assertEqual(job["NotificationAvailable"], 0)

    def test_the_text_library_can_be_left_out(self):
        self.provision("--no-text-library")
        job = self.sent_job("page 1\ntype 262 1\npress send\n")
        self.assertEqual(job["Strings"], [])
        self.provision()
        job = self.sent_job("page 1\ntype 262 1\npress send\n")
        self.assertNotEqual(job["Strings"], [])


class Installing(FaxHostTest):
    def test_unprovision_takes_everything_back(self):
        self.provision()
        self.assertEqual(faxhost("unprovision", "--printer", PRINTER).returncode, 0)
        self.assertEqual(faxhost("unprovision", "--printer", PRINTER).returncode, FAILED)
        again = faxhost("send", "--printer", PRINTER)
        self.assertEqual(again.returncode, FAILED)
        self.assertIn(f"no such printer: '{PRINTER}'", again.stderr)

    def test_provision_twice_sets_the_printer_up_anew(self):
        self.provision("--billing-code-enabled", 1)
        self.provision("--billing-code-enabled", 0)
        self.assertEqual(self.sent_job("page 1\ntype 262 1\npress send\n")["BillingCodeEnabled"], 0)

    def test_a_folder_without_the_module_is_refused(self):
        done = faxhost("provision", "--printer", PRINTER, "--module-folder", self.folder)
        self.assertEqual(done.returncode, FAILED)
        self.assertIn("module not found", done.stderr)


class Failing(FaxHostTest):
    def assert_fails(self, done, message):
        self.assertEqual(done.returncode, FAILED)
        self.assertEqual(done.stdout, "")
        self.assertIn(message, done.stderr)

    def test_a_printer_that_does_not_exist(self):
        self.assert_fails(faxhost("send", "--printer", "nobody's"), "no such printer: 'nobody's'")

    def test_a_module_that_does_not_exist(self):
        self.provision()
        self.assert_fails(self.send("press cancel", "--module", self.folder / "none.dll"), "cannot load the module")

    def test_a_script_that_does_not_exist(self):
        self.provision()
        self.assert_fails(faxhost("send", "--printer", PRINTER, "--script", self.folder / "none.txt"),
                          "cannot read the script")

    def test_a_line_that_is_not_understood_is_named_before_anything_happens(self):
        self.provision()
        self.assert_fails(self.send("# a comment\n\njump 1\n"), "user.txt:3: unknown action 'jump'")

    def test_a_step_that_cannot_be_done_is_named_and_the_dialogs_close(self):
        self.provision()
        for line, why in (("press 999", "there is no control 999"), ("page 3", "there is no page 2"),
                          ("press 209", "control 209 is disabled")):
            with self.subTest(line):
                self.assert_fails(self.send("page 1\n" + line + "\n"), "user.txt:2: " + why)

    def test_a_script_that_ends_too_early(self):
        self.provision()
        self.assert_fails(self.send("page 1\n"), "neither sent nor cancelled")

    def test_options_that_do_not_exist(self):
        self.assert_fails(faxhost("send", "--fast"), "--fast")
        self.assert_fails(faxhost(), "subcommand")


if __name__ == "__main__":
    unittest.main(verbosity=2)
