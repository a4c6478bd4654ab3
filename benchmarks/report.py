#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Compares the times of KVBase with those of its peers.

    report.py RESULTS.json...

The results are JSON files of Google Benchmark. If files of several runs are given, each time is the median over all of
them. Rows whose name ends in "(elapsed)" are judged by elapsed time, all others by processor time.
Prints a line for each goal of goals.tsv whose row was measured:

    ok     reached
    near   missed by at most 15 %, which is how much such measurements vary
    short  missed

Exits with status 1 if a measured row has no goal, or if a goal names a peer that its row was not measured with.
"""
import collections
import json
import pathlib
import statistics
import sys

SPREAD = 1.15
MANUAL = "/manual_time"  # the row measures the time itself, which is then reported as the elapsed one
NANOSECONDS = {"ns": 1, "us": 1e3, "ms": 1e6, "s": 1e9}
Goal = collections.namedtuple("Goal", "row peer ratio slack")


def read_times(paths):
    """{row: {contestant: nanoseconds}}, in the order of the measurement."""
    samples = collections.defaultdict(list)
    for path in paths:
        with open(path, encoding="utf-8") as file:
            runs = json.load(file)["benchmarks"]
        for run in runs:
            if run["run_type"] == "iteration":
                name = run["run_name"].removesuffix(MANUAL)
                clock = "real_time" if name != run["run_name"] or "(elapsed)/" in name else "cpu_time"
                samples[name].append(run[clock] * NANOSECONDS[run["time_unit"]])
    times = {}
    for name, values in samples.items():
        row, contestant = name.rsplit("/", 1)
        times.setdefault(row, {})[contestant] = statistics.median(values)
    return times


def read_goals():
    path = pathlib.Path(__file__).with_name("goals.tsv")
    lines = (line for line in path.read_text(encoding="utf-8").splitlines() if line and not line.startswith("#"))
    for line in lines:
        row, peer, ratio, slack = line.split("\t")
        yield Goal(row, peer, None if ratio == "-" else float(ratio), float(slack))


def verdict(own, peer, goal):
    if goal.ratio is None:
        return ""
    limit = goal.ratio * peer + goal.slack
    return "ok" if own <= limit else "near" if own <= limit * SPREAD else "short"


def shown(nanoseconds):
    return f"{nanoseconds:.1f}" if nanoseconds < 1000 else f"{nanoseconds:.0f}"


def main(paths):
    times = read_times(paths)
    goals = list(read_goals())
    faults = [f"no goal for the row '{row}'" for row in times.keys() - {goal.row for goal in goals}]
    verdicts = collections.Counter()
    print(f"{'row':<52}{'KVBase ns':>10}  {'goal':<32}{'ratio':>6}  {'':<6}  peers ns")
    for goal in goals:
        if "KVBase" not in times.get(goal.row, {}):
            continue
        peers = dict(times[goal.row])
        own = peers.pop("KVBase")
        name = min(peers, key=peers.get, default="none") if goal.peer == "best" else goal.peer
        if name not in peers:
            faults.append(f"'{goal.row}' was not measured with {name}")
            continue
        result = verdict(own, peers[name], goal)
        verdicts[result] += 1
        limit = "" if goal.ratio is None else f"{goal.ratio:.2f}" + (f" + {goal.slack} ns" if goal.slack else "")
        others = ", ".join(f"{peer} {shown(time)}" for peer, time in sorted(peers.items(), key=lambda item: item[1]))
        asked = f"{limit} x {name}" if limit else name
        print(f"{goal.row:<52}{shown(own):>10}  {asked:<32}{own / peers[name]:>6.2f}  "
              f"{result:<6}  {others}")
    print(", ".join(f"{verdicts[result]} {result}" for result in ("ok", "near", "short")))
    for fault in faults:
        print(f"report.py: {fault}", file=sys.stderr)
    return 1 if faults else 0


if __name__ == "__main__":
    if len(sys.argv) < 2:
        sys.exit(__doc__)
    sys.exit(main(sys.argv[1:]))
