#include "hosts/orrery/ElementText.h"

#include <gtest/gtest.h>

#include <complex>
#include <limits>
#include <stdexcept>

namespace Orrery::Host {

using namespace Brindle::Quay;

namespace {

std::string textOf(const BVariant& value, std::uint64_t position = 0)
{
    std::string text;
    ElementText(value).append(&text, position);
    return text;
}

} // namespace

TEST(NumberText, IsTheShortestThatReadsBack)
{
    EXPECT_EQ(textOf(BVariant(0.1)), "0.1");
    EXPECT_EQ(textOf(BVariant(1.0)), "1");
    EXPECT_EQ(textOf(BVariant(-0.0)), "-0");
    EXPECT_EQ(textOf(BVariant(1e300)), "1e+300");
    EXPECT_EQ(textOf(BVariant(0.1 + 0.2)), "0.30000000000000004");
    EXPECT_EQ(textOf(BVariant(std::numeric_limits<double>::denorm_min())), "5e-324");
    EXPECT_EQ(textOf(BVariant(std::numeric_limits<double>::lowest())), "-1.7976931348623157e+308");
    EXPECT_EQ(textOf(BVariant(0.1F)), "0.1");
    EXPECT_EQ(textOf(BVariant(std::numeric_limits<double>::infinity())), "inf");
    EXPECT_EQ(textOf(BVariant(std::numeric_limits<double>::quiet_NaN())), "nan");
}

TEST(NumberText, OfIntegersBoolsAndText)
{
    EXPECT_EQ(textOf(BVariant(std::int8_t(-128))), "-128");
    EXPECT_EQ(textOf(BVariant(std::uint8_t(65))), "65");
    EXPECT_EQ(textOf(BVariant(std::numeric_limits<std::int64_t>::min())), "-9223372036854775808");
    EXPECT_EQ(textOf(BVariant(std::numeric_limits<std::uint64_t>::max())), "18446744073709551615");
    EXPECT_EQ(textOf(BVariant(true)), "true");
    EXPECT_EQ(textOf(BVariant(false)), "false");
    EXPECT_EQ(textOf(BVariant("a b")), "a b");
    EXPECT_EQ(textOf(BVariant(Duration{{1, 2}})), "1:2");
    EXPECT_EQ(textOf(BVariant(TimePoint{{3, 4}})), "3:4");
}

TEST(NumberText, OfComplexNumbers)
{
    EXPECT_EQ(textOf(BVariant(std::complex<double>(1.5, 2))), "1.5+2i");
    EXPECT_EQ(textOf(BVariant(std::complex<double>(-1, -0.25))), "-1-0.25i");
    EXPECT_EQ(textOf(BVariant(std::complex<double>(0, -0.0))), "0-0i");
    EXPECT_EQ(textOf(BVariant(std::complex<float>(0.1F, 1e-5F))), "0.1+1e-05i");
    EXPECT_EQ(textOf(BVariant(Complex<std::int8_t>{-3, 4})), "-3+4i");
    EXPECT_EQ(textOf(BVariant(Complex<bool>{true, false})), "1+0i");
}

TEST(NumberText, PartsOfAComplexNumber)
{
    const BVariant value(std::complex<double>(1.5, -2));
    const ElementText elements(value);
    ASSERT_TRUE(elements.isComplex());
    std::string text;
    elements.appendReal(&text, 0);
    text += ' ';
    elements.appendImaginary(&text, 0);
    EXPECT_EQ(text, "1.5 -2");
    EXPECT_FALSE(ElementText(BVariant(1.0)).isComplex());
}

TEST(ElementOrder, IsRowMajorWhateverTheStorage)
{
    const BVariant columns(std::vector<int>{1, 4, 2, 5, 3, 6}, {2, 3}, DataOrdering::ColumnMajor);
    std::string text;
    const ElementText elements(columns);
    for (std::uint64_t i = 0; i < elements.count(); ++i)
        elements.append(&text, i);
    EXPECT_EQ(text, "123456");
}

TEST(ElementsWithoutText, AreRefusedUnlessThereAreNone)
{
    EXPECT_EQ(ElementText(BVariant()).count(), 0U);
    EXPECT_EQ(ElementText(BVariant(std::vector<double>())).count(), 0U);
    EXPECT_THROW(ElementText(BVariant::runTime(std::pair<int, int>(1, 2))), std::invalid_argument);
}

TEST(TypeNames, AreShortAndForAll)
{
    EXPECT_EQ(elementTypeName(WellKnownType::of<double>()), "double");
    EXPECT_EQ(elementTypeName(WellKnownType::of<std::string>()), "text");
    EXPECT_EQ(elementTypeName(WellKnownType::of<std::complex<double>>()), "complex<double>");
    EXPECT_EQ(elementTypeName(WellKnownType::of<Complex<std::uint16_t>>()), "complex<uint16>");
    EXPECT_EQ(elementTypeName(WellKnownType()), "null");
    EXPECT_EQ(elementTypeName(WellKnownType(WellKnownType::RunTime)), "run-time");
}

TEST(ShapeText, ListsTheDimensions)
{
    EXPECT_EQ(shapeText({}), "");
    EXPECT_EQ(shapeText({201}), "201");
    EXPECT_EQ(shapeText({2, 0, 3}), "2 x 0 x 3");
}

} // namespace Orrery::Host
