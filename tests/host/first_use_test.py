"""A user's first fax, from the empty registry to the job that the driver reads."""

import json
import unittest

from faxhost_test import GUID, PRINTER, SENT, SOURCES, FaxHostTest, faxhost, run


class FirstUse(FaxHostTest):
    def setUp(self):
        super().setUp()
        self.addCleanup(self.forget)

    def forget(self):
        self.assertEqual(run("reg", "delete", rf"HKCU\Software\Quillmarsh\{GUID}", "/f").returncode, 0)

    def test_the_fax_carries_the_defaults_that_the_user_has_just_stored(self):
        self.provision()
        done = faxhost("send", "--printer", PRINTER, "--shots", self.folder,
                       "--script", SOURCES / "host/scripts/first_use.txt")
        self.assertEqual((done.returncode, done.stderr), (SENT, ""))
        job = json.loads(done.stdout)
        self.assertEqual(
            {field: job[field] for field in (
                "Cancelled", "SenderName", "SenderFaxNo", "SenderCompany", "SenderVoiceNo", "Resolution", "NotifyOn",
                "NotifyMethod", "NotifyEmail", "AddCoverPage", "CoverPageNotes", "CoverPageSubject", "OverlayPath",
                "ShowPreview")},
            {
                "Cancelled": 0,
                "SenderName": "Nora Fields",
                "SenderFaxNo": "(030)555-0199",
                "SenderCompany": "Fields & Sons",
                "SenderVoiceNo": "030-5550198",
                "Resolution": 1,
                "NotifyOn": 1,
                "NotifyMethod": 2,
                "NotifyEmail": "nora@example.com",
                "AddCoverPage": 1,
                "CoverPageNotes": "First line,\r\nsecond line.",
                "CoverPageSubject": "Plan for next week",
                "OverlayPath": "",
                "ShowPreview": 1,
            })
        self.assertEqual([recipient["FaxNumber"] for recipient in job["Recipients"]], ["555-0100"])

        # The next fax has them from the start, and opens on the Fax Job page.
        again = self.sent_job("wait 301\ntype 262 555-0101\npress send\n")
        self.assertEqual(again["SenderName"], "Nora Fields")
        self.assertEqual(again["CoverPageSubject"], "Plan for next week")


if __name__ == "__main__":
    unittest.main()
