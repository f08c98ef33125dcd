"""Typed use of the library: build a document with a heading, a list, a table, a header and a
bookmark, replace text, save it, load it back and walk its paragraphs. Checked by mypy --strict
and run by the tests, so the stubs and the runtime must agree on every line."""

from __future__ import annotations

import os
import sys
import tempfile

import quorix.folio as qf
from quorix.folio.replacing import FindReplaceOptions
from quorix.folio.tables import Table


def build() -> qf.Document:
    doc = qf.Document()
    builder = qf.DocumentBuilder(doc)
    builder.paragraph_format.style_identifier = qf.StyleIdentifier.HEADING_1
    builder.writeln("Inventory")
    builder.paragraph_format.style_identifier = qf.StyleIdentifier.NORMAL
    builder.list_format.apply_bullet_default()
    for item in ("apples", "pears"):
        builder.writeln(item)
    builder.list_format.remove_numbers()
    table: Table = builder.start_table()
    for row in (("fruit", "count"), ("apples", "3")):
        for value in row:
            builder.insert_cell()
            builder.write(value)
        builder.end_row()
    builder.end_table()
    table.set_borders(qf.LineStyle.SINGLE, 0.5)
    builder.start_bookmark("total")
    builder.write("Total: TBD")
    builder.end_bookmark("total")
    builder.move_to_header_footer(qf.HeaderFooterType.HEADER_PRIMARY)
    builder.write("Quarterly inventory")
    return doc


def paragraphs(doc: qf.Document) -> list[str]:
    texts: list[str] = []
    section = doc.first_section  # None in a document without sections
    assert section is not None and section.body is not None
    node: qf.Node | None = section.body.first_child
    while node is not None:
        if node.node_type == qf.NodeType.PARAGRAPH:
            texts.append(node.get_text().strip())
        node = node.next_sibling
    return texts


def main() -> int:
    doc = build()
    options = FindReplaceOptions()
    options.match_case = True
    replaced: int = doc.range.replace("TBD", "3", options)
    path = os.path.join(tempfile.mkdtemp(), "inventory.docx")
    doc.save(path)
    again = qf.Document(path)
    texts = paragraphs(again)
    print(replaced, texts[0], texts[-1], sep="|")
    return 0 if replaced == 1 and texts[0] == "Inventory" else 1


if __name__ == "__main__":
    sys.exit(main())
