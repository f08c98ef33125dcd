"""Starting the runtime inside Python: tracing, runtime and assembly folder discovery, reuse of
a runtime another module started, and the failures that end start-up."""

import signal

import pytest

from conftest import ASSEMBLY_ROOT, BUILD, PKG, link_tree, run_python, runtime_dir

IMPORT = "import quorix.folio"
WRAPPER = "libquorix.embed.coreclrwrap.so"


def product_folders(trace_lines):
    """The PRODUCT_ASSEMBLY_DIR folders, checked to be every product folder with pygfx last."""
    line = next(l for l in trace_lines if l.startswith("PRODUCT_ASSEMBLY_DIR: "))
    folders = line[len("PRODUCT_ASSEMBLY_DIR: '"):-1]
    parts = folders.split(":")
    assert sorted(parts[:2]) == [str(ASSEMBLY_ROOT / "folio"), str(ASSEMBLY_ROOT / "pyintro")]
    assert parts[2:] == [str(ASSEMBLY_ROOT / "pygfx"), str(runtime_dir())]
    return folders


def test_plain_import_reports_versions_and_submodules(built):
    run = run_python(
        "import quorix.folio as f; print(f.VERSION, repr(f.VERSION), f.drawing.charts.__package__)"
    )
    assert run.returncode == 0, run
    assert run.stdout == "26.10.0.0 <quorix.folio._ModuleVersionType: 26.10.0.0> quorix.folio.drawing\n"
    assert run.stderr == ""


@pytest.mark.parametrize("value", ["0", "", "abc", "-1"])
def test_tracing_stays_off(built, value):
    run = run_python(IMPORT, env={"COREHOST_TRACE": value})
    assert run.returncode == 0, run
    assert run.stdout == ""


@pytest.mark.parametrize("value", ["1", "2"])
def test_tracing_shows_the_start_up_sequence(built, value):
    run = run_python(IMPORT, env={"COREHOST_TRACE": value})
    assert run.returncode == 0, run
    lines = run.trace_lines
    rt = runtime_dir()
    paths = product_folders(lines)
    startup = lines[: lines.index("Default AppDomain ready.") + 1]
    assert startup == [
        "CLR host tracing enabled",
        "Initializing .NET Core host...",
        f"NETCORE_DIR: '{rt}'",
        f"PRODUCT_ASSEMBLY_DIR: '{paths}'",
        f"Loading: '{rt}/{WRAPPER}'",
        "Try get module...",
        "No existed module...",
        "wrap dll loaded",
        f"Loading2: '{rt}/libcoreclr.so'",
        ".NET Core host ready.",
        "Creating default AppDomain...",
        f"APP_PATH: '{paths}'",
        f"APP_NI_PATHS: '{paths}'",
        f"NATIVE_DLL_SEARCH_DIRECTORIES: '{paths}'",
        startup[14],
        "Default AppDomain ready.",
    ]
    assert startup[14].startswith("HOST_EXE_PATH: '/") and "python" in startup[14]
    # the first loader owns the runtime and shuts it down at exit
    assert lines[len(startup):] == ["Shutdowning .NET Core host...", ".NET Core host is down: 0"]


def _runtime_root_with(tmp_path, folders, wrapper_in):
    root = tmp_path / "rt"
    for name in folders:
        if name in wrapper_in:
            link_tree(runtime_dir(), root / name)
        else:
            (root / name).mkdir(parents=True)
    return root


def _traced_netcore_dir(run):
    return next(line for line in run.trace_lines if line.startswith("NETCORE_DIR: "))


def test_the_highest_folder_holding_the_wrapper_is_chosen(built, tmp_path):
    root = _runtime_root_with(tmp_path, ["netcore3.1", "netcore6.0"], wrapper_in={"netcore3.1"})
    run = run_python(IMPORT, env={"COREHOST_TRACE": "1", "NETCORE_WRAPPER_NETCORE_DIR_quorix": str(root)})
    assert run.returncode == 0, run
    assert _traced_netcore_dir(run) == f"NETCORE_DIR: '{root}/netcore3.1'"


def test_versions_rank_numerically_and_malformed_names_are_ignored(built, tmp_path):
    names = ["netcore3.1", "netcore10.0", "netcore3.1.2", "netcore3", "netcore-3.1", "netcore3.x", "netcore11"]
    root = _runtime_root_with(tmp_path, names, wrapper_in=set(names))
    run = run_python(IMPORT, env={"COREHOST_TRACE": "1", "NETCORE_WRAPPER_NETCORE_DIR_quorix": str(root)})
    assert run.returncode == 0, run
    assert _traced_netcore_dir(run) == f"NETCORE_DIR: '{root}/netcore10.0'"


