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


# Expressions that never match empty text, with replacements in both syntaxes: .NET's for the
# engine, Python's for re.sub.
PATTERNS = ["a", "ab", "ba+", "a|bc", "(a)(b)?", "[ac]{2}", r"\s+", "(?P<x>b)c", "a.b", "c$", "^a"]
REPLACEMENTS = [("", ""), ("X", "X"), ("[$0]", r"[\g<0>]"), ("<$1>", r"<\g<1>>")]


@settings(max_examples=60, deadline=None)
@given(pieces=runs, pattern=st.sampled_from(PATTERNS), flags=st.sampled_from([0, __import__("re").IGNORECASE]),
       replacement=st.sampled_from(REPLACEMENTS))
def test_regular_expressions_from_python_replace_as_re_sub_does(pieces, pattern, flags, replacement):
    import re
    dotnet, python = replacement
    compiled = re.compile(pattern, flags)
    if "1" in dotnet and compiled.groups < 1:
        return
    pieces = [(t.upper() if i % 2 else t, bold) for i, (t, bold) in enumerate(pieces)]
    document = build(pieces)
    before = "".join(t for t, _ in pieces)
    options = qf.replacing.FindReplaceOptions()
    options.use_substitutions = True
    count = document.range.replace(compiled, dotnet, options)
    expected, n = compiled.subn(python, before)
    assert "".join(t for t, _ in read_back(document)) == expected
    assert count == n
