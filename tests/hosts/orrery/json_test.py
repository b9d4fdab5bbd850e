#!/usr/bin/python3
"""Reads the program's JSON with Python's reader, and compares it with what h5py reads and with the program's tables.

usage: json_test.py ORRERY SOURCE_FOLDER [unittest arguments]
"""

import base64
import json
import os
import resource
import subprocess
import sys
import unittest

import h5py
import numpy as np

import command_test
from command_test import LOCALES, ODD_FILES, ORRERY, SAMPLE, SOURCES

VALUE_FILES = os.environ.get("ORRERY_VALUE_FILES", os.path.join(os.path.dirname(ODD_FILES), "orrery_value_files"))
AC_SAMPLE = os.path.join(SOURCES, "hosts/orrery/samples/rlc.raw")


def refuse(constant):
    raise ValueError(f"{constant} is no JSON")


def number(value):
    return complex(*map(float, value)) if isinstance(value, list) else float(value)


class JsonTest(command_test.CommandTest):
    def json(self, *arguments, **options):
        result = self.run_orrery(*arguments, "--json", **options)
        self.assertEqual((result.returncode, result.stderr.decode()), (0, ""), arguments)
        return json.loads(result.stdout.decode("utf-8"), parse_constant=refuse)  # strict in both

    def write_values(self):
        subprocess.run([VALUE_FILES, "v.h5"], cwd=self.folder, check=True)

    def shown(self, name, *options):
        return self.json("show", "v.h5", name, *options)

    def array(self, document):
        """The values as NumPy has them; a complex one is two numbers."""
        flat = np.array(document["values"], dtype=object)
        shape = document["shape"] + ([2] if document["elements"].startswith("complex") else [])
        self.assertEqual(list(flat.shape), shape)
        return np.vectorize(float, otypes=[float])(flat) if flat.size else flat.astype(float)


