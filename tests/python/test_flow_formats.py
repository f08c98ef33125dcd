"""Flow formats, comparison and the one-call lowcode API as a Python user meets them."""

import datetime
import io
import subprocess
import zipfile

import pytest

qf = pytest.importorskip("quorix.folio")

MARKDOWN = "# Report\n\nSome **bold** text and a [link](https://example.com/).\n\n- one\n- two\n\n| a | b |\n| --- | --- |\n| 1 | 2 |\n"


@pytest.fixture
def notes(tmp_path):
    path = tmp_path / "notes.md"
    path.write_text(MARKDOWN, encoding="utf-8")
    return path


def test_every_flow_format_loads_from_a_file_and_saves_back(notes, tmp_path):
    doc = qf.Document(str(notes))
    assert doc.original_load_format == qf.LoadFormat.MARKDOWN
    expected = doc.get_text().split()
    for ext, fmt in (("html", qf.LoadFormat.HTML), ("rtf", qf.LoadFormat.RTF), ("odt", qf.LoadFormat.ODT),
                     ("mht", qf.LoadFormat.MHTML), ("xml", qf.LoadFormat.FLAT_OPC), ("txt", qf.LoadFormat.TEXT)):
        out = tmp_path / f"out.{ext}"
        doc.save(str(out))
        back = qf.Document(str(out))
        assert back.original_load_format == fmt, ext
        words = back.get_text().split()
        # Plain text keeps the words; the other formats keep the link's field too.
        assert [w for w in expected if "HYPERLINK" not in w and "example.com" not in w][:4] == [w for w in words if "HYPERLINK" not in w and "example.com" not in w][:4], ext
    doc.save(str(tmp_path / "book.epub"))
    with zipfile.ZipFile(tmp_path / "book.epub") as z:
        assert z.namelist()[0] == "mimetype"


def test_html_options_and_streams(notes):
    doc = qf.Document(str(notes))
    o = qf.saving.HtmlSaveOptions()
    o.export_images_as_base64 = True
    o.css_style_sheet_type = qf.saving.CssStyleSheetType.EMBEDDED
    out = io.BytesIO()
    doc.save(out, o)
    html = out.getvalue().decode("utf-8")
    assert "<style" in html and "<h1" in html and "<strong>bold</strong>" in html
    back = qf.Document(io.BytesIO(out.getvalue()))
    assert back.first_section.body.first_paragraph.paragraph_format.style_identifier == qf.StyleIdentifier.HEADING_1


def test_load_options_of_text_formats():
    o = qf.loading.TxtLoadOptions()
    o.leading_spaces_options = qf.loading.TxtLeadingSpacesOptions.TRIM
    doc = qf.Document(io.BytesIO(b"   indented\n1. item\n"), o)
    assert doc.get_text().startswith("indented")
    rtf = qf.loading.RtfLoadOptions()
    rtf.recognize_utf8_text = True
    assert qf.Document(io.BytesIO(b"{\\rtf1 caf\\'c3\\'a9\\par}"), rtf).get_text().startswith("caf\u00e9")


def test_unsupported_formats_say_which(tmp_path):
    with pytest.raises(Exception) as info:
        qf.Document().save(str(tmp_path / "out.xyz"))
    assert "xyz" in str(info.value)


