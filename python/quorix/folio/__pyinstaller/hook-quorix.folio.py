# quorix.folio imports its siblings from native code, where the freezer cannot see them.
# Its pure-Python submodules (batch, the command line) are found by quorix's own finder as
# source files in quorix/folio/, so they travel as data, and what they import is named here
# because the freezer does not read data. Dask is optional: an application that gives batch a
# Dask client collects "distributed" itself.
import ast
import glob
import os

_package = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
_sources = os.path.join(_package, "folio", "*.py")


def _imported(paths):
    """The modules the files import, other than ours and the optional Dask."""
    names = set()
    for path in paths:
        with open(path, encoding="utf-8") as source:
            tree = ast.parse(source.read(), path)
        for node in ast.walk(tree):
            if isinstance(node, ast.Import):
                names.update(alias.name for alias in node.names)
            elif isinstance(node, ast.ImportFrom) and node.module and not node.level:
                names.add(node.module)
    return sorted(n for n in names if n.split(".")[0] not in ("quorix", "distributed", "__future__"))


hiddenimports = ["quorix", "quorix.pyintro", "quorix.pygfx", "quorix.pyhold", "quorix.pyfund",
                 *_imported(sorted(glob.glob(_sources)))]
datas = [
    (os.path.join(_package, "assemblies", "folio"), os.path.join("quorix", "assemblies", "folio")),
    (_sources, os.path.join("quorix", "folio")),
]
