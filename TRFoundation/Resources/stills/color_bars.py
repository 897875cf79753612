"""Colour bars after SMPTE RP 219-1 (the pattern of ARIB STD-B28), 1920 x 1080, 100 % white reference.

Stored as RGB of 16 bits that become exactly the standard's codes when they are converted to Y'CbCr of 10 bits by
the matrix of BT.709, limited range, rounded to nearest. RGB holds no values beyond black, white and full
colours, so of the choices that the standard leaves those within are taken: 100 % white where it has -I, +I or
white (second row), black where it has black or +Q (third row). Where the pluge has -2 %, black is stored.
Edges are hard: shaping them is up to whatever makes a signal of the picture.
"""

import numpy as np

WIDTH, HEIGHT = 1920, 1080
ROW_HEIGHTS = (630, 90, 90, 270)  # 7, 1, 1 and 3 twelfths
COLUMN_WIDTHS = (240, 206, 206, 206, 204, 206, 206, 206, 240)
PLUGE_WIDTHS = (240, 309, 411, 171, 69, 68, 69, 68, 69, 206, 240)

FULL = 65535


def _level(percent):
    """A share of full as 16 bits."""
    return (percent * FULL * 2 + 100) // 200


def _color(red, green, blue, percent=100):
    return tuple(_level(percent) if each else 0 for each in (red, green, blue))


def _grey(percent):
    return (_level(percent),) * 3


def _bars(percent):
    kinds = ((1, 1, 1), (1, 1, 0), (0, 1, 1), (0, 1, 0), (1, 0, 1), (1, 0, 0), (0, 0, 1))
    return [_color(*kind, percent) for kind in kinds]


BLACK, WHITE = _grey(0), _grey(100)
YELLOW, CYAN, RED, BLUE = _color(1, 1, 0), _color(0, 1, 1), _color(1, 0, 0), _color(0, 0, 1)


def _row(colors, widths):
    return np.repeat(np.array(colors, np.uint16), widths, axis=0)


def _ramp(width):
    """Grey from black to white in steps of one 10-bit code, each code as the grey that is nearest to it."""
    column = np.arange(width)
    code = (column * 876 * 2 + (width - 1)) // (2 * (width - 1))  # 0 to 876, rounded
    level = (code * FULL * 2 + 876) // (2 * 876)
    return np.repeat(level[:, None], 3, axis=1).astype(np.uint16)


def color_bars():
    first = _row([_grey(40), *_bars(75), _grey(40)], COLUMN_WIDTHS)
    second = _row([CYAN, WHITE, *[_grey(75)] * 6, BLUE], COLUMN_WIDTHS)
    third = _row([YELLOW, BLACK, *[BLACK] * 5, WHITE, RED], COLUMN_WIDTHS)
    ramp_start = sum(COLUMN_WIDTHS[:2])
    ramp_width = sum(COLUMN_WIDTHS[2:7])
    third[ramp_start : ramp_start + ramp_width] = _ramp(ramp_width)
    below_black = BLACK  # -2 % has no RGB
    fourth = _row(
        [_grey(15), BLACK, WHITE, BLACK, below_black, BLACK, _grey(2), BLACK, _grey(4), BLACK, _grey(15)],
        PLUGE_WIDTHS,
    )
    return np.repeat(np.stack([first, second, third, fourth]), ROW_HEIGHTS, axis=0)
