"""`ugf report` and `ugf compare` run as a user runs them, on the sample tank
floor (corrosion_2d: columns A to H, rows 01 to 12, storage index = column *
12 + row). Expected cells come from the converter's grid CSV by the rules the
pages follow; the page is drawn by headless Chromium and its pixels checked."""
import csv, os, re, shutil, struct, subprocess
import xml.etree.ElementTree as ET
import pytest

UGF, UGF2CSV, EXAMPLES = os.environ["UGF"], os.environ["UGF2CSV"], os.environ["UGF_EXAMPLES"]
CHROMIUM = "/usr/bin/chromium-headless-shell"
NUMBER = re.compile(r" *-?\d+\.(\d+)$")
RED, WHITE = (214, 39, 40), (255, 255, 255)


def run(*args, cwd):
    return subprocess.run([str(a) for a in args], cwd=cwd, capture_output=True, text=True)


def grid_csv(folder, name):
    shutil.copy(os.path.join(EXAMPLES, name), folder)
    assert run(UGF2CSV, name, "g", "a", cwd=folder).returncode == 0
    with open(folder / name.replace(".ugf", "_grid_output.csv"), newline="") as f:
        return [row[:-1] for row in csv.reader(f)]  # each row ends in a comma


def page(path):
    text = open(path, encoding="utf-8").read()
    assert "<script" not in text and not re.search(r"(src|href)=|url\((?!#)", text)
    return ET.fromstring(text.split("\n", 1)[1])  # well-formed past the doctype


def expected_class(text, minimum):
    m = NUMBER.match(text)
    if text == "":
        return None
    if not m:
        return "h"  # a lost signal or notes: hatched
    if len(m.group(1)) == 4:
        return "o"  # the velocity check, in inches per microsecond
    return "lo" if float(text) < minimum else "v"


