// Reads that compute, and so call code of the host: it may destroy whatever the operation around them works on.
#include "Core/PolynomialMeasurement.h"
#include "tests/support/Failures.h"
#include "tests/variables/FunctionVarTestSupport.h"
#include "units/Units.h"
#include "variables/ConcatVar.h"
#include "variables/SweptVariable.h"
#include "variables/VariableDefaults.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>

namespace Orrery {
namespace {

using Doubles = std::vector<double>;

const QString destroyedOutput =
    QStringLiteral("the output of a polynomial measurement was destroyed while its input was read");

/// f = x + y, which nobody has read yet.
class DestructiveHandlers : public FunctionVarTest
{
protected:
    DestructiveHandlers()
    {
        total.giveTo(*f);
        f->AddArgumentRef(x);
        f->AddArgumentRef(y);
    }

    void destroy(const char* name) { top.DeleteProperty(QString::fromLatin1(name)); }
    bool isGone(const char* name) const { return !top.HasProperty(QString::fromLatin1(name)); }

    FunctionVar* addPolynomial(const char* name)
    {
        auto* variable = insert(top, std::make_unique<FunctionVar>(QString::fromLatin1(name)));
        auto line = std::make_unique<Function>(QStringLiteral("polynomial-1"));
        line->SetParameters({BVariant(0.0), BVariant(1.0)});
        EXPECT_EQ(variable->SetFunction(line.get()), ER_SUCCESS);
        line.release();
        return variable;
    }
};

// --- a polynomial's output that goes while its input is read

TEST_F(DestructiveHandlers, PolynomialFailsWhenReadingItsInputDestroysItsOutput)
{
    Variable* const out = insertVariable(top, QStringLiteral("out"));
    ConnectedClient client(*f);
    client.onUpdate = [this] { destroy("out"); };
    PolynomialMeasurement<1> line;
    line.set_output(out);
    EXPECT_EQ(TestSupport::failureOf([&] { line.apply(f); }),
              TestSupport::runtimeError(destroyedOutput.toStdString()));
    EXPECT_TRUE(isGone("out"));
    EXPECT_EQ(ToDoubles(f->GetData()), Doubles{11});
}

// The first argument is dirty again when the measurement reads it, by what the second one has told.
TEST_F(DestructiveHandlers, PolynomialOfAVariableThatItsArgumentDestroysIsLoggedAndReadsNull)
{
    FunctionVar* const own = addPolynomial("own");
    auto* c = insert(top, std::make_unique<ConcatVar>(QStringLiteral("c")));
    auto* member = insert(top, std::make_unique<FunctionVar>(QStringLiteral("member")));
    total.giveTo(*member);
    member->AddArgumentRef(y);
    c->AddVariable(member);
    own->AddArgumentRef(f);
    own->AddArgumentRef(c);
    f->GetData();
    c->getDirtyTracker()->markDirty();
    ConnectedClient ofMember(*member);
    ofMember.onUpdate = [this] { x->UpdateData(numbers({2})); };
    ConnectedClient ofArgument(*f);
    ofArgument.onUpdate = [this] { destroy("own"); };

    const MessageCapture log;
    EXPECT_TRUE(own->GetData().isNull());
    EXPECT_TRUE(isGone("own"));
    ASSERT_EQ(log.debug().size(), 1);
    EXPECT_EQ(log.debug().first(), QStringLiteral("Error in Orrery::FunctionVarStrategy::Compute, ") +
                                       destroyedOutput + QStringLiteral("\nstd::runtime_error"));
}

// --- what asks for the number of offsets on its way

TEST_F(DestructiveHandlers, DefaultIndependentIsNotMadeForAVariableThatCountingDestroys)
{
    ConnectedClient client(*f);
    client.onUpdate = [this] { destroy("f"); };
    VariableDefaults().GenerateDefaultIndep(*f);
    EXPECT_TRUE(isGone("f"));
}

TEST_F(DestructiveHandlers, UnitsOfAnIndependentFailForAVariableThatCountingDestroys)
{
    ConnectedClient client(*f);
    client.onUpdate = [this] { destroy("f"); };
    EXPECT_EQ(f->SetUnitsOfIndep(Units::FromSIString(QStringLiteral("m")), 0), ER_FAILED);
    EXPECT_TRUE(isGone("f"));
}

TEST_F(DestructiveHandlers, UnitsOfAnIndependentFailForAVariableThatItsOwnRunDestroys)
{
    const RegisteredMeasurement ending([this](HostMeasurement&) -> Variable* {
        destroy("f");
        return nullptr;
    });
    ending.giveTo(*f);
    EXPECT_EQ(f->SetUnitsOfIndep(Units(), 0), ER_FAILED);
    EXPECT_TRUE(isGone("f"));
    EXPECT_EQ(ending.runs(), 1);
}

// --- the flag of a read

TEST_F(DestructiveHandlers, FlagIsWrittenAlsoWhenTheVariableIsDestroyed)
{
    f->UpdateData(numbers({1}), IsCellArrayTrue);
    f->getDirtyTracker()->markDirty();
    ConnectedClient client(*f);
    client.onUpdate = [this] { destroy("f"); };
    IsCellArray flag = IsCellArrayTrue;
    EXPECT_TRUE(f->GetData(&flag).isNull());
    EXPECT_EQ(flag, IsCellArrayFalse);
    EXPECT_TRUE(isGone("f"));
}

// --- the function of a variable

TEST_F(DestructiveHandlers, SetFunctionTakesAnOwnChildOfAnotherName)
{
    const Function* const former = f->GetFunction();
    auto other = total.function({BVariant(100.0)});
    other->SetName(QStringLiteral("other"));
    Function* const function = insert(*f, std::move(other));
    ASSERT_NE(function, nullptr);
    const int count = f->GetPropertyCount();
    EXPECT_EQ(f->SetFunction(function), ER_SUCCESS);
    EXPECT_NE(f->GetFunction(), former);
    EXPECT_EQ(f->GetFunction(), function);
    EXPECT_EQ(function->GetName(), QStringLiteral("Function"));
    EXPECT_EQ(function->GetParent(), f);
    EXPECT_EQ(f->GetPropertyCount(), count - 1);
    EXPECT_FALSE(f->HasProperty(QStringLiteral("other")));
    EXPECT_EQ(ToDoubles(f->GetData()), Doubles{111});
}

TEST_F(DestructiveHandlers, SetFunctionKeepsTheOneThatItHas)
{
    f->GetData();
    Function* const function = f->GetFunction();
    EXPECT_EQ(f->SetFunction(function), ER_SUCCESS);
    EXPECT_EQ(f->GetFunction(), function);
    function->SetParameters({BVariant(100.0)});
    EXPECT_EQ(ToDoubles(f->GetData()), Doubles{111});
}

/// A host's value-like folder that does something when it is cloned.
class ReactingClone : public PropertyObject
{
public:
    using PropertyObject::PropertyObject;

