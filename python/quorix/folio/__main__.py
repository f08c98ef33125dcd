"""Command line of quorix.folio.

    python -m quorix.folio convert IN OUT [--format FORMAT] [--pages A-B]
    python -m quorix.folio info IN
    python -m quorix.folio text IN
    python -m quorix.folio batch convert IN_DIR OUT_DIR --to FORMAT [--workers N]

Exit codes: 0 done; 1 the document could not be read or written; 2 wrong usage; 3 a file is
missing or not accessible. Messages name the file and the cause.
"""

from __future__ import annotations

import argparse
import io
import os
import re
import sys
from typing import Callable, Sequence, TextIO, TypeVar

import quorix.folio as qf
from quorix.folio import _batch_cli, saving

T = TypeVar("T")
PROG = "python -m quorix.folio"
EXIT_DOCUMENT, EXIT_USAGE, EXIT_FILE = 1, 2, 3


class Failure(Exception):
    def __init__(self, code: int, message: str) -> None:
        super().__init__(message)
        self.code = code


class Progress:
    """A bar of the conversion's steps on standard error, drawn only when that is a terminal.

    The engine reports no progress of its own while it loads or saves, so the bar advances per
    step (load, then each file written) rather than per byte."""

    def __init__(self, steps: int, stream: TextIO) -> None:
        self.steps, self.done, self.stream = steps, 0, stream
        self.enabled = stream.isatty()

    def step(self, label: str) -> None:
        if self.enabled:
            filled = 30 * self.done // self.steps
            self.stream.write(f"\r[{'#' * filled}{'.' * (30 - filled)}] {self.done}/{self.steps} {label:40.40}")
            self.stream.flush()
        self.done += 1

    def finish(self) -> None:
        if self.enabled:
            self.stream.write(f"\r[{'#' * 30}] {self.steps}/{self.steps} {'done':40}\n")
            self.stream.flush()


def _cause(error: BaseException) -> str:
    # managed errors arrive as "Proxy error(<managed type>): <message>"
    match = re.match(r"Proxy error\((?:[\w.]+\.)?(\w+)\): (.*)", str(error), re.S)
    return f"{match.group(2).strip()} ({match.group(1)})" if match else str(error)


def _guard(path: str, action: str, work: Callable[[], T]) -> T:
    try:
        return work()
    except OSError as error:
        raise Failure(EXIT_FILE, f"cannot {action} '{path}': {error.strerror or error}") from error
    except RuntimeError as error:
        raise Failure(EXIT_DOCUMENT, f"cannot {action} '{path}': {_cause(error)}") from error


def _readable(path: str) -> None:
    if not os.path.exists(path):
        raise Failure(EXIT_FILE, f"cannot read '{path}': no such file")
    if os.path.isdir(path) or not os.access(path, os.R_OK):
        raise Failure(EXIT_FILE, f"cannot read '{path}': not a readable file")


def _load(path: str) -> qf.Document:
    _readable(path)
    return _guard(path, "read", lambda: qf.Document(path))


def _format_of_extension(extension: str) -> qf.SaveFormat:
    try:
        return qf.FileFormatUtil.extension_to_save_format(extension)
    except RuntimeError:
        return qf.SaveFormat.UNKNOWN


def _save_format(name: str | None, out: str) -> qf.SaveFormat:
    """--format by name ("markdown") or by extension ("md"); else the output's extension."""
    known = ", ".join(f.name.lower() for f in qf.SaveFormat if f != qf.SaveFormat.UNKNOWN)
    if name is None:
        fmt = _format_of_extension(os.path.splitext(out)[1])
        if fmt == qf.SaveFormat.UNKNOWN:
            raise Failure(EXIT_USAGE, f"cannot tell the format of '{out}' from its extension; give --format ({known})")
        return fmt
    fmt = qf.SaveFormat.__members__.get(name.upper()) or _format_of_extension("." + name.lstrip("."))
    if fmt == qf.SaveFormat.UNKNOWN:
        raise Failure(EXIT_USAGE, f"unknown format '{name}'; known: {known}")
    return fmt


def _writable(path: str) -> None:
    folder = os.path.dirname(os.path.abspath(path))
    if not os.path.isdir(folder):
        raise Failure(EXIT_FILE, f"cannot write '{path}': no such folder '{folder}'")
    if os.path.isdir(path) or not os.access(folder, os.W_OK):
        raise Failure(EXIT_FILE, f"cannot write '{path}': not a writable file")


# Formats whose files hold one page each (a TIFF holds them all): several pages become several files.
_ONE_PAGE_A_FILE = (saving.ImageSaveOptions, saving.SvgSaveOptions)


def _page_range(spec: str) -> tuple[int, int | None]:
    """--pages as 1-based first and last page, last None for "to the end": N, A-B or A-."""
    match = re.fullmatch(r"(\d+)(?:(-)(\d*))?", spec.strip())
    if match:
        first = int(match.group(1))
        last = int(match.group(3)) if match.group(3) else None if match.group(2) else first
        if first >= 1 and (last is None or last >= first):
            return first, last
    raise Failure(EXIT_USAGE, f"--pages '{spec}' is not a page range; give N, A-B or A- (pages count from 1)")


