"""Compares the common types that a program prints with NumPy's promotion.

Usage: CommonTypeOracle.py <program that prints "a b common" lines>

NumPy knows no complex integers. Two types of which one is complex promote by their parts, and the result is
complex; where NumPy has the complex type too, both ways must agree.
"""

import subprocess
import sys

import numpy

REAL = {
    0x0001: "float64", 0x0002: "float32",
    0x0004: "int8", 0x0005: "int16", 0x0006: "int32", 0x0007: "int64",
    0x4003: "bool", 0x4004: "uint8", 0x4005: "uint16", 0x4006: "uint32", 0x4007: "uint64",
}
COMPLEX = {0x8001: "complex128", 0x8002: "complex64"}
COMPLEX_MARK = 0x8000
CODES = {numpy.dtype(name): code for code, name in {**REAL, **COMPLEX}.items()}


def is_number(code):
    return (code & ~COMPLEX_MARK) in REAL


def promoted(a, b):
    """The code that NumPy's rules give, 0 if there is none."""
    if a == b:
        return a
    if not is_number(a) or not is_number(b):
        return 0
    parts = numpy.promote_types(REAL[a & ~COMPLEX_MARK], REAL[b & ~COMPLEX_MARK])
    by_parts = CODES[parts] | ((a | b) & COMPLEX_MARK)
    known = {**REAL, **COMPLEX}
    if a in known and b in known:
        direct = CODES[numpy.promote_types(known[a], known[b])]
        assert direct == by_parts, (hex(a), hex(b))
    return by_parts


def main():
    printed = subprocess.run(sys.argv[1:], check=True, capture_output=True, text=True).stdout
    rows = [tuple(int(word) for word in line.split()) for line in printed.splitlines()]
    failures = [(a, b, common) for a, b, common in rows if common != promoted(a, b)]
    for a, b, common in failures:
        print(f"0x{a:04X} with 0x{b:04X} gave 0x{common:04X}, expected 0x{promoted(a, b):04X}")
    codes = {a for a, _, _ in rows}
    if len(codes) != 25 or len(set(rows)) != 25 * 25:
        print(f"expected all pairs of 25 types, got {len(rows)} lines of {len(codes)} types")
        return 1
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
