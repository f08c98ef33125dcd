"""Reading a document the Python way: results typed as their most derived class, collection
classes as sequences (length, indices, slices, keys, iteration), the generic array and list
wrappers with their rules and messages, the casting block, and the lifetime of what
iteration and slicing create."""

import gc
import re

import pytest

from conftest import ASSEMBLY_ROOT, BUILD, link_tree, run_python

qf = pytest.importorskip("quorix.folio")


def build_report(path):
    doc = qf.Document()
    b = qf.DocumentBuilder(doc)
    b.paragraph_format.style_identifier = qf.StyleIdentifier.HEADING_1
    b.writeln("Report")
    b.paragraph_format.style_identifier = qf.StyleIdentifier.NORMAL
    b.start_bookmark("intro")
    b.write("Introduction text")
    b.end_bookmark("intro")
    b.writeln("")
    b.writeln("Second paragraph")
    b.start_table()
    b.insert_cell()
    b.write("a")
    b.insert_cell()
    b.write("b")
    b.end_row()
    b.end_table()
    comment = qf.Comment(doc)
    comment.author = "Ann"
    comment.set_text("check this")
    doc.first_section.body.first_paragraph.append_child(comment)
    b.insert_break(qf.BreakType.SECTION_BREAK_NEW_PAGE)
    b.writeln("Second section")
    doc.save(str(path))


@pytest.fixture(scope="module")
def report(tmp_path_factory):
    path = tmp_path_factory.mktemp("docs") / "report.docx"
    build_report(path)
    return path


@pytest.fixture
def doc(report):
    return qf.Document(str(report))


def texts(nodes):
    return [n.get_text().strip() for n in nodes]


def test_the_walk_a_new_user_tries_runs_as_written(report):
    doc = qf.Document(str(report))
    assert len(doc.sections) == 2
    assert isinstance(doc.sections[0], qf.Section) and doc.sections[-1] == doc.sections[1]
    assert doc.sections[0:2] == [doc.sections[0], doc.sections[1]] and type(doc.sections[0:2]) is list
    assert [p.get_text().strip() for p in doc.first_section.body.paragraphs][:3] == [
        "Report", "Introduction text", "Second paragraph"]
    names = [type(n).__name__ for n in doc.get_child_nodes(qf.NodeType.ANY, True)]
    assert names[:5] == ["Section", "Body", "Paragraph", "Run", "Comment"]
    assert {"Table", "Row", "Cell", "BookmarkStart", "BookmarkEnd"} <= set(names)
    assert doc.get_child(qf.NodeType.COMMENT, 0, True).author == "Ann"
    assert doc.range.bookmarks["intro"].text == "Introduction text"
    assert doc.styles["Heading 1"].font.size == 16.0
    node = doc.get_child(qf.NodeType.PARAGRAPH, 0, True)
    assert qf.Paragraph._is_assignable(node) is True
    assert qf.Paragraph._cast_to(node).value == node
    assert qf.tables.Table._type_of().full_name == "Quorix.Folio.Tables.Table"
    assert qf.SaveFormat._qrxsc2p_asserttp() is Ellipsis
    with pytest.raises(ValueError, match="^custom sorting key is not supported$"):
        doc.first_section.body.paragraphs.to_array().sort(key=len)


class TestTypedResults:
    def test_results_take_the_class_of_the_object_not_of_the_signature(self, doc):
        assert type(doc.first_child) is qf.Section  # declared as Node
        assert type(doc.first_section.body.first_child) is qf.Paragraph
        assert type(doc.get_child(qf.NodeType.TABLE, 0, True)) is qf.tables.Table
        assert type(doc.get_child(qf.NodeType.CELL, 0, True).parent_node) is qf.tables.Row
        assert doc.first_child.last_child.get_ancestor(qf.NodeType.SECTION) is not None

    def test_equality_and_hashing_ignore_the_wrapper_type(self, doc):
        as_node = doc.get_child(qf.NodeType.SECTION, 0, True)
        assert as_node == doc.sections[0] and hash(as_node) == hash(doc.sections[0])
        assert as_node != doc.sections[1]

    def test_a_result_of_a_leaf_type_keeps_its_class(self, doc):
        assert type(qf.DocumentBuilder(doc).font) is qf.Font


