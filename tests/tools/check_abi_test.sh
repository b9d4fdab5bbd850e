#!/usr/bin/env bash
# Tests tools/check-abi on a small library. Arguments: the compiler, the program.
set -euo pipefail
compiler=$1
check_abi=$2
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cd "$folder"

# build <SONAME> <C++>: the library, with what hosts never link with beside the given text.
build() {
    cat >try.cpp <<EOF
#include <vector>
#define EXPORT __attribute__((visibility("default")))
namespace Orrery {
struct EXPORT Kept { virtual ~Kept(); int number() const; };
Kept::~Kept() = default;
template <class T> struct EXPORT Pattern { T twice(T value) { return value + value; } };
$2
}
EOF
    "$compiler" -std=c++17 -O0 -shared -fPIC -fvisibility=hidden -Wl,-soname,"$1" -o libtry.so try.cpp
}

check() { "$check_abi" --build . --lists lists try "$@" >output 2>&1; }
fail() { echo "$1" >&2; cat output >&2; exit 1; }
expect_same() { check || fail "$1"; }
expect_code() { # code, what the output has, the case
    local code=0
    check || code=$?
    [ "$code" -eq "$1" ] && grep -qF -- "$2" output || fail "$3 (exit code $code)"
}

whole='EXPORT int first() { return 1; } EXPORT int second() { return 2; } template struct Pattern<int>;
       int Kept::number() const { return 3; }'

build libtry.so.1 "$whole"
expect_code 2 "there is no lists/try.symbols" "a missing list must not pass"
check --update || fail "--update must write the list"
grep -qx '# libtry.so.1' lists/try.symbols || fail "the list must begin with the SONAME"
grep -qx _ZN6Orrery5firstEv lists/try.symbols || fail "the list must have a function"
grep -qx _ZTVN6Orrery4KeptE lists/try.symbols || fail "the list must have a vtable"
grep -qx _ZN6Orrery7PatternIiE5twiceEi lists/try.symbols || fail "the list must have an explicit instantiation"
expect_same "the library of the list must pass"

build libtry.so.1 "$whole int hidden() { return 4; }"
expect_same "what is hidden isn't exported"

build libtry.so.1 "$whole EXPORT inline auto grown() { std::vector<int> v; v.push_back(1); return v.size(); }"
expect_same "an inline function that nobody calls isn't there, nor what it would use of the standard library"

build libtry.so.1 "int use(std::vector<int>& v) { v.push_back(1); return 1; } $whole"
nm -D --defined-only libtry.so | grep -q ' W _ZNSt6vector' || fail "this library must export parts of the standard library"
expect_same "weak parts of the standard library don't count"

build libtry.so.1 "${whole/EXPORT int second() \{ return 2; \}/}"
expect_code 1 "gone _ZN6Orrery6secondEv" "a function that is gone must fail"
grep -qF 'Orrery::second()' output || fail "a symbol must be told readably"
grep -qF -- '--update' output || fail "a failure must say what to do if it is meant"
! grep -qE '^ +(gone|new) .*first' output || fail "what has stayed isn't told"

build libtry.so.1 "${whole/template struct Pattern<int>;/}"
expect_code 1 "gone _ZN6Orrery7PatternIiE5twiceEi" "an explicit instantiation that is gone must fail"

build libtry.so.1 "$whole EXPORT int third() { return 3; }"
expect_code 1 "new  _ZN6Orrery5thirdEv" "a function that is new must fail"
! grep -qE '^ +gone ' output || fail "an addition takes nothing away"

build libtry.so.1 "${whole/int first()/int first(int)}"
expect_code 1 "gone _ZN6Orrery5firstEv" "another parameter is another function: the old one is gone"
grep -qF "new  _ZN6Orrery5firstEi" output || fail "another parameter is another function: the new one is new"
check --update || fail "--update must take a change that is meant"
expect_same "after --update the changed library must pass"

build libtry.so.2 "${whole/int first()/int first(int)}"
expect_code 1 "gone # libtry.so.1" "another SONAME must fail"

rm libtry.so
expect_code 2 "build it first" "a missing library must not pass"
