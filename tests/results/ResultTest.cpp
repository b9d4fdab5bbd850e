// The top folder of one stored result.
#include "results/Result.h"

#include "foundations/property/PropertyObjectFactory.h"
#include "tests/foundations/storage/CompareTrees.h"
#include "tests/foundations/storage/DataFiles.h"
#include "tests/results/ResultsTestSupport.h"
#include "variables/RangeVar.h"

namespace Orrery {
namespace {

using namespace ResultsTest;
using StorageTest::CompareTrees;

const QString applicationName = QStringLiteral("AppID");
const QString setupName = QStringLiteral("Setup");
const QString templateName = QStringLiteral("DisplayTemplate");

// --- construction

TEST(FreshResult, IsOfAnUnknownApplicationAndSerializable)
{
    const Result result;
    EXPECT_EQ(result.GetName(), QString());
    EXPECT_EQ(childText(result, applicationName), QStringLiteral("Unknown"));
    EXPECT_EQ(childNames(result), QStringList{applicationName});
    EXPECT_TRUE(result.IsSerializable());
}

TEST(FreshResult, TakesItsNameAndItsApplication)
{
    const Result result(QStringLiteral("run"), QStringLiteral("solver"));
    EXPECT_EQ(result.GetName(), QStringLiteral("run"));
    EXPECT_EQ(childText(result, applicationName), QStringLiteral("solver"));
    EXPECT_TRUE(result.IsSerializable());
    EXPECT_EQ(result.GetPropertyFlags(), PropertyFlagSerializable);
}

TEST(FreshResult, KeepsAnEmptyApplicationAsItIs)
{
    const Result result(QStringLiteral("run"), QString());
    EXPECT_EQ(childText(result, applicationName), QString());
}

TEST(FreshResult, StoresItsApplicationAsOneText)
{
    Result result;
    const auto* leaf = result.GetPtr<SimpleProperty>(applicationName);
    ASSERT_NE(leaf, nullptr);
    EXPECT_EQ(TestSupport::ToTexts(leaf->GetValue()), std::vector<std::string>{"Unknown"});
    EXPECT_TRUE(leaf->GetValue().isScalar());
}

TEST(FreshResult, IsAPlainFolderByItsFlags)
{
    const Result result;
    EXPECT_EQ(result.GetTypeFlags(), 1U);
    EXPECT_EQ(result.PropertyObjType(), QStringLiteral("Result"));
    EXPECT_EQ(&result.PropertyObjType(), &Result::StaticType());
    EXPECT_EQ(sizeof(Result), sizeof(PropertyObject)); // no state beside its children
}

TEST(ResultNames, AreThoseOfTheChildren)
{
    EXPECT_EQ(Result::ApplicationID(), applicationName);
    EXPECT_EQ(Result::Setup(), setupName);
    EXPECT_EQ(Result::DefaultDisplayTemplate(), templateName);
}

TEST(ResultType, IsMadeByTheFactory)
{
    const std::unique_ptr<PropertyObject> made(
        PropertyObjectFactory::Instance().Create(QStringLiteral("Result")));
    ASSERT_NE(made, nullptr);
    EXPECT_TRUE(isExactly<Result>(*made));
    EXPECT_EQ(childText(*made, applicationName), QStringLiteral("Unknown"));
}

// --- copies

class FilledResult : public testing::Test
{
protected:
    FilledResult()
    {
        addData(*run, QStringLiteral("I"), {1, 2, 3});
        result.GetOrCreateSetupInfoFolder()->SetProperty(QStringLiteral("rate"), 5);
        result.SetDefaultDisplayTemplate(new HostTemplate(QStringLiteral("mine")));
        result.SetPropertyFlags(PropertyFlagHidden);
    }

