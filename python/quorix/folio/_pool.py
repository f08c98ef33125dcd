"""The local pool of quorix.folio.batch: worker processes started by spawn or forkserver, each
with one runtime, fed files over its own pipe a few ahead of its results.

A pool of our own rather than multiprocessing.Pool or ProcessPoolExecutor, because a file must
be able to end its worker (timeout, memory) and a dead worker must cost only its file: the
former hangs on a lost task and the latter breaks for good.
"""

from __future__ import annotations

import collections
import contextlib
import dataclasses
import math
import multiprocessing
import multiprocessing.connection
import os
import pickle
import shutil
import signal
import threading
import time
from typing import Any, Iterator

from quorix.folio.batch import Result, Task, worker_staging

_WATCH_INTERVAL = 0.1   # seconds between looks at the workers' memory
_STOP_GRACE = 5.0       # seconds a worker has to leave after its last file
_FAILED_STARTS = 3      # workers in a row that end before they are ready: the rest of the files fail
# Files sent to a worker ahead of its results: enough for _QUEUED_SECONDS of its work, so that it
# never waits for a parent that shares the cores with it, and few enough that the batch's last
# files stay spread over the workers.
_MIN_IN_FLIGHT, _MAX_IN_FLIGHT, _QUEUED_SECONDS = 2, 16, 0.03
# The runtime settings of a worker, unless the user's environment chooses otherwise. A worker's
# life is many short conversions: the instrumented tier of profile-guided compilation costs each
# hot method a second recompilation that such a life does not win back (a fifth more CPU a file).
_WORKER_RUNTIME = {"DOTNET_TieredPGO": "0"}
_ENVIRONMENT_LOCK = threading.Lock()


@contextlib.contextmanager
def _worker_environment() -> Iterator[None]:
    """Puts the workers' runtime settings in the environment a process started now inherits.

    The runtime reads its settings from the environment when the worker imports quorix.folio,
    which unpickling the worker's target does before any of our code runs there."""
    with _ENVIRONMENT_LOCK:
        added = {k: v for k, v in _WORKER_RUNTIME.items() if k not in os.environ}
        os.environ.update(added)
        try:
            yield
        finally:
            for key in added:
                os.environ.pop(key, None)


def _worker_main(conn: multiprocessing.connection.Connection) -> None:
    from quorix.folio.batch import describe, run_task

    # Ctrl-C reaches the whole process group; the parent ends the workers itself
    signal.signal(signal.SIGINT, signal.SIG_IGN)

    try:
        import quorix.folio  # noqa: F401  the runtime starts here, once for all the worker's files
        broken = None
    except Exception as error:  # every file then fails with the cause, instead of worker after worker dying
        broken = describe(error)
    conn.send(None)  # ready: a file's time starts when its worker can work on it
    while True:
        try:
            task = conn.recv()
        except EOFError:
            return
        except Exception as error:  # a function that does not unpickle here: the file's failure
            conn.send(describe(error))
            continue
        if task is None:
            return
        result = task.failure(*broken) if broken else run_task(task)
        try:
            conn.send(result)
        except Exception as error:  # what the function returned does not pickle
            conn.send(task.failure(*describe(error)))


@dataclasses.dataclass
class _Worker:
    process: Any
    conn: multiprocessing.connection.Connection
    ready: bool = False
    # sent and not answered, the first one in progress: a worker never waits for the parent
    tasks: collections.deque[Task] = dataclasses.field(default_factory=collections.deque)
    started: float = 0.0   # when the first of tasks began
    in_flight: int = _MIN_IN_FLIGHT

    def kill(self) -> None:
        if self.process.is_alive():
            self.process.kill()
        self.process.join()
        self.conn.close()

    def finished(self, seconds: float) -> None:
        """Sizes the queue by the time the worker's last file took."""
        if seconds > 0:  # 0: a failure before any work, which says nothing of the files
            self.in_flight = max(_MIN_IN_FLIGHT, min(_MAX_IN_FLIGHT, math.ceil(_QUEUED_SECONDS / seconds)))


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


