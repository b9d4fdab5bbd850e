"""Forges files that no program of ours would make, from a sound one.

    storage_tool small BASE
    make_hostile_files.py BASE FOLDER       all of them, one file each
    make_hostile_files.py --seeds BASE FOLDER
                                            the small ones, for the fuzzer, which also wants sound files

FORGERIES tells each file's name, how it is made, and what a reader must say of it. The rows of the file that is forged:
Root, a (2x3 double), b (bool), f, f/g, f/g/x (int32), f/g/y (scalar), p (packed text), r (reference), s (text scalar),
t (padded text), z (bool scalar).
"""

import os
import shutil
import socket
import sys
import zlib

import h5py
import numpy

import catalogue_file
from catalogue_file import (ARRAY, COMPRESSED, INLINE, NO_DATASET, NOTHING, PACKED, PADDED, PLAIN, POOLED, TEXT,
                            VALUE, Catalogue, array_record, checksums, words)

ROOT, A, B, F, G, X, Y, P, R, S, T, Z = range(12)

DOUBLE, TEXT_CODE = 0x0001, 0x0010

# What a reader may do with a file instead of refusing it with a reason that is known beforehand.
SOUND = object()    # open it and read all of it
EITHER = object()   # that, or refuse it: some readers may know better than others

# Each case forges an open file; what it must be refused with stands beside it.
CASES = {}

# Each of these makes a file out of the path of a sound one; what stands there needn't be a file.
WHOLE_FILES = {}


def case(reason):
    def register(forge):
        CASES[forge.__name__] = (forge, reason)
        return forge
    return register


def whole_file(reason):
    def register(make):
        WHOLE_FILES[make.__name__] = (make, reason)
        return make
    return register


def row_case(title, reason, change):
    """A case that changes the catalogue alone; its checksum is right."""
    def forge(file):
        catalogue = Catalogue(file)
        change(catalogue)
        catalogue.store()
    CASES[title] = (forge, reason)


def field_case(title, reason, row, **fields):
    def change(catalogue):
        for field, value in fields.items():
            catalogue.rows[row][field] = value
    row_case(title, reason, change)


def record_case(title, reason, row, record):
    """A case with other bytes as the record of a row."""
    def change(catalogue):
        catalogue.rows[row]["value"] = catalogue.append(record(catalogue) if callable(record) else record)
    row_case(title, reason, change)


# ---- Rows

MEANING = "a field has a value that has no meaning"
ORDER = "the names of a folder's children aren't distinct and in order"
OUTSIDE = "lies outside the heap"
FAR = 2**64 - 1


def no_rows(catalogue):
    catalogue.rows = catalogue.rows[:0]


row_case("no_rows", "the catalogue has no root", no_rows)
field_case("root_with_a_parent", "the first row isn't a root folder", ROOT, parent=0)
field_case("root_is_a_value", "the first row isn't a root folder", ROOT, kind=VALUE)
field_case("second_root", "the parent isn't a folder before it", F, parent=catalogue_file.NO_PARENT)
field_case("parent_is_itself", "the parent isn't a folder before it", F, parent=F)
field_case("parent_comes_later", "the parent isn't a folder before it", F, parent=G)
field_case("parent_is_outside", "the parent isn't a folder before it", F, parent=1000)
field_case("parent_is_a_value", "the parent isn't a folder before it", B, parent=A)
field_case("parent_is_a_reference", "the parent isn't a folder before it", S, parent=R)
field_case("folder_left_and_entered_again", "the rows aren't in the order of a walk", S, parent=G)
field_case("name_outside", OUTSIDE, S, name=10**6)
field_case("name_reaches_outside", "the heap", S, name_size=2**32 - 1)
field_case("name_offset_wraps", OUTSIDE, S, name=FAR, name_size=16)
field_case("type_outside", OUTSIDE, S, type=10**6)
field_case("type_reaches_outside", "the heap", F, type_size=2**31)
field_case("text_outside", OUTSIDE, S, value=(10**6, 1))
field_case("text_reaches_outside", "the heap", S, value=(0, 2**40))
field_case("text_offset_wraps", OUTSIDE, S, value=(FAR, 2))
field_case("text_size_wraps", "the heap", S, value=(8, FAR))
field_case("array_record_outside", OUTSIDE, A, value=(10**6, 8))
field_case("reference_record_outside", OUTSIDE, R, value=(10**6, 8))
field_case("unknown_kind", MEANING, S, kind=3)
field_case("unknown_ordering", MEANING, A, ordering=2)
field_case("unknown_cell_array", MEANING, A, cell_array=2)
field_case("reserved_in_use", MEANING, A, reserved=1)
field_case("unknown_form", MEANING, S, form=5)
field_case("value_with_a_reference", MEANING, S, form=4)
field_case("folder_with_a_value", "a folder has a value", F, form=INLINE, element=DOUBLE)
field_case("folder_with_an_element_type", "a folder has a value", F, element=DOUBLE)
field_case("reference_with_a_value", "a reference has a value", R, form=INLINE)
field_case("reference_with_an_element_type", "a reference has a value", R, element=DOUBLE)
field_case("null_of_a_type", "a value is missing", S, form=NOTHING)
field_case("inline_text", "the element type is unknown", Y, element=TEXT_CODE)
field_case("inline_of_no_type", "the element type is unknown", Y, element=0)
field_case("inline_of_a_run_time_type", "the element type is unknown", Y, element=32)
field_case("inline_of_an_unknown_type", "the element type is unknown", Y, element=0x1234)
field_case("inline_truth_of_two", "a truth value is neither 0 nor 1", Z, value=(2, 0))
field_case("inline_complex_truth_of_two", "a truth value is neither 0 nor 1", Z, element=0xC003, value=(0x0201, 0))
field_case("text_of_another_type", "the element type doesn't fit", S, element=DOUBLE)
field_case("array_of_no_type", "the element type is unknown", A, element=0)
field_case("array_of_a_run_time_type", "the element type is unknown", A, element=32)
field_case("names_not_in_order", ORDER, B, name=0, name_size=1)


@case(ORDER)
def two_children_of_one_name(file):
    catalogue = Catalogue(file)
    for field in ("name", "name_size"):
        catalogue.rows[T][field] = catalogue.rows[S][field]
    catalogue.store()


