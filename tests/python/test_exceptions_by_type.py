"""Managed exceptions of bound types caught by their Python class: the engine's load failures,
the fixture's exception hierarchy with inner exceptions, the unchanged text of every managed
error, and the release of the managed exception behind each Python one."""

import gc
import io
import zipfile

import pytest

from binding_support import load_bindtest

qf = pytest.importorskip("quorix.folio")
bt = load_bindtest()

COMPOUND = bytes.fromhex("d0cf11e0a1b11ae1")


def raised(call, *args):
    with pytest.raises(BaseException) as info:
        call(*args)
    return info.value


class TestEngineFailures:
    @pytest.mark.parametrize("data, cls, text", [
        (b"", qf.FileCorruptedException, "Proxy error(Quorix.Folio.FileCorruptedException): The file is empty."),
        (bytes(range(256)) * 4, qf.UnsupportedFileFormatException,
         "Proxy error(Quorix.Folio.UnsupportedFileFormatException): "
         "The file's format is not recognised: it is not a document format this library reads."),
        (COMPOUND + b"\0" * 504, qf.UnsupportedFileFormatException,
         "Proxy error(Quorix.Folio.UnsupportedFileFormatException): "
         "The file is a legacy binary word-processing document (DOC); loading that format is not supported."),
        (COMPOUND + b"\0" * 504 + "EncryptionInfo".encode("utf-16-le"), qf.IncorrectPasswordException,
         "Proxy error(Quorix.Folio.IncorrectPasswordException): "
         "The document is password protected; open it with the password in the load options."),
    ], ids=["empty", "binary", "legacy", "encrypted"])
    def test_a_load_failure_is_its_bound_class_and_a_runtime_error(self, data, cls, text):
        try:
            qf.Document(io.BytesIO(data))
        except cls as e:
            assert type(e) is cls and isinstance(e, RuntimeError)
            assert str(e) == text and e.args == (text,)
            assert e.message == text.split("): ", 1)[1] and e.inner_exception is None
        else:
            pytest.fail("no exception")

    def test_the_classes_are_exceptions_under_their_bound_names(self):
        for cls in (qf.FileCorruptedException, qf.UnsupportedFileFormatException, qf.IncorrectPasswordException,
                    qf.UnsupportedEncryptionException):
            assert issubclass(cls, RuntimeError) and cls.__module__ == "quorix.folio"
            assert cls.__qualname__ == cls._qrxsc2p_wrapper.__name__
        assert not issubclass(qf.FileCorruptedException, qf.UnsupportedFileFormatException)

    def test_an_unbound_inner_exception_is_a_plain_runtime_error(self):
        saved = io.BytesIO()
        qf.Document().save(saved, qf.SaveFormat.DOCX)
        damaged = io.BytesIO()
        with zipfile.ZipFile(io.BytesIO(saved.getvalue())) as src, zipfile.ZipFile(damaged, "w") as dst:
            for item in src.infolist():
                dst.writestr(item.filename, b"<w:document" if item.filename == "word/document.xml" else src.read(item))
        e = raised(lambda: qf.Document(io.BytesIO(damaged.getvalue())).get_text())
        assert type(e) is qf.FileCorruptedException
        assert e.message.startswith("The document contains malformed XML: ")
        inner = e.inner_exception
        assert type(inner) is RuntimeError and str(inner).startswith("Proxy error(System.Xml.XmlException): ")
        assert not hasattr(inner, "inner_exception")

    def test_unbound_managed_failures_stay_plain_runtime_errors(self):
        font = qf.DocumentBuilder(qf.Document()).font
        e = raised(setattr, font, "size", 100000.0)
        assert type(e) is RuntimeError and str(e).startswith("Proxy error(System.ArgumentOutOfRangeException)")

    def test_raised_from_python_it_has_no_managed_side(self):
        e = qf.FileCorruptedException("made in Python")
        assert e.args == ("made in Python",) and e.message is None and e.inner_exception is None
        with pytest.raises(AttributeError):
            e.no_such_member


class TestFixtureHierarchy:
    def test_the_base_class_catches_its_own_exception_with_its_members(self):
        e = raised(bt.Thrower.fail_typed, 0)
        assert type(e) is bt.ProbeException
        assert str(e) == "Proxy error(Quorix.BindTest.ProbeException): base failure"
        assert e.args == ("Proxy error(Quorix.BindTest.ProbeException): base failure",)
        assert e.message == "base failure" and e.code == 7 and e.inner_exception is None
        assert type(e._qrxsc2p_object) is bt.ProbeException._qrxsc2p_wrapper

    def test_a_bound_base_catches_a_derived_one_and_inner_exceptions_chain(self):
        with pytest.raises(bt.ProbeException) as info:
            bt.Thrower.fail_typed(1)
        e = info.value
        assert type(e) is bt.DerivedProbeException and issubclass(bt.DerivedProbeException, bt.ProbeException)
        assert str(e) == "Proxy error(Quorix.BindTest.DerivedProbeException): derived failure" and e.code == 9
        middle = e.inner_exception
        assert type(middle) is bt.ProbeException and middle.code == 8
        assert str(middle) == "Proxy error(Quorix.BindTest.ProbeException): middle"
        root = middle.inner_exception
        assert type(root) is RuntimeError
        assert str(root) == "Proxy error(System.InvalidOperationException): root cause"

    def test_an_unbound_subclass_arrives_as_its_nearest_bound_class(self):
        e = raised(bt.Thrower.fail_typed, 2)
        assert type(e) is bt.DerivedProbeException
        assert str(e) == "Proxy error(Quorix.BindTest.HiddenProbeException): hidden failure"

    def test_an_unreadable_message_still_reports_the_type(self):
        e = raised(bt.Thrower.fail_typed, 3)
        assert type(e) is RuntimeError and str(e) == "Proxy error(Quorix.BindTest.FaultyProbeException): <unknown>"

    def test_other_managed_exceptions_keep_their_text_and_class(self):
        e = raised(bt.Thrower.fail, "boom")
        assert type(e) is RuntimeError and str(e) == "Proxy error(System.ApplicationException): boom"

    def test_each_python_exception_releases_its_managed_exception(self):
        from test_binding_calls import _freed_count as freed

        gc.collect()
        before = freed()
        for _ in range(200):
            try:
                bt.Thrower.fail_typed(1)
            except bt.ProbeException as e:
                assert e.inner_exception.code == 8
        gc.collect()
        # the derived exception and its bound inner one each had a wrapper
        assert freed() - before == 400

