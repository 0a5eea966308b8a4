#!/usr/bin/env bash
# Builds a libFuzzer target with address and undefined-behaviour sanitizers
# (clang) and runs it for the given number of seconds (default 60), seeded
# with the sample surveys. New inputs go to build-fuzz/corpus-TARGET; a crash
# leaves its input in build-fuzz/ as crash-*.
#   tests/fuzz/run-fuzz.sh [seconds] [target: convert (default), stats, report, compare, capi or history] [extra libFuzzer flags...]
# The compare target's seeds are pairs of sample surveys, each cut where its
# first two bytes say; the history target's, a table of required thicknesses
# and a sample survey, cut the same way.
set -euo pipefail
cd "$(dirname "$0")/../.."
seconds=${1:-60}
target=${2:-convert}
shift $(( $# < 2 ? $# : 2 ))

out=build-fuzz
mkdir -p "$out/corpus-$target"
sources=$(find src -name '*.cpp' ! -path src/run/main.cpp)
flags=(-Isrc -Itoolkit -Itoolkit/xlsx -Iinclude -I"$out/include")
libs=()
if [ "$target" != convert ]; then
  sources="$sources $(find toolkit/core toolkit/xlsx -name '*.cpp')"
  libs=(-lz)
fi
if [ "$target" = capi ]; then
  # The C interface over the toolkit, with the version header CMake would make.
  sources="$sources toolkit/capi/ugf_c.cpp"
  IFS=. read -r major minor patch < <(sed -n 's/^project(ugf2csv VERSION \([0-9.]*\).*/\1/p' CMakeLists.txt)
  mkdir -p "$out/include/ugf"
  sed -e "s/@PROJECT_VERSION_MAJOR@/$major/; s/@PROJECT_VERSION_MINOR@/$minor/; s/@PROJECT_VERSION_PATCH@/$patch/" \
      -e "s/@PROJECT_VERSION@/$major.$minor.$patch/" cmake/ugf_version.h.in >"$out/include/ugf/ugf_version.h"
fi
clang++ -std=c++20 -O1 -g -ffp-contract=off "${flags[@]}" \
  -fsanitize=fuzzer,address,undefined -fno-sanitize-recover=all \
  $sources "tests/fuzz/fuzz_$target.cpp" -o "$out/fuzz_$target" "${libs[@]}"

seeds=()
[ -d examples ] && seeds+=(examples)
[ -d tests/fuzz/regressions ] && seeds+=(tests/fuzz/regressions)
if [ "$target" = compare ] && [ -d examples ]; then
  mkdir -p "$out/seeds-compare"
  python3 - "$out/seeds-compare" examples/*.ugf <<'PY'
import sys
folder, names = sys.argv[1], sys.argv[2:]
for k, (a, b) in enumerate(list(zip(names, names)) + list(zip(names, names[1:] + names[:1]))):
    first, second = open(a, "rb").read(), open(b, "rb").read()
    total = len(first) + len(second)
    v = next(v for v in range(65536) if v * total // 65536 >= len(first))
    open(f"{folder}/pair-{k}", "wb").write(bytes([v >> 8, v & 255]) + first + second)
PY
  seeds+=("$out/seeds-compare")
fi
if [ "$target" = history ] && [ -d examples ]; then
  mkdir -p "$out/seeds-history"
  python3 - "$out/seeds-history" examples/*.ugf <<'PY'
import sys
folder, names = sys.argv[1], sys.argv[2:]
table = b"ID,MINIMUM,UNITS\nTANK4-A01,0.2,IN\n\"TANK4-B02\",5.1,mm\n"
for k, name in enumerate(names):
    survey = open(name, "rb").read()
    total = len(table) + len(survey)
    v = next(v for v in range(65536) if v * total // 65536 >= len(table))
    open(f"{folder}/table-{k}", "wb").write(bytes([v >> 8, v & 255]) + table + survey)
PY
  seeds+=("$out/seeds-history")
fi
cd "$out"
"./fuzz_$target" -max_total_time="$seconds" -max_len=200000 -timeout=20 -rss_limit_mb=4096 \
  -print_final_stats=1 "$@" "corpus-$target" "${seeds[@]/#/../}"
