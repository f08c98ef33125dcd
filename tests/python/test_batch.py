"""quorix.folio.batch on a local pool of spawned workers and on a Dask LocalCluster: a few hundred
generated documents converted byte for byte as one process converts them, hostile inputs and
dying, slow or greedy workers reported as failed entries, the command line's two progress modes."""

import concurrent.futures
import glob
import io
import multiprocessing
import os
import runpy
import shutil
import signal
import subprocess
import sys
import threading
import time
import types

import pytest

import batch_support as support
from conftest import PYROOT

qf = pytest.importorskip("quorix.folio")
from quorix.folio import batch  # noqa: E402
from quorix.folio import __main__ as cli  # noqa: E402

DOCUMENTS = 240


def describe_locally(path):
    try:
        qf.Document(path)
    except RuntimeError as error:
        return batch.describe(error)
    raise AssertionError(f"{path} loads in one process")


@pytest.fixture(scope="module")
def corpus(tmp_path_factory):
    """Generated documents with a few hostile files among them, each converted to Markdown in
    this one process for reference."""
    root = tmp_path_factory.mktemp("batch")
    documents = support.make_documents(qf, str(root / "in"), DOCUMENTS)
    with open(documents[1], "rb") as f:
        hostile = support.make_hostile(str(root / "in" / "hostile"), f.read())
    reference = {}
    for path in documents:
        target = root / "reference" / os.path.relpath(os.path.splitext(path)[0] + ".md", root / "in")
        target.parent.mkdir(parents=True, exist_ok=True)
        qf.Document(path).save(str(target), qf.SaveFormat.MARKDOWN)
        reference[path] = target.read_bytes()
    return types.SimpleNamespace(root=root, documents=documents, hostile=hostile, reference=reference,
                                 errors={p: describe_locally(p) for p in hostile})


def pool_workers():
    return [p for p in multiprocessing.active_children() if p.name == "quorix-batch-worker"]


def files_under(folder):
    return sorted(os.path.relpath(os.path.join(d, f), folder) for d, _, fs in os.walk(folder) for f in fs)


def assert_same_as_one_process(report, corpus, out):
    assert len(report) == len(corpus.documents) + len(corpus.hostile)
    assert {r.source: r.output for r in report.succeeded} == {
        p: os.path.join(out, os.path.relpath(os.path.splitext(p)[0] + ".md", corpus.root / "in"))
        for p in corpus.documents}
    for result in report.succeeded:
        with open(result.output, "rb") as f:
            assert f.read() == corpus.reference[result.source], result
    assert {r.source: (r.error_type, r.error) for r in report.failed} == corpus.errors
    # only the outputs: no staging folder, no temporary or half-written file
    assert files_under(out) == files_under(corpus.root / "reference")


# ---- local pool

def test_pool_converts_like_one_process_and_reports_hostile_files(corpus, tmp_path):
    report = batch.convert(corpus.documents + corpus.hostile, tmp_path, "md", workers=2)
    assert_same_as_one_process(report, corpus, str(tmp_path))
    assert {r.attempts for r in report.succeeded + report.failed} == {1}
    assert not pool_workers()


def test_forkserver_pool_and_refused_start_methods(corpus, tmp_path):
    chosen = corpus.documents[:6]
    report = batch.convert(chosen, tmp_path, qf.SaveFormat.MARKDOWN, workers=2, start_method="forkserver")
    assert [corpus.reference[r.source] == open(r.output, "rb").read() for r in report.succeeded] == [True] * 6
    with pytest.raises(ValueError, match="spawn"):
        batch.convert(chosen, tmp_path / "fork", "md", start_method="fork")
    with pytest.raises(ValueError, match="unknown save format 'pdq'"):
        batch.convert(chosen, tmp_path, "pdq")


def test_rerun_skips_current_outputs_unless_overwrite(corpus, tmp_path):
    (tmp_path / "in").mkdir()
    chosen = [shutil.copy(p, tmp_path / "in") for p in corpus.documents[:5]]
    past = time.time() - 3600
    for path in chosen:
        os.utime(path, (past, past))
    out = tmp_path / "out"
    assert len(batch.convert(chosen, out, "txt", workers=1).succeeded) == 5
    again = batch.convert(chosen, out, "txt", workers=1)
    assert (len(again.succeeded), len(again.skipped), again.skipped[0].attempts) == (0, 5, 0)
    os.utime(chosen[2], (past + 7200, past + 7200))  # edited after its output was written
    newer = batch.convert(chosen, out, "txt", workers=1)
    assert ([r.source for r in newer.succeeded], len(newer.skipped)) == ([chosen[2]], 4)
    assert len(batch.convert(chosen, out, "txt", workers=1, overwrite=True).succeeded) == 5


