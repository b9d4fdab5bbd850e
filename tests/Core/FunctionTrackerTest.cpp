// When a Function goes dirty and when it comes clean, and what that means for whatever is bound to it.
#include "Core/FunctionProperty.h"

#include "foundations/property/SimpleProperty.h"
#include "tests/Core/MeasurementTestSupport.h"
#include "tests/support/CaseName.h"
#include "tests/tracking/TrackerTestSupport.h"

#include <gtest/gtest.h>

#include <functional>
#include <ostream>
#include <type_traits>

namespace Orrery {
namespace {

using TestSupport::makeDirtyNode;
using TestSupport::makeNode;
using TestSupport::makeUpdatingNode;
using TestSupport::TrackerNode;
using TestSupport::TrackerOwner;

const QString s_gain = QStringLiteral("gain");
const QString s_unknown = QStringLiteral("unknown");

class OpenFunction : public Function
{
public:
    using Function::Function;
    using Function::SetMeasurementFromName;
};

/// A Function without sources that is clean, and a clean observer of it.
class FunctionTrackerTest : public RegistryTest
{
protected:
    void SetUp() override
    {
        RegistryTest::SetUp();
        add(QStringLiteral("Own"), s_gain);
        AbstractDirtyTracker::bind(m_function.getDirtyTracker(), m_observer);
        ASSERT_TRUE(m_function.getDirtyTracker()->isClean());
    }

    void makeDirty()
    {
        m_function.getDirtyTracker()->markDirty();
        TrackerOwner::setClean(*m_observer); // so that a second mark is seen
    }

    bool isDirty() const { return m_function.getDirtyTracker()->isDirty(); }

