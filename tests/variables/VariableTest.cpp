#include "variables/Variable.h"

#include "tests/variables/VariableTestSupport.h"
#include "variables/ExplicitDataVar.h"
#include "variables/ExplicitDataVarStrategy.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

namespace Orrery {
namespace {

using Doubles = std::vector<double>;

const QString dataName = QStringLiteral("Data");
const QString strategyName = QStringLiteral("VariableStrategy");

const IVariableStrategy* strategyOf(const Variable& variable)
{
    return variable.GetStrategyPtr().lock().get();
}

TEST(VariableConstruction, GivesAFreshExplicitVariableWithNullData)
{
    Variable variable;
    EXPECT_EQ(variable.GetName(), QString());
    EXPECT_EQ(variable.GetParent(), nullptr);
    const auto strategy = variable.GetStrategyPtr().lock();
    ASSERT_NE(strategy, nullptr);
    EXPECT_TRUE(isExactly<ExplicitDataVarStrategy>(*strategy));
    EXPECT_EQ(childText(variable, strategyName), QStringLiteral("ExplicitDataStrategy"));
    EXPECT_EQ(variable.GetPropertyCount(), 2); // with "Data"
    ASSERT_NE(variable.GetPtr<SimpleProperty>(dataName), nullptr);
    EXPECT_TRUE(variable.GetPtr<SimpleProperty>(dataName)->GetValue().isNull());
    EXPECT_EQ(variable.GetMaxIndepOffset(), 0u);
    EXPECT_TRUE(variable.GetData().isNull());
}

TEST(VariableConstruction, TakesAName)
{
    const Variable variable(QStringLiteral("I1"));
    EXPECT_EQ(variable.GetName(), QStringLiteral("I1"));
    EXPECT_TRUE(variable.GetData().isNull());
}

TEST(VariableConstruction, TakesANameAndData)
{
    const BVariant data = MakeCounting({2, 3});
    const Variable variable(QStringLiteral("x"), data);
    IsCellArray flag = IsCellArrayTrue;
    EXPECT_TRUE(Brindle::Quay::exactlyEqual(variable.GetData(&flag), data));
    EXPECT_EQ(flag, 0);
}

TEST(VariableKind, IsAVariableAndAPropertyObject)
{
    const Variable variable;
    const ExplicitDataVar typed;
    EXPECT_EQ(variable.GetTypeFlags(), 3u);
    for (const Variable* v : {&variable, static_cast<const Variable*>(&typed)}) {
        EXPECT_EQ(v->GetTypeFlags() & 2u, 2u);
        EXPECT_EQ(v->GetTypeFlags() & 1u, 1u);
        EXPECT_TRUE(v->IsVariable());
        EXPECT_TRUE(v->IsPropertyObject());
    }
}

TEST(VariableKind, IsSavedUnderItsTypeName)
{
    EXPECT_EQ(Variable::StaticType(), QStringLiteral("Variable"));
    EXPECT_EQ(Variable().PropertyObjType(), Variable::StaticType());
    EXPECT_TRUE(Variable().IsSerializable());
}

TEST(VariableNames, AreThoseOfSavedTrees)
{
    EXPECT_EQ(Variable::sIndependentVars(), QStringLiteral("Indep"));
    EXPECT_EQ(Variable::sUnitsPropertyName(), QStringLiteral("Unit"));
    EXPECT_EQ(Variable::sDisplayUnitsPropertyName(), QStringLiteral("DisplayUnit"));
    EXPECT_EQ(Variable::sStrategyPropertyName(), QStringLiteral("VariableStrategy"));
    EXPECT_EQ(Variable::sIndependentMapPropertyName(), QStringLiteral("IndependentMap"));
}

TEST(VariableNames, AreOneStringEach)
{
    EXPECT_EQ(&Variable::sIndependentVars(), &Variable::sIndependentVars());
    EXPECT_EQ(&Variable::sUnitsPropertyName(), &Variable::sUnitsPropertyName());
    EXPECT_EQ(&Variable::sDisplayUnitsPropertyName(), &Variable::sDisplayUnitsPropertyName());
    EXPECT_EQ(&Variable::sStrategyPropertyName(), &Variable::sStrategyPropertyName());
    EXPECT_EQ(&Variable::sIndependentMapPropertyName(), &Variable::sIndependentMapPropertyName());
    EXPECT_EQ(&Variable::StaticType(), &Variable::StaticType());
}

TEST(VariableData, OfACellArrayCarryTheFlag)
{
    Variable variable(QStringLiteral("x"));
    EXPECT_EQ(&variable.UpdateDataAsCellArrayFromBVariant(MakeVector<double>({1, 2})), &variable);
    IsCellArray flag = IsCellArrayFalse;
    EXPECT_EQ(ToDoubles(variable.GetData(&flag)), (Doubles{1, 2}));
    EXPECT_EQ(flag, 1);
}

TEST(VariableData, AreUpdatedWithTheFlagGiven)
{
    Variable variable;
    EXPECT_EQ(&variable.UpdateData(MakeVector<double>({1, 2}), false, IsCellArrayTrue), &variable);
    IsCellArray flag = IsCellArrayFalse;
    EXPECT_EQ(ToDoubles(variable.GetData(&flag)), (Doubles{1, 2}));
    EXPECT_EQ(flag, IsCellArrayTrue);

    variable.UpdateData(MakeVector<double>({3}));
    EXPECT_EQ(ToDoubles(variable.GetData(&flag)), (Doubles{3}));
    EXPECT_EQ(flag, IsCellArrayFalse);
    EXPECT_EQ(childDoubles(variable, dataName), (Doubles{3}));
}

TEST(VariableData, ShareThePayloadOfTheArray)
{
    const BVariant data = MakeCounting({1000});
    const Variable variable(QStringLiteral("x"), data);
    EXPECT_EQ(variable.GetData().constData(), data.constData());
}

TEST(VariableData, StayWhenTheSourceIsWritten)
{
    BVariant data = MakeVector<double>({1, 2});
    const Variable variable(QStringLiteral("x"), data);
    Brindle::Quay::setElement<double>(data, std::vector<std::uint64_t>{0}, BVariant(9.0));
    EXPECT_EQ(ToDoubles(variable.GetData()), (Doubles{1, 2}));
}

// A host's own update must be reached by every road that writes.
class OverridingVariable : public Variable
{
public:
    Variable& UpdateData(const BVariant& data, bool notify, IsCellArray flag) override
    {
        lastNotify = notify;
        lastFlag = flag;
        return Variable::UpdateData(data, notify, flag);
    }

