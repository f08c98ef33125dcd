# Frozen applications need the runtime and the managed assemblies as data next to the package,
# in the same relative folders that quorix/__init__.py points the runtime host at.
import os

_package = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))

datas = [
    (os.path.join(_package, folder), os.path.join("quorix", folder))
    for folder in ("runtime", "assemblies")
    if os.path.isdir(os.path.join(_package, folder))
]