    Result result{QStringLiteral("result"), QStringLiteral("solver")};
    ResultData* run = addRun(result, QStringLiteral("run"));
};

TEST_F(FilledResult, HasACloneWithItsNameFlagsAndContent)
{
    const std::unique_ptr<AbstractProperty> clone(result.Clone());
    ASSERT_TRUE(isExactly<Result>(*clone));
    EXPECT_EQ(clone->GetName(), QStringLiteral("result"));
    EXPECT_EQ(clone->GetPropertyFlags(), PropertyFlagHidden);
    EXPECT_EQ(CompareTrees(result, static_cast<Result&>(*clone)), "");
}

TEST_F(FilledResult, SharesNothingWithACopy)
{
    Result copy(result);
    addData(*copy.GetResultData(QStringLiteral("run")), QStringLiteral("new"), {1});
    EXPECT_FALSE(run->HasProperty(QStringLiteral("new")));
    EXPECT_NE(copy.GetDefaultDisplayTemplate(), result.GetDefaultDisplayTemplate());
    EXPECT_TRUE(isExactly<HostTemplate>(*copy.GetDefaultDisplayTemplate()));
}

TEST_F(FilledResult, GivesACopyItsNameAndChildrenButNotItsFlags)
{
    const Result copy(result);
    EXPECT_EQ(copy.GetName(), QStringLiteral("result"));
    EXPECT_EQ(childNames(copy), childNames(result));
    EXPECT_EQ(copy.GetPropertyFlags(), PropertyFlagSerializable);
}

TEST_F(FilledResult, ReplacesTheContentOfWhatItIsAssignedToAndLeavesItsName)
{
    Result other(QStringLiteral("other"), QStringLiteral("viewer"));
    other.SetProperty(QStringLiteral("old"), 1);
    other = result;
    EXPECT_EQ(other.GetName(), QStringLiteral("other"));
    EXPECT_EQ(childNames(other), childNames(result));
    EXPECT_EQ(childText(other, applicationName), QStringLiteral("solver"));
    EXPECT_EQ(other.GetPropertyFlags(), PropertyFlagSerializable);
}

TEST(ResultCopy, OfOneWithoutAnApplicationHasNoneEither)
{
    Result result;
    result.DeleteProperty(applicationName);
    EXPECT_EQ(Result(result).GetPropertyCount(), 0);
    const std::unique_ptr<AbstractProperty> clone(result.DoClone());
    EXPECT_EQ(static_cast<Result&>(*clone).GetPropertyCount(), 0);
}

// --- folders of data

TEST_F(FilledResult, FindsAFolderOfDataByItsName)
{
    EXPECT_EQ(result.GetResultData(QStringLiteral("run")), run);
    EXPECT_EQ(qAsConst(result).GetResultData(QStringLiteral("run")), run);
}

TEST_F(FilledResult, FindsNoFolderOfDataInAnotherKindOfChildOrNone)
{
    addReference(result, QStringLiteral("reference"), *run);
    for (const auto& name : {applicationName, setupName, templateName, QStringLiteral("reference"),
                             QStringLiteral("absent"), QStringLiteral("RUN"), QString()}) {
        EXPECT_EQ(result.GetResultData(name), nullptr) << name.toStdString();
        EXPECT_EQ(qAsConst(result).GetResultData(name), nullptr) << name.toStdString();
    }
}

TEST_F(FilledResult, ListsSubclassesOfFoldersOfDataInTheOrderOfNames)
{
    ResultData* const sweep = addSweep(result, QStringLiteral("9"));
    ResultData* const host = insert(result, std::make_unique<HostData>(QStringLiteral("10")));
    EXPECT_EQ(result.GetResultDataList(), (QList<ResultData*>{host, sweep, run}));
    EXPECT_EQ(result.GetResultData(QStringLiteral("9")), sweep);
}

TEST_F(FilledResult, ListsNothingThatIsNoFolderOfData)
{
    insertVariable(result, QStringLiteral("variable"));
    insertFolder(result, QStringLiteral("folder"));
    EXPECT_EQ(result.GetResultDataList(), QList<ResultData*>{run});
}

TEST_F(FilledResult, DoesNotListAReferenceToAFolderOfData)
{
    ASSERT_NE(addReference(result, QStringLiteral("a"), *run), nullptr);
    EXPECT_EQ(result.GetResultDataList(), QList<ResultData*>{run});
}

TEST_F(FilledResult, AppendsToWhatTheListHolds)
{
    ResultData elsewhere;
    QList<ResultData*> list{&elsewhere};
    EXPECT_EQ(result.GetResultDataList(&list), ER_SUCCESS);
    EXPECT_EQ(list, (QList<ResultData*>{&elsewhere, run}));

    QList<const ResultData*> constList{&elsewhere};
    EXPECT_EQ(qAsConst(result).GetResultDataList(&constList), ER_SUCCESS);
    EXPECT_EQ(constList, (QList<const ResultData*>{&elsewhere, run}));
}

TEST_F(FilledResult, RefusesANullList)
{
    EXPECT_EQ(result.GetResultDataList(static_cast<QList<ResultData*>*>(nullptr)), ER_INVALID_ARGUMENT);
    EXPECT_EQ(qAsConst(result).GetResultDataList(static_cast<QList<const ResultData*>*>(nullptr)),
              ER_INVALID_ARGUMENT);
}

TEST(EmptyResult, ListsNothingAndSucceeds)
{
    Result result;
    QList<ResultData*> list;
    EXPECT_EQ(result.GetResultDataList(&list), ER_SUCCESS);
    EXPECT_TRUE(list.isEmpty());
    EXPECT_TRUE(result.GetResultDataList().isEmpty());
}

// --- setup

TEST(ResultSetup, IsMadeOnceOnDemand)
{
    Result result;
    EXPECT_FALSE(result.HasProperty(setupName));
    PropertyObject* const folder = result.GetOrCreateSetupInfoFolder();
    ASSERT_NE(folder, nullptr);
    EXPECT_TRUE(isExactly<PropertyObject>(*folder));
    EXPECT_EQ(folder->GetName(), setupName);
    EXPECT_EQ(folder->GetParent(), &result);
    EXPECT_EQ(result.GetOrCreateSetupInfoFolder(), folder);
}

TEST(ResultSetup, CountsAsInformationOnlyWithSomethingInIt)
{
    Result result;
    EXPECT_FALSE(result.HasSetupInformation());
    PropertyObject* const folder = result.GetOrCreateSetupInfoFolder();
    EXPECT_FALSE(result.HasSetupInformation());
    folder->SetProperty(QStringLiteral("rate"), 5);
    EXPECT_TRUE(result.HasSetupInformation());
    folder->DeleteProperty(QStringLiteral("rate"));
    EXPECT_FALSE(result.HasSetupInformation());
}

TEST(ResultSetup, IsNotMadeOverAValueOfThatName)
{
    Result result;
    result.SetProperty(setupName, 5);
    AbstractProperty* const value = result.GetPropertyPtr(setupName);
    EXPECT_EQ(result.GetOrCreateSetupInfoFolder(), nullptr);
    EXPECT_EQ(result.GetPropertyPtr(setupName), value);
    EXPECT_FALSE(result.HasSetupInformation());
}

TEST(ResultSetup, IsNotFoundThroughAReference)
{
    Result result;
    PropertyObject* const elsewhere = insertFolder(result, QStringLiteral("elsewhere"));
    elsewhere->SetProperty(QStringLiteral("rate"), 5);
    AbstractProperty* const reference = addReference(result, setupName, *elsewhere);
    EXPECT_EQ(result.GetOrCreateSetupInfoFolder(), nullptr);
    EXPECT_EQ(result.GetPropertyPtr(setupName), reference);
    EXPECT_FALSE(result.HasSetupInformation());
}

TEST(ResultSetup, MayBeAnyKindOfFolder)
{
    Result result;
    Variable* const variable = insertVariable(result, setupName);
    EXPECT_EQ(result.GetOrCreateSetupInfoFolder(), variable);
    EXPECT_TRUE(result.HasSetupInformation()); // the children that every Variable has
}

TEST(ResultSetup, IsNotMadeWhereTheTreeIsTooDeep)
{
    PropertyObject top;
    auto* const result = insert(*addNest(top, PropertyObject::MaxDepth - 1), std::make_unique<Result>());
    ASSERT_NE(result, nullptr);
    EXPECT_EQ(result->GetOrCreateSetupInfoFolder(), nullptr);
    EXPECT_FALSE(result->HasProperty(setupName));
    EXPECT_EQ(childText(*result, applicationName), QStringLiteral("Unknown"));
}

// --- display template

TEST(ResultTemplate, IsAbsentAtFirst)
{
    EXPECT_EQ(Result().GetDefaultDisplayTemplate(), nullptr);
}

TEST(ResultTemplate, IsRenamedAndTakenOver)
{
    Result result;
    auto* const given = new HostTemplate(QStringLiteral("mine"));
    EXPECT_EQ(result.SetDefaultDisplayTemplate(given), ER_SUCCESS);
    EXPECT_EQ(given->GetName(), templateName);
    EXPECT_EQ(given->GetParent(), &result);
    EXPECT_EQ(result.GetDefaultDisplayTemplate(), given);
}

TEST(ResultTemplate, ReplacesAndDestroysTheFormerOne)
{
    Result result;
    auto* const first = new HostTemplate(QStringLiteral("first"));
    ASSERT_EQ(result.SetDefaultDisplayTemplate(first), ER_SUCCESS);
    const PropertyHandle life(first);
    auto* const second = new HostTemplate(QStringLiteral("second"));
    EXPECT_EQ(result.SetDefaultDisplayTemplate(second), ER_SUCCESS);
    EXPECT_TRUE(life.IsExpired());
    EXPECT_EQ(result.GetDefaultDisplayTemplate(), second);
    EXPECT_EQ(childNames(result), (QStringList{applicationName, templateName}));
}

TEST(ResultTemplate, ReplacesWhateverHasItsName)
{
    Result result;
    result.SetProperty(templateName, 5);
    EXPECT_EQ(result.GetDefaultDisplayTemplate(), nullptr);
    auto* const given = new HostTemplate;
    EXPECT_EQ(result.SetDefaultDisplayTemplate(given), ER_SUCCESS);
    EXPECT_EQ(result.GetDefaultDisplayTemplate(), given);
}

TEST(ResultTemplate, MayBeTheOneThatIsThereAlready)
{
    Result result;
    auto* const given = new HostTemplate;
    ASSERT_EQ(result.SetDefaultDisplayTemplate(given), ER_SUCCESS);
    EXPECT_EQ(result.SetDefaultDisplayTemplate(given), ER_SUCCESS);
    EXPECT_EQ(result.GetDefaultDisplayTemplate(), given);
}

TEST(ResultTemplate, MayStandInTheResultUnderAnotherName)
{
    Result result;
    auto* const former = new HostTemplate;
    ASSERT_EQ(result.SetDefaultDisplayTemplate(former), ER_SUCCESS);
    const PropertyHandle life(former);
    auto* const given = insert(result, std::make_unique<HostTemplate>(QStringLiteral("mine")));
    EXPECT_EQ(result.SetDefaultDisplayTemplate(given), ER_SUCCESS);
    EXPECT_EQ(result.GetDefaultDisplayTemplate(), given);
    EXPECT_TRUE(life.IsExpired());
    EXPECT_EQ(childNames(result), (QStringList{applicationName, templateName}));
}

TEST(ResultTemplate, IsNotAPlainFolderOfThatName)
{
    Result result;
    insertFolder(result, templateName);
    EXPECT_EQ(result.GetDefaultDisplayTemplate(), nullptr);
}

TEST(ResultTemplate, IsNotAReferenceToOne)
{
    Result result;
    const auto* given = insert(result, std::make_unique<HostTemplate>(QStringLiteral("elsewhere")));
    ASSERT_NE(addReference(result, templateName, *given), nullptr);
    EXPECT_EQ(result.GetDefaultDisplayTemplate(), nullptr);
}

TEST(ResultTemplate, MustBeGiven)
{
    Result result;
    EXPECT_EQ(result.SetDefaultDisplayTemplate(nullptr), ER_INVALID_ARGUMENT);
    EXPECT_FALSE(result.HasProperty(templateName));
}

TEST(ResultTemplate, StaysWhereItIsWithItsNewNameIfItBelongsToAnotherFolder)
{
    Result result;
    auto* const former = new HostTemplate;
    ASSERT_EQ(result.SetDefaultDisplayTemplate(former), ER_SUCCESS);
    PropertyObject elsewhere;
    auto* const given = insert(elsewhere, std::make_unique<HostTemplate>(QStringLiteral("mine")));
    EXPECT_EQ(result.SetDefaultDisplayTemplate(given), ER_INVALID_ARGUMENT);
    EXPECT_EQ(given->GetName(), templateName);
    EXPECT_EQ(given->GetParent(), &elsewhere);
    EXPECT_EQ(result.GetDefaultDisplayTemplate(), former);
}

TEST(ResultTemplate, StaysTheCallersWithItsNewNameWhereTheTreeIsTooDeep)
{
    Result result;
    HostTemplate given(QStringLiteral("mine"));
    addNest(given, PropertyObject::MaxDepth);
    EXPECT_EQ(result.SetDefaultDisplayTemplate(&given), ER_FAILED);
    EXPECT_EQ(given.GetName(), templateName);
    EXPECT_EQ(given.GetParent(), nullptr);
    EXPECT_FALSE(result.HasProperty(templateName));
}

TEST(ResultTemplate, MayDestroyTheResultWhenItIsRenamed)
{
    auto* const result = new Result;
    const PropertyHandle life(result);
    HostTemplate given(QStringLiteral("mine"));
    given.onPath = [&] { delete life.Get(); };
    EXPECT_LT(result->SetDefaultDisplayTemplate(&given), 0);
    EXPECT_TRUE(life.IsExpired());
    EXPECT_EQ(given.GetName(), templateName);
    EXPECT_EQ(given.GetParent(), nullptr);
}

TEST(ResultTemplate, MayDestroyItselfWhenItIsRenamed)
{
    Result result;
    auto* const given = new HostTemplate(QStringLiteral("mine"));
    const PropertyHandle life(given);
    given->onPath = [&] { delete life.Get(); };
    EXPECT_LT(result.SetDefaultDisplayTemplate(given), 0);
    EXPECT_TRUE(life.IsExpired());
    EXPECT_FALSE(result.HasProperty(templateName));
}

TEST(ResultTemplate, MayDestroyTheResultWhenItIsInserted)
{
    auto* const result = new Result;
    const PropertyHandle life(result);
    auto* const given = new HostTemplate(templateName); // not renamed, hence told once only
    const PropertyHandle templateLife(given);
    given->onPath = [&] { delete life.Get(); };
    result->SetDefaultDisplayTemplate(given);
    EXPECT_TRUE(life.IsExpired());
    EXPECT_TRUE(templateLife.IsExpired()); // it was the result's by then
}

// --- files

void buildResult(PropertyObject& root)
{
    auto result = std::make_unique<Result>(QStringLiteral("result"), QStringLiteral("solver"));
    auto* const run = addRun(*result, QStringLiteral("run"));
    addData(*run, QStringLiteral("I"), {1, 2, 3});
    result->GetOrCreateSetupInfoFolder()->SetProperty(QStringLiteral("rate"), 5);
    auto given = std::make_unique<HostTemplate>();
    given->SetProperty(QStringLiteral("colour"), QStringLiteral("green"));
    ASSERT_EQ(result->SetDefaultDisplayTemplate(given.release()), ER_SUCCESS);
    ASSERT_NE(insert(root, std::move(result)), nullptr);
}

TEST(SavedResult, ComesBackWhole)
{
    EXPECT_EQ(StorageTest::RoundTrip(&buildResult), "");
}

TEST(SavedResult, ComesBackWithATemplateOfTheHostsClass)
{
    // Once in a process; by whatever test has come first.
    PropertyObjectFactory::Instance().RegisterType(HostTemplate::StaticType(),
                                                   []() -> PropertyObject* { return new HostTemplate; });
    const StorageTest::ScratchFolder folder;
    const QString path = folder.Path(QStringLiteral("result.h5"));
    StorageTest::SaveNew(path, &buildResult).reset();

    const std::shared_ptr<DataFile> reload = StorageTest::Open(path);
    auto* const result = reload->GetRoot()->GetPtr<Result>(QStringLiteral("result"));
    ASSERT_NE(result, nullptr);
    const Metadata* const shown = result->GetDefaultDisplayTemplate();
    ASSERT_NE(shown, nullptr);
    EXPECT_TRUE(isExactly<HostTemplate>(*shown));
    EXPECT_EQ(childText(*shown, QStringLiteral("colour")), QStringLiteral("green"));
    EXPECT_TRUE(result->HasSetupInformation());
    ASSERT_EQ(result->GetResultDataList().size(), 1);
    EXPECT_EQ(dataOf(result->GetResultDataList().first()->FindResultVar(QStringLiteral("I"))),
              (Doubles{1, 2, 3}));
}

TEST(SavedResult, WithoutAnApplicationIsOfAnUnknownOneWhenItComesBack)
{
    const StorageTest::ScratchFolder folder;
    const QString path = folder.Path(QStringLiteral("result.h5"));
    StorageTest::SaveNew(path, [](PropertyObject& root) {
        insert(root, std::make_unique<Result>(QStringLiteral("result"), QString()))
            ->DeleteProperty(applicationName);
    }).reset();
    const std::shared_ptr<DataFile> reload = StorageTest::Open(path);
    const auto* result = reload->GetRoot()->GetPtr<Result>(QStringLiteral("result"));
    ASSERT_NE(result, nullptr);
    EXPECT_EQ(childText(*result, applicationName), QStringLiteral("Unknown"));
}

TEST(SavedResult, IsLeftOutWhenItIsNotSerializable)
{
    const StorageTest::ScratchFolder folder;
    const QString path = folder.Path(QStringLiteral("result.h5"));
    StorageTest::SaveNew(path, [](PropertyObject& root) {
        insert(root, std::make_unique<Result>(QStringLiteral("kept"), QString()));
        insert(root, std::make_unique<Result>(QStringLiteral("left out"), QString()))->SetSerializable(false);
    }).reset();
    EXPECT_EQ(childNames(*StorageTest::Open(path)->GetRoot()), QStringList{QStringLiteral("kept")});
}

} // namespace
} // namespace Orrery
