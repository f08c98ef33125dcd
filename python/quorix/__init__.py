"""Quorix document processing for Python.

The native modules of this package host the .NET runtime in the Python process. Before any of
them loads, point the runtime host at the runtime and assembly folders shipped beside this
file, unless the user has pointed it elsewhere already.
"""

import os as _os
import sys as _sys
from importlib.machinery import ModuleSpec as _ModuleSpec
from importlib.machinery import PathFinder as _PathFinder
from importlib.util import spec_from_file_location as _spec_from_file_location

_HERE = _os.path.dirname(_os.path.abspath(__file__))

for _name, _folder in (
    ("NETCORE_WRAPPER_NETCORE_DIR_quorix", "runtime"),
    ("NETCORE_WRAPPER_ASSEMBLY_DIR_quorix", "assemblies"),
):
    if not _os.environ.get(_name):
        _os.environ[_name] = _os.path.join(_HERE, _folder)

del _name, _folder

_ICU_FOLDERS = ("/lib", "/lib64", "/usr/lib", "/usr/lib64", "/usr/local/lib", "/lib/x86_64-linux-gnu",
                "/usr/lib/x86_64-linux-gnu")


def _has_icu(folders: "tuple[str, ...] | list[str]") -> bool:
    """Whether a folder holds ICU's common library, which .NET's globalization loads by default."""
    for folder in folders:
        try:
            if any(name.startswith("libicuuc.so") for name in _os.listdir(folder)):
                return True
        except OSError:
            continue
    return False


# Without ICU the runtime ends the process at start-up; invariant globalization (culture-neutral
# casing and comparison) keeps documents working instead. A choice made by the user stands.
if "DOTNET_SYSTEM_GLOBALIZATION_INVARIANT" not in _os.environ and not _has_icu(
        [*_ICU_FOLDERS, *filter(None, _os.environ.get("LD_LIBRARY_PATH", "").split(":"))]):
    _os.environ["DOTNET_SYSTEM_GLOBALIZATION_INVARIANT"] = "1"


class _FolioMainFinder:
    """Lets `python -m quorix.folio` run quorix/folio/__main__.py, and imports the pure-Python
    submodules in that folder (quorix.folio.batch).

    quorix.folio is an extension module, and runpy executes only packages' __main__ modules.
    This finder describes the extension as a package whose code lives in folio/ beside it:
    the module itself is loaded by the ordinary extension loader and keeps the attributes it
    sets (its __path__ stays the empty list); only its spec lists the folder, which is where
    the __main__ module is then found; its empty __path__ sends the submodules' imports here.
    All other imports are left to the usual finders.
    """

    _PREFIX = "quorix.folio."

    @classmethod
    def find_spec(cls, fullname: str, path: object = None, target: object = None) -> "_ModuleSpec | None":
        if fullname == "quorix.folio":
            spec = _PathFinder.find_spec(fullname, [_HERE])
            if spec is not None and spec.origin and not spec.origin.endswith(".py"):
                spec.submodule_search_locations = [_os.path.join(_HERE, "folio")]
            return spec
        if fullname.startswith(cls._PREFIX) and "." not in fullname[len(cls._PREFIX):]:
            # __main__ and the pure-Python submodules (quorix.folio.batch) live in folio/
            source = _os.path.join(_HERE, "folio", fullname[len(cls._PREFIX):] + ".py")
            return _spec_from_file_location(fullname, source) if _os.path.exists(source) else None
        return None


if not any(getattr(f, "__name__", "") == _FolioMainFinder.__name__ for f in _sys.meta_path):
    _sys.meta_path.insert(0, _FolioMainFinder)
