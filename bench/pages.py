#!/usr/bin/env python3
"""Page engine benchmark: DOCX -> PDF.

Generates two documents of the same make-up (headings, justified paragraphs, a
table every few pages) with python-docx, a small one and one about a hundred
times longer, and converts each to PDF in a fresh process after a warm-up
conversion, printing the time per page of both, their ratio (layout should grow
linearly with pages) and the peak memory of the large conversion. When
LibreOffice (soffice) is installed, the same files are converted by it too,
warm (extra copies converted by one soffice process, start-up subtracted), and
the ratio per page is printed beside ours.
"""
import argparse
import json
import os
import resource
import shutil
import subprocess
import sys
import tempfile
import time

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
WORDS = "the quick brown fox jumps over the lazy dog while a long report describes its findings".split()


def generate(path, sections):
    import docx
    d = docx.Document()
    for s in range(sections):
        d.add_heading(f"Section {s + 1}", level=2)
        for k in range(3):
            p = d.add_paragraph(" ".join(WORDS[(i * 7 + k + s) % len(WORDS)] for i in range(90)))
            p.alignment = 3  # justified
        if s % 5 == 0:
            t = d.add_table(rows=4, cols=3)
            t.style = "Table Grid"
            for r in range(4):
                for c in range(3):
                    t.cell(r, c).text = f"row {r} column {c}"
    d.save(path)


CHILD = r"""
import json, resource, sys, time
import quorix.folio as qf
warm, src, out = sys.argv[1:4]
qf.Document(warm).save(out + ".warm.pdf")
t0, c0 = time.perf_counter(), time.process_time()
doc = qf.Document(src)
pages = doc.page_count
t1 = time.perf_counter()
doc.save(out)
t2, c2 = time.perf_counter(), time.process_time()
print(json.dumps({"pages": pages, "layout": t1 - t0, "total": t2 - t0, "cpu": c2 - c0,
                  "peak_mb": resource.getrusage(resource.RUSAGE_SELF).ru_maxrss / 1024}))
"""


def ours(warm, src, out):
    env = dict(os.environ, PYTHONPATH=os.path.join(ROOT, "build", "python"))
    res = subprocess.run([sys.executable, "-c", CHILD, warm, src, out], check=True, capture_output=True, text=True, env=env)
    return json.loads(res.stdout.strip().splitlines()[-1])


def pdf_pages(path):
    out = subprocess.run(["pdfinfo", path], check=True, capture_output=True, text=True).stdout
    return int(next(l for l in out.splitlines() if l.startswith("Pages:")).split()[1])


def libreoffice(soffice, src, pages, work):
    """Seconds per page of warm conversions, wall and processor time: k copies converted by one
    soffice process, minus one copy converted alone, over the pages of the k - 1 extra copies
    (start-up cancels out)."""
    def run(files):
        outdir = tempfile.mkdtemp(dir=work)
        profile = "file://" + tempfile.mkdtemp(dir=work)
        t0, c0 = time.perf_counter(), children_cpu()
        subprocess.run([soffice, f"-env:UserInstallation={profile}", "--headless", "--convert-to", "pdf", "--outdir", outdir, *files],
                       check=True, capture_output=True)
        return (time.perf_counter() - t0, children_cpu() - c0), outdir
    k = max(2, -(-200 // pages) + 1)  # at least 200 extra pages, so that start-up noise stays small
    copies = []
    for i in range(k - 1):
        copies.append(os.path.join(work, f"copy{i}-" + os.path.basename(src)))
        shutil.copy(src, copies[-1])
    one, outdir = run([src])
    many, _ = run([src, *copies])
    lo_pages = pdf_pages(os.path.join(outdir, os.path.splitext(os.path.basename(src))[0] + ".pdf"))
    return [(m - o) / ((k - 1) * lo_pages) for m, o in zip(many, one)], lo_pages


def children_cpu():
    """Processor seconds of the finished child processes (soffice and the office process it waits for)."""
    r = resource.getrusage(resource.RUSAGE_CHILDREN)
    return r.ru_utime + r.ru_stime


def main():
    ap = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    ap.add_argument("--small", type=int, default=20, help="sections of the small document (about 10 pages)")
    ap.add_argument("--large", type=int, default=2000, help="sections of the large document (about 1,000 pages)")
    ap.add_argument("--rounds", type=int, default=3, help="times the whole measurement is repeated; ranges are printed")
    ap.add_argument("--keep", help="directory to keep the generated files in")
    args = ap.parse_args()

    work = args.keep or tempfile.mkdtemp(prefix="qrx-pages-")
    os.makedirs(work, exist_ok=True)
    small, large, warm = (os.path.join(work, n) for n in ("small.docx", "large.docx", "warm.docx"))
    generate(small, args.small)
    generate(large, args.large)
    generate(warm, 4)

    soffice = shutil.which("soffice") or shutil.which("libreoffice")
    if not soffice:
        print("LibreOffice (soffice) is not installed: the comparison with it is skipped")
    ratios = {"linear": [], "small wall": [], "small cpu": [], "large wall": [], "large cpu": []}
    for round_ in range(args.rounds):
        print(f"-- round {round_ + 1} of {args.rounds}")
        s = ours(warm, small, os.path.join(work, "small.pdf"))
        l = ours(warm, large, os.path.join(work, "large.pdf"))
        for name, r, pdf in (("small", s, "small.pdf"), ("large", l, "large.pdf")):
            assert pdf_pages(os.path.join(work, pdf)) == r["pages"], "pdfinfo disagrees with the page count"
            print(f"{name:5}: {r['pages']:5} pages  layout {r['layout'] * 1000 / r['pages']:6.2f} ms/page  "
                  f"to PDF {r['total'] * 1000 / r['pages']:6.2f} ms/page (processor {r['cpu'] * 1000 / r['pages']:6.2f})  peak {r['peak_mb']:.0f} MB")
        ratios["linear"].append(l['layout'] / l['pages'] / (s['layout'] / s['pages']))
        print(f"time per page, large / small: layout {ratios['linear'][-1]:.2f}x, "
              f"to PDF {l['total'] / l['pages'] / (s['total'] / s['pages']):.2f}x")
        if not soffice:
            continue
        for name, src, r in (("small", small, s), ("large", large, l)):
            (wall, cpu), pages = libreoffice(soffice, src, r["pages"], work)
            ours_wall, ours_cpu = r["total"] / r["pages"], r["cpu"] / r["pages"]
            ratios[name + " wall"].append(wall / ours_wall)
            ratios[name + " cpu"].append(cpu / ours_cpu)
            # Processor time is the steadier figure on a busy machine; wall time is what a user waits.
            print(f"{name:5}: LibreOffice {wall * 1000:6.2f} ms/page warm ({pages} pages), ours {ours_wall * 1000:6.2f} ms/page: "
                  f"ours {wall / ours_wall:.1f}x faster per page; processor time {cpu * 1000:6.2f} vs {ours_cpu * 1000:6.2f} ms/page: "
                  f"{cpu / ours_cpu:.1f}x")
    print("-- ranges over the rounds")
    for name, values in ratios.items():
        if values:
            what = "layout time per page, large / small" if name == "linear" else f"{name}: times faster than LibreOffice"
            print(f"{what}: {min(values):.2f} to {max(values):.2f}")

if __name__ == "__main__":
    main()
