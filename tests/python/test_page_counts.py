"""Page counts against LibreOffice: documents generated with python-docx across fonts, sizes,
spacing, alignment, headings, lists, tables, page and section breaks, headers and pictures that
text wraps around, laid out by us
and converted by LibreOffice headless in one process. Most must agree exactly, nearly all within
one page."""

import io
import os
import shutil
import subprocess

import pytest

qf = pytest.importorskip("quorix.folio")
docx = pytest.importorskip("docx")
from docx.enum.section import WD_ORIENT, WD_SECTION  # noqa: E402
from docx.enum.text import WD_ALIGN_PARAGRAPH, WD_BREAK  # noqa: E402
from docx.shared import Pt  # noqa: E402

WORDS = "layout engines break lines at spaces and hyphens then place them on pages with margins headers and tables".split()
FONTS = ["Calibri", "Arial", "Times New Roman", "Cambria", "Courier New"]
# (space before, space after, line spacing), alignment, features
KINDS = [
    ((0, 8, None), WD_ALIGN_PARAGRAPH.LEFT, ()),
    ((0, 0, 1.0), WD_ALIGN_PARAGRAPH.JUSTIFY, ("headings",)),
    ((6, 6, 1.15), WD_ALIGN_PARAGRAPH.LEFT, ("tables",)),
    ((0, 10, 1.5), WD_ALIGN_PARAGRAPH.CENTER, ("lists", "header")),
    ((3, 3, 2.0), WD_ALIGN_PARAGRAPH.JUSTIFY, ("breaks", "headings", "tables")),
    ((0, 8, None), WD_ALIGN_PARAGRAPH.LEFT, ("sections", "header", "lists")),
    ((0, 8, 1.15), WD_ALIGN_PARAGRAPH.JUSTIFY, ("floats",)),
]


def png(width, height):
    """A grey PNG of the given size, written with zlib alone."""
    import struct
    import zlib

    def chunk(kind, data):
        return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))
    rows = b"".join(b"\0" + b"\x80" * width for _ in range(height))
    return (b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", struct.pack(">IIBBBBB", width, height, 8, 0, 0, 0, 0))
            + chunk(b"IDAT", zlib.compress(rows)) + chunk(b"IEND", b""))


def float_picture(paragraph, picture, i):
    """Adds a 2 x 1.5 inch picture to the paragraph, anchored at its top on the column's left or
    right, text wrapping square around it with a tenth of an inch to spare."""
    from docx.oxml.ns import qn
    from docx.shared import Inches
    from lxml import etree
    paragraph.add_run().add_picture(io.BytesIO(picture), width=Inches(2), height=Inches(1.5))
    inline = paragraph._p.xpath(".//wp:inline")[-1]
    wp = "http://schemas.openxmlformats.org/drawingml/2006/wordprocessingDrawing"
    anchor = etree.Element(qn("wp:anchor"), distT="0", distB="0", distL="91440", distR="91440", simplePos="0",
                           relativeHeight=str(i + 2), behindDoc="0", locked="0", layoutInCell="1", allowOverlap="1")
    etree.SubElement(anchor, qn("wp:simplePos"), x="0", y="0")
    h = etree.SubElement(anchor, qn("wp:positionH"), relativeFrom="column")
    etree.SubElement(h, qn("wp:align")).text = "left" if i % 2 else "right"
    v = etree.SubElement(anchor, qn("wp:positionV"), relativeFrom="paragraph")
    etree.SubElement(v, qn("wp:posOffset")).text = "0"
    anchor.append(inline.find(f"{{{wp}}}extent"))
    etree.SubElement(anchor, qn("wp:effectExtent"), l="0", t="0", r="0", b="0")
    etree.SubElement(anchor, qn("wp:wrapSquare"), wrapText="bothSides")
    for tag in ("docPr", "cNvGraphicFramePr"):
        if (e := inline.find(f"{{{wp}}}{tag}")) is not None:
            anchor.append(e)
    anchor.append(inline.find("{http://schemas.openxmlformats.org/drawingml/2006/main}graphic"))
    inline.getparent().replace(inline, anchor)


def text(n, seed):
    return " ".join(WORDS[(i * 5 + seed) % len(WORDS)] for i in range(n))


def build(path, font, size, spacing, align, paras, features, seed):
    d = docx.Document()
    normal = d.styles["Normal"]
    normal.font.name, normal.font.size = font, Pt(size)
    pf = normal.paragraph_format
    pf.space_before, pf.space_after = Pt(spacing[0]), Pt(spacing[1])
    if spacing[2]:
        pf.line_spacing = spacing[2]
    picture = png(40, 30)
    for i in range(paras):
        if "headings" in features and i % 6 == 0:
            d.add_heading(f"Heading {i}", level=1 + i % 2)
        p = d.add_paragraph(text(40 + (i * 13 + seed) % 120, i + seed))
        p.alignment = align
        if "lists" in features and i % 4 == 1:
            d.add_paragraph(text(20, i), style="List Bullet")
            d.add_paragraph(text(25, i + 1), style="List Number")
        if "tables" in features and i % 9 == 3:
            table = d.add_table(rows=3 + i % 4, cols=3)
            table.style = "Table Grid"
            for r, row in enumerate(table.rows):
                for c, cell in enumerate(row.cells):
                    cell.text = text(3 + (r * c + i) % 15, r + c)
        if "floats" in features and i % 5 == 2:
            float_picture(p, picture, i)
        if "breaks" in features and i % 15 == 7:
            p.add_run().add_break(WD_BREAK.PAGE)
        if "sections" in features and i % 20 == 10:
            s = d.add_section(WD_SECTION.NEW_PAGE)
            if (i // 20) % 2 == 0:
                s.orientation = WD_ORIENT.LANDSCAPE
                s.page_width, s.page_height = s.page_height, s.page_width
    if "header" in features:
        d.sections[0].header.paragraphs[0].text = "Report header " + font
        d.sections[0].footer.paragraphs[0].text = "Footer text"
    d.save(path)


def pdf_pages(path):
    out = subprocess.run(["pdfinfo", str(path)], check=True, capture_output=True, text=True).stdout
    return int(next(l for l in out.splitlines() if l.startswith("Pages:")).split()[1])


@pytest.mark.skipif(shutil.which("soffice") is None, reason="LibreOffice (soffice) is not installed")
def test_page_counts_agree_with_libreoffice(tmp_path):
    corpus = tmp_path / "corpus"
    corpus.mkdir()
    n = 0
    for fi, font in enumerate(FONTS):
        for ki, (spacing, align, features) in enumerate(KINDS):
            build(corpus / f"d{n:02d}.docx", font, [10, 11, 12][(fi + ki) % 3], spacing, align, 30 + 17 * ((fi + ki) % 4), features, n)
            n += 1
    out = tmp_path / "lo"
    subprocess.run(["soffice", f"-env:UserInstallation=file://{tmp_path / 'profile'}", "--headless", "--convert-to", "pdf",
                    "--outdir", str(out), *sorted(str(p) for p in corpus.iterdir())], check=True, capture_output=True, timeout=600)
    rows = []
    for src in sorted(corpus.iterdir()):
        rows.append((src.name, pdf_pages(out / (src.stem + ".pdf")), qf.Document(str(src)).page_count))
    report = "\n".join(f"{name}: LibreOffice {lo}, ours {ours}" for name, lo, ours in rows if lo != ours)
    equal = sum(lo == ours for _, lo, ours in rows)
    near = sum(abs(lo - ours) <= 1 for _, lo, ours in rows)
    assert equal >= 0.8 * len(rows), report
    assert near >= 0.95 * len(rows), report
