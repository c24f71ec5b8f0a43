#!/usr/bin/env python3
"""Makes a string table in a language that nobody speaks out of the English one: every letter with an accent, two fifths
longer, in brackets. What is on screen without accents does not come from the library; a missing bracket was cut off.

usage: pseudo.py FOLDER      writes tables.rc there, with the table in place of English
"""

import re
import sys
from pathlib import Path

import languages
import table

LETTERS = str.maketrans("AaCcDdEeGgHhIiJjKkLlNnOoRrSsTtUuWwYyZz", "ÂáĈçĐđÉéĜğĤħÎíĴĵĶķĻłÑñÖóŘřŞšŢťÛúŴŵÝýŽž")
FILLING = " ášđ ĵķł ŵéř ťýú"
LONGEST = 255  # the module cuts a text there

# Placeholders, an access key with its letter, line breaks and file endings stay as they are.
KEPT = re.compile(r"(%.|&.|\n|\.\w+)")


def pseudo(text):
    accented = "".join(part if index % 2 else part.translate(LETTERS) for index, part in enumerate(KEPT.split(text)))
    length = min(-(-len(text) * 7 // 5), LONGEST) - len("[]")
    while len(accented) < length:
        accented += FILLING[:length - len(accented)]
    return f"[{accented}]"


def build(folder):
    english = next(row for row in languages.read_list() if row.code == "en")
    content = english.texts.read_text("utf-8")
    texts = {number: pseudo(text) for number, text in table.texts(content).items()}
    # Under the number of English: every user whose language is not there is shown it.
    header = languages.resource_script([english]).partition("\n")[0]
    folder.mkdir(parents=True, exist_ok=True)
    languages.write_if_different(folder / "tables.rc", header + "\n" + table.with_texts(content, texts))


if __name__ == "__main__":
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    build(Path(sys.argv[1]))
