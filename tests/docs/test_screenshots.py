import contextlib
import io
import pathlib
import sys
import struct
import tempfile
import unittest
import unittest.mock
import zlib

import documents
from documents import TOP

sys.path.insert(0, str(TOP / "docs"))
import screenshots

IMAGES = TOP / "docs/images"


def picture(colour, width=10, height=600):
    """A PNG of that colour at each place."""
    def chunk(name, data):
        return struct.pack(">I", len(data)) + name + data + struct.pack(">I", zlib.crc32(name + data))

    rows = b"".join(b"\0" + bytes(c for x in range(width) for c in colour(x, y)) for y in range(height))
    head = struct.pack(">IIBBBBB", width, height, 8, 2, 0, 0, 0)
    return b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", head) + chunk(b"IDAT", zlib.compress(rows)) + chunk(b"IEND", b"")


class Screenshots(unittest.TestCase):
    def test_each_picture_is_one_of_the_tours(self):
        self.assertEqual(sorted(path.name for path in IMAGES.iterdir()), sorted(screenshots.PICTURES))
        tour = "".join(path.read_text() for path in (TOP / "tests/tour").glob("*.cpp"))
        for step, _ in screenshots.PICTURES.values():
            self.assertIn(f'picture(QStringLiteral("{step}"))', tour)

    def test_a_stale_picture_is_named(self):
        with tempfile.TemporaryDirectory() as folder:
            shown, tour = pathlib.Path(folder, "images"), pathlib.Path(folder, "tour")
            shown.mkdir()
            tour.mkdir()
            for number, (name, (step, log)) in enumerate(screenshots.PICTURES.items()):
                same = picture(lambda x, y: (200, 200, 200))
                # Another log is no other look, another button is.
                other = picture(lambda x, y: (0, 0, 0) if y in log or name == "network.png" and x < 2 else (200, 200, 200))
                (shown / name).write_bytes(same)
                (tour / f"{number:02}-{step}.png").write_bytes(other)
            told = io.StringIO()
            with unittest.mock.patch.object(screenshots, "IMAGES", shown), contextlib.redirect_stdout(told):
                self.assertEqual(screenshots.main(tour, check=True), 1)
                self.assertEqual(told.getvalue().count("stale"), 1)
                self.assertIn("network.png: stale", told.getvalue())
                screenshots.main(tour, check=False)
                self.assertEqual(screenshots.main(tour, check=True), 0)


unittest.main()
