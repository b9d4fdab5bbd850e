// A host whose code runs in the middle of a request, and does there what it likes.
#include "tests/results/ResultsTestSupport.h"
#include "tests/support/Failures.h"

#include <tuple>
#include <utility>

namespace Orrery {
namespace {

using namespace ResultsTest;

const QString I = QStringLiteral("I");
const QString V = QStringLiteral("V");
const QString indepsOfI = QStringLiteral("I_Indeps");
const QString parameterName = QStringLiteral("Parameter");

using Call = std::function<void()>;

/// A host's units: a clone of them, or its being put somewhere, is told.
class HostUnits : public Units
{
public:
    explicit HostUnits(const char* text)
        : Units(Units::FromSIString(QString::fromLatin1(text)))
    {
    }
    HostUnits(const HostUnits& other) = default;
    HostUnits& operator=(const HostUnits&) = delete;

    AbstractProperty* DoClone() const override
    {
        auto copy = std::make_unique<HostUnits>(*this);
        if (const Call told = onClone) // it may destroy this
            told();
        return copy.release();
    }

    Call onClone;
    Call onPlace;

protected:
    void OnPathChanged() override
    {
        Units::OnPathChanged();
        if (const Call told = onPlace) // as above
            told();
    }
};

/// A host's folder that tells of its end.
class DyingFolder : public PropertyObject
{
public:
    DyingFolder(const QString& name, Call call)
        : PropertyObject(name)
        , m_call(std::move(call))
    {
    }
    DyingFolder(const DyingFolder&) = delete;
    DyingFolder& operator=(const DyingFolder&) = delete;
    ~DyingFolder() override { m_call(); }

private:
    Call m_call;
};

/// A host's reference: tells of each look-up.
class HostReference : public PropertyReference
{
public:
    HostReference(const QString& name, const AbstractProperty& target, Call call)
        : PropertyReference(name)
        , m_target(&target)
        , m_call(std::move(call))
    {
    }

protected:
    AbstractProperty* GetPropertyRef() const override
    {
        const PropertyHandle target = m_target; // the call may destroy this
        const Call call = m_call;
        call();
        return target.Get();
    }
    const AbstractProperty* GetPropertyConstRef() const override { return GetPropertyRef(); }

private:
    PropertyHandle m_target;
    Call m_call;
};

/// A sweep of three runs of a host, and one blow that falls when a test has it fall.
class Stage
{
public:
    Stage()
        : top(std::make_unique<PropertyObject>(QStringLiteral("top")))
        , sweepLife(addSweep(*top, QStringLiteral("sweep")))
        , parameter(addData(*top, QStringLiteral("T"), {10, 20, 30}))
    {
        sweep()->SetParameterRef(parameter);
        for (int i = 0; i < 3; ++i) {
            runs.push_back(insert(*top, std::make_unique<HostData>(QStringLiteral("run%1").arg(i))));
            addMeasured(*runs.back(), I, {i * 2.0, i * 2.0 + 1}, V, {i * 1.0, i * 1.0});
            sweep()->AddResultDataRef(runs.back());
        }
    }

    ParameterizedResultData* sweep() const { return static_cast<ParameterizedResultData*>(sweepLife.Get()); }

    Variable* joined() const { return sweep() ? sweep()->GetPtr<Variable>(I) : nullptr; }
    PropertyObject* independents() const { return sweep() ? independentsOf(*sweep(), I) : nullptr; }

    Call strike()
    {
        return [this] {
            if (blow) {
                ++strikes;
                std::exchange(blow, nullptr)(*this);
            }
        };
    }

