#include "foundations/variant/VariantOperations.h"

#include "tests/support/CaseName.h"
#include "tests/support/ElementTypes.h"
#include "tests/support/Failures.h"
#include "tests/support/RandomSeed.h"
#include "tests/support/Variants.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <charconv>
#include <clocale>
#include <cmath>
#include <cstring>
#include <initializer_list>
#include <limits>
#include <locale>
#include <optional>

namespace Brindle::Quay {
using namespace TestSupport;
using ::testing::ElementsAre;

namespace {
constexpr auto columnMajor = DataOrdering::ColumnMajor;

// One number of any numeric type. A long double of 64 fraction bits holds every 64-bit integer and every
// double exactly, so the model below rounds exactly once.
static_assert(std::numeric_limits<long double>::digits >= 64);

struct Number
{
    long double real = 0, imag = 0;
};

struct Range
{
    long double lowest, highest;
};

Range rangeOf(std::uint16_t partCode)
{
    const int width = 8 << ((partCode & 15) - 4);
    if (partCode & 0x4000)
        return {0, std::ldexp(1.0L, width) - 1};
    return {-std::ldexp(1.0L, width - 1), std::ldexp(1.0L, width - 1) - 1};
}

// The code of the parts of a complex type: the complex mark taken off.
std::uint16_t partCode(std::uint16_t code)
{
    return static_cast<std::uint16_t>(code & 0x7FFF);
}

template <class Floating>
std::optional<long double> roundedTo(long double value)
{
    const bool fits = !std::isfinite(value) || std::fabs(value) <= std::numeric_limits<Floating>::max();
    return fits ? std::optional<long double>(static_cast<Floating>(value)) : std::nullopt;
}

// What one part becomes in a type, or nothing when it doesn't fit.
std::optional<long double> converted(long double value, const ElementRow& target)
{
    switch (target.kind) {
    case ElementKind::Boolean:
        return value != 0 ? 1.0L : 0.0L;
    case ElementKind::Floating:
        return (target.code & 15) == 1 ? roundedTo<double>(value) : roundedTo<float>(value);
    case ElementKind::Integer: {
        const Range range = rangeOf(partCode(target.code));
        const long double cut = std::trunc(value);
        return cut >= range.lowest && cut <= range.highest ? std::optional<long double>(cut) : std::nullopt;
    }
    default:
        return std::nullopt;
    }
}

std::optional<Number> converted(const Number& number, bool sourceIsComplex, const ElementRow& target)
{
    if (sourceIsComplex && !target.isComplex && number.imag != 0)
        return std::nullopt;
    const auto real = converted(number.real, target);
    const auto imag = target.isComplex ? converted(number.imag, target) : std::optional<long double>(0);
    if (!real || !imag)
        return std::nullopt;
    return Number{*real, *imag};
}

bool isNumeric(const ElementRow& row)
{
    return row.kind != ElementKind::Text && row.kind != ElementKind::Time;
}

// Whether the type holds the value as it is.
bool holds(long double value, const ElementRow& row)
{
    if (std::isnan(value))
        return row.kind == ElementKind::Floating;
    const auto same = converted(value, row);
    return same && *same == value;
}

template <class T>
BVariant scalarOf(const Number& number)
{
    return BVariant(static_cast<T>(number.real));
}

template <class C, class T>
BVariant complexOf(const Number& number)
{
    C value{};
    T parts[2] = {static_cast<T>(number.real), static_cast<T>(number.imag)};
    static_assert(sizeof value == sizeof parts); // real part first
    std::memcpy(static_cast<void*>(&value), parts, sizeof value);
    return BVariant(value);
}

BVariant makeScalar(std::uint16_t code, const Number& number)
{
    switch (code) {
    case 0x0001:
        return scalarOf<double>(number);
    case 0x0002:
        return scalarOf<float>(number);
    case 0x0004:
        return scalarOf<std::int8_t>(number);
    case 0x0005:
        return scalarOf<std::int16_t>(number);
    case 0x0006:
        return scalarOf<std::int32_t>(number);
    case 0x0007:
        return scalarOf<std::int64_t>(number);
    case 0x4003:
        return scalarOf<bool>(number);
    case 0x4004:
        return scalarOf<std::uint8_t>(number);
    case 0x4005:
        return scalarOf<std::uint16_t>(number);
    case 0x4006:
        return scalarOf<std::uint32_t>(number);
    case 0x4007:
        return scalarOf<std::uint64_t>(number);
    case 0x8001:
        return complexOf<std::complex<double>, double>(number);
    case 0x8002:
        return complexOf<std::complex<float>, float>(number);
    case 0x8004:
        return complexOf<Complex<std::int8_t>, std::int8_t>(number);
    case 0x8005:
        return complexOf<Complex<std::int16_t>, std::int16_t>(number);
    case 0x8006:
        return complexOf<Complex<std::int32_t>, std::int32_t>(number);
    case 0x8007:
        return complexOf<Complex<std::int64_t>, std::int64_t>(number);
    case 0xC003:
        return complexOf<Complex<bool>, bool>(number);
    case 0xC004:
        return complexOf<Complex<std::uint8_t>, std::uint8_t>(number);
    case 0xC005:
        return complexOf<Complex<std::uint16_t>, std::uint16_t>(number);
    case 0xC006:
        return complexOf<Complex<std::uint32_t>, std::uint32_t>(number);
    case 0xC007:
        return complexOf<Complex<std::uint64_t>, std::uint64_t>(number);
    case 0x0010:
        return BVariant(std::string("1"));
    case 0x0030:
        return BVariant(Samples<Duration>::first());
    default:
        return BVariant(Samples<TimePoint>::first());
    }
}

template <class T>
Number readParts(const void* data, bool isComplex)
{
    T parts[2] = {};
    std::memcpy(parts, data, (isComplex ? 2 : 1) * sizeof(T));
    return {static_cast<long double>(parts[0]), static_cast<long double>(parts[1])};
}

Number readScalar(const BVariant& variant)
{
    const std::uint16_t code = variant.getWellKnownType().code();
    const bool isComplex = (code & 0x8000) != 0;
    switch (partCode(code)) {
    case 0x0001:
        return readParts<double>(variant.constData(), isComplex);
    case 0x0002:
        return readParts<float>(variant.constData(), isComplex);
    case 0x0004:
        return readParts<std::int8_t>(variant.constData(), isComplex);
    case 0x0005:
        return readParts<std::int16_t>(variant.constData(), isComplex);
    case 0x0006:
        return readParts<std::int32_t>(variant.constData(), isComplex);
    case 0x0007:
        return readParts<std::int64_t>(variant.constData(), isComplex);
    case 0x4003:
        return readParts<bool>(variant.constData(), isComplex);
    case 0x4004:
        return readParts<std::uint8_t>(variant.constData(), isComplex);
    case 0x4005:
        return readParts<std::uint16_t>(variant.constData(), isComplex);
    case 0x4006:
        return readParts<std::uint32_t>(variant.constData(), isComplex);
    default:
        return readParts<std::uint64_t>(variant.constData(), isComplex);
    }
}

// Values at and beside the ends of every type, and what fractions, infinities and NaN do.
const std::vector<long double>& boundaryValues()
{
    constexpr long double infinity = std::numeric_limits<long double>::infinity();
    static const std::vector<long double> values = [] {
        std::vector<long double> made = {0,
                                         -0.0L,
                                         1,
                                         -1,
                                         2,
                                         0.5L,
                                         -0.5L,
                                         0.9L,
                                         -0.9L,
                                         1.5L,
                                         -1.5L,
                                         127.9L,
                                         -128.9L,
                                         3e9L,
                                         1e30L,
                                         -1e30L,
                                         9007199254740993.0L,
                                         16777217.0L,
                                         infinity,
                                         -infinity,
                                         std::numeric_limits<long double>::quiet_NaN(),
                                         std::numeric_limits<float>::max(),
                                         std::numeric_limits<float>::denorm_min(),
                                         std::numeric_limits<double>::max(),
                                         std::numeric_limits<double>::lowest(),
                                         std::numeric_limits<double>::denorm_min()};
        for (int bits : {7, 8, 15, 16, 31, 32, 63, 64}) {
            const long double end = std::ldexp(1.0L, bits);
            for (long double offset : {-1.5L, -1.0L, -0.5L, 0.0L, 0.5L, 1.0L})
                made.insert(made.end(), {end + offset, -end + offset});
            // the neighbours that a float and a double have there
            made.insert(made.end(),
                        {static_cast<long double>(std::nextafter(static_cast<float>(end), 0.0f)),
                         static_cast<long double>(std::nextafter(static_cast<double>(end), 0.0)),
                         static_cast<long double>(std::nextafter(static_cast<double>(-end), -1e300))});
        }
        return made;
    }();
    return values;
}

// The values of a type among the boundary values; for a complex type each with some imaginary parts.
std::vector<Number> valuesOf(const ElementRow& row)
{
    std::vector<Number> made;
    for (long double real : boundaryValues()) {
        if (!holds(real, row))
            continue;
        if (!row.isComplex) {
            made.push_back({real, 0});
            continue;
        }
        for (long double imag : {0.0L, -0.0L, 1.0L, -1.0L, 300.5L, 70000.0L, std::nanl("")})
            if (holds(imag, row))
                made.push_back({real, imag});
        if (holds(real, row))
            made.push_back({0, real});
    }
    return made;
}

std::string text(const Number& number)
{
    std::ostringstream out;
    out.precision(21);
    out << number.real << " + " << number.imag << "i";
    return out.str();
}

bool sameNumber(const Number& a, const Number& b)
{
    const auto same = [](long double x, long double y) { return x == y || (std::isnan(x) && std::isnan(y)); };
    return same(a.real, b.real) && same(a.imag, b.imag);
}

std::string conversionMessage(const std::string& source, std::uint64_t count, const std::string& target)
{
    return "Cannot convert Brindle::Quay::BVariant of type '" + source + "' (size: " + std::to_string(count) +
           ") to '" + target + "'";
}

template <class T>
std::optional<T> fromText(const std::string& source)
{
    T value{};
    if (tryGetScalar<T>(BVariant(source), &value))
        return value;
    return std::nullopt;
}

std::string toText(const BVariant& number)
{
    return getScalar<std::string>(number);
}
} // namespace

class ConversionFrom : public ::testing::TestWithParam<ElementRow>
{
};

std::string rowName(const ::testing::TestParamInfo<ElementRow>& info)
{
    return "Code" + std::to_string(info.param.code);
}

TEST_P(ConversionFrom, TakesEachValueToEachNumericTypeOrRefusesIt)
{
    const ElementRow& source = GetParam();
    const auto values = valuesOf(source);
    ASSERT_GE(values.size(), 2u);
    for (const ElementRow& target : elementRows()) {
        if (!isNumeric(target))
            continue;
        for (const Number& value : values) {
            SCOPED_TRACE(text(value) + " from " + source.name + " to " + target.name);
            const BVariant result = convertedTo(makeScalar(source.code, value), target.code);
            const auto expected = converted(value, source.isComplex, target);
            ASSERT_EQ(!result.isNull(), expected.has_value());
            if (!expected)
                continue;
            ASSERT_EQ(result.getWellKnownType().code(), target.code);
            EXPECT_TRUE(sameNumber(readScalar(result), *expected)) << "gave " << text(readScalar(result));
        }
    }
}

TEST_P(ConversionFrom, TreatsAnArrayAsItsElementsAndKeepsItsShape)
{
    const ElementRow& source = GetParam();
    for (const ElementRow& target : elementRows()) {
        if (!isNumeric(target))
            continue;
        SCOPED_TRACE(target.name);
        // ones and zeros fit everywhere: 1, 0, 1, 0, 1, 0 as the columns of a matrix
        BVariant joined;
        for (int i = 0; i < 6; ++i)
            joined = appendValues(joined, makeScalar(source.code, {i % 2 ? 0.0L : 1.0L, 0}));
        const BVariant matrix =
            BVariant::fromPayload(joined.payload()->reshaped(joined.payload(), {2, 3}, columnMajor));
        const BVariant result = convertedTo(matrix, target.code);
        ASSERT_EQ(result.getWellKnownType().code(), target.code);
        EXPECT_EQ(ToDimensions(result), (Sizes{2, 3}));
        EXPECT_EQ(result.getDataOrdering(), columnMajor);
        EXPECT_FALSE(result.isScalar());
        EXPECT_EQ(ToDoubles(result), (Doubles{1, 0, 1, 0, 1, 0}));
    }
}

TEST_P(ConversionFrom, IsImpossibleToTimes)
{
    const BVariant value = makeScalar(GetParam().code, {1, 0});
    EXPECT_TRUE(convertedTo(value, elementCode<Duration>).isNull());
    EXPECT_TRUE(convertedTo(value, elementCode<TimePoint>).isNull());
}

INSTANTIATE_TEST_SUITE_P(NumericTypes, ConversionFrom, ::testing::ValuesIn([] {
                             std::vector<ElementRow> numeric;
                             for (const ElementRow& row : elementRows())
                                 if (isNumeric(row))
                                     numeric.push_back(row);
                             return numeric;
                         }()),
                         rowName);

// Whether a type converts to another at all, told by the value 1 (the text "1").
bool isConvertible(const ElementRow& from, const ElementRow& to)
{
    if (from.code == to.code)
        return true;
    if (isNumeric(from) && isNumeric(to))
        return true; // the imaginary part is zero here
    if (from.kind == ElementKind::Text)
        return isNumeric(to) && !to.isComplex && to.kind != ElementKind::Boolean;
    return to.kind == ElementKind::Text && isNumeric(from) && !from.isComplex &&
           from.kind != ElementKind::Boolean;
}

TEST(ConversionMatrix, AllowsExactlyThePairsOfTheRule)
{
    for (const ElementRow& from : elementRows()) {
        for (const ElementRow& to : elementRows()) {
            const BVariant result = convertedTo(makeScalar(from.code, {1, 0}), to.code);
            EXPECT_EQ(!result.isNull(), isConvertible(from, to)) << from.name << " to " << to.name;
        }
    }
}

TEST(ConversionMatrix, NamesBothTypesOfAPairThatIsNotAllowed)
{
    for (const ElementRow& from : elementRows()) {
        for (const ElementRow& to : elementRows()) {
            if (isConvertible(from, to))
                continue;
            BVariant variant = makeScalar(from.code, {1, 0});
            const BVariant before(variant);
            EXPECT_EQ(failureOf([&] { convertInPlace(variant, to.code); }),
                      runtimeError(conversionMessage(from.name, 1, to.name)));
            EXPECT_TRUE(exactlyEqual(variant, before));
        }
    }
}

TEST(Conversion, ToTheSameTypeSharesThePayload)
{
    const BVariant array = MakeVector({1.0, 2.0});
    EXPECT_EQ(convertedTo(array, elementCode<double>).constData(), array.constData());
}

TEST(Conversion, LeavesItsSourceAlone)
{
    const BVariant array = MakeVector({1.0, 2.0});
    const BVariant result = convertedTo(array, elementCode<std::int32_t>);
    EXPECT_EQ(array.getWellKnownType().code(), elementCode<double>);
    EXPECT_THAT(ToElements<double>(array), ElementsAre(1.0, 2.0));
    EXPECT_THAT(ToElements<std::int32_t>(result), ElementsAre(1, 2));
}

TEST(Conversion, IsImpossibleWhenOneElementDoesNotFit)
{
    std::vector<double> elements(100000, 1.0);
    elements[99998] = 256;
    EXPECT_TRUE(convertedTo(BVariant(elements), elementCode<std::uint8_t>).isNull());
    elements[99998] = 255.9;
    EXPECT_FALSE(convertedTo(BVariant(elements), elementCode<std::uint8_t>).isNull());

    std::vector<std::complex<double>> numbers(1000, {1, 0});
    numbers[999] = {1, 1e-300};
    EXPECT_TRUE(convertedTo(BVariant(numbers), elementCode<double>).isNull());
    numbers[999] = {1, -0.0};
    EXPECT_FALSE(convertedTo(BVariant(numbers), elementCode<double>).isNull());
}

TEST(Conversion, KeepsTheDimensionsOfAnEmptyArray)
{
    const BVariant empty(std::vector<std::int16_t>{}, {0, 3}, columnMajor);
    const BVariant result = convertedTo(empty, elementCode<std::complex<double>>);
    EXPECT_EQ(result.getWellKnownType().code(), elementCode<std::complex<double>>);
    EXPECT_EQ(ToDimensions(result), (Sizes{0, 3}));
    EXPECT_EQ(result.getDataOrdering(), columnMajor);
}

TEST(Conversion, KeepsASingletonArrayAnArray)
{
    const BVariant one(std::vector<double>{2.5}, {1, 1, 1});
    const BVariant result = convertedTo(one, elementCode<std::string>);
    EXPECT_EQ(ToDimensions(result), (Sizes{1, 1, 1}));
    EXPECT_EQ(getScalar<std::string>(result), "2.5");
}

TEST(Conversion, OfAScalarIsAScalar)
{
    const BVariant result = convertedTo(BVariant(2.5), elementCode<std::int64_t>);
    EXPECT_TRUE(result.isScalar());
    EXPECT_EQ(getScalar<std::int64_t>(result), 2);
}

TEST(Conversion, OfNullIsNull)
{
    for (const ElementRow& row : elementRows())
        EXPECT_TRUE(convertedTo(BVariant(), row.code).isNull()) << row.name;
    EXPECT_TRUE(convertedTo(BVariant(), WellKnownType(0)).isNull());
}

TEST(Conversion, ToACodeWithoutElementTypeIsImpossible)
{
    for (std::uint16_t code : std::initializer_list<std::uint16_t>{
             0x0000, 0x0003, 0x0008, 0x000F, 0x0011, 0x0020, 0x0050, 0x4001, 0x8003, 0x8010, 0xFFFF}) {
        for (const ElementRow& row : elementRows())
            EXPECT_TRUE(convertedTo(makeScalar(row.code, {1, 0}), code).isNull())
                << row.name << " to " << code;
    }
}

TEST(Conversion, OfARunTimeTypeIsImpossible)
{
    for (const ElementRow& row : elementRows())
        EXPECT_TRUE(convertedTo(BVariant::runTime(1.0), row.code).isNull()) << row.name;
}

TEST(Conversion, ToARealTypeNeedsZeroImaginaryParts)
{
    const std::complex<float> zero(1.5f, 0.0f), notANumber(1.5f, std::nanf(""));
    EXPECT_EQ(getScalar<double>(BVariant(zero)), 1.5);
    EXPECT_TRUE(convertedTo(BVariant(notANumber), elementCode<double>).isNull());
}

TEST(Conversion, KeepsTheSignOfZeroBetweenFloatingTypes)
{
    EXPECT_TRUE(std::signbit(getScalar<float>(BVariant(-0.0))));
    EXPECT_TRUE(std::signbit(getScalar<double>(BVariant(-0.0f))));
    EXPECT_TRUE(std::signbit(getScalar<std::complex<double>>(BVariant(-0.0)).real()));
}

TEST(ConvertInPlace, ReplacesTheVariant)
{
    BVariant variant = MakeVector({1.9, -1.9});
    const BVariant copy(variant);
    convertInPlace(variant, elementCode<std::int8_t>);
    EXPECT_THAT(ToElements<std::int8_t>(variant), ElementsAre(1, -1));
    EXPECT_THAT(ToElements<double>(copy), ElementsAre(1.9, -1.9));
}

TEST(ConvertInPlace, LeavesTheVariantAsItWasOnFailure)
{
    BVariant variant = MakeVector({1.0, -1.0});
    const void* data = variant.constData();
    EXPECT_EQ(failureOf([&] { convertInPlace(variant, elementCode<std::uint64_t>); }),
              runtimeError(conversionMessage("double", 2, "uint64_t")));
    EXPECT_EQ(variant.constData(), data);
}

TEST(ConvertInPlace, CountsAllElementsInItsMessage)
{
    BVariant matrix(std::vector<Duration>(6), {2, 3});
    EXPECT_EQ(failureOf([&] { convertInPlace(matrix, elementCode<double>); }),
              runtimeError(conversionMessage("Brindle::Quay::Duration", 6, "double")));
    BVariant empty(std::vector<Duration>{}, {0, 3});
    EXPECT_EQ(failureOf([&] { convertInPlace(empty, elementCode<double>); }),
              runtimeError(conversionMessage("Brindle::Quay::Duration", 0, "double")));
}

TEST(ConvertInPlace, NamesNoTargetForACodeWithoutElementType)
{
    BVariant variant(1.0);
    EXPECT_EQ(failureOf([&] { convertInPlace(variant, WellKnownType(0)); }),
              runtimeError(conversionMessage("double", 1, "")));
    EXPECT_EQ(failureOf([&] { convertInPlace(variant, WellKnownType(32)); }),
              runtimeError(conversionMessage("double", 1, "")));
}

TEST(ConvertInPlace, DispatchesOnItsSourceToNameIt)
{
    BVariant null;
    EXPECT_EQ(failureOf([&] { convertInPlace(null, elementCode<double>); }), runtimeError("unknown type"));
    BVariant runTime = BVariant::runTime(1.0);
    EXPECT_EQ(failureOf([&] { convertInPlace(runTime, elementCode<double>); }), runtimeError("unknown type"));
    EXPECT_EQ(runTime.getWellKnownType().code(), 32u);
}

struct TextCase
{
    const char* name;
    std::string text;
    std::optional<double> asDouble;
    std::optional<std::int64_t> asInt64;
    std::optional<std::uint8_t> asUint8;
};

class TextAsNumber : public ::testing::TestWithParam<TextCase>
{
};

TEST_P(TextAsNumber, IsANumberWhenAllOfItIsOne)
{
    const TextCase& c = GetParam();
    EXPECT_EQ(fromText<double>(c.text), c.asDouble);
    EXPECT_EQ(fromText<std::int64_t>(c.text), c.asInt64);
    EXPECT_EQ(fromText<std::uint8_t>(c.text), c.asUint8);
}

INSTANTIATE_TEST_SUITE_P(
    Texts, TextAsNumber,
    ::testing::Values(
        TextCase{"Zero", "0", 0.0, 0, std::uint8_t{0}}, TextCase{"Integer", "42", 42.0, 42, std::uint8_t{42}},
        TextCase{"Negative", "-1", -1.0, -1, {}}, TextCase{"NegativeZero", "-0", 0.0, 0, std::uint8_t{0}},
        TextCase{"LeadingZeros", "00042", 42.0, 42, std::uint8_t{42}},
        TextCase{"Fraction", "2.9", 2.9, 2, std::uint8_t{2}},
        TextCase{"NegativeFraction", "-0.9", -0.9, 0, std::uint8_t{0}},
        TextCase{"ShortFraction", ".5", 0.5, 0, std::uint8_t{0}},
        TextCase{"TrailingPoint", "5.", 5.0, 5, std::uint8_t{5}},
        TextCase{"Exponent", "1e2", 100.0, 100, std::uint8_t{100}},
        TextCase{"SignedExponent", "2.5E+1", 25.0, 25, std::uint8_t{25}},
        TextCase{"LargeForAByte", "256", 256.0, 256, {}},
        TextCase{"AlmostLargeForAByte", "255.9", 255.9, 255, std::uint8_t{255}},
        TextCase{"Infinity", "inf", std::numeric_limits<double>::infinity(), {}, {}},
        TextCase{"NegativeInfinity", "-inf", -std::numeric_limits<double>::infinity(), {}, {}},
        TextCase{"Overflow", "1e400", {}, {}, {}}, TextCase{"Empty", "", {}, {}, {}},
        TextCase{"Blank", " ", {}, {}, {}}, TextCase{"LeadingBlank", " 1", {}, {}, {}},
        TextCase{"TrailingBlank", "1 ", {}, {}, {}}, TextCase{"TrailingNewline", "1\n", {}, {}, {}},
        TextCase{"Plus", "+1", {}, {}, {}}, TextCase{"PlusFraction", "+1.5", {}, {}, {}},
        TextCase{"DoubleMinus", "--1", {}, {}, {}}, TextCase{"Hexadecimal", "0x10", {}, {}, {}},
        TextCase{"Comma", "1,5", {}, {}, {}}, TextCase{"Grouped", "1,000", {}, {}, {}},
        TextCase{"Underscore", "1_000", {}, {}, {}}, TextCase{"ExponentAlone", "e5", {}, {}, {}},
        TextCase{"ExponentWithoutDigits", "1e", {}, {}, {}}, TextCase{"TwoPoints", "1.2.3", {}, {}, {}},
        TextCase{"Word", "one", {}, {}, {}}, TextCase{"Point", ".", {}, {}, {}},
        TextCase{"Minus", "-", {}, {}, {}}, TextCase{"Unit", "5V", {}, {}, {}},
        TextCase{"EmbeddedNul", std::string("1\0", 2), {}, {}, {}},
        TextCase{"NulBetween",
                 std::string("1\0"
                             "2",
                             3),
                 {},
                 {},
                 {}},
        TextCase{"LargestInt64", "9223372036854775807", 9223372036854775808.0, INT64_MAX, {}},
        TextCase{"SmallestInt64", "-9223372036854775808", -9223372036854775808.0, INT64_MIN, {}},
        TextCase{"PastInt64", "9223372036854775808", 9223372036854775808.0, {}, {}},
        TextCase{"BeyondAllIntegers", "100000000000000000000", 1e20, {}, {}},
        TextCase{"OddPastDoublePrecision", "9007199254740993", 9007199254740992.0, 9007199254740993, {}}),
    CaseName());

TEST(TextToNumber, TakesIntegersExactlyToTheEndOfTheirRange)
{
    EXPECT_EQ(fromText<std::uint64_t>("18446744073709551615"), UINT64_MAX);
    EXPECT_EQ(fromText<std::uint64_t>("18446744073709551616"), std::nullopt);
    EXPECT_EQ(fromText<std::int8_t>("-128"), std::int8_t{-128});
    EXPECT_EQ(fromText<std::int8_t>("-129"), std::nullopt);
    EXPECT_EQ(fromText<std::int8_t>("128"), std::nullopt);
    EXPECT_EQ(fromText<std::int32_t>("2147483648"), std::nullopt);
    EXPECT_EQ(fromText<std::uint32_t>("4294967295"), 4294967295u);
    EXPECT_EQ(fromText<std::uint16_t>("65536"), std::nullopt);
}

TEST(TextToNumber, TakesVeryLongDigitRuns)
{
    const std::string zeros(2000, '0');
    EXPECT_EQ(fromText<std::int32_t>(zeros + "7"), 7);
    EXPECT_EQ(fromText<double>("0." + std::string(300, '0') + "5" + zeros), 5e-301);
    EXPECT_EQ(fromText<double>("1" + zeros), std::nullopt);
    EXPECT_EQ(fromText<double>(std::string(300, '9')), 1e300);
    EXPECT_EQ(fromText<std::int64_t>(std::string(300, '9')), std::nullopt);
    EXPECT_EQ(fromText<std::int64_t>("3." + std::string(5000, '9')), 4); // as a double this is 4
}

TEST(TextToNumber, ReadsNaNForFloatingTypesOnly)
{
    EXPECT_TRUE(std::isnan(fromText<double>("nan").value()));
    EXPECT_TRUE(std::isnan(fromText<float>("nan").value()));
    EXPECT_EQ(fromText<std::int32_t>("nan"), std::nullopt);
}

TEST(TextToNumber, RefusesWhatIsBeyondAFloat)
{
    EXPECT_EQ(fromText<float>("0.1"), 0.1f);
    EXPECT_EQ(fromText<float>("1e39"), std::nullopt);
}

TEST(TextToNumber, NeverBecomesABool)
{
    for (const char* text : {"0", "1", "true", "2.5", ""})
        EXPECT_EQ(fromText<bool>(text), std::nullopt) << text;
}

TEST(TextToNumber, ReadsAllOfAnArrayOrNothing)
{
    BVariant texts(std::vector<std::string>{"1", "2.5", "-3"});
    EXPECT_THAT(ToElements<double>(convertedTo(texts, elementCode<double>)), ElementsAre(1.0, 2.5, -3.0));
    EXPECT_THAT(ToElements<std::int32_t>(convertedTo(texts, elementCode<std::int32_t>)),
                ElementsAre(1, 2, -3));
    setElement<std::string>(texts, {1}, BVariant("two"));
    EXPECT_TRUE(convertedTo(texts, elementCode<double>).isNull());
}

TEST(TextToNumber, IsNeverComplex)
{
    EXPECT_TRUE(convertedTo(BVariant("1"), elementCode<std::complex<double>>).isNull());
    EXPECT_TRUE(convertedTo(BVariant("1"), elementCode<Complex<std::int32_t>>).isNull());
}

TEST(NumberToText, IsTheShortestThatReadsBack)
{
    EXPECT_EQ(toText(BVariant(0.1)), "0.1");
    EXPECT_EQ(toText(BVariant(0.1f)), "0.1");
    EXPECT_EQ(toText(BVariant(1.0)), "1");
    EXPECT_EQ(toText(BVariant(-2.5)), "-2.5");
    EXPECT_EQ(toText(BVariant(1e300)), "1e+300");
    EXPECT_EQ(toText(BVariant(1.0 / 3.0)), "0.3333333333333333");
    EXPECT_EQ(toText(BVariant(std::numeric_limits<double>::infinity())), "inf");
    EXPECT_EQ(toText(BVariant(-std::numeric_limits<float>::infinity())), "-inf");
    EXPECT_EQ(toText(BVariant(std::int8_t{65})), "65");
    EXPECT_EQ(toText(BVariant(std::uint8_t{255})), "255");
    EXPECT_EQ(toText(BVariant(std::int16_t{-32768})), "-32768");
    EXPECT_EQ(toText(BVariant(std::uint16_t{65535})), "65535");
    EXPECT_EQ(toText(BVariant(-7)), "-7");
    EXPECT_EQ(toText(BVariant(4294967295u)), "4294967295");
    EXPECT_EQ(toText(BVariant(INT64_MIN)), "-9223372036854775808");
    EXPECT_EQ(toText(BVariant(UINT64_MAX)), "18446744073709551615");
}

TEST(NumberToText, ReadsBackToTheSameBits)
{
    const RandomSeed seed{2301};
    SCOPED_TRACE(seed);
    auto random = seed.engine();
    for (int i = 0; i < 20000; ++i) {
        const std::uint64_t bits = random();
        double number = 0;
        std::memcpy(&number, &bits, sizeof number);
        if (std::isnan(number))
            continue;
        const std::string written = toText(BVariant(number));
        double parsed = 0; // the standard library reads it, not the code under test
        const auto end = written.data() + written.size();
        ASSERT_EQ(std::from_chars(written.data(), end, parsed).ptr, end) << written;
        ASSERT_EQ(parsed, number) << written;
        ASSERT_EQ(fromText<double>(written), number) << written;
    }
}

TEST(NumberToText, NeverWritesABool)
{
    EXPECT_TRUE(convertedTo(BVariant(true), elementCode<std::string>).isNull());
}

// Decimal commas and grouped digits, as German and many other locales have them.
class DecimalComma : public std::numpunct<char>
{
protected:
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
};

class UnderACommaLocale : public ::testing::Test
{
protected:
    UnderACommaLocale()
        : m_oldC(std::setlocale(LC_ALL, nullptr))
        , m_old(std::locale::global(std::locale(std::locale::classic(), new DecimalComma)))
    {
        // The C locale too, where the machine has one; the facet above works on every machine.
        for (const char* name : {"de_DE.UTF-8", "de_DE.utf8", "fr_FR.UTF-8", "de_DE"})
            if (std::setlocale(LC_ALL, name))
                break;
    }
    ~UnderACommaLocale() override
    {
        std::locale::global(m_old);
        std::setlocale(LC_ALL, m_oldC.c_str());
    }

private:
    std::string m_oldC;
    std::locale m_old;
};

TEST_F(UnderACommaLocale, NumbersAndTextConvertAsEver)
{
    EXPECT_EQ(toText(BVariant(1234.5)), "1234.5");
    EXPECT_EQ(toText(BVariant(1234567)), "1234567");
    EXPECT_EQ(fromText<double>("1234.5"), 1234.5);
    EXPECT_EQ(fromText<double>("1234,5"), std::nullopt);
    EXPECT_EQ(fromText<double>("1.234,5"), std::nullopt);
}

TEST_F(UnderACommaLocale, MessagesCountWithoutGrouping)
{
    BVariant variant{std::vector<Duration>(12345)};
    EXPECT_EQ(failureOf([&] { convertInPlace(variant, elementCode<double>); }),
              runtimeError(conversionMessage("Brindle::Quay::Duration", 12345, "double")));
}
} // namespace Brindle::Quay
