"""Calls every bound constructor, method and property of quorix.folio with hostile arguments.

Run as a script (a fresh process, in a scratch folder, since methods may write files):

    fuzz_harness.py SEED CALLS

It prints "fuzz ok <calls>" at the end, or "fuzz FAILED" lines for calls that ended in an
exception a bad argument must not produce. A crash or a hang shows as the process dying or
timing out; the last "call" line it printed names the culprit. tests/python/test_fuzz.py runs it
briefly under make test; bench/fuzz_long.py runs it for longer.
"""

import enum
import io
import math
import random
import sys
import warnings

import quorix.folio as qf

# What a bad argument may legitimately produce: the binding's TypeError/ValueError family, a
# managed exception (RuntimeError), or the hostile helpers' own exception passed through.
ALLOWED = (TypeError, ValueError, OverflowError, RuntimeError, LookupError, AttributeError, OSError,
           BufferError, NotImplementedError)


class Hostile(Exception):
    """Raised by the helper objects below; reaching the caller unchanged is correct."""


# Managed exceptions that mean an argument the binding should have refused reached managed code.
MANAGED_SMELLS = ("NullReferenceException", "InvalidCastException", "AccessViolation", "IndexOutOfRangeException")


class RaisingIndex:
    def __index__(self):
        raise Hostile("__index__")

    def __float__(self):
        raise Hostile("__float__")


class RaisingPath:
    def __fspath__(self):
        raise Hostile("__fspath__")


class RaisingStream(io.RawIOBase):
    def readable(self):
        return True

    def writable(self):
        return True

    def seekable(self):
        raise Hostile("seekable")

    def readinto(self, b):
        raise Hostile("readinto")

    def write(self, b):
        raise Hostile("write")

    def seek(self, *args):
        raise Hostile("seek")


class Impostor:
    """Carries the wrapper markers without being a wrapper."""
    __slots__ = ("a", "b", "c", "d")
    _quorix_clr_host = None
    _qrxsc2p_handle = ...

    def __init__(self):
        for name in self.__slots__:
            setattr(self, name, object())


class PlainImpostor:
    _quorix_clr_host = ...
    _qrxsc2p_handle = ...


def bound_types():
    """Every class of the binding: the root module's and its submodules'."""
    seen, found = set(), []
    modules = [qf] + [getattr(qf, name) for name in dir(qf) if type(getattr(qf, name)).__name__ == "module"]
    for module in modules:
        for name in dir(module):
            value = getattr(module, name)
            if isinstance(value, type) and value.__module__.startswith("quorix.folio") and value not in seen:
                if not name.startswith("_"):
                    seen.add(value)
                    found.append(value)
    return sorted(found, key=lambda t: (t.__module__, t.__name__))


def is_wrapper(value):
    return type(value).__module__.startswith("quorix.folio") and not isinstance(value, enum.Enum)


