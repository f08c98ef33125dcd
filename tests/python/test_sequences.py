"""Arrays and sequences that cross whole: any Python iterable where the engine takes an array
(strings, numbers, objects, bound objects), fresh managed arrays and lists back as Python
lists with each item as its own type, params arrays from trailing arguments; failing items
named by index, and nothing leaked on any path."""

import ctypes
import datetime as dt
import decimal
import gc
import io
import json
import os
import sys

import pytest

qf = pytest.importorskip("quorix.folio")
from conftest import runtime_dir  # noqa: E402
from quorix.folio.fonts import FolderFontSource, FontSettings  # noqa: E402
from quorix.folio.lowcode import Splitter, SplitOptions  # noqa: E402
from quorix.folio.reporting import JsonDataSource, ReportingEngine  # noqa: E402
from quorix.folio.saving import PageRange, PageSet, PdfSaveOptions  # noqa: E402


def _counter(method):
    wrap = ctypes.CDLL(str(runtime_dir() / "libquorix.embed.coreclrwrap.so"), mode=os.RTLD_NOLOAD | os.RTLD_NOW)
    wrap.coreclr_wrap_create_delegate.argtypes = [ctypes.c_char_p] * 3 + [ctypes.POINTER(ctypes.c_void_p)]
    address = ctypes.c_void_p()
    assert wrap.coreclr_wrap_create_delegate(b"WrpInterop.Quorix.Folio", b"Quorix.WrpGen.Interop.ExchangeHost",
                                             method, ctypes.byref(address)) == 0
    return ctypes.PYFUNCTYPE(ctypes.c_int64)(address.value)


_allocated, _freed = _counter(b"AllocatedHandleCount"), _counter(b"FreedHandleCount")


def live_handles():
    gc.collect()
    return _allocated() - _freed()


def letter():
    doc = qf.Document()
    builder = qf.DocumentBuilder(doc)
    builder.write("Dear ")
    builder.insert_field("MERGEFIELD Name")
    builder.write(" of ")
    builder.insert_field("MERGEFIELD City")
    return doc


def pages(count):
    doc = qf.Document()
    builder = qf.DocumentBuilder(doc)
    for i in range(count):
        builder.writeln(f"page {i}")
        if i < count - 1:
            builder.insert_break(qf.BreakType.PAGE_BREAK)
    return doc


def pdf_pages(doc, page_set):
    options = PdfSaveOptions()
    options.page_set = page_set
    out = io.BytesIO()
    doc.save(out, options)
    data = out.getvalue()
    return data.count(b"/Type /Page") - data.count(b"/Type /Pages")


def failure(call, *args):
    """The messages of every overload's refusal, as the dispatcher reports them."""
    with pytest.raises(TypeError) as info:
        call(*args)
    return str(info.value)


class TestMailMergeNamesAndValues:
    @pytest.mark.parametrize("names,values", [
        (["Name", "City"], ["Ann", "Oslo"]),
        (("Name", "City"), ("Ann", "Oslo")),
        ((n for n in ("Name", "City")), iter(["Ann", "Oslo"])),
        ({"Name": 1, "City": 2}.keys(), ["Ann", "Oslo"]),
    ])
    def test_any_iterable_of_names_and_values_merges(self, names, values):
        doc = letter()
        doc.mail_merge.execute(names, values)
        assert doc.get_text().strip() == "Dear Ann of Oslo"

    def test_values_cross_as_their_own_managed_kinds(self):
        doc = letter()
        doc.mail_merge.execute(["Name", "City"], [decimal.Decimal("12.50"), 7])
        assert doc.get_text().strip() == "Dear 12.50 of 7"

    def test_field_names_come_back_as_a_list_of_str(self):
        doc = letter()
        names = doc.mail_merge.get_field_names()
        assert type(names) is list and names == ["Name", "City"]
        assert doc.mail_merge.get_field_names_for_region("absent") == []

    def test_a_wrong_item_is_named_by_its_index_and_keeps_its_converters_text(self):
        doc = letter()
        text = failure(doc.mail_merge.execute, ["Name", 3], ["a", "b"])
        assert "item 1: can't build String from 'int'" in text
        text = failure(doc.mail_merge.execute, ["Name", "City"], ["a", object()])
        assert "item 1: unknown variant type" in text
        assert doc.mail_merge.get_field_names() == ["Name", "City"]  # the refused calls merged nothing

    @pytest.mark.parametrize("names,kind", [("Name", "str"), (b"Name", "bytes"), ({"Name": 1}, "dict"), (5, "int"),
                                            (None, "None")])
    def test_text_mappings_scalars_and_none_are_no_arrays_of_names(self, names, kind):
        assert f"can't build String[] from '{kind}'" in failure(letter().mail_merge.execute, names, ["a"])

    def test_nothing_is_leaked_when_an_item_fails_midway(self):
        doc = letter()
        name, value = "Name" + "x" * 50, "v" * 60
        before = (live_handles(), sys.getrefcount(name), sys.getrefcount(value))
        for _ in range(200):
            failure(doc.mail_merge.execute, [name, name, 1], [value, value])
            doc.mail_merge.execute([name], [value])
            doc.mail_merge.get_field_names()
        assert (live_handles(), sys.getrefcount(name), sys.getrefcount(value)) == before


