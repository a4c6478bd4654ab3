# SPDX-License-Identifier: MIT
"""Writes docs/performance.md and its pictures from the results of a run of the benchmarks, and of one on Windows."""
import collections
import html
import math
import pathlib
import platform
import subprocess

import windows_comparison

# Rows whose ratio to the fastest peer is above this are told to be behind it, unless it is by so few nanoseconds, which a
# call into a library takes.
BEHIND = 1.10
CALL = 0.7
PEERS = {"Boost": "libboost-dev", "ICU": "libicu-dev", "Poco": "libpoco-dev", "Qt": "qt6-base-dev", "libdw": "libdw1",
         "libunwind": "libunwind8", "libstdc++": "libstdc++6", "glibc": "libc6"}

# The scale of a picture: a bar grows by one unit to the left or to the right when the ratio halves or doubles.
HALVINGS = 6
UNIT = 45
LABEL = 330
LINE = 18

STYLE = """
text { font: 12px sans-serif; fill: #24292f; }
.scale { fill: #57606a; }
.grid { stroke: #d0d7de; }
.even { stroke: #57606a; }
.ahead { fill: #2f7d4f; }
.behind { fill: #b35900; }
@media (prefers-color-scheme: dark) {
  text { fill: #e6edf3; }
  .scale { fill: #8b949e; }
  .grid { stroke: #30363d; }
  .even { stroke: #8b949e; }
  .ahead { fill: #4cc38a; }
  .behind { fill: #f0883e; }
}
"""


def groups(results):
    """{first word of the row: results that have a peer}, in the order of the goals; a row counts once."""
    found = collections.OrderedDict()
    seen = set()
    for result in results:
        if result.best and result.goal.row not in seen:
            seen.add(result.goal.row)
            found.setdefault(result.goal.row.split(":")[0], []).append(result)
    return found


def ratio(result):
    return result.own / result.times[result.best]


def is_behind(result):
    return ratio(result) > BEHIND and result.own - result.times[result.best] > CALL


def picture(rows):
    """An SVG with a bar for each row, on a logarithmic scale; it follows the colours that the reader prefers."""
    middle = LABEL + HALVINGS * UNIT
    width = middle + 3 * UNIT + 20
    height = (len(rows) + 2) * LINE
    parts = [f'<svg xmlns="http://www.w3.org/2000/svg" width="{width}" height="{height}">', f"<style>{STYLE}</style>"]
    for power in range(-HALVINGS, 4, 2):
        x = middle + power * UNIT
        kind = "even" if power == 0 else "grid"
        label = f"{2 ** power}" if power >= 0 else f"1/{2 ** -power}"
        parts.append(f'<line class="{kind}" x1="{x}" y1="{LINE}" x2="{x}" y2="{height}"/>')
        parts.append(f'<text class="scale" x="{x}" y="12" text-anchor="middle">{label}</text>')
    for line, result in enumerate(rows, start=1):
        length = max(-HALVINGS, min(3, math.log2(ratio(result)))) * UNIT
        left, y = (middle + min(length, 0), line * LINE)
        kind = "behind" if is_behind(result) else "ahead"
        name = html.escape(result.goal.row.split(": ", 1)[1])
        parts.append(f'<text x="{LABEL - 8}" y="{y + 13}" text-anchor="end">{name}</text>')
        parts.append(f'<rect class="{kind}" x="{left:.1f}" y="{y + 4}" width="{max(abs(length), 1):.1f}" height="{LINE - 7}"/>')
    return "\n".join(parts + ["</svg>", ""])


def processors(field):
    """What /proc/cpuinfo says of each processor."""
    lines = pathlib.Path("/proc/cpuinfo").read_text(encoding="utf-8").splitlines()
    return [line.split(": ", 1)[1] for line in lines if line.startswith(field)]


def vectors():
    """The best set of kernels that this machine can run."""
    flags = processors("flags")[0].split()
    return "AVX-512" if "avx512_vbmi2" in flags else "AVX2" if "avx2" in flags else "SSE2"


def machine():
    models = processors("model name")
    compiler = subprocess.run(["g++", "-dumpfullversion"], capture_output=True, text=True, check=True).stdout.strip()
    packages = subprocess.run(["dpkg-query", "-W", "-f", "${Package} ${Version}\n", *PEERS.values()], capture_output=True,
                              text=True, check=False).stdout
    versions = dict(line.split(" ", 1) for line in packages.splitlines())
    peers = ", ".join(f"{name} {versions[package]}" for name, package in PEERS.items() if package in versions)
    return (f"{len(models)} processors, {models[0].strip()}, with {vectors()}; {platform.system()} "
            f"{platform.machine()}; g++ {compiler}. {peers}.")


def read_reasons(name):
    """{row: reason} of a file beside this one."""
    lines = pathlib.Path(__file__).with_name(name).read_text(encoding="utf-8").splitlines()
    return dict(line.split("\t") for line in lines if line and not line.startswith("#"))


def table(rows, floors):
    yield "| row | KVBase ns | fastest peer | ns | ratio | ratio to floor |"
    yield "| --- | ---: | --- | ---: | ---: | ---: |"
    for result in rows:
        floor = next((result.own / result.times[name] for name in floors if name in result.times), None)
        name = result.goal.row.split(": ", 1)[1]
        yield (f"| {name} | {result.own:.4g} | {result.best} | {result.times[result.best]:.4g} | {ratio(result):.2f} | "
               f"{'' if floor is None else f'{floor:.2f}'} |")


def losses(found, reasons):
    for group, rows in found.items():
        for result in rows:
            if is_behind(result):
                reason = reasons.get(result.goal.row, "There is room for improvement.")
                yield f"- **{result.goal.row}**: {ratio(result):.2f} of {result.best}. {reason}"


def write(folder, results, floors, reasons, on_windows):
    found = groups(results)
    pictures = folder / "performance"
    pictures.mkdir(parents=True, exist_ok=True)
    behind = list(losses(found, reasons))
    count = sum(len(rows) for rows in found.values())
    page = ["# Performance", "",
            "What KVBase costs beside other libraries that do the same job, measured in one run of `./kv bench --page`, which",
            "writes this page. The contestants of a row take turns in short slices; the shortest slice of each counts, and of three",
            "processes the one with the middle ratio. A ratio below 1 means that KVBase is faster than the fastest of the others. A",
            "floor is the same required work without a library: the system calls, the allocation and the copy, or the loop over the",
            "text, compiled into the program. The bars show the ratio to the fastest peer: to the left KVBase takes less time, to the",
            "right more.",
            "",
            f"Measured on: {machine()}", "",
            f"KVBase is at most {BEHIND - 1:.0%} or {CALL} ns behind the fastest peer in {count - len(behind)} of {count} rows.", ""]
    if behind:
        page += ["## Where KVBase is behind", "", *behind, ""]
    for group, rows in found.items():
        name = f"{group.replace(' ', '-')}.svg"
        (pictures / name).write_text(picture(rows), encoding="utf-8")
        page += [f"## {group.capitalize()}", "", f"![Ratios of the rows {group}](performance/{name})", "",
                 *table(rows, floors), ""]
    if on_windows:
        page += windows_comparison.section(on_windows)
    (folder / "performance.md").write_text("\n".join(page), encoding="utf-8")
