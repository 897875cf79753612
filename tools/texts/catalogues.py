"""Which catalogues there are, how they follow the sources, and what makes one complete."""

import filecmp
import os
import re
import subprocess
import tempfile

import po
from pseudo import PLACEHOLDER
from sources import Problem, is_untranslatable, texts_below

LANGUAGES = ("de", "fr", "ja")
# The library's texts are installed with the library, for whatever program links it; trhost brings its own.
CATALOGUES = {
    "TRFoundation/Resources/localisation": ("TRFoundation", ("host", "TRFoundation")),
    "apps/trhost/localisation": ("trhost", ("apps",)),
}
WIDTH = "--width=110"


def run(*command):
    done = subprocess.run(command, capture_output=True, text=True)
    if done.returncode != 0:
        raise Problem(f"{' '.join(command)}:\n{done.stderr}")


def merge(old, template, new):
    """A language's texts, following the template: translations are kept, a changed default's becomes fuzzy, and what
    nobody may translate stands as it is."""
    with tempfile.NamedTemporaryFile("w", suffix=".po") as fixed:
        po.write(fixed.name, po.header("", ""), [(entry.notes, entry.places, entry.key, entry.default, entry.default)
                                          for entry in po.read(template) if is_untranslatable(entry.notes)])
        run("msgmerge", "--quiet", "--force-po", "--previous", "--compendium", fixed.name, WIDTH, "--output-file", new, old, template)
    run("msgattrib", "--force-po", "--no-obsolete", WIDTH, "--output-file", new, new)


def write_all(root, target):
    """Template and languages of every catalogue, as the sources want them, below target."""
    texts = {folder: texts_below(root, sources) for folder, (_, sources) in CATALOGUES.items()}
    owners = {}
    for folder, found in texts.items():
        for key, text in found.items():
            if key in owners:
                raise Problem(f"{key} is in two catalogues:\n  {owners[key].place}\n  {text.place}")
            owners[key] = text
        name = CATALOGUES[folder][0]
        os.makedirs(os.path.join(target, folder), exist_ok=True)
        template = os.path.join(target, folder, "texts.pot")
        po.write(template, po.header(name, ""), [(text.notes, sorted(text.files), key, text.default, "")
                                          for key, text in found.items()])
        for language in LANGUAGES:
            old = os.path.join(root, folder, f"{language}.po")
            new = os.path.join(target, folder, f"{language}.po")
            if not os.path.exists(old):
                old = os.path.join(target, folder, f"{language}.new")
                po.write(old, po.header(name, language), [])
            merge(old, template, new)
            if old.endswith(".new"):
                os.remove(old)


def update(root):
    """Writes what the sources want, after all of it could be made."""
    with tempfile.TemporaryDirectory() as made:
        write_all(root, made)
        for path in files_of(made):
            old = os.path.join(root, path)
            if os.path.exists(old) and filecmp.cmp(old, os.path.join(made, path), shallow=False):
                continue
            os.makedirs(os.path.dirname(old), exist_ok=True)
            with open(os.path.join(made, path), "rb") as new, open(old, "wb") as file:
                file.write(new.read())


def files_of(root):
    return [os.path.join(folder, name) for folder in CATALOGUES
            for name in ("texts.pot", *(f"{language}.po" for language in LANGUAGES))]


def edges(text):
    """What stands around the words: it makes columns and lines."""
    return re.match(r"\s*", text)[0], re.search(r"\s*\Z", text)[0]


def problems_of(path, language):
    """What a translator has to put right."""
    entries = po.read(path)
    if not entries or not entries[0].is_header or f"Language: {language}\n" not in entries[0].translation:
        yield f"{path}: its header does not say Language: {language}"
    for entry in entries:
        if entry.is_header:
            continue
        where, default, text = f"{path}: {entry.key}", entry.default, entry.translation
        if "fuzzy" in entry.flags:
            yield f"{where}: is fuzzy: its default became {default!r}"
        elif not text.strip():
            yield f"{where}: is not translated: {default!r}"
        elif is_untranslatable(entry.notes) and text != default:
            yield f"{where}: must stay as it is; found {text!r}, expected {default!r}"
        elif set(PLACEHOLDER.findall(text)) != set(PLACEHOLDER.findall(default)):
            yield (f"{where}: has the placeholders {sorted(set(PLACEHOLDER.findall(text)))}, "
                   f"expected {sorted(set(PLACEHOLDER.findall(default)))}: {text!r}")
        elif edges(text) != edges(default):
            yield f"{where}: has other blanks or line feeds around it than {default!r}: {text!r}"


def check(root):
    """@return everything that is out of date, incomplete or wrong, as lines for people."""
    found = []
    with tempfile.TemporaryDirectory() as made:
        write_all(root, made)
        for path in files_of(root):
            mine, wanted = os.path.join(root, path), os.path.join(made, path)
            if not os.path.exists(mine):
                found.append(f"{path} is missing; tools/dev texts makes it")
            elif not filecmp.cmp(mine, wanted, shallow=False):
                found.append(f"{path} does not follow the sources; tools/dev texts brings it up to date")
    for folder in CATALOGUES:
        for language in LANGUAGES:
            path = os.path.join(root, folder, f"{language}.po")
            if os.path.exists(path):
                found += [line.replace(root + os.sep, "") for line in problems_of(path, language)]
    return found
