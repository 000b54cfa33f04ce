"""What the tests want to know of Markdown files."""

import re
import urllib.parse

# Of links and pictures, up to a title; code is left out before.
LINK = re.compile(r"\]\(([^)\s]+)[^)]*\)")
CODE = re.compile(r"^```.*?^```|`[^`\n]*`", re.MULTILINE | re.DOTALL)
TABLE_ROW = re.compile(r"^\|(.*)\|$", re.MULTILINE)


def dead_links(document):
    """Where the document's links lead that lead to another file, when that does not exist."""
    targets = LINK.findall(CODE.sub("", document.read_text()))
    files = [urllib.parse.unquote(target.partition("#")[0]) for target in targets
             if not urllib.parse.urlsplit(target).scheme]
    return [file for file in files if file and not (document.parent / file).exists()]


def first_cells(text):
    """Of each table's rows but its head."""
    cells = [row.split("|")[0].strip() for row in TABLE_ROW.findall(text)]
    heads = {number - 1 for number, cell in enumerate(cells) if set(cell) == {"-"}}
    return [cell for number, cell in enumerate(cells) if number not in heads and set(cell) != {"-"}]
