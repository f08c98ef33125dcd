"""Binding failures of the built-in kinds' method tables: an interop assembly whose array class
lacks "SqSetItemNoChek" and whose enumerable class lacks "GetEnumerator". Each kind fails on
its own checked operations (construction, conversion, casting) with the binding message; the
kinds presented through the enumerable chain the enumerable's message; the others stand."""

import re

import pytest

from conftest import ASSEMBLY_ROOT, BUILD, link_tree, run_python

pytest.importorskip("quorix.folio")

MISSING = re.compile(r"While initializing the host for the 'Quorix\.WrpGen\.Interop\.(\w+) "
                     r"\(Assembly=WrpInterop\.Quorix\.Folio\)' type, an error occurred - Method '(\w+)' not found "
                     r"\(error=-?\d+\)")


@pytest.fixture(scope="module")
def outcomes(tmp_path_factory):
    broken = BUILD / "fixtures" / "broken-generic" / "WrpInterop.Quorix.Folio.dll"
    assert broken.exists(), "make test-python builds the broken interop assembly"
    root = tmp_path_factory.mktemp("broken-builtins")
    folio = link_tree(ASSEMBLY_ROOT / "folio", root / "asm" / "folio", skip={"WrpInterop.Quorix.Folio.dll"})
    (folio / "WrpInterop.Quorix.Folio.dll").symlink_to(broken)
    run = run_python(
        """
        import io, sys
        import quorix.folio as qf
        interop = sys.modules["quorix.folio._wrpgen._interop"]
        doc = qf.Document()
        qf.DocumentBuilder(doc).writeln("one")
        arr = doc.first_section.body.paragraphs.to_array()
        def show(kind, what, f):
            try:
                f()
                print(kind, what, "ok")
            except TypeError as e:
                cause = e.__cause__
                print(kind, what, "|", e, "|", "" if cause is None else cause.args[0])
        for name in ("_IDisposableWrapper", "_IterWrapper", "_IterableWrapper", "_IColWrapper", "_IListWrapper",
                     "_RoColBaseWrapper", "_ColBaseWrapper", "_ArrayWrapper", "_ArrListWrapper"):
            t = getattr(interop, name)
            show(name, "new", lambda: t.__new__(t))
            show(name, "type_of", t._type_of)
            show(name, "cast_to", lambda: t._cast_to(arr))
            show(name, "cast_as", lambda: t._cast_as(arr))
            show(name, "is_assignable", lambda: t._is_assignable(arr))
            show(name, "reinterpret", lambda: t._reinterpret_obj(arr))
        show("python-file", "save", lambda: doc.save(io.BytesIO(), qf.SaveFormat.DOCX))
        show("generic", "iterate", lambda: [p.get_text() for p in doc.first_section.body.paragraphs])
        """,
        env={"NETCORE_WRAPPER_ASSEMBLY_DIR_quorix": str(root / "asm")},
    )
    assert run.returncode == 0, run
    seen = {}
    for line in run.stdout.splitlines():
        kind, what, rest = line.split(" ", 2)
        seen[(kind, what)] = rest
    return seen


CHECKED = ("new", "type_of", "cast_to", "cast_as", "is_assignable")


def test_the_array_kind_fails_every_checked_operation_with_the_missing_stub(outcomes):
    for what in CHECKED + ("reinterpret",):
        message, cause = outcomes[("_ArrayWrapper", what)][2:].split(" | ")
        m = MISSING.fullmatch(message)
        assert m and m.groups() == ("SiApiArray", "SqSetItemNoChek"), (what, message)
        assert cause == ""


@pytest.mark.parametrize("kind", ["_IColWrapper", "_IListWrapper", "_RoColBaseWrapper", "_ColBaseWrapper",
                                  "_ArrListWrapper"])
def test_kinds_presented_through_the_enumerable_chain_its_message(kind, outcomes):
    for what in CHECKED:
        message, cause = outcomes[(kind, what)][2:].split(" | ")
        assert message == "one or more refereced type is not initialized", (kind, what)
        m = MISSING.fullmatch(cause)
        assert m and m.groups() == ("SiApiEnumerable", "GetEnumerator"), (kind, what, cause)


def test_the_enumerable_fails_with_its_own_message_and_unrelated_kinds_stand(outcomes):
    message, cause = outcomes[("_IterableWrapper", "type_of")][2:].split(" | ")
    assert MISSING.fullmatch(message).groups() == ("SiApiEnumerable", "GetEnumerator") and cause == ""
    for kind in ("_IDisposableWrapper", "_IterWrapper"):
        for what in ("new", "type_of", "cast_as", "is_assignable"):
            assert outcomes[(kind, what)] == "ok", (kind, what)
    assert outcomes[("python-file", "save")] == "ok" and outcomes[("generic", "iterate")] == "ok"
