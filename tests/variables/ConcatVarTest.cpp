// Variables end to end on one axis: whose offset is whose, how pieces are joined, and what is left after a failure.
#include "variables/ConcatVar.h"

#include "foundations/property/PropertyReference.h"
#include "tests/support/CaseName.h"
#include "tests/support/VirtualSlot.h"
#include "tests/variables/JoinedVariableTestSupport.h"
#include "tracking/ObservablePropertyReference.h"
#include "variables/RangeVar.h"

#include <gtest/gtest.h>

#include <complex>

namespace Orrery {
namespace {

using namespace JoinTest;

static_assert(sizeof(ConcatVar) == sizeof(Variable), "a concatenation adds no fields");
static_assert(sizeof(ConcatVarStrategy) == sizeof(IVariableStrategy));

const Failure onlyVectors =
    TestSupport::runtimeError("appendValues currently supports only vector arguments");

class ConcatVarTest : public testing::Test
{
protected:
    PropertyObject top{QStringLiteral("top")};
    ConcatVar* c = insert(top, std::make_unique<ConcatVar>(QStringLiteral("c")));

    /// A new variable beside the concatenation, and a reference to it as the next member.
    Variable* add(BVariant data)
    {
        Variable* const variable = insertData(top, numbered("x", m_count++), std::move(data));
        EXPECT_EQ(c->AddVariable(variable), ER_SUCCESS);
        return variable;
    }

    HostVariable* addHost(BVariant data = {})
    {
        HostVariable* const host = insertHost(top, numbered("host", m_count++));
        host->UpdateData(data);
        EXPECT_EQ(c->AddVariable(host), ER_SUCCESS);
        return host;
    }

    /// A member of a host that promises `size` offsets and answers every run with `value`.
    HostVariable* addAnswering(std::uint64_t size, BVariant value, ERESULT code = ER_SUCCESS)
    {
        HostVariable* const host = addHost();
        host->count = [size] { return size; };
        host->range = [this, host, value, code](BVariant* out, std::uint64_t start, std::uint64_t end) {
            calls.append(host->GetName() + QStringLiteral(" %1 %2").arg(start).arg(end));
            *out = value;
            return code;
        };
        return host;
    }

