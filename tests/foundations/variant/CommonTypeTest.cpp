#include "foundations/variant/WellKnownType.h"

#include "tests/support/CaseName.h"
#include "tests/support/ElementTypes.h"
#include "tests/support/Failures.h"
#include "tests/support/Variants.h"

#include <gtest/gtest.h>

#include <complex>
#include <cstdint>
#include <cstring>
#include <initializer_list>
#include <limits>
#include <stdexcept>
#include <string>

namespace Brindle::Quay {
using namespace TestSupport;

namespace {
std::uint16_t common(std::uint16_t a, std::uint16_t b)
{
    return WellKnownType::getCommonWellKnownType(a, b).code();
}

bool isNumeric(const ElementRow& row)
{
    return row.kind != ElementKind::Text && row.kind != ElementKind::Time;
}

template <class T>
T rangeEnd(bool highest)
{
    return highest ? std::numeric_limits<T>::max() : std::numeric_limits<T>::lowest();
}

template <class T>
BVariant endOf(bool highest)
{
    return BVariant(rangeEnd<T>(highest));
}

template <class C, class T>
BVariant complexEndOf(bool highest)
{
    const T parts[2] = {rangeEnd<T>(highest), rangeEnd<T>(!highest)};
    C value{};
    std::memcpy(static_cast<void*>(&value), parts, sizeof value);
    return BVariant(value);
}

// The lowest or highest value of a numeric type.
BVariant endOf(std::uint16_t code, bool highest)
{
    switch (code) {
    case 0x0001:
        return endOf<double>(highest);
    case 0x0002:
        return endOf<float>(highest);
    case 0x0004:
        return endOf<std::int8_t>(highest);
    case 0x0005:
        return endOf<std::int16_t>(highest);
    case 0x0006:
        return endOf<std::int32_t>(highest);
    case 0x0007:
        return endOf<std::int64_t>(highest);
    case 0x4003:
        return endOf<bool>(highest);
    case 0x4004:
        return endOf<std::uint8_t>(highest);
    case 0x4005:
        return endOf<std::uint16_t>(highest);
    case 0x4006:
        return endOf<std::uint32_t>(highest);
    case 0x4007:
        return endOf<std::uint64_t>(highest);
    case 0x8001:
        return complexEndOf<std::complex<double>, double>(highest);
    case 0x8002:
        return complexEndOf<std::complex<float>, float>(highest);
    case 0x8004:
        return complexEndOf<Complex<std::int8_t>, std::int8_t>(highest);
    case 0x8005:
        return complexEndOf<Complex<std::int16_t>, std::int16_t>(highest);
    case 0x8006:
        return complexEndOf<Complex<std::int32_t>, std::int32_t>(highest);
    case 0x8007:
        return complexEndOf<Complex<std::int64_t>, std::int64_t>(highest);
    case 0xC003:
        return complexEndOf<Complex<bool>, bool>(highest);
    case 0xC004:
        return complexEndOf<Complex<std::uint8_t>, std::uint8_t>(highest);
    case 0xC005:
        return complexEndOf<Complex<std::uint16_t>, std::uint16_t>(highest);
    case 0xC006:
        return complexEndOf<Complex<std::uint32_t>, std::uint32_t>(highest);
    case 0xC007:
        return complexEndOf<Complex<std::uint64_t>, std::uint64_t>(highest);
    default:
        throw std::out_of_range("not a numeric code: " + std::to_string(code));
    }
}
} // namespace

// All pairs of numeric types are compared with NumPy's promotion by CommonTypeOracle.py beside this file.

TEST(CommonType, OfEqualTypesIsThatType)
{
    for (const ElementRow& row : elementRows())
        EXPECT_EQ(common(row.code, row.code), row.code) << row.name;
    EXPECT_EQ(common(0, 0), 0u);
    EXPECT_EQ(common(32, 32), 32u);
}

TEST(CommonType, DoesNotDependOnTheOrder)
{
    for (const ElementRow& a : elementRows())
        for (const ElementRow& b : elementRows())
            EXPECT_EQ(common(a.code, b.code), common(b.code, a.code)) << a.name << " with " << b.name;
}

TEST(CommonType, OfTwoNumbersIsANumberThatHoldsTheRangeOfBoth)
{
    for (const ElementRow& a : elementRows()) {
        for (const ElementRow& b : elementRows()) {
            if (!isNumeric(a) || !isNumeric(b))
                continue;
            SCOPED_TRACE(std::string(a.name) + " with " + b.name);
            const std::uint16_t c = common(a.code, b.code);
            ASSERT_TRUE(isNumeric(elementRow(c)));
            EXPECT_EQ(elementRow(c).isComplex, a.isComplex || b.isComplex);
            for (bool highest : {false, true}) {
                EXPECT_FALSE(convertedTo(endOf(a.code, highest), c).isNull());
                EXPECT_FALSE(convertedTo(endOf(b.code, highest), c).isNull());
            }
        }
    }
}

TEST(CommonType, OfTextOrTimeWithAnythingElseDoesNotExist)
{
    for (const ElementRow& a : elementRows()) {
        for (const ElementRow& b : elementRows()) {
            if (a.code == b.code || (isNumeric(a) && isNumeric(b)))
                continue;
            EXPECT_EQ(common(a.code, b.code), 0u) << a.name << " with " << b.name;
        }
    }
}

TEST(CommonType, OfNullOrARunTimeTypeWithAnElementTypeIsNoElementType)
{
    for (const ElementRow& row : elementRows()) {
        EXPECT_EQ(common(0, row.code), 0u) << row.name;
        const std::uint16_t withRunTime = common(32, row.code);
        EXPECT_TRUE(withRunTime == 0 || withRunTime == 32) << row.name << " gave " << withRunTime;
    }
}

TEST(CommonType, OfUnknownCodesDoesNotExist)
{
    for (std::uint16_t code :
         std::initializer_list<std::uint16_t>{0x0003, 0x0008, 0x0050, 0x4001, 0x8003, 0xFFFF})
        for (const ElementRow& row : elementRows())
            EXPECT_EQ(common(code, row.code), 0u) << code << " with " << row.name;
}

struct CommonTypeCase
{
    const char* name;
    std::uint16_t a, b, common;
};

class CommonTypePair : public ::testing::TestWithParam<CommonTypeCase>
{
};

TEST_P(CommonTypePair, GivesTheSmallestTypeOfBothRanges)
{
    EXPECT_EQ(common(GetParam().a, GetParam().b), GetParam().common);
    EXPECT_EQ(common(GetParam().b, GetParam().a), GetParam().common);
}

INSTANTIATE_TEST_SUITE_P(
    Pairs, CommonTypePair,
    ::testing::Values(
        CommonTypeCase{"BoolAndByte", elementCode<bool>, elementCode<std::int8_t>, elementCode<std::int8_t>},
        CommonTypeCase{"BoolAndFloat", elementCode<bool>, elementCode<float>, elementCode<float>},
        CommonTypeCase{"SignedAndUnsignedByte", elementCode<std::int8_t>, elementCode<std::uint8_t>,
                       elementCode<std::int16_t>},
        CommonTypeCase{"IntAndUint16", elementCode<std::int32_t>, elementCode<std::uint16_t>,
                       elementCode<std::int32_t>},
        CommonTypeCase{"IntAndUnsignedInt", elementCode<std::int32_t>, elementCode<std::uint32_t>,
                       elementCode<std::int64_t>},
        CommonTypeCase{"Int64AndUint64", elementCode<std::int64_t>, elementCode<std::uint64_t>,
                       elementCode<double>},
        CommonTypeCase{"Int8AndUint64", elementCode<std::int8_t>, elementCode<std::uint64_t>,
                       elementCode<double>},
        CommonTypeCase{"Int64AndFloat", elementCode<std::int64_t>, elementCode<float>, elementCode<double>},
        CommonTypeCase{"Uint64AndDouble", elementCode<std::uint64_t>, elementCode<double>,
                       elementCode<double>},
        CommonTypeCase{"Int16AndFloat", elementCode<std::int16_t>, elementCode<float>, elementCode<float>},
        CommonTypeCase{"FloatAndDouble", elementCode<float>, elementCode<double>, elementCode<double>},
        CommonTypeCase{"DoubleAndComplexFloat", elementCode<double>, elementCode<std::complex<float>>,
                       elementCode<std::complex<double>>},
        CommonTypeCase{"BoolAndComplexFloat", elementCode<bool>, elementCode<std::complex<float>>,
                       elementCode<std::complex<float>>},
        CommonTypeCase{"BoolAndComplexBool", elementCode<bool>, elementCode<Complex<bool>>,
                       elementCode<Complex<bool>>},
        CommonTypeCase{"ByteAndComplexUnsignedByte", elementCode<std::int8_t>,
                       elementCode<Complex<std::uint8_t>>, elementCode<Complex<std::int16_t>>},
        CommonTypeCase{"FloatAndComplexShort", elementCode<float>, elementCode<Complex<std::int16_t>>,
                       elementCode<std::complex<float>>},
        CommonTypeCase{"ComplexInt64AndComplexUint64", elementCode<Complex<std::int64_t>>,
                       elementCode<Complex<std::uint64_t>>, elementCode<std::complex<double>>}),
    CaseName());

struct DispatchCase
{
    const char* name;
    std::uint16_t code;
    const char* message;
};

class DispatchOfUnlistedCode : public ::testing::TestWithParam<DispatchCase>
{
};

TEST_P(DispatchOfUnlistedCode, FailsWithItsMessage)
{
    const DispatchCase& c = GetParam();
    const std::vector<std::uint64_t> dimensions{2};
    EXPECT_EQ(failureOf([&] { createArray(c.code, dimensions, DataOrdering::RowMajor); }),
              runtimeError(c.message));
}

INSTANTIATE_TEST_SUITE_P(
    Codes, DispatchOfUnlistedCode,
    ::testing::Values(DispatchCase{"Null", 0x0000, "unknown type"},
                      DispatchCase{"SignedBool", 0x0003, "not a numeric type"},
                      DispatchCase{"TooWide", 0x0008, "not a numeric type"},
                      DispatchCase{"AllLowBits", 0x000F, "not a numeric type"},
                      DispatchCase{"NumberAndText", 0x0011, "not a numeric type"},
                      DispatchCase{"RunTime", 0x0020, "Creating with run-time wellknowntype is not allowed."},
                      DispatchCase{"Unlisted", 0x0050, "unknown type"},
                      DispatchCase{"UnsignedMarkAlone", 0x4000, "unknown type"},
                      DispatchCase{"UnsignedDouble", 0x4001, "not a numeric type"},
                      DispatchCase{"UnsignedText", 0x4010, "unknown type"},
                      DispatchCase{"SignedComplexBool", 0x8003, "not a numeric type"},
                      DispatchCase{"ComplexText", 0x8010, "unknown type"},
                      DispatchCase{"UnsignedComplexFloat", 0xC002, "not a numeric type"},
                      DispatchCase{"AllBits", 0xFFFF, "not a numeric type"}),
    CaseName());

TEST(WellKnownType, ComparesByCode)
{
    const WellKnownType a(0x0006);
    EXPECT_EQ(a.code(), 6u);
    EXPECT_TRUE(a == WellKnownType::of<std::int32_t>());
    EXPECT_FALSE(a != WellKnownType::of<std::int32_t>());
    EXPECT_TRUE(a != WellKnownType::of<std::uint32_t>());
    static_assert(std::is_convertible_v<std::uint16_t, WellKnownType>);
    static_assert(!std::is_convertible_v<WellKnownType, std::uint16_t>);
}
} // namespace Brindle::Quay
