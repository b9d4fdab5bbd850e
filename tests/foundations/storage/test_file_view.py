"""A data file as other programs see it: every array under its readable path, as what it is.

Run with the path of storage_tool as the argument.
"""

import os
import subprocess
import sys
import tempfile
import unittest

import h5py
import numpy

import catalogue_file
from catalogue_file import Catalogue

TOOL = None

LIMITS = ["int8", "int16", "int32", "int64", "uint8", "uint16", "uint32", "uint64"]

# Link names of the awkward names of storage_tool, in its order; where the root differs, both.
NAMES = [
    b"%", b"V(out)%2FI(in)", b"100%25", b"%2E", b"%2E.", b"%2Ehidden", b"trailing%2F", b"n%00l", b"%ED%A0%80",
    b"x%ED%BF%BFy", "\U0001F600".encode(), "\u00fc".encode(), "\ufeffb".encode(), b"catalogue", b"catalogue-heap",
    b"two words", None,
]
ROOT_NAMES = {b"catalogue": b"%63atalogue", b"catalogue-heap": b"%63atalogue-heap"}

# A flag of an object header of version 2, by the HDF5 file format.
TIMES_ARE_STORED = 0x20


class FileView(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = tempfile.TemporaryDirectory()
        cls.path = os.path.join(cls.folder.name, "sample.h5")
        subprocess.run([TOOL, "sample", cls.path], check=True)
        cls.file = h5py.File(cls.path, "r")

    @classmethod
    def tearDownClass(cls):
        cls.file.close()
        cls.folder.cleanup()

    def expect_array(self, path, dtype, values):
        dataset = self.file[path]
        expected = numpy.array(values, dtype=dtype)
        self.assertEqual(dataset.dtype, expected.dtype, path)
        self.assertEqual(dataset.shape, expected.shape, path)
        self.assertEqual(dataset[()].tobytes(), expected.tobytes(), path)

    def test_real_numbers_have_their_own_types(self):
        for name in LIMITS:
            limits = numpy.iinfo(name)
            self.expect_array("/types/" + name, name, [limits.min, 0, 7, limits.max])
        for name, dtype in (("double", "f8"), ("float", "f4")):
            limits = numpy.finfo(dtype)
            self.expect_array("/types/" + name, dtype, [limits.min, 0, 7, limits.max])

    def test_truth_values_are_what_h5py_takes_for_bool(self):
        self.expect_array("/types/bool", bool, [True, False, True])
        self.assertEqual(h5py.check_enum_dtype(self.file["/types/bool"].id.get_type().dtype), None)
        kind = self.file["/types/bool"].id.get_type()
        self.assertEqual([kind.get_member_name(i) for i in (0, 1)], [b"FALSE", b"TRUE"])

    def test_floating_complex_numbers_are_read_as_complex(self):
        self.expect_array("/types/complex double", "c16", [1.5 - 2.5j, 1e300j])
        self.expect_array("/types/complex float", "c8", [1.5 - 2.5j])

    def test_other_complex_numbers_have_the_two_parts_as_fields(self):
        for name in LIMITS:
            limits = numpy.iinfo(name)
            dtype = numpy.dtype([("r", name), ("i", name)])
            self.expect_array("/types/complex " + name, dtype, [(limits.min, limits.max), (3, 4)])
        found = self.file["/types/complex bool"][:]
        self.assertEqual(found["r"].tolist(), [True, False])
        self.assertEqual(found["i"].tolist(), [False, True])
        self.assertEqual(found.dtype["r"], numpy.dtype(bool))

    def test_times_are_two_words(self):
        dtype = numpy.dtype([("word0", "u8"), ("word1", "u8")])
        for name in ("duration", "time point"):
            self.expect_array("/types/" + name, dtype, [(1, 2), (2**64 - 1, 2**63)])

    def test_texts_are_utf8_of_a_fixed_length(self):
        dataset = self.file["/types/text"]
        info = h5py.check_string_dtype(dataset.dtype)
        self.assertEqual((info.encoding, info.length), ("utf-8", 6))
        self.assertEqual(list(dataset.asstr()[:]), ["a", "\u00e4\u00f6\u00fc", "", "long"])

    def test_every_element_stands_at_its_own_place_whatever_the_ordering(self):
        self.expect_array("/shapes/row", "i4", numpy.arange(6).reshape(2, 3))
        self.expect_array("/shapes/column", "i4", numpy.arange(6).reshape((2, 3), order="F"))
        self.expect_array("/shapes/cube", "i4", numpy.arange(24).reshape((2, 3, 4), order="F"))
        self.expect_array("/shapes/single", "i4", [[0]])
        self.assertEqual(self.file["/shapes/texts"].asstr()[:].tolist(), [["00", "01"], ["10", "11"]])

    def test_an_empty_array_has_its_dimensions(self):
        self.assertEqual(self.file["/shapes/empty"].shape, (3, 0, 2))
        self.assertEqual(self.file["/shapes/empty"].dtype, numpy.dtype("f8"))

    def test_texts_that_cannot_be_padded_are_packed(self):
        data = bytes(self.file["/packed"][:])
        lengths = numpy.frombuffer(data[:32], dtype="<u8").tolist()
        self.assertEqual(lengths, [2, 2, 0, 3])
        self.assertEqual(data[32:], b"abc\0def")

    def check_names(self, group, root):
        links = {}
        for number, name in enumerate(NAMES):
            if name is None:
                name = next(link for link in group.id if link.startswith(b"lll"))
                self.assertEqual(len(name), 960 + 2 + 32)
                self.assertEqual(name[:962], b"l" * 960 + b"%#")
                self.assertRegex(name[962:], b"^[0-9a-f]{32}$")
            elif root:
                name = ROOT_NAMES.get(name, name)
            links[name] = number
        for name, number in links.items():
            self.assertEqual(h5py.h5d.open(group.id, name).shape, (1,), name)
            self.assertEqual(h5py.Dataset(h5py.h5d.open(group.id, name))[0], number, name)
        return set(links)

    def test_names_that_hdf5_cannot_take_are_encoded(self):
        self.assertEqual(set(self.file["/names"].id), self.check_names(self.file["/names"], root=False))

    def test_the_root_keeps_the_names_of_the_catalogue_free(self):
        links = self.check_names(self.file["/"], root=True)
        others = {b"catalogue", b"catalogue-heap", b"types", b"shapes", b"names", b"res", b"packed", b"blocks"}
        self.assertEqual(set(self.file["/"].id), links | others)

    def test_links_are_hard_and_marked_as_utf8(self):
        def check(group):
            for name in group.id:
                info = group.id.links.get_info(name)
                self.assertEqual((info.type, info.cset), (h5py.h5l.TYPE_HARD, h5py.h5t.CSET_UTF8), name)
                child = h5py.h5o.open(group.id, name)
                if isinstance(child, h5py.h5g.GroupID):
                    check(h5py.Group(child))
        for name in ("types", "names", "res"):
            check(self.file[name])

    def test_arrays_lie_in_one_piece_and_without_times(self):
        with open(self.path, "rb") as file:
            raw = file.read()

        def check(name, node):
            if isinstance(node, h5py.Dataset):
                self.assertEqual(node.chunks, None, name)
                self.assertEqual(node.external, None, name)
                self.assertEqual(node.id.get_create_plist().get_layout(), h5py.h5d.CONTIGUOUS, name)
            header = raw[h5py.h5o.get_info(node.id).addr:][:6]
            self.assertEqual(header[:5], b"OHDR\2", name)
            self.assertEqual(header[5] & TIMES_ARE_STORED, 0, name)
        check("/", self.file)
        self.file.visititems(check)

    def test_the_catalogue_tells_the_tree(self):
        catalogue = Catalogue(self.file)
        self.assertEqual(catalogue.name(0), b"Root")
        self.assertEqual(catalogue.rows[0]["parent"], catalogue_file.NO_PARENT)
        current = (b"res", b"run0", b"I")
        self.assertEqual(catalogue.type_name(catalogue.row_of(*current)), b"PropertyObject")

        data = catalogue.row_of(*current, b"Data")
        self.assertEqual(catalogue.rows[data][["flags", "kind", "form", "element", "ordering", "cell_array"]].item(),
                         (5, catalogue_file.VALUE, catalogue_file.ARRAY, 1, 0, 0))
        unit = catalogue.row_of(*current, b"Unit")
        self.assertEqual(catalogue.rows[unit]["form"], catalogue_file.TEXT)
        self.assertEqual(catalogue.value_bytes(unit), b"mA")
        scale = catalogue.rows[catalogue.row_of(*current, b"Scale")]
        self.assertEqual((scale["form"], scale["element"], scale["cell_array"]), (catalogue_file.INLINE, 0x8001, 1))
        self.assertEqual(numpy.frombuffer(scale["value"].tobytes(), dtype="c16")[0], 1 - 2j)
        nothing = catalogue.rows[catalogue.row_of(*current, b"Nothing")]
        self.assertEqual((nothing["form"], nothing["element"]), (catalogue_file.NOTHING, 0))
        axis = catalogue.row_of(*current, b"Axis")
        self.assertEqual(catalogue.rows[axis]["kind"], catalogue_file.REFERENCE)
        self.assertEqual(catalogue.texts(axis), [b"../..", b"", b"", b"", b""])
        column = catalogue.rows[catalogue.row_of(b"shapes", b"column")]
        self.assertEqual(column["ordering"], 1)

    def test_the_rows_stand_in_the_order_of_a_walk(self):
        catalogue = Catalogue(self.file)
        children = {}
        for i in range(1, len(catalogue.rows)):
            children.setdefault(int(catalogue.rows[i]["parent"]), []).append(i)
        order = []

        def walk(row):
            order.append(row)
            names = [catalogue.name(child).decode("utf-8", "surrogatepass").encode("utf-16-be", "surrogatepass")
                     for child in children.get(row, [])]
            self.assertEqual(names, sorted(names))
            self.assertEqual(len(names), len(set(names)))
            for child in children.get(row, []):
                walk(child)
        walk(0)
        self.assertEqual(order, list(range(len(catalogue.rows))))

    def test_the_catalogue_has_format_version_uid_and_checksum(self):
        catalogue = Catalogue(self.file)
        self.assertEqual(sorted(catalogue.attributes), ["checksum", "format", "uid", "version"])
        self.assertEqual(catalogue.attributes["format"], b"Orrery data file")
        self.assertEqual(catalogue.attributes["version"], 1)
        self.assertRegex(catalogue.attributes["uid"], rb"^[0-9a-f]{8}(-[0-9a-f]{4}){3}-[0-9a-f]{12}$")
        self.assertEqual(catalogue.attributes["checksum"], catalogue.own_checksum())

    def test_the_checksums_of_the_arrays_are_those_of_their_bytes(self):
        catalogue = Catalogue(self.file)
        for path in (("types", "double"), ("types", "text"), ("shapes", "cube"), ("packed",), ("blocks",)):
            dataset = self.file["/".join(path)]
            dimensions, layout, stored, sums = catalogue.array(catalogue.row_of(*(p.encode() for p in path)))
            with open(self.path, "rb") as raw:
                raw.seek(dataset.id.get_offset())
                data = raw.read(dataset.id.get_storage_size())
            self.assertEqual(stored, len(data), path)
            self.assertEqual(sums, catalogue_file.checksums(data), path)
            if layout != catalogue_file.PACKED:
                self.assertEqual(tuple(dimensions), dataset.shape, path)
        self.assertEqual(len(sums), 2)

    def test_the_uid_stays_with_the_place(self):
        with tempfile.TemporaryDirectory() as folder:
            path = os.path.join(folder, "small.h5")
            uids = []
            for command in ("small", "resave", "small"):
                subprocess.run([TOOL, command, path], check=True)
                with h5py.File(path, "r") as file:
                    uids.append(file["catalogue"].attrs["uid"])
        self.assertEqual(uids[0], uids[1])
        self.assertNotEqual(uids[1], uids[2], "a tree made anew is another file")

    def test_h5dump_shows_the_same(self):
        def dump(*arguments):
            done = subprocess.run(["h5dump", *arguments, self.path], check=True, capture_output=True, text=True)
            self.assertEqual(done.stderr, "")
            return done.stdout
        text = dump("-d", "/res/run0/I/Data")
        self.assertIn("DATATYPE  H5T_IEEE_F64LE", text)
        self.assertIn("DATASPACE  SIMPLE { ( 3 ) / ( 3 ) }", text)
        self.assertIn("(0): 0.1, 0.2, 0.4", text)
        text = dump("-d", "/types/complex double")
        self.assertIn('H5T_IEEE_F64LE "r";', text)
        self.assertIn('H5T_IEEE_F64LE "i";', text)
        text = dump("-d", "/types/bool")
        self.assertIn("(0): TRUE, FALSE, TRUE", text)
        text = dump("-d", "/shapes/column")
        self.assertIn("(0,0): 0, 2, 4,", text)
        self.assertIn("(1,0): 1, 3, 5", text)
        text = dump("-d", "/types/text")
        self.assertIn("CSET H5T_CSET_UTF8", text)
        self.assertIn("STRPAD H5T_STR_NULLPAD", text)
        text = dump("-H", "-p", "-d", "/shapes/cube")
        self.assertIn("CONTIGUOUS", text)


if __name__ == "__main__":
    TOOL = sys.argv.pop(1)
    unittest.main()
