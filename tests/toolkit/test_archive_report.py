"""`ugf archive report` on the sample tank floor's three inspections: the
page's summary, its remaining-life map, its inspection list and its charts
against the history CSV of the same archive (whose figures the end-to-end
tests work out by hand) and the latest survey's grid CSV."""
import collections, csv, io, os, re
from test_report import EXAMPLES, UGF, grid_csv, page, run

DATES = {"corrosion_2d.ugf": "2026-03-02", "corrosion_2d_2029.ugf": "2029-03-05", "corrosion_2d_2032.ugf": "2032-03-01"}
OPTIONS = ["--part", "TANK4", "--minimum", "0.200", "--as-of", "2032-09-01"]
LIFE = "REMAINING LIFE (YEARS)"


def test_history_page_agrees_with_the_history_csv(tmp_path):
    for name, date in DATES.items():
        r = run(UGF, "archive", "add", "--db", "t.ugfdb", "--part", "TANK4", "--date", date, os.path.join(EXAMPLES, name), cwd=tmp_path)
        assert r.returncode == 0, r.stderr
    history = run(UGF, "archive", "history", "--db", "t.ugfdb", *OPTIONS, cwd=tmp_path).stdout
    rows = list(csv.DictReader(io.StringIO(history)))
    by_id = {r["ID"]: r for r in rows}
    r = run(UGF, "archive", "report", "--db", "t.ugfdb", *OPTIONS, "--out-dir", "out", cwd=tmp_path)
    assert (r.returncode, r.stderr) == (0, "reported TANK4 (96 points, 3 surveys) in out/TANK4_history.html\n")
    root = page(tmp_path / "out/TANK4_history.html")

    facts = {tr[0].text: tr[1].text for t in root.iter("table") if t.get("class") == "facts" for tr in t.find("tbody")}
    statuses = collections.Counter(r["STATUS"] for r in rows)
    lives = sorted((r for r in rows if r[LIFE]), key=lambda r: float(r[LIFE]))  # stable: the CSV's order
    worst = lives[0]
    assert (facts["points"], facts["with a remaining life"]) == (str(len(rows)), str(len(lives)))
    for status in ("below minimum", "ok", "no thickness"):
        assert facts[status] == str(statuses[status])
    assert facts["due by 2032-09-01"] == str(statuses["due"]) != "0"
    assert facts["shortest remaining life"] == f"{worst[LIFE]} years at {worst['ID']} (retirement {worst['RETIREMENT DATE']})"

    grid = grid_csv(tmp_path, "corrosion_2d_2032.ugf")
    (table,) = [t for t in root.iter("table") if t.get("class") == "map"]
    assert [th.text or "" for th in table.find("thead/tr")] == grid[0]
    steps = {}
    for row, tr in zip(grid[1:], table.find("tbody")):
        assert tr[0].text == row[0]
        for column, text, td in zip(grid[0][1:], row[1:], tr[1:]):
            r = by_id["TANK4-" + column + row[0]]
            classes, shown = (td.get("class") or "").split(), td.text or ""
            assert ("due" in classes) == (r["STATUS"] == "due"), r["ID"]
            if r["STATUS"] == "below minimum":
                assert classes[0] == "lo" and shown == (r[LIFE] or text.strip()), r["ID"]
            elif r[LIFE]:
                assert re.fullmatch(r"v\d+", classes[0]) and shown == r[LIFE], r["ID"]
                steps.setdefault(float(r[LIFE]), set()).add(int(classes[0][1:]))
            else:
                assert shown == text and classes in ([], ["o"]), r["ID"]
    ordered = [steps[life] for life in sorted(steps)]  # longer lives, lighter colours
    assert all(len(s) == 1 for s in ordered) and sorted(ordered, key=min) == ordered and ordered[0] == {0}

    heads = {t: [th.text for th in t.find("thead/tr")] for t in root.iter("table") if t.find("thead") is not None}
    (inspections,) = [t for t, titles in heads.items() if "next inspection" in titles]
    due_first = sorted((r for r in rows if r["NEXT INSPECTION"]), key=lambda r: r["NEXT INSPECTION"])
    assert [tr[0].text for tr in inspections.find("tbody")] == [r["ID"] for r in due_first]
    charts = [f.find("figcaption/b").text for f in root.iter("figure") if f.find("figcaption/b") is not None]
    assert charts == [r["ID"] for r in lives[:6]]


def test_a_survey_without_a_grid_gets_a_profile_of_remaining_life(tmp_path):
    r = run(UGF, "archive", "add", "--db", "t.ugfdb", "--part", "DRAIN", "--date", "2026-01-01",
            os.path.join(EXAMPLES, "drain_linear.ugf"), cwd=tmp_path)
    assert r.returncode == 0, r.stderr
    assert run(UGF, "archive", "report", "--db", "t.ugfdb", "--part", "DRAIN", cwd=tmp_path).returncode == 0
    root = page(tmp_path / "DRAIN_history.html")
    assert not [t for t in root.iter("table") if t.get("class") == "map"]
    (profile,) = [f for f in root.iter("figure") if "in the order of its walk" in "".join(f.find("figcaption").itertext())]
