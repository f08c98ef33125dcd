"""Module-level functions for quorix.folio.batch's workers, which import them by name, and the
generated documents the batch tests share."""

import io
import os
import signal
import time
import zipfile


def words(document):
    return document.get_text().split()


def unpicklable(document):
    return lambda: document


def misbehave(document):
    """What a document's words ask for: die once ("die-once:MARKER", the marker file recording
    the first death), wait to be killed once ("linger:MARKER", the marker holding the process id),
    die every time, sleep past any timeout, or fill memory; else its words."""
    found = document.get_text().split()
    for word in found:
        if word.startswith("die-once:") and not os.path.exists(word[9:]):
            open(word[9:], "w").close()
            os.kill(os.getpid(), signal.SIGKILL)
        if word.startswith("linger:") and not os.path.exists(word[7:]):
            with open(word[7:] + ".part", "w") as marker:
                marker.write(str(os.getpid()))
            os.rename(word[7:] + ".part", word[7:])  # whole, for whoever waits to end this process
            time.sleep(60)
        if word == "die-always":
            os.kill(os.getpid(), signal.SIGKILL)
        if word == "sleep":
            time.sleep(60)
        if word == "hog":
            held = b"x" * (768 << 20)  # touched pages: resident, not just reserved
            time.sleep(60)
            del held
    return found


def make_text_documents(qf, folder, texts):
    """A document per text, named after its position; returns their paths."""
    paths = []
    for i, text in enumerate(texts):
        doc = qf.Document()
        qf.DocumentBuilder(doc).writeln(text)
        paths.append(os.path.join(folder, f"t{i}.docx"))
        doc.save(paths[-1])
    return paths


def make_documents(qf, folder, count):
    """count small documents of varied content, some in a subfolder; returns their paths."""
    paths = []
    for i in range(count):
        doc = qf.Document()
        builder = qf.DocumentBuilder(doc)
        builder.paragraph_format.style_identifier = qf.StyleIdentifier.HEADING_1
        builder.writeln(f"Document {i}")
        builder.paragraph_format.style_identifier = qf.StyleIdentifier.NORMAL
        builder.font.bold = i % 2 == 0
        builder.writeln(" ".join(f"word{j}" for j in range(i % 40)))
        builder.font.bold = False
        if i % 5 == 0:
            builder.list_format.apply_number_default()
            for item in ("one", "two"):
                builder.writeln(item)
            builder.list_format.remove_numbers()
        if i % 7 == 0:
            builder.start_table()
            for value in ("a", "b"):
                builder.insert_cell()
                builder.write(value)
            builder.end_row()
            builder.end_table()
        path = os.path.join(folder, "sub" if i % 4 == 0 else "", f"doc{i:03}.docx")
        os.makedirs(os.path.dirname(path), exist_ok=True)
        doc.save(path)
        paths.append(path)
    return paths


def make_hostile(folder, valid):
    """Damaged and hostile inputs, by the file name of each; valid is a good DOCX's bytes."""
    os.makedirs(folder, exist_ok=True)
    source = zipfile.ZipFile(io.BytesIO(valid))

    def rezip(name, part):
        with zipfile.ZipFile(os.path.join(folder, name), "w", zipfile.ZIP_DEFLATED) as out:
            for item in source.infolist():
                out.writestr(item.filename, part if item.filename == "word/document.xml" else source.read(item))

    head = b'<?xml version="1.0"?><w:document xmlns:w="http://schemas.openxmlformats.org/wordprocessingml/2006/main">'
    rezip("deep.docx", head + b"<w:body>" + b"<w:p>" * 100000 + b"</w:p>" * 100000 + b"</w:body></w:document>")
    body = b"<w:body><w:p><w:r><w:t>" + b"a" * (300 << 20) + b"</w:t></w:r></w:p></w:body></w:document>"
    rezip("bomb.docx", head + body)  # inflates past the engine's limit for a part
    with open(os.path.join(folder, "noise.docx"), "wb") as f:
        f.write(bytes((i * 7919) % 251 for i in range(4000)))
    with open(os.path.join(folder, "truncated.docx"), "wb") as f:
        f.write(valid[: len(valid) // 2])
    open(os.path.join(folder, "empty.docx"), "wb").close()
    return sorted(os.path.join(folder, n) for n in os.listdir(folder))


def runtime_setting(document):
    """The worker's profile-guided compilation setting, as its runtime read it at start."""
    return os.environ.get("DOTNET_TieredPGO")
