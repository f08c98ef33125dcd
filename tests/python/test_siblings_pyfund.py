"""quorix.pyfund.BytesAsStream, held to the standard library's io.BytesIO: the same results,
the same errors, the same state after any sequence of operations."""

import array
import copy
import gc
import io
import pickle
import sys
import tracemalloc
import weakref
import zipfile

import pytest
from hypothesis import HealthCheck, settings
from hypothesis import strategies as st
from hypothesis.stateful import RuleBasedStateMachine, invariant, rule

from quorix.pyfund import BytesAsStream

CLOSED = "I/O operation on closed file."


def outcome(call):
    """What a call did: its value, or the type and text of what it raised."""
    try:
        return ("ok", call())
    except Exception as error:  # the exception itself is what is compared
        return ("raised", type(error), str(error))


# ---- randomized comparison with io.BytesIO

sizes = st.one_of(st.none(), st.integers(-3, 40))
offsets = st.integers(-30, 120)
# few distinct bytes, so that line ends and repeated content are common
payloads = st.lists(st.sampled_from([b"a", b"b", b"\n", b"\r", b"\0"]), max_size=30).map(b"".join)
# No giant positions here: past them the reference's own allocation failures leave it in a
# broken state, so comparing with it says nothing (the overflow cases are tested on their own).
wrong_arguments = st.sampled_from(["1", 1.5, b"x", None, 3, -1])


class AgainstBytesIO(RuleBasedStateMachine):
    def __init__(self):
        super().__init__()
        self.ours = BytesAsStream()
        self.reference = io.BytesIO()

    def same(self, method, *args):
        mine = outcome(lambda: getattr(self.ours, method)(*args))
        assert mine == outcome(lambda: getattr(self.reference, method)(*args)), (method, args)

    @rule(data=payloads, kind=st.sampled_from([bytes, bytearray, memoryview]))
    def write(self, data, kind):
        self.same("write", kind(data))

    @rule(lines=st.lists(payloads, max_size=4))
    def writelines(self, lines):
        self.same("writelines", lines)

    @rule(method=st.sampled_from(["read", "read1", "readline", "readlines"]), size=sizes)
    def read(self, method, size):
        self.same(method, size)

    @rule(length=st.integers(0, 30))
    def readinto(self, length):
        mine, theirs = bytearray(b"\xee" * length), bytearray(b"\xee" * length)
        assert outcome(lambda: self.ours.readinto(mine)) == outcome(lambda: self.reference.readinto(theirs))
        assert mine == theirs

    @rule(offset=offsets, whence=st.integers(-1, 3))
    def seek(self, offset, whence):
        self.same("seek", offset, whence)

    @rule(size=st.one_of(st.none(), st.integers(-2, 100)))
    def truncate(self, size):
        self.same("truncate", size)

    @rule(method=st.sampled_from(["read", "readline", "seek", "truncate", "readinto", "write"]), arg=wrong_arguments)
    def odd_argument(self, method, arg):
        self.same(method, arg)

    @rule()
    def iterate(self):
        assert outcome(lambda: list(self.ours)) == outcome(lambda: list(self.reference))

    @rule(method=st.sampled_from(["tell", "flush", "readable", "writable", "seekable", "isatty", "getvalue"]))
    def query(self, method):
        self.same(method)

    @rule()
    def close(self):
        self.same("close")

    @invariant()
    def same_state(self):
        assert self.ours.closed == self.reference.closed
        if not self.reference.closed:
            assert self.ours.tell() == self.reference.tell()
            assert self.ours.getvalue() == self.reference.getvalue()


AgainstBytesIO.TestCase.settings = settings(
    max_examples=300,
    stateful_step_count=40,
    deadline=None,
    database=None,  # no example cache left in the working tree
    suppress_health_check=[HealthCheck.too_slow],
)
TestAgainstBytesIO = AgainstBytesIO.TestCase


