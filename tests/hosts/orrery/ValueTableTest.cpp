#include "hosts/orrery/ValueTable.h"

#include "foundations/property/PropertyObject.h"
#include "foundations/property/PropertyReference.h"
#include "hosts/orrery/Diagnostics.h"
#include "hosts/orrery/Failure.h"
#include "hosts/orrery/Numbers.h"
#include "hosts/orrery/TreeAccess.h"
#include "hosts/orrery/UnitText.h"
#include "variables/ConcatVar.h"
#include "variables/ExplicitDataVar.h"
#include "variables/RangeVar.h"

#include <gtest/gtest.h>

#include <complex>
#include <memory>

namespace Orrery::Host {

using Brindle::Quay::BVariant;

namespace {

using Complex = std::complex<double>;
using Doubles = std::vector<double>;

class ValueTable : public ::testing::Test
{
protected:
    template <class V = ExplicitDataVar>
    V& add(const char* name)
    {
        auto owned = std::make_unique<V>(QString::fromUtf8(name));
        V& variable = *owned;
        insertNode(&m_root, std::move(owned));
        return variable;
    }

    ExplicitDataVar& add(const char* name, const BVariant& data, const char* units = nullptr)
    {
        ExplicitDataVar& variable = add(name);
        variable.UpdateData(data);
        if (units) {
            EXPECT_GE(variable.SetUnits(parseUnits(units)), 0);
        }
        return variable;
    }

    RangeVar& addRange(const char* name, double start, double step, double count)
    {
        RangeVar& range = add<RangeVar>(name);
        range.SetStart(BVariant(start));
        range.SetStep(BVariant(step));
        range.SetCount(BVariant(count));
        return range;
    }

    PropertyObject m_root;
};

std::string printed(const Variable& variable, const TableOptions& options = {})
{
    Output out;
    printVariable(out, variable, options);
    return out.buffer();
}

std::string inUnits(const Variable& variable, const char* units, bool isCsv = false)
{
    TableOptions options;
    options.units = parseUnits(units);
    options.isCsv = isCsv;
    return printed(variable, options);
}

std::string someOf(const Variable& variable, const OffsetRange& range, bool isCsv = false)
{
    TableOptions options;
    options.range = range;
    options.isCsv = isCsv;
    return printed(variable, options);
}

std::string csv(const Variable& variable)
{
    TableOptions options;
    options.isCsv = true;
    return printed(variable, options);
}

std::string failureOf(const Variable& variable, const TableOptions& options = {})
{
    try {
        printed(variable, options);
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.exitCode(), ExitFailed);
        return failure.what();
    }
    return "none";
}

} // namespace

TEST_F(ValueTable, HasAHeadingAndTheAxisBesideTheValues)
{
    const Variable& x = add("time", BVariant(Doubles{0, 0.25}), "s");
    ExplicitDataVar& y = add("v(\u00FC)", BVariant(Doubles{1, -2.5}), "mV");
    y.AddIndepVariableRef(&x);
    EXPECT_EQ(printed(y), "time [s]  v(\u00FC) [mV]\n"
                          "0         1\n"
                          "0.25      -2.5\n");
    EXPECT_EQ(csv(y), "offset,time [s],v(\u00FC) [mV]\n0,0,1\n1,0.25,-2.5\n");
}

TEST_F(ValueTable, ShowsTheOffsetWhereSomeWereAskedFor)
{
    const Variable& x = add("x", BVariant(Doubles{0, 0.25, 0.5}));
    ExplicitDataVar& y = add("y", BVariant(Doubles{1, 2, 3}));
    y.AddIndepVariableRef(&x);
    EXPECT_EQ(someOf(y, {1, 3}), "offset  x     y\n1       0.25  2\n2       0.5   3\n");
    EXPECT_EQ(someOf(y, {2, 3, true}), "offset  x    y\n2       0.5  3\n");
    EXPECT_EQ(someOf(y, {1, 1}), "offset  x  y\n");
    EXPECT_EQ(someOf(y, {1, 1}, true), "offset,x,y\n");
    EXPECT_EQ(someOf(y, {2, 3, true}, true), "offset,x,y\n2,0.5,3\n");
}

TEST_F(ValueTable, OfAVariableWithoutAxisIsItsValues)
{
    const Variable& y = add("y", BVariant(Doubles{1, 2}), "V");
    EXPECT_EQ(printed(y), "1\n2\n");
    EXPECT_EQ(someOf(y, {1, 2, true}), "2\n");
    EXPECT_EQ(csv(y), "offset,y [V]\n0,1\n1,2\n");
    EXPECT_EQ(printed(add("m", BVariant(Doubles{1, 2, 3, 4}, {2, 2}))), "1\t2\n3\t4\n");
    EXPECT_EQ(printed(add("row", BVariant(Doubles{1, 2}, {1, 2}))), "1\t2\n");
    EXPECT_EQ(printed(add("cube", BVariant(Doubles{1, 2}, {2, 1, 1}))), "[0,:,:]\n1\n\n[1,:,:]\n2\n");
    EXPECT_EQ(printed(add("none")), "");
}

