#!/usr/bin/env bash
# Converts every sample survey of this folder in both forms, grid and
# detailed, with the converter, then shows the toolkit on them: the same
# conversions by `ugf convert` (which must give the same bytes), the
# statistics of every survey, the report page of the tank floor, the
# comparison of the floor's first two surveys, and the archive of all three
# with the floor's inspection history and its page. Everything is written to
# build/example-output (or the folder given as the first argument), so the
# source tree stays clean. The programs are build/ugf2csv and build/ugf, or
# UGF2CSV and UGF when those are set. Exits with 1 when anything failed.
set -uo pipefail
here="$(cd "$(dirname "$0")" && pwd)"
converter="${UGF2CSV:-$here/../build/ugf2csv}"
toolkit="${UGF:-$here/../build/ugf}"
out="${1:-$here/../build/example-output}"

for program in "$converter" "$toolkit"; do
  if [ ! -x "$program" ]; then
    echo "no program at $program: build first (cmake --preset default && cmake --build --preset default)" >&2
    exit 2
  fi
done
mkdir -p "$out" && out="$(cd "$out" && pwd)"

failed=0
total=0
for sample in "$here"/*.ugf; do
  name="$(basename "$sample")"
  cp "$sample" "$out/$name"
  for form in g d; do
    total=$((total + 1))
    echo "== ugf2csv $name $form a"
    if ! (cd "$out" && "$converter" "$name" "$form" a); then
      failed=$((failed + 1))
    fi
  done
done
echo "converted $((total - failed)) of $total; outputs in $out"

echo "== ugf convert, both forms, into $out/toolkit: the same bytes"
"$toolkit" convert --out-dir "$out/toolkit" "$here" && "$toolkit" convert --grid --out-dir "$out/toolkit" "$here" || failed=$((failed + 1))
for csv in "$out"/*_output.csv; do
  cmp -s "$csv" "$out/toolkit/$(basename "$csv")" || { echo "differs: $(basename "$csv")"; failed=$((failed + 1)); }
done
echo "== ugf stats --minimum 0.200 corrosion_2d.ugf"
"$toolkit" stats --minimum 0.200 "$here/corrosion_2d.ugf" || failed=$((failed + 1))
echo "== ugf report --minimum 0.210: $out/corrosion_2d_report.html"
"$toolkit" report --minimum 0.210 --out-dir "$out" "$here/corrosion_2d.ugf" || failed=$((failed + 1))
echo "== ugf compare --years 3 --minimum 0.150: $out/corrosion_2d_2029_compare.csv and .html"
"$toolkit" compare --years 3 --minimum 0.150 --out-dir "$out" "$here/corrosion_2d.ugf" "$here/corrosion_2d_2029.ugf" ||
  failed=$((failed + 1))
echo "== ugf archive: the floor's three inspections in $out/tank4.ugfdb, its history and its page"
db="$out/tank4.ugfdb"
rm -f "$db" "$db-wal" "$db-shm"  # a new archive each run
for survey in corrosion_2d.ugf:2026-03-02 corrosion_2d_2029.ugf:2029-03-05 corrosion_2d_2032.ugf:2032-03-01; do
  "$toolkit" archive add --db "$db" --part TANK4 --date "${survey#*:}" "$here/${survey%%:*}" || failed=$((failed + 1))
done
"$toolkit" archive list --db "$db" || failed=$((failed + 1))
history=(--db "$db" --part TANK4 --minimum 0.200 --as-of 2032-09-01)
"$toolkit" archive history "${history[@]}" --out "$out/TANK4_history.csv" || failed=$((failed + 1))
"$toolkit" archive report "${history[@]}" --out-dir "$out" || failed=$((failed + 1))
[ "$failed" -eq 0 ]
