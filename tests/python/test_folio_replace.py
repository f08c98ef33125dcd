"""Find and replace driven from Python over generated documents: the text after replacing is
what Python's own replacing gives on the text before, and runs no match touched come through
with their formatting, as python-docx reads the saved file."""

import io

import pytest

qf = pytest.importorskip("quorix.folio")
docx = pytest.importorskip("docx")
hypothesis = pytest.importorskip("hypothesis")
from hypothesis import given, settings, strategies as st  # noqa: E402

# A small alphabet makes matches frequent, adjacent and spread over run boundaries.
piece = st.text(alphabet="ab c", min_size=1, max_size=6)
runs = st.lists(st.tuples(piece, st.booleans()), min_size=1, max_size=6)


def build(pieces):
    document = qf.Document()
    builder = qf.DocumentBuilder(document)
    for text, bold in pieces:
        builder.font.bold = bold
        builder.write(text)
    return document


def read_back(document):
    out = io.BytesIO()
    document.save(out, qf.SaveFormat.DOCX)
    out.seek(0)
    (paragraph,) = docx.Document(out).paragraphs
    return [(r.text, bool(r.bold)) for r in paragraph.runs if r.text]


@settings(max_examples=60, deadline=None)
@given(pieces=runs, pattern=st.text(alphabet="abc ", min_size=1, max_size=3), replacement=st.text(alphabet="XY$1", max_size=4))
def test_replacing_matches_python_and_keeps_untouched_runs(pieces, pattern, replacement):
    document = build(pieces)
    before = "".join(t for t, _ in pieces)
    count = document.range.replace(pattern, replacement)
    after = read_back(document)

    assert "".join(t for t, _ in after) == before.replace(pattern, replacement)
    assert count == before.count(pattern)
    # Where matches fall, in order; a run none of them overlaps must be there unchanged.
    spans, at = [], before.find(pattern)
    while at >= 0:
        spans.append((at, at + len(pattern)))
        at = before.find(pattern, at + len(pattern))
    start = 0
    for text, bold in pieces:
        end = start + len(text)
        if not any(s < end and e > start for s, e in spans):
            assert (text, bold) in after
        start = end


def test_case_is_matched_by_default_and_options_change_it():
    document = build([("Cat cat CAT", False)])
    assert document.range.replace("cat", "dog") == 1
    options = qf.replacing.FindReplaceOptions()
    assert options.match_case is True
    options.match_case = False
    assert document.range.replace("CAT", "cow", options) == 2
    assert document.range.text.startswith("cow dog cow")