class Fuzzer:
    def __init__(self, seed):
        self.rng = random.Random(seed)
        self.types = bound_types()
        self.enums = [t for t in self.types if issubclass(t, enum.Enum)]
        self.classes = [t for t in self.types if not issubclass(t, enum.Enum)]
        builder = qf.DocumentBuilder()
        builder.writeln("fuzz text é € 𝄞")
        self.pool = [builder, builder.document, builder.font, builder.current_paragraph]
        self.failures = []
        self.outcomes = {}

    def hostile(self):
        rng = self.rng
        choices = [
            None, 0, 1, -1, 2**31 - 1, 2**31, -(2**31) - 1, 2**63, -(2**63) - 1, 2**200, 0.5, -0.0,
            math.nan, math.inf, -math.inf, 1e308, True, False, "", "x", "\ud800", "a\x00b", "é€𝄞" * 300,
            "out.docx", "missing/nowhere.docx", b"", b"\x00\xff" * 8, bytearray(4), memoryview(b"abcdefgh")[::2],
            [], (), {}, object(), RaisingIndex(), RaisingPath(), RaisingStream(), Impostor(), PlainImpostor(),
            io.BytesIO(b"PK\x03\x04 not really"), io.StringIO("text"),
        ]
        roll = rng.random()
        if roll < 0.15 and self.pool:
            return rng.choice(self.pool)
        if roll < 0.25 and self.enums:
            return rng.choice(list(rng.choice(self.enums)))
        if roll < 0.30:
            cls = rng.choice(self.classes)
            try:
                return cls.__new__(cls)  # an instance no constructor bound
            except TypeError:
                pass
        return rng.choice(choices)

    def arguments(self):
        return [self.hostile() for _ in range(self.rng.choice((0, 1, 1, 2, 2, 3, 4)))]

    def check(self, what, error, args):
        if error is None:
            return
        text = f"{type(error).__name__}: {error}"
        if isinstance(error, Hostile):
            return
        if not isinstance(error, ALLOWED) or isinstance(error, (RecursionError,)):
            self.failures.append(f"{what} -> unexpected {text}")
        elif args and isinstance(error, RuntimeError) and any(s in str(error) for s in MANAGED_SMELLS):
            # with no argument to blame, such an exception is the member's own answer
            self.failures.append(f"{what} -> bad argument reached managed code: {text}")
        elif isinstance(error, AttributeError) and "has no attribute" in str(error) and "_qrx" in str(error):
            self.failures.append(f"{what} -> internal attribute leaked: {text}")

    def call(self, what, fn, *args, blamed=None):
        """Calls fn(*args); `blamed` are the hostile values among them (all of args by default)."""
        print("call", what, flush=True)
        error = None
        try:
            result = fn(*args)
        except BaseException as e:  # judged below; KeyboardInterrupt etc. are failures too
            error = e
            result = None
        outcome = "returned" if error is None else type(error).__name__
        self.outcomes[outcome] = self.outcomes.get(outcome, 0) + 1
        self.check(what, error, args if blamed is None else blamed)
        if result is not None and is_wrapper(result) and len(self.pool) < 200:
            self.pool.append(result)

    def step(self):
        rng = self.rng
        kind = rng.random()
        if kind < 0.2:
            cls = rng.choice(self.classes)
            args = self.arguments()
            self.call(f"{cls.__name__}{tuple(map(short, args))}", cls, *args)
            return
        target = rng.choice(self.pool)
        names = [n for n in dir(type(target)) if not n.startswith("_")]
        if not names:
            return
        name = rng.choice(names)
        attr = getattr(type(target), name, None)
        if type(attr).__name__ == "getset_descriptor":
            if rng.random() < 0.5:
                self.call(f"{type(target).__name__}.{name}", getattr, target, name, blamed=())
            else:
                value = self.hostile()
                self.call(f"{type(target).__name__}.{name} = {short(value)}", setattr, target, name, value, blamed=(value,))
            return
        bound = getattr(target, name, None)
        if callable(bound) and name not in SKIPPED:
            args = self.arguments()
            self.call(f"{type(target).__name__}.{name}{tuple(map(short, args))}", bound, *args)


# Methods that end the process or wait by design.
SKIPPED = {"__exit__"}


def short(value):
    try:
        text = repr(value)
    except NotImplementedError:  # an interface instance bound to nothing has no text, by design
        text = f"<unbound {type(value).__name__}>"
    return text if len(text) < 40 else text[:37] + "..."


def main(seed, calls):
    warnings.simplefilter("ignore")  # the interpreter's own notes on odd path types
    fuzzer = Fuzzer(seed)
    for _ in range(calls):
        fuzzer.step()
    for line in fuzzer.failures:
        print("fuzz FAILED", line)
    outcomes = ", ".join(f"{k} {v}" for k, v in sorted(fuzzer.outcomes.items(), key=lambda kv: -kv[1]))
    print("fuzz ok" if not fuzzer.failures else "fuzz failures", calls, f"({outcomes})", flush=True)
    return 1 if fuzzer.failures else 0


if __name__ == "__main__":
    sys.exit(main(int(sys.argv[1]), int(sys.argv[2])))
