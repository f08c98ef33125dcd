"""Threads and the interpreter lock, measured side by side in one run.

1. Throughput: documents converted per second (DOCX on disk -> loaded -> saved as DOCX and as text)
   by 1 thread and by 4 threads each converting its own document; target ratio >= 1.8 on 2 cores.
2. Responsiveness: the worst delay of a 1 ms ticker thread while another thread saves a document
   of about 20 MB; target < 10 ms. The same ticker with no save beside it is the baseline.

The machine is shared and noisy: every figure is repeated and printed as a range.
Run after `make`: PYTHONPATH=build/python /usr/bin/python3 bench/threads.py [--quick]
"""

import os
import sys
import tempfile
import threading
import time
import zipfile

import quorix.folio as qf

QUICK = "--quick" in sys.argv
REPEATS = 2 if QUICK else 5


def make_document(path, paragraphs, tag):
    builder = qf.DocumentBuilder()
    line = " ".join(f"{tag}{i}" for i in range(12))
    for i in range(paragraphs):
        builder.writeln(f"{i} {line}")
    builder.document.save(path)


def convert(source, folder, n):
    doc = qf.Document(source)
    doc.save(os.path.join(folder, f"out{n}.docx"))
    doc.save(os.path.join(folder, f"out{n}.txt"))


def throughput(threads, sources, folder, per_thread):
    """Documents per second with `threads` threads, each converting its own source `per_thread` times."""
    barrier = threading.Barrier(threads + 1)

    def work(k):
        barrier.wait()
        for n in range(per_thread):
            convert(sources[k], folder, f"{k}-{n}")

    pool = [threading.Thread(target=work, args=(k,)) for k in range(threads)]
    for t in pool:
        t.start()
    barrier.wait()
    start = time.perf_counter()
    for t in pool:
        t.join()
    return threads * per_thread / (time.perf_counter() - start)


def worst_tick_delay(work):
    """The largest lateness (ms) of a ticker asking to wake every 1 ms while `work()` runs."""
    worst = 0.0
    stop = threading.Event()

    def ticker():
        nonlocal worst
        last = time.perf_counter()
        while not stop.is_set():
            time.sleep(0.001)
            now = time.perf_counter()
            worst = max(worst, (now - last - 0.001) * 1000)
            last = now

    t = threading.Thread(target=ticker)
    t.start()
    time.sleep(0.05)
    work()
    stop.set()
    t.join()
    return worst


def span(values, fmt="{:.2f}"):
    return f"{fmt.format(min(values))} .. {fmt.format(max(values))}"


def main():
    folder = tempfile.mkdtemp(prefix="qrx-threads-")
    sources = []
    for k in range(4):
        path = os.path.join(folder, f"src{k}.docx")
        make_document(path, 300 if QUICK else 1500, f"w{k}")
        sources.append(path)
    convert(sources[0], folder, "warm")

    per_thread = 2 if QUICK else 6
    ratios, singles, quads = [], [], []
    for _ in range(REPEATS):
        one = throughput(1, sources, folder, per_thread)
        four = throughput(4, sources, folder, per_thread)
        singles.append(one)
        quads.append(four)
        ratios.append(four / one)
    print(f"throughput, docs/s: 1 thread {span(singles)}; 4 threads {span(quads)}; "
          f"ratio {span(ratios)} (target >= 1.8)")

    big = os.path.join(folder, "big.docx")
    builder = qf.DocumentBuilder()
    text = "twenty megabytes of document text, paragraph after paragraph " * 4
    paragraphs = 4000 if QUICK else 60000
    for i in range(paragraphs):
        builder.writeln(f"{i} {text}")
    doc = builder.document
    doc.save(big)
    with zipfile.ZipFile(big) as package:
        xml = sum(info.file_size for info in package.infolist()) / (1 << 20)
    idle, busy = [], []
    for _ in range(REPEATS):
        idle.append(worst_tick_delay(lambda: time.sleep(0.3)))
        busy.append(worst_tick_delay(lambda: doc.save(big)))
    print(f"ticker worst delay, ms: idle {span(idle)}; during a save of {xml:.0f} MB of XML "
          f"{span(busy)} (target < 10)")


if __name__ == "__main__":
    main()
