"""Makes a language that nobody speaks but everybody can read: what stays plain on the screen was not localised,
and what is cut off there will be cut off in a real language."""

import math
import re

import po
from sources import is_untranslatable

PLAIN = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz"
MARKED = "ÀƁĆĎÉḞĜĤÎĴĶĻḾŃÖṖǪŔŠŢÛṼŴẊÝŽàƀćďéḟĝĥîĵķļḿńöṗǫŕšţûṽŵẋýž"
MARKS = str.maketrans(PLAIN, MARKED)
PLACEHOLDER = re.compile(r"([@^][0-9]{1,4})")
OPEN, CLOSE = "\u27e6", "\u27e7"
LONGER = 0.4


def pseudo(text):
    """Brackets and length go around the words: what indents or ends a line stays where it is."""
    body = text.strip()
    begin = text.index(body)
    pieces = PLACEHOLDER.split(body)
    words = "".join(piece if number % 2 else piece.translate(MARKS) for number, piece in enumerate(pieces))
    more = "~" * math.ceil(LONGER * len(body))
    return f"{text[:begin]}{OPEN}{words}{more}{CLOSE}{text[begin + len(body):]}"


def write_catalogue(template, path):
    """The pseudo-language's texts (.po) from those that are to be translated (.pot)."""
    po.write(path, po.header("", "qps"),
             [(entry.notes, entry.places, entry.key, entry.default,
               entry.default if is_untranslatable(entry.notes) else pseudo(entry.default))
              for entry in po.read(template) if not entry.is_header])
