// The variables that a sweep makes on request: what they join, in which units, against which axes.
#include "tests/results/ResultsTestSupport.h"
#include "tests/support/Failures.h"
#include "tests/support/RandomSeed.h"

#include <random>

namespace Orrery {
namespace {

using namespace ResultsTest;
using TestSupport::failureOf;
using TestSupport::runtimeError;

const QString I = QStringLiteral("I");
const QString V = QStringLiteral("V");
const QString T = QStringLiteral("T");
const QString indepsOfI = QStringLiteral("I_Indeps");
const QString parameterName = QStringLiteral("Parameter");

Units unit(const char* text)
{
    return Units::FromSIString(QString::fromLatin1(text));
}

QString strategyOf(const Variable& variable)
{
    return childText(variable, QStringLiteral("VariableStrategy"));
}

/// A sweep over T of two runs, of which each has I against its own V.
class Joined : public testing::Test
{
protected:
    PropertyObject top{QStringLiteral("top")};
    ParameterizedResultData* sweep = addSweep(top, QStringLiteral("sweep"));
    Variable* parameter = addData(top, T, {10, 20});
    ResultData* first = addMember(*sweep, top, QStringLiteral("first"));
    ResultData* second = addMember(*sweep, top, QStringLiteral("second"));
    Variable* i0 = addMeasured(*first, I, {1, 2, 3}, V, {0.1, 0.2, 0.3});
    Variable* i1 = addMeasured(*second, I, {4, 5}, V, {0.4, 0.5});

    Joined() { sweep->SetParameterRef(parameter); }

