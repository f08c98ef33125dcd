"""Form fields, barcodes and citations from Python: form data read back by python-docx from the
file we write and by LibreOffice from the same file, a barcode generator written in Python, and
the sources of a bibliography."""

import io
import re
import shutil
import struct
import subprocess
import zipfile
import zlib

import pytest

qf = pytest.importorskip("quorix.folio")
docx = pytest.importorskip("docx")
from quorix.folio.fields import FieldType, IBarcodeGenerator, TextFormFieldType  # noqa: E402

W = "{http://schemas.openxmlformats.org/wordprocessingml/2006/main}"


def png(width, height):
    def chunk(kind, data):
        return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))
    rows = b"".join(b"\x00" + b"\x00\x00\x00" * width for _ in range(height))
    header = struct.pack(">IIBBBBB", width, height, 8, 2, 0, 0, 0)
    return b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", header) + chunk(b"IDAT", zlib.compress(rows)) + chunk(b"IEND", b"")


def form_document():
    doc = qf.Document()
    b = qf.DocumentBuilder(doc)
    b.write("Name: ")
    b.insert_text_input("Name", TextFormFieldType.REGULAR, "UPPERCASE", "", 12)
    b.write(" Paid: ")
    b.insert_check_box("Paid", False, 0)
    b.write(" Via: ")
    b.insert_combo_box("Via", ("Post", "Mail", "Phone"), 0)
    forms = doc.range.form_fields
    forms["Name"].set_text_input_value("ann berg-larsen")
    forms["Paid"].checked = True
    forms["Via"].drop_down_items.add("Fax")
    forms["Via"].drop_down_selected_index = 3
    return doc


def test_form_fields_read_and_write_their_data():
    doc = form_document()
    forms = doc.range.form_fields
    assert len(forms) == 3
    assert [(f.name, f.type) for f in forms] == [("Name", FieldType.FIELD_FORM_TEXT_INPUT), ("Paid", FieldType.FIELD_FORM_CHECK_BOX),
                                                 ("Via", FieldType.FIELD_FORM_DROP_DOWN)]
    # upper-cased as the format asks, then cut at the maximum length
    assert [f.result for f in forms] == ["ANN BERG-LAR", "1", "Fax"]
    assert list(forms["Via"].drop_down_items) == ["Post", "Mail", "Phone", "Fax"]
    assert forms["nothing"] is None
    with pytest.raises(RuntimeError, match="The form field is a check box, not a drop-down list"):
        forms["Paid"].drop_down_items
    out = io.BytesIO()
    doc.save(out, qf.SaveFormat.DOCX)
    again = qf.Document(io.BytesIO(out.getvalue()))
    assert [f.result for f in again.range.form_fields] == ["ANN BERG-LAR", "1", "Fax"]
    assert again.range.form_fields["Name"].max_length == 12

    # python-docx reads the form data where a word processor keeps it: on the field's begin marker
    body = docx.Document(io.BytesIO(out.getvalue())).element.body
    data = body.findall(f".//{W}fldChar/{W}ffData")
    assert [d.find(f"{W}name").get(f"{W}val") for d in data] == ["Name", "Paid", "Via"]
    assert data[0].find(f"{W}textInput/{W}maxLength").get(f"{W}val") == "12"
    assert data[1].find(f"{W}checkBox/{W}checked").get(f"{W}val") == "1"
    assert [e.get(f"{W}val") for e in data[2].findall(f"{W}ddList/{W}listEntry")] == ["Post", "Mail", "Phone", "Fax"]
    assert data[2].find(f"{W}ddList/{W}result").get(f"{W}val") == "3"


def test_text_output_shows_what_the_form_shows(tmp_path):
    doc = form_document()
    doc.save(str(tmp_path / "form.txt"))
    assert (tmp_path / "form.txt").read_text(encoding="utf-8-sig").strip() == "Name: ANN BERG-LAR Paid: \u2612 Via: Fax"


