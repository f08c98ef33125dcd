"""Loads the test-only binding module built over the binding fixture, or skips the module
that asks for it when the fixture has not been built."""

import sys

import pytest

from conftest import BINDTEST_ASSEMBLIES, BINDTEST_MODULE_DIR


def load_bindtest():
    if not BINDTEST_ASSEMBLIES.exists() or not any(BINDTEST_MODULE_DIR.glob("qrx_bindtest*.so")):
        pytest.skip("the binding fixture and qrx_bindtest are built by make", allow_module_level=True)
    import quorix.folio  # noqa: F401  (starts the runtime the test module joins)

    if str(BINDTEST_MODULE_DIR) not in sys.path:
        sys.path.insert(0, str(BINDTEST_MODULE_DIR))
    import qrx_bindtest

    return qrx_bindtest
