// The evenly spaced axis: its three parameters, what is read of it, and what isn't limited.
#include "variables/RangeVar.h"

#include "tests/support/CaseName.h"
#include "tests/support/VirtualSlot.h"
#include "tests/variables/JoinedVariableTestSupport.h"
#include "variables/ConcatVarStrategy.h"

#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <limits>

namespace Orrery {
namespace {

using namespace JoinTest;
using Brindle::Quay::Complex;

const QString unreadable = QStringLiteral("failed to read RangeVar properties");
const QString startName = QStringLiteral("Start");
const QString stepName = QStringLiteral("Step");
const QString countName = QStringLiteral("Count");

static_assert(sizeof(RangeVar) == sizeof(Variable), "a range adds no fields");
static_assert(sizeof(RangeVarStrategy) == sizeof(IVariableStrategy));

/// A read that warned exactly once and said nothing else.
Reading warned(const std::function<Reading()>& read)
{
    const MessageCapture log;
    Reading reading = read();
    EXPECT_EQ(log.warnings(), QStringList{unreadable});
    EXPECT_EQ(log.debug(), QStringList());
    return reading;
}

/// A read without a word on the log.
Reading silent(const std::function<Reading()>& read)
{
    const MessageCapture log;
    Reading reading = read();
    EXPECT_EQ(log.warnings() + log.debug(), QStringList());
    return reading;
}

struct Params
{
    ERESULT code = ER_SUCCESS;
    double start = -7;
    double step = -7;
    std::uint64_t count = 7;

    friend bool operator==(const Params& a, const Params& b)
    {
        return a.code == b.code && a.start == b.start && a.step == b.step && a.count == b.count;
    }
    friend std::ostream& operator<<(std::ostream& out, const Params& p)
    {
        return out << "code " << p.code << ", " << p.start << " + i * " << p.step << ", " << p.count;
    }
};

template <class Range>
Params paramsOf(const Range& range)
{
    Params params;
    params.code = range.GetParams(&params.start, &params.step, &params.count);
    return params;
}

enum class Kind
{
    RangeVar,
    PlainVariable
};

// Both kinds of range behave alike, so every test of reads runs on both.
class RangeAxis : public testing::TestWithParam<Kind>
{
protected:
    std::unique_ptr<Variable> axis = make();
    RangeVarStrategy& strategy = *axis->SetStrategy<RangeVarStrategy>();

    static std::unique_ptr<Variable> make()
    {
        if (GetParam() == Kind::RangeVar)
            return std::make_unique<RangeVar>(QStringLiteral("axis"));
        return std::make_unique<Variable>(QStringLiteral("axis"));
    }

