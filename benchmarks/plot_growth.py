"""Draws how the cost of a frame grows, from what star_benchmarks measured of growth_*."""
import sys

import matplotlib

matplotlib.use("Agg")
import matplotlib.pyplot as plt
from matplotlib.ticker import LogLocator, NullLocator

from report import Report

PANELS = [
    ("growth_stars", "stars, all over the sky", 1),
    ("growth_width", "width of the frame, pixels\n(500 000 stars)", 1),
    ("growth_spot_size", "Star Spot Size\n(500 000 stars)", 10),
    ("growth_segments", "segments of a 5 degree pan\n(100 000 stars)", 1),
    ("growth_pan", "degrees of a pan in 16 segments\n(500 000 stars)", 100),
]
LINES = [("plain", "#999999", "s"), ("fast", "#c0392b", "o")]


def series(report, name, path):
    """(argument, milliseconds) in the order of arguments."""
    start = f"{name}/{path}/"
    return sorted((int(run.removeprefix(start)), report.ns(run) / 1e6)
                  for run in report.runs if run.startswith(start))


def short(number):
    for size, suffix in (1e6, " M"), (1e3, " k"):
        if number >= 10 * size or (number >= size and size == 1e6):
            return f"{number / size:g}{suffix}"
    return f"{number:g}"


def main():
    report = Report(sys.argv[1])
    figure, axes = plt.subplots(1, len(PANELS), figsize=(13, 3.4), sharey=True, layout="constrained")
    for panel, (name, label, scale) in zip(axes, PANELS):
        for path, colour, marker in LINES:
            points = series(report, name, path)
            panel.loglog([x / scale for x, _ in points], [ms for _, ms in points], color=colour,
                         marker=marker, markersize=4, linewidth=1.3, label=path)
        places = [x / scale for x, _ in series(report, name, "fast")]
        panel.set_xticks(places, [short(x) for x in places])
        panel.xaxis.set_minor_locator(NullLocator())
        panel.set_xlabel(label, fontsize=9)
        panel.tick_params(labelsize=8)
        panel.grid(which="major", linewidth=0.3)
    axes[0].yaxis.set_major_locator(LogLocator(subs=(1, 2, 5)))
    axes[0].yaxis.set_major_formatter(lambda ms, _: f"{ms:g} ms")
    axes[0].yaxis.set_minor_locator(NullLocator())
    axes[0].set_ylabel("a frame", fontsize=9)
    axes[0].legend(fontsize=9, frameon=False)
    figure.savefig(sys.argv[2], dpi=160, metadata={"Software": None})


if __name__ == "__main__":
    main()
