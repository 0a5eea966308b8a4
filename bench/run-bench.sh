#!/usr/bin/env bash
# Writes the benchmark surveys and times both forms of each: input size,
# output size, seconds, output MB/s and peak resident memory, with the time
# of copying the output file beside it for scale.
#   bench/run-bench.sh [build folder, default build] [runs, default 5]
# Each conversion runs `runs` times and the fastest wall-clock time counts
# (taken with date +%s.%N around the run, nanosecond resolution): other
# processes share the machine, and the fastest run is the one they disturbed
# least. Peak memory comes from /usr/bin/time (%M, KiB) in one further run.
set -euo pipefail
cd "$(dirname "$0")/.."
build=${1:-build}
runs=${2:-5}
cmake --build "$build" --target ugf2csv make_surveys >/dev/null
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
"$build/bench/make_surveys" "$work"
converter="$(cd "$build" && pwd)/ugf2csv"

printf '%-14s %-5s %9s %10s %9s %8s %9s %9s\n' survey form "in (KB)" "out (KB)" seconds "MB/s" "peak MiB" "copy s"
for survey in corrosion_2d precision_3d flaw_ascan bscans; do
  for form in d g; do
    input="$work/$survey.ugf"
    best=""
    for ((run = 1; run <= runs; run++)); do
      start=$(date +%s.%N)
      "$converter" "$input" "$form" a >/dev/null
      end=$(date +%s.%N)
      seconds=$(awk -v a="$start" -v b="$end" 'BEGIN { printf "%.6f", b - a }')
      if [ -z "$best" ] || awk -v s="$seconds" -v b="$best" 'BEGIN { exit !(s < b) }'; then best=$seconds; fi
    done
    /usr/bin/time -f '%M' -o "$work/rss" "$converter" "$input" "$form" a >/dev/null
    peak=$(cat "$work/rss")
    out=$(ls "$work/${survey}"_*output.csv)
    copy=""
    for ((run = 1; run <= runs; run++)); do
      rm -f "$work/copy.csv"
      start=$(date +%s.%N)
      cp "$out" "$work/copy.csv"
      end=$(date +%s.%N)
      seconds=$(awk -v a="$start" -v b="$end" 'BEGIN { printf "%.6f", b - a }')
      if [ -z "$copy" ] || awk -v s="$seconds" -v b="$copy" 'BEGIN { exit !(s < b) }'; then copy=$seconds; fi
    done
    in_kb=$(( $(stat -c %s "$input") / 1024 ))
    out_bytes=$(stat -c %s "$out")
    awk -v s="$survey" -v f="$form" -v i="$in_kb" -v o="$out_bytes" -v t="$best" -v m="$peak" -v c="$copy" 'BEGIN {
      mbs = t > 0 ? o / 1e6 / t : 0;
      printf "%-14s %-5s %9d %10d %9.4f %8.1f %9.1f %9.4f\n", s, f, i, o / 1024, t, mbs, m / 1024, c }'
    rm -f "$out" "$work/copy.csv"
  done
done
