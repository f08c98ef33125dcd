"""Many documents at once: conversion, or a function of each document, on every local core or on
the workers of a Dask cluster.

    from quorix.folio import batch
    report = batch.convert(paths, "out", "md")                  # a pool of local worker processes
    report = batch.convert(paths, "out", "md", client=client)   # a dask.distributed Client's workers
    for result in batch.iter_convert(paths, "out", "md"):       # results as they finish
        ...

Each worker process starts the runtime once and handles many files. A file's failure, including
its worker dying, is an entry of the report, never an exception of the batch. Outputs appear
under their final names only when complete.
"""

from __future__ import annotations

import dataclasses
import os
import re
import secrets
import shutil
import threading
import time
from typing import Any, Callable, Iterable, Iterator, Sequence, Union

PathLike = Union[str, "os.PathLike[str]"]

DEFAULT_RETRIES = 2
_STAGING_PREFIX = ".quorix-batch-"


@dataclasses.dataclass(frozen=True)
class Result:
    """What became of one input file."""

    source: str
    ok: bool
    output: str | None = None          # convert: the file written
    value: Any = None                  # map: what the function returned
    error_type: str | None = None      # the exception's type (the engine's own type for its errors)
    error: str | None = None
    skipped: bool = False              # the output was newer than the input and was kept
    attempts: int = 1
    seconds: float = 0.0


@dataclasses.dataclass
class Report:
    succeeded: list[Result] = dataclasses.field(default_factory=list)
    failed: list[Result] = dataclasses.field(default_factory=list)
    skipped: list[Result] = dataclasses.field(default_factory=list)

    def add(self, result: Result) -> Result:
        (self.skipped if result.skipped else self.succeeded if result.ok else self.failed).append(result)
        return result

    @property
    def ok(self) -> bool:
        return not self.failed

    def __len__(self) -> int:
        return len(self.succeeded) + len(self.failed) + len(self.skipped)

    def __str__(self) -> str:
        return f"{len(self.succeeded)} converted, {len(self.failed)} failed, {len(self.skipped)} skipped"


@dataclasses.dataclass(frozen=True)
class Task:
    """One file's work, as sent to a worker process."""

    index: int
    source: str                                # as the caller named it, for the report
    path: str                                  # absolute, as the worker opens it
    func: Callable[[Any], Any] | None = None   # map
    output: str | None = None                  # convert
    save_format: int = 0
    staging: str | None = None                 # the batch's folder beside the outputs (worker_staging)

    def failure(self, error_type: str, message: str, attempts: int = 1) -> Result:
        return Result(self.source, False, error_type=error_type, error=message, attempts=attempts)


def worker_staging(staging: str, pid: int) -> str:
    """The folder in which one worker process writes its outputs before renaming them into place,
    a subfolder for each of its threads (a Dask worker runs several): one per worker rather than
    per file, because making and removing a folder for every file cost a fifth of a small
    document's conversion."""
    return os.path.join(staging, str(pid))


def _thread_staging(task: Task) -> str:
    assert task.staging is not None
    return os.path.join(worker_staging(task.staging, os.getpid()), str(threading.get_ident()))


# ---- worker side: runs in the worker processes, the same for the local pool and Dask

def describe(error: BaseException) -> tuple[str, str]:
    """The exception's type and message; engine errors name the managed exception's type."""
    match = re.match(r"Proxy error\((?:[\w.]+\.)?(\w+)\): (.*)", str(error), re.S)
    if isinstance(error, RuntimeError) and match:
        return match.group(1), match.group(2).strip()
    return type(error).__name__, str(error)


def run_task(task: Task) -> Result:
    started = time.perf_counter()
    try:
        import quorix.folio as qf  # the runtime starts with the first task of the process only

        document = qf.Document(task.path)
        if task.func is not None:
            value = task.func(document)
            return Result(task.source, True, value=value, seconds=time.perf_counter() - started)
        _save_atomically(qf, document, task)
        return Result(task.source, True, output=task.output, seconds=time.perf_counter() - started)
    except Exception as error:  # a bad file is the batch's data, whatever the engine or the function raised
        if task.staging:  # what a failed save left must not join the next file's outputs
            shutil.rmtree(_thread_staging(task), ignore_errors=True)
        error_type, message = describe(error)
        return Result(task.source, False, error_type=error_type, error=message,
                      seconds=time.perf_counter() - started)


