"""The document library as Python sees it: the bound types of quorix.folio driving real
managed work, with argument dispatch, enumerations, streams, errors and object lifetime."""

import gc
import io
import pathlib
import zipfile

import pytest

qf = pytest.importorskip("quorix.folio")


@pytest.fixture
def doc():
    document = qf.Document()
    builder = qf.DocumentBuilder(document)
    builder.font.size = 14.0
    builder.font.bold = True
    builder.writeln("Hello")
    builder.font.bold = False
    builder.write("world")
    return document


def test_a_document_built_from_python_saves_in_every_format(doc, tmp_path):
    for name in ("out.docx", "out.txt", "out.md"):
        doc.save(str(tmp_path / name))  # the first overload, the format from the extension
    assert (tmp_path / "out.txt").read_text(encoding="utf-8-sig").split() == ["Hello", "world"]
    assert "**Hello**" in (tmp_path / "out.md").read_text(encoding="utf-8")
    again = qf.Document(str(tmp_path / "out.docx"))
    assert again.get_text().split() == ["Hello", "world"]
    # path-like objects are file names too
    doc.save(tmp_path / "path.docx")
    assert qf.Document(tmp_path / "path.docx").get_text() == again.get_text()


def test_streams_in_both_directions(doc):
    out = io.BytesIO()
    doc.save(out, qf.SaveFormat.DOCX)
    data = out.getvalue()
    assert data[:2] == b"PK"
    loaded = qf.Document(io.BytesIO(data))
    assert loaded.get_text().split() == ["Hello", "world"]
    text = io.BytesIO()
    loaded.save(text, qf.SaveFormat.TEXT)
    assert text.getvalue().decode("utf-8-sig").split() == ["Hello", "world"]


def test_overloads_report_every_candidate(doc):
    with pytest.raises(TypeError) as raised:
        doc.save(42)
    (messages,) = raised.value.args
    assert isinstance(messages, list) and len(messages) == 5
    assert messages[-1] == "can't build Stream from 'int'"
    with pytest.raises(TypeError) as raised:
        doc.save("x.docx", 20)  # a plain int never selects an enumeration overload
    assert "can't build SaveFormat value from 'int'" in raised.value.args[0]


def test_enumerations_are_int_enums():
    assert issubclass(qf.WatermarkLayout, __import__("enum").IntEnum)
    assert qf.WatermarkLayout(315) is qf.WatermarkLayout.DIAGONAL
    assert qf.WatermarkLayout.__name__ == "WatermarkLayout"
    assert qf.FileFormatUtil.save_format_to_extension(qf.SaveFormat.MARKDOWN) == ".md"
    assert qf.FileFormatUtil.extension_to_save_format(".docx") is qf.SaveFormat.DOCX


def test_properties_and_static_fields(doc):
    font = qf.DocumentBuilder(doc).font
    font.size = 11.5
    assert font.size == 11.5
    with pytest.raises(AttributeError, match=r"^'Font' object does not support deletion of 'size' property$"):
        del font.size
    with pytest.raises(TypeError, match="numeric argument expected, got 'str'"):
        font.size = "big"
    with pytest.raises(AttributeError):
        doc.first_section = None  # read-only
    assert qf.ControlChar.CELL_CHAR == "\x07"
    assert qf.ControlChar.PARAGRAPH_BREAK == "\r"


def _entries(docx):
    with zipfile.ZipFile(io.BytesIO(docx)) as z:
        return {i.filename: (i.compress_type, i.compress_size, z.read(i)) for i in z.infolist()}


def test_a_loaded_document_is_built_when_first_used(doc):
    out = io.BytesIO()
    doc.save(out, qf.SaveFormat.DOCX)
    source = out.getvalue()
    # Saved untouched, it is written back with the very same entries.
    again = io.BytesIO()
    qf.Document(io.BytesIO(source)).save(again, qf.SaveFormat.DOCX)
    assert _entries(again.getvalue()) == _entries(source)

    # Damage only the build can find is raised by the first use, and again by every later one.
    damaged = io.BytesIO()
    with zipfile.ZipFile(io.BytesIO(source)) as src, zipfile.ZipFile(damaged, "w") as dst:
        for item in src.infolist():
            data = src.read(item)
            if item.filename == "word/document.xml":
                data = b'<w:document xmlns:w="http://schemas.openxmlformats.org/wordprocessingml/2006/main"/>'
            dst.writestr(item.filename, data)
    loaded = qf.Document(io.BytesIO(damaged.getvalue()))
    for use in (loaded.get_text, lambda: loaded.save(io.BytesIO(), qf.SaveFormat.DOCX)):
        with pytest.raises(RuntimeError, match=r"FileCorruptedException\): The document part has no body\.$"):
            use()


def test_managed_failures_surface_as_runtime_errors(tmp_path):
    broken = tmp_path / "broken.docx"
    broken.write_bytes(b"PK\x03\x04 this is no archive")
    with pytest.raises(RuntimeError, match=r"^Proxy error\(Quorix\.Folio\.\w+Exception\): "):
        qf.Document(str(broken))
    font = qf.DocumentBuilder(qf.Document()).font
    with pytest.raises(RuntimeError, match=r"^Proxy error\(System\.ArgumentOutOfRangeException\)"):
        font.size = 100000.0


def test_wrappers_compare_and_hash_through_the_managed_side(doc):
    a, b = doc.first_section, doc.first_section
    assert a is not b and a == b and hash(a) == hash(b)
    assert a != doc.first_section.body and (a == "section") is False
    with pytest.raises(TypeError):
        a < b
    assert a.get_type().full_name == "Quorix.Folio.Section"
    assert type(a) is qf.Section


def _freed():
    import ctypes
    import os

    from conftest import runtime_dir

    wrap = ctypes.CDLL(str(runtime_dir() / "libquorix.embed.coreclrwrap.so"), mode=os.RTLD_NOLOAD | os.RTLD_NOW)
    wrap.coreclr_wrap_create_delegate.argtypes = [ctypes.c_char_p] * 3 + [ctypes.POINTER(ctypes.c_void_p)]
    address = ctypes.c_void_p()
    assert wrap.coreclr_wrap_create_delegate(b"WrpInterop.Quorix.Folio", b"Quorix.WrpGen.Interop.ExchangeHost",
                                             b"FreedHandleCount", ctypes.byref(address)) == 0
    return ctypes.PYFUNCTYPE(ctypes.c_int64)(address.value)


def test_every_wrapper_frees_its_handle(doc):
    freed = _freed()
    gc.collect()
    before = freed()
    wrappers = [doc.first_section for _ in range(50)] + [qf.DocumentBuilder(doc).font for _ in range(50)]
    del wrappers
    gc.collect()
    # each font wrapper came with a builder wrapper of its own
    assert freed() - before == 150