class TestCollectionClasses:
    def test_length_indices_and_negative_indices(self, doc):
        paras = doc.first_section.body.paragraphs
        n = len(paras)
        assert n == paras.count and n >= 4
        assert paras[n - 1] == paras[-1] and paras[0] == paras[-n]
        for bad in (n, -n - 1):
            with pytest.raises(IndexError, match="^list index out of range$"):
                paras[bad]
        with pytest.raises(OverflowError, match=re.escape("the index (2147483648) is out of the INT32 range")):
            paras[2**31]

    def test_slices_are_python_lists_of_typed_items(self, doc):
        paras = doc.first_section.body.paragraphs
        items = list(paras)
        assert texts(paras[1:3]) == texts(items[1:3])
        assert texts(paras[::-1]) == texts(items[::-1])
        assert texts(paras[::2]) == texts(items[::2])
        assert paras[3:1] == [] and paras[100:] == []
        assert all(type(p) is qf.Paragraph for p in paras[:])

    def test_keys_go_to_the_indexer_of_their_type(self, doc):
        styles = doc.styles
        assert styles["Heading 1"] == styles[qf.StyleIdentifier.HEADING_1]
        assert styles["no such style"] is None
        assert doc.range.bookmarks[0].name == "intro" and doc.range.bookmarks["INTRO"].name == "intro"
        with pytest.raises(TypeError, match="^list indices must be integers or slices, not str$"):
            doc.sections["x"]
        with pytest.raises(TypeError, match="^list indices must be integers or slices, not float$"):
            styles[1.5]

    def test_iteration_yields_the_element_class_through_a_managed_enumerator(self, doc):
        body = doc.first_section.body
        it = iter(body.paragraphs)
        assert type(it).__name__.startswith("_IterWrapper_") and iter(it) is it
        assert all(type(p) is qf.Paragraph for p in it)
        with pytest.raises(StopIteration):
            next(it)  # an exhausted enumerator stays exhausted
        assert [type(c).__name__ for c in body][:2] == ["Paragraph", "Paragraph"]  # a composite node iterates its children
        assert [type(t).__name__ for t in doc.first_section.body.tables] == ["Table"]

    def test_membership_uses_managed_equality(self, doc):
        paras = doc.first_section.body.paragraphs
        assert paras[1] in paras and doc.sections[0] not in paras and 1 not in paras


class TestStoringIndexers:
    """Indexers with setters take item assignment; deletion goes to the class's own RemoveAt or Remove."""

    @pytest.fixture(scope="class")
    def bt(self):
        from binding_support import load_bindtest

        return load_bindtest()

    def test_positions_store_delete_and_keep_the_sequence_rules(self, bt):
        shelf = bt.Shelf("a,b,c")
        shelf[0] = bt.Node("A")
        shelf[-1] = bt.Node("C")
        assert [n.name for n in shelf[:]] == ["A", "b", "C"]
        shelf[1:3] = [bt.Node("B"), bt.Node("Z")]
        assert [n.name for n in shelf[:]] == ["A", "B", "Z"]
        with pytest.raises(ValueError, match="^attempt to assign sequence of size 1 to extended slice of size 2$"):
            shelf[0:2] = [bt.Node()]
        with pytest.raises(IndexError, match="^list index out of range$"):
            shelf[3] = bt.Node()
        with pytest.raises(TypeError, match="^can't build Node value from 'int'$"):
            shelf[0] = 5
        with pytest.raises(RuntimeError, match="ArgumentNullException"):
            shelf[0] = None
        del shelf[-3]
        assert len(shelf) == 2 and shelf[0].name == "B"
        with pytest.raises(IndexError, match="^list index out of range$"):
            del shelf[2]
        with pytest.raises(ValueError, match="^elements removing not supported$"):
            del shelf[0:1]
        with pytest.raises(OverflowError, match=r"^the index \(2147483648\) is out of the INT32 range$"):
            shelf[2**31] = bt.Node()
        assert len(shelf) == 2

    def test_names_store_and_delete_through_the_string_indexer(self, bt):
        shelf = bt.Shelf("")
        shelf["b"] = "2"
        shelf["a"] = "1"
        shelf["a"] = "one"
        assert shelf["a"] == "one" and shelf.labels == "a=one,b=2"
        del shelf["b"]
        assert shelf.labels == "a=one"
        with pytest.raises(RuntimeError, match="no label 'b'"):
            del shelf["b"]
        with pytest.raises(TypeError):
            shelf["c"] = 3
        assert shelf.labels == "a=one"

    def test_a_class_that_cannot_remove_refuses_deletion(self, bt):
        board = bt.Board()
        board["x"] = bt.Node("abc")
        assert len(board) == 1 and board["x"].name == "x=3"
        with pytest.raises(TypeError, match="^'qrx_bindtest.Board' object doesn't support item deletion$"):
            del board["x"]
        with pytest.raises(TypeError, match="^list indices must be integers or slices, not int$"):
            board[0] = bt.Node()
        assert len(board) == 1

    def test_mapped_data_fields_take_assignment_and_deletion(self):
        fields = qf.Document().mail_merge.mapped_data_fields
        fields["Name"] = "FullName"
        fields["name"] = "GivenName"  # the engine compares field names without case
        assert len(fields) == 1 and fields["NAME"] == "GivenName"
        del fields["Name"]
        assert len(fields) == 0 and not fields.contains_key("Name")


