// What a sweep refers to, and what it tells of its variables.
#include "results/ParameterizedResultData.h"

#include "foundations/property/PropertyObjectFactory.h"
#include "tests/results/ResultsTestSupport.h"

namespace Orrery {
namespace {

using namespace ResultsTest;

const QString parameterName = QStringLiteral("Parameter");

/// A sweep, a parameter and two runs in one tree; nothing is referred to yet.
class Sweep : public testing::Test
{
protected:
    PropertyObject top{QStringLiteral("top")};
    ParameterizedResultData* sweep = addSweep(top, QStringLiteral("sweep"));
    Variable* parameter = addData(top, QStringLiteral("T"), {10, 20});
    ResultData* first = addRun(top, QStringLiteral("first"));
    ResultData* second = addRun(top, QStringLiteral("second"));

    /// The parameter and both runs.
    void fill()
    {
        ASSERT_EQ(sweep->SetParameterRef(parameter), ER_SUCCESS);
        ASSERT_EQ(sweep->AddResultDataRef(first), ER_SUCCESS);
        ASSERT_EQ(sweep->AddResultDataRef(second), ER_SUCCESS);
    }
};

TEST(FreshSweep, IsAnEmptyFolderOfData)
{
    const ParameterizedResultData sweep;
    EXPECT_EQ(sweep.GetName(), QString());
    EXPECT_EQ(sweep.GetPropertyCount(), 0);
    EXPECT_EQ(sweep.GetTypeFlags(), 1U);
    EXPECT_EQ(sweep.PropertyObjType(), QStringLiteral("ParameterizedResultData"));
    EXPECT_EQ(&sweep.PropertyObjType(), &ParameterizedResultData::StaticType());
    EXPECT_EQ(ParameterizedResultData(QStringLiteral("s")).GetName(), QStringLiteral("s"));
    EXPECT_EQ(ParameterizedResultData::ParameterVar, parameterName);
}

TEST(SweepType, IsMadeByTheFactory)
{
    const std::unique_ptr<PropertyObject> made(
        PropertyObjectFactory::Instance().Create(QStringLiteral("ParameterizedResultData")));
    ASSERT_NE(made, nullptr);
    EXPECT_TRUE(isExactly<ParameterizedResultData>(*made));
    EXPECT_EQ(made->GetPropertyCount(), 0);
}

// --- the parameter

TEST_F(Sweep, RefersToItsParameterByAPlainReference)
{
    EXPECT_EQ(sweep->SetParameterRef(parameter), ER_SUCCESS);
    EXPECT_EQ(childNames(*sweep), QStringList{parameterName});
    EXPECT_TRUE(isExactly<PropertyReference>(*sweep->GetPropertyPtr(parameterName)));
    EXPECT_EQ(targetOf(*sweep, parameterName), parameter);
    EXPECT_TRUE(sweep->GetPropertyPtr(parameterName)->IsSerializable());
}

TEST_F(Sweep, RefersToTheLastParameterOnly)
{
    const Variable* const other = addData(top, QStringLiteral("U"), {1});
    ASSERT_EQ(sweep->SetParameterRef(parameter), ER_SUCCESS);
    EXPECT_EQ(sweep->SetParameterRef(other), ER_SUCCESS);
    EXPECT_EQ(sweep->GetPropertyCount(), 1);
    EXPECT_EQ(targetOf(*sweep, parameterName), other);
}

TEST_F(Sweep, TakesTheSameParameterAgain)
{
    ASSERT_EQ(sweep->SetParameterRef(parameter), ER_SUCCESS);
    EXPECT_EQ(sweep->SetParameterRef(parameter), ER_SUCCESS);
    EXPECT_EQ(targetOf(*sweep, parameterName), parameter);
}

TEST_F(Sweep, HasNoParameterAfterANullOne)
{
    ASSERT_EQ(sweep->SetParameterRef(parameter), ER_SUCCESS);
    EXPECT_EQ(sweep->SetParameterRef(nullptr), ER_INVALID_ARGUMENT);
    EXPECT_EQ(sweep->GetPropertyCount(), 0);
}

TEST_F(Sweep, HasNoParameterAfterOneThatItCannotReach)
{
    ASSERT_EQ(sweep->SetParameterRef(parameter), ER_SUCCESS);
    const Variable elsewhere(QStringLiteral("U"), BVariant(1.0));
    EXPECT_EQ(sweep->SetParameterRef(&elsewhere), ER_INVALID_ARGUMENT);
    EXPECT_EQ(sweep->GetPropertyCount(), 0);
}

TEST_F(Sweep, DestroysAParameterThatStandsInIt)
{
    const PropertyHandle own(addData(*sweep, parameterName, {1, 2}));
    EXPECT_EQ(sweep->SetParameterRef(parameter), ER_SUCCESS);
    EXPECT_TRUE(own.IsExpired());
    EXPECT_EQ(targetOf(*sweep, parameterName), parameter);
}

TEST_F(Sweep, HasNoParameterAfterTheOneThatStandsInItWasGiven)
{
    const Variable* const own = addData(*sweep, parameterName, {1, 2});
    EXPECT_EQ(sweep->SetParameterRef(own), ER_INVALID_ARGUMENT); // it is destroyed first
    EXPECT_EQ(sweep->GetPropertyCount(), 0);
}

TEST_F(Sweep, MayReferToAParameterThatStandsInItUnderAnotherName)
{
    const Variable* const own = addData(*sweep, QStringLiteral("T"), {1, 2});
    EXPECT_EQ(sweep->SetParameterRef(own), ER_SUCCESS);
    EXPECT_EQ(targetOf(*sweep, parameterName), own);
}

// --- the members

TEST_F(Sweep, NumbersItsMembersInTheOrderOfTheirAddition)
{
    EXPECT_EQ(sweep->AddResultDataRef(second), ER_SUCCESS);
    EXPECT_EQ(sweep->AddResultDataRef(first), ER_SUCCESS);
    EXPECT_EQ(childNames(*sweep), (QStringList{"0", "1"}));
    EXPECT_EQ(targetOf(*sweep, QStringLiteral("0")), second);
    EXPECT_EQ(targetOf(*sweep, QStringLiteral("1")), first);
    EXPECT_TRUE(isExactly<PropertyReference>(*sweep->GetPropertyPtr(QStringLiteral("0"))));
    EXPECT_TRUE(sweep->GetPropertyPtr(QStringLiteral("0"))->IsSerializable());
}

TEST_F(Sweep, NamesTheThirdMemberTwo)
{
    fill();
    EXPECT_EQ(sweep->AddResultDataRef(first), ER_SUCCESS); // once more
    EXPECT_EQ(targetOf(*sweep, QStringLiteral("2")), first);
    EXPECT_EQ(sweep->GetPropertyCount(), 4);
}

TEST_F(Sweep, CountsOnFromTheLargestNumberNotFromTheLastName)
{
    addReference(*sweep, QStringLiteral("9"), *first);
    addReference(*sweep, QStringLiteral("10"), *first);
    EXPECT_EQ(sweep->AddResultDataRef(second), ER_SUCCESS);
    EXPECT_EQ(targetOf(*sweep, QStringLiteral("11")), second);
}

TEST_F(Sweep, CountsOnFromANumberedChildOfAnyKind)
{
    sweep->SetProperty(QStringLiteral("7"), 1);
    EXPECT_EQ(sweep->AddResultDataRef(first), ER_SUCCESS);
    EXPECT_EQ(targetOf(*sweep, QStringLiteral("8")), first);
}

TEST_F(Sweep, GivesAGapNotOutAgain)
{
    fill();
    sweep->DeleteProperty(QStringLiteral("0"));
    EXPECT_EQ(sweep->AddResultDataRef(first), ER_SUCCESS);
    EXPECT_EQ(childNames(*sweep), (QStringList{"1", "2", "Parameter"}));
}

TEST_F(Sweep, HasNoNumberPastTheLargest)
{
    const QString largest = QStringLiteral("9223372036854775807");
    addReference(*sweep, largest, *first);
    EXPECT_EQ(sweep->AddResultDataRef(second), ER_FAILED);
    EXPECT_EQ(childNames(*sweep), QStringList{largest});
}

TEST_F(Sweep, RefusesANullMember)
{
    EXPECT_EQ(sweep->AddResultDataRef(nullptr), ER_INVALID_ARGUMENT);
    EXPECT_EQ(sweep->GetPropertyCount(), 0);
}

TEST_F(Sweep, RefusesAMemberOfATreeWithoutAFile)
{
    fill();
    const QStringList before = childNames(*sweep);
    PropertyObject other;
    EXPECT_EQ(sweep->AddResultDataRef(addRun(other, QStringLiteral("run"))), ER_INVALID_ARGUMENT);
    const ResultData alone;
    EXPECT_EQ(sweep->AddResultDataRef(&alone), ER_INVALID_ARGUMENT);
    EXPECT_EQ(childNames(*sweep), before);
}

TEST_F(Sweep, RefusesAMemberInAFileIfItStandsInNoneItself)
{
    DataFile::RootProperty other(nullptr);
    EXPECT_EQ(sweep->AddResultDataRef(addRun(other, QStringLiteral("run"))), ER_INVALID_ARGUMENT);
    EXPECT_EQ(sweep->GetPropertyCount(), 0);
}

TEST_F(Sweep, TakesAMemberInAnotherFile)
{
    DataFile::RootProperty mine(nullptr);
    DataFile::RootProperty other(nullptr);
    auto* const filed = addSweep(mine, QStringLiteral("sweep"));
    const ResultData* const run = addRun(other, QStringLiteral("run"));
    EXPECT_EQ(filed->AddResultDataRef(run), ER_SUCCESS);
    EXPECT_EQ(targetOf(*filed, QStringLiteral("0")), run);
    const Variable* const far = addData(other, QStringLiteral("T"), {1});
    EXPECT_EQ(filed->SetParameterRef(far), ER_SUCCESS);
    EXPECT_EQ(targetOf(*filed, parameterName), far);
}

TEST_F(Sweep, TakesAnotherSweepAndItself)
{
    const auto* other = addSweep(top, QStringLiteral("other"));
    EXPECT_EQ(sweep->AddResultDataRef(other), ER_SUCCESS);
    EXPECT_EQ(sweep->AddResultDataRef(sweep), ER_SUCCESS);
    EXPECT_EQ(targetOf(*sweep, QStringLiteral("0")), other);
    EXPECT_EQ(targetOf(*sweep, QStringLiteral("1")), sweep);
}

TEST_F(Sweep, ForgetsAMemberThatIsDestroyed)
{
    fill();
    top.DeleteProperty(QStringLiteral("first"));
    EXPECT_EQ(targetOf(*sweep, QStringLiteral("0")), nullptr);
    EXPECT_EQ(targetOf(*sweep, QStringLiteral("1")), second);
}

// --- names

TEST_F(Sweep, NamesTheVariablesOfItsFirstMemberOnly)
{
    fill();
    addData(*first, QStringLiteral("J"), {1});
    addData(*first, QStringLiteral("I"), {1});
    addData(*second, QStringLiteral("K"), {1});
    EXPECT_EQ(namesIn(*sweep), (QStringList{"I", "J"}));
    EXPECT_EQ(childNames(*sweep), (QStringList{"0", "1", "Parameter"})); // nothing is joined for that
}

TEST_F(Sweep, AppendsItsNamesToWhatTheListHolds)
{
    fill();
    addData(*first, QStringLiteral("I"), {1});
    QStringList names{QStringLiteral("before")};
    sweep->GetVariableNameList(&names);
    sweep->GetVariableNameList(&names);
    EXPECT_EQ(names, (QStringList{"before", "I", "I"}));
}

TEST_F(Sweep, NamesNothingIfItsFirstMemberIsEmpty)
{
    fill();
    addData(*second, QStringLiteral("K"), {1});
    EXPECT_EQ(namesIn(*sweep), noNames);
}

TEST_F(Sweep, NamesNothingWithoutAMember)
{
    EXPECT_EQ(namesIn(*sweep), noNames);
    ASSERT_EQ(sweep->SetParameterRef(parameter), ER_SUCCESS);
    EXPECT_EQ(namesIn(*sweep), noNames);
}

TEST_F(Sweep, FindsItsFirstMemberForNamesByTextNotByNumber)
{
    addData(*first, QStringLiteral("I"), {1});
    addData(*second, QStringLiteral("K"), {1});
    addReference(*sweep, QStringLiteral("9"), *first);
    addReference(*sweep, QStringLiteral("10"), *second);
    EXPECT_EQ(namesIn(*sweep), QStringList{QStringLiteral("K")});
}

TEST_F(Sweep, AsksAFolderOfDataUnderAnyNameForNames)
{
    fill();
    addData(*first, QStringLiteral("I"), {1});
    addData(*addRun(*sweep, QStringLiteral("!own")), QStringLiteral("K"), {1}); // "!" stands before "0"
    EXPECT_EQ(namesIn(*sweep), QStringList{QStringLiteral("K")});
}

TEST_F(Sweep, AsksAReferenceUnderAnyNameForNames)
{
    fill();
    addData(*first, QStringLiteral("I"), {1});
    addData(*second, QStringLiteral("K"), {1});
    ASSERT_NE(addReference(*sweep, QStringLiteral("!other"), *second), nullptr);
    EXPECT_EQ(namesIn(*sweep), QStringList{QStringLiteral("K")});
}

TEST_F(Sweep, PassesOverChildrenThatAreNoMembersForNames)
{
    addReference(*sweep, QStringLiteral("0"), *parameter);
    sweep->SetProperty(QStringLiteral("1"), 5);
    addData(*insertFolder(*sweep, QStringLiteral("2")), QStringLiteral("X"), {1});
    const ResultData* const gone = addRun(top, QStringLiteral("gone"));
    addReference(*sweep, QStringLiteral("3"), *gone);
    top.DeleteProperty(QStringLiteral("gone"));
    addDelayedReference(*sweep, QStringLiteral("4"), parameter);
    addData(*first, QStringLiteral("I"), {1});
    addReference(*sweep, QStringLiteral("5"), *first);
    EXPECT_EQ(namesIn(*sweep), QStringList{QStringLiteral("I")});
}

TEST_F(Sweep, AsksAHostsFolderOfDataByItsVirtualOperation)
{
    auto* const host = insert(top, std::make_unique<HostData>(QStringLiteral("host")));
    host->listNames = [](QStringList* names) { names->append(QStringLiteral("made")); };
    ASSERT_EQ(sweep->AddResultDataRef(host), ER_SUCCESS);
    EXPECT_EQ(namesIn(*sweep), QStringList{QStringLiteral("made")});
}

TEST_F(Sweep, NamesWhatASweepAsItsFirstMemberNames)
{
    auto* const inner = addSweep(top, QStringLiteral("inner"));
    ASSERT_EQ(inner->AddResultDataRef(first), ER_SUCCESS);
    ASSERT_EQ(sweep->AddResultDataRef(inner), ER_SUCCESS);
    addData(*first, QStringLiteral("I"), {1});
    EXPECT_EQ(namesIn(*sweep), QStringList{QStringLiteral("I")});
}

// --- finding and listing

TEST_F(Sweep, FindsAVariableThatItsFirstMemberHas)
{
    fill();
    addData(*first, QStringLiteral("I"), {1, 2});
    addData(*second, QStringLiteral("I"), {3});
    Variable* const found = sweep->FindResultVar(QStringLiteral("I"));
    ASSERT_NE(found, nullptr);
    EXPECT_EQ(dataOf(found), (Doubles{1, 2, 3}));
    EXPECT_EQ(sweep->GetPropertyPtr(QStringLiteral("I")), found);
    EXPECT_EQ(sweep->FindResultVar(QStringLiteral("I")), found);
    EXPECT_EQ(sweep->FindOrCreateResultVar(QStringLiteral("I")), found);
}

TEST_F(Sweep, MakesTheVariableAlsoForAConstantCaller)
{
    fill();
    addData(*first, QStringLiteral("I"), {1, 2});
    const Variable* const found = qAsConst(*sweep).FindResultVar(QStringLiteral("I"));
    ASSERT_NE(found, nullptr);
    EXPECT_EQ(sweep->GetPropertyPtr(QStringLiteral("I")), found);
    EXPECT_EQ(dataOf(found), (Doubles{1, 2}));
}

TEST_F(Sweep, IsSearchedThroughItsBase)
{
    fill();
    addData(*first, QStringLiteral("I"), {1, 2});
    ResultData& base = *sweep;
    EXPECT_EQ(dataOf(base.FindResultVar(QStringLiteral("I"))), (Doubles{1, 2}));
}

TEST_F(Sweep, FindsNothingUnderANameInOtherCase)
{
    fill();
    addData(*first, QStringLiteral("I"), {1, 2});
    EXPECT_EQ(sweep->FindResultVar(QStringLiteral("i")), nullptr);
    EXPECT_EQ(qAsConst(*sweep).FindResultVar(QStringLiteral("i")), nullptr);
    EXPECT_EQ(childNames(*sweep), (QStringList{"0", "1", "Parameter"}));
}

TEST_F(Sweep, FindsNothingThatOnlyALaterMemberHas)
{
    fill();
    addData(*second, QStringLiteral("K"), {1});
    EXPECT_EQ(sweep->FindResultVar(QStringLiteral("K")), nullptr);
    EXPECT_FALSE(sweep->HasProperty(QStringLiteral("K")));
    EXPECT_EQ(dataOf(sweep->FindOrCreateResultVar(QStringLiteral("K"))), Doubles{1});
}

TEST_F(Sweep, FindsNoChildOfItsOwnThatNoMemberNames)
{
    fill();
    addData(*sweep, QStringLiteral("own"), {1});
    EXPECT_EQ(sweep->FindResultVar(QStringLiteral("own")), nullptr);
    EXPECT_EQ(dataOf(sweep->FindOrCreateResultVar(QStringLiteral("own"))), Doubles{1});
}

/// A host's sweep that names its variables itself.
class HostSweep : public ParameterizedResultData
{
public:
    using ParameterizedResultData::ParameterizedResultData;

