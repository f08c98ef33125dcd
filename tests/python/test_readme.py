"""The README's Python code runs as written: every block, in order, in one folder, each in its
own interpreter, so a recipe that stops working fails here."""

import re
import struct
import zlib

import pytest

from conftest import REPO, run_python

BLOCKS = re.findall(r"```python\n(.*?)```", (REPO / "README.md").read_text(encoding="utf-8"), re.S)


def _png(width=4, height=2):
    def chunk(kind, data):
        return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))
    rows = b"".join(b"\x00" + b"\xff\x00\x00" * width for _ in range(height))
    header = struct.pack(">IIBBBBB", width, height, 8, 2, 0, 0, 0)
    return b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", header) + chunk(b"IDAT", zlib.compress(rows)) + chunk(b"IEND", b"")


@pytest.fixture(scope="module")
def folder(tmp_path_factory):
    path = tmp_path_factory.mktemp("readme")
    (path / "logo.png").write_bytes(_png())
    return path


def test_the_readme_has_its_recipes():
    assert len(BLOCKS) >= 12


def _run(block, folder):
    return run_python(f"import os; os.chdir({str(folder)!r})\n" + block)


# Expected output fragments per recipe, keyed by a line of the block; a recipe printing the
# wrong thing fails as surely as one that raises.
EXPECT = {
    'print(qf.Document("hello.docx")': ["Hello from Python"],
    "for para in body.paragraphs:": ["'Quarterly report'", "'Sales grew. Every region contributed.'", "'Appendix'",
                                     "['Section', 'Body', 'Paragraph', 'Run']"],
    "table.set_borders": ["3 rows of 2 cells", "Region 15"],
    'insert_image("logo.png"': ["96.0 48.0 PNG"],
    "apply_number_default": ["1. Unpack", "2. Install", "3. Run", "Done."],
    "HEADER_PRIMARY": ["2 headers and footers"],
    '"Revenue rose"': ["1 replacement(s)"],
    "class FirstOnly(IReplacingCallback)": ["1 COFFEE, tea and tea", "['Ann', 'Bo']"],
    'start_bookmark("total")': ["DATE -> today", "1 bookmark(s)"],
    "detect_file_format": ["DOCX False"],
    "LANDSCAPE": ["LANDSCAPE Arial 11.0"],
    "insert_table_of_contents": ["7 fields computed", "FieldFormula = price * 2 \\* CardText -> eighty-four", "FieldToc", "eighty-four", "larger", "ANN BERG", "\n1\n", "\nII\n", "Scope"],
    "insert_check_box": ["[('Name', 'ANN BERG'), ('Paid', '1'), ('Via', 'Phone')]", "1 barcode picture",
                         "Name: ANN BERG Paid: \u2612 Via: Phone", "1/2 + x\u00b2"],
    "REMOVE_UNUSED_FIELDS": ["Dear ACME AS,", "Order 7: 1,234.50", "Order 8: 99.00"],
    "ReportingEngine().build_report": ["Orders for ACME AS", "1. Order 7: 1,234.50 (large)", "2. Order 8: 99.00", "Total: 1,333.50"],
    "MARKDOWN)\n": ["# Quarterly report"],
    "Watermarker.set_text": ["TEXT", "DELETION 'Sales'\nINSERTION 'Revenue'\nDELETION 'grew'\nINSERTION 'rose'", "WORD_ML"],
    "try_get_value": ["12.50 2026-01-02T09:30:00+00:00", "True"],
    "batch.convert(": ["3 converted, 0 failed, 0 skipped", "[3, 8]"],
}


def test_every_block_runs_and_prints_what_it_promises(folder):
    matched = set()
    for block in BLOCKS:
        run = _run(block, folder)
        assert run.returncode == 0, (block, run)
        for key, fragments in EXPECT.items():
            if key in block:
                matched.add(key)
                for fragment in fragments:
                    assert fragment in run.stdout, (block, run.stdout)
    assert matched == set(EXPECT)
    assert "Revenue rose" in run_python(f"import quorix.folio as qf; print(qf.Document({str(folder / 'report-edited.docx')!r}).get_text())").stdout
