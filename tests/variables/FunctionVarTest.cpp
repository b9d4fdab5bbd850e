// What a function variable is made of: its kind, its copies, its Function and its arguments.
#include "variables/FunctionVar.h"

#include "foundations/property/PropertyObjectFactory.h"
#include "tests/support/VirtualSlot.h"
#include "tests/variables/FunctionVarTestSupport.h"
#include "tracking/ObservablePropertyReference.h"
#include "variables/ExplicitDataVarStrategy.h"

#include <gtest/gtest.h>

namespace Orrery {
namespace {

using Doubles = std::vector<double>;

const QString argumentsName = QStringLiteral("Arguments");
const QString functionName = QStringLiteral("Function");
const QString strategyName = QStringLiteral("VariableStrategy");
const QStringList noLines;

static_assert(sizeof(FunctionVar) == sizeof(Variable), "adds no fields");
static_assert(sizeof(FunctionVarStrategy) == sizeof(IVariableStrategy), "adds no fields");

QStringList argumentNames(const FunctionVar& variable)
{
    QList<AbstractProperty*> arguments;
    QStringList names;
    variable.GetArguments(&arguments);
    for (const AbstractProperty* argument : arguments)
        names.append(argument->GetName());
    return names;
}

// --- kinds

TEST(FunctionVarKind, StartsWithTheFunctionStrategyAndDirty)
{
    FunctionVar variable(QStringLiteral("f"));
    EXPECT_EQ(variable.GetName(), QStringLiteral("f"));
    EXPECT_NE(functionStrategyOf(variable), nullptr);
    EXPECT_EQ(functionStrategyOf(variable)->GetType(), QStringLiteral("FunctionStrategy"));
    EXPECT_EQ(FunctionVarStrategy::StaticType(), QStringLiteral("FunctionStrategy"));
    EXPECT_EQ(childText(variable, strategyName), QStringLiteral("FunctionStrategy"));
    EXPECT_TRUE(isDirty(variable));
    EXPECT_EQ(updatesOf(variable), 0);
    EXPECT_TRUE(variable.HasProperty(
        QStringLiteral("Data"))); // of the explicit strategy that every one passes through
    EXPECT_FALSE(variable.HasProperty(argumentsName));
    EXPECT_FALSE(variable.HasProperty(functionName));
    EXPECT_EQ(FunctionVar().GetName(), QString());
}

TEST(FunctionVarKind, IsSavedUnderItsOwnTypeName)
{
    EXPECT_EQ(FunctionVar::StaticType(), QStringLiteral("FunctionVar"));
    EXPECT_EQ(FunctionVar().PropertyObjType(), QStringLiteral("FunctionVar"));
    EXPECT_EQ(FunctionVar().GetTypeFlags(), 3u);
    const std::unique_ptr<PropertyObject> made(
        PropertyObjectFactory::Instance().Create(QStringLiteral("FunctionVar")));
    ASSERT_NE(made, nullptr);
    EXPECT_TRUE(isExactly<FunctionVar>(*made));
}

TEST(FunctionVarKind, OfWhatNewMakesIsThatOfAPlainVariable)
{
    const std::unique_ptr<Variable> made(FunctionVar::New(QStringLiteral("n")));
    EXPECT_TRUE(isExactly<Variable>(*made));
    EXPECT_EQ(made->PropertyObjType(), QStringLiteral("Variable"));
    EXPECT_EQ(made->GetName(), QStringLiteral("n"));
    EXPECT_NE(functionStrategyOf(*made), nullptr);
    EXPECT_EQ(childText(*made, strategyName), QStringLiteral("FunctionStrategy"));
    EXPECT_TRUE(isDirty(*made));
}

TEST(FunctionVarKind, AnnouncesItsRemovalTwice)
{
    auto variable = std::make_unique<FunctionVar>(QStringLiteral("f"));
    const ConnectedClient client(*variable);
    variable.reset();
    EXPECT_EQ(client.removals, 2);

    std::unique_ptr<Variable> plain(FunctionVar::New(QStringLiteral("n")));
    const ConnectedClient other(*plain);
    plain.reset();
    EXPECT_EQ(other.removals, 1);
}

TEST(FunctionVarKind, IsWhollyThereWhenItAnnouncesItsRemoval)
{
    auto variable = std::make_unique<FunctionVar>(QStringLiteral("f"));
    variable->UpdateData(numbers({3}));
    ConnectedClient client(*variable);
    QStringList seen;
    Variable* const observed = variable.get();
    client.onRemoved = [&seen, observed] {
        seen.append(observed->PropertyObjType() + QString::number(stored(*observed).at(0)));
    };
    variable.reset();
    EXPECT_EQ(seen, (QStringList{"FunctionVar3", "Variable3"}));
}

// --- copies

TEST_F(FunctionVarTest, ClonesArePlainVariablesWithTheFunctionStrategy)
{
    setUpAndRead();
    const std::unique_ptr<AbstractProperty> clone(f->Clone());
    ASSERT_TRUE(isExactly<Variable>(*clone));
    auto& copy = static_cast<Variable&>(*clone);
    EXPECT_EQ(copy.PropertyObjType(), QStringLiteral("Variable"));
    EXPECT_EQ(copy.GetName(), QStringLiteral("f"));
    EXPECT_NE(functionStrategyOf(copy), nullptr);
    EXPECT_NE(functionStrategyOf(copy), functionStrategyOf(*f));
    EXPECT_EQ(childText(copy, strategyName), QStringLiteral("ExplicitDataStrategy"));
    EXPECT_EQ(stored(copy), Doubles{11});

    const std::unique_ptr<AbstractProperty> bare(f->DoClone());
    EXPECT_EQ(bare->PropertyObjType(), QStringLiteral("Variable"));
}

TEST_F(FunctionVarTest, CopiesStartDirtyAndBoundToNothing)
{
    setUpAndRead();
    const std::unique_ptr<AbstractProperty> clone(f->Clone());
    FunctionVar constructed(*f);
    FunctionVar assigned(QStringLiteral("assigned"));
    assigned = *f;
    for (const Variable* copy : {static_cast<Variable*>(clone.get()), static_cast<Variable*>(&constructed),
                                 static_cast<Variable*>(&assigned)}) {
        EXPECT_TRUE(isDirty(*copy));
        EXPECT_EQ(sourceCount(*copy), 0u);
        EXPECT_NE(functionStrategyOf(*copy), nullptr);
        EXPECT_EQ(updatesOf(*copy), 0);
    }
    EXPECT_EQ(constructed.PropertyObjType(), QStringLiteral("FunctionVar"));
    EXPECT_EQ(constructed.GetName(), QStringLiteral("f"));
    EXPECT_EQ(assigned.GetName(), QStringLiteral("assigned"));
    EXPECT_EQ(argumentNames(constructed), (QStringList{"0", "1"}));
    EXPECT_NE(constructed.GetFunction(), f->GetFunction());
    ASSERT_NE(constructed.GetFunction(), nullptr);
    EXPECT_EQ(constructed.GetFunction()->GetFunctionName(), total.name());
    EXPECT_TRUE(isClean(*f));
}

TEST_F(FunctionVarTest, ACopyBesideItsSourceComputesByItself)
{
    setUpAndRead();
    auto* copy = insert(top, std::make_unique<FunctionVar>(*f));
    EXPECT_EQ(copy, nullptr); // of the same name
    auto renamed = std::make_unique<FunctionVar>(*f);
    ASSERT_EQ(renamed->SetName(QStringLiteral("g")), ER_SUCCESS);
    copy = insert(top, std::move(renamed));
    ASSERT_NE(copy, nullptr);
    y->UpdateData(numbers({20}));
    EXPECT_EQ(ToDoubles(copy->GetData()), Doubles{21});
    EXPECT_EQ(ToDoubles(f->GetData()), Doubles{21});
    EXPECT_EQ(total.runs(), 3);
}

TEST_F(FunctionVarTest, AMoveTakesBindingsAlong)
{
    setUpAndRead();
    FunctionVar loose(QStringLiteral("g"));
    static_cast<Variable&>(loose) = std::move(static_cast<Variable&>(*f));
    x->UpdateData(numbers({2}));
    EXPECT_TRUE(isDirty(loose));
    delete f;
    f = nullptr;
    EXPECT_EQ(ToDoubles(loose.GetData()), Doubles{12});
}

// --- the strategy

TEST(FunctionStrategy, MakesAStrategyOfItsKindForAnotherOwner)
{
    const FunctionVar source(QStringLiteral("f"));
    Variable owner(QStringLiteral("v"), numbers({5}));
    owner.GetData();
    ASSERT_TRUE(isClean(owner));
    const auto copy = functionStrategyOf(source)->Copy(&owner);
    ASSERT_NE(dynamic_cast<FunctionVarStrategy*>(copy.get()), nullptr);
    EXPECT_TRUE(isDirty(owner)); // a new strategy marks its owner
    EXPECT_EQ(ToDoubles(copy->GetData(nullptr)), Doubles{5});
    EXPECT_TRUE(isClean(owner));
    EXPECT_FALSE(owner.HasProperty(argumentsName));
}

TEST(FunctionStrategy, MarksAnOwnerThatTakesIt)
{
    Variable owner(QStringLiteral("v"), numbers({5}));
    owner.GetData();
    const auto* strategy = owner.SetStrategy<FunctionVarStrategy>();
    EXPECT_TRUE(isDirty(owner));
    EXPECT_EQ(childText(owner, strategyName), QStringLiteral("FunctionStrategy"));
    EXPECT_EQ(ToDoubles(owner.GetData()), Doubles{5}); // "Data" stays in place
    EXPECT_EQ(owner.SetStrategy<FunctionVarStrategy>(), strategy);
    EXPECT_TRUE(isClean(owner)); // kept, so nothing is marked
}

TEST_F(RunTest, ANewStrategyLeavesAnUpdatingOwnerUpdating)
{
    bool wasUpdating = false;
    measure([&wasUpdating](HostMeasurement& run) {
        const FunctionVarStrategy second(run.target());
        wasUpdating = isUpdating(*run.target());
        return run.target();
    });
    f->GetData();
    EXPECT_TRUE(wasUpdating);
}

TEST(FunctionStrategy, RefusesANullOwner)
{
    EXPECT_THROW(FunctionVarStrategy strategy(nullptr), std::invalid_argument);
}

#if defined(__x86_64__) && defined(__GXX_ABI_VERSION)
TEST(FunctionStrategy, OverridesInTheOrderOfItsBaseClass)
{
    using TestSupport::slotOf;
    EXPECT_EQ(slotOf(&FunctionVarStrategy::GetData), 0);
    EXPECT_EQ(slotOf(&FunctionVarStrategy::UpdateData), 1);
    EXPECT_EQ(slotOf(&FunctionVarStrategy::GetValueAt), 2);
    EXPECT_EQ(slotOf(&FunctionVarStrategy::GetValueRange), 3);
    EXPECT_EQ(slotOf(&FunctionVarStrategy::GetMaxIndepOffset), 4);
    EXPECT_EQ(slotOf(&FunctionVarStrategy::GetElementDimCount), 5);
    EXPECT_EQ(slotOf(&FunctionVarStrategy::GetElementShape), 6);
    EXPECT_EQ(slotOf(&FunctionVarStrategy::Copy), 9);
    EXPECT_EQ(slotOf(&FunctionVarStrategy::GetType), 10);
    EXPECT_EQ(slotOf(&FunctionVar::PropertyObjType), 0);
    EXPECT_EQ(slotOf(&FunctionVar::DoClone), 5);
    using Update = Variable& (FunctionVar::*)(const BVariant&, bool, IsCellArray);
    EXPECT_EQ(slotOf(static_cast<Update>(&FunctionVar::UpdateData)), 7);
}
#endif

// --- the Function

/// Counts its end.
class MortalFunction : public Function
{
public:
    MortalFunction(const QString& measurementName, int* ends)
        : Function(measurementName)
        , m_ends(ends)
    {
    }
    MortalFunction(const MortalFunction&) = delete;
    MortalFunction& operator=(const MortalFunction&) = delete;
    ~MortalFunction() override { ++*m_ends; }

private:
    int* m_ends;
};

TEST_F(FunctionVarTest, HasNoFunctionAtFirst)
{
    EXPECT_EQ(f->GetFunction(), nullptr);
    ASSERT_EQ(f->SetProperty(functionName, QStringLiteral("polynomial-1")), ER_SUCCESS);
    EXPECT_EQ(f->GetFunction(), nullptr); // a value is no Function
    ASSERT_EQ(f->DeleteProperty(functionName), ER_SUCCESS);
    insertFolder(*f, functionName);
    EXPECT_EQ(f->GetFunction(), nullptr);
}

TEST_F(FunctionVarTest, TakesOverAFunctionUnderItsOwnName)
{
    setUpAndRead();
    auto made = total.function();
    ASSERT_EQ(made->SetName(QStringLiteral("other name")), ER_SUCCESS);
    ASSERT_EQ(f->SetFunction(made.get()), ER_SUCCESS);
    const Function* function = made.release();
    EXPECT_EQ(function->GetName(), functionName);
    EXPECT_EQ(function->GetParent(), f);
    EXPECT_EQ(f->GetFunction(), function);
    EXPECT_TRUE(isDirty(*f));
}

TEST_F(FunctionVarTest, LeavesAndDestroysItsFormerFunction)
{
    int ends = 0;
    auto former = std::make_unique<MortalFunction>(total.name(), &ends);
    ASSERT_EQ(f->SetFunction(former.get()), ER_SUCCESS);
    const auto formerTracker = former.release()->getDirtyTracker();
    EXPECT_EQ(formerTracker->getObservers()().count(f->getDirtyTracker()), 1u);

    const Function* function = total.giveTo(*f);
    EXPECT_EQ(ends, 1);
    EXPECT_EQ(formerTracker->getObservers()().count(f->getDirtyTracker()), 0u);
    EXPECT_EQ(f->getDirtyTracker()->getSources()().count(formerTracker), 0u);
    EXPECT_EQ(f->getDirtyTracker()->getSources()().count(function->getDirtyTracker()), 1u);
}

TEST_F(FunctionVarTest, TakesTheFunctionThatItHolds)
{
    setUpAndRead();
    Function* function = f->GetFunction();
    EXPECT_EQ(f->SetFunction(function), ER_SUCCESS);
    EXPECT_EQ(f->GetFunction(), function);
    EXPECT_TRUE(isDirty(*f));
    f->GetData();
    function->SetParameters({BVariant(5.0)});
    EXPECT_TRUE(isDirty(*f));
    EXPECT_EQ(ToDoubles(f->GetData()), Doubles{16});
}

TEST_F(FunctionVarTest, ReplacesAValueInItsFunctionsPlace)
{
    ASSERT_EQ(f->SetProperty(functionName, 1.0), ER_SUCCESS);
    const Function* function = total.giveTo(*f);
    EXPECT_EQ(f->GetFunction(), function);
}

TEST_F(FunctionVarTest, RefusesANullFunction)
{
    setUpAndRead();
    const Function* function = f->GetFunction();
    EXPECT_EQ(f->SetFunction(nullptr), ER_INVALID_ARGUMENT);
    EXPECT_EQ(f->GetFunction(), function);
    EXPECT_TRUE(isClean(*f));
    EXPECT_EQ(sourceCount(*f), 3u);
}

TEST_F(FunctionVarTest, BindsAFunctionThatTheTreeRefusesAndHasLeftTheOneThatItKeeps)
{
    setUpAndRead();
    Function* kept = f->GetFunction();
    PropertyObject elsewhere;
    Function* refused = insert(elsewhere, total.function());
    ASSERT_NE(refused, nullptr);

    EXPECT_EQ(f->SetFunction(refused), ER_INVALID_ARGUMENT);
    EXPECT_EQ(f->GetFunction(), kept);
    EXPECT_EQ(refused->GetParent(), &elsewhere);
    EXPECT_EQ(refused->GetName(), functionName); // renamed before the tree is asked
    EXPECT_TRUE(isDirty(*f));
    f->GetData();
    refused->SetParameters({BVariant(5.0)});
    EXPECT_TRUE(isDirty(*f));
    EXPECT_EQ(ToDoubles(f->GetData()), Doubles{11}); // computed with the one that it holds

    kept->SetParameters({BVariant(5.0)});
    EXPECT_TRUE(isClean(*f));
}

TEST_F(FunctionVarTest, IsMarkedByACleanFunctionThatTheTreeRefusesToo)
{
    setUpAndRead();
    PropertyObject elsewhere;
    Function* refused = insert(elsewhere, total.function());
    ASSERT_NE(refused->GetMeasurement(), nullptr);
    ASSERT_TRUE(refused->getDirtyTracker()->isClean());
    EXPECT_LT(f->SetFunction(refused), 0);
    EXPECT_TRUE(isDirty(*f));
}

TEST_F(FunctionVarTest, BindsAFunctionForWhichItIsTooDeep)
{
    PropertyObject* folder = &top;
    for (int depth = 2; depth < PropertyObject::MaxDepth; ++depth)
        folder = insertFolder(*folder, QStringLiteral("d"));
    auto* deepest = insert(*folder, std::make_unique<FunctionVar>(QStringLiteral("deepest")));
    ASSERT_NE(deepest, nullptr);
    Function loose(total.name());
    EXPECT_EQ(deepest->SetFunction(&loose), ER_FAILED);
    EXPECT_EQ(deepest->GetFunction(), nullptr);
    deepest->GetData();
    loose.SetParameters({});
    EXPECT_TRUE(isDirty(*deepest));

    deepest->GetData();
    EXPECT_EQ(deepest->AddArgumentRef(x), ER_FAILED);
    EXPECT_TRUE(isClean(*deepest));
    x->UpdateData(numbers({2}));
    EXPECT_TRUE(isClean(*deepest));
}

// --- adding arguments

TEST_F(FunctionVarTest, KeysArgumentsByNumbers)
{
    ASSERT_EQ(f->AddArgumentRef(x), ER_SUCCESS);
    ASSERT_EQ(f->AddArgumentRef(y), ER_SUCCESS);
    auto* group = f->GetPtr<PropertyObject>(argumentsName);
    ASSERT_NE(group, nullptr);
    EXPECT_TRUE(isExactly<PropertyObject>(*group));
    QList<AbstractProperty*> arguments{f, nullptr};
    ASSERT_EQ(f->GetArguments(&arguments), ER_SUCCESS);
    ASSERT_EQ(arguments.size(), 2); // former entries go
    EXPECT_EQ(argumentNames(*f), (QStringList{"0", "1"}));
    EXPECT_TRUE(
        isExactly<ObservablePropertyReference>(*arguments.at(0))); // the references, not their targets
    EXPECT_EQ(static_cast<PropertyReference*>(arguments.at(0))->Resolve(), x);
    EXPECT_EQ(static_cast<PropertyReference*>(arguments.at(1))->Resolve(), y);
    EXPECT_EQ(x->GetParent(), &top);
}

TEST_F(FunctionVarTest, KeysTheNextArgumentByTheLastNumberPlusOne)
{
    for (int i = 0; i < 11; ++i)
        f->AddArgumentRef(i % 2 == 0 ? x : y);
    EXPECT_EQ(argumentNames(*f).last(), QStringLiteral("10"));
    EXPECT_EQ(argumentNames(*f).at(2), QStringLiteral("2"));
    ASSERT_EQ(f->GetPtr<PropertyObject>(argumentsName)->DeleteProperty(QStringLiteral("1")), ER_SUCCESS);
    ASSERT_EQ(f->AddArgumentRef(x), ER_SUCCESS);
    EXPECT_EQ(argumentNames(*f).last(), QStringLiteral("11"));
}

TEST_F(FunctionVarTest, BindsToAnArgumentAndIsDirty)
{
    f->GetData();
    ASSERT_TRUE(isClean(*f));
    ASSERT_EQ(f->AddArgumentRef(x), ER_SUCCESS);
    EXPECT_TRUE(isDirty(*f));
    EXPECT_EQ(f->getDirtyTracker()->getSources()().count(x->getDirtyTracker()), 1u);
    EXPECT_EQ(x->getDirtyTracker()->getObservers()().count(f->getDirtyTracker()), 1u);
    x->GetData();
    f->GetData();
    x->UpdateData(numbers({2}));
    EXPECT_TRUE(isDirty(*f));
}

TEST_F(FunctionVarTest, RefusesANullArgument)
{
    setUpAndRead();
    EXPECT_EQ(f->AddArgumentRef(nullptr), ER_INVALID_ARGUMENT);
    EXPECT_EQ(argumentNames(*f), (QStringList{"0", "1"}));
    EXPECT_TRUE(isClean(*f));

    FunctionVar empty;
    EXPECT_EQ(empty.AddArgumentRef(nullptr), ER_INVALID_ARGUMENT);
    EXPECT_EQ(argumentNames(empty), QStringList());
}

TEST_F(FunctionVarTest, RefusesAnArgumentPastTheLargestNumber)
{
    f->GetData();
    PropertyObject* group = insertFolder(*f, argumentsName);
    ASSERT_EQ(group->SetProperty(QStringLiteral("9223372036854775807"), 1.0), ER_SUCCESS);
    EXPECT_EQ(f->AddArgumentRef(x), ER_FAILED);
    EXPECT_EQ(group->GetPropertyCount(), 1);
    EXPECT_TRUE(isClean(*f)); // neither bound nor marked
    EXPECT_EQ(sourceCount(*f), 0u);
    const ConnectedClient client(*f);
    x->getNotifier()->Remove();
    EXPECT_EQ(client.removals, 0);
}

TEST_F(FunctionVarTest, PutsAFolderInPlaceOfAValueForItsArguments)
{
    ASSERT_EQ(f->SetProperty(argumentsName, 1.0), ER_SUCCESS);
    QList<AbstractProperty*> arguments{f};
    EXPECT_EQ(f->GetArguments(&arguments), ER_NOT_FOUND);
    EXPECT_TRUE(arguments.isEmpty());
    f->DeleteArguments();
    EXPECT_TRUE(f->GetPropertyPtr(argumentsName)->IsSimpleProperty());

    const MessageCapture log;
    EXPECT_EQ(f->AddArgumentRef(x), ER_SUCCESS);
    EXPECT_EQ(log.warnings(), noLines);
    EXPECT_EQ(argumentNames(*f), QStringList("0"));
}

TEST_F(FunctionVarTest, TakesAnArgumentTwiceWithOneWarning)
{
    total.giveTo(*f);
    ASSERT_EQ(f->AddArgumentRef(x), ER_SUCCESS);
    const MessageCapture log;
    EXPECT_EQ(f->AddArgumentRef(x), ER_SUCCESS);
    EXPECT_EQ(log.warnings(), QStringList("duplicate connection requested From: x To: f"));
    EXPECT_EQ(log.debug(), noLines);
    EXPECT_EQ(argumentNames(*f), (QStringList{"0", "1"}));
    EXPECT_TRUE(isDirty(*f));
    EXPECT_EQ(sourceCount(*f), 2u);
    EXPECT_EQ(ToDoubles(f->GetData()), Doubles{2});

    const ConnectedClient client(*f);
    x->getNotifier()->Remove();
    EXPECT_EQ(client.removals, 1);
}

TEST_F(FunctionVarTest, TellsNothingOfAnOrdinaryArgument)
{
    const MessageCapture log;
    f->AddArgumentRef(x);
    f->AddArgumentRef(y);
    EXPECT_EQ(log.warnings(), noLines);
    EXPECT_EQ(log.debug(), noLines);
    EXPECT_EQ(x->getObserver(), nullptr);
}

TEST_F(FunctionVarTest, RefusesAnArgumentThatIsBeingDestroyed)
{
    f->GetData();
    ConnectedClient client(*x);
    ERESULT code = ER_SUCCESS;
    client.onRemoved = [&] { code = f->AddArgumentRef(x); };
    delete x; // which leaves the tree only after it has said so
    EXPECT_EQ(code, ER_INVALID_ARGUMENT);
    EXPECT_EQ(argumentNames(*f), QStringList()); // the reference that couldn't be set is gone again
    EXPECT_TRUE(isClean(*f));
    EXPECT_EQ(sourceCount(*f), 0u);
}

TEST_F(FunctionVarTest, CannotResolveAnArgumentThatItTookOnItsWayOutOfTheTree)
{
    total.giveTo(*f);
    ConnectedClient client(*x);
    ERESULT code = ER_FAILED;
    client.onRemoved = [&] { code = f->AddArgumentRef(x); };
    top.DeleteProperty(QStringLiteral("x")); // taken out first, hence bound late
    EXPECT_EQ(code, ER_SUCCESS);
    EXPECT_EQ(sourceCount(*f), 1u); // its Function
    EXPECT_THROW(f->GetData(), std::logic_error);
}

// --- arguments outside the tree

TEST_F(FunctionVarTest, BindsArgumentsOutsideTheTreeLate)
{
    total.giveTo(*f);
    auto loose = std::make_unique<Variable>(QStringLiteral("t"), numbers({100}));
    {
        const MessageCapture log;
        ASSERT_EQ(f->AddArgumentRef(loose.get()), ER_SUCCESS);
        EXPECT_EQ(log.debug(), QStringList("used observer to delay reference binding!"));
        EXPECT_EQ(log.warnings(), noLines);
    }
    EXPECT_EQ(argumentNames(*f), QStringList("0"));
    EXPECT_EQ(ToDoubles(f->GetData()), Doubles{100});
    loose->UpdateData(numbers({101}));
    EXPECT_TRUE(isDirty(*f));
    EXPECT_EQ(ToDoubles(f->GetData()), Doubles{101});

    Variable* placed = insertVariable(top, QStringLiteral("t"));
    *placed = std::move(*loose);
    loose.reset();
    EXPECT_TRUE(isClean(*f));
    placed->UpdateData(numbers({102}));
    EXPECT_TRUE(isDirty(*f)); // the tracker came along
    EXPECT_EQ(ToDoubles(f->GetData()), Doubles{102});
}

TEST_F(FunctionVarTest, WithoutATreeTakesArguments)
{
    FunctionVar loose(QStringLiteral("g"));
    total.giveTo(loose);
    ASSERT_EQ(loose.AddArgumentRef(x), ER_SUCCESS);
    EXPECT_EQ(ToDoubles(loose.GetData()), Doubles{1});
    const ConnectedClient client(loose);
    x->getNotifier()->Remove();
    EXPECT_EQ(client.removals, 1);
}

TEST_F(FunctionVarTest, ArgumentsBoundLateThatWereDestroyedCannotBeResolved)
{
    total.giveTo(*f);
    auto loose = std::make_unique<Variable>(QStringLiteral("t"), numbers({100}));
    ASSERT_EQ(f->AddArgumentRef(loose.get()), ER_SUCCESS);
    loose.reset();
    EXPECT_THROW(f->GetData(), std::logic_error);
}

TEST_F(FunctionVarTest, OutsideTheTreePastTheLargestNumberFailsUnbound)
{
    f->GetData();
    PropertyObject* group = insertFolder(*f, argumentsName);
    ASSERT_EQ(group->SetProperty(QStringLiteral("9223372036854775807"), 1.0), ER_SUCCESS);
    const Variable loose(QStringLiteral("t"));
    EXPECT_EQ(f->AddArgumentRef(&loose), ER_FAILED);
    EXPECT_EQ(group->GetPropertyCount(), 1);
    EXPECT_TRUE(isClean(*f));
}

// --- removal

TEST_F(FunctionVarTest, PassesTheRemovalOfAnArgumentOn)
{
    ASSERT_EQ(f->AddArgumentRef(x), ER_SUCCESS);
    const ConnectedClient client(*f);
    x->getNotifier()->Remove();
    EXPECT_EQ(client.removals, 1);
    EXPECT_EQ(client.updates + client.renamings, 0);
    top.DeleteProperty(QStringLiteral("x"));
    EXPECT_EQ(client.removals, 2);
}

TEST_F(FunctionVarTest, PassesRemovalsOnThroughAChain)
{
    auto* g = insert(top, std::make_unique<FunctionVar>(QStringLiteral("g")));
    ASSERT_EQ(f->AddArgumentRef(x), ER_SUCCESS);
    ASSERT_EQ(g->AddArgumentRef(f), ER_SUCCESS);
    const ConnectedClient client(*g);
    x->getNotifier()->Remove();
    EXPECT_EQ(client.removals, 1);
    top.DeleteProperty(QStringLiteral("f"));
    EXPECT_EQ(client.removals, 3); // a function variable says so twice
}

// --- deleting arguments

TEST_F(FunctionVarTest, DeletionOfArgumentsEmptiesTheFolderAndTellsNobody)
{
    setUpAndRead();
    f->DeleteArguments();
    EXPECT_TRUE(f->HasProperty(argumentsName));
    QList<AbstractProperty*> arguments;
    EXPECT_EQ(f->GetArguments(&arguments), ER_SUCCESS);
    EXPECT_TRUE(arguments.isEmpty());
    EXPECT_TRUE(isClean(*f));
    EXPECT_EQ(ToDoubles(f->GetData()), Doubles{11});
    EXPECT_EQ(total.runs(), 1);
}

TEST_F(FunctionVarTest, DeletionOfArgumentsUnbindsAndDisconnectsNothing)
{
    setUpAndRead();
    f->DeleteArguments();
    EXPECT_EQ(sourceCount(*f), 3u);
    const ConnectedClient client(*f);
    x->getNotifier()->Remove();
    EXPECT_EQ(client.removals, 1);
    x->UpdateData(numbers({2}));
    EXPECT_TRUE(isDirty(*f));
    EXPECT_EQ(ToDoubles(f->GetData()), Doubles{0}); // with no argument by now
}

TEST_F(FunctionVarTest, DeletionOfArgumentsLetsTheirKeysStartAgain)
{
    setUpAndRead();
    f->DeleteArguments();
    const MessageCapture log;
    ASSERT_EQ(f->AddArgumentRef(y), ER_SUCCESS);
    EXPECT_EQ(argumentNames(*f), QStringList("0"));
    EXPECT_EQ(log.warnings(), QStringList("duplicate connection requested From: y To: f"));
    EXPECT_EQ(ToDoubles(f->GetData()), Doubles{10});
}

TEST_F(FunctionVarTest, DeletionOfArgumentsThatItDoesNotHaveMakesNothing)
{
    f->DeleteArguments();
    EXPECT_FALSE(f->HasProperty(argumentsName));
    QList<AbstractProperty*> arguments{f};
    EXPECT_EQ(f->GetArguments(&arguments), ER_NOT_FOUND);
    EXPECT_TRUE(arguments.isEmpty());
    EXPECT_EQ(f->GetArguments(nullptr), ER_INVALID_ARGUMENT);
}

// --- a strategy of another kind

TEST_F(FunctionVarTest, KeepsItsFunctionAndArgumentsUnderAStrategyOfAnotherKind)
{
    f->SetStrategy<ExplicitDataVarStrategy>();
    const Function* function = total.giveTo(*f);
    EXPECT_EQ(f->AddArgumentRef(x), ER_SUCCESS);
    EXPECT_EQ(f->GetFunction(), function);
    EXPECT_EQ(argumentNames(*f), QStringList("0"));
    f->UpdateData(numbers({3}));
    EXPECT_EQ(ToDoubles(f->GetData()), Doubles{3});
    EXPECT_EQ(total.runs(), 0);

    f->SetStrategy<FunctionVarStrategy>();
    EXPECT_EQ(ToDoubles(f->GetData()), Doubles{1});
    f->SetStrategy<ExplicitDataVarStrategy>();
    f->DeleteArguments();
    EXPECT_EQ(argumentNames(*f), QStringList());
    EXPECT_TRUE(f->HasProperty(argumentsName));
}

TEST_F(FunctionVarTest, WorksThroughItsStrategyAsThroughItself)
{
    const std::unique_ptr<Variable> made(FunctionVar::New(QStringLiteral("n")));
    FunctionVarStrategy* strategy = functionStrategyOf(*made);
    ASSERT_NE(strategy, nullptr);
    const Function* function = total.giveTo(*strategy);
    EXPECT_EQ(strategy->AddArgumentRef(x), ER_SUCCESS);
    EXPECT_EQ(strategy->GetFunction(), function);
    QList<AbstractProperty*> arguments;
    EXPECT_EQ(strategy->GetArguments(&arguments), ER_SUCCESS);
    EXPECT_EQ(arguments.size(), 1);
    EXPECT_EQ(ToDoubles(made->GetData()), Doubles{1});
    strategy->DeleteArguments();
    EXPECT_EQ(strategy->GetArguments(&arguments), ER_SUCCESS);
    EXPECT_TRUE(arguments.isEmpty());
    EXPECT_EQ(strategy->GetArguments(nullptr), ER_INVALID_ARGUMENT);
    EXPECT_EQ(strategy->SetFunction(nullptr), ER_INVALID_ARGUMENT);
    EXPECT_EQ(strategy->AddArgumentRef(nullptr), ER_INVALID_ARGUMENT);
}

} // namespace
} // namespace Orrery
