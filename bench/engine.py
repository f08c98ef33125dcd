#!/usr/bin/env python3
"""Engine benchmark: a 1,000-page document with a 2,000-row table.

Times, in one run, DOCX load + save in the engine against python-docx on the
same file, and DOCX -> Markdown against pandoc, and prints the ratios.

The engine is driven through the quorix.folio module when it exposes Document;
until then through the small .NET driver in bench/EngineDriver (built on first
use into build/bench/EngineDriver).
"""
import argparse
import json
import os
import shutil
import subprocess
import sys
import tempfile
import time

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
DRIVER_DIR = os.path.join(ROOT, "build", "bench", "EngineDriver")
DRIVER = os.path.join(DRIVER_DIR, "EngineDriver")


def build_driver():
    if os.path.exists(DRIVER) and not os.environ.get("QRX_BENCH_REBUILD"):
        return
    subprocess.run(["dotnet", "build", os.path.join(ROOT, "bench", "EngineDriver", "EngineDriver.csproj"),
                    "-c", "Release", "-nologo", "-v:q", "-m:2", "-o", DRIVER_DIR], check=True)


def driver(*args):
    """Runs one driver command; returns (its own timings, wall seconds of the process)."""
    t0 = time.perf_counter()
    out = subprocess.run([DRIVER, *args], check=True, capture_output=True, text=True).stdout
    wall = time.perf_counter() - t0
    return json.loads(out.strip().splitlines()[-1]), wall


def module_engine():
    """The bound Document type, or None while the binding does not expose it yet."""
    try:
        from quorix.folio import Document  # noqa: F401
        return Document
    except Exception:
        return None


def best_of(n, fn):
    times = []
    for _ in range(n):
        t0 = time.perf_counter()
        fn()
        times.append(time.perf_counter() - t0)
    return min(times)


def main():
    ap = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    ap.add_argument("--pages", type=int, default=1000)
    ap.add_argument("--rows", type=int, default=2000)
    ap.add_argument("--keep", help="directory to keep the generated files in")
    ap.add_argument("--skip-table-read", action="store_true",
                    help="skip the load + read-every-cell + save comparison (python-docx needs minutes for it)")
    args = ap.parse_args()

    import docx  # python-docx, the reference for load + save

    build_driver()
    work = args.keep or tempfile.mkdtemp(prefix="qrx-bench-")
    os.makedirs(work, exist_ok=True)
    src = os.path.join(work, "big.docx")
    gen, _ = driver("generate", src, str(args.pages), str(args.rows))
    print(f"generated {src}: {os.path.getsize(src) / 1e6:.1f} MB in {gen['total']:.0f} ms "
          f"({args.pages} pages, {args.rows}-row table)")

    # python-docx: load + save in this process.
    t0 = time.perf_counter()
    d = docx.Document(src)
    t1 = time.perf_counter()
    d.save(os.path.join(work, "python-docx.docx"))
    t2 = time.perf_counter()
    py_load, py_save = t1 - t0, t2 - t1

    Document = module_engine()
    if Document is not None:
        via = "quorix.folio module"
        t0 = time.perf_counter()
        doc = Document(src)
        t1 = time.perf_counter()
        doc.save(os.path.join(work, "ours.docx"))
        t2 = time.perf_counter()
        our_load, our_save = t1 - t0, t2 - t1
        our_wall = our_load + our_save
        t0 = time.perf_counter()
        Document(src).save(os.path.join(work, "ours.md"))
        md_inproc = md_wall = time.perf_counter() - t0
    else:
        via = ".NET driver (process wall time includes runtime start-up)"
        ls, our_wall = driver("loadsave", src, os.path.join(work, "ours.docx"))
        our_load, our_save = ls["load"] / 1000, ls["save"] / 1000
        md, md_wall = driver("markdown", src, os.path.join(work, "ours.md"))
        md_inproc = md["total"] / 1000

    t0 = time.perf_counter()
    subprocess.run(["pandoc", "-f", "docx", "-t", "markdown", src, "-o", os.path.join(work, "pandoc.md")], check=True)
    pandoc_wall = time.perf_counter() - t0

    py_total = py_load + py_save
    ours_total = our_load + our_save
    print(f"engine via {via}")
    print(f"load+save   python-docx {py_total * 1000:8.0f} ms (load {py_load * 1000:.0f}, save {py_save * 1000:.0f})")
    print(f"load+save   ours        {ours_total * 1000:8.0f} ms (load {our_load * 1000:.0f}, save {our_save * 1000:.0f}); "
          f"process {our_wall * 1000:.0f} ms")
    print(f"docx->md    pandoc      {pandoc_wall * 1000:8.0f} ms (process)")
    print(f"docx->md    ours        {md_inproc * 1000:8.0f} ms; process {md_wall * 1000:.0f} ms")
    r1 = py_total / ours_total
    r2 = pandoc_wall / md_inproc
    r2w = pandoc_wall / md_wall
    print(f"ratio load+save  python-docx/ours = {r1:5.2f}x   (target >= 10x) {'met' if r1 >= 10 else 'NOT met'}")
    print(f"ratio docx->md   pandoc/ours      = {r2:5.2f}x   (target >= 5x)  {'met' if r2 >= 5 else 'NOT met'}"
          f"; process to process {r2w:.2f}x")
    if not args.skip_table_read:
        # The workload behind "tables that stay fast": read every paragraph and every cell.
        t0 = time.perf_counter()
        d = docx.Document(src)
        chars = sum(len(p.text) for p in d.paragraphs)
        for table in d.tables:
            for row in table.rows:
                for cell in row.cells:
                    chars += len(cell.text)
        d.save(os.path.join(work, "python-docx-read.docx"))
        py_read = time.perf_counter() - t0
        ra, ra_wall = driver("readall", src, os.path.join(work, "ours-read.docx"))
        print(f"load+read all text+save  python-docx {py_read * 1000:.0f} ms, ours {ra['total']:.0f} ms "
              f"(process {ra_wall * 1000:.0f} ms): {py_read / (ra['total'] / 1000):.0f}x")
    if not args.keep:
        shutil.rmtree(work, ignore_errors=True)


if __name__ == "__main__":
    sys.exit(main())
