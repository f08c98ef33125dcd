"""100,000 mixed calls, good and bad, in a fresh process: afterwards no more GC handles are alive
than before, and no Python references were leaked on the values that went back and forth."""

import pytest

from conftest import run_python

pytest.importorskip("quorix.folio")

SOAK = """
import ctypes, gc, io, math, os, sys
import quorix.folio as qf
from conftest import runtime_dir

wrap = ctypes.CDLL(str(runtime_dir() / "libquorix.embed.coreclrwrap.so"), mode=os.RTLD_NOLOAD | os.RTLD_NOW)
wrap.coreclr_wrap_create_delegate.argtypes = [ctypes.c_char_p] * 3 + [ctypes.POINTER(ctypes.c_void_p)]

def counter(method):
    address = ctypes.c_void_p()
    assert wrap.coreclr_wrap_create_delegate(b"WrpInterop.Quorix.Folio", b"Quorix.WrpGen.Interop.ExchangeHost",
                                             method, ctypes.byref(address)) == 0
    return ctypes.PYFUNCTYPE(ctypes.c_int64)(address.value)

allocated, freed = counter(b"AllocatedHandleCount"), counter(b"FreedHandleCount")

def live():
    gc.collect()
    return allocated() - freed()

text, path, number = "soak é € 𝄞", "soak.docx", 12.5
orphan = qf.Document.__new__(qf.Document)

def calls(n):
    builder = qf.DocumentBuilder()
    doc = builder.document
    font = builder.font
    for i in range(n):
        k = i % 20
        try:
            if k == 0:
                builder.write(text)
            elif k == 1:
                font.size = number
            elif k == 2:
                font.size
            elif k == 3:
                builder.current_paragraph == builder.current_paragraph
            elif k == 4:
                hash(doc)
            elif k == 5:
                font.bold = True
            elif k == 6:
                builder.write(None)                   # refused: not nullable
            elif k == 7:
                font.size = math.nan                  # refused: not finite
            elif k == 8:
                doc.save(42)                          # refused by every overload
            elif k == 9:
                orphan.get_text()                     # refused: no managed object
            elif k == 10:
                qf.Document(io.BytesIO(b"PK\x03\x04 cut"))  # managed exception
            elif k == 11:
                str(builder.current_paragraph)
            elif k == 12:
                builder.current_node
            elif k == 13:
                doc.first_section.body
            elif k == 14 and i % 2000 == 14:
                out = io.BytesIO()
                doc.save(out, qf.SaveFormat.DOCX)
                qf.Document(io.BytesIO(out.getvalue())).get_text()
            elif k == 15 and i % 5000 == 15:
                builder = qf.DocumentBuilder()          # start over: the old document dies
                doc, font = builder.document, builder.font
            elif k == 16:
                builder.insert_paragraph()
            elif k == 17:
                qf.SaveFormat.DOCX == qf.SaveFormat.DOCX
            elif k == 18:
                builder.is_at_end_of_paragraph
            else:
                doc.get_text() if i % 1000 == 19 else None
        except (TypeError, ValueError, RuntimeError):
            pass

calls(2000)                                        # warm: caches, method tables, first imports
before = live(), sys.getrefcount(text), sys.getrefcount(None), sys.getrefcount(number), len(gc.get_objects())
calls(100_000)
after = live(), sys.getrefcount(text), sys.getrefcount(None), sys.getrefcount(number), len(gc.get_objects())
print("before", before)
print("after", after)
"""


def test_a_hundred_thousand_mixed_calls_leak_no_handle_and_no_reference(tmp_path):
    code = f"import os, sys; os.chdir({str(tmp_path)!r}); sys.path.insert(0, {str(__import__('pathlib').Path(__file__).parent)!r})\n"
    run = run_python(code + SOAK, timeout=600)
    assert run.returncode == 0, run
    before = eval(run.stdout.split("before", 1)[1].splitlines()[0])
    after = eval(run.stdout.split("after", 1)[1].splitlines()[0])
    live_before, text_before, none_before, number_before, objects_before = before
    live_after, text_after, none_after, number_after, objects_after = after
    assert live_after - live_before <= 8, (before, after)        # one builder's worth at most
    assert text_after == text_before, (before, after)            # the str argument
    assert number_after == number_before, (before, after)        # the float argument
    assert abs(none_after - none_before) < 200, (before, after)  # None returned 25,000 times
    assert objects_after - objects_before < 500, (before, after)
