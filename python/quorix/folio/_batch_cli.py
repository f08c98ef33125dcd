"""`python -m quorix.folio batch convert IN_DIR OUT_DIR --to FORMAT`: the documents of a folder
tree converted by quorix.folio.batch, the tree mirrored under OUT_DIR.

Standard error shows a bar when it is a terminal, else one line per file (for logs), and a
summary. Exit codes: 0 every file converted or current; 1 some failed; 2 wrong usage; 3 a folder
is missing or not accessible.
"""

from __future__ import annotations

import argparse
import os
import time
from typing import Any, TextIO

from quorix.folio import batch

EXIT_FAILED, EXIT_USAGE, EXIT_FILE = 1, 2, 3


def add_parser(commands: Any) -> None:
    b = commands.add_parser("batch", help="convert many documents on all cores or a Dask cluster")
    actions = b.add_subparsers(dest="action", required=True, metavar="ACTION")
    c = actions.add_parser("convert", help="convert the documents under IN_DIR into OUT_DIR")
    c.add_argument("source", metavar="IN_DIR")
    c.add_argument("target", metavar="OUT_DIR")
    import quorix.folio as qf

    known = ", ".join(f.name.lower() for f in qf.SaveFormat if f != qf.SaveFormat.UNKNOWN)
    c.add_argument("--to", required=True, metavar="FORMAT", help=f"a format's name or extension: {known}")
    c.add_argument("--workers", type=int, metavar="N", help="local worker processes (default: one per core)")
    c.add_argument("--scheduler", metavar="ADDRESS", help="a Dask scheduler (tcp://host:8786) whose workers convert")
    c.add_argument("--overwrite", action="store_true", help="convert files whose output is newer than the input too")
    c.add_argument("--timeout", type=float, metavar="SECONDS", help="end a file's worker after this long")
    c.add_argument("--memory-limit", type=int, metavar="MIB", help="end a local worker using more memory than this")
    c.add_argument("--retries", type=int, metavar="N", help="attempts after a local worker died on a file (default 2)")


def _is_document(name: str) -> bool:
    import quorix.folio as qf

    extension = os.path.splitext(name)[1]
    try:  # by extension (".md"), then by name (".markdown"); only formats the engine reads
        name = qf.FileFormatUtil.extension_to_save_format(extension).name
    except RuntimeError:
        name = extension[1:].upper()
    fmt = qf.LoadFormat.__members__.get(name)
    return fmt is not None and fmt not in (qf.LoadFormat.AUTO, qf.LoadFormat.UNKNOWN)


def find_documents(in_dir: str, out_dir: str) -> list[str]:
    """The documents under in_dir, outside out_dir and hidden folders, in a stable order."""
    found = []
    skip = os.path.abspath(out_dir)
    for folder, subfolders, files in os.walk(in_dir):
        subfolders[:] = sorted(d for d in subfolders
                               if not d.startswith(".") and os.path.abspath(os.path.join(folder, d)) != skip)
        found += [os.path.join(folder, f) for f in sorted(files) if not f.startswith(".") and _is_document(f)]
    return found


class Progress:
    """A bar redrawn in place on a terminal; elsewhere a line per finished file."""

    def __init__(self, total: int, stream: TextIO) -> None:
        self.total, self.stream, self.report = total, stream, batch.Report()
        self.terminal = stream.isatty()

    def add(self, result: batch.Result) -> None:
        self.report.add(result)
        if self.terminal:
            done = len(self.report)
            filled = 30 * done // max(self.total, 1)
            self.stream.write(f"\r[{'#' * filled}{'.' * (30 - filled)}] {done}/{self.total} "
                              f"failed {len(self.report.failed)} {os.path.basename(result.source):30.30}")
        elif result.skipped:
            self.stream.write(f"skipped {result.source}: {result.output} is newer\n")
        elif result.ok:
            self.stream.write(f"ok      {result.source} -> {result.output}\n")
        else:
            self.stream.write(f"failed  {result.source}: {result.error_type}: {result.error}\n")
        self.stream.flush()

    def finish(self, seconds: float) -> None:
        if self.terminal:
            self.stream.write("\n")
        self.stream.write(f"{self.total} files: {self.report} in {seconds:.1f} s\n")
        for failure in self.report.failed if self.terminal else ():
            self.stream.write(f"failed  {failure.source}: {failure.error_type}: {failure.error}\n")


def run(args: argparse.Namespace, prog: str, err: TextIO) -> int:
    def fail(code: int, message: str) -> int:
        err.write(f"{prog} batch {args.action}: {message}\n")
        return code

    if not os.path.isdir(args.source):
        return fail(EXIT_FILE, f"cannot read '{args.source}': not a folder")
    try:
        os.makedirs(args.target, exist_ok=True)
    except OSError as error:
        return fail(EXIT_FILE, f"cannot write '{args.target}': {error.strerror or error}")
    if args.scheduler and (args.memory_limit is not None or args.retries is not None):
        return fail(EXIT_USAGE, "--memory-limit and --retries are for local workers; a Dask cluster sets its own")
    try:
        save_format = batch.resolve_save_format(args.to)[0]
    except ValueError as error:
        return fail(EXIT_USAGE, str(error))
    sources = find_documents(args.source, args.target)
    options: dict[str, Any] = dict(root=args.source, overwrite=args.overwrite, timeout=args.timeout,
                                   workers=args.workers, retries=args.retries,
                                   memory_limit=None if args.memory_limit is None else args.memory_limit << 20)
    client = None
    if args.scheduler:
        from distributed import Client

        client = options["client"] = Client(args.scheduler)  # type: ignore[no-untyped-call]
        del options["workers"], options["retries"], options["memory_limit"]
    progress = Progress(len(sources), err)
    started = time.monotonic()
    try:
        for result in batch.iter_convert(sources, args.target, save_format, **options):
            progress.add(result)
    except ValueError as error:
        return fail(EXIT_USAGE, str(error))
    finally:
        if client is not None:
            client.close()  # type: ignore[no-untyped-call]
    progress.finish(time.monotonic() - started)
    return EXIT_FAILED if progress.report.failed else 0
