// The folder of variables of one run.
#include "results/ResultData.h"

#include "foundations/property/PropertyObjectFactory.h"
#include "tests/foundations/storage/DataFiles.h"
#include "tests/results/ResultsTestSupport.h"
#include "variables/ExplicitDataVar.h"
#include "variables/FunctionVar.h"
#include "variables/RangeVar.h"

namespace Orrery {
namespace {

using namespace ResultsTest;

TEST(FreshResultData, IsAnEmptyFolder)
{
    const ResultData data;
    EXPECT_EQ(data.GetName(), QString());
    EXPECT_EQ(data.GetPropertyCount(), 0);
    EXPECT_EQ(data.GetTypeFlags(), 1U);
    EXPECT_EQ(data.PropertyObjType(), QStringLiteral("ResultData"));
    EXPECT_EQ(&data.PropertyObjType(), &ResultData::StaticType());
    EXPECT_EQ(sizeof(ResultData), sizeof(PropertyObject)); // no state beside its children
    EXPECT_EQ(ResultData(QStringLiteral("run")).GetName(), QStringLiteral("run"));
}

TEST(ResultDataType, IsMadeByTheFactory)
{
    const std::unique_ptr<PropertyObject> made(
        PropertyObjectFactory::Instance().Create(QStringLiteral("ResultData")));
    ASSERT_NE(made, nullptr);
    EXPECT_TRUE(isExactly<ResultData>(*made));
    EXPECT_EQ(made->GetPropertyCount(), 0);
}

/// A run with two variables among other children.
class Run : public testing::Test
{
protected:
    Run()
    {
        run.SetProperty(QStringLiteral("value"), 5);
        insertFolder(run, QStringLiteral("folder"));
        addReference(run, QStringLiteral("Jref"), *j);
        addRun(run, QStringLiteral("nested"));
    }

