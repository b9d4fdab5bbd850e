#include "hosts/orrery/FunctionCall.h"

#include "Core/FunctionProperty.h"
#include "Core/Measurement.h"
#include "foundations/variant/VariantOperations.h"
#include "hosts/orrery/Failure.h"
#include "hosts/orrery/TreeAccess.h"
#include "hosts/orrery/UnitText.h"
#include "hosts/orrery/measurements/Registration.h"
#include "variables/ExplicitDataVar.h"
#include "variables/FunctionVar.h"
#include "variables/RangeVar.h"

#include <gmock/gmock.h>

namespace Orrery::Host {

using Brindle::Quay::BVariant;
using ::testing::ElementsAre;

namespace {

class FunctionCallTest : public ::testing::Test
{
protected:
    FunctionCallTest() { registerMeasurements(); }

    template <class V = ExplicitDataVar>
    V& add(const char* name)
    {
        auto owned = std::make_unique<V>(QString::fromUtf8(name));
        V& variable = *owned;
        insertNode(&m_root, std::move(owned));
        return variable;
    }

    ExplicitDataVar& addValues(const char* name, std::vector<double> values)
    {
        ExplicitDataVar& variable = add(name);
        variable.UpdateData(BVariant(std::move(values)));
        return variable;
    }

    PropertyObject m_root;
};

std::string usageFailureOf(const std::string& text)
{
    try {
        parseFunction(text);
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.exitCode(), ExitUsage) << text;
        return failure.what();
    }
    return "none";
}

std::string failureOf(const Variable& function)
{
    try {
        resultOf(function);
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.exitCode(), ExitFailed);
        return failure.what();
    }
    return "none";
}

std::vector<double> numbersOf(const BVariant& data)
{
    const Brindle::Quay::IterableContainer<double> values(data);
    return {values.begin(), values.end()};
}

} // namespace

TEST_F(FunctionCallTest, IsANameWithNumbers)
{
    const FunctionCall call = parseFunction("polynomial-2:1,-2.5, 3e2");
    EXPECT_EQ(call.name, "polynomial-2");
    ASSERT_EQ(call.parameters.size(), 3U);
    EXPECT_EQ(Brindle::Quay::getScalar<double>(call.parameters[1]), -2.5);
    EXPECT_EQ(Brindle::Quay::getScalar<double>(call.parameters[2]), 300);
    EXPECT_TRUE(parseFunction("magnitude").parameters.empty());
}

TEST_F(FunctionCallTest, HasTheDeclaredParametersWhereNoneAreGiven)
{
    const FunctionCall call = parseFunction("moving-average");
    ASSERT_EQ(call.parameters.size(), 1U);
    EXPECT_EQ(Brindle::Quay::getScalar<int>(call.parameters[0]), 3);
    EXPECT_EQ(parseFunction("polynomial-3").parameters.size(), 4U);
}

TEST_F(FunctionCallTest, IsRefusedWithWhatThereIs)
{
    EXPECT_EQ(usageFailureOf("mag"),
              "--function: there is no function 'mag'; there are decibel, derivative, "
              "magnitude, moving-average, phase, polynomial-1, polynomial-2, polynomial-3");
    EXPECT_EQ(usageFailureOf("").substr(0, 35), "--function: there is no function ''");
    EXPECT_EQ(usageFailureOf("polynomial-1:1"),
              "--function: 'polynomial-1' takes 2 parameters (C-0, C-1), found 1");
    EXPECT_EQ(usageFailureOf("moving-average:1,2"),
              "--function: 'moving-average' takes 1 parameter (window), found 2");
    EXPECT_EQ(usageFailureOf("magnitude:1"), "--function: 'magnitude' takes no parameters, found 1");
    EXPECT_EQ(usageFailureOf("polynomial-1:1,x"), "--function: expected a number, found 'x'");
    EXPECT_EQ(usageFailureOf("polynomial-1:1,"), "--function: expected a number, found ''");
    EXPECT_EQ(usageFailureOf("magnitude:"), "--function: expected a number, found ''");
}

