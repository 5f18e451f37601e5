import contextlib
import io
import pathlib
import sys
import tempfile
import unittest

import documents
from documents import TOP

sys.path.insert(0, str(TOP / "docs"))
import screenshots

IMAGES = TOP / "docs/images"


class Screenshots(unittest.TestCase):
    def test_each_picture_is_one_of_the_tours(self):
        self.assertEqual(sorted(path.name for path in IMAGES.iterdir()), sorted(screenshots.PICTURES))
        tour = "".join(path.read_text() for path in (TOP / "tests/tour").glob("*.cpp"))
        for step, _ in screenshots.PICTURES.values():
            self.assertIn(f'picture(QStringLiteral("{step}"))', tour)

    def test_a_stale_picture_is_named(self):
        with tempfile.TemporaryDirectory() as folder:
            for number, (name, (step, _)) in enumerate(screenshots.PICTURES.items()):
                other = "settings.png" if name == "network.png" else name
                target = pathlib.Path(folder, f"{number:02}-{step}.png")
                target.write_bytes((IMAGES / other).read_bytes())
            told = io.StringIO()
            with contextlib.redirect_stdout(told):
                self.assertEqual(screenshots.main(folder, check=True), 1)
            self.assertEqual(told.getvalue().count("stale"), 1)
            self.assertIn("network.png: stale", told.getvalue())


unittest.main()
