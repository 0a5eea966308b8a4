#!/usr/bin/env bash
# Builds the libFuzzer target with address and undefined-behaviour sanitizers
# (clang) and runs it for the given number of seconds (default 60), seeded
# with the sample surveys. New inputs go to build-fuzz/corpus; a crash leaves
# its input in build-fuzz/ as crash-*.
#   tests/fuzz/run-fuzz.sh [seconds] [extra libFuzzer flags...]
set -euo pipefail
cd "$(dirname "$0")/../.."
seconds=${1:-60}
shift || true

out=build-fuzz
mkdir -p "$out/corpus"
sources=$(find src -name '*.cpp' ! -path src/run/main.cpp ! -path src/run/run.cpp)
clang++ -std=c++20 -O1 -g -ffp-contract=off -Isrc \
  -fsanitize=fuzzer,address,undefined -fno-sanitize-recover=all \
  $sources tests/fuzz/fuzz_convert.cpp -o "$out/fuzz_convert"

seeds=()
[ -d examples ] && seeds+=(examples)
[ -d tests/fuzz/regressions ] && seeds+=(tests/fuzz/regressions)
cd "$out"
./fuzz_convert -max_total_time="$seconds" -max_len=200000 -timeout=20 -rss_limit_mb=4096 \
  -print_final_stats=1 "$@" corpus "${seeds[@]/#/../}"
