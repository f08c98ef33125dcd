"""Python callbacks driven by the engine itself: warnings at load and save, node changes,
save progress and cancelling, replacing, field merging, a Python data source for mail merge
(with a nested region), a prompt respondent for ASK and FILLIN fields, and pictures a save
writes into Python streams."""

import gc
import io
import os
import struct
import zipfile
import zlib

import pytest

import quorix.folio as qf
from quorix.folio import INodeChangingCallback, IWarningCallback, NodeChangingAction, WarningSource, WarningType
from quorix.folio.loading import HtmlLoadOptions, LoadOptions
from quorix.folio.saving import (IDocumentSavingCallback, IImageSavingCallback, IResourceSavingCallback,
                                 MarkdownSaveOptions, OoxmlSaveOptions)
from quorix.folio.fields import IFieldUserPromptRespondent
from quorix.folio.mailmerging import IFieldMergingCallback, IMailMergeDataSource
from quorix.folio.replacing import FindReplaceOptions, IReplacingCallback, ReplaceAction


def document(*lines):
    doc = qf.Document()
    builder = qf.DocumentBuilder(doc)
    for line in lines:
        builder.writeln(line)
    return doc, builder


class Decide(IReplacingCallback):
    """Replaces the first match in upper case, skips the second, stops at the third."""

    def __init__(self):
        self.offsets = []

    def replacing(self, args):
        self.offsets.append(args.match_offset)
        if len(self.offsets) == 1:
            args.replacement = args.replacement.upper()
            return ReplaceAction.REPLACE
        return ReplaceAction.SKIP if len(self.offsets) == 2 else ReplaceAction.STOP


class TestReplacing:
    def test_each_match_is_decided_by_python(self):
        doc, _ = document("cat cat cat cat")
        decide = Decide()
        options = FindReplaceOptions()
        options.replacing_callback = decide
        assert options.replacing_callback is decide
        assert doc.range.replace("cat", "dog", options) == 1
        assert doc.get_text().strip() == "DOG cat cat cat"
        assert decide.offsets == [0, 4, 8]

    def test_the_callback_given_to_the_constructor_is_called(self):
        doc, _ = document("a-b")
        calls = []

        class Count(IReplacingCallback):
            def replacing(self, args):
                calls.append(args.match_node.get_text().strip())
                return ReplaceAction.REPLACE

        assert doc.range.replace("-", "+", FindReplaceOptions(Count())) == 1
        assert calls == ["a-b"] and doc.get_text().strip() == "a+b"

    def test_an_exception_in_the_callback_ends_the_replace_with_its_text(self):
        doc, _ = document("one two")

        class Refuse(IReplacingCallback):
            def replacing(self, args):
                raise LookupError("no replacing " + args.match_node.get_text().strip())

        with pytest.raises(RuntimeError) as info:
            doc.range.replace("one", "1", FindReplaceOptions(Refuse()))
        assert str(info.value).startswith("Proxy error(Quorix.WrpGen.Interop.PythonException): Traceback")
        assert str(info.value).rstrip().endswith("LookupError: no replacing one two")
        assert doc.get_text().strip() == "one two"

    def test_a_callback_dropped_by_python_still_serves_the_options(self):
        doc, _ = document("x y x")
        options = FindReplaceOptions()
        options.replacing_callback = Decide()
        gc.collect()
        assert doc.range.replace("x", "z", options) == 1
        assert type(options.replacing_callback) is Decide


class Records(IMailMergeDataSource):
    def __init__(self, name, rows, children=None):
        self._name, self.rows, self.children, self.index = name, rows, children or {}, -1

    @property
    def table_name(self):
        return self._name

    def move_next(self):
        self.index += 1
        return self.index < len(self.rows)

    def get_value(self, field_name, field_value):
        row = self.rows[self.index]
        if field_name not in row:
            return False
        field_value[0] = row[field_name]
        return True

    def get_child_data_source(self, table_name):
        rows = self.children.get(table_name)
        return None if rows is None else Records(table_name, rows[self.index])


