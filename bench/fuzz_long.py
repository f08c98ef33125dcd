"""The fuzz harness of tests/python/fuzz_harness.py for longer: many seeds, many calls each, every
seed in its own process in a scratch folder. Prints one line per seed and a summary; exits 1 if
any seed crashed, hung or produced an exception a bad argument may not.

    PYTHONPATH=build/python /usr/bin/python3 bench/fuzz_long.py [SEEDS] [CALLS]
"""

import os
import pathlib
import subprocess
import sys
import tempfile
import time

ROOT = pathlib.Path(__file__).resolve().parents[1]
HARNESS = ROOT / "tests" / "python" / "fuzz_harness.py"
# the children run in scratch folders: a relative PYTHONPATH would not reach the package
ENV = dict(os.environ, PYTHONPATH=os.pathsep.join(
    [str(ROOT / "build" / "python")] + [str(pathlib.Path(p).resolve()) for p in os.environ.get("PYTHONPATH", "").split(os.pathsep) if p]))


def run_seed(seed, calls, timeout):
    folder = tempfile.mkdtemp(prefix=f"qrx-fuzz-{seed}-")
    started = time.perf_counter()
    try:
        proc = subprocess.run([sys.executable, str(HARNESS), str(seed), str(calls)], cwd=folder, env=ENV,
                              capture_output=True, text=True, timeout=timeout)
    except subprocess.TimeoutExpired as e:
        last = (e.stdout or b"").decode(errors="replace").strip().splitlines()[-1:] if e.stdout else []
        return f"HANG after {timeout}s; last: {last}"
    lines = proc.stdout.strip().splitlines()
    elapsed = time.perf_counter() - started
    if proc.returncode < 0:
        return f"CRASH (signal {-proc.returncode}); last: {lines[-1:]}"
    failures = [line for line in lines if line.startswith("fuzz FAILED")]
    summary = lines[-1] if lines else proc.stderr[-300:]
    return f"{summary} in {elapsed:.1f}s" + "".join("\n    " + f for f in failures[:10])


def main():
    seeds = int(sys.argv[1]) if len(sys.argv) > 1 else 20
    calls = int(sys.argv[2]) if len(sys.argv) > 2 else 20000
    bad = 0
    for seed in range(1000, 1000 + seeds):
        result = run_seed(seed, calls, timeout=max(120, calls // 50))
        ok = result.startswith("fuzz ok")
        bad += not ok
        print(f"seed {seed}: {result}", flush=True)
    print(f"{seeds - bad} of {seeds} seeds clean ({calls} calls each)")
    return 1 if bad else 0


if __name__ == "__main__":
    os.environ.setdefault("PYTHONWARNINGS", "ignore")
    sys.exit(main())
