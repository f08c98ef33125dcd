"""The exchange and object hosts' managed entry points, driven through the wrapper library the
running module loaded, on objects from a test assembly. Each entry point must report managed
exceptions as Python RuntimeError and never leave one unreported."""

import ctypes
import os

import pytest

from conftest import FIXTURE_ASSEMBLIES, runtime_dir

if not FIXTURE_ASSEMBLIES.exists():
    pytest.skip("the host fixture assembly is built by make test-python", allow_module_level=True)

import quorix.folio  # noqa: E402,F401  (starts the runtime and hands over the callbacks)

P = ctypes.c_void_p
INTEROP = b"WrpInterop.Quorix.Folio"
FIXTURE = b"Quorix.Tests.HostFixture"


class VariantArg(ctypes.Structure):
    _fields_ = [("tag", ctypes.c_int32), ("reserved", ctypes.c_int32), ("value", P)]


_wrap = ctypes.CDLL(str(runtime_dir() / "libquorix.embed.coreclrwrap.so"), mode=os.RTLD_NOLOAD | os.RTLD_NOW)
_wrap.coreclr_wrap_create_delegate.argtypes = [ctypes.c_char_p] * 3 + [ctypes.POINTER(P)]
_py_decref = ctypes.pythonapi.Py_DecRef
_py_decref.argtypes = [P]


def entry(assembly, type_name, method, restype, *argtypes):
    """The entry point as a callable that keeps the interpreter lock and raises a pending error."""
    address = P()
    status = _wrap.coreclr_wrap_create_delegate(assembly, type_name, method, ctypes.byref(address))
    assert status == 0, (method, status)
    return ctypes.PYFUNCTYPE(restype, *argtypes)(address.value)


def exchange(method, restype, *argtypes):
    return entry(INTEROP, b"Quorix.WrpGen.Interop.ExchangeHost", method, restype, *argtypes)


def objects(method, restype, *argtypes):
    return entry(INTEROP, b"Quorix.WrpGen.Interop.ObjectHost", method, restype, *argtypes)


def fixture(method, restype, *argtypes):
    return entry(FIXTURE, b"Quorix.Tests.HostFixture.Objects", method, restype, *argtypes)


def take_str(out):
    """The new str reference an entry point stored, owned by the caller from now on."""
    value = ctypes.cast(out, ctypes.py_object).value
    _py_decref(out.value)
    return value


def handle_variant(handle, tag=0):
    return VariantArg(tag, 0, handle)


_new_text = fixture(b"NewText", P, ctypes.c_char_p, ctypes.c_int)


