#!/usr/bin/env python3
"""The README's pictures are the tour's: docs/screenshots.py TOUR [--check] replaces those in
docs/images that look otherwise by now; --check only names them and fails."""

import pathlib
import shutil
import struct
import sys
import zlib

IMAGES = pathlib.Path(__file__).resolve().parent / "images"
# Picture: the tour's, and the rows in which a log or a list without an order stands, which is another
# in every run.
PICTURES = {
    "dial-test.png": ("stopped", range(136, 533)),
    "ask-modem.png": ("asked", range(300, 533)),
    "settings.png": ("edited-main", range(0)),
    "network.png": ("network-applied", {*range(104, 224), *range(390, 533)}),
}
# A button under the pointer and a cursor that blinks are no other look.
TOLERATED = 0.003


def pixels(path):
    """(width, rows) of a PNG of eight bits a channel, each row as bytes (RFC 2083)."""
    data = path.read_bytes()
    width, height, depth, kind, _, _, interlace = struct.unpack(">IIBBBBB", data[16:29])
    if depth != 8 or kind not in (2, 6) or interlace:
        raise ValueError(f"{path}: a PNG of a kind that is not read here")
    packed, at = b"", 8
    while at < len(data):
        length, name = struct.unpack(">I4s", data[at:at + 8])
        if name == b"IDAT":
            packed += data[at + 8:at + 8 + length]
        at += length + 12
    raw, size = zlib.decompress(packed), 3 if kind == 2 else 4
    rows, above = [], bytes(width * size)
    for y in range(height):
        begin = y * (width * size + 1)
        method, row = raw[begin], bytearray(raw[begin + 1:begin + 1 + width * size])
        for i, value in enumerate(row):
            left = row[i - size] if i >= size else 0
            corner = above[i - size] if i >= size else 0
            if method == 1:
                value += left
            elif method == 2:
                value += above[i]
            elif method == 3:
                value += (left + above[i]) // 2
            elif method == 4:
                value += min((left, above[i], corner), key=lambda near: abs(left + above[i] - corner - near))
            row[i] = value & 255
        above = bytes(row)
        rows.append(b"".join(above[i:i + 3] for i in range(0, len(above), size)))
    return width, rows


def difference(one, other, ignored=range(0)):
    """The share of pixels that can be told apart; 1 for pictures of two sizes."""
    if one.read_bytes() == other.read_bytes():
        return 0.0
    (width, rows), (other_width, other_rows) = pixels(one), pixels(other)
    if (width, len(rows)) != (other_width, len(other_rows)):
        return 1.0
    differing = counted = 0
    for y, (row, other_row) in enumerate(zip(rows, other_rows)):
        if y in ignored:
            continue
        counted += width
        if row != other_row:
            differing += sum(
                max(abs(row[i + c] - other_row[i + c]) for c in range(3)) > 24 for i in range(0, 3 * width, 3))
    return differing / counted


def main(tour, check):
    stale = False
    for name, (step, ignored) in PICTURES.items():
        taken = next(pathlib.Path(tour).glob(f"[0-9][0-9]-{step}.png"), None)
        if taken is None:
            sys.exit(f"the tour in {tour} has no picture of \"{step}\"")
        shown = IMAGES / name
        share = difference(taken, shown, ignored) if shown.exists() else 1.0
        if share <= TOLERATED:
            print(f"{name}: as the tour shows it ({share:.1%} differ)")
        else:
            stale = True
            print(f"{name}: {'stale' if check else 'replaced'} ({share:.1%} differ)")
            if not check:
                shutil.copyfile(taken, shown)
    return 1 if stale and check else 0


if __name__ == "__main__":
    if len(sys.argv) not in (2, 3) or sys.argv[2:] not in ([], ["--check"]):
        sys.exit(__doc__)
    sys.exit(main(sys.argv[1], sys.argv[2:] == ["--check"]))