@pytest.mark.skipif(shutil.which("soffice") is None, reason="LibreOffice (soffice) is not installed")
def test_libreoffice_reads_our_form_fields(tmp_path):
    """LibreOffice opens the file we write and keeps each form field's kind and state in its own format."""
    form_document().save(str(tmp_path / "form.docx"))
    subprocess.run(["soffice", f"-env:UserInstallation=file://{tmp_path / 'profile'}", "--headless", "--convert-to", "odt",
                    "--outdir", str(tmp_path / "lo"), str(tmp_path / "form.docx")], check=True, capture_output=True, timeout=600)
    with zipfile.ZipFile(tmp_path / "lo" / "form.odt") as odt:
        content = odt.read("content.xml").decode("utf-8")
    marks = re.findall(r'<field:fieldmark(?:-start)? [^>]*field:type="[^"]*\.(FORM\w+)"[^>]*>(.*?)</field:fieldmark', content)
    assert [kind for kind, _ in marks] == ["FORMTEXT", "FORMCHECKBOX", "FORMDROPDOWN"]
    params = [dict(re.findall(r'field:name="(\w+)" field:value="([^"]*)"', body)) for _, body in marks]
    assert params[0]["Format"] == "UPPERCASE"
    assert params[1]["Checkbox_Checked"] == "true"
    assert re.findall(r'Dropdown_ListEntry" field:value="([^"]*)"', marks[2][1]) == ["Post", "Mail", "Phone", "Fax"]
    assert params[2]["Dropdown_Selected"] == "3"
    assert "ANN BERG-LAR" in content


class Squares(IBarcodeGenerator):
    def __init__(self):
        self.asked = []

    def get_barcode_image(self, parameters):
        self.asked.append((parameters.barcode_value, parameters.barcode_type, parameters.scaling_factor))
        return None if parameters.barcode_value == "skip" else png(12, 6)


def test_a_python_barcode_generator_draws_the_pictures():
    doc = qf.Document()
    squares = Squares()
    doc.field_options.barcode_generator = squares
    b = qf.DocumentBuilder(doc)
    b.insert_field('DISPLAYBARCODE "4006381333931" EAN13 \\s 150')
    b.insert_field("DISPLAYBARCODE skip QR", "kept")
    doc.update_fields()
    assert squares.asked == [("4006381333931", "EAN13", "150"), ("skip", "QR", None)]
    shapes = doc.get_child_nodes(qf.NodeType.SHAPE, True)
    assert len(shapes) == 1
    assert (shapes[0].width, shapes[0].height) == (9.0, 4.5)
    assert doc.range.fields[1].result == "kept"

    doc.field_options.barcode_generator = None          # the engine's own drawing
    doc.range.fields[1].update()
    assert len(doc.get_child_nodes(qf.NodeType.SHAPE, True)) == 2


def test_citations_read_the_bibliography_sources():
    sources = ('<?xml version="1.0" encoding="UTF-8"?><b:Sources xmlns:b="http://schemas.openxmlformats.org/officeDocument/2006/bibliography"'
               ' SelectedStyle="\\APASixthEditionOfficeOnline.xsl"><b:Source><b:Tag>Ber24</b:Tag><b:SourceType>Book</b:SourceType>'
               "<b:Author><b:Author><b:NameList><b:Person><b:Last>Berg</b:Last><b:First>Ann</b:First></b:Person></b:NameList></b:Author></b:Author>"
               "<b:Title>Forms</b:Title><b:Year>2024</b:Year><b:City>Oslo</b:City><b:Publisher>Fjord</b:Publisher></b:Source></b:Sources>")
    doc = qf.Document()
    b = qf.DocumentBuilder(doc)
    b.insert_field("CITATION Ber24 \\p 7")
    b.writeln()
    b.insert_field("BIBLIOGRAPHY")
    out = io.BytesIO()
    doc.save(out, qf.SaveFormat.DOCX)
    patched = io.BytesIO()
    with zipfile.ZipFile(io.BytesIO(out.getvalue())) as src, zipfile.ZipFile(patched, "w") as dst:
        for item in src.infolist():
            dst.writestr(item, src.read(item.filename))
        dst.writestr("customXml/item1.xml", sources)
    doc = qf.Document(io.BytesIO(patched.getvalue()))
    source = doc.bibliography.sources[0]
    assert (source.tag, source.title, source.contributors.author[0].last) == ("Ber24", "Forms", "Berg")
    doc.update_fields()
    assert [f.result.strip() for f in doc.range.fields] == ["(Berg, 2024, p. 7)", "Berg, A. (2024). Forms. Oslo: Fjord."]
