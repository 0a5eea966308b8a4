"""Loads every survey of a folder tree into a survey archive on a Dask cluster.

    python3 examples/dask_ingest.py --db postgresql://ugf_writer@db.example/plant7 /data/inspections
    python3 examples/dask_ingest.py --db plant7.ugfdb --scheduler tcp://scheduler.example:8786 /data/inspections

The files (*.ugf in any case, below each folder given) are read, their
points taken and their bytes stored by the workers themselves: a task gets a
path, never the bytes, so the files must be where every worker sees them (a
shared folder). Each worker process keeps one connection to the archive for
all of its tasks, opened by a worker plugin; the module releases the
interpreter lock while it reads and stores. A server archive (postgresql://)
takes the workers' adds at once; an SQLite file takes them one at a time,
which suits a few workers on one machine.

Without --scheduler, a local cluster of --workers processes (2 by default)
of one thread each does the work. A file whose bytes the archive already
holds is counted as "already stored", so a second run adds only what is new.
At the end the files that could not be added are listed with the reason; the
status is 1 if there was any, else 0.
"""
import argparse
import functools
import os
import sys

import distributed
import ugf

PLUGIN = "ugf-archive"


class ArchiveOnWorker(distributed.WorkerPlugin):
    """One connection to the archive in each worker process, for every task it runs."""

    def __init__(self, where):
        self.where = where
        self.archive = None

    def setup(self, worker):
        self.archive = ugf.Archive(self.where)

    def teardown(self, worker):
        if self.archive is not None:
            self.archive.close()


def add(date, part, path):
    """Runs on a worker: ("stored", id, ""), ("already stored", id, why) or ("failed", 0, why)."""
    archive = distributed.get_worker().plugins[PLUGIN].archive
    try:
        return "stored", archive.add(path, date=date, part=part), ""
    except ugf.DuplicateError as e:
        return "already stored", e.existing, str(e)
    except (ugf.Error, OSError) as e:
        return "failed", 0, str(e)


def surveys_in(paths):
    """The survey files that the paths name: files as given, and *.ugf below folders, sorted."""
    found = []
    for path in paths:
        if not os.path.isdir(path):
            found.append(os.path.abspath(path))
            continue
        for folder, subfolders, names in os.walk(path):
            subfolders.sort()
            found += [os.path.abspath(os.path.join(folder, n)) for n in sorted(names) if n.lower().endswith(".ugf")]
    return found


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("paths", nargs="+", metavar="PATH", help="survey files, or folders searched for .ugf files")
    parser.add_argument("--db", default=os.environ.get("UGF_ARCHIVE"),
                        help="the archive: a file, or a postgresql:// URI (default: UGF_ARCHIVE)")
    parser.add_argument("--scheduler", help="the address of a Dask scheduler (default: a local cluster)")
    parser.add_argument("--workers", type=int, default=2, help="processes of the local cluster (default 2)")
    parser.add_argument("--date", help="the surveys' date, YYYY-MM-DD (default: from each path)")
    parser.add_argument("--part", default="", help="the part (default: each survey's description, else its name)")
    args = parser.parse_args()
    if not args.db:
        parser.error("no archive: give --db or set UGF_ARCHIVE")
    paths = surveys_in(args.paths)
    if args.scheduler:
        client = distributed.Client(args.scheduler)
    else:
        # Processes, so that each worker has an interpreter of its own; only
        # the loopback interface, and no dashboard.
        cluster = distributed.LocalCluster(n_workers=args.workers, threads_per_worker=1, processes=True,
                                           host="127.0.0.1", dashboard_address=None)
        client = distributed.Client(cluster)
    try:
        client.register_worker_plugin(ArchiveOnWorker(args.db), name=PLUGIN)
        futures = client.map(functools.partial(add, args.date, args.part), paths, pure=False)
        distributed.progress(futures)
        results = []
        for path, future in zip(paths, futures):
            if future.status == "error":
                results.append(("failed", 0, f"{path}: {future.exception()!r}"))
            else:
                results.append(future.result())
        client.unregister_worker_plugin(PLUGIN)
    finally:
        client.close()
        if not args.scheduler:
            cluster.close()
    counts = {kind: sum(r[0] == kind for r in results) for kind in ("stored", "already stored", "failed")}
    print(f"\nstored {counts['stored']}, already stored {counts['already stored']}, "
          f"failed {counts['failed']} of {len(paths)} surveys")
    for kind, _, why in results:
        if kind == "failed":
            print("failed:", why)
    return 1 if counts["failed"] else 0


if __name__ == "__main__":
    sys.exit(main())
