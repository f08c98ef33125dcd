# quorix.folio imports its siblings from native code, where the freezer cannot see them.
import os

_package = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))

hiddenimports = ["quorix", "quorix.pyintro", "quorix.pygfx", "quorix.pyhold", "quorix.pyfund"]
datas = [
    (os.path.join(_package, "assemblies", "folio"), os.path.join("quorix", "assemblies", "folio")),
]