    AbstractProperty* DoClone() const override
    {
        const auto reaction = onClone; // it may destroy this folder
        auto copy = std::make_unique<ReactingClone>(GetName());
        if (reaction)
            reaction();
        return copy.release();
    }

    std::function<void()> onClone;
};

class ClonedFunction : public FunctionVarTest
{
protected:
    Function* source = insert(top, total.function({BVariant(3.0)}));
    ReactingClone* child = insert(*source, std::make_unique<ReactingClone>(QStringLiteral("reacting")));
};

TEST_F(ClonedFunction, HasWhatTheSourceHasAndNoMore)
{
    source->DeleteProperty(Function::sFunctionName());
    const std::unique_ptr<AbstractProperty> made(source->Clone());
    const auto* clone = dynamic_cast<const Function*>(made.get());
    ASSERT_NE(clone, nullptr);
    EXPECT_EQ(clone->GetPropertyCount(), 2);
    EXPECT_FALSE(clone->HasProperty(Function::sFunctionName()));
    EXPECT_TRUE(clone->HasProperty(QStringLiteral("reacting")));
    ASSERT_NE(clone->GetMeasurement(), nullptr);
    EXPECT_NE(clone->GetMeasurement(), source->GetMeasurement());
    EXPECT_EQ(ToDoubles(clone->GetParameters().at(0)), Doubles{3});
}

TEST_F(ClonedFunction, HasItsMeasurementAlsoWhenTheSourceGoesMeanwhile)
{
    child->onClone = [this] { top.DeleteProperty(Function::StaticType()); };
    source->SetName(Function::StaticType());
    const std::unique_ptr<Function> clone(new Function(*source));
    EXPECT_FALSE(top.HasProperty(Function::StaticType()));
    EXPECT_NE(clone->GetMeasurement(), nullptr);
    EXPECT_EQ(total.census().measurements, 2); // the registered one and the clone's
}

// --- joined variables with members that compute

struct JoinedRead
{
    const char* name;
    void (*read)(const Variable& variable, bool isDestroyed);
};

void readAll(const Variable& variable, bool isDestroyed)
{
    const BVariant data = variable.GetData();
    if (isDestroyed) {
        EXPECT_TRUE(data.isNull());
    }
}

void countOffsets(const Variable& variable, bool /*isDestroyed*/)
{
    EXPECT_LE(variable.GetMaxIndepOffset(), 2u);
}

void readRange(const Variable& variable, bool isDestroyed)
{
    BVariant out;
    const ERESULT code = variable.GetValueRange(&out, 0, 0);
    if (isDestroyed) {
        EXPECT_LT(code, 0);
    }
}

void readElement(const Variable& variable, bool /*isDestroyed*/)
{
    BVariant out;
    // That of f, which may be in hand when the end comes. Without f it is x that comes first.
    const ERESULT code = variable.GetValueAt(&out, 0);
    const Doubles value = ToDoubles(out);
    EXPECT_TRUE(code < 0 || value == Doubles{5} || value == Doubles{1}) << code;
}

const JoinedRead joinedReads[] = {{"GetData", &readAll},
                                  {"GetMaxIndepOffset", &countOffsets},
                                  {"GetValueRange", &readRange},
                                  {"GetValueAt", &readElement}};

/// "c" joins f and x, "s" is the sweep of f along c. Reading f destroys one of the children of the tree.
class JoinOfComputing : public DestructiveHandlers,
                        public testing::WithParamInterface<std::tuple<JoinedRead, const char*>>
{
protected:
    ConcatVar* c = insert(top, std::make_unique<ConcatVar>(QStringLiteral("c")));
    SweptVariable* s = insert(top, std::make_unique<SweptVariable>(QStringLiteral("s")));
    const char* victim = std::get<1>(GetParam());
    RegisteredMeasurement ending{[this](HostMeasurement& run) {
        Variable* const output = run.target();
        output->UpdateData(numbers({5}));
        destroy(victim);
        return output;
    }};

    JoinOfComputing()
    {
        c->AddVariable(f);
        c->AddVariable(x);
        s->SetParameter(f);
        s->SetConcatVar(c);
        ending.giveTo(*f);
    }

    void readAndExpectTheEnd(const Variable& variable)
    {
        const bool isVictim = variable.GetName() == QString::fromLatin1(victim);
        std::get<0>(GetParam()).read(variable, isVictim);
        EXPECT_TRUE(isGone(victim));
        EXPECT_EQ(ending.runs(), 1);
        if (!isGone("c") && !isGone("f") && !isGone("x")) {
            EXPECT_EQ(ToDoubles(c->GetData()), (Doubles{5, 1}));
        }
    }
};

TEST_P(JoinOfComputing, BearsTheEndOfAnyVariableWhenTheConcatenationIsRead)
{
    readAndExpectTheEnd(*c);
}

TEST_P(JoinOfComputing, BearsTheEndOfAnyVariableWhenTheSweepIsRead)
{
    readAndExpectTheEnd(*s);
}

INSTANTIATE_TEST_SUITE_P(ReadsAndVictims, JoinOfComputing,
                         testing::Combine(testing::ValuesIn(joinedReads),
                                          testing::Values("c", "f", "s", "x")),
                         [](const auto& test) {
                             return std::string(std::get<0>(test.param).name) + "Destroys_" +
                                    std::get<1>(test.param);
                         });

/// "g" adds x, the concatenation of f and y. Reading f destroys what a test says.
class SumOverJoin : public DestructiveHandlers
{
protected:
    FunctionVar* g = insert(top, std::make_unique<FunctionVar>(QStringLiteral("g")));
    ConcatVar* c = insert(top, std::make_unique<ConcatVar>(QStringLiteral("c")));
    RegisteredMeasurement outer{&storeTotal};
    ConnectedClient client{*f};

