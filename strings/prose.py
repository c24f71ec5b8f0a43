#!/usr/bin/env python3
"""Prints what a language's texts and help pages say, without marks, keys and names of files, for a spelling checker.

usage: prose.py LANG
"""

import re
import sys
import tomllib

import languages
import table

MARKS_OF_DIRECTION = dict.fromkeys(map(ord, "\u200e\u200f\u202a\u202b\u202c"))


def of_texts(row):
    for text in table.read(row.texts).values():
        text = re.sub(r"\(&.\)", "", text).translate(MARKS_OF_DIRECTION)
        yield re.sub(r"%.|\.bmp\b", " ", text).replace("&", "").replace("\n", " ")


def of_help(row):
    with open(row.help_texts, "rb") as file:
        content = tomllib.load(file)
    yield from content["labels"].values()
    yield from content["chapters"].values()
    for page in content["pages"].values():
        yield from (page["title"], *page["keywords"], page["text"])


# Single quotation marks too, which could be apostrophes.
def without_marks(text):
    return re.sub(r"‘([^‘’]*)’", r" \1 ", re.sub(r"`[^`]*`|\{\d+\}", " ", text))


def of(code):
    rows = languages.read_list()
    row = next(row for row in rows if row.code == code)
    yield from map(without_marks, of_texts(row))
    # A help that two languages share is in the first of them.
    if row in languages.languages_of_helps(rows):
        yield from map(without_marks, of_help(row))


if __name__ == "__main__":
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    print(*of(sys.argv[1]), sep="\n")
