# quorix.pyintro binds .NET types: its managed assemblies, when it has any, travel with it.
import os

_package = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
_assemblies = os.path.join(_package, "assemblies", "pyintro")

hiddenimports = ["quorix"]
datas = [(_assemblies, os.path.join("quorix", "assemblies", "pyintro"))] if os.path.isdir(_assemblies) else []