    Variable* join(const QString& name = I) { return sweep->FindOrCreateResultVar(name); }
};

/// Whether it is a joined variable without anything, in its sweep.
testing::AssertionResult isBare(ParameterizedResultData& sweep, const QString& name)
{
    const auto* joined = sweep.GetPtr<ConcatVar>(name);
    if (!joined || joined->GetMaxIndepOffset() != 0 || joined->HasProperty(QStringLiteral("0")))
        return testing::AssertionFailure() << "no empty joined variable";
    if (joined->GetIndepCount() != 0 || joined->HasProperty(QStringLiteral("Unit")))
        return testing::AssertionFailure() << "it has axes or units";
    const PropertyObject* independents = independentsOf(sweep, name);
    if (!independents || independents->GetPropertyCount() != 0)
        return testing::AssertionFailure() << "no empty folder of independents";
    return testing::AssertionSuccess();
}

// --- what it is

TEST_F(Joined, IsAConcatenationInTheSweepThatIsNotSaved)
{
    Variable* const joined = join();
    ASSERT_NE(joined, nullptr);
    EXPECT_TRUE(isExactly<ConcatVar>(*joined));
    EXPECT_EQ(joined->GetName(), I);
    EXPECT_EQ(joined->GetParent(), sweep);
    EXPECT_FALSE(joined->IsSerializable());
    EXPECT_EQ(strategyOf(*joined), QStringLiteral("ConcatStrategy"));
}

TEST_F(Joined, HasAFolderOfIndependentsBesideItThatIsNotSaved)
{
    join();
    PropertyObject* const independents = independentsOf(*sweep, I);
    ASSERT_NE(independents, nullptr);
    EXPECT_TRUE(isExactly<PropertyObject>(*independents));
    EXPECT_FALSE(independents->IsSerializable());
    EXPECT_EQ(childNames(*independents), (QStringList{T, V}));
    EXPECT_EQ(childNames(*sweep), (QStringList{"0", "1", I, indepsOfI, parameterName}));
}

TEST_F(Joined, RefersToTheVariablesOfTheMembers)
{
    const Variable* const joined = join();
    EXPECT_EQ(targetOf(*joined, QStringLiteral("0")), i0);
    EXPECT_EQ(targetOf(*joined, QStringLiteral("1")), i1);
    EXPECT_EQ(joined->GetMaxIndepOffset(), 5U);
    EXPECT_EQ(dataOf(joined), (Doubles{1, 2, 3, 4, 5}));
}

TEST_F(Joined, LeavesTheMembersAsTheyWere)
{
    join();
    EXPECT_EQ(childNames(*first), (QStringList{I, V}));
    EXPECT_EQ(indepNames(*i0), QStringList{V});
}

TEST_F(Joined, ShowsTheMembersNewData)
{
    const Variable* const joined = join();
    i1->UpdateData(numbers({6, 7, 8}));
    EXPECT_EQ(dataOf(joined), (Doubles{1, 2, 3, 6, 7, 8}));
}

TEST_F(Joined, MayHaveAnyName)
{
    for (const char* text : {"", "a/b", "..", "%", "x y", "Data", "Unit", "_Indeps"}) {
        const QString name = QString::fromLatin1(text);
        ASSERT_NE(addData(*first, name, {7}), nullptr) << text;
        Variable* const joined = join(name);
        ASSERT_NE(joined, nullptr) << text;
        EXPECT_EQ(joined->GetName(), name) << text;
        EXPECT_EQ(dataOf(joined), Doubles{7}) << text;
    }
}

// --- it is made once

TEST_F(Joined, IsTheSameOneAtEachRequest)
{
    Variable* const joined = join();
    EXPECT_EQ(join(), joined);
    EXPECT_EQ(joined->GetIndepCount(), 2);
    EXPECT_EQ(childNames(*independentsOf(*sweep, I)), (QStringList{T, V}));
}

TEST_F(Joined, StaysAsItWasMadeWhateverBecomesOfTheSweep)
{
    Variable* const joined = join();
    addMeasured(*addMember(*sweep, top, QStringLiteral("third")), I, {6}, V, {0.6});
    const Variable* const other = addData(top, QStringLiteral("U"), {1, 2, 3});
    ASSERT_EQ(sweep->SetParameterRef(other), ER_SUCCESS);
    i0->SetUnits(unit("A"));
    EXPECT_EQ(join(), joined);
    EXPECT_EQ(dataOf(joined), (Doubles{1, 2, 3, 4, 5}));
    EXPECT_EQ(indepNames(*joined), (QStringList{V, T}));
    EXPECT_EQ(dataOf(indepAt(*joined, 1)), (Doubles{10, 10, 10, 20, 20}));
    EXPECT_EQ(unitsOf(*joined), QStringLiteral("(none)"));
}

TEST_F(Joined, IsMadeAnewWhenItWasDeleted)
{
    const PropertyHandle former(join());
    const PropertyHandle formerIndependents(independentsOf(*sweep, I));
    addMeasured(*addMember(*sweep, top, QStringLiteral("third")), I, {6}, V, {0.6});
    sweep->DeleteProperty(I);
    EXPECT_EQ(dataOf(join()), (Doubles{1, 2, 3, 4, 5, 6}));
    EXPECT_TRUE(former.IsExpired());
    EXPECT_TRUE(formerIndependents.IsExpired());
    EXPECT_EQ(dataOf(indepAt(*join(), 0)), (Doubles{0.1, 0.2, 0.3, 0.4, 0.5, 0.6}));
}

TEST_F(Joined, IsAnyVariableThatStandsUnderTheName)
{
    Variable* const own = addData(*sweep, I, {9});
    EXPECT_EQ(join(), own);
    EXPECT_EQ(dataOf(own), Doubles{9});
    EXPECT_TRUE(own->IsSerializable());
    EXPECT_EQ(independentsOf(*sweep, I), nullptr);
}

// --- what stands in its place

TEST_F(Joined, TakesThePlaceOfAChildThatIsNoVariable)
{
    sweep->SetProperty(I, 5);
    EXPECT_EQ(dataOf(join()), (Doubles{1, 2, 3, 4, 5}));
    EXPECT_TRUE(isExactly<ConcatVar>(*sweep->GetPropertyPtr(I)));
}

TEST_F(Joined, TakesThePlaceOfAReferenceToAVariable)
{
    const PropertyHandle reference(addReference(*sweep, I, *i0));
    EXPECT_EQ(dataOf(join()), (Doubles{1, 2, 3, 4, 5}));
    EXPECT_TRUE(reference.IsExpired());
}

TEST_F(Joined, TakesThePlaceOfWhateverHasTheNameOfItsIndependents)
{
    const PropertyHandle former(addData(*sweep, indepsOfI, {1}));
    ASSERT_NE(join(), nullptr);
    EXPECT_TRUE(former.IsExpired());
    EXPECT_EQ(childNames(*independentsOf(*sweep, I)), (QStringList{T, V}));
}

TEST_F(Joined, DeletesTheMemberWhoseNumberIsAskedFor)
{
    addData(*second, QStringLiteral("0"), {7, 8});
    const PropertyHandle reference(sweep->GetPropertyPtr(QStringLiteral("0")));
    Variable* const joined = join(QStringLiteral("0"));
    EXPECT_TRUE(reference.IsExpired());
    EXPECT_EQ(sweep->GetPropertyPtr(QStringLiteral("0")), joined);
    EXPECT_EQ(dataOf(joined), (Doubles{7, 8})); // what stands in the member's place is no member
    EXPECT_TRUE(first->HasProperty(I));

    EXPECT_EQ(dataOf(join()), (Doubles{4, 5}));
}

TEST_F(Joined, IsItsOwnParameterWhenTheParametersNameIsAskedFor)
{
    addMeasured(*first, parameterName, {7, 8}, QStringLiteral("W"), {1, 2});
    addData(*second, parameterName, {9});
    const PropertyHandle reference(sweep->GetPropertyPtr(parameterName));
    Variable* const joined = join(parameterName);
    EXPECT_TRUE(reference.IsExpired());
    ASSERT_NE(joined, nullptr);
    EXPECT_EQ(sweep->GetPropertyPtr(parameterName), joined);
    EXPECT_EQ(dataOf(joined), (Doubles{7, 8, 9}));
    EXPECT_EQ(indepNames(*joined), (QStringList{"W", parameterName}));
    Variable* const swept = indepAt(*joined, 1);
    ASSERT_NE(swept, nullptr);
    EXPECT_EQ(targetOf(*swept, QStringLiteral("Param")), joined);
    EXPECT_EQ(dataOf(swept), (Doubles{7, 7, 8}));
    EXPECT_EQ(indepNames(*swept), QStringList{QStringLiteral("W")});

    EXPECT_EQ(dataOf(indepAt(*join(), 1)), (Doubles{7, 7, 7, 8, 8})); // the parameter from now on
}

TEST_F(Joined, LosesItsIndependentsWhenTheirFolderIsAskedFor)
{
    Variable* const joined = join();
    Variable* const asked = join(indepsOfI);
    ASSERT_NE(asked, nullptr);
    EXPECT_EQ(sweep->GetPropertyPtr(indepsOfI), asked);
    EXPECT_TRUE(isExactly<ConcatVar>(*asked));
    EXPECT_EQ(asked->GetMaxIndepOffset(), 0U);
    EXPECT_NE(independentsOf(*sweep, indepsOfI), nullptr);
    EXPECT_EQ(join(), joined);
    EXPECT_EQ(dataOf(joined), (Doubles{1, 2, 3, 4, 5}));
    EXPECT_EQ(indepNames(*joined), (QStringList{"(none)", "(none)"}));
}

// --- the parameter

TEST_F(Joined, IsEmptyWithoutAParameterAndStaysSo)
{
    sweep->DeleteProperty(parameterName);
    Variable* const joined = join();
    EXPECT_TRUE(isBare(*sweep, I));
    EXPECT_FALSE(joined->IsSerializable());
    EXPECT_FALSE(independentsOf(*sweep, I)->IsSerializable());
    EXPECT_TRUE(joined->GetData().isNull());

    ASSERT_EQ(sweep->SetParameterRef(parameter), ER_SUCCESS);
    ASSERT_EQ(sweep->AddResultDataRef(first), ER_SUCCESS);
    EXPECT_EQ(join(), joined);
    EXPECT_TRUE(isBare(*sweep, I));
}

TEST_F(Joined, IsEmptyIfTheParameterIsAValue)
{
    sweep->DeleteProperty(parameterName);
    sweep->SetProperty(parameterName, 5);
    join();
    EXPECT_TRUE(isBare(*sweep, I));
    EXPECT_TRUE(sweep->HasProperty(parameterName));
}

TEST_F(Joined, IsEmptyIfTheParameterIsAFolder)
{
    sweep->DeleteProperty(parameterName);
    insertFolder(*sweep, parameterName);
    join();
    EXPECT_TRUE(isBare(*sweep, I));
}

TEST_F(Joined, IsEmptyIfTheParameterRefersToNoVariable)
{
    sweep->DeleteProperty(parameterName);
    ASSERT_NE(addReference(*sweep, parameterName, *first), nullptr);
    join();
    EXPECT_TRUE(isBare(*sweep, I));
}

TEST_F(Joined, IsEmptyIfTheParameterIsGone)
{
    top.DeleteProperty(T);
    join();
    EXPECT_TRUE(isBare(*sweep, I));
}

TEST_F(Joined, IsEmptyIfTheReferenceToTheParameterIsADelayedOne)
{
    sweep->DeleteProperty(parameterName);
    const auto* delayed = addDelayedReference(*sweep, parameterName, parameter);
    ASSERT_EQ(delayed->Resolve(), parameter); // it does stand for the parameter
    join();
    EXPECT_TRUE(isBare(*sweep, I));
}

TEST_F(Joined, TakesAVariableThatStandsThereAsTheParameter)
{
    sweep->DeleteProperty(parameterName);
    addData(*sweep, parameterName, {30, 40});
    Variable* const joined = join();
    EXPECT_EQ(dataOf(joined), (Doubles{1, 2, 3, 4, 5}));
    EXPECT_EQ(indepNames(*joined), (QStringList{V, parameterName}));
    EXPECT_EQ(dataOf(indepAt(*joined, 1)), (Doubles{30, 30, 30, 40, 40}));
}

// --- the members

TEST_F(Joined, PassesOverAMemberWithoutTheVariable)
{
    addMember(*sweep, top, QStringLiteral("empty"));
    addMeasured(*addMember(*sweep, top, QStringLiteral("fourth")), I, {6}, V, {0.6});
    EXPECT_EQ(dataOf(join()), (Doubles{1, 2, 3, 4, 5, 6}));
    EXPECT_EQ(dataOf(indepAt(*join(), 0)), (Doubles{0.1, 0.2, 0.3, 0.4, 0.5, 0.6}));
}

TEST_F(Joined, PassesOverTheFirstMemberWithoutTheVariable)
{
    first->DeleteProperty(I);
    EXPECT_EQ(sweep->FindResultVar(I), nullptr);
    EXPECT_EQ(dataOf(join()), (Doubles{4, 5}));
}

TEST_F(Joined, OfANameThatNoMemberHasIsEmptyButHasTheSweep)
{
    Variable* const joined = join(QStringLiteral("nothing"));
    ASSERT_NE(joined, nullptr);
    EXPECT_EQ(joined->GetMaxIndepOffset(), 0U);
    EXPECT_EQ(indepNames(*joined), QStringList{T});
}

TEST_F(Joined, PassesOverNumberedChildrenThatAreNoMembers)
{
    sweep->SetProperty(QStringLiteral("2"), 5);
    addReference(*sweep, QStringLiteral("3"), *i0);
    addMeasured(*insertFolder(*sweep, QStringLiteral("4")), I, {99}, V, {0});
    addData(*sweep, QStringLiteral("5"), {99});
    addDelayedReference(*sweep, QStringLiteral("6"), i0);
    const ResultData* const gone = addMember(*sweep, top, QStringLiteral("gone"));
    ASSERT_EQ(targetOf(*sweep, QStringLiteral("7")), gone);
    top.DeleteProperty(QStringLiteral("gone"));
    addMeasured(*addMember(*sweep, top, QStringLiteral("last")), I, {6}, V, {0.6});
    EXPECT_EQ(dataOf(join()), (Doubles{1, 2, 3, 4, 5, 6}));
}

TEST_F(Joined, TakesAFolderOfDataThatStandsInTheSweepAsAMember)
{
    addMeasured(*addRun(*sweep, QStringLiteral("2")), I, {6}, V, {0.6});
    addMeasured(*addRun(*sweep, QStringLiteral("other")), I, {99}, V, {0}); // without a number
    EXPECT_EQ(dataOf(join()), (Doubles{1, 2, 3, 4, 5, 6}));
}

TEST_F(Joined, FollowsTheNumbersOfTheMembersNotTheirNames)
{
    for (int number = 2; number < 12; ++number) {
        ResultData* const run = addMember(*sweep, top, QStringLiteral("run%1").arg(number));
        addMeasured(*run, I, {number + 4.0}, V, {0});
    }
    EXPECT_EQ(childNames(*sweep).at(2), QStringLiteral("10")); // behind "1"
    EXPECT_EQ(dataOf(join()), (Doubles{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15}));
}

TEST_F(Joined, JoinsAMemberTwiceThatIsAddedTwice)
{
    ASSERT_EQ(sweep->AddResultDataRef(first), ER_SUCCESS);
    EXPECT_EQ(dataOf(join()), (Doubles{1, 2, 3, 4, 5, 1, 2, 3}));
    EXPECT_EQ(dataOf(indepAt(*join(), 0)), (Doubles{0.1, 0.2, 0.3, 0.4, 0.5, 0.1, 0.2, 0.3}));
}

TEST_F(Joined, AsksAHostsFolderOfDataByItsVirtualOperation)
{
    auto* const host = insert(top, std::make_unique<HostData>(QStringLiteral("host")));
    Variable* const made = addData(*host, QStringLiteral("made"), {6, 7});
    QStringList asked;
    host->find = [&](const QString& name) {
        asked.append(name);
        return made;
    };
    ASSERT_EQ(sweep->AddResultDataRef(host), ER_SUCCESS);
    EXPECT_EQ(dataOf(join()), (Doubles{1, 2, 3, 4, 5, 6, 7}));
    EXPECT_EQ(asked, QStringList{I});
}

TEST_F(Joined, HasTheCommonTypeOfTheMembers)
{
    i0->UpdateData(MakeVector<std::int32_t>({1, 2, 3}));
    i1->UpdateData(MakeVector<std::int32_t>({4, 5}));
    EXPECT_EQ(TestSupport::ToElements<std::int32_t>(join()->GetData()),
              (std::vector<std::int32_t>{1, 2, 3, 4, 5}));
    i1->UpdateData(MakeVector<double>({4.5, 5}));
    EXPECT_EQ(TestSupport::ToElements<double>(join()->GetData()), (Doubles{1, 2, 3, 4.5, 5}));
}

TEST_F(Joined, LetsTheExceptionOfAMemberWithAMatrixOut)
{
    i1->UpdateData(MakeCounting({2, 2}));
    const Variable* const joined = join();
    ASSERT_NE(joined, nullptr);
    EXPECT_EQ(failureOf([&] { joined->GetData(); }),
              runtimeError("appendValues currently supports only vector arguments"));
}

TEST_F(Joined, GivesBackTheMatrixOfASingleMember)
{
    ASSERT_EQ(sweep->DeleteProperty(QStringLiteral("1")), ER_SUCCESS);
    i0->UpdateData(MakeCounting({2, 3}));
    EXPECT_EQ(ToDimensions(join()->GetData()), (TestSupport::Sizes{2, 3}));
    EXPECT_EQ(join()->GetElementDimCount(), 0U); // of members by reference no shape is told
}

// --- units

TEST_F(Joined, HasNoUnitsIfNoMemberHas)
{
    EXPECT_EQ(unitsOf(*join()), QStringLiteral("(none)"));
}

TEST_F(Joined, HasTheUnitsOfTheFirstMemberThatHasAny)
{
    addMeasured(*addMember(*sweep, top, QStringLiteral("third")), I, {6}, V, {0.6})->SetUnits(unit("V"));
    i1->SetUnits(unit("A"));
    EXPECT_EQ(unitsOf(*join()), QStringLiteral("A"));
    EXPECT_EQ(dataOf(join()), (Doubles{1, 2, 3, 4, 5, 6})); // no value is converted
}

TEST_F(Joined, HasUnitsOfItsOwn)
{
    i0->SetUnits(unit("A"));
    Variable* const joined = join();
    EXPECT_NE(&joined->GetUnits(), &i0->GetUnits());
    EXPECT_EQ(joined->GetUnits().GetName(), QStringLiteral("Unit"));
    i0->SetUnits(unit("V"));
    EXPECT_EQ(unitsOf(*joined), QStringLiteral("A"));
}

TEST_F(Joined, TakesPlainUnitsWhereAMembersUnitIsSomethingElse)
{
    i0->SetProperty(QStringLiteral("Unit"), 5);
    i1->SetUnits(unit("A"));
    Variable* const joined = join();
    const Units* units = nullptr;
    ASSERT_EQ(joined->GetUnits(&units), ER_SUCCESS);
    EXPECT_FALSE(units->IsValid());
    EXPECT_EQ(units->GetName(), QStringLiteral("Unit"));
}

TEST_F(Joined, TakesNoDisplayUnits)
{
    i0->SetUnits(unit("A"));
    i0->SetDisplayUnits(unit("mA"));
    EXPECT_FALSE(join()->HasProperty(QStringLiteral("DisplayUnit")));
}

TEST_F(Joined, HasAxesInTheUnitsOfTheFirstOfThatName)
{
    indepAt(*i0, 0)->SetUnits(unit("V"));
    indepAt(*i1, 0)->SetUnits(unit("s"));
    EXPECT_EQ(unitsOf(*indepAt(*join(), 0)), QStringLiteral("V"));
}

TEST_F(Joined, HasAnAxisWithoutUnitsIfTheFirstOfThatNameHasNone)
{
    indepAt(*i1, 0)->SetUnits(unit("V"));
    EXPECT_EQ(unitsOf(*indepAt(*join(), 0)), QStringLiteral("(none)"));
}

TEST_F(Joined, HasASweepInTheUnitsOfTheParameter)
{
    parameter->SetUnits(unit("K"));
    const Variable* const swept = indepAt(*join(), 1);
    EXPECT_EQ(unitsOf(*swept), QStringLiteral("K"));
    EXPECT_NE(&swept->GetUnits(), &parameter->GetUnits());
}

TEST_F(Joined, HasASweepWithoutUnitsIfTheParameterHasNone)
{
    EXPECT_EQ(unitsOf(*indepAt(*join(), 1)), QStringLiteral("(none)"));
}

// --- axes

TEST_F(Joined, SharesOneAxisForIndependentsOfOneName)
{
    Variable* const joined = join();
    EXPECT_EQ(indepNames(*joined), (QStringList{V, T}));
    Variable* const axis = indepAt(*joined, 0);
    EXPECT_TRUE(isExactly<ConcatVar>(*axis));
    EXPECT_EQ(axis->GetParent(), independentsOf(*sweep, I));
    EXPECT_EQ(targetOf(*axis, QStringLiteral("0")), indepAt(*i0, 0));
    EXPECT_EQ(targetOf(*axis, QStringLiteral("1")), indepAt(*i1, 0));
    EXPECT_EQ(dataOf(axis), (Doubles{0.1, 0.2, 0.3, 0.4, 0.5}));
}

TEST_F(Joined, HasItsAxesInTheOrderOfTheirAppearanceAndTheSweepLast)
{
    for (const char* name : {"Z", "W"})
        i0->AddIndepVariableRef(addData(*first, QString::fromLatin1(name), {1, 2, 3}));
    for (const char* name : {"W", "A", "Z"})
        i1->AddIndepVariableRef(addData(*second, QString::fromLatin1(name), {4, 5}));
    Variable* const joined = join();
    EXPECT_EQ(indepNames(*joined), (QStringList{V, "Z", "W", "A", T}));
    EXPECT_EQ(dataOf(indepAt(*joined, 2)), (Doubles{1, 2, 3, 4, 5}));
    EXPECT_EQ(dataOf(indepAt(*joined, 3)), (Doubles{4, 5}));
}

TEST_F(Joined, JoinsTwoAxesOfOneNameInOneMemberToo)
{
    PropertyObject* const aside = insertFolder(*first, QStringLiteral("aside"));
    i0->AddIndepVariableRef(addData(*aside, V, {7, 8}));
    EXPECT_EQ(dataOf(indepAt(*join(), 0)), (Doubles{0.1, 0.2, 0.3, 7, 8, 0.4, 0.5}));
    EXPECT_EQ(indepNames(*join()), (QStringList{V, T}));
}

TEST_F(Joined, PassesOverAnAxisThatIsNotFound)
{
    i0->AddIndepVariableRef(addData(*first, QStringLiteral("W"), {1, 2, 3}));
    first->DeleteProperty(V);
    Variable* const joined = join();
    EXPECT_EQ(indepNames(*joined), (QStringList{"W", V, T}));
    EXPECT_EQ(dataOf(indepAt(*joined, 1)), (Doubles{0.4, 0.5}));
}

TEST_F(Joined, ReachesTheAxesBehindAGapInTheirNumbers)
{
    i0->AddIndepVariableRef(addData(*first, QStringLiteral("W"), {1, 2, 3}));
    i0->AddIndepVariableRef(addData(*first, QStringLiteral("X"), {4, 5, 6}));
    i0->GetPtr<PropertyObject>(QStringLiteral("Indep"))->DeleteProperty(QStringLiteral("1"));
    EXPECT_EQ(indepNames(*join()), (QStringList{V, "X", T}));
}

TEST_F(Joined, HasAnEmptyAxisForOneOutsideTheTree)
{
    Variable outside(QStringLiteral("W"), numbers({1, 2, 3}));
    outside.SetUnits(unit("V"));
    ASSERT_EQ(i0->AddIndepVariableRef(&outside), ER_SUCCESS); // a delayed one
    Variable* const joined = join();
    ASSERT_EQ(indepNames(*joined), (QStringList{V, "W", T}));
    EXPECT_EQ(indepAt(*joined, 1)->GetMaxIndepOffset(), 0U); // out of reach for a plain reference
    EXPECT_EQ(unitsOf(*indepAt(*joined, 1)), QStringLiteral("V"));
    i0->GetPtr<PropertyObject>(QStringLiteral("Indep"))->DeleteProperties(); // before it leads nowhere
}

TEST_F(Joined, HasNoAxisForAMemberThatHasNone)
{
    i0->DeleteProperty(QStringLiteral("Indep"));
    EXPECT_EQ(indepNames(*join()), (QStringList{V, T}));
    EXPECT_EQ(dataOf(indepAt(*join(), 0)), (Doubles{0.4, 0.5}));
}

// --- the sweep as an axis

TEST_F(Joined, HasTheParameterStretchedAlongItAsItsLastAxis)
{
    Variable* const joined = join();
    Variable* const swept = indepAt(*joined, 1);
    ASSERT_NE(swept, nullptr);
    EXPECT_TRUE(isExactly<SweptVariable>(*swept));
    EXPECT_EQ(swept->GetName(), T);
    EXPECT_EQ(swept->GetParent(), independentsOf(*sweep, I));
    EXPECT_EQ(strategyOf(*swept), QStringLiteral("SweptStrategy"));
    EXPECT_EQ(targetOf(*swept, QStringLiteral("Param")), parameter);
    EXPECT_EQ(targetOf(*swept, QStringLiteral("DependVar")), joined);
    EXPECT_TRUE(isExactly<PropertyReference>(*swept->GetPropertyPtr(QStringLiteral("Param"))));
    EXPECT_EQ(dataOf(swept), (Doubles{10, 10, 10, 20, 20}));
}

TEST_F(Joined, HasASweepThatFollowsItsLength)
{
    Variable* const swept = indepAt(*join(), 1);
    i0->UpdateData(numbers({1}));
    i1->UpdateData(numbers({2, 3, 4}));
    EXPECT_EQ(dataOf(swept), (Doubles{10, 20, 20, 20}));
}

TEST_F(Joined, HasASweepWithTheParametersOwnAxes)
{
    const Variable* const hour = addData(top, QStringLiteral("hour"), {1, 2});
    const Variable* const day = addData(top, QStringLiteral("day"), {3, 4});
    parameter->AddIndepVariableRef(hour);
    parameter->AddIndepVariableRef(day);
    const Variable* const swept = indepAt(*join(), 1);
    ASSERT_EQ(swept->GetIndepCount(), 2);
    EXPECT_EQ(indepAt(*swept, 0), hour); // themselves, not joined ones
    EXPECT_EQ(indepAt(*swept, 1), day);
    EXPECT_EQ(indepNames(*join()), (QStringList{V, T}));
    EXPECT_FALSE(swept->getDirtyTracker()->isClean());
}

TEST_F(Joined, HasASweepThatIsBoundLaterToAnAxisOutsideTheTree)
{
    Variable outside(QStringLiteral("hour"), numbers({1, 2}));
    parameter->AddIndepVariableRef(&outside);
    const MessageCapture log;
    const Variable* const swept = indepAt(*join(), 1);
    EXPECT_EQ(log.debug(), QStringList{QStringLiteral("used observer to delay reference binding!")});
    EXPECT_EQ(indepAt(*swept, 0), &outside);
}

TEST_F(Joined, HasASweepThatPassesOverAnAxisThatIsNotFound)
{
    parameter->AddIndepVariableRef(addData(top, QStringLiteral("hour"), {1, 2}));
    const Variable* const day = addData(top, QStringLiteral("day"), {3, 4});
    parameter->AddIndepVariableRef(day);
    top.DeleteProperty(QStringLiteral("hour"));
    const Variable* const swept = indepAt(*join(), 1);
    EXPECT_EQ(swept->GetIndepCount(), 1);
    EXPECT_EQ(indepAt(*swept, 0), day);
}

TEST_F(Joined, LogsNothing)
{
    i0->SetUnits(unit("A"));
    const MessageCapture log;
    join();
    EXPECT_EQ(log.debug(), noNames);
    EXPECT_EQ(log.warnings(), noNames);
}

// --- an axis with the parameter's name

/// A sweep over T of runs that are measured against a T of their own.
class ClashingAxis : public testing::Test
{
protected:
    PropertyObject top{QStringLiteral("top")};
    ParameterizedResultData* sweep = addSweep(top, QStringLiteral("sweep"));
    Variable* parameter = addData(top, T, {10});
    ResultData* run = addMember(*sweep, top, QStringLiteral("run"));
    Variable* i = addMeasured(*run, I, {1, 2, 3}, T, {0.1, 0.2, 0.3});

