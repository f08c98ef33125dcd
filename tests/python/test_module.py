"""The root module: version attributes, submodules, auxiliary types and the frozen-app hooks."""

import glob
import importlib.util
import os
import pathlib
import runpy
import struct

import pytest

from conftest import PKG, run_python

folio = pytest.importorskip("quorix.folio") if (PKG / "__init__.py").exists() else None

SUBMODULES = [
    # short name, parent, __package__, has __path__
    ("ai", "", "quorix.folio", False),
    ("bibliography", "", "quorix.folio", False),
    ("buildingblocks", "", "quorix.folio", False),
    ("comparing", "", "quorix.folio", False),
    ("digitalsignatures", "", "quorix.folio", False),
    ("drawing", "", "quorix.folio.drawing", True),
    ("charts", "drawing", "quorix.folio.drawing", False),
    ("ole", "drawing", "quorix.folio.drawing", False),
    ("fields", "", "quorix.folio", False),
    ("fonts", "", "quorix.folio", False),
    ("framesets", "", "quorix.folio", False),
    ("layout", "", "quorix.folio", False),
    ("lists", "", "quorix.folio", False),
    ("loading", "", "quorix.folio", False),
    ("lowcode", "", "quorix.folio", False),
    ("mailmerging", "", "quorix.folio", False),
    ("markup", "", "quorix.folio", False),
    ("math", "", "quorix.folio", False),
    ("notes", "", "quorix.folio", False),
    ("properties", "", "quorix.folio", False),
    ("rendering", "", "quorix.folio", False),
    ("replacing", "", "quorix.folio", False),
    ("reporting", "", "quorix.folio", False),
    ("saving", "", "quorix.folio", False),
    ("settings", "", "quorix.folio", False),
    ("shaping", "", "quorix.folio", False),
    ("tables", "", "quorix.folio", False),
    ("themes", "", "quorix.folio", False),
    ("vba", "", "quorix.folio", False),
    ("webextensions", "", "quorix.folio", False),
    ("xattr", "", "quorix.folio", False),
    ("_wrpgen", "", "quorix.folio", False),
    ("_interop", "_wrpgen", "quorix.folio._wrpgen", False),
    ("_generic", "_wrpgen", "quorix.folio._wrpgen", False),
]


def test_the_root_is_a_package_with_its_versions():
    assert folio.__package__ == "quorix.folio"
    assert folio.__path__ == []
    assert str(folio.VERSION) == "26.10.0.0"
    assert repr(folio.VERSION) == "<quorix.folio._ModuleVersionType: 26.10.0.0>"
    assert str(folio._BACKWARD_COMPATIBILITY_THRESHOLD) == "22.6.0.0"
    assert (folio.VERSION.major, folio.VERSION.minor, folio.VERSION.patch, folio.VERSION.sub) == (26, 10, 0, 0)
    assert type(folio.VERSION) is folio._ModuleVersionType


@pytest.mark.parametrize("name,parent,package,has_path", SUBMODULES)
def test_submodules_are_placed_and_named(name, parent, package, has_path):
    owner = getattr(folio, parent) if parent else folio
    module = getattr(owner, name)
    full = "quorix.folio." + (parent + "." if parent else "") + name
    if parent == "_wrpgen":
        full = "quorix.folio._wrpgen." + name
    assert module.__name__ == full
    assert module.__package__ == package
    if has_path:
        assert module.__path__ == []
    else:
        assert not hasattr(module, "__path__")


def test_every_namespace_has_exactly_one_submodule():
    names = set()
    stack = [folio]
    while stack:
        module = stack.pop()
        for value in vars(module).values():
            # namespaces only: the package's pure-Python modules (batch, the command line) are not
            if type(value) is type(folio) and value.__name__.startswith(module.__name__ + ".") \
                    and not str(getattr(value, "__file__", "")).endswith(".py"):
                names.add(value.__name__)
                stack.append(value)
    assert len(names) == 34