    void set(const BVariant& start, const BVariant& step, const BVariant& count)
    {
        ASSERT_EQ(strategy.SetStart(start), ER_SUCCESS);
        ASSERT_EQ(strategy.SetStep(step), ER_SUCCESS);
        ASSERT_EQ(strategy.SetCount(count), ER_SUCCESS);
    }
};

INSTANTIATE_TEST_SUITE_P(Kinds, RangeAxis, testing::Values(Kind::RangeVar, Kind::PlainVariable),
                         [](const auto& test) {
                             return test.param == Kind::RangeVar ? "RangeVar" : "PlainVariable";
                         });

TEST_P(RangeAxis, Of0By2InThreeStepsReadsSinglyAndInRuns)
{
    set(0.0, 2.0, 3);
    EXPECT_EQ(silent([&] { return readAt(*axis, 2); }), got(BVariant(4.0)));
    EXPECT_EQ(silent([&] { return readRange(*axis, 0, 0); }), gotNumbers({0, 2, 4}));
    EXPECT_EQ(silent([&] { return readRange(*axis, 1, 3); }), gotNumbers({2, 4}));
    EXPECT_EQ(silent([&] { return readData(*axis); }), gotNumbers({0, 2, 4}));
}

TEST_P(RangeAxis, ARunMayGoBeyondTheCount)
{
    set(0.0, 2.0, 3);
    EXPECT_EQ(silent([&] { return readRange(*axis, 0, 5); }), gotNumbers({0, 2, 4, 6, 8}));
    EXPECT_EQ(silent([&] { return readRange(*axis, 100, 102); }), gotNumbers({200, 202}));
}

TEST_P(RangeAxis, AnOffsetAtTheCountIsRefusedWithTheSameLine)
{
    set(0.0, 2.0, 3);
    EXPECT_EQ(warned([&] { return readAt(*axis, 3); }), stopped(ER_INVALID_ARGUMENT));
    EXPECT_EQ(warned([&] { return readAt(*axis, largest); }), stopped(ER_INVALID_ARGUMENT));
}

TEST_P(RangeAxis, WithoutAStepItGoesByOne)
{
    ASSERT_EQ(strategy.SetStart(5.0), ER_SUCCESS);
    ASSERT_EQ(strategy.SetCount(3), ER_SUCCESS);
    EXPECT_EQ(silent([&] { return readData(*axis); }), gotNumbers({5, 6, 7}));
    EXPECT_EQ(paramsOf(strategy), (Params{ER_SUCCESS, 5, 1, 3}));
}

TEST_P(RangeAxis, WithATextAsStepThatIsNoNumberItGoesByOne)
{
    set(5.0, BVariant("wide"), 3);
    EXPECT_EQ(silent([&] { return readData(*axis); }), gotNumbers({5, 6, 7}));
    EXPECT_EQ(silent([&] { return readAt(*axis, 2); }), got(BVariant(7.0)));
}

TEST_P(RangeAxis, AFolderInThePlaceOfTheStepCountsAsNone)
{
    insertFolder(*axis, stepName);
    ASSERT_EQ(strategy.SetStart(5.0), ER_SUCCESS);
    ASSERT_EQ(strategy.SetCount(2), ER_SUCCESS);
    EXPECT_EQ(readData(*axis), gotNumbers({5, 6}));
}

TEST_P(RangeAxis, ACountOfFourAsADoubleIsFour)
{
    ASSERT_EQ(strategy.SetCount(4.0), ER_SUCCESS);
    EXPECT_EQ(axis->GetMaxIndepOffset(), 4u);
}

TEST_P(RangeAxis, ParametersKeepTheirOwnType)
{
    set(std::int8_t{-3}, BVariant("0.5"), 4.0);
    const auto kept = [&](const QString& name) { return axis->GetPtr<SimpleProperty>(name)->GetValue(); };
    EXPECT_EQ(StorageTest::CompareValues(kept(startName), BVariant(std::int8_t{-3})), "");
    EXPECT_EQ(StorageTest::CompareValues(kept(stepName), BVariant("0.5")), "");
    EXPECT_EQ(StorageTest::CompareValues(kept(countName), BVariant(4.0)), "");
    EXPECT_EQ(readData(*axis), gotNumbers({-3, -2.5, -2, -1.5}));
}

TEST_P(RangeAxis, WithoutACountThereIsNothing)
{
    ASSERT_EQ(strategy.SetStart(0.0), ER_SUCCESS);
    EXPECT_EQ(axis->GetMaxIndepOffset(), 0u);
    EXPECT_EQ(warned([&] { return readAt(*axis, 0); }), stopped(ER_NOT_FOUND));
    EXPECT_EQ(warned([&] { return readRange(*axis, 0, 0); }), stopped(ER_NOT_FOUND));
    EXPECT_EQ(warned([&] { return readRange(*axis, 0, 2); }), stopped(ER_NOT_FOUND));
    EXPECT_EQ(warned([&] { return readData(*axis); }), got(BVariant()));
}

TEST_P(RangeAxis, WithoutAStartThereIsACountOnly)
{
    ASSERT_EQ(strategy.SetCount(3), ER_SUCCESS);
    EXPECT_EQ(axis->GetMaxIndepOffset(), 3u);
    EXPECT_EQ(warned([&] { return readAt(*axis, 0); }), stopped(ER_NOT_FOUND));
    EXPECT_EQ(warned([&] { return readAt(*axis, 3); }), stopped(ER_NOT_FOUND)); // not by the offset
    EXPECT_EQ(warned([&] { return readRange(*axis, 0, 0); }), stopped(ER_NOT_FOUND));
    EXPECT_EQ(warned([&] { return readData(*axis); }), got(BVariant()));
}

TEST_P(RangeAxis, AFreshOneHasNoParametersAndNullData)
{
    EXPECT_FALSE(axis->HasProperty(startName));
    EXPECT_FALSE(axis->HasProperty(stepName));
    EXPECT_FALSE(axis->HasProperty(countName));
    ASSERT_TRUE(axis->HasProperty(QStringLiteral("Data")));
    EXPECT_TRUE(axis->GetPtr<SimpleProperty>(QStringLiteral("Data"))->GetValue().isNull());
    EXPECT_EQ(paramsOf(strategy), Params{ER_NOT_FOUND});
    EXPECT_EQ(childText(*axis, QStringLiteral("VariableStrategy")), QStringLiteral("RangeStrategy"));
}

TEST_P(RangeAxis, AnUnreadableParameterFailsTheReadWithTheSameLine)
{
    set(BVariant("here"), 1.0, 3);
    EXPECT_EQ(warned([&] { return readAt(*axis, 0); }), stopped(ER_FAILED));
    EXPECT_EQ(warned([&] { return readRange(*axis, 0, 0); }), stopped(ER_FAILED));
    EXPECT_EQ(warned([&] { return readData(*axis); }), got(BVariant()));
    set(1.0, 1.0, BVariant("many"));
    EXPECT_EQ(axis->GetMaxIndepOffset(), 0u);
    EXPECT_EQ(warned([&] { return readAt(*axis, 0); }), stopped(ER_FAILED));
    EXPECT_EQ(warned([&] { return readRange(*axis, 0, 2); }), stopped(ER_FAILED));
}

TEST_P(RangeAxis, AStartMayBeWrittenWhenTheCountCannotBeRead)
{
    set(2.0, 3.0, BVariant("many"));
    EXPECT_EQ(paramsOf(strategy), (Params{ER_FAILED, 2.0})); // step and count untouched
    set(BVariant("here"), 3.0, 4);
    EXPECT_EQ(paramsOf(strategy), (Params{ER_FAILED}));
}

TEST_P(RangeAxis, ElementsAreScalars)
{
    set(0.0, 1.0, 3);
    std::vector<std::uint64_t> shape{4, 5};
    EXPECT_EQ(axis->GetElementDimCount(), 0u);
    EXPECT_EQ(axis->GetElementShape(&shape), ER_SUCCESS);
    EXPECT_TRUE(shape.empty());
}

TEST_P(RangeAxis, AnUpdateChangesNothingAndMarksDirty)
{
    set(0.0, 2.0, 3);
    ASSERT_TRUE(axis->getDirtyTracker()->isClean());
    EXPECT_EQ(&axis->UpdateData(numbers({7, 8})), axis.get());
    EXPECT_TRUE(axis->getDirtyTracker()->isDirty());
    EXPECT_EQ(readData(*axis), gotNumbers({0, 2, 4}));
    EXPECT_TRUE(axis->GetPtr<SimpleProperty>(QStringLiteral("Data"))->GetValue().isNull());
    axis->UpdateDataAsCellArrayFromBVariant(numbers({7, 8}));
    EXPECT_TRUE(axis->GetPtr<SimpleProperty>(QStringLiteral("Data"))->GetValue().isNull());
}

TEST_P(RangeAxis, NoReadCleansTheTracker)
{
    set(0.0, 2.0, 3);
    axis->UpdateData(numbers({7}));
    readData(*axis);
    readAt(*axis, 0);
    readRange(*axis, 0, 2);
    axis->GetMaxIndepOffset();
    EXPECT_TRUE(axis->getDirtyTracker()->isDirty());
    EXPECT_EQ(axis->getDirtyTracker()->getUpdateCount(), 0);
}

TEST_P(RangeAxis, NoSetterMarksDirtyOrSendsASignal)
{
    const SignalSpies spies(*axis);
    set(0.0, 2.0, 3);
    set(1.0, 4.0, 5);
    EXPECT_TRUE(axis->getDirtyTracker()->isClean());
    EXPECT_EQ(spies.count(), 0);
    EXPECT_EQ(readData(*axis), gotNumbers({1, 5, 9, 13, 17})); // seen at the next read all the same
}

TEST_P(RangeAxis, ACountOfZeroGivesAnEmptyVector)
{
    set(5.0, 1.0, 0);
    EXPECT_EQ(silent([&] { return readData(*axis); }), gotNumbers({}));
    EXPECT_EQ(silent([&] { return readRange(*axis, 0, 0); }), gotNumbers({}));
    EXPECT_EQ(warned([&] { return readAt(*axis, 0); }), stopped(ER_INVALID_ARGUMENT));
}

TEST_P(RangeAxis, TheFlagOfTheDataIsThatOfNoCellArray)
{
    set(0.0, 1.0, 2);
    IsCellArray flag = IsCellArrayTrue;
    axis->GetData(&flag);
    EXPECT_EQ(flag, IsCellArrayFalse);
    strategy.SetCount(BVariant("many"));
    flag = IsCellArrayTrue;
    const MessageCapture log;
    EXPECT_TRUE(axis->GetData(&flag).isNull());
    EXPECT_EQ(flag, IsCellArrayFalse);
}

TEST_P(RangeAxis, ARunFromAnOffsetToItselfIsEmpty)
{
    set(0.0, 2.0, 3);
    EXPECT_EQ(silent([&] { return readRange(*axis, 2, 2); }), gotNumbers({}));
    EXPECT_EQ(silent([&] { return readRange(*axis, 3, 0); }), gotNumbers({})); // an end of 0 is the count
    EXPECT_EQ(silent([&] { return readRange(*axis, 9, 9); }), gotNumbers({}));
    EXPECT_EQ(silent([&] { return readRange(*axis, largest, largest); }), gotNumbers({}));
}

TEST_P(RangeAxis, AnEndBelowTheStartFailsByItsLength)
{
    set(0.0, 2.0, 3);
    EXPECT_TRUE(failsByLength(*axis, 3, 1));
    EXPECT_TRUE(failsByLength(*axis, 4, 0)); // an end of 0 is the count, 3
    EXPECT_TRUE(failsByLength(*axis, largest, 1));
    EXPECT_TRUE(failsByLength(*axis, std::uint64_t{1} << 63, 1));
    EXPECT_TRUE(failsByLength(*axis, 2, 1));
    EXPECT_EQ(TestSupport::Describe(readRange(*axis, 3, 1).out), TestSupport::Describe(untouched()));
}

TEST_P(RangeAxis, TheLargestCountIsReadWhereItCanBe)
{
    set(0.5, 1.0, largest);
    EXPECT_EQ(axis->GetMaxIndepOffset(), largest);
    EXPECT_EQ(paramsOf(strategy).count, largest);
    EXPECT_EQ(readAt(*axis, largest - 1), got(BVariant(18446744073709551616.0)));
    EXPECT_EQ(readRange(*axis, largest - 2, 0), gotNumbers({18446744073709551616.0, 18446744073709551616.0}));
    EXPECT_TRUE(failsByLength(*axis, 0, 0));
    EXPECT_EQ(readData(*axis).failure.type, "std::length_error");
}

TEST_P(RangeAxis, OffsetsKeepTheirUpperBits)
{
    set(0.0, 1.0, largest);
    const std::uint64_t half = std::uint64_t{1} << 63;
    EXPECT_EQ(readAt(*axis, half), got(BVariant(9223372036854775808.0))); // and not less than zero
    EXPECT_EQ(readAt(*axis, half + 4096), got(BVariant(9223372036854779904.0)));
    EXPECT_EQ(readRange(*axis, half - 1024, half - 1022),
              gotNumbers({9223372036854774784.0, 9223372036854774784.0}));
    EXPECT_EQ(readRange(*axis, half + 4096, half + 4098),
              gotNumbers({9223372036854779904.0, 9223372036854779904.0}));
    EXPECT_EQ(readAt(*axis, (std::uint64_t{1} << 53) + 1), got(BVariant(9007199254740992.0)));
    EXPECT_EQ(readAt(*axis, (std::uint64_t{1} << 53) + 3), got(BVariant(9007199254740996.0)));
}

TEST_P(RangeAxis, ACountThatNoMemoryHoldsIsReadInParts)
{
    set(0.0, 2.0, std::uint64_t{100000000000});
    EXPECT_EQ(axis->GetMaxIndepOffset(), 100000000000u);
    EXPECT_EQ(readAt(*axis, 99999999999), got(BVariant(199999999998.0)));
    EXPECT_EQ(readRange(*axis, 99999999998, 0), gotNumbers({199999999996.0, 199999999998.0}));
}

TEST_P(RangeAxis, EachValueIsComputedByItself)
{
    set(0.1, 0.1, 1000);
    const Doubles all = ToDoubles(axis->GetData());
    ASSERT_EQ(all.size(), 1000u);
    for (std::size_t i = 0; i < all.size(); ++i) {
        volatile const double product = static_cast<double>(i) * 0.1; // rounded before the sum
        EXPECT_EQ(all[i], product + 0.1) << i;
        EXPECT_EQ(ToDoubles(readAt(*axis, i).out), Doubles{all[i]}) << i;
    }
}

TEST_P(RangeAxis, InfiniteAndUndefinedParametersFollowTheFormula)
{
    const double infinity = std::numeric_limits<double>::infinity();
    set(0.0, infinity, 3);
    const Doubles byInfinity = ToDoubles(axis->GetData());
    ASSERT_EQ(byInfinity.size(), 3u);
    EXPECT_TRUE(std::isnan(byInfinity[0])); // zero times infinity
    EXPECT_EQ(byInfinity[1], infinity);
    EXPECT_EQ(byInfinity[2], infinity);
    set(std::nan(""), 1.0, 1);
    EXPECT_TRUE(std::isnan(ToDoubles(axis->GetData()).at(0)));
    set(-0.0, -0.0, 2);
    EXPECT_TRUE(std::signbit(ToDoubles(axis->GetData()).at(1))); // -0 + -0
}

TEST_P(RangeAxis, NullOutputsAreRefused)
{
    set(0.0, 1.0, 2);
    double number = 0;
    std::uint64_t count = 0;
    EXPECT_EQ(axis->GetValueAt(nullptr, 0), ER_INVALID_ARGUMENT);
    EXPECT_EQ(axis->GetValueRange(nullptr, 0, 0), ER_INVALID_ARGUMENT);
    EXPECT_EQ(axis->GetElementShape(nullptr), ER_INVALID_ARGUMENT);
    EXPECT_EQ(strategy.GetParams(nullptr, &number, &count), ER_INVALID_ARGUMENT);
    EXPECT_EQ(strategy.GetParams(&number, nullptr, &count), ER_INVALID_ARGUMENT);
    EXPECT_EQ(strategy.GetParams(&number, &number, nullptr), ER_INVALID_ARGUMENT);
}

// --- the setters

struct ShapeCase
{
    const char* name;
    BVariant value;
    ERESULT code;
};

class RangeSetter : public testing::TestWithParam<ShapeCase>
{
};

TEST_P(RangeSetter, TakesOneElementInAnyShape)
{
    using Setter = ERESULT (RangeVar::*)(const BVariant&);
    const std::pair<Setter, QString> setters[] = {
        {&RangeVar::SetStart, startName}, {&RangeVar::SetStep, stepName}, {&RangeVar::SetCount, countName}};
    for (const auto& [setter, name] : setters) {
        RangeVar axis;
        ASSERT_EQ((axis.*setter)(2.0), ER_SUCCESS);
        EXPECT_EQ((axis.*setter)(GetParam().value), GetParam().code) << name.toStdString();
        const BVariant expected = GetParam().code < 0 ? BVariant(2.0) : GetParam().value;
        EXPECT_EQ(StorageTest::CompareValues(axis.GetPtr<SimpleProperty>(name)->GetValue(), expected), "");
    }
}

INSTANTIATE_TEST_SUITE_P(Shapes, RangeSetter,
                         testing::Values(ShapeCase{"Scalar", BVariant(3.0), ER_SUCCESS},
                                         ShapeCase{"OneElement", MakeCounting({1}), ER_SUCCESS},
                                         ShapeCase{"OneByOne", MakeCounting({1, 1}), ER_SUCCESS},
                                         ShapeCase{"OneByOneByOne", MakeCounting({1, 1, 1}), ER_SUCCESS},
                                         ShapeCase{"Text", BVariant("anything"), ER_SUCCESS},
                                         ShapeCase{"Negative", BVariant(-4), ER_SUCCESS},
                                         ShapeCase{"Zero", BVariant(0), ER_SUCCESS},
                                         ShapeCase{"RunTimeType",
                                                   BVariant::runTime(std::pair<int, int>(1, 2)), ER_SUCCESS},
                                         ShapeCase{"Null", BVariant(), ER_INVALID_ARGUMENT},
                                         ShapeCase{"TwoElements", MakeCounting({2}), ER_INVALID_ARGUMENT},
                                         ShapeCase{"OneByTwo", MakeCounting({1, 2}), ER_INVALID_ARGUMENT},
                                         ShapeCase{"NoElements", MakeCounting({0}), ER_INVALID_ARGUMENT},
                                         ShapeCase{"OneByZero", MakeCounting({1, 0}), ER_INVALID_ARGUMENT}),
                         TestSupport::CaseName());

TEST(RangeVar, ASetterLeavesAFolderOfItsNameInPlace)
{
    RangeVar axis;
    PropertyObject* const folder = insertFolder(axis, startName);
    EXPECT_EQ(axis.SetStart(1.0), ER_INVALID_ARGUMENT);
    EXPECT_EQ(axis.GetPropertyPtr(startName), folder);
    ASSERT_EQ(axis.SetCount(1), ER_SUCCESS);
    EXPECT_EQ(paramsOf(axis), Params{ER_NOT_FOUND});
}

// --- what a parameter is read as

struct NumberCase
{
    const char* name;
    BVariant value;
    bool readable;
    double number;
};

class RangeNumber : public testing::TestWithParam<NumberCase>
{
protected:
    RangeVar axis;
};

TEST_P(RangeNumber, AsStartMustBeReadable)
{
    ASSERT_EQ(axis.SetProperty(startName, GetParam().value), ER_SUCCESS);
    ASSERT_EQ(axis.SetCount(2), ER_SUCCESS);
    ASSERT_EQ(axis.SetStep(4.0), ER_SUCCESS);
    EXPECT_EQ(paramsOf(axis),
              GetParam().readable ? (Params{ER_SUCCESS, GetParam().number, 4, 2}) : Params{ER_FAILED});
}

TEST_P(RangeNumber, AsStepIsOneWhenItIsNotReadable)
{
    ASSERT_EQ(axis.SetProperty(stepName, GetParam().value), ER_SUCCESS);
    ASSERT_EQ(axis.SetCount(2), ER_SUCCESS);
    ASSERT_EQ(axis.SetStart(4.0), ER_SUCCESS);
    const double step = GetParam().readable ? GetParam().number : 1.0;
    EXPECT_EQ(paramsOf(axis), (Params{ER_SUCCESS, 4, step, 2}));
    EXPECT_EQ(readData(axis), gotNumbers({4, 4 + step}));
}

INSTANTIATE_TEST_SUITE_P(
    Values, RangeNumber,
    testing::Values(NumberCase{"Double", BVariant(2.5), true, 2.5},
                    NumberCase{"Float", BVariant(0.1F), true, static_cast<double>(0.1F)},
                    NumberCase{"Negative", BVariant(std::int16_t{-3}), true, -3},
                    NumberCase{"LargestUnsigned", BVariant(largest), true, 18446744073709551616.0},
                    NumberCase{"Text", BVariant("2.5"), true, 2.5},
                    NumberCase{"True", BVariant(true), true, 1},
                    NumberCase{"RealComplex", BVariant(std::complex<double>(2.5, 0)), true, 2.5},
                    NumberCase{"RealComplexInteger", BVariant(Complex<int>{3, 0}), true, 3},
                    NumberCase{"OneByOne", BVariant(Doubles{4.5}, {1, 1}), true, 4.5},
                    NumberCase{"Complex", BVariant(std::complex<double>(2.5, 1)), false, 0},
                    NumberCase{"OtherText", BVariant("2.5 m"), false, 0},
                    NumberCase{"TextWithBlank", BVariant(" 2.5"), false, 0},
                    NumberCase{"EmptyText", BVariant(""), false, 0}, NumberCase{"Null", BVariant(), false, 0},
                    NumberCase{"Duration", BVariant(Brindle::Quay::Duration()), false, 0},
                    NumberCase{"TwoElements", MakeCounting({2}), false, 0},
                    NumberCase{"NoElements", MakeCounting({0}), false, 0},
                    NumberCase{"RunTimeType", BVariant::runTime(std::pair<int, int>(1, 2)), false, 0}),
    TestSupport::CaseName());

struct CountCase
{
    const char* name;
    BVariant value;
    bool readable;
    std::uint64_t count;
};

class RangeCount : public testing::TestWithParam<CountCase>
{
};

TEST_P(RangeCount, IsZeroWhenItIsNotReadable)
{
    RangeVar axis;
    ASSERT_EQ(axis.SetProperty(countName, GetParam().value), ER_SUCCESS);
    EXPECT_EQ(axis.GetMaxIndepOffset(), GetParam().readable ? GetParam().count : 0);
    EXPECT_EQ(paramsOf(axis), Params{ER_NOT_FOUND});
    ASSERT_EQ(axis.SetStart(2.0), ER_SUCCESS);
    EXPECT_EQ(paramsOf(axis),
              GetParam().readable ? (Params{ER_SUCCESS, 2, 1, GetParam().count}) : (Params{ER_FAILED, 2}));
}

INSTANTIATE_TEST_SUITE_P(
    Values, RangeCount,
    testing::Values(
        CountCase{"Unsigned", BVariant(std::uint64_t{4}), true, 4},
        CountCase{"Largest", BVariant(largest), true, largest}, CountCase{"Double", BVariant(4.0), true, 4},
        CountCase{"Fraction", BVariant(2.75), true, 2}, CountCase{"Text", BVariant("4"), true, 4},
        CountCase{"LargestAsText", BVariant("18446744073709551615"), true, largest},
        CountCase{"True", BVariant(true), true, 1},
        CountCase{"RealComplex", BVariant(std::complex<double>(3, 0)), true, 3},
        CountCase{"OneByOne", BVariant(std::vector<int>{6}, {1, 1}), true, 6},
        CountCase{"Negative", BVariant(-1), false, 0}, CountCase{"NegativeDouble", BVariant(-1.0), false, 0},
        CountCase{"TwoToThe64", BVariant(18446744073709551616.0), false, 0},
        CountCase{"NotANumber", BVariant(std::nan("")), false, 0},
        CountCase{"Infinite", BVariant(std::numeric_limits<double>::infinity()), false, 0},
        CountCase{"Complex", BVariant(std::complex<double>(3, 1)), false, 0},
        CountCase{"OtherText", BVariant("four"), false, 0}, CountCase{"Null", BVariant(), false, 0},
        CountCase{"TwoElements", MakeCounting({2}), false, 0}),
    TestSupport::CaseName());

// --- the class

TEST(RangeVar, NamesItsChildrenAndItsType)
{
    EXPECT_EQ(RangeVar::Start, startName);
    EXPECT_EQ(RangeVar::Step, stepName);
    EXPECT_EQ(RangeVar::Count, countName);
    const RangeVar axis(QStringLiteral("axis"));
    EXPECT_EQ(axis.GetName(), QStringLiteral("axis"));
    EXPECT_EQ(axis.PropertyObjType(), QStringLiteral("RangeVar"));
    EXPECT_EQ(RangeVar::StaticType(), QStringLiteral("RangeVar"));
    EXPECT_EQ(axis.GetStrategyPtr().lock()->GetType(), QStringLiteral("RangeStrategy"));
    EXPECT_EQ(axis.GetTypeFlags(), 3u);
}

TEST(RangeVar, ForwardsItsSettersAndParameters)
{
    RangeVar axis;
    EXPECT_EQ(axis.SetStart(1.0), ER_SUCCESS);
    EXPECT_EQ(axis.SetStep(2.0), ER_SUCCESS);
    EXPECT_EQ(axis.SetCount(3), ER_SUCCESS);
    EXPECT_EQ(paramsOf(axis), (Params{ER_SUCCESS, 1, 2, 3}));
}

TEST(RangeVar, HasNoParametersUnderAnotherStrategyAndStillSetsThem)
{
    RangeVar axis;
    axis.SetStrategy<ConcatVarStrategy>();
    EXPECT_EQ(axis.SetStart(1.0), ER_SUCCESS);
    EXPECT_EQ(axis.SetStep(2.0), ER_SUCCESS);
    EXPECT_EQ(axis.SetCount(3), ER_SUCCESS);
    EXPECT_EQ(axis.SetCount(MakeCounting({2})), ER_INVALID_ARGUMENT);
    EXPECT_EQ(paramsOf(axis), Params{ER_FAILED});
    axis.SetStrategy<RangeVarStrategy>();
    EXPECT_EQ(paramsOf(axis), (Params{ER_SUCCESS, 1, 2, 3}));
}

TEST(RangeVar, AMovedFromOneRefusesWithoutAFault)
{
    RangeVar axis;
    const Variable taker(std::move(static_cast<Variable&>(axis)));
    EXPECT_EQ(axis.SetStart(1.0), ER_FAILED);
    EXPECT_EQ(axis.SetStep(1.0), ER_FAILED);
    EXPECT_EQ(axis.SetCount(1), ER_FAILED);
    EXPECT_EQ(paramsOf(axis).code, ER_FAILED);
}

TEST(RangeVar, ReadingItsParametersAfterAMoveCopiesItOntoTheSource)
{
    RangeVar from;
    from.SetStart(1.0);
    from.SetCount(2);
    RangeVar to;
    static_cast<Variable&>(to) = std::move(static_cast<Variable&>(from));
    EXPECT_FALSE(from.HasProperty(startName)); // its children have gone to the target
    EXPECT_TRUE(to.HasProperty(startName));
    EXPECT_EQ(paramsOf(to), (Params{ER_SUCCESS, 1, 1, 2}));
    EXPECT_TRUE(from.HasProperty(startName));
    to.SetStart(9.0); // the strategy still names the source
    EXPECT_EQ(childDoubles(from, startName), Doubles{9});
    EXPECT_EQ(childDoubles(to, startName), Doubles{1});
}

TEST(RangeVar, ACloneIsARangeThatCallsItselfExplicit)
{
    RangeVar axis(QStringLiteral("axis"));
    axis.SetStart(0.0);
    axis.SetStep(2.0);
    axis.SetCount(3);
    const std::unique_ptr<AbstractProperty> clone(axis.Clone());
    auto* const copy = dynamic_cast<RangeVar*>(clone.get());
    ASSERT_NE(copy, nullptr);
    EXPECT_EQ(readAt(*copy, 2), got(BVariant(4.0)));
    EXPECT_TRUE(isExactly<RangeVarStrategy>(*copy->GetStrategyPtr().lock()));
    EXPECT_EQ(childText(*copy, QStringLiteral("VariableStrategy")), QStringLiteral("ExplicitDataStrategy"));
    EXPECT_EQ(childText(axis, QStringLiteral("VariableStrategy")), QStringLiteral("RangeStrategy"));
    copy->SetStart(9.0);
    EXPECT_EQ(readAt(axis, 0), got(BVariant(0.0)));
    EXPECT_EQ(readAt(*copy, 0), got(BVariant(9.0)));
}

TEST(RangeVar, CopiesAsItsClonesDo)
{
    RangeVar axis;
    axis.SetStart(0.0);
    axis.SetCount(3);
    const RangeVar constructed(axis);
    RangeVar assigned;
    assigned.SetCount(9);
    assigned = axis;
    for (const RangeVar* copy : {&constructed, static_cast<const RangeVar*>(&assigned)}) {
        EXPECT_EQ(readData(*copy), gotNumbers({0, 1, 2}));
        EXPECT_TRUE(isExactly<RangeVarStrategy>(*copy->GetStrategyPtr().lock()));
        EXPECT_EQ(childText(*copy, QStringLiteral("VariableStrategy")),
                  QStringLiteral("ExplicitDataStrategy"));
    }
}

TEST(RangeVarStrategy, CopiesItselfForAnotherOwner)
{
    RangeVar axis;
    axis.SetStart(0.0);
    axis.SetCount(3);
    RangeVar other;
    other.SetStart(5.0);
    other.SetCount(1);
    const auto copy = axis.GetStrategyPtr().lock()->Copy(&other);
    ASSERT_NE(copy, nullptr);
    EXPECT_TRUE(isExactly<RangeVarStrategy>(*copy));
    EXPECT_EQ(ToDoubles(copy->GetData(nullptr)), Doubles{5});
    EXPECT_EQ(copy->GetType(), QStringLiteral("RangeStrategy"));
    EXPECT_EQ(&copy->UpdateData(numbers({1}), IsCellArrayFalse), &other);
}

#if defined(__x86_64__) && defined(__GXX_ABI_VERSION)
TEST(RangeVarStrategy, KeepsTheOrderOfVirtualOperations)
{
    using TestSupport::slotOf;
    EXPECT_EQ(slotOf(&RangeVarStrategy::GetData), 0);
    EXPECT_EQ(slotOf(&RangeVarStrategy::UpdateData), 1);
    EXPECT_EQ(slotOf(&RangeVarStrategy::GetValueAt), 2);
    EXPECT_EQ(slotOf(&RangeVarStrategy::GetValueRange), 3);
    EXPECT_EQ(slotOf(&RangeVarStrategy::GetMaxIndepOffset), 4);
    EXPECT_EQ(slotOf(&RangeVarStrategy::GetElementDimCount), 5);
    EXPECT_EQ(slotOf(&RangeVarStrategy::GetElementShape), 6);
    EXPECT_EQ(slotOf(&RangeVarStrategy::Copy), 9);
    EXPECT_EQ(slotOf(&RangeVarStrategy::GetType), 10);
}
#endif

} // namespace
} // namespace Orrery
