#include "hosts/orrery/Numbers.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace Orrery::Host {

struct ComplexCase
{
    const char* text;
    double real;
    double imaginary;
};

class ComplexText : public ::testing::TestWithParam<ComplexCase>
{
};

TEST_P(ComplexText, IsReadWithAnImaginaryPartOrWithout)
{
    const ComplexCase& c = GetParam();
    std::complex<double> value;
    ASSERT_TRUE(parseComplex(c.text, &value)) << c.text;
    EXPECT_EQ(value, std::complex<double>(c.real, c.imaginary)) << c.text;
}

INSTANTIATE_TEST_SUITE_P(Forms, ComplexText,
                         ::testing::Values(ComplexCase{"20", 20, 0}, ComplexCase{"-1.5e3", -1500, 0},
                                           ComplexCase{"+2", 2, 0}, ComplexCase{".5", 0.5, 0},
                                           ComplexCase{"2i", 0, 2}, ComplexCase{"i", 0, 1},
                                           ComplexCase{"-j", 0, -1}, ComplexCase{"+i", 0, 1},
                                           ComplexCase{"1+2i", 1, 2}, ComplexCase{"3-j", 3, -1},
                                           ComplexCase{"-1e-3-2.5e2j", -1e-3, -250}, ComplexCase{"1+i", 1, 1},
                                           ComplexCase{"+2i", 0, 2}),
                         [](const auto& row) { return std::to_string(row.index); });

TEST(ComplexText, ThatIsNoNumberChangesNothing)
{
    for (const char* const text :
         {"",     "x",   "1,5",   "+-2",   "++2", "1+", "1+2",  "1i2", "1 ", " 1",
          "0x10", "i+1", "1+2i3", "1-+2i", "--1", "ii", "1+ii", "-",   "+",  "20i5"}) {
        std::complex<double> value(7, 8);
        EXPECT_FALSE(parseComplex(text, &value)) << text;
        EXPECT_EQ(value, std::complex<double>(7, 8)) << text;
    }
}

TEST(NumberText, IsOneRealNumberOrChangesNothing)
{
    double value = 7.0;
    for (const char* const text : {"", "x", "1 ", "2i", "1+2i", "+-1", "1.5.5"})
        EXPECT_FALSE(parseNumber(text, &value)) << text;
    EXPECT_EQ(value, 7.0);
    EXPECT_TRUE(parseNumber("-2.5e-3", &value));
    EXPECT_EQ(value, -0.0025);
    EXPECT_TRUE(parseNumber("+4", &value));
    EXPECT_EQ(value, 4.0);
    EXPECT_TRUE(parseNumber("-inf", &value));
    EXPECT_EQ(value, -std::numeric_limits<double>::infinity());
}

TEST(WrittenNumbers, HaveAsManyDigitsAsAsked)
{
    EXPECT_EQ(roundedText(0.1 + 0.2, 15), "0.3");
    EXPECT_EQ(roundedText(0.1 + 0.2, 17), "0.30000000000000004");
    EXPECT_EQ(roundedText(123456.0, 3), "123000");
    EXPECT_EQ(roundedText(-0.0, 5), "-0");
    EXPECT_EQ(roundedText(std::numeric_limits<double>::infinity(), 5), "inf");
    EXPECT_EQ(roundedText(std::numeric_limits<double>::quiet_NaN(), 5), "nan");
    EXPECT_EQ(roundedText({1.0 / 3, -2.0 / 3}, 3), "0.333-0.667i");
    EXPECT_EQ(roundedText({0.0, 2.0}, 3), "0+2i");
    EXPECT_EQ(shortestText(0.1), "0.1");
    EXPECT_EQ(shortestText(1e22), "1e+22");
}

} // namespace Orrery::Host
