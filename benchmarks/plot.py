"""Draws how the cost of a frame grows, from what star_benchmarks measured of growth_*."""
import argparse
import json

import matplotlib

matplotlib.use("Agg")
import matplotlib.pyplot as plt
from matplotlib.ticker import FormatStrFormatter, NullLocator

PANELS = [
    ("growth_stars", "stars, all over the sky", 1),
    ("growth_width", "width of the frame, pixels\n(500 000 stars)", 1),
    ("growth_spot_size", "Star Spot Size\n(500 000 stars)", 10),
    ("growth_segments", "segments of a 5 degree pan\n(100 000 stars)", 1),
]
LINES = [("plain", "#999999", "s"), ("fast", "#c0392b", "o")]


def series(report, name, by):
    """(argument, milliseconds) in the order of arguments."""
    points = []
    for run in report["benchmarks"]:
        if run.get("aggregate_name") != "median":
            continue
        parts = run["run_name"].split("/")
        if parts[:2] == [name, by]:
            points.append((int(parts[2]), 1e3 / run["items_per_second"]))
    return sorted(points)


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("report", help="JSON of star_benchmarks")
    parser.add_argument("picture", help="PNG to write")
    args = parser.parse_args()
    with open(args.report, encoding="utf-8") as file:
        report = json.load(file)

    figure, axes = plt.subplots(1, len(PANELS), figsize=(11, 2.9), layout="constrained")
    for panel, (name, label, scale) in zip(axes, PANELS):
        for by, colour, marker in LINES:
            points = series(report, name, by)
            panel.loglog([x / scale for x, _ in points], [ms for _, ms in points], color=colour,
                         marker=marker, markersize=3.5, linewidth=1.2, label=by)
        places = [x / scale for x, _ in series(report, name, "fast")]
        panel.set_xticks(places, [f"{x:g}" if x < 1e4 else f"{x / 1e6:g} M" for x in places])
        panel.xaxis.set_minor_locator(NullLocator())
        panel.yaxis.set_major_formatter(FormatStrFormatter("%g"))
        panel.set_xlabel(label, fontsize=8)
        panel.tick_params(labelsize=6.5)
        panel.grid(which="major", linewidth=0.3)
    axes[0].set_ylabel("ms a frame", fontsize=8)
    axes[0].legend(fontsize=8, frameon=False)
    figure.savefig(args.picture, dpi=80, metadata={"Software": None})


if __name__ == "__main__":
    main()