    ResultData run{QStringLiteral("run")};
    Variable* j = addData(run, QStringLiteral("J"), {3, 4});
    Variable* i = addData(run, QStringLiteral("I"), {1, 2});
};

TEST_F(Run, FindsAVariableByItsExactName)
{
    EXPECT_EQ(run.FindResultVar(QStringLiteral("I")), i);
    EXPECT_EQ(qAsConst(run).FindResultVar(QStringLiteral("I")), i);
    EXPECT_EQ(run.FindResultVar(QStringLiteral("i")), nullptr);
    EXPECT_EQ(run.FindResultVar(QString()), nullptr);
}

TEST_F(Run, FindsNoChildThatIsNoVariable)
{
    for (const char* name : {"value", "folder", "nested", "absent"}) {
        EXPECT_EQ(run.FindResultVar(QString::fromLatin1(name)), nullptr) << name;
        EXPECT_EQ(qAsConst(run).FindResultVar(QString::fromLatin1(name)), nullptr) << name;
    }
}

TEST_F(Run, DoesNotReportAReferenceToAVariable)
{
    ASSERT_TRUE(run.HasProperty(QStringLiteral("Jref")));
    EXPECT_EQ(run.FindResultVar(QStringLiteral("Jref")), nullptr);
    EXPECT_EQ(namesIn(run), (QStringList{"I", "J"}));
}

TEST_F(Run, ListsItsVariablesInTheOrderOfNamesBehindWhatTheListHolds)
{
    PropertyObject elsewhere;
    QList<AbstractProperty*> list{&elsewhere};
    run.GetVariableList(&list);
    EXPECT_EQ(list, (QList<AbstractProperty*>{&elsewhere, i, j}));
}

TEST_F(Run, ListsItsNamesOnceMoreWithEachCall)
{
    QStringList names{QStringLiteral("first")};
    run.GetVariableNameList(&names);
    run.GetVariableNameList(&names);
    EXPECT_EQ(names, (QStringList{"first", "I", "J", "I", "J"}));
}

TEST_F(Run, ListsNumberedVariablesByText)
{
    ResultData numbered;
    for (const char* name : {"10", "9", "1"})
        insertVariable(numbered, QString::fromLatin1(name));
    EXPECT_EQ(namesIn(numbered), (QStringList{"1", "10", "9"}));
}

TEST_F(Run, ReportsEveryClassOfVariable)
{
    ResultData all;
    insert(all, std::make_unique<ExplicitDataVar>(QStringLiteral("a")));
    insert(all, std::make_unique<RangeVar>(QStringLiteral("b")));
    insert(all, std::make_unique<FunctionVar>(QStringLiteral("c")));
    insert(all, std::make_unique<ConcatVar>(QStringLiteral("d")));
    insert(all, std::make_unique<SweptVariable>(QStringLiteral("e")));
    EXPECT_EQ(namesIn(all), (QStringList{"a", "b", "c", "d", "e"}));
    EXPECT_TRUE(isExactly<SweptVariable>(*all.FindResultVar(QStringLiteral("e"))));
}

TEST(EmptyResultData, LeavesTheListsAsTheyWere)
{
    ResultData data;
    PropertyObject elsewhere;
    QList<AbstractProperty*> list{&elsewhere};
    QStringList names{QStringLiteral("first")};
    data.GetVariableList(&list);
    data.GetVariableNameList(&names);
    EXPECT_EQ(list, QList<AbstractProperty*>{&elsewhere});
    EXPECT_EQ(names, QStringList{QStringLiteral("first")});
}

TEST_F(Run, ListsIntoNothingWithoutHarm)
{
    run.GetVariableList(nullptr);
    run.GetVariableNameList(nullptr);
    EXPECT_EQ(namesIn(run), (QStringList{"I", "J"}));
}

// --- copies

TEST_F(Run, HasCopiesWithVariablesOfTheirOwn)
{
    run.SetPropertyFlags(PropertyFlagHidden);
    ResultData copy(run);
    EXPECT_EQ(copy.GetName(), QStringLiteral("run"));
    EXPECT_EQ(copy.GetPropertyFlags(), PropertyFlagSerializable);
    EXPECT_EQ(childNames(copy), childNames(run));
    EXPECT_NE(copy.FindResultVar(QStringLiteral("I")), i);
    EXPECT_EQ(dataOf(copy.FindResultVar(QStringLiteral("I"))), (Doubles{1, 2}));
}

TEST_F(Run, HasACloneOfItsClassWithItsNameAndFlags)
{
    run.SetPropertyFlags(PropertyFlagHidden);
    const std::unique_ptr<AbstractProperty> clone(run.Clone());
    ASSERT_TRUE(isExactly<ResultData>(*clone));
    EXPECT_EQ(clone->GetName(), QStringLiteral("run"));
    EXPECT_EQ(clone->GetPropertyFlags(), PropertyFlagHidden);
    EXPECT_EQ(childNames(static_cast<ResultData&>(*clone)), childNames(run));
}

TEST_F(Run, ReplacesTheContentOfWhatItIsAssignedTo)
{
    ResultData other(QStringLiteral("other"));
    addData(other, QStringLiteral("old"), {1});
    other = run;
    EXPECT_EQ(other.GetName(), QStringLiteral("other"));
    EXPECT_EQ(namesIn(other), (QStringList{"I", "J"}));
}

TEST_F(Run, ComesBackFromAFile)
{
    EXPECT_EQ(StorageTest::RoundTrip([](PropertyObject& root) {
                  auto* const saved = addRun(root, QStringLiteral("run"));
                  const Variable* v = addData(*saved, QStringLiteral("V"), {0, 1});
                  addData(*saved, QStringLiteral("I"), {1, 2})->AddIndepVariableRef(v);
              }),
              "");
}

TEST_F(Run, IsFoundByItsClassInAFolder)
{
    PropertyObject top;
    ResultData* const data = addRun(top, QStringLiteral("run"));
    insertFolder(top, QStringLiteral("folder"));
    EXPECT_EQ(top.GetPtr<ResultData>(QStringLiteral("run")), data);
    EXPECT_EQ(top.GetPtr<ResultData>(QStringLiteral("folder")), nullptr);
}

} // namespace
} // namespace Orrery
