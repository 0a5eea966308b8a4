#!/usr/bin/env bash
# Writes the benchmark surveys (the uniform ones and the varied ones) and
# times both forms of each:
#   bench/run-bench.sh [build folder, default build] [rounds, default 7]
# In each round, for every survey and form: the conversion, a copy of its
# output file with `cp`, and (once per survey and round) the old way of
# reading the survey's slots, `legacy_read`. Each command runs under
# `runtime`, which gives its wall time and its processor time (user and
# system, from wait4). Every figure is the median of its rounds, and the
# ratios are those of the medians, so that the three commands are compared
# under the same load:
#   ms, MB/s   wall time of the conversion; output bytes (10^6) per second
#   x cp       conversion time / time of copying its output file (lower is better)
#   x legacy   time of the legacy slot read / conversion time (higher is better)
#   cpu ms, cpu x cp, cpu x legacy   the same in processor time, which a busy
#              machine disturbs far less than the wall time
#   peak MiB   peak resident memory of one further conversion (/usr/bin/time %M)
# UGF2CSV=/path/to/ugf2csv times another converter (an older build, say) on
# the same surveys.
set -euo pipefail
cd "$(dirname "$0")/.."
build=${1:-build}
rounds=${2:-7}
cmake --build "$build" --target ugf2csv make_surveys legacy_read runtime >/dev/null
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
"$build/bench/make_surveys" "$work"
converter=${UGF2CSV:-"$(cd "$build" && pwd)/ugf2csv"}
legacy="$(cd "$build" && pwd)/bench/legacy_read"
runtime="$(cd "$build" && pwd)/bench/runtime"
surveys="corrosion_2d precision_3d flaw_ascan bscans varied_corrosion_2d varied_precision_3d varied_flaw_ascan varied_bscans"

# Appends the wall and processor microseconds of the command to times[$1,wall]
# and times[$1,cpu].
declare -A times
timed() {
  local key=$1 wall cpu
  shift
  read -r wall cpu < <("$runtime" "$@")
  times[$key,wall]+=" $wall"
  times[$key,cpu]+=" $cpu"
}
median() { tr ' ' '\n' | sed '/^$/d' | sort -n | awk '{ v[NR] = $1 } END { print NR % 2 ? v[(NR + 1) / 2] : (v[NR / 2] + v[NR / 2 + 1]) / 2 }'; }

for ((round = 1; round <= rounds; round++)); do
  for survey in $surveys; do
    input="$work/$survey.ugf"
    timed "$survey,legacy" "$legacy" "$input"
    for form in d g; do
      timed "$survey,$form" "$converter" "$input" "$form" a
      out=$(ls "$work/${survey}"_*output.csv)
      rm -f "$work/copy.csv"
      timed "$survey,$form,cp" cp "$out" "$work/copy.csv"
      rm -f "$out" "$work/copy.csv"
    done
  done
done

printf '%-20s %-4s %7s %8s %8s %7s %6s %8s %7s %6s %8s %8s\n' survey form "in KB" "out KB" ms "MB/s" "x cp" "x legacy" "cpu ms" "x cp" "x legacy" "peak MiB"
for survey in $surveys; do
  input="$work/$survey.ugf"
  for form in d g; do
    /usr/bin/time -f '%M' -o "$work/rss" "$converter" "$input" "$form" a >/dev/null
    out=$(ls "$work/${survey}"_*output.csv)
    awk -v s="$survey" -v f="$form" -v i="$(stat -c %s "$input")" -v o="$(stat -c %s "$out")" \
        -v t="$(median <<<"${times[$survey,$form,wall]}")" -v c="$(median <<<"${times[$survey,$form,cp,wall]}")" \
        -v l="$(median <<<"${times[$survey,legacy,wall]}")" -v tc="$(median <<<"${times[$survey,$form,cpu]}")" \
        -v cc="$(median <<<"${times[$survey,$form,cp,cpu]}")" -v lc="$(median <<<"${times[$survey,legacy,cpu]}")" \
        -v m="$(cat "$work/rss")" 'BEGIN {
      printf "%-20s %-4s %7d %8d %8.2f %7.1f %6.2f %8.2f %7.2f %6.2f %8.2f %8.1f\n", s, f, i / 1024, o / 1024,
             t / 1000, o / t, t / c, l / t, tc / 1000, tc / cc, lc / tc, m / 1024 }'
    rm -f "$out"
  done
done
echo "(median of $rounds rounds; load average at the end: $(cut -d' ' -f1-3 /proc/loadavg))"
