"""quorix.folio at work: a document built from Python, saved as DOCX, Markdown and plain text,
then loaded back; all of it done by the managed engine inside this Python process."""

import io
import os
import tempfile
import time

t0 = time.perf_counter()
import quorix.folio as qf  # noqa: E402  (timed on purpose: the .NET runtime starts here)

print(f"quorix.folio {qf.VERSION}: runtime started in {(time.perf_counter() - t0) * 1000:.0f} ms")

doc = qf.Document()
builder = qf.DocumentBuilder(doc)

builder.paragraph_format.style_identifier = qf.StyleIdentifier.HEADING_1
builder.writeln("Quarterly report")
builder.paragraph_format.style_identifier = qf.StyleIdentifier.NORMAL

builder.write("Sales grew in every region. ")
builder.bold = True
builder.write("The north doubled.")
builder.bold = False
builder.writeln()
builder.insert_hyperlink("Details", "https://example.com/q3", False)
builder.writeln()

builder.start_table()
for row in (("Region", "Q2", "Q3"), ("North", "10", "20"), ("South", "12", "15")):
    for value in row:
        builder.insert_cell()
        builder.write(value)
    builder.end_row()
builder.end_table()

folder = tempfile.mkdtemp(prefix="quorix-demo-")
paths = {ext: os.path.join(folder, "report" + ext) for ext in (".docx", ".md", ".txt")}
for path in paths.values():
    doc.save(path)  # the format follows the extension
    print(f"saved {os.path.basename(path):12} {os.path.getsize(path):6} bytes")

print("\n--- Markdown ---")
print(open(paths[".md"], encoding="utf-8").read().rstrip())

again = qf.Document(paths[".docx"])
print("\nloaded back:", again.sections.count, "section(s), detected format",
      qf.FileFormatUtil.detect_file_format(paths[".docx"]).load_format.name)

# Python file objects serve as managed streams.
buffer = io.BytesIO()
again.save(buffer, qf.SaveFormat.TEXT)
print("--- as plain text, through a Python stream ---")
print(buffer.getvalue().decode("utf-8").rstrip())