class TestBeyondTheEnd:
    def test_write_past_the_end_zero_fills_the_gap(self):
        stream = BytesAsStream(b"ab")
        assert stream.seek(5) == 5 and stream.read() == b""
        assert stream.write(b"z") == 1
        assert stream.getvalue() == b"ab\0\0\0z" and stream.tell() == 6

    def test_position_cannot_overflow(self):
        stream = BytesAsStream(b"abc")
        stream.seek(sys.maxsize)
        with pytest.raises(OverflowError, match="new position too large"):
            stream.seek(1, 1)
        with pytest.raises(OverflowError):
            stream.write(b"x")
        assert stream.getvalue() == b"abc"


class TestConstruction:
    @pytest.mark.parametrize(
        "initial",
        [b"data", bytearray(b"data"), memoryview(b"xdatax")[1:5], array.array("b", b"data")],
        ids=["bytes", "bytearray", "memoryview", "array"],
    )
    def test_any_contiguous_buffer(self, initial):
        stream = BytesAsStream(initial)
        assert stream.getvalue() == b"data" and stream.tell() == 0

    def test_defaults_and_keyword(self):
        assert BytesAsStream().getvalue() == b""
        assert BytesAsStream(None).getvalue() == b""
        assert BytesAsStream(initial_bytes=b"k").getvalue() == b"k"

    def test_initial_bytes_are_copied(self):
        source = bytearray(b"abc")
        stream = BytesAsStream(source)
        source[0] = ord("z")
        stream.write(b"Q")
        assert stream.getvalue() == b"Qbc" and source == bytearray(b"zbc")

    def test_rejects_text_and_extra_arguments(self):
        with pytest.raises(TypeError, match="a bytes-like object is required, not 'str'"):
            BytesAsStream("text")
        with pytest.raises(TypeError):
            BytesAsStream(b"a", b"b")
        with pytest.raises(TypeError):
            BytesAsStream(data=b"a")

    def test_reinitialising_replaces_the_content(self):
        stream = BytesAsStream(b"old content")
        stream.seek(3)
        stream.__init__(b"new")
        assert stream.getvalue() == b"new" and stream.tell() == 0


class TestClosed:
    CALLS = [
        ("read", ()), ("read1", ()), ("readline", ()), ("readlines", ()), ("readinto", (bytearray(2),)),
        ("write", (b"x",)), ("writelines", ([b"x"],)), ("seek", (0,)), ("tell", ()), ("truncate", ()),
        ("flush", ()), ("readable", ()), ("writable", ()), ("seekable", ()), ("isatty", ()),
        ("getvalue", ()), ("__enter__", ()), ("__next__", ()),
    ]

    @pytest.mark.parametrize("method, args", CALLS, ids=[c[0] for c in CALLS])
    def test_every_operation_refuses(self, method, args):
        stream = BytesAsStream(b"content")
        stream.close()
        with pytest.raises(ValueError, match=f"^{CLOSED}$"):
            getattr(stream, method)(*args)

    def test_close_is_idempotent_and_reported(self):
        stream = BytesAsStream(b"x")
        assert stream.closed is False
        assert stream.close() is None and stream.close() is None
        assert stream.closed is True

    def test_with_closes_also_on_error(self):
        with BytesAsStream(b"x") as stream:
            assert stream.read() == b"x"
        assert stream.closed
        with pytest.raises(KeyError):
            with BytesAsStream() as other:
                raise KeyError("boom")
        assert other.closed

    def test_exit_goes_through_an_overridden_close(self):
        calls = []

        class Recording(BytesAsStream):
            def close(self):
                calls.append("close")
                super().close()

        with Recording() as stream:
            pass
        assert calls == ["close"] and stream.closed


class TestAsAFileObject:
    def test_zip_archive_round_trip(self):
        stream = BytesAsStream()
        with zipfile.ZipFile(stream, "w", compression=zipfile.ZIP_DEFLATED) as archive:
            archive.writestr("a.txt", "alpha" * 100)
            archive.writestr("b/c.bin", bytes(range(256)))
        stream.seek(0)
        with zipfile.ZipFile(stream) as archive:
            assert archive.namelist() == ["a.txt", "b/c.bin"]
            assert archive.read("a.txt") == b"alpha" * 100
            assert archive.read("b/c.bin") == bytes(range(256))

    def test_pickle_through_the_stream(self):
        stream = BytesAsStream()
        pickle.dump({"k": [1, 2.5, "three"]}, stream)
        stream.seek(0)
        assert pickle.load(stream) == {"k": [1, 2.5, "three"]}

    def test_text_layer_on_top(self):
        stream = BytesAsStream()
        text = io.TextIOWrapper(stream, encoding="utf-8", newline="")
        text.write("héllo\nwörld\n")
        text.flush()
        text.seek(0)
        assert text.readlines() == ["héllo\n", "wörld\n"]
        assert stream.getvalue() == "héllo\nwörld\n".encode()

    def test_no_descriptor_behind_it(self):
        with pytest.raises(io.UnsupportedOperation):
            BytesAsStream().fileno()

    def test_weak_references(self):
        stream = BytesAsStream()
        probe = weakref.ref(stream)
        del stream
        gc.collect()
        assert probe() is None


