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
