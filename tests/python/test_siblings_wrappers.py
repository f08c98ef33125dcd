"""The wrapper types of quorix.pyintro and quorix.pygfx, as quorix.folio relies on them:
fixed names, the wrapper object layout and the marker attributes; only managed types with a
public constructor can be built from Python."""

import importlib

import pytest

import quorix.folio  # noqa: F401  (the product owns the runtime; constructing joins it)

WRAPPERS = {
    "quorix.pyintro": ("Type", "Object", "Enum"),
    "quorix.pygfx": ("Color", "Point", "PointF", "Size", "SizeF", "Rectangle", "RectangleF"),
}
ALL = [(module, name) for module, names in WRAPPERS.items() for name in names]
ABSTRACT = {"Type", "Enum"}
MANAGED_NAMESPACE = {"quorix.pyintro": "System", "quorix.pygfx": "System.Drawing"}
POINTER = 8


def wrapper(module, name):
    return getattr(importlib.import_module(module), name)


@pytest.mark.parametrize("module, name", ALL)
class TestWrapperTypes:
    def test_named_inside_its_module(self, module, name):
        cls = wrapper(module, name)
        assert cls.__module__ == module and cls.__qualname__ == name
        assert cls.__name__ == name

    def test_constructed_only_when_managed_code_allows(self, module, name):
        cls = wrapper(module, name)
        if name in ABSTRACT:
            with pytest.raises(TypeError, match="^type has no available constructor$"):
                cls()
        else:
            # structures always have their zero value; System.Object its public constructor
            assert str(cls().get_type()) == MANAGED_NAMESPACE[module] + "." + name

    def test_layout_is_header_handle_and_kind(self, module, name):
        # object header, a pointer-sized handle, a 32-bit kind padded to pointer alignment
        assert wrapper(module, name).__basicsize__ == object.__basicsize__ + 2 * POINTER
        assert wrapper(module, name).__itemsize__ == 0

    def test_marked_as_carrying_its_handle_inline(self, module, name):
        cls = wrapper(module, name)
        assert cls.__dict__["_qrxsc2p_handle"] is Ellipsis
        # reflection roots are managed objects; drawing types are managed structures
        expected = None if module == "quorix.pyintro" else Ellipsis
        assert cls.__dict__["_quorix_clr_host"] is expected


@pytest.mark.parametrize("module", sorted(WRAPPERS))
def test_module_offers_exactly_its_wrappers(module):
    public = {name for name in vars(importlib.import_module(module)) if name[:1].isupper()}
    assert public == set(WRAPPERS[module]) | {"VERSION"}
