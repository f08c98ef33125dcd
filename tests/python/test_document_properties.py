"""Document properties, comment dates and image streams of the document library from Python:
values crossing as datetime, Decimal and variants, the property parts read back by python-docx,
parts written by python-docx and pandoc read by us, and what we do not model kept as it was."""

import datetime as dt
import decimal
import shutil
import struct
import subprocess
import zipfile
import zlib

import pytest

qf = pytest.importorskip("quorix.folio")
docx = pytest.importorskip("docx")
P = qf.properties
UTC = dt.timezone.utc


def parts_of(path):
    with zipfile.ZipFile(path) as z:
        return {name: z.read(name) for name in z.namelist()}


def tiny_png():
    def chunk(kind, data):
        return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data) & 0xFFFFFFFF)
    header = struct.pack(">IIBBBBB", 1, 1, 8, 2, 0, 0, 0)
    return (b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", header) + chunk(b"IDAT", zlib.compress(b"\x00\xff\x00\x00"))
            + chunk(b"IEND", b""))


class TestBuiltInProperties:
    def test_typed_values_and_the_collection_view(self):
        doc = qf.Document()
        props = doc.built_in_document_properties
        assert (props.title, props.count, props.created_time) == ("", 0, dt.datetime(1, 1, 1))
        props.title = "Q3 report"
        props.author = "Ann Lee"
        props.created_time = dt.datetime(2026, 1, 2, 3, 4, 5, tzinfo=dt.timezone(dt.timedelta(hours=2)))
        props.revision_number = 7
        props.security = P.DocumentSecurity.READ_ONLY_RECOMMENDED | P.DocumentSecurity.PASSWORD_PROTECTED
        props.links_up_to_date = True
        # aware values are stored in UTC and come back aware
        assert props.created_time == dt.datetime(2026, 1, 2, 1, 4, 5, tzinfo=UTC)
        assert props.security == 3 and props.links_up_to_date is True
        assert props.count == 6
        assert [props.get(i).name for i in range(props.count)] == [
            "Title", "Author", "RevisionNumber", "CreatedTime", "Security", "LinksUpToDate"]
        title = props.get("TITLE")  # names compare without regard to case
        assert (title.value, title.type) == ("Q3 report", P.PropertyType.STRING)
        assert props.get("CreatedTime").type == P.PropertyType.DATE_TIME
        assert props.index_of("Author") == 1 and props.contains("Author") and not props.contains("Company")
        props.remove("Author")
        props.title = ""
        assert (props.author, props.count, props.contains("Title")) == ("", 4, False)

    def test_wrong_values_are_refused(self):
        props = qf.Document().built_in_document_properties
        with pytest.raises(TypeError, match="can't build DateTime from 'str'"):
            props.created_time = "2026-01-01"
        assert props.get("Title") is None
        props.revision_number = 2
        with pytest.raises(RuntimeError, match="takes a Number value, not String"):
            props.get("RevisionNumber").value = "three"
        assert props.revision_number == 2


class TestCustomProperties:
    def test_values_keep_their_python_kind(self):
        doc = qf.Document()
        custom = doc.custom_document_properties
        values = {
            "Amount": (decimal.Decimal("12.50"), P.PropertyType.DECIMAL),
            "Due": (dt.datetime(2026, 1, 31, tzinfo=UTC), P.PropertyType.DATE_TIME),
            "Flag": (True, P.PropertyType.BOOLEAN),
            "Count": (5, P.PropertyType.NUMBER),
            "Ratio": (1.5, P.PropertyType.DOUBLE),
            "Owner": ("Ann", P.PropertyType.STRING),
        }
        for name, (value, _) in values.items():
            custom.add(name, value)
        for name, (value, kind) in values.items():
            prop = custom.get(name)
            assert (prop.value, type(prop.value), prop.type) == (value, type(value), kind)
        assert str(custom.get("Amount").value) == "12.50"  # the scale survives
        out = []
        assert custom.try_get_value("Amount", out) is True and out == [decimal.Decimal("12.50")]
        assert custom.try_get_value("Missing", out) is False and out == [None]

    def test_adding_a_name_again_replaces_the_value_and_remove(self):
        custom = qf.Document().custom_document_properties
        custom.add("X", 1)
        custom.add("x", "two")
        assert custom.count == 1 and custom.get("X").value == "two"
        custom.get("X").value = dt.datetime(2020, 1, 1)
        assert custom.get("X").type == P.PropertyType.DATE_TIME
        custom.remove_at(0)
        assert custom.count == 0

    def test_values_that_cannot_be_stored_are_refused(self):
        custom = qf.Document().custom_document_properties
        with pytest.raises(RuntimeError, match="cannot hold a value of type"):
            custom.add("Span", dt.timedelta(1))
        with pytest.raises(RuntimeError, match="holds strings only"):
            custom.add("Mixed", ["a", 1])
        with pytest.raises(TypeError, match="unknown variant type"):
            custom.add("Obj", object())
        assert custom.count == 0


