"""What star_benchmarks measured: its report is a list of Google Benchmark's own, one a turn."""
import json
import statistics
import sys


class Report:
    def __init__(self, path):
        with open(path, encoding="utf-8") as file:
            turns = json.load(file)
        self.context = turns[0]["context"]
        self.turns = len(turns)
        # Each benchmark's runs, one a turn.
        self.runs = {}
        for turn in turns:
            for run in turn["benchmarks"]:
                if run.get("error_occurred"):
                    sys.exit(f"{run['name']}: {run['error_message']}")
                self.runs.setdefault(run["name"].removesuffix("/real_time"), []).append(run)

    def all_ns(self, name):
        """Nanoseconds a unit, turn by turn."""
        return [1e9 / run["items_per_second"] for run in self.runs[name]]

    def ns(self, name):
        return statistics.median(self.all_ns(name))

    def ratios(self, case):
        """Plain over fast, turn by turn."""
        both = zip(self.all_ns(f"{case}/plain"), self.all_ns(f"{case}/fast"))
        return [plain / fast for plain, fast in both]