def red_blobs(image):
    """Bounding boxes of the red areas at least as wide as a map cell, top to bottom."""
    w, h = image.size
    px = image.load()
    red = {(x, y) for y in range(h) for x in range(w) if max(abs(a - b) for a, b in zip(px[x, y][:3], RED)) < 8}
    boxes = []
    while red:
        stack, box = [red.pop()], [w, h, 0, 0]
        while stack:
            x, y = stack.pop()
            box = [min(box[0], x), min(box[1], y), max(box[2], x), max(box[3], y)]
            for n in ((x + 1, y), (x - 1, y), (x, y + 1), (x, y - 1)):
                if n in red:
                    red.remove(n)
                    stack.append(n)
        if box[2] - box[0] > 25:
            boxes.append(box)
    return sorted(boxes, key=lambda b: (b[1] // 5, b[0]))


def test_report_map_matches_grid_and_draws_in_a_browser(tmp_path):
    grid = grid_csv(tmp_path, "corrosion_2d.ugf")
    r = run(UGF, "report", "--minimum", "0.210", "--out-dir", "out", "corrosion_2d.ugf", cwd=tmp_path)
    assert r.returncode == 0, r.stderr
    root = page(tmp_path / "out/corrosion_2d_report.html")
    (table,) = [t for t in root.iter("table") if t.get("class") == "map"]
    assert [th.text or "" for th in table.find("thead/tr")] == grid[0]
    values = {}
    for row, tr in zip(grid[1:], table.find("tbody")):
        assert [c.text or "" for c in tr] == row  # titles and exact cell texts
        for text, td in zip(row[1:], tr[1:]):
            want = expected_class(text, 0.210)
            cls = td.get("class") or ""
            assert (cls[:1] == "v" and cls[1:].isdigit()) if want == "v" else cls == (want or ""), (text, cls)
            if want == "v":
                values.setdefault(float(text), set()).add(int(td.get("class")[1:]))
    steps = [values[v] for v in sorted(values)]  # colours rise with the reading, first to last step
    assert all(len(s) == 1 for s in steps) and sorted(steps, key=min) == steps and steps[-1] == {15}
    below = [(i, j) for i, row in enumerate(grid[1:]) for j, t in enumerate(row[1:]) if expected_class(t, 0.21) == "lo"]
    listed = [tr[0].text for t in root.iter("table") if t.get("class") == "list" for tr in t.find("tbody")]
    assert sorted(listed) == sorted("TANK4-" + grid[0][j + 1] + grid[i + 1][0] for i, j in below)
    detailed = run(UGF2CSV, "corrosion_2d.ugf", "d", "a", cwd=tmp_path)
    text = open(tmp_path / "corrosion_2d_detailed_output.csv").read()
    captions = [f.find("figcaption") for f in root.iter("figure")]
    assert detailed.returncode == 0 and len(captions) == text.count("MAX DATA") + text.count("BSCAN INDEX")

    if not os.path.exists(CHROMIUM):
        pytest.skip("no headless Chromium")
    from PIL import Image
    shot = tmp_path / "page.png"
    run(CHROMIUM, "--no-sandbox", "--disable-gpu", "--hide-scrollbars", f"--screenshot={shot}",
        "--window-size=1000,1400", (tmp_path / "out/corrosion_2d_report.html").as_uri(), cwd=tmp_path)
    image = Image.open(shot).convert("RGB")
    blobs = red_blobs(image)
    assert len(blobs) == len(below)
    centre = [((b[0] + b[2]) / 2, (b[1] + b[3]) / 2) for b in blobs]
    # Cell pitch from the two below-minimum cells farthest apart in each direction.
    a, b = min(range(len(below)), key=lambda k: below[k][1]), max(range(len(below)), key=lambda k: below[k][1])
    pitch_x = (centre[b][0] - centre[a][0]) / (below[b][1] - below[a][1])
    pitch_y = (centre[-1][1] - centre[0][1]) / (below[-1][0] - below[0][0])

    def cell_pixels(i, j):
        x = centre[0][0] + (j - below[0][1]) * pitch_x
        y = centre[0][1] + (i - below[0][0]) * pitch_y
        return [image.getpixel((int(x + dx * pitch_x / 8), int(y + dy * pitch_y / 8))) for dx in range(-3, 4) for dy in (-2, 0, 2)]

    cells = {t: (i, j) for i, row in enumerate(grid[1:]) for j, t in enumerate(row[1:])}
    assert set(cell_pixels(*cells[""])) == {WHITE}  # an empty point is background
    lost = cell_pixels(*cells["--.---"])
    assert any(p not in (WHITE, RED) and abs(p[0] - p[1]) < 12 for p in lost)  # grey hatching
    legend = {image.getpixel((x, y)) for y in range(0, blobs[0][1]) for x in range(0, 600)}
    assert {(0x44, 0x01, 0x54), (0xFD, 0xE7, 0x25)} <= legend  # the scale's ends, above the map


def test_every_sample_makes_a_well_formed_page(tmp_path):
    r = run(UGF, "report", "--nominal", "0.3", "--out-dir", tmp_path, EXAMPLES, cwd=tmp_path)
    assert r.returncode == 0, r.stderr
    pages = sorted(p for p in os.listdir(tmp_path))
    assert len(pages) == len([n for n in os.listdir(EXAMPLES) if n.endswith(".ugf")])
    for name in pages:
        root = page(tmp_path / name)
        maps = [t for t in root.iter("table") if t.get("class") == "map"]
        assert bool(maps) != name.startswith(("drain_linear", "valves_manual")), name  # LINEAR, MANUAL: a profile


def slot(data, index):
    return 0x1500 + 16 * index


def reading(data, index):
    w0, lo = struct.unpack_from(">IH", data, slot(data, index))
    return (w0 >> 26) & 3, ((w0 >> 5) & 0xF) << 16 | lo


def set_reading(data, index, raw, units=0):
    w0 = struct.unpack_from(">I", data, slot(data, index))[0] & ~(3 << 26 | 0xF << 5)
    struct.pack_into(">IH", data, slot(data, index), w0 | units << 26 | (raw >> 16) << 5, raw & 0xFFFF)


def compare(tmp_path, latest_bytes, *options, baseline="corrosion_2d.ugf"):
    shutil.copy(os.path.join(EXAMPLES, baseline), tmp_path)
    (tmp_path / "later.ugf").write_bytes(latest_bytes)
    r = run(UGF, "compare", baseline, "later.ugf", *options, "--out-dir", "out", cwd=tmp_path)
    assert r.returncode == 0, r.stderr
    page(tmp_path / "out/later_compare.html")
    with open(tmp_path / "out/later_compare.csv", newline="") as f:
        return {row["ID"]: row for row in csv.DictReader(f)}


def test_compare_loss_rate_and_remaining_life(tmp_path):
    data = bytearray(open(os.path.join(EXAMPLES, "corrosion_2d.ugf"), "rb").read())
    assert reading(data, 0) == (0, 2500) and reading(data, 13)[1] // 10 == 235  # A01 0.250, B02 0.235
    set_reading(data, 0, 2300)
    set_reading(data, 13, 2000)
    rows = compare(tmp_path, bytes(data), "--years", "2", "--minimum", "0.1")
    assert len(rows) == 96 and {r["STATUS"] for r in rows.values()} == {"both"}
    got = [[rows["TANK4-" + p][k] for k in list(rows["TANK4-A01"])[2:]] for p in ("A01", "B02", "B01", "E08", "H12")]
    assert got == [["0.250", "0.230", "IN", "0.020", "8.0", "0.0100", "13.0"],
                   ["0.235", "0.200", "IN", "0.035", "14.9", "0.0175", "5.7"],
                   ["0.240", "0.240", "IN", "0.000", "0.0", "0.0000", ""],
                   ["--.---", "--.---", "IN", "", "", "", ""],
                   ["", "", "IN", "", "", "", ""]]


def test_compare_in_the_latest_units_and_points_of_one_survey(tmp_path):
    grid = grid_csv(tmp_path, "corrosion_2d.ugf")
    data = bytearray(open(os.path.join(EXAMPLES, "corrosion_2d.ugf"), "rb").read())
    for j, column in enumerate(grid[0][1:]):
        for i, text in enumerate(row[j + 1] for row in grid[1:]):
            units, raw = reading(data, j * 12 + i)
            if NUMBER.match(text) and len(NUMBER.match(text).group(1)) == 3 and raw:
                set_reading(data, j * 12 + i, round(raw * 2.54), units=1)  # 0.0001 in to 0.001 mm
    set_reading(data, 0, 6100, units=1)  # A01: 0.250 in = 6.35 mm, now 6.10 mm
    rows = compare(tmp_path, bytes(data))  # millimetres at this resolution show two decimals
    assert [rows["TANK4-A01"][k] for k in ("BASELINE", "LATEST", "UNITS", "LOSS")] == ["6.35", "6.10", "MM", "0.25"]
    # C02 keeps its scan and its inches in both: 0.188 in = 4.7752 mm.
    assert [rows["TANK4-C02"][k] for k in ("BASELINE", "LATEST", "LOSS")] == ["4.78", "4.78", "0.00"]
    rows = compare(tmp_path, open(os.path.join(EXAMPLES, "drain_linear.ugf"), "rb").read())
    status = [r["STATUS"] for r in rows.values()]
    assert (status.count("latest only"), status.count("baseline only"), status.count("both")) == (12, 96, 0)


def test_compare_with_a_missing_survey_writes_nothing(tmp_path):
    shutil.copy(os.path.join(EXAMPLES, "corrosion_2d.ugf"), tmp_path)
    r = run(UGF, "compare", "gone.ugf", "corrosion_2d.ugf", "--out-dir", "out", cwd=tmp_path)
    assert (r.returncode, r.stderr.startswith("ugf: gone.ugf: cannot open")) == (1, True)
    assert not (tmp_path / "out").exists()
