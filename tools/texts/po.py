"""Reads and writes gettext's text files, as far as ours need it: no plural forms."""

import re

from sources import Problem

LINE = re.compile(r'^(?:(msgctxt|msgid|msgstr) +)?"((?:[^"\\]|\\.)*)"$')
ESCAPES = {"n": "\n", "t": "\t", "r": "\r", '"': '"', "\\": "\\"}


class Entry:
    def __init__(self):
        self.fields = {}
        self.notes = []
        self.places = []
        self.flags = set()

    key = property(lambda self: self.fields.get("msgctxt"))
    default = property(lambda self: self.fields.get("msgid", ""))
    translation = property(lambda self: self.fields.get("msgstr", ""))
    is_header = property(lambda self: self.key is None and self.default == "")


def unquote(text):
    return re.sub(r"\\(.)", lambda match: ESCAPES.get(match[1], match[1]), text)


def quote(text):
    for letter, escape in (("\\", "\\\\"), ('"', '\\"'), ("\n", "\\n"), ("\t", "\\t"), ("\r", "\\r")):
        text = text.replace(letter, escape)
    return f'"{text}"'


def read(path):
    """All entries of a file in its order, the header first; retired ones (#~) are left out."""
    entries, entry, field = [], Entry(), None
    with open(path, encoding="utf-8") as file:
        for number, line in enumerate(file, 1):
            line = line.rstrip("\n")
            if line.startswith("#~"):
                continue
            if not line or (line.startswith("#") and "msgstr" in entry.fields):
                if entry.fields:
                    entries.append(entry)
                    entry, field = Entry(), None
                if not line:
                    continue
            if line.startswith("#."):
                entry.notes.append(line[2:].strip())
            elif line.startswith("#:"):
                entry.places += line[2:].split()
            elif line.startswith("#,"):
                entry.flags |= {flag.strip() for flag in line[2:].split(",")}
            elif not line.startswith("#"):
                match = LINE.match(line)
                if not match or not (match[1] or field):
                    raise Problem(f"{path}:{number}: not understood: {line}")
                field = match[1] or field
                entry.fields[field] = entry.fields.get(field, "") + unquote(match[2])
    if entry.fields:
        entries.append(entry)
    return entries


def header(name, language):
    return [f"Project-Id-Version: {name}", f"Language: {language}", "MIME-Version: 1.0",
            "Content-Type: text/plain; charset=UTF-8", "Content-Transfer-Encoding: 8bit"]


def lines_of(field, text):
    """As gettext's own tools write it: a text of several lines begins on a line of its own."""
    pieces = text.splitlines(keepends=True)
    if len(pieces) <= 1:
        return [f"{field} {quote(text)}"]
    return [f'{field} ""'] + [quote(piece) for piece in pieces]


def write(path, header, entries):
    """@param entries  rows of notes, places, key, default and translation."""
    lines = ['msgid ""', 'msgstr ""'] + [quote(line + "\n") for line in header]
    for notes, places, key, default, translation in entries:
        lines.append("")
        lines += [f"#. {note}" for note in notes]
        lines += [f"#: {place}" for place in places]
        lines += lines_of("msgctxt", key) + lines_of("msgid", default) + lines_of("msgstr", translation)
    with open(path, "w", encoding="utf-8", newline="\n") as file:
        file.write("\n".join(lines) + "\n")
