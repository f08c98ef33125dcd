"""quorix.pyhold's capsule table driven through ctypes, as quorix.folio drives it natively,
and the handle release of the wrapper placeholders of quorix.pyintro and quorix.pygfx.

The releaser is process-wide and quorix.folio installs the real one, so every case that
lets a non-null handle be freed runs in a fresh interpreter."""

import ctypes
import json
import os
import pathlib
import subprocess
import sys
import textwrap

import pytest

import quorix.pygfx
import quorix.pyhold
import quorix.pyintro

CAPSULE = b"quorix.pyhold._C_APIF"

# The same declarations serve this process and the isolated ones.
CAPI_PRELUDE = """
import ctypes, gc, json
import quorix.pyhold

ctypes.pythonapi.PyCapsule_Import.restype = ctypes.c_void_p
ctypes.pythonapi.PyCapsule_Import.argtypes = [ctypes.c_char_p, ctypes.c_int]
_table = (ctypes.c_void_p * 6).from_address(ctypes.pythonapi.PyCapsule_Import(b"quorix.pyhold._C_APIF", 0))
cast_new = ctypes.PYFUNCTYPE(ctypes.py_object, ctypes.c_int, ctypes.c_void_p)(_table[0])
cast_is_type = ctypes.PYFUNCTYPE(ctypes.c_int, ctypes.py_object)(_table[1])
handle_new = ctypes.PYFUNCTYPE(ctypes.py_object, ctypes.c_void_p, ctypes.c_void_p)(_table[2])
handle_is_type = ctypes.PYFUNCTYPE(ctypes.c_int, ctypes.py_object)(_table[3])
set_releaser = ctypes.PYFUNCTYPE(None, ctypes.c_void_p)(_table[4])
handle_free = ctypes.PYFUNCTYPE(None, ctypes.c_void_p)(_table[5])
RELEASER = ctypes.CFUNCTYPE(None, ctypes.c_void_p)
"""

RECORDING_RELEASER = """
freed = []
_recorder = RELEASER(lambda handle: freed.append(handle))
set_releaser(ctypes.cast(_recorder, ctypes.c_void_p))
"""

exec(CAPI_PRELUDE)

BUILD_PYTHON = pathlib.Path(quorix.pyhold.__file__).resolve().parents[1]


def run_isolated(body, with_releaser=True):
    """Runs body in a fresh interpreter; body fills the dict `result`, returned decoded."""
    code = CAPI_PRELUDE + (RECORDING_RELEASER if with_releaser else "") + "result = {}\n"
    code += textwrap.dedent(body) + "\nprint(json.dumps(result))\n"
    env = dict(os.environ, PYTHONPATH=str(BUILD_PYTHON))
    proc = subprocess.run([sys.executable, "-c", code], env=env, capture_output=True, text=True, timeout=60)
    assert proc.returncode == 0, proc.stderr
    return json.loads(proc.stdout.splitlines()[-1])


class TestCapsule:
    def test_module_attribute_is_the_imported_capsule(self):
        get_pointer = ctypes.pythonapi.PyCapsule_GetPointer
        get_pointer.restype = ctypes.c_void_p
        get_pointer.argtypes = [ctypes.py_object, ctypes.c_char_p]
        from_attribute = get_pointer(quorix.pyhold._C_APIF, CAPSULE)
        assert from_attribute == ctypes.pythonapi.PyCapsule_Import(CAPSULE, 0)

    def test_capsule_refuses_another_name(self):
        is_valid = ctypes.pythonapi.PyCapsule_IsValid
        is_valid.argtypes = [ctypes.py_object, ctypes.c_char_p]
        assert is_valid(quorix.pyhold._C_APIF, CAPSULE) == 1
        assert is_valid(quorix.pyhold._C_APIF, b"quorix.pyhold._C_API") == 0

    def test_every_slot_is_filled(self):
        assert all(_table[i] for i in range(6))


class TestCastOpResult:
    def test_no_cast(self):
        result = cast_new(0, None)
        assert type(result) is quorix.pyhold.CastOpResult
        assert not result
        assert result.code == 0 and result.value is None
        assert repr(result) == "<quorix.pyhold.CastOpResult code=0 value=None>"

    @pytest.mark.parametrize("code", [1, 2, -1, 2**31 - 1])
    def test_any_nonzero_code_is_a_cast(self, code):
        target = object()
        result = cast_new(code, id(target))
        assert result and result.code == code and result.value is target

    def test_value_is_owned_while_the_result_lives(self):
        target = object()
        before = sys.getrefcount(target)
        result = cast_new(3, id(target))
        assert sys.getrefcount(target) == before + 1
        del result
        assert sys.getrefcount(target) == before

    def test_code_without_value_and_value_with_zero_code(self):
        assert cast_new(5, None).value is None and cast_new(5, None)
        marker = "kept"
        assert cast_new(0, id(marker)).value == "kept" and not cast_new(0, id(marker))

    def test_attributes_are_read_only(self):
        result = cast_new(1, None)
        for name in ("code", "value"):
            with pytest.raises(AttributeError):
                setattr(result, name, 0)

    def test_repr_shows_the_value(self):
        assert repr(cast_new(4, id("txt"))) == "<quorix.pyhold.CastOpResult code=4 value='txt'>"

    def test_cycle_through_the_value_is_collected(self):
        import gc
        import weakref

        class Holder:
            pass

        holder = Holder()
        holder.result = cast_new(1, id(holder))
        probe = weakref.ref(holder)
        del holder
        gc.collect()
        assert probe() is None

    def test_type_query(self):
        assert cast_is_type(cast_new(0, None)) == 1
        assert cast_is_type(handle_new(None, None)) == 0
        assert cast_is_type(0) == 0


