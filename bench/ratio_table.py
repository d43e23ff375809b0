#!/usr/bin/env python3
"""Prints the whole-call table of docs/performance.md from one run of lq_fill_bench.

    lq_fill_bench --benchmark_format=json --benchmark_repetitions=5 \
        --benchmark_filter='Gradient|Transparent|Cairo|PixmanConstant' > run.json
    bench/ratio_table.py run.json

Each cell is ours / peer in CPU microseconds and their ratio; both come from the same run.
"""
import json
import sys

SIZES = [("64", "64"), ("256", "256"), ("1920", "1920 x 1080")]
BLIT_SIZES = [("w:64/h:64", "64"), ("w:256/h:256", "256"), ("w:1920/h:1080", "1920 x 1080")]


def main():
    # With --benchmark_repetitions the fastest repetition counts: the machine is
    # shared, and other processes only ever add time.
    runs = {}
    with open(sys.argv[1]) as f:
        for b in json.load(f)["benchmarks"]:
            if b.get("run_type") != "aggregate":
                name = b.get("run_name", b["name"])
                runs[name] = min(runs.get(name, float("inf")), b["cpu_time"])

    def cell(ours, peer):
        if ours not in runs or peer not in runs:
            return "-"
        return f"{runs[ours]:.1f} / {runs[peer]:.1f} = **{runs[ours] / runs[peer]:.2f}**"

    rows = []
    kinds = [("linear", 10, 0), ("radial", 11, 1), ("conical", 12, 0), ("square", 13, 0)]
    for heap in (0, 1):
        for name, kind, peer in kinds:
            rows.append((f"`GradientRectangle` {name}", heap,
                         [cell(f"BM_GradientRectangle/kind:{kind}/side:{s}/heap:{heap}",
                               f"BM_CairoGradient/kind:{peer}/side:{s}") for s, _ in SIZES]))
        for name, shape in (("TransparentRectangle", 0), ("TransparentPolygon", 1)):
            rows.append((f"`{name}`", heap, [cell(f"BM_{name}/side:{s}/heap:{heap}",
                                                  f"BM_CairoTransparentFill/side:{s}/shape:{shape}")
                                             for s, _ in SIZES]))
        for bits in (32, 24):
            rows.append((f"`TransparentBitblt` {bits}-bit", heap,
                         [cell(f"BM_TransparentBitblt/{w}/bits:{bits}/heap:{heap}",
                               f"BM_PixmanConstantAlphaOver/{w}/bits:{bits}") for w, _ in BLIT_SIZES]))
    print("| call | heap | " + " | ".join(label for _, label in SIZES) + " |")
    print("|---|---|" + "---:|" * len(SIZES))
    for name, heap, cells in rows:
        print(f"| {name} | {'used' if heap else 'fresh'} | " + " | ".join(cells) + " |")


if __name__ == "__main__":
    main()
