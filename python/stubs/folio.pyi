class _FieldDescrType: ...
class _MixMethodDescrType: ...

def get_pyinstaller_hook_dirs() -> list[str]:
    """Function required by PyInstaller. Returns paths to module
    PyInstaller hooks. Not intended to be called explicitly.
    """
