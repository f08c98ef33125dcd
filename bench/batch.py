#!/usr/bin/env python3
"""Batch benchmark: DOCX -> Markdown of generated documents, side by side in one run.

  * throughput of 2 local workers against 1 (target: at least 1.7 times);
  * time per file on a Dask LocalCluster of 2 single-threaded worker processes against the
    local pool of 2 workers on the same machine (target: at most 20% more).

Rounds alternate the configurations so the machine's noise falls on all of them; each figure is
printed as the range over the rounds. Marginal figures are the time per file of a batch's second
half, so worker start-up and first compilation stay out; whole-batch times keep them in. Dask
returns files in tasks of up to 16, so use enough files that a task is a small part of a half.
CPU per file (all processes, whole batch) shows the cost of each path when other work on the
machine makes the times wander, and a control measures what the machine gives two independent
processes, the ceiling of any two-worker speed-up in that run.

Run it on the wheel's tree, whose assemblies are precompiled as users get them (the build tree's
are compiled at run time, a cost every worker pays again):

    make wheel && PYTHONPATH=build/wheel /usr/bin/python3 bench/batch.py [--files 600] [--rounds 3]
"""

import argparse
import os
import resource
import subprocess
import sys
import tempfile
import time

import quorix.folio as qf
from quorix.folio import batch


def make_documents(folder, count, paragraphs):
    paths = []
    for i in range(count):
        doc = qf.Document()
        builder = qf.DocumentBuilder(doc)
        for p in range(paragraphs):
            builder.font.bold = p % 3 == 0
            builder.writeln(f"Paragraph {p} of document {i}: " + "lorem ipsum dolor sit amet " * 8)
        builder.start_table()
        for r in range(10):
            for c in range(4):
                builder.insert_cell()
                builder.write(f"r{r}c{c}")
            builder.end_row()
        builder.end_table()
        paths.append(os.path.join(folder, f"doc{i:04}.docx"))
        doc.save(paths[-1])
    return paths


def process_cpu():
    usage = resource.getrusage(resource.RUSAGE_SELF)
    return usage.ru_utime + usage.ru_stime


def children_cpu():
    usage = resource.getrusage(resource.RUSAGE_CHILDREN)
    return usage.ru_utime + usage.ru_stime


def per_file(paths, out, client=None, **options):
    """(whole-batch seconds, marginal seconds per file, CPU seconds per file): the marginal time
    runs from the middle result to the last, so what a batch costs once (starting workers,
    compiling) stays out; CPU counts this process (with Dask's scheduler) and the workers, over
    the whole batch, and the machine's other load does not change it much."""
    def cpu():
        workers = sum(client.run(process_cpu).values()) if client is not None else children_cpu()
        return process_cpu() + workers

    cpu_before = cpu()
    started = time.perf_counter()
    stamps = []
    for result in batch.iter_convert(paths, out, "md", overwrite=True, client=client, **options):
        if not result.ok:
            sys.exit(f"{result.source}: {result.error_type}: {result.error}")
        stamps.append(time.perf_counter())
    middle = len(stamps) // 2
    return (stamps[-1] - started, (stamps[-1] - stamps[middle]) / (len(stamps) - 1 - middle),
            (cpu() - cpu_before) / len(stamps))


def machine_speedup(work, paths):
    """What the machine gives two independent processes: a 1-worker batch of half the files in
    one process, against two such processes at once over both halves (the command line)."""
    halves = [os.path.join(work, "half0"), os.path.join(work, "half1")]
    for i, half in enumerate(halves):
        os.makedirs(half, exist_ok=True)
        for path in paths[i::2]:
            if not os.path.exists(os.path.join(half, os.path.basename(path))):
                os.link(path, os.path.join(half, os.path.basename(path)))

    def command(half):
        return [sys.executable, "-m", "quorix.folio", "batch", "convert", half, half + "-out", "--to", "md",
                "--workers", "1", "--overwrite"]

    started = time.perf_counter()
    subprocess.run(command(halves[0]), check=True, capture_output=True)
    alone = time.perf_counter() - started
    started = time.perf_counter()
    both = [subprocess.Popen(command(h), stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL) for h in halves]
    if any(p.wait() for p in both):
        sys.exit("the command line failed")
    return 2 * alone / (time.perf_counter() - started)


def span(values, unit=""):
    return f"{min(values):.2f}{unit} .. {max(values):.2f}{unit}"


def main():
    ap = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    ap.add_argument("--files", type=int, default=600)
    ap.add_argument("--paragraphs", type=int, default=40)
    ap.add_argument("--rounds", type=int, default=3)
    ap.add_argument("--no-dask", action="store_true")
    args = ap.parse_args()

    work = tempfile.mkdtemp(prefix="qrx-batch-bench-")
    os.makedirs(os.path.join(work, "in"))
    paths = make_documents(os.path.join(work, "in"), args.files, args.paragraphs)
    out = os.path.join(work, "out")
    client = cluster = None
    if not args.no_dask:
        from distributed import Client, LocalCluster

        cluster = LocalCluster(n_workers=2, threads_per_worker=1, processes=True, host="127.0.0.1",
                               dashboard_address=None)
        client = Client(cluster)
    runs = {"1 worker": [], "2 workers": [], "dask 2 workers": []}
    control = []
    try:
        for _ in range(args.rounds):
            control.append(machine_speedup(work, paths))
            runs["1 worker"].append(per_file(paths, out, workers=1))
            runs["2 workers"].append(per_file(paths, out, workers=2))
            if client is not None:
                client.restart()  # fresh worker processes, as the local pool starts for each batch
                runs["dask 2 workers"].append(per_file(paths, out, client=client))
    finally:
        if client is not None:
            client.close()
            cluster.close()

    print(f"{args.files} files of {args.paragraphs} paragraphs and a table, DOCX -> Markdown, "
          f"{args.rounds} rounds, {os.cpu_count()} cores, load average {os.getloadavg()[0]:.1f}, "
          f"package {os.path.dirname(os.path.dirname(os.path.abspath(qf.__file__)))}")
    for name, figures in runs.items():
        if figures:
            print(f"  {name:15} whole batch {span([f[0] for f in figures], ' s')}, "
                  f"marginal {span([1000 * f[1] for f in figures], ' ms/file')}, "
                  f"CPU {span([1000 * f[2] for f in figures], ' ms/file')}")
    def compare(label, a, b, ratio, unit, target):
        """Per round, and between the best (least disturbed) runs of each."""
        for i, what in ((1, "marginal"), (0, "whole batch"), (2, "CPU per file")):
            rounds = [ratio(x[i], y[i]) for x, y in zip(runs[a], runs[b])]
            best = ratio(min(x[i] for x in runs[a]), min(y[i] for y in runs[b]))
            print(f"{label}, {what}: {span(rounds, unit)} per round, {best:.2f}{unit} best to best  ({target})")

    compare("2 workers / 1 worker throughput", "1 worker", "2 workers", lambda one, two: one / two, "x",
            "target >= 1.7x; for CPU, 1.0x means no cost of running two")
    print(f"two independent 1-worker processes at once against one, same control: {span(control, 'x')} per round")
    if runs["dask 2 workers"]:
        compare("Dask time per file over the local pool's", "2 workers", "dask 2 workers",
                lambda local, dask: 100 * (dask / local - 1), "%", "target <= 20%")


if __name__ == "__main__":
    main()