@case("a name isn't UTF-8")
def name_not_utf8(file):
    catalogue = Catalogue(file)
    catalogue.rows[S]["name"], catalogue.rows[S]["name_size"] = catalogue.append(b"s\xff")
    catalogue.store()


@case("a name isn't UTF-8")
def name_with_an_overlong_form(file):
    catalogue = Catalogue(file)
    catalogue.rows[S]["name"], catalogue.rows[S]["name_size"] = catalogue.append(b"s\xc0\x80")
    catalogue.store()


@case("a name isn't UTF-8")
def name_with_a_pair_in_two_halves(file):
    catalogue = Catalogue(file)
    name = "\U0001F600".encode("utf-16-le")
    halves = b"".join(name[i:i + 2].decode("utf-16-le", "surrogatepass").encode("utf-8", "surrogatepass")
                      for i in (0, 2))
    catalogue.rows[Z]["name"], catalogue.rows[Z]["name_size"] = catalogue.append(halves)
    catalogue.store()


@case("a name isn't UTF-8")
def type_name_not_utf8(file):
    catalogue = Catalogue(file)
    catalogue.rows[F]["type"], catalogue.rows[F]["type_size"] = catalogue.append(b"\x80")
    catalogue.store()


def chain(catalogue, folders):
    """The root and one folder in another."""
    row = catalogue.rows[F].copy()
    rows = numpy.zeros(1 + folders, dtype=catalogue.rows.dtype)
    rows[0] = catalogue.rows[ROOT]
    for i in range(1, 1 + folders):
        row["parent"] = i - 1
        rows[i] = row
    catalogue.rows = rows


row_case("one_folder_too_deep", "", lambda catalogue: chain(catalogue, 1000))
row_case("much_too_deep", "the tree is too deep", lambda catalogue: chain(catalogue, 100_000))


def overlapping_names(catalogue, rows=20_000, heap=1_000_000):
    """Many names, each a long stretch of the same bytes: small in the file, huge when each is taken by itself."""
    start = len(catalogue.heap)
    catalogue.heap += b"n" * heap
    table = numpy.zeros(rows + 1, dtype=catalogue.rows.dtype)
    table[0] = catalogue.rows[ROOT]
    table[1:]["kind"] = VALUE
    table[1:]["name"] = start
    table[1:]["name_size"] = heap - rows + numpy.arange(rows)
    catalogue.rows = table


def overlapping_texts(catalogue, rows=20_000, heap=1_000_000):
    """The same with the texts of values; all share one stretch."""
    start = len(catalogue.heap)
    catalogue.heap += b"t" * heap
    names = [catalogue.append(b"%06d" % i) for i in range(rows)]
    table = numpy.zeros(rows + 1, dtype=catalogue.rows.dtype)
    table[0] = catalogue.rows[ROOT]
    table[1:]["kind"] = VALUE
    table[1:]["form"] = TEXT
    table[1:]["element"] = TEXT_CODE
    table[1:]["name"] = [name[0] for name in names]
    table[1:]["name_size"] = 6
    table[1:]["value"] = (start, heap)
    catalogue.rows = table


row_case("names_that_overlap", "overlap", overlapping_names)
row_case("texts_that_overlap", "overlap", overlapping_texts)

# ---- Array and reference records

LENGTH = "the array's length doesn't fit its dimensions"
SUM = [0]

record_case("array_record_empty", "a record is too short", A, b"")
record_case("array_record_cut_off", "a record is too short", A, words(2, 2, 3, PLAIN, 48, 1))
record_case("array_record_with_more", "a record is too long", A, array_record([2, 3], PLAIN, 48, SUM) + b"\0")
record_case("array_record_odd_length", "a record is too short", A, b"\1\0\0")
record_case("array_of_endless_dimensions", "a record is too short", A, words(FAR, 1))
record_case("array_of_endless_checksums", "a record is too short", A, words(1, 6, PLAIN, 48, FAR))
record_case("array_of_unknown_layout", "the array's layout is unknown", A, array_record([6], 99, 48, SUM))
record_case("array_of_too_many_dimensions", "too many dimensions", A, array_record([1] * 1025, PLAIN, 8, SUM))
record_case("dimensions_overflow", "the dimensions are too large", A, array_record([2**33, 2**33], PLAIN, 48, SUM))
record_case("dimensions_wrap_to_the_right_length", "the dimensions are too large", A,
            array_record([2**63 + 3, 2], PLAIN, 48, SUM))
record_case("bytes_wrap_to_the_right_length", LENGTH, A, array_record([2**61 + 6], PLAIN, 48, SUM))
record_case("more_elements_than_bytes", LENGTH, A, array_record([2, 4], PLAIN, 48, SUM))
record_case("fewer_elements_than_bytes", LENGTH, A, array_record([2, 2], PLAIN, 48, SUM))
record_case("too_few_checksums", "the array's checksums don't fit its length", A, array_record([6], PLAIN, 48, []))
record_case("too_many_checksums", "the array's checksums don't fit its length", A, array_record([6], PLAIN, 48, [0, 0]))
record_case("dimensions_without_a_dataset", "an array with dimensions has no dataset", A,
            array_record([6], NO_DATASET, 0, []))
record_case("bytes_without_a_dataset", "an array with dimensions has no dataset", A,
            array_record([], NO_DATASET, 48, SUM))
record_case("dataset_without_dimensions", "an array without dimensions has a dataset", A,
            array_record([], PLAIN, 0, []))
record_case("numbers_as_padded_text", "the array's layout doesn't fit its element type", A,
            array_record([6], PADDED, 48, SUM))
record_case("numbers_as_packed_text", "the array's layout doesn't fit its element type", A,
            array_record([6], PACKED, 48, SUM))
