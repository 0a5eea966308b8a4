"""The Python module against the command line: values and grids against the
grid CSV texts, to_csv against ugf2csv byte for byte (in turn and on
threads), stats against `ugf stats --json`, and ugf.Error for every input
that can't be read."""
import concurrent.futures
import csv
import io
import json
import math
import os
import pathlib
import random
import shutil
import subprocess

import pytest
import ugf

BUILD = pathlib.Path(os.environ["UGF_BUILD"])
EXAMPLES = pathlib.Path(__file__).resolve().parents[2] / "examples"
SAMPLES = sorted(EXAMPLES.glob("*.ugf"))


def converted(tmp_path, sample, form):
    """The bytes that ugf2csv writes for a sample."""
    copy = tmp_path / sample.name
    shutil.copy(sample, copy)
    subprocess.run([BUILD / "ugf2csv", copy.name, form, "a"], cwd=tmp_path, check=True, capture_output=True)
    ending = "_detailed_output.csv" if form == "d" else "_grid_output.csv"
    return (tmp_path / (sample.stem + ending)).read_bytes()


def number(cell):
    """The number a grid cell shows: blanks, then a plain decimal; else NaN."""
    text = cell.strip(" ")
    body = text[1:] if text.startswith("-") else text
    if body.count(".") <= 1 and body.replace(".", "").isdigit():
        return float(text)
    return math.nan


def same(a, b):
    return (math.isnan(a) and math.isnan(b)) or a == b


@pytest.mark.parametrize("sample", SAMPLES, ids=lambda p: p.stem)
def test_points_and_grids_show_the_grid_texts(tmp_path, sample):
    rows = list(csv.reader(io.StringIO(converted(tmp_path, sample, "g").decode("latin-1"))))
    with ugf.open(str(sample)) as survey:
        points = survey.points()
        by_text = {t.strip(" "): v for t, v in zip(points["text"], points["value"])}
        for t, v in by_text.items():
            assert same(number(t), v), t
        if survey.grid_count == 0:  # LINEAR and MANUAL: lines of identifier and value
            assert [r[0] for r in rows] == list(points["id"])
            assert all(same(number(r[1]), v) for r, v in zip(rows, points["value"]))
            return
        # Each grid's columns stand side by side in the CSV, after the title rows.
        column = 1
        body = [r for r in rows if r and r[0] != ""]
        for k in range(survey.grid_count):
            values, row_titles, column_titles = survey.grid(k)
            assert [r[0] for r in body] == row_titles
            width = len(column_titles)
            for i, r in enumerate(body):
                assert all(same(number(c), v) for c, v in zip(r[column:column + width], values[i])), (k, i)
            column += width
        assert column > 1


@pytest.mark.parametrize("sample", SAMPLES, ids=lambda p: p.stem)
def test_to_csv_gives_the_bytes_of_ugf2csv(tmp_path, sample):
    for form, letter in (("detailed", "d"), ("grid", "g")):
        with ugf.open(str(sample)) as survey:
            survey.stats()  # walks that come before change nothing
            survey.to_csv(str(tmp_path / "out.csv"), form=form)
        assert (tmp_path / "out.csv").read_bytes() == converted(tmp_path, sample, letter)


def test_to_csv_on_threads(tmp_path):
    expected = {s.name: converted(tmp_path, s, "d") for s in SAMPLES}

    def convert(sample, n):
        target = tmp_path / f"{n}_{sample.name}.csv"
        with ugf.open(str(sample)) as survey:
            survey.to_csv(str(target))
        return sample.name, target.read_bytes()

    with concurrent.futures.ThreadPoolExecutor(4) as pool:
        jobs = [pool.submit(convert, s, n) for n in range(3) for s in SAMPLES]
        for job in jobs:
            name, data = job.result()
            assert data == expected[name]


def test_stats_are_those_of_the_command_line():
    for sample in SAMPLES:
        line = subprocess.run([BUILD / "ugf", "stats", "--json", "--minimum", "0.2", sample],
                              check=True, capture_output=True, text=True).stdout
        with ugf.open(str(sample)) as survey:
            assert survey.stats(minimum=0.2) == json.loads(line)


