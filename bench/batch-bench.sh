#!/usr/bin/env bash
# A folder of a few hundred surveys converted three ways, in the detailed
# form: `ugf convert` with 1 and with 2 jobs, and `ugf2csv` run once per
# file as a script would. Prints the median of several runs of each.
#   bench/batch-bench.sh [build folder, default build] [runs, default 5] [copies, default 30]
set -euo pipefail
cd "$(dirname "$0")/.."
build=${1:-build}
runs=${2:-5}
copies=${3:-30}
cmake --build "$build" --target ugf2csv ugf_cli >/dev/null
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
# The ten sample surveys, each `copies` times in folders of their own.
for ((i = 1; i <= copies; i++)); do
  mkdir -p "$work/in/site$i"
  cp examples/*.ugf "$work/in/site$i/"
done
count=$(find "$work/in" -name '*.ugf' | wc -l)
converter="$(cd "$build" && pwd)/ugf2csv"
toolkit="$(cd "$build" && pwd)/ugf"

median() { sort -g | awk '{ a[NR] = $1 } END { print a[int((NR + 1) / 2)] }'; }
time_of() {  # command... ; prints seconds
  local start end
  start=$(date +%s.%N); "$@" >/dev/null 2>&1; end=$(date +%s.%N)
  awk -v a="$start" -v b="$end" 'BEGIN { printf "%.4f\n", b - a }'
}
one_by_one() { find "$work/in" -name '*.ugf' -print0 | xargs -0 -n 1 -I{} "$converter" {} d a; }

printf '%s surveys, %s runs each, median seconds\n' "$count" "$runs"
for what in "ugf2csv once per file" "ugf convert --jobs 1" "ugf convert --jobs 2"; do
  for ((r = 1; r <= runs; r++)); do
    find "$work/in" -name '*_output.csv' -delete
    case $what in
      ugf2csv*) time_of one_by_one ;;
      *"--jobs 1") time_of "$toolkit" convert --jobs 1 "$work/in" ;;
      *) time_of "$toolkit" convert --jobs 2 "$work/in" ;;
    esac
  done | median | xargs printf '%-24s %s\n' "$what"
done
