"""What quorix.folio offers today: the .NET runtime started inside this Python process, the
module tree of the document library, and the sibling modules it stands on."""

import time

t0 = time.perf_counter()
import quorix.folio as qf  # noqa: E402  (timed on purpose)
import quorix.pyfund  # noqa: E402

elapsed_ms = (time.perf_counter() - t0) * 1000

print(f"quorix.folio {qf.VERSION} (compatible back to {qf._BACKWARD_COMPATIBILITY_THRESHOLD})")
print(f"runtime started and interop assembly bound in {elapsed_ms:.0f} ms")

submodules = sorted(
    name for name, value in vars(qf).items() if type(value) is type(qf) and not name.startswith("_")
)
print(f"{len(submodules)} public submodules: {', '.join(submodules)}")
print("drawing.charts lives in package", qf.drawing.charts.__package__)

stream = quorix.pyfund.BytesAsStream(b"Hello from Python")
stream.seek(0, 2)
stream.write(b", written through a binary stream over bytes")
print("stream contents:", stream.getvalue().decode())

print("PyInstaller hook folders:")
for folder in qf.get_pyinstaller_hook_dirs():
    print("  ", folder)
