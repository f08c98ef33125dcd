"""Several threads whose first calls of one kind arrive together: every one-time initialisation
behind that kind of call must let the others wait without holding the interpreter lock, or the
process hangs. Each case is a fresh interpreter (only the first call is cold) under a timeout."""

import pytest

from conftest import run_python

pytest.importorskip("quorix.folio")

THREADS = 6
ATTEMPTS = 4

# Runs FIRST_CALL (a function of the thread index) on THREADS threads released together, with a
# tiny switch interval so that a thread is interrupted inside any initialiser that runs Python.
HARNESS = """
import io, sys, threading, traceback
import quorix.folio as qf

sys.setswitchinterval(1e-6)
{setup}
barrier = threading.Barrier({threads})
errors = []

def first_call(i):
{body}

def run(i):
    barrier.wait()
    try:
        first_call(i)
    except BaseException:
        errors.append(traceback.format_exc())

threads = [threading.Thread(target=run, args=(i,)) for i in range({threads})]
for t in threads:
    t.start()
for t in threads:
    t.join()
print("errors:", errors)
print("done")
"""

DOCX_SETUP = """
b = qf.DocumentBuilder()
b.writeln("cold start")
path = {path!r}
b.document.save(path)
data = open(path, "rb").read()
"""

FIRST_CALLS = {
    # a Python file object as a stream argument: the file classes are imported on first need
    "stream_argument": "    qf.Document(io.BytesIO(data)).get_text()",
    "stream_save": "    qf.Document(path).save(io.BytesIO(), qf.SaveFormat.TEXT)",
    # the first call of a type builds its method table and entry state
    "method_table": "    qf.DocumentBuilder().writeln(str(i))",
    "static_and_enum": "    qf.FileFormatUtil.detect_file_format(path).load_format",
    # quorix.pyintro joins the runtime on its first call
    "sibling_join": "    str(qf.Document().get_type().full_name)",
    "path_like": "    qf.Document(__import__('pathlib').Path(path)).get_text()",
}


@pytest.mark.parametrize("kind", sorted(FIRST_CALLS))
def test_threads_racing_to_a_first_call_all_finish(kind, tmp_path):
    setup = DOCX_SETUP.format(path=str(tmp_path / "cold.docx"))
    code = HARNESS.format(setup=setup, threads=THREADS, body=FIRST_CALLS[kind])
    # a race is lost only now and then: several fresh processes per kind
    for _ in range(ATTEMPTS):
        run = run_python(code, timeout=120)
        assert run.returncode == 0, run
        assert "errors: []" in run.stdout, run
        assert run.stdout.rstrip().endswith("done"), run