class _Pool:
    def __init__(self, tasks: list[Task], workers: int, timeout: float | None, memory_limit: int | None,
                 retries: int, start_method: str) -> None:
        self.context: Any = multiprocessing.get_context(start_method)
        self.pending = collections.deque(tasks)
        self.attempts: collections.Counter[int] = collections.Counter()
        self.workers: list[_Worker] = []
        self.size, self.timeout, self.memory_limit, self.retries = workers, timeout, memory_limit, retries
        self.failed_starts = 0

    def start(self) -> None:
        parent_end, child_end = self.context.Pipe()
        process = self.context.Process(target=_worker_main, args=(child_end,), name="quorix-batch-worker",
                                       daemon=True)
        with _worker_environment():
            process.start()
        child_end.close()
        self.workers.append(_Worker(process, parent_end))

    def dispatch(self, worker: _Worker) -> None:
        task = self.pending.popleft()
        try:
            worker.conn.send(task)
        except OSError:  # it died after its last result: its sentinel retires it, the file waits
            self.pending.appendleft(task)
            return
        worker.tasks.append(task)
        if len(worker.tasks) == 1:
            self.begin(worker)

    def begin(self, worker: _Worker) -> None:
        worker.started = time.monotonic()
        self.attempts[worker.tasks[0].index] += 1

    def retire(self, worker: _Worker, error_type: str | None = None, message: str = "") -> list[Result]:
        """Ends a worker. Its current file fails, or returns to the queue when the worker died
        by itself (error_type None) and retries remain; files it had not begun return as they were."""
        worker.kill()
        message = message or _death(worker.process)
        self.workers.remove(worker)
        if not worker.tasks:
            if not worker.ready:
                self.failed_starts += 1
                if self.failed_starts >= _FAILED_STARTS:
                    lost, self.pending = list(self.pending), collections.deque()
                    return [t.failure("WorkerDied", f"{message} before it was ready, {_FAILED_STARTS} times", 0)
                            for t in lost]
            return []
        task = worker.tasks.popleft()
        self.pending.extendleft(reversed(worker.tasks))
        if task.staging:  # what it had written of the file's output
            shutil.rmtree(worker_staging(task.staging, worker.process.pid), ignore_errors=True)
        if error_type is None and self.attempts[task.index] <= self.retries:
            self.pending.appendleft(task)
            return []
        return [task.failure(error_type or "WorkerDied", message, self.attempts[task.index])]

    def check(self, worker: _Worker, ready: set[Any]) -> list[Result]:
        """What became of a worker since the last look."""
        if worker.conn in ready:
            results = []
            try:
                while worker.conn.poll():
                    message = worker.conn.recv()
                    if message is None:
                        worker.ready, self.failed_starts = True, 0
                        continue
                    task = worker.tasks.popleft()
                    if isinstance(message, tuple):  # the task did not reach the worker whole
                        message = task.failure(*message)
                    results.append(dataclasses.replace(message, attempts=self.attempts[task.index]))
                    worker.finished(message.seconds)
                    if worker.tasks:
                        self.begin(worker)
            except (EOFError, OSError):
                results += self.retire(worker)
            return results
        if worker.process.sentinel in ready:
            return self.retire(worker)
        if self.timeout and worker.tasks and time.monotonic() - worker.started >= self.timeout:
            return self.retire(worker, "TimeoutError", f"no result after {self.timeout:g} s; the worker was ended")
        if self.memory_limit and (used := _resident_bytes(worker.process.pid)) > self.memory_limit:
            return self.retire(worker, "MemoryError", f"the worker used {used >> 20} MiB, over the limit of "
                                                      f"{self.memory_limit >> 20} MiB; it was ended")
        return []

    def wait(self) -> set[Any]:
        limits = [_WATCH_INTERVAL] if self.memory_limit else []
        if self.timeout:
            now = time.monotonic()
            limits += [w.started + self.timeout - now for w in self.workers if w.tasks]
        return set(multiprocessing.connection.wait([w.conn for w in self.workers] +
                                                   [w.process.sentinel for w in self.workers],
                                                   max(min(limits), 0.0) if limits else None))

    def run(self) -> Iterator[Result]:
        try:
            while self.pending or self.workers:
                while len(self.workers) < min(self.size, len(self.pending)):
                    self.start()
                ready = self.wait()
                for worker in list(self.workers):
                    yield from self.check(worker, ready)
                for worker in [w for w in self.workers if w.ready and len(w.tasks) < w.in_flight]:
                    while self.pending and len(worker.tasks) < worker.in_flight:
                        self.dispatch(worker)
                    if not worker.tasks:
                        worker.conn.send(None)
                        worker.process.join(_STOP_GRACE)
                        worker.kill()
                        self.workers.remove(worker)
        finally:
            # also when the caller stops iterating early: no worker outlives the batch
            for worker in self.workers:
                worker.kill()


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
    if tasks and tasks[0].func is not None:
        try:
            pickle.dumps(tasks[0].func)
        except Exception as error:
            raise TypeError(f"the function must pickle to reach the workers (a module-level function of an "
                            f"importable module): {error}") from error
    return _Pool(tasks, workers, timeout, memory_limit, retries, start_method).run()
