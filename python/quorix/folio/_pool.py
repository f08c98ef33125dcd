"""The local pool of quorix.folio.batch: worker processes started by spawn or forkserver, each
with one runtime, fed one file at a time over its own pipe.

A pool of our own rather than multiprocessing.Pool or ProcessPoolExecutor, because a file must
be able to end its worker (timeout, memory) and a dead worker must cost only its file: the
former hangs on a lost task and the latter breaks for good.
"""

from __future__ import annotations

import collections
import dataclasses
import multiprocessing
import multiprocessing.connection
import os
import signal
import time
from typing import Any, Iterator

from quorix.folio.batch import Result, Task

_WATCH_INTERVAL = 0.1   # seconds between looks at the workers' memory
_STOP_GRACE = 5.0       # seconds a worker has to leave after its last file


def _worker_main(conn: multiprocessing.connection.Connection) -> None:
    from quorix.folio.batch import describe, run_task

    try:
        import quorix.folio  # noqa: F401  the runtime starts here, once for all the worker's files
        broken = None
    except Exception as error:  # every file then fails with the cause, instead of worker after worker dying
        broken = describe(error)
    while True:
        try:
            task = conn.recv()
        except EOFError:
            return
        if task is None:
            return
        conn.send(task.failure(*broken) if broken else run_task(task))


@dataclasses.dataclass
class _Worker:
    process: Any
    conn: multiprocessing.connection.Connection
    task: Task | None = None
    started: float = 0.0

    def kill(self) -> None:
        if self.process.is_alive():
            self.process.kill()
        self.process.join()
        self.conn.close()


def _resident_bytes(pid: int) -> int:
    try:
        with open(f"/proc/{pid}/statm") as statm:
            return int(statm.read().split()[1]) * os.sysconf("SC_PAGE_SIZE")
    except (OSError, ValueError, IndexError):
        return 0


def _death(process: Any) -> str:
    code = process.exitcode
    if code is not None and code < 0:
        try:
            return f"the worker process was ended by {signal.Signals(-code).name}"
        except ValueError:
            pass
    return f"the worker process ended with exit code {code}"


def run(tasks: list[Task], *, workers: int | None, timeout: float | None, memory_limit: int | None,
        retries: int, start_method: str) -> Iterator[Result]:
    if start_method not in ("spawn", "forkserver"):
        raise ValueError(f"start_method must be 'spawn' or 'forkserver' (a forked runtime does not work), "
                         f"not {start_method!r}")
    if workers is None:
        workers = len(os.sched_getaffinity(0))
    if workers < 1:
        raise ValueError("workers must be at least 1")
    if retries < 0:
        raise ValueError("retries must not be negative")
    context = multiprocessing.get_context(start_method)
    pending = collections.deque(tasks)
    attempts: dict[int, int] = collections.Counter()
    pool: list[_Worker] = []

    def start() -> _Worker:
        parent_end, child_end = context.Pipe()
        process = context.Process(target=_worker_main, args=(child_end,), name="quorix-batch-worker", daemon=True)
        process.start()
        child_end.close()
        worker = _Worker(process, parent_end)
        pool.append(worker)
        return worker

    def dispatch(worker: _Worker) -> None:
        task = pending.popleft()
        try:
            worker.conn.send(task)
        except OSError:  # it died after its last result: the sentinel retires it, the file waits
            pending.appendleft(task)
            return
        worker.task, worker.started = task, time.monotonic()
        attempts[task.index] += 1

    def retire(worker: _Worker, error_type: str | None, message: str) -> Result | None:
        """Ends a worker; its file fails, or goes back to the queue if error_type is None and
        retries remain."""
        worker.kill()
        pool.remove(worker)
        task, worker.task = worker.task, None
        if task is None:
            return None
        task.discard_staging()
        if error_type is None and attempts[task.index] <= retries:
            pending.appendleft(task)
            return None
        return task.failure(error_type or "WorkerDied", message, attempts[task.index])

    try:
        for _ in range(min(workers, len(pending))):
            dispatch(start())
        while pool:
            now = time.monotonic()
            deadlines = [w.started + timeout - now for w in pool if w.task is not None] if timeout else []
            wait = min([*deadlines, _WATCH_INTERVAL if memory_limit else 3600.0])
            ready = set(multiprocessing.connection.wait(
                [w.conn for w in pool] + [w.process.sentinel for w in pool], max(wait, 0.0)))
            for worker in list(pool):
                result = None
                if worker.conn in ready and worker.task is not None:
                    try:
                        result = worker.conn.recv()
                    except (EOFError, OSError):
                        result = retire(worker, None, _death(worker.process) + " while working on the file")
                    else:
                        result = dataclasses.replace(result, attempts=attempts[worker.task.index])
                        worker.task = None
                elif worker.process.sentinel in ready:
                    result = retire(worker, None, _death(worker.process) + " while working on the file")
                elif timeout and worker.task is not None and time.monotonic() - worker.started >= timeout:
                    result = retire(worker, "TimeoutError", f"no result after {timeout:g} s; the worker was ended")
                elif memory_limit and (used := _resident_bytes(worker.process.pid)) > memory_limit:
                    result = retire(worker, "MemoryError",
                                    f"the worker used {used >> 20} MiB, over the limit of {memory_limit >> 20} MiB; "
                                    "it was ended")
                if result is not None:
                    yield result
            # every worker that is still here is idle or busy; idle ones take the next file
            for worker in [w for w in pool if w.task is None]:
                if pending:
                    dispatch(worker)
                else:
                    worker.conn.send(None)
                    worker.process.join(_STOP_GRACE)
                    worker.kill()
                    pool.remove(worker)
            while pending and len(pool) < workers:
                dispatch(start())
    finally:
        # also when the caller stops iterating early: no worker outlives the batch
        for worker in pool:
            worker.kill()
