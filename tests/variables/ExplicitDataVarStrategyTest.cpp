#include "variables/ExplicitDataVarStrategy.h"

#include "tests/variables/VariableTestSupport.h"
#include "variables/Variable.h"

#include <gtest/gtest.h>

#include <limits>
#include <stdexcept>
#include <string>

namespace Orrery {
namespace {

using Doubles = std::vector<double>;
using Shape = std::vector<std::uint64_t>;

constexpr std::uint64_t largestOffset = std::numeric_limits<std::uint64_t>::max();

Variable* makeVariable(PropertyObject& folder, const BVariant& data)
{
    return put(folder, std::make_unique<Variable>(QStringLiteral("x"), data));
}

TEST(ExplicitStrategy, IsKnownByItsText)
{
    Variable variable;
    const ExplicitDataVarStrategy strategy(&variable);
    EXPECT_EQ(strategy.GetType(), QStringLiteral("ExplicitDataStrategy"));
    EXPECT_EQ(ExplicitDataVarStrategy::StaticType(), strategy.GetType());
}

TEST(ExplicitStrategy, NeedsAnOwner)
{
    EXPECT_THROW(ExplicitDataVarStrategy(nullptr), std::invalid_argument);
}

TEST(ExplicitStrategy, MakesDataWhenItIsMade)
{
    Variable variable;
    ASSERT_GE(variable.DeleteProperty(QStringLiteral("Data")), 0);
    const ExplicitDataVarStrategy strategy(&variable);
    EXPECT_NE(variable.GetPtr<SimpleProperty>(QStringLiteral("Data")), nullptr);
}

TEST(ExplicitStrategy, MakesDataForTheOwnerOfACopy)
{
    Variable variable(QStringLiteral("x"), MakeVector<double>({1}));
    Variable other;
    ASSERT_GE(other.DeleteProperty(QStringLiteral("Data")), 0);
    const auto copy = variable.GetStrategyPtr().lock()->Copy(&other);
    EXPECT_NE(other.GetPtr<SimpleProperty>(QStringLiteral("Data")), nullptr);
    EXPECT_EQ(copy->GetType(), QStringLiteral("ExplicitDataStrategy"));
    // Nothing but the kind is copied, and the copy works on its own owner.
    EXPECT_TRUE(copy->GetData(nullptr).isNull());
    EXPECT_EQ(&copy->UpdateData(MakeVector<double>({5}), IsCellArrayTrue), &other);
    EXPECT_EQ(ToDoubles(other.GetData()), (Doubles{5}));
    EXPECT_EQ(ToDoubles(variable.GetData()), (Doubles{1}));
}

TEST(ExplicitStrategy, MakesMissingDataOnReading)
{
    Variable variable(QStringLiteral("x"), MakeVector<double>({1}));
    ASSERT_GE(variable.DeleteProperty(QStringLiteral("Data")), 0);
    const Variable& reader = variable;
    IsCellArray flag = IsCellArrayTrue;
    EXPECT_TRUE(reader.GetData(&flag).isNull());
    EXPECT_EQ(flag, IsCellArrayFalse);
    EXPECT_NE(variable.GetPtr<SimpleProperty>(QStringLiteral("Data")), nullptr);
}

// One shape, and what each of the three questions about it answers.
struct ShapeCase
{
    const char* name;
    BVariant data;
    std::uint64_t offsets;
    std::uint64_t elementDims;
    Shape elementShape;
};

class ExplicitStrategyShape : public ::testing::TestWithParam<ShapeCase>
{
};

TEST_P(ExplicitStrategyShape, FollowsFromTheDimensions)
{
    const ShapeCase& c = GetParam();
    const Variable variable(QStringLiteral("x"), c.data);
    EXPECT_EQ(variable.GetMaxIndepOffset(), c.offsets);
    EXPECT_EQ(variable.GetElementDimCount(), c.elementDims);
    Shape shape = {99};
    EXPECT_EQ(variable.GetElementShape(&shape), ER_SUCCESS);
    EXPECT_EQ(shape, c.elementShape);
}

INSTANTIATE_TEST_SUITE_P(
    Shapes, ExplicitStrategyShape,
    ::testing::Values(ShapeCase{"Null", BVariant(), 0, 0, {}}, ShapeCase{"Scalar", BVariant(2.5), 1, 0, {}},
                      ShapeCase{"Vector", MakeCounting({5}), 5, 0, {}},
                      ShapeCase{"OneElementVector", MakeCounting({1}), 1, 0, {}},
                      ShapeCase{"Row", MakeCounting({1, 5}), 5, 1, {5}},
                      ShapeCase{"Column", MakeCounting({5, 1}), 5, 1, {1}},
                      ShapeCase{"Matrix", MakeCounting({2, 3}), 2, 1, {3}},
                      ShapeCase{
                          "MatrixInColumnOrder", MakeCounting({2, 3}, DataOrdering::ColumnMajor), 2, 1, {3}},
                      ShapeCase{"OneByOneByFour", MakeCounting({1, 1, 4}), 4, 2, {1, 4}},
                      ShapeCase{"Cube", MakeCounting({4, 3, 2}), 4, 2, {3, 2}},
                      ShapeCase{"OneByOne", MakeCounting({1, 1}), 1, 1, {1}},
                      ShapeCase{"EmptyVector", MakeCounting({0}), 0, 0, {}},
                      ShapeCase{"EmptyMatrix", MakeCounting({3, 0}), 0, 1, {0}}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(ExplicitStrategyElementShape, RefusesANullOutput)
{
    EXPECT_EQ(Variable(QStringLiteral("x"), MakeCounting({2, 3})).GetElementShape(nullptr),
              ER_INVALID_ARGUMENT);
}

TEST(ExplicitStrategyElement, OfAMatrixIsItsRow)
{
    const Variable variable(QStringLiteral("x"), MakeCounting({2, 3}));
    BVariant out;
    ASSERT_EQ(variable.GetValueAt(&out, 1), ER_SUCCESS);
    EXPECT_EQ(ToDoubles(out), (Doubles{3, 4, 5}));
    EXPECT_EQ(ToDimensions(out), (Shape{3}));
}

TEST(ExplicitStrategyElement, OfAVectorARowOrAColumnIsOneElement)
{
    for (const Shape& shape : {Shape{4}, Shape{1, 4}, Shape{4, 1}}) {
        const Variable variable(QStringLiteral("x"), MakeCounting(shape));
        for (std::uint64_t offset = 0; offset < 4; ++offset) {
            BVariant out;
            ASSERT_EQ(variable.GetValueAt(&out, offset), ER_SUCCESS);
            EXPECT_EQ(ToDoubles(out), (Doubles{static_cast<double>(offset)}));
            EXPECT_EQ(ToDimensions(out), (Shape{1}));
        }
    }
}

TEST(ExplicitStrategyElement, PastTheEndFailsAndLeavesTheOutput)
{
    for (const Shape& shape : {Shape{4}, Shape{1, 4}, Shape{4, 1}, Shape{4, 2}}) {
        const Variable variable(QStringLiteral("x"), MakeCounting(shape));
        for (const std::uint64_t offset : {std::uint64_t(4), largestOffset}) {
            BVariant out = MakeVector<double>({7.5});
            EXPECT_EQ(variable.GetValueAt(&out, offset), ER_FAILED);
            EXPECT_EQ(ToDoubles(out), (Doubles{7.5}));
        }
    }
}

TEST(ExplicitStrategyElement, OfNullIsNullAtAnyOffset)
{
    const Variable variable;
    for (const std::uint64_t offset : {std::uint64_t(0), std::uint64_t(3), largestOffset}) {
        BVariant out = MakeVector<double>({7.5});
        EXPECT_EQ(variable.GetValueAt(&out, offset), ER_SUCCESS);
        EXPECT_TRUE(out.isNull());
    }
}

TEST(ExplicitStrategyElement, RefusesANullOutput)
{
    EXPECT_EQ(Variable(QStringLiteral("x"), MakeCounting({3})).GetValueAt(nullptr, 0), ER_INVALID_ARGUMENT);
}

struct RangeCase
{
    const char* name;
    Shape dimensions;
    std::uint64_t start, end;
    Shape resultDimensions;
    Doubles result;
};

class ExplicitStrategyRange : public ::testing::TestWithParam<RangeCase>
{
};

TEST_P(ExplicitStrategyRange, IsThePartOfTheFirstDimension)
{
    const RangeCase& c = GetParam();
    const Variable variable(QStringLiteral("x"), MakeCounting(c.dimensions));
    BVariant out;
    ASSERT_EQ(variable.GetValueRange(&out, c.start, c.end), ER_SUCCESS);
    EXPECT_EQ(ToDimensions(out), c.resultDimensions);
    EXPECT_EQ(ToDoubles(out), c.result);
}

INSTANTIATE_TEST_SUITE_P(
    Parts, ExplicitStrategyRange,
    ::testing::Values(RangeCase{"WholeByZero", {5}, 0, 0, {5}, {0, 1, 2, 3, 4}},
                      RangeCase{"WholeByCount", {5}, 0, 5, {5}, {0, 1, 2, 3, 4}},
                      RangeCase{"WholeMatrixByZero", {2, 3}, 0, 0, {2, 3}, {0, 1, 2, 3, 4, 5}},
                      RangeCase{"WholeMatrixByCount", {2, 3}, 0, 2, {2, 3}, {0, 1, 2, 3, 4, 5}},
                      RangeCase{"WholeRowByZero", {1, 5}, 0, 0, {1, 5}, {0, 1, 2, 3, 4}},
                      RangeCase{"WholeRowByCount", {1, 5}, 0, 5, {1, 5}, {0, 1, 2, 3, 4}},
                      RangeCase{"Middle", {5}, 1, 3, {2}, {1, 2}},
                      RangeCase{"ToTheLast", {5}, 3, 0, {2}, {3, 4}},
                      RangeCase{"LastOne", {5}, 4, 5, {1}, {4}}, RangeCase{"FirstOne", {5}, 0, 1, {1}, {0}},
                      RangeCase{"PartOfColumn", {5, 1}, 1, 4, {3, 1}, {1, 2, 3}},
                      RangeCase{"RowsOfMatrix", {3, 2}, 1, 3, {2, 2}, {2, 3, 4, 5}},
                      RangeCase{"NothingByEqualBounds", {5}, 2, 2, {0}, {}}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(ExplicitStrategyRangeInColumnOrder, IsThePartOfTheFirstDimension)
{
    // 0 2 4
    // 1 3 5
    const Variable variable(QStringLiteral("x"), MakeCounting({2, 3}, DataOrdering::ColumnMajor));
    BVariant out;
    ASSERT_EQ(variable.GetValueRange(&out, 1, 2), ER_SUCCESS);
    EXPECT_EQ(ToDimensions(out), (Shape{1, 3}));
    EXPECT_EQ(ToDoubles(out), (Doubles{1, 3, 5}));
}

TEST(ExplicitStrategyWholeRange, SharesThePayload)
{
    const BVariant data = MakeCounting({1000});
    const Variable variable(QStringLiteral("x"), data);
    BVariant out;
    ASSERT_EQ(variable.GetValueRange(&out, 0, 1000), ER_SUCCESS);
    EXPECT_EQ(out.constData(), data.constData());
}

class ExplicitStrategyRangeStart : public ::testing::TestWithParam<std::uint64_t>
{
};

TEST_P(ExplicitStrategyRangeStart, AtOrPastTheEndGivesNullAndFails)
{
    const Variable variable(QStringLiteral("x"), MakeCounting({5}));
    for (const std::uint64_t end : {std::uint64_t(0), std::uint64_t(5), largestOffset}) {
        BVariant out = MakeVector<double>({7.5});
        EXPECT_EQ(variable.GetValueRange(&out, GetParam(), end), ER_FAILED);
        EXPECT_TRUE(out.isNull());
    }
}

INSTANTIATE_TEST_SUITE_P(Starts, ExplicitStrategyRangeStart, ::testing::Values(5u, 6u, largestOffset));

TEST(ExplicitStrategyRangeOfNull, FailsAndGivesNull)
{
    const Variable variable;
    BVariant out = MakeVector<double>({7.5});
    EXPECT_EQ(variable.GetValueRange(&out, 0, 0), ER_FAILED);
    EXPECT_TRUE(out.isNull());
    EXPECT_TRUE(variable.GetData().isNull());
}

struct BadRangeCase
{
    const char* name;
    Shape dimensions;
    std::uint64_t start, end;
};

class ExplicitStrategyBadRange : public ::testing::TestWithParam<BadRangeCase>
{
};

TEST_P(ExplicitStrategyBadRange, FailsAndLeavesTheOutput)
{
    const BadRangeCase& c = GetParam();
    const Variable variable(QStringLiteral("x"), MakeCounting(c.dimensions));
    BVariant out = MakeVector<double>({7.5});
    EXPECT_EQ(variable.GetValueRange(&out, c.start, c.end), ER_FAILED);
    EXPECT_EQ(ToDoubles(out), (Doubles{7.5}));
}

// A row is read along its second dimension offset by offset, but cut along its first.
INSTANTIATE_TEST_SUITE_P(
    Ranges, ExplicitStrategyBadRange,
    ::testing::Values(BadRangeCase{"PastTheEnd", {5}, 1, 6}, BadRangeCase{"WholeAndMore", {5}, 0, 6},
                      BadRangeCase{"LargestEnd", {5}, 1, largestOffset}, BadRangeCase{"Backwards", {5}, 3, 1},
                      BadRangeCase{"PartOfRow", {1, 5}, 1, 3}, BadRangeCase{"HeadOfRow", {1, 5}, 0, 3},
                      BadRangeCase{"TailOfRow", {1, 5}, 2, 0}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(ExplicitStrategyRangeOutput, RefusesNull)
{
    const Variable variable(QStringLiteral("x"), MakeCounting({5}));
    EXPECT_EQ(variable.GetValueRange(nullptr, 0, 0), ER_INVALID_ARGUMENT);
    EXPECT_EQ(variable.GetValueRange(nullptr, 9, 0), ER_INVALID_ARGUMENT);
}

TEST(ExplicitStrategyRead, OfARangeIsWhatTheSingleOffsetsGive)
{
    const Variable variable(QStringLiteral("x"), MakeCounting({7, 2}));
    for (std::uint64_t start = 0; start < 7; ++start) {
        for (std::uint64_t end = start + 1; end <= 7; ++end) {
            Doubles singly;
            for (std::uint64_t offset = start; offset < end; ++offset) {
                BVariant element;
                ASSERT_EQ(variable.GetValueAt(&element, offset), ER_SUCCESS);
                for (const double value : ToDoubles(element))
                    singly.push_back(value);
            }
            BVariant run;
            ASSERT_EQ(variable.GetValueRange(&run, start, end), ER_SUCCESS);
            EXPECT_EQ(ToDoubles(run), singly);
        }
    }
}

// A host may derive from the class of values.
class HostValue : public SimpleProperty
{
public:
    using SimpleProperty::SimpleProperty;
    AbstractProperty* DoClone() const override { return new HostValue(*this); }
};

TEST(ExplicitStrategyRead, TakesAHostsOwnKindOfValue)
{
    Variable variable(QStringLiteral("x"), MakeVector<double>({1}));
    auto host = std::make_unique<HostValue>(QStringLiteral("Data"));
    ASSERT_GE(host->SetValue(MakeVector<double>({4, 5}), IsCellArrayTrue), 0);
    ASSERT_GE(variable.InsertOrReplaceProperty(host.get()), 0);
    const HostValue* data = host.release();
    IsCellArray flag = IsCellArrayFalse;
    EXPECT_EQ(ToDoubles(variable.GetData(&flag)), (Doubles{4, 5}));
    EXPECT_EQ(flag, IsCellArrayTrue);
    variable.UpdateData(MakeVector<double>({6}));
    EXPECT_EQ(variable.GetPropertyPtr(QStringLiteral("Data")), data);
    EXPECT_EQ(ToDoubles(variable.GetData()), (Doubles{6}));
}

TEST(ExplicitStrategyRead, SeesWhatAHostHasPutIntoData)
{
    PropertyObject folder;
    Variable* variable = makeVariable(folder, MakeCounting({2}));
    ASSERT_NE(variable, nullptr);
    auto* data = variable->GetPtr<SimpleProperty>(QStringLiteral("Data"));
    ASSERT_NE(data, nullptr);
    ASSERT_GE(data->SetValue(MakeCounting({4, 3}), IsCellArrayTrue), 0);
    IsCellArray flag = IsCellArrayFalse;
    EXPECT_EQ(ToDimensions(variable->GetData(&flag)), (Shape{4, 3}));
    EXPECT_EQ(flag, IsCellArrayTrue);
    EXPECT_EQ(variable->GetMaxIndepOffset(), 4u);
}

} // namespace
} // namespace Orrery
