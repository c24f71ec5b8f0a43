"""Every example of the administrator's guide, run as it stands there."""

import re
import shlex
import shutil
import unittest

from admin_tool import BINARIES, CONTACTS, DONE, SOURCES, ToolTest, book, entry, group, run

GUIDE = (SOURCES / "docs/administrators.md").read_text(encoding="utf-8")
PRINTER = "QX MFP Fax"
GUID = "{3C0D5B1E-5B0A-4E5B-9C55-0D2C1B9E7A10}"


def blocks(language):
    for indent, text in re.findall(rf"^( *)```{language}\n(.*?)^ *```$", GUIDE, re.MULTILINE | re.DOTALL):
        yield "".join(line.removeprefix(indent) for line in text.splitlines(keepends=True))


class Guide(ToolTest):
    PROVISION = []

    def setUp(self):
        super().setUp()
        self.ask("configure", "--printer", self.printer, "--guid", self.guid) # the guide takes it back at its end

    def own(self, text):
        """With the printer and the settings of this test."""
        return text.replace(PRINTER, self.printer).replace(GUID, self.guid)

    def prepare(self):
        shutil.copy(CONTACTS / "phone_2_1.vcf", self.folder / "contacts.vcf")
        shutil.copy(CONTACTS / "web_portal.csv", self.folder / "contacts.csv")
        shutil.copy(CONTACTS / "desktop_mail_german.csv", self.folder / "german.csv")
        (self.folder / "list.csv").write_text("Who,Dial,Firm\nAnn,555-0100,Acme\n", encoding="utf-8")
        department = book(entry("Ann Lee", "555-0100", identifier=0), group("Sales", [0], 1))
        (self.folder / "department.xml").write_text(department, encoding="utf-8")
        (self.folder / "department.xml.bak").write_text(department.replace("Sales", "Old"), encoding="utf-8")

    def test_every_command_is_done(self):
        self.prepare()
        commands = [line for block in blocks("bat") for line in block.splitlines()]
        self.assertGreater(len(commands), 20)
        for command in commands:
            program, *words = shlex.split(self.own(command))
            with self.subTest(command=command):
                self.assertIn(program, ("qxfaxadm", "reg"))
                path = BINARIES / "qxfaxadm.exe" if program == "qxfaxadm" else program
                done = run(path, *words, folder=self.folder)
                self.assertEqual(done.returncode, DONE, done.stdout + done.stderr)
        self.assertEqual(self.user_value("QX-FAX\\Default", "SenderCompany"), None) # the last commands took it back

    def test_the_reg_file_sets_defaults(self):
        files = list(blocks("reg"))
        self.assertEqual(len(files), 1)
        path = self.folder / "defaults.reg"
        path.write_text(self.own(files[0]), encoding="utf-16")
        self.assertEqual(run("reg", "import", path).returncode, DONE)
        values = self.ask("defaults", "get", "--printer", self.printer)["values"]
        self.assertEqual({name: value["takenOver"] for name, value in values.items()},
                         {"SenderCompany": "Harbour Books", "ApplyDefaults": 1})
        self.ask("defaults", "clear", "--printer", self.printer)

    def test_the_phone_book_is_one(self):
        files = list(blocks("xml"))
        self.assertEqual(len(files), 1)
        path = self.folder / "book.xml"
        path.write_text(files[0], encoding="utf-8")
        checked = self.ask("phonebook", "check", path)["books"][0]
        self.assertEqual((checked["entries"], checked["groups"], checked["notes"]), (1, 1, []))
        listed = self.ask("phonebook", "list", path)["items"]
        self.assertEqual(listed[1], {"id": 1, "group": "Sales", "members": ["Ann Lee"]})


if __name__ == "__main__":
    unittest.main()