class TestEnumerationsOfValues:
    """Collections of enumeration members, managed types and string pairs iterate through their
    managed enumerator and yield Python values of their own."""

    def test_general_formats_yield_enumeration_members(self):
        from quorix.folio.fields import GeneralFormat

        field = qf.DocumentBuilder(qf.Document()).insert_field("MERGEFIELD name \\* Upper \\* MERGEFORMAT")
        formats = field.format.general_formats
        it = iter(formats)
        assert type(it).__name__.startswith("_IterWrapper_")
        items = list(it)
        assert items == [GeneralFormat.UPPER, GeneralFormat.MERGE_FORMAT]
        assert all(type(f) is GeneralFormat for f in items) and list(formats.get_enumerator()) == items
        formats.remove(GeneralFormat.UPPER)
        assert list(formats) == [GeneralFormat.MERGE_FORMAT]

    def test_mapped_fields_yield_pairs_as_dict_items_do(self):
        fields = qf.Document().mail_merge.mapped_data_fields
        fields.add("Name", "FullName")
        fields["City"] = "Town"
        assert sorted(fields) == [("City", "Town"), ("Name", "FullName")]
        assert dict(fields) == {"Name": "FullName", "City": "Town"}
        assert all(type(p) is tuple for p in fields.get_enumerator())
        fields.clear()
        assert list(fields) == []

    def test_known_types_take_classes_and_yield_managed_types(self):
        pi = pytest.importorskip("quorix.pyintro")
        from quorix.folio.reporting import ReportingEngine

        known = ReportingEngine().known_types
        known.add(qf.Document)
        known.add(qf.SaveFormat._type_of())
        known.add(qf.Document)  # the set keeps one of each
        types = list(known)
        assert len(known) == 2 and all(type(t) is pi.Type for t in types) and types[0] in known
        assert qf.Document not in known  # membership asks the items, which are types, not classes
        assert [t.full_name for t in types] == ["Quorix.Folio.Document", "Quorix.Folio.SaveFormat"]
        known.remove(qf.Document)
        assert [t.full_name for t in known] == ["Quorix.Folio.SaveFormat"]
        with pytest.raises(TypeError, match="^can't build Type value from 'type'$"):
            known.add(int)
        with pytest.raises(RuntimeError, match="ArgumentNullException"):
            known.add(None)


class TestNamedFrameworkValues:
    """Text encodings and cultures cross as their names, both ways."""

    def test_an_encoding_is_its_codec_name(self, tmp_path):
        from quorix.folio.loading import LoadOptions

        options = LoadOptions()
        assert options.encoding is None
        options.encoding = "utf_16"  # as Python spells it
        assert options.encoding == "utf-16"
        options.encoding = "latin-1"
        assert options.encoding == "iso-8859-1"
        text = tmp_path / "latin.txt"
        text.write_bytes("Caf\u00e9 cr\u00e8me".encode("latin-1"))
        assert qf.Document(str(text), options).get_text().strip() == "Caf\u00e9 cr\u00e8me"
        with pytest.raises(RuntimeError, match="ArgumentException"):
            options.encoding = "no-such-codec"
        options.encoding = None
        assert options.encoding is None

    def test_a_culture_is_its_name(self):
        options = qf.Document().field_options
        options.field_update_culture = ""
        assert options.field_update_culture == ""  # the invariant culture
        with pytest.raises(RuntimeError, match="CultureNotFoundException"):
            options.field_update_culture = "not a culture!"
        options.field_update_culture = None
        assert options.field_update_culture is None
        with pytest.raises(TypeError):
            options.field_update_culture = 7


