// The values of a parameter, stretched along a concatenation.
#include "variables/SweptVariable.h"

#include "foundations/property/PropertyObjectFactory.h"
#include "foundations/property/PropertyReference.h"
#include "tests/support/VirtualSlot.h"
#include "tests/variables/JoinedVariableTestSupport.h"
#include "tracking/ObservablePropertyReference.h"
#include "variables/ConcatVar.h"
#include "variables/RangeVar.h"

#include <gtest/gtest.h>

namespace Orrery {
namespace {

using namespace JoinTest;

static_assert(sizeof(SweptVariable) == sizeof(Variable), "a sweep adds no fields");
static_assert(sizeof(SweptVarStrategy) == sizeof(IVariableStrategy));

const QString paramName = QStringLiteral("Param");
const QString concatName = QStringLiteral("DependVar");
const Failure noScalar =
    TestSupport::invalidArgument("The given Brindle::Quay::BVariant must hold a scalar value.");
const Failure unknownType = TestSupport::runtimeError("unknown type");

class SweptVariableTest : public testing::Test
{
protected:
    PropertyObject top{QStringLiteral("top")};
    SweptVariable* sweep = insert(top, std::make_unique<SweptVariable>(QStringLiteral("sweep")));
    ConcatVar* c = insert(top, std::make_unique<ConcatVar>(QStringLiteral("c")));

    /// Sweep over this parameter, with members of these lengths.
    Variable* setUp(BVariant parameter, const std::vector<std::uint64_t>& lengths)
    {
        Variable* const variable = insertData(top, QStringLiteral("p"), std::move(parameter));
        setUpWith(variable, lengths);
        return variable;
    }

    HostVariable* setUpHost(const std::vector<std::uint64_t>& lengths)
    {
        HostVariable* const host = insertHost(top, QStringLiteral("p"));
        setUpWith(host, lengths);
        return host;
    }

    void addMember(std::uint64_t length)
    {
        const QString name = numbered("x", m_count++);
        ASSERT_EQ(c->AddVariable(insertData(top, name, MakeCounting({length}))), ER_SUCCESS);
    }

private:
    void setUpWith(const Variable* parameter, const std::vector<std::uint64_t>& lengths)
    {
        EXPECT_EQ(sweep->SetParameter(parameter), ER_SUCCESS);
        EXPECT_EQ(sweep->SetConcatVar(c), ER_SUCCESS);
        for (const std::uint64_t length : lengths)
            addMember(length);
    }