class TestMailMerge:
    def test_a_python_data_source_makes_one_copy_per_record(self):
        doc = qf.Document()
        builder = qf.DocumentBuilder(doc)
        builder.insert_field("MERGEFIELD name")
        builder.write(" ")
        builder.insert_field('MERGEFIELD total \\# "0.00"')
        doc.mail_merge.execute(Records("", [{"name": "Ann", "total": 1.5}, {"name": "Bo", "total": 2}]))
        assert doc.get_text().split("\x0c")[:2] == ["Ann 1.50", "Bo 2.00"]

    def test_regions_and_nested_regions_come_from_python(self):
        doc = qf.Document()
        builder = qf.DocumentBuilder(doc)
        builder.insert_field("MERGEFIELD TableStart:orders")
        builder.insert_field("MERGEFIELD id")
        builder.write(":")
        builder.insert_field("MERGEFIELD TableStart:lines")
        builder.insert_field("MERGEFIELD item")
        builder.write(",")
        builder.insert_field("MERGEFIELD TableEnd:lines")
        builder.insert_field("MERGEFIELD TableEnd:orders")
        builder.writeln()
        source = Records("orders", [{"id": 7}, {"id": 8}], {"lines": [[{"item": "a"}, {"item": "b"}], [{"item": "c"}]]})
        doc.mail_merge.execute_with_regions(source)
        assert doc.get_text().strip() == "7:a,b,8:c,"

    def test_field_merging_callback_changes_the_text(self):
        doc = qf.Document()
        builder = qf.DocumentBuilder(doc)
        builder.insert_field("MERGEFIELD name")
        seen = []

        class Shout(IFieldMergingCallback):
            def field_merging(self, args):
                seen.append((args.field_name, args.field_value, args.record_index))
                args.text = str(args.field_value).upper() + "!"

            def image_field_merging(self, args):
                raise AssertionError("no image fields here")

        doc.mail_merge.field_merging_callback = Shout()
        doc.mail_merge.execute(Records("", [{"name": "ann"}]))
        assert doc.get_text().strip() == "ANN!"
        assert seen == [("name", "ann", 0)]

    def test_a_failing_data_source_reports_its_own_error(self):
        class Broken(Records):
            def get_value(self, field_name, field_value):
                raise KeyError(field_name)

        doc = qf.Document()
        qf.DocumentBuilder(doc).insert_field("MERGEFIELD name")
        with pytest.raises(RuntimeError) as info:
            doc.mail_merge.execute(Broken("", [{}]))
        assert str(info.value).rstrip().endswith("KeyError: 'name'")


class TestPrompts:
    def test_ask_and_fillin_fields_ask_python(self):
        prompts = []

        class Answer(IFieldUserPromptRespondent):
            def respond(self, prompt_text, default_response):
                prompts.append((prompt_text, default_response))
                return "answer " + str(len(prompts))

        doc = qf.Document()
        builder = qf.DocumentBuilder(doc)
        doc.field_options.user_prompt_respondent = Answer()
        field = builder.insert_field('FILLIN "Your name?" \\d "nobody"')
        doc.update_fields()
        assert prompts == [("Your name?", "nobody")]
        assert field.result == "answer 1"


def expect_error(call, *args):
    with pytest.raises(RuntimeError) as info:
        call(*args)
    return str(info.value)


class Collect(IWarningCallback):
    def __init__(self):
        self.infos = []

    def warning(self, info):
        self.infos.append(info)

    def kinds(self):
        return [(w.warning_type, w.source) for w in self.infos]


