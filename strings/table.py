"""String tables as files (en.rc, de.rc, ...): one text per line, with comments for translators."""

import re
from pathlib import Path

# A number and a text in quotation marks; behind it perhaps a comment.
LINE = re.compile(r'^(?P<before>\s*(?P<id>\d+)\s+")(?P<text>(?:[^"]|"")*)(?P<after>".*)$')
COMMENT = re.compile(r"^\s*//\s?(?P<comment>.*)$")
ESCAPES = {"\\\\": "\\", "\\n": "\n", '""': '"'}
ESCAPED = {value: escape for escape, value in ESCAPES.items()}


def unescaped(text):
    return re.sub(r'\\\\|\\n|""', lambda found: ESCAPES[found[0]], text)


def escaped(text):
    return re.sub(r'[\\\n"]', lambda found: ESCAPED[found[0]], text)


def texts(content):
    """{number: text} of a table's content, in its order."""
    found = (LINE.match(line) for line in content.splitlines())
    return {int(line["id"]): unescaped(line["text"]) for line in found if line}


def read(path):
    return texts(Path(path).read_text("utf-8"))


def with_texts(content, new):
    """The content with other texts for its numbers; all else stays as it is. new: {number: text}"""
    def line(old):
        found = LINE.match(old)
        return f"{found['before']}{escaped(new[int(found['id'])])}{found['after']}" if found else old

    return "\n".join(line(old) for old in content.split("\n"))


def comments(content):
    """{number: comment}: of the group that a text stands in, and then its own."""
    group, own_of = [], {}
    before_first_text_of_group = False
    for line in content.splitlines():
        if found := LINE.match(line):
            before_first_text_of_group = False
            own = found["after"].partition("//")[2].strip()
            own_of[int(found["id"])] = "\n".join(filter(None, [" ".join(group), own]))
        elif found := COMMENT.match(line):
            if not before_first_text_of_group:
                group = []
            before_first_text_of_group = True
            group.append(found["comment"].strip())
        else:
            group, before_first_text_of_group = [], False
    return own_of