    std::unique_ptr<PropertyObject> top;
    PropertyObject elsewhere{QStringLiteral("elsewhere")};
    PropertyHandle sweepLife;
    Variable* parameter;
    std::vector<HostData*> runs;
    std::unique_ptr<AbstractProperty> taken;
    std::function<void(Stage&)> blow;
    int strikes = 0;
};

/// What the members that the sweep can reach hold, looked up one by one.
Doubles plainlyJoined(ParameterizedResultData& sweep)
{
    Doubles all;
    if (!dynamic_cast<const Variable*>(targetOf(sweep, parameterName)))
        return all;
    QList<AbstractProperty*> members;
    sweep.GetPrefixedChildrenProperties(&members, QString());
    for (const AbstractProperty* member : qAsConst(members)) {
        const auto& reference = dynamic_cast<const PropertyReference&>(*member);
        auto* const run = dynamic_cast<ResultData*>(reference.Resolve());
        Variable* const variable = run ? run->GetPtr<Variable>(I) : nullptr;
        if (variable && sweep.CanReferenceProperty(variable)) {
            const Doubles own = dataOf(variable);
            all.insert(all.end(), own.begin(), own.end());
        }
    }
    return all;
}

/// Where the blow falls.
struct Moment
{
    const char* name;
    void (*prepare)(Stage&);
};

void strikeInSearch(Stage& stage, std::size_t run)
{
    const PropertyHandle variable(stage.runs[run]->GetPropertyPtr(I));
    stage.runs[run]->find = [call = stage.strike(), variable](const QString&) {
        call();
        return static_cast<Variable*>(variable.Get());
    };
}

HostUnits* giveHostUnits(Variable& variable)
{
    auto units = std::make_unique<HostUnits>("V");
    units->SetName(QStringLiteral("Unit"));
    return insert(variable, std::move(units));
}

void PrintTo(const Moment& moment, std::ostream* out)
{
    *out << moment.name;
}

const Moment moments[] = {
    {"FirstMemberIsSearched", [](Stage& stage) { strikeInSearch(stage, 0); }},
    {"LaterMemberIsSearched", [](Stage& stage) { strikeInSearch(stage, 1); }},
    {"UnitsOfAMemberAreCloned",
     [](Stage& stage) { giveHostUnits(*stage.runs[1]->GetPtr<Variable>(I))->onClone = stage.strike(); }},
    {"UnitsOfAnAxisAreCloned",
     [](Stage& stage) { giveHostUnits(*stage.runs[0]->GetPtr<Variable>(V))->onClone = stage.strike(); }},
    {"UnitsOfTheParameterAreCloned",
     [](Stage& stage) { giveHostUnits(*stage.parameter)->onClone = stage.strike(); }},
    {"FormerChildDies",
     [](Stage& stage) { insert(*stage.sweep(), std::make_unique<DyingFolder>(I, stage.strike())); }},
    {"FormerIndependentsDie",
     [](Stage& stage) { insert(*stage.sweep(), std::make_unique<DyingFolder>(indepsOfI, stage.strike())); }},
    {"MemberIsLookedUp",
     [](Stage& stage) {
         stage.sweep()->InsertOrReplaceProperty(
             new HostReference(QStringLiteral("1"), *stage.runs[1], stage.strike()));
     }},
    {"ParameterIsLookedUp",
     [](Stage& stage) {
         stage.sweep()->InsertOrReplaceProperty(
             new HostReference(parameterName, *stage.parameter, stage.strike()));
     }},
    {"AxisIsLookedUp",
     [](Stage& stage) {
         auto* const variable = stage.runs[1]->GetPtr<Variable>(I);
         variable->GetPtr<PropertyObject>(QStringLiteral("Indep"))
             ->InsertOrReplaceProperty(
                 new HostReference(QStringLiteral("0"), *stage.runs[1]->GetPropertyPtr(V), stage.strike()));
     }},
    {"AxisOfTheParameterIsLookedUp",
     [](Stage& stage) {
         const Variable* const hour = addData(*stage.top, QStringLiteral("hour"), {1, 2, 3});
         stage.parameter->AddIndepVariableRef(hour);
         stage.parameter->GetPtr<PropertyObject>(QStringLiteral("Indep"))
             ->InsertOrReplaceProperty(new HostReference(QStringLiteral("0"), *hour, stage.strike()));
     }},
};

/// What the host does there.
struct Deed
{
    const char* name;
    void (*run)(Stage&);
};

void PrintTo(const Deed& deed, std::ostream* out)
{
    *out << deed.name;
}

const Deed deeds[] = {
    {"DestroysTheSweep", [](Stage& stage) { delete stage.sweep(); }},
    {"DestroysTheJoinedVariable", [](Stage& stage) { delete stage.joined(); }},
    {"DestroysTheIndependents", [](Stage& stage) { delete stage.independents(); }},
    {"EmptiesTheIndependents",
     [](Stage& stage) {
         if (stage.independents())
             stage.independents()->DeleteProperties();
     }},
    {"EmptiesTheJoinedVariable",
     [](Stage& stage) {
         if (stage.joined())
             stage.joined()->DeleteProperties();
     }},
    {"DestroysTheLastMember", [](Stage& stage) { stage.top->DeleteProperty(QStringLiteral("run2")); }},
    {"DestroysAllMembers",
     [](Stage& stage) {
         for (HostData* run : stage.runs)
             delete run;
     }},
    {"EmptiesAllMembers",
     [](Stage& stage) {
         for (HostData* run : stage.runs)
             run->DeleteProperties();
     }},
    {"DestroysTheParameter", [](Stage& stage) { stage.top->DeleteProperty(QStringLiteral("T")); }},
    {"EmptiesTheSweep", [](Stage& stage) { stage.sweep()->DeleteProperties(); }},
    {"DestroysEverything", [](Stage& stage) { stage.top.reset(); }},
    {"AsksAgain", [](Stage& stage) { stage.sweep()->FindOrCreateResultVar(I); }},
    {"AsksForAnother", [](Stage& stage) { stage.sweep()->FindOrCreateResultVar(V); }},
    {"AsksForTheIndependents", [](Stage& stage) { stage.sweep()->FindOrCreateResultVar(indepsOfI); }},
    {"AsksForTheParameter", [](Stage& stage) { stage.sweep()->FindOrCreateResultVar(parameterName); }},
    {"TakesTheJoinedVariableOut", [](Stage& stage) { stage.taken.reset(stage.sweep()->TakeProperty(I)); }},
    {"TakesTheIndependentsOut",
     [](Stage& stage) { stage.taken.reset(stage.sweep()->TakeProperty(indepsOfI)); }},
    {"RenamesTheJoinedVariable",
     [](Stage& stage) {
         if (stage.joined())
             stage.joined()->SetName(QStringLiteral("J"));
     }},
    {"ReplacesTheJoinedVariable",
     [](Stage& stage) { stage.sweep()->InsertOrReplaceProperty(new Variable(I)); }},
    {"ReplacesTheIndependents",
     [](Stage& stage) { stage.sweep()->InsertOrReplaceProperty(new PropertyObject(indepsOfI)); }},
    {"MovesTheSweepToAnotherTree",
     [](Stage& stage) {
         AbstractProperty* const sweep = stage.top->TakeProperty(QStringLiteral("sweep"));
         stage.elsewhere.InsertProperty(sweep);
     }},
    {"RenamesTheSweep", [](Stage& stage) { stage.sweep()->SetName(QStringLiteral("renamed")); }},
    {"AddsAMember",
     [](Stage& stage) {
         addMeasured(*addMember(*stage.sweep(), *stage.top, QStringLiteral("late")), I, {99}, V, {9});
     }},
};

class HostileHost : public testing::TestWithParam<std::tuple<Moment, Deed>>
{
};

TEST_P(HostileHost, LeavesARequestThatEnds)
{
    Stage stage;
    std::get<Moment>(GetParam()).prepare(stage);
    stage.blow = std::get<Deed>(GetParam()).run;

    Variable* const got = stage.sweep()->FindOrCreateResultVar(I);
    EXPECT_EQ(stage.strikes, 1);
    if (!stage.sweep()) {
        EXPECT_EQ(got, nullptr);
        return;
    }
    if (got) {
        EXPECT_TRUE(got->GetParent() == stage.sweep() || got == stage.taken.get());
        TestSupport::failureOf([&] { got->GetData(); }); // may well fail, but not crash
        indepNames(*got);
    }

    // And whatever the host has left is joined by the next request.
    stage.sweep()->DeleteProperty(I);
    const Variable* const anew = stage.sweep()->FindOrCreateResultVar(I);
    ASSERT_NE(anew, nullptr);
    EXPECT_EQ(anew->GetParent(), stage.sweep());
    if (stage.sweep()->GetPtr<Variable>(parameterName) == nullptr) { // which the host may have asked for
        EXPECT_EQ(dataOf(anew), plainlyJoined(*stage.sweep()));
    }
}

std::string caseName(const testing::TestParamInfo<std::tuple<Moment, Deed>>& info)
{
    return std::string(std::get<Deed>(info.param).name) + "When" + std::get<Moment>(info.param).name;
}

INSTANTIATE_TEST_SUITE_P(InTheMiddle, HostileHost,
                         testing::Combine(testing::ValuesIn(moments), testing::ValuesIn(deeds)), caseName);

// --- what the node classes of a host are told

TEST(HostsUnits, AreToldOfTheirPlaceInTheJoinedVariable)
{
    Stage stage;
    int told = 0;
    // The clone's own handler: copied with the units.
    giveHostUnits(*stage.runs[0]->GetPtr<Variable>(I))->onPlace = [&] { ++told; };
    const Variable* const joined = stage.sweep()->FindOrCreateResultVar(I);
    EXPECT_TRUE(isExactly<HostUnits>(joined->GetUnits()));
    EXPECT_EQ(told, 1);
}

class HostsUnitsInPlace : public testing::TestWithParam<Deed>
{
};

TEST_P(HostsUnitsInPlace, LeaveARequestThatEnds)
{
    Stage stage;
    giveHostUnits(*stage.runs[1]->GetPtr<Variable>(I))->onPlace = stage.strike();
    stage.blow = GetParam().run;
    Variable* const got = stage.sweep()->FindOrCreateResultVar(I);
    EXPECT_EQ(stage.strikes, 1);
    EXPECT_TRUE(got == nullptr || (stage.sweep() && got->GetParent() == stage.sweep()) ||
                got == stage.taken.get());
}

std::string deedName(const testing::TestParamInfo<Deed>& info)
{
    return info.param.name;
}

INSTANTIATE_TEST_SUITE_P(InTheMiddle, HostsUnitsInPlace, testing::ValuesIn(deeds), deedName);

// --- searching and naming

TEST(HostileSearch, OfAMemberMayDestroyTheSweepThatAsksItForNames)
{
    Stage stage;
    stage.blow = [](Stage& struck) { delete struck.sweep(); };
    stage.runs[0]->listNames = [call = stage.strike()](QStringList* names) {
        names->append(I);
        call();
    };
    EXPECT_EQ(stage.sweep()->FindResultVar(I), nullptr);
    EXPECT_EQ(stage.strikes, 1);
    EXPECT_EQ(stage.sweep(), nullptr);
}

TEST(HostileSearch, OfAMemberMayDestroyTheSweepThatListsItsVariables)
{
    Stage stage;
    strikeInSearch(stage, 1);
    stage.blow = [](Stage& struck) { delete struck.sweep(); };
    QList<AbstractProperty*> list;
    stage.sweep()->GetVariableList(&list);
    EXPECT_EQ(stage.strikes, 1);
    EXPECT_EQ(stage.sweep(), nullptr);
}

TEST(HostileSearch, OfAMemberMayDestroyTheSweepThroughTheConstantForm)
{
    Stage stage;
    strikeInSearch(stage, 1);
    stage.blow = [](Stage& struck) { delete struck.sweep(); };
    EXPECT_EQ(qAsConst(*stage.sweep()).FindResultVar(I), nullptr);
    EXPECT_EQ(stage.strikes, 1);
}

TEST(HostileSearch, MayAskTheSweepForItsNames)
{
    Stage stage;
    QStringList inner;
    stage.runs[0]->listNames = [&](QStringList* names) {
        names->append(I);
        stage.sweep()->GetVariableNameList(&inner); // is being asked already
    };
    EXPECT_EQ(namesIn(*stage.sweep()), QStringList{I});
    EXPECT_NE(stage.sweep()->FindResultVar(I), nullptr);
}

TEST(HostileSearch, MayHandOutAVariableOfAnotherTree)
{
    Stage stage;
    Variable outside(QStringLiteral("outside"), numbers({7}));
    stage.runs[1]->find = [&](const QString&) { return &outside; };
    EXPECT_EQ(dataOf(stage.sweep()->FindOrCreateResultVar(I)), (Doubles{0, 1, 4, 5}));
}

TEST(HostileSearch, MayHandOutTheJoinedVariableItself)
{
    Stage stage;
    stage.runs[1]->find = [&](const QString&) { return stage.joined(); };
    const Variable* const joined = stage.sweep()->FindOrCreateResultVar(I);
    ASSERT_NE(joined, nullptr);
    EXPECT_EQ(targetOf(*joined, QStringLiteral("1")), joined);
    EXPECT_EQ(joined->GetMaxIndepOffset(), 4U);
}

TEST(HostileSearch, MayThrow)
{
    Stage stage;
    stage.runs[1]->find = [](const QString&) -> Variable* { throw std::runtime_error("no"); };
    EXPECT_EQ(TestSupport::failureOf([&] { stage.sweep()->FindOrCreateResultVar(I); }),
              TestSupport::runtimeError("no"));
    stage.runs[1]->find = nullptr;
    stage.sweep()->DeleteProperty(I);
    EXPECT_EQ(dataOf(stage.sweep()->FindOrCreateResultVar(I)), (Doubles{0, 1, 2, 3, 4, 5}));
}

} // namespace
} // namespace Orrery
