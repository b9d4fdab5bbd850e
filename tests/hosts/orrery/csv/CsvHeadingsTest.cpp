#include "hosts/orrery/csv/CsvHeadings.h"

#include "hosts/orrery/UnitText.h"

#include <gtest/gtest.h>

namespace Orrery::Host {

namespace {

CsvHeading parsed(const char* field, bool ignoresUnits = false)
{
    CsvHeading heading;
    std::string why;
    EXPECT_TRUE(parseHeading(field, ignoresUnits, &heading, &why)) << field << ": " << why;
    return heading;
}

// Names of the variables, with the number of columns that each has.
std::vector<std::pair<std::string, std::size_t>> joined(const std::vector<const char*>& fields)
{
    std::vector<CsvHeading> headings;
    for (const char* const field : fields)
        headings.push_back(parsed(field));
    std::vector<std::pair<std::string, std::size_t>> variables;
    std::size_t next = 0;
    for (const CsvColumn& column : joinHeadings(headings)) {
        EXPECT_EQ(column.first, next);
        next += column.count;
        variables.emplace_back(column.name.toStdString(), column.count);
    }
    EXPECT_EQ(next, fields.size());
    return variables;
}

using Variables = std::vector<std::pair<std::string, std::size_t>>;

} // namespace

struct HeadingCase
{
    const char* field;
    const char* name;
    const char* units; ///< their label; null for none
};

class CsvHeadingText : public ::testing::TestWithParam<HeadingCase>
{
};

TEST_P(CsvHeadingText, IsANameWithUnits)
{
    const CsvHeading heading = parsed(GetParam().field);
    EXPECT_EQ(heading.name.toStdString(), GetParam().name);
    ASSERT_EQ(heading.units.has_value(), GetParam().units != nullptr);
    if (heading.units) {
        EXPECT_EQ(unitsLabel(*heading.units), GetParam().units);
    }
}

INSTANTIATE_TEST_SUITE_P(
    Fields, CsvHeadingText,
    ::testing::Values(HeadingCase{"v(out) [V]", "v(out)", "V"}, HeadingCase{"t[ms]", "t", "ms"},
                      HeadingCase{"x", "x", nullptr}, HeadingCase{"x []", "x", nullptr},
                      HeadingCase{"x [-]", "x", "1"}, HeadingCase{"x [1]", "x", "1"},
                      HeadingCase{"x[1]", "x[1]", nullptr}, HeadingCase{"x[1,2]", "x[1,2]", nullptr},
                      HeadingCase{"x[1] [V]", "x[1]", "V"}, HeadingCase{"x]", "x]", nullptr},
                      HeadingCase{"v [V] []", "v [V]", nullptr}, HeadingCase{"", "", nullptr},
                      HeadingCase{"\xB5 [\xB5V]", "\xC2\xB5", "\xC2\xB5V"}));

TEST(CsvHeadings, RefuseWhatIsNoUnitUnlessItIsToBeIgnored)
{
    CsvHeading heading;
    std::string why;
    EXPECT_FALSE(parseHeading("x [quux]", false, &heading, &why));
    EXPECT_NE(why.find("quux"), std::string::npos) << why;
    EXPECT_EQ(parsed("x [quux]", true).name, QStringLiteral("x"));
    EXPECT_FALSE(parsed("x [quux]", true).units.has_value());
}

TEST(CsvHeadings, JoinTheTwoPartsOfAComplexNumber)
{
    EXPECT_EQ(joined({"t", "z.re", "z.im", "y"}), (Variables{{"t", 1}, {"z", 2}, {"y", 1}}));
    EXPECT_EQ(joined({"z.im", "z.re"}), (Variables{{"z.im", 1}, {"z.re", 1}}));
    EXPECT_EQ(joined({"z.re [V]", "z.im [A]"}), (Variables{{"z.re", 1}, {"z.im", 1}}));
    EXPECT_EQ(joined({"z.re", "y", "z.im"}), (Variables{{"z.re", 1}, {"y", 1}, {"z.im", 1}}));
    EXPECT_EQ(joined({"z.re"}), (Variables{{"z.re", 1}}));
    EXPECT_EQ(joined({".re", ".im"}), (Variables{{".re", 1}, {".im", 1}}));
}

TEST(CsvHeadings, JoinAWholeArrayInItsOrder)
{
    EXPECT_EQ(joined({"m[0,0]", "m[0,1]", "m[1,0]", "m[1,1]", "n[0]"}), (Variables{{"m", 4}, {"n", 1}}));
    EXPECT_EQ(joined({"m[0].re", "m[0].im", "m[1].re", "m[1].im"}), (Variables{{"m", 4}}));
    EXPECT_EQ(joined({"m[1]", "m[0]"}), (Variables{{"m[1]", 1}, {"m[0]", 1}}));
    EXPECT_EQ(joined({"m[0]", "m[2]"}), (Variables{{"m[0]", 1}, {"m[2]", 1}}));
    EXPECT_EQ(joined({"m[1]"}), (Variables{{"m[1]", 1}}));
    EXPECT_EQ(joined({"m[0]", "m[1]", "m"}), (Variables{{"m", 2}, {"m", 1}}));
    EXPECT_EQ(joined({"m[4294967295,4294967295,4294967295]"}),
              (Variables{{"m[4294967295,4294967295,4294967295]", 1}}));
    EXPECT_EQ(joined({"[0].re", "[0].im"}),
              (Variables{{"[0]", 2}})); // a name needs something besides indices
}

TEST(CsvHeadings, TellTheShapeOfAnArray)
{
    const std::vector<CsvColumn> columns =
        joinHeadings({parsed("m[0,0].re"), parsed("m[0,0].im"), parsed("m[0,1].re"), parsed("m[0,1].im")});
    ASSERT_EQ(columns.size(), 1U);
    EXPECT_TRUE(columns[0].isComplex);
    EXPECT_EQ(columns[0].elementShape, (std::vector<std::uint64_t>{1, 2}));
}

} // namespace Orrery::Host