def new_text(text):
    units = text.encode("utf-16-le")
    return _new_text(units, len(units) // 2)


new_point = fixture(b"NewPoint", P, ctypes.c_int, ctypes.c_int)
new_faulty = fixture(b"NewFaulty", P)
new_disposable = fixture(b"NewDisposable", P)
disposed_count = fixture(b"DisposedCount", ctypes.c_int)
point_value = fixture(b"PointValue", ctypes.c_int, P)
shift_point = fixture(b"ShiftPoint", None, P)

free_instance = exchange(b"FreeInstance", None, P)
freed_count = exchange(b"FreedHandleCount", ctypes.c_int64)
exchange_type_name = exchange(b"GetTypeName", ctypes.c_int, P, ctypes.POINTER(P))
box_stc_target = exchange(b"BoxStcTarget", ctypes.c_int, P, ctypes.POINTER(P))
init_services = exchange(b"InitServices", ctypes.c_int)

to_string_of_obj = objects(b"ToStringOfObj", ctypes.c_int, P, ctypes.POINTER(P))
to_string_of_stc = objects(b"ToStringOfStc", ctypes.c_int, P, ctypes.POINTER(P))
hash_of_obj = objects(b"GetHashOfObj", ctypes.c_int32, P)
hash_of_stc = objects(b"GetHashOfStc", ctypes.c_int32, P)
equals_of_obj = objects(b"IsEqualsOfObj", ctypes.c_int, P, ctypes.POINTER(VariantArg))
equals_of_stc = objects(b"IsEqualsOfStc", ctypes.c_int, P, ctypes.POINTER(VariantArg))
is_type_of = objects(b"IsTypeOf", ctypes.c_int, P, ctypes.POINTER(VariantArg))
object_type_name = objects(b"GetTypeName", ctypes.c_int, ctypes.POINTER(VariantArg), ctypes.POINTER(P))
get_obj_type = objects(b"GetObjType", ctypes.c_int, P, ctypes.POINTER(P))
get_stc_type = objects(b"GetStcType", ctypes.c_int, P, ctypes.POINTER(P))
dispose = objects(b"Dispose", ctypes.c_int, P)


@pytest.fixture
def handles():
    """Handles a test creates; every one is freed afterwards through the exchange host."""
    made = []
    yield made
    before = freed_count()
    for handle in made:
        free_instance(handle)
    assert freed_count() - before == len(made)


def test_text_and_type_names(handles):
    text = new_text("caf\u00e9 \U0001F600")
    handles.append(text)
    out = P()
    assert to_string_of_obj(text, ctypes.byref(out)) == 1
    assert take_str(out) == "caf\u00e9 \U0001F600"
    assert exchange_type_name(text, ctypes.byref(out)) == 1
    assert take_str(out) == "System.Text.StringBuilder"
    assert object_type_name(ctypes.byref(handle_variant(text)), ctypes.byref(out)) == 1
    assert take_str(out) == "System.Text.StringBuilder"


def test_type_objects_and_type_tests(handles):
    text, point = new_text("t"), new_point(1, 2)
    handles += [text, point]
    text_type, point_type = P(), P()
    assert get_obj_type(text, ctypes.byref(text_type)) == 1
    assert get_stc_type(point, ctypes.byref(point_type)) == 1
    handles += [text_type.value, point_type.value]
    out = P()
    assert to_string_of_obj(text_type, ctypes.byref(out)) == 1
    assert take_str(out) == "System.Text.StringBuilder"
    assert is_type_of(text, ctypes.byref(handle_variant(text_type.value))) == 1
    assert is_type_of(point, ctypes.byref(handle_variant(text_type.value))) == 0
    assert is_type_of(point, ctypes.byref(handle_variant(point_type.value, tag=0))) == 1


def test_structures_compare_and_hash_by_value(handles):
    a, b, c = new_point(3, 4), new_point(3, 4), new_point(4, 3)
    handles += [a, b, c]
    assert equals_of_stc(a, ctypes.byref(handle_variant(b, tag=1))) == 1
    assert equals_of_stc(a, ctypes.byref(handle_variant(c, tag=1))) == 0
    assert hash_of_stc(a) == hash_of_stc(b)
    out = P()
    assert to_string_of_stc(a, ctypes.byref(out)) == 1
    assert take_str(out) == "{X=3,Y=4}"
    text = new_text("x")
    handles.append(text)
    assert equals_of_obj(text, ctypes.byref(handle_variant(text))) == 1
    assert equals_of_obj(text, ctypes.byref(handle_variant(a, tag=1))) == 0
    assert equals_of_obj(text, ctypes.byref(handle_variant(None))) == 0


def test_boxing_makes_an_independent_copy(handles):
    original = new_point(5, 6)
    copy = P()
    assert box_stc_target(original, ctypes.byref(copy)) == 1
    handles += [original, copy.value]
    assert copy.value != original
    shift_point(original)
    assert point_value(original) == 6007
    assert point_value(copy) == 5006


def test_managed_exceptions_surface_as_runtime_errors(handles):
    faulty = new_faulty()
    text = new_text("x")
    handles += [faulty, text]
    out = P()
    with pytest.raises(RuntimeError, match=r"^Proxy error\(System.InvalidOperationException\): no text for you$"):
        to_string_of_obj(faulty, ctypes.byref(out))
    with pytest.raises(RuntimeError, match=r"^Proxy error\(System.NotSupportedException\): no hash either$"):
        hash_of_obj(faulty)
    with pytest.raises(RuntimeError, match=r"^Proxy error\(System.ArgumentException\): nor equality$"):
        equals_of_obj(faulty, ctypes.byref(handle_variant(text)))
    with pytest.raises(RuntimeError, match=r"^Proxy error\(System.ArgumentException\): '.*StringBuilder' is not a structure$"):
        box_stc_target(text, ctypes.byref(out))
    with pytest.raises(RuntimeError, match=r"^Proxy error\(System.NotSupportedException\): a value of variant kind 5"):
        object_type_name(ctypes.byref(VariantArg(5, 0, None)), ctypes.byref(out))
    # a failed call leaves nothing pending behind it
    assert to_string_of_obj(text, ctypes.byref(out)) == 1
    assert take_str(out) == "x"


def test_dispose_reaches_disposables_only(handles):
    disposable, text = new_disposable(), new_text("x")
    handles += [disposable, text]
    before = disposed_count()
    assert dispose(disposable) == 0
    assert dispose(text) == 0
    assert disposed_count() == before + 1


def test_services_can_be_asked_again():
    assert init_services() == 0
