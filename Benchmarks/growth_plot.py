"""The lines of the group "growth" as an SVG: a panel for each part of the library, nanoseconds an item
against the number of items. Both axes are logarithmic: a line that rises by a decade a decade would mean a cost
that is quadratic.
"""
import math

PANEL_WIDTH, PANEL_HEIGHT, COLUMNS = 380, 230, 2
LEFT, RIGHT, TOP, BOTTOM = 64, 62, 34, 36
COLOURS = ("#1f5fa8", "#b5461b", "#3f7d20")
SIZES = {1000: "1k", 10000: "10k", 100000: "100k", 1000000: "1M", 5000000: "5M"}


def text(x, y, words, anchor="middle", colour="#333", weight="normal"):
    return f'<text x="{x:.1f}" y="{y:.1f}" text-anchor="{anchor}" fill="{colour}" font-weight="{weight}">{words}</text>'


def duration(ns):
    return f"{ns:g} ns" if ns < 1000 else f"{ns / 1000:g} us"


def line(x1, y1, x2, y2, colour):
    return f'<line x1="{x1:.1f}" y1="{y1:.1f}" x2="{x2:.1f}" y2="{y2:.1f}" stroke="{colour}"/>'


class Panel:
    """One pair of axes; `lines` are name -> [(size, nanoseconds)]."""

    def __init__(self, title, lines, left, top):
        self.title, self.lines, self.left, self.top = title, lines, left, top
        times = [time for points in lines.values() for _, time in points]
        sizes = [size for points in lines.values() for size, _ in points]
        self.sizes = min(sizes), max(sizes)
        # At least two decades, so that noise does not look like growth.
        lowest = math.floor(math.log10(min(times)))
        self.decades = range(lowest, max(lowest + 2, math.ceil(math.log10(max(times)))) + 1)

    def x(self, size):
        first, last = map(math.log10, self.sizes)
        return self.left + LEFT + (math.log10(size) - first) / (last - first) * (PANEL_WIDTH - LEFT - RIGHT)

    def y(self, time):
        share = (math.log10(time) - self.decades[0]) / (self.decades[-1] - self.decades[0])
        return self.top + PANEL_HEIGHT - BOTTOM - share * (PANEL_HEIGHT - TOP - BOTTOM)

    def axes(self):
        right = self.left + PANEL_WIDTH - RIGHT
        yield text(self.left + LEFT, self.top + 18, self.title, "start", weight="bold")
        for decade in self.decades:
            y = self.y(10 ** decade)
            yield line(self.left + LEFT, y, right, y, "#ddd")
            yield text(self.left + LEFT - 6, y + 4, duration(10.0 ** decade), "end")
        for size, name in SIZES.items():
            if self.sizes[0] <= size <= self.sizes[1]:
                yield text(self.x(size), self.top + PANEL_HEIGHT - BOTTOM + 18, name)

    def label_places(self):
        """Where the names of the lines stand, at least 13 apart."""
        places, free = {}, -math.inf
        for name, points in sorted(self.lines.items(), key=lambda entry: -max(entry[1])[1]):
            free = max(self.y(max(points)[1]) + 4, free)
            places[name] = free
            free += 13
        return places

    def svg(self):
        yield from self.axes()
        places = self.label_places()
        for colour, (name, points) in zip(COLOURS, self.lines.items()):
            path = " ".join(f"{self.x(size):.1f},{self.y(time):.1f}" for size, time in sorted(points))
            yield f'<polyline points="{path}" fill="none" stroke="{colour}" stroke-width="1.8"/>'
            yield text(self.left + PANEL_WIDTH - RIGHT + 6, places[name], name, "start", colour)


def svg(lines):
    """`lines`: "<panel>_<line>" -> [(size, nanoseconds)]"""
    panels = {}
    for name, points in lines.items():
        panel, _, own = name.partition("_")
        panels.setdefault(panel, {})[own] = points
    width, height = COLUMNS * PANEL_WIDTH, -(-len(panels) // COLUMNS) * PANEL_HEIGHT
    parts = [f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {width} {height}" width="{width}" '
             f'height="{height}" font-family="sans-serif" font-size="12">',
             '<title>Nanoseconds an item against the number of items</title>',
             f'<rect width="{width}" height="{height}" fill="white"/>']
    for i, (title, own) in enumerate(panels.items()):
        parts += Panel(title, own, i % COLUMNS * PANEL_WIDTH, i // COLUMNS * PANEL_HEIGHT).svg()
    return "\n".join(parts + ["</svg>", ""])