def _fixed_page_options(fmt: qf.SaveFormat) -> saving.FixedPageSaveOptions:
    options = saving.SaveOptions.create_save_options(fmt)
    if not isinstance(options, saving.FixedPageSaveOptions):
        paged = ", ".join(f.name.lower() for f in qf.SaveFormat if f != qf.SaveFormat.UNKNOWN and isinstance(
            saving.SaveOptions.create_save_options(f), saving.FixedPageSaveOptions))
        raise Failure(EXIT_USAGE, f"--pages is for the formats that write laid-out pages ({paged}), "
                                  f"not {fmt.name.lower()}")
    return options


def _page_file(target: str, page: int) -> str:
    stem, extension = os.path.splitext(target)
    return f"{stem}-{page}{extension}"


def convert(source: str, target: str, fmt_name: str | None, pages: str | None, err: TextIO) -> int:
    fmt = _save_format(fmt_name, target)
    _writable(target)
    chosen = _page_range(pages) if pages is not None else None
    options = _fixed_page_options(fmt) if chosen is not None else None
    progress = Progress(2, err)
    progress.step(f"reading {os.path.basename(source)}")
    document = _load(source)
    if options is None or chosen is None:
        progress.step(f"writing {os.path.basename(target)}")
        saved = _guard(target, "write", lambda: document.save(target, fmt))
        progress.finish()
        if saved.content_type.startswith("image/") and fmt != qf.SaveFormat.TIFF and (count := document.page_count) > 1:
            err.write(f"note: '{target}' holds page 1 of {count}; --pages 1-{count} writes each page to a file\n")
        return 0
    count = _guard(source, "lay out", lambda: document.page_count)
    first, last = chosen[0], min(chosen[1] or count, count)
    if first > count:
        raise Failure(EXIT_USAGE, f"cannot write '{target}': --pages {pages} starts past the last page of "
                                  f"'{source}', which has {count}")
    # one file for the range, or one a page where a file holds a single page
    paged: saving.FixedPageSaveOptions = options  # the closures below see no narrowing of options
    outputs = [(target, first, last)]
    if isinstance(paged, _ONE_PAGE_A_FILE) and paged.save_format != qf.SaveFormat.TIFF and last > first:
        outputs = [(_page_file(target, page), page, page) for page in range(first, last + 1)]
    progress.steps = 1 + len(outputs)
    for path, start, end in outputs:
        progress.step(f"writing {os.path.basename(path)}")
        paged.page_set = saving.PageSet(saving.PageRange(start - 1, end - 1))
        _guard(path, "write", lambda: document.save(path, paged))
    progress.finish()
    return 0


def info(source: str, out: TextIO) -> int:
    _readable(source)
    detected = _guard(source, "read", lambda: qf.FileFormatUtil.detect_file_format(source))
    document = _load(source)
    text = document.get_text()
    sections = document.sections.count
    pages = _guard(source, "lay out", lambda: document.page_count)
    rows = [
        ("file", source),
        ("format", detected.load_format.name.lower()),
        ("encrypted", "yes" if detected.is_encrypted else "no"),
        ("pages", str(pages)),
        ("sections", str(sections)),
        ("words", str(len(text.split()))),
        ("comments", str(document.comments.count)),
        ("revisions", "yes" if document.has_revisions else "no"),
    ]
    width = max(len(key) for key, _ in rows)
    for key, value in rows:
        out.write(f"{key:<{width}}  {value}\n")
    return 0


def text(source: str, out: TextIO) -> int:
    document = _load(source)
    buffer = io.BytesIO()
    options = saving.TxtSaveOptions()
    options.paragraph_break = "\n"  # the file format's CR LF is no line end on a terminal
    _guard(source, "convert", lambda: document.save(buffer, options))
    out.write(buffer.getvalue().decode("utf-8-sig"))
    return 0


def _parser() -> argparse.ArgumentParser:
    parser = argparse.ArgumentParser(prog=PROG, description="Convert and inspect documents with quorix.folio.")
    commands = parser.add_subparsers(dest="command", required=True, metavar="COMMAND")
    c = commands.add_parser("convert", help="convert IN to OUT; the format follows OUT's extension or --format")
    c.add_argument("source", metavar="IN")
    c.add_argument("target", metavar="OUT")
    c.add_argument("--format", dest="fmt", metavar="FORMAT",
                   help="one of: " + ", ".join(f.name.lower() for f in qf.SaveFormat if f != qf.SaveFormat.UNKNOWN))
    c.add_argument("--pages", metavar="A-B",
                   help="the pages to write, counted from 1 (N, A-B or A-), for formats of laid-out pages; "
                        "where a file holds one page (png, jpeg, svg), OUT-N.ext for each page N")
    i = commands.add_parser("info", help="format, pages, sections, words, comments and revisions of IN")
    i.add_argument("source", metavar="IN")
    t = commands.add_parser("text", help="the plain text of IN on standard output")
    t.add_argument("source", metavar="IN")
    _batch_cli.add_parser(commands)
    return parser


def main(argv: Sequence[str] | None = None, out: TextIO | None = None, err: TextIO | None = None) -> int:
    out = out or sys.stdout
    err = err or sys.stderr
    args = _parser().parse_args(argv)
    try:
        if args.command == "convert":
            return convert(args.source, args.target, args.fmt, args.pages, err)
        if args.command == "batch":
            return _batch_cli.run(args, PROG, err)
        if args.command == "info":
            return info(args.source, out)
        return text(args.source, out)
    except Failure as failure:
        err.write(f"{PROG} {args.command}: {failure}\n")
        return failure.code


if __name__ == "__main__":
    sys.exit(main())
