// Concatenations and sweeps that contain themselves, and nests that are too deep or too wide to walk.
#include "foundations/storage/DataFileFactory.h"
#include "tests/foundations/storage/DataFiles.h"
#include "tests/variables/JoinedVariableTestSupport.h"
#include "variables/ConcatVar.h"
#include "variables/SweptVariable.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

namespace Orrery {
namespace {

using namespace JoinTest;

const Failure unknownType = TestSupport::runtimeError("unknown type");

ConcatVar* insertConcat(PropertyObject& folder, const QString& name)
{
    return insert(folder, std::make_unique<ConcatVar>(name));
}

SweptVariable* insertSweep(PropertyObject& folder, const QString& name)
{
    return insert(folder, std::make_unique<SweptVariable>(name));
}

class JoinedVariableCycles : public testing::Test
{
protected:
    PropertyObject top{QStringLiteral("top")};
    Variable* x = insertData(top, QStringLiteral("x"), numbers({1, 2, 3}));
    Variable* y = insertData(top, QStringLiteral("y"), numbers({8, 9}));
    ConcatVar* a = insertConcat(top, QStringLiteral("a"));
    ConcatVar* b = insertConcat(top, QStringLiteral("b"));
    SweptVariable* s = insertSweep(top, QStringLiteral("s"));

