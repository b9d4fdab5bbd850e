// When a function variable computes, what it hands to its measurement, and what its tracker is told.
#include "foundations/property/PropertyReference.h"
#include "tests/variables/FunctionVarTestSupport.h"
#include "variables/RangeVarStrategy.h"

#include <gtest/gtest.h>

#include <cmath>

namespace Orrery {
namespace {

using Doubles = std::vector<double>;

const QString argumentsName = QStringLiteral("Arguments");
const QString dataName = QStringLiteral("Data");
const QStringList noLines;

const char* const noArgument = "invalid argument in list; operation is undefined!";
const char* const noData = "no data in GetData()!? invalid/corrupted memory.";

/// What a std::logic_error out of `operation` says; empty if there is none.
template <class Operation>
std::string logicErrorOf(Operation operation)
{
    try {
        operation();
    } catch (const std::logic_error& error) {
        return error.what();
    }
    return {};
}

// --- when it computes

TEST_F(FunctionVarTest, ComputesOnTheFirstReadOnly)
{
    total.giveTo(*f);
    f->AddArgumentRef(x);
    const int before = updatesOf(*f);
    EXPECT_EQ(ToDoubles(f->GetData()), Doubles{1});
    EXPECT_EQ(updatesOf(*f), before + 1);
    EXPECT_TRUE(isClean(*f));
    EXPECT_EQ(ToDoubles(f->GetData()), Doubles{1});
    EXPECT_EQ(updatesOf(*f), before + 1);
    EXPECT_EQ(total.runs(), 1);
    EXPECT_EQ(stored(*f), Doubles{1});
}

TEST_F(FunctionVarTest, ComputesAgainAfterAChangeOfAnArgument)
{
    setUpAndRead();
    x->UpdateData(numbers({2, 3}));
    EXPECT_TRUE(isDirty(*f));
    EXPECT_TRUE(isDirty(*x));
    const int updatesOfX = updatesOf(*x);
    EXPECT_EQ(ToDoubles(f->GetData()), Doubles{15});
    EXPECT_EQ(total.runs(), 2);
    EXPECT_TRUE(isClean(*x));
    EXPECT_EQ(updatesOf(*x), updatesOfX + 1);
    EXPECT_TRUE(isClean(*f));
}

TEST_F(FunctionVarTest, ComputesAgainAfterANewParameter)
{
    setUpAndRead();
    f->GetFunction()->SetParameters({BVariant(0.5)});
    EXPECT_TRUE(isDirty(*f));
    EXPECT_EQ(ToDoubles(f->GetData()), Doubles{11.5});
    f->GetFunction()->SetParameters({});
    EXPECT_EQ(ToDoubles(f->GetData()), Doubles{11});
    EXPECT_EQ(total.runs(), 3);
}

TEST_F(FunctionVarTest, ComputesAgainAfterANewNameOfItsFunction)
{
    setUpAndRead();
    const RegisteredMeasurement other([](HostMeasurement& run) {
        run.target()->UpdateData(numbers({-1}));
        return run.target();
    });
    ASSERT_EQ(f->GetFunction()->SetFunctionName(other.name()), ER_SUCCESS);
    EXPECT_TRUE(isDirty(*f));
    EXPECT_EQ(ToDoubles(f->GetData()), Doubles{-1});
}

TEST_F(FunctionVarTest, ComputesAgainAfterANewFunctionOrArgument)
{
    setUpAndRead();
    total.giveTo(*f, {BVariant(100.0)});
    EXPECT_EQ(ToDoubles(f->GetData()), Doubles{111});
    ASSERT_EQ(f->AddArgumentRef(y), ER_SUCCESS);
    EXPECT_EQ(ToDoubles(f->GetData()), Doubles{121});
}

TEST_F(FunctionVarTest, ComputesOnceAfterManyChanges)
{
    setUpAndRead();
    for (int i = 0; i < 10; ++i)
        x->UpdateData(BVariant(double(i)));
    EXPECT_EQ(ToDoubles(f->GetData()), Doubles{19});
    EXPECT_EQ(total.runs(), 2);
}

TEST_F(FunctionVarTest, LosesDataOfAHostAtTheNextRead)
{
    setUpAndRead();
    EXPECT_EQ(&f->UpdateData(numbers({77})), f);
    EXPECT_EQ(stored(*f), Doubles{77});
    EXPECT_TRUE(isDirty(*f));
    EXPECT_EQ(ToDoubles(f->GetData()), Doubles{11});
    EXPECT_EQ(stored(*f), Doubles{11});
}

TEST_F(FunctionVarTest, IsComputedByPolynomialsWhichHandTheirInputOn)
{
    for (const char* name : {"polynomial-1", "polynomial-2", "polynomial-3"}) {
        auto function = std::make_unique<Function>(QString::fromLatin1(name));
        ASSERT_NE(function->GetMeasurement(), nullptr);
        function->SetParameters({BVariant(1.0), BVariant(2.0), BVariant(3.0), BVariant(4.0)});
        auto* g = insert(top, std::make_unique<FunctionVar>(QString::fromLatin1(name)));
        ASSERT_EQ(g->SetFunction(function.get()), ER_SUCCESS);
        function.release();
        ASSERT_EQ(g->AddArgumentRef(x), ER_SUCCESS);
        ASSERT_EQ(g->AddArgumentRef(y), ER_SUCCESS); // only the first one counts
        x->UpdateData(MakeCounting({2, 3}));
        IsCellArray flag = IsCellArrayTrue;
        const BVariant data = g->GetData(&flag);
        EXPECT_TRUE(Brindle::Quay::exactlyEqual(data, MakeCounting({2, 3})));
        EXPECT_EQ(flag, IsCellArrayFalse);
        EXPECT_EQ(updatesOf(*g), 1);
    }
}

// --- what the measurement gets

TEST_F(RunTest, GivesArgumentsInTheirOrderItselfAsOutputAndThePresentParameters)
{
    Variable* y = insertVariable(top, QStringLiteral("y"));
    QList<Variable*> stack;
    Variable* output = nullptr;
    double parameter = 0;
    Function* function = measure([&](HostMeasurement& run) {
        stack = run.get_stack();
        output = run.target();
        parameter = run.parameter(0);
        return run.target();
    });
    f->AddArgumentRef(y);
    f->AddArgumentRef(x);
    function->SetParameters({BVariant(4.5)});
    f->GetData();
    EXPECT_EQ(stack, (QList<Variable*>{x, y, x}));
    EXPECT_EQ(output, f);
    EXPECT_EQ(parameter, 4.5);
}

TEST_F(RunTest, RunsACloneAndLeavesItsPatternsAlone)
{
    const HostMeasurement* ran = nullptr;
    const Function* function = measure([&ran](HostMeasurement& run) {
        ran = &run;
        return run.target();
    });
    f->GetData();
    EXPECT_NE(ran, measurement->pattern());
    EXPECT_NE(ran, function->GetMeasurement());
    EXPECT_TRUE(function->GetMeasurement()->get_stack().isEmpty());
    EXPECT_TRUE(measurement->pattern()->get_stack().isEmpty());
    EXPECT_EQ(static_cast<const HostMeasurement*>(function->GetMeasurement())->target(), nullptr);
}

TEST_F(RunTest, KeepsTheWorkingCloneOfEachRunAndDestroysTheProbe)
{
    measure([](HostMeasurement& run) { return run.target(); });
    const int before = measurement->census().measurements;
    for (int i = 1; i <= 3; ++i) {
        x->UpdateData(numbers({1}));
        f->GetData();
        EXPECT_EQ(measurement->census().measurements, before + i);
        EXPECT_EQ(measurement->census().probes, 0);
    }
}

TEST_F(RunTest, RunsWithAnEmptyStackWhereThereIsNoArgument)
{
    int size = -1;
    RegisteredMeasurement counting([&size](HostMeasurement& run) {
        size = run.get_stack().size();
        return run.target();
    });
    counting.giveTo(*f);
    f->GetData(); // without a folder
    EXPECT_EQ(size, 0);

    size = -1;
    ASSERT_EQ(f->SetProperty(argumentsName, 1.0), ER_SUCCESS); // a value in its place
    counting.giveTo(*f);
    f->GetData();
    EXPECT_EQ(size, 0);
}

TEST_F(RunTest, TakesAVariableStandingInTheFolderOfArguments)
{
    measure(&storeTotal);
    auto* folder = f->GetPtr<PropertyObject>(argumentsName);
    auto* inside = insert(*folder, std::make_unique<Variable>(QStringLiteral("1"), numbers({5})));
    EXPECT_EQ(ToDoubles(f->GetData()), Doubles{6});
    EXPECT_TRUE(isClean(*inside));
    inside->UpdateData(numbers({6}));
    EXPECT_TRUE(isClean(*f)); // it was never bound
}

TEST_F(RunTest, PassesChildrenWithoutANumberOver)
{
    measure(&storeTotal);
    auto* folder = f->GetPtr<PropertyObject>(argumentsName);
    ASSERT_EQ(folder->SetProperty(QStringLiteral("note"), 1.0), ER_SUCCESS);
    EXPECT_EQ(ToDoubles(f->GetData()), Doubles{1});
}

TEST_F(RunTest, SignalsTheChangeOnceFromWithinTheComputation)
{
    int heard = 0;
    bool wasUpdating = false;
    measure(&storeTotal);
    ConnectedClient client(*f);
    client.onUpdate = [&] {
        ++heard;
        wasUpdating = isUpdating(*f);
    };
    f->GetData();
    EXPECT_EQ(heard, 1);
    EXPECT_TRUE(wasUpdating);
    f->GetData();
    EXPECT_EQ(heard, 1);
}

TEST_F(RunTest, StaysUpdatingThroughItsOwnUpdates)
{
    std::vector<int> states;
    measure([&states](HostMeasurement& run) {
        const auto tracker = run.target()->getDirtyTracker();
        states.push_back(tracker->getDirtyState());
        run.target()->UpdateData(numbers({1}));
        states.push_back(tracker->getDirtyState());
        run.target()->UpdateData(numbers({2}), false);
        states.push_back(tracker->getDirtyState());
        return run.target();
    });
    EXPECT_EQ(ToDoubles(f->GetData()), Doubles{2});
    EXPECT_EQ(states, (std::vector<int>{1, 1, 1}));
    EXPECT_TRUE(isClean(*f));
}

TEST_F(RunTest, KeepsTheFlagThatTheMeasurementStores)
{
    measure(
        [](HostMeasurement& run) { return &run.target()->UpdateDataAsCellArrayFromBVariant(numbers({1})); });
    IsCellArray flag = IsCellArrayFalse;
    f->GetData(&flag);
    EXPECT_EQ(flag, IsCellArrayTrue);
    EXPECT_EQ(ToDoubles(f->GetData(nullptr)), Doubles{1});
}

TEST_F(RunTest, MayStoreNothing)
{
    f->UpdateData(numbers({3}));
    measure([](HostMeasurement& run) { return run.target(); });
    EXPECT_EQ(ToDoubles(f->GetData()), Doubles{3});
    EXPECT_EQ(measurement->runs(), 1);
    EXPECT_TRUE(isClean(*f));
}

// --- what the trackers are told

TEST_F(RunTest, BringsADirtyArgumentUpToDateBeforeTheRun)
{
    std::vector<bool> clean;
    measure([&clean](HostMeasurement& run) {
        clean.push_back(isClean(*run.argument(0)));
        return run.target();
    });
    ASSERT_TRUE(isDirty(*x));
    const int updates = updatesOf(*x);
    f->GetData();
    EXPECT_EQ(updatesOf(*x), updates + 1);
    EXPECT_EQ(clean, std::vector<bool>{true});

    f->GetFunction()->SetParameters({});
    f->GetData();
    EXPECT_EQ(updatesOf(*x), updates + 1); // a clean one is left alone
}

TEST_F(FunctionVarTest, CleansAnArgumentThatComputesFromOffsets)
{
    auto* range = x->SetStrategy<RangeVarStrategy>();
    range->SetStart(BVariant(2.0));
    range->SetCount(BVariant(std::uint64_t(3)));
    x->UpdateData(BVariant()); // dropped, but it marks
    ASSERT_TRUE(isDirty(*x));
    total.giveTo(*f);
    f->AddArgumentRef(x);
    EXPECT_EQ(ToDoubles(f->GetData()), Doubles{9});
    EXPECT_TRUE(isClean(*x));
}

// The outer computation sets an argument to updating before it asks for its data.
TEST_F(FunctionVarTest, RunsOnTheStoredDataOfAnInnerOneAndMarksThatCleanUncomputed)
{
    const RegisteredMeasurement doubled([](HostMeasurement& run) {
        run.target()->UpdateData(BVariant(2 * ToDoubles(run.argument(0)->GetData()).at(0)));
        return run.target();
    });
    auto* inner = insert(top, std::make_unique<FunctionVar>(QStringLiteral("inner")));
    doubled.giveTo(*inner);
    ASSERT_EQ(inner->AddArgumentRef(x), ER_SUCCESS);
    inner->UpdateData(numbers({50}));
    total.giveTo(*f);
    ASSERT_EQ(f->AddArgumentRef(inner), ER_SUCCESS);

    ASSERT_TRUE(isDirty(*inner));
    EXPECT_EQ(ToDoubles(f->GetData()), Doubles{50});
    EXPECT_EQ(doubled.runs(), 0);
    EXPECT_TRUE(isClean(*inner));
    EXPECT_EQ(updatesOf(*inner), 1);
    EXPECT_EQ(ToDoubles(inner->GetData()), Doubles{50}); // and so stays what it was
    EXPECT_EQ(doubled.runs(), 0);

    x->UpdateData(numbers({4}));
    EXPECT_TRUE(isDirty(*inner));
    EXPECT_TRUE(isDirty(*f));
    EXPECT_EQ(ToDoubles(inner->GetData()), Doubles{8}); // read separately first
    EXPECT_EQ(ToDoubles(f->GetData()), Doubles{8});
    EXPECT_EQ(doubled.runs(), 1);
}

TEST_F(RunTest, EndsCleanThoughASourceGoesDirtyDuringTheRun)
{
    bool dirtyInside = false;
    measure([this, &dirtyInside](HostMeasurement& run) {
        run.argument(0)->UpdateData(numbers({2}));
        dirtyInside = isDirty(*f);
        return run.target();
    });
    f->GetData();
    EXPECT_TRUE(dirtyInside);
    EXPECT_TRUE(isClean(*f));
    EXPECT_TRUE(isDirty(*x));
    f->GetData();
    EXPECT_EQ(measurement->runs(), 1);

    // x is dirty already; its next change tells the variable all the same.
    x->UpdateData(numbers({3}));
    EXPECT_TRUE(isDirty(*f));
}

TEST_F(RunTest, IsTheOnlyOneWhoseTrackerSaysUpdating)
{
    std::vector<int> states;
    measure([&](HostMeasurement& run) {
        states = {f->getDirtyTracker()->getDirtyState(), x->getDirtyTracker()->getDirtyState()};
        return run.target();
    });
    f->GetData();
    EXPECT_EQ(states, (std::vector<int>{1, 0}));
}

TEST_F(RunTest, ReturnsTheStoredValueToReadsDuringTheRun)
{
    f->UpdateData(numbers({7}));
    Doubles inside;
    measure([&inside](HostMeasurement& run) {
        inside = ToDoubles(run.target()->GetData());
        run.target()->UpdateData(numbers({8}));
        inside.push_back(ToDoubles(run.target()->GetData()).at(0));
        return run.target();
    });
    EXPECT_EQ(ToDoubles(f->GetData()), Doubles{8});
    EXPECT_EQ(inside, (Doubles{7, 8}));
    EXPECT_EQ(measurement->runs(), 1);
}

// --- nothing to compute with

TEST_F(FunctionVarTest, WithoutAFunctionReturnsWhatIsStoredAndEndsClean)
{
    f->UpdateData(numbers({5}));
    f->AddArgumentRef(x);
    x->GetData();
    x->UpdateData(numbers({2}));
    const int updates = updatesOf(*f);
    const MessageCapture log;
    EXPECT_EQ(ToDoubles(f->GetData()), Doubles{5});
    EXPECT_TRUE(isClean(*f));
    EXPECT_EQ(updatesOf(*f), updates + 1);
    EXPECT_TRUE(isDirty(*x)); // not even looked at
    EXPECT_EQ(log.warnings(), noLines);
    EXPECT_EQ(log.debug(), noLines);
}

TEST_F(FunctionVarTest, WithAValueForAFunctionReturnsWhatIsStored)
{
    f->UpdateData(numbers({5}));
    ASSERT_EQ(f->SetProperty(QStringLiteral("Function"), QStringLiteral("polynomial-1")), ER_SUCCESS);
    EXPECT_EQ(ToDoubles(f->GetData()), Doubles{5});
    EXPECT_TRUE(isClean(*f));
}

TEST_F(FunctionVarTest, WithAFunctionOfAnUnknownNameReturnsWhatIsStoredAndTellsOnce)
{
    auto function = std::make_unique<Function>(QStringLiteral("no such measurement"));
    function->SetParameters({});
    ASSERT_EQ(f->SetFunction(function.get()), ER_SUCCESS);
    function.release();
    f->AddArgumentRef(x);
    f->UpdateData(numbers({5}));
    const MessageCapture log;
    EXPECT_EQ(ToDoubles(f->GetData()), Doubles{5});
    EXPECT_TRUE(isClean(*f));
    EXPECT_EQ(log.debug().size(), 1);
    EXPECT_EQ(log.warnings(), noLines);
}

TEST_F(FunctionVarTest, WithADefaultFunctionReturnsWhatIsStored)
{
    auto function = std::make_unique<Function>();
    function->SetParameters({});
    ASSERT_EQ(f->SetFunction(function.get()), ER_SUCCESS);
    function.release();
    f->UpdateData(numbers({5}));
    EXPECT_EQ(ToDoubles(f->GetData()), Doubles{5});
    EXPECT_TRUE(isClean(*f));
}

// --- arguments that are none

struct ArgumentCase
{
    const char* name;
    void (*put)(PropertyObject& arguments, PropertyObject& top);
};

class BadArgument : public FunctionVarTest, public testing::WithParamInterface<ArgumentCase>
{
protected:
    /// f = x + what the case puts behind it, clean, with 5 stored.
    void SetUp() override
    {
        f->UpdateData(numbers({5}));
        ASSERT_EQ(ToDoubles(f->GetData()), Doubles{5});
        ASSERT_EQ(f->AddArgumentRef(x), ER_SUCCESS);
        GetParam().put(*f->GetPtr<PropertyObject>(argumentsName), top);
        total.giveTo(*f);
    }
};

TEST_P(BadArgument, EscapesTheReadAndLeavesTheVariableUpdating)
{
    const MessageCapture log;
    const int updates = updatesOf(*f);
    EXPECT_EQ(logicErrorOf([this] { f->GetData(); }), noArgument);
    EXPECT_TRUE(isUpdating(*f));
    EXPECT_EQ(updatesOf(*f), updates + 1);
    EXPECT_EQ(total.runs(), 0);
    EXPECT_EQ(total.census().probes, 0);
    EXPECT_TRUE(isClean(*x)); // the arguments before it were brought up to date
    EXPECT_EQ(log.warnings(), noLines);
    EXPECT_EQ(log.debug(), noLines);
}

TEST_P(BadArgument, IsNotTriedAgainUntilASourceGoesDirty)
{
    EXPECT_EQ(logicErrorOf([this] { f->GetData(); }), noArgument);
    const int updates = updatesOf(*f);
    EXPECT_EQ(ToDoubles(f->GetData()), Doubles{5});
    EXPECT_EQ(f->GetMaxIndepOffset(), 1u);
    EXPECT_TRUE(isUpdating(*f));
    EXPECT_EQ(updatesOf(*f), updates);

    f->UpdateData(numbers({6})); // stored, but no mark gets through to an updating one
    EXPECT_EQ(ToDoubles(f->GetData()), Doubles{6});
    EXPECT_TRUE(isUpdating(*f));

    x->UpdateData(numbers({2}));
    EXPECT_TRUE(isDirty(*f));
    EXPECT_EQ(logicErrorOf([this] { f->GetData(); }), noArgument);
    f->GetFunction()->SetParameters({});
    f->DeleteArguments();
    EXPECT_EQ(ToDoubles(f->GetData()), Doubles{0});
    EXPECT_TRUE(isClean(*f));
}

const QString nine = QStringLiteral("9");

INSTANTIATE_TEST_SUITE_P(
    Kinds, BadArgument,
    testing::Values(
        ArgumentCase{"Value",
                     [](PropertyObject& arguments, PropertyObject&) { arguments.SetProperty(nine, 1.0); }},
        ArgumentCase{"Folder",
                     [](PropertyObject& arguments, PropertyObject&) { insertFolder(arguments, nine); }},
        ArgumentCase{"UnsetReference",
                     [](PropertyObject& arguments, PropertyObject&) {
                         insert(arguments, std::make_unique<PropertyReference>(nine));
                     }},
        ArgumentCase{"PathToNowhere",
                     [](PropertyObject& arguments, PropertyObject&) {
                         insert(arguments, std::make_unique<PropertyReference>(nine))
                             ->RestorePath(QStringLiteral("../../../gone"));
                     }},
        ArgumentCase{"ReferenceToAFolder", [](PropertyObject& arguments,
                                              PropertyObject& top) { arguments.SetPropertyRef(nine, &top); }},
        ArgumentCase{"ReferenceToADestroyedVariable",
                     [](PropertyObject& arguments, PropertyObject& top) {
                         arguments.SetPropertyRef(nine, insertVariable(top, QStringLiteral("short")));
                         top.DeleteProperty(QStringLiteral("short"));
                     }}),
    [](const auto& test) { return std::string(test.param.name); });

struct ReadCase
{
    const char* name;
    void (*read)(const Variable& variable);
};

class EveryRead : public FunctionVarTest, public testing::WithParamInterface<ReadCase>
{
};

TEST_P(EveryRead, StartsAComputation)
{
    total.giveTo(*f);
    f->AddArgumentRef(x);
    GetParam().read(*f);
    EXPECT_EQ(total.runs(), 1);
    EXPECT_TRUE(isClean(*f));
    EXPECT_EQ(stored(*f), Doubles{1});
    GetParam().read(*f);
    EXPECT_EQ(total.runs(), 1);
}

TEST_P(EveryRead, LetsTheErrorOfAnArgumentEscape)
{
    total.giveTo(*f);
    f->AddArgumentRef(x);
    top.DeleteProperty(QStringLiteral("x"));
    EXPECT_EQ(logicErrorOf([this] { GetParam().read(*f); }), noArgument);
    EXPECT_TRUE(isUpdating(*f));
    EXPECT_EQ(logicErrorOf([this] { GetParam().read(*f); }), "");
}

TEST_P(EveryRead, LetsTheErrorOfMissingDataEscape)
{
    ASSERT_EQ(f->DeleteProperty(dataName), ER_SUCCESS);
    EXPECT_EQ(logicErrorOf([this] { GetParam().read(*f); }), noData);
    EXPECT_TRUE(isClean(*f));
}

INSTANTIATE_TEST_SUITE_P(
    Operations, EveryRead,
    testing::Values(ReadCase{"GetData", [](const Variable& f) { f.GetData(); }},
                    ReadCase{"GetMaxIndepOffset", [](const Variable& f) { f.GetMaxIndepOffset(); }},
                    ReadCase{"GetElementDimCount", [](const Variable& f) { f.GetElementDimCount(); }},
                    ReadCase{"GetElementShape",
                             [](const Variable& f) {
                                 std::vector<std::uint64_t> shape;
                                 f.GetElementShape(&shape);
                             }},
                    ReadCase{"GetValueAt",
                             [](const Variable& f) {
                                 BVariant out;
                                 f.GetValueAt(&out, 0);
                             }},
                    ReadCase{"GetValueRange",
                             [](const Variable& f) {
                                 BVariant out;
                                 f.GetValueRange(&out, 0, 0);
                             }}),
    [](const auto& test) { return std::string(test.param.name); });

// --- "Data" that is no value

TEST_F(FunctionVarTest, WithoutAValueForItsDataIsCorrupt)
{
    ASSERT_EQ(f->DeleteProperty(dataName), ER_SUCCESS);
    insertFolder(*f, dataName);
    EXPECT_EQ(logicErrorOf([this] { f->GetData(); }), noData);
    EXPECT_TRUE(isClean(*f)); // the look-up comes behind the update
    EXPECT_EQ(logicErrorOf([this] { f->GetData(); }), noData);
}

TEST_F(FunctionVarTest, ThatComputesMendsItsData)
{
    total.giveTo(*f);
    f->AddArgumentRef(x);
    ASSERT_EQ(f->DeleteProperty(dataName), ER_SUCCESS);
    insertFolder(*f, dataName);
    EXPECT_EQ(ToDoubles(f->GetData()), Doubles{1});
    EXPECT_TRUE(f->GetPropertyPtr(dataName)->IsSimpleProperty());
}

// --- measurements that fail

/// An error of a host with a name of its own.
struct HostError : std::runtime_error
{
    using std::runtime_error::runtime_error;
};

TEST_F(RunTest, LogsAnExceptionOfTheMeasurementAndKeepsWhatIsStored)
{
    measure([](HostMeasurement&) -> Variable* { throw HostError("boom %1 \"x\""); });
    f->UpdateData(numbers({5}));
    const MessageCapture log;
    EXPECT_EQ(ToDoubles(f->GetData()), Doubles{5});
    EXPECT_TRUE(isClean(*f));
    EXPECT_EQ(log.warnings(), noLines);
    ASSERT_EQ(log.debug().size(), 1);
    const QString line = log.debug().first();
    const QString start = QStringLiteral("Error in ") +
                          QStringLiteral("Orrery::FunctionVarStrategy::Compute") + QStringLiteral(", ") +
                          QStringLiteral("boom %1 \"x\"") + QStringLiteral("\n");
    EXPECT_TRUE(line.startsWith(start)) << line.toStdString();
    EXPECT_TRUE(line.mid(start.size()).contains(QStringLiteral("HostError"))) << line.toStdString();
    EXPECT_EQ(measurement->census().probes, 0);

    EXPECT_EQ(ToDoubles(f->GetData()), Doubles{5}); // clean, so no second attempt
    EXPECT_EQ(measurement->runs(), 1);
    x->UpdateData(numbers({2}));
    f->GetData();
    EXPECT_EQ(measurement->runs(), 2);
}

TEST_F(RunTest, KeepsWhatTheMeasurementStoredBeforeItFailed)
{
    measure([](HostMeasurement& run) -> Variable* {
        run.target()->UpdateData(numbers({9}));
        throw std::runtime_error("late");
    });
    const MessageCapture log;
    EXPECT_EQ(ToDoubles(f->GetData()), Doubles{9});
    EXPECT_EQ(log.debug().size(), 1);
}

TEST_F(RunTest, LetsWhatIsNoStandardExceptionPassThrough)
{
    bool failing = true;
    Function* function = measure([&failing](HostMeasurement& run) {
        if (failing)
            throw 42;
        return storeTotal(run);
    });
    f->UpdateData(numbers({5}));
    const MessageCapture log;
    EXPECT_THROW(f->GetData(), int);
    EXPECT_TRUE(isUpdating(*f));
    EXPECT_EQ(measurement->census().probes, 0);
    EXPECT_EQ(ToDoubles(f->GetData()), Doubles{5});
    EXPECT_EQ(measurement->runs(), 1);
    EXPECT_EQ(log.debug(), noLines);

    failing = false;
    function->SetParameters({});
    EXPECT_EQ(ToDoubles(f->GetData()), Doubles{1});
    EXPECT_TRUE(isClean(*f));
}

TEST_F(FunctionVarTest, WithAPolynomialWithoutParametersLogsAndKeepsWhatIsStored)
{
    Function* function = new Function(QStringLiteral("polynomial-1"));
    ASSERT_EQ(f->SetFunction(function), ER_SUCCESS);
    f->AddArgumentRef(x);
    f->UpdateData(numbers({5}));
    const MessageCapture log;
    EXPECT_EQ(ToDoubles(f->GetData()), Doubles{5});
    EXPECT_TRUE(isClean(*f));
    ASSERT_EQ(log.debug().size(), 2);
    EXPECT_EQ(log.debug().first(),
              QStringLiteral("Orrery::Function::GetParameters tries to get parameters on "
                             "invalid Property* param_group"));
    EXPECT_TRUE(log.debug().last().startsWith(
        QStringLiteral("Error in Orrery::FunctionVarStrategy::Compute, invalid vector subscript\n")));
    EXPECT_TRUE(log.debug().last().contains(QStringLiteral("out_of_range")));
    EXPECT_EQ(log.warnings(), noLines);
}

TEST_F(FunctionVarTest, WithAPolynomialWithoutArgumentsLogsAndKeepsWhatIsStored)
{
    auto* function = new Function(QStringLiteral("polynomial-1"));
    function->SetParameters({BVariant(0.0), BVariant(1.0)});
    ASSERT_EQ(f->SetFunction(function), ER_SUCCESS);
    f->UpdateData(numbers({5}));
    const MessageCapture log;
    EXPECT_EQ(ToDoubles(f->GetData()), Doubles{5});
    EXPECT_TRUE(isClean(*f));
    ASSERT_EQ(log.debug().size(), 1);
    EXPECT_TRUE(
        log.debug().first().startsWith(QStringLiteral("Error in Orrery::FunctionVarStrategy::Compute, ")));
    EXPECT_TRUE(log.debug().first().contains(QStringLiteral("invalid_argument")));
}

// --- probes that return something else

TEST_F(RunTest, MovesTheChildrenOfAnotherVariableThatComesBack)
{
    Variable other(QStringLiteral("other"), numbers({1, 2, 3}));
    ASSERT_EQ(other.SetProperty(QStringLiteral("Note"), QStringLiteral("new")), ER_SUCCESS);
    const AbstractProperty* otherData = other.GetPropertyPtr(dataName);
    measure([&other](HostMeasurement&) { return &other; });
    f->UpdateData(numbers({5}));
    ASSERT_EQ(f->SetProperty(QStringLiteral("Note"), QStringLiteral("old")), ER_SUCCESS);
    ASSERT_EQ(f->SetProperty(QStringLiteral("Kept"), QStringLiteral("kept")), ER_SUCCESS);

    const MessageCapture log;
    EXPECT_EQ(ToDoubles(f->GetData()), (Doubles{1, 2, 3}));
    EXPECT_EQ(log.warnings(), QStringList("f differs from other"));
    EXPECT_EQ(log.debug(), noLines);
    EXPECT_EQ(other.GetPropertyCount(), 0); // emptied, but still there
    EXPECT_EQ(f->GetPropertyPtr(dataName), otherData);
    EXPECT_EQ(childText(*f, QStringLiteral("Note")), QStringLiteral("new"));
    EXPECT_EQ(childText(*f, QStringLiteral("Kept")), QStringLiteral("kept"));
    EXPECT_EQ(childText(*f, QStringLiteral("VariableStrategy")), QStringLiteral("ExplicitDataStrategy"));
    EXPECT_NE(functionStrategyOf(*f), nullptr); // the strategy itself stays until a reload
    EXPECT_NE(f->GetFunction(), nullptr);
    EXPECT_TRUE(isClean(*f));
}

TEST_F(RunTest, MovesAFunctionThatComesBackToo)
{
    FunctionVar other(QStringLiteral("other"));
    const RegisteredMeasurement next(&storeTotal);
    const Function* function = next.giveTo(other);
    measure([&other](HostMeasurement&) { return &other; });
    f->GetData();
    EXPECT_EQ(f->GetFunction(), function);
    f->AddArgumentRef(x);
    EXPECT_EQ(ToDoubles(f->GetData()), Doubles{2});
}

TEST_F(RunTest, MovesTheChildrenOfItsArgumentIfThatComesBack)
{
    measure([](HostMeasurement& run) { return run.argument(0); });
    const MessageCapture log;
    EXPECT_EQ(ToDoubles(f->GetData()), Doubles{1});
    EXPECT_EQ(log.warnings(), QStringList("f differs from x"));
    EXPECT_EQ(x->GetPropertyCount(), 0);
    EXPECT_TRUE(x->GetData().isNull());
}

TEST_F(RunTest, LeavesItsDataAloneIfNothingComesBack)
{
    measure([](HostMeasurement&) -> Variable* { return nullptr; });
    f->UpdateData(numbers({5}));
    const MessageCapture log;
    EXPECT_EQ(ToDoubles(f->GetData()), Doubles{5});
    EXPECT_TRUE(isClean(*f));
    EXPECT_EQ(measurement->census().probes, 0);
}

} // namespace
} // namespace Orrery