    SumOverJoin()
    {
        c->AddVariable(f);
        c->getDirtyTracker()->markDirty();
        outer.giveTo(*g);
        for (const Variable* argument : {x, static_cast<Variable*>(c), y})
            g->AddArgumentRef(argument);
    }

    void destroyOnUpdate(const char* name)
    {
        client.onUpdate = [this, name] { destroy(name); };
    }
};

TEST_F(SumOverJoin, IsComputedFromWhatIsJoined)
{
    EXPECT_EQ(ToDoubles(g->GetData()), Doubles{22});
}

TEST_F(SumOverJoin, ReadsNullWhenOneArgumentOfSeveralDestroysTheOwner)
{
    destroyOnUpdate("g");
    IsCellArray flag = IsCellArrayTrue;
    EXPECT_TRUE(g->GetData(&flag).isNull());
    EXPECT_EQ(flag, IsCellArrayFalse);
    EXPECT_TRUE(isGone("g"));
    EXPECT_EQ(outer.runs(), 0);
}

TEST_F(SumOverJoin, FailsWhenAnArgumentDestroysItself)
{
    destroyOnUpdate("c");
    EXPECT_THROW(g->GetData(), std::logic_error);
    EXPECT_TRUE(isGone("c"));
    EXPECT_EQ(outer.runs(), 0);
}

TEST_F(SumOverJoin, FailsWhenAnArgumentDestroysTheOneBehindIt)
{
    destroyOnUpdate("y");
    EXPECT_THROW(g->GetData(), std::logic_error);
    EXPECT_EQ(outer.runs(), 0);
}

TEST_F(SumOverJoin, HasNothingOfAMemberThatDestroysItself)
{
    destroyOnUpdate("f");
    EXPECT_EQ(ToDoubles(g->GetData()), Doubles{11});
    EXPECT_TRUE(isGone("f"));
    EXPECT_EQ(outer.runs(), 1);
}

// --- more variables below one another than a read goes down

/// f0 over x, f1 over f0, ..., each over a concatenation of the one before.
class ChainOfJoins : public FunctionVarTest
{
protected:
    static constexpr int pairs = 1200;
    std::vector<FunctionVar*> chain;