    void GetVariableNameList(QStringList* list) const override { list->append(QStringLiteral("K")); }
};

TEST_F(Sweep, IsAskedForNamesByAHostsOperation)
{
    auto* const host = insert(top, std::make_unique<HostSweep>(QStringLiteral("host")));
    addData(*first, QStringLiteral("I"), {1});
    addData(*second, QStringLiteral("K"), {2});
    ASSERT_EQ(host->SetParameterRef(parameter), ER_SUCCESS);
    ASSERT_EQ(host->AddResultDataRef(first), ER_SUCCESS);
    ASSERT_EQ(host->AddResultDataRef(second), ER_SUCCESS);
    EXPECT_EQ(host->FindResultVar(QStringLiteral("I")), nullptr);
    EXPECT_EQ(dataOf(host->FindResultVar(QStringLiteral("K"))), Doubles{2});
    QList<AbstractProperty*> list;
    host->GetVariableList(&list);
    EXPECT_EQ(list, QList<AbstractProperty*>{host->GetPropertyPtr(QStringLiteral("K"))});
}

TEST_F(Sweep, JoinsEveryVariableThatItLists)
{
    fill();
    addData(*first, QStringLiteral("J"), {1});
    addData(*first, QStringLiteral("I"), {2});
    addData(*second, QStringLiteral("I"), {3});
    PropertyObject elsewhere;
    QList<AbstractProperty*> list{&elsewhere};
    sweep->GetVariableList(&list);
    ASSERT_EQ(list.size(), 3);
    EXPECT_EQ(list.at(0), &elsewhere);
    EXPECT_EQ(list.at(1), sweep->GetPropertyPtr(QStringLiteral("I")));
    EXPECT_EQ(list.at(2), sweep->GetPropertyPtr(QStringLiteral("J")));
    EXPECT_EQ(dataOf(static_cast<Variable*>(list.at(1))), (Doubles{2, 3}));
    EXPECT_EQ(dataOf(static_cast<Variable*>(list.at(2))), Doubles{1});
}

TEST_F(Sweep, ListsAVariableOnceForEachTimeThatItIsNamed)
{
    auto* const host = insert(top, std::make_unique<HostData>(QStringLiteral("host")));
    host->listNames = [](QStringList* names) { *names << QStringLiteral("I") << QStringLiteral("I"); };
    ASSERT_EQ(sweep->AddResultDataRef(host), ER_SUCCESS);
    QList<AbstractProperty*> list;
    sweep->GetVariableList(&list);
    AbstractProperty* const joined = sweep->GetPropertyPtr(QStringLiteral("I"));
    ASSERT_NE(joined, nullptr);
    EXPECT_EQ(list, (QList<AbstractProperty*>{joined, joined}));
}

TEST_F(Sweep, ListsNoVariableThatTheNextOneHasTakenThePlaceOf)
{
    auto* const host = insert(top, std::make_unique<HostData>(QStringLiteral("host")));
    host->listNames = [](QStringList* names) { *names << QStringLiteral("I_Indeps") << QStringLiteral("I"); };
    ASSERT_EQ(sweep->AddResultDataRef(host), ER_SUCCESS);
    QList<AbstractProperty*> list;
    sweep->GetVariableList(&list); // the independents of I stand where the first was
    EXPECT_EQ(list, QList<AbstractProperty*>{sweep->GetPropertyPtr(QStringLiteral("I"))});
}

TEST_F(Sweep, ListsIntoNothingWithoutHarm)
{
    fill();
    addData(*first, QStringLiteral("I"), {1});
    sweep->GetVariableNameList(nullptr);
    sweep->GetVariableList(nullptr);
    EXPECT_EQ(namesIn(*sweep), QStringList{QStringLiteral("I")});
}

TEST_F(Sweep, ListsNothingWithoutMembers)
{
    QList<AbstractProperty*> list;
    sweep->GetVariableList(&list);
    EXPECT_TRUE(list.isEmpty());
    EXPECT_EQ(sweep->GetPropertyCount(), 0);
}

// --- copies

TEST_F(Sweep, HasAClonedSweepBesideItThatJoinsTheSame)
{
    fill();
    addData(*first, QStringLiteral("I"), {1});
    addData(*second, QStringLiteral("I"), {2});
    sweep->SetPropertyFlags(PropertyFlagHidden);
    std::unique_ptr<AbstractProperty> cloned(sweep->Clone());
    ASSERT_TRUE(isExactly<ParameterizedResultData>(*cloned));
    EXPECT_EQ(cloned->GetName(), QStringLiteral("sweep"));
    EXPECT_EQ(cloned->GetPropertyFlags(), PropertyFlagHidden);
    ASSERT_EQ(cloned->SetName(QStringLiteral("clone")), ER_SUCCESS);
    auto* const clone = static_cast<ParameterizedResultData*>(insert(top, std::move(cloned)));
    EXPECT_EQ(dataOf(clone->FindResultVar(QStringLiteral("I"))), (Doubles{1, 2}));
    EXPECT_FALSE(sweep->HasProperty(QStringLiteral("I")));
}

TEST_F(Sweep, HasAClonedFolderWhoseSweepJoinsTheClonedMembers)
{
    fill();
    addData(*first, QStringLiteral("I"), {1});
    addData(*second, QStringLiteral("I"), {2});
    PropertyObject copy(top);
    auto* const inside = copy.GetPtr<ParameterizedResultData>(QStringLiteral("sweep"));
    top.DeleteProperties();
    EXPECT_EQ(dataOf(inside->FindResultVar(QStringLiteral("I"))), (Doubles{1, 2}));
}

TEST_F(Sweep, GivesACopyItsNameAndChildrenButNotItsFlags)
{
    fill();
    sweep->SetPropertyFlags(PropertyFlagHidden);
    const ParameterizedResultData copy(*sweep);
    EXPECT_EQ(copy.GetName(), QStringLiteral("sweep"));
    EXPECT_EQ(copy.GetPropertyFlags(), PropertyFlagSerializable);
    EXPECT_EQ(childNames(copy), (QStringList{"0", "1", "Parameter"}));
}

TEST_F(Sweep, ReplacesTheContentOfWhatItIsAssignedTo)
{
    fill();
    auto* const other = addSweep(top, QStringLiteral("other"));
    other->SetProperty(QStringLiteral("old"), 1);
    *other = *sweep;
    EXPECT_EQ(other->GetName(), QStringLiteral("other"));
    EXPECT_EQ(childNames(*other), (QStringList{"0", "1", "Parameter"}));
    EXPECT_EQ(targetOf(*other, QStringLiteral("1")), second);
}

TEST_F(Sweep, KeepsItsJoinedVariablesOutOfFilesThroughEveryCopy)
{
    fill();
    addData(*first, QStringLiteral("I"), {1});
    sweep->FindOrCreateResultVar(QStringLiteral("I"));
    const std::unique_ptr<AbstractProperty> cloned(sweep->Clone());
    const ParameterizedResultData copy(*sweep);
    ParameterizedResultData assigned;
    assigned = *sweep;
    for (const auto* each :
         {static_cast<const PropertyObject*>(cloned.get()), static_cast<const PropertyObject*>(&copy),
          static_cast<const PropertyObject*>(&assigned)}) {
        for (const char* name : {"I", "I_Indeps"}) {
            ASSERT_TRUE(each->HasProperty(QString::fromLatin1(name))) << name;
            EXPECT_FALSE(each->GetPropertyConstPtr(QString::fromLatin1(name))->IsSerializable()) << name;
        }
    }
}

TEST_F(Sweep, IsFoundByItsClassInAFolder)
{
    EXPECT_EQ(top.GetPtr<ParameterizedResultData>(QStringLiteral("sweep")), sweep);
    EXPECT_EQ(top.GetPtr<ResultData>(QStringLiteral("sweep")), sweep);
    EXPECT_EQ(top.GetPtr<ParameterizedResultData>(QStringLiteral("first")), nullptr);
}

} // namespace
} // namespace Orrery
