#include "tests/foundations/property/TreeNodes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>

// A host's DoClone runs in the middle of every copy and may change what is being copied.

namespace Orrery {
namespace {

using namespace TreeTest;

class HostileClone : public ::testing::Test
{
protected:
    HostileClone()
        : source(std::make_unique<HostFolder>(QStringLiteral("source"), &life))
    {
        for (const char* name : {"a", "b", "c"})
            addFolder(*source, QLatin1String(name), &life);
    }

    ~HostileClone() override
    {
        source.reset();
        EXPECT_EQ(life.alive(), 0);
    }

    HostFolder* child(const char* name) { return source->GetPtr<HostFolder>(QLatin1String(name)); }

    std::unique_ptr<PropertyObject> clone()
    {
        std::unique_ptr<AbstractProperty> made(source->Clone());
        auto* folder = dynamic_cast<PropertyObject*>(made.get());
        EXPECT_NE(folder, nullptr);
        if (folder) {
            for (const AbstractProperty* copied : folder->GetPropertyListSorted())
                EXPECT_EQ(copied->GetParent(), folder);
            static_cast<void>(made.release());
        }
        return std::unique_ptr<PropertyObject>(folder);
    }

    LifeCount life;
    std::unique_ptr<HostFolder> source;
};

TEST_F(HostileClone, MayDestroySiblings)
{
    child("a")->onClone = [this] { source->DeleteProperty(QStringLiteral("b")); };
    EXPECT_EQ(childNames(*clone()), (QStringList{QStringLiteral("a"), QStringLiteral("c")}));
    child("c")->onClone = [this] { source->DeleteProperty(QStringLiteral("a")); };
    EXPECT_TRUE(clone()->HasProperty(QStringLiteral("c")));
    EXPECT_EQ(childNames(*source), QStringList{QStringLiteral("c")});
}

TEST_F(HostileClone, MayInsertSiblings)
{
    int next = 0;
    child("a")->onClone = [&] {
        for (int i = 0; i < 50; ++i)
            addFolder(*source, QString::number(next++), &life);
    };
    const std::unique_ptr<PropertyObject> copy = clone();
    EXPECT_TRUE(copy->HasProperty(QStringLiteral("c")));
    EXPECT_EQ(source->GetPropertyCount(), 53);
}

TEST_F(HostileClone, MayRenameWhatIsStillToBeCloned)
{
    child("a")->onClone = [this] {
        child("b")->SetName(QStringLiteral("z"));
        child("c")->SetName(QStringLiteral("a0"));
    };
    EXPECT_EQ(childNames(*clone()),
              (QStringList{QStringLiteral("a"), QStringLiteral("a0"), QStringLiteral("z")}));
}

TEST_F(HostileClone, MayGiveTwoClonesOneName)
{
    child("b")->onClone = [this] {
        child("a")->SetName(QStringLiteral("free"));
        child("c")->SetName(QStringLiteral("a"));
    };
    const std::unique_ptr<PropertyObject> copy = clone();
    EXPECT_EQ(copy->GetPropertyCount(), 2); // "a" was copied before the other one took its name
}

TEST_F(HostileClone, MayMoveSiblings)
{
    HostFolder elsewhere(QStringLiteral("elsewhere"), &life);
    child("a")->onClone = [&] {
        AbstractProperty* moved = source->TakeProperty(QStringLiteral("b"));
        EXPECT_EQ(elsewhere.InsertProperty(moved), ER_SUCCESS);
    };
    EXPECT_EQ(childNames(*clone()), (QStringList{QStringLiteral("a"), QStringLiteral("c")}));
    EXPECT_EQ(childNames(elsewhere), QStringList{QStringLiteral("b")});
}

TEST_F(HostileClone, MayDestroyTheFolderThatIsAssigned)
{
    auto* target = new HostFolder(QStringLiteral("target"), &life);
    addFolder(*target, QStringLiteral("old"), &life);
    child("b")->onClone = [&] {
        delete target;
        target = nullptr;
    };
    target->PropertyObject::operator=(*source);
    EXPECT_EQ(target, nullptr);
    EXPECT_EQ(life.alive(), 4);
}

TEST_F(HostileClone, MayChangeTheFolderThatIsAssigned)
{
    HostFolder target(QStringLiteral("target"), &life);
    child("b")->onClone = [&] { addFolder(target, QStringLiteral("c"), &life); };
    target.PropertyObject::operator=(*source);
    EXPECT_EQ(childNames(target), childNames(*source));
    EXPECT_EQ(life.alive(), 8);
}

TEST_F(HostileClone, OfASubtreeMayEmptyTheSource)
{
    HostFolder* inner = addFolder(*child("b"), QStringLiteral("inner"), &life);
    inner->onClone = [this] { source->DeleteProperty(QStringLiteral("c")); };
    EXPECT_EQ(childNames(*clone()), (QStringList{QStringLiteral("a"), QStringLiteral("b")}));
}

/// A DoClone that makes what its caller doesn't expect.
class OddlyCloned : public PropertyObject
{
public:
    explicit OddlyCloned(AbstractProperty* made)
        : PropertyObject(QStringLiteral("odd"))
        , m_made(made)
    {
    }
    AbstractProperty* DoClone() const override { return m_made; }

private:
    AbstractProperty* m_made;
};

TEST_F(HostileClone, MayMakeNothing)
{
    ASSERT_EQ(source->InsertProperty(new OddlyCloned(nullptr)), ER_SUCCESS);
    EXPECT_EQ(childNames(*clone()),
              (QStringList{QStringLiteral("a"), QStringLiteral("b"), QStringLiteral("c")}));
    EXPECT_EQ(source->GetPropertyPtr(QStringLiteral("odd"))->Clone(), nullptr);
}

TEST_F(HostileClone, MayMakeAnotherKindUnderAnotherName)
{
    auto* made = new SimpleProperty(QStringLiteral("other"));
    made->SetPropertyFlags(PropertyFlagHidden);
    ASSERT_EQ(source->InsertProperty(new OddlyCloned(made)), ER_SUCCESS);
    const std::unique_ptr<PropertyObject> copy = clone();
    EXPECT_EQ(copy->GetPropertyPtr(QStringLiteral("odd")), made); // Clone has the say on name and flags
    EXPECT_EQ(made->GetPropertyFlags(), 4U);
    ASSERT_EQ(source->DeleteProperty(QStringLiteral("odd")), ER_SUCCESS);
}

TEST_F(HostileClone, MayMakeAChildOfSomething)
{
    PropertyObject elsewhere;
    HostFolder* made = addFolder(elsewhere, QStringLiteral("made"), &life);
    ASSERT_EQ(source->InsertProperty(new OddlyCloned(made)), ER_SUCCESS);
    const std::unique_ptr<PropertyObject> copy = clone();
    EXPECT_EQ(copy->GetPropertyPtr(QStringLiteral("odd")), made); // a clone has no other parent
    EXPECT_EQ(elsewhere.GetPropertyCount(), 0);
    ASSERT_EQ(source->DeleteProperty(QStringLiteral("odd")), ER_SUCCESS);
}

TEST_F(HostileClone, MayMakeAChildThatItsHandlerDestroys)
{
    PropertyObject elsewhere;
    HostFolder* made = addFolder(elsewhere, QStringLiteral("made"), &life);
    made->onPathChanged = [](HostFolder& folder) { delete &folder; };
    auto* odd = new OddlyCloned(made);
    ASSERT_EQ(source->InsertProperty(odd), ER_SUCCESS);
    EXPECT_EQ(odd->Clone(), nullptr);
    EXPECT_EQ(elsewhere.GetPropertyCount(), 0);
    ASSERT_EQ(source->DeleteProperty(QStringLiteral("odd")), ER_SUCCESS);
}

TEST_F(HostileClone, MayMakeAChildThatItsHandlerGivesAway)
{
    PropertyObject elsewhere;
    PropertyObject receiver;
    HostFolder* made = addFolder(elsewhere, QStringLiteral("made"), &life);
    made->onPathChanged = [&](HostFolder& folder) { receiver.InsertOrReplaceProperty(&folder); };
    auto* odd = new OddlyCloned(made);
    ASSERT_EQ(source->InsertProperty(odd), ER_SUCCESS);
    EXPECT_EQ(odd->Clone(), nullptr);
    EXPECT_EQ(receiver.GetPropertyPtr(QStringLiteral("made")), made);
    ASSERT_EQ(source->DeleteProperty(QStringLiteral("odd")), ER_SUCCESS);
}

AbstractProperty* makeChain(int depth)
{
    auto top = std::make_unique<PropertyObject>(QStringLiteral("d"));
    for (int i = 1; i < depth; ++i) {
        auto above = std::make_unique<PropertyObject>(QStringLiteral("d"));
        EXPECT_EQ(above->InsertProperty(top.get()), ER_SUCCESS);
        static_cast<void>(top.release());
        top = std::move(above);
    }
    return top.release();
}

int depthBelow(const PropertyObject& folder)
{
    int deepest = 0;
    for (AbstractProperty* child : folder.GetPropertyListSorted()) {
        if (const auto* below = dynamic_cast<const PropertyObject*>(child))
            deepest = std::max(deepest, depthBelow(*below));
    }
    return deepest + 1;
}

TEST_F(HostileClone, ThatIsDeeperThanItsSourceMakesNoTreeTooDeep)
{
    ASSERT_EQ(source->InsertProperty(new OddlyCloned(makeChain(PropertyObject::MaxDepth))), ER_SUCCESS);
    PropertyObject target;
    addFolder(target, QStringLiteral("kept"), &life);
    try {
        target = *source; // one level more than a tree may have
        ADD_FAILURE() << "the assignment went through, " << depthBelow(target) << " deep";
    } catch (const OrreryException& exception) {
        EXPECT_EQ(exception.GetResult(), ER_FAILED);
    }
    EXPECT_EQ(childNames(target), QStringList{QStringLiteral("kept")});
    ASSERT_EQ(source->DeleteProperty(QStringLiteral("odd")), ER_SUCCESS);
}

TEST_F(HostileClone, ThatIsTooDeepIsRefusedAboveAllTheFoldersThatAreCloned)
{
    HostFolder* inner = addFolder(*child("b"), QStringLiteral("inner"), &life);
    ASSERT_EQ(inner->InsertProperty(new OddlyCloned(makeChain(PropertyObject::MaxDepth - 2))), ER_SUCCESS);
    EXPECT_THROW(static_cast<void>(clone()), OrreryException);
    ASSERT_EQ(inner->DeleteProperty(QStringLiteral("odd")), ER_SUCCESS);
}

TEST_F(HostileClone, OfAnotherFolderOnTheWayIsHeldToTheDepthToo)
{
    PropertyObject other;
    ASSERT_EQ(other.InsertProperty(new OddlyCloned(makeChain(PropertyObject::MaxDepth))), ER_SUCCESS);
    bool refused = false;
    child("b")->onClone = [&] {
        try {
            const PropertyObject copy(other);
        } catch (const OrreryException&) {
            refused = true;
        }
    };
    EXPECT_EQ(childNames(*clone()), childNames(*source));
    EXPECT_TRUE(refused);
}

} // namespace
} // namespace Orrery
