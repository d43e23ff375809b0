#!/usr/bin/env python3
"""Prints the scale table of docs/performance.md from one run of lq_symbollib_bench.

    lq_symbollib_bench --benchmark_format=json > run.json
    bench/scale_table.py run.json

Times are CPU milliseconds for the whole operation over n symbols, the least of the
repetitions (run with --benchmark_repetitions on a shared machine: the least is the run the
other processes disturbed least). The exponent between two
sizes is log(t2 / t1) / log(n2 / n1); the fitted one is the least-squares slope over all sizes.
"""
import json
import math
import sys

OPERATIONS = [("BM_AddSymbols", "add n symbols"), ("BM_FindPositions", "position of each ID"),
              ("BM_SymbolsByPosition", "symbol at each position"),
              ("BM_MoveSymbols", "move n / 10"), ("BM_RemoveSymbols", "remove n / 10")]
SIZES = [10000, 20000, 40000, 100000]


def slope(points):
    xs = [math.log(n) for n, _ in points]
    ys = [math.log(t) for _, t in points]
    mx, my = sum(xs) / len(xs), sum(ys) / len(ys)
    return sum((x - mx) * (y - my) for x, y in zip(xs, ys)) / sum((x - mx) ** 2 for x in xs)


def main():
    with open(sys.argv[1]) as f:
        runs = {}
        for b in json.load(f)["benchmarks"]:
            if b.get("run_type") == "aggregate":
                continue
            name = b.get("run_name", b["name"]).replace("/real_time", "")
            runs[name] = min(runs.get(name, b["cpu_time"]), b["cpu_time"])
    print("| operation | " + " | ".join(f"{n:,}" for n in SIZES) + " | exponent 10k-40k | fitted 10k-100k |")
    print("|---|" + "---:|" * (len(SIZES) + 2))
    for key, label in OPERATIONS:
        times = [(n, runs.get(f"{key}/{n}")) for n in SIZES]
        if any(t is None for _, t in times):
            continue
        t = dict(times)
        between = math.log(t[40000] / t[10000]) / math.log(4)
        cells = " | ".join(f"{ms:.2f}" for _, ms in times)
        print(f"| {label} | {cells} | {between:.2f} | {slope(times):.2f} |")
    for key in ("BM_SaveMarkers", "BM_LoadMarkers"):
        for form, label in (("20200101", "stream form"), ("20120328", "container form")):
            name = f"{key}/{form}"
            if name in runs:
                print(f"{key[3:]} 100,000 markers, {label}: {runs[name]:.0f} ms")


if __name__ == "__main__":
    main()