    OpenFunction m_function; // holds no measurement of the registry at the end of a test
    std::shared_ptr<TrackerNode> m_observer = makeNode();
};

TEST_F(FunctionTrackerTest, IsCleanAndUnboundAtFirst)
{
    const Function function;
    const auto tracker = function.getDirtyTracker();
    static_assert(std::is_same_v<decltype(function.getDirtyTracker()),
                                 std::shared_ptr<DirtyTracker<Function, Function*>>>);
    ASSERT_NE(tracker, nullptr);
    EXPECT_EQ(tracker, function.getDirtyTracker());
    EXPECT_TRUE(tracker->isClean());
    EXPECT_EQ(tracker->getUpdateCount(), 0);
    EXPECT_TRUE(tracker->getSources().nodes().empty());
    EXPECT_TRUE(tracker->getObservers().nodes().empty());
}

TEST_F(FunctionTrackerTest, IsDirtyFromAConstructorThatFoundAMeasurement)
{
    EXPECT_TRUE(Function(s_gain).getDirtyTracker()->isDirty());
    EXPECT_TRUE(Function(QStringLiteral("polynomial-1")).getDirtyTracker()->isDirty());
    EXPECT_TRUE(Function(s_unknown).getDirtyTracker()->isClean());
}

TEST_F(FunctionTrackerTest, OutlivesItsFunctionWithWhoeverHoldsIt)
{
    std::shared_ptr<AbstractDirtyTracker> held;
    {
        const Function function(s_gain);
        held = function.getDirtyTracker();
    }
    EXPECT_TRUE(held->isDirty());
    EXPECT_EQ(held.use_count(), 1);
}

// What marks

TEST_F(FunctionTrackerTest, MarksForNewParameterValues)
{
    m_function.SetParameters(doubles({1}));
    EXPECT_TRUE(isDirty());
    EXPECT_TRUE(m_observer->isDirty());
}

TEST_F(FunctionTrackerTest, MarksForTheSameParameterValuesAgain)
{
    m_function.SetParameters(doubles({1}));
    m_function.GetParameters();
    TrackerOwner::setClean(*m_observer);
    m_function.SetParameters(doubles({1}));
    EXPECT_TRUE(isDirty());
    EXPECT_TRUE(m_observer->isDirty());
}

TEST_F(FunctionTrackerTest, MarksForANameThatIsFound)
{
    EXPECT_EQ(m_function.SetFunctionName(QStringLiteral("polynomial-1")), ER_SUCCESS);
    EXPECT_TRUE(isDirty());
    EXPECT_TRUE(m_observer->isDirty());
}

TEST_F(FunctionTrackerTest, MarksNothingForANameThatIsNotFound)
{
    EXPECT_EQ(m_function.SetFunctionName(s_unknown), ER_NOT_FOUND);
    EXPECT_FALSE(isDirty());
    EXPECT_TRUE(m_observer->isClean());
}

TEST_F(FunctionTrackerTest, StaysDirtyThroughANameThatIsNotFound)
{
    makeDirty();
    m_function.SetFunctionName(s_unknown);
    EXPECT_TRUE(isDirty());
    EXPECT_TRUE(m_observer->isClean());
}

TEST_F(FunctionTrackerTest, MarksNothingForANameThatCannotBeWritten)
{
    auto folder = std::make_unique<PropertyObject>(QStringLiteral("Function"));
    ASSERT_GE(m_function.InsertOrReplaceProperty(folder.release()), 0);
    EXPECT_EQ(m_function.SetFunctionName(QStringLiteral("polynomial-1")), ER_INVALID_ARGUMENT);
    EXPECT_FALSE(isDirty());
}

TEST_F(FunctionTrackerTest, MarksForALookUpThatFindsSomethingOnly)
{
    m_function.SetMeasurementFromName(s_unknown);
    EXPECT_FALSE(isDirty());
    m_function.SetMeasurementFromName(QStringLiteral("polynomial-1"));
    EXPECT_TRUE(isDirty());
    EXPECT_TRUE(m_observer->isDirty());
}

TEST_F(FunctionTrackerTest, MarksWhenItIsLoadedWithANameThatIsFoundOnly)
{
    m_function.SetProperty(QStringLiteral("Function"), s_unknown);
    m_function.OnDeserialization();
    EXPECT_FALSE(isDirty());
    m_function.SetProperty(QStringLiteral("Function"), QStringLiteral("polynomial-1"));
    m_function.OnDeserialization();
    EXPECT_TRUE(isDirty());
    EXPECT_TRUE(m_observer->isDirty());
}

TEST_F(FunctionTrackerTest, MarksForAMeasurement)
{
    const std::unique_ptr<Measurement<Variable>> polynomial(
        manager().FindMeasurement(QStringLiteral("polynomial-1"))->clone());
    m_function.SetMeasurement(*polynomial);
    EXPECT_TRUE(isDirty());
    EXPECT_TRUE(m_observer->isDirty());
}

TEST_F(FunctionTrackerTest, MarksBeforeItTakesAMeasurementAndAgainWithItsValues)
{
    Function function;
    AbstractDirtyTracker::bind(function.getDirtyTracker(), m_observer);
    HostMeasurement gain(s_gain);
    bool wasDirty = false;
    gain.hooks.onClone = [&] {
        wasDirty = function.getDirtyTracker()->isDirty();
        EXPECT_EQ(function.GetFunctionName(), QStringLiteral("Function")); // which makes the tracker clean
        TrackerOwner::setClean(*m_observer);
    };
    function.SetMeasurement(gain);
    EXPECT_TRUE(wasDirty);
    EXPECT_TRUE(function.getDirtyTracker()->isDirty());
    EXPECT_TRUE(m_observer->isDirty());
}

TEST_F(FunctionTrackerTest, StaysMarkedWhenAMeasurementCannotBeCloned)
{
    HostMeasurement gain(s_gain);
    gain.hooks.onClone = [] { throw std::runtime_error("no clone"); };
    EXPECT_THROW(m_function.SetMeasurement(gain), std::runtime_error);
    EXPECT_TRUE(isDirty());
    EXPECT_TRUE(m_observer->isDirty());
}

TEST_F(FunctionTrackerTest, MarksAlsoWhileItIsUpdating)
{
    makeDirty();
    int stateInside = 0;
    m_function.getDirtyTracker()->updateIfDirty([&] {
        m_function.SetParameters({});
        stateInside = m_function.getDirtyTracker()->getDirtyState();
    });
    EXPECT_EQ(stateInside, -1);
    EXPECT_TRUE(m_observer->isDirty());
    EXPECT_FALSE(isDirty()) << "the end of an update overwrites the mark";
}

TEST_F(FunctionTrackerTest, MarksForANameAndAMeasurementAlsoWhileItIsUpdating)
{
    const auto stateAfter = [](const std::function<void(Function&)>& operation) {
        Function function;
        function.getDirtyTracker()->markDirty();
        int state = 0;
        function.getDirtyTracker()->updateIfDirty([&] {
            operation(function);
            state = function.getDirtyTracker()->getDirtyState();
        });
        return state;
    };
    EXPECT_EQ(stateAfter([](Function& f) { f.SetFunctionName(QStringLiteral("polynomial-1")); }), -1);
    EXPECT_EQ(stateAfter([](Function& f) { f.SetFunctionName(s_unknown); }), 1);
    EXPECT_EQ(stateAfter([](Function& f) { f.SetMeasurement(HostMeasurement(s_gain)); }), -1);
}

TEST_F(FunctionTrackerTest, MarksBeforeItTakesAMeasurementAlsoWhileItIsUpdating)
{
    HostMeasurement gain(s_gain);
    int stateBefore = 0;
    int stateInClone = 0;
    Function function;
    gain.hooks.onClone = [&] { stateInClone = function.getDirtyTracker()->getDirtyState(); };
    function.getDirtyTracker()->markDirty();
    function.getDirtyTracker()->updateIfDirty([&] {
        stateBefore = function.getDirtyTracker()->getDirtyState();
        function.SetMeasurement(gain);
    });
    EXPECT_EQ(stateBefore, 1);
    EXPECT_EQ(stateInClone, -1);
}

// Copies

TEST_F(FunctionTrackerTest, IsNewAndCleanInACopy)
{
    makeDirty();
    const auto source = makeDirtyNode();
    AbstractDirtyTracker::bind(source, m_function.getDirtyTracker());
    TrackerOwner::setClean(*m_observer);
    const Function copy(m_function);
    const std::unique_ptr<AbstractProperty> clone(m_function.Clone());
    for (const Function* made : {&copy, static_cast<const Function*>(clone.get())}) {
        EXPECT_NE(made->getDirtyTracker(), m_function.getDirtyTracker());
        EXPECT_TRUE(made->getDirtyTracker()->isClean());
        EXPECT_TRUE(made->getDirtyTracker()->getSources().nodes().empty());
        EXPECT_TRUE(made->getDirtyTracker()->getObservers().nodes().empty());
    }
    EXPECT_TRUE(isDirty());
    EXPECT_TRUE(m_observer->isClean());
}

TEST_F(FunctionTrackerTest, IsCleanInACopyThatHasAMeasurement)
{
    const Function source(s_gain);
    EXPECT_TRUE(Function(source).getDirtyTracker()->isClean());
    const std::unique_ptr<AbstractProperty> clone(source.Clone());
    EXPECT_TRUE(static_cast<const Function&>(*clone).getDirtyTracker()->isClean());
    EXPECT_TRUE(source.getDirtyTracker()->isDirty());
}

TEST_F(FunctionTrackerTest, StaysWithItsEdgesAndItsStateInAnAssignment)
{
    const Function source(QStringLiteral("polynomial-1"));
    const auto tracker = m_function.getDirtyTracker();
    static_cast<Function&>(m_function) = source;
    EXPECT_EQ(m_function.getDirtyTracker(), tracker);
    EXPECT_TRUE(tracker->isClean());
    EXPECT_TRUE(m_observer->isClean());
    EXPECT_TRUE(source.getDirtyTracker()->isDirty());
    EXPECT_TRUE(source.getDirtyTracker()->getObservers().nodes().empty());

    makeDirty();
    static_cast<Function&>(m_function) = Function();
    EXPECT_TRUE(tracker->isDirty());
    EXPECT_TRUE(m_observer->isClean());
    m_function.SetParameters({});
    EXPECT_TRUE(m_observer->isDirty()) << "the edge is still there";
}

// What the getters do

struct Getter
{
    const char* name;
    void (*read)(const Function&);

