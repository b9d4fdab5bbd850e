// A move hands a Variable over into its place in the tree; its strategy goes on working on the source.
#include "foundations/property/PropertyHandle.h"
#include "tests/variables/VariableTestSupport.h"
#include "variables/ExplicitDataVarStrategy.h"
#include "variables/Variable.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace Orrery {
namespace {

using Doubles = std::vector<double>;

const QString dataName = QStringLiteral("Data");
const QString noteName = QStringLiteral("Note");
const QString strategyName = QStringLiteral("VariableStrategy");

std::unique_ptr<Variable> makeVariable(const QString& name, std::vector<double> data)
{
    return std::make_unique<Variable>(name, BVariant(std::move(data)));
}

// `depth` folders below one another; the innermost is handed back.
PropertyObject* growChain(PropertyObject& top, int depth)
{
    PropertyObject* folder = &top;
    for (int i = 0; i < depth; ++i) {
        folder = put(*folder, std::make_unique<PropertyObject>(QStringLiteral("f")));
        if (!folder)
            throw std::logic_error("the chain doesn't get that deep");
    }
    return folder;
}

TEST(VariableMove, ByConstructionTakesNameChildrenAndStrategy)
{
    const auto source = makeVariable(QStringLiteral("source"), {1, 2});
    const auto* data = source->GetPropertyPtr(dataName);
    const auto strategy = source->GetStrategyPtr().lock();

    Variable target(std::move(*source));
    EXPECT_EQ(target.GetName(), QStringLiteral("source"));
    EXPECT_EQ(target.GetPropertyPtr(dataName), data);
    EXPECT_EQ(target.GetPropertyPtr(dataName)->GetParent(), &target);
    EXPECT_TRUE(target.HasProperty(strategyName));
    EXPECT_EQ(target.GetStrategyPtr().lock(), strategy);
    EXPECT_EQ(source->GetPropertyCount(), 0);
    EXPECT_EQ(source->GetStrategyPtr().lock(), nullptr);
}

TEST(VariableMove, ByAssignmentKeepsOtherChildrenAndTheName)
{
    const auto source = makeVariable(QStringLiteral("source"), {1, 2});
    const auto target = makeVariable(QStringLiteral("target"), {9});
    ASSERT_GE(target->SetProperty(noteName, QStringLiteral("stays")), 0);
    const std::weak_ptr<IVariableStrategy> former = target->GetStrategyPtr();

    EXPECT_EQ(&(*target = std::move(*source)), target.get());
    EXPECT_EQ(target->GetName(), QStringLiteral("target"));
    EXPECT_EQ(childText(*target, noteName), QStringLiteral("stays"));
    EXPECT_EQ(childDoubles(*target, dataName), (Doubles{1, 2}));
    EXPECT_TRUE(former.expired());
}

TEST(VariableMove, LetsTheNewVariableReadTheDataOfTheSource)
{
    const auto source = makeVariable(QStringLiteral("source"), {1, 2});
    Variable target(std::move(*source));
    // The moved child isn't what is read; the look-up made an empty one on the source.
    EXPECT_TRUE(target.GetData().isNull());
    EXPECT_TRUE(source->HasProperty(dataName));
    EXPECT_EQ(childDoubles(target, dataName), (Doubles{1, 2}));

    ASSERT_GE(source->SetProperty(dataName, MakeVector<double>({5, 6, 7})), 0);
    EXPECT_EQ(ToDoubles(target.GetData()), (Doubles{5, 6, 7}));
    EXPECT_EQ(target.GetMaxIndepOffset(), 3u);
}

TEST(VariableMove, LetsAWriteOverwriteTheSource)
{
    const auto source = makeVariable(QStringLiteral("source"), {1, 2});
    Variable target(std::move(*source));
    ASSERT_GE(target.SetProperty(noteName, QStringLiteral("from target")), 0);
    ASSERT_GE(source->SetProperty(QStringLiteral("Own"), BVariant(1.0)), 0);

    target.UpdateData(MakeVector<double>({3}));
    EXPECT_FALSE(source->HasProperty(QStringLiteral("Own")));
    EXPECT_EQ(childText(*source, noteName), QStringLiteral("from target"));
    EXPECT_EQ(source->GetName(), QStringLiteral("source"));
    // The data went to the source, which works again; the child that was moved stays as it was.
    EXPECT_EQ(childDoubles(*source, dataName), (Doubles{3}));
    EXPECT_EQ(ToDoubles(source->GetData()), (Doubles{3}));
    EXPECT_EQ(childDoubles(target, dataName), (Doubles{1, 2}));
    EXPECT_EQ(ToDoubles(target.GetData()), (Doubles{3}));
}

TEST(VariableMove, LetsAStrategyChangeOverwriteTheSource)
{
    const auto source = makeVariable(QStringLiteral("source"), {1, 2});
    Variable target(std::move(*source));
    const auto strategy = target.GetStrategyPtr().lock();
    EXPECT_EQ(target.SetStrategy<ExplicitDataVarStrategy>(), strategy.get());
    EXPECT_EQ(childDoubles(*source, dataName), (Doubles{1, 2}));
    EXPECT_NE(source->GetStrategyPtr().lock(), nullptr);
    EXPECT_NE(source->GetStrategyPtr().lock(), strategy);
}

// Even the assignment that ends the tie still finds it.
TEST(VariableMove, LetsACopyAssignmentOverwriteTheSourceOnce)
{
    const auto source = makeVariable(QStringLiteral("source"), {1, 2});
    Variable target(std::move(*source));
    const auto fresh = makeVariable(QStringLiteral("fresh"), {7});
    target = *fresh;
    EXPECT_EQ(childDoubles(*source, dataName), (Doubles{7}));
    target.UpdateData(MakeVector<double>({8}));
    EXPECT_EQ(childDoubles(target, dataName), (Doubles{8}));
    EXPECT_EQ(childDoubles(*source, dataName), (Doubles{7}));
}

TEST(VariableMove, IsMendedByACopyAssignment)
{
    auto source = makeVariable(QStringLiteral("source"), {1, 2});
    Variable target(std::move(*source));
    source.reset(); // the strategy of the target names nothing now
    const auto fresh = makeVariable(QStringLiteral("fresh"), {7});
    target = *fresh;
    EXPECT_EQ(ToDoubles(target.GetData()), (Doubles{7}));
    target.UpdateData(MakeVector<double>({8}));
    EXPECT_EQ(childDoubles(target, dataName), (Doubles{8}));
    EXPECT_EQ(ToDoubles(fresh->GetData()), (Doubles{7}));
}

TEST(VariableMove, FromATemporaryReadsAndWritesTheDataMoved)
{
    Variable target(QStringLiteral("target"), MakeVector<double>({9}));
    target = Variable(QStringLiteral("temporary"), MakeVector<double>({1, 2}));
    EXPECT_EQ(ToDoubles(target.GetData()), (Doubles{1, 2}));
    target = Variable(QStringLiteral("temporary"), MakeVector<double>({3, 4}));
    target.UpdateData(MakeVector<double>({5}));
    EXPECT_EQ(childDoubles(target, dataName), (Doubles{5}));
    target = Variable(QStringLiteral("temporary"), MakeVector<double>({6}));
    const auto strategy = target.GetStrategyPtr().lock();
    EXPECT_EQ(ToDoubles(strategy->GetData(nullptr)), (Doubles{6}))
        << "not that of the temporary, which is gone";
    EXPECT_EQ(target.SetStrategy<ExplicitDataVarStrategy>(), strategy.get());
    EXPECT_EQ(ToDoubles(target.GetData()), (Doubles{6}));
}

TEST(VariableMove, AfterTheSourceIsCopiedBackWorksOnItself)
{
    Variable source(QStringLiteral("source"), MakeVector<double>({1}));
    Variable target(QStringLiteral("target"));
    target = std::move(source);
    target = source;
    target.UpdateData(MakeVector<double>({2}));
    EXPECT_EQ(childDoubles(target, dataName), (Doubles{2}));
    EXPECT_EQ(ToDoubles(target.GetData()), (Doubles{2}));
}

TEST(VariableMove, AlongAChainWorksOnTheFirstSource)
{
    auto first = makeVariable(QStringLiteral("first"), {1, 2});
    auto second = std::make_unique<Variable>(std::move(*first));
    Variable third(std::move(*second));
    second.reset();
    third.UpdateData(MakeVector<double>({3}));
    EXPECT_EQ(childDoubles(*first, dataName), (Doubles{3}));
    EXPECT_EQ(ToDoubles(third.GetData()), (Doubles{3}));
    first.reset();
    EXPECT_EQ(ToDoubles(third.GetData()), (Doubles{1, 2})); // its own child, as it was moved
}

TEST(VariableMove, ThereAndBackWorksOnItself)
{
    Variable variable(QStringLiteral("x"), MakeVector<double>({1, 2}));
    Variable away(std::move(variable));
    variable = std::move(away);
    EXPECT_EQ(ToDoubles(variable.GetData()), (Doubles{1, 2}));
    variable.UpdateData(MakeVector<double>({3}));
    EXPECT_EQ(childDoubles(variable, dataName), (Doubles{3}));
}

TEST(VariableMove, TakesOverThePlaceInTheTreeUnderItsOwnName)
{
    PropertyObject folder;
    std::unique_ptr<Variable> source(put(folder, makeVariable(QStringLiteral("source"), {1, 2})));
    auto target = makeVariable(QStringLiteral("target"), {9});
    *target = std::move(*source);
    EXPECT_EQ(source->GetParent(), nullptr);
    EXPECT_FALSE(folder.HasProperty(QStringLiteral("source")));
    EXPECT_EQ(target->GetParent(), &folder);
    EXPECT_EQ(folder.GetPropertyPtr(QStringLiteral("target")), target.get());
    target.release(); // the folder's
}

TEST(VariableMove, ByConstructionTakesOverThePlaceInTheTree)
{
    PropertyObject folder;
    std::unique_ptr<Variable> source(put(folder, makeVariable(QStringLiteral("source"), {1, 2})));
    auto target = std::make_unique<Variable>(std::move(*source));
    EXPECT_EQ(source->GetParent(), nullptr);
    EXPECT_EQ(target->GetParent(), &folder);
    EXPECT_EQ(folder.GetPropertyPtr(QStringLiteral("source")), target.get());
    target.release(); // the folder's
}

TEST(VariableMove, ReplacesASiblingOfItsName)
{
    PropertyObject folder;
    std::unique_ptr<Variable> source(put(folder, makeVariable(QStringLiteral("source"), {1, 2})));
    ASSERT_NE(put(folder, std::make_unique<PropertyObject>(QStringLiteral("target"))), nullptr);
    auto* target = makeVariable(QStringLiteral("target"), {9}).release();
    *target = std::move(*source);
    EXPECT_EQ(folder.GetPropertyPtr(QStringLiteral("target")), target);
    EXPECT_EQ(folder.GetPropertyCount(), 1);
}

TEST(VariableMove, LeavesAFormerParent)
{
    PropertyObject from;
    PropertyObject to;
    std::unique_ptr<Variable> source(put(from, makeVariable(QStringLiteral("source"), {1, 2})));
    Variable* target = put(to, makeVariable(QStringLiteral("target"), {9}));
    *target = std::move(*source);
    EXPECT_EQ(target->GetParent(), &from);
    EXPECT_EQ(to.GetPropertyCount(), 0);
}

TEST(VariableMove, KeepsTheParentWhenTheSourceHasNone)
{
    PropertyObject folder;
    Variable* target = put(folder, makeVariable(QStringLiteral("target"), {9}));
    const auto source = makeVariable(QStringLiteral("source"), {1, 2});
    *target = std::move(*source);
    EXPECT_EQ(target->GetParent(), &folder);
    EXPECT_EQ(folder.GetPropertyPtr(QStringLiteral("target")), target);
}

TEST(VariableMove, ToItselfEndsWithoutAStrategy)
{
    PropertyObject folder;
    Variable* variable = put(folder, makeVariable(QStringLiteral("x"), {1, 2}));
    Variable& alias = *variable;
    *variable = std::move(alias);
    EXPECT_EQ(variable->GetStrategyPtr().lock(), nullptr);
    EXPECT_EQ(childDoubles(*variable, dataName), (Doubles{1, 2}));
    EXPECT_EQ(variable->GetParent(), &folder);
    EXPECT_EQ(folder.GetPropertyPtr(QStringLiteral("x")), variable);
}

TEST(VariableMovedFrom, AnswersLikeAVariableWithoutData)
{
    Variable source(QStringLiteral("source"), MakeVector<double>({1, 2}));
    Variable target(std::move(source));
    IsCellArray flag = IsCellArrayTrue;
    EXPECT_TRUE(source.GetData(&flag).isNull());
    EXPECT_EQ(flag, IsCellArrayFalse);
    EXPECT_EQ(source.GetMaxIndepOffset(), 0u);
    EXPECT_EQ(source.GetElementDimCount(), 0u);
    std::vector<std::uint64_t> shape;
    EXPECT_EQ(source.GetElementShape(&shape), ER_FAILED);
    BVariant out = MakeVector<double>({7.5});
    EXPECT_EQ(source.GetValueAt(&out, 0), ER_FAILED);
    EXPECT_EQ(source.GetValueRange(&out, 0, 0), ER_FAILED);
    EXPECT_EQ(ToDoubles(out), (Doubles{7.5}));
    EXPECT_EQ(&source.UpdateData(MakeVector<double>({3})), &source);
    EXPECT_EQ(source.GetPropertyCount(), 0);
}

TEST(VariableMovedFrom, WorksAgainAfterACopyAssignment)
{
    Variable source(QStringLiteral("source"), MakeVector<double>({1, 2}));
    const Variable target(std::move(source));
    const Variable fresh(QStringLiteral("fresh"), MakeVector<double>({4}));
    source = fresh;
    EXPECT_EQ(ToDoubles(source.GetData()), (Doubles{4}));
}

TEST(VariableMovedFrom, GivesACopyWithTheExplicitStrategy)
{
    Variable source(QStringLiteral("source"), MakeVector<double>({1, 2}));
    const Variable target(std::move(source));
    const Variable copy(source);
    EXPECT_NE(copy.GetStrategyPtr().lock(), nullptr);
    EXPECT_TRUE(copy.GetData().isNull());
}

// Source and target may stand below one another.

TEST(VariableMoveWithinATree, TakesASourceBelowTheTargetOut)
{
    PropertyObject folder;
    Variable* outer = put(folder, makeVariable(QStringLiteral("outer"), {9}));
    std::unique_ptr<Variable> inner(put(*outer, makeVariable(QStringLiteral("inner"), {1, 2})));
    *outer = std::move(*inner);
    EXPECT_EQ(inner->GetParent(), nullptr);
    EXPECT_FALSE(outer->HasProperty(QStringLiteral("inner")));
    EXPECT_EQ(outer->GetParent(), &folder);
    EXPECT_EQ(childDoubles(*outer, dataName), (Doubles{1, 2}));
}

TEST(VariableMoveWithinATree, SavesTheSourceFromAFolderThatItsChildReplaces)
{
    Variable outer(QStringLiteral("outer"), MakeVector<double>({9}));
    auto* shelf = put(outer, std::make_unique<PropertyObject>(noteName));
    std::unique_ptr<Variable> inner(put(*shelf, makeVariable(QStringLiteral("inner"), {1, 2})));
    ASSERT_GE(inner->SetProperty(noteName, QStringLiteral("replaces the shelf")), 0);
    outer = std::move(*inner);
    EXPECT_EQ(childText(outer, noteName), QStringLiteral("replaces the shelf"));
    EXPECT_EQ(inner->GetParent(), nullptr);
    EXPECT_EQ(inner->GetPropertyCount(), 0);
}

TEST(VariableMoveWithinATree, LiftsATargetBelowTheSourceIntoItsPlace)
{
    PropertyObject folder;
    std::unique_ptr<Variable> outer(put(folder, makeVariable(QStringLiteral("outer"), {9})));
    Variable* inner = put(*outer, makeVariable(QStringLiteral("inner"), {1, 2}));
    *inner = std::move(*outer);
    EXPECT_EQ(inner->GetParent(), &folder);
    EXPECT_EQ(outer->GetParent(), nullptr);
    EXPECT_EQ(outer->GetPropertyCount(), 0);
    EXPECT_EQ(childDoubles(*inner, dataName), (Doubles{9}));
}

TEST(VariableMoveWithinATree, LeavesATargetBelowALooseSourceThere)
{
    Variable outer(QStringLiteral("outer"), MakeVector<double>({9}));
    auto* shelf = put(outer, std::make_unique<PropertyObject>(QStringLiteral("shelf")));
    Variable* inner = put(*shelf, makeVariable(QStringLiteral("inner"), {1, 2}));
    *inner = std::move(outer);
    EXPECT_EQ(inner->GetParent(), shelf);
    EXPECT_EQ(outer.GetPropertyPtr(QStringLiteral("shelf")), shelf);
    EXPECT_EQ(outer.GetPropertyCount(), 1);
    EXPECT_EQ(childDoubles(*inner, dataName), (Doubles{9}));
    // Its data go to the source above it, which isn't overwritten: that would be the target's end.
    inner->UpdateData(MakeVector<double>({3}));
    inner->SetStrategy<ExplicitDataVarStrategy>();
    EXPECT_EQ(inner->GetParent(), shelf);
    EXPECT_EQ(childDoubles(outer, dataName), (Doubles{3}));
}

TEST(VariableMoveTooDeep, LeavesTheChildWithTheSource)
{
    Variable source(QStringLiteral("source"), MakeVector<double>({1, 2}));
    growChain(*put(source, std::make_unique<PropertyObject>(QStringLiteral("deep"))), 900);
    PropertyObject top;
    Variable* target = put(*growChain(top, 300), makeVariable(QStringLiteral("target"), {9}));
    *target = std::move(source);
    EXPECT_TRUE(source.HasProperty(QStringLiteral("deep")));
    EXPECT_FALSE(target->HasProperty(QStringLiteral("deep")));
    EXPECT_EQ(childDoubles(*target, dataName), (Doubles{1, 2}));
}

TEST(VariableMoveTooDeep, LeavesTheTargetInItsFormerPlace)
{
    PropertyObject top;
    std::unique_ptr<Variable> source(
        put(*growChain(top, 900), makeVariable(QStringLiteral("source"), {1, 2})));
    PropertyObject folder;
    Variable* target = put(folder, makeVariable(QStringLiteral("target"), {9}));
    growChain(*target, 300);
    *target = std::move(*source);
    EXPECT_EQ(source->GetParent(), nullptr);
    EXPECT_EQ(target->GetParent(), &folder);
    EXPECT_EQ(folder.GetPropertyPtr(QStringLiteral("target")), target);
}

// A host's handlers run while the children move.

struct Reactions : public ::testing::Test
{
    Reactions()
        : source(QStringLiteral("source"), MakeVector<double>({1, 2}))
        , target(QStringLiteral("target"))
    {
        reacting = put(source, std::make_unique<ReactingFolder>(QStringLiteral("M")));
        put(source, std::make_unique<PropertyObject>(QStringLiteral("A")));
        put(source, std::make_unique<PropertyObject>(QStringLiteral("Z")));
    }

