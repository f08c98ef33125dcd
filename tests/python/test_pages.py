"""Pages from Python: DOCX written by python-docx laid out and saved as PDF, PNG, BMP, TIFF and SVG,
checked with poppler's, qpdf's and libtiff's tools and Pillow."""

import struct
import subprocess

import pytest

qf = pytest.importorskip("quorix.folio")
docx = pytest.importorskip("docx")


def tool(*args):
    return subprocess.run(args, check=True, capture_output=True, text=True).stdout


def pdf_pages(path):
    return int(next(l for l in tool("pdfinfo", str(path)).splitlines() if l.startswith("Pages:")).split()[1])


@pytest.fixture(scope="module")
def report(tmp_path_factory):
    """A python-docx document in Calibri and Arial: headings, paragraphs, a bordered table."""
    path = tmp_path_factory.mktemp("pages") / "report.docx"
    d = docx.Document()
    d.styles["Normal"].font.name = "Calibri"
    for s in range(12):
        d.add_heading(f"Chapter {s + 1}", level=1)
        for k in range(4):
            run = d.add_paragraph().add_run(f"Chapter {s + 1} paragraph {k + 1}. " + "Words that wrap over several lines. " * 12)
            if k == 3:
                run.font.name = "Arial"
        table = d.add_table(rows=2, cols=2)
        table.style = "Table Grid"
        table.cell(0, 0).text = f"t{s}a"
        table.cell(1, 1).text = f"t{s}d"
    d.save(path)
    return path


def test_pdf_by_extension_checked_by_other_tools(report, tmp_path):
    doc = qf.Document(str(report))
    out = tmp_path / "report.pdf"
    doc.save(str(out))
    assert doc.page_count > 3
    assert pdf_pages(out) == doc.page_count
    subprocess.run(["qpdf", "--check", str(out)], check=True, capture_output=True)
    fonts = tool("pdffonts", str(out))
    assert "Carlito" in fonts and "LiberationSans" in fonts
    text = tool("pdftotext", str(out), "-")
    positions = [text.index(f"Chapter {s + 1} paragraph 1.") for s in range(12)]
    assert positions == sorted(positions)


def test_page_set_and_page_info(report, tmp_path):
    doc = qf.Document(str(report))
    opts = qf.saving.PdfSaveOptions()
    opts.page_set = qf.saving.PageSet(qf.saving.PageRange(1, 2))
    doc.save(str(tmp_path / "two.pdf"), opts)
    assert pdf_pages(tmp_path / "two.pdf") == 2
    info = doc.get_page_info(0)
    assert (info.width_in_points, info.height_in_points) == (pytest.approx(612, abs=1), pytest.approx(792, abs=1))


def test_png_at_a_resolution_and_svg(report, tmp_path):
    doc = qf.Document(str(report))
    opts = qf.saving.ImageSaveOptions(qf.SaveFormat.PNG)
    opts.resolution = 144.0
    doc.save(str(tmp_path / "page.png"), opts)
    head = (tmp_path / "page.png").read_bytes()[:24]
    assert head[:8] == b"\x89PNG\r\n\x1a\n"
    width, height = struct.unpack(">II", head[16:24])
    info = doc.get_page_info(0)
    assert (width, height) == (round(info.width_in_points * 2), round(info.height_in_points * 2))
    doc.save(str(tmp_path / "page.svg"))
    svg = (tmp_path / "page.svg").read_text(encoding="utf-8")
    assert "<svg" in svg and "<path" in svg