TEST_F(ValueTable, ConvertsTheValuesAndNotTheAxis)
{
    const Variable& x = add("x", BVariant(Doubles{1, 2}), "V");
    ExplicitDataVar& y = add("y", BVariant(Doubles{0.5, 2}), "V");
    y.AddIndepVariableRef(&x);
    EXPECT_EQ(inUnits(y, "mV"), "x [V]  y [mV]\n1      500\n2      2000\n");
    EXPECT_EQ(inUnits(y, "mV", true), "offset,x [V],y [mV]\n0,1,500\n1,2,2000\n");
    EXPECT_EQ(inUnits(x, "mV"), "1000\n2000\n");
    EXPECT_EQ(inUnits(add("n", BVariant(std::vector<int>{1, 2}), "km"), "m"), "1000\n2000\n");
    EXPECT_EQ(inUnits(add("z", BVariant(std::vector<Complex>{{1, 2}}), "V"), "mV"), "1000+2000i\n");
    EXPECT_EQ(inUnits(add("t", BVariant(Doubles{0}), "degC"), "K"), "273.15\n");
}

TEST_F(ValueTable, KeepsEveryBitInTheVariablesOwnUnits)
{
    const Variable& y = add("y", BVariant(Doubles{0.1, 5e-324}), "mV");
    EXPECT_EQ(inUnits(y, "mV"), "0.1\n5e-324\n");
}

TEST_F(ValueTable, RefusesUnitsThatCanNotBe)
{
    TableOptions options;
    options.units = parseUnits("s");
    EXPECT_EQ(failureOf(add("y", BVariant(1.0), "V"), options),
              "can't convert V, electric potential (m^2*kg/(s^3*A)), to s, time (s)");
    EXPECT_EQ(failureOf(add("none", BVariant(1.0)), options), "has no units, and can't be converted to s");
    EXPECT_EQ(failureOf(add("words", BVariant(std::vector<std::string>{"a", "b"}), "ms"), options),
              "values of the type text can't be converted");
}

TEST_F(ValueTable, ShowsSeveralAxes)
{
    const Variable& a = add("a", BVariant(Doubles{1, 2}), "V");
    const Variable& b = add("b", BVariant(std::vector<std::string>{"low\n", "high"}));
    ExplicitDataVar& y = add("y", BVariant(Doubles{5, 6}));
    y.AddIndepVariableRef(&a);
    y.AddIndepVariableRef(&b);
    EXPECT_EQ(printed(y), "a [V]  b      y\n1      low\\n  5\n2      high   6\n");
    EXPECT_EQ(csv(y), "offset,a [V],b,y\n0,1,\"low\n\",5\n1,2,high,6\n");
}

TEST_F(ValueTable, ShowsAnAxisThatIsStoredAsComplexAsReal)
{
    ExplicitDataVar& x = add("f", BVariant(std::vector<Complex>{{1, 0}, {2, 0}}), "Hz");
    ExplicitDataVar& y = add("y", BVariant(std::vector<Complex>{{5, 6}, {7, -8}}));
    y.AddIndepVariableRef(&x);
    EXPECT_EQ(printed(y), "f [Hz]  y\n1       5+6i\n2       7-8i\n");
    EXPECT_EQ(csv(y), "offset,f [Hz],y.re,y.im\n0,1,5,6\n1,2,7,-8\n");
    x.UpdateData(BVariant(std::vector<Complex>{{1, 0}, {2, 3}}));
    EXPECT_EQ(csv(y), "offset,f.re [Hz],f.im [Hz],y.re,y.im\n0,1,0,5,6\n1,2,3,7,-8\n");
}

TEST_F(ValueTable, OfAMatrixHasOneLineForEachValue)
{
    const Variable& x = add("x", BVariant(Doubles{7, 8}));
    ExplicitDataVar& m = add("m", BVariant(Doubles{1, 2, 3, 4}, {2, 2}));
    m.AddIndepVariableRef(&x);
    EXPECT_EQ(printed(m), "offset  x  m\n0,0     7  1\n0,1     7  2\n1,0     8  3\n1,1     8  4\n");
    EXPECT_EQ(csv(m), "offset,x,m[0],m[1]\n0,7,1,2\n1,8,3,4\n");
    const Variable& grid = add("g", BVariant(Doubles{5, 6, 7, 8}, {2, 2}));
    m.SetIndepVariableRef(&grid);
    EXPECT_EQ(someOf(m, {1, 2}), "offset  g  m\n1,0     7  3\n1,1     8  4\n");
    EXPECT_EQ(csv(m), "offset,g[0],g[1],m[0],m[1]\n0,5,6,1,2\n1,7,8,3,4\n");
    const Variable& wide = add("w", BVariant(Doubles{1, 2, 3, 4, 5, 6}, {2, 3}));
    m.SetIndepVariableRef(&wide);
    EXPECT_EQ(failureOf(m), "the axis 'w' has other dimensions than the values");
}

