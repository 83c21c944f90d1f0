"""Compares instructions per star and pixel, as callgrind counted them, with the budget."""
import argparse
import re
import sys

# Another patch level of the compiler or of the C library moves counts by a per cent or two; a
# change worth a look moves them more.
SLACK = 1.03
# So far below that the budget no longer guards anything.
STALE = 0.90


def read_units(path):
    """Units by (case, path)."""
    with open(path, encoding="utf-8") as file:
        return {(case, by): float(units) for case, by, units in map(str.split, file)}


def read_counts(path):
    """Instructions, those of called functions included, by (case, path)."""
    counts = {}
    with open(path, encoding="utf-8") as file:
        for line in file:
            found = re.match(r"\s*([\d,]+) .*:count_(\w+)_(plain|fast) ", line)
            if found:
                counts[found[2], found[3]] = int(found[1].replace(",", ""))
    return counts


def read_budget(path):
    with open(path, encoding="utf-8") as file:
        lines = [line.split() for line in file if line.strip() and not line.startswith("#")]
    return {(case, by): float(per_unit) for case, by, per_unit in lines}


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("units", help="what instruction_workload printed")
    parser.add_argument("counts", help="callgrind_annotate's inclusive counts")
    parser.add_argument("budget")
    parser.add_argument("--record", action="store_true", help="make what is counted the budget")
    args = parser.parse_args()

    units, counts = read_units(args.units), read_counts(args.counts)
    if not units or units.keys() != counts.keys():
        sys.exit(f"not counted: {sorted(units.keys() ^ counts.keys())}")
    per_unit = {key: counts[key] / units[key] for key in units}
    if args.record:
        with open(args.budget, encoding="utf-8") as file:
            head = [line for line in file if line.startswith("#")]
        with open(args.budget, "w", encoding="utf-8") as file:
            file.writelines(head)
            file.writelines(f"{case} {by} {per_unit[case, by]:.2f}\n" for case, by in per_unit)

    budget = read_budget(args.budget)
    if budget.keys() != per_unit.keys():
        sys.exit(f"in the budget or counted, not both: {sorted(budget.keys() ^ per_unit.keys())}")
    above = False
    print(f"{'case':24}{'path':8}{'instructions':>14}{'budget':>10}")
    for (case, by), count in per_unit.items():
        share = count / budget[case, by]
        verdict = ""
        if share > SLACK:
            above, verdict = True, f"  ABOVE by {100 * (share - 1):.1f} %"
        elif share < STALE:
            verdict = f"  below by {100 * (1 - share):.1f} %: lower the budget (--record)"
        print(f"{case:24}{by:8}{count:14.2f}{budget[case, by]:10.2f}{verdict}")
    sys.exit(1 if above else 0)


if __name__ == "__main__":
    main()