record_case("texts_as_numbers", "the array's layout doesn't fit its element type", T, array_record([3], PLAIN, 15, SUM))
record_case("padded_texts_of_no_length", LENGTH, T, array_record([3], PADDED, 0, []))
record_case("padded_texts_of_uneven_length", LENGTH, T, array_record([3], PADDED, 16, SUM))
record_case("no_padded_texts_with_bytes", LENGTH, T, array_record([0], PADDED, 15, SUM))
record_case("more_packed_texts_than_bytes", LENGTH, P, array_record([5], PACKED, 39, SUM))
record_case("endless_packed_texts", LENGTH, P, array_record([2**62], PACKED, 39, SUM))
record_case("reference_record_empty", "a record is too short", R, b"")
record_case("reference_record_cut_off", "a record is too short", R, words(2) + b"ab" + words(0, 0, 0))
record_case("reference_record_with_more", "a record is too long", R, words(0, 0, 0, 0, 0, 0))
record_case("reference_text_too_long", "a record is too short", R, words(FAR) + b"ab")
record_case("reference_text_not_utf8", "a record's text isn't UTF-8", R, words(1) + b"\xff" + words(0, 0, 0, 0))

# ---- Datasets

TYPE = "/a: the array's dataset hasn't the type that the catalogue tells"
SHAPE = "/a: the array's dataset hasn't the shape that the catalogue tells"
PIECE = "/a: the array's dataset isn't stored in one piece in this file"
STORED = "/a: the array's dataset hasn't the length that the catalogue tells"


def contiguous(file, name, kind, shape, data=None):
    """A dataset as ours are made; without data its elements are never written."""
    creation = h5py.h5p.create(h5py.h5p.DATASET_CREATE)
    creation.set_layout(h5py.h5d.CONTIGUOUS)
    creation.set_fill_time(h5py.h5d.FILL_TIME_NEVER)
    dataset = h5py.h5d.create(file[os.path.dirname(name)].id, os.path.basename(name).encode(), kind,
                              h5py.h5s.create_simple(shape), creation)
    if data is not None:
        dataset.write(h5py.h5s.ALL, h5py.h5s.ALL, numpy.ascontiguousarray(data), mtype=kind)
    return dataset


NUMBERS = numpy.arange(1.0, 7.0).reshape(2, 3)


@case("/a: the array is damaged: its checksum doesn't fit its bytes")
def other_numbers(file):
    file["a"][0, 0] = 99.0


@case("/f/g/x: the array is damaged: its checksum doesn't fit its bytes")
def other_numbers_below(file):
    file["f/g/x"][3] = 41


@case("/a: the array's dataset is missing")
def no_dataset(file):
    del file["a"]


@case("/a: the array's dataset is a link to somewhere else")
def soft_link(file):
    file.move("a", "f/a")
    file["a"] = h5py.SoftLink("/f/a")


@case("/a: the array's dataset is a link to somewhere else")
def soft_link_to_nowhere(file):
    del file["a"]
    file["a"] = h5py.SoftLink("/nowhere")


@case("/a: the array's dataset is a link to somewhere else")
def external_link(file):
    other = file.filename + ".other"
    with h5py.File(other, "w") as target:
        target["a"] = NUMBERS
    del file["a"]
    file["a"] = h5py.ExternalLink(other, "/a")


@case("/a: the array's dataset can't be opened")
def group_in_place_of_the_dataset(file):
    del file["a"]
    file.create_group("a")


@case("/a: the array's dataset can't be opened")
def type_in_place_of_the_dataset(file):
    del file["a"]
    file["a"] = numpy.dtype("f8")


@case("/f/g/x: the array's group is missing")
def no_group(file):
    del file["f"]


@case("/f/g/x: the array's group is a link to somewhere else")
def soft_link_to_the_group(file):
    file.move("f/g", "h")
    file["f/g"] = h5py.SoftLink("/h")


@case("/f/g/x: the array's group is a link to somewhere else")
def external_link_to_the_group(file):
    del file["f/g"]
    file["f/g"] = h5py.ExternalLink("other.h5", "/g")


@case("/f/g/x: the array's group can't be opened")
def dataset_in_place_of_the_group(file):
    del file["f"]
    file["f"] = NUMBERS


@case("/f/g/x: the array's dataset is missing")
def group_that_is_its_own_child(file):
    del file["f/g"]
    file["f/g"] = file["f"]


@case(PIECE)
def chunked(file):
    del file["a"]
    file.create_dataset("a", data=NUMBERS, chunks=(1, 3))


@case(PIECE)
def compressed(file):
    del file["a"]
    file.create_dataset("a", data=NUMBERS, compression="gzip", shuffle=True)


@case(PIECE)
def compact(file):
    del file["a"]
    creation = h5py.h5p.create(h5py.h5p.DATASET_CREATE)
    creation.set_layout(h5py.h5d.COMPACT)
    dataset = h5py.h5d.create(file.id, b"a", h5py.h5t.IEEE_F64LE, h5py.h5s.create_simple((2, 3)), creation)
    dataset.write(h5py.h5s.ALL, h5py.h5s.ALL, NUMBERS)


@case(PIECE)
def external_storage(file):
    del file["a"]
    elsewhere = file.filename + ".raw"
    with open(elsewhere, "wb") as raw:
        raw.write(NUMBERS.tobytes())
    file.create_dataset("a", shape=(2, 3), dtype="f8", external=[(elsewhere, 0, 48)])


@case(PIECE)
def virtual_dataset(file):
    del file["a"]
    layout = h5py.VirtualLayout(shape=(2, 3), dtype="f8")
    layout[:] = h5py.VirtualSource(file.filename + ".other", "a", shape=(2, 3))
    file.create_virtual_dataset("a", layout)


def replaced(kind, shape, data):
    def forge(file):
        del file["a"]
        contiguous(file, "/a", kind, shape, data)
    return forge


CASES.update({
    "numbers_of_another_type": (replaced(h5py.h5t.STD_I64LE, (2, 3), NUMBERS.astype("i8")), TYPE),
    "numbers_of_the_other_byte_order": (replaced(h5py.h5t.IEEE_F64BE, (2, 3), NUMBERS.astype(">f8")), TYPE),
    "pairs_of_floats": (replaced(h5py.h5t.py_create(numpy.dtype("c8"), logical=True), (2, 3), NUMBERS.astype("c8")),
                        TYPE),
    "shape_turned": (replaced(h5py.h5t.IEEE_F64LE, (3, 2), NUMBERS.T), SHAPE),
    "shape_flat": (replaced(h5py.h5t.IEEE_F64LE, (6,), NUMBERS.ravel()), SHAPE),
    "shape_of_more_dimensions": (replaced(h5py.h5t.IEEE_F64LE, (2, 3, 1), NUMBERS.reshape(2, 3, 1)), SHAPE),
    "longer_dataset": (replaced(h5py.h5t.IEEE_F64LE, (2, 4), numpy.zeros((2, 4))), STORED),
    "shorter_dataset": (replaced(h5py.h5t.IEEE_F64LE, (2, 2), numpy.zeros((2, 2))), STORED),
    "unwritten_dataset": (replaced(h5py.h5t.IEEE_F64LE, (2, 3), None), STORED),
})


