"""The administrator's tool from the command line: what each command does, refuses and tells."""

import os
import subprocess
import unittest

from admin_tool import (BINARIES, CONTACTS, DONE, REFUSED, WRONG_USAGE, ToolTest, book, entry, group, run, tool)


class CommandLine(unittest.TestCase):
    def test_wrong_usage_is_told_and_answers_2(self):
        for words in [], ["polish"], ["phonebook"], ["phonebook", "import"], ["configure"], ["doctor"], ["list", "--colour"]:
            done = tool(*words)
            self.assertEqual(done.returncode, WRONG_USAGE, words)
            self.assertIn("--help", done.stderr, words)

    def test_help_is_no_failure(self):
        done = tool("--help")
        self.assertEqual(done.returncode, DONE)
        self.assertIn("phonebook", done.stdout)


class PhoneBooks(ToolTest):
    def book_file(self, *items, name="book.xml"):
        path = self.folder / name
        path.write_text(book(*items), encoding="utf-8")
        return path

    def rows(self, *arguments, code=DONE):
        answer = self.ask("phonebook", "import", *arguments, code=code)
        return [(row["name"], row.get("number", row["outcome"])) for row in answer["rows"]]

    def test_import_adds_to_a_new_book_and_a_second_time_adds_nothing(self):
        path = self.folder / "new.xml"
        answer = self.ask("phonebook", "import", CONTACTS / "desktop_mail_german.csv", "--code-page", "windows-1252",
                          "--international", "00", "--book", path)
        self.assertEqual((answer["added"], answer["duplicates"]), (2, 0))
        listed = self.ask("phonebook", "list", path)["items"]
        self.assertEqual([(item["name"], item["faxNumber"], item["company"]) for item in listed],
                         [("Jürgen Weiß", "0049(30)555-01", "Büro & Söhne"), ("Nora Feld", "03055503", "")])
        again = self.ask("phonebook", "import", CONTACTS / "desktop_mail_german.csv", "--code-page", "1252",
                         "--international", "00", "--book", path)
        self.assertEqual((again["added"], again["duplicates"], again["changes"]), (0, 2, []))

    def test_a_dry_run_writes_nothing(self):
        path = self.folder / "new.xml"
        answer = self.ask("phonebook", "import", CONTACTS / "web_portal.csv", "--book", path, "--dry-run")
        self.assertEqual(answer["added"], 2)
        self.assertFalse(path.exists())

    def test_programs_exports_import(self):
        book_option = ["--book", self.folder / "b.xml", "--dry-run", "--international", "011"]
        self.assertEqual(self.rows(CONTACTS / "desktop_mail_english.csv", *book_option, code=REFUSED),
                         [("Ann Lee", "0111(555)010-0100"), ("José M. Ortiz", "(555)010-0177"),
                          ("Vanity Number", "refused")])
        self.assertEqual(self.rows(CONTACTS / "free_mail_program.csv", *book_option),
                         [("Ann Lee", "555-0100"), ("Roe, Ben", "5550100103")])
        self.assertEqual(self.rows(CONTACTS / "web_address_book.csv", *book_option),
                         [("Ann Lee", "555-0100"), ("Ann Lee", "555-0104"), ("山田 太郎", "03-5550-0105")])
        self.assertEqual(self.rows(CONTACTS / "web_portal.csv", *book_option),
                         [("Ann Lee", "555-0100"), ("שרה כהן", "03-5550106")])
        self.assertEqual(self.rows(CONTACTS / "spreadsheet.csv", *book_option, code=REFUSED),
                         [("Ann", "0305550100"), ("Ben", "refused"), ("Cy", "refused"), ("Dee", "0305550107"),
                          ("Eve", "refused")])
        self.assertEqual(self.rows(CONTACTS / "phone_2_1.vcf", *book_option),
                         [("Jürgen Weiß", "011493055501"), ("Eva Müller", "03055509")])
        self.assertEqual(self.rows(CONTACTS / "desktop_3_0.vcf", *book_option),
                         [("Ann Lee", "01115550100110"), ("Ann Lee", "0111(555)010-0100")])

    def test_columns_are_named_one_by_one(self):
        path = self.folder / "own.csv"
        path.write_text("Rufname;Sippe;Nummer;Haus\nAnn;Lee;555-0100;Acme\n", encoding="utf-8")
        options = ["--book", self.folder / "b.xml", "--dry-run"]
        self.assertIn('has "Rufname", "Sippe"', self.refused("phonebook", "import", path, *options))
        self.assertEqual(self.rows(path, "--name", "rufname", "--name", "Sippe", "--fax", "Nummer", "--company", "Haus",
                                   *options), [("Ann Lee", "555-0100")])

    def test_the_standards_own_cards_import(self):
        options = ["--book", self.folder / "b.xml", "--dry-run", "--country", "1"]
        self.assertEqual(self.rows(CONTACTS / "standard_3_0.vcf", *options),
                         [("Frank Dawson", "919-676-9564"), ("Tim Howes", "415-528-4164")])
        self.assertEqual(self.rows(CONTACTS / "standard_4_0.vcf", *options, code=REFUSED),
                         [("Fax in Four", "555-555-5555"), ("Fax in Four", "refused")])

    def test_each_change_and_each_refusal_names_file_and_line(self):
        done = tool("phonebook", "import", CONTACTS / "spreadsheet.csv", "--book", self.folder / "b.xml", "--prefix", "9,")
        self.assertEqual(done.returncode, REFUSED)
        self.assertIn('spreadsheet.csv:3: Ann, 9,0305550100: was "="0305550100"" (wrapping taken off, outside line put '
                      'before)', done.stdout)
        self.assertIn('spreadsheet.csv:4: Ben: "4,93055E+10": the fax number has been rounded by a spreadsheet: its last '
                      'digits are lost.', done.stderr)
        self.assertIn('spreadsheet.csv:7: Eve: "030 5550108, 5550109": the fax number looks like two numbers.', done.stderr)

    def test_a_file_that_cannot_be_read_changes_nothing_of_the_book(self):
        path = self.folder / "new.xml"
        for file, why in ((CONTACTS / "desktop_mail_german.csv", "--code-page"), (self.folder / "none.csv", "annot read"),
                          (self.book_file(), "phonebook merge")):
            said = self.refused("phonebook", "import", CONTACTS / "web_portal.csv", file, "--book", path)
            self.assertIn(why, said)
        self.assertFalse(path.exists())
        self.assertIn("no encoding", self.refused("phonebook", "import", CONTACTS / "web_portal.csv", "--code-page", "x",
                                                  "--book", path, code=WRONG_USAGE))
        self.assertIn("country", self.refused("phonebook", "import", CONTACTS / "web_portal.csv", "--trunk", "0", "--book",
                                              path, code=WRONG_USAGE))

    def test_a_damaged_book_is_not_saved_over(self):
        path = self.folder / "damaged.xml"
        path.write_text("<device><software>", encoding="utf-8")
        self.assertIn("damaged", self.refused("phonebook", "import", CONTACTS / "web_portal.csv", "--book", path))
        self.assertEqual(path.read_text(encoding="utf-8"), "<device><software>")

    def test_a_full_book_takes_no_more(self):
        path = self.book_file(*(entry(f"N{i}", f"1{i}", identifier=i) for i in range(9999)))
        answer = self.ask("phonebook", "import", CONTACTS / "web_portal.csv", "--book", path, code=REFUSED)
        self.assertEqual((answer["added"], answer["full"]), (1, 1))

    def test_out_writes_what_the_dialog_imports(self):
        out = self.folder / "out.csv"
        self.ask("phonebook", "import", CONTACTS / "web_address_book.csv", "--out", out)
        self.assertEqual(out.read_bytes().decode("utf-16"),
                         '"Name","Fax Number","Company Name"\r\n"Ann Lee","555-0100","Harbour Books"\r\n'
                         '"Ann Lee","555-0104","Harbour Books"\r\n"山田 太郎","03-5550-0105",""\r\n')
        self.assertIn("--overwrite", self.refused("phonebook", "import", CONTACTS / "web_portal.csv", "--out", out))

    def test_export_writes_the_entries_as_the_dialog_does(self):
        path = self.book_file(entry("Ann", "1", "A", 0), group("G", [0], 1))
        self.assertIn("1 group is left out", tool("phonebook", "export", path, "--out", self.folder / "e.csv").stdout)
        self.assertEqual((self.folder / "e.csv").read_bytes().decode("utf-16"),
                         '"Name","Fax Number","Company Name"\r\n"Ann","1","A"\r\n')

    def test_check_tells_what_the_dialogs_would_not_show(self):
        good = self.book_file(entry("Ann", "1", identifier=0), group("G", [0], 1))
        answer = self.ask("phonebook", "check", good)
        self.assertEqual(answer["books"][0] | {"path": "", "bytes": 0},
                         {"path": "", "state": "good", "bytes": 0, "entries": 1, "groups": 1, "notes": []})
        bad = self.book_file(entry("Ann", "1 2", identifier=0), '<qxfax_pbentry name="Ben" fax_number="2"/>',
                             '<qxfax_group entry_id="5"/>', entry("Cy", "3", identifier=6), entry("cy", "3", identifier=7),
                             group("G", [6, 99], 8), name="bad.xml")
        answer = self.ask("phonebook", "check", bad, self.folder / "none.xml", code=REFUSED)
        self.assertEqual([problem.split("bad.xml: ")[-1] for problem in answer["problems"][:3]],
                         ['the entry "Ann" has the fax number "1 2", which the dialogs do not accept, and is not shown',
                          'the entry "Ben" has no entry_id, and is not shown', "a group has no name, and is not shown"])
        self.assertIn("there is no phone book", answer["problems"][3])
        notes = " ".join(answer["books"][0]["notes"])
        self.assertIn('"cy" is there twice', notes)
        self.assertIn("names 1 entry that the phone book does not hold", notes)

    def test_merge_adds_entries_and_joins_groups(self):
        mine = self.book_file(entry("Ann", "1", identifier=0), group("Sales", [0], 1), name="mine.xml")
        other = self.book_file(group("sales", [3, 4], 9), entry("ANN", "1", identifier=3), entry("Ben", "2", identifier=4),
                               group("New", [4], 5), name="other.xml")
        answer = self.ask("phonebook", "merge", other, "--book", mine)
        self.assertEqual({key: answer[key] for key in ("entriesAdded", "duplicates", "groupsAdded", "groupsExtended")},
                         {"entriesAdded": 1, "duplicates": 1, "groupsAdded": 1, "groupsExtended": 1})
        listed = self.ask("phonebook", "list", mine)["items"]
        self.assertEqual({item["group"]: item["members"] for item in listed if "group" in item},
                         {"Sales": ["Ann", "Ben"], "New": ["Ben"]})
        self.assertEqual(self.ask("phonebook", "merge", other, "--book", mine)["changes"], [])

    def test_restore_lists_copies_and_takes_one_back(self):
        path = self.book_file(entry("New", "1"), name="b.xml")
        self.book_file(entry("Old", "2"), entry("Older", "3", identifier=1), name="b.xml.bak")
        (self.folder / "b.xml.2.bak").write_text("no book", encoding="utf-8")
        copies = self.ask("phonebook", "restore", path)["copies"]
        self.assertEqual([(copy["number"], copy["state"], copy["entries"]) for copy in copies],
                         [(1, "good", 2), (2, "damaged", 0)])
        self.assertIn("no phone book that can be read", self.refused("phonebook", "restore", path, "--copy", 2))
        self.assertIn("no copy 7", self.refused("phonebook", "restore", path, "--copy", 7))
        self.ask("phonebook", "restore", path, "--copy", 1, "--dry-run")
        self.assertIn("New", path.read_text(encoding="utf-8"))
        self.ask("phonebook", "restore", path, "--copy", 1)
        self.assertIn("Older", path.read_text(encoding="utf-8"))
        self.assertIn("New", (self.folder / "b.xml.3.bak").read_text(encoding="utf-8"))


