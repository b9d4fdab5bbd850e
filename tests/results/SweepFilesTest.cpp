// Sweeps in files: nothing joined is saved, and all of it is there again after a reload.
#include "tests/foundations/storage/CompareTrees.h"
#include "tests/foundations/storage/DataFiles.h"
#include "tests/results/ResultsTestSupport.h"

#include <QFile>

namespace Orrery {
namespace {

using namespace ResultsTest;
using StorageTest::CompareTrees;
using StorageTest::ScratchFolder;

const QString I = QStringLiteral("I");
const QString V = QStringLiteral("V");
const QString T = QStringLiteral("T");
const QString parameterName = QStringLiteral("Parameter");

Units unit(const char* text)
{
    return Units::FromSIString(QString::fromLatin1(text));
}

/// Three runs of a temperature that is itself measured against time.
void buildRuns(PropertyObject& root)
{
    Variable* const parameter = addMeasured(root, T, {300, 310, 320}, QStringLiteral("time"), {0, 1, 2});
    parameter->SetUnits(unit("K"));
    for (int i = 0; i < 3; ++i) {
        ResultData* const run = addRun(root, QStringLiteral("run%1").arg(i));
        addMeasured(*run, I, {i * 2.0, i * 2.0 + 1}, V, {i * 1.0, i * 1.0})->SetUnits(unit("A"));
    }
}

/// A sweep over the runs of `runs`, in which nothing is joined yet.
ParameterizedResultData* buildSweep(PropertyObject& root, PropertyObject& runs)
{
    auto* const sweep = addSweep(root, QStringLiteral("sweep"));
    EXPECT_EQ(sweep->SetParameterRef(runs.GetPtr<Variable>(T)), ER_SUCCESS);
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(sweep->AddResultDataRef(runs.GetPtr<ResultData>(QStringLiteral("run%1").arg(i))),
                  ER_SUCCESS);
    return sweep;
}

void expectTheJoinedRuns(Variable* joined)
{
    ASSERT_NE(joined, nullptr);
    EXPECT_FALSE(joined->IsSerializable());
    EXPECT_EQ(dataOf(joined), (Doubles{0, 1, 2, 3, 4, 5}));
    EXPECT_EQ(unitsOf(*joined), QStringLiteral("A"));
    ASSERT_EQ(indepNames(*joined), (QStringList{V, T}));
    EXPECT_EQ(dataOf(indepAt(*joined, 0)), (Doubles{0, 0, 1, 1, 2, 2}));
    Variable* const swept = indepAt(*joined, 1);
    EXPECT_TRUE(isExactly<SweptVariable>(*swept));
    EXPECT_EQ(dataOf(swept), (Doubles{300, 300, 310, 310, 320, 320}));
    EXPECT_EQ(unitsOf(*swept), QStringLiteral("K"));
    EXPECT_EQ(indepNames(*swept), QStringList{QStringLiteral("time")});
}

ParameterizedResultData* sweepIn(DataFile& file, const char* name = "sweep")
{
    return file.GetRoot()->GetPtr<ParameterizedResultData>(QString::fromLatin1(name));
}

const QStringList storedChildren{"0", "1", "2", parameterName};

TEST(SavedSweep, HoldsNoJoinedVariableAndBuildsTheSameAgain)
{
    const ScratchFolder folder;
    const QString path = folder.Path(QStringLiteral("sweep.h5"));
    // The original stands in a root of its own, so that it is still there beside the reload.
    DataFile::RootProperty original(nullptr);
    buildRuns(original);
    auto* const sweep = buildSweep(original, original);
    expectTheJoinedRuns(sweep->FindResultVar(I));
    StorageTest::SaveNew(path, [](PropertyObject& root) {
        buildRuns(root);
        auto* const saved = buildSweep(root, root);
        QList<AbstractProperty*> all;
        saved->GetVariableList(&all);
        ASSERT_EQ(all.size(), 2);
    }).reset();

    const auto file = StorageTest::Open(path);
    ParameterizedResultData* const reload = sweepIn(*file);
    ASSERT_NE(reload, nullptr);
    EXPECT_EQ(childNames(*reload), storedChildren);
    expectTheJoinedRuns(reload->FindResultVar(I));
    EXPECT_EQ(CompareTrees(*sweep->GetPtr<Variable>(I), *reload->GetPtr<Variable>(I)), "");
    EXPECT_EQ(CompareTrees(*independentsOf(*sweep, I), *independentsOf(*reload, I)), "");
}

TEST(SavedSweep, KeepsItsVariablesThatAreNotJoined)
{
    const ScratchFolder folder;
    const QString path = folder.Path(QStringLiteral("sweep.h5"));
    StorageTest::SaveNew(path, [](PropertyObject& root) {
        buildRuns(root);
        addData(*buildSweep(root, root), I, {9});
    }).reset();
    const auto file = StorageTest::Open(path);
    EXPECT_EQ(dataOf(sweepIn(*file)->FindResultVar(I)), Doubles{9});
}

TEST(SavedSweep, BuildsAgainAfterAFirstRequestWithoutAParameter)
{
    const ScratchFolder folder;
    const QString path = folder.Path(QStringLiteral("sweep.h5"));
    StorageTest::SaveNew(path, [](PropertyObject& root) {
        buildRuns(root);
        auto* const sweep = buildSweep(root, root);
        sweep->DeleteProperty(parameterName);
        EXPECT_EQ(sweep->FindOrCreateResultVar(I)->GetMaxIndepOffset(), 0U);
        EXPECT_EQ(sweep->SetParameterRef(root.GetPtr<Variable>(T)), ER_SUCCESS); // too late here
    }).reset();
    const auto file = StorageTest::Open(path);
    expectTheJoinedRuns(sweepIn(*file)->FindResultVar(I)); // but not there
}

TEST(SavedSweep, SavesACloneWithoutItsJoinedVariablesToo)
{
    const ScratchFolder folder;
    const QString path = folder.Path(QStringLiteral("sweep.h5"));
    StorageTest::SaveNew(path, [](PropertyObject& root) {
        buildRuns(root);
        auto* const sweep = buildSweep(root, root);
        sweep->FindResultVar(I);
        std::unique_ptr<AbstractProperty> clone(sweep->Clone());
        clone->SetName(QStringLiteral("clone"));
        ASSERT_TRUE(static_cast<PropertyObject&>(*clone).HasProperty(I));
        insert(root, std::move(clone));
        auto copy = std::make_unique<ParameterizedResultData>(*sweep);
        copy->SetName(QStringLiteral("copy"));
        insert(root, std::move(copy));
    }).reset();
    const auto file = StorageTest::Open(path);
    for (const char* name : {"sweep", "clone", "copy"}) {
        SCOPED_TRACE(name);
        ParameterizedResultData* const reload = sweepIn(*file, name);
        ASSERT_NE(reload, nullptr);
        EXPECT_EQ(childNames(*reload), storedChildren);
        expectTheJoinedRuns(reload->FindResultVar(I));
    }
}

TEST(SavedSweep, MayBeSavedAgainWithWhatItHasJoined)
{
    const ScratchFolder folder;
    const QString path = folder.Path(QStringLiteral("sweep.h5"));
    StorageTest::SaveNew(path, [](PropertyObject& root) {
        buildRuns(root);
        buildSweep(root, root);
    }).reset();
    {
        const auto file = StorageTest::Open(path, DataFile::ReadWrite);
        expectTheJoinedRuns(sweepIn(*file)->FindResultVar(I));
        ASSERT_EQ(file->Save(), ER_SUCCESS);
        expectTheJoinedRuns(sweepIn(*file)->FindResultVar(I)); // the tree in memory keeps it
    }
    const auto file = StorageTest::Open(path);
    EXPECT_EQ(childNames(*sweepIn(*file)), storedChildren);
}

TEST(SavedSweep, OfSweepsBuildsEachAgain)
{
    const ScratchFolder folder;
    const QString path = folder.Path(QStringLiteral("sweep.h5"));
    StorageTest::SaveNew(path, [](PropertyObject& root) {
        buildRuns(root);
        auto* const outer = addSweep(root, QStringLiteral("outer"));
        outer->SetParameterRef(addData(root, QStringLiteral("P"), {1, 2}));
        auto* const inner = buildSweep(root, root);
        outer->AddResultDataRef(inner);
        outer->AddResultDataRef(root.GetPtr<ResultData>(QStringLiteral("run0")));
        outer->FindResultVar(I);
    }).reset();
    const auto file = StorageTest::Open(path);
    Variable* const joined = sweepIn(*file, "outer")->FindResultVar(I);
    ASSERT_NE(joined, nullptr);
    EXPECT_EQ(dataOf(joined), (Doubles{0, 1, 2, 3, 4, 5, 0, 1}));
    EXPECT_EQ(indepNames(*joined), (QStringList{V, T, "P"}));
    EXPECT_EQ(dataOf(indepAt(*joined, 2)), (Doubles{1, 1, 1, 1, 1, 1, 2, 2}));
    expectTheJoinedRuns(sweepIn(*file)->GetPtr<Variable>(I));
}

// --- members in another file

class SweepOfAnotherFile : public testing::Test
{
protected:
    const ScratchFolder folder;
    const QString runsPath = folder.Path(QStringLiteral("runs.h5"));
    const QString sweepPath = folder.Path(QStringLiteral("sweep.h5"));

