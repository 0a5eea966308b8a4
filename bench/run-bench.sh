#!/usr/bin/env bash
# Writes the benchmark surveys and times both forms of each: input size,
# output size, seconds, output MB/s and peak resident memory, with the time
# of copying the output file beside it for scale.
#   bench/run-bench.sh [build folder, default build]
set -euo pipefail
cd "$(dirname "$0")/.."
build=${1:-build}
cmake --build "$build" --target ugf2csv make_surveys >/dev/null
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
"$build/bench/make_surveys" "$work"

printf '%-18s %-5s %10s %11s %8s %9s %9s %8s\n' survey form "in (KB)" "out (KB)" seconds "MB/s" "peak MiB" "copy s"
for survey in corrosion_2d precision_3d flaw_ascan bscans; do
  for form in d g; do
    input="$work/$survey.ugf"
    best=""
    for run in 1 2 3; do
      /usr/bin/time -f '%e %M' -o "$work/time" "$build/ugf2csv" "$input" "$form" a >/dev/null
      read -r seconds rss_kb <"$work/time"
      if [ -z "$best" ] || awk "BEGIN{exit !($seconds < $best)}"; then best=$seconds; peak=$rss_kb; fi
    done
    out=$(ls "$work/${survey}"_*output.csv)
    copy_start=$(date +%s.%N)
    cp "$out" "$work/copy.csv"
    copy_end=$(date +%s.%N)
    in_kb=$(( $(stat -c %s "$input") / 1024 ))
    out_bytes=$(stat -c %s "$out")
    awk -v s="$survey" -v f="$form" -v i="$in_kb" -v o="$out_bytes" -v t="$best" -v m="$peak" \
        -v c0="$copy_start" -v c1="$copy_end" 'BEGIN {
      mbs = t > 0 ? o / 1e6 / t : 0;
      printf "%-18s %-5s %10d %11d %8.3f %9.1f %9.1f %8.3f\n", s, f, i, o / 1024, t, mbs, m / 1024, c1 - c0 }'
    rm -f "$out" "$work/copy.csv"
  done
done
