"""PNG files of opaque pictures: arrays of rows, columns and red, green, blue, in uint8 or uint16."""

import struct
import zlib

import numpy as np

SIGNATURE = b"\x89PNG\r\n\x1a\n"
NONE, SUB, UP = 0, 1, 2
RGB, PALETTE = 2, 3


def _chunk(kind, data=b""):
    return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))


def _palette_of(picture):
    """The colours of a picture, most frequent first, and each pixel's index among them."""
    packed = (picture.astype(np.uint32) * np.array([65536, 256, 1], np.uint32)).sum(axis=2, dtype=np.uint32)
    colors, inverse, counts = np.unique(packed, return_inverse=True, return_counts=True)
    order = np.lexsort((colors, -counts))
    place = np.empty_like(order)
    place[order] = np.arange(len(order))
    return colors[order], place[inverse].reshape(packed.shape)


def _filtered(rows, step):
    """Rows of bytes with their filters. What repeats the row above is stored as no difference to it."""
    above = np.vstack([np.zeros_like(rows[:1]), rows[:-1]])
    before = np.hstack([np.zeros_like(rows[:, :step]), rows[:, :-step]])
    use_up = (rows == above).all(axis=1)
    if step == 1:
        use_sub = np.zeros_like(use_up)  # neighbouring indices of a palette have nothing in common
    else:
        use_sub = ~use_up
    data = np.where(use_up[:, None], rows - above, np.where(use_sub[:, None], rows - before, rows))
    kinds = np.where(use_up, UP, np.where(use_sub, SUB, NONE)).astype(np.uint8)
    return np.hstack([kinds[:, None], data]).tobytes()


def write(picture):
    height, width, _ = picture.shape
    if picture.dtype == np.uint16:
        color_type, depth = RGB, 16
        rows, step, palette = picture.astype(">u2").reshape(height, -1).view(np.uint8), 6, b""
    else:
        colors, indices = _palette_of(picture)
        if len(colors) > 256:
            raise ValueError(f"{len(colors)} colours are more than a palette holds, 256")
        color_type, depth = PALETTE, 8
        rows, step = indices.astype(np.uint8), 1
        palette = _chunk(b"PLTE", b"".join(int(color).to_bytes(3, "big") for color in colors))
    header = struct.pack(">IIBBBBB", width, height, depth, color_type, 0, 0, 0)
    data = zlib.compress(_filtered(rows, step), 9)
    return SIGNATURE + _chunk(b"IHDR", header) + palette + _chunk(b"IDAT", data) + _chunk(b"IEND")


def _chunks_of(file):
    if not file.startswith(SIGNATURE):
        raise ValueError("it is no PNG file")
    at = len(SIGNATURE)
    while at < len(file):
        (length,) = struct.unpack_from(">I", file, at)
        kind, data = file[at + 4 : at + 8], file[at + 8 : at + 8 + length]
        if file[at : at + length + 12] != _chunk(kind, data):
            raise ValueError(f"its chunk {kind} at byte {at} is damaged")
        yield kind, data
        at += length + 12


def read(file):
    """The picture of a file in one of the forms that `write` uses, with its filters."""
    chunks = list(_chunks_of(file))
    content = {kind: b"".join(data for each, data in chunks if each == kind) for kind, _ in chunks}
    width, height, depth, color_type, *methods = struct.unpack(">IIBBBBB", content[b"IHDR"])
    if (color_type, depth) not in ((RGB, 16), (PALETTE, 8)) or any(methods):
        raise ValueError(f"it has colour type {color_type}, depth {depth}, methods {methods}: none that we write")
    step = 6 if color_type == RGB else 1
    lines = np.frombuffer(zlib.decompress(content[b"IDAT"]), np.uint8).reshape(height, 1 + width * step)
    rows = np.empty((height, width, step), np.uint8)
    above = np.zeros((width, step), np.uint8)
    for row, (kind, line) in enumerate(zip(lines[:, 0], lines[:, 1:].reshape(height, width, step))):
        if kind not in (NONE, SUB, UP):
            raise ValueError(f"its row {row} has filter {kind}: none that we write")
        line = np.add.accumulate(line, axis=0, dtype=np.uint8) if kind == SUB else line
        above = rows[row] = line + above if kind == UP else line
    if color_type == RGB:
        return rows.reshape(height, -1).view(">u2").reshape(height, width, 3).astype(np.uint16)
    return np.frombuffer(content[b"PLTE"], np.uint8).reshape(-1, 3)[rows[:, :, 0]]
