"""The list of languages: what it may hold, and what is made of it."""

import codecs
import subprocess
import sys
import unittest
from pathlib import Path

SOURCES = Path(__file__).resolve().parents[2]
sys.dont_write_bytecode = True
sys.path.insert(0, str(SOURCES / "strings"))
import languages  # noqa: E402

HELP_CODES = """AR BG CA HT HC CS DA DE EL EN ES FI FR HE HU IT JA KO NL NO PL PT RO RU HR SR SK SV TH TR ID UK SL ET LV
                LT VI KK"""


def row(code, *ids, **more):
    return languages.Language({"code": code, "help": "EN", "name": code, "ids": list(ids), "locale": "en_US",
                               "code_page": "cp1252", **more})


class TheList(unittest.TestCase):
    rows = languages.read_list()

    def test_it_has_every_code_of_the_help(self):
        self.assertEqual(sorted({language.help for language in self.rows}), sorted(HELP_CODES.split()))

    # What is not there is not built, and other tests only see what is.
    def test_every_language_has_its_texts_and_its_help(self):
        missing = [file for language in self.rows for file in (language.texts, language.help_texts) if not file.exists()]
        self.assertEqual([f"{file.parent.name}/{file.name}" for file in missing], [])

    def test_wine_can_speak_every_language(self):
        for language in self.rows:
            definitions = {language.locale, language.locale.partition("@")[0]}
            self.assertTrue(any(Path("/usr/share/i18n/locales", name).exists() for name in definitions), language.code)

    def test_python_knows_the_code_page_of_every_help(self):
        for language in self.rows:
            codecs.lookup(language.code_page)

    # The texts of those that are not there yet count as well: who adds them need not think of the others.
    def test_with_all_texts_every_user_finds_those_of_their_language(self):
        tables = dict(languages.ids_with_a_table(self.rows))
        for language in self.rows:
            for id in language.ids:
                same = [other for other in tables if languages.primary(other) == languages.primary(id)]
                self.assertEqual(tables.get(id, tables[min(same)]).code, language.code, hex(id))


class Tables(unittest.TestCase):
    def ids(self, *rows):
        return [(id, language.code) for id, language in languages.ids_with_a_table(rows)]

    def test_one_is_enough_where_the_primary_language_leads_to_it(self):
        self.assertEqual(self.ids(row("es", 0x0C0A, 0x040A, 0x080A)), [(0x0C0A, "es")])

    def test_another_language_in_the_way_makes_a_table_of_its_own_necessary(self):
        hr, latin = row("hr", 0x041A, 0x101A), row("sr-Latn", 0x241A, 0x081A)
        self.assertEqual(self.ids(hr, latin), [(0x041A, "hr"), (0x081A, "sr-Latn"), (0x241A, "sr-Latn")])

    def test_a_table_that_becomes_the_first_one_sends_nobody_astray(self):
        latin, cyrillic = row("sr-Latn", 0x241A, 0x081A), row("sr-Cyrl", 0x281A, 0x0C1A, 0x301A)
        tables = dict(self.ids(latin, cyrillic))
        for language in (latin, cyrillic):
            for id in language.ids:
                self.assertEqual(tables.get(id, tables[min(tables)]), language.code, hex(id))


class Dictionaries(unittest.TestCase):
    def test_they_are_named_after_the_locale(self):
        self.assertEqual(row("de", 0x0407, locale="de_DE").dictionary, "de_DE")
        self.assertEqual(row("sr-Cyrl", 0x281A, locale="sr_RS@cyrillic").dictionary, "sr_RS")
        self.assertEqual(row("sr-Latn", 0x241A, locale="sr_RS@latin").dictionary, "sr_Latn_RS")


class Mistakes(unittest.TestCase):
    def assert_refused(self, sentence, *rows):
        with self.assertRaisesRegex(languages.Problem, sentence):
            languages.check(rows)

    def test_an_id_of_two_languages(self):
        self.assert_refused("Windows id 0x409 stands twice", row("en", 0x0409), row("de", 0x0407, 0x0409))

    def test_a_text_file_that_belongs_to_no_row(self):
        rows = [language for language in languages.read_list() if language.code != "de"]
        self.assert_refused("strings/de.rc belongs to no row", *rows)

    def test_a_row_before_english_whose_pages_would_then_quote_its_captions(self):
        self.assert_refused("English comes first", row("af", 0x0436), row("en", 0x0409))

    def test_a_misspelt_field(self):
        with self.assertRaisesRegex(languages.Problem, "row 'en': missing or unknown.*directon"):
            row("en", 0x0409, directon="rtl")

    def test_an_unknown_direction(self):
        with self.assertRaisesRegex(languages.Problem, "direction"):
            row("en", 0x0409, direction="right")


class Locales(unittest.TestCase):
    def locale(self, code):
        return languages.locale_of(code, languages.read_list())

    def test_of_a_language(self):
        self.assertEqual(self.locale("de"), "de_DE.UTF-8")

    def test_of_a_language_in_a_region(self):
        self.assertEqual(self.locale("de-AT"), "de_AT.UTF-8")

    def test_the_variant_stands_behind_the_encoding(self):
        latin = row("en", 0x0409, locale="sr_RS@latin")
        self.assertEqual(languages.locale_of("en", [latin]), "sr_RS.UTF-8@latin")

    def test_of_the_language_that_nobody_speaks(self):
        self.assertEqual(self.locale("qps"), "en_US.UTF-8")
        self.assertNotIn("qps", languages.codes(languages.read_list()))

    def test_of_none(self):
        for code in ("", "xx", "de-", "de-Latn", "-de"):
            with self.assertRaisesRegex(languages.Problem, f"unknown language '{code}'; the languages are en .*"):
                self.locale(code)


class Sessions(unittest.TestCase):
    def assert_refused(self, language, sentence):
        done = subprocess.run([SOURCES / "tools/with-wine.sh", "--lang", language, "echo", "it runs"],
                              capture_output=True, text=True)
        self.assertEqual((done.returncode, done.stdout), (1, ""))
        self.assertIn(sentence, done.stderr)

    # Wine would silently speak English.
    def test_none_is_started_without_the_locale(self):
        self.assert_refused("de-QQ", "the locale de_QQ.UTF-8 of language 'de-QQ' is missing: run 'tools/setup.sh de-QQ'")

    def test_none_is_started_in_a_language_that_is_not_in_the_list(self):
        self.assert_refused("xx", "unknown language 'xx'; the languages are en")


if __name__ == "__main__":
    unittest.main()
