#!/usr/bin/env bash
# The C library as a user gets it: installed into a temporary prefix, C
# programs built against it through find_package and through pkg-config,
# and their conversions of the samples compared byte for byte with the
# files ugf2csv writes. The library exports the ugf_ functions only.
#   installed-package.sh SOURCE_DIR BUILD_DIR [C flags of the programs]
set -euo pipefail
src=$1 build=$2 cflags=${3:-}
tmp=$(mktemp -d)
trap 'rm -rf "$tmp"' EXIT
cmake --install "$build" --prefix "$tmp/prefix" >/dev/null
pc=$(find "$tmp/prefix" -name ugf.pc)
libdir=$(dirname "$(dirname "$pc")")

others=$(nm -D --defined-only "$libdir/libugf.so.1" | awk '$3 !~ /^ugf_/ { print $3 }')
[ -z "$others" ] || { echo "exported besides ugf_*: $others"; exit 1; }

mkdir "$tmp/ref" "$tmp/fp-out" "$tmp/pc-out"
cp "$src"/examples/*.ugf "$tmp/ref/"
for survey in "$tmp"/ref/*.ugf; do
  "$build/ugf2csv" "$survey" d a >/dev/null
  "$build/ugf2csv" "$survey" g a >/dev/null
done

# find_package: the test program, and the example with its own CMakeLists.txt.
mkdir "$tmp/fp-src"
cp "$src/tests/capi/convert_samples.c" "$tmp/fp-src/"
cat > "$tmp/fp-src/CMakeLists.txt" <<'CMAKE'
cmake_minimum_required(VERSION 3.16)
project(convert_samples LANGUAGES C)
find_package(ugf 3 REQUIRED)
add_executable(convert_samples convert_samples.c)
target_link_libraries(convert_samples PRIVATE ugf::ugf)
CMAKE
for project in "$tmp/fp-src" "$src/examples/c"; do
  out="$tmp/build-$(basename "$project")"
  cmake -S "$project" -B "$out" -DCMAKE_PREFIX_PATH="$tmp/prefix" -DCMAKE_C_FLAGS="$cflags" >/dev/null
  cmake --build "$out" >/dev/null
done
"$tmp/build-fp-src/convert_samples" "$tmp/fp-out" "$tmp"/ref/*.ugf

# pkg-config
flags=$(PKG_CONFIG_PATH="$(dirname "$pc")" pkg-config --cflags --libs ugf)
cc -std=c99 $cflags "$src/tests/capi/convert_samples.c" $flags -o "$tmp/pc-convert"
LD_LIBRARY_PATH="$libdir" "$tmp/pc-convert" "$tmp/pc-out" "$tmp"/ref/*.ugf

compared=0
for expected in "$tmp"/ref/*.csv; do
  for out in fp-out pc-out; do
    cmp "$expected" "$tmp/$out/$(basename "$expected")"
    compared=$((compared + 1))
  done
done
[ "$compared" -eq 48 ] || { echo "compared $compared outputs, not 48"; exit 1; }

# The example: the statistics of the tank floor and its grid.
(cd "$tmp/ref" && "$tmp/build-c/survey_summary" corrosion_2d.ugf "$tmp/example_grid.csv" >"$tmp/summary.txt")
cmp "$tmp/ref/corrosion_2d_grid_output.csv" "$tmp/example_grid.csv"
grep -qx "96 points, 86 readings in IN, 6 empty, 3 lost" "$tmp/summary.txt"
echo "installed package: $compared outputs as ugf2csv writes them, the example's grid and figures"
