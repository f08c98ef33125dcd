"""Page-dependent results from Python: table of contents numbers checked against where LibreOffice
puts the same headings, footnotes in the PDF text of the page that references them, and pages
rendered by us compared with LibreOffice's rendering of the same documents."""

import re
import shutil
import struct
import subprocess
import zlib

import pytest

qf = pytest.importorskip("quorix.folio")
from quorix.folio.notes import FootnoteNumberingRule, FootnoteType  # noqa: E402

needs_soffice = pytest.mark.skipif(shutil.which("soffice") is None, reason="LibreOffice (soffice) is not installed")
WORDS = "pages carry headings and paragraphs whose lines wrap across the width of the text column".split()


def text(n, seed):
    return " ".join(WORDS[(i * 7 + seed) % len(WORDS)] for i in range(n))


def pdf_page_texts(path):
    out = subprocess.run(["pdftotext", "-layout", str(path), "-"], check=True, capture_output=True, text=True).stdout
    return out.split("\f")


def libreoffice_pdf(tmp_path, *docs):
    out = tmp_path / "lo"
    subprocess.run(["soffice", f"-env:UserInstallation=file://{tmp_path / 'profile'}", "--headless", "--convert-to", "pdf",
                    "--outdir", str(out), *map(str, docs)], check=True, capture_output=True, timeout=600)
    return [out / (d.stem + ".pdf") for d in docs]


def report_with_contents(path, chapters=14):
    doc = qf.Document()
    b = qf.DocumentBuilder(doc)
    b.insert_table_of_contents('\\o "1-2" \\h \\z')
    b.writeln()
    for c in range(chapters):
        b.paragraph_format.style_identifier = qf.StyleIdentifier.HEADING_1
        b.paragraph_format.page_break_before = c % 4 == 0
        b.writeln(f"Chapter {c} title")
        b.paragraph_format.page_break_before = False
        b.paragraph_format.style_identifier = qf.StyleIdentifier.NORMAL
        for k in range(2 + c % 3):
            b.writeln(text(60 + 25 * ((c + k) % 4), c + k))
        if c % 3 == 1:
            b.paragraph_format.style_identifier = qf.StyleIdentifier.HEADING_2
            b.writeln(f"Part {c} detail")
            b.paragraph_format.style_identifier = qf.StyleIdentifier.NORMAL
            b.writeln(text(80, c))
    doc.update_fields()
    doc.save(str(path))
    return doc


def contents_numbers(doc):
    """Heading text -> the page number our table of contents shows for it."""
    numbers = {}
    for para in doc.first_section.body.paragraphs:
        # What a reader sees: field results without their codes.
        line = re.sub("\x13[^\x14]*\x14|\x15", "", para.get_text())
        if para.paragraph_format.style_name.lower().startswith("toc") and "\t" in line:
            title, _, page = line.strip().rpartition("\t")
            numbers[title.strip()] = page.strip()
    return numbers


@needs_soffice
def test_contents_numbers_are_the_pages_libreoffice_puts_the_headings_on(tmp_path):
    src = tmp_path / "contents.docx"
    doc = report_with_contents(src)
    ours = {title: page for title, page in contents_numbers(doc).items()}
    assert len(ours) == 14 + 5 and all(page.isdigit() for page in ours.values()), ours
    (lo_pdf,) = libreoffice_pdf(tmp_path, src)
    pages = pdf_page_texts(lo_pdf)
    # Headings as LibreOffice laid them out: the first page showing the title outside the contents.
    theirs = {}
    for title in ours:
        found = [i + 1 for i, t in enumerate(pages) if any(line.strip() == title for line in t.splitlines())]
        theirs[title] = str(found[0]) if found else None
    assert ours == theirs
    # Our own PDF shows the same numbers, and as many pages as we report.
    pdf = tmp_path / "ours.pdf"
    doc.save(str(pdf))
    assert len(pdf_page_texts(pdf)) - 1 == doc.page_count


