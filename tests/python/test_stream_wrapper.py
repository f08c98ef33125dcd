"""Managed streams seen as Python binary files, with io.BytesIO over the same bytes as the
oracle for what reading, line splitting and seeking return and where they leave the stream."""

import io

import pytest
from hypothesis import given, settings
from hypothesis import strategies as st

from binding_support import load_bindtest

bt = load_bindtest()
MS = bt.ManagedStreams


def both(data):
    return MS.memory(data), io.BytesIO(data)


def error(call, *args):
    with pytest.raises((TypeError, ValueError, OverflowError)) as info:
        call(*args)
    return type(info.value).__name__, str(info.value)


ops = st.lists(st.one_of(
    st.tuples(st.just("read"), st.one_of(st.none(), st.integers(-2, 40))),
    st.tuples(st.just("readline"), st.one_of(st.none(), st.integers(-2, 40))),
    st.tuples(st.just("readlines"), st.integers(-1, 40)),
    st.tuples(st.just("seek"), st.integers(0, 60)),
    st.tuples(st.just("readinto"), st.integers(0, 20)),
    st.tuples(st.just("tell"), st.none()),
), max_size=12)

data_with_lines = st.lists(st.sampled_from([b"a", b"bc", b"\n", b"\r", b"\r\n", b"\x00", b"xyz" * 10]),
                           max_size=40).map(b"".join)


class TestReadingAgainstBytesIO:
    @settings(max_examples=150, deadline=None)
    @given(data=data_with_lines, steps=ops)
    def test_any_sequence_of_reads_and_seeks_agrees(self, data, steps):
        ours, oracle = both(data)
        for name, arg in steps:
            if name == "readinto":
                a, b = bytearray(arg), bytearray(arg)
                assert ours.readinto(a) == oracle.readinto(b) and a == b
            elif name == "tell":
                pass
            elif name == "readlines":
                assert ours.readlines(arg) == oracle.readlines(arg)
            elif arg is None:
                assert getattr(ours, name)() == getattr(oracle, name)()
            else:
                assert getattr(ours, name)(arg) == getattr(oracle, name)(arg)
            assert ours.tell() == oracle.tell()

    @settings(max_examples=60, deadline=None)
    @given(data=data_with_lines)
    def test_iteration_and_readall(self, data):
        ours, oracle = both(data)
        assert list(ours) == list(oracle)
        ours.seek(0)
        assert ours.readall() == data and ours.read() == b""

    def test_only_line_feed_ends_a_line(self):
        s = MS.memory(b"a\r\nb")
        assert (s.readline(), s.readline(), s.readline()) == (b"a\r\n", b"b", b"")

    def test_a_bounded_line_leaves_the_stream_after_it(self):
        s = MS.memory(b"abc\n")
        assert s.readline(2) == b"ab" and s.tell() == 2
        assert s.readline(0) == b"" and s.tell() == 2

    def test_long_lines_and_large_reads_grow_the_buffer(self):
        line = b"x" * 70000 + b"\n"
        data = line * 3 + b"tail"
        ours, oracle = both(data)
        assert ours.readline() == line and ours.tell() == len(line)
        assert ours.readline(5000) == b"x" * 5000
        assert ours.read() == data[len(line) + 5000:]
        assert MS.memory(data).read(1 << 40) == data  # above 2^31-1: read to the end

    def test_read_zero_and_readinto_of_a_memoryview(self):
        s = MS.memory(b"abcdef")
        assert s.read(0) == b"" and s.tell() == 0
        buffer = bytearray(8)
        assert s.readinto(memoryview(buffer)[2:6]) == 4 and buffer == b"\0\0abcd\0\0"