def test_lowcode_converter_merger_splitter_comparer(notes, tmp_path):
    qf.lowcode.Converter.convert(str(notes), str(tmp_path / "a.docx"))
    qf.lowcode.Converter.convert(str(tmp_path / "a.docx"), str(tmp_path / "b.odt"), qf.SaveFormat.ODT)
    assert qf.Document(str(tmp_path / "b.odt")).get_text().split()[0] == "Report"
    doc = qf.Document(str(tmp_path / "a.docx"))
    builder = qf.DocumentBuilder(doc)
    builder.move_to_document_end()
    builder.insert_break(qf.BreakType.SECTION_BREAK_NEW_PAGE)
    builder.write("second part")
    doc.save(str(tmp_path / "two.docx"))
    qf.lowcode.Merger.merge(str(tmp_path / "all.docx"), [str(tmp_path / "a.docx"), str(tmp_path / "b.odt")],
                            qf.lowcode.MergeFormatMode.KEEP_SOURCE_FORMATTING)
    assert qf.Document(str(tmp_path / "all.docx")).get_text().count("Report") == 2
    count = qf.lowcode.Splitter.split(str(tmp_path / "two.docx"), str(tmp_path / "part.docx"), qf.lowcode.SplitOptions())
    assert count == 2
    assert qf.Document(str(tmp_path / "part_2.docx")).get_text().strip() == "second part"
    (tmp_path / "v2.md").write_text(MARKDOWN.replace("bold", "brave"), encoding="utf-8")
    qf.lowcode.Comparer.compare(str(notes), str(tmp_path / "v2.md"), str(tmp_path / "diff.docx"), "Reviewer", datetime.datetime.now())
    diff = qf.Document(str(tmp_path / "diff.docx"))
    assert diff.revisions.groups.count == 2
    diff.accept_all_revisions()
    assert "brave" in diff.get_text() and "bold" not in diff.get_text()


def test_comparison_from_python():
    v1 = qf.Document(io.BytesIO(b"The quick brown fox."), qf.loading.TxtLoadOptions())
    v2 = qf.Document(io.BytesIO(b"The slow brown fox."), qf.loading.TxtLoadOptions())
    v1.compare(v2, "Reviewer", datetime.datetime(2026, 1, 2, 3, 4, 5))
    assert v1.revisions.count == 2
    assert v1.revisions.groups.count == 2
    rejected = v1.clone()
    rejected.reject_all_revisions()
    assert rejected.get_text().strip() == "The quick brown fox."
    v1.accept_all_revisions()
    assert v1.get_text().strip() == "The slow brown fox."


def test_pandoc_reads_what_python_saved(notes, tmp_path):
    doc = qf.Document(str(notes))
    doc.save(str(tmp_path / "out.rtf"))
    text = subprocess.run(["pandoc", "-f", "rtf", "-t", "plain", str(tmp_path / "out.rtf")],
                          check=True, capture_output=True, text=True).stdout
    assert "Report" in text and "bold" in text and "one" in text


def test_wordml_2003_round_trip_and_detection(notes, tmp_path):
    doc = qf.Document(str(notes))
    out = tmp_path / "out.xml"
    options = qf.saving.WordML2003SaveOptions()
    options.pretty_format = True
    doc.save(str(out), options)
    assert b"<?mso-application progid=\"Word.Document\"?>" in out.read_bytes()
    back = qf.Document(str(out))
    assert back.original_load_format == qf.LoadFormat.WORD_ML
    assert qf.FileFormatUtil.detect_file_format(str(out)).load_format == qf.LoadFormat.WORD_ML
    assert back.first_section.body.first_paragraph.paragraph_format.style_identifier == qf.StyleIdentifier.HEADING_1
    assert back.first_section.body.tables.count == 1
    def bold(d):
        return [r.text for r in d.get_child_nodes(qf.NodeType.RUN, True) if r.font.bold]
    assert bold(back) == bold(doc) == ["Report", "bold"]
    stream = io.BytesIO()
    doc.save(stream, qf.SaveFormat.WORD_ML)
    assert qf.Document(io.BytesIO(stream.getvalue())).get_text() == back.get_text()


def test_watermarks_from_python(tmp_path):
    doc = qf.Document()
    qf.DocumentBuilder(doc).writeln("Body")
    assert doc.watermark.type == qf.WatermarkType.NONE
    options = qf.TextWatermarkOptions()
    options.font_family = "Arial"
    options.layout = qf.WatermarkLayout.HORIZONTAL
    doc.watermark.set_text("DRAFT", options)
    assert doc.watermark.type == qf.WatermarkType.TEXT
    doc.save(str(tmp_path / "marked.docx"))
    with zipfile.ZipFile(tmp_path / "marked.docx") as z:
        assert 'string="DRAFT"' in z.read("word/header1.xml").decode("utf-8")
    with pytest.raises(Exception, match="six hexadecimal digits"):
        options.color_hex = "red"
    png = tmp_path / "logo.png"
    qf.Document().save(str(png))
    qf.lowcode.Watermarker.set_image(str(tmp_path / "marked.docx"), str(tmp_path / "image.docx"), str(png))
    assert qf.Document(str(tmp_path / "image.docx")).watermark.type == qf.WatermarkType.IMAGE
    doc.watermark.remove()
    assert doc.watermark.type == qf.WatermarkType.NONE