@case("/a: the array's dataset hasn't the")
def one_number(file):
    del file["a"]
    file["a"] = 1.0


@case("/a: the array's dataset hasn't the")
def dataset_without_a_shape(file):
    del file["a"]
    file["a"] = h5py.Empty("f8")


@case("/b: a truth value is neither 0 nor 1")
def truth_of_two(file):
    offset = file["b"].id.get_offset()
    catalogue = Catalogue(file)
    catalogue.set_array(B, [3], PLAIN, 3, checksums(b"\1\2\0"))
    catalogue.store()
    name = file.filename
    file.close()
    with open(name, "r+b") as raw:
        raw.seek(offset)
        raw.write(b"\1\2\0")


@case("/b: the array's dataset hasn't the type that the catalogue tells")
def truth_as_plain_bytes(file):
    del file["b"]
    contiguous(file, "/b", h5py.h5t.STD_I8LE, (3,), numpy.array([1, 0, 1], dtype="i1"))


def packed(texts, lengths):
    """The packed text p with other bytes, and the checksum that they have."""
    data = words(*lengths) + texts

    def forge(file):
        del file["p"]
        contiguous(file, "/p", h5py.h5t.STD_U8LE, (len(data),), numpy.frombuffer(data, dtype="u1"))
        catalogue = Catalogue(file)
        catalogue.set_array(P, [2], PACKED, len(data), checksums(data))
        catalogue.store()
    return forge


CASES.update({
    "packed_text_too_long": (packed(b"abcd", [2, 3]), "/p: the array's texts are longer than its dataset"),
    "packed_text_endless": (packed(b"abcd", [FAR, 5]), "/p: the array's texts are longer than its dataset"),
    "packed_lengths_wrap": (packed(b"abcd", [FAR, 1]), "/p: the array's texts are longer than its dataset"),
    "packed_text_too_short": (packed(b"abcd", [2, 1]), "/p: the array's texts are shorter than its dataset"),
})


@case("/p: the array's dataset hasn't the type that the catalogue tells")
def packed_text_of_another_type(file):
    data = file["p"][:].astype("i1")
    del file["p"]
    contiguous(file, "/p", h5py.h5t.STD_I8LE, data.shape, data)


@case("/t: the array's dataset hasn't the type that the catalogue tells")
def padded_text_as_bytes(file):
    del file["t"]
    contiguous(file, "/t", h5py.h5t.STD_U8LE, (15,), numpy.zeros(15, dtype="u1"))


@case("/t: the array's dataset hasn't the")
def texts_of_any_length(file):
    del file["t"]
    file.create_dataset("t", data=["one", "three", ""], dtype=h5py.string_dtype())


def many_arrays_of_one_dataset(catalogue, file, count=2000, elements=500_000):
    """Links to one dataset of 4 MB: 8 GB when each is read by itself."""
    data = numpy.zeros(elements)
    contiguous(file, "/0000", h5py.h5t.IEEE_F64LE, data.shape, data)
    record = array_record([elements], PLAIN, data.nbytes, checksums(data.tobytes()))
    table = numpy.zeros(count + 1, dtype=catalogue.rows.dtype)
    table[0] = catalogue.rows[ROOT]
    for i in range(count):
        name = b"%04d" % i
        if i:
            file[name.decode()] = file["0000"]
        table[i + 1]["kind"], table[i + 1]["form"], table[i + 1]["element"] = VALUE, ARRAY, DOUBLE
        table[i + 1]["name"], table[i + 1]["name_size"] = catalogue.append(name)
        table[i + 1]["value"] = catalogue.append(record)
    catalogue.rows = table


@case("the arrays are longer than the file")
def many_links_to_one_dataset(file):
    catalogue = Catalogue(file)
    many_arrays_of_one_dataset(catalogue, file)
    catalogue.store()


# ---- The two datasets of the catalogue

NOT_OURS = "is an HDF5 file without a catalogue"
NOT_OUR_FORMAT = "is an HDF5 file, but not a data file of this format"
NOT_AS_WANTED = "the catalogue isn't stored as this format wants it"


@case("the catalogue is damaged: its checksum doesn't fit its bytes")
def wrong_checksum(file):
    file["catalogue"].attrs.modify("checksum", numpy.uint64(7))


@case("the catalogue is damaged: its checksum doesn't fit its bytes")
def other_row(file):
    row = file["catalogue"][S]
    row["flags"] = 7
    file["catalogue"][S] = row


@case("the catalogue is damaged: its checksum doesn't fit its bytes")
def other_uid(file):
    uid = file["catalogue"].attrs["uid"]
    attribute = h5py.h5a.open(file["catalogue"].id, b"uid")
    attribute.write(numpy.array(b"0" + uid[1:] if uid[:1] != b"0" else b"1" + uid[1:], dtype="S36"),
                    mtype=attribute.get_type())


@case("is of format version 2; this library reads version 1")
def newer_version(file):
    file["catalogue"].attrs.modify("version", numpy.uint32(2))


@case("is of format version 4294967295; this library reads version 1")
def newest_version(file):
    file["catalogue"].attrs.modify("version", numpy.uint32(2**32 - 1))


@case("is of format version 0; this library reads version 1")
def version_zero(file):
    file["catalogue"].attrs.modify("version", numpy.uint32(0))


@case(NOT_OUR_FORMAT)
def version_as_text(file):
    file["catalogue"].attrs["version"] = "1"


@case(NOT_OUR_FORMAT)
def no_version(file):
    del file["catalogue"].attrs["version"]