TEST_F(FunctionCallTest, BecomesAVariableOverTheSameAxes)
{
    const ExplicitDataVar& x = addValues("x", {1, 2, 3});
    ExplicitDataVar& y = addValues("y", {-4, 5, -6});
    y.AddIndepVariableRef(&x);
    y.SetUnits(parseUnits("V"));
    Variable& function = addFunction(m_root, y, parseFunction("magnitude"));
    EXPECT_EQ(function.GetName(), "magnitude(y)");
    EXPECT_EQ(function.GetParent(), &m_root);
    EXPECT_TRUE(isFunction(function));
    EXPECT_FALSE(isFunction(y));
    Variable* axis = nullptr;
    ASSERT_GE(function.GetIndepVariable(&axis, 0), 0);
    EXPECT_EQ(axis, &x);
    EXPECT_EQ(function.getDirtyTracker()->getUpdateCount(), 0);
    EXPECT_THAT(numbersOf(resultOf(function)), ElementsAre(4, 5, 6));
    EXPECT_THAT(numbersOf(resultOf(function)), ElementsAre(4, 5, 6));
    EXPECT_EQ(function.getDirtyTracker()->getUpdateCount(), 1);
    EXPECT_EQ(addFunction(m_root, y, parseFunction("magnitude")).GetName(), "magnitude(y)_2");
}

TEST_F(FunctionCallTest, ThatHandsItsArgumentOnKeepsTheUnits)
{
    ExplicitDataVar& y = addValues("y", {1, 2});
    y.SetUnits(parseUnits("mV"));
    const Variable& function = addFunction(m_root, y, parseFunction("polynomial-1:1,2"));
    EXPECT_THAT(numbersOf(resultOf(function)), ElementsAre(1, 2));
    EXPECT_EQ(unitsLabel(*unitsOf(function)), "mV");
}

TEST_F(FunctionCallTest, ThatFailsIsNoOldResult)
{
    ExplicitDataVar& y = addValues("y", {1, 2});
    Variable& function = addFunction(m_root, y, parseFunction("moving-average:2"));
    EXPECT_THAT(numbersOf(resultOf(function)), ElementsAre(1, 1.5));
    y.UpdateData(BVariant(std::vector<std::string>{"a", "b"}));
    EXPECT_EQ(failureOf(function), "function 'moving-average': values of the type text are no numbers");
}

TEST_F(FunctionCallTest, WithoutAnArgumentThatCanBeFoundFails)
{
    ExplicitDataVar& y = addValues("y", {1, 2});
    Variable& function = addFunction(m_root, y, parseFunction("magnitude"));
    ASSERT_GE(m_root.DeleteProperty("y"), 0);
    EXPECT_EQ(failureOf(function), "function 'magnitude': invalid argument in list; operation is undefined!");
}

TEST_F(FunctionCallTest, OfAComputedVariableHasItsLimit)
{
    RangeVar& range = add<RangeVar>("r");
    range.SetStart(BVariant(0.0));
    range.SetCount(BVariant(1e11));
    try {
        addFunction(m_root, range, parseFunction("magnitude"));
        ADD_FAILURE();
    } catch (const Failure& failure) {
        EXPECT_STREQ(failure.what(),
                     "there are 100000000000 values, and a function takes at most 134217728 that "
                     "are computed");
    }
    range.SetCount(BVariant(3));
    EXPECT_THAT(numbersOf(resultOf(addFunction(m_root, range, parseFunction("magnitude")))),
                ElementsAre(0, 1, 2));
}

TEST_F(FunctionCallTest, ThatIsNotKnownGivesWhatIsStoredWithAWarning)
{
    FunctionVar& function = add<FunctionVar>("f");
    function.SetFunction(new Function("not-here"));
    function.UpdateData(BVariant(std::vector<double>{7}));
    ::testing::internal::CaptureStderr();
    EXPECT_THAT(numbersOf(resultOf(function)), ElementsAre(7));
    EXPECT_EQ(::testing::internal::GetCapturedStderr(),
              "orrery: warning: the function 'not-here' is not known here; these are the values that were "
              "stored\n");
}

} // namespace Orrery::Host
