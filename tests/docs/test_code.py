"""Code that a document shows is code of the tree."""

import re
import unittest

import documents
from documents import TOP

LANGUAGES = {"cpp": (".cpp", ".h"), "cmake": (".txt", ".cmake"), "json": (".json",)}
# Its examples are whole files of their own: tst_simulatordocument reads them.
LOADED = {"docs/simulator.md"}


def linked(document):
    """Files that the document links to, and those in linked folders."""
    for target in re.findall(r"\]\(([^)\s#:]+)", documents.read(document)):
        path = (TOP / document.parent / target).resolve()
        if path.is_dir():
            yield from path.iterdir()
        elif path.is_file():
            yield path


# Names of others: of D-Bus, and of the language of the drawings.
OTHERS = {"ServiceUnknown", "sequenceDiagram", "flowchart"}


class Code(unittest.TestCase):
    def test_names_are_those_of_the_sources(self):
        text = "".join(path.read_text(encoding="utf-8") for path in documents.sources(
            "tavcommonlibs", "tavmodems", "simulator", "tests", "docs", suffixes=(".cpp", ".h", ".txt", ".in")))
        known, count = set(re.findall(r"\w+", text)) | OTHERS, 0
        for document in documents.documents():
            text = documents.read(document)
            code = re.findall(r"`([^`\n]+)`", text)
            code += [block for language, block in documents.blocks(text) if language == "mermaid"]
            names = set(re.findall(r"\b([A-Za-z]\w+)\(\)", text))
            names |= set(re.findall(r"\b(?:[A-Z][a-z]+|[a-z]+)[A-Z]\w*\b", "\n".join(code)))
            count += len(names)
            for name in sorted(names):
                with self.subTest(document=str(document), name=name):
                    self.assertTrue(name in known)
        self.assertGreater(count, 100)

    def test_code_stands_in_a_file_that_is_linked(self):
        shown = 0
        for document in documents.documents():
            for language, block in documents.blocks(documents.read(document)):
                if language not in LANGUAGES or str(document) in LOADED:
                    continue
                shown += 1
                with self.subTest(document=str(document), block=block.split("\n")[0]):
                    self.assertTrue(any(
                        block in path.read_text(encoding="utf-8")
                        for path in linked(document) if path.suffix in LANGUAGES[language]))
        self.assertGreater(shown, 5)


unittest.main()
