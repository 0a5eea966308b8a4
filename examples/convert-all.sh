#!/usr/bin/env bash
# Converts every sample survey of this folder in both forms, grid and
# detailed. The samples are copied into build/example-output (or the folder given as
# the first argument) and converted there, so the outputs stand beside their
# copies and the source tree stays clean. The converter is build/ugf2csv, or
# UGF2CSV when that is set. Exits with 1 when any conversion failed.
set -uo pipefail
here="$(cd "$(dirname "$0")" && pwd)"
converter="${UGF2CSV:-$here/../build/ugf2csv}"
out="${1:-$here/../build/example-output}"

if [ ! -x "$converter" ]; then
  echo "no converter at $converter: build it first (cmake --preset default && cmake --build --preset default)" >&2
  exit 2
fi
mkdir -p "$out" && out="$(cd "$out" && pwd)"

failed=0
total=0
for sample in "$here"/*.ugf; do
  name="$(basename "$sample")"
  cp "$sample" "$out/$name"
  for form in g d; do
    total=$((total + 1))
    echo "== $name $form"
    if ! (cd "$out" && "$converter" "$name" "$form" a); then
      failed=$((failed + 1))
    fi
  done
done
echo "converted $((total - failed)) of $total; outputs in $out"
[ "$failed" -eq 0 ]