class Settings(ToolTest):
    def tearDown(self):
        tool("configure", "--printer", self.printer, "--remove")
        tool("configure", "--printer", self.printer, "--guid", self.guid, "--pcfax-send-operational", 1)

    def test_configure_sets_once_or_again_and_takes_back(self):
        words = ["configure", "--printer", self.printer, "--cover-page-lock", 1, "--cover-page-bitmap", r"C:\logo.bmp",
                 "--fax-billing-code", "0042", "--fax-billing-code-enabled", 1, "--fax-billing-code-minlength", 4]
        self.assertEqual(len(self.ask(*words, "--dry-run")["changes"]), 5)
        self.assertEqual(len(self.ask(*words)["changes"]), 5)
        self.assertEqual(self.ask(*words)["changes"], [])
        self.assertEqual(self.user_value("QXBIDIInfo", "FAX_BILLING_CODE"), "0042")
        self.assertIn(r"every fax is to have the one of", " ".join(self.findings(code=REFUSED)[("cover page", "problem")]))
        self.ask("configure", "--printer", self.printer, "--remove")
        self.assertIsNone(self.user_value("QXBIDIInfo", "FAX_BILLING_CODE"))
        self.assertEqual(self.ask("configure", "--printer", self.printer, "--remove")["changes"], [])

    def test_configure_refuses_what_would_not_be_understood(self):
        for words, why in ((["--cover-page-lock", 1], "lock without a path"),
                           (["--cover-page-lock", 1, "--cover-page-bitmap", "C:\\" + 257 * "x"], "at most 259"),
                           (["--guid", "a\\b"], "no name"), (["--guid", 240 * "x"], "too long"),
                           (["--fax-billing-code", "12a"], "digits only"), (["--fax-billing-code", 17 * "1"], "only 16"),
                           (["--fax-billing-code-minlength", 17], "no fax could be sent"),
                           (["--pcfax-send-operational", 2], "0 or 1"),
                           (["--help-cabinet", "X.CAB"], "both"),
                           (["--help-cabinet", "X.CAB", "--help-file", "QXZH.CHM"], "three parts"),
                           (["--help-cabinet", "X.CAB", "--help-file", "QXZH_XX_F1.CHM"], "no dependent file"),
                           (["--help-cabinet", "..\\X.CAB", "--help-file", "QXZH_XX_F1.CHM"], "no file name")):
            self.assertIn(why, self.refused("configure", "--printer", self.printer, *words), words)
        self.assertIn("here is no printer", self.refused("configure", "--printer", "nobody's", "--guid", "x"))

    def test_defaults_are_stored_only_as_they_are_taken_over(self):
        base = ["--printer", self.printer]
        self.addCleanup(tool, "defaults", "clear", *base)
        for assignment, why in (("SenderFaxNo=(030) 555", 'holds " "'), ("SenderVoiceNo=[1]", "ignored as a whole"),
                                ("SenderName=" + 51 * "x", "only the first 50"), ("OverlayPath=" + 259 * "x", "258"),
                                ("Resolution=3", "would count as 0"), ("NotifyMethod=0", "would count as 1"),
                                ("ShowPreview=yes", "is a number")):
            self.assertIn(why, self.refused("defaults", "set", *base, "SenderCompany=X", assignment), assignment)
        self.assertIn("no fax default", self.refused("defaults", "set", *base, "Sender=x", code=WRONG_USAGE))
        self.assertEqual(self.ask("defaults", "get", *base)["values"], {})
        self.ask("defaults", "set", *base, "SenderName=Nora Fields", "SenderFaxNo=(030)555-0199", "Resolution=2",
                 "ApplyDefaults=1")
        self.assertEqual(self.ask("defaults", "get", *base)["values"],
                         {"SenderName": {"stored": "Nora Fields", "takenOver": "Nora Fields"},
                          "SenderFaxNo": {"stored": "(030)555-0199", "takenOver": "(030)555-0199"},
                          "Resolution": {"stored": 2, "takenOver": 2}, "ApplyDefaults": {"stored": 1, "takenOver": 1}})
        self.ask("defaults", "clear", *base, "Resolution")
        self.assertNotIn("Resolution", self.ask("defaults", "get", *base)["values"])
        self.assertEqual(len(self.ask("defaults", "clear", *base)["changes"]), 3)

    def test_an_exported_file_sets_the_same(self):
        reg = self.folder / "fax.reg"
        self.ask("configure", "--printer", self.printer, "--cover-page-lock", 1, "--cover-page-bitmap", r"C:\logo.bmp",
                 "--fax-billing-code", "77", "--export", reg, "--export-gpp", self.folder / "fax.xml")
        self.assertIsNone(self.user_value("QXBIDIInfo", "FAX_BILLING_CODE"))
        self.assertEqual(run("reg", "import", reg).returncode, 0)
        self.assertEqual(self.user_value("QXBIDIInfo", "FAX_BILLING_CODE"), "77")
        self.assertIn("C:\\logo.bmp", " ".join(self.findings(code=REFUSED)[("cover page", "problem")]))
        policy = (self.folder / "fax.xml").read_text(encoding="utf-8")
        self.assertIn('name="FAX_BILLING_CODE" type="REG_SZ" value="77"', policy)
        back = self.folder / "back.reg"
        self.ask("configure", "--printer", self.printer, "--remove", "--export", back)
        self.assertIn('"FAX_BILLING_CODE"=-', back.read_bytes().decode("utf-16"))