    bool lastNotify = false;
    IsCellArray lastFlag = IsCellArrayFalse;
};

TEST(VariableData, OfACellArrayGoThroughTheVirtualUpdate)
{
    OverridingVariable variable;
    variable.UpdateDataAsCellArrayFromBVariant(MakeVector<double>({1}));
    EXPECT_TRUE(variable.lastNotify);
    EXPECT_EQ(variable.lastFlag, IsCellArrayTrue);
    EXPECT_EQ(ToDoubles(variable.GetData()), (Doubles{1}));
}

TEST(VariableStrategyChange, KeepsAStrategyOfTheSameType)
{
    Variable variable(QStringLiteral("x"), MakeVector<double>({1}));
    const IVariableStrategy* before = strategyOf(variable);
    EXPECT_EQ(variable.SetStrategy<ExplicitDataVarStrategy>(), before);
    EXPECT_EQ(strategyOf(variable), before);
    EXPECT_EQ(ToDoubles(variable.GetData()), (Doubles{1}));
}

TEST(VariableStrategyChange, RewritesTheNameOfTheStrategy)
{
    Variable variable;
    ASSERT_GE(variable.SetProperty(strategyName, QStringLiteral("RangeStrategy")), 0);
    variable.SetStrategy<ExplicitDataVarStrategy>();
    EXPECT_EQ(childText(variable, strategyName), QStringLiteral("ExplicitDataStrategy"));
    const BVariant stored = variable.GetPtr<SimpleProperty>(strategyName)->GetValue();
    EXPECT_EQ(stored.getWellKnownType(), Brindle::Quay::WellKnownType::of<std::string>());
    EXPECT_TRUE(stored.isScalar());
}

TEST(VariableStrategyChange, LeavesTheOtherChildren)
{
    Variable variable(QStringLiteral("x"), MakeVector<double>({1}));
    ASSERT_GE(variable.SetProperty(QStringLiteral("Start"), BVariant(2.0)), 0);
    variable.SetStrategy<ExplicitDataVarStrategy>();
    EXPECT_EQ(childDoubles(variable, QStringLiteral("Start")), (Doubles{2}));
    EXPECT_EQ(childDoubles(variable, dataName), (Doubles{1}));
}

TEST(VariableStrategyChange, ThrowsWhenTheNameCantBeWritten)
{
    Variable variable(QStringLiteral("x"), MakeVector<double>({1}));
    ASSERT_GE(variable.DeleteProperty(strategyName), 0);
    ASSERT_NE(put(variable, std::make_unique<PropertyObject>(strategyName)), nullptr);
    try {
        variable.SetStrategy<ExplicitDataVarStrategy>();
        FAIL() << "no exception";
    } catch (const std::logic_error& error) {
        EXPECT_STREQ(error.what(), "fatal error in SetStrategy()");
    }
    // The strategy is in place all the same.
    ASSERT_NE(strategyOf(variable), nullptr);
    EXPECT_EQ(ToDoubles(variable.GetData()), (Doubles{1}));
}

TEST(VariableStrategyPointer, DoesntKeepTheStrategy)
{
    std::weak_ptr<IVariableStrategy> strategy;
    {
        const Variable variable;
        strategy = variable.GetStrategyPtr();
        EXPECT_FALSE(strategy.expired());
    }
    EXPECT_TRUE(strategy.expired());
}

TEST(VariableReload, KeepsTheStrategyWithoutAName)
{
    Variable variable(QStringLiteral("x"), MakeVector<double>({1}));
    ASSERT_GE(variable.DeleteProperty(strategyName), 0);
    const IVariableStrategy* before = strategyOf(variable);
    variable.OnDeserialization();
    EXPECT_EQ(strategyOf(variable), before);
    EXPECT_FALSE(variable.HasProperty(strategyName));
}

TEST(VariableReload, KeepsTheStrategyWhenTheNameIsAFolder)
{
    Variable variable;
    ASSERT_GE(variable.DeleteProperty(strategyName), 0);
    ASSERT_NE(put(variable, std::make_unique<PropertyObject>(strategyName)), nullptr);
    const IVariableStrategy* before = strategyOf(variable);
    const LogCapture log;
    variable.OnDeserialization();
    EXPECT_EQ(strategyOf(variable), before);
    EXPECT_EQ(log.warnings(), QStringList());
}

TEST(VariableReload, SelectsTheExplicitStrategyByName)
{
    Variable variable(QStringLiteral("x"), MakeVector<double>({1}));
    const LogCapture log;
    variable.OnDeserialization();
    EXPECT_EQ(log.warnings(), QStringList());
    EXPECT_EQ(ToDoubles(variable.GetData()), (Doubles{1}));
}

struct UnknownStrategyCase
{
    const char* name;
    BVariant value;
    const char* warning;
};

class VariableReloadUnknown : public ::testing::TestWithParam<UnknownStrategyCase>
{
};

TEST_P(VariableReloadUnknown, DefaultsToExplicitDataWithAWarning)
{
    Variable variable(QStringLiteral("x"), MakeVector<double>({1, 2}));
    ASSERT_GE(variable.SetProperty(strategyName, GetParam().value), 0);
    const LogCapture log;
    variable.OnDeserialization();
    EXPECT_EQ(log.warnings(), QStringList(QString::fromUtf8(GetParam().warning)));
    EXPECT_EQ(childText(variable, strategyName), QStringLiteral("ExplicitDataStrategy"));
    EXPECT_EQ(ToDoubles(variable.GetData()), (Doubles{1, 2}));
    EXPECT_EQ(childDoubles(variable, dataName), (Doubles{1, 2}));
}

INSTANTIATE_TEST_SUITE_P(
    Texts, VariableReloadUnknown,
    ::testing::Values(
        UnknownStrategyCase{"Other", BVariant("Spline \"3\""),
                            "defaulted to ExplicitDataVar; unknown strategy type Spline \"3\""},
        UnknownStrategyCase{"OtherCase", BVariant("explicitdatastrategy"),
                            "defaulted to ExplicitDataVar; unknown strategy type explicitdatastrategy"},
        UnknownStrategyCase{"Umlaut", BVariant("\xc3\xa4"),
                            "defaulted to ExplicitDataVar; unknown strategy type \xc3\xa4"},
        UnknownStrategyCase{"Number", BVariant(1.5),
                            "defaulted to ExplicitDataVar; unknown strategy type 1.5"},
        UnknownStrategyCase{"EmptyText", BVariant(""),
                            "defaulted to ExplicitDataVar; unknown strategy type "},
        UnknownStrategyCase{"Null", BVariant(), "defaulted to ExplicitDataVar; unknown strategy type "},
        UnknownStrategyCase{"EmptyArray", BVariant(std::vector<double>()),
                            "defaulted to ExplicitDataVar; unknown strategy type "}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(VariableReload, ReadsTheNameFromAOneElementArray)
{
    Variable variable;
    ASSERT_GE(variable.SetProperty(strategyName, BVariant(std::vector<std::string>{"ExplicitDataStrategy"})),
              0);
    const LogCapture log;
    variable.OnDeserialization();
    EXPECT_EQ(log.warnings(), QStringList());
}

TEST(VariableReload, HandsOnTheFailureOfANameThatIsNoText)
{
    Variable variable(QStringLiteral("x"), MakeVector<double>({4}));
    ASSERT_GE(variable.SetProperty(strategyName, MakeVector<double>({1, 2, 3})), 0);
    try {
        variable.OnDeserialization();
        FAIL() << "no exception";
    } catch (const std::runtime_error& error) {
        EXPECT_STREQ(error.what(),
                     "Cannot convert Brindle::Quay::BVariant of type 'double' (size: 3) to 'std::string'");
    }
    EXPECT_EQ(ToDoubles(variable.GetData()), (Doubles{4}));
}

// Two levels of names and a value that is no value: a tree from a host that knows nothing of variables.
TEST(VariableInAHostileTree, ReplacesAFolderNamedData)
{
    Variable variable;
    ASSERT_GE(variable.DeleteProperty(dataName), 0);
    ASSERT_NE(put(variable, std::make_unique<PropertyObject>(dataName)), nullptr);
    IsCellArray flag = IsCellArrayTrue;
    EXPECT_TRUE(variable.GetData(&flag).isNull());
    EXPECT_EQ(flag, IsCellArrayFalse);
    EXPECT_NE(variable.GetPtr<SimpleProperty>(dataName), nullptr);
}

TEST(VariableInAHostileTree, WritesOverAFolderNamedData)
{
    Variable variable;
    ASSERT_GE(variable.DeleteProperty(dataName), 0);
    ASSERT_NE(put(variable, std::make_unique<PropertyObject>(dataName)), nullptr);
    variable.UpdateData(MakeVector<double>({1}));
    EXPECT_EQ(ToDoubles(variable.GetData()), (Doubles{1}));
}

TEST(VariableTreeAccess, FindsOnlyChildrenOfTheKindAskedFor)
{
    PropertyObject folder;
    Variable* plain = put(folder, std::make_unique<Variable>(QStringLiteral("plain")));
    ExplicitDataVar* typed = put(folder, std::make_unique<ExplicitDataVar>(QStringLiteral("typed")));
    ASSERT_NE(put(folder, std::make_unique<PropertyObject>(QStringLiteral("folder"))), nullptr);
    EXPECT_EQ(folder.GetPtr<Variable>(QStringLiteral("plain")), plain);
    EXPECT_EQ(folder.GetPtr<Variable>(QStringLiteral("typed")), typed);
    EXPECT_EQ(folder.GetPtr<ExplicitDataVar>(QStringLiteral("typed")), typed);
    EXPECT_EQ(folder.GetPtr<ExplicitDataVar>(QStringLiteral("plain")), nullptr);
    EXPECT_EQ(folder.GetPtr<Variable>(QStringLiteral("folder")), nullptr);
    EXPECT_EQ(folder.GetPtr<Variable>(QStringLiteral("none")), nullptr);
}

} // namespace
} // namespace Orrery
