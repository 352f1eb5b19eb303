#!/usr/bin/env python3
"""Makes the table of the benches: table.py RESULTS GOALS [--short]

RESULTS is what bench wrote with --benchmark_out, GOALS the goals of goals.json: what a row of the library's takes over
what it is held against is at most "most" (or one part in "times faster"), or its time is at most "most ns".
Ends with 1 when a goal is missed; in the short form, which runs beside other things and measures less often, only when
it is missed by more than a factor of two. A goal that hangs on when the system lets a thread run, which noise makes
more than twice as long, is held in the full run only.
"""
import json
import sys

OURS = "ours"
SHORT_ALLOWANCE = 2
NANOSECONDS = {"ns": 1, "us": 1e3, "ms": 1e6, "s": 1e9}
# Values beside the time that have rows of their own.
VALUES = {"memory": "growth of memory", "memory of tables": "growth of memory over size of tables",
          "threads left": "threads left", "syncs": "syncs", "syncs of a file": "syncs of a file"}


def read_results(path):
    """{(row, subject): {"time": nanoseconds, value name: value}}: the medians, where there are some."""
    with open(path, encoding="utf-8") as file:
        entries = json.load(file)["benchmarks"]
    results = {}
    for entry in entries:
        if entry.get("error_occurred"):
            sys.exit(f"{entry['name']}: {entry['error_message']}")
        is_median = entry.get("aggregate_name") == "median"
        if entry["run_type"] == "aggregate" and not is_median:
            continue
        parts = entry["run_name"].split("/")
        threads = [part.split(":")[1] for part in parts if part.startswith("threads:")]
        row = parts[0] + (f", {threads[0]} threads" if threads and threads[0] != "1" else "")
        found = {"time": entry["real_time"] * NANOSECONDS[entry["time_unit"]]}
        found.update({name: entry[name] for name in VALUES if name in entry})
        # The medians follow the single runs.
        results[(row, parts[1])] = found
    return results


def duration(nanoseconds):
    for unit, size in reversed(NANOSECONDS.items()):
        if nanoseconds >= size:
            return f"{three_digits(nanoseconds / size)} {'µs' if unit == 'us' else unit}"
    return f"{nanoseconds:.2f} ns"


def three_digits(number):
    return f"{number:.0f}" if number >= 100 else f"{number:.1f}" if number >= 10 else f"{number:.2f}"


def plain(name, number):
    return f"{number / 1e6:.2f} MB" if name == "memory" else f"{number:.2f}".rstrip("0").rstrip(".")


class Goal:
    def __init__(self, data, results):
        self.row = data["row"]
        self.value = data.get("value", "time")
        self.full_run_only = data.get("full run only", False)
        against = data.get("against")
        measured = results[(self.row, OURS)][self.value]
        if against is None:
            self.measured = measured
            self.limit = data["most ns"] if "most ns" in data else data["most"]
            shown = duration(measured) if "most ns" in data else plain(self.value, measured)
            limit = duration(self.limit) if "most ns" in data else plain(self.value, self.limit)
            self.text = f"{shown}, at most {limit}"
            return
        other = results[(data.get("of row", self.row), against)][self.value]
        self.measured = measured / other
        name = f"{data['of row']}" if against == OURS else against
        if "times faster" in data:
            self.limit = 1 / data["times faster"]
            self.text = f"{name}/{three_digits(1 / self.measured)}, at most {name}/{data['times faster']}"
        else:
            self.limit = data["most"]
            self.text = f"{three_digits(self.measured)} × {name}, at most {data['most']}"

    def holds(self, allowance=1):
        return self.measured <= self.limit * allowance

    def cell(self):
        return f"{self.text}: {'holds' if self.holds() else '**missed**'}"


def cells(results, row, subjects, value, show):
    own = results.get((row, OURS), {}).get(value)
    for subject in subjects:
        found = results.get((row, subject), {}).get(value)
        if found is None:
            yield ""
        elif subject == OURS or value != "time" or not own:
            yield show(found)
        else:
            yield f"{show(found)} (×{three_digits(found / own)})"


def print_row(columns):
    print("| " + " | ".join(columns) + " |")


def print_table(results, goals):
    subjects = []
    rows = []
    for row, subject in results:
        if subject not in subjects:
            subjects.append(subject)
        if row not in rows:
            rows.append(row)
    print_row(["row"] + subjects + ["goals"])
    print("|---" * (len(subjects) + 2) + "|")
    for row in rows:
        for value, title in {"time": "", **VALUES}.items():
            if value not in results.get((row, OURS), {}):
                continue
            show = duration if value == "time" else lambda number, name=value: plain(name, number)
            own_goals = [goal.cell() for goal in goals if goal.row == row and goal.value == value]
            print_row([f"{row}: {title}" if title else f"**{row}**"] + list(cells(results, row, subjects, value, show)) +
                      ["; ".join(own_goals)])


def main(arguments):
    is_short = "--short" in arguments
    results_path, goals_path = [argument for argument in arguments if argument != "--short"]
    results = read_results(results_path)
    with open(goals_path, encoding="utf-8") as file:
        goals = [Goal(data, results) for data in json.load(file)]
    print_table(results, goals)
    held = [goal for goal in goals if not (is_short and goal.full_run_only)]
    failed = [goal for goal in held if not goal.holds(SHORT_ALLOWANCE if is_short else 1)]
    for goal in failed:
        print(f"{'twice missed' if is_short else 'missed'}: {goal.row}: {goal.text}", file=sys.stderr)
    return 1 if failed else 0


sys.exit(main(sys.argv[1:]))
