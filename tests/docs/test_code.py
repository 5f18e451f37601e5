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


class Code(unittest.TestCase):
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