    ClashingAxis() { sweep->SetParameterRef(parameter); }
};

TEST_F(ClashingAxis, LeavesTheSweepWithoutAPlaceButAsTheLastAxis)
{
    const MessageCapture log;
    Variable* const joined = sweep->FindOrCreateResultVar(I);
    ASSERT_NE(joined, nullptr);
    EXPECT_EQ(log.debug(), QStringList{QStringLiteral("used observer to delay reference binding!")});
    EXPECT_EQ(childNames(*independentsOf(*sweep, I)), QStringList{T});
    ASSERT_EQ(indepNames(*joined), (QStringList{T, T}));
    EXPECT_EQ(dataOf(indepAt(*joined, 0)), (Doubles{0.1, 0.2, 0.3}));
    Variable* const swept = indepAt(*joined, 1);
    EXPECT_TRUE(isExactly<SweptVariable>(*swept));
    EXPECT_EQ(swept->GetParent(), nullptr);
    EXPECT_EQ(swept->GetMaxIndepOffset(), 0U); // it can't reach what it stretches along
    EXPECT_TRUE(swept->GetData().isNull());
}

TEST_F(ClashingAxis, GivesTheSweepUnitsAndAxesAllTheSame)
{
    parameter->SetUnits(unit("K"));
    const Variable* const hour = addData(top, QStringLiteral("hour"), {1});
    parameter->AddIndepVariableRef(hour);
    const Variable* const swept = indepAt(*sweep->FindOrCreateResultVar(I), 1);
    ASSERT_NE(swept, nullptr);
    EXPECT_EQ(unitsOf(*swept), QStringLiteral("K"));
    EXPECT_EQ(indepAt(*swept, 0), hour);
}

TEST_F(ClashingAxis, KeepsTheSweepAsLongAsTheJoinedVariable)
{
    Variable* const joined = sweep->FindOrCreateResultVar(I);
    i->UpdateData(numbers({5}));
    sweep->DeleteProperty(QStringLiteral("I_Indeps"));
    EXPECT_EQ(indepNames(*joined), (QStringList{"(none)", T}));
}

TEST_F(ClashingAxis, LeavesACopyOfTheJoinedVariableUsableWhenThatIsGone)
{
    const std::unique_ptr<AbstractProperty> copy(sweep->FindOrCreateResultVar(I)->Clone());
    sweep->DeleteProperty(I);
    auto& variable = static_cast<Variable&>(*copy);
    ASSERT_EQ(variable.GetIndepCount(), 2);
    const QString name = indepNames(variable).at(1); // whether the sweep lives on is open
    EXPECT_TRUE(name == T || name == QStringLiteral("(none)")) << name.toStdString();
    EXPECT_NE(sweep->FindOrCreateResultVar(I), nullptr);
}

TEST_F(ClashingAxis, MayClashInEachOfSeveralVariables)
{
    run->FindResultVar(I);
    addData(*run, QStringLiteral("J"), {1, 2, 3})->AddIndepVariableRef(indepAt(*i, 0));
    QList<AbstractProperty*> list;
    sweep->GetVariableList(&list); // I, J and T itself
    EXPECT_EQ(list.size(), 3);
    for (AbstractProperty* variable : list)
        EXPECT_EQ(static_cast<Variable*>(variable)->GetIndepCount(), variable->GetName() == T ? 1 : 2);
}

// --- depth

TEST(JoinedDepth, LeavesNothingInASweepThatCanTakeNoFolder)
{
    PropertyObject top;
    Variable* const parameter = addData(top, T, {10});
    ResultData* const run = addRun(top, QStringLiteral("run"));
    addMeasured(*run, I, {1, 2}, V, {3, 4});
    auto* const sweep = addSweep(*addNest(top, PropertyObject::MaxDepth - 1), QStringLiteral("sweep"));
    ASSERT_NE(sweep, nullptr);
    ASSERT_EQ(sweep->SetParameterRef(parameter), ER_SUCCESS);
    ASSERT_EQ(sweep->AddResultDataRef(run), ER_SUCCESS);
    EXPECT_EQ(sweep->FindOrCreateResultVar(I), nullptr);
    EXPECT_EQ(sweep->FindResultVar(I), nullptr);
    QList<AbstractProperty*> list;
    sweep->GetVariableList(&list);
    EXPECT_TRUE(list.isEmpty());
    EXPECT_EQ(childNames(*sweep), (QStringList{"0", parameterName}));
}

TEST(JoinedDepth, JoinsWithoutAxesWhereThereIsNoRoomForThem)
{
    PropertyObject top;
    Variable* const parameter = addData(top, T, {10});
    ResultData* const run = addRun(top, QStringLiteral("run"));
    addMeasured(*run, I, {1, 2}, V, {3, 4})->SetUnits(unit("A"));
    auto* const sweep = addSweep(*addNest(top, PropertyObject::MaxDepth - 2), QStringLiteral("sweep"));
    ASSERT_NE(sweep, nullptr);
    ASSERT_EQ(sweep->SetParameterRef(parameter), ER_SUCCESS);
    ASSERT_EQ(sweep->AddResultDataRef(run), ER_SUCCESS);
    Variable* const joined = sweep->FindOrCreateResultVar(I);
    ASSERT_NE(joined, nullptr);
    EXPECT_EQ(dataOf(joined), (Doubles{1, 2}));
    EXPECT_EQ(joined->GetIndepCount(), 0);
    EXPECT_EQ(unitsOf(*joined), QStringLiteral("(none)"));
    EXPECT_EQ(independentsOf(*sweep, I)->GetPropertyCount(), 0);
}

// --- sweeps of sweeps

/// A sweep over "outer" of two sweeps over "inner" of two runs each.
class Nested : public testing::Test
{
protected:
    PropertyObject top{QStringLiteral("top")};
    ParameterizedResultData* outer = addSweep(top, QStringLiteral("outer sweep"));
    Variable* outerParameter = addData(top, QStringLiteral("outer"), {100, 200});
    Variable* innerParameter = addData(top, QStringLiteral("inner"), {10, 20});
    std::vector<ParameterizedResultData*> sweeps;

