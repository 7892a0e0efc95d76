# SPDX-License-Identifier: Apache-2.0
"""The Arrow C stream, taken by a consumer that knows the C structures alone."""
import ctypes
import gc

import numpy as np
import pytest

import zxspreadsheet as zx

POINTER = ctypes.c_void_p


class Schema(ctypes.Structure):
    pass


class Array(ctypes.Structure):
    pass


class Stream(ctypes.Structure):
    _fields_ = [("get_schema", ctypes.CFUNCTYPE(ctypes.c_int, POINTER, ctypes.POINTER(Schema))),
                ("get_next", ctypes.CFUNCTYPE(ctypes.c_int, POINTER, ctypes.POINTER(Array))),
                ("get_last_error", ctypes.CFUNCTYPE(ctypes.c_char_p, POINTER)),
                ("release", ctypes.CFUNCTYPE(None, POINTER)), ("private_data", POINTER)]


Schema._fields_ = [("format", ctypes.c_char_p), ("name", ctypes.c_char_p), ("metadata", POINTER), ("flags", ctypes.c_int64),
                   ("n_children", ctypes.c_int64), ("children", ctypes.POINTER(ctypes.POINTER(Schema))),
                   ("dictionary", ctypes.POINTER(Schema)), ("release", ctypes.CFUNCTYPE(None, POINTER)), ("private_data", POINTER)]
Array._fields_ = [(name, ctypes.c_int64) for name in ("length", "null_count", "offset", "n_buffers", "n_children")] + [
    ("buffers", ctypes.POINTER(POINTER)), ("children", ctypes.POINTER(ctypes.POINTER(Array))), ("dictionary", ctypes.POINTER(Array)),
    ("release", ctypes.CFUNCTYPE(None, POINTER)), ("private_data", POINTER)]


def take(table):
    """(capsule, stream, schema, array) of the table's one batch."""
    capsule = table.__arrow_c_stream__()
    pointer = ctypes.pythonapi.PyCapsule_GetPointer
    pointer.restype, pointer.argtypes = POINTER, [ctypes.py_object, ctypes.c_char_p]
    stream = Stream.from_address(pointer(capsule, b"arrow_array_stream"))
    schema, array = Schema(), Array()
    assert stream.get_schema(ctypes.addressof(stream), schema) == 0
    assert stream.get_next(ctypes.addressof(stream), array) == 0
    return capsule, stream, schema, array


def elements(array, buffer, kind, count):
    return np.ctypeslib.as_array(ctypes.cast(array.buffers[buffer], ctypes.POINTER(kind)), (count,)).tolist() if count else []


@pytest.fixture
def table(tmp_path):
    zx.write(tmp_path / "all.xlsx", {"n": [1.5, None, 3], "b": [True, None, True], "t": ["x", "\u00e9", None],
                                     "m": [1, "a", None], "d": np.array(["2024-03-01", "NaT", "1970-01-02"], "M8[D]")})
    return zx.read(tmp_path / "all.xlsx")


def test_the_stream_has_one_batch_of_the_memory_of_the_table(table):
    capsule, stream, schema, array = take(table)
    children = [array.children[i].contents for i in range(array.n_children)]
    kinds = [schema.children[i].contents for i in range(schema.n_children)]
    assert (schema.format, array.length, array.null_count) == (b"+s", 3, 0)
    assert [(kind.name, kind.format, child.null_count, child.n_buffers) for kind, child in zip(kinds, children)] == [
        (b"n", b"g", 1, 2), (b"b", b"b", 1, 2), (b"t", b"i", 1, 2), (b"m", b"i", 1, 2), (b"d", b"tsu:", 1, 2)]
    n, b, t, m, d = children
    assert n.buffers[1] == table["n"].__array_interface__["data"][0] and elements(n, 0, ctypes.c_uint8, 1) == [0b101]
    assert elements(b, 1, ctypes.c_uint8, 1) == [0b101] and elements(d, 1, ctypes.c_int64, 3)[2] == 86_400_000_000
    for child, kind, texts, codes in ((t, kinds[2], "x\u00e9", [0, 1, -1]), (m, kinds[3], "1a", [0, 1, -1])):
        words, offsets = child.dictionary.contents, [0, 1, len(texts.encode())]
        assert kind.dictionary.contents.format == b"u" and (words.length, words.n_buffers) == (2, 3)
        assert elements(child, 1, ctypes.c_int32, 3) == codes and elements(words, 1, ctypes.c_int32, 3) == offsets
        assert bytes(elements(words, 2, ctypes.c_uint8, offsets[-1])).decode() == texts
    last = Array()
    assert stream.get_next(ctypes.addressof(stream), last) == 0 and not last.release
    schema.release(ctypes.addressof(schema))
    array.release(ctypes.addressof(array))
    assert not schema.release and not array.release


def test_what_was_taken_outlives_table_and_stream_and_then_goes(table):

    capsule, stream, schema, array = take(table)
    moved = Array()
    ctypes.memmove(ctypes.addressof(moved), ctypes.addressof(array.children[0].contents), ctypes.sizeof(Array))
    array.children[0].contents.release = type(moved.release)()  # moved out of its parent
    del table
    stream.release(ctypes.addressof(stream))
    del capsule
    array.release(ctypes.addressof(array))
    schema.release(ctypes.addressof(schema))
    gc.collect()
    assert elements(moved, 1, ctypes.c_double, 3)[::2] == [1.5, 3.0]
    moved.release(ctypes.addressof(moved))
    gc.collect()


def test_a_stream_that_nobody_takes_and_an_empty_one(table, tmp_path):
    capsule = table.__arrow_c_stream__()
    del table, capsule
    zx.write(tmp_path / "empty.xlsx", {"t": ["x"]})
    capsule, stream, schema, array = take(zx.read(tmp_path / "empty.xlsx", types={"t": "text"}, missing="x", drop_blank_rows=True))
    assert array.length == 1 and array.children[0].contents.null_count == 1
    array.release(ctypes.addressof(array))
    schema.release(ctypes.addressof(schema))
