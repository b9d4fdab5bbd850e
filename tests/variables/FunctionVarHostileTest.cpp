// Measurements that turn on the tree while they run, and function variables that depend on themselves.
#include "tests/variables/FunctionVarTestSupport.h"
#include "variables/ConcatVar.h"
#include "variables/ExplicitDataVarStrategy.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>

namespace Orrery {
namespace {

using Doubles = std::vector<double>;

const QString argumentsName = QStringLiteral("Arguments");
const QStringList noLines;

/// Adds 1 to what is stored in the output, whatever the arguments.
Variable* storeNext(HostMeasurement& run)
{
    const Doubles former = ToDoubles(run.target()->GetData());
    run.target()->UpdateData(numbers({former.empty() ? 1.0 : former.front() + 1}));
    return run.target();
}

// --- a run that ends the owner

struct ReadCase
{
    const char* name;
    void (*read)(const Variable& variable);
};

class OwnerEndedByARun : public RunTest, public testing::WithParamInterface<ReadCase>
{
};

TEST_P(OwnerEndedByARun, IsBorneByTheRead)
{
    measure([this](HostMeasurement&) -> Variable* {
        top.DeleteProperty(QStringLiteral("f"));
        return nullptr;
    });
    f->UpdateData(MakeCounting({3}));
    GetParam().read(*f);
    EXPECT_FALSE(top.HasProperty(QStringLiteral("f")));
    EXPECT_EQ(measurement->runs(), 1);
    EXPECT_EQ(measurement->census().probes, 0);
    x->UpdateData(numbers({2})); // marks nobody
    EXPECT_TRUE(x->getDirtyTracker()->getObservers()().empty());
}

TEST_P(OwnerEndedByARun, IsBorneByTheReadWhenItIsReturnedAllTheSame)
{
    measure([this](HostMeasurement& run) {
        Variable* gone = run.target();
        top.DeleteProperty(QStringLiteral("f"));
        return gone;
    });
    GetParam().read(*f);
    EXPECT_FALSE(top.HasProperty(QStringLiteral("f")));
}

TEST_P(OwnerEndedByARun, IsBorneByTheReadWhenTheRunFails)
{
    measure([this](HostMeasurement&) -> Variable* {
        top.DeleteProperty(QStringLiteral("f"));
        throw std::runtime_error("after the end");
    });
    const MessageCapture log;
    GetParam().read(*f);
    EXPECT_EQ(log.debug().size(), 1);
    EXPECT_FALSE(top.HasProperty(QStringLiteral("f")));
}

TEST_P(OwnerEndedByARun, IsBorneByTheReadWhenAnotherVariableIsReturned)
{
    Variable other(QStringLiteral("other"), numbers({1}));
    measure([this, &other](HostMeasurement&) {
        top.DeleteProperty(QStringLiteral("f"));
        return &other;
    });
    const MessageCapture log;
    GetParam().read(*f);
    EXPECT_EQ(log.warnings(), noLines); // there is nobody that it could differ from
    EXPECT_EQ(ToDoubles(other.GetData()), Doubles{1});
}

INSTANTIATE_TEST_SUITE_P(
    Operations, OwnerEndedByARun,
    testing::Values(
        ReadCase{"GetData", [](const Variable& f) { EXPECT_TRUE(f.GetData().isNull()); }},
        ReadCase{"GetMaxIndepOffset", [](const Variable& f) { EXPECT_EQ(f.GetMaxIndepOffset(), 0u); }},
        ReadCase{"GetElementDimCount", [](const Variable& f) { EXPECT_EQ(f.GetElementDimCount(), 0u); }},
        ReadCase{"GetElementShape",
                 [](const Variable& f) {
                     std::vector<std::uint64_t> shape{1};
                     EXPECT_EQ(f.GetElementShape(&shape), ER_SUCCESS);
                     EXPECT_TRUE(shape.empty());
                 }},
        ReadCase{"GetValueAt",
                 [](const Variable& f) {
                     BVariant out(1.0);
                     EXPECT_EQ(f.GetValueAt(&out, 0), ER_SUCCESS); // as of null data
                     EXPECT_TRUE(out.isNull());
                 }},
        ReadCase{"GetValueRange",
                 [](const Variable& f) {
                     BVariant out(1.0);
                     EXPECT_EQ(f.GetValueRange(&out, 0, 0), ER_FAILED);
                     EXPECT_TRUE(out.isNull());
                 }}),
    [](const auto& test) { return std::string(test.param.name); });

TEST_F(RunTest, MayEndTheWholeTree)
{
    auto tree = std::make_unique<PropertyObject>();
    auto* g = insert(*tree, std::make_unique<FunctionVar>(QStringLiteral("g")));
    auto* z = insertVariable(*tree, QStringLiteral("z"));
    const RegisteredMeasurement ending([&tree](HostMeasurement&) -> Variable* {
        tree.reset();
        return nullptr;
    });
    ending.giveTo(*g);
    g->AddArgumentRef(z);
    EXPECT_TRUE(g->GetData().isNull());
    EXPECT_EQ(tree, nullptr);
}

// --- a run that changes what it works on

TEST_F(RunTest, MayEndAnArgument)
{
    measure([this](HostMeasurement& run) {
        top.DeleteProperty(QStringLiteral("x"));
        run.target()->UpdateData(numbers({3}));
        return run.target();
    });
    const ConnectedClient client(*f);
    EXPECT_EQ(ToDoubles(f->GetData()), Doubles{3});
    EXPECT_EQ(client.removals, 1);
    EXPECT_TRUE(isClean(*f));

    f->GetFunction()->SetParameters({});
    EXPECT_THROW(f->GetData(), std::logic_error);
    EXPECT_TRUE(isUpdating(*f));
}

TEST_F(RunTest, MayReplaceItsFunction)
{
    const RegisteredMeasurement next([](HostMeasurement& run) {
        run.target()->UpdateData(numbers({2}));
        return run.target();
    });
    const Function* replacement = nullptr;
    measure([&](HostMeasurement& run) {
        replacement = next.giveTo(*f);
        run.target()->UpdateData(numbers({1}));
        return run.target();
    });
    EXPECT_EQ(ToDoubles(f->GetData()), Doubles{1}); // this run goes on
    EXPECT_EQ(f->GetFunction(), replacement);
    EXPECT_TRUE(isClean(*f));
    f->GetFunction()->SetParameters({});
    EXPECT_EQ(ToDoubles(f->GetData()), Doubles{2});
    EXPECT_EQ(measurement->runs(), 1);
}

TEST_F(RunTest, MayDeleteItsFunction)
{
    measure([this](HostMeasurement& run) {
        f->DeleteProperty(QStringLiteral("Function"));
        run.target()->UpdateData(numbers({1}));
        return run.target();
    });
    EXPECT_EQ(ToDoubles(f->GetData()), Doubles{1});
    x->UpdateData(numbers({2}));
    EXPECT_EQ(ToDoubles(f->GetData()), Doubles{1});
    EXPECT_EQ(measurement->runs(), 1);
}

TEST_F(RunTest, MayChangeItsArguments)
{
    Variable* y = insert(top, std::make_unique<Variable>(QStringLiteral("y"), numbers({10})));
    measure([this, y](HostMeasurement& run) {
        f->DeleteArguments();
        f->AddArgumentRef(y);
        f->AddArgumentRef(y);
        return storeTotal(run); // of the stack as it was
    });
    EXPECT_EQ(ToDoubles(f->GetData()), Doubles{1});
    EXPECT_TRUE(isClean(*f));
    y->UpdateData(numbers({20}));
    EXPECT_EQ(ToDoubles(f->GetData()), Doubles{40});
}

TEST_F(RunTest, MayMarkEverythingDirtyAndStillEndsClean)
{
    Function* function = measure([this](HostMeasurement& run) {
        x->UpdateData(numbers({2}));
        f->GetFunction()->SetParameters({BVariant(1.0)});
        EXPECT_TRUE(isDirty(*f));
        EXPECT_TRUE(f->getDirtyTracker()->markDirty());
        run.target()->UpdateData(numbers({9}));
        return run.target();
    });
    EXPECT_EQ(ToDoubles(f->GetData()), Doubles{9});
    EXPECT_TRUE(isClean(*f));
    EXPECT_EQ(measurement->runs(), 1);
    function->SetParameters({});
    EXPECT_TRUE(isDirty(*f));
}

TEST_F(RunTest, MayComputeAgainWithinItself)
{
    int depth = 0;
    measure([this, &depth](HostMeasurement& run) {
        if (++depth < 3) {
            x->UpdateData(BVariant(double(depth)));
            EXPECT_EQ(ToDoubles(f->GetData()), Doubles{3}); // dirty through x, so the read computes
            EXPECT_TRUE(isClean(*f));
        }
        run.target()->UpdateData(numbers({3}));
        return run.target();
    });
    EXPECT_EQ(ToDoubles(f->GetData()), Doubles{3});
    EXPECT_EQ(measurement->runs(), 3);
    EXPECT_TRUE(isClean(*f));
    EXPECT_EQ(measurement->census().probes, 0);
}

TEST_F(RunTest, MayTakeTheStrategyFromTheOwner)
{
    measure([](HostMeasurement& run) {
        run.target()->SetStrategy<ExplicitDataVarStrategy>();
        run.target()->UpdateData(numbers({4}));
        return run.target();
    });
    EXPECT_EQ(ToDoubles(f->GetData()), Doubles{4});
    EXPECT_EQ(functionStrategyOf(*f), nullptr);
    EXPECT_EQ(ToDoubles(f->GetData()), Doubles{4});
}

TEST_F(RunTest, MayCopyAnotherVariableOverTheOwner)
{
    const Variable plain(QStringLiteral("plain"), numbers({6, 7}));
    measure([&plain](HostMeasurement& run) {
        *run.target() = plain; // with a new tracker
        return run.target();
    });
    EXPECT_EQ(ToDoubles(f->GetData()), (Doubles{6, 7}));
    EXPECT_EQ(functionStrategyOf(*f), nullptr);
    EXPECT_TRUE(isClean(*f));
    EXPECT_EQ(f->GetFunction(), nullptr);
}

TEST_F(RunTest, MayRemoveTheDataOfTheOwner)
{
    measure([](HostMeasurement& run) {
        run.target()->DeleteProperty(QStringLiteral("Data"));
        return run.target();
    });
    EXPECT_THROW(f->GetData(), std::logic_error);
    EXPECT_TRUE(isClean(*f));
}

TEST_F(RunTest, MayRenameAndMoveTheOwner)
{
    PropertyObject* sub = insertFolder(top, QStringLiteral("sub"));
    measure([this, sub](HostMeasurement& run) {
        f->SetName(QStringLiteral("renamed"));
        top.RemoveProperty(QStringLiteral("renamed"));
        sub->InsertProperty(f);
        return storeTotal(run);
    });
    EXPECT_EQ(ToDoubles(f->GetData()), Doubles{1});
    EXPECT_EQ(f->GetParent(), sub);
    x->UpdateData(numbers({2}));
    EXPECT_EQ(ToDoubles(f->GetData()), Doubles{2});
}

TEST_F(RunTest, MayForgetItsMeasurementInTheCatalogue)
{
    measure([this](HostMeasurement& run) {
        measurement->forget();
        return storeTotal(run);
    });
    EXPECT_EQ(ToDoubles(f->GetData()), Doubles{1});
    x->UpdateData(numbers({2}));
    EXPECT_EQ(ToDoubles(f->GetData()), Doubles{2}); // the Function has its own clone
}

TEST_F(RunTest, HearsAClientThatEndsTheOwner)
{
    measure(&storeTotal);
    ConnectedClient client(*f);
    client.onUpdate = [this] { top.DeleteProperty(QStringLiteral("f")); };
    EXPECT_TRUE(f->GetData().isNull());
    EXPECT_FALSE(top.HasProperty(QStringLiteral("f")));
}

// --- arguments that change the tree while they are brought up to date

/// f adds x, the joined variable "c" and y. Asking c for its data computes its one member.
class ComputingArgument : public FunctionVarTest
{
protected:
    ConcatVar* c = insert(top, std::make_unique<ConcatVar>(QStringLiteral("c")));
    FunctionVar* member = insert(top, std::make_unique<FunctionVar>(QStringLiteral("member")));
    std::unique_ptr<RegisteredMeasurement> ofMember;

