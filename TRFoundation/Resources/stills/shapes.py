"""Shapes as signed distances, negative inside, and a canvas that paints them with soft edges.

Coordinates have their origin in the middle of the picture, y grows downwards; SCALE pixels to a unit. Only sums, products, quotients,
square roots and comparisons are used: these are exact to the last bit on every machine.
"""

import numpy as np

WIDTH, HEIGHT = 1920, 1080
SCALE = 1.15
STAGE = 840  # pixels each way, in the middle: all that is drawn lies within
_X, _Y = np.meshgrid(*[(np.arange(STAGE) + 0.5 - STAGE / 2) / SCALE] * 2)
_EDGE_STEPS = 32  # of coverage at an edge: few enough for a palette, too many to see


def _length(x, y):
    return np.sqrt(x * x + y * y)


def circle(x, y, radius):
    return _length(_X - x, _Y - y) - radius


def box(x, y, half_width, half_height, radius=0.0):
    """A rectangle around a point, its corners rounded."""
    dx = np.abs(_X - x) - (half_width - radius)
    dy = np.abs(_Y - y) - (half_height - radius)
    return _length(np.maximum(dx, 0), np.maximum(dy, 0)) + np.minimum(np.maximum(dx, dy), 0) - radius


def line(*points, width):
    """A line through points, round at its ends and corners."""
    distances = []
    for (ax, ay), (bx, by) in zip(points, points[1:]):
        dx, dy = bx - ax, by - ay
        along = np.clip(((_X - ax) * dx + (_Y - ay) * dy) / (dx * dx + dy * dy), 0, 1)
        distances.append(_length(_X - ax - along * dx, _Y - ay - along * dy))
    return union(*distances) - width / 2


def polygon(*points, radius=0.0):
    """The area within points that go around once, grown by a radius."""
    outline = line(*points, points[0], width=0)
    inside = np.zeros(_X.shape, bool)
    for (ax, ay), (bx, by) in zip(points, points[1:] + points[:1]):
        if ay != by:
            crosses = (ay > _Y) != (by > _Y)
            inside ^= crosses & (_X < ax + (bx - ax) * (_Y - ay) / (by - ay))
    return np.where(inside, -outline, outline) - radius


def left_of(x):
    return _X - x


def above(y):
    return _Y - y


def stroke(shape, width):
    """The line along a shape's edge."""
    return np.abs(shape) - width / 2


def union(*shapes):
    result = shapes[0]
    for shape in shapes[1:]:
        result = np.minimum(result, shape)
    return result


def common(*shapes):
    result = shapes[0]
    for shape in shapes[1:]:
        result = np.maximum(result, shape)
    return result


def without(shape, *others):
    return common(shape, *(-other for other in others))


class Canvas:
    def __init__(self, background):
        self._background = np.array(background, float)
        self._stage = np.empty((STAGE, STAGE, 3))
        self._stage[:] = self._background

    def paint(self, shape, color):
        coverage = np.floor(np.clip(0.5 - shape * SCALE, 0, 1) * _EDGE_STEPS + 0.5) / _EDGE_STEPS
        self._stage += (np.array(color, float) - self._stage) * coverage[:, :, None]

    def finish(self):
        """The picture in uint8."""
        edges = (self._stage[0], self._stage[-1], self._stage[:, 0], self._stage[:, -1])
        assert all((edge == self._background).all() for edge in edges), "drawn beyond the stage"
        picture = np.empty((HEIGHT, WIDTH, 3))
        picture[:] = self._background
        top, left = (HEIGHT - STAGE) // 2, (WIDTH - STAGE) // 2
        picture[top : top + STAGE, left : left + STAGE] = self._stage
        return np.floor(picture + 0.5).astype(np.uint8)