def with_unsafe_entries():
    """A DOCX with one entry the engine renames to be safe and one it must leave out."""
    doc = qf.Document()
    qf.DocumentBuilder(doc).write("text")
    plain = io.BytesIO()
    doc.save(plain, qf.SaveFormat.DOCX)
    out = io.BytesIO()
    with zipfile.ZipFile(io.BytesIO(plain.getvalue())) as src, zipfile.ZipFile(out, "w") as dst:
        for item in src.infolist():
            dst.writestr(item, src.read(item))
        for name in ("word\\media\\x.bin", "../../evil.bin"):
            dst.writestr(name, b"\x01\x02\x03")
    return out.getvalue()


class TestWarnings:
    def test_content_dropped_at_load_reaches_the_load_options_callback_in_order(self):
        seen = Collect()
        options = HtmlLoadOptions()
        options.warning_callback = seen
        html = b"<p>a<iframe src='x'></iframe><math><mi>x</mi></math>b</p>"
        doc = qf.Document(io.BytesIO(html), options)
        assert seen.kinds() == [(WarningType.DATA_LOSS, WarningSource.HTML)] * 2
        assert "<iframe>" in seen.infos[0].description and "<math>" in seen.infos[1].description
        assert type(seen.infos[0]) is qf.WarningInfo
        assert doc.warning_callback is None

    def test_saving_warnings_reach_the_documents_callback_not_the_loads(self):
        at_load, at_save = Collect(), Collect()
        options = LoadOptions()
        options.warning_callback = at_load
        doc = qf.Document(io.BytesIO(with_unsafe_entries()), options)
        doc.warning_callback = at_save
        assert doc.warning_callback is at_save
        doc.save(io.BytesIO(), qf.SaveFormat.DOCX)
        assert at_load.infos == []
        assert sorted(at_save.kinds()) == [(WarningType.DATA_LOSS, WarningSource.DOCX),
                                           (WarningType.UNEXPECTED_CONTENT, WarningSource.DOCX)]
        assert any(w.description.endswith("was left out.") for w in at_save.infos)

    def test_font_substitution_during_pdf_save_arrives_as_its_own_class(self):
        doc = qf.Document()
        builder = qf.DocumentBuilder(doc)
        builder.font.name = "No Such Family 4242"
        builder.writeln("plain")
        builder.font.bold = True
        builder.writeln("bold")
        seen = Collect()
        doc.warning_callback = seen
        doc.save(io.BytesIO(), qf.SaveFormat.PDF)
        subs = [w for w in seen.infos if type(w) is qf.FontSubstitutionWarningInfo]
        assert sorted(w.requested_bold for w in subs if w.requested_family == "No Such Family 4242") == [False, True]
        for w in subs:
            assert w.warning_type == WarningType.FONT_SUBSTITUTION and w.source == WarningSource.LAYOUT
            assert w.resolved_family and w.resolved_family != w.requested_family
            assert w.resolved_family in w.description
            assert w.warning_type & WarningType.MINOR_FORMATTING_LOSS_CATEGORY

    def test_an_exception_in_the_callback_ends_the_load_or_save_and_keeps_the_file(self, tmp_path):
        class Stop(IWarningCallback):
            def warning(self, info):
                raise InterruptedError("stop at " + info.warning_type.name)

        options = HtmlLoadOptions()
        options.warning_callback = Stop()
        text = expect_error(qf.Document, io.BytesIO(b"<p>a<iframe></iframe></p>"), options)
        assert text.rstrip().endswith("InterruptedError: stop at DATA_LOSS")

        doc = qf.Document(io.BytesIO(with_unsafe_entries()))
        doc.warning_callback = Stop()
        target = tmp_path / "out.docx"
        target.write_bytes(b"before")
        assert "InterruptedError: stop at" in expect_error(doc.save, str(target))
        assert target.read_bytes() == b"before" and os.listdir(tmp_path) == ["out.docx"]


