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