def test_geometry_structures_read_as_tuples_of_their_fields(doc):
    info = doc.get_page_info(0)
    size = info.get_size_in_pixels(1.0, 72.0)
    assert type(size) is tuple and size == (round(info.width_in_points), round(info.height_in_points))
    assert info.get_size_in_pixels(2.0, 96.0) == (round(info.width_in_points * 8 / 3), round(info.height_in_points * 8 / 3))
    from quorix.folio.layout import LayoutEnumerator

    page = LayoutEnumerator(doc).rectangle
    assert type(page) is tuple and len(page) == 4 and all(type(v) is float for v in page)
    assert page[:2] == (0.0, 0.0) and page[2:] == (pytest.approx(info.width_in_points), pytest.approx(info.height_in_points))


@pytest.fixture
def arr(doc):
    return doc.first_section.body.paragraphs.to_array()


class TestArrays:
    def test_arrays_cross_as_the_array_wrapper_of_their_element(self, arr, doc):
        assert type(arr).__module__ == "quorix.folio._wrpgen._generic"
        assert type(arr).__name__.startswith("_ArrayWrapper_")
        assert len(arr) == arr.length == len(doc.first_section.body.paragraphs)
        assert arr[-1] == arr[len(arr) - 1] and texts(arr[0:2]) == ["Report", "Introduction text"]

    def test_items_are_stored_and_checked(self, arr):
        first, second = arr[0], arr[1]
        arr[0] = second
        assert arr[0] == second and arr.count(second) == 2
        arr[-1] = first
        assert arr[-1] == first
        with pytest.raises(TypeError, match="^can't build Paragraph value from 'int'$"):
            arr[0] = 1
        with pytest.raises(IndexError, match="^list index out of range$"):
            arr[len(arr)] = first

    def test_slice_assignment_keeps_the_size(self, arr):
        a, b, c = arr[0], arr[1], arr[2]
        with pytest.raises(ValueError, match="^attempt to assign sequence of size 3 to extended slice of size 2$"):
            arr[0:2] = [a, b, c]
        before = list(arr)
        arr[1:1] = []
        assert list(arr) == before
        arr[0:2] = (b, a)
        assert arr[0] == b and arr[1] == a
        arr[::-1] = list(arr)
        assert list(arr) == before[::-1] or list(arr)[0] == before[-1]
        with pytest.raises(TypeError, match="^must assign iterable to extended slice$"):
            arr[0:1] = 5

    def test_a_managed_array_is_stored_whole(self, arr, doc):
        other = doc.first_section.body.paragraphs.to_array()
        other.reverse()
        arr[:] = other
        assert list(arr) == list(other)

    def test_removal_is_refused(self, arr):
        for key in (0, slice(0, 2)):
            with pytest.raises(ValueError, match="^elements removing not supported$"):
                del arr[key]

    def test_concatenation_repetition_and_copy_build_lists(self, arr):
        items = list(arr)
        assert arr + [1] == items + [1] and arr + (2,) == items + [2]
        assert arr + iter([3]) == items + [3]
        assert arr * -3 == [] and arr * 0 == [] and arr * 2 == items * 2
        assert type(arr.copy()) is list and arr.copy() == items
        with pytest.raises(ValueError, match="^argument must be iterable or sequence$"):
            arr + 5

    def test_search_methods(self, arr):
        third = arr[2]
        assert arr.index(third) == 2 and arr.index(third, 1) == 2 and arr.contains(third) and third in arr
        with pytest.raises(ValueError, match="^value is not in list$"):
            arr.index(third, 3)
        with pytest.raises(ValueError, match="^value is not in list$"):
            arr.index(third, 0, 2)
        with pytest.raises(TypeError, match="^can't build Paragraph value from 'str'$"):
            arr.index("x")

    def test_reverse_and_sort(self, arr):
        items = list(arr)
        arr.reverse()
        assert list(arr) == items[::-1]
        with pytest.raises(RuntimeError, match="IComparable"):
            arr.sort()  # paragraphs have no ordering of their own
        with pytest.raises(ValueError, match="^custom sorting key is not supported$"):
            arr.sort(key=len)

    def test_construction_is_refused(self, arr):
        with pytest.raises(TypeError, match="^type has no available constructor$"):
            type(arr)()


