// Sweeps that contain themselves, and chains of sweeps: every request ends, and says what can be said.
#include "tests/foundations/storage/DataFiles.h"
#include "tests/results/ResultsTestSupport.h"

namespace Orrery {
namespace {

using namespace ResultsTest;
using StorageTest::ScratchFolder;

const QString I = QStringLiteral("I");
const QString V = QStringLiteral("V");
const QString T = QStringLiteral("T");

/// What a read of the whole comes to: the code, and the elements that the output holds.
std::pair<ERESULT, Doubles> readWhole(const Variable& variable)
{
    BVariant out;
    const ERESULT code = variable.GetValueRange(&out, 0, 0);
    return {code, ToDoubles(out)};
}

std::pair<ERESULT, Doubles> stoppedAfter(Doubles values)
{
    return {ER_FAILED, std::move(values)};
}

class SelfContained : public testing::Test
{
protected:
    PropertyObject top{QStringLiteral("top")};
    Variable* parameter = addData(top, T, {10, 20, 30});
    ParameterizedResultData* sweep = makeSweep("sweep");
    ResultData* run = addRun(top, QStringLiteral("run"));

    SelfContained() { addMeasured(*run, I, {1, 2, 3}, V, {4, 5, 6}); }

    ParameterizedResultData* makeSweep(const char* name)
    {
        auto* const made = addSweep(top, QString::fromLatin1(name));
        made->SetParameterRef(parameter);
        return made;
    }
};

TEST_F(SelfContained, SweepJoinsWhatIsBeingMadeAsItStands)
{
    sweep->AddResultDataRef(run);
    sweep->AddResultDataRef(sweep);
    Variable* const joined = sweep->FindOrCreateResultVar(I);
    ASSERT_NE(joined, nullptr);
    EXPECT_EQ(targetOf(*joined, QStringLiteral("1")), joined);
    EXPECT_EQ(indepNames(*joined), (QStringList{V, T}));
    EXPECT_EQ(sweep->FindOrCreateResultVar(I), joined);
}

TEST_F(SelfContained, VariableHasTheLengthOfItsOtherMembersAndNoWholeData)
{
    sweep->AddResultDataRef(run);
    sweep->AddResultDataRef(sweep);
    const Variable* const joined = sweep->FindOrCreateResultVar(I);
    EXPECT_EQ(joined->GetMaxIndepOffset(), 3U);
    BVariant value;
    EXPECT_EQ(joined->GetValueAt(&value, 2), ER_SUCCESS);
    EXPECT_EQ(ToDoubles(value), Doubles{3});
    EXPECT_EQ(readWhole(*joined), stoppedAfter({1, 2, 3}));
    EXPECT_TRUE(joined->GetData().isNull());
}

TEST_F(SelfContained, SweepStretchesItsParameterOverWhatItHas)
{
    sweep->AddResultDataRef(run);
    sweep->AddResultDataRef(sweep);
    const Variable* const swept = indepAt(*sweep->FindOrCreateResultVar(I), 1);
    EXPECT_EQ(swept->GetMaxIndepOffset(), 3U);
    BVariant value;
    EXPECT_EQ(swept->GetValueAt(&value, 0), ER_SUCCESS);
    EXPECT_EQ(ToDoubles(value), Doubles{10});
}

TEST_F(SelfContained, SweepAloneIsEmpty)
{
    sweep->AddResultDataRef(sweep);
    const Variable* const joined = sweep->FindOrCreateResultVar(I);
    ASSERT_NE(joined, nullptr);
    EXPECT_EQ(joined->GetMaxIndepOffset(), 0U);
    EXPECT_TRUE(joined->GetData().isNull());
}

TEST_F(SelfContained, SweepNamesTheVariablesOfItsNextMember)
{
    sweep->AddResultDataRef(sweep);
    EXPECT_EQ(namesIn(*sweep), noNames);
    EXPECT_EQ(sweep->FindResultVar(I), nullptr);
    sweep->AddResultDataRef(run);
    EXPECT_EQ(namesIn(*sweep), (QStringList{I, V}));
    EXPECT_NE(sweep->FindResultVar(I), nullptr);
    QList<AbstractProperty*> list;
    sweep->GetVariableList(&list);
    EXPECT_EQ(list.size(), 2);
}

TEST_F(SelfContained, TwiceIsNoOtherThanOnce)
{
    sweep->AddResultDataRef(sweep);
    sweep->AddResultDataRef(sweep);
    sweep->AddResultDataRef(run);
    const Variable* const joined = sweep->FindOrCreateResultVar(I);
    ASSERT_NE(joined, nullptr);
    EXPECT_EQ(joined->GetMaxIndepOffset(), 3U);
    EXPECT_EQ(readWhole(*joined).first, ER_FAILED);
    EXPECT_EQ(namesIn(*sweep), (QStringList{I, V}));
    EXPECT_EQ(dataOf(indepAt(*joined, 0)), (Doubles{4, 5, 6}));
}

TEST_F(SelfContained, ThroughOneAnotherEnds)
{
    auto* const other = makeSweep("other");
    sweep->AddResultDataRef(run);
    sweep->AddResultDataRef(other);
    other->AddResultDataRef(sweep);
    Variable* const joined = sweep->FindOrCreateResultVar(I);
    ASSERT_NE(joined, nullptr);
    auto* const others = other->GetPtr<Variable>(I);
    ASSERT_NE(others, nullptr);
    EXPECT_EQ(targetOf(*joined, QStringLiteral("1")), others);
    EXPECT_EQ(targetOf(*others, QStringLiteral("0")), joined);
    EXPECT_EQ(joined->GetMaxIndepOffset(), 3U);
    EXPECT_EQ(others->GetMaxIndepOffset(), 3U);
    // Read from here the other one is found, and has no length; from there, this one stops on the way.
    EXPECT_EQ(readWhole(*joined), std::make_pair(ER_SUCCESS, Doubles{1, 2, 3}));
    EXPECT_EQ(readWhole(*others), stoppedAfter({1, 2, 3}));
    EXPECT_EQ(namesIn(*sweep), (QStringList{I, V}));
    EXPECT_EQ(namesIn(*other), (QStringList{I, V}));
}

TEST_F(SelfContained, ThroughALongRingEnds)
{
    std::vector<ParameterizedResultData*> ring{sweep};
    for (int i = 0; i < 50; ++i) {
        ring.push_back(makeSweep(("ring" + std::to_string(i)).c_str()));
        ring[ring.size() - 2]->AddResultDataRef(ring.back());
    }
    ring.back()->AddResultDataRef(run);
    ring.back()->AddResultDataRef(sweep);
    const Variable* const joined = sweep->FindOrCreateResultVar(I);
    ASSERT_NE(joined, nullptr);
    EXPECT_EQ(joined->GetMaxIndepOffset(), 3U);
    EXPECT_EQ(namesIn(*sweep), (QStringList{I, V}));
    EXPECT_TRUE(ring.back()->HasProperty(I));
}

TEST_F(SelfContained, AsAMemberThatStandsInItsOwnMemberEnds)
{
    auto* const inner = addSweep(*sweep, QStringLiteral("0")); // itself a member, by its place
    inner->SetParameterRef(parameter);
    inner->AddResultDataRef(sweep);
    inner->AddResultDataRef(run);
    const Variable* const joined = sweep->FindOrCreateResultVar(I);
    ASSERT_NE(joined, nullptr);
    EXPECT_EQ(joined->GetMaxIndepOffset(), 3U);
    EXPECT_EQ(namesIn(*sweep), (QStringList{I, V}));
}

TEST_F(SelfContained, WithItsOwnJoinedVariableAsParameterEnds)
{
    sweep->AddResultDataRef(run);
    Variable* const joined = sweep->FindOrCreateResultVar(I);
    ASSERT_EQ(sweep->SetParameterRef(joined), ER_SUCCESS);
    Variable* const axis = sweep->FindOrCreateResultVar(V);
    ASSERT_EQ(indepNames(*axis), QStringList{I});
    EXPECT_EQ(dataOf(indepAt(*axis, 0)), (Doubles{1, 1, 1}));
}

TEST_F(SelfContained, WithItsOwnSweptVariableAsParameterEnds)
{
    sweep->AddResultDataRef(run);
    Variable* const swept = indepAt(*sweep->FindOrCreateResultVar(I), 1);
    ASSERT_EQ(sweep->SetParameterRef(swept), ER_SUCCESS);
    Variable* const axis = sweep->FindOrCreateResultVar(V);
    ASSERT_NE(axis, nullptr);
    EXPECT_EQ(dataOf(indepAt(*axis, 0)), (Doubles{10, 10, 10}));
    ASSERT_EQ(swept->SetPropertyRef(QStringLiteral("Param"), indepAt(*axis, 0)), ER_SUCCESS);
    BVariant value;
    EXPECT_EQ(swept->GetValueAt(&value, 0), ER_FAILED); // each is the other's parameter
}

// --- chains

/// Sweeps of which each is the only member of the one before; the last has a run.
class ChainOfSweeps : public SelfContained
{
protected:
    void build(int length)
    {
        auto* last = sweep;
        for (int i = 1; i < length; ++i) {
            auto* const next = makeSweep(("s" + std::to_string(i)).c_str());
            ASSERT_EQ(last->AddResultDataRef(next), ER_SUCCESS);
            last = next;
        }
        ASSERT_EQ(last->AddResultDataRef(run), ER_SUCCESS);
    }
};

TEST_F(ChainOfSweeps, OfAHundredIsJoinedToItsEnd)
{
    build(100);
    EXPECT_EQ(namesIn(*sweep), (QStringList{I, V}));
    Variable* const joined = sweep->FindResultVar(V);
    ASSERT_NE(joined, nullptr);
    EXPECT_EQ(dataOf(joined), (Doubles{4, 5, 6}));
    EXPECT_EQ(joined->GetMaxIndepOffset(), 3U);
}

TEST_F(ChainOfSweeps, OfAnyLengthDoesNotExhaustTheStack)
{
    build(20000);
    QStringList names;
    sweep->GetVariableNameList(&names);
    EXPECT_TRUE(names == noNames || names == (QStringList{I, V}));
    Variable* const joined = sweep->FindOrCreateResultVar(V);
    ASSERT_NE(joined, nullptr);
    EXPECT_EQ(joined->GetParent(), sweep);
    EXPECT_EQ(dataOf(joined).size(), joined->GetMaxIndepOffset());
}

// --- through files

class SelfContainedInFiles : public testing::Test
{
protected:
    ScratchFolder folder;

