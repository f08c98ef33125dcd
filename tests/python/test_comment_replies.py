"""Comment threads from Python: replies, their parent and the done mark, through a save, and the
saved file opened by python-docx."""

import datetime as dt
import zipfile

import pytest

qf = pytest.importorskip("quorix.folio")
docx = pytest.importorskip("docx")

UTC = dt.timezone.utc
W = "{http://schemas.openxmlformats.org/wordprocessingml/2006/main}"
W15 = "{http://schemas.microsoft.com/office/word/2012/wordml}"


def commented(text="check this"):
    doc = qf.Document()
    builder = qf.DocumentBuilder(doc)
    builder.write("commented")
    c = qf.Comment(doc, "Ann Lee", "AL", dt.datetime(2026, 3, 4, 5, 6, 7, tzinfo=UTC))
    c.set_text(text)
    doc.first_section.body.first_paragraph.append_child(c)
    return doc, c


def test_replies_ancestor_and_done_through_a_save(tmp_path):
    doc, c = commented()
    r = c.add_reply("Bo", "B", dt.datetime(2026, 3, 5, 8, 0, 0), "ok")
    c.add_reply("Cy", "C", dt.datetime(2026, 3, 6, 8, 0, 0), "fine")
    assert [x.author for x in c.replies] == ["Bo", "Cy"]
    assert r.ancestor == c and c.ancestor is None
    assert (r.initial, r.get_text().strip()) == ("B", "ok")
    c.done = True
    doc.save(str(tmp_path / "t.docx"))

    loaded = qf.Document(str(tmp_path / "t.docx"))
    parent = loaded.comments[0]
    assert loaded.comments.count == 3
    assert parent.done is True and parent.ancestor is None
    assert [x.author for x in parent.replies] == ["Bo", "Cy"]
    assert [x.done for x in parent.replies] == [False, False]
    assert parent.replies[0].ancestor == parent
    # a naive date is stored as UTC and read back as such
    assert parent.replies[0].date_time == dt.datetime(2026, 3, 5, 8, 0, 0, tzinfo=UTC)

    parent.remove_reply(parent.replies[0])
    assert [x.author for x in parent.replies] == ["Cy"]
    parent.remove_all_replies()
    assert parent.replies.count == 0 and loaded.comments.count == 1
    with pytest.raises(RuntimeError):
        parent.remove_reply(parent)


def test_python_docx_opens_the_saved_thread(tmp_path):
    doc, c = commented()
    c.add_reply("Bo", "B", dt.datetime(2026, 3, 5, 8, 0, 0), "ok").done = True
    path = tmp_path / "t.docx"
    doc.save(str(path))

    opened = docx.Document(str(path))
    assert opened.paragraphs[0].text == "commented"
    parts = {str(p.partname): p for p in opened.part.package.iter_parts()}
    comments = docx.oxml.parse_xml(parts["/word/comments.xml"].blob)
    assert [e.get(W + "author") for e in comments.iter(W + "comment")] == ["Ann Lee", "Bo"]
    thread = docx.oxml.parse_xml(parts["/word/commentsExtended.xml"].blob)
    entries = list(thread.iter(W15 + "commentEx"))
    assert [e.get(W15 + "done") for e in entries] == ["0", "1"]
    assert entries[1].get(W15 + "paraIdParent") == entries[0].get(W15 + "paraId")
    with zipfile.ZipFile(path) as z:
        assert b"commentsExtended" in z.read("word/_rels/document.xml.rels")
