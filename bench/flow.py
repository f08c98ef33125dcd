#!/usr/bin/env python3
"""Flow-format benchmark: the engine against pandoc on the same files, in one run.

DOCX -> HTML and Markdown -> DOCX, each timed as a whole conversion (pandoc as a process, ours in
this process with the runtime already started), and the comparison of two 100-page versions of a
document, whose target is absolute. Prints the figures and the ratios side by side.

Run after `make`:  PYTHONPATH=build/python /usr/bin/python3 bench/flow.py
"""
import argparse
import os
import random
import shutil
import subprocess
import sys
import tempfile
import time

WORDS = ("alpha beta gamma delta report figure table review clause party agreement term notice "
         "payment delivery schedule quality service period budget risk plan").split()


def markdown(pages, seed):
    """About 300 words a page: headings, paragraphs with emphasis and links, lists and a table a page."""
    rnd = random.Random(seed)
    out = []
    for p in range(pages):
        out.append(f"## Section {p + 1}\n")
        for _ in range(5):
            words = [rnd.choice(WORDS) for _ in range(50)]
            words[3] = f"**{words[3]}**"
            words[9] = f"*{words[9]}*"
            words[20] = f"[{words[20]}](https://example.com/{p})"
            out.append(" ".join(words) + ".\n")
        out.append("".join(f"- {' '.join(rnd.choice(WORDS) for _ in range(6))}\n" for _ in range(4)))
        out.append("| a | b | c |\n| --- | --- | --- |\n" + "".join(f"| {i} | {rnd.choice(WORDS)} | {rnd.choice(WORDS)} |\n" for i in range(3)))
    return "\n".join(out)


def best(n, fn):
    times = []
    for _ in range(n):
        t0 = time.perf_counter()
        fn()
        times.append(time.perf_counter() - t0)
    return times


def pandoc(*args):
    subprocess.run(["pandoc", *args], check=True, capture_output=True)


def main():
    ap = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    ap.add_argument("--pages", type=int, default=300, help="pages of the conversion input")
    ap.add_argument("--compare-pages", type=int, default=100)
    ap.add_argument("--repeat", type=int, default=3)
    ap.add_argument("--keep", help="directory to keep the files in")
    args = ap.parse_args()
    import quorix.folio as qf

    work = args.keep or tempfile.mkdtemp(prefix="qrx-flow-")
    os.makedirs(work, exist_ok=True)
    md = os.path.join(work, "in.md")
    with open(md, "w", encoding="utf-8") as f:
        f.write(markdown(args.pages, 1))
    docx = os.path.join(work, "in.docx")
    qf.Document(md).save(docx)
    n = args.repeat

    ours_md = best(n, lambda: qf.Document(md).save(os.path.join(work, "ours.docx")))
    pandoc_md = best(n, lambda: pandoc("-f", "markdown", "-t", "docx", md, "-o", os.path.join(work, "pandoc.docx")))
    ours_html = best(n, lambda: qf.Document(docx).save(os.path.join(work, "ours.html")))
    pandoc_html = best(n, lambda: pandoc("-f", "docx", "-t", "html", docx, "-o", os.path.join(work, "pandoc.html")))

    # Two versions: the second has every twentieth paragraph reworded and a few paragraphs added and removed.
    v1_md = markdown(args.compare_pages, 2)
    lines = v1_md.split("\n")
    rnd = random.Random(3)
    for i in range(0, len(lines), 20):
        if lines[i] and not lines[i].startswith(("|", "#")):
            lines[i] = lines[i].replace(" ", " changed ", 1)
    for i in sorted(rnd.sample(range(len(lines)), 10), reverse=True):
        if lines[i] and not lines[i].startswith("|"):
            lines.insert(i, "An inserted paragraph of new text.\n")
    v1, v2 = os.path.join(work, "v1.md"), os.path.join(work, "v2.md")
    with open(v1, "w", encoding="utf-8") as f:
        f.write(v1_md)
    with open(v2, "w", encoding="utf-8") as f:
        f.write("\n".join(lines))
    a, b = qf.Document(v1), qf.Document(v2)

    def compare():
        a.clone().compare(b, "Bench")

    cmp_times = best(n, compare)
    changed = a.clone()
    changed.compare(b, "Bench")

    def ms(ts):
        return f"first {ts[0] * 1000:7.0f} ms  best {min(ts) * 1000:7.0f} ms"

    print(f"inputs: {args.pages} pages of Markdown ({os.path.getsize(md) / 1e6:.1f} MB), the same as DOCX ({os.path.getsize(docx) / 1e6:.1f} MB); {n} runs each")
    print(f"md->docx    pandoc  {ms(pandoc_md)}  (whole process)")
    print(f"md->docx    ours    {ms(ours_md)}")
    print(f"docx->html  pandoc  {ms(pandoc_html)}  (whole process)")
    print(f"docx->html  ours    {ms(ours_html)}")
    r1, r2 = min(pandoc_md) / min(ours_md), min(pandoc_html) / min(ours_html)
    print(f"ratio md->docx   pandoc/ours = {r1:6.2f}x best  (target >= 5x)  {'met' if r1 >= 5 else 'NOT met'}")
    print(f"ratio docx->html pandoc/ours = {r2:6.2f}x best  (target >= 10x) {'met' if r2 >= 10 else 'NOT met'}")
    print(f"compare {args.compare_pages}-page versions: {ms(cmp_times)}, {changed.revisions.count} revisions  "
          f"(target < 2000 ms) {'met' if min(cmp_times) < 2 else 'NOT met'}")
    if not args.keep:
        shutil.rmtree(work, ignore_errors=True)


if __name__ == "__main__":
    sys.exit(main())