class ShowTest(JsonTest):
    def test_every_variable_is_what_h5py_reads(self):
        self.good("import", SAMPLE, "-o", "d.h5")
        self.good("import", AC_SAMPLE, "-o", "r.h5")
        compared = 0
        for file_name in ("d.h5", "r.h5"):
            nodes = self.json("ls", file_name)["nodes"]
            with h5py.File(self.path(file_name), "r") as file:
                for node in nodes:
                    if node["kind"] != "variable":
                        continue
                    document = self.json("show", file_name, node["path"])
                    stored = file[node["path"] + "/Data"]
                    self.assertEqual(document["path"], node["path"])
                    self.assertEqual(document["elements"], node["elements"])
                    self.assertEqual(document["units"], node["units"])
                    self.assertEqual([axis["path"] for axis in document["axes"]], node["axes"])
                    self.assertEqual(tuple(document["shape"]), stored.shape)
                    values = self.array(document)
                    if values.ndim > stored.ndim:
                        values = values[..., 0] + 1j * values[..., 1]
                    np.testing.assert_array_equal(values, stored[...])
                    compared += 1
        self.assertGreater(compared, 10)

    def test_the_axes_are_there_with_their_values_and_the_units_that_were_asked_for(self):
        self.good("import", SAMPLE, "-o", "d.h5")
        whole = self.json("show", "d.h5", "diode/dc1/i(vd)")
        part = self.json("show", "d.h5", "diode/dc1/i(vd)", "--range", "3:5", "--units", "mA")
        self.assertEqual(part["offsets"], {"begin": 3, "end": 5, "of": 201})
        self.assertEqual(part["units"]["label"], "mA")
        self.assertEqual(part["units"]["type"], "electric current")
        self.assertEqual((part["units"]["scale"], part["units"]["base"]), (0.001, "A"))
        np.testing.assert_allclose(part["values"], 1e3 * np.array(whole["values"][3:5]), rtol=1e-15)
        self.assertEqual(part["axes"][0]["values"], whole["axes"][0]["values"][3:5])
        self.assertEqual(part["axes"][0]["units"]["label"], "V")
        rows = self.good("show", "d.h5", "diode/dc1/i(vd)", "--csv").splitlines()[1:]
        self.assertEqual([[float(cell) for cell in row.split(",")] for row in rows],
                         [[i, x, y] for i, (x, y) in enumerate(zip(whole["axes"][0]["values"], whole["values"]))])
        single = self.json("show", "d.h5", "diode/dc1/i(vd)", "--at", "7")
        self.assertEqual((single["shape"], single["values"]), ([1], whole["values"][7:8]))

    def test_a_function_is_named(self):
        self.good("import", SAMPLE, "-o", "d.h5")
        document = self.json("show", "d.h5", "diode/dc1/i(vd)", "--function", "magnitude")
        stored = self.json("show", "d.h5", "diode/dc1/i(vd)")
        self.assertEqual(document["function"], "magnitude")
        self.assertNotIn("function", stored)
        self.assertEqual(document["values"], [abs(value) for value in stored["values"]])

    def test_whole_numbers_are_exact(self):
        self.write_values()
        for bits in (8, 16, 32, 64):
            half = 1 << (bits - 1)
            self.assertEqual(self.shown(f"int{bits}")["values"], [-half, 0, 1, half - 1])
            self.assertEqual(self.shown(f"uint{bits}")["values"], [0, 0, 1, 2 * half - 1])
        self.assertEqual(self.shown("beyond")["values"], [2**53 + 1])
        self.assertEqual(self.shown("bool")["values"], [True, False])
        self.assertEqual(self.shown("complex-int")["values"], [[-32768, 32767]])

    def test_floating_point_numbers_are_exact(self):
        self.write_values()
        largest = sys.float_info.max
        for environment in LOCALES:
            document = self.json("show", "v.h5", "double", environment=environment)
            self.assertEqual(document["values"], [-largest, 0, 1, largest])
        floats = np.array(self.shown("float")["values"], dtype=np.float32)
        self.assertEqual(floats.tolist(), np.array([0.1, 16777216, 1e-45], dtype=np.float32).tolist())
        text = self.good("show", "v.h5", "special", "--json")
        self.assertIn("    -0.0,\n    5e-324,\n    1e+22,\n    0.1\n", text)
        special = json.loads(text)["values"]
        self.assertEqual(special[:3], ["NaN", "Infinity", "-Infinity"])
        self.assertEqual(np.signbit(special[3]), True)
        self.assertEqual(self.shown("complex")["values"], [[1.5, -2], ["NaN", "Infinity"], [0, 1e-9]])
        self.assertEqual(np.float32(self.shown("complex-float")["values"][0][0]), np.float32(0.1))

    def test_values_are_nested_as_their_shape_says_in_either_ordering(self):
        self.write_values()
        for name, shape, ordering in (("cube", (2, 3, 4), "row-major"), ("row", (1, 24), "row-major"),
                                      ("column-major", (6, 4), "column-major")):
            document = self.shown(name)
            self.assertEqual((tuple(document["shape"]), document["ordering"]), (shape, ordering))
            np.testing.assert_array_equal(document["values"], np.arange(24).reshape(shape))
        self.assertEqual(self.shown("row", "--range", "2:4")["values"], [[2, 3]])
        self.assertEqual(self.shown("cube", "--range", "1:2")["shape"], [1, 3, 4])
        self.assertEqual(self.shown("cube", "--range", "1:1")["values"], [])
        self.assertEqual((self.shown("scalar")["shape"], self.shown("scalar")["values"]), ([1], [7.25]))
        self.assertEqual((self.shown("none")["shape"], self.shown("none")["values"]), ([0], []))
        self.assertEqual((self.shown("null")["shape"], self.shown("null")["elements"]), ([], "null"))
        matrix = self.shown("matrix")
        self.assertEqual((matrix["values"], matrix["axes"][0]["values"]), ([[1, 2], [3, 4], [5, 6]], [10, 20, 30]))

    def test_text_of_any_bytes(self):
        self.write_values()
        def coded(data):
            return {"base64": base64.b64encode(data).decode()}
        self.assertEqual(self.shown("text")["values"],
                         ['plain "\\/ \n\t', "nul\0x", "\x1b[31m\x7f", "\x9b 5n", "µ 𝄞 ü", coded(b"\xff\xfe"),
                          coded(b"\xed\xa0\x80"), coded(b"\xc0\x80"), coded(b"\xf4\x90\x80\x80"), coded(b"cut \xe2\x82"),
                          ""])
        raw = self.run_orrery("show", "v.h5", "text", "--json").stdout
        self.assertNotRegex(raw, rb"[\x00-\x09\x0b-\x1f\x7f]|\xc2[\x80-\x9f]")  # nothing steers a terminal
        self.assertEqual(self.shown("single")["values"], ["one"])
        self.assertEqual(self.shown("time")["values"], ["1:2"])
        result = self.run_orrery("show", b"\xff.h5", "x", "--json")
        self.assertEqual((result.returncode, result.stdout), (1, b""))

    def test_more_values_than_a_block_are_written_as_they_come(self):
        self.write_values()
        limit = 600 << 20
        if "LSAN_OPTIONS" in os.environ or "ASAN_OPTIONS" in os.environ:
            limit = resource.RLIM_INFINITY  # the address sanitizer reserves terabytes
        with open(self.path("long.json"), "wb") as out:
            subprocess.run([ORRERY, "show", "v.h5", "long", "--json"], cwd=self.folder, stdout=out, check=True,
                           preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_AS, (limit, limit)))
        with open(self.path("long.json"), encoding="utf-8") as file:
            document = json.load(file)
        self.assertEqual(document["shape"], [3_000_000])
        np.testing.assert_array_equal(document["values"], 0.25 + 0.5 * np.arange(3_000_000))

    def test_failures_are_one_line(self):
        self.write_values()
        self.assertEqual(self.fails(1, "show", "v.h5", "nowhere", "--json"),
                         "v.h5: nowhere: there is nothing of that name")
        self.assertEqual(self.fails(1, "show", "none.h5", "x", "--json"), "none.h5: No such file or directory")
        self.assertEqual(self.fails(1, "show", "v.h5", "double", "--json", "--at", "9"),
                         "v.h5: double: there is no offset 9; there are 4, from 0 to 3")
        self.assertEqual(self.fails(1, "ls", "none.h5", "--json"), "none.h5: No such file or directory")
        self.assertTrue(self.fails(1, "units", "--type", "size", "--json").startswith("there is no type of units"))
        self.assertIn("excludes", self.fails(2, "show", "v.h5", "double", "--json", "--csv"))

    def test_what_can_not_be_written_is_a_failure(self):
        self.write_values()
        for command in (["ls", "v.h5", "--json"], ["show", "v.h5", "long", "--json"], ["units", "--json"]):
            with open("/dev/full", "wb") as full:
                result = subprocess.run([ORRERY, *command], cwd=self.folder, stdout=full, stderr=subprocess.PIPE)
            self.assertEqual((result.returncode, result.stderr.count(b"\n")), (1, 1), result.stderr)
            self.assertRegex(result.stderr, rb"^orrery: .*standard output: No space left on device\n$")
            reader, writer = os.pipe()
            os.close(reader)
            result = subprocess.run([ORRERY, *command], cwd=self.folder, stdout=writer, stderr=subprocess.PIPE,
                                    restore_signals=False)  # a write fails then, instead of killing
            os.close(writer)
            self.assertEqual((result.returncode, result.stderr), (0, b""))  # its reader has gone
            result = subprocess.run([ORRERY, *command], cwd=self.folder, stderr=subprocess.PIPE,
                                    preexec_fn=lambda: os.close(1))
            self.assertEqual((result.returncode, result.stderr.count(b"\n")), (1, 1), result.stderr)
            self.assertRegex(result.stderr, rb"^orrery: .*standard output: Bad file descriptor\n$")


