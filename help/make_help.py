#!/usr/bin/env python3
"""Writes the sources of one language's compiled help: a page per topic, contents, index and project file.

usage: make_help.py CODE HELP.CHM FOLDER

The pages name buttons and fields by text id, and take their captions from the string library's source: help and
dialogs cannot call one thing by two names. Whatever does not fit together is an error: a page without a text, a text
without a page, a caption that is not there. What holds for a language as a whole comes from the list of languages.
"""

import html
import re
import shutil
import sys
import tomllib
from pathlib import Path

SOURCES = Path(__file__).resolve().parent
sys.dont_write_bytecode = True
sys.path.insert(0, str(SOURCES.parent / "strings"))
import languages  # noqa: E402

HOME_PAGE = 15619


class Problem(Exception):
    """Something in the sources that a person has to mend."""


def load(path):
    with open(path, "rb") as file:
        return tomllib.load(file)


# ---- captions of the dialogs ---------------------------------------------------------------------------------------


def plain_caption(text):
    """The caption as people read it: no mnemonic, no colon or dots at its end, no invisible marks of direction."""
    text = re.sub(r"[\u200e\u200f\u202a-\u202e]", "", text)
    text = re.sub(r"\(&\w\)", "", text)
    text = re.sub(r"&(?!&)", "", text)
    return re.sub(r"\s*(\.\.\.|…|:|：)$", "", text).strip()


def load_captions(path):
    rows = re.findall(r'^\s*(\d+)\s+"((?:[^"]|"")*)"', Path(path).read_text(encoding="utf-8-sig"), re.MULTILINE)
    return {int(number): plain_caption(text.replace('""', '"')) for number, text in rows}


# ---- pages ---------------------------------------------------------------------------------------------------------


def inline(text, captions):
    def caption(match):
        number = int(match[1])
        if number not in captions:
            raise Problem(f"text {number} is not in the string library")
        return f"<b>{html.escape(captions[number])}</b>"

    text = re.sub(r"\{(\d+)\}", caption, html.escape(text, quote=False))
    return re.sub(r"`([^`]+)`", r'<code dir="ltr">\1</code>', text)


def body(text, captions):
    blocks = []
    for block in re.split(r"\n\s*\n", text.strip()):
        lines = block.split("\n")
        if all(line.startswith("- ") for line in lines):
            items = "".join(f"<li>{inline(line[2:], captions)}</li>\n" for line in lines)
            blocks.append(f"<ul>\n{items}</ul>")
        else:
            blocks.append(f"<p>{inline(' '.join(lines), captions)}</p>")
    return "\n".join(blocks)


def see_also(topics, pages, labels):
    if not topics:
        return ""
    links = "".join(f'<li><a href="{topic}.html">{html.escape(pages[topic]["title"])}</a></li>\n' for topic in topics)
    return f'<h2>{html.escape(labels["see_also"])}</h2>\n<ul class="related">\n{links}</ul>\n'


def page(topic, contents, language, captions):
    pages, row = language["pages"], language["row"]
    title = html.escape(pages[topic]["title"])
    return f"""<!DOCTYPE html>
<html lang="{row.code}" dir="{row.direction}">
<head>
<meta http-equiv="Content-Type" content="text/html; charset=utf-8">
<title>{title}</title>
<link rel="stylesheet" type="text/css" href="style.css">
</head>
<body>
<h1>{title}</h1>
{body(pages[topic]["text"], captions)}
{see_also(contents["related"].get(topic, []), pages, language["labels"])}</body>
</html>
"""


# ---- contents, index, project --------------------------------------------------------------------------------------


def sitemap_object(name, topic=None):
    local = f'<param name="Local" value="{topic}.html">' if topic else ""
    return f'<li><object type="text/sitemap"><param name="Name" value="{html.escape(name)}">{local}</object>\n'


def sitemap(rows):
    return f"<html>\n<head></head>\n<body>\n<ul>\n{rows}</ul>\n</body>\n</html>\n"


