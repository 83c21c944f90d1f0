"""Prints what star_benchmarks measured as tables, or the judged cases as JSON.

Units are stars, pixels, camera samples or frames. The limit of a case is what its bytes and
exponentials take at the best speeds that this machine showed in the same run.
"""
import argparse
import json
import statistics
import sys

from report import Report

JUDGED = ["frame_still", "frame_pan16", "frame_dense", "frame_slow_pan", "frame_drift", "frame_roll",
          "off_frame_star", "below_threshold_star", "still_pixel", "streak_pixel", "tiny_streak_pixel",
          "crossing_pixel", "convert_8", "convert_16"]

# What the plain path calls the most of the C library for a unit, and how often.
CALLED = {"below_threshold_star": {},
          "off_frame_star": {"sin": 2, "cos": 2, "powf": 4},
          "still_pixel": {"expf": 1},
          "streak_pixel": {"expf": 1, "erff": 2},
          "crossing_pixel": {"expf": 1, "erff_saturated": 2}}
ONE_OF_EACH = ["expf", "erff", "sin", "cos", "powf"]


def limit_of(report, case):
    """What a unit takes at least, in nanoseconds, and what it is made of."""
    run = report.runs[case][0]
    parts = {what: run[counter] * min(report.all_ns(f"machine_{speed}"))
             for what, counter, speed in [("read", "read_bytes", "memory_read"),
                                          ("write", "written_bytes", "memory_write"),
                                          ("exp", "exponentials", "vector_exp")]
             if run[counter] > 0}
    return sum(parts.values()), " + ".join(parts)


def duration(ns):
    number, unit = (ns / 1e6, "ms") if ns > 1e5 else (ns, "ns")
    return f"{f'{number:#.3g}'.rstrip('.') if number < 1000 else f'{number:.0f}'} {unit}"


def print_table(rows):
    """As Markdown, the first row as its head, all but the first and the last column to the right."""
    widths = [max(len(row[i]) for row in rows) for i in range(len(rows[0]))]
    for row in rows:
        cells = [cell.rjust(width) if 0 < i < len(row) - 1 else cell.ljust(width)
                 for i, (cell, width) in enumerate(zip(row, widths))]
        print(f"| {' | '.join(cells)} |")
        if row is rows[0]:
            print(f"|{'|'.join('-' * (width + 2) for width in widths)}|")


def cases_of(report):
    """Those that are judged first; all with two paths."""
    paired = [name.removesuffix("/plain") for name in report.runs if name.endswith("/plain")]
    return [case for case in JUDGED if case in paired] + [c for c in paired if c not in JUDGED]


def print_cases(report):
    rows = [["case", "plain", "fast", "ratio", "lowest", "highest", "limit", "times limit", "limit is"]]
    for case in cases_of(report):
        fast = report.ns(f"{case}/fast")
        ratios = report.ratios(case)
        limit, made_of = limit_of(report, f"{case}/fast")
        label = report.runs[f"{case}/fast"][0].get("label", "")
        rows.append([f"`{case}`", duration(report.ns(f"{case}/plain")), duration(fast)]
                    + [f"{r:.1f}" for r in (statistics.median(ratios), min(ratios), max(ratios))]
                    + ([duration(limit), f"{fast / limit:.1f}", made_of] if limit else ["", "", label]))
    for name in report.runs:
        if "/" not in name and not name.startswith("machine_"):
            limit, made_of = limit_of(report, name)
            both = report.ns(name)
            rows.append([f"`{name}`", duration(both), "the same", "", "", "", duration(limit),
                         f"{both / limit:.1f}", made_of])
    print_table(rows)


def print_machine(report):
    rows = [["this machine", "best", "median", "worst", ""]]
    for speed, what in [("memory_read", "reads memory"), ("memory_write", "clears memory")]:
        all_ns = report.all_ns(f"machine_{speed}")
        rows.append([what] + [f"{1 / ns:.1f}" for ns in (min(all_ns), statistics.median(all_ns), max(all_ns))]
                    + ["bytes a ns"])
    for function in ["vector_exp", "vector_erf", "expf", "erff", "erff_saturated", "sin", "cos", "powf"]:
        all_ns = report.all_ns(f"machine_{function}")
        rows.append([function] + [f"{ns:.2f}" for ns in (min(all_ns), statistics.median(all_ns), max(all_ns))]
                    + ["ns a value"])
    print_table(rows)


def print_plain(report):
    """The plain path beside the library's functions, so that no ratio is bought by a slow one."""
    one_of_each = sum(report.ns(f"machine_{function}") for function in ONE_OF_EACH)
    rows = [["plain path", "takes", " + ".join(ONE_OF_EACH), "times that", "what it calls", "times that", "calls"]]
    for case, calls in CALLED.items():
        plain = report.ns(f"{case}/plain")
        own = sum(count * report.ns(f"machine_{function}") for function, count in calls.items())
        rows.append([f"`{case}`", duration(plain), duration(one_of_each), f"{plain / one_of_each:.2f}",
                     duration(own) if own else "", f"{plain / own:.2f}" if own else "",
                     " + ".join(f"{count} {function}" for function, count in calls.items()) or "none"])
    print_table(rows)


def print_json(report):
    missing = set(JUDGED) - set(cases_of(report))
    if missing:
        sys.exit(f"not measured: {', '.join(sorted(missing))}")
    cases = [{"case": case, "plain_ns": report.ns(f"{case}/plain"), "fast_ns": report.ns(f"{case}/fast"),
              "ratio": statistics.median(report.ratios(case)), "limit_ns": limit_of(report, f"{case}/fast")[0]}
             for case in JUDGED]
    print(json.dumps({"cases": cases}, indent=1))


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("report", help="what star_benchmarks --report wrote")
    parser.add_argument("--json", action="store_true")
    args = parser.parse_args()
    report = Report(args.report)
    if args.json:
        print_json(report)
        return
    print(f"kernels: {report.context['kernels']}; medians of {report.turns}\n")
    for print_part in print_cases, print_machine, print_plain:
        print_part(report)
        print()


if __name__ == "__main__":
    main()
