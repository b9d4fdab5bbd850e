// When two trees are the same, on each level.
#include "results/PropertyObjectComparator.h"

#include "tests/results/ResultsTestSupport.h"
#include "tests/support/Failures.h"
#include "tests/variables/FunctionVarTestSupport.h"
#include "variables/ExplicitDataVar.h"
#include "variables/FunctionVar.h"
#include "variables/RangeVar.h"

#include <limits>

namespace Orrery {
namespace {

using namespace ResultsTest;
using TestSupport::failureOf;
using TestSupport::runtimeError;

const QString x = QStringLiteral("x");

/// The five answers about two folders, in the order of the operations.
struct Answers
{
    int names;
    int types;
    int values;
    int fields;
    int everything;

    friend bool operator==(const Answers& a, const Answers& b)
    {
        return a.names == b.names && a.types == b.types && a.values == b.values && a.fields == b.fields &&
               a.everything == b.everything;
    }
    friend std::ostream& operator<<(std::ostream& out, const Answers& answers)
    {
        return out << "names " << answers.names << ", types " << answers.types << ", values "
                   << answers.values << ", fields " << answers.fields << ", everything "
                   << answers.everything;
    }
};

Answers compare(const PropertyObject& first, const PropertyObject& second)
{
    PropertyObjectComparator comparator(first, second);
    const Answers answers{comparator.sameNames(), comparator.sameTypes(), comparator.sameValues(),
                          comparator.sameFields(), comparator.sameEverything()};
    EXPECT_EQ(first == second, answers.everything == 1);
    EXPECT_EQ(first != second, answers.everything == 0);
    return answers;
}

constexpr Answers allSame{1, 1, 1, 1, 1};

int sameValues(const PropertyObject& first, const PropertyObject& second)
{
    return PropertyObjectComparator(first, second).sameValues();
}

int sameFields(const PropertyObject& first, const PropertyObject& second)
{
    return PropertyObjectComparator(first, second).sameFields();
}

/// Whether a leaf with one value is the same as one with the other, asked in both orders.
int sameLeaves(const BVariant& a, const BVariant& b)
{
    PropertyObject first;
    PropertyObject second;
    first.SetProperty(x, a);
    second.SetProperty(x, b);
    const int same = sameFields(first, second);
    EXPECT_EQ(sameFields(second, first), same);
    return same;
}

int sameData(const BVariant& a, const BVariant& b)
{
    return sameValues(Variable(x, a), Variable(x, b));
}

// --- names and classes

TEST(Comparison, OfTwoEmptyFoldersOfOneNameFindsThemTheSame)
{
    EXPECT_EQ(compare(PropertyObject(x), PropertyObject(x)), allSame);
    EXPECT_EQ(compare(PropertyObject(), PropertyObject()), allSame);
}

TEST(Comparison, TellsNamesApartExactly)
{
    const PropertyObject folder(QStringLiteral("Run"));
    for (const char* other : {"run", "Run ", "", "Runs"}) {
        EXPECT_EQ(compare(folder, PropertyObject(QString::fromLatin1(other))), (Answers{0, 1, 1, 0, 0}))
            << other;
    }
}

TEST(Comparison, TellsAClassFromTheOneItIsDerivedFrom)
{
    EXPECT_EQ(compare(ResultData(x), ParameterizedResultData(x)), (Answers{1, 0, 1, 0, 0}));
    EXPECT_EQ(compare(ParameterizedResultData(x), ResultData(x)), (Answers{1, 0, 1, 0, 0}));
    EXPECT_EQ(compare(HostData(x), HostData(x)), allSame);
    EXPECT_EQ(compare(HostData(x), ResultData(x)), (Answers{1, 0, 1, 0, 0})); // of one type name
}

TEST(Comparison, DoesNotLookAtFlagsOrPlaces)
{
    PropertyObject top;
    PropertyObject* const placed = insertFolder(top, x);
    placed->SetPropertyFlags(PropertyFlagHidden);
    EXPECT_EQ(compare(*placed, PropertyObject(x)), allSame);
}

// --- values

TEST(ComparedValues, AreTheSameWhereTheTwoAreNotBothVariables)
{
    const Variable variable(x, BVariant(1.0));
    PropertyObject folder(x);
    EXPECT_EQ(compare(variable, folder), (Answers{1, 0, 1, 0, 0}));
    EXPECT_EQ(compare(folder, variable), (Answers{1, 0, 1, 0, 0}));
    PropertyObject other(x);
    folder.SetProperty(x, 1);
    other.SetProperty(x, 2);
    EXPECT_EQ(compare(folder, other), (Answers{1, 1, 1, 0, 0}));
}

TEST(ComparedValues, OfARangeAndOfStoredDataAreTheSame)
{
    ExplicitDataVar stored(x);
    stored.UpdateData(numbers({1, 3, 5}));
    RangeVar range(x);
    range.SetStart(BVariant(1.0));
    range.SetStep(BVariant(2.0));
    range.SetCount(BVariant(3));
    EXPECT_EQ(compare(stored, range), (Answers{1, 0, 1, 0, 0}));
    EXPECT_EQ(compare(range, stored), (Answers{1, 0, 1, 0, 0}));
    range.SetStart(BVariant(2.0));
    EXPECT_EQ(sameValues(stored, range), 0);
}

TEST(ComparedValues, AreComparedThroughConversion)
{
    EXPECT_EQ(sameData(BVariant(3), BVariant(3.0)), 1);
    EXPECT_EQ(sameData(MakeVector<std::int32_t>({1, 2}), MakeVector<double>({1, 2})), 1);
    EXPECT_EQ(sameData(MakeVector<std::int32_t>({1, 2}), MakeVector<double>({1, 2.5})), 0);
}

TEST(ComparedValues, ThatCannotBeConvertedAreDifferentWithoutAnException)
{
    EXPECT_EQ(sameData(BVariant("3"), BVariant(3)), 0);
    EXPECT_EQ(sameData(BVariant("three"), BVariant(3)), 0);
    EXPECT_EQ(sameData(BVariant(3), BVariant("three")), 0);
    EXPECT_EQ(sameLeaves(BVariant("three"), BVariant(3)), 0);
}

TEST(ComparedValues, OfOneContentInOtherShapesAreDifferent)
{
    EXPECT_EQ(sameData(MakeCounting({6}), MakeCounting({2, 3})), 0);
    EXPECT_EQ(sameData(MakeCounting({3}), MakeCounting({1, 3})), 0);
    EXPECT_EQ(sameData(MakeCounting({3}), MakeCounting({4})), 0);
}

TEST(ComparedValues, OfOneContentInOtherOrderingsAreTheSame)
{
    const BVariant rows = MakeCounting({2, 3});
    const BVariant columns = rows.reordered(DataOrdering::ColumnMajor);
    EXPECT_EQ(sameData(rows, columns), 1);
    EXPECT_EQ(sameData(rows, MakeCounting({2, 3}, DataOrdering::ColumnMajor)), 0);
}

TEST(ComparedValues, ThatAreEmptyAreTheSameWhateverTheirType)
{
    EXPECT_EQ(sameData(BVariant(), BVariant()), 1);
    EXPECT_EQ(sameData(BVariant(std::vector<std::int32_t>()), BVariant(std::vector<double>())), 1);
    EXPECT_EQ(sameData(BVariant(), BVariant(std::vector<double>())), 1);
    EXPECT_EQ(sameData(MakeCounting({0, 3}), MakeCounting({0})), 1);
    EXPECT_EQ(sameLeaves(BVariant(), BVariant()), 1);
    EXPECT_EQ(sameLeaves(BVariant(std::vector<std::int32_t>()), BVariant(std::vector<double>())), 1);
    EXPECT_EQ(sameData(BVariant(), BVariant(0.0)), 0);
    EXPECT_EQ(sameData(BVariant(0.0), BVariant()), 0);
}

TEST(ComparedValues, WithANaNAreNeverTheSame)
{
    const BVariant data = numbers({1, std::numeric_limits<double>::quiet_NaN()});
    EXPECT_EQ(sameData(data, data), 0); // the payload is one
    EXPECT_EQ(sameLeaves(data, data), 0);
}

TEST(ComparedValues, LetTheExceptionOfAReadOut)
{
    PropertyObject top;
    auto* const joined = insert(top, std::make_unique<ConcatVar>(x));
    joined->AddVariable(insert(top, std::make_unique<Variable>(QStringLiteral("a"), MakeCounting({2, 2}))));
    joined->AddVariable(insert(top, std::make_unique<Variable>(QStringLiteral("b"), MakeCounting({2, 2}))));
    const Variable plain(x);
    const auto words = runtimeError("appendValues currently supports only vector arguments");
    PropertyObjectComparator comparator(*joined, plain);
    EXPECT_EQ(failureOf([&] { comparator.sameValues(); }), words);
    EXPECT_EQ(failureOf([&] { comparator.sameEverything(); }), words);
    EXPECT_EQ(failureOf([&] { sameValues(plain, *joined); }), words);
    EXPECT_EQ(failureOf([&] { static_cast<void>(*joined == plain); }), words);
    EXPECT_EQ(failureOf([&] { static_cast<void>(*joined != plain); }), words);
    EXPECT_EQ(comparator.sameFields(), 0); // reads no data
    EXPECT_EQ(sameValues(*joined, top), 1);
}

/// A function variable whose measurement puts 1, 2, 3 into it.
class ComputedVariable : public testing::Test
{
protected:
    RegisteredMeasurement measurement{[](HostMeasurement& run) {
        run.target()->UpdateData(numbers({1, 2, 3}), false);
        return run.target();
    }};
    PropertyObject top;
    FunctionVar* computed = insert(top, std::make_unique<FunctionVar>(x));

