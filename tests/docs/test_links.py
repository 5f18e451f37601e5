import re
import unittest

import documents
from documents import TOP


class Links(unittest.TestCase):
    def test_every_link_leads_somewhere(self):
        links = 0
        for document in documents.documents():
            text = re.sub(r"`[^`\n]*`", "", documents.prose(documents.read(document)))
            for target in re.findall(r"\]\(([^)\s]+)\)", text):
                if re.match(r"[a-z]+:", target):
                    continue
                links += 1
                with self.subTest(document=str(document), target=target):
                    path, _, anchor = target.partition("#")
                    there = (TOP / document.parent / path).resolve() if path else TOP / document
                    self.assertTrue(there.exists(), "there is no such file")
                    self.assertTrue(there.is_relative_to(TOP), "it leads out of the tree")
                    if anchor:
                        self.assertIn(anchor, documents.anchors(there.read_text(encoding="utf-8")))
        self.assertGreater(links, 20)

    def test_every_document_is_reached_from_the_readme(self):
        reached, new = set(), {TOP / "README.md"}
        while new:
            document = new.pop()
            reached.add(document)
            for target in re.findall(r"\]\(([^)\s#]+)", document.read_text(encoding="utf-8")):
                there = (document.parent / target).resolve()
                if there.suffix == ".md" and there.exists() and there not in reached:
                    new.add(there)
        for document in documents.documents():
            self.assertTrue(TOP / document in reached, f"no way leads to {document}")

    def test_every_picture_is_shown(self):
        text = "".join(documents.read(document) for document in documents.documents())
        for picture in (TOP / "docs/images").iterdir():
            self.assertTrue(f"docs/images/{picture.name}" in text, picture.name)


unittest.main()
