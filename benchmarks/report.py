#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Compares the times of KVBase with those of its peers.

    report.py [--json] [--page FOLDER] [--windows FOLDER] FOLDER

The folder has the results of each process, results-*.json. Of each row the process counts whose ratio to the fastest peer is
the middle one.
Prints a line for each goal of goals.tsv whose row was measured:

    ok     reached
    near   missed by at most 15 %, which is how much such measurements vary
    short  missed

--windows adds a table of the same rows on Windows, from the folder of their results (see windows_comparison.py).
--json prints the same as JSON instead, --page writes performance.md and its pictures into a folder.
Exits with status 1 if a measured row has no goal, if a goal names a peer that its row was not measured with, or if a reason
is given for a row without a goal.
"""
import argparse
import collections
import json
import pathlib
import sys

import performance_page
import windows_comparison

SPREAD = 1.15
# Contestants that do the required work and nothing else: no library can be as fast and give the same.
FLOORS = ("floor", "its calls")
Goal = collections.namedtuple("Goal", "row peer ratio slack")
# A goal beside what was measured; `times` are those of the peers and floors, `best` is the fastest peer, if any.
Result = collections.namedtuple("Result", "goal own times peer verdict best")


def ratio_to_fastest(contestants):
    peers = [time for name, time in contestants.items() if name != "KVBase" and name not in FLOORS]
    return contestants["KVBase"] / min(peers or [time for name, time in contestants.items() if name != "KVBase"])


def read_times(folder):
    """{row: {contestant: nanoseconds}}. The times of a row are those of one process, so they were taken in the same minute."""
    processes = [json.loads(path.read_text(encoding="utf-8")) for path in sorted(folder.glob("results-*.json"))]
    times = {}
    for row in {row: None for process in processes for row in process}:
        measured = sorted((process[row] for process in processes if row in process), key=ratio_to_fastest)
        times[row] = measured[len(measured) // 2]
    return times


def parse_goals(lines, vectors):
    for line in lines:
        if not line or line.startswith("#"):
            continue
        row, peer, ratio, slack, *needed = line.split("\t")
        if not needed or needed == [vectors]:
            yield Goal(row, peer, None if ratio == "-" else float(ratio), float(slack))


def read_goals():
    path = pathlib.Path(__file__).with_name("goals.tsv")
    return parse_goals(path.read_text(encoding="utf-8").splitlines(), performance_page.vectors())


def verdict(own, peer, goal):
    if goal.ratio is None:
        return ""
    limit = goal.ratio * peer + goal.slack
    return "ok" if own <= limit else "near" if own <= limit * SPREAD else "short"


def compare(times, faults):
    """A Result for each goal whose row was measured."""
    for goal in read_goals():
        others = dict(times.get(goal.row, {}))
        own = others.pop("KVBase", None)
        if own is None:
            continue
        peers = {name: time for name, time in others.items() if name not in FLOORS}
        best = min(peers, key=peers.get, default=None)
        peer = best if goal.peer == "best" else goal.peer
        if peer not in others:
            faults.append(f"'{goal.row}' was not measured with {peer}")
            continue
        yield Result(goal, own, others, peer, verdict(own, others[peer], goal), best)


def shown(nanoseconds):
    return f"{nanoseconds:.1f}" if nanoseconds < 1000 else f"{nanoseconds:.0f}"


def print_table(results):
    print(f"{'row':<52}{'KVBase ns':>10}  {'goal':<32}{'ratio':>6}  {'':<6}  peers ns")
    for goal, own, times, peer, result, _ in results:
        limit = "" if goal.ratio is None else f"{goal.ratio:.2f}" + (f" + {goal.slack} ns" if goal.slack else "")
        others = ", ".join(f"{name} {shown(time)}" for name, time in sorted(times.items(), key=lambda item: item[1]))
        asked = f"{limit} x {peer}" if limit else peer
        print(f"{goal.row:<52}{shown(own):>10}  {asked:<32}{own / times[peer]:>6.2f}  {result:<6}  {others}")
    verdicts = collections.Counter(result.verdict for result in results)
    print(", ".join(f"{verdicts[result]} {result}" for result in ("ok", "near", "short")))


def print_json(results, on_windows):
    windows = {row.row: windows_comparison.as_json(row) for row in on_windows}
    rows = [
        {"row": goal.row, "nanoseconds": {"KVBase": own, **times}, "peer": peer, "ratio": own / times[peer],
         "goal": goal.ratio, "slack": goal.slack, "verdict": result,
         **({"windows": windows[goal.row]} if goal.row in windows else {})}
        for goal, own, times, peer, result, _ in results
    ]
    json.dump(rows, sys.stdout, indent=1)
    print()


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("results", metavar="FOLDER", type=pathlib.Path)
    parser.add_argument("--json", action="store_true")
    parser.add_argument("--page", metavar="FOLDER", type=pathlib.Path)
    parser.add_argument("--windows", metavar="FOLDER", type=pathlib.Path)
    options = parser.parse_args()
    times = read_times(options.results)
    known = dict.fromkeys(goal.row for goal in read_goals())
    reasons, reasons_windows = (performance_page.read_reasons(name) for name in ("reasons.tsv", "reasons_windows.tsv"))
    faults = [f"no goal for the row '{row}'" for row in times.keys() - known.keys()]
    faults += [f"a reason for the unknown row '{row}'" for row in (reasons.keys() | reasons_windows.keys()) - known.keys()]
    results = list(compare(times, faults))
    on_windows = []
    if options.windows:
        on_windows = list(windows_comparison.compare(known, read_times(options.windows), times, reasons_windows))
    if options.json:
        print_json(results, on_windows)
    else:
        print_table(results)
        if on_windows:
            windows_comparison.print_table(on_windows)
    if options.page:
        performance_page.write(options.page, results, FLOORS, reasons, on_windows)
    for fault in faults:
        print(f"report.py: {fault}", file=sys.stderr)
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
