"""Compares instructions per star and pixel, as callgrind counted them, with the budget."""
import argparse
import re
import sys

# Another patch level of the compiler or of the C library moves counts by a per cent or two; a
# change worth a look moves them more.
SLACK = 1.03
# So far below that the budget no longer guards anything.
STALE = 0.90
# The plain path may not grow beyond what it was; it asks once a row of pixels which path converts.
NO_MORE = 1.002


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


class Budget:
    """Instructions by (case, path), those of the plain path at first by case."""

    def __init__(self, path):
        with open(path, encoding="utf-8") as file:
            lines = file.readlines()
        self.head = [line for line in lines if line.startswith("#")]
        self.now, self.at_first = {}, {}
        for line in lines:
            if line.strip() and not line.startswith("#"):
                case, plain, fast, at_first = line.split()
                self.now[case, "plain"], self.now[case, "fast"] = float(plain), float(fast)
                self.at_first[case] = float(at_first)

    def write(self, path):
        with open(path, "w", encoding="utf-8") as file:
            file.writelines(self.head)
            for case, at_first in self.at_first.items():
                file.write(f"{case:21}{self.now[case, 'plain']:10.2f}{self.now[case, 'fast']:10.2f}"
                           f"{at_first:10.2f}\n")


def verdict_on(count, budget, at_first):
    """What is wrong with a count, or nothing; whether it fails."""
    if at_first is not None and count > at_first * NO_MORE:
        return f"ABOVE the {at_first:.2f} before there was a fast path", True
    if count > budget * SLACK:
        return f"ABOVE by {100 * (count / budget - 1):.1f} %", True
    if count < budget * STALE:
        return f"below by {100 * (1 - count / budget):.1f} %: lower the budget (--record)", False
    return "", False


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
    budget = Budget(args.budget)
    if budget.now.keys() != per_unit.keys():
        sys.exit(f"in the budget or counted, not both: {sorted(budget.now.keys() ^ per_unit.keys())}")
    if args.record:
        budget.now = per_unit
        budget.write(args.budget)

    failed = False
    print(f"{'case':24}{'path':8}{'instructions':>14}{'budget':>10}")
    for (case, by), count in per_unit.items():
        verdict, fails = verdict_on(count, budget.now[case, by],
                                    budget.at_first[case] if by == "plain" else None)
        failed = failed or fails
        print(f"{case:24}{by:8}{count:14.2f}{budget.now[case, by]:10.2f}  {verdict}".rstrip())
    sys.exit(1 if failed else 0)


if __name__ == "__main__":
    main()
