#!/usr/bin/env python3
"""Corrosion rate of a part from two of its surveys, as a map.

    examples/corrosion_rate.py BASELINE.ugf LATEST.ugf YEARS [OUT.png]

Reads both surveys with the `ugf` module, takes the loss of wall of each
point of the latest survey's grids over the years between them, and draws
it in millimetres (or thousandths of an inch) per year, one panel per grid.
Points that either survey lacks, or where a signal was lost, stay blank.
"""
import os
import sys

import matplotlib

matplotlib.use("Agg")
import matplotlib.pyplot as plt
import numpy as np

import ugf


def main(baseline_path, latest_path, years, out):
    with ugf.open(baseline_path) as baseline, ugf.open(latest_path) as latest:
        units = latest.info["units"]
        # Points by identifier: the two surveys may be laid out differently.
        # Sound velocity checks are no thickness: they take no part.
        before = baseline.points()
        by_id = {i: v for i, v, c in zip(before["id"], before["value"], before["velocity"]) if not c}
        scale = 1.0
        if baseline.info["units"] != units:
            scale = 25.4 if units == "MM" else 1 / 25.4
        after = latest.points()
        index_of = {n: (i, v) for n, i, v, c in zip(after["index"], after["id"], after["value"], after["velocity"]) if not c}
        panels = []
        for k in range(latest.grid_count):
            values, rows, columns = latest.grid(k)
            rate = np.full(values.shape, np.nan)
            for (i, j), index in np.ndenumerate(latest.grid_indexes(k)):
                point_id, value = index_of.get(index, (None, np.nan))
                old = by_id.get(point_id, np.nan)
                if not (np.isnan(old) or np.isnan(value)):
                    rate[i, j] = (old * scale - value) / years
            panels.append((rate, rows, columns))

    per_year = "mm" if units == "MM" else "in"
    fig, axes = plt.subplots(1, len(panels), figsize=(4 + 3 * len(panels), 6), squeeze=False)
    for ax, (rate, rows, columns) in zip(axes[0], panels):
        image = ax.imshow(rate, cmap="viridis", aspect="auto")
        ax.set_xticks(range(len(columns)), columns)
        ax.set_yticks(range(len(rows)), rows)
        fig.colorbar(image, ax=ax, label=f"corrosion rate ({per_year} per year)")
    fig.suptitle(f"{os.path.basename(latest_path)} against {os.path.basename(baseline_path)}, {years:g} years")
    fig.tight_layout()
    fig.savefig(out, dpi=100)
    print(f"wrote {out}")


if __name__ == "__main__":
    if len(sys.argv) < 4:
        sys.exit(__doc__)
    main(sys.argv[1], sys.argv[2], float(sys.argv[3]), sys.argv[4] if len(sys.argv) > 4 else "corrosion_rate.png")