def test_a_version_beyond_int32_ends_start_up(built, tmp_path):
    root = _runtime_root_with(tmp_path, ["netcore99999999999.0"], wrapper_in=set())
    run = run_python(IMPORT, env={"NETCORE_WRAPPER_NETCORE_DIR_quorix": str(root)})
    assert run.returncode == -signal.SIGABRT, run
    assert "stoi" in run.stderr


def test_without_the_variables_the_executable_folder_is_used(built, tmp_path):
    # a package without our __init__ leaves both variables unset
    pkg = tmp_path / "quorix"
    pkg.mkdir()
    (pkg / "__init__.py").write_text("")
    for so in PKG.glob("*.so"):
        (pkg / so.name).symlink_to(so)
    run = run_python(IMPORT, env={"COREHOST_TRACE": "1"}, pythonpath=tmp_path)
    exe_dir = next(l for l in run.trace_lines if l.startswith("NETCORE_DIR: "))[len("NETCORE_DIR: '"):-1]
    assert exe_dir and "/" in exe_dir
    assert f"PRODUCT_ASSEMBLY_DIR: '{exe_dir}'" in run.trace_lines
    # no wrapper library beside the interpreter: start-up ends the process
    assert run.returncode == -signal.SIGABRT, run
    assert "DynamicLibrary::load" in run.stderr
    assert "No module..." in run.trace_lines


def test_assembly_folders_are_every_subfolder_with_pygfx_last(built, tmp_path):
    root = tmp_path / "asm"
    link_tree(ASSEMBLY_ROOT / "folio", root / "folio")
    for name in ("a", "pygfx", "b"):
        (root / name).mkdir()
    (root / "a-file").write_text("not a folder")
    run = run_python(IMPORT, env={"COREHOST_TRACE": "1", "NETCORE_WRAPPER_ASSEMBLY_DIR_quorix": str(root)})
    assert run.returncode == 0, run
    line = next(l for l in run.trace_lines if l.startswith("PRODUCT_ASSEMBLY_DIR: "))
    folders = line[len("PRODUCT_ASSEMBLY_DIR: '"):-1].split(":")
    assert sorted(folders[:3]) == sorted(str(root / n) for n in ("a", "b", "folio"))
    assert folders[3:] == [str(root / "pygfx"), str(runtime_dir())]


REUSE = """
import ctypes, os, sys
rt = os.path.join(os.path.dirname(__import__("quorix").__file__), "runtime")
rt = os.path.join(rt, [n for n in os.listdir(rt) if n.startswith("netcore")][0])
asm = os.environ["NETCORE_WRAPPER_ASSEMBLY_DIR_quorix"] + "/folio"
wrap = ctypes.CDLL(os.path.join(rt, "libquorix.embed.coreclrwrap.so"), mode=os.RTLD_NOW | os.RTLD_GLOBAL)
assert wrap.coreclr_wrap_load(os.path.join(rt, "libcoreclr.so").encode()) == 1
if {initialize}:
    paths = (asm + ":" + rt).encode()
    keys = (ctypes.c_char_p * 3)(b"TRUSTED_PLATFORM_ASSEMBLIES", b"APP_PATHS", b"NATIVE_DLL_SEARCH_DIRECTORIES")
    values = (ctypes.c_char_p * 3)(b"", paths, paths)
    assert wrap.coreclr_wrap_initialize(sys.executable.encode(), b"AnotherModule", 3, keys, values) == 0
sys.stdout.flush()
import quorix.folio
print("imported", quorix.folio.VERSION)
"""


def test_a_runtime_started_by_another_module_is_reused(built):
    run = run_python(REUSE.format(initialize=True), env={"COREHOST_TRACE": "1"})
    assert run.returncode == 0, run
    lines = run.trace_lines
    assert "Using existed module..." in lines
    for absent in ("No existed module...", "Creating default AppDomain...", "Shutdowning .NET Core host..."):
        assert absent not in lines
    assert not any(line.startswith("Loading2: ") for line in lines)
    assert run.stdout.endswith("imported 26.10.0.0\n")


def test_a_loaded_wrapper_without_a_domain_fails_to_bind(built):
    run = run_python(REUSE.format(initialize=False))
    assert run.returncode == 1, run
    assert "ImportError: One or more errors occurred while loading the module 'quorix.folio' (-1007)" in run.stderr
    assert "TypeError: While initializing the host for the 'Quorix.WrpGen.Interop.ExchangeHost" in run.stderr


