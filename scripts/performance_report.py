#!/usr/bin/env python3
"""Writes the tables and charts of docs/performance.md from the benchmarks' own output.

Usage: build/release/bin/texcompress_bench --benchmark_format=json > codecs.json
       build/release/bin/texconv_bench --benchmark_format=json > converter.json
       scripts/performance_report.py codecs.json converter.json

Each report rewrites its own section; what is left out stays as it is.
"""
import json
import pathlib
import re
import sys

DOCS = pathlib.Path(__file__).resolve().parent.parent / "docs"


def read_rows(report):
    """Maps each row's name to its sets of kernels, in the order of the benchmark."""
    rows = {}
    for run in report["benchmarks"]:
        name, kernels = run["name"].split("/")
        rows.setdefault(name, {})[kernels] = run
    return rows


def encoders_first(rows):
    return dict(sorted(rows.items(), key=lambda row: row[0].split(" ")[0], reverse=True))


def rate(value):
    return f"{value:.3g}" if value < 1000 else f"{value:.0f}"


def codec_columns(runs, sets):
    for s in sets[1:]:
        yield f"{s} / plain", f"{runs[s]['x plain']:.1f}"
    yield f"{sets[-1]} / memcpy", f"{runs[sets[-1]]['x memcpy']:.3f}"


def converter_columns(runs, sets):
    best = runs[sets[-1]]
    yield f"{sets[-1]} / plain", f"{best['x plain']:.1f}"
    yield f"{sets[-1]} / memcpy", f"{best['x memcpy']:.3f}"
    yield f"{sets[-1]} / definition", f"{best['x definition']:.1f}" if "x definition" in best else ""
    yield "KiB beside", str(best["KiB beside"])


def table(rows, columns):
    """One line a row: the rates of all sets, then what columns(runs, sets) yields as (title, cell)."""
    sets = list(next(iter(rows.values())))
    lines = []
    for name, runs in rows.items():
        cells = [(f"{s}, MPixel/s", rate(runs[s]["MPixel/s"])) for s in sets] + list(columns(runs, sets))
        if not lines:
            lines += ["| work | " + " | ".join(title for title, _ in cells) + " |", "|---|" + "---|" * len(cells)]
        lines.append(f"| {name} | " + " | ".join(cell for _, cell in cells) + " |")
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


def write_section(name, rows, columns):
    begin, end = f"<!-- {name} table: begin -->", f"<!-- {name} table: end -->"
    page = DOCS / "performance.md"
    pattern = re.compile(re.escape(begin) + ".*?" + re.escape(end), re.DOTALL)
    text, found = pattern.subn(lambda _: f"{begin}\n{table(rows, columns)}\n{end}", page.read_text())
    if not found:
        sys.exit(f"{page}: expected the lines {begin} and {end}")
    page.write_text(text)
    (DOCS / "images" / f"{name}-speed.svg").write_text(chart(rows))


def main():
    for path in sys.argv[1:]:
        report = json.loads(pathlib.Path(path).read_text())
        if report["context"]["executable"].endswith("texconv_bench"):
            write_section("converter", read_rows(report), converter_columns)
        else:
            write_section("codec", encoders_first(read_rows(report)), codec_columns)


if __name__ == "__main__":
    main()