def test_outputs_mirror_folders_and_collisions_are_failed_entries(tmp_path):
    for name in ("a/x.docx", "a/x.md", "a/y.md", "a/z.docx", "a/z.txt", "b/z.docx"):
        (tmp_path / name).parent.mkdir(exist_ok=True)
        (tmp_path / name).write_text("")
    paths = [str(tmp_path / n) for n in ("a/x.docx", "a/x.md", "a/y.md")]
    tasks, known, staging = batch.plan_conversions(paths, tmp_path / "a", "markdown", root=None, overwrite=True)
    assert tasks == [] and [(r.source, r.error_type) for r in known] == [(p, "ValueError") for p in paths]
    assert [r.error.split(" would be ")[1] for r in known] == ["another input", "the input itself", "the input itself"]
    assert os.path.dirname(staging) == str(tmp_path / "a") and os.path.basename(staging).startswith(".")
    paths = [str(tmp_path / n) for n in ("a/z.docx", "a/z.txt", "b/z.docx")]
    tasks, known, _ = batch.plan_conversions(paths, tmp_path / "out", "md", root=None, overwrite=True)
    assert [t.output for t in tasks] == [str(tmp_path / "out" / "a" / "z.md"), str(tmp_path / "out" / "b" / "z.md")]
    assert [(r.source, r.error) for r in known] == [(paths[1], f"{tasks[0].output} would be the output of {paths[0]}")]


def test_dying_slow_and_greedy_workers_become_entries(tmp_path):
    texts = ["plain one", f"die-once:{tmp_path / 'died'}", "die-always", "sleep", "hog", "plain two"]
    paths = support.make_text_documents(qf, str(tmp_path), texts)
    report = batch.map(support.misbehave, paths, workers=2, retries=1, timeout=6, memory_limit=400 << 20)
    outcome = {os.path.basename(r.source): (r.ok, r.error_type, r.attempts) for r in report.succeeded + report.failed}
    assert outcome == {"t0.docx": (True, None, 1), "t1.docx": (True, None, 2), "t2.docx": (False, "WorkerDied", 2),
                       "t3.docx": (False, "TimeoutError", 1), "t4.docx": (False, "MemoryError", 1),
                       "t5.docx": (True, None, 1)}
    (died,) = [r for r in report.failed if r.error_type == "WorkerDied"]
    assert "SIGKILL" in died.error
    assert sorted(r.value for r in report.succeeded)[0] == ["die-once:" + str(tmp_path / "died")]
    assert not pool_workers()


def test_a_worker_killed_from_outside_mid_file_is_replaced_and_the_file_retried(tmp_path):
    marker = tmp_path / "pid"
    paths = support.make_text_documents(qf, str(tmp_path), [f"linger:{marker}", "plain one", "plain two"])

    def kill_when_lingering():
        deadline = time.monotonic() + 60
        while not marker.exists() and time.monotonic() < deadline:
            time.sleep(0.05)
        os.kill(int(marker.read_text()), signal.SIGKILL)

    killer = threading.Thread(target=kill_when_lingering)
    killer.start()
    report = batch.map(support.misbehave, paths, workers=2)
    killer.join()
    assert not report.failed
    assert sorted((os.path.basename(r.source), r.attempts) for r in report.succeeded) == [
        ("t0.docx", 2), ("t1.docx", 1), ("t2.docx", 1)]


def test_a_worker_killed_while_saving_leaves_no_partial_output(tmp_path):
    doc = qf.Document()
    builder = qf.DocumentBuilder(doc)
    for i in range(50000):
        builder.writeln(f"paragraph {i} with words enough to take the writer a while")
    source, reference, out = tmp_path / "big.docx", tmp_path / "big.md", tmp_path / "out"
    doc.save(str(source))
    doc.save(str(reference), qf.SaveFormat.MARKDOWN)
    killed = []

    def kill_while_saving():
        # a file in the worker's staging folder: its output is being written
        deadline = time.monotonic() + 60
        while not killed and time.monotonic() < deadline:
            if any(files for _, _, files in os.walk(out)):
                for worker in pool_workers():
                    os.kill(worker.pid, signal.SIGKILL)
                    killed.append(worker.pid)
            time.sleep(0.01)

    killer = threading.Thread(target=kill_while_saving)
    killer.start()
    report = batch.convert([source], out, "md", workers=1)
    killer.join()
    assert killed and [r.attempts for r in report.succeeded] == [2]
    assert (out / "big.md").read_bytes() == reference.read_bytes()
    assert files_under(out) == ["big.md"]