def test_bmp_and_multi_page_tiff_read_by_other_tools(report, tmp_path):
    Image = pytest.importorskip("PIL.Image")
    doc = qf.Document(str(report))
    opts = qf.saving.ImageSaveOptions(qf.SaveFormat.TIFF)
    opts.resolution = 36.0
    opts.page_set = qf.saving.PageSet(qf.saving.PageRange(1, 3))
    doc.save(str(tmp_path / "pages.tif"), opts)
    info = doc.get_page_info(1)
    size = (round(info.width_in_points / 2), round(info.height_in_points / 2))
    with Image.open(tmp_path / "pages.tif") as tif:
        assert tif.n_frames == 3
        for frame in range(3):
            tif.seek(frame)
            assert tif.size == size and tif.mode == "RGB"
            assert min(tif.convert("L").getdata()) < 100, "the page has text"
    listing = tool("tiffinfo", str(tmp_path / "pages.tif"))
    assert listing.count("TIFF Directory") == 3 and "LZW" in listing
    opts.tiff_compression = qf.saving.TiffCompression.CCITT_4
    doc.save(str(tmp_path / "fax.tif"), opts)
    with Image.open(tmp_path / "fax.tif") as fax:
        assert fax.n_frames == 3 and fax.mode == "1"
    doc.save(str(tmp_path / "page.bmp"))
    assert "PC bitmap" in tool("file", str(tmp_path / "page.bmp"))
    with Image.open(tmp_path / "page.bmp") as bmp:
        first = doc.get_page_info(0)
        assert bmp.size == (round(first.width_in_points * 96 / 72), round(first.height_in_points * 96 / 72))


def test_further_png_pages_through_a_page_saving_callback(report, tmp_path):
    doc = qf.Document(str(report))
    seen = []

    class Pages(qf.saving.IPageSavingCallback):
        def page_saving(self, args):
            seen.append((args.page_index, args.page_file_name))
            args.page_file_name = f"p{args.page_index}.png"

    opts = qf.saving.ImageSaveOptions(qf.SaveFormat.PNG)
    opts.resolution = 20.0
    opts.page_set = qf.saving.PageSet(0, 2, 4)
    opts.page_saving_callback = Pages()
    doc.save(str(tmp_path / "first.png"), opts)
    assert seen == [(2, "first_2.png"), (4, "first_4.png")]
    assert sorted(p.name for p in tmp_path.iterdir()) == ["first.png", "p2.png", "p4.png"]
    assert all(p.read_bytes()[:8] == b"\x89PNG\r\n\x1a\n" for p in tmp_path.iterdir())


def test_options_the_pdf_backend_cannot_honour_are_refused(report, tmp_path):
    doc = qf.Document(str(report))
    opts = qf.saving.PdfSaveOptions()
    opts.outline_options.headings_outline_levels = 3
    with pytest.raises(Exception, match="OutlineOptions"):
        doc.save(str(tmp_path / "outline.pdf"), opts)
    assert not (tmp_path / "outline.pdf").exists()
    opts = qf.saving.PdfSaveOptions()
    opts.encryption_details = qf.saving.PdfEncryptionDetails("user", "owner")
    with pytest.raises(Exception, match="EncryptionDetails"):
        doc.save(str(tmp_path / "locked.pdf"), opts)
    assert not (tmp_path / "locked.pdf").exists()


def test_layout_collector_finds_the_last_paragraph_on_the_last_page(report):
    doc = qf.Document(str(report))
    collector = qf.layout.LayoutCollector(doc)
    last = doc.first_section.body.last_paragraph
    assert collector.get_end_page_index(last) == doc.page_count


def test_theme_fonts_of_a_default_document(tmp_path):
    """python-docx's template names its fonts by theme slot only: body text in the theme's minor
    font (Calibri), headings in its major font."""
    src = tmp_path / "theme.docx"
    d = docx.Document()
    d.add_heading("A heading", level=1)
    d.add_paragraph("Body text in the theme's body font.")
    d.save(src)
    theme = docx.Document(src).part.package
    major = minor = None
    for part in theme.parts:
        if part.partname.endswith("theme1.xml"):
            xml = part.blob.decode("utf-8")
            major = xml.split("<a:majorFont>")[1].split('typeface="')[1].split('"')[0]
            minor = xml.split("<a:minorFont>")[1].split('typeface="')[1].split('"')[0]
    assert (major, minor) != (None, None)
    out = tmp_path / "theme.pdf"
    qf.Document(str(src)).save(str(out))
    fonts = tool("pdffonts", str(out))
    substitutes = {"Calibri": "Carlito", "Cambria": "Caladea", "Calibri Light": "Carlito"}
    for face in (major, minor):
        assert substitutes.get(face, face).replace(" ", "") in fonts, (face, fonts)
    assert "LiberationSerif" not in fonts
