#!/usr/bin/env python3
"""Builds the installable wheel (PEP 427) from the assembled package build/python/quorix.

The runtime folder's links into the machine's .NET are replaced by copies of the files, minus
what a hosted runtime never loads (debugger and dump tools, alternative collectors, the muxer's
host policy); the product and interop assemblies are precompiled to native code (ReadyToRun)
when a compiler is given, so that first calls do not wait for the JIT. Only the standard
library is used: this runs where no packaging tools are installed.
"""

import argparse
import base64
import csv
import hashlib
import io
import os
import pathlib
import shutil
import subprocess
import sys
import sysconfig
import tempfile
import zipfile

# Files of the shared framework that an embedded runtime does not use.
RUNTIME_LEFT_OUT = {
    "createdump",
    "libmscordaccore.so",
    "libmscordbi.so",
    "libcoreclrtraceptprovider.so",
    "libhostpolicy.so",
    "libclrgc.so",
    "libclrgcexp.so",
}
# Code generated beyond each assembly's own: the framework's generic types instantiated over our
# types (List<T> of our structures, LINQ over them) and framework code inlined into ours. Sound
# because the wheel carries the very framework the code is compiled against.
CROSS_MODULE = ("--opt-cross-module", "*", "--non-local-generics-module", "*")
ZIP_TIME = (1980, 1, 1, 0, 0, 0)  # reproducible archives


def wheel_tag():
    interpreter = f"cp{sys.version_info.major}{sys.version_info.minor}"
    platform = sysconfig.get_platform().replace("-", "_").replace(".", "_")
    return f"{interpreter}-{interpreter}-{platform}"


def left_out(path: pathlib.Path) -> bool:
    if path.suffix == ".pdb" or "__pycache__" in path.parts:
        return True
    # the summaries of the XML documentation reach users through the type stubs
    if path.suffix == ".xml" and path.parts[0] == "assemblies":
        return True
    return path.parent.parent.name == "runtime" and path.name in RUNTIME_LEFT_OUT


def copy_package(package: pathlib.Path, stage: pathlib.Path):
    """Copies the package with every link resolved: a wheel holds files, not links."""
    for source in sorted(package.rglob("*")):
        relative = source.relative_to(package)
        if source.is_dir() or left_out(relative):
            continue
        target = stage / relative
        target.parent.mkdir(parents=True, exist_ok=True)
        shutil.copy2(source, target, follow_symlinks=True)


def is_ready_to_run(assembly: pathlib.Path) -> bool:
    """Whether the file carries a ReadyToRun header (its "RTR" signature) already."""
    return b"RTR\x00" in assembly.read_bytes()


def ready_to_run(stage: pathlib.Path, crossgen: str, framework: pathlib.Path):
    """Precompiles every assembly of the package, ours and the third-party ones we ship, against
    the framework they will run on, so that a first call on any path waits for no JIT."""
    for folder in sorted(p for p in (stage / "assemblies").iterdir() if p.is_dir()):
        for assembly in sorted(folder.glob("*.dll")):
            if is_ready_to_run(assembly):
                continue
            with tempfile.TemporaryDirectory() as scratch:
                output = pathlib.Path(scratch) / assembly.name
                subprocess.run(
                    [crossgen, str(assembly), "-o", str(output), "--targetos", "linux", "--targetarch", "x64", "-O",
                     "-r", str(framework / "*.dll"), "-r", str(folder / "*.dll"), *CROSS_MODULE],
                    check=True, stdout=subprocess.DEVNULL,
                )
                shutil.copyfile(output, assembly)


def record_line(name: str, data: bytes):
    digest = base64.urlsafe_b64encode(hashlib.sha256(data).digest()).rstrip(b"=").decode()
    return [name, f"sha256={digest}", str(len(data))]


def metadata(version: str, readme: pathlib.Path) -> str:
    python = f"{sys.version_info.major}.{sys.version_info.minor}"
    return (
        "Metadata-Version: 2.1\n"
        "Name: quorix-folio\n"
        f"Version: {version}\n"
        "Summary: Word-processing documents from Python: the Quorix.Folio engine hosted on its own .NET runtime\n"
        f"Requires-Python: =={python}.*\n"
        "Classifier: Operating System :: POSIX :: Linux\n"
        "Classifier: Typing :: Typed\n"
        "Description-Content-Type: text/markdown\n"
        "\n" + readme.read_text(encoding="utf-8")
    )


def write_wheel(stage_root: pathlib.Path, dist: pathlib.Path, version: str, readme: pathlib.Path) -> pathlib.Path:
    tag = wheel_tag()
    info = f"quorix_folio-{version}.dist-info"
    wheel = dist / f"quorix_folio-{version}-{tag}.whl"
    dist.mkdir(parents=True, exist_ok=True)
    extra = {
        f"{info}/METADATA": metadata(version, readme).encode(),
        f"{info}/WHEEL": (f"Wheel-Version: 1.0\nGenerator: quorix build-wheel\nRoot-Is-Purelib: false\nTag: {tag}\n").encode(),
        f"{info}/top_level.txt": b"quorix\n",
    }
    records = []
    with zipfile.ZipFile(wheel, "w", zipfile.ZIP_DEFLATED, compresslevel=6) as archive:
        def add(name, data, mode):
            entry = zipfile.ZipInfo(name, ZIP_TIME)
            entry.external_attr = (0o100000 | mode) << 16
            entry.compress_type = zipfile.ZIP_DEFLATED
            archive.writestr(entry, data)
            records.append(record_line(name, data))

        for path in sorted(p for p in stage_root.rglob("*") if p.is_file()):
            name = path.relative_to(stage_root).as_posix()
            add(name, path.read_bytes(), 0o755 if os.access(path, os.X_OK) else 0o644)
        for name, data in extra.items():
            add(name, data, 0o644)
        text = io.StringIO()
        csv.writer(text, lineterminator="\n").writerows(records + [[f"{info}/RECORD", "", ""]])
        entry = zipfile.ZipInfo(f"{info}/RECORD", ZIP_TIME)
        entry.external_attr = (0o100644) << 16
        archive.writestr(entry, text.getvalue(), zipfile.ZIP_DEFLATED)
    return wheel


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--package", required=True, type=pathlib.Path, help="the assembled quorix package folder")
    parser.add_argument("--framework", required=True, type=pathlib.Path, help="the .NET shared framework folder")
    parser.add_argument("--crossgen", default="", help="the ReadyToRun compiler; empty: assemblies stay as built")
    parser.add_argument("--stage", required=True, type=pathlib.Path, help="scratch folder, emptied first")
    parser.add_argument("--dist", required=True, type=pathlib.Path)
    parser.add_argument("--version", required=True)
    parser.add_argument("--readme", required=True, type=pathlib.Path)
    args = parser.parse_args()

    shutil.rmtree(args.stage, ignore_errors=True)
    package = args.stage / "quorix"
    copy_package(args.package, package)
    if args.crossgen:
        ready_to_run(package, args.crossgen, args.framework)
    wheel = write_wheel(args.stage, args.dist, args.version, args.readme)
    print(f"{wheel}: {wheel.stat().st_size / 2**20:.1f} MiB")


if __name__ == "__main__":
    main()