def test_watermark_shows_in_html_rtf_and_pdf_but_is_no_text(notes, tmp_path):
    plain = qf.Document(str(notes))
    marked = plain.clone()
    marked.watermark.set_text("CONFIDENTIAL")
    for d, name in ((plain, "plain"), (marked, "marked")):
        d.save(str(tmp_path / f"{name}.html"))
        d.save(str(tmp_path / f"{name}.rtf"))
    html = (tmp_path / "marked.html").read_text(encoding="utf-8")
    assert 'data-watermark="CONFIDENTIAL"' in html and "rotate(315deg)" in html
    # pandoc reads the same text from either page: the watermark is drawn, not written.
    def pandoc(path, fmt):
        return subprocess.run(["pandoc", "-f", fmt, "-t", "plain", str(path)], check=True, capture_output=True, text=True).stdout
    assert pandoc(tmp_path / "marked.html", "html") == pandoc(tmp_path / "plain.html", "html")
    assert pandoc(tmp_path / "marked.rtf", "rtf") == pandoc(tmp_path / "plain.rtf", "rtf")
    assert r"{\sn gtextUNICODE}{\sv CONFIDENTIAL}" in (tmp_path / "marked.rtf").read_text(encoding="ascii")
    # Our PDF draws it as text: pdftotext finds its letters (in pieces, as it is slanted) beside the body's.
    marked.save(str(tmp_path / "marked.pdf"))
    text = subprocess.run(["pdftotext", str(tmp_path / "marked.pdf"), "-"], check=True, capture_output=True, text=True).stdout
    assert "CONFIDENTIAL" in "".join(text.split()) and "Some bold text" in text


def test_lowcode_contexts_mail_merge_and_reports(notes, tmp_path):
    lc = qf.lowcode
    lc.Converter.create(lc.ConverterContext()).from_file(str(notes)).to_file(str(tmp_path / "a.docx")).execute()
    assert qf.Document(str(tmp_path / "a.docx")).get_text().split()[0] == "Report"
    ctx = lc.ReplacerContext()
    ctx.set_replacement("bold", "brave")
    with open(tmp_path / "a.docx", "rb") as source:
        job = lc.Replacer.create(ctx).from_stream(source)           # read at once: the file may close
    job.to_file(str(tmp_path / "a.md")).execute()
    assert "**brave**" in (tmp_path / "a.md").read_text(encoding="utf-8-sig")
    # A Python stream is lent for one call: writing it later is refused with a reason.
    with pytest.raises(Exception, match="can no longer be written"):
        job.to_stream(io.BytesIO(), qf.SaveFormat.MARKDOWN).execute()
    with pytest.raises(Exception, match="Comparison takes 2 inputs; one input given."):
        lc.Comparer.create(lc.ComparerContext()).from_file(str(notes)).to_file(str(tmp_path / "x.docx")).execute()
    with pytest.raises(Exception, match="Signing documents is not supported"):
        lc.SignerContext()

    letter = qf.Document()
    builder = qf.DocumentBuilder(letter)
    builder.write("Dear ")
    builder.insert_field("MERGEFIELD name")
    builder.writeln(",")
    builder.write("[[d.total | #,##0.00]]")
    letter.save(str(tmp_path / "letter.docx"))
    merge = lc.MailMergerContext()
    merge.set_simple_data_source(["name"], ["Ann"])
    lc.MailMerger.create(merge).from_file(str(tmp_path / "letter.docx")).to_file(str(tmp_path / "merged.docx")).execute()
    (tmp_path / "data.json").write_text('{"total": 1234.5}', encoding="utf-8")
    report = lc.ReportBuilderContext()
    report.add_data_source(qf.reporting.JsonDataSource(str(tmp_path / "data.json")), "d")
    lc.ReportBuilder.create(report).from_file(str(tmp_path / "merged.docx")).to_file(str(tmp_path / "final.txt")).execute()
    text = (tmp_path / "final.txt").read_text(encoding="utf-8-sig")
    assert text.split() == ["Dear", "Ann,", "1,234.50"]


