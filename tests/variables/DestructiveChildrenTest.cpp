// Children of a host that destroy the Variable or the Function in which they stand when they are replaced.
#include "Core/PolynomialMeasurement.h"
#include "tests/variables/FunctionVarTestSupport.h"
#include "units/Units.h"
#include "variables/VariableDefaults.h"

#include <gtest/gtest.h>

#include <cstdint>

namespace Orrery {
namespace {

/// A host's leaf that calls the host when it is destroyed.
class HostLeaf : public AbstractProperty
{
public:
    explicit HostLeaf(const QString& name, std::function<void()> onEnd = {})
        : AbstractProperty(name)
        , m_onEnd(std::move(onEnd))
    {
    }
    HostLeaf(const HostLeaf&) = delete;
    HostLeaf& operator=(const HostLeaf&) = delete;
    ~HostLeaf() override
    {
        if (m_onEnd)
            m_onEnd();
    }

    const QString& PropertyObjType() const override
    {
        static const QString type = QStringLiteral("HostLeaf");
        return type;
    }
    unsigned int GetTypeFlags() const override { return 0; }
    AbstractProperty* DoClone() const override { return new HostLeaf(GetName()); }

private:
    std::function<void()> m_onEnd;
};

/// An object "o" in a folder, with a child whose end destroys it.
class DestructiveChild : public testing::Test
{
protected:
    PropertyObject top{QStringLiteral("top")};
    Variable t{QStringLiteral("t"), numbers({1, 2})};

    /// Any child of `owner` in the tree that has the name goes first.
    void addLeaf(PropertyObject& owner, const QString& name)
    {
        owner.DeleteProperty(name);
        ASSERT_NE(insert(owner, std::make_unique<HostLeaf>(name,
                                                           [this] {
                                                               if (m_isArmed)
                                                                   top.DeleteProperty(QStringLiteral("o"));
                                                           })),
                  nullptr);
    }

    bool isGone() const { return !top.HasProperty(QStringLiteral("o")); }

