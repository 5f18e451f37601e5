#!/usr/bin/env python3
"""Writes the reference part of docs/bus.md from the interface's XML; with --check fails when the
document is not what the XML makes of it."""

import pathlib
import re
import sys
import xml.etree.ElementTree as ET

TOP = pathlib.Path(__file__).resolve().parent.parent
XML = TOP / "tavcommonlibs/tavbus/org.ovrel.TavBus1.xml"
DOCUMENT = TOP / "docs/bus.md"
BEGIN = "<!-- From here on written by docs/busreference.py: edit the XML, not this. -->\n"


class Member:
    """A method or signal with what the comment before it says."""

    def __init__(self, element, comment):
        self.kind = element.tag
        self.name = element.get("name")
        self.arguments = element.findall("arg")
        self.text, self.errors, self.about = "", "", {}
        part, key = [], None
        for line in (comment or "").strip().splitlines() + ["@:"]:
            line = line.strip()
            start = re.match(r"@(\w*):\s*(.*)|(Errors):\s*(.*)", line)
            if not start:
                part.append(line)
                continue
            told = " ".join(part).strip()
            if key is None:
                self.text = told
            elif key == "Errors":
                self.errors = told
            else:
                self.about[key] = told
            key = start[3] or start[1]
            part = [start[4] or start[2] or ""]
        names = [argument.get("name") for argument in self.arguments]
        if not self.text or sorted(names) != sorted(self.about):
            sys.exit(f"{XML.name}: the comment of {self.name} must describe it and {names}")

    def directed(self, direction):
        return [a for a in self.arguments if a.get("direction", "in") == direction]

    def markdown(self):
        def told(arguments):
            return ", ".join(f"{a.get('type')} {a.get('name')}" for a in arguments)

        if self.kind == "signal":
            heading = f"signal {self.name}"
            form = f"{self.name}({told(self.arguments)})"
        else:
            heading = self.name
            out = told(self.directed("out"))
            form = f"{self.name}({told(self.directed('in'))})" + (f" → ({out})" if out else "")
        lines = [f"### {heading}", "", f"`{form}`", "", self.text, "", "| | Argument | Type | |", "|---|---|---|---|"]
        for argument in self.arguments:
            way = "" if self.kind == "signal" else argument.get("direction")
            name = argument.get("name")
            lines.append(f"| {way} | `{name}` | `{argument.get('type')}` | {self.about[name]} |")
        if self.errors:
            lines += ["", f"Errors: {self.errors}."]
        return "\n".join(lines) + "\n"


def reference():
    parser = ET.XMLParser(target=ET.TreeBuilder(insert_comments=True))
    interface = ET.parse(XML, parser).getroot().find("interface")
    parts, comment = [f"## {interface.get('name')}\n"], None
    for child in interface:
        if child.tag is ET.Comment:
            comment = child.text
        else:
            parts.append(Member(child, comment).markdown())
            comment = None
    return "\n".join(parts)


def main():
    text = DOCUMENT.read_text(encoding="utf-8")
    head, found, _ = text.partition(BEGIN)
    if not found:
        sys.exit(f"{DOCUMENT}: the line that the reference goes behind is missing")
    wanted = head + BEGIN + "\n" + reference()
    if sys.argv[1:] == ["--check"]:
        if wanted != text:
            sys.exit(f"{DOCUMENT} is not what {XML.name} makes of it: run docs/busreference.py")
    elif sys.argv[1:]:
        sys.exit("usage: docs/busreference.py [--check]")
    else:
        DOCUMENT.write_text(wanted, encoding="utf-8")


main()
