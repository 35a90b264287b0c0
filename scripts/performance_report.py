#!/usr/bin/env python3
"""Writes the table and the chart of the codecs into docs/performance.md from the benchmark's own output.

Usage: build/release/bin/texcompress_bench --benchmark_format=json > codecs.json
       scripts/performance_report.py codecs.json
"""
import json
import pathlib
import re
import sys

DOCS = pathlib.Path(__file__).resolve().parent.parent / "docs"
BEGIN, END = "<!-- codec table: begin -->", "<!-- codec table: end -->"


def read_rows(path):
    """Maps each row's name to its sets of kernels, in the order of the benchmark."""
    rows = {}
    for run in json.loads(pathlib.Path(path).read_text())["benchmarks"]:
        name, kernels = run["name"].split("/")
        rows.setdefault(name, {})[kernels] = run
    return dict(sorted(rows.items(), key=lambda row: row[0].split(" ")[0], reverse=True))


def table(rows):
    sets = list(next(iter(rows.values())))
    lines = ["| work | " + " | ".join(f"{s}, MPixel/s" for s in sets) + " | "
             + " | ".join(f"{s} / plain" for s in sets[1:]) + f" | {sets[-1]} / memcpy |",
             "|---|" + "---|" * (2 * len(sets))]
    for name, runs in rows.items():
        cells = [f"{runs[s]['MPixel/s']:.3g}" if runs[s]["MPixel/s"] < 1000 else f"{runs[s]['MPixel/s']:.0f}"
                 for s in sets]
        cells += [f"{runs[s]['x plain']:.1f}" for s in sets[1:]]
        cells.append(f"{runs[sets[-1]]['x memcpy']:.3f}")
        lines.append(f"| {name} | " + " | ".join(cells) + " |")
    return "\n".join(lines)


def chart(rows):
    """Horizontal bars: how many times as fast as the plain set each other set is."""
    sets = list(next(iter(rows.values())))[1:]
    colors = ["#9db4c8", "#2f6690", "#16425b"]
    largest = max(runs[s]["x plain"] for runs in rows.values() for s in sets)
    bar, left, width = 9, 200, 420
    step = bar * len(sets) + 8
    height = step * len(rows) + 40
    out = [f'<svg xmlns="http://www.w3.org/2000/svg" width="{left + width + 60}" height="{height}" '
           'font-family="sans-serif" font-size="11">',
           f'<rect width="100%" height="100%" fill="#ffffff"/><text x="{left}" y="16">times as fast as the '
           'plain kernels: ' + ", ".join(sets) + "</text>"]
    for i, (name, runs) in enumerate(rows.items()):
        y = 28 + i * step
        out.append(f'<text x="{left - 8}" y="{y + step / 2}" text-anchor="end">{name}</text>')
        for j, s in enumerate(sets):
            ratio = runs[s]["x plain"]
            length = ratio / largest * width
            out.append(f'<rect x="{left}" y="{y + j * bar}" width="{length:.1f}" height="{bar - 1}" '
                       f'fill="{colors[j]}"/><text x="{left + length + 4:.1f}" y="{y + j * bar + 8}" '
                       f'font-size="9">{ratio:.1f}</text>')
    return "\n".join(out) + "\n</svg>\n"


def main():
    rows = read_rows(sys.argv[1])
    page = DOCS / "performance.md"
    text = page.read_text()
    pattern = re.compile(re.escape(BEGIN) + ".*?" + re.escape(END), re.DOTALL)
    page.write_text(pattern.sub(lambda _: f"{BEGIN}\n{table(rows)}\n{END}", text))
    (DOCS / "images" / "codec-speed.svg").write_text(chart(rows))


if __name__ == "__main__":
    main()