class TestPropertyPartsInterchange:
    def test_written_parts_are_read_by_python_docx_and_theirs_by_us(self, tmp_path):
        doc = qf.Document()
        props = doc.built_in_document_properties
        props.title, props.author, props.keywords = "Q3", "Ann", "money"
        props.created_time = dt.datetime(2026, 1, 2, 3, 4, 5, tzinfo=UTC)
        props.revision_number = 4
        doc.custom_document_properties.add("Amount", decimal.Decimal("1.25"))
        doc.save(str(tmp_path / "ours.docx"))

        core = docx.Document(str(tmp_path / "ours.docx")).core_properties
        assert (core.title, core.author, core.keywords, core.revision) == ("Q3", "Ann", "money", 4)
        assert core.created == dt.datetime(2026, 1, 2, 3, 4, 5)

        theirs = docx.Document(str(tmp_path / "ours.docx"))
        theirs.core_properties.subject = "from python-docx"
        theirs.core_properties.last_printed = dt.datetime(2025, 5, 6, 7, 8, 9)
        theirs.save(str(tmp_path / "theirs.docx"))
        back = qf.Document(str(tmp_path / "theirs.docx"))
        b = back.built_in_document_properties
        assert (b.subject, b.title, b.last_printed) == ("from python-docx", "Q3", dt.datetime(2025, 5, 6, 7, 8, 9, tzinfo=UTC))
        assert back.custom_document_properties.get("Amount").value == decimal.Decimal("1.25")

    @pytest.mark.skipif(shutil.which("pandoc") is None, reason="pandoc is installed by make's set-up")
    def test_parts_pandoc_writes_are_read_and_kept(self, tmp_path):
        source = tmp_path / "pandoc.docx"
        subprocess.run(["pandoc", "-f", "markdown", "-M", "title=Pandoc title", "-M", "author=Pan Doc",
                        "-M", "project=Apollo", "-o", str(source)], input=b"body text\n", check=True)
        doc = qf.Document(str(source))
        props = doc.built_in_document_properties
        assert (props.title, props.author) == ("Pandoc title", "Pan Doc")
        assert props.created_time.tzinfo is not None
        assert doc.custom_document_properties.get("project").value == "Apollo"
        props.title = "Renamed"
        doc.save(str(tmp_path / "renamed.docx"))
        before, after = parts_of(source), parts_of(tmp_path / "renamed.docx")
        # what the model does not know stays: the empty keywords element, pandoc's namespace declarations
        assert b"<cp:keywords" in after["docProps/core.xml"] and b"dcmitype" in after["docProps/core.xml"]
        def body(xml):
            return xml[xml.index(b"?>") + 2:]  # the declaration is ours
        assert body(after["docProps/core.xml"]).replace(b"Renamed", b"Pandoc title") == body(before["docProps/core.xml"])
        assert after["docProps/custom.xml"] == before["docProps/custom.xml"]
        # pandoc reads the body back as ever
        text = subprocess.run(["pandoc", "-f", "docx", "-t", "plain", str(tmp_path / "renamed.docx")],
                              capture_output=True, check=True).stdout
        assert b"body text" in text

    def test_an_untouched_document_saves_changed_properties_and_nothing_else(self, tmp_path):
        doc = qf.Document()
        qf.DocumentBuilder(doc).writeln("kept")
        doc.save(str(tmp_path / "a.docx"))
        loaded = qf.Document(str(tmp_path / "a.docx"))
        loaded.built_in_document_properties.company = "Acme"
        loaded.save(str(tmp_path / "b.docx"))
        a, b = parts_of(tmp_path / "a.docx"), parts_of(tmp_path / "b.docx")
        assert b"<Company>Acme</Company>" in b["docProps/app.xml"]
        assert b"extended-properties" in b["_rels/.rels"] and b"/docProps/app.xml" in b["[Content_Types].xml"]
        assert a["word/document.xml"] == b["word/document.xml"]
        assert qf.Document(str(tmp_path / "b.docx")).built_in_document_properties.company == "Acme"

    def test_a_clone_has_its_own_properties(self):
        doc = qf.Document()
        doc.built_in_document_properties.title = "one"
        copy = doc.clone()
        copy.built_in_document_properties.title = "two"
        assert doc.built_in_document_properties.title == "one"


class TestCommentsAndImages:
    def test_comment_dates_and_initials(self, tmp_path):
        doc = qf.Document()
        when = dt.datetime(2026, 3, 4, 5, 6, 7, tzinfo=UTC)
        comment = qf.Comment(doc, "Ann Lee", "AL", when)
        comment.set_text("check this")
        doc.first_section.body.first_paragraph.append_child(comment)
        assert (comment.author, comment.initial, comment.date_time) == ("Ann Lee", "AL", when)
        doc.save(str(tmp_path / "c.docx"))
        loaded = qf.Document(str(tmp_path / "c.docx"))
        assert loaded.comments.count == 1
        loaded.first_section.body.first_paragraph.append_child(qf.Comment(loaded, "Bo", "B", dt.datetime(2000, 1, 1)))
        loaded.save(str(tmp_path / "d.docx"))
        # the loaded date and initials are written back; a naive date is stored as UTC
        comments = parts_of(tmp_path / "d.docx")["word/comments.xml"]
        assert b'w:initials="AL"' in comments and b'w:date="2026-03-04T05:06:07Z"' in comments
        assert b'w:date="2000-01-01T00:00:00Z"' in comments

    def test_image_data_as_a_stream_and_as_bytes(self):
        png = tiny_png()
        shape = qf.DocumentBuilder(qf.Document()).insert_image(png)
        data = shape.image_data
        assert data.to_byte_array() == png
        s = data.to_stream()
        assert s.read(8) == b"\x89PNG\r\n\x1a\n"
        s.seek(0)
        assert s.read() == png and s.writable() is False
        with s:
            pass
        assert s.closed