TEST_F(ValueTable, OfARowHasOneLineForEachOffset)
{
    const Variable& x = add("x", BVariant(Doubles{7, 8, 9}));
    ExplicitDataVar& row = add("row", BVariant(Doubles{1, 2, 3}, {1, 3}));
    row.AddIndepVariableRef(&x);
    EXPECT_EQ(printed(row), "x  row\n7  1\n8  2\n9  3\n");
    EXPECT_EQ(someOf(row, {1, 2}), "offset  x  row\n1       8  2\n");
}

TEST_F(ValueTable, LeavesAnAxisOutThatCanNotStandBesideTheValues)
{
    const Variable& shorter = add("short", BVariant(Doubles{1}));
    const Variable& longer = addRange("long", 0, 1, 1e11);
    add("gone", BVariant(Doubles{1, 2}));
    ExplicitDataVar& y = add("y", BVariant(Doubles{5, 6}));
    y.AddIndepVariableRef(&shorter);
    y.AddIndepVariableRef(&longer);
    y.AddIndepVariableRef(m_root.GetPtr<Variable>("gone"));
    ASSERT_GE(m_root.DeleteProperty("gone"), 0);
    ::testing::internal::CaptureStderr();
    const LogWatch log; // keeps the library's own lines away
    EXPECT_EQ(printed(y), "5\n6\n");
    EXPECT_EQ(
        ::testing::internal::GetCapturedStderr(),
        "orrery: warning: the axis 'short' has 1 values where the variable has 2, and is left out\n"
        "orrery: warning: the axis 'long' has 100000000000 values where the variable has 2, and is left out\n"
        "orrery: warning: axis 3 leads nowhere and is left out\n");
}

TEST_F(ValueTable, TakesPartsOfWhatNoMemoryCouldHold)
{
    const Variable& x = addRange("x", 10, 0.5, 1e11);
    RangeVar& y = addRange("y", 0, 2, 1e11);
    EXPECT_EQ(someOf(y, {99999999999, 100000000000, true}), "199999999998\n");
    y.AddIndepVariableRef(&x);
    EXPECT_EQ(someOf(y, {1000000, 1000002}), "offset   x         y\n1000000  500010    2e+06\n"
                                             "1000001  500010.5  2000002\n");
    EXPECT_EQ(someOf(y, {99999999999}, true), "offset,x,y\n99999999999,50000000009.5,199999999998\n");
}

TEST_F(ValueTable, RunsOnFromBlockToBlock)
{
    constexpr int count = 2'500'000; // more than two blocks
    RangeVar& y = addRange("y", 0, 1, count);
    y.SetUnits(parseUnits("km"));
    std::string expected;
    for (int i = 0; i < count; ++i)
        expected += shortestText(i) + '\n';
    TableOptions options;
    testing::internal::CaptureStdout();
    Output out;
    printVariable(out, y, options);
    out.flush();
    EXPECT_TRUE(testing::internal::GetCapturedStdout() == expected);
}

TEST_F(ValueTable, HasTheColumnsOfItsFirstBlock)
{
    constexpr double block = 1U << 20U;
    addRange("long", 0, 1, block);
    add("z", BVariant(std::vector<Complex>{{1, 2}}));
    auto owned = std::make_unique<ConcatVar>("both");
    ConcatVar& both = *owned;
    insertNode(&m_root, std::move(owned));
    both.AddVariable(m_root.GetPtr<Variable>("long"));
    both.AddVariable(m_root.GetPtr<Variable>("z"));
    ASSERT_EQ(both.GetMaxIndepOffset(), (1U << 20U) + 1U);
    testing::internal::CaptureStdout();
    TableOptions options;
    options.isCsv = true;
    EXPECT_EQ(failureOf(both, options),
              "the values are real at first and complex later; --range shows them apart");
    EXPECT_EQ(testing::internal::GetCapturedStdout().substr(0, 24), "offset,both\n0,0\n1,1\n2,2"
                                                                    "\n");
    options.range = OffsetRange{1U << 20U};
    EXPECT_EQ(printed(both, options), "offset,both.re,both.im\n1048576,1,2\n");
}

TEST_F(ValueTable, TellsThatAComputedVariableCanNotBeRead)
{
    RangeVar& broken = add<RangeVar>("r");
    broken.SetCount(BVariant(5)); // and no start
    EXPECT_EQ(failureOf(broken), "the values can't be computed");
    ExplicitDataVar& y = add("y", BVariant(Doubles{1, 2, 3, 4, 5}));
    y.AddIndepVariableRef(&broken);
    EXPECT_EQ(failureOf(y), "the values can't be computed");
}

} // namespace Orrery::Host
