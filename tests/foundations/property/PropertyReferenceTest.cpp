#include "foundations/property/PropertyReference.h"
#include "foundations/property/NodeAccess_p.h"

#include "tests/foundations/property/TreeNodes.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>

namespace Orrery {
namespace {

using namespace TreeTest;

/// top / left / { x, r }, top / right / y
class Reference : public ::testing::Test
{
protected:
    Reference()
        : top(std::make_unique<HostFolder>(QStringLiteral("top")))
        , left(addFolder(*top, QStringLiteral("left")))
        , right(addFolder(*top, QStringLiteral("right")))
        , x(addValue(*left, QStringLiteral("x")))
        , y(addValue(*right, QStringLiteral("y")))
    {
    }

    /// A reference in "left".
    PropertyReference* refer(const AbstractProperty& target)
    {
        return addReference(*left, QStringLiteral("r"), target);
    }

    static void expectTarget(const PropertyReference* reference, const AbstractProperty* target,
                             const char* path)
    {
        EXPECT_EQ(reference->Resolve(), target);
        EXPECT_EQ(reference->ResolveConst(), target);
        EXPECT_EQ(reference->ReferencePath(), QString::fromUtf8(path));
        EXPECT_TRUE(reference->ReferenceFilePath().isEmpty());
        EXPECT_TRUE(reference->ReferenceFileType().isEmpty());
    }