class TestWritingSeekingAndClosing:
    def test_write_writelines_and_truncate(self):
        s = MS.memory(b"")
        assert s.write(b"hello ") == 6 and s.write(memoryview(b"big world")[4:]) == 5
        assert s.writelines([b"!", bytearray(b"?")]) is None
        assert MS.contents(s) == b"hello world!?"
        assert s.write(b"") == 0
        s.seek(5)
        assert s.truncate() == 5 and MS.contents(s) == b"hello"
        assert s.truncate(2) == 2 and MS.contents(s) == b"he"
        assert (s.readable(), s.writable(), s.seekable(), s.isatty()) == (True, True, True, False)

    def test_seek_arguments_are_checked_before_anything_else(self):
        s = MS.memory(b"abc")
        assert s.seek(-1, 2) == 2 and s.seek(1, 1) == 3
        s.close()
        assert error(s.seek, -1) == ("ValueError", "negative seek value -1")
        assert error(s.seek, 0, 3) == ("ValueError", "invalid whence (3, should be 0, 1 or 2)")
        assert error(s.seek, 0, -1) == ("ValueError", "invalid whence (-1, should be 0, 1 or 2)")
        assert error(s.seek, 0) == ("ValueError", "I/O operation on closed stream")

    def test_bad_buffers_are_named(self):
        s = MS.memory(b"abc")
        assert error(s.readinto, None) == ("TypeError", "readinto argument must be read-write bytes-like object, not 'None'")
        assert error(s.readinto, b"xyz") == ("TypeError", "readinto argument must be read-write bytes-like object, not 'bytes'")
        strided = memoryview(bytearray(8))[::2]
        assert error(s.readinto, strided) == ("TypeError", "readinto argument must be read-write contiguous buffer, not 'memoryview'")
        assert error(s.write, "text") == ("TypeError", "write argument must be bytes-like object, not 'str'")
        assert error(s.write, memoryview(b"abcd")[::2]) == ("TypeError", "write argument must be contiguous buffer, not 'memoryview'")
        assert error(s.read, 1, 2) == ("TypeError", "read() takes at most 1 argument (2 given)")
        assert error(s.readline, "x") == ("TypeError", "argument should be integer or None, not 'str'")

    def test_closing_refuses_io_once_and_close_reaches_the_stream_once(self):
        wrapper = MS.counted()
        assert wrapper.closed is False
        wrapper.close()
        wrapper.close()
        assert wrapper.closed is True and MS.closes(wrapper) == 1
        for call in (wrapper.read, wrapper.readline, wrapper.tell, wrapper.flush, wrapper.readable, wrapper.isatty):
            assert error(call) == ("ValueError", "I/O operation on closed stream")
        assert error(wrapper.fileno) == ("ValueError", "fileno method is not supported")
        with wrapper:
            pass  # the exit disposes again, closed or not
        assert MS.closes(wrapper) == 2

    def test_a_with_block_disposes_and_marks_closed(self):
        with MS.memory(b"abc") as s:
            assert s.read(1) == b"a" and not s.closed
        assert s.closed
        with pytest.raises(KeyError):
            with MS.memory(b"") as s:
                raise KeyError("kept")  # __exit__ never swallows the body's exception

    def test_line_reading_needs_a_seekable_stream(self):
        s = MS.unseekable(b"a\nb")
        text = "the operation supported only for seekable inner streams. the inner stream is not seekable"
        assert error(iter, s) == ("TypeError", text)
        assert error(s.readline) == ("TypeError", text)
        assert error(s.readlines) == ("TypeError", text)
        assert s.read() == b"a\nb"  # plain reads do not seek


class TestStreamsAsArguments:
    def test_wrappers_and_streams_of_bound_classes_pass_others_are_refused(self):
        assert bt.Streams.read_all(MS.memory(b"xyz")) == b"xyz"
        assert bt.Streams.capabilities(MS.counted()) == "rws"
        assert error(bt.Streams.read_all, bt.Node()) == ("TypeError", "can't build Stream from 'qrx_bindtest.Node'")
        assert error(bt.Streams.read_all, 1.5) == ("TypeError", "can't build Stream from 'float'")

    def test_a_consumed_wrapper_shows_the_position_the_managed_side_left(self):
        s = MS.memory(b"line\nrest")
        assert s.readline() == b"line\n"
        assert bt.Streams.read_all(s) == b"rest" and s.read() == b""


class TestCasting:
    def test_the_stream_type_tests_and_casts_like_every_bound_type(self):
        S = type(MS.memory(b""))
        s, node = MS.memory(b"abc"), bt.Node()
        assert str(S._type_of()) == "System.IO.Stream"
        assert (S._is_assignable(s), S._is_assignable(node)) == (True, False)
        assert S._cast_as(node) is None
        cast = S._cast_to(s)
        assert cast and type(cast.value) is S and cast.value.read() == b"abc"
        assert not S._cast_to(node)
        assert S._cast_from(s, s).value.closed is False