    friend std::ostream& operator<<(std::ostream& out, const Getter& getter) { return out << getter.name; }
};

class FunctionGetterTest : public FunctionTrackerTest, public ::testing::WithParamInterface<Getter>
{
protected:
    void SetUp() override
    {
        FunctionTrackerTest::SetUp();
        m_function.SetParameters(doubles({1})); // a folder to read from
        TrackerOwner::setClean(*m_observer);
    }

    void read() { GetParam().read(m_function); }

    void bindSource(const std::shared_ptr<TrackerNode>& source)
    {
        AbstractDirtyTracker::bind(source, m_function.getDirtyTracker());
        TrackerOwner::setClean(*m_observer);
    }
};

TEST_P(FunctionGetterTest, MakesCleanWithoutSources)
{
    ASSERT_TRUE(isDirty());
    read();
    EXPECT_TRUE(m_function.getDirtyTracker()->isClean());
    EXPECT_TRUE(m_observer->isClean()) << "nobody else is told";
}

TEST_P(FunctionGetterTest, LeavesADirtyObserverDirty)
{
    m_function.SetParameters(doubles({2}));
    ASSERT_TRUE(m_observer->isDirty());
    read();
    EXPECT_TRUE(m_function.getDirtyTracker()->isClean());
    EXPECT_TRUE(m_observer->isDirty());
}

TEST_P(FunctionGetterTest, MakesCleanWhenAllSourcesAre)
{
    const auto one = makeNode();
    const auto other = makeNode();
    bindSource(one);
    bindSource(other);
    read();
    EXPECT_TRUE(m_function.getDirtyTracker()->isClean());
}

TEST_P(FunctionGetterTest, MarksAgainWhenASourceIsDirty)
{
    const auto clean = makeNode();
    const auto dirty = makeDirtyNode();
    bindSource(clean);
    bindSource(dirty);
    ASSERT_TRUE(m_observer->isClean());
    read();
    EXPECT_TRUE(isDirty());
    EXPECT_TRUE(m_observer->isDirty());
}

TEST_P(FunctionGetterTest, MarksEvenACleanOneWhenASourceIsUpdating)
{
    m_function.GetFunctionName();
    ASSERT_TRUE(m_function.getDirtyTracker()->isClean());
    const auto source = makeUpdatingNode();
    bindSource(source);
    ASSERT_TRUE(m_function.getDirtyTracker()->isClean());
    read();
    EXPECT_TRUE(isDirty());
    EXPECT_TRUE(m_observer->isDirty());
}

TEST_P(FunctionGetterTest, ForgetsSourcesThatAreGone)
{
    auto source = makeDirtyNode();
    bindSource(source);
    source.reset();
    ASSERT_EQ(m_function.getDirtyTracker()->getSources().nodes().size(), 1U);
    read();
    EXPECT_TRUE(m_function.getDirtyTracker()->isClean());
    EXPECT_TRUE(m_function.getDirtyTracker()->getSources().nodes().empty());
}

TEST_P(FunctionGetterTest, MakesAVariablesFunctionFollowItsVariable)
{
    Variable source(QStringLiteral("x"));
    source.GetData();
    AbstractDirtyTracker::bind(source.getDirtyTracker(), m_function.getDirtyTracker());
    read();
    ASSERT_TRUE(m_function.getDirtyTracker()->isClean());
    source.UpdateData(BVariant(1.0));
    EXPECT_TRUE(isDirty());
    EXPECT_TRUE(m_observer->isDirty());
    read();
    EXPECT_TRUE(isDirty()) << "its source isn't up to date";
    source.GetData();
    read();
    EXPECT_TRUE(m_function.getDirtyTracker()->isClean());
}

INSTANTIATE_TEST_SUITE_P(Getters, FunctionGetterTest,
                         ::testing::Values(Getter{"Name", [](const Function& f) { f.GetFunctionName(); }},
                                           Getter{"Parameters", [](const Function& f) { f.GetParameters(); }},
                                           Getter{"NoMeasurement",
                                                  [](const Function& f) {
                                                      EXPECT_EQ(f.GetMeasurement(), nullptr);
                                                  }}),
                         TestSupport::CaseName());

TEST_F(FunctionTrackerTest, ComesCleanByReadingAMeasurement)
{
    Function function(s_gain);
    function.SetParameters(doubles({1}));
    ASSERT_TRUE(function.getDirtyTracker()->isDirty());
    ASSERT_NE(function.GetMeasurement(), nullptr);
    EXPECT_TRUE(function.getDirtyTracker()->isClean());
}

TEST_F(FunctionTrackerTest, MarksByReadingAMeasurementWhenASourceIsDirty)
{
    const Function function(s_gain);
    const auto source = makeDirtyNode();
    AbstractDirtyTracker::bind(source, function.getDirtyTracker());
    AbstractDirtyTracker::bind(function.getDirtyTracker(), m_observer);
    TrackerOwner::setClean(*m_observer);
    const MessageCapture log;
    ASSERT_NE(function.GetMeasurement(), nullptr);
    EXPECT_TRUE(function.getDirtyTracker()->isDirty());
    EXPECT_TRUE(m_observer->isDirty());
}

TEST_F(FunctionTrackerTest, StaysAsItIsWithoutAFolderOfParameters)
{
    const MessageCapture log;
    makeDirty();
    m_function.GetParameters();
    EXPECT_TRUE(isDirty());
    EXPECT_EQ(log.debug().size(), 1);

    m_function.GetFunctionName();
    ASSERT_FALSE(isDirty());
    const auto source = makeUpdatingNode();
    AbstractDirtyTracker::bind(source, m_function.getDirtyTracker());
    m_function.GetParameters();
    EXPECT_FALSE(isDirty());
    EXPECT_TRUE(m_observer->isClean());
}

TEST_F(FunctionTrackerTest, StaysAsItIsWithAValueWhereTheParametersBelong)
{
    m_function.SetProperty(QStringLiteral("Parameters"), BVariant(1));
    const MessageCapture log;
    makeDirty();
    m_function.GetParameters();
    EXPECT_TRUE(isDirty());
}

TEST_F(FunctionTrackerTest, ComesCleanByReadingAMeasurementWithoutAFolderOfParameters)
{
    const Function function(s_gain);
    ASSERT_TRUE(function.getDirtyTracker()->isDirty());
    const MessageCapture log;
    ASSERT_NE(function.GetMeasurement(), nullptr);
    EXPECT_EQ(log.debug().size(), 1);
    EXPECT_TRUE(function.getDirtyTracker()->isClean());
}

TEST_F(FunctionTrackerTest, ComesCleanByReadingANameThatIsNotThere)
{
    makeDirty();
    m_function.DeleteProperty(QStringLiteral("Function"));
    EXPECT_EQ(m_function.GetFunctionName(), QString());
    EXPECT_FALSE(isDirty());
}

TEST_F(FunctionTrackerTest, CountsNoUpdates)
{
    Function function(s_gain);
    function.SetParameters(doubles({1}));
    function.GetMeasurement();
    function.GetFunctionName();
    function.GetParameters();
    EXPECT_EQ(function.getDirtyTracker()->getUpdateCount(), 0);
}

} // namespace
} // namespace Orrery
