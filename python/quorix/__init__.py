"""Quorix document processing for Python.

The native modules of this package host the .NET runtime in the Python process. Before any of
them loads, point the runtime host at the runtime and assembly folders shipped beside this
file, unless the user has pointed it elsewhere already.
"""

import os as _os

_HERE = _os.path.dirname(_os.path.abspath(__file__))

for _name, _folder in (
    ("NETCORE_WRAPPER_NETCORE_DIR_quorix", "runtime"),
    ("NETCORE_WRAPPER_ASSEMBLY_DIR_quorix", "assemblies"),
):
    if not _os.environ.get(_name):
        _os.environ[_name] = _os.path.join(_HERE, _folder)

del _name, _folder
