"""Processes: a child forked after the runtime ran refuses every call with one clear error and
never harms its parent; worker pools started by spawn or forkserver convert documents."""

import pytest

from conftest import run_python

pytest.importorskip("quorix.folio")

FORK_CHILD = """
import gc, os, sys
import quorix.folio as qf

b = qf.DocumentBuilder()
b.writeln("parent")
doc = b.document
kept = [qf.Document() for _ in range(50)]    # wrappers the child will drop
t = doc.get_type()                           # a quorix.pyintro wrapper made before the fork

pid = os.fork()
if pid == 0:
    # every kind of entry: constructor, method, property, static, slot, sibling type, release
    attempts = {
        "constructor": lambda: qf.Document(),
        "method": lambda: doc.get_text(),
        "property": lambda: b.font,
        "static": lambda: qf.FileFormatUtil.detect_file_format("x.docx"),
        "hash": lambda: hash(doc),
        "str": lambda: str(doc),
        "eq": lambda: doc == kept[0],
        "sibling": lambda: t.full_name,
    }
    bad = []
    for name, attempt in attempts.items():
        try:
            attempt()
            bad.append(name + ": no error")
        except RuntimeError as e:
            text = str(e)
            if "fork" not in text or "'spawn'" not in text or "'forkserver'" not in text:
                bad.append(name + ": " + text)
        except BaseException as e:
            bad.append(name + ": " + type(e).__name__ + " " + str(e))
    del kept[:]
    gc.collect()
    os.write(1, ("child " + repr(bad) + "\\n").encode())
    os._exit(0 if not bad else 3) if {hard_exit} else sys.exit(0 if not bad else 3)

_, status = os.waitpid(pid, 0)
print("child status", os.waitstatus_to_exitcode(status))
# the parent goes on as if nothing happened
b.writeln("after")
print("parent", doc.get_text().split())
gc.collect()
print("parent done")
"""


@pytest.mark.parametrize("hard_exit", [True, False], ids=["os._exit", "normal-exit"])
def test_a_forked_child_refuses_every_call_and_the_parent_carries_on(hard_exit):
    # a normal exit runs the interpreter's and the host's shutdown in the child: it must not hang
    run = run_python(FORK_CHILD.replace("{hard_exit}", str(hard_exit)), timeout=120)
    assert run.returncode == 0, run
    assert "child []" in run.stdout, run
    assert "child status 0" in run.stdout, run
    assert "parent ['parent', 'after']" in run.stdout, run
    assert run.stdout.rstrip().endswith("parent done"), run


def test_a_fork_before_the_runtime_started_leaves_the_child_free():
    code = """
    import os
    pid = os.fork()
    if pid == 0:
        import quorix.folio as qf
        b = qf.DocumentBuilder()
        b.writeln("fresh")
        os.write(1, ("child " + b.document.get_text().strip() + "\\n").encode())
        os._exit(0)
    _, status = os.waitpid(pid, 0)
    print("status", os.waitstatus_to_exitcode(status))
    """
    run = run_python(code, timeout=120)
    assert run.returncode == 0, run
    assert "child fresh" in run.stdout and "status 0" in run.stdout, run


POOL = """
import multiprocessing as mp, pathlib, sys
import quorix.folio as qf

def convert(path):
    doc = qf.Document(path)
    out = path[:-5] + ".txt"
    doc.save(out)
    return pathlib.Path(out).read_text(encoding="utf-8-sig").split()

if __name__ == "__main__":
    folder = pathlib.Path(sys.argv[1])
    paths = []
    for i in range(6):
        b = qf.DocumentBuilder()
        b.writeln("document %d" % i)
        p = str(folder / ("d%d.docx" % i))
        b.document.save(p)
        paths.append(p)
    ctx = mp.get_context(sys.argv[2])
    with ctx.Pool(2) as pool:
        print(pool.map(convert, paths))
    # the parent's runtime is still whole
    print(qf.Document(paths[0]).get_text().split())
"""


@pytest.mark.parametrize("method", ["spawn", "forkserver"])
def test_pools_of_spawn_and_forkserver_convert_documents(method, tmp_path):
    script = tmp_path / "pool_main.py"
    script.write_text(POOL)
    # the workers import the main module by its path: a script, not -c
    code = f"import sys, runpy; sys.argv = [{str(script)!r}, {str(tmp_path)!r}, {method!r}]; " \
           f"runpy.run_path({str(script)!r}, run_name='__main__')"
    run = run_python(code, timeout=300)
    assert run.returncode == 0, run
    expected = [["document", str(i)] for i in range(6)]
    assert repr(expected) in run.stdout, run
    assert "['document', '0']" in run.stdout.splitlines()[-1], run