@case(NOT_OUR_FORMAT)
def several_versions(file):
    file["catalogue"].attrs["version"] = numpy.array([1, 2, 3] * 100, dtype="u4")


@case(NOT_OUR_FORMAT)
def other_format(file):
    attribute = h5py.h5a.open(file["catalogue"].id, b"format")
    attribute.write(numpy.array(b"Other data file.", dtype="S16"), mtype=attribute.get_type())


@case(NOT_OUR_FORMAT)
def no_format(file):
    del file["catalogue"].attrs["format"]


@case(NOT_OUR_FORMAT)
def format_of_any_length(file):
    file["catalogue"].attrs["format"] = "Orrery data file"


@case("the catalogue has no uid or no checksum")
def no_uid(file):
    del file["catalogue"].attrs["uid"]


@case("the catalogue has no uid or no checksum")
def long_uid(file):
    file["catalogue"].attrs["uid"] = numpy.bytes_(b"u" * 500)


@case("the catalogue has no uid or no checksum")
def no_checksum(file):
    del file["catalogue"].attrs["checksum"]


@case("the catalogue has no uid or no checksum")
def checksum_as_number_with_fraction(file):
    file["catalogue"].attrs["checksum"] = 1.5


@case(NOT_OURS)
def no_catalogue(file):
    del file["catalogue"]


@case(NOT_OURS)
def no_heap(file):
    del file["catalogue-heap"]


@case(NOT_OURS)
def soft_link_to_the_catalogue(file):
    file.move("catalogue", "other")
    file["catalogue"] = h5py.SoftLink("/other")


@case(NOT_OURS)
def external_link_to_the_heap(file):
    del file["catalogue-heap"]
    file["catalogue-heap"] = h5py.ExternalLink("other.h5", "/heap")


@case("the catalogue can't be opened")
def group_in_place_of_the_catalogue(file):
    del file["catalogue"]
    file.create_group("catalogue")


@case("the catalogue can't be opened")
def group_in_place_of_the_heap(file):
    del file["catalogue-heap"]
    file.create_group("catalogue-heap")


@case(NOT_AS_WANTED)
def heap_of_numbers(file):
    del file["catalogue-heap"]
    contiguous(file, "/catalogue-heap", h5py.h5t.IEEE_F64LE, (6,), NUMBERS.ravel())


@case(NOT_AS_WANTED)
def heap_of_two_dimensions(file):
    heap = file["catalogue-heap"][:]
    del file["catalogue-heap"]
    contiguous(file, "/catalogue-heap", h5py.h5t.STD_U8LE, (1, len(heap)), heap.reshape(1, -1))


@case(NOT_AS_WANTED)
def compressed_heap(file):
    heap = file["catalogue-heap"][:]
    del file["catalogue-heap"]
    file.create_dataset("catalogue-heap", data=heap, compression="gzip")


@case(NOT_AS_WANTED)
def heap_in_another_file(file):
    elsewhere = file.filename + ".raw"
    heap = file["catalogue-heap"][:]
    heap.tofile(elsewhere)
    del file["catalogue-heap"]
    file.create_dataset("catalogue-heap", shape=heap.shape, dtype="u1", external=[(elsewhere, 0, len(heap))])


@case("the catalogue is longer than the file")
def heap_that_was_never_written(file):
    del file["catalogue-heap"]
    contiguous(file, "/catalogue-heap", h5py.h5t.STD_U8LE, (100,))


@case("the catalogue is longer than the file")
def endless_heap(file):
    del file["catalogue-heap"]
    contiguous(file, "/catalogue-heap", h5py.h5t.STD_U8LE, (2**50,))


def table_like(change_type):
    def forge(file):
        table = file["catalogue"]
        attributes = dict(table.attrs)
        rows = table[:]
        del file["catalogue"]
        data = change_type(rows)
        dataset = file.create_dataset("catalogue", data=data)
        utf8 = {"format": 16, "uid": 36}
        for name, value in attributes.items():
            dtype = h5py.string_dtype("utf-8", utf8[name]) if name in utf8 else None
            dataset.attrs.create(name, value, dtype=dtype)
    return forge


def without_a_field(rows):
    names = [name for name in rows.dtype.names if name != "cell_array"]
    return rows[names].copy()


CASES.update({
    "rows_without_a_field": (table_like(without_a_field), NOT_AS_WANTED),
    "rows_with_wider_fields": (table_like(lambda rows: rows.astype(
        [(name, "u8" if name == "flags" else rows.dtype[name]) for name in rows.dtype.names])), NOT_AS_WANTED),
    "rows_of_two_dimensions": (table_like(lambda rows: rows.reshape(3, 4)), NOT_AS_WANTED),
    "rows_are_numbers": (table_like(lambda rows: NUMBERS), NOT_AS_WANTED),
})


@case(NOT_OUR_FORMAT)
def version_of_eight_bytes(file):
    del file["catalogue"].attrs["version"]
    file["catalogue"].attrs["version"] = numpy.uint64(1)


@case(NOT_OUR_FORMAT)
def version_in_a_list_of_one(file):
    del file["catalogue"].attrs["version"]
    file["catalogue"].attrs["version"] = numpy.array([1], dtype="u4")


@case(NOT_OUR_FORMAT)
def format_without_a_value(file):
    del file["catalogue"].attrs["format"]
    file["catalogue"].attrs["format"] = h5py.Empty("S16")


@case("the catalogue has no uid or no checksum")
def uid_of_any_length(file):
    del file["catalogue"].attrs["uid"]
    file["catalogue"].attrs["uid"] = "u" * 36


@case("the catalogue has no uid or no checksum")
def checksum_as_text(file):
    del file["catalogue"].attrs["checksum"]
    file["catalogue"].attrs["checksum"] = numpy.bytes_(b"12345678")


@case("the catalogue has no uid or no checksum")
def checksum_of_two_dimensions(file):
    del file["catalogue"].attrs["checksum"]
    file["catalogue"].attrs["checksum"] = numpy.zeros((1, 1), dtype="u8")


