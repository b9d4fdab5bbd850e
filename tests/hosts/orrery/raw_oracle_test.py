#!/usr/bin/python3
"""Compares what the program makes of real simulator output with readings that share none of its code: NumPy's of
the raw file, and h5py's of the data file.

usage: raw_oracle_test.py ORRERY SOURCE_FOLDER
"""

import os
import subprocess
import sys
import tempfile
import unittest

import h5py
import numpy as np

ORRERY = os.path.abspath(sys.argv.pop(1))
SOURCES = os.path.abspath(sys.argv.pop(1))
FILES = [os.path.join(SOURCES, "hosts/orrery/samples/diode.raw")]
DATA = os.path.join(SOURCES, "tests/hosts/orrery/data")
FILES += sorted(os.path.join(DATA, name) for name in os.listdir(DATA) if name.endswith(".raw"))
KINDS = {"DC transfer characteristic": "dc", "AC Analysis": "ac", "Transient Analysis": "tran",
         "Operating Point": "op"}


def read_header(content, at):
    """The header from `at` on: its lines by key, the variables, how the values are written, and where."""
    header, variables = {}, []
    while True:
        end = content.index(b"\n", at)
        line = content[at:end].decode()
        at = end + 1
        if line in ("Binary:", "Values:"):
            return header, variables, line, at
        if line.startswith("\t"):
            variables.append(line.split())
        elif line:
            key, _, value = line.partition(":")
            header[key] = value.strip()


def read_values(content, at, binary, lengths, points, is_complex, padded):
    """The vectors whose values begin at `at`, and where they end."""
    type_ = complex if is_complex else float
    vectors = [[] for _ in lengths]
    words = None
    if not binary:
        stop = content.find(b"Title:", at)
        words = iter(content[at:stop if stop >= 0 else None].split())
    for point in range(points):
        if words:
            assert int(next(words)) == point
        for vector, length in zip(vectors, lengths):
            if not padded and point >= length:
                continue
            if words:
                parts = [float(part) for part in next(words).split(b",")]
                value = complex(*parts) if is_complex else parts[0]
            else:
                value = np.frombuffer(content, type_, 1, at)[0]
                at += np.dtype(type_).itemsize
            if point < length:
                vector.append(value)
    return [np.array(vector, type_) for vector in vectors], (stop if stop >= 0 else len(content)) if words else at


def read_raw(path):
    with open(path, "rb") as file:
        content = file.read()
    at, plots = 0, []
    while at < len(content):
        header, variables, kind, at = read_header(content, at)
        points = int(header["No. Points"])
        default = [int(size) for size in header.get("Dimensions", header["No. Points"]).split(",")]
        shapes = []
        for variable in variables:
            own = [word[5:] for word in variable[3:] if word.startswith("dims=")]
            shapes.append([int(size) for size in own[0].split(",")] if own else default)
        flags = header["Flags"].split()
        vectors, at = read_values(content, at, kind == "Binary:", [int(np.prod(shape)) for shape in shapes], points,
                                  "complex" in flags, "unpadded" not in flags)
        plots.append((header, {variable[1]: vector.reshape(shape)
                               for variable, vector, shape in zip(variables, vectors, shapes)}))
    return plots


def as_numpy(data):
    if data.dtype.names:
        return data["r"] + 1j * data["i"]
    return data


class OracleTest(unittest.TestCase):
    def test_there_are_files(self):
        self.assertGreaterEqual(len(FILES), 9)

    def test_every_value_of_every_sample(self):
        for path in FILES:
            with self.subTest(os.path.basename(path)), tempfile.TemporaryDirectory() as folder:
                output = os.path.join(folder, "out.h5")
                subprocess.run([ORRERY, "import", path, "-o", output], check=True)
                self.compare(path, output)

    def compare(self, path, output):
        plots = read_raw(path)
        self.assertGreater(len(plots), 0)
        numbers = {}
        with h5py.File(output, "r") as file:
            for header, vectors in plots:
                kind = KINDS[header["Plotname"]]
                numbers[kind] = numbers.get(kind, 0) + 1
                folder = file[f"{os.path.splitext(os.path.basename(path))[0]}/{kind}{numbers[kind]}"]
                self.assertEqual({name for name in folder}, set(vectors) - self.single(folder, vectors))
                for name, expected in vectors.items():
                    if name in folder:
                        self.compare_vector(as_numpy(folder[name]["Data"][()]), expected)
                    self.compare_shown(output, f"{folder.name}/{name}", expected)

    def single(self, folder, vectors):
        """Vectors of one value may stand in the catalogue instead of a dataset."""
        return {name for name, vector in vectors.items() if vector.size == 1 and name not in folder}

    def compare_vector(self, actual, expected):
        self.assertEqual(actual.dtype, expected.dtype)
        self.assertEqual(actual.shape, expected.shape)
        # text has no NaN payload, and its sign is lost in Python's float(); everything else is bit by bit
        self.assertTrue(np.array_equal(np.isnan(actual), np.isnan(expected)))
        real = ~np.isnan(expected)
        self.assertEqual(actual[real].tobytes(), expected[real].tobytes())

    def compare_shown(self, output, path, expected):
        result = subprocess.run([ORRERY, "show", output, path, "--csv"], check=True, capture_output=True, text=True)
        rows = [[float(field) for field in line.split(",")] for line in result.stdout.splitlines()[1:]]
        parts = 2 if np.iscomplexobj(expected) else 1
        columns = parts * expected.size // len(rows)  # behind the offset and the axis
        shown = np.array([row[-columns:] for row in rows])
        if parts == 2:
            shown = shown[:, 0::2] + 1j * shown[:, 1::2]
        self.compare_vector(shown.astype(expected.dtype).reshape(expected.shape), expected)


if __name__ == "__main__":
    unittest.main()