def _mock_runtime(tmp_path):
    root = tmp_path / "rt"
    folder = root / "netcore9.0"
    folder.mkdir(parents=True)
    (folder / WRAPPER).symlink_to(runtime_dir() / WRAPPER)
    (folder / "libcoreclr.so").symlink_to(BUILD / "cmake" / "fixtures" / "mock-coreclr" / "libcoreclr.so")
    return root, folder


def test_a_refused_domain_ends_the_process_with_the_full_report(built, tmp_path):
    root, folder = _mock_runtime(tmp_path)
    run = run_python(
        IMPORT, env={"NETCORE_WRAPPER_NETCORE_DIR_quorix": str(root), "QRX_MOCK_INIT_STATUS": "0x80004005"}
    )
    assert run.returncode == -signal.SIGABRT, run
    report = next(l for l in run.stderr.splitlines() if "coreclr_initialize failed" in l)
    paths = report.split("<APP_PATHS>='")[1].split("'")[0]
    parts = paths.split(":")
    assert sorted(parts[:2]) == [str(ASSEMBLY_ROOT / n) for n in ("folio", "pyintro")]
    assert parts[2:] == [str(ASSEMBLY_ROOT / "pygfx"), str(folder)]
    exe = report.split("<HOST_EXE_PATH>='")[1].split("'")[0]
    assert exe.startswith("/") and "python" in exe
    assert report.endswith(
        "coreclr_initialize failed (0x80004005) [<APP_DOMAIN_NAME>='QuorixCLRHostDomain',"
        f"<HOST_EXE_PATH>='{exe}',<TRUSTED_PLATFORM_ASSEMBLIES>='',<APP_PATHS>='{paths}',<APP_NI_PATHS>='{paths}',"
        f"<NATIVE_DLL_SEARCH_DIRECTORIES>='{paths}',<AppDomainCompatSwitch>='UseLatestBehaviorWhenTFMNotSpecified']"
    )
    assert "mock: coreclr_initialize exe='/" in run.stderr


def test_a_runtime_without_the_entry_points_fails_import_with_a_chained_type_error(built, tmp_path):
    root, _ = _mock_runtime(tmp_path)
    run = run_python(
        """
        try:
            import quorix.folio
        except ImportError as e:
            print(type(e.__cause__).__name__, e.__cause__ is e.__context__)
            print(e)
            print(e.__cause__)
        """,
        env={"NETCORE_WRAPPER_NETCORE_DIR_quorix": str(root)},
    )
    assert run.returncode == 0, run
    kind, message, cause = run.stdout.splitlines()
    assert kind == "TypeError True"
    assert message == "One or more errors occurred while loading the module 'quorix.folio' (-1007)"
    assert cause == (
        "While initializing the host for the 'Quorix.WrpGen.Interop.ExchangeHost (Assembly=WrpInterop.Quorix.Folio)' "
        "type, an error occurred - Method 'GetTypeName' not found (error=-2147024894)"
    )
    assert run.stderr.count("mock: coreclr_create_delegate") == 1  # binding stops at the first failure


def test_a_missing_managed_method_fails_import_with_code_1007(built, tmp_path):
    incomplete = BUILD / "fixtures" / "incomplete-interop" / "WrpInterop.Quorix.Folio.dll"
    assert incomplete.exists(), "make test-python builds the incomplete interop assembly"
    folio = link_tree(ASSEMBLY_ROOT / "folio", tmp_path / "asm" / "folio", skip={"WrpInterop.Quorix.Folio.dll"})
    (folio / "WrpInterop.Quorix.Folio.dll").symlink_to(incomplete)
    run = run_python(
        """
        try:
            import quorix.folio
        except ImportError as e:
            print(e)
            print(type(e.__cause__).__name__, e.__cause__)
        """,
        env={"NETCORE_WRAPPER_ASSEMBLY_DIR_quorix": str(tmp_path / "asm")},
    )
    assert run.returncode == 0, run
    message, cause = run.stdout.splitlines()
    assert message == "One or more errors occurred while loading the module 'quorix.folio' (-1007)"
    assert cause.startswith(
        "TypeError While initializing the host for the 'Quorix.WrpGen.Interop.ExchangeHost "
        "(Assembly=WrpInterop.Quorix.Folio)' type, an error occurred - Method 'BoxStcTarget' not found (error="
    )
    assert cause.endswith(")") and int(cause[cause.rindex("=") + 1 : -1]) < 0