class LsTest(JsonTest):
    def nodes(self, *arguments):
        return {node["path"]: node for node in self.json("ls", *arguments)["nodes"]}

    def test_the_nodes_are_those_of_the_table(self):
        self.write_values()
        self.good("import", SAMPLE, "-o", "d.h5", "--sweep", "temperature=-40,0,27,85,125", "--sweep-units", "degC")
        for file_name in ("v.h5", "d.h5"):
            for options in ([], ["-a"]):
                table = self.good("ls", "-l", *options, file_name).splitlines()[1:]
                nodes = self.json("ls", *options, file_name)["nodes"]
                self.assertEqual(len(table), len(nodes))
                for line, node in zip(table, nodes):
                    depth = node["path"].count("/") - 1
                    self.assertEqual(len(line) - len(line.lstrip(" ")), 2 * depth)
                    self.assertIn(f" {node['type']} ", line)
                    if "elements" in node:
                        self.assertIn(f" {node['elements']} ", line + " ")

    def test_a_node_tells_all_about_its_values(self):
        self.write_values()
        nodes = self.nodes("-a", "v.h5")
        self.assertEqual({key: nodes["/cube"][key] for key in ("kind", "type", "flags", "shape", "elements", "ordering",
                                                               "count", "units", "axes")},
                         {"kind": "variable", "type": "ExplVar", "flags": ["saved"], "shape": [2, 3, 4],
                          "elements": "double", "ordering": "row-major", "count": 24, "units": None, "axes": []})
        self.assertEqual(nodes["/column-major"]["ordering"], "column-major")
        self.assertEqual(nodes["/matrix"]["axes"], ["/x"])
        self.assertEqual(nodes["/matrix"]["units"]["dimensions"], "m^2*kg/(s^3*A)")
        self.assertEqual(nodes["/hidden"]["flags"], ["read-only", "hidden", "saved"])
        self.assertEqual((nodes["/single"]["kind"], nodes["/single"]["value"], nodes["/single"]["cell_array"]),
                         ("value", "one", False))
        self.assertEqual((nodes["/scalar"]["value"], nodes["/scalar"]["count"]), (7.25, 1))
        self.assertNotIn("value", nodes["/cube"])
        self.assertEqual(nodes["/long"]["shape"], [3_000_000])

    def test_where_references_lead(self):
        self.write_values()
        nodes = self.nodes("-a", "v.h5")
        self.assertEqual(nodes["/good"]["target"], {"path": "../cube", "resolved": "/cube"})
        self.assertEqual(nodes["/dead"]["target"], {"path": "../nothing", "resolved": None})
        self.assertEqual(nodes["/unset"]["target"], {"path": "", "resolved": None})
        far = nodes["/far"]["target"]
        self.assertEqual((os.path.basename(far["file"]), far["file_type"], far["path"], far["resolved"]),
                         ("none.h5", "HDF5", "/x", None))

    def test_every_path_leads_show_to_its_node(self):
        self.write_values()
        paths = [node["path"] for node in self.json("ls", "v.h5")["nodes"] if node["kind"] == "variable"]
        self.assertIn("/it's (50%25) \"big\" & $HOME", paths)
        self.assertIn("/half\x01", paths)
        self.assertIn("/a b%2Fc'd/q\"$x", paths)
        for path in paths:
            self.assertEqual(self.json("show", "v.h5", path)["path"], path)

    def test_sweeps_and_odd_trees(self):
        subprocess.run([ODD_FILES, "odd.h5"], cwd=self.folder, check=True)
        nodes = self.nodes("odd.h5")
        self.assertEqual((nodes["/sweep"]["members"], nodes["/sweep"]["parameter"]), (2, "/pair"))
        self.assertEqual(nodes["/bare-sweep"]["parameter"], None)
        self.assertEqual(nodes["/lost"]["axes"], [None])
        self.assertEqual(len(nodes["/many"]["axes"]), 1000)
        self.assertEqual(nodes["/unit-is-strange"]["units"]["label"], "\x1b[31m\n")
        self.assertEqual(nodes["/largest"]["shape"], [10**19])
        self.assertGreater(len(self.nodes("-a", "odd.h5")), len(nodes))


