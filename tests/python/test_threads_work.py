"""Threads doing document work at once: loads and saves let other threads run, callbacks into
Python (streams, strings, errors) work from inside them, and one document used from several
threads comes out whole."""

import io
import sys
import threading
import time

import pytest

qf = pytest.importorskip("quorix.folio")


def build(paragraphs, tag="p"):
    builder = qf.DocumentBuilder()
    for i in range(paragraphs):
        builder.writeln(f"{tag} {i} " + "lorem ipsum dolor sit amet " * 8)
    return builder.document


def run_threads(count, work):
    errors = []

    def guarded(i):
        try:
            work(i)
        except BaseException as e:  # reported by the test thread
            errors.append(e)

    threads = [threading.Thread(target=guarded, args=(i,)) for i in range(count)]
    for t in threads:
        t.start()
    for t in threads:
        t.join(120)
    assert not any(t.is_alive() for t in threads), "a thread hangs"
    if errors:
        raise errors[0]


def test_threads_convert_their_own_documents_through_files_and_streams(tmp_path):
    sources = []
    for i in range(4):
        path = tmp_path / f"src{i}.docx"
        build(30, tag=f"d{i}").save(str(path))
        sources.append(path)
    results = {}

    def convert(i):
        for round_ in range(5):
            doc = qf.Document(str(sources[i]))             # load from a path, lock released
            out = io.BytesIO()
            doc.save(out, qf.SaveFormat.DOCX)              # Python stream written from inside
            again = qf.Document(io.BytesIO(out.getvalue()))  # and read from inside
            text = io.BytesIO()
            again.save(text, qf.SaveFormat.TEXT)
            results[i, round_] = text.getvalue().decode("utf-8-sig").split()

    run_threads(4, convert)
    for (i, _), words in results.items():
        assert words[:2] == [f"d{i}", "0"] and words.count("lorem") == 30 * 8


def test_errors_raised_inside_a_released_call_reach_their_own_thread(tmp_path):
    def fail(i):
        for _ in range(20):
            with pytest.raises(RuntimeError, match="FileNotFound|not found|Could not find"):
                qf.Document(str(tmp_path / f"missing{i}.docx"))
            with pytest.raises(RuntimeError):
                qf.Document(io.BytesIO(b"PK\x03\x04 a package cut short"))  # plain text would load as text

    run_threads(4, fail)


class RaisingWriter(io.RawIOBase):
    def writable(self):
        return True

    def write(self, b):
        raise OSError("disk full (test)")


def test_a_python_stream_raising_inside_a_released_save():
    doc = build(5)

    def save(i):
        for _ in range(10):
            with pytest.raises(Exception) as raised:
                doc.save(RaisingWriter(), qf.SaveFormat.DOCX)
            assert "disk full (test)" in repr(raised.value) + repr(raised.value.__cause__) + repr(raised.value.__context__)

    run_threads(3, save)


def test_one_document_saved_and_read_from_several_threads_stays_whole(tmp_path):
    source = tmp_path / "shared.docx"
    build(50, tag="s").save(str(source))
    doc = qf.Document(str(source))      # its model is built on first use, by whichever thread
    expected = build(50, tag="s").get_text()
    outputs = []

    def use(i):
        for _ in range(5):
            if i % 2:
                assert doc.get_text() == expected
            else:
                out = io.BytesIO()
                doc.save(out, qf.SaveFormat.DOCX)
                outputs.append(out.getvalue())

    run_threads(4, use)
    assert outputs
    for data in outputs:
        assert qf.Document(io.BytesIO(data)).get_text() == expected


def test_other_threads_run_while_a_large_document_saves(tmp_path):
    # large enough that the save outlasts a scheduler's time slice on a busy machine
    doc = build(100000)
    doc.save(str(tmp_path / "warm.docx"))
    inside, returned = threading.Event(), threading.Event()

    def watch(frame, event, arg):
        # the profiler sees the C call of save begin and end on the saving thread
        if getattr(arg, "__name__", "") != "save":
            return
        if event == "c_call":
            inside.set()
        elif event == "c_return":
            returned.set()

    def saver():
        sys.setprofile(watch)
        doc.save(str(tmp_path / "big.docx"))
        sys.setprofile(None)

    t = threading.Thread(target=saver)
    t.start()
    assert inside.wait(60)
    # each sleep(0) hands the interpreter lock over; a save holding it would finish first
    ran = 0
    while ran < 20 and not returned.is_set():
        time.sleep(0)
        ran += 1
    t.join(120)
    assert returned.is_set()
    assert ran == 20, f"this thread ran {ran} times while the other saved"


SHARED_WITH_PYTHON_STREAM = """
import io, threading, time
import quorix.folio as qf

b = qf.DocumentBuilder()
for i in range(300):
    b.writeln("shared %d" % i)
packed = io.BytesIO()
b.document.save(packed, qf.SaveFormat.DOCX)
expected = b.document.get_text()

class SlowWriter(io.RawIOBase):
    # Python code inside the save: the interpreter may switch threads in here
    def __init__(self):
        self.data = bytearray()
    def writable(self):
        return True
    def write(self, chunk):
        time.sleep(0)
        view = memoryview(chunk)
        self.data += view
        return view.nbytes

errors, outputs = [], []

def use(i, doc, barrier):
    try:
        barrier.wait()
        if i == 0:
            w = SlowWriter()            # saved while its model is still unbuilt: the gate is held
            doc.save(w, qf.SaveFormat.DOCX)
            outputs.append(bytes(w.data))
        else:
            time.sleep(0.001 * i)
            assert doc.get_text() == expected   # builds the model: waits for the gate
    except BaseException as e:
        errors.append(repr(e))

for round_ in range(10):
    doc = qf.Document(io.BytesIO(packed.getvalue()))
    barrier = threading.Barrier(3)
    threads = [threading.Thread(target=use, args=(i, doc, barrier)) for i in range(3)]
    for t in threads: t.start()
    for t in threads: t.join()
assert not errors, errors
for data in outputs:
    assert qf.Document(io.BytesIO(data)).get_text() == expected
print("ok", len(outputs))
"""


def test_a_thread_waiting_for_a_document_lets_a_python_callback_of_its_holder_run():
    # the holder of the document calls back into Python; a waiter keeping the interpreter lock
    # would hang both: a fresh process, under a timeout
    from conftest import run_python

    run = run_python(SHARED_WITH_PYTHON_STREAM, timeout=240)
    assert run.returncode == 0, run
    assert "ok 10" in run.stdout, run
