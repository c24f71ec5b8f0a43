#!/usr/bin/python3
"""Texts as PO files, for translators who work in an editor for these, and back.

usage: po.py export LANG FILE    writes the texts of a language; of one without texts, all of them untranslated
       po.py import LANG FILE    writes the translations to the language's string table, LANG.rc

Each text comes with English, its number as the context, and the comments that say where it is seen. What is still
untranslated or marked as fuzzy is not imported: a language is taken as a whole. Needs Debian's python3-polib.
"""

import sys

import languages
import polib
import table
from languages import Problem

PATTERN = languages.TEXTS / "en.rc"


def row_of(code):
    for row in languages.read_list():
        if row.code == code:
            return row
    raise Problem(f"'{code}' is not in languages.toml")


def po_file(row, english, translations):
    """english: the content of the table that is translated; translations: {number: text}, empty for a new language."""
    po = polib.POFile(wrapwidth=0)
    po.metadata = {
        "Project-Id-Version": "QX MFP Send Fax",
        "Language": row.code.replace("-", "_"),
        "MIME-Version": "1.0",
        "Content-Type": "text/plain; charset=UTF-8",
        "Content-Transfer-Encoding": "8bit",
        "X-Accelerator-Marker": "&",
    }
    comments = table.comments(english)
    for number, text in table.texts(english).items():
        po.append(polib.POEntry(
            msgctxt=str(number), msgid=text, msgstr=translations.get(number, ""), comment=comments[number],
            flags=["c-format"] if "%" in text else []))
    return po


def translations_in(po, english):
    """{number: text}; Problem names every text that is missing, fuzzy, unknown or translated from another English."""
    found = {entry.msgctxt: entry for entry in po if not entry.obsolete}
    wanted = table.texts(english)
    problems = [f"{context}: no such text" for context in found if context not in map(str, wanted)]
    for number, text in wanted.items():
        entry = found.get(str(number))
        if entry is None:
            problems.append(f"{number}: missing")
        elif entry.msgid != text:
            problems.append(f"{number}: translated from another English text; export again")
        elif not entry.translated():
            problems.append(f"{number}: not translated, or fuzzy")
    if problems:
        raise Problem("\n".join(problems))
    return {number: found[str(number)].msgstr for number in wanted}


def new_content(row, english, old, translations):
    """The language's table with these texts. old: its content, None for a new language, which is laid out as English."""
    if old is None:
        old = english.replace(english.partition("\n")[0], f"// {row.name}", 1)
    return table.with_texts(old, translations)


def export(code, path):
    row = row_of(code)
    translations = table.read(row.texts) if row.has_texts else {}
    po_file(row, PATTERN.read_text("utf-8"), translations).save(path)


def import_(code, path):
    row, english = row_of(code), PATTERN.read_text("utf-8")
    translations = translations_in(polib.pofile(path, wrapwidth=0), english)
    old = row.texts.read_text("utf-8") if row.has_texts else None
    row.texts.write_text(new_content(row, english, old, translations), "utf-8")


def main(arguments):
    match arguments:
        case ["export", code, path]:
            export(code, path)
        case ["import", code, path]:
            import_(code, path)
        case _:
            sys.exit(__doc__)


if __name__ == "__main__":
    try:
        main(sys.argv[1:])
    except (Problem, OSError) as problem:
        sys.exit(f"po.py: {problem}")
