# The toolkit's workbooks read back by programs that did not write them: each
# cell must show what the CSV's cell shows, less its leading blanks, which
# become right alignment. Expected texts come from the CSV files (read with
# Python's csv module) or are written by hand, never from the writer.
import csv
import os
import re
import shutil
import subprocess

import openpyxl
import pytest

CSV_TO_XLSX = os.environ["CSV_TO_XLSX"]
UGF = os.environ["UGF"]
EXAMPLES = os.environ["UGF_EXAMPLES"]
SAMPLES = sorted(f[:-4] for f in os.listdir(EXAMPLES) if f.endswith(".ugf"))
PLAIN_NUMBER = re.compile(r"-?(\d+(\.\d+)?|\.\d+)")


def shown(cell):
    """The text a spreadsheet shows: OOXML's _xHHHH_ escapes decoded, numbers
    through the formats the writer makes ("0.000", "00", "#.0")."""
    if cell.value is None:
        return ""
    if cell.data_type == "s":
        return re.sub(r"_x([0-9A-F]{4})_", lambda m: chr(int(m[1], 16)), cell.value)
    digits = re.fullmatch(r"(#|0+)(?:\.(0+))?", cell.number_format)
    assert digits, cell.number_format
    whole, _, fraction = f"{abs(cell.value):.{len(digits[2] or '')}f}".partition(".")
    whole = "" if digits[1] == "#" and whole == "0" else whole.zfill(len(digits[1]))
    return ("-" if cell.value < 0 else "") + whole + ("." + fraction if fraction else "")


def convert(csv_path, titles, text_columns, piece, sheet="survey"):
    book = str(csv_path)[:-4] + ".xlsx"
    subprocess.run([CSV_TO_XLSX, "-t", str(titles), "-c", str(text_columns), "-p", str(piece),
                    str(csv_path), book, sheet], check=True)
    return book


def sample_books(tmp_path, form):
    """(CSV rows, workbook of `ugf convert --xlsx`, title rows, text columns)
    of every sample in one form. The workbook has the cells of the quoted
    CSV, where a stored text with a comma stays one cell. Grid titles are the
    rows above the first row title; the identifiers, in the first column of
    the detailed form and of the lines of a grid without titles, stay text."""
    for name in SAMPLES:
        shutil.copy(os.path.join(EXAMPLES, name + ".ugf"), tmp_path)
        grid = ["--grid"] if form == "g" else []
        for kind in ("--quote", "--xlsx"):
            subprocess.run([UGF, "convert", kind, *grid, name + ".ugf"], cwd=tmp_path, check=True,
                           stderr=subprocess.DEVNULL)
        kind = "grid" if form == "g" else "detailed"
        with open(tmp_path / f"{name}_{kind}_output.csv", newline="", encoding="ascii") as f:
            rows = list(csv.reader(f))
        titles = next(i for i, row in enumerate(rows) if row[0]) if form == "g" else 0
        yield rows, tmp_path / f"{name}_{kind}_output.xlsx", titles, int(form == "d" or titles == 0)


def check_cell(cell, text, number):
    assert shown(cell) == text.lstrip(" ")
    assert (cell.data_type == "n" and cell.value is not None) == number
    if text.strip(" ") and text[0] == " ":
        assert cell.alignment.horizontal == "right"


@pytest.mark.parametrize("form", ["g", "d"])
def test_samples_read_back_with_openpyxl(tmp_path, form):
    readings = 0
    for rows, book, titles, text_columns in sample_books(tmp_path, form):
        sheet = openpyxl.load_workbook(book).active
        assert sheet.freeze_panes == "B2"
        assert sheet.max_row <= len(rows) and sheet.max_column <= max(map(len, rows))
        for r, row in enumerate(rows, 1):
            for c, text in enumerate(row, 1):
                number = r > titles and c > text_columns and PLAIN_NUMBER.fullmatch(text.lstrip(" "))
                check_cell(sheet.cell(r, c), text, bool(number))
                readings += bool(re.fullmatch(r" \d+\.\d{3}", text))
    assert readings > 100


