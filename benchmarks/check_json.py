"""Checks what scripts/bench --json prints, on standard input: the names, the members, and that all of
them are numbers above 0 that fit each other."""
import json
import sys

NAMES = ["frame_still", "frame_pan16", "frame_dense", "frame_slow_pan", "frame_drift", "frame_roll",
         "off_frame_star", "below_threshold_star", "still_pixel", "streak_pixel", "tiny_streak_pixel",
         "crossing_pixel", "convert_8", "convert_16"]
MEMBERS = {"case", "plain_ns", "fast_ns", "ratio", "limit_ns"}


def faults_of(document):
    if document.keys() != {"cases"}:
        yield f"members {sorted(document)}"
    cases = document["cases"]
    if [case.get("case") for case in cases] != NAMES:
        yield f"cases {[case.get('case') for case in cases]}"
    for case in cases:
        if case.keys() != MEMBERS:
            yield f"{case}: members"
        elif not all(isinstance(case[m], float) and case[m] > 0 for m in MEMBERS - {"case"}):
            yield f"{case}: not all are numbers above 0"
        # A median of ratios is not the ratio of medians, but near it.
        elif not 0.5 < case["plain_ns"] / case["fast_ns"] / case["ratio"] < 2:
            yield f"{case}: the ratio is not that of the times"


def main():
    faults = list(faults_of(json.load(sys.stdin)))
    print("\n".join(faults) or f"{len(NAMES)} cases")
    sys.exit(1 if faults else 0)


if __name__ == "__main__":
    main()