    void measureMember(HostMeasurement::Body body)
    {
        ofMember = std::make_unique<RegisteredMeasurement>(std::move(body));
        ofMember->giveTo(*member);
        ASSERT_EQ(c->AddVariable(member), ER_SUCCESS);
        c->getDirtyTracker()->markDirty();
        total.giveTo(*f);
        for (const Variable* argument : {x, static_cast<Variable*>(c), y})
            ASSERT_EQ(f->AddArgumentRef(argument), ER_SUCCESS);
    }
};

// What is joined is read as ever, so that only the argument itself is cut off from computing.
TEST_F(ComputingArgument, HasItsMembersComputed)
{
    measureMember([](HostMeasurement& run) { return &run.target()->UpdateData(numbers({100})); });
    EXPECT_EQ(ToDoubles(f->GetData()), Doubles{111});
    EXPECT_EQ(ofMember->runs(), 1);
    EXPECT_TRUE(isClean(*c));
}

TEST_F(ComputingArgument, MayEndTheArgumentBeforeIt)
{
    measureMember([this](HostMeasurement& run) {
        top.DeleteProperty(QStringLiteral("x"));
        return run.target();
    });
    f->UpdateData(numbers({5}));
    EXPECT_THROW(f->GetData(), std::logic_error);
    EXPECT_EQ(total.runs(), 0);
    EXPECT_EQ(ToDoubles(f->GetData()), Doubles{5});
}

TEST_F(ComputingArgument, MayEndTheArgumentBehindIt)
{
    measureMember([this](HostMeasurement& run) {
        top.DeleteProperty(QStringLiteral("y"));
        return run.target();
    });
    EXPECT_THROW(f->GetData(), std::logic_error);
    EXPECT_EQ(total.runs(), 0);
}

TEST_F(ComputingArgument, MayEndTheOwner)
{
    measureMember([this](HostMeasurement& run) {
        top.DeleteProperty(QStringLiteral("f"));
        return run.target();
    });
    f->GetPtr<PropertyObject>(argumentsName)
        ->DeleteProperty(QStringLiteral("2")); // so that it is the last one
    EXPECT_TRUE(f->GetData().isNull());
    EXPECT_FALSE(top.HasProperty(QStringLiteral("f")));
    EXPECT_EQ(total.runs(), 0);
    EXPECT_EQ(total.census().probes, 0);
}

TEST_F(ComputingArgument, MayEmptyTheFolderOfArguments)
{
    measureMember([this](HostMeasurement& run) {
        f->DeleteArguments();
        return run.target();
    });
    EXPECT_THROW(f->GetData(), std::logic_error); // the one behind it has no reference any more
    EXPECT_EQ(total.runs(), 0);
}

TEST_F(ComputingArgument, MayReplaceTheFunction)
{
    measureMember([this](HostMeasurement& run) {
        total.giveTo(*f, {BVariant(1000.0)});
        return run.target();
    });
    EXPECT_EQ(ToDoubles(f->GetData()), Doubles{11}); // the clone was made before
    f->GetFunction()->SetParameters({BVariant(2000.0)});
    EXPECT_EQ(ToDoubles(f->GetData()), Doubles{2011});
}

// --- what comes back from the probe

TEST_F(RunTest, MayReturnAChildOfTheOwner)
{
    auto* child = insert(*f, std::make_unique<Variable>(QStringLiteral("child"), numbers({8})));
    measure([child](HostMeasurement&) { return child; });
    const MessageCapture log;
    EXPECT_EQ(ToDoubles(f->GetData()), Doubles{8});
    EXPECT_EQ(log.warnings(), QStringList("f differs from child"));
    EXPECT_EQ(f->GetPtr<Variable>(QStringLiteral("child")), child);
    EXPECT_EQ(child->GetPropertyCount(), 0);
}

TEST_F(RunTest, MayReturnAVariableThatHoldsTheOwner)
{
    auto* holder = insert(top, std::make_unique<Variable>(QStringLiteral("holder"), numbers({8})));
    auto* inside = insert(*holder, std::make_unique<FunctionVar>(QStringLiteral("inside")));
    const RegisteredMeasurement returning([holder](HostMeasurement&) { return holder; });
    returning.giveTo(*inside);
    inside->AddArgumentRef(x);
    const MessageCapture log;
    EXPECT_EQ(ToDoubles(inside->GetData()), Doubles{8});
    EXPECT_EQ(log.warnings().value(0), QStringLiteral("inside differs from holder"));
    EXPECT_EQ(inside->GetParent(), holder); // it can't be moved into itself
}

TEST_F(RunTest, MayReturnAVariableWhoseDataEndTheOwnersFolderWhenMoved)
{
    auto other = std::make_unique<Variable>(QStringLiteral("other"), numbers({8}));
    auto reacting = std::make_unique<ReactingFolder>(QStringLiteral("A"));
    ReactingFolder* folder = insert(*other, std::move(reacting));
    folder->reaction = [this] { top.DeleteProperty(QStringLiteral("f")); };
    measure([&other](HostMeasurement&) { return other.get(); });
    EXPECT_TRUE(f->GetData().isNull());
    EXPECT_FALSE(top.HasProperty(QStringLiteral("f")));
}

class ProbedMeasurement;

/// The library's own probe, of which there is one at a time, always at the same address.
class ProbeInPlace : public Probe<ProbedMeasurement, Variable, Variable>
{
public:
    using Probe::Probe;