class Changes(INodeChangingCallback):
    """Records each change with the node and its parents as the callback sees them."""

    def __init__(self):
        self.log = []

    def _note(self, moment, args):
        self.log.append((moment, args.action, args.node, args.old_parent, args.new_parent, args.node.parent_node))

    def node_inserting(self, args):
        self._note("inserting", args)

    def node_inserted(self, args):
        self._note("inserted", args)

    def node_removing(self, args):
        self._note("removing", args)

    def node_removed(self, args):
        self._note("removed", args)


class TestNodeChanging:
    def test_insert_and_remove_are_told_before_and_after_with_their_nodes(self):
        doc = qf.Document()
        body = doc.first_section.body
        changes = Changes()
        doc.node_changing_callback = changes
        para = qf.Paragraph(doc)
        body.append_child(para)
        para.remove()
        insert, remove = NodeChangingAction.INSERT, NodeChangingAction.REMOVE
        assert [(m, a) for m, a, *_ in changes.log] == [("inserting", insert), ("inserted", insert),
                                                        ("removing", remove), ("removed", remove)]
        for moment, _, node, old, new, parent_then in changes.log:
            assert type(node) is qf.Paragraph and node == para
        (_, _, _, old1, new1, p1), (_, _, _, old2, new2, p2), (_, _, _, old3, new3, p3), (_, _, _, old4, new4, p4) = changes.log
        assert old1 is None and new1 == body and p1 is None      # not in its parent yet
        assert old2 is None and new2 == body and p2 == body
        assert old3 == body and new3 is None and p3 == body      # still in its parent
        assert old4 == body and new4 is None and p4 is None
        assert type(new1) is qf.Body

    def test_an_exception_before_an_insert_cancels_it_and_reaches_the_caller(self):
        doc = qf.Document()
        body = doc.first_section.body
        count = len(body.paragraphs)

        class Veto(Changes):
            def node_inserting(self, args):
                raise PermissionError("no " + type(args.node).__name__)

        doc.node_changing_callback = Veto()
        assert expect_error(body.append_child, qf.Paragraph(doc)).rstrip().endswith("PermissionError: no Paragraph")
        assert len(body.paragraphs) == count

    def test_a_missing_override_names_the_method_the_engine_called(self):
        class OnlyAfter(INodeChangingCallback):
            def node_inserted(self, args):
                pass

        doc = qf.Document()
        doc.node_changing_callback = OnlyAfter()
        text = expect_error(qf.DocumentBuilder(doc).writeln, "x")
        assert text.rstrip().endswith("NotImplementedError: 'node_inserting' abstract method should be implemented in subclasses")


class SaveCancelled(Exception):
    pass


class Progress(IDocumentSavingCallback):
    def __init__(self, cancel_at=None):
        self.seen, self.cancel_at = [], cancel_at

    def notify(self, args):
        self.seen.append(args.estimated_progress)
        if self.cancel_at is not None and args.estimated_progress >= self.cancel_at:
            raise SaveCancelled("cancelled at %g" % args.estimated_progress)


def long_document(paragraphs=300):
    doc = qf.Document()
    builder = qf.DocumentBuilder(doc)
    for i in range(paragraphs):
        builder.writeln(f"Paragraph {i} with some words to make the part larger than a slice of input.")
    return doc


class TestSavingProgress:
    @pytest.mark.parametrize("options, at_least", [(OoxmlSaveOptions(), 10), (MarkdownSaveOptions(), 2)])
    def test_progress_rises_from_start_to_end(self, options, at_least):
        progress = Progress()
        options.progress_callback = progress
        long_document().save(io.BytesIO(), options)
        seen = progress.seen
        assert seen[0] == 0 and seen[-1] == 100 and len(seen) >= at_least
        assert all(b > a for a, b in zip(seen, seen[1:]))
        assert all(isinstance(p, float) for p in seen)

    def test_cancelling_from_python_stops_the_save_and_leaves_no_partial_output(self, tmp_path):
        doc = long_document()
        text = doc.get_text()
        target = tmp_path / "out.docx"
        target.write_bytes(b"before")
        progress = Progress(cancel_at=30)
        options = OoxmlSaveOptions()
        options.progress_callback = progress
        message = expect_error(doc.save, str(target), options)
        assert message.rstrip().endswith("SaveCancelled: cancelled at %g" % progress.seen[-1])
        assert 30 <= progress.seen[-1] < 100
        assert target.read_bytes() == b"before" and os.listdir(tmp_path) == ["out.docx"]
        assert doc.get_text() == text
        # the same options save once the callback lets them
        progress.cancel_at = None
        doc.save(str(target), options)
        assert qf.Document(str(target)).get_text() == text