def test_json_export_follows_its_schema():
    jsonschema = pytest.importorskip("jsonschema")
    schema = json.loads((EXAMPLES.parent / "docs" / "survey.schema.json").read_text())
    for sample in SAMPLES:
        with ugf.open(str(sample)) as survey:
            jsonschema.validate(json.loads(survey.to_json()), schema, cls=jsonschema.Draft202012Validator)


def test_failures_raise_ugf_error(tmp_path):
    blank = tmp_path / "blank.ugf"
    blank.write_bytes(bytes(100))
    cut = tmp_path / "cut.ugf"
    cut.write_bytes(SAMPLES[0].read_bytes()[:5000])
    folder = tmp_path / "folder.ugf"
    folder.mkdir()
    for path, text in ((tmp_path / "missing.ugf", "cannot open"), (blank, "read error"),
                       (folder, "")):
        with pytest.raises(ugf.Error, match=text):
            ugf.open(str(path)).points()
    with pytest.raises(ugf.Error, match="read error at offset 0x"):
        ugf.open(str(cut)).to_csv(str(tmp_path / "cut.csv"))
    assert not (tmp_path / "cut.csv").exists()
    assert issubclass(ugf.Error, Exception)


def test_random_and_damaged_bytes_never_crash(tmp_path):
    rng = random.Random(20)
    base = SAMPLES[0].read_bytes()
    for n in range(150):
        data = bytearray(base if n % 2 else rng.randbytes(rng.randrange(20000)))
        for _ in range(rng.randrange(1, 20)):
            if data:
                data[rng.randrange(len(data))] = rng.randrange(256)
        path = tmp_path / f"r{n}.ugf"
        path.write_bytes(bytes(data))
        try:
            with ugf.open(str(path)) as survey:
                survey.info, survey.points(), survey.stats(), survey.ascans(), survey.bscans()
                for k in range(survey.grid_count):
                    survey.grid(k)
                survey.to_json()
        except ugf.Error:
            pass


def test_compare_gives_the_rows_of_the_command_line(tmp_path):
    # A later survey of the tank: every reading 0.0060 inch thinner (its raw
    # thickness counts 0.0001 inch: bits 5 to 8 of word0 and the u16 behind).
    data = bytearray((EXAMPLES / "corrosion_2d.ugf").read_bytes())
    for slot in range(0x1500, 0x1500 + 96 * 16, 16):
        word0 = int.from_bytes(data[slot:slot + 4], "big")
        raw = ((word0 >> 5) & 0xF) << 16 | int.from_bytes(data[slot + 4:slot + 6], "big")
        if word0 >> 29 == 1 and 60 <= raw != 0xFFFFA:
            raw -= 60
            data[slot:slot + 4] = ((word0 & ~(0xF << 5)) | ((raw >> 16) << 5)).to_bytes(4, "big")
            data[slot + 4:slot + 6] = (raw & 0xFFFF).to_bytes(2, "big")
    later = tmp_path / "later.ugf"
    later.write_bytes(bytes(data))
    subprocess.run([BUILD / "ugf", "compare", "--years", "3", "--minimum", "0.15", EXAMPLES / "corrosion_2d.ugf",
                    later, "--out-dir", tmp_path], check=True, capture_output=True)
    lines = list(csv.DictReader((tmp_path / "later_compare.csv").open()))
    with ugf.open(str(EXAMPLES / "corrosion_2d.ugf")) as a, ugf.open(str(later)) as b:
        rows = ugf.compare(a, b, years=3, minimum=0.15)
    assert list(rows["id"]) == [line["ID"] for line in lines]
    both = [i for i, s in enumerate(rows["status"]) if s == "both" and not math.isnan(rows["loss"][i])]
    # Readings behind a scan link keep their thickness in the scan block.
    thinner = [i for i in both if rows["loss"][i] != 0]
    assert len(thinner) > 80
    for i in thinner:
        assert rows["loss"][i] == pytest.approx(0.006)
        assert rows["rate"][i] == pytest.approx(0.002)
    for i in thinner:
        assert float(lines[i]["LOSS"]) == pytest.approx(rows["loss"][i], abs=5e-4)
        assert float(lines[i]["REMAINING LIFE (YEARS)"]) == pytest.approx(rows["remaining_life"][i], abs=0.05)
