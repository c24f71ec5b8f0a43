#!/usr/bin/env python3
"""Writes the sources of one language's compiled help: a page per topic, contents, index and project file.

usage: make_help.py CODE HELP.CHM FOLDER
       make_help.py check [CODE...]        writes nothing, and names everything that does not fit together

The pages name buttons and fields by text id, and take their captions from the string library's source: help and
dialogs cannot call one thing by two names. Whatever does not fit together is an error: a page without a text, a text
without a page, a caption that is not there, a translation that leaves out what English has. What holds for a language
as a whole comes from the list of languages. README.md describes the format.
"""

import html
import re
import shutil
import sys
import tomllib
import unicodedata
from pathlib import Path

SOURCES = Path(__file__).resolve().parent
sys.dont_write_bytecode = True
sys.path.insert(0, str(SOURCES.parent / "strings"))
import languages  # noqa: E402

HOME_PAGE = "15619"
PATTERN = "en"  # what the other languages are translated from


class Problem(Exception):
    """Something in the sources that a person has to mend; several, one to a line."""


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

BULLET = "- "
STEP = re.compile(r"\d+\. ")
HEADING = "## "


def blocks_of(text):
    """(kind, its lines without their marks) of every block: "p" a paragraph, "ul" and "ol" lists, "h2" a heading."""
    blocks = []
    for block in re.split(r"\n\s*\n", text.strip()):
        lines = block.split("\n")
        if all(line.startswith(BULLET) for line in lines):
            blocks.append(("ul", [line.removeprefix(BULLET) for line in lines]))
        elif all(STEP.match(line) for line in lines):
            blocks.append(("ol", [STEP.sub("", line, count=1) for line in lines]))
        elif len(lines) == 1 and block.startswith(HEADING):
            blocks.append(("h2", [block.removeprefix(HEADING)]))
        elif any(line.startswith((BULLET, HEADING)) or STEP.match(line) for line in lines):
            raise Problem(f"an empty line is missing before or after '{lines[0]}'")
        else:
            blocks.append(("p", [" ".join(lines)]))
    return blocks


def captions_named_in(text):
    return {int(number) for number in re.findall(r"\{(\d+)\}", text)}


def inline(text, captions):
    def caption(match):
        number = int(match[1])
        if number not in captions:
            raise Problem(f"text {number} is not in the string library")
        return f"<b>{html.escape(captions[number])}</b>"

    text = re.sub(r"\{(\d+)\}", caption, html.escape(text, quote=False))
    return re.sub(r"`([^`]+)`", r'<code dir="ltr">\1</code>', text)


def body(text, captions):
    written = []
    for kind, lines in blocks_of(text):
        if kind in ("ul", "ol"):
            items = "".join(f"<li>{inline(line, captions)}</li>\n" for line in lines)
            written.append(f"<{kind}>\n{items}</{kind}>")
        else:
            written.append(f"<{kind}>{inline(lines[0], captions)}</{kind}>")
    return "\n".join(written)


def see_also(topics, pages, labels):
    if not topics:
        return ""
    links = "".join(f'<li><a href="{topic}.html">{html.escape(pages[topic]["title"])}</a></li>\n' for topic in topics)
    return f'<h2>{html.escape(labels["see_also"])}</h2>\n<ul class="related">\n{links}</ul>\n'


