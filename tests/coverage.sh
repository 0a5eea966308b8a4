#!/usr/bin/env bash
# Line and branch coverage of src/ by the whole test suite: builds the
# coverage preset (gcov instrumentation, no optimisation), runs every test,
# and prints gcovr's summary. Needs gcovr (apt-get install gcovr).
#   tests/coverage.sh            summary only
#   tests/coverage.sh --txt      per-file table as well
set -euo pipefail
cd "$(dirname "$0")/.."
find build-coverage -name '*.gcda' -delete 2>/dev/null || true
cmake --preset coverage >/dev/null
cmake --build --preset coverage
ctest --preset coverage >/dev/null
# The library's and the converter's objects only (test objects of removed
# files may linger in the folder). Exceptions' hidden branches (the standard
# library's throws) are left out: the library throws none of its own.
args=(--root . --filter 'src/' --exclude-throw-branches build-coverage/CMakeFiles/ugf.dir
      build-coverage/CMakeFiles/ugf2csv.dir)
if [ "${1:-}" = --txt ]; then gcovr "${args[@]}" --txt; gcovr "${args[@]}" --txt --branches; fi
gcovr "${args[@]}" --print-summary --txt build-coverage/coverage.txt | tail -3
