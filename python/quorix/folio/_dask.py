"""quorix.folio.batch on a dask.distributed cluster: tasks of a few files on the client's workers.

Dask schedules, moves results and retries the tasks of a worker that died (the scheduler's
allowed-failures); a task that still fails arrives as an exception, and its files become failed
entries after one more try each on their own.
Inputs and outputs are paths, so the workers must see the same files as the client.
"""

from __future__ import annotations

import collections
import faulthandler
import os
import secrets
import shutil
import tempfile
from typing import Any, Iterator

from distributed import as_completed
from distributed.diagnostics.plugin import WorkerPlugin

from quorix.folio.batch import Result, Task, run_task


class RuntimePlugin(WorkerPlugin):
    """Starts the runtime when a worker process starts (and restarts), so no file waits for it;
    the import keeps that one runtime for every later task of the process."""

    name = "quorix-folio-runtime"

    def setup(self, worker: Any) -> None:
        import quorix.folio as qf

        qf.Document()


_REQUEUES = 3  # times a file whose worker died before it began is sent again


def _marker(task: Task, token: str) -> str:
    folder = task.staging if task.staging else os.path.join(tempfile.gettempdir(), token)
    return os.path.join(folder, f"{task.index}.running")


def marked_task(task: Task, timeout: float | None, marker: str) -> Result:
    """run_task with a marker file that exists only while the file is worked on, so a worker's
    death can be told apart from the death of a worker it merely waited on, and a deadline.

    A managed call cannot be interrupted and holds the interpreter lock, so the deadline is
    faulthandler's watchdog thread, which needs no lock: it writes into the marker and ends the
    process (the nanny starts a new one). The file's next attempt finds the marker written and
    fails at once instead of timing out again."""
    if timeout is not None and os.path.exists(marker) and os.path.getsize(marker):
        return task.failure("TimeoutError", f"no result after {timeout:g} s; the worker was ended")
    os.makedirs(os.path.dirname(marker), exist_ok=True)
    with open(marker, "w") as record:
        if timeout is not None:
            faulthandler.dump_traceback_later(timeout, exit=True, file=record)
        try:
            return run_task(task)
        finally:
            if timeout is not None:
                faulthandler.cancel_dump_traceback_later()
            os.unlink(marker)


def marked_tasks(tasks: list[Task], timeout: float | None, markers: list[str]) -> list[Result]:
    return [marked_task(task, timeout, marker) for task, marker in zip(tasks, markers)]


def run(client: Any, tasks: list[Task], timeout: float | None, chunksize: int | None) -> Iterator[Result]:
    """Files go in tasks of chunksize files (by default enough tasks for 8 per worker, at most 16
    files each): one file per task costs the scheduler more than a small document's conversion.
    A task that failed for good is tried again file by file. A file whose own task failed for
    good fails if it was being worked on when its last worker died; a file that only waited on
    that worker (the scheduler blames every task it had sent there) is sent again."""
    workers = client.scheduler_info()["workers"]
    if timeout is not None and any(info["nthreads"] != 1 for info in workers.values()):
        # the watchdog ends the whole process, and one process has only one watchdog
        raise ValueError("timeouts on Dask need workers with one thread each")
    if chunksize is None:
        chunksize = max(1, min(16, len(tasks) // (8 * max(len(workers), 1))))
    client.register_worker_plugin(RuntimePlugin(), name=RuntimePlugin.name)
    token = "quorix-batch-" + secrets.token_hex(6)
    by_future: dict[Any, list[Task]] = {}
    requeued: collections.Counter[int] = collections.Counter()

    def submit(chunk: list[Task]) -> Any:
        # a key of its own for every submission: a key that erred would return the same error
        future = client.submit(marked_tasks, chunk, timeout, [_marker(t, token) for t in chunk],
                               key=f"{token}-{chunk[0].index}-{len(chunk)}-{requeued[chunk[0].index]}")
        by_future[future] = chunk
        return future

    def lost(task: Task, error: BaseException) -> Result | None:
        marker = _marker(task, token)
        if not os.path.exists(marker) and requeued[task.index] < _REQUEUES:
            requeued[task.index] += 1
            return None
        # what the dead worker left in its staging folder goes with the batch's staging folder
        if timeout is not None and os.path.exists(marker) and os.path.getsize(marker):
            return task.failure("TimeoutError", f"no result after {timeout:g} s; the worker was ended")
        return task.failure(type(error).__name__, str(error))

    chunks = [tasks[i:i + chunksize] for i in range(0, len(tasks), chunksize)]
    running = as_completed([submit(chunk) for chunk in chunks])  # type: ignore[no-untyped-call]
    try:
        for future in running:
            chunk = by_future.pop(future)
            if future.status != "error":
                yield from future.result()
            elif len(chunk) > 1:
                for task in chunk:
                    running.add(submit([task]))  # type: ignore[no-untyped-call]
            else:
                result = lost(chunk[0], future.exception())
                if result is None:
                    running.add(submit(chunk))  # type: ignore[no-untyped-call]
                else:
                    yield result
            future.release()
    finally:
        for future in by_future:
            future.cancel()
        shutil.rmtree(os.path.join(tempfile.gettempdir(), token), ignore_errors=True)
