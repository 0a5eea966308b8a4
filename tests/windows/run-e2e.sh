#!/usr/bin/env bash
# Cross-builds the programs and the C library for Windows (MinGW-w64), runs the end-to-end
# tests against the executables under Wine, then the C example. On Windows every line of the
# output file and of the console ends with carriage return and line feed; the
# tests expect exactly that when UGF2CSV_CRLF is 1.
# Arguments are passed to the test binary (for instance --gtest_filter=...).
set -euo pipefail
cd "$(dirname "$0")/../.."

if ! command -v x86_64-w64-mingw32-g++-posix >/dev/null || ! { command -v wine64 >/dev/null || [ -x /usr/lib/wine/wine64 ]; } ||
   [ ! -f /usr/x86_64-w64-mingw32/include/zlib.h ]; then
  apt-get update -qq && apt-get install -y -qq g++-mingw-w64-x86-64 wine64 libz-mingw-w64-dev >/dev/null
fi
wine=$(command -v wine64 || echo /usr/lib/wine/wine64)
wineserver=$(command -v wineserver || echo /usr/lib/wine/wineserver)

cmake --preset windows >/dev/null && cmake --build --preset windows
cmake --preset default >/dev/null && cmake --build --preset default --target e2e_tests

export WINEDEBUG=-all
# One Wine server for the whole run, in a prefix of this build's own. Debian
# starts the server with -p0: it shuts down as soon as its last program has
# exited, and the tests start one program after another, so the server was
# shut down and started again every few runs, each new one booting the
# prefix again (2 to 3 s a time). A persistent server (-p, given after
# Debian's -p0, wins) lives until it is stopped at the end, and no other
# run's programs share it.
export WINEPREFIX="$PWD/build-windows/wine-prefix"
mkdir -p "$WINEPREFIX"
"$wineserver" -p || true   # a server still running there is kept
trap '"$wineserver" -k 2>/dev/null || true' EXIT
export UGF2CSV_WRAPPER="$wine"
export UGF2CSV_BINARY="$PWD/build-windows/ugf2csv.exe"
export UGF_TOOLKIT_BINARY="$PWD/build-windows/ugf.exe"
# Arguments reach Wine as UTF-8, which it turns into the Windows program's
# wide-character command line.
export LC_ALL=C.UTF-8
export UGF2CSV_CRLF=1
"$wine" cmd /c exit >/dev/null 2>&1 || true   # creates the Wine prefix once
# Wine maps the shared user data page at the fixed address 0x7ffe0000 when a
# program starts. With address-space randomization the kernel puts the
# program's heap anywhere up to 1 GB above Wine's loader (0x7d000000), so
# now and then on that page (3 starts in 12,000 here); Wine then ends the
# program at once with status 1 and prints nothing ("failed to map the
# shared user data: c0000018", shown only with WINEDEBUG=err+all). Every
# program the tests start inherits a fixed layout (setarch -R), in which
# the heap lies just above the loader.
setarch "$(uname -m)" -R ./build/tests/e2e_tests "$@"

# The C library: the example (survey_summary.exe beside ugf.dll) writes the
# grid of a sample exactly as the converter does, CR LF line ends included.
# The DLL exports the ugf_ functions only.
root=$PWD
tmp=$(mktemp -d)
trap 'rm -rf "$tmp"; "$wineserver" -k 2>/dev/null || true' EXIT
exports=$(x86_64-w64-mingw32-objdump -p build-windows/ugf.dll | sed -n '/\[Ordinal\/Name Pointer\] Table/,/^$/p' |
          awk '/^[[:space:]]*\[ *[0-9]+\]/ { print $NF }')
if [ -z "$exports" ] || echo "$exports" | grep -v '^ugf_'; then
  echo "ugf.dll exports besides ugf_* (above), or nothing"
  exit 1
fi
cp examples/corrosion_2d.ugf "$tmp/"
(cd "$tmp" && setarch "$(uname -m)" -R "$wine" "$root/build-windows/ugf2csv.exe" corrosion_2d.ugf g a >/dev/null &&
 setarch "$(uname -m)" -R "$wine" "$root/build-windows/survey_summary.exe" corrosion_2d.ugf example_grid.csv >/dev/null)
cmp "$tmp/corrosion_2d_grid_output.csv" "$tmp/example_grid.csv"
echo "C library under Wine: survey_summary.exe wrote the converter's grid"