    ComputedVariable() { measurement.giveTo(*computed); }
};

TEST_F(ComputedVariable, IsBroughtUpToDateForItsValues)
{
    const Variable stored(x, numbers({1, 2, 3}));
    EXPECT_EQ(measurement.runs(), 0);
    EXPECT_EQ(sameValues(stored, *computed), 1);
    EXPECT_EQ(measurement.runs(), 1);
    EXPECT_EQ(childDoubles(*computed, QStringLiteral("Data")), (Doubles{1, 2, 3}));
}

TEST_F(ComputedVariable, IsNotComputedForItsFields)
{
    PropertyObject other;
    measurement.giveTo(*insert(other, std::make_unique<FunctionVar>(x)));
    EXPECT_EQ(sameFields(top, other), 1);
    EXPECT_EQ(sameValues(top, other), 1); // no variables themselves
    EXPECT_EQ(measurement.runs(), 0);
}

// --- fields

TEST(ComparedFields, OfOneThatHasMoreAreThoseOfTheFirstOnly)
{
    const PropertyObject less(x);
    PropertyObject more(x);
    more.SetProperty(QStringLiteral("a"), 1);
    EXPECT_EQ(compare(less, more), allSame);
    EXPECT_EQ(compare(more, less), (Answers{1, 1, 1, 0, 0}));
}

TEST(ComparedFields, AreAsymmetricBelowToo)
{
    PropertyObject less(x);
    PropertyObject more(x);
    insertFolder(less, x);
    insertFolder(*insertFolder(more, x), QStringLiteral("a"));
    EXPECT_EQ(sameFields(less, more), 1);
    EXPECT_EQ(sameFields(more, less), 0);
}

TEST(ComparedFields, AreFoundByNameInBoth)
{
    PropertyObject first;
    PropertyObject second;
    first.SetProperty(QStringLiteral("a"), 1);
    second.SetProperty(QStringLiteral("A"), 1);
    EXPECT_EQ(sameFields(first, second), 0);
}

TEST(ComparedFields, OfNumbersAreTheSameThroughConversion)
{
    EXPECT_EQ(sameLeaves(BVariant(3), BVariant(3.0)), 1);
    EXPECT_EQ(sameLeaves(BVariant(3), BVariant(3.5)), 0);
    EXPECT_EQ(sameLeaves(BVariant("a"), BVariant("a")), 1);
    EXPECT_EQ(sameLeaves(BVariant("a"), BVariant("A")), 0);
}

TEST(ComparedFields, DoNotCountWhetherAnArrayIsACellArray)
{
    Variable plain(x, numbers({1, 2}));
    Variable cells(x);
    cells.UpdateDataAsCellArrayFromBVariant(numbers({1, 2}));
    EXPECT_EQ(compare(plain, cells), allSame);
}

TEST(ComparedFields, OfOneNameAndOfOtherClassesAreDifferent)
{
    PropertyObject value;
    PropertyObject folder;
    PropertyObject variable;
    PropertyObject reference;
    value.SetProperty(x, BVariant());
    insertFolder(folder, x);
    insertVariable(variable, x);
    insert(reference, std::make_unique<PropertyReference>(x));
    const PropertyObject* const kinds[] = {&value, &folder, &variable, &reference};
    for (const PropertyObject* first : kinds) {
        for (const PropertyObject* second : kinds)
            EXPECT_EQ(sameFields(*first, *second), first == second ? 1 : 0);
    }
}

TEST(ComparedFields, TellAClassOfAChildFromTheOneItIsDerivedFrom)
{
    PropertyObject plain;
    PropertyObject stored;
    insertVariable(plain, x);
    insert(stored, std::make_unique<ExplicitDataVar>(x));
    EXPECT_EQ(sameFields(plain, stored), 0);
    EXPECT_EQ(sameFields(stored, plain), 0);
}

TEST(ComparedFields, AreComparedOnEveryLevel)
{
    PropertyObject first;
    PropertyObject second;
    for (PropertyObject* top : {&first, &second}) {
        insertFolder(*insertFolder(*top, QStringLiteral("a")), QStringLiteral("b"))
            ->SetProperty(QStringLiteral("c"), 1);
        insertFolder(*top, QStringLiteral("z"));
    }
    EXPECT_EQ(sameFields(first, second), 1);
    first.GetPtr<PropertyObject>(QStringLiteral("a"))
        ->GetPtr<PropertyObject>(QStringLiteral("b"))
        ->SetProperty(QStringLiteral("c"), 2);
    EXPECT_EQ(compare(first, second), (Answers{1, 1, 1, 0, 0}));
    EXPECT_EQ(sameFields(second, first), 0);
}

TEST(ComparedFields, OfReferencesAreNamesAndClassesOnly)
{
    PropertyObject first;
    PropertyObject second;
    for (PropertyObject* top : {&first, &second}) {
        addData(*top, QStringLiteral("a"), {1});
        addData(*top, QStringLiteral("b"), {2});
    }
    first.SetPropertyRef(x, first.GetPropertyPtr(QStringLiteral("a")));
    second.SetPropertyRef(x, second.GetPropertyPtr(QStringLiteral("b")));
    EXPECT_EQ(sameFields(first, second), 1);
    second.InsertOrReplaceProperty(new ObservablePropertyReference(x));
    EXPECT_EQ(sameFields(first, second), 0);
    EXPECT_EQ(sameFields(second, first), 0);
}

TEST(ComparedFields, OfReferencesThatLeadInACircleEnd)
{
    PropertyObject first;
    first.SetPropertyRef(x, &first);
    PropertyObject second;
    second.SetPropertyRef(x, &second);
    EXPECT_EQ(compare(first, second), allSame);
    EXPECT_EQ(compare(first, first), allSame);
}

TEST(ComparedFields, HoldTheStoredDataOfAVariable)
{
    PropertyObject first;
    PropertyObject second;
    addData(first, x, {1, 2});
    Variable* const other = addData(second, x, {1, 2});
    EXPECT_EQ(compare(first, second), allSame);
    other->UpdateData(numbers({1, 3}));
    EXPECT_EQ(compare(first, second), (Answers{1, 1, 1, 0, 0}));
}

TEST(ComparedFields, OfAConcatenationAreNotItsValues)
{
    PropertyObject first;
    PropertyObject second;
    auto* const one = insert(first, std::make_unique<ConcatVar>(x));
    auto* const two = insert(second, std::make_unique<ConcatVar>(x));
    one->AddVariable(addData(first, QStringLiteral("a"), {1}));
    two->AddVariable(addData(second, QStringLiteral("a"), {2}));
    EXPECT_EQ(compare(*one, *two), (Answers{1, 1, 0, 1, 0}));
}

// --- everything

TEST(Comparison, OfEverythingNeedsBothValuesAndFields)
{
    Variable first(x, numbers({1}));
    EXPECT_EQ(compare(first, Variable(x, numbers({1}))), allSame);
    EXPECT_EQ(compare(first, Variable(x, numbers({2}))), (Answers{1, 1, 0, 0, 0}));
    EXPECT_EQ(compare(first, Variable(QStringLiteral("y"), numbers({1}))), (Answers{0, 1, 1, 0, 0}));
    first.SetProperty(QStringLiteral("note"), 1);
    EXPECT_EQ(compare(first, Variable(x, numbers({1}))), (Answers{1, 1, 1, 0, 0}));
    EXPECT_EQ(compare(Variable(x, numbers({1})), first), allSame);
}

TEST(Comparison, OfAnObjectWithItselfFindsItTheSame)
{
    PropertyObject top(x);
    addMeasured(*addRun(top, QStringLiteral("run")), QStringLiteral("I"), {1, 2}, QStringLiteral("V"),
                {3, 4});
    EXPECT_EQ(compare(top, top), allSame);
    const Variable variable(x, numbers({1, 2}));
    EXPECT_EQ(compare(variable, variable), allSame);
}

TEST(Comparison, OfAVariableWithANaNWithItselfFindsItDifferent)
{
    const Variable variable(x, BVariant(std::numeric_limits<double>::quiet_NaN()));
    EXPECT_EQ(compare(variable, variable), (Answers{1, 1, 0, 0, 0}));
    PropertyObject top;
    insert(top, std::make_unique<Variable>(variable));
    EXPECT_EQ(compare(top, top), (Answers{1, 1, 1, 0, 0})); // through the data that it stores
}

TEST(Comparison, OfATreeWithItsCopyFindsThemTheSame)
{
    PropertyObject top(x);
    auto* const sweep = addSweep(top, QStringLiteral("sweep"));
    addMeasured(*addMember(*sweep, top, QStringLiteral("run")), QStringLiteral("I"), {1, 2},
                QStringLiteral("V"), {3, 4})
        ->SetUnits(Units::FromSIString(QStringLiteral("A")));
    sweep->SetParameterRef(addData(top, QStringLiteral("T"), {1}));
    const PropertyObject copy(top);
    EXPECT_EQ(compare(top, copy), allSame);
    EXPECT_EQ(compare(copy, top), allSame);
    sweep->FindOrCreateResultVar(QStringLiteral("I"));
    EXPECT_EQ(sameFields(copy, top), 1);
    EXPECT_EQ(sameFields(top, copy), 0);
}

TEST(Comparison, OfAComputingVariableWithItsCopyFindsOtherFields)
{
    RangeVar range(x);
    range.SetStart(BVariant(1.0));
    range.SetStep(BVariant(2.0));
    range.SetCount(BVariant(3));
    const std::unique_ptr<AbstractProperty> copy(range.Clone());
    // A copy works as its source does, but says that it is explicit.
    EXPECT_EQ(compare(range, static_cast<Variable&>(*copy)), (Answers{1, 1, 1, 0, 0}));
}

TEST(Comparison, ReachesTheBottomOfTheDeepestTree)
{
    PropertyObject first;
    PropertyObject second;
    PropertyObject* const bottom = addNest(first, PropertyObject::MaxDepth);
    PropertyObject* const otherBottom = addNest(second, PropertyObject::MaxDepth);
    ASSERT_NE(bottom, nullptr);
    ASSERT_NE(otherBottom, nullptr);
    EXPECT_EQ(compare(first, second), allSame);
    bottom->SetProperty(x, 1);
    EXPECT_EQ(sameFields(first, second), 0);
    EXPECT_EQ(sameFields(second, first), 1);
    otherBottom->SetProperty(x, 1.0);
    EXPECT_EQ(compare(first, second), allSame);
}

} // namespace
} // namespace Orrery
