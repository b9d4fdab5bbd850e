#include "hosts/orrery/CurveReader.h"

#include "foundations/property/PropertyObject.h"
#include "hosts/orrery/Failure.h"
#include "hosts/orrery/UnitText.h"
#include "variables/ExplicitDataVar.h"
#include "variables/RangeVar.h"

#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <limits>

namespace Orrery::Host {

namespace {

using Doubles = std::vector<double>;
using Pieces = std::vector<QVector<QPointF>>;

class CurveOf : public ::testing::Test
{
protected:
    ExplicitDataVar* add(const QString& name, const BVariant& data)
    {
        auto* const variable = new ExplicitDataVar(name);
        variable->UpdateData(data);
        EXPECT_GE(folder.InsertProperty(variable), 0);
        return variable;
    }

    ExplicitDataVar* addPair(const Doubles& x, const BVariant& y)
    {
        auto* const variable = add("y", y);
        EXPECT_GE(variable->AddIndepVariableRef(add("x", BVariant(x))), 0);
        return variable;
    }

    PropertyObject folder;
};

std::string refusalOf(const Variable& variable, const CurveOptions& options = {})
{
    try {
        readCurve(variable, options);
    } catch (const Failure& failure) {
        return failure.what();
    }
    return "was accepted";
}

CurveOptions logarithmic(bool x, bool y)
{
    CurveOptions options;
    options.isLogX = x;
    options.isLogY = y;
    return options;
}

constexpr double nan = std::numeric_limits<double>::quiet_NaN();
constexpr double infinity = std::numeric_limits<double>::infinity();

} // namespace

TEST_F(CurveOf, AVariableLiesOverItsFirstAxis)
{
    const Variable* const y = addPair({1, 2, 4}, BVariant(Doubles{5, 6, 7}));
    const Curve curve = readCurve(*y, {});
    EXPECT_EQ(curve.pieces, (Pieces{{{1, 5}, {2, 6}, {4, 7}}}));
    EXPECT_FALSE(curve.isMagnitude);
}

TEST_F(CurveOf, AVariableWithoutAnAxisLiesOverItsOffsets)
{
    EXPECT_EQ(readCurve(*add("y", BVariant(std::vector<std::int16_t>{5, 6})), {}).pieces,
              (Pieces{{{0, 5}, {1, 6}}}));
    EXPECT_EQ(readCurve(*add("row", BVariant(Doubles{5, 6}, {1, 2})), {}).pieces, (Pieces{{{0, 5}, {1, 6}}}));
    EXPECT_TRUE(readCurve(*add("none", BVariant(Doubles{})), {}).pieces.empty());
}

TEST_F(CurveOf, ComplexValuesIsThatOfTheirMagnitudes)
{
    const Curve curve =
        readCurve(*add("y", BVariant(std::vector<std::complex<double>>{{3, 4}, {-2, 0}})), {});
    EXPECT_EQ(curve.pieces, (Pieces{{{0, 5}, {1, 2}}}));
    EXPECT_TRUE(curve.isMagnitude);
}

TEST_F(CurveOf, ValuesThatAreNoFiniteNumbersIsInterrupted)
{
    const Variable* const y =
        addPair({0, 1, nan, 3, 4, 5, 6}, BVariant(Doubles{0, 1, 2, 3, infinity, nan, 6}));
    EXPECT_EQ(readCurve(*y, {}).pieces, (Pieces{{{0, 0}, {1, 1}}, {{3, 3}}, {{6, 6}}}));
}

TEST_F(CurveOf, ValuesOnALogarithmicAxisIsInterruptedWhereTheyAreNotAbove0)
{
    const Variable* const y = addPair({-1, 0, 1, 2, 3}, BVariant(Doubles{1, 1, 1, 0, -2}));
    EXPECT_EQ(readCurve(*y, logarithmic(true, false)).pieces, (Pieces{{{1, 1}, {2, 0}, {3, -2}}}));
    EXPECT_EQ(readCurve(*y, logarithmic(false, true)).pieces, (Pieces{{{-1, 1}, {0, 1}, {1, 1}}}));
    EXPECT_EQ(readCurve(*y, logarithmic(true, true)).pieces, (Pieces{{{1, 1}}}));
}

TEST_F(CurveOf, ANestedSweepHasAPieceForEachRunOfItsInnerAxis)
{
    const Variable* const y = addPair({0, 1, 2, 0, 1, 2}, BVariant(Doubles{1, 2, 3, 4, 5, 6}));
    EXPECT_EQ(readCurve(*y, {}).pieces, (Pieces{{{0, 1}, {1, 2}, {2, 3}}, {{0, 4}, {1, 5}, {2, 6}}}));
}

TEST_F(CurveOf, AnAxisThatTurnsBackStepByStepIsOnePiece)
{
    const Variable* const y = addPair({0, 1, 2, 1, 0}, BVariant(Doubles{1, 2, 3, 4, 5}));
    EXPECT_EQ(readCurve(*y, {}).pieces.size(), 1U);
}

TEST_F(CurveOf, ManyValuesKeepsEndsAndExtremesInOrder)
{
    const int count = 200'000;
    Doubles values(count, 0.0);
    values[70'001] = 3.0;
    values[70'002] = -3.0;
    values[count - 1] = 1.0;
    const Curve curve = readCurve(*add("y", BVariant(values)), {});
    ASSERT_EQ(curve.pieces.size(), 1U);
    const QVector<QPointF>& points = curve.pieces.front();
    EXPECT_LT(points.size(), 10'000);
    EXPECT_EQ(points.front(), QPointF(0, 0));
    EXPECT_EQ(points.back(), QPointF(count - 1, 1));
    EXPECT_TRUE(points.contains(QPointF(70'001, 3)));
    EXPECT_TRUE(points.contains(QPointF(70'002, -3)));
    for (int i = 1; i < points.size(); ++i)
        ASSERT_LT(points[i - 1].x(), points[i].x());
}

TEST_F(CurveOf, ComputedValuesIsReadInBlocks)
{
    RangeVar range("r");
    ASSERT_GE(range.SetStart(BVariant(0.5)), 0);
    ASSERT_GE(range.SetCount(BVariant(70'000)), 0);
    const Curve curve = readCurve(range, {});
    EXPECT_EQ(curve.pieces.front().front(), QPointF(0, 0.5));
    EXPECT_EQ(curve.pieces.front().back(), QPointF(69'999, 69'999.5));
    ASSERT_GE(range.SetCount(BVariant(1e11)), 0);
    EXPECT_EQ(refusalOf(range), "'r' has 100000000000 values; at most 100000000 can be drawn");
}

TEST_F(CurveOf, ValuesIsInTheUnitsThatAreAskedFor)
{
    ExplicitDataVar* const y = addPair({1000}, BVariant(Doubles{2}));
    ASSERT_GE(y->SetUnits(parseUnits("A")), 0);
    ASSERT_GE(folder.GetPtr<Variable>("x")->SetUnits(parseUnits("degC")), 0);
    CurveOptions options;
    options.yUnits = parseUnits("mA");
    options.xUnits = parseUnits("K");
    EXPECT_EQ(readCurve(*y, options).pieces, (Pieces{{{1273.15, 2000}}}));
    options.yUnits = parseUnits("V");
    EXPECT_EQ(refusalOf(*y, options),
              "can't convert A, electric current (A), to V, electric potential (m^2*kg/(s^3*A))");
}

TEST_F(CurveOf, WhatCanNotBeDrawnIsRefused)
{
    EXPECT_EQ(refusalOf(*add("m", BVariant(Doubles(6), {2, 3}))), "'m' holds arrays, one at each offset");
    EXPECT_EQ(refusalOf(*add("t", BVariant(std::vector<std::string>{"a", "b"}))),
              "'t' holds no numbers but text");
    EXPECT_EQ(refusalOf(*addPair({1, 2}, BVariant(Doubles{1}))), "'y' has 1 values, but its axis 'x' has 2");
    auto* const z = add("z", BVariant(Doubles{1}));
    ASSERT_GE(z->AddIndepVariableRef(add("c", BVariant(std::complex<double>(1, 2)))), 0);
    EXPECT_EQ(refusalOf(*z), "the axis 'c' has complex values");
    ASSERT_GE(folder.DeleteProperty("c"), 0);
    EXPECT_EQ(refusalOf(*z), "the axis of 'z' leads nowhere");
}

TEST_F(CurveOf, ShownUnitsAreTheDisplayUnitsIfTheyFit)
{
    auto* const y = add("y", BVariant(Doubles{1}));
    EXPECT_FALSE(shownUnitsOf(*y));
    ASSERT_GE(y->SetUnits(parseUnits("A")), 0);
    EXPECT_EQ(unitsLabel(*shownUnitsOf(*y)), "A");
    ASSERT_GE(y->SetDisplayUnits(parseUnits("mA")), 0);
    EXPECT_EQ(unitsLabel(*shownUnitsOf(*y)), "mA");
    ASSERT_GE(y->SetUnits(parseUnits("V")), 0); // the display units stay, and don't fit any more
    EXPECT_EQ(unitsLabel(*shownUnitsOf(*y)), "V");
}

} // namespace Orrery::Host
