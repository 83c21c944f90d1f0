"""Says and draws what the parts of three frames cost, from what star_benchmarks measured.

A part is what one frame, cut short, takes more than another: see parts_benchmark.cpp.
"""
import sys

import matplotlib

matplotlib.use("Agg")
import matplotlib.pyplot as plt

from report import Report
from table import print_table

FRAMES = ["still", "pan16", "dense"]
PATHS = ["plain", "fast"]
PARTS = {"clear": "#bbbbbb", "scan": "#2c7fb8", "reject": "#7fcdbb", "shade and project": "#f0a830",
         "rasterise": "#c0392b", "convert": "#777777"}


def parts_of(report, frame, path):
    """Milliseconds of each part, and of the whole frame."""
    def ms(name):
        return report.ns(name) / 1e6

    whole = ms(f"frame_{frame}/{path}")
    convert = ms(f"convert_8/{path}")
    # Each end is behind the one before it.
    ends = {"clear": ms("clear_frame"), "scan": ms(f"part_{frame}_scanned/{path}")}
    if path == "plain":
        ends["shade and project"] = ms(f"part_{frame}_unlit/plain")
    else:
        ends["reject"] = ms(f"part_{frame}_rejected/fast")
        ends["shade and project"] = ms(f"part_{frame}_undrawn/fast")
    ends["rasterise"] = whole - convert
    ends["convert"] = whole
    parts = dict.fromkeys(PARTS, 0.0)
    before = 0.0
    for part, end in ends.items():
        parts[part] = end - before
        before = end
    return parts, whole


def main():
    report = Report(sys.argv[1])
    rows = [["ms", *PARTS, "frame"]]
    figure, axes = plt.subplots(figsize=(9, 3.2), layout="constrained")
    bars = [(frame, path) for frame in FRAMES for path in PATHS]
    for i, (frame, path) in enumerate(bars):
        parts, whole = parts_of(report, frame, path)
        rows.append([f"`frame_{frame}`, {path}", *(f"{ms:.1f}" if ms else "" for ms in parts.values()),
                     f"{whole:.1f}"])
        left = 0.0
        for part, ms in parts.items():
            share = max(0.0, 100 * ms / whole)
            axes.barh(i + 0.25 * (i // 2), share, 0.8, left, color=PARTS[part], edgecolor="white",
                      linewidth=0.5, label=part if i == 0 else None)
            left += share
        axes.text(101, i + 0.25 * (i // 2), f"{whole:.{0 if whole > 100 else 1}f} ms", va="center", fontsize=9)
    axes.set_yticks([i + 0.25 * (i // 2) for i in range(len(bars))],
                    [f"frame_{frame}, {path}" for frame, path in bars], fontsize=9)
    axes.invert_yaxis()
    axes.set_xlim(0, 112)
    axes.set_xticks(range(0, 101, 20), [f"{percent} %" for percent in range(0, 101, 20)], fontsize=8)
    axes.spines[["top", "right", "left"]].set_visible(False)
    axes.legend(fontsize=9, frameon=False, ncols=len(PARTS), loc="lower center", bbox_to_anchor=(0.45, 1),
                columnspacing=1, handlelength=1)
    figure.savefig(sys.argv[2], dpi=160, metadata={"Software": None})
    print_table(rows)


if __name__ == "__main__":
    main()