class Doctor(ToolTest):
    PROVISION = []

    def planted(self):
        """The problems that doctor names."""
        return self.ask("doctor", "--printer", self.printer, code=REFUSED)["problems"]

    def set_data(self, *words):
        done = tool("configure", "--printer", self.printer, *words)
        self.assertEqual(done.returncode, DONE, done.stderr)

    def test_nothing_is_wrong_with_a_fresh_printer_and_nothing_is_changed(self):
        before = run("reg", "query", rf"HKCU\Software\Quillmarsh\{self.guid}", "/s").stdout
        findings = self.findings()
        self.assertIn("English", findings[("texts", "good")][0])
        self.assertIn("the names agree: QXZHENF1.CHM", findings[("help", "good")][0])
        self.assertIn("there is none yet", findings[("phone book", "good")][0])
        self.assertEqual(run("reg", "query", rf"HKCU\Software\Quillmarsh\{self.guid}", "/s").stdout, before)

    def test_each_planted_fault_is_named_with_what_to_do(self):
        key = rf"HKCU\Software\Quillmarsh\{self.guid}"
        self.addCleanup(run, "reg", "delete", key + r"\QX-FAX", "/f")

        run("reg", "add", key + r"\QX-FAX\Default", "/v", "SenderFaxNo", "/d", "(030) 555", "/f")
        run("reg", "add", key + r"\QXBIDIInfo", "/v", "FAX_BILLING_CODE", "/d", "12a", "/f")
        run("reg", "add", key + r"\QXBIDIInfo", "/v", "FAX_NOTIFICATION_AVAILABLE", "/d", "1", "/f")
        problems = "\n".join(self.planted())
        self.assertRegex(problems, r'SenderFaxNo "\(030\) 555" is ignored.*: store it anew with "defaults set"')
        self.assertRegex(problems, r'FAX_BILLING_CODE "12a" is ignored.*: set it with "configure"')
        self.assertRegex(problems, r"FAX_NOTIFICATION_AVAILABLE is no REG_DWORD.*: set it with")
        run("reg", "delete", key + r"\QX-FAX", "/f")
        self.set_data("--fax-billing-code", "", "--fax-notification-available", 1)
        self.ask("doctor", "--printer", self.printer)

    def test_a_wrong_help_name_is_named(self):
        self.addCleanup(self.set_data, "--help-cabinet", "QXFAXHLP.CAB", "--help-file", "QXZH_XX_F1.CHM")
        # As another tool would: this one refuses it.
        self.assertIn("leads to QXZHENF9.CHM", self.refused("configure", "--printer", self.printer, "--help-file",
                                                            "QXZH_XX_F9.CHM"))
        self.import_printer_data("PrinterDriverData", "GPDHelpFileName", "QXZH_XX_F9.CHM")
        self.assertRegex(self.planted()[0], "leads to QXZHENF9.CHM, but the driver's dependent file to QXZHENF1.CHM: change")
        self.set_data("--help-file", "QXZH_XX_F1.CHM", "--help-cabinet", "NONE.CAB")
        self.assertRegex(self.planted()[0], "there is no cabinet .*NONE.CAB.*: copy it there")

    def import_printer_data(self, key, name, value):
        registry = (rf"HKLM\System\CurrentControlSet\Control\Print\Printers\{self.printer}\{key}")
        self.assertEqual(run("reg", "add", registry, "/v", name, "/d", value, "/f").returncode, 0)

    def test_a_cabinet_without_the_language_is_named(self):
        other = BINARIES / "QXTEST.CAB"
        driver_folder = self.findings()[("driver", "good")][0].split(" is ")[-1]
        unix = run("winepath", "-u", driver_folder).stdout.strip()
        (self.folder / "QXZHXXF1.CHM").write_bytes(b"x")
        subprocess.run(["gcab", "--create", "--nopath", f"{unix}/{other.name}", self.folder / "QXZHXXF1.CHM"], check=True)
        self.addCleanup(lambda: os.unlink(f"{unix}/{other.name}"))
        self.addCleanup(self.set_data, "--help-cabinet", "QXFAXHLP.CAB")
        self.set_data("--help-cabinet", other.name)
        self.assertRegex(self.planted()[0], "holds no QXZHENF1.CHM, so English users have no help: add the file")

    def test_an_old_help_file_is_named_and_cleared(self):
        temporary = run("cmd", "/c", "echo %TMP%").stdout.strip()
        unix = run("winepath", "-u", temporary).stdout.strip()
        path = f"{unix}/QXZHENF1.CHM"
        with open(path, "wb") as file:
            file.write(b"old pages")
        self.addCleanup(lambda: os.path.exists(path) and os.unlink(path))
        self.assertRegex(self.planted()[0], "not the file that is in the cabinet.*: remove it")
        listed = self.ask("traces", "list", "--printer", self.printer)["traces"]
        self.assertIn("help", [trace["kind"] for trace in listed])
        self.assertIn("say what is to go", self.refused("traces", "clear", "--printer", self.printer, code=WRONG_USAGE).lower())
        self.ask("traces", "clear", "--printer", self.printer, "--recents")
        self.assertTrue(os.path.exists(path))
        self.ask("traces", "clear", "--printer", self.printer, "--help-files")
        self.assertFalse(os.path.exists(path))
        self.ask("doctor", "--printer", self.printer)

    def test_an_unreadable_phone_book_is_named(self):
        path = self.ask("doctor", "--printer", self.printer)["phoneBook"]
        unix = run("winepath", "-u", path).stdout.strip()
        with open(unix, "w", encoding="utf-8") as file:
            file.write("<device>")
        self.addCleanup(lambda: os.unlink(unix))
        self.assertRegex(self.planted()[0], "is damaged; take a copy back")
        with open(unix, "w", encoding="utf-8") as file:
            file.write(book(entry("Ann", "1 2")))
        self.assertRegex(self.planted()[0], 'holds entries that are not shown: "phonebook check" tells which')

    def test_a_missing_guid_is_named(self):
        self.addCleanup(self.set_data, "--guid", self.guid)
        registry = rf"HKLM\System\CurrentControlSet\Control\Print\Printers\{self.printer}\QXPresetRoot"
        run("reg", "delete", registry, "/v", "QXRestrictedUserGuid", "/f")
        self.assertRegex(self.planted()[0], "has no QXRestrictedUserGuid, so nothing is remembered .*: set one")
        self.assertIn("has no QXRestrictedUserGuid", self.refused("defaults", "get", "--printer", self.printer))


if __name__ == "__main__":
    unittest.main()
