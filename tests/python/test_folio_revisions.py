"""Tracked changes made elsewhere, seen and decided from Python."""

import io
import zipfile

import pytest

qf = pytest.importorskip("quorix.folio")
docx = pytest.importorskip("docx")

CHANGES = ('<w:ins w:id="1" w:author="Ann" w:date="2024-01-01T00:00:00Z"><w:r><w:t xml:space="preserve"> added</w:t></w:r></w:ins>'
           '<w:del w:id="2" w:author="Bob"><w:r><w:delText xml:space="preserve"> removed</w:delText></w:r></w:del>')


def tracked():
    builder = qf.DocumentBuilder(qf.Document())
    builder.write("Keep")
    plain = io.BytesIO()
    builder.document.save(plain, qf.SaveFormat.DOCX)
    out = io.BytesIO()
    with zipfile.ZipFile(io.BytesIO(plain.getvalue())) as src, zipfile.ZipFile(out, "w") as dst:
        for item in src.infolist():
            data = src.read(item.filename)
            if item.filename == "word/document.xml":
                text = data.decode("utf-8")
                at = text.index("Keep</w:t></w:r>") + len("Keep</w:t></w:r>")
                data = (text[:at] + CHANGES + text[at:]).encode("utf-8")
            dst.writestr(item, data)
    out.seek(0)
    return qf.Document(out)


def saved_text(document, fmt):
    out = io.BytesIO()
    document.save(out, fmt)
    return out.getvalue()


def test_changes_are_listed_and_both_sides_are_in_the_tree():
    doc = tracked()
    assert doc.has_revisions
    assert doc.revisions.count == 2
    assert doc.revisions.groups.count == 2
    assert doc.get_text().startswith("Keep added removed")
    # Text output shows the document as it reads with the deletion made.
    assert saved_text(doc, qf.SaveFormat.TEXT).decode("utf-8-sig").startswith("Keep added\r\n")


@pytest.mark.parametrize("accept, expected", [(True, "Keep added"), (False, "Keep removed")])
def test_deciding_all_changes_gives_what_a_word_processor_gives(accept, expected):
    doc = tracked()
    assert (doc.accept_all_revisions() if accept else doc.reject_all_revisions()) == 2
    assert not doc.has_revisions
    (paragraph,) = docx.Document(io.BytesIO(saved_text(doc, qf.SaveFormat.DOCX))).paragraphs
    assert paragraph.text == expected


def test_undecided_changes_survive_a_save():
    doc = tracked()
    qf.DocumentBuilder(doc).writeln(" touched")
    again = qf.Document(io.BytesIO(saved_text(doc, qf.SaveFormat.DOCX)))
    assert again.revisions.count == 2
    assert "Keep added removed" in again.get_text()