_CLEARED: set[str] = set()  # the staging folders this process has emptied before their first file


def _save_atomically(qf: Any, document: Any, task: Task) -> None:
    """Saves under the final file name inside the thread's staging folder, then renames into place.

    The name is the final one because writers derive companion files from it (Markdown's images);
    those are moved first, so the main output never appears before what it refers to."""
    assert task.output is not None
    folder = _thread_staging(task)
    if folder not in _CLEARED:  # process ids are reused: a dead earlier owner's leftovers go
        shutil.rmtree(folder, ignore_errors=True)
        _CLEARED.add(folder)
    os.makedirs(folder, exist_ok=True)
    name = os.path.basename(task.output)
    document.save(os.path.join(folder, name), qf.SaveFormat(task.save_format))
    final_dir = os.path.dirname(task.output)
    os.makedirs(final_dir, exist_ok=True)
    for companion in sorted(os.listdir(folder)):
        if companion != name:
            os.replace(os.path.join(folder, companion), os.path.join(final_dir, companion))
    os.replace(os.path.join(folder, name), task.output)


# ---- planning: runs where the batch is started

def resolve_save_format(save_format: Any) -> tuple[Any, str]:
    """A SaveFormat member from a member, a name ("markdown") or an extension ("md", ".md"),
    with the extension its files get."""
    import quorix.folio as qf

    fmt: Any
    if isinstance(save_format, qf.SaveFormat):
        fmt = save_format
    elif isinstance(save_format, str):
        fmt = qf.SaveFormat.__members__.get(save_format.strip().upper())
        if fmt is None:
            try:
                fmt = qf.FileFormatUtil.extension_to_save_format("." + save_format.strip().lstrip("."))
            except RuntimeError:
                fmt = None
    else:
        raise TypeError(f"save_format must be a SaveFormat or a str, not {type(save_format).__name__}")
    if fmt is None or fmt == qf.SaveFormat.UNKNOWN:
        known = ", ".join(f.name.lower() for f in qf.SaveFormat if f != qf.SaveFormat.UNKNOWN)
        raise ValueError(f"unknown save format {save_format!r}; known: {known}")
    return fmt, qf.FileFormatUtil.save_format_to_extension(fmt)


def _is_current(source: str, output: str) -> bool:
    try:
        return os.stat(output).st_mtime_ns > os.stat(source).st_mtime_ns
    except OSError:
        return False


def plan_conversions(paths: Sequence[PathLike], out_dir: PathLike, save_format: Any, *, root: PathLike | None,
                     overwrite: bool) -> tuple[list[Task], list[Result], str]:
    """The tasks to run, the results known without running (skipped, colliding) and the staging
    folder. Outputs mirror the inputs' folders below `root` (by default their common folder)."""
    fmt, extension = resolve_save_format(save_format)
    sources = [os.path.abspath(os.fspath(p)) for p in paths]
    if root is None:
        root = os.path.commonpath([os.path.dirname(s) for s in sources]) if sources else "."
    root, out_dir = os.path.abspath(os.fspath(root)), os.path.abspath(os.fspath(out_dir))
    staging = os.path.join(out_dir, _STAGING_PREFIX + secrets.token_hex(6))
    tasks: list[Task] = []
    known: list[Result] = []
    claimed: dict[str, str] = {}
    inputs = set(sources)
    for index, (given, source) in enumerate(zip(paths, sources)):
        relative = os.path.relpath(source, root)
        if relative.startswith(os.pardir + os.sep):
            relative = os.path.basename(source)
        output = os.path.join(out_dir, os.path.splitext(relative)[0] + extension)
        given_name = os.fspath(given)
        if output in claimed or output in inputs:
            if output == source:
                other = "the input itself"
            else:
                other = f"the output of {claimed[output]}" if output in claimed else "another input"
            known.append(Result(given_name, False, output=output, error_type="ValueError",
                                error=f"{output} would be {other}", attempts=0))
            continue
        claimed[output] = given_name
        if not overwrite and _is_current(source, output):
            known.append(Result(given_name, True, output=output, skipped=True, attempts=0))
            continue
        tasks.append(Task(index, given_name, source, output=output,
                          save_format=int(fmt), staging=staging))
    return tasks, known, staging


