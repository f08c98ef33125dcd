"""The type stubs: mypy --strict passes on the demo and the typed examples and reports the marked
mistakes, the examples run, and the stubs declare exactly what the runtime binds."""

import ast
import os
import re
import subprocess
import sys

import pytest

from conftest import PKG, PYROOT, REPO, run_python

TYPED = REPO / "tests" / "typing"
EXAMPLES = sorted(p for p in TYPED.glob("*.py") if p.name != "misuse.py")

folio = pytest.importorskip("quorix.folio")


def _mypy(tmp_path, *files):
    env = dict(os.environ, MYPYPATH=str(PYROOT))
    proc = subprocess.run(
        [sys.executable, "-m", "mypy", "--strict", "--no-error-summary", "--cache-dir", str(tmp_path / "cache"),
         *map(str, files)],
        env=env, capture_output=True, text=True, cwd=tmp_path, timeout=600,
    )
    return proc


def test_strict_mypy_accepts_the_demo_and_the_examples(tmp_path):
    proc = _mypy(tmp_path, REPO / "demo" / "demo.py", *EXAMPLES)
    assert proc.returncode == 0, proc.stdout + proc.stderr


def test_strict_mypy_accepts_the_package_its_stubs_and_command_line(tmp_path):
    proc = _mypy(tmp_path, "-p", "quorix")
    assert proc.returncode == 0, proc.stdout + proc.stderr


def test_strict_mypy_reports_each_marked_mistake_and_nothing_else(tmp_path):
    source = (TYPED / "misuse.py").read_text().splitlines()
    expected = {(n, m.group(1)) for n, line in enumerate(source, 1) if (m := re.search(r"# E: ([\w-]+)", line))}
    proc = _mypy(tmp_path, TYPED / "misuse.py")
    found = {(int(m.group(1)), m.group(2)) for m in re.finditer(r"misuse\.py:(\d+): error: .*\[([\w-]+)\]", proc.stdout)}
    assert len(expected) >= 7
    assert found == expected, proc.stdout


@pytest.mark.parametrize("example", EXAMPLES, ids=lambda p: p.name)
def test_typed_examples_run(example):
    run = run_python(example.read_text())
    assert run.returncode == 0, run


def _stub_path(module_name):
    relative = module_name.split(".")
    package = PYROOT.joinpath(*relative, "__init__.pyi")
    return package if package.exists() else PYROOT.joinpath(*relative[:-1], relative[-1] + ".pyi")


def _declared(class_node):
    names = set()
    for item in class_node.body:
        if isinstance(item, ast.FunctionDef):
            names.add(item.name)
        elif isinstance(item, ast.AnnAssign) and isinstance(item.target, ast.Name):
            names.add(item.target.id)
        elif isinstance(item, ast.Assign):
            names.update(t.id for t in item.targets if isinstance(t, ast.Name))
    return names


def test_every_submodule_and_sibling_has_a_stub_and_the_package_is_marked_typed():
    assert (PKG / "py.typed").exists()
    # the pure-Python modules (batch, the command line) carry their own annotations
    names = [m for m in sys.modules if m.startswith("quorix.folio")
             and not str(getattr(sys.modules[m], "__file__", "")).endswith(".py")] + [
        "quorix.pyintro", "quorix.pygfx", "quorix.pyhold", "quorix.pyfund"]
    assert len(names) >= 35 + 4
    for name in names:
        assert _stub_path(name).exists(), name


@pytest.mark.parametrize("module_name", ["quorix.folio", "quorix.folio.tables", "quorix.folio.saving",
                                         "quorix.folio.lists", "quorix.pyintro", "quorix.pygfx"])
def test_stub_classes_declare_exactly_the_public_members_bound(module_name):
    module = __import__(module_name, fromlist=["_"])
    tree = ast.parse(_stub_path(module_name).read_text())
    classes = [node for node in tree.body if isinstance(node, ast.ClassDef) and not node.name.startswith("_")]
    assert classes
    for node in classes:
        cls = getattr(module, node.name)
        declared = _declared(node)
        public = {name for name in vars(cls) if not name.startswith("_")}
        if issubclass(cls, int):  # enumerations: their members
            public = set(cls.__members__)
        if issubclass(cls, BaseException):  # exception classes: their managed members, read through
            public = {name for name in vars(cls._qrxsc2p_wrapper) if not name.startswith("_")}
            if cls.__base__.__module__ == "quorix":  # a root: the runtime's class sits below RuntimeError
                public |= {"message", "inner_exception"}
                assert public == {name for name in declared if not name.startswith("_")}, node.name
                assert ast.unparse(node.bases[0]) == "RuntimeError" and cls.__base__.__base__ is RuntimeError
                continue
        assert public == {name for name in declared if not name.startswith("_")}, node.name
        # item access and iteration are declared where the class has the slots
        assert all(hasattr(cls, name) for name in declared if name.startswith("__")), node.name
        if node.bases:
            base = ast.unparse(node.bases[0])
            if not base.startswith("enum."):
                assert cls.__base__.__module__ + "." + cls.__base__.__name__ == (
                    base if "." in base else module_name + "." + base)


def _undocumented(path):
    """Public classes, methods, properties and enumeration members of a stub without a docstring."""
    def has_doc(body):
        return bool(body) and isinstance(body[0], ast.Expr) and isinstance(body[0].value, ast.Constant) \
            and isinstance(body[0].value.value, str)

    missing = []
    for node in ast.parse(path.read_text()).body:
        if not isinstance(node, ast.ClassDef) or node.name.startswith("_"):
            continue
        if not has_doc(node.body):
            missing.append(node.name)
        for i, item in enumerate(node.body):
            if isinstance(item, ast.FunctionDef) and (item.name == "__init__" or not item.name.startswith("_")):
                # a property's setter shares its getter's docstring
                setter = any(isinstance(d, ast.Attribute) and d.attr == "setter" for d in item.decorator_list)
                if not setter and not has_doc(item.body):
                    missing.append(f"{node.name}.{item.name}")
            elif isinstance(item, ast.Assign) and not has_doc(node.body[i + 1:]):
                missing.extend(f"{node.name}.{t.id}" for t in item.targets if isinstance(t, ast.Name))
    return missing


def test_every_public_member_of_the_library_stubs_has_a_docstring():
    stubs = sorted((PKG / "folio").rglob("*.pyi"))
    assert len(stubs) >= 30
    missing = {str(p.relative_to(PKG)): m for p in stubs if not p.name.startswith("_") and (m := _undocumented(p))}
    assert missing == {}
