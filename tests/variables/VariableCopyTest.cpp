// What a copy of a Variable keeps: clones of the children and a strategy of its own.
#include "tests/variables/VariableTestSupport.h"
#include "variables/ExplicitDataVar.h"
#include "variables/Variable.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace Orrery {
namespace {

using Doubles = std::vector<double>;

const QString strategyName = QStringLiteral("VariableStrategy");

std::unique_ptr<Variable> makeSource()
{
    auto source = std::make_unique<Variable>(QStringLiteral("source"));
    source->UpdateDataAsCellArrayFromBVariant(MakeVector<double>({1, 2}));
    source->SetProperty(QStringLiteral("Note"), QStringLiteral("kept"));
    return source;
}

// Its own strategy, its own children.
void expectIndependentCopy(Variable& copy, Variable& source)
{
    EXPECT_NE(copy.GetStrategyPtr().lock(), nullptr);
    EXPECT_NE(copy.GetStrategyPtr().lock(), source.GetStrategyPtr().lock());
    IsCellArray flag = IsCellArrayFalse;
    EXPECT_EQ(ToDoubles(copy.GetData(&flag)), (Doubles{1, 2}));
    EXPECT_EQ(flag, IsCellArrayTrue);
    EXPECT_EQ(childText(copy, QStringLiteral("Note")), QStringLiteral("kept"));
    EXPECT_EQ(childText(copy, strategyName), QStringLiteral("ExplicitDataStrategy"));

    copy.UpdateData(MakeVector<double>({3}));
    EXPECT_EQ(ToDoubles(copy.GetData()), (Doubles{3}));
    EXPECT_EQ(ToDoubles(source.GetData()), (Doubles{1, 2}));
    source.UpdateData(MakeVector<double>({4}));
    EXPECT_EQ(ToDoubles(copy.GetData()), (Doubles{3}));
}

TEST(VariableCopy, ByConstructionIsIndependent)
{
    const auto source = makeSource();
    Variable copy(*source);
    EXPECT_EQ(copy.GetName(), QStringLiteral("source"));
    EXPECT_EQ(copy.GetParent(), nullptr);
    expectIndependentCopy(copy, *source);
}

TEST(VariableCopy, ByCloneIsIndependent)
{
    PropertyObject folder;
    Variable* source = put(folder, makeSource());
    ASSERT_NE(source, nullptr);
    const std::unique_ptr<AbstractProperty> clone(source->Clone());
    ASSERT_TRUE(isExactly<Variable>(*clone));
    EXPECT_EQ(clone->GetName(), QStringLiteral("source"));
    EXPECT_EQ(clone->GetParent(), nullptr);
    expectIndependentCopy(static_cast<Variable&>(*clone), *source);
}

TEST(VariableCopy, ByAssignmentReplacesTheChildren)
{
    const auto source = makeSource();
    Variable target(QStringLiteral("target"), MakeVector<double>({9}));
    ASSERT_GE(target.SetProperty(QStringLiteral("Own"), BVariant(1.0)), 0);
    EXPECT_EQ(&(target = *source), &target);
    EXPECT_EQ(target.GetName(), QStringLiteral("target"));
    EXPECT_FALSE(target.HasProperty(QStringLiteral("Own")));
    expectIndependentCopy(target, *source);
}

TEST(VariableCopy, ByAssignmentLeavesThePlaceInTheTree)
{
    PropertyObject from;
    PropertyObject to;
    Variable* source = put(from, makeSource());
    Variable* target = put(to, std::make_unique<Variable>(QStringLiteral("target")));
    ASSERT_NE(source, nullptr);
    ASSERT_NE(target, nullptr);
    *target = *source;
    EXPECT_EQ(target->GetParent(), &to);
    EXPECT_EQ(source->GetParent(), &from);
    EXPECT_EQ(target->GetName(), QStringLiteral("target"));
}

TEST(VariableCopy, OfItselfChangesNothing)
{
    const auto variable = makeSource();
    const auto strategy = variable->GetStrategyPtr().lock();
    const auto* note = variable->GetPropertyPtr(QStringLiteral("Note"));
    const Variable& alias = *variable;
    *variable = alias;
    EXPECT_EQ(variable->GetStrategyPtr().lock(), strategy);
    EXPECT_EQ(variable->GetPropertyPtr(QStringLiteral("Note")), note);
}

// A reload of the copy must not find another kind of strategy than the copy's property tells.
TEST(VariableCopy, SaysExplicitDataWhateverTheSourceSays)
{
    const auto source = makeSource();
    ASSERT_GE(source->SetProperty(strategyName, QStringLiteral("RangeStrategy")), 0);
    const Variable copy(*source);
    EXPECT_EQ(childText(copy, strategyName), QStringLiteral("ExplicitDataStrategy"));
    EXPECT_EQ(childText(*source, strategyName), QStringLiteral("RangeStrategy"));
}

TEST(VariableCopy, OfADescendantOverItsAncestorTakesItsContent)
{
    Variable outer(QStringLiteral("outer"), MakeVector<double>({9}));
    Variable* inner = put(outer, makeSource());
    ASSERT_NE(inner, nullptr);
    outer = *inner; // destroys inner on the way
    EXPECT_EQ(ToDoubles(outer.GetData()), (Doubles{1, 2}));
    EXPECT_EQ(childText(outer, QStringLiteral("Note")), QStringLiteral("kept"));
    EXPECT_FALSE(outer.HasProperty(QStringLiteral("source")));
    EXPECT_EQ(outer.GetName(), QStringLiteral("outer"));
}

TEST(VariableCopy, OfAnAncestorOverItsDescendantTakesItsContent)
{
    Variable outer(QStringLiteral("outer"), MakeVector<double>({9}));
    Variable* inner = put(outer, makeSource());
    ASSERT_NE(inner, nullptr);
    *inner = outer;
    EXPECT_EQ(ToDoubles(inner->GetData()), (Doubles{9}));
    EXPECT_TRUE(inner->HasProperty(QStringLiteral("source")));
    EXPECT_EQ(inner->GetParent(), &outer);
    EXPECT_EQ(ToDoubles(outer.GetData()), (Doubles{9}));
}

TEST(VariableCopy, OfATypedVariableToAPlainOneKeepsTheTarget)
{
    ExplicitDataVar source(QStringLiteral("source"));
    source.UpdateData(MakeVector<double>({1}));
    const Variable copy(source);
    EXPECT_EQ(copy.PropertyObjType(), QStringLiteral("Variable"));
    EXPECT_EQ(ToDoubles(copy.GetData()), (Doubles{1}));
}

TEST(VariableCopy, ThrowsWhenTheStrategyCantBeNoted)
{
    const auto source = makeSource();
    ASSERT_GE(source->DeleteProperty(strategyName), 0);
    ASSERT_NE(put(*source, std::make_unique<PropertyObject>(strategyName)), nullptr);
    EXPECT_THROW(Variable{*source}, std::logic_error);
    EXPECT_THROW(source->Clone(), std::logic_error);
    Variable target(QStringLiteral("target"));
    EXPECT_THROW(target = *source, std::logic_error);
    EXPECT_EQ(ToDoubles(target.GetData()), (Doubles{1, 2}));
}

} // namespace
} // namespace Orrery