class TestReadOnlyLists:
    def test_a_read_only_list_reads_like_a_list(self):
        doc = qf.Document()
        b = qf.DocumentBuilder(doc)
        b.insert_field("PAGE")
        b.insert_field("NUMPAGES")
        fields = doc.range.fields                    # a read-only collection class of the engine
        assert len(fields) == 2 and fields.count == 2 and fields[-1] == fields[1]
        assert [type(f).__name__ for f in fields] == ["FieldPage", "FieldNumPages"]
        assert all(isinstance(f, qf.fields.Field) for f in fields)
        assert [f.get_field_code() for f in fields] == ["PAGE", "NUMPAGES"]
        with pytest.raises(TypeError):
            fields[0] = fields[1]


class TestCasting:
    def test_casts_between_bound_classes(self, doc):
        node = doc.get_child(qf.NodeType.PARAGRAPH, 0, True)
        ok, no = qf.Paragraph._cast_to(node), qf.tables.Table._cast_to(node)
        assert ok and ok.code == 1 and type(ok.value) is qf.Paragraph
        assert not no and no.code == 0 and no.value is None
        assert not qf.Paragraph._cast_to(None) and not qf.Paragraph._cast_to(3)
        assert qf.Node._cast_as(node) == node and qf.tables.Table._cast_as(node) is None
        assert type(qf.Node._reinterpret_obj(node)) is qf.Node
        assert node._cast_from(node).code == 1
        assert qf.CompositeNode._is_assignable(node) and not qf.tables.Table._is_assignable(node)
        assert qf.Paragraph._is_assignable(5) is False

    def test_static_classes_and_enumerations_refuse_casts(self):
        with pytest.raises(TypeError, match="^cannot convert from  'int' to 'quorix.folio.FileFormatUtil'$"):
            qf.FileFormatUtil._reinterpret_obj(3)
        assert qf.FileFormatUtil._is_assignable(qf.Document()) is False
        assert qf.FileFormatUtil._type_of().full_name == "Quorix.Folio.FileFormatUtil"
        assert qf.SaveFormat.DOCX._cast_from(qf.SaveFormat.TEXT).code == 0
        assert qf.SaveFormat._qrxsc2p_asserttp() is Ellipsis and qf.LoadFormat._qrxsc2p_asserttp() is Ellipsis
        assert qf.Document._qrxsc2p_asserttp() is True

    def test_managed_type_parameters_take_classes_none_and_types(self):
        pi = pytest.importorskip("quorix.pyintro")
        assert qf.SaveFormat._type_of().full_name == "Quorix.Folio.SaveFormat"
        # an enumeration class passes its managed type through _type_of
        assert pi.Enum.get_underlying_type(qf.SaveFormat).full_name == "System.Int32"
        assert pi.Enum.get_underlying_type(qf.SaveFormat._type_of()).full_name == "System.Int32"
        with pytest.raises(RuntimeError, match="ArgumentException"):
            pi.Enum.get_underlying_type(qf.Document)  # a bound class: its type, which is no enumeration
        with pytest.raises(RuntimeError, match="ArgumentNullException"):
            pi.Enum.get_underlying_type(None)
        for bad, name in ((int, "type"), (3, "int"), (qf.Document(), "quorix.folio.Document")):
            with pytest.raises(TypeError, match=f"^can't build Type value from '{re.escape(name)}'$"):
                pi.Enum.get_underlying_type(bad)

    def test_generic_wrappers_cast_as_their_managed_type(self, arr):
        kind = type(arr)
        assert kind._type_of().full_name == "Quorix.Folio.Paragraph[]"
        assert kind._is_assignable(arr) and not kind._is_assignable(arr[0])
        assert kind._cast_to(arr).value == arr


