"""ugf.Archive against `ugf archive`: the sample floor's history against the
command line's CSV value by value, dates and parts decided as the command
line decides them, the same bytes twice, damaged surveys with `ugf
convert`'s message, the long table of readings against each survey's
points, the original files back, adds on threads, and file names as
os.PathLike."""
import concurrent.futures
import csv
import datetime
import io
import math
import os
import pathlib
import re
import shutil
import subprocess
import threading

import pytest
import ugf

BUILD = pathlib.Path(os.environ["UGF_BUILD"])
EXAMPLES = pathlib.Path(__file__).resolve().parents[2] / "examples"
# The sample tank floor's three inspections, dated as the README's workflow dates them.
FLOOR = [("corrosion_2d.ugf", "2026-03-02"), ("corrosion_2d_2029.ugf", "2029-03-05"),
         ("corrosion_2d_2032.ugf", "2032-03-01")]
PART = "TANK 4 FLOOR"  # the floor's description


def ugf_archive(*args):
    run = subprocess.run([BUILD / "ugf", "archive", *map(str, args)], capture_output=True, text=True)
    assert run.returncode == 0, run.stderr
    return run.stdout


@pytest.fixture
def floor(tmp_path):
    archive = ugf.Archive(tmp_path / "floor.ugfdb")
    for name, date in FLOOR:
        archive.add(EXAMPLES / name, date=date)
    yield archive
    archive.close()


def snake(header):
    """A history CSV's header as the table's column names."""
    return re.sub(r" per year| \(years\)", "", header.lower()).replace(" ", "_").replace("-", "_")


@pytest.mark.parametrize("options, minimums", [
    ({"minimum": 0.2, "as_of": "2032-09-01"}, None),
    ({"max_interval": 4, "as_of": datetime.date(2030, 1, 1)}, [("TANK4-C09", 0.21), ("TANK4-A06", 5.5, "mm")]),
    ({"as_of": "20290101"}, None),
])
def test_history_is_the_command_lines(tmp_path, floor, options, minimums):
    if minimums:
        floor.set_minimums(PART, minimums)
    flags = []
    for key, value in options.items():
        text = value.isoformat() if isinstance(value, datetime.date) else str(value)
        flags += ["--" + key.replace("_", "-"), text]
    lines = list(csv.reader(io.StringIO(ugf_archive("history", "--db", tmp_path / "floor.ugfdb", "--part", PART,
                                                    *flags))))
    table = floor.history(PART, **options)
    assert list(table) == [snake(h) for h in lines[0]]
    assert len(lines) == 1 + len(table["id"]) > 90
    for name, header in zip(table, lines[0]):
        for value, line in zip(table[name], lines[1:]):
            cell = line[lines[0].index(header)]
            if value is None or (isinstance(value, float) and math.isnan(value)):
                assert cell == "", (name, line[0])
            elif isinstance(value, datetime.date):
                assert value.isoformat() == cell, (name, line[0])
            elif isinstance(value, float):  # the CSV rounds
                assert f"{value:.{len(cell.partition('.')[2])}f}" == cell, (name, line[0])
            else:
                assert str(value) == cell, (name, line[0])


def test_readings_are_the_surveys_points(floor):
    surveys = floor.surveys(PART)
    assert [d.isoformat() for d in surveys["date"]] == [date for _, date in FLOOR]
    assert list(surveys["file_name"]) == [name for name, _ in FLOOR]
    readings = floor.readings(PART)
    fields = ["id", "value", "text", "units", "empty", "lost", "velocity", "notes"]
    assert list(readings) == ["survey", "id", "date"] + fields[1:]
    start = 0
    for survey_id, date, (name, _) in zip(surveys["id"], surveys["date"], FLOOR):
        with ugf.open(EXAMPLES / name) as survey:
            points = survey.points()
        end = start + len(points["id"])
        assert list(readings["survey"][start:end]) == [survey_id] * (end - start)
        assert set(readings["date"][start:end]) == {date}
        for field in fields:
            got, expected = list(readings[field][start:end]), list(points[field])
            assert [None if v != v else v for v in got] == [None if v != v else v for v in expected], field
        start = end
    assert start == len(readings["id"]) == sum(surveys["points"])


def test_dates_and_parts_are_decided_as_the_command_line_does(tmp_path):
    # The floor without its description: the part comes from the file's name.
    data = (EXAMPLES / "corrosion_2d.ugf").read_bytes()
    plain = data.replace(PART.encode(), b" " * len(PART))
    assert plain != data
    folder = tmp_path / "2027-05-06"
    folder.mkdir()
    files = {"tank4_2024-03-15.ugf": plain, "20240316-tank4.ugf": plain[:-1] + b"\1",
             "2027-05-06/tank5.ugf": plain[:-1] + b"\2", "2027-05-06/floor_20250101.ugf": data}
    for name, bytes_ in files.items():
        (tmp_path / name).write_bytes(bytes_)
    module = ugf.Archive(tmp_path / "module.ugfdb")
    for name in files:
        module.add(tmp_path / name)
        ugf_archive("add", "--db", tmp_path / "cli.ugfdb", tmp_path / name)
    module.add(EXAMPLES / "corrosion_2d_2029.ugf", date="2030-01-02", part="given")
    ugf_archive("add", "--db", tmp_path / "cli.ugfdb", "--date", "2030-01-02", "--part", "given",
                EXAMPLES / "corrosion_2d_2029.ugf")
    cli = ugf.Archive(tmp_path / "cli.ugfdb", create=False)
    facts = ["part", "date", "file_name", "sha256"]
    assert {k: list(module.surveys()[k]) for k in facts} == {k: list(cli.surveys()[k]) for k in facts}
    assert module.parts() == ["TANK 4 FLOOR", "given", "tank4", "tank5"]


