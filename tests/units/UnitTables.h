#pragma once

#include "units/Dimensions.h"

#include <QString>

#include <array>
#include <ostream>
#include <vector>

namespace Orrery {
/// GoogleTest shows dimensions by their SI text.
void PrintTo(const Dimensions& dimensions, std::ostream* out);

namespace UnitsTest {

/// m, kg, s, A, K, mol, cd, rad, sr.
using Exponents = std::array<int, 9>;

Dimensions toDimensions(const Exponents& exponents);

/// One of the types that are there when the library has been loaded.
struct TypeRow
{
    const char* member;
    const UnitType* type;
    const char* name;
    const char* reference; ///< in UTF-8
    Exponents exponents;
};

/// All of them, in the order of the registry.
const std::vector<TypeRow>& typeRows();

struct PrefixRow
{
    QString symbol;
    int exponent;
};

const std::vector<PrefixRow>& prefixRows();

struct SymbolRow
{
    QString symbol;
    Exponents exponents;
    double scale;
};

const std::vector<SymbolRow>& symbolRows();

} // namespace UnitsTest
} // namespace Orrery
