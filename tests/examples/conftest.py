"""A throwaway PostgreSQL server for the tests that need one: Debian's
server binaries run as an unprivileged user (the tests may run as root, which
the server refuses), in a temporary folder, listening on a Unix socket only,
and stopped at the end of the session whatever happened."""
import glob
import os
import pathlib
import shutil
import subprocess
import tempfile

import pytest


def server_binaries():
    found = sorted(glob.glob("/usr/lib/postgresql/*/bin/pg_ctl"))
    return pathlib.Path(found[-1]).parent if found else None


@pytest.fixture(scope="session")
def postgres_url():
    """The URL of an empty database on a fresh server; skips the test where no server can be had."""
    bin = server_binaries()
    if bin is None:
        pytest.skip("no PostgreSQL server binaries (Debian package postgresql)")
    folder = pathlib.Path(tempfile.mkdtemp(prefix="ugf-pg-"))
    run_as = []
    if os.geteuid() == 0:
        shutil.chown(folder, "nobody", "nogroup")
        run_as = ["setpriv", "--reuid=nobody", "--regid=nogroup", "--clear-groups"]
    data = folder / "data"
    try:
        subprocess.run(run_as + [bin / "initdb", "-D", data, "-U", "postgres", "-A", "trust", "-E", "UTF8",
                                 "--locale=C", "-N"], check=True, capture_output=True)
        subprocess.run(run_as + [bin / "pg_ctl", "-D", data, "-l", folder / "server.log", "-w", "-s", "-o",
                                 f"-c listen_addresses='' -c unix_socket_directories={folder} -c fsync=off", "start"],
                       check=True, capture_output=True)
        yield f"postgresql://postgres@/postgres?host={folder}"
    finally:
        subprocess.run(run_as + [bin / "pg_ctl", "-D", data, "stop", "-m", "immediate"], capture_output=True)
        shutil.rmtree(folder, ignore_errors=True)
