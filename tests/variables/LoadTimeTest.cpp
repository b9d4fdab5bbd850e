// What the library has done by the time a host's main() runs.
#include "foundations/property/PropertyObjectFactory.h"
#include "tests/variables/VariableTestSupport.h"
#include "variables/ExplicitDataVar.h"
#include "variables/Variable.h"

#include <gtest/gtest.h>

namespace Orrery {
namespace {

// Read before main(): a host's own initialisers may rely on the library's.
const bool s_variableWasKnown = PropertyObjectFactory::Instance().IsRegistered(QStringLiteral("Variable"));
const bool s_explicitDataVarWasKnown =
    PropertyObjectFactory::Instance().IsRegistered(QStringLiteral("ExplVar"));
const QString s_dataName = ExplicitDataVar::getDataPropName();

template <class T>
std::unique_ptr<T> createAs(const char* typeName)
{
    std::unique_ptr<PropertyObject> made(
        PropertyObjectFactory::Instance().Create(QString::fromLatin1(typeName)));
    if (!made || !isExactly<T>(*made))
        return nullptr;
    return std::unique_ptr<T>(static_cast<T*>(made.release()));
}

TEST(LoadTime, RegistersTheVariablesBeforeMain)
{
    EXPECT_TRUE(s_variableWasKnown);
    EXPECT_TRUE(s_explicitDataVarWasKnown);
    EXPECT_EQ(s_dataName, QStringLiteral("Data"));
}

TEST(LoadTime, LetsTheFactoryMakeAPlainVariable)
{
    const auto variable = createAs<Variable>("Variable");
    ASSERT_NE(variable, nullptr);
    EXPECT_EQ(variable->GetName(), QString());
    EXPECT_EQ(childText(*variable, Variable::sStrategyPropertyName()),
              QStringLiteral("ExplicitDataStrategy"));
    EXPECT_TRUE(variable->HasProperty(s_dataName));
}

TEST(LoadTime, LetsTheFactoryMakeAnExplicitVariable)
{
    const auto variable = createAs<ExplicitDataVar>("ExplVar");
    ASSERT_NE(variable, nullptr);
    EXPECT_EQ(childText(*variable, Variable::sStrategyPropertyName()),
              QStringLiteral("ExplicitDataStrategy"));
    EXPECT_TRUE(variable->HasProperty(s_dataName));
    EXPECT_TRUE(variable->GetData().isNull());
}

TEST(LoadTime, LeavesTheNameTakenForAHost)
{
    const auto create = []() -> PropertyObject* { return new PropertyObject; };
    EXPECT_LT(PropertyObjectFactory::Instance().RegisterType(QStringLiteral("Variable"), create), 0);
    EXPECT_NE(createAs<Variable>("Variable"), nullptr);
}

// What a loader does: creator, children over the creator's own, then the object's last word.
TEST(Reload, BringsAVariableBackFromItsChildren)
{
    PropertyObject saved;
    auto* source = put(saved, std::make_unique<ExplicitDataVar>(QStringLiteral("V1")));
    ASSERT_NE(source, nullptr);
    source->UpdateDataAsCellArrayFromBVariant(MakeCounting({2, 3}));

    const auto loaded = createAs<ExplicitDataVar>(qPrintable(source->PropertyObjType()));
    ASSERT_NE(loaded, nullptr);
    ASSERT_GE(loaded->SetName(source->GetName()), 0);
    for (const AbstractProperty* child : source->GetPropertyListSorted()) {
        std::unique_ptr<AbstractProperty> restored(child->Clone());
        ASSERT_GE(loaded->InsertOrReplaceProperty(restored.get()), 0);
        restored.release();
    }
    const LogCapture log;
    loaded->OnDeserialization();
    EXPECT_EQ(log.warnings(), QStringList());

    IsCellArray flag = IsCellArrayFalse;
    EXPECT_TRUE(Brindle::Quay::exactlyEqual(loaded->GetData(&flag), MakeCounting({2, 3})));
    EXPECT_EQ(flag, IsCellArrayTrue);
    loaded->UpdateData(BVariant(1.5));
    EXPECT_EQ(ToDoubles(loaded->GetData()), (std::vector<double>{1.5}));
    EXPECT_EQ(ToDimensions(source->GetData()), (std::vector<std::uint64_t>{2, 3}));
}

// A file that doesn't hold all: what is missing is what the creator has made.
TEST(Reload, KeepsTheCreatorsChoiceWithoutAStrategyName)
{
    const auto loaded = createAs<Variable>("Variable");
    ASSERT_NE(loaded, nullptr);
    ASSERT_GE(loaded->DeleteProperty(Variable::sStrategyPropertyName()), 0);
    ASSERT_GE(loaded->SetProperty(s_dataName, MakeVector<double>({1, 2})), 0);
    const auto strategy = loaded->GetStrategyPtr().lock();
    loaded->OnDeserialization();
    EXPECT_EQ(loaded->GetStrategyPtr().lock(), strategy);
    EXPECT_EQ(ToDoubles(loaded->GetData()), (std::vector<double>{1, 2}));
}

} // namespace
} // namespace Orrery
