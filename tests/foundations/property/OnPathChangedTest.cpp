#include "tests/foundations/property/TreeNodes.h"

#include <gtest/gtest.h>

#include <memory>
#include <vector>

// Handlers run inside the operations of the tree and do what they like to it. The sanitizers judge most of this.

namespace Orrery {
namespace {

using namespace TreeTest;

class PathChange : public ::testing::Test
{
protected:
    PathChange()
        : top(std::make_unique<HostFolder>(QStringLiteral("top"), &life))
    {
        middle = addFolder(*top, QStringLiteral("middle"), &life);
        for (const char* name : {"a", "b", "c"})
            bottom.push_back(addFolder(*middle, QLatin1String(name), &life));
    }

    ~PathChange() override
    {
        top.reset();
        EXPECT_EQ(life.alive(), 0);
    }

    void resetCounts()
    {
        top->pathChanges = middle->pathChanges = 0;
        for (HostFolder* folder : bottom)
            folder->pathChanges = 0;
    }

    std::vector<int> counts() const
    {
        std::vector<int> all{top->pathChanges, middle->pathChanges};
        for (const HostFolder* folder : bottom)
            all.push_back(folder->pathChanges);
        return all;
    }

    LifeCount life;
    std::unique_ptr<HostFolder> top;
    HostFolder* middle;
    std::vector<HostFolder*> bottom;
};

TEST_F(PathChange, ReachesTheRenamedFolderAndAllDescendantsOnce)
{
    resetCounts();
    ASSERT_EQ(middle->SetName(QStringLiteral("new")), ER_SUCCESS);
    EXPECT_EQ(counts(), (std::vector<int>{0, 1, 1, 1, 1}));
    ASSERT_EQ(bottom[1]->SetName(QStringLiteral("x")), ER_SUCCESS);
    EXPECT_EQ(counts(), (std::vector<int>{0, 1, 1, 2, 1}));
}

TEST_F(PathChange, ReachesTheInsertedSubtreeOnce)
{
    auto other = std::make_unique<HostFolder>(QStringLiteral("other"), &life);
    resetCounts();
    ASSERT_EQ(other->InsertProperty(top.get()), ER_SUCCESS);
    HostFolder* inserted = top.release();
    EXPECT_EQ(inserted->pathChanges, 1);
    EXPECT_EQ(middle->pathChanges, 1);
    EXPECT_EQ(bottom[2]->pathChanges, 1);
    EXPECT_EQ(other->pathChanges, 0);
    top = std::move(other);
}

TEST_F(PathChange, ReachesTheReplacementButNotTheReplaced)
{
    int ofReplaced = 0;
    middle->onPathChanged = [&](HostFolder&) { ++ofReplaced; };
    auto* replacement = new HostFolder(QStringLiteral("middle"), &life);
    const HostFolder* inside = addFolder(*replacement, QStringLiteral("inside"), &life);
    const int before = inside->pathChanges;
    ASSERT_EQ(top->InsertOrReplaceProperty(replacement), ER_SUCCESS);
    EXPECT_EQ(replacement->pathChanges, 1);
    EXPECT_EQ(inside->pathChanges, before + 1);
    EXPECT_EQ(ofReplaced, 0);
}

TEST_F(PathChange, ReachesWhatIsRemovedAndLivesOn)
{
    resetCounts();
    ASSERT_EQ(top->RemoveProperty(QStringLiteral("middle")), ER_SUCCESS);
    EXPECT_EQ(counts(), (std::vector<int>{0, 1, 1, 1, 1}));
    const std::unique_ptr<AbstractProperty> taken(middle->TakeProperty(QStringLiteral("b")));
    EXPECT_EQ(counts(), (std::vector<int>{0, 1, 1, 2, 1}));
    delete middle;
}

TEST_F(PathChange, IsNotToldDuringDestruction)
{
    int told = 0;
    const HostFolder::Handler count = [&](HostFolder&) { ++told; };
    middle->onPathChanged = count;
    for (HostFolder* folder : bottom)
        folder->onPathChanged = count;
    ASSERT_EQ(middle->DeleteProperty(QStringLiteral("a")), ER_SUCCESS);
    delete bottom[1];
    ASSERT_EQ(top->DeleteProperty(QStringLiteral("middle")), ER_SUCCESS);
    EXPECT_EQ(told, 0);
}

TEST_F(PathChange, SeesTheNewState)
{
    QString name;
    QString path;
    QString pathBelow;
    bool found = false;
    middle->onPathChanged = [&](HostFolder& folder) {
        name = folder.GetName();
        path = folder.GetFullPath();
        found = folder.GetParent()->GetPropertyPtr(name) == &folder;
    };
    bottom[0]->onPathChanged = [&](HostFolder& folder) { pathBelow = folder.GetFullPath(); };
    ASSERT_EQ(middle->SetName(QStringLiteral("new")), ER_SUCCESS);
    EXPECT_EQ(name, QStringLiteral("new"));
    EXPECT_EQ(path, QStringLiteral("/new"));
    EXPECT_EQ(pathBelow, QStringLiteral("/new/a"));
    EXPECT_TRUE(found);
    ASSERT_EQ(top->RemoveProperty(QStringLiteral("a")), ER_NOT_FOUND);
}

TEST_F(PathChange, OfARemovedFolderSeesNoParent)
{
    const PropertyObject* parent = middle;
    middle->onPathChanged = [&](HostFolder& folder) { parent = folder.GetParent(); };
    const std::unique_ptr<AbstractProperty> taken(top->TakeProperty(QStringLiteral("middle")));
    EXPECT_EQ(parent, nullptr);
}

TEST_F(PathChange, IsNotToldByAFailure)
{
    resetCounts();
    EXPECT_EQ(bottom[0]->SetName(QStringLiteral("b")), ER_ALREADY_EXISTS);
    EXPECT_EQ(middle->InsertProperty(top.get()), ER_INVALID_ARGUMENT);
    EXPECT_EQ(middle->InsertProperty(bottom[0]), ER_ALREADY_EXISTS);
    EXPECT_EQ(middle->InsertOrReplaceProperty(bottom[0]), ER_SUCCESS);
    EXPECT_EQ(counts(), (std::vector<int>{0, 0, 0, 0, 0}));
}

TEST_F(PathChange, MayDestroyTheFolderThatIsTold)
{
    for (HostFolder* folder : bottom)
        folder->onPathChanged = [](HostFolder& itself) { delete &itself; };
    EXPECT_EQ(middle->SetName(QStringLiteral("new")), ER_SUCCESS);
    EXPECT_EQ(middle->GetPropertyCount(), 0);
    EXPECT_EQ(life.alive(), 2);
    middle->onPathChanged = [](HostFolder& itself) { delete &itself; };
    EXPECT_GE(middle->SetName(QStringLiteral("newer")), 0);
    EXPECT_EQ(top->GetPropertyCount(), 0);
}

TEST_F(PathChange, OfAnInsertionMayDestroyTheInserted)
{
    auto* inserted = new HostFolder(QStringLiteral("inserted"), &life);
    inserted->onPathChanged = [](HostFolder& itself) { delete &itself; };
    EXPECT_EQ(top->InsertProperty(inserted),
              ER_SUCCESS); // the tree took it: the caller owns nothing any more
    EXPECT_FALSE(top->HasProperty(QStringLiteral("inserted")));

    inserted = new HostFolder(QStringLiteral("middle"), &life);
    inserted->onPathChanged = [](HostFolder& itself) { delete &itself; };
    EXPECT_EQ(top->InsertOrReplaceProperty(inserted), ER_SUCCESS);
    EXPECT_EQ(top->GetPropertyCount(), 0);
    EXPECT_EQ(life.alive(), 1);
}

TEST_F(PathChange, OfARemovalMayDestroyTheRemoved)
{
    bottom[0]->onPathChanged = [](HostFolder& itself) { delete &itself; };
    EXPECT_EQ(middle->RemoveProperty(QStringLiteral("a")), ER_SUCCESS);
    EXPECT_EQ(middle->GetPropertyCount(), 2);
    EXPECT_EQ(life.alive(), 4);
}

TEST_F(PathChange, MayDestroySiblings)
{
    for (HostFolder* folder : bottom) {
        folder->onPathChanged = [](HostFolder& itself) {
            for (AbstractProperty* sibling : itself.GetParent()->GetPropertyListSorted()) {
                if (sibling != &itself)
                    delete sibling;
            }
        };
    }
    EXPECT_EQ(middle->SetName(QStringLiteral("new")), ER_SUCCESS);
    EXPECT_EQ(middle->GetPropertyCount(), 1);
    EXPECT_EQ(life.alive(), 3);
}

TEST_F(PathChange, MayDestroyTheParent)
{
    bottom[1]->onPathChanged = [](HostFolder& itself) { delete itself.GetParent(); };
    EXPECT_GE(bottom[1]->SetName(QStringLiteral("x")), 0);
    EXPECT_EQ(top->GetPropertyCount(), 0);
    EXPECT_EQ(life.alive(), 1);
}

TEST_F(PathChange, FromAboveMayDestroyTheParent)
{
    bottom[1]->onPathChanged = [](HostFolder& itself) { delete itself.GetParent(); };
    EXPECT_GE(middle->SetName(QStringLiteral("x")), 0);
    EXPECT_EQ(top->GetPropertyCount(), 0);
    EXPECT_EQ(life.alive(), 1);
}

TEST_F(PathChange, OfAnInsertionMayDestroyTheFolderThatInserts)
{
    auto* inserted = new HostFolder(QStringLiteral("inserted"), &life);
    inserted->onPathChanged = [](HostFolder& itself) { delete itself.GetParent(); };
    middle->InsertProperty(inserted);
    EXPECT_EQ(top->GetPropertyCount(), 0);
    EXPECT_EQ(life.alive(), 1);
}

TEST_F(PathChange, OfAReplacementMayDestroyTheFolderThatInserts)
{
    auto* inserted = new HostFolder(QStringLiteral("b"), &life);
    inserted->onPathChanged = [](HostFolder& itself) { delete itself.GetParent(); };
    middle->InsertOrReplaceProperty(inserted);
    EXPECT_EQ(top->GetPropertyCount(), 0);
    EXPECT_EQ(life.alive(), 1);
}

TEST_F(PathChange, OfARemovalMayDestroyTheFormerParent)
{
    HostFolder* parent = middle;
    bottom[0]->onPathChanged = [parent](HostFolder&) { delete parent; };
    const std::unique_ptr<AbstractProperty> taken(middle->TakeProperty(QStringLiteral("a")));
    EXPECT_EQ(taken.get(), bottom[0]);
    EXPECT_EQ(taken->GetParent(), nullptr);
    EXPECT_EQ(top->GetPropertyCount(), 0);
}

TEST_F(PathChange, MayDestroyTheWholeTree)
{
    bottom[2]->onPathChanged = [this](HostFolder&) { top.reset(); };
    middle->SetName(QStringLiteral("new"));
    EXPECT_EQ(life.alive(), 0);
}

TEST_F(PathChange, MayInsertSiblings)
{
    bottom[0]->onPathChanged = [this](HostFolder& itself) {
        itself.onPathChanged = nullptr;
        for (int i = 0; i < 100; ++i)
            addFolder(*itself.GetParent(), QStringLiteral("new%1").arg(i), &life);
    };
    EXPECT_EQ(middle->SetName(QStringLiteral("x")), ER_SUCCESS);
    EXPECT_EQ(middle->GetPropertyCount(), 103);
    EXPECT_EQ(numberedNames(*middle, QStringLiteral("new")).size(), 100);
    EXPECT_GE(bottom[1]->pathChanges, 2);
}

TEST_F(PathChange, MayRenameItselfAndOthers)
{
    int renames = 0;
    middle->onPathChanged = [&](HostFolder& itself) {
        if (renames < 5)
            itself.SetName(QStringLiteral("again%1").arg(++renames));
    };
    bottom[0]->onPathChanged = [this](HostFolder& itself) {
        itself.onPathChanged = nullptr;
        EXPECT_EQ(bottom[2]->SetName(QStringLiteral("renamed")), ER_SUCCESS);
    };
    EXPECT_EQ(middle->SetName(QStringLiteral("first")), ER_SUCCESS);
    EXPECT_EQ(middle->GetName(), QStringLiteral("again5"));
    EXPECT_EQ(top->GetPropertyPtr(QStringLiteral("again5")), middle);
    EXPECT_EQ(top->GetPropertyCount(), 1);
    EXPECT_EQ(middle->GetPropertyPtr(QStringLiteral("renamed")), bottom[2]);
}

TEST_F(PathChange, MayMoveTheToldFolderElsewhere)
{
    bottom[0]->onPathChanged = [this](HostFolder& itself) {
        itself.onPathChanged = nullptr;
        PropertyObject* parent = itself.GetParent();
        EXPECT_EQ(parent->TakeProperty(itself.GetName()), &itself);
        EXPECT_EQ(top->InsertProperty(&itself), ER_SUCCESS);
    };
    EXPECT_EQ(middle->SetName(QStringLiteral("x")), ER_SUCCESS);
    EXPECT_EQ(bottom[0]->GetParent(), top.get());
    EXPECT_EQ(bottom[0]->GetFullPath(), QStringLiteral("/a"));
    EXPECT_EQ(middle->GetPropertyCount(), 2);
}

TEST_F(PathChange, OfAnInsertionMayReplaceTheInserted)
{
    auto* inserted = new HostFolder(QStringLiteral("x"), &life);
    inserted->onPathChanged = [this](HostFolder& itself) {
        EXPECT_EQ(itself.GetParent()->InsertOrReplaceProperty(new HostFolder(QStringLiteral("x"), &life)),
                  ER_SUCCESS);
    };
    EXPECT_EQ(top->InsertProperty(inserted), ER_SUCCESS);
    EXPECT_NE(top->GetPropertyPtr(QStringLiteral("x")), nullptr);
    EXPECT_EQ(top->GetPropertyCount(), 2);
    EXPECT_EQ(life.alive(), 6);
}

TEST_F(PathChange, OfARemovalMayPutTheFolderBack)
{
    middle->onPathChanged = [this](HostFolder& itself) {
        itself.onPathChanged = nullptr;
        EXPECT_EQ(top->InsertProperty(&itself), ER_SUCCESS);
    };
    EXPECT_EQ(top->RemoveProperty(QStringLiteral("middle")), ER_SUCCESS);
    EXPECT_EQ(top->GetPropertyPtr(QStringLiteral("middle")), middle);
}

TEST_F(PathChange, ReachesAFolderThatAHandlerMovedDeeper)
{
    bottom[0]->onPathChanged = [this](HostFolder& itself) {
        itself.onPathChanged = nullptr;
        middle->RemoveProperty(QStringLiteral("c"));
        EXPECT_EQ(itself.InsertProperty(bottom[2]), ER_SUCCESS);
    };
    resetCounts();
    EXPECT_EQ(middle->SetName(QStringLiteral("x")), ER_SUCCESS);
    EXPECT_EQ(bottom[2]->GetFullPath(), QStringLiteral("/x/a/c"));
    EXPECT_GE(bottom[2]->pathChanges, 2);
    EXPECT_EQ(bottom[1]->pathChanges, 1);
}

TEST_F(PathChange, MayAssignTheToldFolder)
{
    PropertyObject source;
    addFolder(source, QStringLiteral("copied"), &life);
    middle->onPathChanged = [&](HostFolder& itself) { itself.PropertyObject::operator=(source); };
    EXPECT_EQ(middle->SetName(QStringLiteral("x")),
              ER_SUCCESS); // destroys a, b and c, which were to be told next
    EXPECT_EQ(childNames(*middle), QStringList{QStringLiteral("copied")});
    source.DeleteProperties();
    EXPECT_EQ(life.alive(), 3);
}

class Destruction : public PathChange
{
};

TEST_F(Destruction, MayDestroySiblings)
{
    for (HostFolder* folder : bottom) {
        folder->onDestroy = [](HostFolder& itself) {
            PropertyObject* parent = itself.GetParent();
            if (!parent)
                return;
            for (AbstractProperty* sibling : parent->GetPropertyListSorted()) {
                if (sibling != &itself) {
                    delete sibling;
                    return;
                }
            }
        };
    }
    middle->DeleteProperties();
    EXPECT_EQ(middle->GetPropertyCount(), 0);
    EXPECT_EQ(life.alive(), 2);
}

TEST_F(Destruction, OfTheParentMayDestroySiblings)
{
    HostFolder* last = bottom[2];
    bottom[0]->onDestroy = [last](HostFolder&) { delete last; };
    EXPECT_EQ(top->DeleteProperty(QStringLiteral("middle")), ER_SUCCESS);
    EXPECT_EQ(life.alive(), 1);
}

TEST_F(Destruction, MayInsertWhereItWas)
{
    PropertyObject* parent = middle;
    bottom[0]->onDestroy = [parent, this](HostFolder&) { addFolder(*parent, QStringLiteral("late"), &life); };
    EXPECT_EQ(middle->DeleteProperty(QStringLiteral("a")), ER_SUCCESS);
    EXPECT_TRUE(middle->HasProperty(QStringLiteral("late")));
    EXPECT_EQ(middle->GetPropertyCount(), 3);
}

TEST_F(Destruction, OfAFolderRefusesNewChildren)
{
    PropertyObject* parent = middle;
    ERESULT inserted = ER_SUCCESS;
    ERESULT replaced = ER_SUCCESS;
    ERESULT stored = ER_SUCCESS;
    bottom[0]->onDestroy = [&](HostFolder&) {
        const auto late = std::make_unique<HostFolder>(QStringLiteral("late"), &life);
        inserted = parent->InsertProperty(late.get());
        replaced = parent->InsertOrReplaceProperty(late.get());
        stored = parent->SetProperty(QStringLiteral("late"), BVariant(1.0));
    };
    top.reset();
    EXPECT_EQ(inserted, ER_FAILED);
    EXPECT_EQ(replaced, ER_FAILED);
    EXPECT_EQ(stored, ER_FAILED);
    EXPECT_EQ(life.alive(), 0);
}

TEST_F(Destruction, OfAFolderRefusesNewNamesForItsChildren)
{
    ERESULT renamed = ER_SUCCESS;
    HostFolder* last = bottom[2];
    bottom[0]->onDestroy = [&](HostFolder&) { renamed = last->SetName(QStringLiteral("late")); };
    ASSERT_EQ(top->DeleteProperty(QStringLiteral("middle")), ER_SUCCESS);
    EXPECT_EQ(renamed, ER_FAILED);
}

TEST_F(Destruction, OfAllChildrenMayInsertANewOne)
{
    PropertyObject* parent = middle;
    bottom[0]->onDestroy = [parent, this](HostFolder&) { addFolder(*parent, QStringLiteral("late"), &life); };
    middle->DeleteProperties();
    for (const AbstractProperty* child : middle->GetPropertyListSorted())
        EXPECT_EQ(child->GetName(), QStringLiteral("late"));
    EXPECT_EQ(life.alive(), 2 + middle->GetPropertyCount());
}

TEST_F(Destruction, OfTheReplacedMayInsertItsName)
{
    PropertyObject* parent = middle;
    bottom[0]->onDestroy = [parent, this](HostFolder&) {
        auto squatter = std::make_unique<HostFolder>(QStringLiteral("a"), &life);
        if (parent->InsertProperty(squatter.get()) >= 0)
            squatter.release();
    };
    auto replacement = std::make_unique<HostFolder>(QStringLiteral("a"), &life);
    if (middle->InsertOrReplaceProperty(replacement.get()) >= 0) {
        EXPECT_EQ(middle->GetPropertyPtr(QStringLiteral("a")), replacement.get());
        replacement.release();
    } else {
        EXPECT_EQ(replacement->GetParent(), nullptr);
    }
    EXPECT_TRUE(middle->HasProperty(QStringLiteral("a")));
    EXPECT_EQ(middle->GetPropertyCount(), 3);
}

TEST_F(Destruction, MayDestroyTheFormerParent)
{
    HostFolder* parent = middle;
    bottom[0]->onDestroy = [parent](HostFolder&) { delete parent; };
    middle->DeleteProperty(QStringLiteral("a"));
    EXPECT_EQ(top->GetPropertyCount(), 0);
    EXPECT_EQ(life.alive(), 1);
}

TEST_F(Destruction, MayLookAround)
{
    int siblings = -1;
    bottom[1]->onDestroy = [&](HostFolder& itself) {
        siblings = middle->GetPropertyCount();
        EXPECT_EQ(itself.GetName(), QStringLiteral("b"));
        EXPECT_NE(itself.GetRootProperty(), nullptr);
        EXPECT_FALSE(itself.GetFullPath().isEmpty());
    };
    EXPECT_EQ(middle->DeleteProperty(QStringLiteral("b")), ER_SUCCESS);
    EXPECT_GE(siblings, 2);
    EXPECT_EQ(middle->GetPropertyCount(), 2);
}

TEST_F(Destruction, OfAFolderLeavesItsChildrenUsableToTheEnd)
{
    bool found = false;
    middle->onDestroy = [&](HostFolder& itself) {
        found = itself.HasProperty(QStringLiteral("a"));
        const std::unique_ptr<AbstractProperty> saved(itself.TakeProperty(QStringLiteral("b")));
        EXPECT_EQ(saved.get(), bottom[1]);
    };
    EXPECT_EQ(top->DeleteProperty(QStringLiteral("middle")), ER_SUCCESS);
    EXPECT_TRUE(found);
    EXPECT_EQ(life.alive(), 1);
}

} // namespace
} // namespace Orrery