class UnitsTest(JsonTest):
    def test_all_are_those_of_the_table(self):
        for environment in LOCALES:
            types = self.json("units", environment=environment)["types"]
            text = self.good("units", environment=environment)
            self.assertEqual([f"{type_['name']} ({type_['base']})" for type_ in types],
                             [line for line in text.splitlines() if line and not line.startswith(" ")])
            self.assertEqual(sum(len(type_["units"]) for type_ in types),
                             sum(line.startswith(" ") for line in text.splitlines()))

    def test_the_numbers_convert_as_the_program_does(self):
        units = {name: unit for type_ in self.json("units")["types"] for unit in type_["units"] for name in unit["names"]}
        self.assertEqual(units["degC"]["names"], ["°C", "Celsius", "degC"])
        self.assertEqual(units["in"]["definition"], "1 in = 0.0254 m")
        for value, unit, base in ((5, "in", "m"), (100, "°C", "K"), (70, "°F", "K"), (20, "dBm", "W")):
            numbers = units[unit]
            linear = value if numbers["log_scale"] is None else 10 ** (value / numbers["log_scale"])
            converted = float(self.good("convert", "--digits", "17", str(value), unit, base).split()[0])
            self.assertAlmostEqual(numbers["scale"] * linear + numbers["offset"], converted, places=12)

    def test_one_type_and_those_like_one(self):
        (type_,) = self.json("units", "--type", "magnetic flux")["types"]
        self.assertEqual((type_["name"], type_["base"], type_["dimensions"]),
                         ("magnetic flux", "Wb", "m^2*kg/(s^2*A)"))
        self.assertEqual([unit["names"] for unit in type_["units"]], [["Mx"], ["Wb"]])
        (like,) = self.json("units", "--like", "in")["types"]
        self.assertIn("in", [unit["names"][0] for unit in like["units"]])


if __name__ == "__main__":
    unittest.main()