def table_of_contents(contents, language):
    rows = ""
    for chapter in contents["chapter"]:
        rows += sitemap_object(language["chapters"][chapter["id"]]) + "<ul>\n"
        rows += "".join(sitemap_object(language["pages"][topic]["title"], topic) for topic in chapter["pages"])
        rows += "</ul>\n"
    return sitemap(rows)


def index(language):
    rows = {}
    for topic, text in language["pages"].items():
        for keyword in dict.fromkeys([text["title"], *text["keywords"]]):
            rows.setdefault(keyword, []).append(topic)

    def entry(keyword):
        # Several pages under one keyword are told apart by their titles.
        topics = "".join(
            f'<param name="Name" value="{html.escape(language["pages"][topic]["title"])}">'
            f'<param name="Local" value="{topic}.html">'
            for topic in rows[keyword]
        )
        name = f'<param name="Name" value="{html.escape(keyword)}">'
        return f'<li><object type="text/sitemap">{name}{topics}</object>\n'

    return sitemap("".join(entry(keyword) for keyword in sorted(rows, key=str.casefold)))


def project(chm, topics, language):
    # The compiler's binary index and its full-text search know English letters only. So the index is left as text, and
    # the window has no search tab; the search is compiled all the same, since the table of topics comes with it.
    title = language["labels"]["title"]
    files = "\n".join(f"{topic}.html" for topic in topics)
    return f"""[OPTIONS]
Compatibility=1.1 or later
Compiled file={chm}
Contents file=help.hhc
Index file=help.hhk
Default topic={HOME_PAGE}.html
Default Window=main
Binary Index=No
Full-text search=Yes
Language=0x{language["row"].ids[0]:X}
Title={title}

[WINDOWS]
main="{title}","help.hhc","help.hhk","{HOME_PAGE}.html","{HOME_PAGE}.html",,,,,0x42120,240,0x304E,[80,60,900,660],,,,,,,0

[FILES]
{files}
style.css
"""


# ---- putting it together -------------------------------------------------------------------------------------------


def with_numbers(table):
    return {int(key): value for key, value in table.items()}


def check(contents, language):
    topics = [topic for chapter in contents["chapter"] for topic in chapter["pages"]]
    if len(set(topics)) != len(topics):
        raise Problem("a page stands twice in the contents")
    if difference := set(topics) ^ set(language["pages"]):
        raise Problem(f"contents and texts differ in {sorted(difference)}")
    links = {topic for related in contents["related"].values() for topic in related} | set(contents["related"])
    if dead := links - set(topics):
        raise Problem(f"'see also' names {sorted(dead)}, which are no pages")
    return topics


def make_help(code, chm, folder):
    row = next(language for language in languages.read_list() if language.code == code)
    contents, language = load(SOURCES / "contents.toml"), load(row.help_texts)
    contents["related"] = with_numbers(contents["related"])
    language["pages"] = with_numbers(language["pages"])
    language["row"] = row
    captions = load_captions(row.texts)
    topics = check(contents, language)

    folder = Path(folder)
    shutil.rmtree(folder, ignore_errors=True)
    folder.mkdir(parents=True)
    shutil.copy(SOURCES / "style.css", folder / "style.css")
    for topic in topics:
        (folder / f"{topic}.html").write_text(page(topic, contents, language, captions), encoding="utf-8")

    # Only pages say what encoding they are in; the viewer reads the rest in the code page of the help's language.
    for name, text in {
        "help.hhc": table_of_contents(contents, language),
        "help.hhk": index(language),
        "help.hhp": project(chm, topics, language),
    }.items():
        (folder / name).write_bytes(text.encode(row.code_page))


if __name__ == "__main__":
    if len(sys.argv) != 4:
        sys.exit(__doc__)
    try:
        make_help(*sys.argv[1:])
    except (Problem, languages.Problem, KeyError, UnicodeError, tomllib.TOMLDecodeError) as problem:
        sys.exit(f"make_help.py: {sys.argv[1]}: {type(problem).__name__}: {problem}")
