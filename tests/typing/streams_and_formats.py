"""Typed use of streams, formats and enumerations: save to a Python stream in each text format,
detect the format of the bytes, and read the formatting of a run back."""

from __future__ import annotations

import io
import sys

import quorix.folio as qf
from quorix.folio import saving


def main() -> int:
    doc = qf.Document()
    builder = qf.DocumentBuilder(doc)
    builder.font.bold = True
    builder.font.size = 14.0
    builder.writeln("Heading text")
    sizes: dict[qf.SaveFormat, int] = {}
    for fmt in (qf.SaveFormat.DOCX, qf.SaveFormat.MARKDOWN, qf.SaveFormat.TEXT):
        stream = io.BytesIO()
        result: saving.SaveOutputParameters = doc.save(stream, fmt)
        sizes[fmt] = len(stream.getvalue())
        print(fmt.name, result.content_type)
    docx = io.BytesIO()
    doc.save(docx, qf.SaveFormat.DOCX)
    docx.seek(0)
    loaded = qf.Document(docx)
    section = loaded.first_section
    body = section.body if section is not None else None
    paragraph = body.first_paragraph if body is not None else None
    run = paragraph.runs.count if paragraph is not None else 0
    bold: bool = builder.font.bold
    print(sizes[qf.SaveFormat.TEXT] > 0, run, bold)
    return 0 if bold and sizes[qf.SaveFormat.DOCX] > sizes[qf.SaveFormat.TEXT] else 1


if __name__ == "__main__":
    sys.exit(main())
