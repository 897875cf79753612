"""Finds the texts for people in C++ sources: literals that begin with "$$$/"."""

import os
import re

# What may stand in a source, longest meaning first: a literal is only one outside of comments.
TOKEN = re.compile(
    r'''(?P<space>(?:\s|\\\n|//(?:\\\n|[^\n])*|/\*.*?\*/)+)
      |(?:u8|[uUL])?R"(?P<mark>[^()\\\s]{0,16})\((?P<raw>.*?)\)(?P=mark)"
      |(?:u8|[uUL])?"(?P<text>(?:[^"\\\n]|\\.)*)"
      |(?P<letter>(?:u8|[uUL])?'(?:[^'\\\n]|\\.)+')
      |(?P<other>[A-Za-z0-9_](?:[A-Za-z0-9_]|'(?=[A-Za-z0-9_]))*|.)''',
    re.DOTALL | re.VERBOSE)
ESCAPE = re.compile(r"\\(?:([0-7]{1,3})|x([0-9A-Fa-f]+)|u([0-9A-Fa-f]{4})|U([0-9A-Fa-f]{8})|(\n)|(.))", re.DOTALL)
SIMPLE_ESCAPES = {"a": "\a", "b": "\b", "f": "\f", "n": "\n", "r": "\r", "t": "\t", "v": "\v"}
KEY_MARK = "$$$/"
NOTE_MARK = "#{"


class Problem(Exception):
    """What a person must put right; the text says where."""


def unescape(literal):
    """The characters that a literal's spelling stands for; numbers are the bytes of UTF-8."""
    data = bytearray()
    at = 0
    for match in ESCAPE.finditer(literal):
        data += literal[at:match.start()].encode()
        at = match.end()
        octal, hexadecimal, short, long, splice, letter = match.groups()
        if octal or hexadecimal:
            data.append(int(octal, 8) if octal else int(hexadecimal, 16))
        elif short or long:
            data += chr(int(short or long, 16)).encode()
        elif not splice:
            data += SIMPLE_ESCAPES.get(letter, letter).encode()
    data += literal[at:].encode()
    return data.decode(errors="replace")  # a file format's signature is no text


def literals(source):
    """Every literal with its line; adjacent ones are one."""
    joined, begin, line = None, 0, 1
    for token in TOKEN.finditer(source):
        text = token["raw"] if token["raw"] is not None else token["text"]
        if text is not None:
            if joined is None:
                joined, begin = "", line
            joined += text if token["raw"] is not None else unescape(text)
        elif token["space"] is None and joined is not None:
            yield joined, begin
            joined = None
        line += token[0].count("\n")
    if joined is not None:
        yield joined, begin


class Text:
    """One text with its English default, where it stands, and what translators are told about it."""

    def __init__(self, literal, place):
        self.place = place
        head, equals, rest = literal[len(KEY_MARK):].partition("=")
        if not equals or not head:
            raise Problem(f'{place}: "{literal}" has no key and default; expected "$$$/Key=English default"')
        self.key = head
        default, mark, note = rest.partition(NOTE_MARK)
        if mark and not note.endswith("}") and not note.startswith("comment}"):
            raise Problem(f'{place}: the note of {head} does not end with "}}"')
        self.default = default.replace("\\n", "\n")
        self.notes = [note.removeprefix("comment}").removesuffix("}").replace("\n", " ")] if mark else []
        if not self.default:
            raise Problem(f"{place}: the default of {head} is empty")
        self.files = {place.rpartition(":")[0]}

    @property
    def is_untranslatable(self):
        return is_untranslatable(self.notes)

    def add(self, other):
        """The same key once more."""
        if other.default != self.default:
            raise Problem(f"{self.key} has two defaults:\n  {self.place}: {self.default!r}\n"
                          f"  {other.place}: {other.default!r}")
        self.files |= other.files
        self.notes += [note for note in other.notes if note not in self.notes]


def is_untranslatable(notes):
    """A note that says so keeps a text as it is in every language."""
    return any(note.strip().lower().startswith("do not translate") for note in notes)


def texts_of_file(root, path):
    with open(os.path.join(root, path), encoding="utf-8") as file:
        source = file.read()
    for literal, line in literals(source):
        # The mark alone is the code that looks for it.
        if literal.startswith(KEY_MARK) and literal != KEY_MARK:
            yield Text(literal, f"{path}:{line}")


def texts_below(root, folders):
    """All texts of the sources in some folders, by key.
    Raises Problem, naming both places, when one key has two defaults."""
    texts = {}
    for folder in folders:
        for below, names, files in os.walk(os.path.join(root, folder)):
            names.sort()
            for name in sorted(files):
                if not name.endswith((".h", ".cpp")):
                    continue
                for text in texts_of_file(root, os.path.relpath(os.path.join(below, name), root)):
                    if text.key in texts:
                        texts[text.key].add(text)
                    else:
                        texts[text.key] = text
    return dict(sorted(texts.items()))