def test_threads_of_one_worker_keep_their_outputs_apart(tmp_path):
    """A Dask worker runs tasks on several threads of one process; each writes its file and the
    pictures beside it in a staging folder of its own."""
    picture = io.BytesIO()
    qf.Document().save(picture, qf.SaveFormat.PNG)
    paths = []
    for i in range(12):
        doc = qf.Document()
        builder = qf.DocumentBuilder(doc)
        builder.writeln(f"document {i}")
        builder.insert_image(picture.getvalue(), 20.0 + i, 10.0)
        paths.append(str(tmp_path / "in" / f"d{i}.docx"))
        os.makedirs(os.path.dirname(paths[-1]), exist_ok=True)
        doc.save(paths[-1])
    tasks, _, staging = batch.plan_conversions(paths, tmp_path / "out", "md", root=None, overwrite=True)
    with concurrent.futures.ThreadPoolExecutor(4) as pool:
        results = list(pool.map(batch.run_task, tasks * 3))
    assert all(r.ok for r in results), [r for r in results if not r.ok]
    for i in range(12):
        text = (tmp_path / "out" / f"d{i}.md").read_text(encoding="utf-8")
        assert f"document {i}" in text
        pictures = [name for name in os.listdir(tmp_path / "out") if name in text and not name.endswith(".md")]
        assert pictures, text  # the picture the Markdown names lies beside it
    assert not [f for _, _, files in os.walk(staging) for f in files]


def test_workers_run_without_profile_guided_tiers_unless_the_user_chose(corpus, monkeypatch):
    report = batch.map(support.runtime_setting, corpus.documents[:3], workers=1)
    assert [r.value for r in report.succeeded] == ["0"] * 3
    assert "DOTNET_TieredPGO" not in os.environ  # the parent's own environment is left as it was
    monkeypatch.setenv("DOTNET_TieredPGO", "1")
    assert [r.value for r in batch.map(support.runtime_setting, corpus.documents[:1], workers=1).succeeded] == ["1"]


def test_functions_and_values_that_do_not_travel(corpus):
    def local(document):
        return 1

    with pytest.raises(TypeError, match="must pickle"):
        batch.map(local, corpus.documents[:1], workers=1)
    report = batch.map(support.unpicklable, corpus.documents[:2], workers=1)
    assert [(r.error_type, r.attempts) for r in report.failed] == [("AttributeError", 1)] * 2


def test_stopping_early_ends_the_workers(corpus, tmp_path):
    results = batch.iter_convert(corpus.documents[:20], tmp_path, "md", workers=2)
    first = next(results)
    assert first.ok and os.path.exists(first.output)
    results.close()
    assert not pool_workers()
    assert not [n for n in os.listdir(tmp_path) if n.startswith(".")]


def test_the_freezer_hook_ships_the_batch_modules_and_what_they_import():
    hook = runpy.run_path(os.path.join(os.path.dirname(batch.__file__), "__pyinstaller", "hook-quorix.folio.py"))
    shipped = {os.path.basename(path) for source, target in hook["datas"] if target == os.path.join("quorix", "folio")
               for path in glob.glob(source)}
    assert {"batch.py", "_pool.py", "_dask.py", "_batch_cli.py", "__main__.py"} <= shipped
    assert {"multiprocessing", "multiprocessing.connection", "argparse", "secrets"} <= set(hook["hiddenimports"])
    assert not [n for n in hook["hiddenimports"] if n.startswith("distributed")]  # Dask stays optional


# ---- Dask

@pytest.fixture(scope="module")
def client():
    pytest.importorskip("distributed")
    import dask
    from distributed import Client, LocalCluster

    # a worker's death counts against its task once: the second death fails the task
    with dask.config.set({"distributed.scheduler.allowed-failures": 1}):
        with LocalCluster(n_workers=2, threads_per_worker=1, processes=True, host="127.0.0.1",
                          dashboard_address=None, death_timeout=60) as cluster, Client(cluster, timeout=60) as c:
            yield c


def test_dask_converts_like_one_process_and_the_local_pool(corpus, client, tmp_path):
    report = batch.convert(corpus.documents + corpus.hostile, tmp_path, "md", client=client)
    assert_same_as_one_process(report, corpus, str(tmp_path))


