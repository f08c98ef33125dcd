"""python -m quorix.folio: conversions, info, text, the progress bar, exit codes and messages."""

import importlib.util
import io
import subprocess

import pytest

from conftest import PKG, run_python

qf = pytest.importorskip("quorix.folio")
spec = importlib.util.spec_from_file_location("folio_cli", PKG / "folio" / "__main__.py")
cli = importlib.util.module_from_spec(spec)
spec.loader.exec_module(cli)


class Terminal(io.StringIO):
    def isatty(self):
        return True


@pytest.fixture(scope="module")
def sample(tmp_path_factory):
    path = tmp_path_factory.mktemp("cli") / "sample.docx"
    doc = qf.Document()
    builder = qf.DocumentBuilder(doc)
    builder.writeln("First paragraph of the sample")
    builder.writeln("Second one")
    doc.save(str(path))
    return path


def run(*argv):
    out, err = io.StringIO(), io.StringIO()
    code = cli.main([str(a) for a in argv], out, err)
    return code, out.getvalue(), err.getvalue()


@pytest.mark.parametrize("target,fmt,expect", [
    ("out.md", None, "First paragraph of the sample"),
    ("out.txt", None, "Second one"),
    ("out.data", "markdown", "First paragraph"),
    ("out.data", "txt", "Second one"),
])
def test_convert_by_extension_or_format(sample, tmp_path, target, fmt, expect):
    code, out, err = run("convert", sample, tmp_path / target, *(["--format", fmt] if fmt else []))
    assert (code, out, err) == (0, "", "")
    assert expect in (tmp_path / target).read_text(encoding="utf-8-sig")


def test_convert_to_pdf_gives_the_text_to_pdftotext(sample, tmp_path):
    code, out, err = run("convert", sample, tmp_path / "out.pdf")
    assert (code, out, err) == (0, "", "")
    text = subprocess.run(["pdftotext", str(tmp_path / "out.pdf"), "-"], check=True, capture_output=True, text=True).stdout
    assert "First paragraph of the sample" in text


def test_convert_to_docx_loads_back(sample, tmp_path):
    assert run("convert", sample, tmp_path / "copy.docx")[0] == 0
    assert qf.Document(str(tmp_path / "copy.docx")).get_text().split() == "First paragraph of the sample Second one".split()


@pytest.fixture(scope="module")
def pages(tmp_path_factory):
    """Four pages, each with a word of its own."""
    path = tmp_path_factory.mktemp("cli") / "pages.docx"
    doc = qf.Document()
    builder = qf.DocumentBuilder(doc)
    for i, word in enumerate(("alpha", "bravo", "charlie", "delta")):
        if i:
            builder.insert_break(qf.BreakType.PAGE_BREAK)
        builder.writeln(f"page {word}")
    doc.save(str(path))
    return path


def pdf_pages(path):
    info = subprocess.run(["pdfinfo", str(path)], check=True, capture_output=True, text=True).stdout
    text = subprocess.run(["pdftotext", str(path), "-"], check=True, capture_output=True, text=True).stdout
    return int(dict(line.split(":", 1) for line in info.splitlines())["Pages"]), text.split()


@pytest.mark.parametrize("spec,count,words", [
    ("2-3", 2, ["bravo", "charlie"]),
    ("3", 1, ["charlie"]),
    ("2-", 3, ["bravo", "charlie", "delta"]),
    ("3-99", 2, ["charlie", "delta"]),   # the end of the document bounds the range
])
def test_convert_pages_of_a_pdf(pages, tmp_path, spec, count, words):
    assert run("convert", pages, tmp_path / "out.pdf", "--pages", spec) == (0, "", "")
    got_count, text = pdf_pages(tmp_path / "out.pdf")
    assert (got_count, [w for w in text if w != "page"]) == (count, words)


def test_convert_pages_to_pictures_writes_a_file_a_page(pages, tmp_path):
    assert run("convert", pages, tmp_path / "p.png", "--pages", "2-3") == (0, "", "")
    assert sorted(p.name for p in tmp_path.iterdir()) == ["p-2.png", "p-3.png"]
    assert all(p.read_bytes().startswith(b"\x89PNG\r\n\x1a\n") for p in tmp_path.iterdir())
    assert (tmp_path / "p-2.png").read_bytes() != (tmp_path / "p-3.png").read_bytes()
    assert run("convert", pages, tmp_path / "one.svg", "--pages", "4") == (0, "", "")
    assert (tmp_path / "one.svg").read_bytes().lstrip().startswith(b"<?xml")
    # a TIFF holds all the pages it is given, with or without --pages
    assert run("convert", pages, tmp_path / "all.tif", "--pages", "2-3") == (0, "", "")
    assert (tmp_path / "all.tif").exists() and not (tmp_path / "all-2.tif").exists()
    assert run("convert", pages, tmp_path / "every.tif") == (0, "", "")
    # without --pages a picture holds the first page, and the user is told of the others
    code, _, err = run("convert", pages, tmp_path / "first.png")
    assert code == 0 and err == f"note: '{tmp_path / 'first.png'}' holds page 1 of 4; --pages 1-4 writes each page to a file\n"