def page(topic, contents, language, captions):
    pages, row = language["pages"], language["row"]
    title = html.escape(pages[topic]["title"])
    # The compiler knows the beginning of a page's text by a body tag without attributes.
    return f"""<!DOCTYPE html>
<html lang="{row.code}" dir="{row.direction}" class="{row.code}">
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


# ---- letters that a code page lacks -------------------------------------------------------------------------------

# The closest letters of a code page. Those that only differ by an accent need no row.
CLOSEST = str.maketrans({
    "Ә": "А", "ә": "а", "Ғ": "Г", "ғ": "г", "Қ": "К", "қ": "к", "Ң": "Н", "ң": "н", "Ө": "О", "ө": "о", "Ұ": "У",
    "ұ": "у", "Ү": "У", "ү": "у", "Һ": "Х", "һ": "х",  # Kazakh
    "Ș": "Ş", "ș": "ş", "Ț": "Ţ", "ț": "ţ",  # Romanian
    "ʼ": "’", "‑": "-", "–": "-", "−": "-", "→": "->", "…": "...", "\u202f": "\u00a0", "\u2009": " ",
})  # fmt: skip


def spellings(letter):
    """The letter, and ever poorer ways to write it. Vietnamese keeps its tone marks behind the letter."""
    yield letter
    yield letter.translate(CLOSEST)
    letter_alone, *marks = unicodedata.normalize("NFD", letter)
    for mark in marks:
        others = "".join(other for other in marks if other != mark)
        yield unicodedata.normalize("NFC", letter_alone + mark) + others
    yield letter_alone + "".join(marks)
    for mark in marks:
        yield unicodedata.normalize("NFC", letter_alone + mark)
    yield letter_alone


def in_code_page(text, code_page):
    """The bytes of the text, with the closest letters for those that the code page lacks."""

    def encoded(letter):
        for spelling in spellings(letter):
            try:
                return spelling.encode(code_page)
            except UnicodeEncodeError:
                pass
        raise Problem(f"{code_page} has nothing for '{letter}' (U+{ord(letter):04X}); see CLOSEST in make_help.py")

    return b"".join(encoded(letter) for letter in unicodedata.normalize("NFC", text))


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


# Letters that come after z, in this order; elsewhere an accent only decides between words that are otherwise the same.
AFTER_Z = {"da": "æøå", "et": "õäöü", "fi": "åäö", "nb": "æøå", "sv": "åäö"}


def alphabetical_order(row):
    after_z = AFTER_Z.get(row.code, "")

    def key(text):
        text = text.casefold()
        letters = (unicodedata.normalize("NFD", letter)[0] if letter not in after_z else letter for letter in text)
        return [(after_z.find(letter), letter) for letter in letters], text

    return key


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

    order = alphabetical_order(language["row"])
    return sitemap("".join(entry(keyword) for keyword in sorted(rows, key=order)))


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


def load_contents():
    """With the names of all pages as texts: those of topics are numbers."""
    contents = load(SOURCES / "contents.toml")
    for chapter in contents["chapter"]:
        chapter["pages"] = [str(page) for page in chapter["pages"]]
    contents["related"] = {page: [str(other) for other in others] for page, others in contents["related"].items()}
    contents["pages"] = [page for chapter in contents["chapter"] for page in chapter["pages"]]
    return contents


def load_language(row):
    language = load(row.help_texts)
    language["row"] = row
    return language


def check_contents(contents):
    pages = contents["pages"]
    if len(set(pages)) != len(pages):
        raise Problem("a page stands twice in the contents")
    links = {page for related in contents["related"].values() for page in related}
    if dead := (links | set(contents["related"])) - set(pages):
        raise Problem(f"'see also' names {sorted(dead)}, which are no pages")
    # A topic is opened by its control; the other pages are found from those.
    if lost := {page for page in pages if not page.isdigit()} - links:
        raise Problem(f"no page leads to {sorted(lost)}")


def typed_as_shown(text):
    """What stands between backquotes, but for keys: they are named as the language's keyboards name them."""
    quoted = re.findall(r"`([^`]+)`", text)
    return {span for span in quoted if not span[0].isupper() or "\\" in span}


def shape(text):
    return [(kind, len(lines)) for kind, lines in blocks_of(text)]


def problems_of_words(texts, originals):
    """Texts that English has too. A single word may be the same in both languages, and what is typed as shown."""

    def is_a_phrase(text):
        return len(re.findall(r"\w+", re.sub(r"`[^`]*`|\{\d+\}", " ", text))) > 1

    if left := [text for text in texts if text in originals and is_a_phrase(text)]:
        yield f"not translated: '{left[0]}'" + (f" and {len(left) - 1} more" if len(left) > 1 else "")


def parts(page):
    lines = [line for _, block in blocks_of(page["text"]) for line in block]
    return [page["title"], *page["keywords"], *lines]