def test_dask_retries_a_dead_worker_and_fails_timeouts(client, tmp_path):
    texts = ["plain 0", f"die-once:{tmp_path / 'died'}", "plain 1", "die-always", "plain 2", "plain 3", "sleep",
             "plain 4"]
    paths = support.make_text_documents(qf, str(tmp_path), texts)
    # three files a task: the culprit's task is split, and its neighbours still succeed
    report = batch.map(support.misbehave, paths, client=client, timeout=6, chunksize=3)
    outcome = {os.path.basename(r.source): (r.ok, r.error_type) for r in report.succeeded + report.failed}
    assert outcome == {f"t{i}.docx": (True, None) for i in (0, 1, 2, 4, 5, 7)} | {
        "t3.docx": (False, "KilledWorker"), "t6.docx": (False, "TimeoutError")}
    assert sorted(r.value for r in report.succeeded)[1] == ["plain", "0"]
    with pytest.raises(ValueError, match="memory_limit"):
        batch.map(support.words, paths, client=client, memory_limit=1 << 30)
    with pytest.raises(ValueError, match="chunksize"):
        batch.map(support.words, paths, chunksize=2)


# ---- command line

@pytest.fixture(scope="module")
def small_tree(corpus):
    """A folder of a few documents and one damaged file, and the folder the outputs go to."""
    folder = corpus.root / "small"
    for path in corpus.documents[:4] + [corpus.hostile[-1]]:
        os.makedirs(folder, exist_ok=True)
        shutil.copy(path, folder)
    return folder


class Terminal(io.StringIO):
    def isatty(self):
        return True


def run_cli(*argv, err=None):
    err = err or io.StringIO()
    code = cli.main(["batch", "convert", *map(str, argv)], io.StringIO(), err)
    return code, err.getvalue()


def test_cli_lines_off_a_terminal_and_a_bar_on_one(small_tree, tmp_path):
    code, log = run_cli(small_tree, tmp_path / "out", "--to", "txt", "--workers", "2")
    lines = log.splitlines()
    assert code == 1 and "\r" not in log
    assert sorted(line.split()[0] for line in lines[:-1]) == ["failed"] + ["ok"] * 4
    assert any(line.startswith(f"failed  {small_tree / 'truncated.docx'}: FileCorruptedException:") for line in lines)
    assert lines[-1].startswith("5 files: 4 converted, 1 failed, 0 skipped in ")
    code, log = run_cli(small_tree, tmp_path / "out", "--to", "txt", "--workers", "1", err=Terminal())
    assert code == 1 and log.count("\r[") == 5 and "ok " not in log
    assert "5 files: 0 converted, 1 failed, 4 skipped" in log and "failed  " in log


def test_cli_on_a_dask_scheduler(small_tree, client, tmp_path):
    code, log = run_cli(small_tree, tmp_path, "--to", "markdown", "--scheduler", client.scheduler.address)
    assert code == 1 and log.splitlines()[-1].startswith("5 files: 4 converted, 1 failed, 0 skipped")
    assert sorted(os.listdir(tmp_path)) == sorted(os.path.basename(p)[:-5] + ".md"
                                                  for p in os.listdir(small_tree) if p != "truncated.docx")


def test_cli_finds_the_documents_of_a_tree_but_not_its_outputs(tmp_path):
    for name in ("a.docx", "b.md", "notes.txt", "logo.png", "x.auto", "sub/c.markdown", ".hidden/d.docx",
                 "out/a.md", "sub/.e.docx"):
        (tmp_path / name).parent.mkdir(exist_ok=True)
        (tmp_path / name).write_text("")
    from quorix.folio import _batch_cli

    found = _batch_cli.find_documents(str(tmp_path), str(tmp_path / "out"))
    assert [os.path.relpath(p, tmp_path) for p in found] == ["a.docx", "b.md", "notes.txt", "sub/c.markdown"]


def test_cli_usage_and_missing_folders(small_tree, tmp_path):
    assert run_cli(small_tree, tmp_path, "--to", "pdq")[0] == 2
    code, log = run_cli(tmp_path / "missing", tmp_path, "--to", "md")
    assert code == 3 and "missing" in log
    assert run_cli(small_tree, tmp_path, "--to", "md", "--scheduler", "tcp://127.0.0.1:1", "--retries", "1")[0] == 2


def test_cli_as_a_module_starts_its_workers(small_tree, tmp_path):
    env = dict(os.environ, PYTHONPATH=str(PYROOT))
    proc = subprocess.run([sys.executable, "-m", "quorix.folio", "batch", "convert", str(small_tree),
                           str(tmp_path), "--to", "docx", "--workers", "2"], capture_output=True, text=True,
                          env=env, timeout=120)
    assert proc.returncode == 1, proc.stderr
    assert len([n for n in os.listdir(tmp_path) if n.endswith(".docx")]) == 4