    QStringList calls;

private:
    std::uint64_t m_count = 0;
};

/// Members of 3 and 2 offsets.
class ThreeAndTwo : public ConcatVarTest
{
protected:
    Variable* three = add(numbers({0, 1, 2}));
    Variable* two = add(numbers({10, 11}));
};

// --- offsets and members

TEST_F(ThreeAndTwo, HasFiveOffsets)
{
    EXPECT_EQ(c->GetMaxIndepOffset(), 5u);
}

TEST_F(ThreeAndTwo, EachOffsetIsReadFromItsMember)
{
    EXPECT_EQ(readAt(*c, 0), readAt(*three, 0));
    EXPECT_EQ(ToDoubles(readAt(*c, 0).out), Doubles{0});
    EXPECT_EQ(ToDoubles(readAt(*c, 2).out), Doubles{2});
    EXPECT_EQ(ToDoubles(readAt(*c, 3).out), Doubles{10});
    EXPECT_EQ(ToDoubles(readAt(*c, 4).out), Doubles{11});
    EXPECT_EQ(readAt(*c, 5), refused(ER_INVALID_ARGUMENT));
    EXPECT_EQ(readAt(*c, largest), refused(ER_INVALID_ARGUMENT));
}

TEST_F(ThreeAndTwo, ARunAcrossTheBoundaryIsJoined)
{
    EXPECT_EQ(readRange(*c, 2, 4), gotNumbers({2, 10}));
    EXPECT_EQ(readRange(*c, 1, 0), gotNumbers({1, 2, 10, 11}));
    EXPECT_EQ(readRange(*c, 0, 0), gotNumbers({0, 1, 2, 10, 11}));
    EXPECT_EQ(readRange(*c, 0, 5), gotNumbers({0, 1, 2, 10, 11}));
    EXPECT_EQ(readData(*c), gotNumbers({0, 1, 2, 10, 11}));
}

TEST_F(ThreeAndTwo, ARunInOneMemberIsReadFromItAlone)
{
    EXPECT_EQ(readRange(*c, 3, 5), gotNumbers({10, 11}));
    EXPECT_EQ(readRange(*c, 1, 3), gotNumbers({1, 2}));
    EXPECT_EQ(readRange(*c, 4, 5), gotNumbers({11}));
}

TEST_F(ThreeAndTwo, AnEndPastTheLastOffsetIsRefusedWithTheValuesInTheOutput)
{
    EXPECT_EQ(readRange(*c, 0, 6), stopped(ER_INVALID_ARGUMENT, numbers({0, 1, 2, 10, 11})));
    EXPECT_EQ(readRange(*c, 4, largest), stopped(ER_INVALID_ARGUMENT, numbers({11})));
    EXPECT_EQ(readRange(*c, 5, 6), stopped(ER_INVALID_ARGUMENT));
    EXPECT_EQ(readRange(*c, 9, 9), stopped(ER_INVALID_ARGUMENT));
}

TEST_F(ThreeAndTwo, FromTheLastOffsetOnThereIsASuccessWithNothing)
{
    EXPECT_EQ(readRange(*c, 5, 0), got(BVariant()));
    EXPECT_EQ(readRange(*c, 5, 5), got(BVariant()));
    EXPECT_EQ(readRange(*c, 77, 0), got(BVariant()));
    EXPECT_EQ(readRange(*c, 77, 5), got(BVariant()));
}

TEST_F(ThreeAndTwo, AnEndOnTheBoundaryBelowTheStartReadsOnToTheMembersEnd)
{
    EXPECT_EQ(readRange(*c, 4, 3), gotNumbers({11})); // a local end of 0 means to the last
    EXPECT_EQ(readRange(*c, 3, 3), got(BVariant()));  // the start of the member is passed over
}

TEST_F(ConcatVarTest, ARunFromABoundaryToItselfIsNothing)
{
    add(numbers({0, 1}));
    add(numbers({10, 11, 12}));
    EXPECT_EQ(readRange(*c, 2, 2), got(BVariant()));
    EXPECT_EQ(readRange(*c, 1, 1), gotNumbers({})); // an empty run of the first member
}

TEST_F(ConcatVarTest, AnEndInAnEarlierMemberWrapsAndReadsTheRestOfTheLaterOne)
{
    add(numbers({0, 1, 2}));
    add(numbers({10, 11}));
    add(numbers({20}));
    EXPECT_EQ(readRange(*c, 4, 1), gotNumbers({11}));
    EXPECT_EQ(readRange(*c, 3, 1), gotNumbers({10, 11}));
}

TEST_F(ConcatVarTest, MembersWithoutOffsetsArePassedOver)
{
    add(BVariant());
    add(numbers({1, 2}));
    add(MakeCounting({0}));
    add(numbers({3}));
    add(BVariant());
    EXPECT_EQ(c->GetMaxIndepOffset(), 3u);
    EXPECT_EQ(ToDoubles(readAt(*c, 0).out), Doubles{1});
    EXPECT_EQ(ToDoubles(readAt(*c, 2).out), Doubles{3});
    EXPECT_EQ(readData(*c), gotNumbers({1, 2, 3}));
}

TEST_F(ConcatVarTest, OnlyMembersWithoutOffsetsGiveNothing)
{
    add(BVariant());
    add(MakeCounting({0}));
    EXPECT_EQ(readAt(*c, 0), refused(ER_INVALID_ARGUMENT));
    EXPECT_EQ(readRange(*c, 0, 0), stopped(ER_FAILED));
    EXPECT_EQ(readRange(*c, 0, 1), stopped(ER_INVALID_ARGUMENT));
    EXPECT_EQ(readData(*c), got(BVariant()));
}

TEST_F(ConcatVarTest, WithoutMembersThereIsNothing)
{
    EXPECT_EQ(c->GetMaxIndepOffset(), 0u);
    EXPECT_EQ(readAt(*c, 0), refused(ER_INVALID_ARGUMENT));
    EXPECT_EQ(readRange(*c, 0, 0), stopped(ER_FAILED)); // the end is still 0
    EXPECT_EQ(readRange(*c, 3, 0), stopped(ER_FAILED));
    EXPECT_EQ(readRange(*c, 0, 1), stopped(ER_INVALID_ARGUMENT));
    EXPECT_EQ(readData(*c), got(BVariant()));
    EXPECT_EQ(c->GetElementDimCount(), 0u);
    std::vector<std::uint64_t> shape{3};
    EXPECT_EQ(c->GetElementShape(&shape), ER_SUCCESS);
    EXPECT_TRUE(shape.empty());
}

TEST_F(ConcatVarTest, MembersStandInTheOrderOfTheirNumbers)
{
    for (const char* name : {"10", "9", "100", "02"})
        insertData(*c, QString::fromLatin1(name), numbers({QString::fromLatin1(name).toDouble()}));
    EXPECT_EQ(readData(*c), gotNumbers({2, 9, 10, 100}));
}

TEST_F(ConcatVarTest, ChildrenWhoseNamesAreNoNumbersAreNoMembers)
{
    add(numbers({1, 2}));
    insertData(*c, QStringLiteral("1a"), numbers({5}));
    insertData(*c, QStringLiteral("-1"), numbers({5}));
    insertData(*c, QStringLiteral("other"), numbers({5}));
    insertFolder(*c, QStringLiteral("Indep"));
    EXPECT_EQ(c->GetMaxIndepOffset(), 2u);
    EXPECT_EQ(readData(*c), gotNumbers({1, 2}));
}

TEST_F(ConcatVarTest, AVariablePutThereDirectlyIsAMember)
{
    add(numbers({1}));
    insertData(*c, QStringLiteral("7"), numbers({2, 3}));
    add(numbers({4}));
    EXPECT_EQ(numberedNames(*c),
              (QStringList{QStringLiteral("0"), QStringLiteral("7"), QStringLiteral("8")}));
    EXPECT_EQ(readData(*c), gotNumbers({1, 2, 3, 4}));
    EXPECT_EQ(ToDoubles(readAt(*c, 2).out), Doubles{3});
}

TEST_F(ConcatVarTest, RangesAndConcatenationsAreMembersToo)
{
    auto* const axis = insert(top, std::make_unique<RangeVar>(QStringLiteral("axis")));
    axis->SetStart(0.0);
    axis->SetStep(0.5);
    axis->SetCount(3);
    auto* const inner = insert(top, std::make_unique<ConcatVar>(QStringLiteral("inner")));
    ASSERT_EQ(inner->AddVariable(axis), ER_SUCCESS);
    ASSERT_EQ(inner->AddVariable(axis), ER_SUCCESS);
    ASSERT_EQ(c->AddVariable(inner), ER_SUCCESS);
    ASSERT_EQ(c->AddVariable(axis), ER_SUCCESS);
    EXPECT_EQ(c->GetMaxIndepOffset(), 9u);
    EXPECT_EQ(readRange(*c, 2, 8), gotNumbers({1, 0, 0.5, 1, 0, 0.5}));
    EXPECT_EQ(ToDoubles(readAt(*c, 4).out), Doubles{0.5});
}

// --- adding members

TEST_F(ConcatVarTest, TheSameVariableAgainIsAFurtherMember)
{
    Variable* const x = add(numbers({1, 2}));
    ASSERT_EQ(c->AddVariable(x), ER_SUCCESS);
    EXPECT_EQ(numberedNames(*c), (QStringList{QStringLiteral("0"), QStringLiteral("1")}));
    EXPECT_TRUE(c->GetPropertyPtr(QStringLiteral("1"))->IsPropertyReference());
    EXPECT_EQ(readData(*c), gotNumbers({1, 2, 1, 2}));
}

TEST_F(ConcatVarTest, AMemberIsNumberedAfterTheLastOne)
{
    insertData(*c, QStringLiteral("41"), numbers({1}));
    add(numbers({2}));
    EXPECT_TRUE(c->HasProperty(QStringLiteral("42")));
    ASSERT_EQ(c->DeleteProperty(QStringLiteral("41")), ER_SUCCESS);
    add(numbers({3}));
    EXPECT_TRUE(c->HasProperty(QStringLiteral("43")));
}

TEST_F(ConcatVarTest, NoMemberGoesBehindTheLargestNumber)
{
    Variable* const x = add(numbers({1}));
    insertData(*c, QStringLiteral("9223372036854775807"), numbers({2}));
    EXPECT_EQ(c->AddVariable(x), ER_FAILED);
    EXPECT_EQ(numberedNames(*c).size(), 2);
    EXPECT_EQ(readData(*c), gotNumbers({1, 2}));
}

TEST_F(ConcatVarTest, WhatCannotBeReferencedIsNoMember)
{
    const Variable stranger(QStringLiteral("stranger"), numbers({1}));
    EXPECT_EQ(c->AddVariable(&stranger), ER_INVALID_ARGUMENT);
    EXPECT_EQ(c->AddVariable(nullptr), ER_INVALID_ARGUMENT);
    EXPECT_EQ(numberedNames(*c), QStringList());
}

TEST_F(ThreeAndTwo, AddingMarksNothingAndBindsNothing)
{
    const SignalSpies spies(*c);
    EXPECT_TRUE(c->getDirtyTracker()->isClean());
    EXPECT_TRUE(c->getDirtyTracker()->getSources()().empty());
    add(numbers({20}));
    EXPECT_TRUE(c->getDirtyTracker()->isClean());
    EXPECT_TRUE(c->getDirtyTracker()->getSources()().empty());
    EXPECT_EQ(spies.count(), 0);
}

TEST_F(ThreeAndTwo, AChangeOfAMemberIsSeenAtTheNextReadAndMarksNothing)
{
    ASSERT_EQ(readData(*c), gotNumbers({0, 1, 2, 10, 11}));
    three->UpdateData(numbers({7}));
    EXPECT_TRUE(c->getDirtyTracker()->isClean());
    EXPECT_EQ(c->GetMaxIndepOffset(), 3u);
    EXPECT_EQ(readData(*c), gotNumbers({7, 10, 11}));
}

TEST_F(ThreeAndTwo, AnUpdateIsDroppedAndNoReadCleans)
{
    c->UpdateData(numbers({99}));
    EXPECT_TRUE(c->getDirtyTracker()->isDirty());
    EXPECT_EQ(readData(*c), gotNumbers({0, 1, 2, 10, 11}));
    readAt(*c, 0);
    EXPECT_TRUE(c->getDirtyTracker()->isDirty());
    EXPECT_TRUE(c->GetPtr<SimpleProperty>(QStringLiteral("Data"))->GetValue().isNull());
}

// --- members that don't resolve

/// A concatenation of {1, 2}, what a test puts at "1", and {3}.
class BrokenMember : public ConcatVarTest
{
protected:
    BrokenMember()
    {
        add(numbers({1, 2}));
        insertData(*c, QStringLiteral("2"), numbers({3}));
    }

