// An interpreter embedded once per test process, and small helpers for driving it from tests.
#pragma once

#include <gtest/gtest.h>

#include <string>

#include "module/pysh_ref.h"

// Base for tests that touch Python: no exception may leak out of a test.
class PyTest : public ::testing::Test {
protected:
    void TearDown() override;
};

// A fresh globals dict with builtins available.
PyShRef py_namespace();
// Runs statements in `ns`; on a Python error records a test failure (with the traceback) and returns false.
bool py_exec(PyObject* ns, const char* code);
// New reference to the value of an expression in `ns`, or an empty owner after recording a failure.
PyShRef py_eval(PyObject* ns, const char* expr);
// The str() of an object, or "<str failed>".
std::string py_str(PyObject* obj);
// Takes the pending exception as a normalised value (traceback attached); empty if none is pending.
PyShRef take_error();
// The exception's class name and message, "ImportError: text", or "<no error>".
std::string describe(PyObject* exc);