class TestPageSets:
    def test_params_arrays_take_trailing_arguments_or_one_sequence(self):
        doc = pages(4)
        assert pdf_pages(doc, PageSet(0, 2)) == 2
        assert pdf_pages(doc, PageSet([0, 2, 3])) == 3
        assert pdf_pages(doc, PageSet(range(2))) == 2
        assert pdf_pages(doc, PageSet(1)) == 1
        assert pdf_pages(doc, PageSet(PageRange(0, 1), PageRange(3, 3))) == 3
        assert pdf_pages(doc, PageSet([PageRange(2, 3)])) == 2

    def test_a_wrong_item_fails_every_array_overload_by_its_converter(self):
        text = failure(PageSet, 0, "x")
        assert "item 1: integer argument expected, got 'str'" in text
        assert "item 0: can't build PageRange value from 'int'" in text

    def test_bound_items_are_borrowed_not_leaked(self):
        ranges = [PageRange(0, 0), PageRange(1, 1)]
        before = (live_handles(), sys.getrefcount(ranges[0]))
        for _ in range(200):
            PageSet(ranges)
            failure(PageSet, ranges[0], 5)
        assert (live_handles(), sys.getrefcount(ranges[0])) == before


class TestFonts:
    def test_string_arrays_round_trip_through_the_settings(self):
        settings = FontSettings()
        fallback = settings.fallback_settings
        fallback.set_fallback_font_names(("Carlito", "DejaVu Sans"))
        assert fallback.get_fallback_font_names() == ["Carlito", "DejaVu Sans"]
        fallback.set_fallback_font_names("A", "B")
        assert fallback.get_fallback_font_names() == ["A", "B"]

    def test_enumerable_results_are_lists(self):
        table = FontSettings().substitution_settings.table_substitution
        table.set_substitutes("Calibri", ["A", "B"])
        table.add_substitutes("Calibri", "C", "D")
        assert table.get_substitutes("Calibri") == ["A", "B", "C", "D"]
        assert table.get_substitutes("no such font") == []

    def test_sources_from_a_python_list_come_back_as_their_classes(self, tmp_path):
        settings = FontSettings()
        settings.set_fonts_sources([FolderFontSource(str(tmp_path), False, 0)])
        (source,) = settings.get_fonts_sources()
        assert type(source) is FolderFontSource and source.folder_path == str(tmp_path)
        settings.set_fonts_folders([str(tmp_path)], True)
        assert [s.folder_path for s in settings.get_fonts_sources()] == [str(tmp_path)]


class TestSplitting:
    @staticmethod
    def three_sections():
        doc = qf.Document()
        builder = qf.DocumentBuilder(doc)
        for i in range(3):
            builder.writeln(f"Section {i}")
            if i < 2:
                builder.insert_break(qf.BreakType.SECTION_BREAK_NEW_PAGE)
        return doc

    def test_parts_are_a_list_of_documents(self):
        parts = Splitter.parts(self.three_sections(), SplitOptions())
        assert type(parts) is list and [type(p) for p in parts] == [qf.Document] * 3
        assert [p.get_text().strip() for p in parts] == ["Section 0", "Section 1", "Section 2"]

    def test_split_streams_are_python_files_holding_each_part(self):
        source = io.BytesIO()
        self.three_sections().save(source, qf.SaveFormat.DOCX)
        source.seek(0)
        before = live_handles()
        streams = Splitter.split(source, qf.SaveFormat.DOCX, SplitOptions())
        assert type(streams) is list and len(streams) == 3
        texts = [qf.Document(io.BytesIO(s.read())).get_text().strip() for s in streams]
        assert texts == ["Section 0", "Section 1", "Section 2"]
        del streams
        assert live_handles() == before