    ChainOfJoins()
    {
        x->UpdateData(numbers({1, 2, 3}));
        const Variable* previous = x;
        for (int i = 0; i < pairs; ++i) {
            auto* c = insert(top, std::make_unique<ConcatVar>(QStringLiteral("c%1").arg(i)));
            c->AddVariable(previous);
            chain.push_back(insert(top, std::make_unique<FunctionVar>(QStringLiteral("f%1").arg(i))));
            total.giveTo(*chain.back());
            chain.back()->AddArgumentRef(c);
            previous = chain.back();
        }
    }
};

TEST_F(ChainOfJoins, KeepsNothingAsFinalThatWasComputedTooDeep)
{
    EXPECT_NE(ToDoubles(chain.back()->GetData()), Doubles{6}); // x wasn't reached
    EXPECT_TRUE(isDirty(*chain.back()));
    for (const std::size_t i : {100u, 250u, 900u}) {
        EXPECT_EQ(ToDoubles(chain[i]->GetData()), Doubles{6}) << i;
        EXPECT_TRUE(isClean(*chain[i])) << i;
    }
    EXPECT_EQ(ToDoubles(chain.back()->GetData()), Doubles{6}); // so far down nothing is left to compute
    EXPECT_TRUE(isClean(*chain.back()));
}

} // namespace
} // namespace Orrery
