"""The wheel: what it carries, and that a fresh virtual environment with the SDK out of sight
imports it and works with documents on the runtime the wheel brought along."""

import base64
import csv
import hashlib
import io
import json
import os
import pathlib
import stat
import subprocess
import sys
import textwrap
import zipfile

import pytest

DIST = pathlib.Path(os.environ.get("QRX_WHEEL_DIR", pathlib.Path(__file__).resolve().parents[2] / "dist"))
DOTNET_ROOT = os.environ.get("QRX_DOTNET_ROOT", "/usr/share/dotnet")
TAG = f"cp{sys.version_info.major}{sys.version_info.minor}"
WHEEL = DIST / f"quorix_folio-26.10.0.0-{TAG}-{TAG}-linux_x86_64.whl"
BUILT_ASSEMBLIES = pathlib.Path(__file__).resolve().parents[2] / "build" / "python" / "quorix" / "assemblies"


@pytest.fixture(scope="module")
def wheel():
    assert WHEEL.exists(), "run make wheel first"
    with zipfile.ZipFile(WHEEL) as archive:
        yield archive


def test_wheel_is_lean(wheel):
    names = wheel.namelist()
    assert not [n for n in names if n.endswith(".pdb") or "/ref/" in n or "/tests/" in n or "__pycache__" in n]
    runtime = {n.rsplit("/", 1)[1] for n in names if n.startswith("quorix/runtime/netcore")}
    assert {"libcoreclr.so", "libclrjit.so", "System.Private.CoreLib.dll", "libquorix.embed.coreclrwrap.so"} <= runtime
    assert not runtime & {"createdump", "libmscordbi.so", "libmscordaccore.so", "libhostpolicy.so", "dotnet"}
    # Only this platform's Skia and HarfBuzz libraries travel with the pages engine (about 6 MB packed).
    assert not [n for n in names if "/runtimes/" in n]
    assert {"libSkiaSharp.so", "libHarfBuzzSharp.so"} <= {n.rsplit("/", 1)[1] for n in names if n.startswith("quorix/assemblies/folio/")}
    assert WHEEL.stat().st_size < 46 * 2**20


def test_every_entry_is_a_regular_file_recorded_with_its_hash(wheel):
    (record_name,) = [n for n in wheel.namelist() if n.endswith(".dist-info/RECORD")]
    rows = {row[0]: row[1:] for row in csv.reader(io.StringIO(wheel.read(record_name).decode()))}
    assert set(rows) == set(wheel.namelist())
    for entry in wheel.infolist():
        assert stat.S_ISREG(entry.external_attr >> 16), entry.filename  # no links into a machine's .NET
        if entry.filename == record_name:
            continue
        data = wheel.read(entry)
        digest = base64.urlsafe_b64encode(hashlib.sha256(data).digest()).rstrip(b"=").decode()
        assert rows[entry.filename] == [f"sha256={digest}", str(len(data))]
    wheel_file = wheel.read(record_name.replace("RECORD", "WHEEL")).decode()
    assert f"Tag: {TAG}-{TAG}-linux_x86_64" in wheel_file and "Root-Is-Purelib: false" in wheel_file


def test_stubs_and_hooks_travel_with_the_package(wheel):
    names = set(wheel.namelist())
    for name in ("quorix/py.typed", "quorix/folio/__init__.pyi", "quorix/folio/saving.pyi", "quorix/pyintro.pyi",
                 "quorix/folio/__main__.py", "quorix/__pyinstaller/hook-quorix.py",
                 "quorix/folio/__pyinstaller/hook-quorix.folio.py"):
        assert name in names, name


# A ReadyToRun image carries the "RTR" header; the IL-only build output does not. Every assembly
# the package ships is precompiled, the third-party ones included.
def test_every_shipped_assembly_is_precompiled(wheel):
    assemblies = [n for n in wheel.namelist() if n.startswith("quorix/assemblies/") and n.endswith(".dll")]
    names = {n.rsplit("/", 1)[-1] for n in assemblies}
    assert {"Quorix.Folio.dll", "WrpInterop.Quorix.Folio.dll", "WrpInterop.Quorix.PyIntro.dll", "Markdig.dll"} <= names
    assert [n for n in assemblies if b"RTR\x00" not in wheel.read(n)] == []
    assert b"RTR\x00" not in (BUILT_ASSEMBLIES / "folio/Quorix.Folio.dll").read_bytes()


@pytest.fixture(scope="module")
def venv(tmp_path_factory):
    root = tmp_path_factory.mktemp("venv")
    subprocess.run([sys.executable, "-m", "venv", "--without-pip", str(root)], check=True)
    python = root / "bin" / "python"
    subprocess.run([sys.executable, "-m", "pip", "--python", str(python), "install", "--no-index", "--no-deps",
                    "--quiet", str(WHEEL)], check=True)
    return root


