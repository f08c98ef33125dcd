"""Table, row, cell and section formatting as other tools read what we write, and as we read
what they write: python-docx on both sides."""

import io
import os
import zipfile
import xml.etree.ElementTree as ET

import pytest

qf = pytest.importorskip("quorix.folio")
docx = pytest.importorskip("docx")
from docx.enum.section import WD_ORIENT  # noqa: E402
from docx.enum.table import WD_CELL_VERTICAL_ALIGNMENT, WD_ROW_HEIGHT_RULE, WD_TABLE_ALIGNMENT  # noqa: E402
from docx.shared import Pt  # noqa: E402

from quorix.folio.tables import CellMerge, CellVerticalAlignment, TableAlignment, TableStyleOptions  # noqa: E402

W = "{http://schemas.openxmlformats.org/wordprocessingml/2006/main}"


def saved(document):
    out = io.BytesIO()
    document.save(out, qf.SaveFormat.DOCX)
    out.seek(0)
    return out


def build():
    doc = qf.Document()
    b = qf.DocumentBuilder(doc)
    ps = b.page_setup
    ps.orientation = qf.Orientation.LANDSCAPE
    ps.left_margin = 54.0
    ps.text_columns.set_count(2)
    table = b.start_table()
    for r in range(3):
        for c in range(3):
            cell = b.insert_cell()
            cell.cell_format.width = 120.0
            if r == 0 and c == 0:
                cell.cell_format.horizontal_merge = CellMerge.FIRST
            elif r == 0 and c == 1:
                cell.cell_format.horizontal_merge = CellMerge.PREVIOUS
            else:
                cell.cell_format.horizontal_merge = CellMerge.NONE
            cell.cell_format.vertical_alignment = CellVerticalAlignment.BOTTOM if c == 2 else CellVerticalAlignment.TOP
            b.write(f"r{r}c{c}")
        row = b.end_row()
        row.row_format.height = 30.0 + r
        row.row_format.height_rule = qf.HeightRule.EXACTLY
    b.end_table()
    table.alignment = TableAlignment.CENTER
    table.last_row.last_cell.cell_format.shading.background_pattern_color_hex = "C0FFEE"
    return doc


def test_python_docx_reads_the_table_row_cell_and_section_formatting_we_write():
    theirs = docx.Document(saved(build()))
    section = theirs.sections[0]
    assert section.orientation == WD_ORIENT.LANDSCAPE
    assert section.page_width > section.page_height
    assert section.left_margin == Pt(54)
    cols = section._sectPr.find(W + "cols")
    assert cols is not None and cols.get(W + "num") == "2"

    (table,) = theirs.tables
    assert table.alignment == WD_TABLE_ALIGNMENT.CENTER
    assert [row.height for row in table.rows] == [Pt(30), Pt(31), Pt(32)]
    assert all(row.height_rule == WD_ROW_HEIGHT_RULE.EXACTLY for row in table.rows)
    # The merged pair is one cell spanning two grid columns; python-docx repeats it for both.
    first = table.rows[0].cells
    assert first[0]._tc is first[1]._tc and first[0].text == "r0c0"
    assert first[0]._tc.tcPr.find(W + "gridSpan").get(W + "val") == "2"
    assert [c.text for c in table.rows[1].cells] == ["r1c0", "r1c1", "r1c2"]
    assert table.rows[2].cells[0].width == Pt(120)
    assert table.rows[1].cells[2].vertical_alignment == WD_CELL_VERTICAL_ALIGNMENT.BOTTOM
    shd = table.rows[2].cells[2]._tc.tcPr.find(W + "shd")
    assert shd.get(W + "fill") == "C0FFEE"
    # The grid has one column per grid position, whatever the merges.
    assert len(table._tbl.tblGrid.findall(W + "gridCol")) == 3


def template_style(style_id):
    """One table style of python-docx's own template, as XML: what the expectations come from."""
    path = os.path.join(os.path.dirname(docx.__file__), "templates", "default.docx")
    with zipfile.ZipFile(path) as z:
        root = ET.fromstring(z.read("word/styles.xml"))
    (style,) = [s for s in root.findall(W + "style") if s.get(W + "styleId") == style_id]
    return style


def test_table_styles_of_another_tool_resolve_per_part_of_the_table():
    theirs = docx.Document()
    table = theirs.add_table(rows=4, cols=3)
    table.style = theirs.styles["Light Grid Accent 1"]
    for r, row in enumerate(table.rows):
        for c, cell in enumerate(row.cells):
            cell.text = f"r{r}c{c}"
    out = io.BytesIO()
    theirs.save(out)
    out.seek(0)

    style = template_style("LightGrid-Accent1")
    parts = {p.get(W + "type"): p for p in style.findall(W + "tblStylePr")}
    header_bottom = parts["firstRow"].find(f"{W}tcPr/{W}tcBorders/{W}bottom")
    whole_bottom = style.find(f"{W}tblPr/{W}tblBorders/{W}bottom")
    assert header_bottom.get(W + "sz") != whole_bottom.get(W + "sz")  # the parts differ, or the test shows nothing
    header_bold = parts["firstRow"].find(f"{W}rPr/{W}b") is not None

    ours = qf.Document(out).first_section.body.tables[0]
    look = ours.style_options
    assert look & TableStyleOptions.FIRST_ROW
    header = ours.first_row.cells[1]
    assert header.cell_format.get_border(qf.BorderType.BOTTOM).line_width == int(header_bottom.get(W + "sz")) / 8
    assert header.first_paragraph.runs[0].font.bold == header_bold
    # A body cell outside the first column takes neither the header's look nor the first column's.
    body = ours.rows[2].cells[1]
    assert body.cell_format.get_border(qf.BorderType.BOTTOM).line_width != int(header_bottom.get(W + "sz")) / 8
    assert ours.get_border(qf.BorderType.BOTTOM).line_width == int(whole_bottom.get(W + "sz")) / 8
    # Switching the first row off in the table's options drops the header part from its cells.
    ours.style_options = TableStyleOptions.ROW_BANDS
    assert not header.first_paragraph.runs[0].font.bold