def test_convert_pages_shows_a_step_a_file_on_a_terminal(pages, tmp_path):
    terminal = Terminal()
    assert cli.main(["convert", str(pages), str(tmp_path / "p.jpeg"), "--pages", "1-3"], io.StringIO(), terminal) == 0
    frames = terminal.getvalue().split("\r")[1:]
    # the files to write are known once the document is read and laid out
    assert [f.split("]")[1].split()[0] for f in frames] == ["0/2", "1/4", "2/4", "3/4", "4/4"]
    assert "writing p-3.jpeg" in frames[3]


def test_info_and_text(sample):
    code, out, _ = run("info", sample)
    assert code == 0
    rows = dict(line.split(None, 1) for line in out.splitlines())
    assert rows == {"file": str(sample), "format": "docx", "encrypted": "no", "pages": "1", "sections": "1",
                    "words": "7", "comments": "0", "revisions": "no"}
    code, out, _ = run("text", sample)
    assert (code, out.split("\n")[:2]) == (0, ["First paragraph of the sample", "Second one"])


@pytest.mark.parametrize("argv,code,message", [
    (("convert", "{dir}/missing.docx", "{dir}/o.md"), 3, "cannot read '{dir}/missing.docx': no such file"),
    (("convert", "{bad}", "{dir}/o.md"), 1, "cannot read '{bad}': "),
    (("convert", "{sample}", "{dir}/o.xps"), 2, "cannot tell the format of '{dir}/o.xps' from its extension"),
    (("convert", "{sample}", "{dir}/o.md", "--format", "xps"), 2,
     "unknown format 'xps'; known: docx, word_ml, flat_opc, rtf, pdf, svg, html, mhtml, epub, odt, text, markdown, xlsx, tiff, png, bmp, jpeg"),
    (("convert", "{sample}", "{dir}/none/o.md"), 3, "cannot write '{dir}/none/o.md': no such folder"),
    (("info", "{dir}"), 3, "cannot read '{dir}': not a readable file"),
    (("text", "{bad}"), 1, "(UnsupportedFileFormatException)"),
    (("convert", "{sample}", "{dir}/o.pdf", "--pages", "3-2"), 2,
     "--pages '3-2' is not a page range; give N, A-B or A- (pages count from 1)"),
    (("convert", "{sample}", "{dir}/o.pdf", "--pages", "0"), 2, "--pages '0' is not a page range"),
    (("convert", "{sample}", "{dir}/o.pdf", "--pages", "two"), 2, "--pages 'two' is not a page range"),
    (("convert", "{sample}", "{dir}/o.pdf", "--pages", "2-"), 2,
     "cannot write '{dir}/o.pdf': --pages 2- starts past the last page of '{sample}', which has 1"),
    (("convert", "{sample}", "{dir}/o.md", "--pages", "1"), 2,
     "--pages is for the formats that write laid-out pages (pdf, svg, tiff, png, bmp, jpeg), not markdown"),
])
def test_failures_name_the_file_and_cause(sample, tmp_path, argv, code, message):
    bad = tmp_path / "bad.docx"
    bad.write_bytes(b"not a document")
    values = dict(dir=tmp_path, bad=bad, sample=sample)
    got, out, err = run(*(a.format(**values) for a in argv))
    assert got == code
    assert out == ""
    assert err.startswith(f"python -m quorix.folio {argv[0]}: ") and message.format(**values) in err
    assert "Traceback" not in err
    assert not (tmp_path / "o.pdf").exists()


def test_progress_bar_only_on_a_terminal(sample, tmp_path):
    terminal = Terminal()
    assert cli.main(["convert", str(sample), str(tmp_path / "a.md")], io.StringIO(), terminal) == 0
    frames = terminal.getvalue().split("\r")[1:]
    assert [f.split("]")[1].split()[0] for f in frames] == ["0/2", "1/2", "2/2"]
    assert "reading sample.docx" in frames[0] and "writing a.md" in frames[1] and frames[-1].rstrip().endswith("done")
    quiet = io.StringIO()
    assert cli.main(["convert", str(sample), str(tmp_path / "b.md")], io.StringIO(), quiet) == 0
    assert quiet.getvalue() == ""


def test_runs_as_python_dash_m_and_keeps_the_module_as_it_is(sample, tmp_path):
    run_ = run_python(f"""
        import runpy, sys
        sys.argv = ["x", "convert", {str(sample)!r}, {str(tmp_path / "m.txt")!r}]
        try:
            runpy.run_module("quorix.folio", run_name="__main__", alter_sys=True)
        except SystemExit as e:
            print("exit", e.code)
        import quorix.folio
        print(quorix.folio.__path__, type(quorix.folio.__loader__).__name__)
    """)
    assert run_.stdout.splitlines() == ["exit 0", "[] ExtensionFileLoader"], run_
    assert "Second one" in (tmp_path / "m.txt").read_text(encoding="utf-8-sig")


def test_usage_error_exits_2():
    proc = run_python("import sys, runpy; sys.argv=['x', 'frobnicate']; runpy.run_module('quorix.folio', run_name='__main__')")
    assert proc.returncode == 2 and "invalid choice: 'frobnicate'" in proc.stderr