def _run(tasks: list[Task], *, client: Any, workers: int | None, timeout: float | None,
         memory_limit: int | None, retries: int | None, start_method: str,
         chunksize: int | None) -> Iterator[Result]:
    if client is None and chunksize is not None:
        raise ValueError("chunksize is for Dask; local workers are sent files one by one")
    if client is not None:
        from quorix.folio import _dask

        if memory_limit is not None:
            raise ValueError("on Dask, memory is limited by the workers' own memory_limit; memory_limit is "
                             "for the local pool")
        if retries is not None:
            raise ValueError("on Dask, a file whose worker died is retried as the scheduler's "
                             "distributed.scheduler.allowed-failures setting says; retries is for the local pool")
        return _dask.run(client, tasks, timeout, chunksize)
    from quorix.folio import _pool

    return _pool.run(tasks, workers=workers, timeout=timeout, memory_limit=memory_limit,
                     retries=DEFAULT_RETRIES if retries is None else retries, start_method=start_method)


def iter_convert(paths: Iterable[PathLike], out_dir: PathLike, save_format: Any, *, root: PathLike | None = None,
                 overwrite: bool = False, client: Any = None, workers: int | None = None,
                 timeout: float | None = None, memory_limit: int | None = None, retries: int | None = None,
                 start_method: str = "spawn", chunksize: int | None = None) -> Iterator[Result]:
    """Converts every file to save_format under out_dir, yielding each result as it finishes.

    Files whose output is newer than the input are skipped unless overwrite. timeout (seconds)
    and memory_limit (bytes of a worker's resident memory) end a file's worker and fail the
    file; a worker that dies otherwise has its file retried `retries` times (default 2).
    With a Dask client, files travel in tasks of chunksize files."""
    paths = list(paths)
    tasks, known, staging = plan_conversions(paths, out_dir, save_format, root=root, overwrite=overwrite)
    try:
        yield from known
        if tasks:
            yield from _run(tasks, client=client, workers=workers, timeout=timeout, memory_limit=memory_limit,
                            retries=retries, start_method=start_method, chunksize=chunksize)
    finally:
        shutil.rmtree(staging, ignore_errors=True)


def convert(paths: Iterable[PathLike], out_dir: PathLike, save_format: Any, **options: Any) -> Report:
    """Like iter_convert (same options), returning the finished batch's report."""
    report = Report()
    for result in iter_convert(paths, out_dir, save_format, **options):
        report.add(result)
    return report


def iter_map(func: Callable[[Any], Any], paths: Iterable[PathLike], *, client: Any = None,
             workers: int | None = None, timeout: float | None = None, memory_limit: int | None = None,
             retries: int | None = None, start_method: str = "spawn",
             chunksize: int | None = None) -> Iterator[Result]:
    """Calls func(Document(path)) for every path in the workers, yielding results as they
    finish; func and its return value travel by pickle (a module-level function)."""
    tasks = [Task(i, os.fspath(p), os.path.abspath(os.fspath(p)), func=func) for i, p in enumerate(paths)]
    if tasks:
        yield from _run(tasks, client=client, workers=workers, timeout=timeout, memory_limit=memory_limit,
                        retries=retries, start_method=start_method, chunksize=chunksize)


def map(func: Callable[[Any], Any], paths: Iterable[PathLike], **options: Any) -> Report:  # noqa: A001
    """Like iter_map (same options), returning the report; each success's value is func's."""
    report = Report()
    for result in iter_map(func, paths, **options):
        report.add(result)
    return report


__all__ = ["Result", "Report", "convert", "iter_convert", "map", "iter_map", "resolve_save_format"]