def run_in(venv, code, *args, cwd=None, extra_env=None):
    """Runs the venv's interpreter isolated, with only the venv on PATH and no .NET settings."""
    env = {"PATH": str(venv / "bin"), "HOME": str(venv), "LANG": "C.UTF-8", **(extra_env or {})}
    return subprocess.run([str(venv / "bin" / "python"), "-I", *(["-c", textwrap.dedent(code)] if code else []), *args],
                          env=env, capture_output=True, text=True, timeout=300, cwd=cwd or venv)


def test_installed_wheel_works_on_its_own_runtime(venv, tmp_path):
    proc = run_in(venv, f"""
        import json, quorix.folio as qf
        doc = qf.Document()
        builder = qf.DocumentBuilder(doc)
        builder.writeln("made in a venv")
        doc.save({str(tmp_path / "made.docx")!r})
        text = qf.Document({str(tmp_path / "made.docx")!r}).get_text().strip()
        maps = sorted({{line.split()[-1] for line in open("/proc/self/maps") if line.split()[-1].startswith("/")}})
        print(json.dumps({{"text": text, "file": qf.__file__, "maps": maps}}))
    """)
    assert proc.returncode == 0, proc.stderr
    result = json.loads(proc.stdout)
    assert result["text"] == "made in a venv"
    site = str(venv / "lib")
    assert result["file"].startswith(site)
    dotnet = [m for m in result["maps"] if m.endswith(".dll") or os.path.basename(m).startswith(
        ("libcoreclr", "libclrjit", "libSystem.", "libquorix", "Microsoft."))]
    assert len(dotnet) >= 5
    assert all(m.startswith(site) for m in dotnet), [m for m in dotnet if not m.startswith(site)]
    assert not [m for m in result["maps"] if m.startswith(DOTNET_ROOT)]


def test_installed_command_line_converts(venv, tmp_path):
    source = tmp_path / "in.docx"
    made = run_in(venv, f"""
        import quorix.folio as qf
        doc = qf.Document()
        qf.DocumentBuilder(doc).writeln("converted text")
        doc.save({str(source)!r})
    """)
    assert made.returncode == 0, made.stderr
    proc = run_in(venv, None, "-m", "quorix.folio", "convert", str(source), str(tmp_path / "out.md"))
    assert proc.returncode == 0, proc.stderr
    assert "converted text" in (tmp_path / "out.md").read_text()


def test_installed_batch_converts_a_folder_in_worker_processes(venv, tmp_path):
    made = run_in(venv, f"""
        import os, quorix.folio as qf
        os.makedirs({str(tmp_path / "in")!r})
        for i in range(4):
            doc = qf.Document()
            qf.DocumentBuilder(doc).writeln(f"batch text {{i}}")
            doc.save(os.path.join({str(tmp_path / "in")!r}, f"d{{i}}.docx"))
    """)
    assert made.returncode == 0, made.stderr
    proc = run_in(venv, None, "-m", "quorix.folio", "batch", "convert", str(tmp_path / "in"), str(tmp_path / "out"),
                  "--to", "md", "--workers", "2")
    assert proc.returncode == 0, proc.stderr
    assert sorted(p.read_text().strip() for p in (tmp_path / "out").iterdir()) == [f"batch text {i}" for i in range(4)]


def first_compilations(venv, tmp_path, name, **settings):
    """The methods of our assemblies the JIT compiled for the first time (not re-compiled hot code)
    while a fresh process loaded a document and saved it as DOCX and as Markdown."""
    source = tmp_path / "source.docx"
    if not source.exists():
        made = run_in(venv, f"""
            import quorix.folio as qf
            doc = qf.Document()
            qf.DocumentBuilder(doc).writeln("precompiled")
            doc.save({str(source)!r})
        """)
        assert made.returncode == 0, made.stderr
    log = tmp_path / f"{name}.jit"
    proc = run_in(venv, f"""
        import quorix.folio as qf
        doc = qf.Document({str(source)!r})
        doc.save({str(tmp_path / (name + ".docx"))!r})
        doc.save({str(tmp_path / (name + ".md"))!r}, qf.SaveFormat.MARKDOWN)
    """, extra_env={"DOTNET_JitStdOutFile": str(log), "DOTNET_JitDisasmSummary": "1", **settings})
    assert proc.returncode == 0, proc.stderr
    lines = log.read_text().splitlines()
    assert lines, "the runtime listed no compilations"
    return [line for line in lines if "Tier0" in line and ("compiled Quorix." in line or "compiled Markdig." in line)]


def test_first_calls_run_precompiled_code(venv, tmp_path):
    # The same work with the precompiled code ignored shows what the JIT would otherwise do.
    jitted = first_compilations(venv, tmp_path, "r2r")
    without = first_compilations(venv, tmp_path, "jit", DOTNET_ReadyToRun="0")
    assert len(without) > 200, len(without)
    assert len(jitted) * 50 <= len(without), (len(jitted), len(without), jitted[:10])
