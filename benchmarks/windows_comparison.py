# SPDX-License-Identifier: MIT
"""Compares what the rows cost on Windows, run by Wine, with what they cost on Linux.

The two systems have different libraries, memory managers and clocks, so times are not compared: the ratio of KVBase to a
peer is, to the fastest one that both systems have (the standard library, plain C, or the calls of the system).
"""
import collections
import subprocess

# A row whose ratio is more than so many times that on Linux needs a reason in reasons_windows.tsv.
LIMIT = 1.5
# A row of Windows; `linux_ratio` is None where no peer is on both systems, and then `peer` may be None too. `verdict` is
# "" without that ratio, else "ok", "reason" (slower, and it is known why) or "short".
Comparison = collections.namedtuple("Comparison", "row own times peer ratio linux_ratio verdict reason")


def verdict(ratio, linux_ratio, reason):
    if linux_ratio is None:
        return ""
    if ratio <= LIMIT * linux_ratio:
        return "ok"
    return "reason" if reason else "short"


def compare(rows, times, linux_times, reasons):
    """A Comparison for each of the rows that is in `times`, {row: {contestant: nanoseconds}}."""
    for row in rows:
        peers = dict(times.get(row, {}))
        own = peers.pop("KVBase", None)
        if own is None:
            continue
        linux = linux_times.get(row, {})
        shared = [peer for peer in peers if peer in linux and "KVBase" in linux]
        peer = min(shared or peers, key=peers.get, default=None)
        ratio = own / peers[peer] if peer else None
        linux_ratio = linux["KVBase"] / linux[peer] if shared else None
        reason = reasons.get(row)
        yield Comparison(row, own, peers, peer, ratio, linux_ratio, verdict(ratio, linux_ratio, reason), reason)


def shown(ratio):
    return "" if ratio is None else f"{ratio:.2f}"


def print_table(rows):
    print(f"\n{'row on Windows':<52}{'KVBase ns':>12}  {'peer':<22}{'ratio':>6}{'Linux':>7}  verdict")
    for row in rows:
        print(f"{row.row:<52}{row.own:>12.1f}  {row.peer or '':<22}{shown(row.ratio):>6}{shown(row.linux_ratio):>7}  {row.verdict}")
    verdicts = collections.Counter(row.verdict for row in rows)
    print(f"{verdicts['ok']} ok, {verdicts['reason']} slower with a reason, {verdicts['short']} short, "
          f"{verdicts['']} without a peer on both systems")


def as_json(row):
    return {"nanoseconds": {"KVBase": row.own, **row.times}, "peer": row.peer, "ratio": row.ratio,
            "linuxRatio": row.linux_ratio, "verdict": row.verdict, "reason": row.reason}


def section(rows):
    """The lines of the page's section about Windows."""
    wine = subprocess.run(["wine", "--version"], capture_output=True, text=True, check=True).stdout.strip()
    judged = [row for row in rows if row.verdict]
    slower = [row for row in judged if row.verdict != "ok"]
    yield from ("## On Windows", "",
                f"The same rows on the same machine, built by mingw-w64 and run by {wine}.",
                "Debian has no build of the other libraries for Windows, so the peers are the standard library, plain C and the calls",
                "of the system. The table has the ratio to the fastest of them that was measured on both systems, beside the same",
                "ratio on Linux. Wine's heap, run time, files and debug help are not those of Windows, so the times tell little about",
                "Windows itself; the ratios tell whether KVBase loses there what it has on Linux.", "",
                f"The ratio is at most {LIMIT} times that on Linux in {len(judged) - len(slower)} of {len(judged)} rows.", "")
    for row in slower:
        reason = row.reason or "There is room for improvement."
        yield f"- **{row.row}**: {row.ratio:.2f} of {row.peer}, on Linux {row.linux_ratio:.2f}. {reason}"
    yield from ("", "| row | KVBase ns | peer | ns | ratio | ratio on Linux |", "| --- | ---: | --- | ---: | ---: | ---: |")
    for row in rows:
        if row.peer:
            yield (f"| {row.row} | {row.own:.4g} | {row.peer} | {row.times[row.peer]:.4g} | {shown(row.ratio)} | "
                   f"{shown(row.linux_ratio)} |")
    yield ""