    QString path(const char* name) const { return folder.Path(QString::fromLatin1(name)); }

    /// A sweep over T beside a run, in a file of its own that isn't saved yet.
    static std::shared_ptr<DataFile> create(const QString& path, Doubles values)
    {
        std::shared_ptr<DataFile> file = StorageTest::Open(path, DataFile::Create);
        PropertyObject& root = *file->GetRoot();
        auto* const sweep = addSweep(root, QStringLiteral("sweep"));
        addMeasured(*addRun(root, QStringLiteral("run")), I, std::move(values), V, {7});
        EXPECT_EQ(sweep->SetParameterRef(addData(root, T, {10, 20, 30})), ER_SUCCESS);
        return file;
    }
    static ParameterizedResultData* sweepOf(DataFile& file)
    {
        return file.GetRoot()->GetPtr<ParameterizedResultData>(QStringLiteral("sweep"));
    }
    static ResultData* runOf(DataFile& file)
    {
        return file.GetRoot()->GetPtr<ResultData>(QStringLiteral("run"));
    }
};

TEST_F(SelfContainedInFiles, SweepComesBackAsOne)
{
    {
        const auto file = create(path("one.h5"), {1, 2, 3});
        ASSERT_EQ(sweepOf(*file)->AddResultDataRef(runOf(*file)), ER_SUCCESS);
        ASSERT_EQ(sweepOf(*file)->AddResultDataRef(sweepOf(*file)), ER_SUCCESS);
        ASSERT_EQ(sweepOf(*file)->AddResultDataRef(sweepOf(*file)), ER_SUCCESS);
        ASSERT_EQ(file->Save(), ER_SUCCESS);
    }
    const auto file = StorageTest::Open(path("one.h5"));
    ParameterizedResultData* const sweep = sweepOf(*file);
    EXPECT_EQ(namesIn(*sweep), (QStringList{I, V}));
    const Variable* const joined = sweep->FindResultVar(I);
    ASSERT_NE(joined, nullptr);
    EXPECT_EQ(joined->GetMaxIndepOffset(), 3U);
    EXPECT_EQ(readWhole(*joined), stoppedAfter({1, 2, 3}));
}

TEST_F(SelfContainedInFiles, SweepsOfTwoFilesThroughOneAnotherEnd)
{
    {
        const auto a = create(path("a.h5"), {1, 2});
        const auto b = create(path("b.h5"), {3});
        ASSERT_EQ(sweepOf(*a)->AddResultDataRef(runOf(*a)), ER_SUCCESS);
        ASSERT_EQ(sweepOf(*a)->AddResultDataRef(sweepOf(*b)), ER_SUCCESS);
        ASSERT_EQ(sweepOf(*b)->AddResultDataRef(sweepOf(*a)), ER_SUCCESS);
        ASSERT_EQ(sweepOf(*b)->AddResultDataRef(runOf(*b)), ER_SUCCESS);
        ASSERT_EQ(a->Save(), ER_SUCCESS);
        ASSERT_EQ(b->Save(), ER_SUCCESS);
    }
    const auto file = StorageTest::Open(path("a.h5"));
    const Variable* const joined = sweepOf(*file)->FindResultVar(I);
    ASSERT_NE(joined, nullptr);
    EXPECT_EQ(joined->GetMaxIndepOffset(), 3U); // its own run and that of the other file
    BVariant value;
    EXPECT_EQ(joined->GetValueAt(&value, 1), ER_SUCCESS);
    EXPECT_EQ(ToDoubles(value), Doubles{2});
    EXPECT_EQ(readWhole(*joined), stoppedAfter({1, 2}));
}

} // namespace
} // namespace Orrery
