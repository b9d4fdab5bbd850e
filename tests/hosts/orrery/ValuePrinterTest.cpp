#include "hosts/orrery/ValuePrinter.h"

#include "variables/Variable.h"

#include <gtest/gtest.h>

#include <complex>
#include <numeric>

namespace Orrery::Host {

namespace {

std::string printed(const BVariant& data, const std::optional<OffsetRange>& range = std::nullopt)
{
    const Variable variable(QStringLiteral("v"), data);
    Output out;
    printValues(out, range ? select(variable, *range) : selectAll(variable));
    return out.buffer();
}

std::string csv(const BVariant& data, const std::optional<OffsetRange>& range = std::nullopt,
                const std::string& name = "v")
{
    const Variable variable(QStringLiteral("v"), data);
    Output out;
    const std::vector<ValueColumn> columns = {
        {name, "", range ? select(variable, *range) : selectAll(variable)}};
    printCsvHeader(out, columns);
    printCsvRecords(out, columns);
    return out.buffer();
}

BVariant counting(const std::vector<std::uint64_t>& shape)
{
    std::uint64_t count = 1;
    for (const std::uint64_t size : shape)
        count *= size;
    std::vector<int> values(count);
    std::iota(values.begin(), values.end(), 0);
    return BVariant(std::move(values), shape);
}

} // namespace

TEST(PrintedValues, OfAVectorAreOneALine)
{
    EXPECT_EQ(printed(BVariant(std::vector<double>{1, 0.5, -2})), "1\n0.5\n-2\n");
    EXPECT_EQ(printed(BVariant(7.5)), "7.5\n");
    EXPECT_EQ(printed(BVariant(std::vector<std::complex<double>>{{1, 2}, {0, -1}})), "1+2i\n0-1i\n");
    EXPECT_EQ(printed(BVariant()), "");
    EXPECT_EQ(printed(BVariant(std::vector<double>())), "");
}

TEST(PrintedValues, OfAMatrixAreOneRowALine)
{
    EXPECT_EQ(printed(counting({2, 3})), "0\t1\t2\n3\t4\t5\n");
    EXPECT_EQ(printed(counting({2, 3}), OffsetRange{1, 2, true}), "3\t4\t5\n");
    EXPECT_EQ(printed(counting({2, 3}), OffsetRange{1, 2}), "3\t4\t5\n");
    EXPECT_EQ(printed(counting({1, 3})), "0\t1\t2\n");
    EXPECT_EQ(printed(counting({3, 1})), "0\n1\n2\n");
}

TEST(PrintedValues, OfAHigherArrayAreItsMatrices)
{
    EXPECT_EQ(printed(counting({2, 2, 2})), "[0,:,:]\n0\t1\n2\t3\n\n[1,:,:]\n4\t5\n6\t7\n");
    EXPECT_EQ(printed(counting({3, 1, 2}), OffsetRange{1, 3}), "[1,:,:]\n2\t3\n\n[2,:,:]\n4\t5\n");
    EXPECT_EQ(printed(counting({2, 2, 2}), OffsetRange{1, 2, true}), "4\t5\n6\t7\n");
    EXPECT_EQ(printed(counting({1, 2, 1, 2})), "[0,0,:,:]\n0\t1\n\n[0,1,:,:]\n2\t3\n");
    EXPECT_EQ(printed(counting({2, 2, 1, 1}), OffsetRange{1, 2, true}), "[0,:,:]\n2\n\n[1,:,:]\n3\n");
}

TEST(PrintedValues, OfTextDoNotSteerTheTerminal)
{
    EXPECT_EQ(printed(BVariant("a\nb\x1b[2J\\")), "a\\nb\\x1b[2J\\\n");
}

TEST(CsvValues, HaveAHeaderAndTheOffset)
{
    EXPECT_EQ(csv(BVariant(std::vector<double>{1, 0.5})), "offset,v\n0,1\n1,0.5\n");
    EXPECT_EQ(csv(BVariant(std::vector<double>{1, 0.5, 2}), OffsetRange{1, 3}), "offset,v\n1,0.5\n2,2\n");
    EXPECT_EQ(csv(BVariant(std::vector<double>{1, 0.5, 2}), OffsetRange{2, 3, true}), "offset,v\n2,2\n");
    EXPECT_EQ(csv(BVariant()), "offset,v\n");
    EXPECT_EQ(csv(BVariant(true)), "offset,v\n0,true\n");
}

TEST(CsvValues, OfAMatrixHaveOneColumnForEachOfARow)
{
    EXPECT_EQ(csv(counting({2, 3})), "offset,v[0],v[1],v[2]\n0,0,1,2\n1,3,4,5\n");
    EXPECT_EQ(csv(counting({2, 3}), OffsetRange{1, 2, true}), "offset,v[0],v[1],v[2]\n1,3,4,5\n");
    EXPECT_EQ(csv(counting({1, 3})), "offset,v\n0,0\n1,1\n2,2\n");
    EXPECT_EQ(csv(counting({1, 2, 2}), OffsetRange{0, 1}),
              "offset,v[0],v[1]\n0,0,1\n"); // the offsets of this one lie along its second dimension
    EXPECT_EQ(csv(counting({2, 2, 2}), OffsetRange{1, 2}),
              "offset,\"v[0,0]\",\"v[0,1]\",\"v[1,0]\",\"v[1,1]\"\n1,4,5,6,7\n");
}

TEST(CsvValues, OfComplexNumbersHaveTwoColumns)
{
    EXPECT_EQ(csv(BVariant(std::vector<std::complex<double>>{{1, 2}, {0, -1}})),
              "offset,v.re,v.im\n0,1,2\n1,0,-1\n");
}

TEST(CsvValues, AreQuotedWhereAReaderWouldTakeThemApart)
{
    EXPECT_EQ(
        csv(BVariant(std::vector<std::string>{"a,b", "say \"x\"", "two\nlines", " padded", "plain", ""})),
        "offset,v\n0,\"a,b\"\n1,\"say \"\"x\"\"\"\n2,\"two\nlines\"\n3,\" padded\"\n4,plain\n5,\n");
    EXPECT_EQ(csv(BVariant(1.0), std::nullopt, "i(a,b)"), "offset,\"i(a,b)\"\n0,1\n");
}

} // namespace Orrery::Host
