"""String tables as files, and their way to a translator's PO editor and back."""

import sys
import tempfile
import unittest
from pathlib import Path

SOURCES = Path(__file__).resolve().parents[2]
sys.dont_write_bytecode = True
sys.path.insert(0, str(SOURCES / "strings"))
import languages  # noqa: E402
import po  # noqa: E402
import polib  # noqa: E402
import prose  # noqa: E402
import pseudo  # noqa: E402
import table  # noqa: E402

ENGLISH = r'''// English.
STRINGTABLE
BEGIN
    // Buttons, with
    // an ampersand
    1 "&Say ""hello"" "   // twice
    2 "C:\\temp\n%s"
    // Titles
    3 "Title"

    4 "Alone"
END
'''


class Tables(unittest.TestCase):
    def test_what_is_escaped(self):
        self.assertEqual(table.texts(ENGLISH), {1: '&Say "hello" ', 2: "C:\\temp\n%s", 3: "Title", 4: "Alone"})

    def test_comments_of_a_group_and_of_a_text(self):
        self.assertEqual(table.comments(ENGLISH), {
            1: "Buttons, with an ampersand\ntwice", 2: "Buttons, with an ampersand", 3: "Titles", 4: ""})

    def test_only_texts_change(self):
        texts = table.texts(ENGLISH)
        self.assertEqual(table.with_texts(ENGLISH, texts), ENGLISH)
        self.assertEqual(table.with_texts(ENGLISH, texts | {2: 'D:\\\n"x"'}).split("\n")[6], r'    2 "D:\\\n""x"""')


class RoundTrip(unittest.TestCase):
    rows = [row for row in languages.read_list() if row.has_texts]
    english = po.PATTERN.read_text("utf-8")

    def through_a_file(self, row, translations):
        with tempfile.TemporaryDirectory() as folder:
            path = f"{folder}/texts.po"
            po.po_file(row, self.english, translations).save(path)
            return polib.pofile(path, wrapwidth=0)

    def test_every_language_comes_back_as_it_was(self):
        for row in self.rows:
            content = row.texts.read_text("utf-8")
            read = self.through_a_file(row, table.texts(content))
            texts = po.translations_in(read, self.english)
            self.assertEqual(po.new_content(row, self.english, content, texts), content, row.code)

    def test_the_translator_sees_where_a_text_is_shown(self):
        entry = self.through_a_file(self.rows[1], {}).find("&Send", msgctxt="5223")
        self.assertIn("Send button without and with preview", entry.comment)

    def test_editors_are_told_of_placeholders(self):
        read = self.through_a_file(self.rows[1], {})
        self.assertEqual({entry.msgctxt for entry in read if "c-format" in entry.flags},
                         {str(number) for number, text in table.texts(self.english).items() if "%" in text})

    def test_a_new_language_is_laid_out_as_english(self):
        row = self.rows[0]
        texts = {number: f"x{text}" for number, text in table.texts(self.english).items()}
        content = po.new_content(row, self.english, None, texts)
        self.assertEqual(content.partition("\n")[0], f"// {row.name}")
        self.assertEqual(table.texts(content), texts)
        self.assertEqual(table.comments(content), table.comments(self.english))


class Refused(unittest.TestCase):
    row = languages.read_list()[0]

    def assert_refused(self, sentence, change):
        read = po.po_file(self.row, ENGLISH, table.texts(ENGLISH))
        change(read)
        with self.assertRaisesRegex(po.Problem, f"^{sentence}$"):
            po.translations_in(read, ENGLISH)

    def test_an_untranslated_text(self):
        self.assert_refused("3: not translated, or fuzzy", lambda read: setattr(read[2], "msgstr", ""))

    def test_a_fuzzy_text(self):
        self.assert_refused("3: not translated, or fuzzy", lambda read: read[2].flags.append("fuzzy"))

    def test_a_text_that_is_left_out(self):
        self.assert_refused("3: missing", lambda read: read.pop(2))

    def test_a_text_that_is_no_longer_there(self):
        self.assert_refused("5: no such text", lambda read: read.append(
            polib.POEntry(msgctxt="5", msgid="Gone", msgstr="Gone")))

    def test_a_translation_of_what_english_said_before(self):
        self.assert_refused("4: translated from another English text; export again",
                            lambda read: setattr(read[3], "msgid", "Lonely"))


class Prose(unittest.TestCase):
    def test_a_spelling_checker_sees_words_and_no_marks(self):
        self.assertEqual(prose.without_marks("Press `Ctrl+A` in {5213}, ‘so’ it’s"), "Press   in  ,  so  it’s")
        japanese = next(row for row in languages.read_list() if row.code == "ja")
        self.assertIn("参照...", list(prose.of_texts(japanese)))

    def test_it_sees_all_of_a_language(self):
        for row in languages.read_list():
            if row.has_texts:
                self.assertGreater(len(list(prose.of(row.code))), 90, row.code)


class Pseudo(unittest.TestCase):
    texts = table.read(po.PATTERN).values()

    def test_what_a_text_is_made_of_stays(self):
        self.assertEqual(pseudo.pseudo("&Send %d (.bmp)\n%s"), "[&Séñđ %d (.bmp)\n%s ášđ ĵ]")

    def test_texts_are_two_fifths_longer_as_far_as_they_are_shown(self):
        for text in self.texts:
            longer = pseudo.pseudo(text)
            self.assertGreaterEqual(len(longer), min(1.4 * len(text), 255), text)
            self.assertLessEqual(len(longer), max(1.4 * len(text) + 1, len(text) + 2), text)
            self.assertLessEqual(len(longer), 255)

    def test_no_letter_but_that_of_the_key_goes_without_an_accent_that_has_one(self):
        for text in self.texts:
            self.assertNotRegex(pseudo.pseudo(text).replace(".bmp", ""), r"(?<![&%])[ACDEGHIJKLNORSTUWYZaceghijklnortuwyz]")


if __name__ == "__main__":
    unittest.main()
