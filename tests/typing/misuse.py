"""Mistakes the stubs must catch: each line marked with an error code fails under mypy --strict.
Never run; the tests compare mypy's report with the marks."""

import quorix.folio as qf

doc = qf.Document()
doc.save(42)  # E: call-overload
doc.save("x.docx", 20)  # E: call-overload
qf.DocumentBuilder(doc).font.size = "large"  # E: assignment
doc.sections = doc.sections  # E: misc
qf.Document().no_such_method()  # E: attr-defined
text: int = doc.get_text()  # E: assignment
qf.SaveFormat.NO_SUCH_FORMAT  # E: attr-defined
doc.first_section.body  # E: union-attr