    Nested()
    {
        outer->SetParameterRef(outerParameter);
        double value = 0;
        for (const char* name : {"a", "b"}) {
            auto* const sweep = addSweep(top, QString::fromLatin1(name));
            sweep->SetParameterRef(innerParameter);
            for (const char* run : {"0", "1"}) {
                ResultData* const data =
                    addMember(*sweep, *sweep, QString::fromLatin1(name) + QLatin1String(run));
                addMeasured(*data, I, {value + 1, value + 2}, V, {value / 10, value / 10 + 1});
                value += 2;
            }
            outer->AddResultDataRef(sweep);
            sweeps.push_back(sweep);
        }
    }
};

TEST_F(Nested, JoinTheirMembersFirstEachInAFolderOfItsOwn)
{
    Variable* const joined = outer->FindOrCreateResultVar(I);
    ASSERT_NE(joined, nullptr);
    for (std::size_t i = 0; i < 2; ++i) {
        auto* const inner = sweeps[i]->GetPtr<Variable>(I);
        ASSERT_NE(inner, nullptr);
        EXPECT_TRUE(isExactly<ConcatVar>(*inner));
        EXPECT_EQ(targetOf(*joined, QString::number(i)), inner);
        EXPECT_EQ(childNames(*independentsOf(*sweeps[i], I)), (QStringList{V, "inner"}));
    }
    EXPECT_EQ(childNames(*independentsOf(*outer, I)), (QStringList{V, "inner", "outer"}));
}

TEST_F(Nested, StretchEachParameterAlongWhatItSpans)
{
    Variable* const joined = outer->FindOrCreateResultVar(I);
    ASSERT_EQ(indepNames(*joined), (QStringList{V, "inner", "outer"}));
    EXPECT_EQ(dataOf(joined), (Doubles{1, 2, 3, 4, 5, 6, 7, 8}));
    EXPECT_EQ(dataOf(indepAt(*joined, 0)), (Doubles{0, 1, 0.2, 1.2, 0.4, 1.4, 0.6, 1.6}));
    EXPECT_EQ(dataOf(indepAt(*joined, 1)), (Doubles{10, 10, 20, 20, 10, 10, 20, 20}));
    EXPECT_EQ(dataOf(indepAt(*joined, 2)), (Doubles{100, 100, 100, 100, 200, 200, 200, 200}));
    EXPECT_TRUE(isExactly<ConcatVar>(*indepAt(*joined, 1)));
    EXPECT_TRUE(isExactly<SweptVariable>(*indepAt(*joined, 2)));
}

TEST_F(Nested, AreAskedForNamesOfTheFirstOfTheFirst)
{
    EXPECT_EQ(namesIn(*outer), (QStringList{I, V}));
    EXPECT_EQ(dataOf(outer->FindResultVar(I)).size(), 8U);
}

TEST_F(Nested, AddAnEmptyMemberForASweepWithoutAParameter)
{
    sweeps[0]->DeleteProperty(parameterName);
    Variable* const joined = outer->FindOrCreateResultVar(I);
    EXPECT_TRUE(isBare(*sweeps[0], I));
    EXPECT_EQ(targetOf(*joined, QStringLiteral("0")), sweeps[0]->GetPropertyPtr(I));
    EXPECT_EQ(dataOf(joined), (Doubles{5, 6, 7, 8}));
    EXPECT_EQ(dataOf(indepAt(*joined, 2)), (Doubles{200, 200, 200, 200}));
}

TEST_F(Nested, AreNotAskedByTheirVirtualOperation)
{
    for (const QString& run : {QStringLiteral("a0"), QStringLiteral("a1")})
        sweeps[0]->GetPtr<ResultData>(run)->DeleteProperty(I); // FindResultVar() would give none
    ASSERT_EQ(sweeps[0]->FindResultVar(I), nullptr);
    outer->FindOrCreateResultVar(I);
    EXPECT_TRUE(sweeps[0]->HasProperty(I));
}

TEST_F(Nested, TakeAJoinedVariableOfAMemberThatExists)
{
    sweeps[0]->SetProperty(QStringLiteral("unused"), 1);
    const Variable* const former = sweeps[0]->FindOrCreateResultVar(I);
    addMeasured(*addMember(*sweeps[0], top, QStringLiteral("late")), I, {99}, V, {9});
    Variable* const joined = outer->FindOrCreateResultVar(I);
    EXPECT_EQ(targetOf(*joined, QStringLiteral("0")), former);
    EXPECT_EQ(dataOf(joined), (Doubles{1, 2, 3, 4, 5, 6, 7, 8}));
}

TEST_F(Nested, OverOneParameterLeaveTheOuterSweepWithoutAPlace)
{
    outer->SetParameterRef(innerParameter);
    Variable* const joined = outer->FindOrCreateResultVar(I);
    ASSERT_EQ(indepNames(*joined), (QStringList{V, "inner", "inner"}));
    EXPECT_EQ(dataOf(indepAt(*joined, 1)), (Doubles{10, 10, 20, 20, 10, 10, 20, 20}));
    EXPECT_EQ(indepAt(*joined, 2)->GetParent(), nullptr);
}

// --- against plain loops

TEST(JoinedValues, AreThoseOfPlainLoopsForMembersOfAnyLength)
{
    for (std::uint64_t run = 1; run <= 30; ++run) {
        const TestSupport::RandomSeed seed{run};
        SCOPED_TRACE(seed);
        std::mt19937_64 random = seed.engine();
        PropertyObject top(QStringLiteral("top"));
        auto* const sweep = addSweep(top, QStringLiteral("sweep"));
        const std::uint64_t members = 1 + TestSupport::randomBelow(random, 15);
        Doubles parameter;
        Doubles values;
        Doubles axis;
        Doubles swept;
        for (std::uint64_t member = 0; member < members; ++member) {
            // The first has something, or the sweep would have no first value to take its shape from.
            const std::uint64_t length = TestSupport::randomBelow(random, 6) + (member == 0 ? 1 : 0);
            parameter.push_back(static_cast<double>(random() % 1000));
            Doubles own;
            Doubles ownAxis;
            for (std::uint64_t i = 0; i < length; ++i) {
                own.push_back(static_cast<double>(random() % 1000));
                ownAxis.push_back(static_cast<double>(i));
                swept.push_back(parameter.back());
            }
            values.insert(values.end(), own.begin(), own.end());
            axis.insert(axis.end(), ownAxis.begin(), ownAxis.end());
            addMeasured(*addMember(*sweep, top, QStringLiteral("run%1").arg(member)), I, own, V, ownAxis);
        }
        ASSERT_EQ(sweep->SetParameterRef(addData(top, T, parameter)), ER_SUCCESS);
        Variable* const joined = sweep->FindOrCreateResultVar(I);
        ASSERT_EQ(indepNames(*joined), (QStringList{V, T}));
        EXPECT_EQ(joined->GetMaxIndepOffset(), values.size());
        EXPECT_EQ(dataOf(joined), values);
        EXPECT_EQ(dataOf(indepAt(*joined, 0)), axis);
        EXPECT_EQ(dataOf(indepAt(*joined, 1)), swept);
        for (std::uint64_t offset = 0; offset < values.size(); ++offset) {
            BVariant value;
            ASSERT_EQ(joined->GetValueAt(&value, offset), ER_SUCCESS);
            EXPECT_EQ(ToDoubles(value), Doubles{values[offset]});
            ASSERT_EQ(indepAt(*joined, 1)->GetValueAt(&value, offset), ER_SUCCESS);
            EXPECT_EQ(ToDoubles(value), Doubles{swept[offset]});
        }
    }
}

} // namespace
} // namespace Orrery
