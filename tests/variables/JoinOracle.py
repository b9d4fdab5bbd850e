"""Compares what joined and swept variables make of numbers with NumPy's concatenate and repeat.

Usage: JoinOracle.py <program that prints one read a line, as JoinTable.cpp tells>

NumPy knows no complex integers. Where one takes part, the real and the imaginary parts are joined each by
themselves, a real number having the imaginary part 0.
"""

import subprocess
import sys

import numpy as np

REAL = {
    0x0001: "float64", 0x0002: "float32",
    0x0004: "int8", 0x0005: "int16", 0x0006: "int32", 0x0007: "int64",
    0x4003: "bool", 0x4004: "uint8", 0x4005: "uint16", 0x4006: "uint32", 0x4007: "uint64",
}
COMPLEX = {0x8001: "complex128", 0x8002: "complex64"}
KNOWN = {**REAL, **COMPLEX}
COMPLEX_MARK = 0x8000


class Numbers:
    """A vector and the code of its type; the two parts of complex numbers stand in two columns."""

    def __init__(self, code, columns):
        self.code, self.columns = code, columns

    @staticmethod
    def read(text):
        code, _, digits = text.partition(":")
        code = int(code)
        parts = np.frombuffer(bytes.fromhex(digits), REAL[code & ~COMPLEX_MARK])
        return Numbers(code, parts.reshape(-1, 2 if code & COMPLEX_MARK else 1))

    def bytes(self):
        return np.ascontiguousarray(self.columns).tobytes()

    def known(self):
        """The vector as NumPy has it; none for complex integers."""
        return np.frombuffer(self.bytes(), KNOWN[self.code]) if self.code in KNOWN else None

    def with_imaginary_parts(self):
        if self.columns.shape[1] == 2:
            return self.columns
        return np.concatenate([self.columns, np.zeros_like(self.columns)], axis=1)


CODES = {np.dtype(name): code for code, name in KNOWN.items()}


def joined(a, b):
    if a.known() is not None and b.known() is not None:
        direct = np.concatenate([a.known(), b.known()])
        code = CODES[direct.dtype]
        parts = np.frombuffer(direct.tobytes(), REAL[code & ~COMPLEX_MARK])
        return Numbers(code, parts.reshape(-1, 2 if code & COMPLEX_MARK else 1))
    mark = (a.code | b.code) & COMPLEX_MARK
    columns = np.concatenate([a.with_imaginary_parts(), b.with_imaginary_parts()])
    return Numbers(CODES[columns.dtype] | mark, columns)


def expected(kind, start, end, words):
    if kind == "concat":
        members = [Numbers.read(word) for word in words]
        lengths = [len(member.columns) for member in members]
        end = end or sum(lengths)
        # Only the members that the run touches decide the type, from left to right.
        whole, at = None, 0
        for member, length in zip(members, lengths):
            low, high = max(start - at, 0), min(end - at, length)
            at += length
            if low < high:
                piece = Numbers(member.code, member.columns[low:high])
                whole = piece if whole is None else joined(whole, piece)
        return whole
    parameter = Numbers.read(words[-1])
    lengths = [int(word) for word in words[:-1]]
    return Numbers(parameter.code, np.repeat(parameter.columns, lengths, axis=0)[start:end])


def main():
    printed = subprocess.run(sys.argv[1:], check=True, capture_output=True, text=True).stdout
    counts = {"concat": 0, "sweep": 0}
    codes = set()
    failures = 0
    for line in printed.splitlines():
        question, _, answer = line.partition(" = ")
        kind, start, end, *words = question.split()
        wanted = expected(kind, int(start), int(end), words)
        got = Numbers.read(answer)
        counts[kind] += 1
        codes.add(int(words[-1].partition(":")[0]))
        if got.code != wanted.code or got.bytes() != wanted.bytes():
            failures += 1
            print(f"{question}\n  gave     {answer}\n  expected {wanted.code}:{wanted.bytes().hex()}")
    if len(codes) != 22 or counts["concat"] != 22 * 22 * 24 or counts["sweep"] < 22 * 40:
        print(f"expected reads of all pairs and triples of 22 types, got {counts} of {len(codes)} types")
        return 1
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
