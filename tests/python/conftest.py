"""Shared helpers: every start-up case runs in its own interpreter, since the runtime starts
once per process."""

import os
import pathlib
import subprocess
import sys
import textwrap

import pytest

REPO = pathlib.Path(__file__).resolve().parents[2]
BUILD = pathlib.Path(os.environ.get("QRX_BUILD_DIR", REPO / "build"))
PYROOT = BUILD / "python"
PKG = PYROOT / "quorix"
RUNTIME_ROOT = PKG / "runtime"
ASSEMBLY_ROOT = PKG / "assemblies"

FIXTURE_ASSEMBLIES = BUILD / "fixtures" / "host-fixture"
BINDTEST_ASSEMBLIES = BUILD / "fixtures" / "bindtest"
BINDTEST_MODULE_DIR = BUILD / "cmake" / "tests" / "bindtest"

_HOST_VARIABLES = ("COREHOST_TRACE", "NETCORE_WRAPPER_NETCORE_DIR_quorix", "NETCORE_WRAPPER_ASSEMBLY_DIR_quorix")


def runtime_dir() -> pathlib.Path:
    (folder,) = [p for p in RUNTIME_ROOT.iterdir() if p.name.startswith("netcore")]
    return folder


class Run:
    def __init__(self, proc: subprocess.CompletedProcess):
        self.returncode = proc.returncode
        self.stdout = proc.stdout
        self.stderr = proc.stderr

    @property
    def trace_lines(self):
        """The CR LF terminated lines the host traced; whatever follows the last one is not a trace line."""
        return self.stdout.split("\r\n")[:-1]

    def __repr__(self):
        return f"<rc={self.returncode}\nstdout={self.stdout!r}\nstderr={self.stderr!r}>"


def run_python(code: str, env=None, pythonpath=PYROOT, timeout=120) -> Run:
    """Runs code in a fresh /usr/bin/python3 with only the given host variables set."""
    environment = {k: v for k, v in os.environ.items() if k not in _HOST_VARIABLES}
    environment["PYTHONPATH"] = str(pythonpath)
    environment.update(env or {})
    # bytes, decoded here: the CR LF line ends must reach the test untouched
    proc = subprocess.run(
        [sys.executable, "-c", textwrap.dedent(code)], env=environment, capture_output=True, timeout=timeout
    )
    return Run(subprocess.CompletedProcess(proc.args, proc.returncode, proc.stdout.decode(), proc.stderr.decode()))


def link_tree(src: pathlib.Path, dst: pathlib.Path, skip=()):
    """A real folder whose files are links to src's files (folder scans skip linked folders)."""
    dst.mkdir(parents=True, exist_ok=True)
    for item in src.iterdir():
        if item.name not in skip:
            (dst / item.name).symlink_to(item.resolve() if item.is_symlink() else item)
    return dst


def _session_assembly_root() -> pathlib.Path:
    """The product assemblies plus the test fixture assembly, for the runtime of this process."""
    root = BUILD / "fixtures" / "assembly-root"
    if root.exists():
        subprocess.run(["rm", "-rf", str(root)], check=True)
    for product in sorted(p for p in ASSEMBLY_ROOT.iterdir() if p.is_dir()):
        link_tree(product, root / product.name)
    if FIXTURE_ASSEMBLIES.exists():
        link_tree(FIXTURE_ASSEMBLIES, root / "hostfixture")
    if BINDTEST_ASSEMBLIES.exists():
        link_tree(BINDTEST_ASSEMBLIES, root / "bindtest")
    return root


# Set before any test imports quorix.folio in this process; subprocesses start from a clean slate.
if (ASSEMBLY_ROOT / "folio").exists():
    os.environ["NETCORE_WRAPPER_ASSEMBLY_DIR_quorix"] = str(_session_assembly_root())


@pytest.fixture
def built():
    if not (PKG / "__init__.py").exists():
        pytest.fail(f"the package is not built under {PKG}: run make first")
    return PKG