class TestSafeTargetHandleInProcess:
    """Only null handles here: nothing reaches a releaser."""

    def test_null_handle_is_invalid(self):
        handle = handle_new(None, None)
        assert type(handle) is quorix.pyhold.SafeTargetHandle
        assert handle.is_invalid is True and handle.handle == 0
        assert handle.target_type is None
        assert repr(handle) == "<quorix.pyhold.SafeTargetHandle handle=0x0>"

    def test_type_is_referenced_while_the_handle_lives(self):
        class Target:
            pass

        before = sys.getrefcount(Target)
        handle = handle_new(None, id(Target))
        assert handle.target_type is Target
        assert sys.getrefcount(Target) == before + 1
        assert repr(handle).endswith("for 'Target'>")
        del handle
        assert sys.getrefcount(Target) == before

    def test_attributes_are_read_only(self):
        handle = handle_new(None, None)
        for name in ("handle", "is_invalid", "target_type"):
            with pytest.raises(AttributeError):
                setattr(handle, name, 1)

    def test_type_query(self):
        assert handle_is_type(handle_new(None, None)) == 1
        assert handle_is_type(cast_new(0, None)) == 0
        assert handle_is_type(None) == 0

    @pytest.mark.parametrize("cls", [quorix.pyhold.SafeTargetHandle, quorix.pyhold.CastOpResult])
    def test_no_constructor_from_python(self, cls):
        with pytest.raises(TypeError, match="^type has no available constructor$"):
            cls()
        with pytest.raises(TypeError, match="^type has no available constructor$"):
            cls.__new__(cls)


class TestSafeTargetHandleRelease:
    def test_released_exactly_once_when_deleted(self):
        result = run_isolated("""
            handle = handle_new(0x1234, id(int))
            result["handle"] = handle.handle
            result["invalid"] = handle.is_invalid
            result["repr"] = repr(handle)
            result["while_alive"] = list(freed)
            del handle
            gc.collect()
            result["after"] = list(freed)
        """)
        assert result["handle"] == 0x1234 and result["invalid"] is False
        assert result["repr"] == "<quorix.pyhold.SafeTargetHandle handle=0x1234 for 'int'>"
        assert result["while_alive"] == []
        assert result["after"] == [0x1234]

    def test_each_handle_is_released_by_its_own_object(self):
        result = run_isolated("""
            handles = [handle_new(value, None) for value in (11, 22, 33)]
            del handles[1]
            result["one"] = list(freed)
            handles.clear()
            result["all"] = sorted(freed)
        """)
        assert result == {"one": [22], "all": [11, 22, 33]}

    def test_null_handle_is_not_released(self):
        result = run_isolated("""
            handle = handle_new(None, None)
            del handle
            result["freed"] = freed
        """)
        assert result["freed"] == []

    def test_without_a_releaser_the_handle_is_kept(self):
        result = run_isolated("""
            handle = handle_new(0x42, None)
            del handle
            freed = []
            recorder = RELEASER(lambda handle: freed.append(handle))
            set_releaser(ctypes.cast(recorder, ctypes.c_void_p))
            gc.collect()
            result["freed"] = freed
        """, with_releaser=False)
        assert result["freed"] == []

    def test_uninstalled_releaser_is_not_called(self):
        result = run_isolated("""
            handle = handle_new(0x43, None)
            set_releaser(None)
            del handle
            result["freed"] = freed
        """)
        assert result["freed"] == []

    def test_cycle_through_the_type_is_collected_and_released(self):
        result = run_isolated("""
            class Target:
                pass
            Target.own_handle = handle_new(0x55, id(Target))
            del Target
            result["before"] = list(freed)
            gc.collect()
            result["after"] = list(freed)
        """)
        assert result == {"before": [], "after": [0x55]}

    def test_release_while_an_error_is_pending_keeps_the_error(self):
        # The temporary argument dies after len() has already set its TypeError.
        result = run_isolated("""
            try:
                len(handle_new(0x77, None))
            except Exception as error:
                result["caught"] = [type(error).__name__, str(error)]
            result["freed"] = freed
        """)
        assert result == {
            "caught": ["TypeError", "object of type 'quorix.pyhold.SafeTargetHandle' has no len()"],
            "freed": [0x77],
        }

    def test_free_function_uses_the_releaser(self):
        result = run_isolated("""
            handle_free(None)
            handle_free(0x99)
            result["freed"] = freed
        """)
        assert result["freed"] == [0x99]


class TestPlaceholderRelease:
    def test_wrapper_instances_release_their_inline_handle(self):
        result = run_isolated("""
            import quorix.pygfx, quorix.pyintro
            alloc = ctypes.pythonapi.PyType_GenericAlloc
            alloc.restype = ctypes.py_object
            alloc.argtypes = [ctypes.py_object, ctypes.c_ssize_t]
            header = object.__basicsize__
            types = [getattr(quorix.pyintro, n) for n in ("Type", "Object", "Enum")]
            types += [getattr(quorix.pygfx, n) for n in ("Color", "Point", "PointF", "Size", "SizeF", "Rectangle", "RectangleF")]
            for number, cls in enumerate(types, start=1):
                wrapper = alloc(cls, 0)
                ctypes.c_void_p.from_address(id(wrapper) + header).value = 0x1000 + number
                del wrapper
            empty = alloc(types[0], 0)
            del empty
            result["freed"] = freed
        """)
        assert result["freed"] == [0x1000 + n for n in range(1, 11)]
