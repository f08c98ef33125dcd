// Python regular expressions (re.Pattern, or a str compiled as a pattern) as managed
// System.Text.RegularExpressions.Regex arguments. The pattern is rewritten where the two
// dialects spell the same thing differently; what .NET cannot honour is refused.
#pragma once

#include <Python.h>
#include <cstdint>

#include "marshal/records.h"

// The pattern in .NET syntax (its storage owned by keep_alive) and the RegexOptions bits.
struct PyRegexArg {
    PyStringArg pattern;
    int32_t options;
    int32_t reserved;
    PyObject* keep_alive;
};

static_assert(sizeof(PyRegexArg) == 32 && offsetof(PyRegexArg, keep_alive) == 24, "PyRegexArg layout");

// None (a null Regex), an re.Pattern of a str pattern, or a str. IGNORECASE, MULTILINE, DOTALL
// and VERBOSE translate; a flag or construct with no .NET equivalent raises ValueError naming
// it. 1 with out->keep_alive set (the caller releases it), or 0 with an error and nothing to release.
int fn_conv_py_pattern_to_clr_regex(PyObject* obj, PyRegexArg* out);