    std::unique_ptr<HostFolder> top;
    HostFolder* left;
    HostFolder* right;
    SimpleProperty* x;
    SimpleProperty* y;
};

TEST_F(Reference, StartsUnset)
{
    const PropertyReference nameless;
    EXPECT_TRUE(nameless.GetName().isEmpty());
    const PropertyReference reference(QStringLiteral("r"));
    EXPECT_EQ(reference.GetName(), QStringLiteral("r"));
    expectTarget(&reference, nullptr, "");
}

TEST_F(Reference, IsBoundInOneTree)
{
    expectTarget(refer(*y), y, "../../right/y");
    expectTarget(addReference(*left, QStringLiteral("toSibling"), *x), x, "../x");
    expectTarget(addReference(*left, QStringLiteral("toParent"), *left), left, "..");
    expectTarget(addReference(*left, QStringLiteral("toRoot"), *top), top.get(), "../..");
    expectTarget(addReference(*top, QStringLiteral("down"), *y), y, "../right/y");
}

TEST_F(Reference, MayPointAtAnotherReference)
{
    const PropertyReference* first = refer(*y);
    const PropertyReference* second = addReference(*right, QStringLiteral("second"), *first);
    expectTarget(second, first, "../../left/r");
}

TEST_F(Reference, RefusesWhatItCanNotBe)
{
    PropertyReference* reference = refer(*y);
    HostFolder other(QStringLiteral("other"));
    EXPECT_EQ(reference->SetPropertyRef(nullptr), ER_INVALID_ARGUMENT);
    EXPECT_EQ(reference->SetPropertyRef(reference), ER_INVALID_ARGUMENT);
    EXPECT_EQ(reference->SetPropertyRef(&other), ER_INVALID_ARGUMENT);
    expectTarget(reference, y, "../../right/y"); // the former binding is kept
    PropertyReference outside(QStringLiteral("outside"));
    EXPECT_EQ(outside.SetPropertyRef(y), ER_INVALID_ARGUMENT);
    expectTarget(&outside, nullptr, "");
}

TEST_F(Reference, IsBoundAnew)
{
    PropertyReference* reference = refer(*y);
    ASSERT_EQ(reference->SetPropertyRef(x), ER_SUCCESS);
    expectTarget(reference, x, "../x");
    ASSERT_EQ(left->DeleteProperty(QStringLiteral("x")), ER_SUCCESS);
    expectTarget(reference, nullptr, "../x"); // nothing of the first target is left
}

TEST_F(Reference, FollowsARenamedTarget)
{
    const PropertyReference* reference = refer(*y);
    ASSERT_EQ(y->SetName(QStringLiteral("a/b")), ER_SUCCESS);
    expectTarget(reference, y, "../../right/a%2Fb");
    ASSERT_EQ(right->SetName(QStringLiteral("..")), ER_SUCCESS);
    expectTarget(reference, y, "../../%2E%2E/a%2Fb");
    addValue(*addFolder(*top, QStringLiteral("right")), QStringLiteral("y")); // the former path is taken
    expectTarget(reference, y, "../../%2E%2E/a%2Fb");
}

TEST_F(Reference, FollowsAMovedTarget)
{
    const PropertyReference* reference = refer(*y);
    ASSERT_EQ(right->RemoveProperty(QStringLiteral("y")), ER_SUCCESS);
    expectTarget(reference, nullptr, "../../right/y"); // it has left the tree
    ASSERT_EQ(left->InsertProperty(y), ER_SUCCESS);
    expectTarget(reference, y, "../y");
}

TEST_F(Reference, FollowsWhenItIsRenamedOrMovedItself)
{
    PropertyReference* reference = refer(*y);
    ASSERT_EQ(reference->SetName(QStringLiteral("renamed")), ER_SUCCESS);
    ASSERT_EQ(left->SetName(QStringLiteral("elsewhere")), ER_SUCCESS);
    expectTarget(reference, y, "../../right/y");
    ASSERT_EQ(left->RemoveProperty(QStringLiteral("renamed")), ER_SUCCESS);
    EXPECT_EQ(reference->Resolve(), nullptr);
    ASSERT_EQ(top->InsertProperty(reference), ER_SUCCESS);
    expectTarget(reference, y, "../right/y");
}

TEST_F(Reference, FollowsInsideASubtreeThatMoves)
{
    HostFolder* inner = addFolder(*left, QStringLiteral("inner"));
    const SimpleProperty* z = addValue(*inner, QStringLiteral("z"));
    const PropertyReference* reference = addReference(*inner, QStringLiteral("r"), *z);
    const std::unique_ptr<AbstractProperty> taken(left->TakeProperty(QStringLiteral("inner")));
    expectTarget(reference, z, "../z");
}

TEST_F(Reference, NeverFollowsADestroyedTarget)
{
    const PropertyReference* reference = refer(*y);
    ASSERT_EQ(right->DeleteProperty(QStringLiteral("y")), ER_SUCCESS);
    expectTarget(reference, nullptr, "../../right/y");
    const PropertyReference* toFolder = addReference(*left, QStringLiteral("r2"), *right);
    delete right;
    expectTarget(toFolder, nullptr, "../../right");
}

TEST_F(Reference, FindsAReplacementOfTheSameName)
{
    const PropertyReference* reference = refer(*y);
    ASSERT_EQ(right->DeleteProperty(QStringLiteral("y")), ER_SUCCESS);
    SimpleProperty* successor = addValue(*right, QStringLiteral("y"));
    expectTarget(reference, successor, "../../right/y");
    ASSERT_EQ(successor->SetName(QStringLiteral("z")), ER_SUCCESS); // and follows it from then on
    expectTarget(reference, successor, "../../right/z");
}

TEST_F(Reference, FindsWhatReplacesItsTarget)
{
    const PropertyReference* reference = refer(*y);
    auto* successor = new HostFolder(QStringLiteral("y"));
    ASSERT_EQ(right->InsertOrReplaceProperty(successor), ER_SUCCESS);
    expectTarget(reference, successor, "../../right/y");
}

TEST_F(Reference, FindsWhatReplacesAFolderAboveItsTarget)
{
    const PropertyReference* reference = refer(*y);
    auto* successor = new HostFolder(QStringLiteral("right"));
    const SimpleProperty* inside = addValue(*successor, QStringLiteral("y"));
    ASSERT_EQ(top->InsertOrReplaceProperty(successor), ER_SUCCESS);
    expectTarget(reference, inside, "../../right/y");
}

TEST_F(Reference, FindsTheClonesOfAnAssignment)
{
    const PropertyReference* reference = refer(*y);
    PropertyObject source;
    addValue(source, QStringLiteral("y"), 2.0);
    right->PropertyObject::operator=(source);
    expectTarget(reference, right->GetPropertyPtr(QStringLiteral("y")), "../../right/y");
    EXPECT_NE(reference->Resolve(), nullptr);
}

TEST_F(Reference, LooksUpTheLastPathOfARenamedTargetThatDied)
{
    const PropertyReference* reference = refer(*y);
    ASSERT_EQ(y->SetName(QStringLiteral("z")), ER_SUCCESS);
    ASSERT_EQ(right->SetName(QStringLiteral("new")), ER_SUCCESS);
    delete y;
    addValue(*right, QStringLiteral("y")); // a path of old is not the last known one
    expectTarget(reference, nullptr, "../../new/z");
    const SimpleProperty* successor = addValue(*right, QStringLiteral("z"));
    expectTarget(reference, successor, "../../new/z");
}

TEST_F(Reference, KeepsTheLastPathOfADeadTargetWhenItsTreeIsInsertedElsewhere)
{
    const PropertyReference* reference = refer(*y);
    ASSERT_EQ(right->DeleteProperty(QStringLiteral("y")), ER_SUCCESS); // and nobody asks the reference
    HostFolder above(QStringLiteral("above"));
    ASSERT_EQ(above.InsertProperty(top.get()), ER_SUCCESS);
    top.release();
    expectTarget(reference, nullptr, "../../right/y");
    const SimpleProperty* successor = addValue(*right, QStringLiteral("y"));
    expectTarget(reference, successor, "../../right/y");
}

TEST_F(Reference, KeepsTheLastPathOfADepartedTargetWhenItsTreeIsInsertedElsewhere)
{
    const PropertyReference* reference = refer(*y);
    const std::unique_ptr<AbstractProperty> taken(right->TakeProperty(QStringLiteral("y")));
    HostFolder above(QStringLiteral("above"));
    ASSERT_EQ(above.InsertProperty(top.get()), ER_SUCCESS);
    top.release();
    expectTarget(reference, nullptr, "../../right/y");
}

TEST_F(Reference, FindsTheLastPlaceOfALostTargetFromItsOwnNewPlace)
{
    PropertyReference* reference = refer(*y);
    ASSERT_EQ(right->DeleteProperty(QStringLiteral("y")), ER_SUCCESS);
    ASSERT_EQ(reference->SetName(QStringLiteral("renamed")), ER_SUCCESS);
    ASSERT_EQ(left->SetName(QStringLiteral("elsewhere")), ER_SUCCESS);
    const SimpleProperty* successor = addValue(*right, QStringLiteral("y"));
    expectTarget(reference, successor, "../../right/y");
}

TEST_F(Reference, IsAnsweredByWhatStandsInThePlaceOfADepartedTargetUntilThatComesBack)
{
    const PropertyReference* reference = refer(*y);
    ASSERT_EQ(right->RemoveProperty(QStringLiteral("y")), ER_SUCCESS);
    SimpleProperty* substitute = addValue(*right, QStringLiteral("y"));
    expectTarget(reference, substitute, "../../right/y");
    ASSERT_EQ(left->InsertProperty(y), ER_SUCCESS);
    expectTarget(reference, y, "../y");
}

TEST_F(Reference, OutlivesTheTreeOfItsTarget)
{
    const PropertyReference* reference = refer(*y);
    const std::unique_ptr<AbstractProperty> taken(top->TakeProperty(QStringLiteral("left")));
    EXPECT_EQ(reference->Resolve(), nullptr);
    top.reset();
    expectTarget(reference, nullptr, "../../right/y");
}

TEST_F(Reference, MayDieBeforeItsTarget)
{
    for (int i = 0; i < 3; ++i) {
        const PropertyReference* reference = refer(*y);
        addReference(*left, QStringLiteral("r2"), *y);
        expectTarget(reference, y, "../../right/y");
        delete reference;
        ASSERT_EQ(left->DeleteProperty(QStringLiteral("r2")), ER_SUCCESS);
    }
    EXPECT_EQ(y->GetFullPath(), QStringLiteral("/right/y"));
}

TEST_F(Reference, OfACloneLeadsInsideTheClone)
{
    addReference(*left, QStringLiteral("inside"), *x);
    addReference(*left, QStringLiteral("outside"), *y);
    const std::unique_ptr<AbstractProperty> clone(left->Clone());
    auto* copy = dynamic_cast<PropertyObject*>(clone.get());
    ASSERT_NE(copy, nullptr);
    const auto* inside = copy->GetPtr<PropertyReference>(QStringLiteral("inside"));
    const auto* outside = copy->GetPtr<PropertyReference>(QStringLiteral("outside"));
    ASSERT_NE(inside, nullptr);
    ASSERT_NE(outside, nullptr);
    expectTarget(inside, copy->GetPropertyPtr(QStringLiteral("x")), "../x");
    expectTarget(outside, nullptr, "../../right/y");
}

TEST_F(Reference, OfACloneFollowsBeforeAnybodyHasAsked)
{
    addReference(*left, QStringLiteral("inside"), *x);
    const std::unique_ptr<AbstractProperty> clone(left->Clone());
    auto* copy = dynamic_cast<PropertyObject*>(clone.get());
    ASSERT_NE(copy, nullptr);
    const AbstractProperty* inside = copy->GetPropertyPtr(QStringLiteral("x"));
    ASSERT_EQ(copy->GetPropertyPtr(QStringLiteral("x"))->SetName(QStringLiteral("renamed")), ER_SUCCESS);
    expectTarget(copy->GetPtr<PropertyReference>(QStringLiteral("inside")), inside, "../renamed");
}

TEST_F(Reference, OfAPlainCopyFollowsBeforeAnybodyHasAsked)
{
    addReference(*left, QStringLiteral("inside"), *x);
    PropertyObject copy(*left);
    AbstractProperty* inside = copy.GetPropertyPtr(QStringLiteral("x"));
    ASSERT_EQ(inside->SetName(QStringLiteral("renamed")), ER_SUCCESS);
    expectTarget(copy.GetPtr<PropertyReference>(QStringLiteral("inside")), inside, "../renamed");
}

TEST_F(Reference, RestoredFromAPathFollowsWhenItsFolderMovesBeforeAnybodyHasAsked)
{
    auto* reference = new PropertyReference(QStringLiteral("r"));
    reference->RestorePath(QStringLiteral("../../right/y"));
    ASSERT_EQ(left->InsertProperty(reference), ER_SUCCESS);
    ASSERT_EQ(top->RemoveProperty(QStringLiteral("left")), ER_SUCCESS);
    ASSERT_EQ(right->InsertProperty(left), ER_SUCCESS); // one level deeper
    expectTarget(reference, y, "../../y");
}

TEST_F(Reference, OfACloneLeadsOutsideFromItsNewPlace)
{
    addReference(*left, QStringLiteral("outside"), *y);
    auto clone = std::unique_ptr<AbstractProperty>(left->Clone());
    ASSERT_EQ(clone->SetName(QStringLiteral("copy")), ER_SUCCESS);
    ASSERT_EQ(top->InsertProperty(clone.get()), ER_SUCCESS);
    auto* copy = dynamic_cast<PropertyObject*>(clone.release());
    const auto* outside = copy->GetPtr<PropertyReference>(QStringLiteral("outside"));
    expectTarget(outside, y, "../../right/y");

    auto deeper = std::unique_ptr<AbstractProperty>(left->Clone());
    ASSERT_EQ(right->InsertProperty(deeper.get()), ER_SUCCESS);
    copy = dynamic_cast<PropertyObject*>(deeper.release());
    outside = copy->GetPtr<PropertyReference>(QStringLiteral("outside"));
    expectTarget(outside, nullptr, "../../right/y"); // there is no /right/right
}

TEST_F(Reference, OfACloneIsTakenFromWhereTheTargetIsNow)
{
    refer(*x);
    ASSERT_EQ(x->SetName(QStringLiteral("renamed")), ER_SUCCESS);
    const std::unique_ptr<AbstractProperty> clone(left->Clone());
    auto* copy = dynamic_cast<PropertyObject*>(clone.get());
    expectTarget(copy->GetPtr<PropertyReference>(QStringLiteral("r")),
                 copy->GetPropertyPtr(QStringLiteral("renamed")), "../renamed");
}

TEST_F(Reference, CloneKeepsThePathOnly)
{
    const PropertyReference* reference = refer(*y);
    const std::unique_ptr<AbstractProperty> clone(reference->Clone());
    auto* copy = dynamic_cast<PropertyReference*>(clone.get());
    ASSERT_NE(copy, nullptr);
    EXPECT_EQ(copy->GetName(), QStringLiteral("r"));
    expectTarget(copy, nullptr, "../../right/y");
    ASSERT_EQ(right->InsertProperty(clone.get()), ER_SUCCESS);
    expectTarget(copy, y, "../y"); // found by the path, and the way to it from here is shorter
    EXPECT_EQ(right->TakeProperty(QStringLiteral("r")), copy);
}

TEST_F(Reference, AssignmentStandsForTheSameTarget)
{
    const PropertyReference* reference = refer(*y);
    auto* second = new PropertyReference(QStringLiteral("second"));
    ASSERT_EQ(top->InsertProperty(second), ER_SUCCESS);
    second->SetPropertyFlags(PropertyFlagHidden);
    EXPECT_EQ(&(*second = *reference), second);
    expectTarget(second, y, "../right/y");
    EXPECT_EQ(second->GetName(), QStringLiteral("second"));
    EXPECT_EQ(second->GetPropertyFlags(), 2U);
    EXPECT_EQ(second->GetParent(), top.get());

    PropertyReference homeless(QStringLiteral("homeless"));
    homeless = *reference;
    expectTarget(&homeless, nullptr, "../../right/y"); // the path as it is

    const PropertyReference unset;
    *second = unset;
    expectTarget(second, nullptr, "");
    expectTarget(reference, y, "../../right/y");
}

TEST_F(Reference, AssignmentToItselfChangesNothing)
{
    PropertyReference* reference = refer(*y);
    const PropertyReference& itself = *reference;
    *reference = itself;
    expectTarget(reference, y, "../../right/y");
}

TEST_F(Reference, RestoredFromAPathIsFoundWhenItIsUsed)
{
    auto* reference = new PropertyReference(QStringLiteral("r"));
    reference->RestorePath(QStringLiteral("../../right/late"));
    ASSERT_EQ(left->InsertProperty(reference), ER_SUCCESS);
    expectTarget(reference, nullptr, "../../right/late");
    SimpleProperty* late = addValue(*right, QStringLiteral("late"));
    expectTarget(reference, late, "../../right/late");
    ASSERT_EQ(late->SetName(QStringLiteral("later")), ER_SUCCESS);
    expectTarget(reference, late, "../../right/later");
}

TEST_F(Reference, RestoredFromAnEmptyPathIsUnset)
{
    PropertyReference* reference = refer(*y);
    reference->RestorePath(QString());
    expectTarget(reference, nullptr, "");
}

TEST_F(Reference, RestoredFromNonsenseResolvesToNothing)
{
    PropertyReference* reference = refer(*y);
    for (const char* path : {"../../../../..", "%zz", "nowhere", "../../right/y/z", "..%2F..%2Fright%2Fy"}) {
        reference->RestorePath(QString::fromUtf8(path));
        EXPECT_EQ(reference->Resolve(), nullptr) << path;
        EXPECT_EQ(reference->ReferencePath(), QString::fromUtf8(path));
    }
}

TEST_F(Reference, TellsTheKindOfItsTarget)
{
    auto* metadata = new HostMetadata(QStringLiteral("m"));
    ASSERT_EQ(top->InsertProperty(metadata), ER_SUCCESS);
    PropertyReference* reference = refer(*metadata);
    EXPECT_TRUE(reference->IsRefMetadata());
    EXPECT_TRUE(reference->IsRefPropertyObject());
    EXPECT_FALSE(reference->IsRefVariable());
    ASSERT_EQ(reference->SetPropertyRef(right), ER_SUCCESS);
    EXPECT_FALSE(reference->IsRefMetadata());
    EXPECT_TRUE(reference->IsRefPropertyObject());
    ASSERT_EQ(reference->SetPropertyRef(x), ER_SUCCESS);
    EXPECT_FALSE(reference->IsRefPropertyObject());
    EXPECT_FALSE(reference->IsRefVariable());
}

TEST_F(Reference, TellsNoKindWithoutATarget)
{
    const PropertyReference unset;
    EXPECT_FALSE(unset.IsRefVariable());
    EXPECT_FALSE(unset.IsRefPropertyObject());
    EXPECT_FALSE(unset.IsRefMetadata());
    const PropertyReference* reference = refer(*right);
    delete right;
    EXPECT_FALSE(reference->IsRefPropertyObject());
}

TEST_F(Reference, ToANodeOutsideATreeIsDelayed)
{
    const auto loose = std::make_unique<HostFolder>(QStringLiteral("loose"));
    EXPECT_FALSE(left->CanReferenceProperty(loose.get()));
    EXPECT_EQ(left->SetPropertyRef(QStringLiteral("r"), loose.get()), ER_INVALID_ARGUMENT);
    EXPECT_FALSE(left->HasProperty(QStringLiteral("r")));
}

TEST_F(Reference, DoesNotResolveWhileItsTargetIsBeingDestroyed)
{
    const HostFolder* target = addFolder(*right, QStringLiteral("target"));
    const PropertyReference* reference = refer(*target);
    const AbstractProperty* seen = target;
    right->GetPtr<HostFolder>(QStringLiteral("target"))->onDestroy = [&](HostFolder&) {
        seen = reference->Resolve();
    };
    ASSERT_EQ(right->DeleteProperty(QStringLiteral("target")), ER_SUCCESS);
    EXPECT_EQ(seen, nullptr);
}

TEST_F(Reference, IsAskedInsideAPathChange)
{
    const PropertyReference* reference = refer(*right);
    QString seen;
    right->onPathChanged = [&](HostFolder&) { seen = reference->ReferencePath(); };
    ASSERT_EQ(right->SetName(QStringLiteral("new")), ER_SUCCESS);
    EXPECT_EQ(seen, QStringLiteral("../../new"));
    const AbstractProperty* target = right;
    right->onPathChanged = [&](HostFolder&) { target = reference->Resolve(); };
    const std::unique_ptr<AbstractProperty> taken(top->TakeProperty(QStringLiteral("new")));
    EXPECT_EQ(target, nullptr);
}

/// Overrides what a host may: the library must call the virtual operations.
class OverriddenReference : public PropertyReference
{
public:
    explicit OverriddenReference(AbstractProperty* answer)
        : PropertyReference(QStringLiteral("overridden"))
        , m_answer(answer)
    {
    }
    QString ReferencePath() const override { return QStringLiteral("as told"); }

protected:
    AbstractProperty* GetPropertyRef() const override { return m_answer; }

private:
    AbstractProperty* m_answer;
};

TEST_F(Reference, ResolvesThroughItsVirtualOperation)
{
    const OverriddenReference reference(right);
    EXPECT_EQ(reference.Resolve(), right);
    EXPECT_EQ(reference.ResolveConst(), nullptr); // the other look-up knows nothing of it
    EXPECT_FALSE(reference.IsRefPropertyObject());
    const PropertyReference& base = reference;
    EXPECT_EQ(base.ReferencePath(), QStringLiteral("as told"));
}

/// Answers by what a test does in its virtual operation.
class ScriptedReference : public PropertyReference
{
public:
    using PropertyReference::PropertyReference;
    std::function<AbstractProperty*()> answer;

protected:
    AbstractProperty* GetPropertyRef() const override
    {
        const auto script = answer; // a copy of its own: the script may destroy this reference
        return script();
    }
};

class ScriptedAnswer : public Reference
{
protected:
    ScriptedAnswer()
        : scripted(new ScriptedReference(QStringLiteral("r")))
    {
        EXPECT_EQ(left->InsertProperty(scripted), ER_SUCCESS);
    }

