"""What docs/troubleshooting.md quotes is what the product says."""

import html
import re
import unittest

import documents

FOLDERS = ("tavcommonlibs", "tavmodems")
WORDS = {"wvdial", "pppd", "done.", "double quotes"}  # parts of names and other programs' words

# Complaints that are told in other words, or that only a mistake in the code brings about.
UNTOLD = {
    "Settings saving error", "Test dealer closing", "To modem only mode",  # titles above texts that are told
    '\\"…\\" could not be run',  # told with the command in it
    "Signals are not caught", "A worker's thread was started again after its work had ended",
    "could not start its work", "a command with control characters is not sent",
}


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


def wording(text):
    """A text without what is filled in at its ends and the punctuation there."""
    return re.sub(r"^[ …:]+|[ …:.(]+$", "", text)


def complaints():
    """The beginning of each warning, failure and message box of the product, by its source."""
    found = {}
    for path in documents.sources(*FOLDERS, suffixes=(".cpp",)):
        source = re.sub(r'"\s*\n\s*"', "", path.read_text(encoding="utf-8"))
        calls = re.findall(r"\bqC?(?:Warning|Critical)\(([^;]*);", source)
        calls += re.findall(r"QMessageBox::(?:information|warning|critical)\(([^;]*);", source)
        calls += re.findall(r"\bQuestion question\(([^;]*);", source)
        for call in calls:
            for text in re.findall(r'"((?:[^"\\\n]|\\.)*)"', call):
                text = wording(re.sub(r"%(?:\d|ms|[ds])", "…", text))
                if " " in text:
                    found[text] = path.relative_to(documents.TOP)
    return found


def quoted():
    document = re.sub(r"`[^`]*`", "", documents.prose(documents.read("docs/troubleshooting.md")))
    return set(re.findall(r'"([^"]+)"', document)) - WORDS


class Troubleshooting(unittest.TestCase):
    def test_quoted_texts_are_the_products(self):
        said = {wording(text) for text in texts()}
        self.assertGreater(len(quoted()), 40)
        for text in sorted(quoted()):
            with self.subTest(text=text):
                wanted = re.sub(r"\(0\)", "(…)", text)
                # A message may come after another's beginning ("The porg … is not opened: ").
                parts = [wanted] if wording(wanted) in said else re.split(r"(?<=opened: )", wanted)
                for part in parts:
                    self.assertTrue(wording(part) in said, part)

    def test_every_complaint_is_told(self):
        told = {wording(text.replace("(0)", "(…)")) for text in quoted()}
        found = complaints()
        self.assertEqual(UNTOLD - set(found), set())
        self.assertGreater(len(found), 40)
        for text, path in sorted(found.items()):
            if text in UNTOLD:
                continue
            with self.subTest(text=text, source=str(path)):
                self.assertTrue(any(text in one for one in told))


unittest.main()