def _freed():
    from test_folio_api import _freed as freed

    return freed()


class TestLifetime:
    N = 100_000

    @pytest.fixture(scope="class")
    def big(self):
        doc = qf.Document()
        b = qf.DocumentBuilder(doc)
        for i in range(self.N - 1):
            b.writeln("p")
        return doc

    def test_iterating_and_slicing_release_every_handle(self, big):
        import tracemalloc

        freed = _freed()
        paras = big.first_section.body.paragraphs
        assert len(paras) == self.N
        gc.collect()
        before = freed()
        tracemalloc.start()
        start, _ = tracemalloc.get_traced_memory()
        count = 0
        for p in paras:
            count += 1
        part = paras[: self.N // 10]
        arr = paras.to_array()
        from_array = arr[self.N // 2 : self.N // 2 + 10_000]
        assert count == self.N and len(part) == len(from_array) == 10_000
        del part, from_array, arr, p
        gc.collect()
        end, _ = tracemalloc.get_traced_memory()
        tracemalloc.stop()
        # items, the enumerator, the 10,000 + 10,000 slice items and the array
        assert freed() - before == self.N + 1 + 20_000 + 1
        assert end - start < 64 * 1024


def test_broken_generic_tables_disable_their_kinds(built, tmp_path):
    broken = BUILD / "fixtures" / "broken-generic" / "WrpInterop.Quorix.Folio.dll"
    assert broken.exists(), "make test-python builds the broken generic interop assembly"
    folio = link_tree(ASSEMBLY_ROOT / "folio", tmp_path / "asm" / "folio", skip={"WrpInterop.Quorix.Folio.dll"})
    (folio / "WrpInterop.Quorix.Folio.dll").symlink_to(broken)
    run = run_python(
        """
        import quorix.folio as qf
        doc = qf.Document()
        b = qf.DocumentBuilder(doc)
        b.writeln("one")
        b.writeln("two")
        def show(what, f):
            try:
                f()
                print(what, "ok")
            except TypeError as e:
                cause = e.__cause__
                print(what, "|", e, "|", "" if cause is None else cause.args[0])
        arr = doc.first_section.body.paragraphs.to_array()
        kind = type(arr)
        show("new", lambda: kind.__new__(kind))
        show("type_of", kind._type_of)
        show("cast_to", lambda: kind._cast_to(arr))
        show("is_assignable", lambda: kind._is_assignable(arr))
        show("store", lambda: arr.__setitem__(0, arr[1]))
        show("read", lambda: arr[0].get_text())
        para = doc.first_section.body.first_paragraph
        show("runs", lambda: list(para.runs))
        runs = para.runs.to_array()
        show("run_array", type(runs)._type_of)
        show("paragraphs", lambda: list(doc.first_section.body.paragraphs))
        """,
        env={"NETCORE_WRAPPER_ASSEMBLY_DIR_quorix": str(tmp_path / "asm")},
    )
    assert run.returncode == 0, run
    lines = dict(line.split(" ", 1) for line in run.stdout.splitlines())
    assert set(lines) == {"new", "type_of", "cast_to", "is_assignable", "store", "read", "runs", "run_array", "paragraphs"}, run
    missing = re.compile(r"\| While initializing the host for the 'Quorix\.WrpGen\.Generic\.(\w+)_[0-9A-F]{8} "
                         r"\(Assembly=WrpInterop\.Quorix\.Folio\)' type, an error occurred - Method '(\w+)' not found")
    for what in ("new", "type_of", "cast_to", "is_assignable", "store"):
        m = missing.match(lines[what])
        assert m and m.groups() == ("SiApiArray", "SqSetItemNoChek"), (what, lines[what])
    assert lines["read"] == "ok" and lines["paragraphs"] == "ok"  # other kinds and instantiations stand
    m = missing.match(lines["runs"])
    assert m and m.groups() == ("SiApiEnumerable", "GetEnumerator")
    # the array of runs is presented through the broken enumerable: its error chains onto the binding message
    head, cause = lines["run_array"].split(" | While", 1)
    assert head == "| one or more refereced type is not initialized"
    m = missing.match("| While" + cause)
    assert m and m.groups() == ("SiApiEnumerable", "GetEnumerator")
