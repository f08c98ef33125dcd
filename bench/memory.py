"""Peak memory of loading, using and saving documents with one large part, against the target of
4 times the package's uncompressed XML plus a fixed allowance (the runtime's own footprint, taken
as the peak of the same steps on a small document).

Two shapes, each in a fresh process so that ru_maxrss is the peak of that shape alone:
many short paragraphs, and one paragraph holding a single huge run.

    PYTHONPATH=build/python /usr/bin/python3 bench/memory.py [MEGABYTES]
"""

import io
import os
import subprocess
import sys
import tempfile
import zipfile

STEPS = """
import resource, sys, zipfile
import quorix.folio as qf
path = sys.argv[1]
doc = qf.Document(path)
doc.first_section
text = doc.get_text()
del text
doc.save(path + ".out.docx")
doc.save(path + ".out.txt")
print(resource.getrusage(resource.RUSAGE_SELF).ru_maxrss * 1024)
"""


def make(path, shape, size):
    import quorix.folio as qf

    builder = qf.DocumentBuilder()
    builder.writeln("seed")
    packed = io.BytesIO()
    builder.document.save(packed, qf.SaveFormat.DOCX)
    source = zipfile.ZipFile(io.BytesIO(packed.getvalue()))
    main = source.read("word/document.xml").decode()
    head = main.split("<w:body>")[0] + "<w:body>"
    tail = "<w:sectPr" + main.split("<w:sectPr", 1)[1]
    if shape == "paragraphs":
        one = "<w:p><w:r><w:t>lorem ipsum dolor sit amet consectetur</w:t></w:r></w:p>"
        body = one * (size // len(one))
    else:
        body = "<w:p><w:r><w:t>" + "abcdefghij" * (size // 10) + "</w:t></w:r></w:p>"
    with zipfile.ZipFile(path, "w", zipfile.ZIP_DEFLATED) as out:
        for name in source.namelist():
            out.writestr(name, head + body + tail if name == "word/document.xml" else source.read(name))
    with zipfile.ZipFile(path) as done:
        return sum(info.file_size for info in done.infolist())


def peak(path):
    out = subprocess.run([sys.executable, "-c", STEPS, path], capture_output=True, text=True, check=True)
    return int(out.stdout.strip().splitlines()[-1])


def main():
    megabytes = int(sys.argv[1]) if len(sys.argv) > 1 else 50
    folder = tempfile.mkdtemp(prefix="qrx-memory-")
    small = os.path.join(folder, "small.docx")
    make(small, "paragraphs", 64 << 10)
    allowance = max(peak(small) for _ in range(2))
    print(f"allowance (peak on a 64 KB document): {allowance >> 20} MB")
    for shape in ("paragraphs", "one-run"):
        path = os.path.join(folder, f"{shape}.docx")
        xml = make(path, shape, megabytes << 20)
        peaks = [peak(path) for _ in range(2)]
        ratios = [(p - allowance) / xml for p in peaks]
        print(f"{shape}: {os.path.getsize(path) >> 10} KB file, {xml >> 20} MB of XML, peak "
              f"{min(peaks) >> 20} .. {max(peaks) >> 20} MB, (peak - allowance) / XML "
              f"{min(ratios):.1f} .. {max(ratios):.1f} (target <= 4)")


if __name__ == "__main__":
    main()