@case(SOUND)
def strange_attributes_everywhere(file):
    for name in ("/", "a", "f", "catalogue", "catalogue-heap"):
        file[name].attrs["units"] = numpy.arange(1000)
        file[name].attrs["axes"] = "no\nsuch axis"
        file[name].attrs["type"] = h5py.Empty("f8")


# ---- Links and storage that would read other files of the user

@case("/a: the array's dataset is a link to somewhere else")
def external_link_to_a_system_file(file):
    del file["a"]
    file["a"] = h5py.ExternalLink("/etc/passwd", "/")


@case("/f/g/x: the array's group is a link to somewhere else")
def external_link_to_a_system_file_as_group(file):
    del file["f/g"]
    file["f/g"] = h5py.ExternalLink("/etc/passwd", "/")


@case("/b: ")
def external_storage_in_a_system_file(file):
    del file["b"]
    file.create_dataset("b", shape=(3,), dtype=bool, external=[("/etc/passwd", 0, 3)])


@case(PIECE)
def virtual_dataset_over_a_system_file(file):
    del file["a"]
    layout = h5py.VirtualLayout(shape=(2, 3), dtype="f8")
    layout[:] = h5py.VirtualSource("/etc/passwd", "a", shape=(2, 3))
    file.create_virtual_dataset("a", layout)


@case("/f/g/x: the array's dataset is missing")
def groups_in_a_circle(file):
    del file["f/g"]
    inner = file["f"].create_group("g")
    inner["back"] = file["f"]
    inner["root"] = file["/"]


# ---- Sizes that nothing stands behind

def endless(elements, change=lambda catalogue: None):
    """The array a with a length that both the catalogue and the dataset tell, and no bytes."""
    def forge(file):
        del file["a"]
        contiguous(file, "/a", h5py.h5t.IEEE_F64LE, (elements,))
        catalogue = Catalogue(file)
        count = elements * 8 // catalogue_file.BLOCK + 1
        catalogue.set_array(A, [elements], PLAIN, elements * 8, [0] * count)
        catalogue.store()
    return forge


CASES.update({
    "ten_megabytes_of_nothing": (endless(10**6), "the arrays are longer than the file"),
    "ten_gigabytes_of_nothing": (endless(10**9), "the arrays are longer than the file"),
})