def test_refusals(tmp_path, floor):
    cut = tmp_path / "cut_2026-01-01.ugf"
    cut.write_bytes((EXAMPLES / "boiler.ugf").read_bytes()[:5000])
    convert = subprocess.run([BUILD / "ugf", "convert", cut], capture_output=True, text=True)
    told = convert.stderr.splitlines()[0].removeprefix("ugf: ")
    undated = EXAMPLES / "boiler.ugf"
    with pytest.raises(ugf.DuplicateError) as duplicate:
        floor.add(pathlib.Path(EXAMPLES / "corrosion_2d_2029.ugf"), date="2030-01-01")
    assert duplicate.value.existing == 2
    assert str(duplicate.value) == (f"{EXAMPLES / 'corrosion_2d_2029.ugf'}: the same file is already stored as "
                                    "survey 2 (TANK 4 FLOOR, 2029-03-05, corrosion_2d_2029.ugf)")
    for path, date, error, text in [
        (cut, None, ugf.Error, re.escape(told)),
        (undated, None, ugf.Error, "boiler.ugf: no date: name it in the file name "
                                   r'\(tank4_2026-03-01.ugf\) or give date="YYYY-MM-DD"$'),
        (undated, "2026-02-30", ValueError, "not a date"),
        (undated, 20260301, TypeError, "date is a datetime.date"),
        (tmp_path / "missing_2026-01-01.ugf", None, ugf.Error, "missing_2026-01-01.ugf: cannot open"),
    ]:
        with pytest.raises(error, match=text):
            floor.add(path, date=date)
    assert isinstance(duplicate.value, ugf.Error) and len(floor.surveys()["id"]) == 3
    with pytest.raises(ugf.Error, match="no archive at"):
        ugf.Archive(tmp_path / "none.ugfdb", create=False)
    with pytest.raises(ugf.Error, match="survey 9 in the archive"):
        floor.get(9, tmp_path)
    with pytest.raises(ValueError, match="row 2: the units must be IN or MM"):
        floor.set_minimums(PART, [("A", 1), ("B", 2, "ft")])
    with pytest.raises(ugf.Error, match="TANK4-A01"):
        floor.set_minimums(PART, {"id": ["TANK4-A01"] * 2, "value": [0.1, 0.2]})
    floor.close()
    assert repr(floor).endswith("floor.ugfdb (closed)>")
    with pytest.raises(ugf.Error, match="floor.ugfdb: the archive is closed"):
        floor.parts()


def test_files_come_back_and_minimums_keep(tmp_path, floor):
    out = tmp_path / "out"
    for survey_id, (name, _) in zip(floor.surveys()["id"], FLOOR):
        written = floor.get(int(survey_id), out)
        assert written == out / name and written.read_bytes() == (EXAMPLES / name).read_bytes()
    floor.set_minimums(PART, [("TANK4-A01", 0.2, "in"), ("TANK4-B01", 5)])
    rows = floor.minimums(PART)
    assert {k: list(rows[k]) for k in rows} == {"id": ["TANK4-A01", "TANK4-B01"], "value": [0.2, 5.0],
                                                 "units": ["IN", ""]}
    floor.set_minimums("copy", rows)
    assert {k: list(v) for k, v in floor.minimums("copy").items()} == {k: list(rows[k]) for k in rows}


def test_adds_on_threads_at_once(tmp_path):
    # Forty distinct files: the floor with its last byte changed.
    data = (EXAMPLES / "corrosion_2d.ugf").read_bytes()
    paths = []
    for n in range(40):
        paths.append(tmp_path / f"tank_{2000 + n}-01-01.ugf")
        paths[-1].write_bytes(data[:-1] + bytes([n]))
    with ugf.Archive(str(tmp_path / "a.ugfdb")) as archive:
        with concurrent.futures.ThreadPoolExecutor(4) as pool:
            adds = [pool.submit(archive.add, path) for path in paths]
            lists = [pool.submit(archive.surveys) for _ in range(20)]
            ids = [add.result() for add in adds]
        assert sorted(ids) == list(range(1, 41)) and all(len(s.result()["id"]) <= 40 for s in lists)
        assert [d.year for d in archive.surveys()["date"]] == list(range(2000, 2040))
