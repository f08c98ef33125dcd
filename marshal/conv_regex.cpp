#include "marshal/conv_regex.h"

#include <cstring>
#include <string>

#include "marshal/conv_errors.h"
#include "marshal/conv_text.h"
#include "module/pysh_ref.h"

namespace {

// re module flag bits and the RegexOptions bits they become.
constexpr long kReIgnoreCase = 2, kReLocale = 4, kReMultiline = 8, kReDotAll = 16, kReUnicode = 32, kReVerbose = 64,
               kReDebug = 128, kReAscii = 256, kReTemplate = 1;
constexpr int32_t kNetIgnoreCase = 1, kNetMultiline = 2, kNetSingleline = 16, kNetIgnorePatternWhitespace = 32,
                  kNetCultureInvariant = 512;

[[gnu::cold, gnu::noinline]] int
refuse(const char* what)
{
    PyErr_Format(PyExc_ValueError, "the regular expression %s has no .NET equivalent", what);
    return 0;
}

// RegexOptions for re flags: 1, or 0 with ValueError naming the first flag that cannot cross.
int
translate_flags(long flags, int32_t* options)
{
    struct Refused {
        long bit;
        const char* name;
    };
    static const Refused refused[] = {
        {kReAscii, "flag ASCII"}, {kReLocale, "flag LOCALE"}, {kReDebug, "flag DEBUG"}, {kReTemplate, "flag TEMPLATE"},
    };
    for (const Refused& r : refused)
        if (flags & r.bit)
            return refuse(r.name);
    int32_t net = kNetCultureInvariant;  // Python folds case the same way whatever the locale
    if (flags & kReIgnoreCase)
        net |= kNetIgnoreCase;
    if (flags & kReMultiline)
        net |= kNetMultiline;
    if (flags & kReDotAll)
        net |= kNetSingleline;
    if (flags & kReVerbose)
        net |= kNetIgnorePatternWhitespace;
    (void)kReUnicode;  // the default of str patterns, and of .NET
    *options = net;
    return 1;
}

bool
is_quantifier_end(Py_UCS4 c)
{
    return c == '*' || c == '+' || c == '?' || c == '}';
}

// Rewrites the Python spellings .NET reads differently: (?P<name>...) and (?P=name) become
// (?<name>...) and \k<name>, \Z becomes \z, {,n} becomes {0,n}. Refuses inline flags a and L,
// possessive quantifiers and the \U and \N escapes. 1 with *rewritten (new reference, or NULL
// when nothing changed), or 0 with ValueError.
int
translate_pattern(PyObject* pattern, PyObject** rewritten)
{
    *rewritten = nullptr;
    const int kind = PyUnicode_KIND(pattern);
    const void* data = PyUnicode_DATA(pattern);
    const Py_ssize_t n = PyUnicode_GET_LENGTH(pattern);
    auto at = [&](Py_ssize_t i) -> Py_UCS4 { return i < n ? PyUnicode_READ(kind, data, i) : 0; };

    std::u32string out;
    out.reserve(static_cast<size_t>(n) + 8);
    bool changed = false, in_class = false, after_quantifier = false;
    for (Py_ssize_t i = 0; i < n; ++i) {
        Py_UCS4 c = at(i);
        if (c == '\\') {
            Py_UCS4 e = at(i + 1);
            if (e == 'U' || e == 'N')
                return refuse(e == 'U' ? "escape \\U" : "escape \\N");
            out.push_back(c);
            if (i + 1 < n) {
                if (e == 'Z' && !in_class) {
                    e = 'z';  // Python's \Z is the very end; .NET's would also match before a final newline
                    changed = true;
                }
                out.push_back(e);
                ++i;
            }
            after_quantifier = false;
            continue;
        }
        if (in_class) {
            if (c == ']')
                in_class = false;
            out.push_back(c);
            continue;
        }
        if (c == '[') {
            in_class = true;
            out.push_back(c);
            // a ']' right after '[' or '[^' is a member, not the end
            if (at(i + 1) == '^') {
                out.push_back(at(++i));
            }
            if (at(i + 1) == ']')
                out.push_back(at(++i));
            after_quantifier = false;
            continue;
        }
        if (c == '+' && after_quantifier)
            return refuse("possessive quantifier");
        if (c == '(' && at(i + 1) == '?') {
            Py_UCS4 g = at(i + 2);
            if (g == 'P' && at(i + 3) == '<') {
                out.append(U"(?<");
                i += 3;
                changed = true;
                after_quantifier = false;
                continue;
            }
            if (g == 'P' && at(i + 3) == '=') {
                Py_ssize_t end = i + 4;
                while (end < n && at(end) != ')')
                    ++end;
                out.append(U"\\k<");
                for (Py_ssize_t k = i + 4; k < end; ++k)
                    out.push_back(at(k));
                out.push_back('>');
                i = end;
                changed = true;
                after_quantifier = false;
                continue;
            }
            // inline flags: (?imsx) or (?imsx-imsx:...)
            for (Py_ssize_t k = i + 2; k < n; ++k) {
                Py_UCS4 f = at(k);
                if (f == 'a')
                    return refuse("inline flag a (ASCII)");
                if (f == 'L')
                    return refuse("inline flag L (LOCALE)");
                if (f != 'i' && f != 'm' && f != 's' && f != 'x' && f != 'u' && f != '-')
                    break;
            }
            out.append(U"(?");
            ++i;
            after_quantifier = false;
            continue;
        }
        if (c == '{' && at(i + 1) == ',') {
            Py_ssize_t k = i + 2;
            while (k < n && at(k) >= '0' && at(k) <= '9')
                ++k;
            if (k > i + 2 && at(k) == '}') {
                out.append(U"{0");
                changed = true;
                after_quantifier = false;
                continue;
            }
        }
        // a '+' right after a quantifier would make it possessive
        after_quantifier = is_quantifier_end(c);
        out.push_back(c);
    }
    if (!changed)
        return 1;
    *rewritten = PyUnicode_FromKindAndData(PyUnicode_4BYTE_KIND, out.data(), static_cast<Py_ssize_t>(out.size()));
    return *rewritten != nullptr;
}

}  // namespace

