"""What the tests of the documents share: the tree's Markdown files, and their parts."""

import os
import pathlib
import re

TOP = pathlib.Path(__file__).resolve().parents[2]
BUILD = pathlib.Path(os.environ.get("TAV_BUILD", TOP / "build/dev"))


def read(path):
    return (TOP / path).read_text(encoding="utf-8")


def documents():
    """Every Markdown file of the tree, by its path from the top."""
    found = []
    for folder, folders, files in os.walk(TOP):
        folders[:] = sorted(name for name in folders if name != "build" and not name.startswith("."))
        found += [pathlib.Path(folder, name).relative_to(TOP) for name in files if name.endswith(".md")]
    return sorted(found)


def sources(*folders, suffixes=(".cpp", ".h", ".ui", ".json", ".xml")):
    for folder in folders:
        for path in sorted((TOP / folder).rglob("*")):
            if path.suffix in suffixes and path.is_file():
                yield path


def blocks(text):
    """(language, content) of each code block; an indented one has the language ""."""
    found, block, language, indented, blank = [], None, "", [], True
    for line in text.splitlines() + [""]:
        if block is not None:
            if line.startswith("```"):
                found.append((language, "\n".join(block)))
                block = None
            else:
                block.append(line)
            continue
        if line.startswith("    ") and (blank or indented):
            indented.append(line[4:])
            continue
        if indented and line.strip():
            found.append(("", "\n".join(indented).rstrip()))
            indented = []
        elif indented:
            indented.append("")
        if line.startswith("```"):
            block, language = [], line[3:].strip()
        blank = not line.strip()
    if any(indented):
        found.append(("", "\n".join(indented).rstrip()))
    return found


def prose(text):
    """The text without its code blocks."""
    text = re.sub(r"^```.*?^```", "", text, flags=re.M | re.S)
    return re.sub(r"(?m)(?<=\n\n)(?: {4}.*\n?|\n)+", "\n", text)


def section(text, heading):
    """What stands below a heading, up to the next of its level or above."""
    match = re.search(rf"^(#+) {re.escape(heading)}$", text, flags=re.M)
    if not match:
        raise AssertionError(f"there is no heading \"{heading}\"")
    rest = text[match.end():]
    end = re.search(rf"^#{{1,{len(match[1])}}} ", rest, flags=re.M)
    return rest[: end.start()] if end else rest


def table_rows(text):
    """The cells of every table row but the heads and rules."""
    rows, lines = [], text.splitlines()
    for i, line in enumerate(lines):
        if not line.startswith("|") or re.match(r"^\|[-|: ]+\|$", line):
            continue
        if i + 1 < len(lines) and re.match(r"^\|[-|: ]+\|$", lines[i + 1]):
            continue
        rows.append([cell.strip() for cell in re.split(r"(?<!\\)\|", line.strip()[1:-1])])
    return rows


def codes(cell):
    """What stands in backquotes."""
    return re.findall(r"`([^`]+)`", cell)


def slug(heading):
    """The anchor that the repository page gives a heading."""
    text = re.sub(r"\[([^\]]*)\]\([^)]*\)", r"\1", heading).replace("`", "").strip().lower()
    return re.sub(r"[^\w\- ]", "", text).replace(" ", "-")


def anchors(text):
    seen, found = {}, set()
    for heading in re.findall(r"(?m)^#+ +(.*?) *$", re.sub(r"(?ms)^```.*?^```", "", text)):
        name = slug(heading)
        number = seen.get(name, 0)
        seen[name] = number + 1
        found.add(f"{name}-{number}" if number else name)
    return found
