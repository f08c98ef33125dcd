"""Python callbacks driven by the engine itself: replacing, field merging, a Python data source
for mail merge (with a nested region), and a prompt respondent for ASK and FILLIN fields."""

import gc

import pytest

import quorix.folio as qf
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
