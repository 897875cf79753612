"""Pictures that stand in for media: a line drawing on a plate, without words, clear at thumbnail size too."""

from .shapes import Canvas, above, box, circle, common, left_of, line, polygon, stroke, union, without

BACKGROUND = (27, 30, 35)
PLATE = (41, 46, 54)
LINE = (224, 229, 236)
DIM = (94, 103, 116)
AMBER = (242, 184, 75)
RED = (236, 92, 88)
BLUE = (92, 170, 245)

STROKE = 26
GAP = 24  # between lines that cross


def _start():
    canvas = Canvas(BACKGROUND)
    canvas.paint(circle(0, 0, 350), PLATE)
    return canvas


def media_pending():
    """A clock; its ring is not full yet."""
    canvas = _start()
    radius = 196
    ring = stroke(circle(0, 0, radius), STROKE)
    canvas.paint(ring, DIM)
    missing = common(left_of(0), above(0))  # the quarter before twelve
    canvas.paint(
        union(without(ring, missing), circle(0, -radius, STROKE / 2), circle(-radius, 0, STROKE / 2)), AMBER
    )
    canvas.paint(line((0, -108), (0, 0), (76, 52), width=STROKE), LINE)
    return canvas.finish()


def media_offline():
    """A film frame, struck out."""
    canvas = _start()
    half_width, half_height = 222, 164
    film = stroke(box(0, 0, half_width, half_height, 34), STROKE)
    holes = [box(side * 164, row * 66, 20, 18, 8) for side in (-1, 1) for row in (-1, 0, 1)]
    slash = [(-214, 214), (214, -214)]
    cut = line(*slash, width=STROKE + 2 * GAP)
    canvas.paint(without(union(film, *holes), cut), LINE)
    canvas.paint(line(*slash, width=STROKE), RED)
    return canvas.finish()


def _monitor(half_width, half_height, y):
    bottom = y + half_height
    return union(
        stroke(box(0, y, half_width, half_height, 34), STROKE),
        line((0, bottom), (0, bottom + 62), width=STROKE),
        line((-92, bottom + 62), (92, bottom + 62), width=STROKE),
    )


def playing_on_hardware():
    """A monitor that plays; its picture goes out."""
    canvas = _start()
    open_corner = without(_monitor(226, 148, -14), box(206, -144, 94, 94))
    ends = [circle(112, -162, STROKE / 2), circle(226, -50, STROKE / 2)]
    canvas.paint(union(open_corner, *ends), LINE)
    canvas.paint(polygon((-50, -68), (-50, 40), (44, -14), radius=12), LINE)
    canvas.paint(
        union(
            line((140, -100), (240, -200), width=STROKE),
            line((158, -200), (240, -200), (240, -118), width=STROKE),
        ),
        BLUE,
    )
    return canvas.finish()


def capture_preview_on_hardware():
    """A recording camera, seen on a monitor."""
    canvas = _start()
    canvas.paint(_monitor(226, 164, -34), LINE)
    canvas.paint(box(-34, -34, 98, 76, 22), LINE)
    canvas.paint(polygon((88, -34), (126, -74), (126, 6), radius=10), LINE)
    canvas.paint(circle(-34, -34, 38), RED)
    return canvas.finish()


def audio_video_clip():
    """A film strip above the waveform of its sound."""
    canvas = _start()
    y = -96
    film = [stroke(box(0, y, 236, 104, 28), STROKE)]
    for column in range(-3, 4):
        for side in (-1, 1):
            film.append(box(column * 58, y + side * 62, 15, 12, 5))
    film.append(polygon((-16, y - 22), (-16, y + 22), (20, y), radius=8))
    canvas.paint(union(*film), LINE)
    heights = (14, 32, 54, 28, 70, 46, 82, 60, 38, 66, 24, 42, 16)
    for place, height in enumerate(heights):
        x = (place - (len(heights) - 1) / 2) * 38
        canvas.paint(line((x, 140 - height), (x, 140 + height), width=18), BLUE)
    return canvas.finish()
