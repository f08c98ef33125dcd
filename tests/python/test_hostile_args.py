"""Arguments that are not what they claim to be: impostors carrying the wrapper markers,
instances no constructor bound, wrappers of the wrong managed class. Each gets a Python error
before managed code runs; none may crash the interpreter (the risky ones run in a subprocess)."""

import io

import pytest

from conftest import run_python

qf = pytest.importorskip("quorix.folio")

IMPOSTORS = """
import quorix.folio as qf

class Slotted:
    # the wrapper layout's size, with Python objects where a handle would be
    __slots__ = ("a", "b", "c", "d")
    _quorix_clr_host = None
    _qrxsc2p_handle = ...

class Struct(Slotted):
    __slots__ = ()
    _quorix_clr_host = ...

class Plain:
    _quorix_clr_host = None
    _qrxsc2p_handle = ...

failures = []
for cls in (Slotted, Struct, Plain):
    obj = cls()
    if hasattr(obj, "__slots__"):
        for name in ("a", "b", "c", "d"):
            setattr(obj, name, object())
    for attempt in (lambda: qf.DocumentBuilder(obj), lambda: qf.Document().save(obj),
                    lambda: qf.Document() == obj):
        try:
            result = attempt()
            if result is not False:
                failures.append((cls.__name__, "accepted", result))
        except TypeError:
            pass
print("failures", failures)
"""


def test_impostors_with_the_markers_are_refused_without_reading_their_memory():
    run = run_python(IMPOSTORS, timeout=120)
    assert run.returncode == 0, run
    assert "failures []" in run.stdout, run


class TestInstancesMadeByNewAlone:
    def test_as_receiver_of_methods_and_properties(self):
        orphan = qf.Document.__new__(qf.Document)
        for attempt in (orphan.get_text, lambda: orphan.sections, lambda: hash(orphan)):
            with pytest.raises(TypeError, match="this quorix.folio.Document object has no managed object"):
                attempt()
        builder = qf.DocumentBuilder.__new__(qf.DocumentBuilder)
        with pytest.raises(TypeError, match="DocumentBuilder object has no managed object"):
            builder.bold = True
        assert "DocumentBuilder object at" in str(builder)  # str never fails

    @pytest.mark.parametrize("kind", [qf.ParagraphCollection, qf.NodeCollection, qf.StyleCollection,
                                      qf.fields.FieldCollection])
    def test_as_collection(self, kind):
        orphan = kind.__new__(kind)
        attempts = [lambda: len(orphan), lambda: orphan[0], lambda: orphan[-1:], lambda: list(orphan),
                    lambda: tuple(iter(orphan))]
        if kind is qf.StyleCollection:
            attempts.append(lambda: orphan["Normal"])  # the key indexer is asked before the length
        for attempt in attempts:
            with pytest.raises(TypeError, match=f"this {kind.__module__}.{kind.__name__} object has no managed object"):
                attempt()
        with pytest.raises(TypeError):  # the interpreter words a failed `in` by iteration itself
            qf.Paragraph(qf.Document()) in orphan

    def test_as_argument(self):
        orphan = qf.Document.__new__(qf.Document)
        with pytest.raises(TypeError, match="this quorix.folio.Document object has no managed object"):
            qf.DocumentBuilder(orphan)

    def test_initialising_later_makes_it_usable(self):
        late = qf.Document.__new__(qf.Document)
        late.__init__()
        assert late.get_text() == qf.Document().get_text()


def test_a_wrapper_of_another_class_is_no_stream():
    doc = qf.Document()
    with pytest.raises(TypeError) as raised:
        doc.save(qf.Document(), qf.SaveFormat.DOCX)
    assert "can't build Stream from 'quorix.folio.Document'" in raised.value.args[0]
    with pytest.raises(TypeError) as raised:
        qf.Document(qf.DocumentBuilder())
    assert "can't build Stream from 'quorix.folio.DocumentBuilder'" in raised.value.args[0]
    # a text file is no binary stream either
    with pytest.raises(TypeError) as raised:
        doc.save(io.StringIO(), qf.SaveFormat.TEXT)
    assert "can't build Stream from '_io.StringIO'" in raised.value.args[0]