    static void* operator new(std::size_t /*size*/);
    static void operator delete(void* /*place*/) {}
};

alignas(std::max_align_t) unsigned char s_placeOfProbes[sizeof(ProbeInPlace)];

void* ProbeInPlace::operator new(std::size_t /*size*/)
{
    return s_placeOfProbes;
}

/// A host's measurement that hands out what a function answers.
class ProbedMeasurement : public Measurement<Variable>
{
public:
    explicit ProbedMeasurement(std::function<Variable*()> answer)
        : m_answer(std::move(answer))
    {
        set_name(QStringLiteral("probed"));
    }

    QString get_name() override { return name; }
    AbstractProbe* make_probe() override { return new ProbeInPlace(this); }
    Measurement<Variable>* clone() const override { return new ProbedMeasurement(*this); }
    Variable* apply(Variable* /*input*/) { return m_answer(); }

private:
    std::function<Variable*()> m_answer;
};

// Results are remembered by the addresses of the probes, which come again.
TEST_F(RunTest, MayReturnNothingThroughAProbeAtTheAddressOfAnEarlierOne)
{
    auto other = std::make_unique<Variable>(QStringLiteral("other"), numbers({8}));
    auto function = std::make_unique<Function>();
    function->SetMeasurement(ProbedMeasurement([&other] { return other.get(); }));
    ASSERT_EQ(f->SetFunction(function.get()), ER_SUCCESS);
    function.release();
    f->AddArgumentRef(x);
    {
        const MessageCapture log;
        EXPECT_EQ(ToDoubles(f->GetData()), Doubles{8});
        EXPECT_EQ(log.warnings(), QStringList("f differs from other"));
    }
    *other = Variable(QStringLiteral("other"), numbers({9}));
    const Variable* const former = other.release();
    x->UpdateData(numbers({2}));
    const MessageCapture log;
    EXPECT_EQ(ToDoubles(f->GetData()), Doubles{8});
    EXPECT_EQ(log.warnings(), noLines);
    delete former;
}

// --- itself among its arguments

TEST_F(RunTest, TakesItselfAsAnArgument)
{
    const Function* function = measure(&storeNext);
    ASSERT_EQ(f->AddArgumentRef(f), ER_SUCCESS);
    EXPECT_TRUE(isDirty(*f));
    EXPECT_EQ(ToDoubles(f->GetData()), Doubles{1});
    EXPECT_TRUE(isClean(*f));
    EXPECT_EQ(ToDoubles(f->GetData()), Doubles{1});
    EXPECT_EQ(measurement->runs(), 1);
    x->UpdateData(numbers({2}));
    EXPECT_EQ(ToDoubles(f->GetData()), Doubles{2});
    EXPECT_NE(function, nullptr);

    const ConnectedClient client(*f);
    f->getNotifier()->Remove(); // and hears of itself, but once
    EXPECT_EQ(client.removals, 1);
}

TEST_F(RunTest, TakesItselfTwice)
{
    measure(&storeNext);
    ASSERT_EQ(f->AddArgumentRef(f), ER_SUCCESS);
    const MessageCapture log;
    ASSERT_EQ(f->AddArgumentRef(f), ER_SUCCESS);
    EXPECT_EQ(log.warnings(), QStringList("duplicate connection requested From: f To: f"));
    EXPECT_EQ(ToDoubles(f->GetData()), Doubles{1});
    EXPECT_EQ(f->GetMaxIndepOffset(), 1u);
    EXPECT_EQ(measurement->runs(), 1);
}

TEST_F(RunTest, TakesItselfOutsideATree)
{
    const RegisteredMeasurement next(&storeNext);
    FunctionVar loose(QStringLiteral("g"));
    next.giveTo(loose);
    ASSERT_EQ(loose.AddArgumentRef(&loose), ER_SUCCESS);
    EXPECT_EQ(ToDoubles(loose.GetData()), Doubles{1});
    EXPECT_TRUE(isClean(loose));
}

TEST_F(FunctionVarTest, DependsOnItselfThroughAnother)
{
    auto* g = insert(top, std::make_unique<FunctionVar>(QStringLiteral("g")));
    total.giveTo(*f);
    total.giveTo(*g);
    ASSERT_EQ(f->AddArgumentRef(g), ER_SUCCESS);
    ASSERT_EQ(f->AddArgumentRef(x), ER_SUCCESS);
    ASSERT_EQ(g->AddArgumentRef(f), ER_SUCCESS);
    ASSERT_EQ(g->AddArgumentRef(y), ER_SUCCESS);
    EXPECT_EQ(ToDoubles(f->GetData()), Doubles{1}); // of g nothing is stored yet
    EXPECT_TRUE(isClean(*g));                       // marked so uncomputed

    y->UpdateData(numbers({20}));
    EXPECT_TRUE(isDirty(*g));
    EXPECT_TRUE(isDirty(*f));
    EXPECT_EQ(ToDoubles(g->GetData()), Doubles{21}); // 20 + what f has stored
    EXPECT_TRUE(isClean(*f));
    x->UpdateData(numbers({2}));
    EXPECT_EQ(ToDoubles(f->GetData()), Doubles{23});

    const ConnectedClient client(*g);
    f->getNotifier()->Remove();
    EXPECT_EQ(client.removals, 1);
}

TEST_F(FunctionVarTest, BearsTheEndOfAnArgumentThatDependsOnIt)
{
    auto* g = insert(top, std::make_unique<FunctionVar>(QStringLiteral("g")));
    total.giveTo(*f);
    ASSERT_EQ(f->AddArgumentRef(g), ER_SUCCESS);
    ASSERT_EQ(g->AddArgumentRef(f), ER_SUCCESS);
    top.DeleteProperty(QStringLiteral("g"));
    EXPECT_THROW(f->GetData(), std::logic_error);
    EXPECT_EQ(sourceCount(*f), 1u); // its Function
}

} // namespace
} // namespace Orrery
