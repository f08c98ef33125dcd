"""One document used from two threads at once: the calls of one thread wait for another thread's
long call (a save, a field update) and for its calls that run Python callbacks, so a save never
sees half an edit; a callback on the holding thread goes on into the same document.

Each case runs in a fresh process under a timeout, so that a deadlock fails instead of hanging."""

import pytest

from conftest import run_python

pytest.importorskip("quorix.folio")

PRELUDE = """
import io, os, sys, tempfile, threading, time
import quorix.folio as qf

errors = []

def guarded(work):
    def run(*args):
        try:
            work(*args)
        except BaseException as e:
            errors.append(repr(e))
    return run

def run_together(*works):
    threads = [threading.Thread(target=guarded(w)) for w in works]
    for t in threads: t.start()
    for t in threads: t.join()
    assert not errors, errors

def lines(doc):
    return [p.get_text().strip() for p in doc.first_section.body.paragraphs]
"""


def run(code, timeout=300):
    result = run_python(PRELUDE + code, timeout=timeout)
    assert result.returncode == 0, result
    return result.stdout


def test_saves_and_field_updates_on_one_thread_see_every_edit_of_another_whole_or_not_at_all():
    # Edits insert and remove paragraphs in the middle of the body while the other thread saves and
    # lays out: each call is whole in every save (between two calls only the newest edit can be
    # unfinished), and no save loses or repeats the paragraphs around them.
    out = run("""
folder = tempfile.mkdtemp()
builder = qf.DocumentBuilder()
for i in range(3000):
    builder.writeln(f"base {i} " + "words to lay out and to save " * 3)
builder.insert_field("NUMPAGES")
doc = builder.document
stop = threading.Event()
saved = []

def edit():
    body = doc.first_section.body
    anchor = body.paragraphs[1500]
    for k in range(40):
        para = qf.Paragraph(doc)
        para.append_child(qf.Run(doc, f"edit {k}"))
        body.insert_after(para, anchor)
        para.runs[0].text = f"edit {k} done"
        if k % 4 == 3:
            para.remove()
    stop.set()

def save():
    n = 0
    while not stop.is_set() or n < 2:
        path = os.path.join(folder, f"out{n}.docx")
        doc.save(path)
        saved.append(path)
        if n % 3 == 2:
            doc.update_fields()
        n += 1

run_together(edit, save)
for path in saved:
    got = lines(qf.Document(path))
    assert [line.split()[1] for line in got if line.startswith("base")] == [str(i) for i in range(3000)]
    edits = [line.split() for line in got if line.startswith("edit")]
    numbers = [int(words[1]) for words in edits]
    assert len(numbers) == len(set(numbers)), numbers
    newest = max(numbers, default=-1)
    for k in range(newest + 1):
        assert (k in numbers) == (k % 4 != 3 or k == newest), (k, numbers[:8])
    assert all(words[-1] == "done" or int(words[1]) == newest for words in edits), edits[:3]
print("saves", len(saved))
""")
    assert int(out.split()[-1]) >= 2


def test_a_call_running_a_python_callback_keeps_the_document_until_it_returns():
    # The replace runs Python code for each match, where the interpreter hands the lock to the
    # saving thread; the save must still wait for the whole replace.
    run("""
from quorix.folio.replacing import FindReplaceOptions, IReplacingCallback, ReplaceAction

class Slow(IReplacingCallback):
    def replacing(self, args):
        time.sleep(0.0005)
        return ReplaceAction.REPLACE

builder = qf.DocumentBuilder()
for i in range(200):
    builder.writeln(f"old {i}")
doc = builder.document
started = threading.Event()
outputs = []

def replace():
    for round_ in range(3):
        word = ("old", "new", "old")[round_]
        started.set()
        assert doc.range.replace(word, ("new", "old", "new")[round_], FindReplaceOptions(Slow())) == 200

def save():
    started.wait()
    for _ in range(10):
        out = io.BytesIO()
        doc.save(out, qf.SaveFormat.TEXT)
        outputs.append(out.getvalue().decode("utf-8-sig").split())
        time.sleep(0.002)

run_together(replace, save)
for words in outputs:
    assert words.count("old") in (0, 200) and words.count("new") in (0, 200), (words.count("old"), words.count("new"))
print("ok")
""")


def test_a_callback_inside_a_save_uses_the_same_document_on_its_own_thread():
    # the save holds the document; its stream, called on the same thread, reads and edits it
    out = run("""
builder = qf.DocumentBuilder()
for i in range(50):
    builder.writeln(f"line {i}")
doc = builder.document
seen = []

class Peeking(io.RawIOBase):
    def __init__(self):
        self.data = bytearray()
    def writable(self):
        return True
    def write(self, chunk):
        seen.append(len(doc.first_section.body.paragraphs))
        doc.built_in_document_properties.title = "written"
        view = memoryview(chunk)
        self.data += view
        return view.nbytes

def save(stream):
    doc.save(stream, qf.SaveFormat.DOCX)

def read_meanwhile():
    for _ in range(200):
        assert doc.first_section.body.paragraphs[0].get_text().strip() == "line 0"

streams = [Peeking() for _ in range(4)]
run_together(*[lambda s=s: save(s) for s in streams], read_meanwhile)
assert seen and set(seen) == {51}, set(seen)
for s in streams:
    assert lines(qf.Document(io.BytesIO(bytes(s.data))))[:2] == ["line 0", "line 1"]
print("ok", len(seen))
""")
    assert out.startswith("ok")