def test_comparison_of_formatting_and_moves():
    def doc(*paragraphs, bold=()):
        d = qf.Document()
        b = qf.DocumentBuilder(d)
        for p in paragraphs:
            b.font.bold = p in bold
            b.writeln(p)
        return d
    moving = "A paragraph long enough to be moved."
    v1 = doc(moving, "Second paragraph.", "Third paragraph.")
    v2 = doc("Second paragraph.", "Third paragraph.", moving, bold=("Third paragraph.",))
    compared = v1.clone()
    compared.compare(v2, "Reviewer", datetime.datetime(2026, 1, 2))
    kinds = sorted({r.revision_type for r in compared.revisions})
    assert kinds == [qf.RevisionType.FORMAT_CHANGE, qf.RevisionType.MOVING]
    options = qf.comparing.CompareOptions()
    options.ignore_formatting = True
    options.advanced_options.report_moves_as_insertions_and_deletions = True
    plain = v1.clone()
    plain.compare(v2, "Reviewer", datetime.datetime(2026, 1, 2), options)
    assert sorted({r.revision_type for r in plain.revisions}) == [qf.RevisionType.INSERTION, qf.RevisionType.DELETION]
    compared.accept_all_revisions()
    assert compared.get_text() == v2.get_text()


def test_comparison_of_paragraph_formatting_and_its_target():
    def doc(alignment):
        d = qf.Document()
        b = qf.DocumentBuilder(d)
        b.writeln("Unchanged first paragraph.")
        b.paragraph_format.alignment = alignment
        b.writeln("A paragraph that only moves to the middle.")
        b.paragraph_format.alignment = qf.ParagraphAlignment.LEFT
        return d
    v1, v2 = doc(qf.ParagraphAlignment.LEFT), doc(qf.ParagraphAlignment.CENTER)
    when = datetime.datetime(2026, 1, 2)
    tracked = v1.clone()
    tracked.compare(v2, "Reviewer", when)
    assert [r.revision_type for r in tracked.revisions] == [qf.RevisionType.FORMAT_CHANGE]
    tracked.reject_all_revisions()
    assert tracked.first_section.body.paragraphs[1].paragraph_format.alignment == qf.ParagraphAlignment.LEFT
    options = qf.comparing.CompareOptions()
    assert options.target == qf.comparing.ComparisonTargetType.CURRENT
    options.target = qf.comparing.ComparisonTargetType.NEW
    taken = v1.clone()
    taken.compare(v2, "Reviewer", when, options)
    assert taken.revisions.count == 0
    assert taken.first_section.body.paragraphs[1].paragraph_format.alignment == qf.ParagraphAlignment.CENTER
    with pytest.raises(TypeError):
        options.target = 1


def test_pandoc_reads_reference_links_as_links(tmp_path):
    doc = qf.Document()
    b = qf.DocumentBuilder(doc)
    b.write("Go to ")
    b.insert_hyperlink("the site", "https://example.com/x", False)
    b.writeln(" now.")
    options = qf.saving.MarkdownSaveOptions()
    options.link_export_mode = qf.saving.MarkdownLinkExportMode.REFERENCE
    doc.save(str(tmp_path / "refs.md"), options)
    assert "[the site][1]" in (tmp_path / "refs.md").read_text(encoding="utf-8")
    html = subprocess.run(["pandoc", "-f", "markdown", "-t", "html", str(tmp_path / "refs.md")],
                          check=True, capture_output=True, text=True).stdout
    assert '<a href="https://example.com/x">the site</a>' in html