def test_page_fields_and_footnotes_in_the_pdf(tmp_path):
    doc = qf.Document()
    b = qf.DocumentBuilder(doc)
    b.move_to_header_footer(qf.HeaderFooterType.FOOTER_PRIMARY)
    b.write("Page ")
    b.insert_field("PAGE", "")
    b.write(" of ")
    b.insert_field("NUMPAGES", "")
    b.move_to_document_end()
    for i in range(120):
        b.write(f"line {i} of the body")
        if i % 25 == 3:
            b.insert_footnote(FootnoteType.FOOTNOTE, f"note for line {i}")
        b.writeln()
    doc.footnote_options.restart_rule = FootnoteNumberingRule.RESTART_PAGE
    assert doc.footnote_options.restart_rule == FootnoteNumberingRule.RESTART_PAGE
    with pytest.raises(RuntimeError, match="restart their numbering on each page"):
        doc.endnote_options.restart_rule = FootnoteNumberingRule.RESTART_PAGE
    out = tmp_path / "notes.pdf"
    doc.save(str(out))
    pages = pdf_page_texts(out)[:-1]
    assert len(pages) == doc.page_count >= 3
    for n, page in enumerate(pages, 1):
        assert f"Page {n} of {len(pages)}" in page
        for i in range(3, 120, 25):
            if f"line {i} of the body" in page:
                # The note is on the page of its reference, numbered again from 1 on each page.
                assert f"note for line {i}" in page
        marks = [line.split()[0] for line in page.splitlines() if "note for line" in line]
        assert marks and marks[0] == "1", page


# ---- rendered pages compared with LibreOffice's ----

