#!/usr/bin/env bash
# Writes the benchmark surveys (the uniform ones and the varied ones) and
# times both forms of each:
#   bench/run-bench.sh [build folder, default build] [runs, default 7]
# In each of `runs` rounds, for every survey and form: the conversion, a copy
# of its output file with `cp`, and (once per survey and round) the old way of
# reading the survey's slots, `legacy_read`. Each figure is the median of its
# rounds (wall clock from bash's EPOCHREALTIME, microseconds); the ratios are
# those of the medians, so the three are taken under the same load:
#   MB/s     output bytes (10^6) per second of conversion
#   x cp     conversion time / time of copying its output file (lower is better)
#   x legacy time of the legacy slot read / conversion time (higher is better)
#   peak MiB peak resident memory of one further conversion (/usr/bin/time %M)
# UGF2CSV=/path/to/ugf2csv times another converter (an older build, say) on
# the same surveys.
set -euo pipefail
cd "$(dirname "$0")/.."
build=${1:-build}
runs=${2:-7}
cmake --build "$build" --target ugf2csv make_surveys legacy_read >/dev/null
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
"$build/bench/make_surveys" "$work"
converter=${UGF2CSV:-"$(cd "$build" && pwd)/ugf2csv"}
legacy="$(cd "$build" && pwd)/bench/legacy_read"
surveys="corrosion_2d precision_3d flaw_ascan bscans varied_corrosion_2d varied_precision_3d varied_flaw_ascan varied_bscans"

# Microseconds taken by the command.
micros() {
  local start=${EPOCHREALTIME/./}
  "$@" >/dev/null
  echo $(( ${EPOCHREALTIME/./} - start ))
}
median() { tr ' ' '\n' | sed '/^$/d' | sort -n | awk '{ v[NR] = $1 } END { print NR % 2 ? v[(NR + 1) / 2] : (v[NR / 2] + v[NR / 2 + 1]) / 2 }'; }

declare -A times
for ((run = 1; run <= runs; run++)); do
  for survey in $surveys; do
    input="$work/$survey.ugf"
    times[$survey,legacy]+=" $(micros "$legacy" "$input")"
    for form in d g; do
      times[$survey,$form]+=" $(micros "$converter" "$input" "$form" a)"
      out=$(ls "$work/${survey}"_*output.csv)
      rm -f "$work/copy.csv"
      times[$survey,$form,cp]+=" $(micros cp "$out" "$work/copy.csv")"
      rm -f "$out" "$work/copy.csv"
    done
  done
done

printf '%-20s %-4s %8s %9s %9s %8s %7s %8s %8s\n' survey form "in KB" "out KB" "ms" "MB/s" "x cp" "x legacy" "peak MiB"
for survey in $surveys; do
  input="$work/$survey.ugf"
  legacy_us=$(median <<<"${times[$survey,legacy]}")
  for form in d g; do
    /usr/bin/time -f '%M' -o "$work/rss" "$converter" "$input" "$form" a >/dev/null
    out=$(ls "$work/${survey}"_*output.csv)
    awk -v s="$survey" -v f="$form" -v i="$(stat -c %s "$input")" -v o="$(stat -c %s "$out")" \
        -v t="$(median <<<"${times[$survey,$form]}")" -v c="$(median <<<"${times[$survey,$form,cp]}")" \
        -v l="$legacy_us" -v m="$(cat "$work/rss")" 'BEGIN {
      printf "%-20s %-4s %8d %9d %9.2f %8.1f %7.2f %8.2f %8.1f\n", s, f, i / 1024, o / 1024, t / 1000,
             o / t, t / c, l / t, m / 1024 }'
    rm -f "$out"
  done
done
echo "(median of $runs rounds; load average at the end: $(cut -d' ' -f1-3 /proc/loadavg))"