def test_submodules_import_by_dotted_name_in_a_fresh_process():
    run = run_python(
        """
        import importlib, importlib.util, sys
        import quorix.folio.saving
        from quorix.folio.tables import Table
        from quorix.folio.drawing.charts import *
        import quorix.folio.drawing.ole as ole
        import quorix.folio._wrpgen._interop
        print(quorix.folio.saving is quorix.folio.saving, Table.__module__, ole.__name__)
        print(importlib.import_module("quorix.folio.lists") is sys.modules["quorix.folio"].lists)
        print(importlib.util.find_spec("quorix.folio.notes").name)
        """
    )
    assert run.returncode == 0, run
    assert run.stdout.split() == ["True", "quorix.folio.tables", "quorix.folio.drawing.ole", "True", "quorix.folio.notes"]


def test_every_submodule_is_the_one_in_sys_modules():
    import sys

    for name, parent, _, _ in SUBMODULES:
        owner = getattr(folio, parent) if parent else folio
        module = getattr(owner, name)
        assert sys.modules[module.__name__] is module
        assert module.__spec__.name == module.__name__


def test_types_and_enumerations_report_their_module_and_pickle():
    import pickle

    from quorix.folio import lists, tables

    for cls in (folio.Document, tables.Table, lists.ListTemplate, folio.SaveFormat, tables.CellMerge):
        module = cls.__module__
        assert getattr(__import__(module, fromlist=["_"]), cls.__name__) is cls
    assert folio.SaveFormat.__module__ == "quorix.folio"
    assert tables.CellMerge.__module__ == "quorix.folio.tables"
    for member in (folio.SaveFormat.DOCX, tables.CellMerge.PREVIOUS, lists.ListTemplate.NUMBER_DEFAULT):
        for protocol in (0, 2, pickle.HIGHEST_PROTOCOL):
            copy = pickle.loads(pickle.dumps(member, protocol))
            assert copy is member


def _fnv1a(*fields):
    h = 0x811C9DC5
    for byte in struct.pack("<4i", *fields):
        h = ((h ^ byte) * 0x01000193) & 0xFFFFFFFF
    return h - (1 << 32) if h >= 1 << 31 else h


def test_version_objects_compare_hash_and_refuse_other_types():
    v, t = folio.VERSION, folio._BACKWARD_COMPATIBILITY_THRESHOLD
    assert t < v and v > t and v != t and v == v and v >= v and t <= v
    assert hash(v) == _fnv1a(26, 10, 0, 0)
    assert hash(t) == _fnv1a(22, 6, 0, 0)
    assert (v == (26, 10, 0, 0)) is False
    with pytest.raises(TypeError):
        v < (27,)
    for attribute in ("major", "view"):
        with pytest.raises(AttributeError):
            setattr(v, attribute, 1)
    with pytest.raises(TypeError):
        folio._ModuleVersionType()
    import quorix.pyhold

    # another module's version type has the same layout but is a different type
    assert (v == quorix.pyhold.VERSION) is False


def test_auxiliary_types_are_exported():
    assert folio._FieldDescrType.__name__ == "_FieldDescrType"
    assert folio._MixMethodDescrType.__name__ == "_MixMethodDescrType"
    assert folio._ModuleVersionType.__module__ == "quorix.folio"


def test_buffer_view_type_is_registered_but_is_no_host_type():
    interop = folio._wrpgen._interop
    view = interop._ShlBufferView
    assert isinstance(view, type)
    assert "_qrxsc2p_handle" not in vars(view)
    assert "_quorix_clr_host" not in vars(view)


def test_pyinstaller_hook_dirs_exist_and_their_hooks_name_real_data():
    dirs = folio.get_pyinstaller_hook_dirs()
    base = os.path.dirname(folio.__file__)
    assert dirs == [os.path.join(base, "__pyinstaller")] + [
        os.path.join(base, name, "__pyinstaller") for name in ("folio", "pyintro", "pygfx", "pyhold", "pyfund")
    ]
    hooks = []
    for folder in dirs:
        found = sorted(pathlib.Path(folder).glob("hook-*.py"))
        assert found, folder
        hooks.extend(found)
    collected = {}
    for hook in hooks:
        namespace = runpy.run_path(str(hook))
        for source, target in namespace.get("datas", []):
            assert glob.glob(source), (hook.name, source)  # a folder, or a pattern of files
            assert target.startswith("quorix")
            collected[target] = source
        assert all(importlib.util.find_spec(name) for name in namespace.get("hiddenimports", []))
    # a frozen copy keeps the runtime and folio's assemblies where __init__ looks for them
    assert {"quorix/runtime", "quorix/assemblies", "quorix/assemblies/folio"} <= set(collected)