def problems_of_page(text, original, captions):
    """Of a page's text, beside the same page in English; original is None for the English one."""
    for part in ("title", "keywords", "text"):
        if not text.get(part):
            yield f"no {part}"
            return
    if unknown := set(text) - {"title", "keywords", "text"}:
        yield f"unknown: {sorted(unknown)}"
    try:
        body(text["text"], captions)
    except Problem as problem:
        yield str(problem)
        return
    if original is None:
        return
    yield from problems_of_words(parts(text), parts(original))
    if shape(text["text"]) != shape(original["text"]):
        yield f"other paragraphs and list items than in English: {shape(text['text'])}"
    if difference := captions_named_in(text["text"]) ^ captions_named_in(original["text"]):
        yield f"names other captions than English: {sorted(difference)}"
    if missing := typed_as_shown(original["text"]) - typed_as_shown(text["text"]):
        yield f"lacks what is not translated: {sorted(missing)}"


def problems_of_language(contents, language, original, captions):
    """original is None for English."""
    for table, wanted in {
        "labels": {"title", "see_also"},
        "chapters": {chapter["id"] for chapter in contents["chapter"]},
        "pages": set(contents["pages"]),
    }.items():
        if missing := wanted - set(language[table]):
            yield f"[{table}] lacks {sorted(missing)}"
        if unknown := set(language[table]) - wanted:
            yield f"[{table}] has {sorted(unknown)}, which contents.toml does not know"
    if original is not None:
        for table in ("labels", "chapters"):
            problems = problems_of_words(language[table].values(), original[table].values())
            yield from (f"[{table}] {problem}" for problem in problems)
    for page in contents["pages"]:
        if page in language["pages"]:
            text = language["pages"][page]
            of_original = original["pages"][page] if original is not None else None
            yield from (f"page {page}: {problem}" for problem in problems_of_page(text, of_original, captions))


def list_files(contents, language, chm):
    return {
        "help.hhc": table_of_contents(contents, language),
        "help.hhk": index(language),
        "help.hhp": project(chm, contents["pages"], language),
    }


def encoded_list_files(contents, language, chm):
    # Only pages say what encoding they are in; the viewer reads the rest in the code page of the help's language.
    code_page = language["row"].code_page
    return {name: in_code_page(text, code_page) for name, text in list_files(contents, language, chm).items()}


def row_of(code):
    for language in languages.read_list():
        if language.code == code:
            return language
    raise Problem(f"languages.toml has no '{code}'")


def load_checked(row):
    """(contents, language, captions) of a language in which everything fits together."""
    contents, language, captions = load_contents(), load_language(row), load_captions(row.texts)
    check_contents(contents)
    original = load_language(row_of(PATTERN)) if row.code != PATTERN else None
    if problems := list(problems_of_language(contents, language, original, captions)):
        raise Problem("\n".join(problems))
    return contents, language, captions


def make_help(code, chm, folder):
    contents, language, captions = load_checked(row_of(code))
    folder = Path(folder)
    shutil.rmtree(folder, ignore_errors=True)
    folder.mkdir(parents=True)
    shutil.copy(SOURCES / "style.css", folder / "style.css")
    for topic in contents["pages"]:
        (folder / f"{topic}.html").write_text(page(topic, contents, language, captions), encoding="utf-8")
    for name, content in encoded_list_files(contents, language, chm).items():
        (folder / name).write_bytes(content)


def check(codes):
    """Every problem of these languages, or of all that have help, as one Problem."""
    codes = codes or [row.code for row in languages.languages_of_helps(languages.read_list())]
    problems = []
    for code in codes:
        try:
            contents, language, _ = load_checked(row_of(code))
            encoded_list_files(contents, language, "help.chm")
        except EXPECTED as problem:
            problems += [f"{code}: {line}" for line in describe(problem).split("\n")]
    if problems:
        raise Problem("\n".join(problems))


EXPECTED = (Problem, languages.Problem, KeyError, OSError, tomllib.TOMLDecodeError)


def describe(problem):
    return str(problem) if isinstance(problem, Problem) else f"{type(problem).__name__}: {problem}"


def main(arguments):
    match arguments:
        case ["check", *codes]:
            check(codes)
        case [code, chm, folder]:
            make_help(code, chm, folder)
        case _:
            sys.exit(__doc__)


if __name__ == "__main__":
    try:
        main(sys.argv[1:])
    except EXPECTED as problem:
        sys.exit(f"make_help.py: {describe(problem)}")
