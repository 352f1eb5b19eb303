#!/usr/bin/env python3
"""Makes the table of the benches: table.py RESULTS GOALS [--short]

RESULTS is what bench wrote with --benchmark_out, GOALS the goals of goals.json: what a row of the library's takes over
what it is held against is at most "most" (or one part in "times faster"), or its time is at most "most ns".
A time is the median of its samples, and their longest where the row is called so.
Ends with 1 when a goal is missed; in the short form, which runs beside other things and measures less often, only when
it is missed by more than a factor of two. A goal that hangs on when the system lets a thread run, which noise makes
more than twice as long, is held in the full run only.
"""
import json
import sys

OURS = "ours"
BOUND = "bound"
LONGEST = "longest"
# What two rows that measure the same work may differ by before the table is doubted.
UNSTEADY = 1.5
SHORT_ALLOWANCE = 2
NANOSECONDS = {"ns": 1, "us": 1e3, "ms": 1e6, "s": 1e9}
# Values beside the time that have rows of their own.
VALUES = {"memory": "growth of memory", "memory of tables": "growth of memory over size of tables",
          "threads left": "threads left", "syncs": "syncs", "syncs of a file": "syncs of a file"}
TIMES = {"time": "", "in a thread": "as one thread sees it"}


def read_results(path):
    """{(row, subject): {"time": nanoseconds, "longest": nanoseconds, value name: value}}"""
    with open(path, encoding="utf-8") as file:
        entries = json.load(file)["benchmarks"]
    results = {}
    for entry in entries:
        if entry.get("error_occurred"):
            sys.exit(f"{entry['name']}: {entry['error_message']}")
        aggregate = entry.get("aggregate_name")
        if aggregate not in ("median", LONGEST):
            continue
        row, subject = entry["run_name"].split("/")[:2]
        threads = entry["threads"]
        if threads > 1:
            row += f", {threads} threads"
        time = entry["real_time"] * NANOSECONDS[entry["time_unit"]]
        # Of a bound that was measured in turn with the row.
        bound = entry.get(BOUND, 0) * 1e9
        found = results.setdefault((row, subject), {})
        if aggregate == LONGEST:
            found[LONGEST] = time
            if row.startswith(LONGEST):
                found["time"] = time
            continue
        found["time"] = time
        if threads > 1:
            found["in a thread"] = time * threads
        if bound:
            results[(row, BOUND)] = {"time": bound}
        found.update({name: entry[name] for name in (*VALUES, "bytes") if name in entry})
    return results


def doubts(results):
    """The pairs of stores in files of the same size that ought to take the same time and do not."""
    stores = [(row, found) for (row, subject), found in results.items()
              if subject == OURS and row.startswith("durable store")]
    for i, (row, found) in enumerate(stores):
        for other, other_found in stores[i + 1:]:
            apart = max(found["time"], other_found["time"]) / min(found["time"], other_found["time"])
            if found["bytes"] == other_found["bytes"] and apart > UNSTEADY:
                yield (f'**Unsteady:** "{row}" and "{other}" are the same work and differ by a factor of '
                       f'{three_digits(apart)}; something else was running.')


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
        result = results.get((row, subject), {})
        found = result.get(value)
        if found is None:
            yield ""
        elif value == "time" and subject == OURS and LONGEST in result and not row.startswith(LONGEST):
            yield f"{show(found)} (longest {show(result[LONGEST])})"
        elif subject == OURS or value not in TIMES or not own:
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
        for value, title in {**TIMES, **VALUES}.items():
            if not any(value in results.get((row, subject), {}) for subject in (OURS, BOUND)):
                continue
            show = duration if value in TIMES else lambda number, name=value: plain(name, number)
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
    for doubt in doubts(results):
        print(f"\n{doubt}")
    held = [goal for goal in goals if not (is_short and goal.full_run_only)]
    failed = [goal for goal in held if not goal.holds(SHORT_ALLOWANCE if is_short else 1)]
    for goal in failed:
        print(f"{'twice missed' if is_short else 'missed'}: {goal.row}: {goal.text}", file=sys.stderr)
    return 1 if failed else 0


sys.exit(main(sys.argv[1:]))
