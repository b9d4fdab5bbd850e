"""Reads and forges data files, from the description of the format alone (docs/file-format.md)."""

import ctypes
import struct

import h5py
import numpy

BLOCK = 4 * 1024 * 1024
NO_PARENT = 0xFFFFFFFF

FOLDER, VALUE, REFERENCE = 0, 1, 2
NOTHING, INLINE, TEXT, ARRAY, REFERENCE_RECORD = 0, 1, 2, 3, 4
NO_DATASET, PLAIN, PADDED, PACKED, COMPRESSED, POOLED = 0, 1, 2, 3, 4, 5

_xxhash = ctypes.CDLL("libxxhash.so.0")
_xxhash.XXH3_64bits.restype = ctypes.c_uint64
_xxhash.XXH3_64bits.argtypes = [ctypes.c_char_p, ctypes.c_size_t]


def checksum(data):
    return _xxhash.XXH3_64bits(data, len(data))


def checksums(data):
    return [checksum(data[at:at + BLOCK]) for at in range(0, len(data), BLOCK)]


def words(*numbers):
    return struct.pack("<%dQ" % len(numbers), *numbers)


def array_record(dimensions, layout, stored_bytes, sums):
    return words(len(dimensions), *dimensions, layout, stored_bytes, len(sums), *sums)


class Catalogue:
    """The table and the heap of an open h5py.File. After a change, store() puts them back with a right checksum."""

    def __init__(self, file):
        self.file = file
        table = file["catalogue"]
        self.attributes = {name: table.attrs[name] for name in table.attrs}
        self.rows = table[:]
        self.heap = bytes(file["catalogue-heap"][:])

    def text(self, offset, size):
        return self.heap[int(offset):int(offset) + int(size)]

    def name(self, row):
        return self.text(self.rows[row]["name"], self.rows[row]["name_size"])

    def type_name(self, row):
        return self.text(self.rows[row]["type"], self.rows[row]["type_size"])

    def row_of(self, *path):
        """The row at which one arrives from the root by these names (bytes)."""
        at = 0
        for name in path:
            children = [i for i in range(1, len(self.rows)) if self.rows[i]["parent"] == at and self.name(i) == name]
            if len(children) != 1:
                raise KeyError(path)
            at = children[0]
        return at

    def value_bytes(self, row):
        offset, size = self.rows[row]["value"]
        return self.text(offset, size)

    def array(self, row):
        """(dimensions, layout, stored bytes, checksums) of an array's row."""
        record = self.value_bytes(row)
        numbers = list(struct.unpack("<%dQ" % (len(record) // 8), record))
        rank = numbers[0]
        dimensions, (layout, stored), rest = numbers[1:1 + rank], numbers[1 + rank:3 + rank], numbers[3 + rank:]
        if layout == POOLED:
            rest = rest[1:]  # where the array begins in the pool
        count, sums = rest[0], rest[1:]
        if len(sums) != count:
            raise ValueError("the record's length doesn't fit its number of checksums")
        return dimensions, layout, stored, sums

    def texts(self, row):
        """The five texts of a reference's row."""
        record, found = self.value_bytes(row), []
        while record:
            size, = struct.unpack_from("<Q", record)
            found.append(record[8:8 + size])
            record = record[8 + size:]
        return found

    def own_checksum(self):
        version = struct.pack("<I", int(self.attributes["version"]))
        return checksum(version + bytes(self.attributes["uid"]) + self.rows.tobytes() + self.heap)

    def append(self, data):
        """Put bytes at the end of the heap; answers the two words that point to them."""
        offset = len(self.heap)
        self.heap += data
        return offset, len(data)

    def set_array(self, row, dimensions, layout, stored_bytes, sums):
        self.rows[row]["value"] = self.append(array_record(dimensions, layout, stored_bytes, sums))

    def store(self):
        """Write table and heap as new datasets of the very same types, with the checksum that they have now."""
        table_type = self.file["catalogue"].id.get_type()
        heap_type = self.file["catalogue-heap"].id.get_type()
        attribute_types = {name: h5py.h5a.open(self.file["catalogue"].id, name.encode()).get_type()
                           for name in self.attributes}
        del self.file["catalogue"]
        del self.file["catalogue-heap"]
        heap = numpy.frombuffer(self.heap, dtype="u1")
        _make_dataset(self.file, b"catalogue-heap", heap_type, heap)
        table = _make_dataset(self.file, b"catalogue", table_type, self.rows)
        self.attributes["checksum"] = self.own_checksum()
        for name, kind in attribute_types.items():
            attribute = h5py.h5a.create(table, name.encode(), kind, h5py.h5s.create(h5py.h5s.SCALAR))
            if kind.get_class() == h5py.h5t.STRING:
                attribute.write(numpy.array(self.attributes[name], dtype="S%d" % kind.get_size()), mtype=kind)
            else:
                attribute.write(numpy.array(self.attributes[name], dtype=kind.dtype))


def _make_dataset(file, name, kind, data):
    creation = h5py.h5p.create(h5py.h5p.DATASET_CREATE)
    creation.set_layout(h5py.h5d.CONTIGUOUS)
    creation.set_fill_time(h5py.h5d.FILL_TIME_NEVER)
    dataset = h5py.h5d.create(file.id, name, kind, h5py.h5s.create_simple((len(data),)), creation)
    if len(data):
        dataset.write(h5py.h5s.ALL, h5py.h5s.ALL, numpy.ascontiguousarray(data), mtype=kind)
    return dataset
