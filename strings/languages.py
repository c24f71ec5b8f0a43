#!/usr/bin/env python3
"""Answers questions about the list of languages (languages.toml).

usage: languages.py codes           the codes of the languages that have texts, for people to choose from
       languages.py spelling        code, Debian package and name of every spelling dictionary there is
       languages.py locale LANG     the locale in which Wine speaks that language; LANG may name a region (de-AT)
       languages.py font LANG       the font of dialogs under Wine; nothing where the usual one will do
       languages.py build FOLDER    writes what is built from the list: tables.rc, languages.cmake, languages.inc
"""

import re
import sys
import tomllib
from pathlib import Path

TEXTS = Path(__file__).resolve().parent
HELP = TEXTS.parent / "help"
NO_LANGUAGES = {"qxtext"}  # scripts and tables beside the languages' own
NO_HELP = {"contents"}
PSEUDO = "qps"  # what pseudo.py makes, in place of English; in no list


class Problem(Exception):
    """Something in the list, or in what was asked, that a person has to mend."""


class Language:
    def __init__(self, row):
        defaults = {"direction": "ltr", "access_keys": "letter", "spelling": "", "font": ""}
        wanted = {"code", "help", "name", "ids", "locale", "code_page", *defaults}
        row = defaults | row
        if set(row) != wanted:
            raise Problem(f"row '{row.get('code')}': missing or unknown: {sorted(set(row) ^ wanted)}")
        if row["direction"] not in ("ltr", "rtl") or row["access_keys"] not in ("letter", "parentheses"):
            raise Problem(f"row '{row['code']}': direction or access_keys is none that is known")
        self.__dict__.update(row)
        self.texts = TEXTS / f"{self.code}.rc"
        self.help_texts = HELP / f"{self.help.lower()}.toml"

    @property
    def dictionary(self):
        """Name of the spelling dictionary in its package: sr_Latn_RS for the locale sr_RS@latin."""
        return re.sub(r"_(\w+)@latin", r"_Latn_\1", self.locale).partition("@")[0]

    @property
    def has_texts(self):
        return self.texts.exists()

    @property
    def has_help(self):
        return self.has_texts and self.help_texts.exists()


def read_list():
    with open(TEXTS / "languages.toml", "rb") as file:
        languages = [Language(row) for row in tomllib.load(file)["language"]]
    check(languages)
    return languages


def check(languages):
    if languages[0].code != "en":
        raise Problem("English comes first: whoever has no help of their own shares its pages")
    for what, values in {
        "code": [language.code for language in languages],
        "Windows id": [hex(id) for language in languages for id in language.ids],
    }.items():
        if twice := sorted({value for value in values if values.count(value) > 1}):
            raise Problem(f"{what} {', '.join(twice)} stands twice")
    known = {language.texts for language in languages} | {TEXTS / f"{name}.rc" for name in NO_LANGUAGES}
    known |= {language.help_texts for language in languages} | {HELP / f"{name}.toml" for name in NO_HELP}
    for file in [*TEXTS.glob("*.rc"), *HELP.glob("*.toml")]:
        if file not in known:
            raise Problem(f"{file.parent.name}/{file.name} belongs to no row of languages.toml")
    for language in languages:
        # One file may serve several numbers of Windows, so the number is not written into it.
        if language.has_texts and re.search(r"^\s*LANGUAGE\b", language.texts.read_text("utf-8"), re.MULTILINE):
            raise Problem(f"{language.code}.rc has a LANGUAGE line: the list says which languages it serves")


def locale_of(code, languages):
    """That of the list; of de-AT, when the list only has de, the one for Austria."""
    locales = {language.code.lower(): language.locale for language in languages if language.has_texts}
    locales[PSEUDO] = locales["en"]
    language, _, region = code.lower().rpartition("-")
    if code.lower() in locales:
        locale = locales[code.lower()]
    elif language in locales and re.fullmatch(r"[a-z]{2}", region):
        locale = re.sub(r"_[A-Z]{2}", f"_{region.upper()}", locales[language])
    else:
        raise Problem(f"unknown language '{code}'; the languages are {' '.join(codes(languages))}")
    return re.sub(r"(?=@|$)", ".UTF-8", locale, count=1)


def codes(languages):
    return [language.code for language in languages if language.has_texts]


def languages_of_helps(languages):
    """The languages that a help is made in. Where two share one, the first: captions and code page are its."""
    helps = {}
    for language in languages:
        if language.has_help:
            helps.setdefault(language.help, language)
    return list(helps.values())


# ---- what is built from the list -----------------------------------------------------------------------------------


def primary(id):
    return id & 0x3FF


def ids_with_a_table(languages):
    """(Windows id, language), in ascending order: as few as the module's lookup needs to find every id's texts.

    The lookup tries a user's id, and then the first table with the same primary language. So a language needs a table
    under its main id, and one under each id for which the lookup would come upon another language.
    """
    wanted = {id: language for language in languages for id in language.ids}
    tables = {language.ids[0]: language for language in languages}

    def finds(id):
        return tables.get(id) or tables[min(other for other in tables if primary(other) == primary(id))]

    # A new table may become the first of its primary language, and so change what others find.
    while lost := [id for id, language in wanted.items() if finds(id) is not language]:
        tables[lost[0]] = wanted[lost[0]]
    return sorted(tables.items())


def resource_script(languages):
    return "".join(
        f'LANGUAGE 0x{primary(id):02X}, 0x{id >> 10:02X}\n#include "{language.code}.rc"\n'
        for id, language in ids_with_a_table(languages)
    )


def cmake_variables(languages):
    with_help = languages_of_helps(languages)
    lines = [
        f"set(QX_LANGUAGES {' '.join(language.code for language in languages)})",
        f"set(QX_HELP_LANGUAGES {' '.join(language.code for language in with_help)})",
        *(f"set(QX_HELP_CODE_{language.code} {language.help})" for language in with_help),
    ]
    return "\n".join(lines) + "\n"


def rows_for_tests(languages):
    def row(language):
        ids = ", ".join(f"0x{id:04X}" for id in language.ids)
        flags = (language.has_help, language.direction == "rtl", language.access_keys == "parentheses")
        return f'{{"{language.code}", "{language.help}", {{{ids}}}, {", ".join(str(flag).lower() for flag in flags)}}},\n'

    return "".join(row(language) for language in languages)


def write_if_different(path, text):
    if not path.exists() or path.read_text("utf-8") != text:
        path.write_text(text, "utf-8")


def build(folder, languages):
    languages = [language for language in languages if language.has_texts]
    folder.mkdir(parents=True, exist_ok=True)
    write_if_different(folder / "tables.rc", resource_script(languages))
    write_if_different(folder / "languages.cmake", cmake_variables(languages))
    write_if_different(folder / "languages.inc", rows_for_tests(languages))


def main(arguments):
    match arguments:
        case ["codes"]:
            print(*codes(read_list()))
        case ["spelling"]:
            for row in read_list():
                if row.has_texts and row.spelling:
                    print(row.code, row.spelling, row.dictionary)
        case ["locale", code]:
            print(locale_of(code, read_list()))
        case ["font", code]:
            print(*(language.font for language in read_list() if language.code == code))
        case ["build", folder]:
            build(Path(folder), read_list())
        case _:
            sys.exit(__doc__)


if __name__ == "__main__":
    try:
        main(sys.argv[1:])
    except (Problem, KeyError, tomllib.TOMLDecodeError) as problem:
        sys.exit(f"languages.py: {problem}")
