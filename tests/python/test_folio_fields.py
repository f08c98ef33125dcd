"""Fields, mail merge and report templates driven from Python. Mail merge of {{ name }} tags is
checked against docxtpl rendering the same template, both read back by python-docx; document information
fields against what LibreOffice computes when it opens the same file."""

import io
import json
import shutil
import subprocess

import pytest

qf = pytest.importorskip("quorix.folio")
docx = pytest.importorskip("docx")
from quorix.folio.mailmerging import MailMergeCleanupOptions  # noqa: E402
from quorix.folio.reporting import CsvDataSource, JsonDataSource, ReportBuildOptions, ReportingEngine, XmlDataSource  # noqa: E402


def paragraphs(document):
    out = io.BytesIO()
    document.save(out, qf.SaveFormat.DOCX)
    out.seek(0)
    return [p.text for p in docx.Document(out).paragraphs]


def test_fields_compute_with_their_switches():
    doc = qf.Document()
    b = qf.DocumentBuilder(doc)
    doc.field_options.current_user.initials = "AB"
    results = {}
    for code, expected in [("= 2 + 3 * 4 \\# 00.0", "14.0"), ("= 1994 \\* Roman", "MCMXCIV"),
                           ('IF "Oslo" = "O*" "match" "none"', "match"), ("USERINITIALS", "AB"),
                           ("SYMBOL 65", "A"), ("= 1 / 0", "!Zero Divide"), ("NOSUCHFIELD x", "kept")]:
        field = b.insert_field(code, "kept")
        field.update()
        results[code] = (field.result, expected)
    assert {k: v[0] for k, v in results.items()} == {k: v[1] for k, v in results.items()}
    toc = b.insert_table_of_contents('\\o "2-3" \\h')
    assert (toc.heading_level_range, toc.insert_hyperlinks) == ("2-3", True)
    toc.heading_level_range = "1-2"
    assert toc.get_field_code() == 'TOC \\o "1-2" \\h'


@pytest.mark.parametrize("context", [
    {"name": "Ann", "city": "Oslo", "amount": "12.50"},
    {"name": "Bo Ek", "city": "", "amount": "0"},
])
def test_tags_merge_as_docxtpl_renders_them(tmp_path, context):
    from docxtpl import DocxTemplate
    doc = qf.Document()
    b = qf.DocumentBuilder(doc)
    b.write("Dear {{ na")
    b.font.bold = True
    b.write("me }}, of {{ city }}.")
    b.font.bold = False
    b.writeln()
    b.write("You owe {{ amount }} now.")
    template = tmp_path / "template.docx"
    doc.save(str(template))

    tpl = DocxTemplate(str(template))
    tpl.render(context)
    theirs = io.BytesIO()
    tpl.save(theirs)
    theirs.seek(0)

    (tmp_path / "data.json").write_text(json.dumps(context))
    ours = qf.Document(str(template))
    ours.mail_merge.use_non_merge_fields = True
    ours.mail_merge.execute_with_regions(JsonDataSource(str(tmp_path / "data.json")))
    assert paragraphs(ours) == [p.text for p in docx.Document(theirs).paragraphs]


def test_regions_fill_from_xml_and_csv_and_unused_ones_go(tmp_path):
    def template():
        doc = qf.Document()
        b = qf.DocumentBuilder(doc)
        b.writeln("Items")
        b.insert_field("MERGEFIELD TableStart:item")
        b.insert_field("MERGEFIELD title")
        b.write(" x")
        b.insert_field("MERGEFIELD qty")
        b.writeln()
        b.insert_field("MERGEFIELD TableEnd:item")
        b.insert_field("MERGEFIELD TableStart:other")
        b.write("never")
        b.insert_field("MERGEFIELD TableEnd:other")
        return doc

    (tmp_path / "d.xml").write_text("<shop><item><title>Pen</title><qty>3</qty></item><item><title>Ink</title><qty>1</qty></item></shop>")
    (tmp_path / "d.csv").write_text("title,qty\nPen,3\nInk,1\n")
    for source in (XmlDataSource(str(tmp_path / "d.xml")), CsvDataSource(str(tmp_path / "d.csv"), qf.reporting.CsvDataLoadOptions(True))):
        doc = template()
        doc.mail_merge.cleanup_options = MailMergeCleanupOptions.REMOVE_UNUSED_REGIONS | MailMergeCleanupOptions.REMOVE_EMPTY_PARAGRAPHS
        doc.mail_merge.execute_with_regions(source)
        assert paragraphs(doc) == ["Items", "Pen x3", "Ink x1"]


def test_report_errors_name_the_tag_or_are_written_inline(tmp_path):
    (tmp_path / "d.json").write_text('{"items": [1, 2, 3]}')
    doc = qf.Document()
    qf.DocumentBuilder(doc).write("Sum [[sum(d.items)]] then [[d.items[9]]]")
    with pytest.raises(RuntimeError, match=r"Template tag \[\[d.items\[9\]\]\] .*index 9 is outside the list of 3"):
        ReportingEngine().build_report(doc, JsonDataSource(str(tmp_path / "d.json")), "d")
    doc = qf.Document()
    qf.DocumentBuilder(doc).write("Sum [[sum(d.items)]] then [[d.items[9]]]")
    engine = ReportingEngine()
    engine.options = ReportBuildOptions.INLINE_ERROR_MESSAGES
    assert engine.build_report(doc, JsonDataSource(str(tmp_path / "d.json")), "d") is False
    assert paragraphs(doc)[0].startswith("Sum 6 then Template tag [[d.items[9]]]")


@pytest.mark.skipif(shutil.which("soffice") is None, reason="LibreOffice (soffice) is not installed")
def test_document_information_fields_agree_with_libreoffice(tmp_path):
    """The fields LibreOffice computes when it opens a DOCX, computed by us from the same file."""
    doc = qf.Document()
    props = doc.built_in_document_properties
    props.title, props.subject, props.keywords, props.comments = "Quarterly figures", "Sales", "north, south", "Draft two"
    b = qf.DocumentBuilder(doc)
    codes = ["TITLE", "SUBJECT", "KEYWORDS", "COMMENTS", "DOCPROPERTY Title", "FILENAME", "NUMPAGES", "NUMWORDS"]
    for i, code in enumerate(codes):
        b.write(f"f{i}: ")
        b.insert_field(code, "stale")
        b.writeln()
    b.insert_break(qf.BreakType.PAGE_BREAK)
    b.writeln("The second page.")
    source = tmp_path / "fields.docx"
    doc.save(str(source))
    subprocess.run(["soffice", f"-env:UserInstallation=file://{tmp_path / 'profile'}", "--headless", "--convert-to", "txt:Text (encoded):UTF8",
                    "--outdir", str(tmp_path / "lo"), str(source)], check=True, capture_output=True, timeout=600)
    theirs = dict(line.split(": ", 1) for line in (tmp_path / "lo" / "fields.txt").read_text(encoding="utf-8-sig").splitlines() if ": " in line)

    ours = qf.Document(str(source))
    ours.update_fields()
    ours.save(str(tmp_path / "ours.txt"))
    mine = dict(line.split(": ", 1) for line in (tmp_path / "ours.txt").read_text(encoding="utf-8-sig").splitlines() if ": " in line)
    assert len(theirs) == len(codes) and "stale" not in theirs.values(), theirs
    assert mine == theirs
