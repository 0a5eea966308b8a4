#!/usr/bin/env bash
# Compares two converters over one corpus: every survey converted by each in
# both forms, console text, exit status and output files, which must all be
# the same byte for byte. No speed change may alter a byte of output.
#   bench/compare-outputs.sh OLD_UGF2CSV NEW_UGF2CSV [BUILD]
# The corpus comes from the tree: the samples, the images that the
# damaged-file tests save (`ctest --test-dir BUILD -R DamagedFiles` writes
# them to BUILD/damaged-images), the fuzzer's findings and the bench surveys.
# An older commit's converter: `git worktree add ../base COMMIT && cmake -S
# ../base -B ../base/build -DCMAKE_BUILD_TYPE=Release && cmake --build
# ../base/build --target ugf2csv`.
set -euo pipefail
cd "$(dirname "$0")/.."
old=$(realpath "$1") new=$(realpath "$2") build=${3:-build}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
mkdir "$work/corpus"
cp examples/*.ugf "$work/corpus/"
[ -d "$build/damaged-images" ] && cp "$build"/damaged-images/*.ugf "$work/corpus/"
for f in tests/fuzz/regressions/*; do cp "$f" "$work/corpus/fuzz_$(basename "$f").ugf"; done
"$build/bench/make_surveys" "$work/corpus" >/dev/null
run_all() {  # BINARY FOLDER
  cp -r "$work/corpus" "$2"
  (cd "$2" && for f in *.ugf; do for form in d g; do
     "$1" "$f" "$form" a >"$f.$form.console" 2>&1 && echo "status 0" >>"$f.$form.console" ||
       echo "status $?" >>"$f.$form.console"
   done; done)
}
run_all "$old" "$work/old" && run_all "$new" "$work/new"
count=$(find "$work/corpus" -name '*.ugf' | wc -l)
if diff -r -q "$work/old" "$work/new"; then
  echo "no difference over $count surveys in both forms"
else
  exit 1
fi
