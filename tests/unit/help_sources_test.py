"""The sources of the help: what is refused in them, and what is made of letters that a code page lacks."""

import copy
import sys
import unicodedata
import unittest
from pathlib import Path

SOURCES = Path(__file__).resolve().parents[2]
sys.dont_write_bytecode = True
sys.path.insert(0, str(SOURCES / "help"))
import make_help  # noqa: E402
from make_help import languages  # noqa: E402

CONTENTS = make_help.load_contents()
ENGLISH = make_help.load_language(make_help.row_of("en"))


def german():
    return make_help.load_language(make_help.row_of("de"))


def problems(language, contents=CONTENTS):
    captions = make_help.load_captions(language["row"].texts)
    return list(make_help.problems_of_language(contents, language, ENGLISH, captions))


class Translations(unittest.TestCase):
    def assertNamed(self, language, *words):
        found = problems(language)
        self.assertEqual(len(found), 1, found)
        for word in words:
            self.assertIn(word, found[0])

    def test_all_that_are_there_are_whole(self):
        make_help.check([])

    def test_a_missing_page(self):
        language = german()
        del language["pages"]["keys"]
        self.assertNamed(language, "pages", "keys")

    def test_a_page_too_many(self):
        language = german()
        language["pages"]["1"] = language["pages"]["keys"]
        self.assertNamed(language, "pages", "'1'")

    def test_a_missing_title(self):
        language = german()
        language["pages"]["15583"]["title"] = ""
        self.assertNamed(language, "15583", "title")

    def test_a_missing_chapter(self):
        language = german()
        del language["chapters"]["answers"]
        self.assertNamed(language, "chapters", "answers")

    def test_a_text_left_in_english(self):
        language = german()
        language["pages"]["15585"]["text"] = ENGLISH["pages"]["15585"]["text"]
        self.assertNamed(language, "15585", "not translated")

    def test_a_part_of_a_text_left_in_english(self):
        language = german()
        item = "- `Space`: presses the button that you are on, or changes the check box."
        text = language["pages"]["keys"]["text"]
        language["pages"]["keys"]["text"] = "\n".join(
            item if line.startswith("- `Leertaste`") else line for line in text.split("\n"))
        self.assertNamed(language, "keys", "not translated", "presses the button")

    def test_a_title_or_keyword_left_in_english(self):
        language = german()
        language["pages"]["15624"]["title"] = ENGLISH["pages"]["15624"]["title"]
        self.assertNamed(language, "15624", "not translated", "Adding recipients")
        language = german()
        language["pages"]["15627"]["keywords"] += ENGLISH["pages"]["15627"]["keywords"]
        self.assertNamed(language, "15627", "not translated", "sender, fax number")

    def test_a_chapter_left_in_english(self):
        language = german()
        language["chapters"]["answers"] = ENGLISH["chapters"]["answers"]
        self.assertNamed(language, "chapters", "not translated", "Questions and answers")

    def test_a_word_that_is_the_same_in_english(self):
        language = german()
        language["pages"]["15625"]["keywords"] = ["logo"]
        self.assertEqual(problems(language), [])

    def test_a_caption_left_out(self):
        language = german()
        language["pages"]["15587"]["text"] = "Leert Name, Faxnummer und Firma.\n"
        self.assertNamed(language, "15587", "5213")

    def test_a_caption_that_is_nowhere(self):
        language = german()
        language["pages"]["15587"]["text"] += "{1}"
        self.assertNamed(language, "15587", "1 is not in the string library")

    def test_a_list_item_left_out(self):
        language = german()
        text = language["pages"]["15707"]["text"]
        language["pages"]["15707"]["text"] = "\n".join(
            line for line in text.split("\n") if not line.startswith("- Namen,"))
        self.assertNamed(language, "15707", "list items")

    def test_a_list_that_runs_into_a_paragraph(self):
        language = german()
        language["pages"]["15587"]["text"] += "- {5213}\n"
        self.assertNamed(language, "15587", "empty line")

    def test_translated_characters_of_a_fax_number(self):
        language = german()
        text = language["pages"]["15627"]["text"]
        language["pages"]["15627"]["text"] = text.replace("`, - * # ( ) [ ]`", "`, - * #`")
        self.assertNamed(language, "15627", "( ) [ ]")

    def test_keys_have_the_names_of_the_languages_keyboards(self):
        self.assertEqual(make_help.typed_as_shown(r"`F1` `.bmp` `Ctrl+A` `HKEY\X` `, -`"), {".bmp", r"HKEY\X", ", -"})


class Contents(unittest.TestCase):
    def test_a_page_to_which_nothing_leads(self):
        contents = copy.deepcopy(CONTENTS)
        contents["related"] = {page: [o for o in others if o != "keys"] for page, others in CONTENTS["related"].items()}
        with self.assertRaisesRegex(make_help.Problem, "keys"):
            make_help.check_contents(contents)

    def test_a_dead_link(self):
        contents = copy.deepcopy(CONTENTS)
        contents["related"]["keys"].append("1")
        with self.assertRaisesRegex(make_help.Problem, "'1'"):
            make_help.check_contents(contents)


class Letters(unittest.TestCase):
    def closest(self, text, code_page):
        return unicodedata.normalize("NFC", make_help.in_code_page(text, code_page).decode(code_page))

    def test_kazakh_has_the_russian_letters(self):
        self.assertEqual(self.closest("Қазақ тілі әңғөұүһ", "cp1251"), "Казак тілі ангоуух")

    def test_romanian_has_the_older_letters(self):
        self.assertEqual(self.closest("Șterge țară", "cp1250"), "Şterge ţară")

    def test_vietnamese_keeps_every_mark(self):
        text = "Người nhận, số điện thoại, trợ giúp, quyền, tệp, ẵỹ"
        self.assertEqual(self.closest(text, "cp1258"), text)

    def test_an_accent_that_is_not_there_goes(self):
        self.assertEqual(self.closest("Łódź – Ō", "cp1250"), "Łódź – O")

    def test_a_letter_that_nothing_is_close_to(self):
        with self.assertRaisesRegex(make_help.Problem, "U\\+6587"):
            make_help.in_code_page("文", "cp1252")

    def test_every_language_of_the_help_can_write_its_name(self):
        for row in languages.languages_of_helps(languages.read_list()):
            self.assertTrue(make_help.in_code_page(row.name, row.code_page))

    def test_the_index_is_in_the_order_of_the_alphabet(self):
        def ordered(code, *words):
            return sorted(words, key=make_help.alphabetical_order(make_help.row_of(code)))

        self.assertEqual(ordered("de", "Zeit", "Übung", "uhr", "Abend"), ["Abend", "Übung", "uhr", "Zeit"])
        self.assertEqual(ordered("sv", "öppna", "ange", "zon", "ändra", "åter"),
                         ["ange", "zon", "åter", "ändra", "öppna"])


if __name__ == "__main__":
    unittest.main()
