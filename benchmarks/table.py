"""Reads what star_benchmarks measured and prints one table, or the judged cases as JSON.

Each case ran as CASE/plain and CASE/fast. A figure is the median of the repetitions, in nanoseconds
of processor time per unit: star, pixel, camera sample or frame. The limit of a case is what its
bytes and exponentials take at the speeds that this machine showed in the same run.
"""
import argparse
import json
import sys

JUDGED = ["frame_still", "frame_pan16", "frame_dense", "off_frame_star", "below_threshold_star",
          "still_pixel", "streak_pixel", "crossing_pixel", "convert_8", "convert_16"]

# The library functions that a pixel and a star of the plain path are made of, and how often.
PIXEL_CALLS = {"expf": 1, "erff": 2}
STAR_CALLS = {"sin": 2, "cos": 2, "powf": 4}
CALLS = {"still_pixel": PIXEL_CALLS, "streak_pixel": PIXEL_CALLS, "crossing_pixel": PIXEL_CALLS,
         "off_frame_star": STAR_CALLS}
CALLS_ALLOWANCE = 1.5


def medians(report):
    """Nanoseconds and counters by benchmark name."""
    found = {}
    for run in report["benchmarks"]:
        if run.get("error_occurred"):
            sys.exit(f"{run['name']}: {run['error_message']}")
        if run.get("aggregate_name") == "median":
            # What Google Benchmark appends to a name (".../real_time") is no part of it.
            name = "/".join(run["run_name"].split("/")[:2])
            found[name] = {**run, "ns": 1e9 / run["items_per_second"]}
    return found


def limit_of(run, runs):
    """What a unit takes at least, in nanoseconds, and what it is made of."""
    parts = {
        "read": run["read_bytes"] * runs["machine_memory_read"]["ns"],
        "write": run["written_bytes"] * runs["machine_memory_write"]["ns"],
        "exp": run["exponentials"] * runs["machine_vector_exp"]["ns"],
    }
    return sum(parts.values()), "+".join(name for name, ns in parts.items() if ns > 0)


def duration(ns):
    return f"{ns / 1e6:.2f} ms" if ns > 1e5 else f"{ns:.2f} ns"


def rows_of(runs):
    names = JUDGED + [name[: -len("/plain")] for name in runs
                      if name.endswith("/plain") and name[: -len("/plain")] not in JUDGED]
    for name in names:
        if f"{name}/plain" in runs:
            plain, fast = runs[f"{name}/plain"], runs[f"{name}/fast"]
            limit, made_of = limit_of(fast, runs)
            yield name, plain["ns"], fast["ns"], limit, made_of, fast.get("label", "")


def print_table(report, runs):
    print(f"kernels: {report['context']['kernels']}; median of "
          f"{runs['machine_memory_read']['repetitions']}; processor time\n")
    print(f"{'case':24}{'plain':>14}{'fast':>14}{'ratio':>8}{'limit':>14}{'x limit':>9}  limit is")
    for name, plain, fast, limit, made_of, label in rows_of(runs):
        at_best = f"{duration(limit):>14}{fast / limit:9.1f}  {made_of}" if limit else ""
        print(f"{name:24}{duration(plain):>14}{duration(fast):>14}{plain / fast:8.1f}{at_best}"
              f"{'  ' + label if label else ''}")

    print("\nthis machine")
    for name, what in [("memory_read", "read from memory"), ("memory_write", "write to memory")]:
        print(f"  {what:20}{1 / runs['machine_' + name]['ns']:8.1f} bytes a ns")
    for name in ["vector_exp", "vector_erf", "expf", "erff", "erff_saturated", "sin", "cos", "powf"]:
        print(f"  {name:20}{runs['machine_' + name]['ns']:8.2f} ns a value")

    print("\nthe plain path beside the library functions that pixels and stars are made of")
    for name, calls in CALLS.items():
        if f"{name}/plain" not in runs:
            continue
        total = sum(count * runs[f"machine_{call}"]["ns"] for call, count in calls.items())
        plain = runs[f"{name}/plain"]["ns"]
        verdict = "within" if plain <= CALLS_ALLOWANCE * total else "ABOVE"
        print(f"  {name:20}{plain:8.1f} ns, its functions {total:6.1f} ns: {plain / total:5.2f} times, "
              f"{verdict} {CALLS_ALLOWANCE}   ({' + '.join(f'{n} {c}' for c, n in calls.items())})")


def print_json(runs):
    cases = [{"case": name, "plain_ns": plain, "fast_ns": fast, "ratio": plain / fast,
              "limit_ns": limit}
             for name, plain, fast, limit, _, _ in rows_of(runs) if name in JUDGED]
    missing = set(JUDGED) - {case["case"] for case in cases}
    if missing:
        sys.exit(f"not measured: {', '.join(sorted(missing))}")
    print(json.dumps({"cases": cases}, indent=1))


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("report", help="JSON of star_benchmarks")
    parser.add_argument("--json", action="store_true")
    args = parser.parse_args()
    with open(args.report, encoding="utf-8") as file:
        report = json.load(file)
    runs = medians(report)
    if args.json:
        print_json(runs)
    else:
        print_table(report, runs)


if __name__ == "__main__":
    main()
