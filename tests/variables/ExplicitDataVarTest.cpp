#include "variables/ExplicitDataVar.h"

#include "tests/variables/VariableTestSupport.h"

#include <gtest/gtest.h>

namespace Orrery {
namespace {

using Doubles = std::vector<double>;

void expectFresh(ExplicitDataVar& variable)
{
    EXPECT_EQ(variable.PropertyObjType(), QStringLiteral("ExplVar"));
    EXPECT_EQ(childText(variable, Variable::sStrategyPropertyName()), QStringLiteral("ExplicitDataStrategy"));
    const auto* data = variable.GetPtr<SimpleProperty>(QStringLiteral("Data"));
    ASSERT_NE(data, nullptr);
    EXPECT_TRUE(data->GetValue().isNull());
    EXPECT_EQ(variable.GetPropertyCount(), 2);
    EXPECT_EQ(variable.GetMaxIndepOffset(), 0u);
}

TEST(ExplicitDataVar, StartsWithNullData)
{
    ExplicitDataVar unnamed;
    EXPECT_EQ(unnamed.GetName(), QString());
    expectFresh(unnamed);
    ExplicitDataVar named(QStringLiteral("V1"));
    EXPECT_EQ(named.GetName(), QStringLiteral("V1"));
    expectFresh(named);
}

TEST(ExplicitDataVar, NamesItsTypeAndItsData)
{
    EXPECT_EQ(ExplicitDataVar::StaticType(), QStringLiteral("ExplVar"));
    EXPECT_EQ(&ExplicitDataVar::StaticType(), &ExplicitDataVar::StaticType());
    EXPECT_EQ(ExplicitDataVar::getDataPropName(), QStringLiteral("Data"));
    EXPECT_EQ(&ExplicitDataVar::getDataPropName(), &ExplicitDataVar::getDataPropName());
}

TEST(ExplicitDataVar, StoresDataLikeAPlainVariable)
{
    ExplicitDataVar variable(QStringLiteral("V1"));
    variable.UpdateData(MakeCounting({2, 3}));
    EXPECT_EQ(variable.GetMaxIndepOffset(), 2u);
    BVariant out;
    ASSERT_EQ(variable.GetValueAt(&out, 1), ER_SUCCESS);
    EXPECT_EQ(ToDoubles(out), (Doubles{3, 4, 5}));
}

TEST(ExplicitDataVar, CopiesWithItsDataAndOnItsOwn)
{
    ExplicitDataVar source(QStringLiteral("V1"));
    source.UpdateData(MakeVector<double>({1, 2}), true, IsCellArrayTrue);
    ExplicitDataVar copy(source);
    IsCellArray flag = IsCellArrayFalse;
    EXPECT_EQ(ToDoubles(copy.GetData(&flag)), (Doubles{1, 2}));
    EXPECT_EQ(flag, IsCellArrayTrue);
    EXPECT_EQ(copy.GetName(), QStringLiteral("V1"));
    copy.UpdateData(MakeVector<double>({3}));
    EXPECT_EQ(ToDoubles(source.GetData()), (Doubles{1, 2}));
}

TEST(ExplicitDataVar, TakesTheChildrenOfAnotherByAssignment)
{
    ExplicitDataVar source(QStringLiteral("V1"));
    source.UpdateData(MakeVector<double>({1, 2}));
    ExplicitDataVar target(QStringLiteral("V2"));
    ASSERT_GE(target.SetProperty(QStringLiteral("Note"), QStringLiteral("gone afterwards")), 0);
    EXPECT_EQ(&(target = source), &target);
    EXPECT_EQ(target.GetName(), QStringLiteral("V2"));
    EXPECT_EQ(ToDoubles(target.GetData()), (Doubles{1, 2}));
    EXPECT_FALSE(target.HasProperty(QStringLiteral("Note")));
}

TEST(ExplicitDataVar, StaysItselfWhenAssignedToItself)
{
    ExplicitDataVar variable(QStringLiteral("V1"));
    variable.UpdateData(MakeVector<double>({1, 2}));
    const auto before = variable.GetStrategyPtr().lock();
    const ExplicitDataVar& alias = variable;
    variable = alias;
    EXPECT_EQ(variable.GetStrategyPtr().lock(), before);
    EXPECT_EQ(ToDoubles(variable.GetData()), (Doubles{1, 2}));
}

TEST(ExplicitDataVar, ClonesAsItsOwnType)
{
    PropertyObject folder;
    auto* source = put(folder, std::make_unique<ExplicitDataVar>(QStringLiteral("V1")));
    ASSERT_NE(source, nullptr);
    source->UpdateData(MakeVector<double>({1, 2}));
    const std::unique_ptr<AbstractProperty> clone(source->Clone());
    ASSERT_TRUE(isExactly<ExplicitDataVar>(*clone));
    auto& copy = static_cast<ExplicitDataVar&>(*clone);
    EXPECT_EQ(copy.GetParent(), nullptr);
    EXPECT_EQ(copy.GetName(), QStringLiteral("V1"));
    EXPECT_EQ(ToDoubles(copy.GetData()), (Doubles{1, 2}));
    copy.UpdateData(MakeVector<double>({3}));
    EXPECT_EQ(ToDoubles(source->GetData()), (Doubles{1, 2}));
}

} // namespace
} // namespace Orrery