    void expectItDoesNotResolve()
    {
        ASSERT_EQ(numberedNames(*c).size(), 3);
        EXPECT_EQ(c->GetMaxIndepOffset(), 3u);
        EXPECT_EQ(ToDoubles(readAt(*c, 1).out), Doubles{2}); // not come to
        EXPECT_EQ(readAt(*c, 2), refused(ER_FAILED));
        EXPECT_EQ(readAt(*c, 50), refused(ER_FAILED));
        EXPECT_EQ(readRange(*c, 0, 0), stopped(ER_FAILED, numbers({1, 2})));
        EXPECT_EQ(readRange(*c, 0, 1), stopped(ER_FAILED, MakeVector<double>({1})));
        EXPECT_EQ(readRange(*c, 2, 3), stopped(ER_FAILED));
        EXPECT_EQ(readData(*c), got(BVariant()));
    }
};

TEST_F(BrokenMember, AValueIsNone)
{
    ASSERT_EQ(c->SetProperty(QStringLiteral("1"), numbers({7, 8})), ER_SUCCESS);
    expectItDoesNotResolve();
}

TEST_F(BrokenMember, AFolderIsNone)
{
    insertFolder(*c, QStringLiteral("1"));
    expectItDoesNotResolve();
}

TEST_F(BrokenMember, AReferenceToAFolderIsNone)
{
    ASSERT_EQ(c->SetPropertyRef(QStringLiteral("1"), insertFolder(top, QStringLiteral("folder"))),
              ER_SUCCESS);
    expectItDoesNotResolve();
}

TEST_F(BrokenMember, AReferenceThatWasNeverSetIsNone)
{
    insert(*c, std::make_unique<PropertyReference>(QStringLiteral("1")));
    expectItDoesNotResolve();
}

TEST_F(BrokenMember, AReferenceToSomethingGoneIsNone)
{
    ASSERT_EQ(c->SetPropertyRef(QStringLiteral("1"), insertData(top, QStringLiteral("gone"), numbers({5}))),
              ER_SUCCESS);
    ASSERT_EQ(readData(*c), gotNumbers({1, 2, 5, 3}));
    ASSERT_EQ(top.DeleteProperty(QStringLiteral("gone")), ER_SUCCESS);
    expectItDoesNotResolve();
    insertData(top, QStringLiteral("gone"), numbers({6})); // one of the same name takes its place
    EXPECT_EQ(readData(*c), gotNumbers({1, 2, 6, 3}));
}

/// A host's folder that says it is a Variable.
class Pretender : public ReactingFolder
{
public:
    using ReactingFolder::ReactingFolder;
    unsigned int GetTypeFlags() const override { return PropertyTypeFlagObject | PropertyTypeFlagVariable; }
};

TEST_F(BrokenMember, AFolderThatSaysItIsAVariableIsNone)
{
    insert<PropertyObject>(*c, std::make_unique<Pretender>(QStringLiteral("1")));
    expectItDoesNotResolve();
}

/// A host's reference that says it is a Variable.
class TwofoldReference : public PropertyReference
{
public:
    using PropertyReference::PropertyReference;
    unsigned int GetTypeFlags() const override
    {
        return PropertyTypeFlagReference | PropertyTypeFlagVariable;
    }
};

TEST_F(BrokenMember, AReferenceThatSaysItIsAVariableIsTakenAtItsWord)
{
    auto* const reference = insert(*c, std::make_unique<TwofoldReference>(QStringLiteral("1")));
    ASSERT_EQ(reference->SetPropertyRef(insertData(top, QStringLiteral("x"), numbers({5}))), ER_SUCCESS);
    expectItDoesNotResolve();
}

TEST_F(BrokenMember, AsTheFirstOneItHasNoElements)
{
    ASSERT_EQ(c->DeleteProperty(QStringLiteral("0")), ER_SUCCESS);
    insertFolder(*c, QStringLiteral("1"));
    EXPECT_EQ(c->GetElementDimCount(), 0u);
    std::vector<std::uint64_t> shape{3};
    EXPECT_EQ(c->GetElementShape(&shape), ER_SUCCESS);
    EXPECT_TRUE(shape.empty());
    EXPECT_EQ(c->GetMaxIndepOffset(), 1u);
    EXPECT_EQ(readAt(*c, 0), refused(ER_FAILED));
    EXPECT_EQ(readRange(*c, 0, 0), stopped(ER_FAILED));
}

TEST_F(ConcatVarTest, AVariableThatAlsoSaysItIsAReferenceIsAMember)
{
    auto host = std::make_unique<HostVariable>(QStringLiteral("0"));
    host->UpdateData(numbers({4, 5}));
    host->moreFlags = PropertyTypeFlagReference;
    insert(*c, std::move(host));
    EXPECT_EQ(readData(*c), gotNumbers({4, 5}));
}

TEST_F(ConcatVarTest, AReferenceThatWaitsForItsTargetIsAMember)
{
    const MessageCapture log; // says that it waits
    Variable stranger(QStringLiteral("stranger"), numbers({4, 5}));
    ASSERT_EQ(insertVariableReference(*c, QStringLiteral("0"), &stranger), ER_SUCCESS);
    EXPECT_EQ(c->GetMaxIndepOffset(), 2u);
    EXPECT_EQ(readData(*c), gotNumbers({4, 5}));
    EXPECT_EQ(ToDoubles(readAt(*c, 1).out), Doubles{5});
}

/// A host's reference with an answer for each of the two ways to ask.
class ScriptedReference : public PropertyReference
{
public:
    using PropertyReference::PropertyReference;
    AbstractProperty* forChange = nullptr;
    const AbstractProperty* forReading = nullptr;

protected:
    AbstractProperty* GetPropertyRef() const override { return forChange; }
    const AbstractProperty* GetPropertyConstRef() const override { return forReading; }
};

TEST_F(ConcatVarTest, AReferenceIsNotAskedForReadingOnly)
{
    auto* const reference = insert(*c, std::make_unique<ScriptedReference>(QStringLiteral("0")));
    Variable* const x = insertData(top, QStringLiteral("x"), numbers({1}));
    reference->forReading = x;
    EXPECT_EQ(c->GetMaxIndepOffset(), 0u);
    EXPECT_EQ(readAt(*c, 0), refused(ER_FAILED));
    reference->forChange = x;
    reference->forReading = nullptr;
    EXPECT_EQ(readData(*c), gotNumbers({1}));
}

// --- the elements

TEST_F(ConcatVarTest, ElementsOfReferredMembersAreNotLookedAt)
{
    add(MakeCounting({2, 3}));
    EXPECT_EQ(c->GetElementDimCount(), 0u);
    std::vector<std::uint64_t> shape{9, 9};
    EXPECT_EQ(c->GetElementShape(&shape), ER_SUCCESS);
    EXPECT_TRUE(shape.empty());
}

TEST_F(ConcatVarTest, ElementsAreThoseOfAFirstMemberThatIsThereDirectly)
{
    insertData(*c, QStringLiteral("0"), MakeCounting({2, 3, 4}));
    insertData(*c, QStringLiteral("1"), MakeCounting({2}));
    EXPECT_EQ(c->GetElementDimCount(), 2u);
    std::vector<std::uint64_t> shape{9};
    EXPECT_EQ(c->GetElementShape(&shape), ER_SUCCESS);
    EXPECT_EQ(shape, (Sizes{3, 4}));
}

TEST_F(ConcatVarTest, OnlyTheFirstMemberTellsOfElements)
{
    add(MakeCounting({2}));
    insertData(*c, QStringLiteral("1"), MakeCounting({2, 3}));
    EXPECT_EQ(c->GetElementDimCount(), 0u);
}

TEST_F(ConcatVarTest, AHostsFirstMemberTellsOfElementsInItsOwnWay)
{
    auto made = std::make_unique<HostVariable>(QStringLiteral("0"));
    made->dimCount = [] { return std::uint64_t{17}; };
    made->elementShape = [](std::vector<std::uint64_t>* shape) {
        EXPECT_TRUE(shape->empty()); // cleared before
        shape->assign({5, 6});
        return ER_NOT_FOUND;
    };
    insert(*c, std::move(made));
    EXPECT_EQ(c->GetElementDimCount(), 17u);
    std::vector<std::uint64_t> shape{1};
    EXPECT_EQ(c->GetElementShape(&shape), ER_NOT_FOUND);
    EXPECT_EQ(shape, (Sizes{5, 6}));
}

// --- joining

TEST_F(ConcatVarTest, VectorsOfTwoTypesComeInTheirCommonType)
{
    add(BVariant(std::vector<std::int32_t>{1, 2}));
    add(numbers({0.5}));
    EXPECT_EQ(readRange(*c, 0, 0), gotNumbers({1, 2, 0.5}));
    EXPECT_EQ(readRange(*c, 0, 2), got(BVariant(std::vector<std::int32_t>{1, 2})));
}

TEST_F(ConcatVarTest, TypesFoldFromTheLeft)
{
    add(BVariant(std::vector<std::int8_t>{1}));
    add(BVariant(std::vector<std::uint16_t>{2}));
    add(BVariant(std::vector<float>{3}));
    // int8 with uint16 makes int, and int with float makes double; uint16 with float would stay float
    EXPECT_EQ(readData(*c), gotNumbers({1, 2, 3}));
    EXPECT_EQ(readRange(*c, 1, 3), got(BVariant(std::vector<float>{2, 3})));
}

TEST_F(ConcatVarTest, AnEmptyPieceHasNoEffectOnTheType)
{
    addAnswering(1, BVariant(Doubles{}));
    add(BVariant(std::vector<std::int32_t>{1}));
    addAnswering(1, BVariant(std::vector<std::string>{}));
    add(BVariant(std::vector<std::int8_t>{2}));
    EXPECT_EQ(readData(*c), got(BVariant(std::vector<std::int32_t>{1, 2})));
}

TEST_F(ConcatVarTest, RowsGrowAlongTheirSecondDimensionAndColumnsAlongTheirFirst)
{
    add(BVariant(Doubles{1, 2}, {1, 2}));
    add(numbers({3}));
    EXPECT_EQ(readData(*c), got(BVariant(Doubles{1, 2, 3}, {1, 3})));

    auto* const columns = insert(top, std::make_unique<ConcatVar>(QStringLiteral("columns")));
    insertData(*columns, QStringLiteral("0"), numbers({1, 2}));
    insertData(*columns, QStringLiteral("1"), BVariant(Doubles{3, 4}, {2, 1}));
    insertData(*columns, QStringLiteral("2"), BVariant(Doubles{5, 6}, {1, 2}));
    EXPECT_EQ(readData(*columns), got(BVariant(Doubles{1, 2, 3, 4, 5, 6}, {6, 1})));
}

TEST_F(ConcatVarTest, OneSatisfiedMemberIsReturnedItself)
{
    Variable* const matrix = add(MakeCounting({2, 3}));
    add(BVariant());
    const Reading reading = readRange(*c, 0, 0);
    EXPECT_EQ(reading, got(MakeCounting({2, 3})));
    EXPECT_EQ(reading.out.constData(), matrix->GetData().constData()) << "its payload is shared";
    EXPECT_EQ(c->GetData().constData(), matrix->GetData().constData());
}

TEST_F(ConcatVarTest, AMemberBehindEmptyOnesIsReturnedItselfToo)
{
    addAnswering(1, BVariant(Doubles{}));
    Variable* const vector = add(BVariant(Doubles{1, 2, 3}, {3}, DataOrdering::ColumnMajor));
    addAnswering(1, BVariant());
    const Reading reading = readRange(*c, 0, 0);
    EXPECT_EQ(reading, got(vector->GetData()));
    EXPECT_EQ(reading.out.constData(), vector->GetData().constData());
}

TEST_F(ConcatVarTest, AMatrixBesideAnotherPieceThrowsOutOfTheRead)
{
    add(numbers({7}));
    add(MakeCounting({2, 3}));
    EXPECT_EQ(c->GetMaxIndepOffset(), 3u);
    EXPECT_EQ(readRange(*c, 0, 0), threw(onlyVectors, MakeVector<double>({7})));
    EXPECT_EQ(readRange(*c, 1, 3), got(MakeCounting({2, 3})));
    EXPECT_EQ(readData(*c), threw(onlyVectors)); // GetData hands it on
}

TEST_F(ConcatVarTest, AMatrixInFrontThrowsWhenTheNextPieceArrives)
{
    add(MakeCounting({2, 3}));
    HostVariable* const later = addAnswering(1, numbers({1}));
    HostVariable* const last = addAnswering(1, numbers({1}));
    EXPECT_EQ(readRange(*c, 0, 0), threw(onlyVectors, MakeCounting({2, 3})));
    EXPECT_EQ(calls, QStringList{later->GetName() + QStringLiteral(" 0 1")});
    EXPECT_EQ(readAt(*last, 0).code, ER_SUCCESS);
}

TEST_F(ConcatVarTest, TypesWithoutACommonOneThrowTheTextOfWhatWasJoinedSoFar)
{
    add(BVariant(std::vector<std::int32_t>{1, 2}));
    add(numbers({3}));
    add(BVariant(std::vector<std::string>{"four"}));
    EXPECT_EQ(readRange(*c, 0, 0),
              threw(TestSupport::runtimeError(
                        "Cannot convert Brindle::Quay::BVariant of type 'double' (size: 3) to ''"),
                    numbers({1, 2, 3})));
}

TEST_F(ConcatVarTest, TwoPiecesOfARunTimeTypeCannotBeJoined)
{
    addAnswering(1, BVariant::runTime(std::pair<int, int>(1, 2)));
    EXPECT_EQ(readData(*c), got(BVariant::runTime(std::pair<int, int>(1, 2))));
    addAnswering(1, BVariant::runTime(std::pair<int, int>(3, 4)));
    EXPECT_EQ(readRange(*c, 0, 0).failure,
              TestSupport::runtimeError("Creating with run-time wellknowntype is not allowed."));
}

TEST_F(ConcatVarTest, AColumnMajorRowIsJoinedInTheOrderOfItsElements)
{
    add(BVariant(Doubles{1, 2, 3}, {1, 3}, DataOrdering::ColumnMajor));
    add(numbers({4}));
    EXPECT_EQ(readData(*c), got(BVariant(Doubles{1, 2, 3, 4}, {1, 4})));
}

// --- members of a host

TEST_F(ConcatVarTest, MembersAreReadThroughTheirVirtualOperations)
{
    HostVariable* const host = addAnswering(3, numbers({1, 2, 3}));
    host->at = [](BVariant* out, std::uint64_t offset) {
        *out = BVariant(static_cast<double>(offset) + 0.5);
        return static_cast<ERESULT>(7);
    };
    EXPECT_EQ(c->GetMaxIndepOffset(), 3u);
    EXPECT_EQ(readAt(*c, 2), (Reading{static_cast<ERESULT>(7), BVariant(2.5)}));
    EXPECT_EQ(readRange(*c, 1, 2), gotNumbers({1, 2, 3}));
    EXPECT_EQ(calls, QStringList{host->GetName() + QStringLiteral(" 1 2")});
}

TEST_F(ConcatVarTest, PiecesAreReadInOrderAndWithTheirOwnBounds)
{
    for (const std::uint64_t size : {3u, 0u, 2u, 4u})
        addAnswering(size, numbers({1}));
    readRange(*c, 1, 7);
    EXPECT_EQ(calls, (QStringList{QStringLiteral("host0 1 3"), QStringLiteral("host2 0 2"),
                                  QStringLiteral("host3 0 2")}));
}

TEST_F(ConcatVarTest, AMemberMayHoldMoreOrFewerValuesThanItPromised)
{
    addAnswering(2, numbers({1, 2, 3, 4}));
    addAnswering(3, numbers({5}));
    addAnswering(1, BVariant(6.0));
    EXPECT_EQ(c->GetMaxIndepOffset(), 6u);
    EXPECT_EQ(readRange(*c, 0, 0), gotNumbers({1, 2, 3, 4, 5, 6}));
    EXPECT_EQ(readRange(*c, 5, 6), got(BVariant(6.0)));
}

TEST_F(ConcatVarTest, AMemberThatFailsEndsTheReadWithItsCodeAndWhatItGave)
{
    add(numbers({1, 2}));
    addAnswering(2, numbers({8, 9}), ER_ALREADY_EXISTS);
    addAnswering(2, numbers({3, 4}));
    EXPECT_EQ(readRange(*c, 0, 0), stopped(ER_ALREADY_EXISTS, numbers({1, 2, 8, 9})));
    EXPECT_EQ(calls, QStringList{QStringLiteral("host1 0 2")}); // the one after it isn't read
    EXPECT_EQ(readRange(*c, 2, 4), stopped(ER_ALREADY_EXISTS, numbers({8, 9})));
    EXPECT_EQ(readData(*c), got(BVariant()));
}

TEST_F(ConcatVarTest, AMemberThatFailsWithoutAValueLeavesThePiecesBeforeIt)
{
    add(numbers({1, 2}));
    addAnswering(1, BVariant(), ER_NOT_FOUND);
    addAnswering(1, numbers({3}));
    EXPECT_EQ(readRange(*c, 0, 0), stopped(ER_NOT_FOUND, numbers({1, 2})));
    EXPECT_EQ(readRange(*c, 2, 4), stopped(ER_NOT_FOUND));
}

TEST_F(ConcatVarTest, AMatrixOfAFailingMemberThrowsAllTheSame)
{
    add(numbers({1, 2}));
    addAnswering(2, MakeCounting({2, 2}), ER_FAILED);
    EXPECT_EQ(readRange(*c, 0, 0), threw(onlyVectors, numbers({1, 2})));
}

TEST_F(ConcatVarTest, AnExceptionOfAMemberPassesWithThePiecesBeforeItInTheOutput)
{
    add(numbers({1, 2}));
    HostVariable* const host = addHost();
    host->count = [] { return std::uint64_t{1}; };
    host->range = [](BVariant*, std::uint64_t, std::uint64_t) -> ERESULT {
        throw std::out_of_range("no disk");
    };
    host->at = [](BVariant*, std::uint64_t) -> ERESULT { throw std::out_of_range("no value"); };
    addAnswering(1, numbers({3}));
    EXPECT_EQ(readRange(*c, 0, 0), threw(TestSupport::outOfRange("no disk"), numbers({1, 2})));
    EXPECT_EQ(readAt(*c, 2), threw(TestSupport::outOfRange("no value")));
    EXPECT_EQ(readData(*c), threw(TestSupport::outOfRange("no disk")));
    EXPECT_EQ(calls, QStringList());
}

TEST_F(ConcatVarTest, AMemberThatThrowsAtItsSizeEndsEveryRead)
{
    add(numbers({1, 2}));
    addHost()->count = []() -> std::uint64_t { throw std::out_of_range("no size"); };
    EXPECT_EQ(failureOf([&] { c->GetMaxIndepOffset(); }), TestSupport::outOfRange("no size"));
    EXPECT_EQ(ToDoubles(readAt(*c, 1).out), Doubles{2}); // not come to
    EXPECT_EQ(readAt(*c, 2), threw(TestSupport::outOfRange("no size")));
    EXPECT_EQ(readRange(*c, 0, 2), threw(TestSupport::outOfRange("no size"), numbers({1, 2})));
    EXPECT_EQ(readRange(*c, 0, 0),
              threw(TestSupport::outOfRange("no size"))); // by the end, before the output
}

TEST_F(ConcatVarTest, ReadingGoesOnAfterAnException)
{
    HostVariable* const host = addHost(numbers({1, 2}));
    host->range = [](BVariant*, std::uint64_t, std::uint64_t) -> ERESULT { throw std::out_of_range("once"); };
    ASSERT_EQ(readRange(*c, 0, 0).failure, TestSupport::outOfRange("once"));
    host->range = nullptr;
    EXPECT_EQ(readRange(*c, 0, 0), gotNumbers({1, 2}));
    EXPECT_EQ(c->GetMaxIndepOffset(), 2u);
}

TEST_F(ConcatVarTest, SizesAddUpTo64BitsAndWrap)
{
    HostVariable* const huge = addAnswering(largest, numbers({1}));
    huge->at = [](BVariant* out, std::uint64_t offset) {
        *out = BVariant(offset);
        return ER_SUCCESS;
    };
    add(numbers({7, 8, 9}));
    EXPECT_EQ(c->GetMaxIndepOffset(), 2u);
    EXPECT_EQ(readAt(*c, largest - 1), got(BVariant(largest - 1)));
    EXPECT_EQ(readRange(*c, largest - 1, largest), stopped(ER_INVALID_ARGUMENT, numbers({1})));
}

TEST_F(ConcatVarTest, AMemberMayExchangeTheStrategyWhileItIsRead)
{
    HostVariable* const host = addHost();
    host->count = [] { return std::uint64_t{2}; };
    host->range = [this](BVariant* out, std::uint64_t, std::uint64_t) {
        c->SetStrategy<RangeVarStrategy>();
        *out = numbers({1, 2});
        return ER_SUCCESS;
    };
    add(numbers({3}));
    EXPECT_EQ(readRange(*c, 0, 0), gotNumbers({1, 2, 3}));
    EXPECT_EQ(c->GetStrategyPtr().lock()->GetType(), QStringLiteral("RangeStrategy"));
}

TEST_F(ConcatVarTest, AMemberMayDestroyALaterOneWhileItIsRead)
{
    HostVariable* const host = addHost();
    host->count = [] { return std::uint64_t{2}; };
    host->range = [this](BVariant* out, std::uint64_t, std::uint64_t) {
        top.DeleteProperty(QStringLiteral("x1"));
        *out = numbers({1, 2});
        return ER_SUCCESS;
    };
    add(numbers({3}));
    EXPECT_EQ(readRange(*c, 0, 3), stopped(ER_FAILED, numbers({1, 2})));
}

TEST_F(ConcatVarTest, AMemberMayTakeAllMembersAwayWhileItIsRead)
{
    HostVariable* const host = addHost();
    host->count = [] { return std::uint64_t{2}; };
    host->range = [this](BVariant* out, std::uint64_t, std::uint64_t) {
        c->DeleteProperties();
        *out = numbers({1, 2});
        return ER_SUCCESS;
    };
    add(numbers({3}));
    const Reading reading = readRange(*c, 0, 3);
    EXPECT_LT(reading.code, 0); // the run can't be had any more
    EXPECT_EQ(ToDoubles(reading.out), (Doubles{1, 2}));
    EXPECT_EQ(c->GetMaxIndepOffset(), 0u);
}

TEST_F(ConcatVarTest, AMemberMayAddAnotherWhileItIsRead)
{
    HostVariable* const host = addHost();
    host->count = [] { return std::uint64_t{2}; };
    host->range = [this, host](BVariant* out, std::uint64_t, std::uint64_t) {
        host->range = nullptr;
        add(numbers({4}));
        *out = numbers({1, 2});
        return ER_SUCCESS;
    };
    add(numbers({3}));
    EXPECT_EQ(readRange(*c, 0, 3), gotNumbers({1, 2, 3})); // the list of this read is the one it began with
    EXPECT_EQ(numberedNames(*c).size(), 3);
}

TEST_F(ConcatVarTest, AMemberMayDestroyALaterOneWhileItIsCounted)
{
    HostVariable* const host = addHost(numbers({1, 2}));
    host->count = [this] {
        top.DeleteProperty(QStringLiteral("x1"));
        c->DeleteProperty(QStringLiteral("2"));
        return std::uint64_t{2};
    };
    add(numbers({3}));
    add(numbers({4}));
    EXPECT_EQ(c->GetMaxIndepOffset(), 2u);
    EXPECT_EQ(readAt(*c, 2), refused(ER_FAILED));
}

/// What a member does when it is read, and a read that comes to it.
using Operation = void (*)(HostVariable& host, const std::function<void()>& reaction);

void whenCounted(HostVariable& host, const std::function<void()>& reaction)
{
    host.count = [reaction] {
        reaction();
        return std::uint64_t{2};
    };
}

void whenReadSingly(HostVariable& host, const std::function<void()>& reaction)
{
    host.at = [reaction](BVariant* out, std::uint64_t) {
        reaction();
        *out = BVariant(5.0);
        return ER_SUCCESS;
    };
}

void whenReadInARun(HostVariable& host, const std::function<void()>& reaction)
{
    host.range = [reaction](BVariant* out, std::uint64_t, std::uint64_t) {
        reaction();
        *out = numbers({5, 6});
        return ER_SUCCESS;
    };
}

TEST_F(ConcatVarTest, AMemberMayDestroyTheConcatenationThatReadsIt)
{
    for (const Operation when : {&whenCounted, &whenReadSingly, &whenReadInARun}) {
        for (int read = 0; read < 4; ++read) {
            PropertyObject folder(QStringLiteral("folder"));
            auto* const doomed = insert(folder, std::make_unique<ConcatVar>(QStringLiteral("doomed")));
            HostVariable* const host = insertHost(folder, QStringLiteral("host"));
            host->UpdateData(numbers({1, 2}));
            doomed->AddVariable(host);
            doomed->AddVariable(insertData(folder, QStringLiteral("x"), numbers({3})));
            const bool comesToIt = when == &whenCounted || (when == &whenReadSingly) == (read == 1);
            when(*host, [&folder] { folder.DeleteProperty(QStringLiteral("doomed")); });
            BVariant out;
            if (read == 0)
                doomed->GetData();
            else if (read == 1)
                doomed->GetValueAt(&out, 0);
            else if (read == 2)
                doomed->GetValueRange(&out, 0, 0);
            else
                doomed->GetMaxIndepOffset();
            const bool expected = comesToIt && (read != 3 || when == &whenCounted);
            EXPECT_EQ(folder.HasProperty(QStringLiteral("doomed")), !expected) << read;
        }
    }
}

// --- the class

TEST(ConcatVar, NamesItselfAndItsStrategy)
{
    const ConcatVar c(QStringLiteral("c"));
    EXPECT_EQ(c.GetName(), QStringLiteral("c"));
    EXPECT_EQ(c.PropertyObjType(), QStringLiteral("ConcatVar"));
    EXPECT_EQ(ConcatVar::StaticType(), QStringLiteral("ConcatVar"));
    EXPECT_EQ(childText(c, QStringLiteral("VariableStrategy")), QStringLiteral("ConcatStrategy"));
    EXPECT_EQ(c.GetStrategyPtr().lock()->GetType(), QStringLiteral("ConcatStrategy"));
    EXPECT_TRUE(isExactly<ConcatVarStrategy>(*c.GetStrategyPtr().lock()));
}

TEST(ConcatVar, NullOutputsAreRefused)
{
    ConcatVar c;
    insertData(c, QStringLiteral("0"), numbers({1}));
    EXPECT_EQ(c.GetValueAt(nullptr, 0), ER_INVALID_ARGUMENT);
    EXPECT_EQ(c.GetValueRange(nullptr, 0, 0), ER_INVALID_ARGUMENT);
    EXPECT_EQ(c.GetElementShape(nullptr), ER_INVALID_ARGUMENT);
}

TEST_F(ThreeAndTwo, TheDataAreNoCellArray)
{
    IsCellArray flag = IsCellArrayTrue;
    c->GetData(&flag);
    EXPECT_EQ(flag, IsCellArrayFalse);
}

TEST_F(ThreeAndTwo, AddsMembersUnderAnotherStrategyToo)
{
    c->SetStrategy<RangeVarStrategy>();
    ASSERT_EQ(c->AddVariable(three), ER_SUCCESS);
    EXPECT_EQ(numberedNames(*c).size(), 3);
    c->SetStrategy<ConcatVarStrategy>();
    EXPECT_EQ(c->GetMaxIndepOffset(), 8u);
}

TEST_F(ConcatVarTest, AMovedFromOneTakesNoMember)
{
    Variable* const x = insertData(top, QStringLiteral("x"), numbers({1}));
    const Variable taker(std::move(static_cast<Variable&>(*c)));
    const std::unique_ptr<ConcatVar> emptied(c); // the taker stands in its place in the tree
    c = nullptr;
    EXPECT_EQ(emptied->AddVariable(x), ER_FAILED);
}

TEST_F(ThreeAndTwo, APlainVariableWithItsStrategyReadsAlike)
{
    auto* const plain = insert(top, std::make_unique<Variable>(QStringLiteral("plain")));
    auto* const strategy = plain->SetStrategy<ConcatVarStrategy>();
    EXPECT_EQ(strategy->AddVariable(three), ER_SUCCESS);
    EXPECT_EQ(strategy->AddVariable(two), ER_SUCCESS);
    EXPECT_EQ(readData(*plain), gotNumbers({0, 1, 2, 10, 11}));
    EXPECT_EQ(readRange(*plain, 2, 4), gotNumbers({2, 10}));
    EXPECT_EQ(readAt(*plain, 5), refused(ER_INVALID_ARGUMENT));
}

TEST_F(ThreeAndTwo, ACloneReadsTheSameMembersOnceItStandsAmongThem)
{
    std::unique_ptr<AbstractProperty> clone(c->Clone());
    auto* const copy = dynamic_cast<ConcatVar*>(clone.get());
    ASSERT_NE(copy, nullptr);
    EXPECT_EQ(copy->GetMaxIndepOffset(), 0u); // its references lead nowhere yet
    EXPECT_EQ(readAt(*copy, 0), refused(ER_FAILED));
    EXPECT_EQ(childText(*copy, QStringLiteral("VariableStrategy")), QStringLiteral("ExplicitDataStrategy"));
    EXPECT_TRUE(isExactly<ConcatVarStrategy>(*copy->GetStrategyPtr().lock()));
    copy->SetName(QStringLiteral("copy"));
    ASSERT_EQ(top.InsertProperty(clone.release()), ER_SUCCESS);
    EXPECT_EQ(readData(*copy), gotNumbers({0, 1, 2, 10, 11}));
    ASSERT_EQ(copy->AddVariable(two), ER_SUCCESS);
    EXPECT_EQ(copy->GetMaxIndepOffset(), 7u);
    EXPECT_EQ(c->GetMaxIndepOffset(), 5u);
}

TEST_F(ConcatVarTest, CopiesHoldClonesOfMembersThatAreThereDirectly)
{
    insertData(*c, QStringLiteral("0"), numbers({1, 2}));
    const ConcatVar constructed(*c);
    ConcatVar assigned;
    insertData(assigned, QStringLiteral("5"), numbers({9}));
    assigned = *c;
    c->GetPtr<Variable>(QStringLiteral("0"))->UpdateData(numbers({7}));
    EXPECT_EQ(readData(constructed), gotNumbers({1, 2}));
    EXPECT_EQ(readData(assigned), gotNumbers({1, 2}));
    EXPECT_EQ(childText(constructed, QStringLiteral("VariableStrategy")),
              QStringLiteral("ExplicitDataStrategy"));
    EXPECT_EQ(readData(*c), gotNumbers({7}));
}

TEST_F(ThreeAndTwo, AStrategyCopiesItselfForAnotherOwner)
{
    ConcatVar other;
    insertData(other, QStringLiteral("0"), numbers({5}));
    const auto copy = c->GetStrategyPtr().lock()->Copy(&other);
    ASSERT_NE(copy, nullptr);
    EXPECT_TRUE(isExactly<ConcatVarStrategy>(*copy));
    EXPECT_EQ(ToDoubles(copy->GetData(nullptr)), Doubles{5});
}

#if defined(__x86_64__) && defined(__GXX_ABI_VERSION)
TEST(ConcatVarStrategy, KeepsTheOrderOfVirtualOperations)
{
    using TestSupport::slotOf;
    EXPECT_EQ(slotOf(&ConcatVarStrategy::GetData), 0);
    EXPECT_EQ(slotOf(&ConcatVarStrategy::UpdateData), 1);
    EXPECT_EQ(slotOf(&ConcatVarStrategy::GetValueAt), 2);
    EXPECT_EQ(slotOf(&ConcatVarStrategy::GetValueRange), 3);
    EXPECT_EQ(slotOf(&ConcatVarStrategy::GetMaxIndepOffset), 4);
    EXPECT_EQ(slotOf(&ConcatVarStrategy::GetElementDimCount), 5);
    EXPECT_EQ(slotOf(&ConcatVarStrategy::GetElementShape), 6);
    EXPECT_EQ(slotOf(&ConcatVarStrategy::Copy), 9);
    EXPECT_EQ(slotOf(&ConcatVarStrategy::GetType), 10);
}
#endif

TEST_F(ConcatVarTest, AHundredThousandMembersAreAddedAndRead)
{
    Variable* const x = insertData(top, QStringLiteral("x"), BVariant(std::vector<std::int32_t>{1, 2}));
    for (int i = 0; i < 100000; ++i)
        ASSERT_EQ(c->AddVariable(x), ER_SUCCESS);
    EXPECT_EQ(numberedNames(*c).last(), QStringLiteral("99999"));
    EXPECT_EQ(c->GetMaxIndepOffset(), 200000u);
    EXPECT_EQ(TestSupport::ToElements<std::int32_t>(readAt(*c, 199999).out), std::vector<std::int32_t>{2});
    const BVariant data = c->GetData();
    EXPECT_EQ(ToDimensions(data), Sizes{200000});
    EXPECT_EQ(TestSupport::ToElements<std::int32_t>(readRange(*c, 99999, 100001).out),
              (std::vector<std::int32_t>{2, 1}));
}

} // namespace
} // namespace Orrery
