"""quorix.folio.batch on a dask.distributed cluster: one task per file on the client's workers.

Dask schedules, moves results and retries the tasks of a worker that died (the scheduler's
allowed-failures); a task that still fails arrives as an exception and becomes a failed entry.
Inputs and outputs are paths, so the workers must see the same files as the client.
"""

from __future__ import annotations

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


def _marker(task: Task, token: str) -> str:
    folder = os.path.dirname(task.staging) if task.staging else os.path.join(tempfile.gettempdir(), token)
    return os.path.join(folder, f"{task.index}.timeout")


def timed_task(task: Task, timeout: float | None, marker: str) -> Result:
    """run_task with a deadline. A managed call cannot be interrupted and holds the interpreter
    lock, so the deadline is faulthandler's watchdog thread, which needs no lock: it writes the
    marker file and ends the process (the nanny starts a new one). The file's next attempt finds
    the marker and fails at once instead of timing out again."""
    if timeout is None:
        return run_task(task)
    if os.path.exists(marker) and os.path.getsize(marker):
        return task.failure("TimeoutError", f"no result after {timeout:g} s; the worker was ended")
    os.makedirs(os.path.dirname(marker), exist_ok=True)
    with open(marker, "w") as record:
        faulthandler.dump_traceback_later(timeout, exit=True, file=record)
        try:
            return run_task(task)
        finally:
            faulthandler.cancel_dump_traceback_later()
            os.unlink(marker)


def run(client: Any, tasks: list[Task], timeout: float | None) -> Iterator[Result]:
    if timeout is not None:
        threads = {w: info["nthreads"] for w, info in client.scheduler_info()["workers"].items()}
        if any(n != 1 for n in threads.values()):
            # the watchdog ends the whole process, and one process has only one watchdog
            raise ValueError(f"timeouts on Dask need workers with one thread each; the workers have {threads}")
    client.register_worker_plugin(RuntimePlugin(), name=RuntimePlugin.name)
    token = "quorix-batch-" + secrets.token_hex(6)
    futures = client.map(timed_task, tasks, [timeout] * len(tasks), [_marker(t, token) for t in tasks],
                         key=[f"{token}-{t.index}" for t in tasks])
    by_future = dict(zip(futures, tasks))
    try:
        for future in as_completed(futures):
            task = by_future.pop(future)
            if future.status == "error":
                task.discard_staging()
                error = future.exception()
                yield task.failure(type(error).__name__, str(error))
            else:
                yield future.result()
            future.release()
    finally:
        for future in by_future:
            future.cancel()
        shutil.rmtree(os.path.join(tempfile.gettempdir(), token), ignore_errors=True)