def test_user_settings_of_the_folders_win(tmp_path):
    run = run_python(
        "import os, quorix; print(os.environ['NETCORE_WRAPPER_NETCORE_DIR_quorix'])",
        env={"NETCORE_WRAPPER_NETCORE_DIR_quorix": str(tmp_path)},
    )
    assert run.stdout.strip() == str(tmp_path)


def _fake_sibling(tmp_path, name, body):
    """A package root where quorix.<name> is a plain Python module, the rest links to the build."""
    pkg = tmp_path / "quorix"
    pkg.mkdir()
    for item in PKG.iterdir():
        if not item.name.startswith(name + "."):
            (pkg / item.name).symlink_to(item)
    (pkg / f"{name}.py").write_text(body)
    return tmp_path


CAUSE = """
try:
    import quorix.folio
except ImportError as e:
    print(e)
    print(e.__cause__)
    print(e.__cause__ is e.__context__)
"""


def test_a_sibling_without_version_fails_with_its_step_code(tmp_path):
    root = _fake_sibling(tmp_path, "pyhold", "X = 1\n")
    run = run_python(CAUSE, pythonpath=root)
    message, cause, same = run.stdout.splitlines()
    assert message == "One or more errors occurred while loading the module 'quorix.folio' (-1008)"
    assert cause == (
        "Unable to import module dependencies. Cannot import the quorix.pyhold module. "
        "The quorix.pyhold module found does not have 'VERSION' attribute to check version compatibility."
    )
    assert same == "True"


def test_a_missing_drawing_sibling_fails_with_1009(tmp_path):
    root = _fake_sibling(tmp_path, "pygfx", "raise ImportError('no drawing here')\n")
    run = run_python(CAUSE, pythonpath=root)
    message, cause, _ = run.stdout.splitlines()
    assert message == "One or more errors occurred while loading the module 'quorix.folio' (-1009)"
    assert cause.startswith("Unable to import module dependencies. Cannot import the quorix.pygfx module.")


def test_a_sibling_without_the_handle_capsule_fails_with_1008(tmp_path):
    # a compatible version borrowed from another sibling, but no capsule
    root = _fake_sibling(
        tmp_path, "pyhold", "from quorix.pyintro import VERSION, _BACKWARD_COMPATIBILITY_THRESHOLD\n"
    )
    run = run_python(CAUSE, pythonpath=root)
    message, cause, _ = run.stdout.splitlines()
    assert message == "One or more errors occurred while loading the module 'quorix.folio' (-1008)"
    assert cause == "can't import capsule 'quorix.pyhold._C_APIF'"


def test_invariant_globalization_only_where_icu_is_missing(tmp_path):
    (tmp_path / "icu").mkdir()
    (tmp_path / "icu" / "libicuuc.so.72").write_bytes(b"")
    (tmp_path / "none").mkdir()
    code = f"""
        import os, quorix
        print(quorix._has_icu([{str(tmp_path / 'none')!r}, {str(tmp_path / 'icu')!r}]),
              quorix._has_icu([{str(tmp_path / 'none')!r}, '/no/such/folder']),
              os.environ.get('DOTNET_SYSTEM_GLOBALIZATION_INVARIANT'), quorix._has_icu(quorix._ICU_FOLDERS))
    """
    found, missing, setting, machine_has_icu = run_python(code).stdout.split()
    assert (found, missing) == ("True", "False")
    assert setting == ("None" if machine_has_icu == "True" else "1")
    # a user's own setting is left as it is
    assert run_python(code, env={"DOTNET_SYSTEM_GLOBALIZATION_INVARIANT": "0"}).stdout.split()[2] == "0"