    ERESULT set() { return left->SetPropertyRef(QStringLiteral("r"), y); }

    ScriptedReference* scripted;
};

TEST_F(ScriptedAnswer, ThatIsNotTheTargetMakesTheReferenceGo)
{
    scripted->answer = [] { return nullptr; };
    ASSERT_EQ(set(), ER_SUCCESS);
    const auto* fresh = left->GetPtr<PropertyReference>(QStringLiteral("r"));
    ASSERT_NE(fresh, nullptr);
    EXPECT_EQ(fresh->PropertyObjType(), PropertyReference::StaticType());
    expectTarget(fresh, y, "../../right/y");
}

TEST_F(ScriptedAnswer, ThatIsTheTargetKeepsTheReference)
{
    scripted->answer = [this] { return y; };
    ASSERT_EQ(set(), ER_SUCCESS);
    EXPECT_EQ(left->GetPropertyPtr(QStringLiteral("r")), scripted);
}

TEST_F(ScriptedAnswer, MayDestroyTheTarget)
{
    scripted->answer = [this] {
        right->DeleteProperty(QStringLiteral("y"));
        return nullptr;
    };
    EXPECT_EQ(set(), ER_FAILED);
    EXPECT_EQ(left->GetPropertyPtr(QStringLiteral("r")), scripted); // kept
}

TEST_F(ScriptedAnswer, MayDestroyTheFolder)
{
    scripted->answer = [this] {
        delete left;
        return nullptr;
    };
    EXPECT_EQ(set(), ER_FAILED);
    EXPECT_EQ(childNames(*top), QStringList{QStringLiteral("right")});
}

TEST_F(ScriptedAnswer, MayPutTheTargetOutOfReach)
{
    std::unique_ptr<AbstractProperty> taken;
    scripted->answer = [&] {
        taken.reset(right->TakeProperty(QStringLiteral("y")));
        return nullptr;
    };
    EXPECT_EQ(set(), ER_FAILED);
    EXPECT_EQ(left->GetPropertyPtr(QStringLiteral("r")), scripted);
}

TEST_F(Reference, IsNotMadeInPlaceOfAChildForATargetThatIsBeingDestroyed)
{
    const AbstractProperty* const dying = top.get();
    ERESULT code = ER_SUCCESS;
    const AbstractProperty* kept = nullptr;
    left->onDestroy = [&](HostFolder&) {
        code = right->SetPropertyRef(QStringLiteral("y"), dying);
        kept = right->GetPropertyPtr(QStringLiteral("y"));
    };
    top.reset();
    EXPECT_EQ(code, ER_INVALID_ARGUMENT);
    EXPECT_EQ(kept, y);
}

AbstractProperty* s_external = nullptr;
int s_resolverCalls = 0;

AbstractProperty* resolveExternally(const PropertyReference& reference)
{
    ++s_resolverCalls;
    return reference.ReferenceFilePath() == QStringLiteral("other.h5") ? s_external : nullptr;
}

TEST_F(Reference, IntoAnotherFileIsResolvedByTheResolver)
{
    s_external = right;
    s_resolverCalls = 0;
    const PropertyReference::ExternalResolver former = PropertyReference::GetExternalResolver();
    PropertyReference::SetExternalResolver(&resolveExternally);
    PropertyReference reference(QStringLiteral("r"));
    reference.RestorePath(QStringLiteral("/right"), QStringLiteral("other.h5"), QStringLiteral("HDF5"));
    EXPECT_EQ(s_resolverCalls, 0); // nothing before it is used
    EXPECT_EQ(reference.ReferencePath(), QStringLiteral("/right"));
    EXPECT_EQ(reference.ReferenceFilePath(), QStringLiteral("other.h5"));
    EXPECT_EQ(reference.ReferenceFileType(), QStringLiteral("HDF5"));
    EXPECT_EQ(reference.Resolve(), right);
    EXPECT_EQ(reference.ResolveConst(), right);
    EXPECT_GE(s_resolverCalls, 1);

    PropertyReference missing(QStringLiteral("r"));
    missing.RestorePath(QStringLiteral("/right"), QStringLiteral("missing.h5"), QStringLiteral("HDF5"));
    EXPECT_EQ(missing.Resolve(), nullptr);
    PropertyReference::SetExternalResolver(nullptr);
    PropertyReference unresolved(QStringLiteral("r"));
    unresolved.RestorePath(QStringLiteral("/right"), QStringLiteral("other.h5"), QStringLiteral("HDF5"));
    EXPECT_EQ(unresolved.Resolve(), nullptr);
    EXPECT_FALSE(unresolved.IsRefPropertyObject());
    PropertyReference::SetExternalResolver(former);
}

TEST(Handle, IsNullWhenItsNodeIsGone)
{
    const PropertyHandle empty;
    EXPECT_EQ(empty.Get(), nullptr);
    EXPECT_FALSE(empty.IsExpired());
    EXPECT_EQ(PropertyHandle(nullptr).Get(), nullptr);

    auto folder = std::make_unique<HostFolder>(QStringLiteral("a"));
    const PropertyHandle handle(folder.get());
    PropertyHandle copy(handle);
    EXPECT_EQ(handle.Get(), folder.get());
    EXPECT_FALSE(handle.IsExpired());
    const PropertyHandle moved(std::move(copy));
    EXPECT_EQ(moved.Get(), folder.get());
    folder.reset();
    EXPECT_EQ(handle.Get(), nullptr);
    EXPECT_TRUE(handle.IsExpired());
    EXPECT_EQ(moved.Get(), nullptr);
}

TEST(Handle, FollowsItsNodeThroughTheTree)
{
    PropertyObject top;
    HostFolder* child = addFolder(top, QStringLiteral("a"));
    PropertyHandle handle(child);
    ASSERT_EQ(child->SetName(QStringLiteral("b")), ER_SUCCESS);
    const std::unique_ptr<AbstractProperty> taken(top.TakeProperty(QStringLiteral("b")));
    EXPECT_EQ(handle.Get(), child);
    const std::unique_ptr<AbstractProperty> clone(child->Clone());
    EXPECT_EQ(handle.Get(), child); // a clone is another node
    handle = PropertyHandle(clone.get());
    EXPECT_EQ(handle.Get(), clone.get());
    handle = PropertyHandle();
    EXPECT_EQ(handle.Get(), nullptr);
}

TEST(Handle, RemembersNoTreesThatAreGone)
{
    HostFolder home(QStringLiteral("home"));
    HostFolder* node = addFolder(home, QStringLiteral("node"));
    const PropertyReference* reference = addReference(home, QStringLiteral("r"), *node);
    ASSERT_EQ(home.RemoveProperty(QStringLiteral("node")), ER_SUCCESS);
    for (int i = 0; i < 1000; ++i) {
        HostFolder passing(QStringLiteral("passing"));
        ASSERT_EQ(passing.InsertProperty(node), ER_SUCCESS);
        ASSERT_EQ(passing.RemoveProperty(QStringLiteral("node")), ER_SUCCESS);
    }
    const PropertyHandle handle(node);
    EXPECT_LE(Internal::NodeAccess::life(handle)->departures.size(), 8U);
    delete node;
    EXPECT_EQ(reference->ReferencePath(), QStringLiteral("../node")); // this one still stands
}

TEST(Handle, MayOutliveAndPredeceaseItsNodeInAnyOrder)
{
    HostFolder node(QStringLiteral("a"));
    for (int i = 0; i < 3; ++i) {
        const PropertyHandle first(&node);
        const PropertyHandle second(first);
        EXPECT_EQ(second.Get(), &node);
    }
    PropertyHandle last;
    {
        HostFolder inner(QStringLiteral("b"));
        last = PropertyHandle(&inner);
        EXPECT_EQ(last.Get(), &inner);
    }
    EXPECT_TRUE(last.IsExpired());
}

} // namespace
} // namespace Orrery
