// A host's code that finds nodes of other files, and destroys what the reference stands in.
#include "foundations/property/PropertyReference.h"
#include "results/ParameterizedResultData.h"
#include "results/ResultData.h"
#include "tests/variables/FunctionVarTestSupport.h"

#include <gtest/gtest.h>

namespace Orrery {
namespace {

using Doubles = std::vector<double>;

/// What the process asks for nodes of other files, as long as it lives: always the same node, but at the first
/// question it does something.
class DestructiveResolver
{
public:
    DestructiveResolver(AbstractProperty* found, std::function<void()> reaction)
    {
        s_found = found;
        s_reaction = std::move(reaction);
        s_questions = 0;
        PropertyReference::SetExternalResolver(&resolve);
    }
    DestructiveResolver(const DestructiveResolver&) = delete;
    DestructiveResolver& operator=(const DestructiveResolver&) = delete;
    ~DestructiveResolver()
    {
        PropertyReference::SetExternalResolver(m_former);
        s_reaction = nullptr;
    }

    int questions() const { return s_questions; }

private:
    const PropertyReference::ExternalResolver m_former = PropertyReference::GetExternalResolver();

    static AbstractProperty* resolve(const PropertyReference& /*reference*/)
    {
        ++s_questions;
        if (s_reaction)
            std::exchange(s_reaction, nullptr)();
        return s_found;
    }

    static inline AbstractProperty* s_found = nullptr;
    static inline std::function<void()> s_reaction;
    static inline int s_questions = 0;
};

void addOutsideReferences(Variable& owner, const QString& folderName, int count)
{
    PropertyObject* const folder = insertFolder(owner, folderName);
    for (int i = 0; i < count; ++i) {
        auto reference = std::make_unique<PropertyReference>(QString::number(i));
        reference->RestorePath(QStringLiteral("/x"), QStringLiteral("/other"), QStringLiteral("HDF5"));
        ASSERT_NE(insert(*folder, std::move(reference)), nullptr);
    }
}

/// Function variables "f" and "g" in the folder "sub" and "z" beside it, all over x in another file.
class ArgumentsInAnotherFile : public testing::Test
{
protected:
    RegisteredMeasurement total{&storeTotal};
    Variable x{QStringLiteral("x"), numbers({1})};
    PropertyObject top{QStringLiteral("top")};
    PropertyObject* sub = insertFolder(top, QStringLiteral("sub"));
    FunctionVar* f = add(*sub, "f");
    FunctionVar* g = add(*sub, "g");
    FunctionVar* z = add(top, "z");

    FunctionVar* add(PropertyObject& folder, const char* name) const
    {
        auto* variable = insert(folder, std::make_unique<FunctionVar>(QString::fromLatin1(name)));
        total.giveTo(*variable);
        addOutsideReferences(*variable, QStringLiteral("Arguments"), 3);
        return variable;
    }

    ERESULT relink(const Variable& variable) const
    {
        const auto strategy = variable.GetStrategyPtr().lock(); // which may have to outlive the Variable
        return dynamic_cast<FunctionVarStrategy&>(*strategy).Relink();
    }

