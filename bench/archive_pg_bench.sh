#!/usr/bin/env bash
# Surveys added a second into an archive on a PostgreSQL server with 1, 2
# and 4 adding processes, against the SQLite file's, on the same disk. Starts
# a throwaway server of its own (Debian's postgresql, on a Unix socket only,
# with the server's default durability: fsync on) and stops it at the end,
# whatever happens.
#
#   bench/archive_pg_bench.sh [BUILD] [SURVEYS]   (build, 20)
set -euo pipefail
build=${1:-build}
surveys=${2:-20}
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