# A CSV cell as the file holds it, the text a spreadsheet must show, a number?
AWKWARD = [
    (b'"a,b ""c"""', 'a,b "c"', False),
    (b'"two\nlines"', "two\nlines", False),
    (b'"  1.5"', "1.5", True),
    (b"\x01bell\x1f\x7f", "\x01bell\x1f\x7f", False),
    (b"cr\rtab\t", "cr\rtab\t", False),
    (b"\xef\xbf\xbe\xef\xbf\xbf", "\ufffe\uffff", False),
    (b'5" pipe', '5" pipe', False),
    (b"caf\xe9 \xb0C", "caf\u00e9 \u00b0C", False),
    (b"caf\xc3\xa9 \xe2\x82\xac", "caf\u00e9 \u20ac", False),
    (b"\xc0\xaf \xed\xa0\x80", "\u00c0\u00af \u00ed\u00a0\u0080", False),
    (b"\xf4\x90\x80\x80 \xf8\x90\x80\x80", "\u00f4\u0090\u0080\u0080 \u00f8\u0090\u0080\u0080", False),
    (b"_x0041_ _x", "_x0041_ _x", False),
    (b"<&> ]]>", "<&> ]]>", False),
    (b" 0.250", "0.250", True),
    (b"-0.5", "-0.5", True),
    (b".5", ".5", True),
    (b"-.25", "-.25", True),
    (b"007.10", "007.10", True),
    (b"123456789012345", "123456789012345", True),
    (b"0.00000000000000012345", "0.00000000000000012345", True),
    (b"1234567890123456", "1234567890123456", False),
    (b"-0.000", "-0.000", False),
    (b"5.", "5.", False),
    (b"1e5", "1e5", False),
    (b"+1", "+1", False),
    (b" 12 ", "12 ", False),
    (b"--.---", "--.---", False),
]


def test_awkward_texts_read_back_with_openpyxl(tmp_path):
    # Row 1 is a title row, column A a text column: "1" and "07" stay texts.
    lines = [b"1,0.5,"] + [b"%02d,%s," % (i, cell) for i, (cell, _, _) in enumerate(AWKWARD, 2)]
    (tmp_path / "awkward.csv").write_bytes(b"\n".join(lines))
    book = convert(tmp_path / "awkward.csv", 1, 1, 3, "'\u015b: 2024/07 [north tank farm, all]")
    sheet = openpyxl.load_workbook(book).active
    assert sheet.title == "_\u015b_ 2024_07 _north tank farm, a"
    assert sheet.max_row == len(lines) and sheet.max_column == 2
    check_cell(sheet["A1"], "1", False)
    check_cell(sheet["B1"], "0.5", False)
    for r, (_, text, number) in enumerate(AWKWARD, 2):
        check_cell(sheet.cell(r, 1), "%02d" % r, False)
        check_cell(sheet.cell(r, 2), text, number)


@pytest.mark.skipif(shutil.which("soffice") is None, reason="LibreOffice is not installed")
@pytest.mark.parametrize("form", ["g", "d"])
def test_samples_read_back_by_libreoffice(tmp_path, form):
    books = list(sample_books(tmp_path, form))
    # Comma, double quote, UTF-8, cell contents as shown.
    subprocess.run(["soffice", f"-env:UserInstallation=file://{tmp_path}/profile", "--headless",
                    "--convert-to", "csv:Text - txt - csv (StarCalc):44,34,76,1,,0,false,true,true",
                    "--outdir", str(tmp_path / "back"), *(book for _, book, _, _ in books)],
                   check=True, capture_output=True, timeout=600)
    for rows, book, _, _ in books:
        with open(tmp_path / "back" / os.path.basename(book.replace(".xlsx", ".csv")),
                  newline="", encoding="utf-8") as f:
            back = list(csv.reader(f))
        for r in range(max(len(rows), len(back))):
            row = rows[r] if r < len(rows) else []
            got = back[r] if r < len(back) else []
            for c in range(max(len(row), len(got))):
                assert (got[c] if c < len(got) else "") == (row[c] if c < len(row) else "").lstrip(" ")