    ~DestructiveChild() override { m_isArmed = false; }

private:
    bool m_isArmed = true;
};

struct ChildCase
{
    const char* name;
    const char* child;
    void (*work)(FunctionVar& owner, Variable& other);
};

/// For operations that a Variable of any strategy has.
class ChildOfAVariable : public DestructiveChild, public testing::WithParamInterface<ChildCase>
{
};

TEST_P(ChildOfAVariable, MayDestroyItWhenItIsReplaced)
{
    auto* owner = insert(top, std::make_unique<FunctionVar>(QStringLiteral("o")));
    addLeaf(*owner, QString::fromLatin1(GetParam().child));
    const MessageCapture log; // some warn of the odd child
    GetParam().work(*owner, t);
    EXPECT_TRUE(isGone());
    EXPECT_TRUE(t.getDirtyTracker()->getObservers()().empty());
}

INSTANTIATE_TEST_SUITE_P(
    Operations, ChildOfAVariable,
    testing::Values(
        ChildCase{
            "AddIndepVariableRef", "Indep",
            [](FunctionVar& o, Variable& other) { EXPECT_EQ(o.AddIndepVariableRef(&other), ER_FAILED); }},
        ChildCase{
            "SetIndepVariableRef", "Indep",
            [](FunctionVar& o, Variable& other) { EXPECT_EQ(o.SetIndepVariableRef(&other), ER_FAILED); }},
        ChildCase{"ClearIndepRefs", "Indep",
                  [](FunctionVar& o, Variable&) { EXPECT_NO_THROW(VariableDefaults().ClearIndepRefs(o)); }},
        ChildCase{"SetIndependentMap", "IndependentMap",
                  [](FunctionVar& o, Variable&) {
                      EXPECT_EQ(o.SetIndependentMap({1, 2}), ER_FAILED);
                  }},
        ChildCase{"SetUnits", "Unit",
                  [](FunctionVar& o, Variable&) { EXPECT_EQ(o.SetUnits(Units()), ER_FAILED); }},
        ChildCase{"InsertDefaultUnits", "Unit",
                  [](FunctionVar& o, Variable&) { VariableDefaults().InsertDefaultUnits(o); }},
        ChildCase{"SetDisplayUnits", "DisplayUnit",
                  [](FunctionVar& o, Variable&) { EXPECT_EQ(o.SetDisplayUnits(Units()), ER_FAILED); }},
        ChildCase{"AddArgumentRef", "Arguments",
                  [](FunctionVar& o, Variable& other) { EXPECT_EQ(o.AddArgumentRef(&other), ER_FAILED); }},
        ChildCase{"SetFunction", "Function",
                  [](FunctionVar& o, Variable&) {
                      const auto function = std::make_unique<Function>(QStringLiteral("polynomial-1"));
                      EXPECT_EQ(o.SetFunction(function.get()), ER_FAILED);
                      EXPECT_EQ(function->GetParent(), nullptr); // still the caller's
                  }},
        ChildCase{"UpdateData", "Data", [](FunctionVar& o, Variable&) { o.UpdateData(numbers({1})); }}),
    [](const auto& test) { return std::string(test.param.name); });

TEST_F(DestructiveChild, AtTheDataMayDestroyTheVariableThatIsComputed)
{
    const RegisteredMeasurement total(&storeTotal);
    auto* owner = insert(top, std::make_unique<FunctionVar>(QStringLiteral("o")));
    addLeaf(*owner, QStringLiteral("Data"));
    total.giveTo(*owner);
    owner->AddArgumentRef(&t);
    EXPECT_TRUE(owner->GetData().isNull());
    EXPECT_TRUE(isGone());
    EXPECT_EQ(total.runs(), 1);
}

// --- plain variables make room for their data when they are read, too

struct PlainCase
{
    const char* name;
    void (*work)(Variable& owner);
};

class ChildAtTheData : public DestructiveChild, public testing::WithParamInterface<PlainCase>
{
};

TEST_P(ChildAtTheData, MayDestroyThePlainVariable)
{
    Variable* owner = insertVariable(top, QStringLiteral("o"));
    addLeaf(*owner, QStringLiteral("Data"));
    GetParam().work(*owner);
    EXPECT_TRUE(isGone());
}

INSTANTIATE_TEST_SUITE_P(
    Operations, ChildAtTheData,
    testing::Values(
        PlainCase{"UpdateData", [](Variable& o) { o.UpdateData(numbers({1})); }},
        PlainCase{"GetData",
                  [](Variable& o) {
                      IsCellArray flag = IsCellArrayTrue;
                      EXPECT_TRUE(o.GetData(&flag).isNull());
                      EXPECT_EQ(flag, IsCellArrayFalse);
                  }},
        PlainCase{"GetMaxIndepOffset", [](Variable& o) { EXPECT_EQ(o.GetMaxIndepOffset(), 0u); }},
        PlainCase{"GetElementDimCount", [](Variable& o) { EXPECT_EQ(o.GetElementDimCount(), 0u); }},
        PlainCase{"GetElementShape",
                  [](Variable& o) {
                      std::vector<std::uint64_t> shape{1};
                      o.GetElementShape(&shape);
                      EXPECT_TRUE(shape.empty());
                  }},
        PlainCase{"GetValueAt",
                  [](Variable& o) {
                      BVariant out;
                      o.GetValueAt(&out, 0);
                      EXPECT_TRUE(out.isNull());
                  }},
        PlainCase{"GetValueRange",
                  [](Variable& o) {
                      BVariant out;
                      EXPECT_LT(o.GetValueRange(&out, 0, 0), 0);
                      EXPECT_TRUE(out.isNull());
                  }},
        PlainCase{"GenerateDefaultIndep", [](Variable& o) { VariableDefaults().GenerateDefaultIndep(o); }}),
    [](const auto& test) { return std::string(test.param.name); });

// --- children deeper down

TEST_F(DestructiveChild, MayBeAVariableAmongTheIndependents)
{
    Variable* owner = insertVariable(top, QStringLiteral("o"));
    PropertyObject* axes = insertFolder(*owner, QStringLiteral("Indep"));
    ConnectedClient client(*insertVariable(*axes, QStringLiteral("0")));
    client.onRemoved = [this] { top.DeleteProperty(QStringLiteral("o")); };
    EXPECT_EQ(owner->SetIndepVariableRef(&t), ER_FAILED);
    EXPECT_TRUE(isGone());
    EXPECT_EQ(client.removals, 1);
}

TEST_F(DestructiveChild, MayBeAVariableAmongTheArguments)
{
    auto* owner = insert(top, std::make_unique<FunctionVar>(QStringLiteral("o")));
    PropertyObject* arguments = insertFolder(*owner, QStringLiteral("Arguments"));
    ConnectedClient client(*insertVariable(*arguments, QStringLiteral("0")));
    client.onRemoved = [this] { top.DeleteProperty(QStringLiteral("o")); };
    owner->DeleteArguments();
    EXPECT_TRUE(isGone());
    EXPECT_EQ(client.removals, 1);
}

TEST_F(DestructiveChild, MayBeAVariableInTheFormerFunction)
{
    auto* owner = insert(top, std::make_unique<FunctionVar>(QStringLiteral("o")));
    auto former = std::make_unique<Function>();
    ConnectedClient client(*insertVariable(*former, QStringLiteral("w")));
    client.onRemoved = [this] { top.DeleteProperty(QStringLiteral("o")); };
    ASSERT_EQ(owner->SetFunction(former.get()), ER_SUCCESS);
    former.release();
    const auto function = std::make_unique<Function>();
    EXPECT_EQ(owner->SetFunction(function.get()), ER_FAILED);
    EXPECT_TRUE(isGone());
    EXPECT_EQ(function->GetParent(), nullptr);
}

TEST_F(DestructiveChild, OfAVariableMayDestroyTheFunctionThatTakesThePlaceOfItsFormerOne)
{
    auto* owner = insert(top, std::make_unique<FunctionVar>(QStringLiteral("o")));
    auto former = std::make_unique<Function>();
    ConnectedClient client(*insertVariable(*former, QStringLiteral("w")));
    auto function = std::make_unique<Function>();
    client.onRemoved = [&function] { function.reset(); };
    ASSERT_EQ(owner->SetFunction(former.get()), ER_SUCCESS);
    former.release();
    EXPECT_EQ(owner->SetFunction(function.get()), ER_FAILED);
    EXPECT_EQ(owner->GetFunction(), nullptr);
}

// --- functions

TEST_F(DestructiveChild, AmongTheParametersMayDestroyTheFunctionThatIsGivenOthers)
{
    Function* owner = insert(top, std::make_unique<Function>());
    owner->SetName(QStringLiteral("o"));
    addLeaf(*owner, QStringLiteral("Parameters"));
    EXPECT_EQ(owner->SetParameters({BVariant(1.0)}), ER_FAILED);
    EXPECT_TRUE(isGone());
}

TEST_F(DestructiveChild, AmongTheParametersMayDestroyTheFunctionThatIsGivenAMeasurement)
{
    Function* owner = insert(top, std::make_unique<Function>());
    owner->SetName(QStringLiteral("o"));
    addLeaf(*owner, QStringLiteral("Parameters"));
    EXPECT_EQ(owner->SetMeasurement(PolynomialMeasurement<1>()), ER_SUCCESS);
    EXPECT_TRUE(isGone());
}

TEST_F(DestructiveChild, MayDestroyTheFunctionThatIsAssignedTo)
{
    Function* owner = insert(top, std::make_unique<Function>(QStringLiteral("polynomial-1")));
    owner->SetName(QStringLiteral("o"));
    addLeaf(*owner, QStringLiteral("leaf"));
    const Function other(QStringLiteral("polynomial-2"));
    *owner = other;
    EXPECT_TRUE(isGone());
    EXPECT_NE(other.GetMeasurement(), nullptr);
}

} // namespace
} // namespace Orrery
