"""Version attributes of the sibling modules: what quorix.folio checks when it imports them."""

import importlib
import itertools

import pytest

SIBLINGS = ["quorix.pyhold", "quorix.pyintro", "quorix.pygfx", "quorix.pyfund"]
# The version quorix.folio is built against; it loads a sibling when threshold <= this <= VERSION.
REFERENCED = (25, 8, 0, 0)


def fields(version):
    return (version.major, version.minor, version.patch, version.sub)


@pytest.fixture(params=SIBLINGS)
def sibling(request):
    return importlib.import_module(request.param)


class TestVersionObjects:
    def test_version_prints_as_its_view(self, sibling):
        assert str(sibling.VERSION) == "25.8.0.0"
        assert sibling.VERSION.view == "25.8.0.0"
        assert repr(sibling.VERSION) == f"<{sibling.__name__}._ModuleVersionType: 25.8.0.0>"
        assert fields(sibling.VERSION) == (25, 8, 0, 0)

    def test_threshold_prints_as_its_view(self, sibling):
        threshold = sibling._BACKWARD_COMPATIBILITY_THRESHOLD
        assert str(threshold) == "22.6.0.0"
        assert repr(threshold) == f"<{sibling.__name__}._ModuleVersionType: 22.6.0.0>"
        assert fields(threshold) == (22, 6, 0, 0)

    def test_version_type_belongs_to_its_module(self, sibling):
        version_type = type(sibling.VERSION)
        assert version_type is sibling._ModuleVersionType
        assert type(sibling._BACKWARD_COMPATIBILITY_THRESHOLD) is version_type
        assert version_type.__module__ == sibling.__name__
        assert version_type.__qualname__ == "_ModuleVersionType"

    def test_ordering_within_one_module(self, sibling):
        version, threshold = sibling.VERSION, sibling._BACKWARD_COMPATIBILITY_THRESHOLD
        assert threshold < version and threshold <= version
        assert version > threshold and version >= threshold
        assert version != threshold and not version == threshold
        assert version == version and version <= version and not version < version
        assert sorted([version, threshold]) == [threshold, version]

    def test_accepted_by_a_dependant_built_against_the_referenced_version(self, sibling):
        assert fields(sibling._BACKWARD_COMPATIBILITY_THRESHOLD) <= REFERENCED <= fields(sibling.VERSION)


class TestAcrossSiblings:
    def test_every_sibling_has_its_own_version_type(self):
        types = [type(importlib.import_module(name).VERSION) for name in SIBLINGS]
        assert len({id(t) for t in types}) == len(SIBLINGS)
        assert sorted(t.__module__ for t in types) == sorted(SIBLINGS)

    @pytest.mark.parametrize("first, second", list(itertools.combinations(SIBLINGS, 2)))
    def test_versions_agree_in_value_but_compare_only_within_their_type(self, first, second):
        a = importlib.import_module(first).VERSION
        b = importlib.import_module(second).VERSION
        assert fields(a) == fields(b) and str(a) == str(b)
        # Comparison is defined between objects of exactly one version type.
        assert a.__eq__(b) is NotImplemented
        assert not a == b and a != b
        with pytest.raises(TypeError):
            a < b

    def test_hash_follows_the_numbers_not_the_object(self):
        modules = [importlib.import_module(name) for name in SIBLINGS]
        assert len({hash(m.VERSION) for m in modules}) == 1
        assert len({hash(m._BACKWARD_COMPATIBILITY_THRESHOLD) for m in modules}) == 1
        assert hash(modules[0].VERSION) != hash(modules[0]._BACKWARD_COMPATIBILITY_THRESHOLD)
