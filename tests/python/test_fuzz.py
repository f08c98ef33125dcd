"""The fuzz harness, briefly: a few seeds, each in a fresh process in a scratch folder, must end
without a crash, a hang or an exception a bad argument may not produce."""

import pathlib

import pytest

from conftest import run_python

pytest.importorskip("quorix.folio")

HARNESS = pathlib.Path(__file__).with_name("fuzz_harness.py")


@pytest.mark.parametrize("seed", [11, 12, 13, 14])
def test_hostile_calls_end_in_python_errors(seed, tmp_path):
    code = f"""
    import os, runpy, sys
    os.chdir({str(tmp_path)!r})
    sys.argv = [{str(HARNESS)!r}, "{seed}", "1500"]
    runpy.run_path({str(HARNESS)!r}, run_name="__main__")
    """
    run = run_python(code, timeout=300)
    tail = run.stdout.strip().splitlines()[-3:]
    # a negative code is a signal: the last "call" line names the call that crashed
    assert run.returncode == 0, (tail, run.stderr[-2000:])
    assert tail[-1].startswith("fuzz ok 1500"), tail