    std::uint64_t m_count = 0;
};

/// A parameter {10, 20} and members of 3 and 2 offsets.
class TenAndTwenty : public SweptVariableTest
{
protected:
    Variable* p = setUp(numbers({10, 20}), {3, 2});
};

// --- what is read

TEST_F(TenAndTwenty, HasAsManyOffsetsAsTheConcatenation)
{
    EXPECT_EQ(sweep->GetMaxIndepOffset(), 5u);
}

TEST_F(TenAndTwenty, EachOffsetHasTheParametersValueOfItsMember)
{
    EXPECT_EQ(readAt(*sweep, 0), readAt(*p, 0));
    EXPECT_EQ(ToDoubles(readAt(*sweep, 0).out), Doubles{10});
    EXPECT_EQ(ToDoubles(readAt(*sweep, 2).out), Doubles{10});
    EXPECT_EQ(ToDoubles(readAt(*sweep, 3).out), Doubles{20});
    EXPECT_EQ(ToDoubles(readAt(*sweep, 4).out), Doubles{20});
    EXPECT_EQ(readAt(*sweep, 5), refused(ER_INVALID_ARGUMENT));
    EXPECT_EQ(readAt(*sweep, largest), refused(ER_INVALID_ARGUMENT));
}

TEST_F(TenAndTwenty, ARunRepeatsEachValueAsOftenAsItsMemberIsLong)
{
    EXPECT_EQ(readRange(*sweep, 0, 0), gotNumbers({10, 10, 10, 20, 20}));
    EXPECT_EQ(readRange(*sweep, 2, 4), gotNumbers({10, 20}));
    EXPECT_EQ(readRange(*sweep, 3, 5), gotNumbers({20, 20}));
    EXPECT_EQ(readRange(*sweep, 1, 0), gotNumbers({10, 10, 20, 20}));
    EXPECT_EQ(readData(*sweep), gotNumbers({10, 10, 10, 20, 20}));
}

TEST_F(TenAndTwenty, AnEndPastTheLastOffsetGivesDefaults)
{
    EXPECT_EQ(readRange(*sweep, 0, 7), gotNumbers({10, 10, 10, 20, 20, 0, 0}));
    EXPECT_EQ(readRange(*sweep, 4, 6), gotNumbers({20, 0}));
    EXPECT_EQ(readRange(*sweep, 5, 8), gotNumbers({0, 0, 0}));
    EXPECT_EQ(readRange(*sweep, 100, 102), gotNumbers({0, 0}));
}

TEST_F(TenAndTwenty, ARunFromAnOffsetToItselfIsEmpty)
{
    EXPECT_EQ(readRange(*sweep, 3, 3), gotNumbers({}));
    EXPECT_EQ(readRange(*sweep, 1, 1), gotNumbers({}));
    EXPECT_EQ(readRange(*sweep, 5, 0), gotNumbers({}));
}

TEST_F(TenAndTwenty, AnEndBeforeTheStartFailsByItsSize)
{
    EXPECT_TRUE(failsByLength(*sweep, 4, 3));
    EXPECT_TRUE(failsByLength(*sweep, 3, 1));
    EXPECT_TRUE(failsByLength(*sweep, 6, 0));
    EXPECT_EQ(TestSupport::Describe(readRange(*sweep, 4, 3).out), TestSupport::Describe(untouched()));
}

TEST_F(TenAndTwenty, MoreElementsThanAnArrayCanHaveFailByTheirSize)
{
    EXPECT_TRUE(failsByLength(*sweep, 0, largest));
}

TEST_F(TenAndTwenty, ElementsAreScalars)
{
    EXPECT_EQ(sweep->GetElementDimCount(), 0u);
    std::vector<std::uint64_t> shape{3};
    EXPECT_EQ(sweep->GetElementShape(&shape), ER_SUCCESS);
    EXPECT_TRUE(shape.empty());
}

TEST_F(TenAndTwenty, NothingIsMarkedOrBound)
{
    const SignalSpies spies(*sweep);
    EXPECT_TRUE(sweep->getDirtyTracker()->isClean());
    EXPECT_TRUE(sweep->getDirtyTracker()->getSources()().empty());
    sweep->SetParameter(p);
    sweep->SetConcatVar(c);
    EXPECT_TRUE(sweep->getDirtyTracker()->isClean());
    EXPECT_EQ(spies.count(), 0);
}

TEST_F(TenAndTwenty, AChangeIsSeenAtTheNextRead)
{
    ASSERT_EQ(readData(*sweep), gotNumbers({10, 10, 10, 20, 20}));
    p->UpdateData(numbers({1, 2, 3}));
    addMember(1);
    EXPECT_TRUE(sweep->getDirtyTracker()->isClean());
    EXPECT_EQ(readData(*sweep), gotNumbers({1, 1, 1, 2, 2, 3}));
}

TEST_F(TenAndTwenty, AnUpdateIsDroppedAndNoReadCleans)
{
    sweep->UpdateData(numbers({99}));
    EXPECT_TRUE(sweep->getDirtyTracker()->isDirty());
    EXPECT_EQ(readData(*sweep), gotNumbers({10, 10, 10, 20, 20}));
    EXPECT_EQ(ToDoubles(readAt(*sweep, 0).out), Doubles{10});
    EXPECT_TRUE(sweep->getDirtyTracker()->isDirty());
    EXPECT_TRUE(sweep->GetPtr<SimpleProperty>(QStringLiteral("Data"))->GetValue().isNull());
}

TEST_F(TenAndTwenty, TheDataAreNoCellArray)
{
    IsCellArray flag = IsCellArrayTrue;
    sweep->GetData(&flag);
    EXPECT_EQ(flag, IsCellArrayFalse);
}

TEST_F(SweptVariableTest, AMemberOfNoLengthUsesUpItsValue)
{
    setUp(numbers({1, 2, 3, 4}), {1, 0, 2, 0});
    EXPECT_EQ(readData(*sweep), gotNumbers({1, 3, 3}));
    EXPECT_EQ(ToDoubles(readAt(*sweep, 1).out), Doubles{3});
}

TEST_F(SweptVariableTest, AFirstMemberOfNoLengthDoesToo)
{
    setUp(numbers({1, 2}), {0, 2});
    EXPECT_EQ(readData(*sweep), gotNumbers({2, 2}));
}

TEST_F(SweptVariableTest, AParameterThatIsTooLongIsNotLookedAtFurther)
{
    setUp(numbers({1, 2, 3}), {2});
    EXPECT_EQ(readData(*sweep), gotNumbers({1, 1}));
}

TEST_F(SweptVariableTest, ARangeServesAsParameter)
{
    auto* const axis = insert(top, std::make_unique<RangeVar>(QStringLiteral("axis")));
    axis->SetStart(0.5);
    axis->SetCount(2);
    setUp(BVariant(), {2, 1});
    ASSERT_EQ(sweep->SetParameter(axis), ER_SUCCESS);
    EXPECT_EQ(readData(*sweep), gotNumbers({0.5, 0.5, 1.5}));
}

TEST_F(SweptVariableTest, AColumnServesAsParameter)
{
    setUp(BVariant(Doubles{1, 2}, {2, 1}), {1, 2});
    EXPECT_EQ(readData(*sweep), gotNumbers({1, 2, 2}));
}

TEST_F(SweptVariableTest, OneElementArraysCountAsScalars)
{
    HostVariable* const p = setUpHost({2, 1});
    p->at = [](BVariant* out, std::uint64_t offset) {
        *out = BVariant(Doubles{static_cast<double>(offset) + 1});
        return ER_SUCCESS;
    };
    EXPECT_EQ(readRange(*sweep, 0, 0), gotNumbers({1, 1, 2}));
    EXPECT_EQ(readAt(*sweep, 2), got(BVariant(Doubles{2})));
}

TEST_F(SweptVariableTest, ASampleOfOneByOneKeepsItsDimensions)
{
    HostVariable* const p = setUpHost({2, 1});
    p->at = [](BVariant* out, std::uint64_t offset) {
        *out = BVariant(Doubles{static_cast<double>(offset) + 1}, {1, 1});
        return ER_SUCCESS;
    };
    EXPECT_EQ(readRange(*sweep, 0, 0), got(BVariant(Doubles{1, 1, 2}, {3, 1, 1})));
    EXPECT_EQ(readRange(*sweep, 1, 5), got(BVariant(Doubles{1, 2, 0, 0}, {4, 1, 1})));
}

template <class T>
class SweepOver : public SweptVariableTest
{
};

TYPED_TEST_SUITE(SweepOver, TestSupport::ElementTypes, TestSupport::ElementTypeName);

TYPED_TEST(SweepOver, GivesTheTypeOfTheParameterWhateverTheMembersHold)
{
    using Samples = TestSupport::Samples<TypeParam>;
    this->setUp(BVariant(std::vector<TypeParam>{Samples::first(), Samples::second(), Samples::other()}),
                {2, 1});
    this->c->AddVariable(insertData(this->top, QStringLiteral("text"), BVariant("text")));
    EXPECT_EQ(readRange(*this->sweep, 0, 0),
              got(BVariant(std::vector<TypeParam>{Samples::first(), Samples::first(), Samples::second(),
                                                  Samples::other()})));
    EXPECT_EQ(
        readRange(*this->sweep, 2, 6),
        got(BVariant(std::vector<TypeParam>{Samples::second(), Samples::other(), TypeParam{}, TypeParam{}})));
}

// --- failures

TEST_F(SweptVariableTest, WithoutParameterOrConcatenationNothingIsRead)
{
    EXPECT_EQ(sweep->GetMaxIndepOffset(), 0u);
    EXPECT_EQ(readAt(*sweep, 0), refused(ER_INVALID_ARGUMENT));
    EXPECT_EQ(readRange(*sweep, 0, 0), refused(ER_INVALID_ARGUMENT));
    EXPECT_EQ(readData(*sweep), got(BVariant()));
}

TEST_F(TenAndTwenty, WithoutAParameterItHasOffsetsWithoutValues)
{
    sweep->DeleteProperty(paramName);
    EXPECT_EQ(sweep->GetMaxIndepOffset(), 5u);
    EXPECT_EQ(readAt(*sweep, 0), refused(ER_INVALID_ARGUMENT));
    EXPECT_EQ(readRange(*sweep, 0, 2), refused(ER_INVALID_ARGUMENT));
    EXPECT_EQ(readRange(*sweep, 4, 2), refused(ER_INVALID_ARGUMENT)); // asked before the size
    EXPECT_EQ(readData(*sweep), got(BVariant()));
}

TEST_F(TenAndTwenty, WithoutAConcatenationItHasNoOffsets)
{
    sweep->DeleteProperty(concatName);
    EXPECT_EQ(sweep->GetMaxIndepOffset(), 0u);
    EXPECT_EQ(readAt(*sweep, 0), refused(ER_INVALID_ARGUMENT));
    EXPECT_EQ(readRange(*sweep, 0, 2), refused(ER_INVALID_ARGUMENT));
    EXPECT_EQ(readData(*sweep), got(BVariant()));
}

TEST_F(TenAndTwenty, APlainVariableWithTheConcatenatingStrategyIsNoConcatenation)
{
    auto* const plain = insert(top, std::make_unique<Variable>(QStringLiteral("plain")));
    plain->SetStrategy<ConcatVarStrategy>()->AddVariable(p);
    ASSERT_EQ(plain->GetMaxIndepOffset(), 2u);
    ASSERT_EQ(sweep->SetConcatVar(plain), ER_SUCCESS);
    EXPECT_EQ(sweep->GetMaxIndepOffset(), 0u);
    EXPECT_EQ(readAt(*sweep, 0), refused(ER_INVALID_ARGUMENT));
    EXPECT_EQ(readRange(*sweep, 0, 1), refused(ER_INVALID_ARGUMENT));
}

TEST_F(TenAndTwenty, AConcatVarWithAnotherStrategyStillShowsItsMembers)
{
    c->SetStrategy<RangeVarStrategy>();
    EXPECT_EQ(sweep->GetMaxIndepOffset(), 0u); // the range has no count
    EXPECT_EQ(ToDoubles(readAt(*sweep, 3).out), Doubles{20});
    EXPECT_EQ(readRange(*sweep, 0, 5), gotNumbers({10, 10, 10, 20, 20}));
}

TEST_F(SweptVariableTest, AnEmptyConcatenationHasNoSample)
{
    setUp(numbers({10}), {});
    EXPECT_EQ(sweep->GetMaxIndepOffset(), 0u);
    EXPECT_EQ(readAt(*sweep, 0), refused(ER_INVALID_ARGUMENT));
    EXPECT_EQ(readRange(*sweep, 0, 0), threw(unknownType));
    EXPECT_EQ(readRange(*sweep, 0, 3), threw(unknownType));
    EXPECT_EQ(readData(*sweep), threw(unknownType)); // GetData hands it on
}

TEST_F(SweptVariableTest, AConcatenationOfNoOffsetsHasNoneEither)
{
    setUp(numbers({10, 20}), {0, 0});
    EXPECT_EQ(readAt(*sweep, 0), refused(ER_INVALID_ARGUMENT));
    EXPECT_EQ(readRange(*sweep, 0, 0), threw(unknownType));
    EXPECT_EQ(readData(*sweep), threw(unknownType));
}

TEST_F(TenAndTwenty, AMemberThatDoesNotResolveLeavesWhatWasFilledBefore)
{
    insertFolder(*c, QStringLiteral("2"));
    addMember(4);
    EXPECT_EQ(sweep->GetMaxIndepOffset(), 9u);
    EXPECT_EQ(ToDoubles(readAt(*sweep, 4).out), Doubles{20}); // not come to
    EXPECT_EQ(readAt(*sweep, 5), refused(ER_FAILED));
    EXPECT_EQ(readRange(*sweep, 0, 6), stopped(ER_FAILED, numbers({10, 10, 10, 20, 20, 0})));
    EXPECT_EQ(readRange(*sweep, 0, 1), stopped(ER_FAILED, MakeVector<double>({10})));
    EXPECT_EQ(readData(*sweep), got(BVariant()));
}

TEST_F(SweptVariableTest, AFirstMemberThatDoesNotResolveLeavesNoSample)
{
    insertFolder(*c, QStringLiteral("0"));
    setUp(numbers({10, 20}), {2});
    EXPECT_EQ(readAt(*sweep, 0), refused(ER_FAILED));
    EXPECT_EQ(readRange(*sweep, 0, 0), threw(unknownType));
}

TEST_F(SweptVariableTest, AParameterThatIsTooShortThrows)
{
    setUp(numbers({10}), {3, 2});
    EXPECT_EQ(readAt(*sweep, 3), refused(ER_FAILED)); // what the parameter itself reports
    EXPECT_EQ(readRange(*sweep, 0, 0), threw(noScalar));
    EXPECT_EQ(readRange(*sweep, 0, 3), gotNumbers({10, 10, 10}));
    EXPECT_EQ(readData(*sweep), threw(noScalar));
}

TEST_F(SweptVariableTest, AParameterOfRowsThrows)
{
    setUp(MakeCounting({2, 3}), {1, 1});
    EXPECT_EQ(ToDoubles(readAt(*sweep, 1).out), (Doubles{3, 4, 5}));
    EXPECT_EQ(readRange(*sweep, 0, 0), threw(noScalar));
    EXPECT_EQ(readRange(*sweep, 1, 1), got(BVariant(Doubles{}, {0, 3}))); // no element is written
}

TEST_F(SweptVariableTest, AParameterOfARunTimeTypeThrows)
{
    HostVariable* const p = setUpHost({2});
    p->at = [](BVariant* out, std::uint64_t) {
        *out = BVariant::runTime(std::pair<int, int>(1, 2));
        return ER_SUCCESS;
    };
    EXPECT_EQ(readAt(*sweep, 1), got(BVariant::runTime(std::pair<int, int>(1, 2))));
    EXPECT_EQ(readRange(*sweep, 0, 0),
              threw(TestSupport::runtimeError("Creating with run-time wellknowntype is not allowed.")));
}

TEST_F(SweptVariableTest, AValueThatDoesNotFitTheSamplesTypeThrows)
{
    HostVariable* const p = setUpHost({1, 1, 1});
    p->at = [](BVariant* out, std::uint64_t offset) {
        const BVariant values[] = {BVariant(std::int8_t{5}), BVariant(7.0), BVariant(1000)};
        *out = values[offset];
        return ER_SUCCESS;
    };
    EXPECT_EQ(readRange(*sweep, 0, 2), got(BVariant(std::vector<std::int8_t>{5, 7})));
    EXPECT_EQ(readRange(*sweep, 0, 3), threw(TestSupport::runtimeError(
                                           "Cannot convert Brindle::Quay::BVariant of type 'int' (size: 1) "
                                           "to 'int8_t'")));
}

TEST_F(SweptVariableTest, AFailureOfTheParameterWithAValueStoresItAndStops)
{
    HostVariable* const p = setUpHost({1, 2, 1});
    p->at = [](BVariant* out, std::uint64_t offset) {
        *out = BVariant(static_cast<double>(offset) + 1);
        return offset == 1 ? ER_NOT_FOUND : ER_SUCCESS;
    };
    EXPECT_EQ(readAt(*sweep, 1), stopped(ER_NOT_FOUND, BVariant(2.0)));
    EXPECT_EQ(readRange(*sweep, 0, 0), stopped(ER_NOT_FOUND, numbers({1, 2, 2, 0})));
}

TEST_F(SweptVariableTest, AFailureOfTheSampleWithAValueGivesDefaultsOfItsType)
{
    HostVariable* const p = setUpHost({2});
    p->at = [](BVariant* out, std::uint64_t) {
        *out = BVariant(std::int16_t{7});
        return ER_ALREADY_EXISTS;
    };
    EXPECT_EQ(readRange(*sweep, 0, 0), stopped(ER_ALREADY_EXISTS, BVariant(std::vector<std::int16_t>{0, 0})));
}

TEST_F(SweptVariableTest, AnExceptionOfTheParameterPasses)
{
    HostVariable* const p = setUpHost({2, 1});
    p->at = [](BVariant* out, std::uint64_t offset) {
        if (offset == 1)
            throw std::out_of_range("no value");
        *out = BVariant(1.0);
        return ER_SUCCESS;
    };
    EXPECT_EQ(readAt(*sweep, 2), threw(TestSupport::outOfRange("no value")));
    EXPECT_EQ(readRange(*sweep, 0, 0), threw(TestSupport::outOfRange("no value")));
    EXPECT_EQ(readRange(*sweep, 0, 2), gotNumbers({1, 1})); // and the next read works
}

TEST_F(SweptVariableTest, TheParameterIsAskedOncePerMemberThatIsTouched)
{
    QStringList asked;
    HostVariable* const p = setUpHost({3, 0, 2, 4});
    p->at = [&asked](BVariant* out, std::uint64_t offset) {
        asked.append(QString::number(offset));
        *out = BVariant(static_cast<double>(offset));
        return ER_SUCCESS;
    };
    EXPECT_EQ(readRange(*sweep, 4, 6), gotNumbers({2, 3}));
    EXPECT_EQ(asked.join(QLatin1Char(' ')), QStringLiteral("0 2 3")); // the sample first
}

TEST_F(SweptVariableTest, MembersAreAskedForTheirLengthOnly)
{
    setUp(numbers({1, 2}), {});
    HostVariable* const host = insertHost(top, QStringLiteral("host"));
    host->count = [] { return std::uint64_t{2}; };
    host->at = [](BVariant*, std::uint64_t) -> ERESULT { throw std::logic_error("read"); };
    host->range = [](BVariant*, std::uint64_t, std::uint64_t) -> ERESULT { throw std::logic_error("read"); };
    ASSERT_EQ(c->AddVariable(host), ER_SUCCESS);
    addMember(1);
    EXPECT_EQ(readRange(*sweep, 0, 0), gotNumbers({1, 1, 2}));
    EXPECT_EQ(ToDoubles(readAt(*sweep, 1).out), Doubles{1});
}

TEST_F(SweptVariableTest, NullOutputsAreRefused)
{
    setUp(numbers({1}), {1});
    EXPECT_EQ(sweep->GetValueAt(nullptr, 0), ER_INVALID_ARGUMENT);
    EXPECT_EQ(sweep->GetValueRange(nullptr, 0, 0), ER_INVALID_ARGUMENT);
    EXPECT_EQ(sweep->GetElementShape(nullptr), ER_INVALID_ARGUMENT);
}

TEST_F(SweptVariableTest, AMemberMayDestroyWhatTheSweepIsComputedFrom)
{
    for (const QString& name : {QStringLiteral("p"), QStringLiteral("c"), QStringLiteral("sweep")}) {
        for (int read = 0; read < 4; ++read) {
            PropertyObject folder(QStringLiteral("folder"));
            auto* const doomed = insert(folder, std::make_unique<SweptVariable>(QStringLiteral("sweep")));
            auto* const joined = insert(folder, std::make_unique<ConcatVar>(QStringLiteral("c")));
            HostVariable* const host = insertHost(folder, QStringLiteral("host"));
            joined->AddVariable(insertData(folder, QStringLiteral("x"), numbers({3})));
            joined->AddVariable(host);
            joined->AddVariable(insertData(folder, QStringLiteral("y"), numbers({4})));
            doomed->SetParameter(insertData(folder, QStringLiteral("p"), numbers({10, 20, 30})));
            doomed->SetConcatVar(joined);
            host->count = [&folder, name] {
                folder.DeleteProperty(name);
                return std::uint64_t{2};
            };
            BVariant out;
            if (read == 0)
                failureOf([&] { doomed->GetData(); });
            else if (read == 1)
                failureOf([&] { doomed->GetValueAt(&out, 3); });
            else if (read == 2)
                failureOf([&] { doomed->GetValueRange(&out, 0, 4); });
            else
                doomed->GetMaxIndepOffset();
            EXPECT_FALSE(folder.HasProperty(name)) << read;
        }
    }
}

TEST_F(SweptVariableTest, AParameterMayDestroyTheSweepThatReadsIt)
{
    for (const QString& name : {QStringLiteral("p"), QStringLiteral("c"), QStringLiteral("sweep")}) {
        PropertyObject folder(QStringLiteral("folder"));
        auto* const doomed = insert(folder, std::make_unique<SweptVariable>(QStringLiteral("sweep")));
        auto* const joined = insert(folder, std::make_unique<ConcatVar>(QStringLiteral("c")));
        HostVariable* const host = insertHost(folder, QStringLiteral("p"));
        joined->AddVariable(insertData(folder, QStringLiteral("x"), numbers({3})));
        joined->AddVariable(insertData(folder, QStringLiteral("y"), numbers({4})));
        doomed->SetParameter(host);
        doomed->SetConcatVar(joined);
        host->at = [&folder, &name](BVariant* out, std::uint64_t) {
            const QString gone = name; // this function may go with the parameter
            *out = BVariant(1.0);
            folder.DeleteProperty(gone);
            return ER_SUCCESS;
        };
        BVariant out;
        const Failure failure = failureOf([&] { doomed->GetValueRange(&out, 0, 0); });
        EXPECT_FALSE(folder.HasProperty(name));
        EXPECT_TRUE(failure == (Failure{"none", ""}) || failure == noScalar) << failure;
    }
}

// --- the two children

TEST_F(TenAndTwenty, BothAreReferences)
{
    EXPECT_TRUE(sweep->GetPropertyPtr(paramName)->IsPropertyReference());
    EXPECT_TRUE(sweep->GetPropertyPtr(concatName)->IsPropertyReference());
    EXPECT_EQ(sweep->GetPtr<PropertyReference>(paramName)->Resolve(), p);
    EXPECT_EQ(sweep->GetPtr<PropertyReference>(concatName)->Resolve(), c);
}

TEST_F(TenAndTwenty, AFormerReferenceIsKeptWhenTheNewOneIsRefused)
{
    const Variable stranger(QStringLiteral("stranger"));
    EXPECT_EQ(sweep->SetParameter(&stranger), ER_INVALID_ARGUMENT);
    EXPECT_EQ(sweep->SetParameter(nullptr), ER_INVALID_ARGUMENT);
    EXPECT_EQ(sweep->SetConcatVar(&stranger), ER_INVALID_ARGUMENT);
    EXPECT_EQ(sweep->SetConcatVar(nullptr), ER_INVALID_ARGUMENT);
    EXPECT_EQ(readData(*sweep), gotNumbers({10, 10, 10, 20, 20}));
}

TEST_F(SweptVariableTest, BothMayBeThereDirectly)
{
    insertData(*sweep, paramName, numbers({1, 2}));
    auto* const inner = insert(*sweep, std::make_unique<ConcatVar>(concatName));
    insertData(*inner, QStringLiteral("0"), numbers({0, 0}));
    insertData(*inner, QStringLiteral("1"), numbers({0}));
    EXPECT_EQ(sweep->GetMaxIndepOffset(), 3u);
    EXPECT_EQ(readData(*sweep), gotNumbers({1, 1, 2}));
}

TEST_F(TenAndTwenty, AValueOrAFolderInTheirPlaceCountsAsNone)
{
    sweep->DeleteProperty(paramName);
    sweep->SetProperty(paramName, numbers({1, 2}));
    EXPECT_EQ(readAt(*sweep, 0), refused(ER_INVALID_ARGUMENT));
    sweep->SetParameter(p);
    ASSERT_EQ(readAt(*sweep, 0).code, ER_SUCCESS);
    sweep->DeleteProperty(concatName);
    insertFolder(*sweep, concatName);
    EXPECT_EQ(readAt(*sweep, 0), refused(ER_INVALID_ARGUMENT));
    EXPECT_EQ(sweep->GetMaxIndepOffset(), 0u);
}

TEST_F(TenAndTwenty, AReferenceToNoVariableCountsAsNone)
{
    ASSERT_EQ(sweep->SetPropertyRef(paramName, &top), ER_SUCCESS);
    EXPECT_EQ(readAt(*sweep, 0), refused(ER_INVALID_ARGUMENT));
    ASSERT_EQ(sweep->SetParameter(p), ER_SUCCESS);
    ASSERT_EQ(sweep->SetPropertyRef(concatName, &top), ER_SUCCESS);
    EXPECT_EQ(readAt(*sweep, 0), refused(ER_INVALID_ARGUMENT));
    EXPECT_EQ(readRange(*sweep, 0, 1), refused(ER_INVALID_ARGUMENT));
}

TEST_F(TenAndTwenty, AParameterThatIsGoneCountsAsNone)
{
    ASSERT_EQ(top.DeleteProperty(QStringLiteral("p")), ER_SUCCESS);
    EXPECT_EQ(readAt(*sweep, 0), refused(ER_INVALID_ARGUMENT));
    EXPECT_EQ(readRange(*sweep, 0, 0), refused(ER_INVALID_ARGUMENT));
    EXPECT_EQ(sweep->GetMaxIndepOffset(), 5u);
}

TEST_F(TenAndTwenty, AParameterThatWaitsForItsTargetCountsAsNone)
{
    const MessageCapture log; // says that it waits
    Variable stranger(QStringLiteral("stranger"), numbers({1, 2}));
    sweep->DeleteProperty(paramName);
    ASSERT_EQ(insertVariableReference(*sweep, paramName, &stranger), ER_SUCCESS);
    ASSERT_EQ(sweep->GetPtr<PropertyReference>(paramName)->Resolve(), &stranger);
    EXPECT_EQ(readAt(*sweep, 0), refused(ER_INVALID_ARGUMENT));
    EXPECT_EQ(readRange(*sweep, 0, 0), refused(ER_INVALID_ARGUMENT));
}

TEST_F(TenAndTwenty, AConcatenationThatWaitsForItsTargetCountsAsNone)
{
    const MessageCapture log;
    ConcatVar stranger(QStringLiteral("stranger"));
    insertData(stranger, QStringLiteral("0"), numbers({1, 2}));
    sweep->DeleteProperty(concatName);
    ASSERT_EQ(insertVariableReference(*sweep, concatName, &stranger), ER_SUCCESS);
    EXPECT_EQ(sweep->GetMaxIndepOffset(), 0u);
    EXPECT_EQ(readAt(*sweep, 0), refused(ER_INVALID_ARGUMENT));
}

TEST_F(TenAndTwenty, AMemberThatWaitsForItsTargetCounts)
{
    const MessageCapture log;
    Variable stranger(QStringLiteral("stranger"), numbers({1, 2}));
    ASSERT_EQ(insertVariableReference(*c, QStringLiteral("2"), &stranger), ER_SUCCESS);
    p->UpdateData(numbers({10, 20, 30}));
    EXPECT_EQ(sweep->GetMaxIndepOffset(), 7u);
    EXPECT_EQ(readRange(*sweep, 4, 0), gotNumbers({20, 30, 30}));
}

/// A host's reference that says it is a Variable too.
class TwofoldReference : public PropertyReference
{
public:
    using PropertyReference::PropertyReference;
    unsigned int GetTypeFlags() const override
    {
        return PropertyTypeFlagReference | PropertyTypeFlagVariable;
    }
};

TEST_F(TenAndTwenty, WhatIsAReferenceIsFollowedWhateverElseItIs)
{
    sweep->DeleteProperty(paramName);
    ASSERT_EQ(insert(*sweep, std::make_unique<TwofoldReference>(paramName))->SetPropertyRef(p), ER_SUCCESS);
    EXPECT_EQ(readData(*sweep), gotNumbers({10, 10, 10, 20, 20}));
}

TEST_F(TenAndTwenty, AVariableThatSaysItIsAReferenceCountsAsNone)
{
    sweep->DeleteProperty(paramName);
    auto host = std::make_unique<HostVariable>(paramName);
    host->UpdateData(numbers({1, 2}));
    host->moreFlags = PropertyTypeFlagReference;
    insert(*sweep, std::move(host));
    EXPECT_EQ(readAt(*sweep, 0), refused(ER_INVALID_ARGUMENT));
}

TEST_F(SweptVariableTest, TheConcatenationIsAskedForItsOffsetsAndItsChildrenForTheRest)
{
    class HostConcat : public ConcatVar
    {
    public:
        using ConcatVar::ConcatVar;
        std::uint64_t GetMaxIndepOffset() const override { return 2; }
    };
    auto* const host = insert(top, std::make_unique<HostConcat>(QStringLiteral("host")));
    setUp(numbers({1, 2}), {});
    insertData(*host, QStringLiteral("0"), numbers({0}));
    insertData(*host, QStringLiteral("1"), numbers({0, 0, 0}));
    ASSERT_EQ(sweep->SetConcatVar(host), ER_SUCCESS);
    EXPECT_EQ(sweep->GetMaxIndepOffset(), 2u);
    EXPECT_EQ(readData(*sweep), gotNumbers({1, 2}));
    EXPECT_EQ(readRange(*sweep, 0, 4), gotNumbers({1, 2, 2, 2}));
    EXPECT_EQ(ToDoubles(readAt(*sweep, 3).out), Doubles{2});
}

// --- the class

TEST(SweptVariable, NamesItselfAndItsStrategyAndHasNoCreator)
{
    const SweptVariable sweep(QStringLiteral("sweep"));
    EXPECT_EQ(sweep.GetName(), QStringLiteral("sweep"));
    EXPECT_EQ(sweep.PropertyObjType(), QStringLiteral("SweptVariable"));
    EXPECT_EQ(SweptVariable::StaticType(), QStringLiteral("SweptVariable"));
    EXPECT_EQ(childText(sweep, QStringLiteral("VariableStrategy")), QStringLiteral("SweptStrategy"));
    EXPECT_EQ(sweep.GetStrategyPtr().lock()->GetType(), QStringLiteral("SweptStrategy"));
    EXPECT_TRUE(isExactly<SweptVarStrategy>(*sweep.GetStrategyPtr().lock()));
    EXPECT_FALSE(PropertyObjectFactory::Instance().IsRegistered(QStringLiteral("SweptVariable")));
}

TEST_F(TenAndTwenty, APlainVariableWithItsStrategyReadsAlike)
{
    auto* const plain = insert(top, std::make_unique<Variable>(QStringLiteral("plain")));
    auto* const strategy = plain->SetStrategy<SweptVarStrategy>();
    EXPECT_EQ(strategy->SetParameter(p), ER_SUCCESS);
    EXPECT_EQ(strategy->SetConcatVar(c), ER_SUCCESS);
    EXPECT_EQ(readData(*plain), gotNumbers({10, 10, 10, 20, 20}));
    EXPECT_EQ(readRange(*plain, 2, 7), gotNumbers({10, 20, 20, 0, 0}));
    EXPECT_EQ(readAt(*plain, 5), refused(ER_INVALID_ARGUMENT));
}

TEST_F(TenAndTwenty, SetsItsChildrenUnderAnotherStrategyToo)
{
    sweep->SetStrategy<RangeVarStrategy>();
    sweep->DeleteProperty(paramName);
    sweep->DeleteProperty(concatName);
    EXPECT_EQ(sweep->SetParameter(p), ER_SUCCESS);
    EXPECT_EQ(sweep->SetConcatVar(c), ER_SUCCESS);
    sweep->SetStrategy<SweptVarStrategy>();
    EXPECT_EQ(readData(*sweep), gotNumbers({10, 10, 10, 20, 20}));
}

TEST_F(TenAndTwenty, AMovedFromOneRefuses)
{
    const Variable taker(std::move(static_cast<Variable&>(*sweep)));
    const std::unique_ptr<SweptVariable> emptied(sweep); // the taker stands in its place in the tree
    sweep = nullptr;
    EXPECT_EQ(emptied->SetParameter(p), ER_FAILED);
    EXPECT_EQ(emptied->SetConcatVar(c), ER_FAILED);
}

TEST_F(TenAndTwenty, ACloneReadsTheSameOnceItStandsThere)
{
    std::unique_ptr<AbstractProperty> clone(sweep->Clone());
    auto* const copy = dynamic_cast<SweptVariable*>(clone.get());
    ASSERT_NE(copy, nullptr);
    EXPECT_EQ(readAt(*copy, 0), refused(ER_INVALID_ARGUMENT)); // its references lead nowhere yet
    EXPECT_EQ(childText(*copy, QStringLiteral("VariableStrategy")), QStringLiteral("ExplicitDataStrategy"));
    EXPECT_TRUE(isExactly<SweptVarStrategy>(*copy->GetStrategyPtr().lock()));
    copy->SetName(QStringLiteral("copy"));
    ASSERT_EQ(top.InsertProperty(clone.release()), ER_SUCCESS);
    EXPECT_EQ(readData(*copy), gotNumbers({10, 10, 10, 20, 20}));
}

TEST_F(SweptVariableTest, CopiesHoldClonesOfWhatIsThereDirectly)
{
    insertData(*sweep, paramName, numbers({1, 2}));
    auto* const inner = insert(*sweep, std::make_unique<ConcatVar>(concatName));
    insertData(*inner, QStringLiteral("0"), numbers({0, 0}));
    const SweptVariable constructed(*sweep);
    SweptVariable assigned;
    assigned = *sweep;
    sweep->GetPtr<Variable>(paramName)->UpdateData(numbers({9}));
    for (const SweptVariable* copy : {&constructed, static_cast<const SweptVariable*>(&assigned)}) {
        EXPECT_EQ(readData(*copy), gotNumbers({1, 1}));
        EXPECT_EQ(childText(*copy, QStringLiteral("VariableStrategy")),
                  QStringLiteral("ExplicitDataStrategy"));
    }
    EXPECT_EQ(readData(*sweep), gotNumbers({9, 9}));
}

TEST_F(TenAndTwenty, AStrategyCopiesItselfForAnotherOwner)
{
    Variable other;
    const auto copy = sweep->GetStrategyPtr().lock()->Copy(&other);
    ASSERT_NE(copy, nullptr);
    EXPECT_TRUE(isExactly<SweptVarStrategy>(*copy));
    EXPECT_EQ(copy->GetMaxIndepOffset(), 0u);
    EXPECT_EQ(&copy->UpdateData(numbers({1}), IsCellArrayFalse), &other);
}

#if defined(__x86_64__) && defined(__GXX_ABI_VERSION)
TEST(SweptVarStrategy, KeepsTheOrderOfVirtualOperations)
{
    using TestSupport::slotOf;
    EXPECT_EQ(slotOf(&SweptVarStrategy::GetData), 0);
    EXPECT_EQ(slotOf(&SweptVarStrategy::UpdateData), 1);
    EXPECT_EQ(slotOf(&SweptVarStrategy::GetValueAt), 2);
    EXPECT_EQ(slotOf(&SweptVarStrategy::GetValueRange), 3);
    EXPECT_EQ(slotOf(&SweptVarStrategy::GetMaxIndepOffset), 4);
    EXPECT_EQ(slotOf(&SweptVarStrategy::GetElementDimCount), 5);
    EXPECT_EQ(slotOf(&SweptVarStrategy::GetElementShape), 6);
    EXPECT_EQ(slotOf(&SweptVarStrategy::Copy), 9);
    EXPECT_EQ(slotOf(&SweptVarStrategy::GetType), 10);
}
#endif

} // namespace
} // namespace Orrery
