#!/usr/bin/env python3
"""Compares what the benchmarks have measured with the goals.

    bench/report.py [--markdown] [--partial] GOALS RESULT...

A result is a JSON file of Google Benchmark, or a text file with lines "name value". A line is printed for
each row of the goals; the exit status is 1 unless all pass. A row without a result fails, or is left out
with --partial. What is compared is the best of each contender's repetitions.
"""

import argparse
import json
import math
import re
import sys
from dataclasses import dataclass
from pathlib import Path

SETS = ("three_phase", "mixed")
HEADINGS = ("metric", "set", "against", "yardstick", "ours", "ratio", "goal", "wanted", "")
SUFFIX = re.compile(r"/(iterations:\d+|repeats:\d+|real_time|manual_time)")


@dataclass
class Goal:
    metric: str
    benchmark: str
    data_set: str
    yardstick: str
    measure: str
    relation: str
    limit: float
    wanted: str

    @property
    def faster(self):
        """True if the ratio says how many times faster ours is, False if how much more it takes."""
        return self.relation == ">="


def read_goals(path):
    goals = []
    for line in path.read_text().splitlines():
        if line.strip() and not line.startswith("#"):
            *names, goal, wanted = (cell.strip() for cell in line.split("|"))
            relation, limit = goal.split()
            if relation not in (">=", "<="):
                sys.exit(f"{path}: '{relation}' is not a relation")
            goals.append(Goal(*names, relation, float(limit), wanted))
    return goals


def keep_least(results, key, value):
    results[key] = min(value, results.get(key, math.inf))


def read_benchmarks(path, results):
    """Seconds per item and counters, by name and measure."""
    for run in json.loads(path.read_text())["benchmarks"]:
        if run["run_type"] != "iteration":
            continue
        name = SUFFIX.sub("", run["run_name"])
        keep_least(results, (name, "time"), 1 / run["items_per_second"])
        if "peak_kib" in run:
            keep_least(results, (name, "peak_kib"), run["peak_kib"])


def read_sizes(path, results):
    for line in path.read_text().splitlines():
        name, value = line.split()
        for measure in ("count", "bytes"):
            results[name, measure] = float(value)


def value_of(results, goal, contender):
    """The contender's value, None if it has not been measured."""
    if goal.yardstick == "-":
        return results.get((goal.benchmark, goal.measure))
    sets = {"-": ("",), "both": SETS}.get(goal.data_set, (goal.data_set,))
    names = ["/".join(filter(None, (goal.benchmark, one, contender))) for one in sets]
    values = [results.get((name, goal.measure)) for name in names]
    if None in values:
        return None
    return math.exp(sum(map(math.log, values)) / len(values))


def shown(value, measure):
    if measure == "time":
        for unit, scale in (("s", 1), ("ms", 1e-3), ("us", 1e-6)):
            if value >= scale:
                return f"{value / scale:.3g} {unit}"
        return f"{value / 1e-9:.3g} ns"
    return {"peak_kib": f"{value:.0f} KiB", "bytes": f"{value:.0f} B"}.get(measure, f"{value:.0f}")


def judge(goal, results):
    """The cells of a goal's line, the verdict last; None if it has not been measured."""
    ours = value_of(results, goal, "ours")
    yardstick = ours if goal.yardstick == "-" else value_of(results, goal, goal.yardstick)
    if ours is None or yardstick is None:
        return None
    if goal.yardstick == "-":
        compared, ratio, other = ours, "-", "-"
    else:
        compared = yardstick / ours if goal.faster else ours / yardstick
        ratio, other = f"{compared:.3f}", shown(yardstick, goal.measure)
    passed = compared >= goal.limit if goal.faster else compared <= goal.limit
    return [goal.metric, goal.data_set, goal.yardstick, other, shown(ours, goal.measure), ratio,
            f"{goal.relation} {goal.limit:g}", goal.wanted, "PASS" if passed else "FAIL"]


def print_table(lines, markdown):
    if markdown:
        lines.insert(1, ["---"] * len(HEADINGS))
        for line in lines:
            print("| " + " | ".join(line) + " |")
        return
    widths = [max(len(line[column]) for line in lines) for column in range(len(HEADINGS))]
    for line in lines:
        print("  ".join(map(str.ljust, line, widths)).rstrip())


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--markdown", action="store_true", help="print a table for a document")
    parser.add_argument("--partial", action="store_true", help="leave out what was not measured")
    parser.add_argument("goals", type=Path)
    parser.add_argument("results", type=Path, nargs="+")
    arguments = parser.parse_args()

    results = {}
    for path in arguments.results:
        (read_benchmarks if path.suffix == ".json" else read_sizes)(path, results)
    lines = [list(HEADINGS)]
    for goal in read_goals(arguments.goals):
        line = judge(goal, results)
        if line is not None:
            lines.append(line)
        elif not arguments.partial:
            lines.append([goal.metric, goal.data_set, goal.yardstick, "-", "not measured", "-",
                          f"{goal.relation} {goal.limit:g}", goal.wanted, "FAIL"])
    print_table(lines, arguments.markdown)
    sys.exit(any(line[-1] == "FAIL" for line in lines))


if __name__ == "__main__":
    main()