def png(red=255):
    """A one-pixel PNG."""
    def chunk(kind, data):
        return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))
    header = struct.pack(">IIBBBBB", 1, 1, 8, 2, 0, 0, 0)
    return (b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", header) + chunk(b"IDAT", zlib.compress(bytes([0, red, 0, 0])))
            + chunk(b"IEND", b""))


def with_pictures(*reds):
    doc = qf.Document()
    builder = qf.DocumentBuilder(doc)
    for red in reds:
        builder.insert_image(png(red))
        builder.writeln()
    return doc


class Recording(io.BytesIO):
    """Keeps what it held when closed, as a file on disk would."""

    def close(self):
        if not self.closed:
            self.kept = self.getvalue()
        super().close()


class TestPicturesIntoPythonStreams:
    def test_a_stream_a_callback_assigns_receives_the_picture_and_stays_open_when_asked(self):
        class Take(IImageSavingCallback):
            def __init__(self):
                self.streams = []

            def image_saving(self, args):
                stream = io.BytesIO()
                args.image_stream = stream
                args.keep_image_stream_open = True
                args.image_file_name = "pic%d.png" % len(self.streams)
                self.streams.append(stream)

        take = Take()
        options = MarkdownSaveOptions()
        options.image_saving_callback = take
        out = io.BytesIO()
        with_pictures(10, 20).save(out, options)
        assert [s.closed for s in take.streams] == [False, False]
        assert [s.getvalue() for s in take.streams] == [png(10), png(20)]
        assert "pic0.png" in out.getvalue().decode() and "pic1.png" in out.getvalue().decode()

    def test_the_engine_closes_the_stream_unless_told_to_keep_it_open(self):
        class Take(IImageSavingCallback):
            def image_saving(self, args):
                self.stream = args.image_stream = Recording()

        take = Take()
        options = MarkdownSaveOptions()
        options.image_saving_callback = take
        with_pictures(30).save(io.BytesIO(), options)
        assert take.stream.closed and take.stream.kept == png(30)

    def test_a_file_a_resource_callback_opens_is_written_and_closed(self, tmp_path):
        class ToFiles(IResourceSavingCallback):
            def __init__(self):
                self.files = []

            def resource_saving(self, args):
                f = open(tmp_path / args.resource_file_name, "wb")
                self.files.append(f)
                args.resource_stream = f
                args.resource_file_uri = "https://example.invalid/" + args.resource_file_name

        to_files = ToFiles()
        options = MarkdownSaveOptions()
        options.resource_saving_callback = to_files
        out = io.BytesIO()
        with_pictures(40).save(out, options)
        (f,) = to_files.files
        assert f.closed
        assert (tmp_path / os.path.basename(f.name)).read_bytes() == png(40)
        assert "https://example.invalid/" in out.getvalue().decode()

    def test_a_stream_the_callback_dropped_lives_until_the_engine_wrote_it(self):
        written = []

        class Noting(io.BytesIO):
            def close(self):
                written.append(self.getvalue())
                super().close()

        class Take(IImageSavingCallback):
            def image_saving(self, args):
                args.image_stream = Noting()  # Python keeps no reference of its own
                gc.collect()

        options = MarkdownSaveOptions()
        options.image_saving_callback = Take()
        with_pictures(50).save(io.BytesIO(), options)
        gc.collect()
        assert written == [png(50)]
