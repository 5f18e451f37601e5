"""What docs/troubleshooting.md quotes is what the product says."""

import html
import re
import unittest

import documents

FOLDERS = ("tavcommonlibs", "tavmodems")
WORDS = {"wvdial", "pppd", "done.", "double quotes"}  # parts of names and other programs' words


def texts():
    """Every text of the sources, with what is filled in written as …"""
    found = set()
    for path in documents.sources(*FOLDERS, suffixes=(".cpp", ".h")):
        source = re.sub(r"//[^\n\"]*$", "", path.read_text(encoding="utf-8"), flags=re.M)
        source = re.sub(r'"\s*\n\s*"', "", source)  # a text in pieces
        lines = re.findall(r'"((?:[^"\\\n]|\\.)*)"', source)
        # What is streamed into one message.
        for stream in re.findall(r'<<[^;]*;', source):
            pieces = re.findall(r'<<\s*(?:"((?:[^"\\]|\\.)*)"|([^<;]*))', stream)
            lines.append(" ".join(text or "%1" for text, _ in pieces))
        found |= {re.sub(r"%(?:\d|ms|[ds])", "…", line) for line in lines}
    for path in documents.sources(*FOLDERS, suffixes=(".ui",)):
        found |= {html.unescape(text) for text in re.findall(r"<string>(.*?)</string>", path.read_text())}
    return found


class Troubleshooting(unittest.TestCase):
    def test_quoted_texts_are_the_products(self):
        said = texts()
        document = re.sub(r"`[^`]*`", "", documents.prose(documents.read("docs/troubleshooting.md")))
        quoted = set(re.findall(r'"([^"]+)"', document)) - WORDS
        self.assertGreater(len(quoted), 40)
        for text in sorted(quoted):
            with self.subTest(text=text):
                wanted = re.sub(r"\(0\)", "(…)", text).strip()
                # A message may come after another's beginning ("The porg … is not opened: ").
                parts = [wanted] if any(wanted in one for one in said) else re.split(r"(?<=opened: )", wanted)
                for part in parts:
                    part = re.sub(r"[ …]+$", "", part)
                    self.assertTrue(any(part.strip() in one for one in said), part)


unittest.main()
