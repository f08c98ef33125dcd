"""Peak memory of loading, reading and saving a document whose one run holds most of its XML, beside
the peak of the same steps on a small document, as a multiple of the package's uncompressed XML.
The run's text alone is two bytes a character, its get_text() copy two more and the Python string
one; the bound (about seven times is measured; eleven before the text was read and written in
pieces) catches a step that holds the text whole once more (reading the XML value whole,
building the text in a builder before copying it out, encoding a whole text save at once).
Each measure is a fresh process, so that its peak resident size is that of these steps alone."""

import importlib.util
import pathlib

import pytest

pytest.importorskip("quorix.folio")

BENCH = pathlib.Path(__file__).resolve().parents[2] / "bench" / "memory.py"


def bench_memory():
    spec = importlib.util.spec_from_file_location("bench_memory", BENCH)
    module = importlib.util.module_from_spec(spec)
    spec.loader.exec_module(module)
    return module


def test_a_huge_run_is_loaded_read_and_saved_without_an_extra_whole_copy(tmp_path, monkeypatch):
    # both measures with the package's own assemblies, as a user's process has them
    monkeypatch.delenv("NETCORE_WRAPPER_ASSEMBLY_DIR_quorix", raising=False)
    memory = bench_memory()
    small, huge = tmp_path / "small.docx", tmp_path / "huge.docx"
    memory.make(str(small), "paragraphs", 64 << 10)
    xml = memory.make(str(huge), "one-run", 24 << 20)
    allowance = max(memory.peak(str(small)) for _ in range(2))
    peak = memory.peak(str(huge))
    ratio = (peak - allowance) / xml
    assert ratio <= 9, f"peak {peak >> 20} MB, allowance {allowance >> 20} MB, XML {xml >> 20} MB: {ratio:.1f} times"
    # the steps really ran on the huge document: its text came back in the saved outputs
    assert (tmp_path / "huge.docx.out.txt").stat().st_size >= (24 << 20) // 10 * 10
