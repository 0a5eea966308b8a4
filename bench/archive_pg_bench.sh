#!/usr/bin/env bash
# Surveys added a second into an archive on a PostgreSQL server with 1, 2
# and 4 adding processes, against the SQLite file's, on the same disk. Starts
# a throwaway server of its own (Debian's postgresql, on a Unix socket only,
# with the server's default durability: fsync on) and stops it at the end,
# whatever happens.
#
#   bench/archive_pg_bench.sh [BUILD] [SURVEYS] [LOADED]   (build, 20, 100)
#
# LOADED is the number of files of the bulk load at the end.
set -euo pipefail
build=${1:-build}
surveys=${2:-20}
loaded=${3:-100}
bench=$(realpath "$build/bench/archive_bench")
bin=$(ls -d /usr/lib/postgresql/*/bin | sort -V | tail -n 1)
dir=$(mktemp -d "${TMPDIR:-/tmp}/ugf-pg-bench-XXXXXX")
as=()
if [ "$(id -u)" = 0 ]; then  # the server refuses to run as root
  chown nobody:nogroup "$dir"
  as=(setpriv --reuid=nobody --regid=nogroup --clear-groups)
fi
stop() {
  "${as[@]}" "$bin/pg_ctl" -D "$dir/data" stop -m immediate >/dev/null 2>&1 || true
  rm -rf "$dir"
}
trap stop EXIT
"${as[@]}" "$bin/initdb" -D "$dir/data" -U postgres -A trust -E UTF8 --locale=C >"$dir/initdb.log"
"${as[@]}" "$bin/pg_ctl" -D "$dir/data" -l "$dir/server.log" -w -s \
  -o "-c listen_addresses='' -c unix_socket_directories=$dir" start
for processes in 1 2 4; do
  echo "== SQLite file, $processes adding processes"
  "$bench" "$surveys" "$dir" "$processes"
  "$bin/psql" -q -h "$dir" -U postgres -d postgres -c "CREATE DATABASE bench$processes"
  echo "== PostgreSQL server, $processes adding processes"
  "$bench" "$surveys" "postgresql://postgres@/bench$processes?host=$dir" "$processes"
done

# The bulk load of examples/dask_ingest.py on a local cluster of as many
# worker processes as the machine has processors, over files of the same
# size (each a varied 52 x 999 survey with its last bytes made distinct),
# into the server and into a file; and `ugf archive add` of the same files
# in one process, for comparison.
module=$(realpath "$build/python")
if [ -d "$module/ugf" ] && /usr/bin/python3 -c 'import distributed' 2>/dev/null; then
  mkdir -p "$dir/made" && "$build/bench/make_surveys" "$dir/made" >/dev/null
  /usr/bin/python3 - "$dir/made/varied_corrosion_2d.ugf" "$dir/tree" "$loaded" <<'PY'
import pathlib, sys
source, tree, count = pathlib.Path(sys.argv[1]).read_bytes(), pathlib.Path(sys.argv[2]), int(sys.argv[3])
for n in range(count):
    folder = tree / f"{2000 + n}-06-01"
    folder.mkdir(parents=True)
    (folder / "survey.ugf").write_bytes(source[:-2] + n.to_bytes(2, "little"))
PY
  chmod -R a+rX "$dir/tree"
  workers=$(nproc)
  timed_load() {  # what, then the command
    local what=$1 start end
    shift
    start=$(date +%s.%N)
    "$@" >/dev/null 2>&1
    end=$(date +%s.%N)
    python3 -c "import sys; s = float(sys.argv[2]) - float(sys.argv[1]); print(f'$what: $loaded surveys in {s:.2f} s, {$loaded / s:.2f} surveys a second')" "$start" "$end"
  }
  "$bin/psql" -q -h "$dir" -U postgres -d postgres -c "CREATE DATABASE dask"
  echo "== examples/dask_ingest.py, $workers workers"
  timed_load "server" env PYTHONPATH="$module" /usr/bin/python3 examples/dask_ingest.py --workers "$workers" \
    --part P --db "postgresql://postgres@/dask?host=$dir" "$dir/tree"
  timed_load "file" env PYTHONPATH="$module" /usr/bin/python3 examples/dask_ingest.py --workers "$workers" \
    --part P --db "$dir/dask.ugfdb" "$dir/tree"
  echo "== ugf archive add, one process"
  timed_load "file" "$build/ugf" archive add --part P --db "$dir/add.ugfdb" "$dir/tree"
fi