def tiny_png():
    import struct
    import zlib

    def chunk(kind, data):
        body = kind + data
        return struct.pack(">I", len(data)) + body + struct.pack(">I", zlib.crc32(body))

    header = struct.pack(">IIBBBBB", 2, 1, 8, 2, 0, 0, 0)
    pixels = zlib.compress(b"\x00" + b"\xff\x00\x00" * 2)
    return b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", header) + chunk(b"IDAT", pixels) + chunk(b"IEND", b"")


class TestValuesRefusedBeforeManagedCode:
    def test_none_where_the_signature_is_not_nullable(self):
        builder = qf.DocumentBuilder()
        with pytest.raises(TypeError, match=r"^can't build String from 'NoneType'$"):
            builder.write(None)
        with pytest.raises(TypeError) as raised:
            qf.Document(None)  # no constructor overload takes None
        messages = raised.value.args[0]
        assert messages[0] == "function takes at most 0 arguments (1 given)"
        assert all("from 'NoneType'" in m for m in messages[1:]), messages
        with pytest.raises(TypeError) as raised:
            builder.insert_image(None)
        assert "can't build byte[] from 'NoneType'" in raised.value.args[0]
        # where the managed signature allows null, None still goes through
        options = qf.loading.LoadOptions()
        options.password = None
        assert options.password is None

    def test_measures_must_be_finite(self):
        builder = qf.DocumentBuilder()
        for bad in (float("nan"), float("inf"), -float("inf")):
            with pytest.raises(ValueError, match="a finite number is required"):
                builder.font.size = bad
            # the types of an overload matched: its ValueError is the answer, not a list
            with pytest.raises(ValueError, match="a finite number is required"):
                builder.insert_image(tiny_png(), bad, 10.0)
        builder.font.size = 12.5
        assert builder.font.size == 12.5

    def test_limits_must_not_be_negative(self):
        options = qf.loading.LoadOptions()
        default = options.max_part_size
        assert default > 0
        with pytest.raises(ValueError, match="^max_part_size must not be negative, not -1$"):
            options.max_part_size = -1
        with pytest.raises(ValueError, match="max_total_size must not be negative"):
            options.max_total_size = -(2**62)
        assert options.max_part_size == default
        options.max_part_size = 0
        assert options.max_part_size == 0
        with pytest.raises(ValueError, match="list_indentation_count must not be negative"):
            qf.saving.TxtSaveOptions().list_indentation_count = -3

    def test_a_part_size_limit_is_enforced(self, tmp_path):
        builder = qf.DocumentBuilder()
        builder.writeln("x" * 5000)
        path = tmp_path / "limit.docx"
        builder.document.save(str(path))
        options = qf.loading.LoadOptions()
        options.max_part_size = 1000
        with pytest.raises(RuntimeError):
            qf.Document(str(path), options)
        options.max_part_size = 10_000_000
        assert qf.Document(str(path), options).get_text().strip() == "x" * 5000


class TestImageSourceByPythonType:
    def test_bytes_like_are_data(self):
        png = tiny_png()
        builder = qf.DocumentBuilder()
        for data in (png, bytearray(png), memoryview(png)):
            shape = builder.insert_image(data)
            assert shape is not None
        # never tried as a file name first: bytes that are no image say so as data
        with pytest.raises(RuntimeError, match="not an image"):
            builder.insert_image(b"plainly not a picture")

    def test_str_and_path_like_are_names(self, tmp_path):
        path = tmp_path / "dot.png"
        path.write_bytes(tiny_png())
        builder = qf.DocumentBuilder()
        builder.insert_image(str(path))
        builder.insert_image(path)
        builder.insert_image(str(path), 20.0, 10.0)
        with pytest.raises(RuntimeError, match="FileNotFound"):
            builder.insert_image(str(tmp_path / "missing.png"))


def test_a_builder_whose_paragraph_was_removed_keeps_writing():
    builder = qf.DocumentBuilder()
    builder.writeln("kept")
    builder.write("doomed")
    builder.current_paragraph.remove()
    builder.write("after")
    # the builder went to the end of the document: the end of the paragraph that stayed
    assert builder.document.get_text().split() == ["keptafter"]
