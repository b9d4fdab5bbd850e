#include "tests/units/PlainConversion.h"

#include "tests/units/CatalogueRows.h"

#include <cmath>
#include <cstdio>
#include <cstring>
#include <limits>

namespace Orrery::ConversionTest {
namespace {
std::uint64_t bitsOf(double value)
{
    std::uint64_t bits = 0;
    std::memcpy(&bits, &value, sizeof bits);
    return bits;
}

double fromBits(std::uint64_t bits)
{
    double value = 0.0;
    std::memcpy(&value, &bits, sizeof value);
    return value;
}

std::string exactText(double value)
{
    char text[64];
    std::snprintf(text, sizeof text, "%.17g (%a)", value, value);
    return text;
}

// No compiler may make another function of it: clang takes a pow of a constant 10 for exp10, whose last bit differs.
double powerOfTen(double exponent)
{
    const volatile double ten = 10.0;
    return std::pow(ten, exponent);
}

template <class Number>
::testing::AssertionResult sameLists(const std::vector<Number>& expected, const std::vector<Number>& actual)
{
    if (expected.size() != actual.size())
        return ::testing::AssertionFailure() << actual.size() << " elements instead of " << expected.size();
    for (std::size_t i = 0; i < expected.size(); ++i)
        if (const auto same = sameBits(expected[i], actual[i]); !same)
            return ::testing::AssertionFailure() << "element " << i << ": " << same.message();
    return ::testing::AssertionSuccess();
}
} // namespace

double plainConversion(const Units& source, const Units& target, double value)
{
    double x = value;
    if (source.GetLogScale() != 0.0) {
        const double exponent = value / source.GetLogScale();
        x = powerOfTen(exponent);
    }

    x = x * source.GetScale();
    x = x + source.GetOffset();

    x = x - target.GetOffset();
    x = x / target.GetScale();

    if (target.GetLogScale() != 0.0) {
        if (x < 1e-300)
            x = 1e-300;
        x = std::log10(x);
        x = x * target.GetLogScale();
    }
    return x;
}

std::complex<double> plainConversion(const Units& source, const Units& target, std::complex<double> value)
{
    return {plainConversion(source, target, value.real()), plainConversion(source, target, value.imag())};
}

::testing::AssertionResult sameBits(double expected, double actual)
{
    if (bitsOf(expected) == bitsOf(actual) || (std::isnan(expected) && std::isnan(actual)))
        return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << exactText(actual) << " instead of " << exactText(expected);
}

::testing::AssertionResult sameBits(std::complex<double> expected, std::complex<double> actual)
{
    if (const auto real = sameBits(expected.real(), actual.real()); !real)
        return ::testing::AssertionFailure() << "real part: " << real.message();
    if (const auto imaginary = sameBits(expected.imag(), actual.imag()); !imaginary)
        return ::testing::AssertionFailure() << "imaginary part: " << imaginary.message();
    return ::testing::AssertionSuccess();
}

::testing::AssertionResult sameBits(const std::vector<double>& expected, const std::vector<double>& actual)
{
    return sameLists(expected, actual);
}

::testing::AssertionResult sameBits(const std::vector<std::complex<double>>& expected,
                                    const std::vector<std::complex<double>>& actual)
{
    return sameLists(expected, actual);
}

const std::vector<double>& awkwardValues()
{
    using Limits = std::numeric_limits<double>;
    static const std::vector<double> values = {
        0.0,
        -0.0,
        1.0,
        -1.0,
        10.0,
        0.1,
        -0.1,
        100.0,
        -3000.0,
        -3001.0,
        -3240.0,
        3080.0,
        3090.0,
        -6000.0,
        6170.0,
        -300.0,
        -459.67,
        -273.15,
        255.37,
        1e-300,
        -1e-300,
        9e-301,
        1.1e-300,
        1e-297,
        1e-303,
        1e300,
        -1e300,
        1e308,
        -1e308,
        Limits::max(),
        Limits::lowest(),
        Limits::min(),
        -Limits::min(),
        Limits::denorm_min(),
        -Limits::denorm_min(),
        1e-310,
        -1e-310,
        Limits::infinity(),
        -Limits::infinity(),
        Limits::quiet_NaN(),
        -Limits::quiet_NaN(),
        Limits::epsilon(),
        1.0 + Limits::epsilon(),
    };
    return values;
}

double randomFraction(std::mt19937_64& random)
{
    return static_cast<double>(random() >> 11) * 0x1p-53;
}

std::vector<double> conversionValues(std::mt19937_64& random, std::size_t count)
{
    std::vector<double> values = awkwardValues();
    for (std::size_t i = 0; i < count; ++i) {
        const double everyday = 2000.0 * randomFraction(random) - 1000.0;
        if (i % 3 == 0)
            values.push_back(everyday);
        else if (i % 3 == 1)
            values.push_back(std::ldexp(everyday, static_cast<int>(random() % 160) - 80));
        else
            values.push_back(fromBits(random()));
    }
    return values;
}

const std::vector<UnitPair>& commensurablePairs()
{
    static const std::vector<UnitPair> pairs = [] {
        std::vector<UnitPair> made;
        for (const auto& source : CatalogueTest::catalogueRows())
            for (const auto& target : CatalogueTest::catalogueRows())
                if (source.type->GetDimensions() == target.type->GetDimensions())
                    made.push_back({source.key.toStdString() + " to " + target.key.toStdString(),
                                    CatalogueTest::catalogueUnit(source.key.toUtf8().constData()),
                                    CatalogueTest::catalogueUnit(target.key.toUtf8().constData())});
        return made;
    }();
    return pairs;
}
} // namespace Orrery::ConversionTest