    static void fill(ConcatVar* c, std::initializer_list<const Variable*> members)
    {
        for (const Variable* member : members)
            ASSERT_EQ(c->AddVariable(member), ER_SUCCESS);
    }
};

// --- concatenations

/// x, the concatenation itself, y: what it must answer wherever it stands.
void expectItselfInTheMiddle(const Variable& c)
{
    EXPECT_EQ(c.GetMaxIndepOffset(), 5u);
    EXPECT_EQ(ToDoubles(readAt(c, 2).out), Doubles{3});
    EXPECT_EQ(readAt(c, 3), refused(ER_FAILED));
    EXPECT_EQ(readAt(c, 5), refused(ER_FAILED));
    EXPECT_EQ(readRange(c, 0, 0), stopped(ER_FAILED, numbers({1, 2, 3})));
    EXPECT_EQ(readRange(c, 1, 2), stopped(ER_FAILED, MakeVector<double>({2})));
    EXPECT_EQ(readRange(c, 3, 5), stopped(ER_FAILED));
    EXPECT_EQ(readData(c), got(BVariant()));
    EXPECT_EQ(c.GetMaxIndepOffset(), 5u); // as before
}

TEST_F(JoinedVariableCycles, AConcatenationInItselfIsAMemberThatDoesNotResolve)
{
    fill(a, {x, a, y});
    expectItselfInTheMiddle(*a);
}

TEST_F(JoinedVariableCycles, OneThatIsInItselfTwiceIsNoOther)
{
    fill(a, {x, a, a, y});
    expectItselfInTheMiddle(*a);
}

TEST_F(JoinedVariableCycles, OnlyItselfIsNothing)
{
    fill(a, {a, a});
    EXPECT_EQ(a->GetMaxIndepOffset(), 0u);
    EXPECT_EQ(readAt(*a, 0), refused(ER_FAILED));
    EXPECT_EQ(readRange(*a, 0, 0), stopped(ER_FAILED));
    EXPECT_EQ(readRange(*a, 0, 2), stopped(ER_FAILED));
    EXPECT_EQ(readData(*a), got(BVariant()));
    EXPECT_EQ(a->GetElementDimCount(), 0u);
}

TEST_F(JoinedVariableCycles, OneThroughAnotherCountsNothingWhereItComesBack)
{
    fill(a, {x, b});
    fill(b, {a, y});
    EXPECT_EQ(a->GetMaxIndepOffset(), 5u);
    EXPECT_EQ(b->GetMaxIndepOffset(), 5u);
    EXPECT_EQ(ToDoubles(readAt(*a, 2).out), Doubles{3});
    EXPECT_EQ(readAt(*a, 3), refused(ER_FAILED)); // b comes to a first
    EXPECT_EQ(readRange(*a, 0, 0), stopped(ER_FAILED, numbers({1, 2, 3})));
    EXPECT_EQ(ToDoubles(readAt(*b, 2).out), Doubles{3});                    // from x, by way of a
    EXPECT_EQ(readRange(*b, 0, 3), stopped(ER_FAILED, numbers({1, 2, 3}))); // a comes to b after x
    EXPECT_EQ(readRange(*b, 3, 5), gotNumbers({8, 9}));
}

TEST_F(JoinedVariableCycles, AfterAReadThatFailedOthersWork)
{
    fill(a, {x, a});
    fill(b, {a, y});
    ASSERT_EQ(readRange(*a, 0, 0).code, ER_FAILED);
    ASSERT_EQ(readAt(*a, 3).code, ER_FAILED);
    a->DeleteProperty(QStringLiteral("1"));
    EXPECT_EQ(readData(*a), gotNumbers({1, 2, 3}));
    EXPECT_EQ(readData(*b), gotNumbers({1, 2, 3, 8, 9}));
}

TEST_F(JoinedVariableCycles, AfterAnExceptionInANestOthersWork)
{
    HostVariable* const host = insertHost(top, QStringLiteral("host"));
    host->UpdateData(numbers({5}));
    host->range = [](BVariant*, std::uint64_t, std::uint64_t) -> ERESULT { throw std::out_of_range("once"); };
    fill(a, {x, host});
    fill(b, {a, y});
    ASSERT_EQ(readRange(*b, 0, 0).failure.words, "once");
    host->range = nullptr;
    EXPECT_EQ(readData(*b), gotNumbers({1, 2, 3, 5, 8, 9}));
    EXPECT_EQ(b->GetMaxIndepOffset(), 6u);
}

TEST_F(JoinedVariableCycles, TheSameConcatenationTwiceSideBySideIsReadTwice)
{
    fill(a, {x});
    fill(b, {a, a, y, a});
    EXPECT_EQ(readData(*b), gotNumbers({1, 2, 3, 1, 2, 3, 8, 9, 1, 2, 3}));
}

TEST_F(JoinedVariableCycles, AConcatenationInItselfCannotTellOfItsElements)
{
    insertData(*a, QStringLiteral("0"), MakeCounting({2, 3}));
    ASSERT_EQ(a->AddVariable(a), ER_SUCCESS);
    EXPECT_EQ(a->GetElementDimCount(), 1u); // the first member only, which is no reference
}

TEST_F(JoinedVariableCycles, AHostThatReadsTheConcatenationItIsReadForGetsAnAnswer)
{
    HostVariable* const host = insertHost(top, QStringLiteral("host"));
    fill(a, {x, host});
    host->count = [this] { return a->GetMaxIndepOffset() + 1; };
    Reading inner;
    host->range = [&](BVariant* out, std::uint64_t, std::uint64_t) {
        inner = readRange(*a, 0, 0);
        *out = numbers({7});
        return ER_SUCCESS;
    };
    const std::uint64_t count = a->GetMaxIndepOffset();
    EXPECT_GE(count, 4u);
    readRange(*a, 0, 0);
    EXPECT_LT(inner.code, 0);
    host->count = nullptr;
    host->range = nullptr;
    EXPECT_EQ(readData(*a), gotNumbers({1, 2, 3}));
}

// --- sweeps

TEST_F(JoinedVariableCycles, ASweepThatIsItsOwnParameterCannotBeRead)
{
    fill(a, {x, y});
    ASSERT_EQ(s->SetParameter(s), ER_SUCCESS);
    ASSERT_EQ(s->SetConcatVar(a), ER_SUCCESS);
    EXPECT_EQ(s->GetMaxIndepOffset(), 5u);
    EXPECT_EQ(readAt(*s, 0), refused(ER_FAILED));
    EXPECT_EQ(readAt(*s, 4), refused(ER_FAILED));
    const Reading run = readRange(*s, 0, 0);
    EXPECT_TRUE(run.code == ER_FAILED || run.failure == unknownType) << testing::PrintToString(run);
}

TEST_F(JoinedVariableCycles, ASweepInItsOwnConcatenationCountsNothingThere)
{
    fill(a, {x, s, y});
    ASSERT_EQ(s->SetParameter(x), ER_SUCCESS);
    ASSERT_EQ(s->SetConcatVar(a), ER_SUCCESS);
    EXPECT_EQ(a->GetMaxIndepOffset(), 5u);
    EXPECT_EQ(s->GetMaxIndepOffset(), 5u);
    EXPECT_EQ(ToDoubles(readAt(*a, 2).out), Doubles{3});
    EXPECT_EQ(ToDoubles(readAt(*s, 2).out), Doubles{1});
    EXPECT_EQ(ToDoubles(readRange(*s, 0, 3).out), (Doubles{1, 1, 1}));
}

TEST_F(JoinedVariableCycles, TwoSweepsThatAreEachOthersParameterCannotBeRead)
{
    SweptVariable* const other = insertSweep(top, QStringLiteral("other"));
    fill(a, {x, y});
    ASSERT_EQ(s->SetParameter(other), ER_SUCCESS);
    ASSERT_EQ(s->SetConcatVar(a), ER_SUCCESS);
    ASSERT_EQ(other->SetParameter(s), ER_SUCCESS);
    ASSERT_EQ(other->SetConcatVar(a), ER_SUCCESS);
    EXPECT_EQ(s->GetMaxIndepOffset(), 5u);
    EXPECT_EQ(readAt(*s, 3), refused(ER_FAILED));
    EXPECT_EQ(readAt(*other, 0), refused(ER_FAILED));
}

TEST_F(JoinedVariableCycles, AConcatenationAsParameterOfASweepInItFails)
{
    fill(a, {s});
    fill(b, {x, y});
    ASSERT_EQ(s->SetParameter(a), ER_SUCCESS);
    ASSERT_EQ(s->SetConcatVar(b), ER_SUCCESS);
    EXPECT_EQ(a->GetMaxIndepOffset(), 5u);
    EXPECT_EQ(readAt(*a, 0), refused(ER_FAILED));
    EXPECT_EQ(readAt(*s, 0), refused(ER_FAILED));
}

// --- through a file

TEST_F(JoinedVariableCycles, WhatContainsItselfComesBackFromAFileAsIt)
{
    const StorageTest::ScratchFolder scratch;
    const QString path = scratch.Path(QStringLiteral("cycle.h5"));
    StorageTest::SaveNew(path, [](PropertyObject& root) {
        Variable* const first = insertData(root, QStringLiteral("x"), numbers({1, 2, 3}));
        Variable* const last = insertData(root, QStringLiteral("y"), numbers({8, 9}));
        ConcatVar* const c = insertConcat(root, QStringLiteral("c"));
        fill(c, {first, c, last});
        auto* const own = insert(root, std::make_unique<Variable>(QStringLiteral("own")));
        auto* const strategy = own->SetStrategy<SweptVarStrategy>();
        strategy->SetParameter(own);
        strategy->SetConcatVar(c);
    }).reset();
    const auto file = StorageTest::Open(path);
    auto* const c = file->GetRoot()->GetPtr<ConcatVar>(QStringLiteral("c"));
    ASSERT_NE(c, nullptr);
    expectItselfInTheMiddle(*c);
    auto* const own = file->GetRoot()->GetPtr<Variable>(QStringLiteral("own"));
    EXPECT_EQ(own->GetMaxIndepOffset(), 5u);
    EXPECT_EQ(readAt(*own, 0), refused(ER_FAILED));
}

// --- deep and wide

/// Runs on a thread of its own, which has a stack of the usual size.
void onAThread(const std::function<void()>& body)
{
    std::atomic<bool> done{false};
    std::thread thread([&] {
        body();
        done = true;
    });
    thread.join();
    EXPECT_TRUE(done);
}

TEST_F(JoinedVariableCycles, AChainOfConcatenationsThatEachHoldTheFormerOneTwiceIsAnswered)
{
    onAThread([this] {
        Variable* const one = insertData(top, QStringLiteral("one"), numbers({7}));
        const Variable* former = one;
        std::vector<ConcatVar*> chain;
        for (std::uint64_t i = 0; i < 70; ++i) {
            chain.push_back(insertConcat(top, numbered("c", i)));
            fill(chain.back(), {former, former});
            former = chain.back();
        }
        for (const std::size_t i : {0U, 9U, 39U, 62U}) { // number i has 2^(i+1) offsets
            const std::uint64_t count = std::uint64_t{2} << i;
            EXPECT_EQ(chain[i]->GetMaxIndepOffset(), count);
            EXPECT_EQ(ToDoubles(readAt(*chain[i], count - 1).out), Doubles{7});
            EXPECT_EQ(ToDoubles(readAt(*chain[i], count / 2 - 1).out), Doubles{7});
            EXPECT_EQ(readAt(*chain[i], count), refused(ER_INVALID_ARGUMENT));
            EXPECT_EQ(readRange(*chain[i], count - 2, 0), gotNumbers({7, 7}));
            EXPECT_EQ(readRange(*chain[i], count / 2 - 1, count / 2 + 1), gotNumbers({7, 7}));
        }
        for (const std::size_t i : {63U, 69U}) { // the sum has wrapped to nothing
            EXPECT_EQ(chain[i]->GetMaxIndepOffset(), 0u);
            EXPECT_EQ(readRange(*chain[i], 0, 0), stopped(ER_FAILED));
            EXPECT_EQ(readData(*chain[i]), got(BVariant()));
        }
    });
}

TEST_F(JoinedVariableCycles, SuchAChainOfNothingIsAnsweredToo)
{
    onAThread([this] {
        const Variable* former = insertData(top, QStringLiteral("none"), BVariant());
        for (std::uint64_t i = 0; i < 70; ++i) {
            ConcatVar* const next = insertConcat(top, numbered("c", i));
            fill(next, {former, former});
            former = next;
        }
        EXPECT_EQ(former->GetMaxIndepOffset(), 0u);
        EXPECT_EQ(readAt(*former, 0), refused(ER_INVALID_ARGUMENT));
        EXPECT_EQ(readRange(*former, 0, 0), stopped(ER_FAILED));
        EXPECT_EQ(readRange(*former, 0, 3), stopped(ER_INVALID_ARGUMENT));
        EXPECT_EQ(readData(*former), got(BVariant()));
    });
}

TEST_F(JoinedVariableCycles, SeventyConcatenationsThatHoldOneAnotherAllAreAnswered)
{
    onAThread([this] {
        std::vector<ConcatVar*> all;
        for (std::uint64_t i = 0; i < 70; ++i)
            all.push_back(insertConcat(top, numbered("c", i)));
        for (ConcatVar* c : all) {
            ASSERT_EQ(c->AddVariable(x), ER_SUCCESS);
            for (ConcatVar* other : all)
                ASSERT_EQ(c->AddVariable(other), ER_SUCCESS);
        }
        EXPECT_GE(all[0]->GetMaxIndepOffset(), 3u);
        EXPECT_EQ(ToDoubles(readAt(*all[0], 2).out), Doubles{3});
        EXPECT_EQ(readRange(*all[0], 0, 3).code, ER_FAILED); // it comes to itself
        EXPECT_EQ(readData(*all[0]), got(BVariant()));
    });
}

TEST_F(JoinedVariableCycles, AChainOfSweepsThatEachStretchTheFormerOneIsAnswered)
{
    onAThread([this] {
        fill(a, {x, y});
        const Variable* former = y;
        for (std::uint64_t i = 0; i < 70; ++i) {
            SweptVariable* const next = insertSweep(top, numbered("s", i));
            ASSERT_EQ(next->SetParameter(former), ER_SUCCESS);
            ASSERT_EQ(next->SetConcatVar(a), ER_SUCCESS);
            former = next;
        }
        EXPECT_EQ(former->GetMaxIndepOffset(), 5u);
        EXPECT_EQ(readData(*former), gotNumbers({8, 8, 8, 8, 8})); // offset 1 of the former is in member 0
    });
}

/// `depth` concatenations, each in the next, around a variable of one offset.
ConcatVar* nest(PropertyObject& folder, std::uint64_t depth, const Variable* innermost)
{
    ConcatVar* outer = nullptr;
    for (std::uint64_t i = 0; i < depth; ++i) {
        outer = insertConcat(folder, numbered("c", i));
        if (outer->AddVariable(innermost) < 0)
            throw std::logic_error("a member can't be added");
        innermost = outer;
    }
    return outer;
}

TEST_F(JoinedVariableCycles, NestingOfNineHundredIsRead)
{
    onAThread([this] {
        const ConcatVar* const outer = nest(top, 900, y);
        EXPECT_EQ(outer->GetMaxIndepOffset(), 2u);
        EXPECT_EQ(ToDoubles(readAt(*outer, 1).out), Doubles{9});
        EXPECT_EQ(readData(*outer), gotNumbers({8, 9}));
    });
}

TEST_F(JoinedVariableCycles, NestingDeeperThanAThousandEnds)
{
    onAThread([this] {
        for (const std::uint64_t depth : {1100U, 30000U}) {
            PropertyObject* const folder = insertFolder(top, numbered("depth", depth));
            const ConcatVar* const outer = nest(*folder, depth, y);
            EXPECT_EQ(outer->GetMaxIndepOffset(), 0u);
            EXPECT_LT(readAt(*outer, 0).code, 0);
            EXPECT_EQ(readRange(*outer, 0, 0), stopped(ER_FAILED));
            EXPECT_LT(readRange(*outer, 0, 1).code, 0);
            EXPECT_EQ(readData(*outer), got(BVariant()));
        }
    });
}

TEST_F(JoinedVariableCycles, NestingOfSweepsDeeperThanAThousandEnds)
{
    onAThread([this] {
        fill(a, {x});
        const Variable* former = y;
        for (std::uint64_t i = 0; i < 3000; ++i) {
            SweptVariable* const next = insertSweep(top, numbered("s", i));
            ASSERT_EQ(next->SetParameter(former), ER_SUCCESS);
            ASSERT_EQ(next->SetConcatVar(a), ER_SUCCESS);
            former = next;
        }
        EXPECT_EQ(former->GetMaxIndepOffset(), 3u);
        EXPECT_EQ(readAt(*former, 0), refused(ER_FAILED));
        EXPECT_EQ(readAt(*top.GetPtr<Variable>(QStringLiteral("s800")), 0), readAt(*y, 0));
    });
}

} // namespace
} // namespace Orrery