def png_grey(data):
    """Decodes an 8-bit RGB(A) PNG into (width, height, grey bytes)."""
    assert data[:8] == b"\x89PNG\r\n\x1a\n"
    pos, idat, width = 8, b"", 0
    while pos < len(data):
        length, kind = struct.unpack(">I4s", data[pos:pos + 8])
        body = data[pos + 8:pos + 8 + length]
        if kind == b"IHDR":
            width, height, depth, colour = struct.unpack(">IIBB", body[:10])
            assert depth == 8 and colour in (2, 6)
            channels = 3 if colour == 2 else 4
        elif kind == b"IDAT":
            idat += body
        pos += 12 + length
    raw = zlib.decompress(idat)
    stride = width * channels
    prev = bytearray(stride)
    grey = bytearray()
    for y in range(height):
        f = raw[y * (stride + 1)]
        line = bytearray(raw[y * (stride + 1) + 1:(y + 1) * (stride + 1)])
        for i in range(stride):
            a = line[i - channels] if i >= channels else 0
            b, c = prev[i], prev[i - channels] if i >= channels else 0
            if f == 1:
                line[i] = (line[i] + a) & 255
            elif f == 2:
                line[i] = (line[i] + b) & 255
            elif f == 3:
                line[i] = (line[i] + (a + b) // 2) & 255
            elif f == 4:
                p = a + b - c
                pa, pb, pc = abs(p - a), abs(p - b), abs(p - c)
                line[i] = (line[i] + (a if pa <= pb and pa <= pc else b if pb <= pc else c)) & 255
        grey.extend((line[i] + line[i + 1] + line[i + 2]) // 3 for i in range(0, stride, channels))
        prev = line
    return width, height, bytes(grey)


def pgm_grey(path):
    data = path.read_bytes()
    parts = data.split(maxsplit=4)
    assert parts[0] == b"P5"
    width, height = int(parts[1]), int(parts[2])
    return width, height, parts[4][-width * height:]


def ink_grid(image, cols=6, rows=40):
    """Share of the page's ink in each cell of a coarse grid: where the page has text, not which
    glyphs, nor how dark a renderer draws them (at this resolution text is grey, so darkness is summed)."""
    width, height, grey = image
    grid = []
    for gy in range(rows):
        for gx in range(cols):
            dark = 0.0
            for y in range(gy * height // rows, (gy + 1) * height // rows):
                dark += sum(255 - v for v in grey[y * width + gx * width // cols:y * width + (gx + 1) * width // cols]) / 255
            grid.append(dark)
    total = sum(grid) or 1.0
    return [v / total for v in grid]


def similarity(a, b, cols=6):
    """1 for the same share of ink in every cell, 0 for ink in different places; the best of the
    pages shifted by a row either way, so that a line a few points lower is no fault."""
    rows = len(a) // cols
    best = 0.0
    for shift in (-1, 0, 1):
        diff = ink = 0.0
        for r in range(rows):
            for c in range(cols):
                x = a[r * cols + c]
                y = b[(r + shift) * cols + c] if 0 <= r + shift < rows else 0.0
                diff += abs(x - y)
                ink += x + y
        best = max(best, 1.0 - diff / ink if ink else 1.0)
    return best


def generated(path, kind):
    doc = qf.Document()
    b = qf.DocumentBuilder(doc)
    if kind == "plain":
        for i in range(40):
            b.writeln(text(30 + 11 * (i % 5), i))
    elif kind == "headings":
        for c in range(8):
            b.paragraph_format.style_identifier = qf.StyleIdentifier.HEADING_1
            b.writeln(f"Heading {c}")
            b.paragraph_format.style_identifier = qf.StyleIdentifier.NORMAL
            b.paragraph_format.alignment = qf.ParagraphAlignment.JUSTIFY
            b.writeln(text(120, c))
    elif kind == "table":
        b.writeln(text(50, 1))
        table = b.start_table()
        for r in range(12):
            for c in range(3):
                b.insert_cell()
                b.write(text(4 + (r + c) % 6, r * 3 + c))
            b.end_row()
        b.end_table()
        table.set_borders(qf.LineStyle.SINGLE, 0.5)
        b.writeln(text(60, 2))
    elif kind == "notes":
        for i in range(20):
            b.write(text(40, i))
            if i % 4 == 0:
                b.insert_footnote(FootnoteType.FOOTNOTE, text(25, i + 3))
            b.writeln()
    doc.save(str(path))
    return doc


@needs_soffice
def test_rendered_pages_look_like_libreoffices(tmp_path):
    kinds = ["plain", "headings", "table", "notes"]
    srcs = [tmp_path / f"{k}.docx" for k in kinds]
    docs = [generated(s, k) for s, k in zip(srcs, kinds)]
    lo_pdfs = libreoffice_pdf(tmp_path, *srcs)
    scores = []
    for src, doc, lo_pdf in zip(srcs, docs, lo_pdfs):
        for page in range(doc.page_count):
            opts = qf.saving.ImageSaveOptions(qf.SaveFormat.PNG)
            opts.resolution = 30.0
            opts.page_set = qf.saving.PageSet(page)
            png = tmp_path / f"{src.stem}-{page}.png"
            doc.save(str(png), opts)
            prefix = tmp_path / f"{src.stem}-lo-{page}"
            subprocess.run(["pdftoppm", "-r", "30", "-gray", "-f", str(page + 1), "-l", str(page + 1), "-singlefile", str(lo_pdf), str(prefix)],
                           check=True, capture_output=True)
            ours, theirs = png_grey(png.read_bytes()), pgm_grey(prefix.with_suffix(".pgm"))
            assert abs(ours[0] - theirs[0]) <= 1 and abs(ours[1] - theirs[1]) <= 1
            scores.append((similarity(ink_grid(ours), ink_grid(theirs)), f"{src.stem} page {page + 1}"))
    scores.sort()
    worst = ", ".join(f"{name}: {score:.2f}" for score, name in scores[:3])
    print("worst pages:", worst)
    # A page of one document against LibreOffice's page of another: what a gross layout fault scores.
    grids = {name: ink_grid(pgm_grey(tmp_path / f"{name}-lo-0.pgm")) for name in ("plain", "table", "headings")}
    ours_plain = ink_grid(png_grey((tmp_path / "plain-0.png").read_bytes()))
    wrong = max(similarity(ours_plain, grids["table"]), similarity(ours_plain, grids["headings"]))
    print(f"a different document's page: {wrong:.2f}")
    assert scores[0][0] >= 0.8, worst
    assert wrong < 0.8


def test_columns_and_borders_from_python(tmp_path):
    doc = qf.Document()
    b = qf.DocumentBuilder(doc)
    columns = b.page_setup.text_columns
    columns.set_count(2)
    columns.line_between = True
    assert columns.count == 2 and columns.width < 250
    with pytest.raises(RuntimeError, match="from 1 to 45 columns"):
        columns.set_count(0)
    border = b.page_setup.get_border(qf.BorderType.TOP)
    border.line_style = qf.LineStyle.SINGLE
    for i in range(90):
        b.writeln(f"entry {i:02d} in its column")
    out = tmp_path / "columns.pdf"
    doc.save(str(out))
    first = pdf_page_texts(out)[0].splitlines()
    # Side by side: a text line of the page holds an entry of each column, the left one first.
    pairs = [re.findall(r"entry (\d\d)", line) for line in first]
    pairs = [p for p in pairs if len(p) == 2]
    assert pairs and all(int(a) < int(b) for a, b in pairs)
    assert pairs[0][0] == "00"
