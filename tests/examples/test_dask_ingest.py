"""examples/dask_ingest.py on a local cluster of two worker processes, into
an SQLite archive and into an archive on a throwaway PostgreSQL server: a tree of 300 distinct surveys with copies of some and
damaged files among them is stored once, the copies counted as already
stored and the damaged files told with their reasons; run again, it stores
nothing new."""
import hashlib
import os
import pathlib
import subprocess
import sys

import pytest
import ugf

pytest.importorskip("distributed")
EXAMPLES = pathlib.Path(__file__).resolve().parents[2] / "examples"


@pytest.fixture(params=["file", "server"])
def archive(request, tmp_path):
    """Where the test's archive is: a new file, or a new database on the server."""
    if request.param == "file":
        return str(tmp_path / "plant.ugfdb")
    return request.getfixturevalue("postgres_url")


def ingest(tmp_path, archive):
    run = subprocess.run([sys.executable, EXAMPLES / "dask_ingest.py", "--db", archive,
                          tmp_path / "tree"], capture_output=True, text=True, timeout=300)
    # The summary follows the progress bar.
    return run.returncode, run.stdout[run.stdout.rindex("\nstored "):].splitlines()[1:]


def test_a_tree_is_stored_once(tmp_path, archive):
    floor = (EXAMPLES / "corrosion_2d.ugf").read_bytes()
    # The floor with its last two bytes (the last value of its file) made n:
    # 300 distinct files, dated by their folders.
    for n in range(300):
        path = tmp_path / "tree" / f"tank{n % 3}" / f"{2000 + n // 12}-{n % 12 + 1:02}-01" / f"tank{n % 3}.ugf"
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_bytes(floor[:-2] + n.to_bytes(2, "little"))
    copies = tmp_path / "tree" / "copies_2031-01-01"
    copies.mkdir()
    for n in range(0, 300, 30):
        (copies / f"copy{n}.UGF").write_bytes(floor[:-2] + n.to_bytes(2, "little"))
    (copies / "cut.ugf").write_bytes(floor[:3000])
    (copies / "blank.ugf").write_bytes(bytes(100))
    # The damaged files as `ugf convert` tells them, in the order of the walk.
    convert = subprocess.run([pathlib.Path(os.environ["UGF_BUILD"]) / "ugf", "convert", copies / "blank.ugf",
                              copies / "cut.ugf"], capture_output=True, text=True, cwd=tmp_path)
    told = [line.replace("ugf: ", "failed: ", 1) for line in convert.stderr.splitlines()[:2]]
    assert ingest(tmp_path, archive) == (1, ["stored 300, already stored 10, failed 2 of 312 surveys"] + told)
    with ugf.Archive(archive, create=False) as stored_archive:
        surveys = stored_archive.surveys()
        # A server may leave gaps in the ids where two workers met on the same bytes.
        assert stored_archive.parts() == ["TANK 4 FLOOR"] and len(set(surveys["id"])) == 300
        # Of a file and its copy, whichever a worker stored first counts, with its date.
        dates = {}
        for path in (tmp_path / "tree").rglob("*.[uU][gG][fF]"):
            dates.setdefault(hashlib.sha256(path.read_bytes()).hexdigest(), set()).add(path.parent.name[-10:])
        stored = dict(zip(surveys["sha256"], surveys["date"]))
        assert len(stored) == 300 and all(stored[sha].isoformat() in dates[sha] for sha in stored)
    assert ingest(tmp_path, archive) == (1, ["stored 0, already stored 310, failed 2 of 312 surveys"] + told)