    Variable source;
    Variable target;
    ReactingFolder* reacting = nullptr;
};

TEST_F(Reactions, MayDeleteASiblingThatHasNotMovedYet)
{
    reacting->reaction = [this] { EXPECT_GE(source.DeleteProperty(QStringLiteral("Z")), 0); };
    target = std::move(source);
    EXPECT_TRUE(target.HasProperty(QStringLiteral("M")));
    EXPECT_FALSE(target.HasProperty(QStringLiteral("Z")));
    EXPECT_EQ(source.GetPropertyCount(), 0);
}

TEST_F(Reactions, MayDeleteASiblingThatHasMoved)
{
    reacting->reaction = [this] { EXPECT_GE(target.DeleteProperty(QStringLiteral("A")), 0); };
    target = std::move(source);
    EXPECT_FALSE(target.HasProperty(QStringLiteral("A")));
    EXPECT_TRUE(target.HasProperty(QStringLiteral("Z")));
}

TEST_F(Reactions, MayRenameASiblingThatHasNotMovedYet)
{
    reacting->reaction = [this] {
        EXPECT_GE(source.GetPropertyPtr(QStringLiteral("Z"))->SetName(QStringLiteral("Y")), 0);
    };
    target = std::move(source);
    EXPECT_TRUE(target.HasProperty(QStringLiteral("Y")));
    EXPECT_EQ(source.GetPropertyCount(), 0);
}

TEST_F(Reactions, MayPutTheMovingChildElsewhere)
{
    PropertyObject elsewhere;
    reacting->reaction = [&] { EXPECT_GE(elsewhere.InsertProperty(reacting), 0); };
    target = std::move(source);
    EXPECT_EQ(reacting->GetParent(), &elsewhere);
    EXPECT_FALSE(target.HasProperty(QStringLiteral("M")));
    EXPECT_TRUE(target.HasProperty(QStringLiteral("Z")));
}

TEST_F(Reactions, MayFillTheSourceAgain)
{
    reacting->reaction = [this] { put(source, std::make_unique<PropertyObject>(QStringLiteral("B"))); };
    target = std::move(source);
    EXPECT_TRUE(target.HasProperty(QStringLiteral("M")));
    EXPECT_TRUE(target.HasProperty(QStringLiteral("Z")));
    EXPECT_EQ(source.GetPropertyCount(), 1);
}

TEST(ReactionsToAMove, MayDestroyTheSource)
{
    PropertyObject folder;
    Variable* source = put(folder, makeVariable(QStringLiteral("source"), {1, 2}));
    auto* reacting = put(*source, std::make_unique<ReactingFolder>(QStringLiteral("M")));
    reacting->reaction = [&] { EXPECT_GE(folder.DeleteProperty(QStringLiteral("source")), 0); };
    Variable target(QStringLiteral("target"));
    target = std::move(*source);
    EXPECT_TRUE(target.HasProperty(QStringLiteral("M")));
    EXPECT_EQ(ToDoubles(target.GetData()), (Doubles{1, 2}));
    EXPECT_EQ(target.GetParent(), nullptr);
}

TEST(ReactionsToAMove, MayDestroyTheTarget)
{
    Variable source(QStringLiteral("source"), MakeVector<double>({1, 2}));
    auto* reacting = put(source, std::make_unique<ReactingFolder>(QStringLiteral("A")));
    PropertyObject folder;
    Variable* target = put(folder, std::make_unique<Variable>(QStringLiteral("target")));
    reacting->reaction = [&] { EXPECT_GE(folder.DeleteProperty(QStringLiteral("target")), 0); };
    *target = std::move(source);
    EXPECT_EQ(folder.GetPropertyCount(), 0);
    EXPECT_EQ(childDoubles(source, dataName), (Doubles{1, 2}));
    EXPECT_TRUE(source.HasProperty(QStringLiteral("A")));
}

TEST(ReactionsToAMove, MayDestroyTheSourceOfAChildThatFitsNowhere)
{
    PropertyObject folder;
    Variable* source = put(folder, makeVariable(QStringLiteral("source"), {1, 2}));
    auto* reacting = put(*source, std::make_unique<ReactingFolder>(QStringLiteral("M")));
    growChain(*reacting, 900);
    const PropertyHandle child(reacting);
    reacting->reaction = [&] { EXPECT_GE(folder.DeleteProperty(QStringLiteral("source")), 0); };
    PropertyObject top;
    Variable* target = put(*growChain(top, 300), makeVariable(QStringLiteral("target"), {9}));
    *target = std::move(*source);
    EXPECT_FALSE(target->HasProperty(QStringLiteral("M")));
    EXPECT_TRUE(child.IsExpired());
}

TEST(ReactionsToAMove, MayMoveTheSourceElsewhere)
{
    PropertyObject folder;
    PropertyObject elsewhere;
    std::unique_ptr<Variable> source(put(folder, makeVariable(QStringLiteral("source"), {1, 2})));
    auto* reacting = put(*source, std::make_unique<ReactingFolder>(QStringLiteral("M")));
    reacting->reaction = [&] {
        EXPECT_GE(folder.RemoveProperty(QStringLiteral("source")), 0);
        EXPECT_GE(elsewhere.InsertProperty(source.get()), 0);
    };
    Variable target(QStringLiteral("target"));
    target = std::move(*source);
    EXPECT_EQ(target.GetParent(), &elsewhere);
    EXPECT_EQ(source->GetParent(), nullptr);
    EXPECT_EQ(folder.GetPropertyCount(), 0);
}

TEST_F(Reactions, MayWriteDataThroughEitherVariable)
{
    reacting->reaction = [this] {
        target.UpdateData(MakeVector<double>({3}));
        source.UpdateData(MakeVector<double>({4}));
    };
    target = std::move(source);
    EXPECT_EQ(source.GetStrategyPtr().lock(), nullptr);
    EXPECT_TRUE(target.HasProperty(dataName));
}

} // namespace
} // namespace Orrery
