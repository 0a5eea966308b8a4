"""The Python module against the command line: values and grids against the
grid CSV texts, to_csv against ugf2csv byte for byte (in turn and on
threads), stats against `ugf stats --json`, tables against the JSON export,
file names of every kind, the stubs against the module, and ugf.Error for
every input that can't be read. UGF_MODULE_DIR names the folder that the
imported `ugf` must come from (the build's, or a virtual environment)."""
import ast
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
import threading

import pytest
import ugf

BUILD = pathlib.Path(os.environ["UGF_BUILD"])
EXAMPLES = pathlib.Path(__file__).resolve().parents[2] / "examples"
SAMPLES = sorted(EXAMPLES.glob("*.ugf"))
SCHEMA = json.loads((EXAMPLES.parent / "docs" / "survey.schema.json").read_text())


def test_the_module_is_the_one_meant():
    expected = pathlib.Path(os.environ["UGF_MODULE_DIR"]).resolve()
    assert expected in pathlib.Path(ugf.__file__).resolve().parents


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


def test_one_survey_on_threads():
    # Threads that wait for a survey another thread reads must not hold the
    # interpreter lock that the reader needs to return.
    survey = ugf.open(EXAMPLES / "corrosion_2d.ugf")
    expected, results = survey.to_json(), []
    threads = [threading.Thread(target=lambda: results.append({survey.to_json() for _ in range(100)}), daemon=True)
               for _ in range(3)]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join(60)
    assert results == [{expected}] * 3
    survey.close()


def test_stats_are_those_of_the_command_line():
    for sample in SAMPLES:
        line = subprocess.run([BUILD / "ugf", "stats", "--json", "--minimum", "0.2", sample],
                              check=True, capture_output=True, text=True).stdout
        with ugf.open(str(sample)) as survey:
            assert survey.stats(minimum=0.2) == json.loads(line)


def test_json_export_follows_its_schema():
    jsonschema = pytest.importorskip("jsonschema")
    for sample in SAMPLES:
        with ugf.open(str(sample)) as survey:
            jsonschema.validate(json.loads(survey.to_json()), SCHEMA, cls=jsonschema.Draft202012Validator)


def plain(value):
    """A table cell or array as JSON has it: NaN as None, arrays as lists."""
    if hasattr(value, "tolist"):
        value = value.tolist()
    if isinstance(value, list):
        return [plain(v) for v in value]
    if isinstance(value, dict):
        return {k: plain(v) for k, v in value.items()}
    return None if isinstance(value, float) and math.isnan(value) else value


def columns(table):
    """A pandas.DataFrame or a dict of arrays as a dict of plain lists."""
    return {name: plain(table[name]) for name in table}


@pytest.mark.parametrize("sample", SAMPLES, ids=lambda p: p.stem)
def test_tables_hold_the_fields_of_the_json_export(sample):
    with ugf.open(sample) as survey:
        data = json.loads(survey.to_json())
        info, points, ascans, bscans = survey.info, survey.points(), survey.ascans(), survey.bscans()
    fields = list(SCHEMA["$defs"]["point"]["properties"])
    assert list(points) == fields[:9] + ["note_text"] + fields[9:]
    for field in fields:
        assert plain(points[field]) == [p[field] for p in data["points"]], field
    header = data["header"]
    assert set(info) - set(header) == {"units", "setups_used"}
    assert {k: v for k, v in info.items() if k in header} == {k: header[k] for k in info if k in header}
    assert plain(ascans) == [dict(a, dac_points=[tuple(d) for d in a["dac_points"]]) for a in data["ascans"]]
    assert plain(bscans) == data["bscans"]


def test_note_text_is_what_the_detailed_form_shows():
    with ugf.open(EXAMPLES / "corrosion_2d.ugf") as survey:
        points = survey.points()
    shown = {mask: text for mask, text in zip(points["notes"], points["note_text"])}
    assert shown == {0: "", 1: "PITTED", 6: "B:C"}


class Named:
    """Any os.PathLike."""

    def __init__(self, path):
        self.path = path

    def __fspath__(self):
        return self.path


def test_file_names_of_every_kind(tmp_path):
    odd = tmp_path / os.fsdecode(b"caf\xe9 tank.ugf")  # not UTF-8: as a folder listing gives it
    shutil.copy(EXAMPLES / "corrosion_2d.ugf", odd)
    detailed = converted(tmp_path, EXAMPLES / "corrosion_2d.ugf", "d")
    for name in (str(odd), odd, os.fsencode(odd), Named(str(odd)), Named(os.fsencode(odd))):
        with ugf.open(name) as survey:
            assert survey.info["points"] == 96
            survey.to_csv(Named(str(tmp_path / "a.csv")))
            survey.to_json(tmp_path / "a.json")
            assert (tmp_path / "a.json").read_text() == survey.to_json()
        assert (tmp_path / "a.csv").read_bytes() == detailed
        assert repr(survey).endswith("caf\xe9 tank.ugf (closed)>")
    with pytest.raises(ugf.Error, match="caf\xe9 missing.ugf: cannot open"):
        ugf.open(tmp_path / os.fsdecode(b"caf\xe9 missing.ugf"))
    for wrong in (3, None, ["a.ugf"], Named(3)):
        with pytest.raises(TypeError):
            ugf.open(wrong)
        with pytest.raises(TypeError):
            ugf.compare(wrong, odd)


def test_stubs_and_docstrings_cover_the_module():
    stubs = ast.parse(pathlib.Path(ugf.__file__).with_name("__init__.pyi").read_text())
    assert pathlib.Path(ugf.__file__).with_name("py.typed").exists()
    stubbed = {n.name: n for n in stubs.body if isinstance(n, (ast.ClassDef, ast.FunctionDef))}
    assert {n for n in stubbed if not n.startswith("_")} == set(ugf.__all__)
    for kind in (ugf.Survey, ugf.Archive):
        members = {n.name for n in stubbed[kind.__name__].body if isinstance(n, ast.FunctionDef)}
        assert members - {"__init__"} == {n for n in vars(kind) if not n.startswith("_")} | {"__enter__", "__exit__"}
        for name in members | {"__repr__"}:
            assert getattr(kind, name).__doc__, name
    for name in ugf.__all__:
        assert getattr(ugf, name).__module__ == "ugf" and getattr(ugf, name).__doc__, name


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
    baseline = EXAMPLES / "corrosion_2d.ugf"
    with ugf.open(str(baseline)) as a, ugf.open(str(later)) as b:
        rows = ugf.compare(a, b, years=3, minimum=0.15)
        # A file name is opened and closed by the call; a survey compared
        # with itself has lost nothing.
        open_files = len(os.listdir("/proc/self/fd"))
        for pair in ((baseline, later), (a, str(later)), (Named(str(baseline)), b)):
            assert columns(ugf.compare(*pair, years=3, minimum=0.15)) == columns(rows)
        assert len(os.listdir("/proc/self/fd")) == open_files
        assert set(plain(ugf.compare(b, b)["loss"])) - {None} == {0.0}
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