class TestObjectArrays:
    def test_report_data_sources_and_names_from_lists(self, tmp_path):
        (tmp_path / "a.json").write_text(json.dumps({"name": "Ann"}))
        (tmp_path / "b.json").write_text(json.dumps({"city": "Oslo"}))
        doc = qf.Document()
        qf.DocumentBuilder(doc).write("[[p.name]] in [[q.city]]")
        sources = [JsonDataSource(str(tmp_path / "a.json")), JsonDataSource(str(tmp_path / "b.json"))]
        ReportingEngine().build_report(doc, sources, ["p", "q"])
        assert doc.get_text().strip() == "Ann in Oslo"

    def test_object_values_holding_a_list_come_back_as_a_list(self):
        doc = qf.Document()
        prop = doc.custom_document_properties.add("Tags", ["a", "b"])
        assert type(prop.value) is list and prop.value == ["a", "b"]

    def test_dates_and_decimals_inside_object_arrays_keep_their_types(self):
        doc = letter()
        when = dt.datetime(2026, 1, 31, 9, 30)
        doc.mail_merge.execute(["Name", "City"], [when, decimal.Decimal("1.5")])
        assert "2026" in doc.get_text() and "1.5" in doc.get_text()


class TestDocumentVariables:
    """A dictionary the document keeps is a live mapping: what Python sets, fields read."""

    def test_reads_and_writes_reach_the_document(self):
        doc = qf.Document()
        variables = doc.field_options.document_variables
        variables["Client"] = "Acme"
        variables["Empty"] = None
        field = qf.DocumentBuilder(doc).insert_field("DOCVARIABLE Client")
        doc.update_fields()
        assert field.result == "Acme"
        # the same dictionary through a second wrapper, keys as the engine compares them
        again = doc.field_options.document_variables
        assert (len(again), again["CLIENT"], "client" in again, again.get("Empty", "x")) == (2, "Acme", True, None)
        assert (list(again), again.items(), dict(again)) == (["Client", "Empty"], [("Client", "Acme"), ("Empty", None)],
                                                             {"Client": "Acme", "Empty": None})
        del again["client"]
        again.clear()
        assert len(variables) == 0 and variables.get("Client") is None

    def test_missing_keys_and_wrong_types_are_refused_like_a_dict(self):
        variables = qf.Document().field_options.document_variables
        with pytest.raises(KeyError):
            variables["absent"]
        with pytest.raises(KeyError):
            del variables["absent"]
        with pytest.raises(TypeError, match="keys are str, not 'int'"):
            variables[1] = "x"
        with pytest.raises(TypeError, match="values are str or None, not 'int'"):
            variables["a"] = 1
        assert 1 not in variables and len(variables) == 0

    def test_a_wrapper_made_by_new_alone_refuses_use(self):
        wrapper_type = type(qf.Document().field_options.document_variables)
        orphan = wrapper_type.__new__(wrapper_type)
        with pytest.raises(TypeError):
            len(orphan)


class TestItemsOfEnumerationsAndStrings:
    def test_a_fields_general_formats_index_and_iterate_as_enumeration_members(self):
        builder = qf.DocumentBuilder(qf.Document())
        formats = builder.insert_field("MERGEFIELD x \\* Upper \\* MERGEFORMAT").format.general_formats
        GeneralFormat = qf.fields.GeneralFormat
        assert list(formats) == [GeneralFormat.UPPER, GeneralFormat.MERGE_FORMAT]
        assert type(formats[-1]) is GeneralFormat and formats[:1] == [GeneralFormat.UPPER]
        formats.add(GeneralFormat.LOWER)
        assert GeneralFormat.LOWER in formats and len(formats) == 3
        with pytest.raises(IndexError):
            formats[3]

    def test_mapped_data_fields_read_by_name_as_str(self):
        mapped = qf.Document().mail_merge.mapped_data_fields
        mapped.add("Name", "FullName")
        assert (mapped["Name"], mapped["NAME"], len(mapped)) == ("FullName", "FullName", 1)


class TestArraysBackThroughTheListCallbacks:
    """Managed values a Python list receives through the list callbacks: arrays and lists
    among them arrive as Python lists of their items, not as opaque wrappers."""

    def test_a_list_value_stored_by_managed_code_is_a_python_list(self):
        from binding_support import load_bindtest
        sequences = load_bindtest().Sequences
        items = [0, 0]
        sequences.put(items, 0, [1, "a", [2.5]])
        sequences.append(items, (decimal.Decimal("1"), None))
        assert items == [[1, "a", [2.5]], 0, [decimal.Decimal("1"), None]]
        assert type(items[2]) is list