int
fn_conv_py_pattern_to_clr_regex(PyObject* obj, PyRegexArg* out)
{
    out->keep_alive = nullptr;
    out->options = 0;
    if (obj == Py_None)
        return fn_conv_py_string_to_clr_string(obj, &out->pattern);
    PyShRef pattern;
    long flags = 0;
    if (PyUnicode_Check(obj)) {
        pattern = PyShRef(Py_NewRef(obj));
    }
    else if (std::strcmp(Py_TYPE(obj)->tp_name, "re.Pattern") == 0) {
        pattern = PyShRef(PyObject_GetAttrString(obj, "pattern"));
        if (!pattern)
            return 0;
        if (!PyUnicode_Check(pattern.get()))
            return marshal_fail_text(PyExc_TypeError, "a bytes pattern cannot become a .NET Regex");
        PyShRef py_flags(PyObject_GetAttrString(obj, "flags"));
        if (!py_flags || ((flags = PyLong_AsLong(py_flags.get())) == -1 && PyErr_Occurred()))
            return 0;
    }
    else {
        return marshal_fail_typename(PyExc_TypeError, "can't build Regex from '%s'", obj);
    }
    PyObject* rewritten = nullptr;
    if (!translate_flags(flags, &out->options) || !translate_pattern(pattern.get(), &rewritten))
        return 0;
    PyShRef text(rewritten != nullptr ? rewritten : pattern.release());
    if (!fn_conv_py_string_to_clr_string(text.get(), &out->pattern))
        return 0;
    out->keep_alive = text.release();
    return 1;
}