    /// Save both, with what the sweep has joined, and let go of them.
    void saveBoth() const
    {
        const auto runs = StorageTest::SaveNew(runsPath, &buildRuns);
        StorageTest::SaveNew(sweepPath, [&](PropertyObject& root) {
            expectTheJoinedRuns(buildSweep(root, *runs->GetRoot())->FindResultVar(I));
        });
    }
};

TEST_F(SweepOfAnotherFile, JoinsItsRunsWhileBothAreOpen)
{
    const auto runs = StorageTest::SaveNew(runsPath, &buildRuns);
    const auto mine = StorageTest::Open(sweepPath, DataFile::Create);
    auto* const sweep = buildSweep(*mine->GetRoot(), *runs->GetRoot());
    EXPECT_EQ(namesIn(*sweep), (QStringList{I, V}));
    Variable* const joined = sweep->FindResultVar(I);
    expectTheJoinedRuns(joined);
    const auto* member = joined->GetPtr<PropertyReference>(QStringLiteral("0"));
    ASSERT_NE(member, nullptr);
    EXPECT_EQ(member->ReferenceFilePath(), runs->GetPath());
}

TEST_F(SweepOfAnotherFile, JoinsThemAgainAfterAReload)
{
    saveBoth();
    const auto file = StorageTest::Open(sweepPath);
    ParameterizedResultData* const sweep = sweepIn(*file);
    ASSERT_NE(sweep, nullptr);
    EXPECT_EQ(childNames(*sweep), storedChildren);
    expectTheJoinedRuns(sweep->FindResultVar(I));
}

TEST_F(SweepOfAnotherFile, IsEmptyWithoutThatFile)
{
    saveBoth();
    ASSERT_TRUE(QFile::remove(runsPath));
    const auto file = StorageTest::Open(sweepPath);
    ParameterizedResultData* const sweep = sweepIn(*file);
    const MessageCapture log; // which file isn't there is another's tale
    EXPECT_EQ(namesIn(*sweep), noNames);
    EXPECT_EQ(sweep->FindResultVar(I), nullptr);
    Variable* const joined = sweep->FindOrCreateResultVar(I);
    ASSERT_NE(joined, nullptr);
    EXPECT_EQ(joined->GetMaxIndepOffset(), 0U);
    EXPECT_EQ(joined->GetIndepCount(), 0);
}

TEST_F(SweepOfAnotherFile, MayHaveRunsOfItsOwnBetween)
{
    {
        const auto runs = StorageTest::SaveNew(runsPath, &buildRuns);
        StorageTest::SaveNew(sweepPath, [&](PropertyObject& root) {
            auto* const sweep = addSweep(root, QStringLiteral("sweep"));
            EXPECT_EQ(sweep->SetParameterRef(runs->GetRoot()->GetPtr<Variable>(T)), ER_SUCCESS);
            ResultData* const own = addMember(*sweep, root, QStringLiteral("own"));
            addMeasured(*own, I, {7}, V, {8});
            sweep->AddResultDataRef(runs->GetRoot()->GetPtr<ResultData>(QStringLiteral("run1")));
        });
    }
    const auto file = StorageTest::Open(sweepPath);
    Variable* const joined = sweepIn(*file)->FindResultVar(I);
    ASSERT_NE(joined, nullptr);
    EXPECT_EQ(dataOf(joined), (Doubles{7, 2, 3}));
    EXPECT_EQ(dataOf(indepAt(*joined, 0)), (Doubles{8, 1, 1}));
    EXPECT_EQ(dataOf(indepAt(*joined, 1)), (Doubles{300, 310, 310}));
}

} // namespace
} // namespace Orrery