class TestCopying:
    def test_copy_keeps_content_and_position(self):
        stream = BytesAsStream(b"abcdef")
        stream.seek(2)
        for clone in (copy.copy(stream), copy.deepcopy(stream), pickle.loads(pickle.dumps(stream))):
            assert clone is not stream
            assert clone.getvalue() == b"abcdef" and clone.tell() == 2
            clone.write(b"ZZ")
        assert stream.getvalue() == b"abcdef"

    def test_subclass_attributes_travel(self):
        stream = Tagged(b"xyz")
        stream.tag = "label"
        clone = pickle.loads(pickle.dumps(stream))
        assert type(clone) is Tagged and clone.tag == "label" and clone.getvalue() == b"xyz"

    def test_closed_stream_cannot_be_copied(self):
        stream = BytesAsStream(b"x")
        stream.close()
        with pytest.raises(ValueError, match=f"^{CLOSED}$"):
            copy.copy(stream)

    def test_bad_state_is_refused(self):
        stream = BytesAsStream(b"keep")
        with pytest.raises(TypeError):
            stream.__setstate__((b"x", 0))
        with pytest.raises(ValueError):
            stream.__setstate__((b"x", -1, None))
        assert stream.getvalue() == b"keep"


class Tagged(BytesAsStream):
    pass


class TestResources:
    def test_buffers_are_released_on_every_path(self):
        stream = BytesAsStream(b"0123456789")
        source = bytearray(b"abc")
        BytesAsStream(source)
        stream.write(source)
        stream.seek(0)
        stream.readinto(source)
        stream.writelines([source, source])
        stream.__setstate__((source, 0, None))
        stream.close()
        with pytest.raises(ValueError):
            stream.readinto(source)
        # a view still held would make resizing fail with BufferError
        source.extend(b"more")
        assert source == bytearray(b"abcmore")

    def test_reference_counts_stay_flat(self):
        stream = BytesAsStream()
        data = b"payload-" * 4
        target = bytearray(16)
        counts = (sys.getrefcount(stream), sys.getrefcount(data), sys.getrefcount(target))
        for i in range(5000):
            stream.write(data)
            stream.seek(i % 7)
            stream.readinto(target)
            stream.read(3)
            stream.readline()
            stream.getvalue()
            stream.truncate(64)
            for _ in stream:
                pass
            try:
                stream.seek(-1)
            except ValueError:
                pass
        assert (sys.getrefcount(stream), sys.getrefcount(data), sys.getrefcount(target)) == counts

    def test_memory_stays_flat(self):
        def workload():
            stream = BytesAsStream(b"seed" * 256)
            for i in range(200):
                stream.seek(i * 13 % 2000)
                stream.write(b"x" * (i % 50))
                stream.read(40)
                stream.truncate(1500)
            with stream:
                stream.getvalue()

        workload()
        tracemalloc.start()
        try:
            workload()
            baseline, _ = tracemalloc.get_traced_memory()
            for _ in range(200):
                workload()
            gc.collect()
            current, _ = tracemalloc.get_traced_memory()
        finally:
            tracemalloc.stop()
        assert current - baseline < 16 * 1024

    def test_storage_is_given_back(self):
        stream = BytesAsStream(bytes(1 << 20))
        assert sys.getsizeof(stream) >= 1 << 20
        stream.truncate(10)
        assert sys.getsizeof(stream) < 4096
        stream.close()
        assert sys.getsizeof(stream) < 1024