    bool dependsOnX(const Variable& variable) const { return sourceCount(variable) == 2; }
};

TEST_F(ArgumentsInAnotherFile, AreAllLinkedByAResolverThatDestroysNothing)
{
    const DestructiveResolver resolver(&x, [] {});
    EXPECT_EQ(relink(*f), ER_SUCCESS);
    EXPECT_TRUE(dependsOnX(*f));
    EXPECT_EQ(resolver.questions(), 3);
    EXPECT_EQ(ToDoubles(f->GetData()), Doubles{3});
}

TEST_F(ArgumentsInAnotherFile, AreLinkedButForOneThatIsDestroyedMeanwhile)
{
    const DestructiveResolver resolver(&x, [this] {
        f->GetPtr<PropertyObject>(QStringLiteral("Arguments"))->DeleteProperty(QStringLiteral("1"));
    });
    EXPECT_EQ(relink(*f), ER_NOT_FOUND);
    EXPECT_TRUE(dependsOnX(*f));
    EXPECT_EQ(resolver.questions(), 2);
    EXPECT_EQ(ToDoubles(f->GetData()), Doubles{2});
}

TEST_F(ArgumentsInAnotherFile, AreNotLinkedWhenAllAreDestroyedTheResolvedOneIncluded)
{
    const DestructiveResolver resolver(&x, [this] { f->DeleteArguments(); });
    EXPECT_EQ(relink(*f), ER_NOT_FOUND);
    EXPECT_FALSE(dependsOnX(*f));
    EXPECT_EQ(resolver.questions(), 1);
    EXPECT_EQ(ToDoubles(f->GetData()), Doubles{0});
}

TEST_F(ArgumentsInAnotherFile, CannotBeLinkedToAVariableThatIsDestroyedMeanwhile)
{
    const DestructiveResolver resolver(&x, [this] { sub->DeleteProperty(QStringLiteral("f")); });
    EXPECT_EQ(relink(*f), ER_FAILED);
    EXPECT_FALSE(sub->HasProperty(QStringLiteral("f")));
    EXPECT_TRUE(x.getDirtyTracker()->getObservers()().empty());
    EXPECT_EQ(resolver.questions(), 1);
}

TEST_F(ArgumentsInAnotherFile, GiveNullWhenToFindThemDestroysTheVariable)
{
    const DestructiveResolver resolver(&x, [this] { sub->DeleteProperty(QStringLiteral("f")); });
    EXPECT_TRUE(f->GetData().isNull());
    EXPECT_FALSE(sub->HasProperty(QStringLiteral("f")));
    EXPECT_EQ(total.runs(), 0);
}

TEST_F(ArgumentsInAnotherFile, FailTheReadWhenToFindThemDestroysThem)
{
    const DestructiveResolver resolver(&x, [this] { f->DeleteArguments(); });
    EXPECT_THROW(f->GetData(), std::logic_error);
    EXPECT_EQ(total.runs(), 0);
}

TEST_F(ArgumentsInAnotherFile, AreLinkedAllOverATreeOfWhichASiblingIsDestroyedMeanwhile)
{
    const DestructiveResolver resolver(&x, [this] { sub->DeleteProperty(QStringLiteral("g")); });
    EXPECT_EQ(RelinkFunctionVariables(top), ER_SUCCESS);
    EXPECT_TRUE(dependsOnX(*f));
    EXPECT_TRUE(dependsOnX(*z));
    EXPECT_FALSE(sub->HasProperty(QStringLiteral("g")));
}

TEST_F(ArgumentsInAnotherFile, AreLinkedAllOverATreeOfWhichTheLinkedOneIsDestroyedMeanwhile)
{
    const DestructiveResolver resolver(&x, [this] { sub->DeleteProperty(QStringLiteral("f")); });
    EXPECT_EQ(RelinkFunctionVariables(top), ER_FAILED);
    EXPECT_TRUE(dependsOnX(*g));
    EXPECT_TRUE(dependsOnX(*z));
}

TEST_F(ArgumentsInAnotherFile, AreLinkedAllOverATreeOfWhichAFolderIsDestroyedMeanwhile)
{
    const DestructiveResolver resolver(&x, [this] { top.DeleteProperty(QStringLiteral("sub")); });
    EXPECT_EQ(RelinkFunctionVariables(top), ER_FAILED);
    EXPECT_TRUE(dependsOnX(*z));
    EXPECT_EQ(x.getDirtyTracker()->getObservers()().size(), 1u);
}

// --- independents

/// A sweep of one run, whose variable "I" is measured against three references into another file.
class IndependentsInAnotherFile : public testing::Test
{
protected:
    Variable x{QStringLiteral("x"), numbers({1})};
    PropertyObject top{QStringLiteral("top")};
    Variable* parameter = insert(top, std::make_unique<Variable>(QStringLiteral("T"), numbers({10})));
    ParameterizedResultData* sweep =
        insert(top, std::make_unique<ParameterizedResultData>(QStringLiteral("sweep")));
    ResultData* run = insert(top, std::make_unique<ResultData>(QStringLiteral("run")));
    Variable* current = insert(*run, std::make_unique<Variable>(QStringLiteral("I"), numbers({2})));

    IndependentsInAnotherFile()
    {
        sweep->SetParameterRef(parameter);
        sweep->AddResultDataRef(run);
        addOutsideReferences(*current, QStringLiteral("Indep"), 3);
    }

    /// How many axes the joined variable of I has; the sweep adds the parameter as one.
    int axesOfJoined() { return sweep->FindOrCreateResultVar(QStringLiteral("I"))->GetIndepCount(); }
};

TEST_F(IndependentsInAnotherFile, AreJoinedByAResolverThatDestroysNothing)
{
    const DestructiveResolver resolver(&x, [] {});
    EXPECT_EQ(axesOfJoined(), 2); // the three are one
    EXPECT_EQ(resolver.questions(), 3);
}

TEST_F(IndependentsInAnotherFile, AreJoinedButForThoseThatAreDestroyedMeanwhile)
{
    const DestructiveResolver resolver(&x, [this] {
        auto* const axes = current->GetPtr<PropertyObject>(QStringLiteral("Indep"));
        axes->DeleteProperty(QStringLiteral("1"));
        axes->DeleteProperty(QStringLiteral("2"));
    });
    EXPECT_EQ(axesOfJoined(), 2);
    EXPECT_EQ(resolver.questions(), 1);
}

TEST_F(IndependentsInAnotherFile, AreNotJoinedWhenTheirFolderIsDestroyedMeanwhile)
{
    const DestructiveResolver resolver(&x, [this] { current->DeleteProperty(QStringLiteral("Indep")); });
    const MessageCapture log; // of the one that leads nowhere
    EXPECT_EQ(axesOfJoined(), 1);
    EXPECT_EQ(resolver.questions(), 1);
    EXPECT_EQ(log.warnings().size(), 1);
}

TEST_F(IndependentsInAnotherFile, AreNotJoinedWhenTheirVariableIsDestroyedMeanwhile)
{
    const DestructiveResolver resolver(&x, [this] { run->DeleteProperty(QStringLiteral("I")); });
    const MessageCapture log;
    EXPECT_EQ(axesOfJoined(), 1);
    EXPECT_EQ(resolver.questions(), 1);
    EXPECT_EQ(log.warnings().size(), 1);
}

TEST_F(IndependentsInAnotherFile, AreNotFoundWhenTheyAreDestroyedMeanwhile)
{
    const DestructiveResolver resolver(&x, [this] { current->DeleteProperty(QStringLiteral("Indep")); });
    const MessageCapture log;
    Variable* found = parameter;
    EXPECT_EQ(current->GetIndepVariable(&found, 0), ER_NOT_FOUND);
    EXPECT_EQ(found, parameter); // untouched
    EXPECT_EQ(log.warnings().size(), 1);
}

} // namespace
} // namespace Orrery
