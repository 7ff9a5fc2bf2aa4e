#!/usr/bin/env python3
"""Draws a part of a dump that `fliglaf --vcd` wrote as SVG on standard output.

    scripts/draw-waveform.py DUMP FROM LENGTH [ROW...] >picture.svg

FROM and LENGTH are in us. A ROW is LABEL=FILE: annotations to draw below the lines, as sigrok-cli prints
them with --protocol-decoder-samplenum.
"""
import re
import sys
from html import escape

LEFT, WIDTH, ROW, HIGH, TOP = 76, 800, 34, 18, 16


def read_dump(path):
    """The time of a tick in us, and the changes of each line as (tick, level), by name."""
    unit, names, changes, tick = 0.0, {}, {}, 0
    with open(path, encoding="utf-8") as dump:
        for line in dump:
            words = line.split()
            if words[0] == "$timescale":
                unit = int(words[1]) * {"ns": 1e-3, "us": 1.0}[words[2]]
            elif words[0] == "$var":
                names[words[3]] = words[4]
                changes[words[4]] = []
            elif line[0] == "#":
                tick = int(line[1:])
            elif line[0] in "01":
                changes[names[line[1:].strip()]].append((tick, int(line[0])))
    return unit, changes


def read_annotations(path):
    """Those of a decoder, as (first tick, last tick, text)."""
    with open(path, encoding="ascii") as lines:
        found = (re.match(r"(\d+)-(\d+) [^:]*: (.*)", line) for line in lines)
        return [(int(part[1]), int(part[2]), part[3]) for part in found if part]


class Picture:
    def __init__(self, first, length):
        self.first, self.last = first, first + length
        self.y = TOP
        self.parts = []

    def x(self, tick):
        tick = min(max(tick, self.first), self.last)
        return round(LEFT + (tick - self.first) * WIDTH / (self.last - self.first), 1)

    def text(self, x, y, text, anchor="middle"):
        self.parts.append(f'<text x="{x}" y="{y}" text-anchor="{anchor}">{escape(text)}</text>')

    def line(self, name, changes):
        self.text(LEFT - 10, self.y + HIGH - 4, name, "end")
        level = next((now for tick, now in reversed(changes) if tick <= self.first), 0)
        path = f"M{LEFT} {self.y + HIGH * (1 - level)}"
        for tick, now in changes:
            if self.first < tick < self.last:
                path += f"H{self.x(tick)}V{self.y + HIGH * (1 - now)}"
        self.parts.append(f'<path d="{path}H{LEFT + WIDTH}"/>')
        self.y += ROW

    def annotations(self, label, found):
        self.text(LEFT - 10, self.y + HIGH - 4, label, "end")
        for begin, end, text in found:
            if begin < self.first or end > self.last:
                continue
            left, width = self.x(begin), self.x(end) - self.x(begin)
            self.parts.append(f'<rect x="{left}" y="{self.y}" width="{width:.1f}" height="{HIGH}" rx="4"/>')
            self.text(round(left + width / 2, 1), self.y + HIGH - 4, text)
        self.y += ROW

    def scale(self, unit):
        step = next(s for s in (1, 2, 5, 10, 20, 50, 100, 200, 500, 1000) if s / unit * 12 > self.last - self.first)
        for us in range(0, round((self.last - self.first) * unit) + 1, step):
            self.text(self.x(self.first + us / unit), self.y + 6, f"{us} µs" if us else "0")
        self.y += 20

    def svg(self):
        width = LEFT + WIDTH + 24
        style = ("text{font:12px sans-serif;fill:#222}path{fill:none;stroke:#06c;stroke-width:1.2}"
                 "rect{fill:#def;stroke:#88a}rect.back{fill:#fff;stroke:none}")
        return (f'<svg xmlns="http://www.w3.org/2000/svg" width="{width}" height="{self.y}" '
                f'viewBox="0 0 {width} {self.y}">\n<style>{style}</style>\n'
                f'<rect class="back" width="{width}" height="{self.y}"/>\n'
                + "\n".join(self.parts) + "\n</svg>")


def main(dump, start, length, *rows):
    unit, changes = read_dump(dump)
    picture = Picture(round(float(start) / unit), round(float(length) / unit))
    for name, of_line in changes.items():
        picture.line(name, of_line)
    for row in rows:
        label, path = row.split("=", 1)
        picture.annotations(label, read_annotations(path))
    picture.scale(unit)
    print(picture.svg())


if __name__ == "__main__":
    if len(sys.argv) < 4:
        sys.exit(__doc__)
    main(*sys.argv[1:])
