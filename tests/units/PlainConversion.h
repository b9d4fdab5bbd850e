#pragma once

#include "units/Units.h"

#include <gtest/gtest.h>

#include <complex>
#include <cstddef>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

namespace Orrery::ConversionTest {
/// The conversion of one number step by step, every rounding where the order of operations puts it.
///
/// Errors: none; it doesn't ask whether the units fit each other.
double plainConversion(const Units& source, const Units& target, double value);
std::complex<double> plainConversion(const Units& source, const Units& target, std::complex<double> value);

/// Whether both are the same double to the last bit and the sign of zero; any NaN is any other.
::testing::AssertionResult sameBits(double expected, double actual);
::testing::AssertionResult sameBits(std::complex<double> expected, std::complex<double> actual);
::testing::AssertionResult sameBits(const std::vector<double>& expected, const std::vector<double>& actual);
::testing::AssertionResult sameBits(const std::vector<std::complex<double>>& expected,
                                    const std::vector<std::complex<double>>& actual);

/// Zeros, subnormals, infinities, NaN, the ends of the range, what surrounds the clamp before a logarithm.
const std::vector<double>& awkwardValues();

/// The awkward values and then `count` random ones: of everyday size, of any size, and of any bits.
std::vector<double> conversionValues(std::mt19937_64& random, std::size_t count);

/// A number in [0, 1).
double randomFraction(std::mt19937_64& random);

struct UnitPair
{
    std::string name; ///< "in to mil"
    Units source;
    Units target;
};

/// Every ordered pair of commensurable units of the built-in catalogue, each unit with itself included.
const std::vector<UnitPair>& commensurablePairs();
} // namespace Orrery::ConversionTest
