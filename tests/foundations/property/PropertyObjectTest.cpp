#include "foundations/property/PropertyObject.h"

#include "foundations/variant/Variant.h"
#include "tests/foundations/property/TreeNodes.h"

#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace Orrery {
namespace {

using namespace TreeTest;

QString text(const PropertyObject& folder, const QString& name)
{
    QString value;
    EXPECT_EQ(folder.GetProperty(name, &value), ER_SUCCESS) << name.toStdString();
    return value;
}

double number(const PropertyObject& folder, const QString& name)
{
    const auto* leaf = dynamic_cast<const SimpleProperty*>(folder.GetPropertyConstPtr(name));
    EXPECT_NE(leaf, nullptr) << name.toStdString();
    return leaf ? Brindle::Quay::getScalar<double>(leaf->GetValue()) : -1.0;
}

TEST(PropertyObject, StartsEmpty)
{
    PropertyObject folder;
    EXPECT_EQ(folder.GetPropertyCount(), 0);
    EXPECT_TRUE(folder.GetName().isEmpty());
    EXPECT_EQ(folder.GetParent(), nullptr);
    for (const QString& name : awkwardNames()) {
        EXPECT_EQ(folder.GetPropertyPtr(name), nullptr);
        EXPECT_EQ(folder.GetPropertyConstPtr(name), nullptr);
        EXPECT_FALSE(folder.HasProperty(name));
    }
    EXPECT_TRUE(folder.GetPropertyListSorted().isEmpty());
}

TEST(PropertyObject, TakesItsName)
{
    EXPECT_EQ(PropertyObject(QStringLiteral("run0")).GetName(), QStringLiteral("run0"));
}

TEST(PropertyObject, OwnsWhatIsInserted)
{
    LifeCount life;
    {
        PropertyObject folder;
        HostFolder* child = addFolder(folder, QStringLiteral("a"), &life);
        addFolder(*child, QStringLiteral("b"), &life);
        EXPECT_EQ(child->GetParent(), &folder);
        EXPECT_EQ(folder.GetPropertyCount(), 1);
        EXPECT_TRUE(folder.HasProperty(QStringLiteral("a")));
        EXPECT_EQ(folder.GetPropertyPtr(QStringLiteral("a")), child);
        EXPECT_EQ(folder.GetPropertyConstPtr(QStringLiteral("a")), child);
        EXPECT_EQ(life.alive(), 2);
    }
    EXPECT_EQ(life.destroyed, 2);
}

TEST(PropertyObject, LooksUpPlainNamesOnly)
{
    PropertyObject folder;
    addFolder(*addFolder(folder, QStringLiteral("a")), QStringLiteral("b"));
    EXPECT_EQ(folder.GetPropertyPtr(QStringLiteral("a/b")), nullptr);
    EXPECT_EQ(folder.GetPropertyPtr(QStringLiteral("/a")), nullptr);
    EXPECT_EQ(folder.GetPropertyPtr(QStringLiteral(".")), nullptr);
    EXPECT_EQ(folder.GetPropertyPtr(QStringLiteral("A")), nullptr);
}

TEST(PropertyObject, InsertOfATakenNameFailsAndLeavesTheFirst)
{
    LifeCount life;
    PropertyObject folder;
    HostFolder* first = addFolder(folder, QStringLiteral("a"), &life);
    auto second = std::make_unique<HostFolder>(QStringLiteral("a"), &life);
    EXPECT_EQ(folder.InsertProperty(second.get()), ER_ALREADY_EXISTS);
    EXPECT_EQ(folder.GetPropertyPtr(QStringLiteral("a")), first);
    EXPECT_EQ(folder.GetPropertyCount(), 1);
    EXPECT_EQ(second->GetParent(), nullptr);
    EXPECT_EQ(second->pathChanges, 0);
    EXPECT_EQ(life.destroyed, 0);
}

TEST(PropertyObject, InsertOrReplaceDestroysTheFormerChild)
{
    LifeCount life;
    PropertyObject folder;
    addFolder(folder, QStringLiteral("a"), &life);
    auto* second = new HostFolder(QStringLiteral("a"), &life);
    EXPECT_EQ(folder.InsertOrReplaceProperty(second), ER_SUCCESS);
    EXPECT_EQ(folder.GetPropertyPtr(QStringLiteral("a")), second);
    EXPECT_EQ(second->GetParent(), &folder);
    EXPECT_EQ(folder.GetPropertyCount(), 1);
    EXPECT_EQ(life.destroyed, 1);
}

TEST(PropertyObject, InsertOrReplaceOfANewNameInserts)
{
    PropertyObject folder;
    auto* child = new SimpleProperty(QStringLiteral("a"));
    EXPECT_EQ(folder.InsertOrReplaceProperty(child), ER_SUCCESS);
    EXPECT_EQ(folder.GetPropertyPtr(QStringLiteral("a")), child);
}

TEST(PropertyObject, InsertOfItsOwnChildAgain)
{
    LifeCount life;
    PropertyObject folder;
    HostFolder* child = addFolder(folder, QStringLiteral("a"), &life);
    const int changes = child->pathChanges;
    EXPECT_EQ(folder.InsertProperty(child), ER_ALREADY_EXISTS);
    EXPECT_EQ(folder.InsertOrReplaceProperty(child), ER_SUCCESS);
    EXPECT_EQ(folder.GetPropertyPtr(QStringLiteral("a")), child);
    EXPECT_EQ(child->GetParent(), &folder);
    EXPECT_EQ(child->pathChanges, changes);
    EXPECT_EQ(life.destroyed, 0);
}

TEST(PropertyObject, RefusesNull)
{
    PropertyObject folder;
    EXPECT_EQ(folder.InsertProperty(nullptr), ER_INVALID_ARGUMENT);
    EXPECT_EQ(folder.InsertOrReplaceProperty(nullptr), ER_INVALID_ARGUMENT);
    EXPECT_EQ(folder.GetPropertyCount(), 0);
}

TEST(PropertyObject, RefusesAChildOfAnotherFolder)
{
    LifeCount life;
    PropertyObject first;
    PropertyObject second;
    HostFolder* child = addFolder(first, QStringLiteral("a"), &life);
    HostFolder* taken = addFolder(second, QStringLiteral("a"), &life);
    EXPECT_EQ(second.InsertProperty(child), ER_INVALID_ARGUMENT);
    EXPECT_EQ(second.InsertOrReplaceProperty(child), ER_INVALID_ARGUMENT);
    EXPECT_EQ(child->GetParent(), &first);
    EXPECT_EQ(first.GetPropertyPtr(QStringLiteral("a")), child);
    EXPECT_EQ(second.GetPropertyPtr(QStringLiteral("a")), taken);
    EXPECT_EQ(life.destroyed, 0);
}

TEST(PropertyObject, RefusesAnAncestorAndItself)
{
    HostFolder top(QStringLiteral("top"));
    HostFolder* middle = addFolder(top, QStringLiteral("middle"));
    HostFolder* bottom = addFolder(*middle, QStringLiteral("bottom"));
    EXPECT_EQ(bottom->InsertProperty(&top), ER_INVALID_ARGUMENT);
    EXPECT_EQ(bottom->InsertOrReplaceProperty(&top), ER_INVALID_ARGUMENT);
    EXPECT_EQ(bottom->InsertProperty(middle), ER_INVALID_ARGUMENT);
    EXPECT_EQ(top.InsertProperty(&top), ER_INVALID_ARGUMENT);
    EXPECT_EQ(top.InsertOrReplaceProperty(&top), ER_INVALID_ARGUMENT);
    EXPECT_EQ(bottom->GetPropertyCount(), 0);
    EXPECT_EQ(top.GetPropertyCount(), 1);
    EXPECT_EQ(top.GetParent(), nullptr);
}

TEST(PropertyObject, AFailedReplacementKeepsTheFormerChild)
{
    LifeCount life;
    HostFolder top(QStringLiteral("same"), &life);
    HostFolder* middle = addFolder(top, QStringLiteral("middle"), &life);
    HostFolder* kept = addFolder(*middle, QStringLiteral("same"), &life);
    EXPECT_EQ(middle->InsertOrReplaceProperty(&top), ER_INVALID_ARGUMENT); // its ancestor
    EXPECT_EQ(middle->GetPropertyPtr(QStringLiteral("same")), kept);
    EXPECT_EQ(life.destroyed, 0);
}

TEST(PropertyObject, RemoveLeavesTheChildAlive)
{
    LifeCount life;
    PropertyObject folder;
    std::unique_ptr<HostFolder> child(addFolder(folder, QStringLiteral("a"), &life));
    EXPECT_EQ(folder.RemoveProperty(QStringLiteral("a")), ER_SUCCESS);
    EXPECT_EQ(life.destroyed, 0);
    EXPECT_EQ(child->GetParent(), nullptr);
    EXPECT_FALSE(folder.HasProperty(QStringLiteral("a")));
    EXPECT_EQ(folder.GetPropertyCount(), 0);
    EXPECT_EQ(folder.InsertProperty(child.get()), ER_SUCCESS); // and it can come back
    child.release();
}

TEST(PropertyObject, DeleteDestroysTheChild)
{
    LifeCount life;
    PropertyObject folder;
    addFolder(folder, QStringLiteral("a"), &life);
    EXPECT_EQ(folder.DeleteProperty(QStringLiteral("a")), ER_SUCCESS);
    EXPECT_EQ(life.destroyed, 1);
    EXPECT_EQ(folder.GetPropertyPtr(QStringLiteral("a")), nullptr);
}

TEST(PropertyObject, TakeGivesTheChildToTheCaller)
{
    LifeCount life;
    PropertyObject folder;
    HostFolder* child = addFolder(folder, QStringLiteral("a"), &life);
    const std::unique_ptr<AbstractProperty> taken(folder.TakeProperty(QStringLiteral("a")));
    EXPECT_EQ(taken.get(), child);
    EXPECT_EQ(taken->GetParent(), nullptr);
    EXPECT_EQ(life.destroyed, 0);
    EXPECT_EQ(folder.GetPropertyCount(), 0);
}

TEST(PropertyObject, ReportsAMissingChild)
{
    PropertyObject folder;
    addFolder(folder, QStringLiteral("a"));
    EXPECT_EQ(folder.RemoveProperty(QStringLiteral("b")), ER_NOT_FOUND);
    EXPECT_EQ(folder.DeleteProperty(QStringLiteral("b")), ER_NOT_FOUND);
    EXPECT_EQ(folder.TakeProperty(QStringLiteral("b")), nullptr);
    EXPECT_EQ(folder.GetPropertyCount(), 1);
}

TEST(PropertyObject, DeletePropertiesDestroysAllChildren)
{
    LifeCount life;
    PropertyObject folder;
    for (int i = 0; i < 20; ++i)
        addFolder(folder, QString::number(i), &life);
    addFolder(*addFolder(folder, QStringLiteral("x"), &life), QStringLiteral("y"), &life);
    folder.DeleteProperties();
    EXPECT_EQ(life.destroyed, 22);
    EXPECT_EQ(folder.GetPropertyCount(), 0);
    EXPECT_TRUE(numberedNames(folder).isEmpty());
    addFolder(folder, QStringLiteral("x"), &life);
    EXPECT_EQ(folder.GetPropertyCount(), 1);
}

TEST(PropertyObject, DestroyingAChildUnlinksIt)
{
    LifeCount life;
    PropertyObject folder;
    const HostFolder* child = addFolder(folder, QStringLiteral("7"), &life);
    delete child;
    EXPECT_EQ(folder.GetPropertyPtr(QStringLiteral("7")), nullptr);
    EXPECT_EQ(folder.GetPropertyCount(), 0);
    EXPECT_TRUE(numberedNames(folder).isEmpty());
    EXPECT_TRUE(folder.GetPropertyListSorted().isEmpty());
    addFolder(folder, QStringLiteral("7"), &life);
}

TEST(PropertyObject, HoldsChildrenOfEveryName)
{
    LifeCount life;
    PropertyObject folder;
    const QStringList names = awkwardNames();
    for (const QString& name : names)
        addFolder(folder, name, &life);
    EXPECT_EQ(folder.GetPropertyCount(), names.size());
    for (const QString& name : names) {
        const AbstractProperty* child = folder.GetPropertyConstPtr(name);
        ASSERT_NE(child, nullptr);
        EXPECT_EQ(child->GetName(), name);
    }
    for (const QString& name : names)
        EXPECT_EQ(folder.DeleteProperty(name), ER_SUCCESS);
    EXPECT_EQ(life.alive(), 0);
}

TEST(PropertyObject, ListsChildrenInMapOrder)
{
    PropertyObject folder;
    for (const char* name : {"b", "10", "a", "B", "9"})
        addFolder(folder, QLatin1String(name));
    const QStringList order{QStringLiteral("10"), QStringLiteral("9"), QStringLiteral("B"),
                            QStringLiteral("a"), QStringLiteral("b")};
    EXPECT_EQ(childNames(folder), order);
    QList<AbstractProperty*> list;
    folder.GetPropertyList(&list);
    EXPECT_EQ(namesOf(list), order);
}

TEST(PropertyObject, ClearsTheListThatItFills)
{
    PropertyObject folder;
    addFolder(folder, QStringLiteral("1"));
    QList<AbstractProperty*> list{nullptr, &folder};
    folder.GetPropertyList(&list);
    EXPECT_EQ(namesOf(list), QStringList{QStringLiteral("1")});
    list = {nullptr, &folder};
    folder.GetPrefixedChildrenProperties(&list, QString());
    EXPECT_EQ(namesOf(list), QStringList{QStringLiteral("1")});
    folder.DeleteProperties();
    folder.GetPropertyList(&list);
    EXPECT_TRUE(list.isEmpty());
}

TEST(PropertyObject, ChecksTheKindInGetPtr)
{
    PropertyObject folder;
    HostFolder* child = addFolder(folder, QStringLiteral("a"));
    SimpleProperty* leaf = addValue(folder, QStringLiteral("b"));
    EXPECT_EQ(folder.GetPtr<HostFolder>(QStringLiteral("a")), child);
    EXPECT_EQ(folder.GetPtr<PropertyObject>(QStringLiteral("a")), child);
    EXPECT_EQ(folder.GetPtr<SimpleProperty>(QStringLiteral("a")), nullptr);
    EXPECT_EQ(folder.GetPtr<SimpleProperty>(QStringLiteral("b")), leaf);
    EXPECT_EQ(folder.GetPtr<RootLikeFolder>(QStringLiteral("a")), nullptr);
    EXPECT_EQ(folder.GetPtr<HostFolder>(QStringLiteral("c")), nullptr);
}

TEST(PropertyObject, SetPropertyMakesAndThenKeepsTheLeaf)
{
    PropertyObject folder;
    EXPECT_EQ(folder.SetProperty(QStringLiteral("Start"), BVariant(1.5)), ER_SUCCESS);
    AbstractProperty* leaf = folder.GetPropertyPtr(QStringLiteral("Start"));
    ASSERT_NE(leaf, nullptr);
    EXPECT_TRUE(leaf->IsSimpleProperty());
    EXPECT_EQ(leaf->GetParent(), &folder);
    EXPECT_EQ(number(folder, QStringLiteral("Start")), 1.5);
    leaf->SetPropertyFlags(PropertyFlagHidden);
    EXPECT_EQ(folder.SetProperty(QStringLiteral("Start"), BVariant(2.5)), ER_SUCCESS);
    EXPECT_EQ(folder.GetPropertyPtr(QStringLiteral("Start")), leaf);
    EXPECT_EQ(leaf->GetPropertyFlags(), static_cast<unsigned int>(PropertyFlagHidden));
    EXPECT_EQ(number(folder, QStringLiteral("Start")), 2.5);
}

TEST(PropertyObject, SetPropertyStoresNull)
{
    PropertyObject folder;
    ASSERT_EQ(folder.SetProperty(QStringLiteral("Data"), BVariant(1.0)), ER_SUCCESS);
    ASSERT_EQ(folder.SetProperty(QStringLiteral("Data"), BVariant()), ER_SUCCESS);
    const auto* leaf = folder.GetPtr<SimpleProperty>(QStringLiteral("Data"));
    ASSERT_NE(leaf, nullptr);
    EXPECT_TRUE(leaf->GetValue().isNull());
}

TEST(PropertyObject, ReadOnlyIsEnforcedByNothing)
{
    PropertyObject folder;
    SimpleProperty* leaf = addValue(folder, QStringLiteral("a"), 1.0);
    leaf->SetPropertyFlags(PropertyFlagReadOnly);
    EXPECT_EQ(folder.SetProperty(QStringLiteral("a"), BVariant(2.0)), ER_SUCCESS);
    EXPECT_EQ(leaf->SetValue(BVariant(3.0), IsCellArrayFalse), ER_SUCCESS);
    EXPECT_EQ(number(folder, QStringLiteral("a")), 3.0);
    EXPECT_EQ(leaf->SetName(QStringLiteral("b")), ER_SUCCESS);
    EXPECT_EQ(folder.DeleteProperty(QStringLiteral("b")), ER_SUCCESS);
}

TEST(PropertyObject, SetPropertyRefusesAChildOfAnotherKind)
{
    LifeCount life;
    PropertyObject folder;
    HostFolder* child = addFolder(folder, QStringLiteral("a"), &life);
    PropertyReference* reference = addReference(folder, QStringLiteral("r"), *child);
    EXPECT_EQ(folder.SetProperty(QStringLiteral("a"), BVariant(1.0)), ER_INVALID_ARGUMENT);
    EXPECT_EQ(folder.SetProperty(QStringLiteral("a"), QStringLiteral("t")), ER_INVALID_ARGUMENT);
    EXPECT_EQ(folder.SetProperty(QStringLiteral("r"), BVariant(1.0)), ER_INVALID_ARGUMENT);
    EXPECT_EQ(folder.GetPropertyPtr(QStringLiteral("a")), child);
    EXPECT_EQ(folder.GetPropertyPtr(QStringLiteral("r")), reference);
    EXPECT_EQ(reference->Resolve(), child);
    EXPECT_EQ(life.destroyed, 0);
}

TEST(PropertyObject, GetPropertyReadsText)
{
    PropertyObject folder;
    const QString value = QStringLiteral("V/\u221aHz ") + QChar(0) + QStringLiteral(" end");
    ASSERT_EQ(folder.SetProperty(QStringLiteral("SIUnits"), value), ER_SUCCESS);
    EXPECT_EQ(text(folder, QStringLiteral("SIUnits")), value);
    ASSERT_EQ(folder.SetProperty(QStringLiteral("SIUnits"), QString()), ER_SUCCESS);
    EXPECT_TRUE(text(folder, QStringLiteral("SIUnits")).isEmpty());
}

TEST(PropertyObject, GetPropertyGivesEveryTextBackAsItWas)
{
    PropertyObject folder;
    for (const QString& value : awkwardNames()) {
        ASSERT_EQ(folder.SetProperty(QStringLiteral("x"), value), ER_SUCCESS);
        EXPECT_EQ(text(folder, QStringLiteral("x")), value);
    }
}

TEST(PropertyObject, GetPropertyReadsBrokenUtf8WithReplacements)
{
    PropertyObject folder;
    ASSERT_EQ(folder.SetProperty(QStringLiteral("x"), BVariant(std::string("a\xff"
                                                                           "b\xc3"))),
              ER_SUCCESS);
    EXPECT_EQ(text(folder, QStringLiteral("x")), QStringLiteral("a\ufffdb\ufffd"));
}

TEST(PropertyObject, GetPropertyRefusesANullText)
{
    PropertyObject folder;
    ASSERT_EQ(folder.SetProperty(QStringLiteral("x"), QStringLiteral("t")), ER_SUCCESS);
    EXPECT_EQ(folder.GetProperty(QStringLiteral("x"), nullptr), ER_INVALID_ARGUMENT);
}

TEST(PropertyObject, GetPropertyFailsForWhatIsNoTextScalar)
{
    PropertyObject folder;
    addFolder(folder, QStringLiteral("folder"));
    ASSERT_EQ(folder.SetProperty(QStringLiteral("null"), BVariant()), ER_SUCCESS);
    ASSERT_EQ(folder.SetProperty(QStringLiteral("number"), BVariant(1.0)), ER_SUCCESS);
    ASSERT_EQ(folder.SetProperty(QStringLiteral("texts"),
                                 BVariant(std::vector<std::string>{std::string("a"), std::string("b")})),
              ER_SUCCESS);
    ASSERT_EQ(folder.SetProperty(QStringLiteral("none"), BVariant(std::vector<std::string>())), ER_SUCCESS);
    QString value = QStringLiteral("untouched");
    EXPECT_EQ(folder.GetProperty(QStringLiteral("null"), &value), ER_FAILED);
    EXPECT_EQ(folder.GetProperty(QStringLiteral("number"), &value), ER_FAILED);
    EXPECT_EQ(folder.GetProperty(QStringLiteral("texts"), &value), ER_FAILED);
    EXPECT_EQ(folder.GetProperty(QStringLiteral("none"), &value), ER_FAILED);
    EXPECT_EQ(folder.GetProperty(QStringLiteral("missing"), &value), ER_NOT_FOUND);
    EXPECT_LT(folder.GetProperty(QStringLiteral("folder"), &value), 0);
    EXPECT_EQ(value, QStringLiteral("untouched"));
}

TEST(PropertyObject, CloneSharesNothing)
{
    LifeCount life;
    PropertyObject folder(QStringLiteral("run"));
    addValue(*addFolder(folder, QStringLiteral("a"), &life), QStringLiteral("x"), 1.0);
    const std::unique_ptr<AbstractProperty> clone(folder.Clone());
    auto* copy = dynamic_cast<PropertyObject*>(clone.get());
    ASSERT_NE(copy, nullptr);
    EXPECT_EQ(copy->GetParent(), nullptr);
    EXPECT_EQ(copy->GetName(), QStringLiteral("run"));
    auto* child = copy->GetPtr<HostFolder>(QStringLiteral("a")); // a clone keeps each class
    ASSERT_NE(child, nullptr);
    EXPECT_EQ(child->GetParent(), copy);
    EXPECT_EQ(life.made, 2);
    ASSERT_EQ(child->SetProperty(QStringLiteral("x"), BVariant(2.0)), ER_SUCCESS);
    EXPECT_EQ(number(*folder.GetPtr<PropertyObject>(QStringLiteral("a")), QStringLiteral("x")), 1.0);
    EXPECT_EQ(number(*child, QStringLiteral("x")), 2.0);
}

TEST(PropertyObject, CloneKeepsNameAndFlagsAtEveryLevel)
{
    HostFolder folder(QStringLiteral("run"));
    folder.SetPropertyFlags(PropertyFlagHidden);
    HostFolder* child = addFolder(folder, QStringLiteral("a"));
    child->SetPropertyFlags(PropertyFlagReadOnly | PropertyFlagSerializable);
    addValue(*child, QStringLiteral("x"))->SetPropertyFlags(0xFFFFFFF0U);
    addReference(*child, QStringLiteral("r"), folder)->SetPropertyFlags(0);

    const std::unique_ptr<AbstractProperty> clone(folder.Clone());
    auto* copy = dynamic_cast<HostFolder*>(clone.get());
    ASSERT_NE(copy, nullptr);
    EXPECT_EQ(copy->GetName(), QStringLiteral("run"));
    EXPECT_EQ(copy->GetPropertyFlags(), 2U);
    auto* copiedChild = copy->GetPtr<PropertyObject>(QStringLiteral("a"));
    ASSERT_NE(copiedChild, nullptr);
    EXPECT_EQ(copiedChild->GetPropertyFlags(), 5U);
    EXPECT_EQ(copiedChild->GetPropertyPtr(QStringLiteral("x"))->GetPropertyFlags(), 0xFFFFFFF0U);
    EXPECT_EQ(copiedChild->GetPropertyPtr(QStringLiteral("r"))->GetPropertyFlags(), 0U);
}

TEST(PropertyObject, CloneOfAChildHasNoParentAndAcceptsAName)
{
    PropertyObject folder;
    HostFolder* child = addFolder(folder, QStringLiteral("a"));
    addFolder(folder, QStringLiteral("b"));
    const std::unique_ptr<AbstractProperty> clone(child->Clone());
    EXPECT_EQ(clone->GetParent(), nullptr);
    EXPECT_EQ(clone->SetName(QStringLiteral("b")), ER_SUCCESS); // its siblings are not the original's
    EXPECT_EQ(folder.GetPropertyCount(), 2);
    EXPECT_EQ(child->GetName(), QStringLiteral("a"));
}

TEST(PropertyObject, CopyConstructionCarriesNameAndFlagsAndSharesNothing)
{
    LifeCount life;
    PropertyObject folder(QStringLiteral("run"));
    folder.SetPropertyFlags(PropertyFlagHidden);
    addValue(folder, QStringLiteral("x"), 1.0);
    addFolder(folder, QStringLiteral("a"), &life);
    const int made = life.made;
    PropertyObject copy(folder);
    EXPECT_EQ(copy.GetParent(), nullptr);
    EXPECT_EQ(copy.GetName(), QStringLiteral("run"));
    EXPECT_EQ(copy.GetPropertyFlags(), 2U);
    ASSERT_TRUE(copy.HasProperty(QStringLiteral("x")));
    EXPECT_NE(copy.GetPropertyPtr(QStringLiteral("a")), folder.GetPropertyPtr(QStringLiteral("a")));
    EXPECT_EQ(life.made, made + 1);
    ASSERT_EQ(copy.SetProperty(QStringLiteral("x"), BVariant(2.0)), ER_SUCCESS);
    EXPECT_EQ(number(folder, QStringLiteral("x")), 1.0);
}

TEST(PropertyObject, AssignmentReplacesChildrenWithClones)
{
    LifeCount sourceLife;
    LifeCount targetLife;
    PropertyObject source(QStringLiteral("source"));
    addFolder(source, QStringLiteral("a"), &sourceLife);
    addValue(source, QStringLiteral("x"), 1.0);
    PropertyObject target(QStringLiteral("target"));
    addFolder(target, QStringLiteral("a"), &targetLife);
    addFolder(target, QStringLiteral("old"), &targetLife);

    EXPECT_EQ(&(target = source), &target);
    EXPECT_EQ(targetLife.alive(), 0);
    EXPECT_EQ(childNames(target), childNames(source));
    EXPECT_EQ(sourceLife.made, 2);
    EXPECT_NE(target.GetPropertyPtr(QStringLiteral("a")), source.GetPropertyPtr(QStringLiteral("a")));
    EXPECT_EQ(target.GetPropertyPtr(QStringLiteral("a"))->GetParent(), &target);
    ASSERT_EQ(target.SetProperty(QStringLiteral("x"), BVariant(2.0)), ER_SUCCESS);
    EXPECT_EQ(number(source, QStringLiteral("x")), 1.0);
    ASSERT_EQ(source.DeleteProperty(QStringLiteral("a")), ER_SUCCESS);
    EXPECT_TRUE(target.HasProperty(QStringLiteral("a")));
}

TEST(PropertyObject, AssignmentCarriesTheNameToANamelessFolderOutsideATreeOnly)
{
    PropertyObject source(QStringLiteral("source"));
    PropertyObject nameless;
    nameless = source;
    EXPECT_EQ(nameless.GetName(), QStringLiteral("source"));
    PropertyObject named(QStringLiteral("own"));
    named = source;
    EXPECT_EQ(named.GetName(), QStringLiteral("own"));
    PropertyObject parent;
    HostFolder* namelessChild = addFolder(parent, QString());
    const int changes = namelessChild->pathChanges;
    namelessChild->PropertyObject::operator=(source);
    EXPECT_TRUE(namelessChild->GetName().isEmpty());
    EXPECT_EQ(namelessChild->GetParent(), &parent);
    EXPECT_EQ(namelessChild->pathChanges, changes);
    EXPECT_EQ(parent.GetPropertyPtr(QString()), namelessChild);
}

TEST(PropertyObject, AssignmentLeavesTheFlags)
{
    PropertyObject source;
    source.SetPropertyFlags(PropertyFlagHidden);
    addFolder(source, QStringLiteral("a"))->SetPropertyFlags(PropertyFlagReadOnly);
    PropertyObject target;
    target.SetPropertyFlags(PropertyFlagSerializable | PropertyFlagReadOnly);
    target = source;
    EXPECT_EQ(target.GetPropertyFlags(), 5U);
    EXPECT_EQ(target.GetPropertyPtr(QStringLiteral("a"))->GetPropertyFlags(), 1U);
}

TEST(PropertyObject, AssignmentToItselfChangesNothing)
{
    LifeCount life;
    PropertyObject folder(QStringLiteral("run"));
    HostFolder* child = addFolder(folder, QStringLiteral("a"), &life);
    const PropertyObject& itself = folder;
    folder = itself;
    ASSERT_EQ(folder.GetPropertyCount(), 1);
    EXPECT_EQ(folder.GetPropertyPtr(QStringLiteral("a")), child);
    EXPECT_EQ(life.made, 1);
}

TEST(PropertyObject, AssignmentFromItsOwnDescendant)
{
    LifeCount life;
    HostFolder top(QStringLiteral("top"), &life);
    HostFolder* middle = addFolder(top, QStringLiteral("middle"), &life);
    HostFolder* bottom = addFolder(*middle, QStringLiteral("bottom"), &life);
    addValue(*bottom, QStringLiteral("x"), 4.0);
    top.PropertyObject::operator=(*bottom);
    EXPECT_EQ(childNames(top), QStringList{QStringLiteral("x")});
    EXPECT_EQ(number(top, QStringLiteral("x")), 4.0);
    EXPECT_EQ(life.alive(), 1);
}

TEST(PropertyObject, AssignmentFromItsOwnAncestor)
{
    LifeCount life;
    HostFolder top(QStringLiteral("top"), &life);
    HostFolder* middle = addFolder(top, QStringLiteral("middle"), &life);
    addFolder(*middle, QStringLiteral("bottom"), &life);
    middle->PropertyObject::operator=(top);
    ASSERT_EQ(childNames(*middle), QStringList{QStringLiteral("middle")});
    const auto* copy = middle->GetPtr<PropertyObject>(QStringLiteral("middle"));
    ASSERT_NE(copy, nullptr);
    EXPECT_EQ(childNames(*copy), QStringList{QStringLiteral("bottom")});
    EXPECT_EQ(life.alive(), 4);
}

TEST(PropertyObject, ACloneThatThrowsLeaksNothingAndLeavesTheSource)
{
    LifeCount life;
    HostFolder source(QStringLiteral("source"), &life);
    addFolder(source, QStringLiteral("a"), &life);
    addFolder(source, QStringLiteral("b"), &life)->onClone = [] { throw std::runtime_error("no clone"); };
    addFolder(source, QStringLiteral("c"), &life);
    const int alive = life.alive();
    EXPECT_THROW(delete source.Clone(), std::runtime_error);
    EXPECT_EQ(life.alive(), alive);
    EXPECT_EQ(source.GetPropertyCount(), 3);
}

TEST(PropertyObject, AnAssignmentThatThrowsLeavesBothAsTheyWere)
{
    LifeCount life;
    {
        HostFolder source(QStringLiteral("source"), &life);
        addFolder(source, QStringLiteral("a"), &life);
        addFolder(source, QStringLiteral("b"), &life)->onClone = [] { throw std::runtime_error("no clone"); };
        PropertyObject target;
        addFolder(target, QStringLiteral("old"), &life);
        EXPECT_THROW(target = source, std::runtime_error);
        EXPECT_EQ(source.GetPropertyCount(), 2);
        EXPECT_EQ(childNames(target), QStringList{QStringLiteral("old")});
        EXPECT_EQ(life.alive(), 4);
    }
    EXPECT_EQ(life.alive(), 0);
}

TEST(PropertyObject, CanReferenceWhatSharesItsRoot)
{
    HostFolder top(QStringLiteral("top"));
    HostFolder* left = addFolder(top, QStringLiteral("left"));
    HostFolder* right = addFolder(top, QStringLiteral("right"));
    const SimpleProperty* leaf = addValue(*right, QStringLiteral("x"));
    EXPECT_TRUE(left->CanReferenceProperty(leaf));
    EXPECT_TRUE(left->CanReferenceProperty(&top));
    EXPECT_TRUE(left->CanReferenceProperty(left));
    EXPECT_TRUE(top.CanReferenceProperty(leaf));
}

TEST(PropertyObject, CanNotReferenceNullOrAnotherTree)
{
    HostFolder top(QStringLiteral("top"));
    HostFolder* left = addFolder(top, QStringLiteral("left"));
    HostFolder other(QStringLiteral("other"));
    const HostFolder* inside = addFolder(other, QStringLiteral("inside"));
    EXPECT_FALSE(left->CanReferenceProperty(nullptr));
    EXPECT_FALSE(left->CanReferenceProperty(&other)); // a node that isn't in a tree yet
    EXPECT_FALSE(left->CanReferenceProperty(inside));
}

TEST(PropertyObject, CanReferenceAcrossTreesOfFilesOnly)
{
    RootLikeFolder first(QStringLiteral("Root"));
    RootLikeFolder second(QStringLiteral("Root"));
    HostFolder plain(QStringLiteral("plain"));
    const HostFolder* inSecond = addFolder(second, QStringLiteral("a"));
    HostFolder* inFirst = addFolder(first, QStringLiteral("a"));
    EXPECT_TRUE(inFirst->CanReferenceProperty(inSecond));
    EXPECT_TRUE(first.CanReferenceProperty(&second));
    EXPECT_FALSE(inFirst->CanReferenceProperty(&plain));
    EXPECT_FALSE(plain.CanReferenceProperty(inSecond));
}

TEST(PropertyObject, SetPropertyRefMakesABoundReference)
{
    PropertyObject folder;
    const HostFolder* target = addFolder(folder, QStringLiteral("a"));
    EXPECT_EQ(folder.SetPropertyRef(QStringLiteral("r"), target), ER_SUCCESS);
    const auto* reference = folder.GetPtr<PropertyReference>(QStringLiteral("r"));
    ASSERT_NE(reference, nullptr);
    EXPECT_EQ(reference->Resolve(), target);
    EXPECT_EQ(reference->GetParent(), &folder);
}

TEST(PropertyObject, SetPropertyRefBindsAnExistingReferenceAnew)
{
    PropertyObject folder;
    const HostFolder* first = addFolder(folder, QStringLiteral("a"));
    const HostFolder* second = addFolder(folder, QStringLiteral("b"));
    addReference(folder, QStringLiteral("r"), *first);
    EXPECT_EQ(folder.SetPropertyRef(QStringLiteral("r"), second), ER_SUCCESS);
    const auto* reference = folder.GetPtr<PropertyReference>(QStringLiteral("r"));
    ASSERT_NE(reference, nullptr);
    EXPECT_EQ(reference->Resolve(), second);
    EXPECT_EQ(folder.GetPropertyCount(), 3);
}

TEST(PropertyObject, SetPropertyRefTurnsALeafIntoAReference)
{
    PropertyObject folder;
    const HostFolder* target = addFolder(folder, QStringLiteral("a"));
    addValue(folder, QStringLiteral("r"), 1.0);
    EXPECT_EQ(folder.SetPropertyRef(QStringLiteral("r"), target), ER_SUCCESS);
    const auto* reference = folder.GetPtr<PropertyReference>(QStringLiteral("r"));
    ASSERT_NE(reference, nullptr);
    EXPECT_EQ(reference->Resolve(), target);
}

TEST(PropertyObject, SetPropertyRefReplacesAFolder)
{
    LifeCount life;
    PropertyObject folder;
    const HostFolder* target = addFolder(folder, QStringLiteral("a"));
    addFolder(*addFolder(folder, QStringLiteral("r"), &life), QStringLiteral("inside"), &life);
    EXPECT_EQ(folder.SetPropertyRef(QStringLiteral("r"), target), ER_SUCCESS);
    EXPECT_EQ(life.alive(), 0);
    const auto* reference = folder.GetPtr<PropertyReference>(QStringLiteral("r"));
    ASSERT_NE(reference, nullptr);
    EXPECT_EQ(reference->Resolve(), target);
}

TEST(PropertyObject, SetPropertyRefKeepsAChildThatHoldsTheTarget)
{
    LifeCount life;
    PropertyObject folder;
    HostFolder* child = addFolder(folder, QStringLiteral("r"), &life);
    const HostFolder* inside = addFolder(*child, QStringLiteral("inside"), &life);
    EXPECT_EQ(folder.SetPropertyRef(QStringLiteral("r"), child), ER_INVALID_ARGUMENT);
    EXPECT_EQ(folder.SetPropertyRef(QStringLiteral("r"), inside), ER_INVALID_ARGUMENT);
    EXPECT_EQ(folder.GetPropertyPtr(QStringLiteral("r")), child);
    EXPECT_EQ(life.destroyed, 0);
}

TEST(PropertyObject, SetPropertyRefToTheReferenceItselfKeepsTheFormerBinding)
{
    PropertyObject folder;
    const HostFolder* target = addFolder(folder, QStringLiteral("a"));
    const PropertyReference* reference = addReference(folder, QStringLiteral("r"), *target);
    EXPECT_EQ(folder.SetPropertyRef(QStringLiteral("r"), reference), ER_INVALID_ARGUMENT);
    EXPECT_EQ(reference->Resolve(), target);
}

TEST(PropertyObject, AFailedSetPropertyRefKeepsTheFormerChildAndLeavesNoNewOne)
{
    LifeCount life;
    PropertyObject folder;
    const HostFolder outside(QStringLiteral("outside"));
    const HostFolder* target = addFolder(folder, QStringLiteral("a"), &life);
    const SimpleProperty* leaf = addValue(folder, QStringLiteral("x"), 1.0);
    const PropertyReference* reference = addReference(folder, QStringLiteral("r"), *target);
    const AbstractProperty* const unbindable[] = {nullptr, &outside};
    for (const AbstractProperty* bad : unbindable) {
        EXPECT_EQ(folder.SetPropertyRef(QStringLiteral("new"), bad), ER_INVALID_ARGUMENT);
        EXPECT_EQ(folder.SetPropertyRef(QStringLiteral("x"), bad), ER_INVALID_ARGUMENT);
        EXPECT_EQ(folder.SetPropertyRef(QStringLiteral("a"), bad), ER_INVALID_ARGUMENT);
        EXPECT_EQ(folder.SetPropertyRef(QStringLiteral("r"), bad), ER_INVALID_ARGUMENT);
    }
    EXPECT_FALSE(folder.HasProperty(QStringLiteral("new")));
    EXPECT_EQ(folder.GetPropertyPtr(QStringLiteral("x")), leaf);
    EXPECT_EQ(folder.GetPropertyPtr(QStringLiteral("a")), target);
    EXPECT_EQ(folder.GetPropertyPtr(QStringLiteral("r")), reference);
    EXPECT_EQ(reference->Resolve(), target);
    EXPECT_EQ(life.destroyed, 0);
}

TEST(Metadata, IsAFolderThatClonesAndAssigns)
{
    HostMetadata metadata(QStringLiteral("m"));
    addValue(metadata, QStringLiteral("x"), 2.0);
    HostMetadata copy{QString()};
    copy = metadata;
    EXPECT_EQ(number(copy, QStringLiteral("x")), 2.0);
    const HostMetadata constructed(metadata);
    EXPECT_EQ(number(constructed, QStringLiteral("x")), 2.0);
    const std::unique_ptr<AbstractProperty> clone(metadata.Clone());
    EXPECT_TRUE(clone->IsMetadata());
    EXPECT_EQ(clone->GetName(), QStringLiteral("m"));
}

} // namespace
} // namespace Orrery