def chunked_bomb(file, layout, elements, **filters):
    """Zeros that take next to nothing in the file."""
    del file["a"]
    file.create_dataset("a", shape=(elements,), dtype="f8", **filters)
    step = 2**20
    for at in range(0, elements, step):
        file["a"][at:at + step] = 0.0
    catalogue = Catalogue(file)
    block = catalogue_file.BLOCK
    sums = [catalogue_file.checksum(bytes(block))] * (elements * 8 // block)
    catalogue.set_array(A, [elements], layout, elements * 8, sums)
    catalogue.store()


@case(EITHER)
def deflated_zeros(file):
    chunked_bomb(file, COMPRESSED, 2**22, chunks=(2**19,), compression="gzip", shuffle=True)


@case("the arrays are longer than the file")
def deflated_zeros_as_plain(file):
    chunked_bomb(file, PLAIN, 2**10 * 512, chunks=(2**19,), compression="gzip", shuffle=True)


@case("other filters than shuffle and deflate")
def compressed_by_another_filter(file):
    chunked_bomb(file, COMPRESSED, 2**19, chunks=(2**19,), compression="lzf")


@case("other filters than shuffle and deflate")
def compressed_with_checksums_of_hdf5(file):
    chunked_bomb(file, COMPRESSED, 2**19, chunks=(2**19,), compression="gzip", shuffle=True, fletcher32=True)


@case("other filters than shuffle and deflate")
def compressed_by_a_plugin(file):
    del file["a"]
    creation = h5py.h5p.create(h5py.h5p.DATASET_CREATE)
    creation.set_chunk((2, 3))
    creation.set_filter(32015, h5py.h5z.FLAG_OPTIONAL, (1,))
    dataset = h5py.h5d.create(file.id, b"a", h5py.h5t.IEEE_F64LE, h5py.h5s.create_simple((2, 3)), creation)
    dataset.write(h5py.h5s.ALL, h5py.h5s.ALL, NUMBERS)
    catalogue = Catalogue(file)
    catalogue.set_array(A, [2, 3], COMPRESSED, 48, checksums(NUMBERS.tobytes()))
    catalogue.store()


@case("the array's checksums don't fit its length")
def compressed_without_a_chunk(file):
    del file["a"]
    file.create_dataset("a", shape=(2**40,), dtype="f8", chunks=(2**19,), compression="gzip", shuffle=True)
    catalogue = Catalogue(file)
    catalogue.set_array(A, [2**40], COMPRESSED, 2**43, [0] * (2**43 // catalogue_file.BLOCK // 4096))
    catalogue.store()


@case("the array's dataset is missing")
def pooled_without_a_pool(file):
    set_pooled(file, 0)


@case("a record is too short")
def pooled_without_an_offset(file):
    catalogue = Catalogue(file)
    catalogue.set_array(A, [2, 3], POOLED, 48, checksums(NUMBERS.tobytes()))
    catalogue.store()


def set_pooled(file, offset):
    """Let the array "a" stand in the pool, whether there is one or not."""
    catalogue = Catalogue(file)
    sums = checksums(NUMBERS.tobytes())
    catalogue.rows[A]["value"] = catalogue.append(words(2, 2, 3, POOLED, 48, offset, len(sums), *sums))
    catalogue.store()


def pool(file, data=bytes(7) + NUMBERS.tobytes()):
    contiguous(file, "/catalogue-pool", h5py.h5t.STD_U8LE, (len(data),), numpy.frombuffer(data, dtype="u1"))


@case(SOUND)
def pooled(file):
    pool(file)
    set_pooled(file, 7)


@case("the array is damaged")
def pooled_at_another_place(file):
    pool(file)
    set_pooled(file, 6)


@case("the array reaches past the end of the pool")
def pooled_past_the_end(file):
    pool(file)
    set_pooled(file, 8)


@case("the array reaches past the end of the pool")
def pooled_far_past_the_end(file):
    pool(file)
    set_pooled(file, 2**64 - 8)


@case("the array's dataset is a link to somewhere else")
def pooled_behind_a_soft_link(file):
    pool(file)
    file.move("catalogue-pool", "pool")
    file["catalogue-pool"] = h5py.SoftLink("/pool")
    set_pooled(file, 7)


@case("isn't stored in one piece")
def pooled_in_chunks(file):
    data = numpy.frombuffer(bytes(7) + NUMBERS.tobytes(), dtype="u1")
    file.create_dataset("catalogue-pool", data=data, chunks=(8,))
    set_pooled(file, 7)


@case("hasn't the type")
def pooled_in_words(file):
    file.create_dataset("catalogue-pool", data=numpy.zeros(10, dtype="u8"))
    set_pooled(file, 7)


def set_compressed(file, chunks, write=True, **options):
    """Let the array "a" be a compressed one."""
    del file["a"]
    options = {"compression": "gzip", "shuffle": True, **options}
    dataset = file.create_dataset("a", shape=(2, 3), dtype="f8", chunks=chunks, **options)
    if write:
        dataset[...] = NUMBERS
    catalogue = Catalogue(file)
    catalogue.set_array(A, [2, 3], COMPRESSED, 48, checksums(NUMBERS.tobytes()))
    catalogue.store()
    return dataset


@case(SOUND)
def compressed_row_by_row(file):
    set_compressed(file, (1, 3))


@case(SOUND)
def compressed_in_parts_of_rows(file):
    set_compressed(file, (1, 2))


@case(SOUND)
def compressed_in_one_chunk_without_deflate(file):
    set_compressed(file, (2, 3), write=False).id.write_direct_chunk((0, 0), NUMBERS.tobytes(), filter_mask=3)


@case("the array's chunks aren't runs of its elements")
def compressed_in_squares(file):
    set_compressed(file, (2, 2))


@case("the array's chunks are too long")
def compressed_in_long_chunks(file):
    set_compressed(file, (2**23, 3), write=False, maxshape=(None, 3))


@case("other filters than shuffle and deflate")
def compressed_without_shuffle(file):
    set_compressed(file, (1, 3), shuffle=False)


@case("the array's elements were never written")
def compressed_but_never_written(file):
    set_compressed(file, (1, 3), write=False)


@case("one of its chunks can't be decompressed")
def compressed_chunk_of_noise(file):
    set_compressed(file, (2, 3)).id.write_direct_chunk((0, 0), bytes(range(40)))


@case("one of its chunks can't be decompressed")
def compressed_chunk_too_short(file):
    set_compressed(file, (2, 3)).id.write_direct_chunk((0, 0), zlib.compress(bytes(40)))


@case("one of its chunks can't be decompressed")
def compressed_chunk_too_long(file):
    set_compressed(file, (2, 3)).id.write_direct_chunk((0, 0), zlib.compress(bytes(56)))


@case("one of its chunks can't be decompressed")
def compressed_chunk_that_grows(file):
    set_compressed(file, (2, 3)).id.write_direct_chunk((0, 0), zlib.compress(bytes(2**24), 9))


@case("the array is damaged: its checksum")
def compressed_other_numbers(file):
    set_compressed(file, (2, 3))[...] = NUMBERS + 1


@case("other filters than shuffle and deflate")
def compressed_by_nothing(file):
    set_compressed(file, (1, 3), compression=None, shuffle=False)


@case("the arrays are longer than the file")
def compressed_endless_without_a_chunk(file):
    del file["a"]
    file.create_dataset("a", shape=(2**36,), dtype="f8", chunks=(2**19,), compression="gzip", shuffle=True)
    catalogue = Catalogue(file)
    catalogue.set_array(A, [2**36], COMPRESSED, 2**39, [0] * (2**39 // catalogue_file.BLOCK))
    catalogue.store()


@case(SOUND)
def pooled_where_another_array_is(file):
    pool(file)
    set_pooled(file, 7)
    catalogue = Catalogue(file)
    for field in ("element", "value"):
        catalogue.rows[B][field] = catalogue.rows[A][field]
    catalogue.store()


@case("/a: ")
def pooled_in_a_group(file):
    file.create_group("catalogue-pool")
    set_pooled(file, 0)


@case("the array's dataset is a link to somewhere else")
def pooled_in_a_system_file(file):
    file["catalogue-pool"] = h5py.ExternalLink("/etc/passwd", "/")
    set_pooled(file, 0)


# ---- Trees that are well-formed but absurd

def reference_record(*texts):
    return b"".join(words(len(text)) + text for text in texts)


record_case("reference_to_itself", SOUND, R, reference_record(b"../r", b"", b"", b"", b""))
record_case("reference_to_nowhere", SOUND, R, reference_record(b"../../../../x", b"", b"", b"", b""))
record_case("reference_into_the_root", SOUND, R, reference_record(b"/", b"", b"", b"", b""))
record_case("reference_into_a_folder", SOUND, R, reference_record(b"/x", b"..", b"/", b"", b"HDF5"))
record_case("reference_into_a_device", SOUND, R, reference_record(b"/x", b"/dev/zero", b"/dev/zero", b"", b"HDF5"))
record_case("reference_into_a_system_file", SOUND, R,
            reference_record(b"/x", b"../../../../../../etc/passwd", b"/etc/passwd", b"", b"HDF5"))
record_case("reference_into_a_file_of_unknown_type", SOUND, R, reference_record(b"/x", b"y", b"/y", b"", b"XML"))
record_case("reference_path_of_nul", SOUND, R, reference_record(b"\0/\0", b"\0", b"\0", b"\0", b"\0"))
record_case("reference_of_a_long_path", SOUND, R, reference_record(b"../" * 100_000, b"", b"", b"", b""))


@case(SOUND)
def reference_into_its_own_file(file):
    name = os.path.basename(file.filename).encode()
    catalogue = Catalogue(file)
    catalogue.rows[R]["value"] = catalogue.append(
        reference_record(b"/r", name, file.filename.encode(), b"", b"HDF5"))
    catalogue.store()


def other_type(row, name):
    def change(catalogue):
        catalogue.rows[row]["type"], catalogue.rows[row]["type_size"] = catalogue.append(name)
    return change


row_case("unknown_type_name", SOUND, other_type(F, b"NoSuchType"))
row_case("type_name_of_nul", SOUND, other_type(F, b"A\0B\0"))
row_case("type_name_of_a_line", SOUND, other_type(F, b"A\nB"))
row_case("root_of_another_type", SOUND, other_type(ROOT, b"Metadata"))
row_case("value_of_a_folders_type", SOUND, other_type(S, b"RootProperty"))
field_case("all_flags", SOUND, S, flags=2**32 - 1)
field_case("scalar_of_a_hidden_not_a_number", SOUND, Y, value=(0x7FF4DEADBEEF0001, FAR))


# ---- What isn't such a file at all

@whole_file("is empty, not a data file")
def empty_file(base, path):
    open(path, "wb").close()


@whole_file("is not an HDF5 file")
def text_file(base, path):
    with open(path, "w") as file:
        file.write("a letter to a friend\n" * 1000)


@whole_file("is not an HDF5 file")
def sparse_file_of_a_terabyte(base, path):
    with open(path, "wb") as file:
        file.truncate(2**40)


@whole_file(EITHER)
def sound_start_of_a_sparse_terabyte(base, path):
    shutil.copyfile(base, path)
    os.truncate(path, 2**40)


@whole_file("")
def hdf5_file_of_somebody_else(base, path):
    with h5py.File(path, "w") as file:
        file["x"] = numpy.arange(10)


@whole_file("begins with a user block, which no data file does")
def user_block_in_front(base, path):
    with open(base, "rb") as file, open(path, "wb") as forged:
        forged.write(bytes(512) + file.read())


@whole_file("begins with a user block, which no data file does")
def other_bytes_in_front(base, path):
    with open(base, "rb") as file, open(path, "wb") as forged:
        forged.write(b"#!/bin/sh\n".ljust(2048, b"#") + file.read())


OTHER_FORM = "is an HDF5 file in another form than that of HDF5 1.8"


@whole_file(OTHER_FORM)
def all_in_the_form_of_hdf5_1_6(base, path):
    """Nothing in it has a checksum of HDF5's."""
    with h5py.File(base) as file, h5py.File(path, "w", libver="earliest") as old:
        for name in file:
            file.copy(name, old)


@whole_file("/f/g/x: the array's group is in another form than that of HDF5 1.8")
def header_of_a_group_in_another_form(base, path):
    with h5py.File(base) as file:
        address = h5py.h5o.get_info(file["f/g"].id).addr
    with open(base, "rb") as file, open(path, "wb") as forged:
        data = file.read()
        assert data[address:address + 4] == b"OHDR"
        forged.write(data[:address] + b"\1\0\0\0" + data[address + 4:])


@whole_file("can't be opened: its root group is damaged")
def root_group_elsewhere(base, path):
    with open(base, "rb") as file, open(path, "wb") as forged:
        data = file.read()
        forged.write(data[:36] + (2**63 - 1).to_bytes(8, "little") + data[44:])


@whole_file(OTHER_FORM)
def addresses_from_elsewhere(base, path):
    with open(base, "rb") as file, open(path, "wb") as forged:
        data = file.read()
        forged.write(data[:12] + (512).to_bytes(8, "little") + data[20:])


@whole_file(OTHER_FORM)
def signature_alone(base, path):
    with open(path, "wb") as file:
        file.write(b"\x89HDF\r\n\x1a\n")


@whole_file("is not a regular file")
def fifo(base, path):
    os.mkfifo(path)


@whole_file("is not a regular file")
def folder(base, path):
    os.mkdir(path)


@whole_file("is not a regular file")
def link_to_zeros(base, path):
    os.symlink("/dev/zero", path)


@whole_file("")
def listening_socket(base, path):
    here = os.getcwd()
    os.chdir(os.path.dirname(path))  # the name of a socket may be 107 bytes long
    try:
        with socket.socket(socket.AF_UNIX) as listener:
            listener.bind(os.path.basename(path))
    finally:
        os.chdir(here)


@whole_file("symbolic links")
def link_to_itself(base, path):
    os.symlink(os.path.basename(path), path)


@whole_file("No such file")
def link_to_nowhere(base, path):
    os.symlink("nowhere", path)


# ---- Damage

def truncated(data):
    """(name, bytes) of the file cut off at every 512th byte."""
    for length in range(512, len(data), 512):
        yield "truncated_at_%d" % length, data[:length]


def flipped(data, stretch=4096):
    """(name, bytes) of the file with each byte of its beginning turned over, and with one bit of it."""
    for at in range(min(stretch, len(data))):
        for mask in (0xFF, 1 << at % 8):
            yield "byte_%d_by_%02x" % (at, mask), data[:at] + bytes([data[at] ^ mask]) + data[at + 1:]


def forge(base, path, make):
    """Make a copy of the sound file and let `make` forge it."""
    shutil.copyfile(base, path)
    file = h5py.File(path, "r+", libver=("v108", "latest"))
    try:
        make(file)
    finally:
        if file:
            file.close()


def make_all(base, folder):
    """Every forgery but the damaged ones; (name, path, what a reader must do with it)."""
    for name, (make, reason) in CASES.items():
        path = os.path.join(folder, name + ".h5")
        forge(base, path, make)
        yield name, path, reason
    for name, (make, reason) in WHOLE_FILES.items():
        path = os.path.join(folder, name + ".h5")
        make(base, path)
        yield name, path, reason


def make_seeds(base, folder, largest=12_000):
    """The forgeries that a fuzzer starts from: small regular files, one for each way to be wrong."""
    os.makedirs(folder, exist_ok=True)
    for _, path, _ in make_all(base, folder):
        if os.path.islink(path) or not os.path.isfile(path) or os.path.getsize(path) > largest:
            os.rmdir(path) if os.path.isdir(path) and not os.path.islink(path) else os.remove(path)
    for name in os.listdir(folder):
        if not name.endswith(".h5"):
            os.remove(os.path.join(folder, name))
    shutil.copyfile(base, os.path.join(folder, "sound.h5"))


if __name__ == "__main__":
    if sys.argv[1] == "--seeds":
        make_seeds(sys.argv[2], sys.argv[3])
    else:
        os.makedirs(sys.argv[2], exist_ok=True)
        for _ in make_all(sys.argv[1], sys.argv[2]):
            pass
