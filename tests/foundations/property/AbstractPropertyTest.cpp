#include "foundations/property/AbstractProperty.h"

#include "tests/foundations/property/TreeNodes.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>

namespace Orrery {
namespace {

using namespace TreeTest;

/// A host's node of a kind of its own: no type flag says what it is.
class BareNode : public AbstractProperty
{
public:
    const QString& PropertyObjType() const override
    {
        static const QString s_type = QStringLiteral("BareNode");
        return s_type;
    }
    AbstractProperty* DoClone() const override { return new BareNode; }
};

struct TypeFlagsCase
{
    const char* name;
    std::function<AbstractProperty*()> make;
    unsigned int flags;
};

class TypeFlags : public ::testing::TestWithParam<TypeFlagsCase>
{
};

TEST_P(TypeFlags, TellTheKindOfTheNode)
{
    const std::unique_ptr<AbstractProperty> node(GetParam().make());
    const unsigned int flags = GetParam().flags;
    EXPECT_EQ(node->GetTypeFlags(), flags);
    EXPECT_EQ(node->IsPropertyObject(), (flags & 1U) != 0);
    EXPECT_EQ(node->IsVariable(), (flags & 2U) != 0);
    EXPECT_EQ(node->IsMetadata(), (flags & 4U) != 0);
    EXPECT_EQ(node->IsFileRoot(), (flags & 8U) != 0);
    EXPECT_EQ(node->IsPropertyReference(), (flags & 16U) != 0);
    EXPECT_EQ(node->IsSimpleProperty(), (flags & 32U) != 0);
}

/// Answers as a Variable does, for the test of flag 2.
class VariableLike : public HostFolder
{
public:
    using HostFolder::HostFolder;
    unsigned int GetTypeFlags() const override { return PropertyTypeFlagObject | PropertyTypeFlagVariable; }
};

INSTANTIATE_TEST_SUITE_P(
    Kinds, TypeFlags,
    ::testing::Values(TypeFlagsCase{"Bare", [] { return new BareNode; }, 0},
                      TypeFlagsCase{"Folder", [] { return new PropertyObject; }, 1},
                      TypeFlagsCase{"Variable", [] { return new VariableLike(QStringLiteral("v")); }, 3},
                      TypeFlagsCase{"Metadata", [] { return new HostMetadata(QStringLiteral("m")); }, 5},
                      TypeFlagsCase{"FileRoot", [] { return new RootLikeFolder(QStringLiteral("Root")); }, 9},
                      TypeFlagsCase{"Reference", [] { return new PropertyReference; }, 16},
                      TypeFlagsCase{"Leaf", [] { return new SimpleProperty(QStringLiteral("x")); }, 32}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(TypeFlagBits, HaveTheFixedValues)
{
    EXPECT_EQ(static_cast<unsigned int>(PropertyTypeFlagObject), 1U);
    EXPECT_EQ(static_cast<unsigned int>(PropertyTypeFlagVariable), 2U);
    EXPECT_EQ(static_cast<unsigned int>(PropertyTypeFlagMetadata), 4U);
    EXPECT_EQ(static_cast<unsigned int>(PropertyTypeFlagFileRoot), 8U);
    EXPECT_EQ(static_cast<unsigned int>(PropertyTypeFlagReference), 16U);
    EXPECT_EQ(static_cast<unsigned int>(PropertyTypeFlagSimple), 32U);
}

TEST(PropertyFlagBits, HaveTheFixedValues)
{
    EXPECT_EQ(static_cast<unsigned int>(PropertyFlagReadOnly), 1U);
    EXPECT_EQ(static_cast<unsigned int>(PropertyFlagHidden), 2U);
    EXPECT_EQ(static_cast<unsigned int>(PropertyFlagSerializable), 4U);
}

TEST(PropertyFlags, OfANewNodeSaySerializableOnly)
{
    const PropertyObject folder;
    const SimpleProperty leaf(QStringLiteral("x"));
    const PropertyReference reference;
    for (const AbstractProperty* node :
         {static_cast<const AbstractProperty*>(&folder), static_cast<const AbstractProperty*>(&leaf),
          static_cast<const AbstractProperty*>(&reference)}) {
        EXPECT_EQ(node->GetPropertyFlags(), 4U);
        EXPECT_FALSE(node->IsReadOnly());
        EXPECT_FALSE(node->IsHidden());
        EXPECT_TRUE(node->IsSerializable());
    }
}

class PropertyFlagWord : public ::testing::TestWithParam<unsigned int>
{
};

TEST_P(PropertyFlagWord, IsReadAndWrittenWhole)
{
    PropertyObject folder;
    const unsigned int flags = GetParam();
    folder.SetPropertyFlags(flags);
    EXPECT_EQ(folder.GetPropertyFlags(), flags);
    EXPECT_EQ(folder.IsReadOnly(), (flags & 1U) != 0);
    EXPECT_EQ(folder.IsHidden(), (flags & 2U) != 0);
    EXPECT_EQ(folder.IsSerializable(), (flags & 4U) != 0);
    folder.SetSerializable(true);
    EXPECT_EQ(folder.GetPropertyFlags(), flags | 4U);
    folder.SetSerializable(false);
    EXPECT_EQ(folder.GetPropertyFlags(), flags & ~4U);
}

INSTANTIATE_TEST_SUITE_P(AllCombinationsAndUnknownBits, PropertyFlagWord,
                         ::testing::Values(0U, 1U, 2U, 3U, 4U, 5U, 6U, 7U, 8U, 0x80000000U, 0xFFFFFFFFU));

TEST(AbstractPropertyTest, TypeNamesAreThoseOfTheClass)
{
    const PropertyObject folder;
    const SimpleProperty leaf(QStringLiteral("x"));
    const PropertyReference reference;
    EXPECT_EQ(&folder.PropertyObjType(), &PropertyObject::StaticType());
    EXPECT_EQ(&leaf.PropertyObjType(), &SimpleProperty::StaticType());
    EXPECT_EQ(&reference.PropertyObjType(), &PropertyReference::StaticType());
    EXPECT_EQ(PropertyObject::StaticType(), QStringLiteral("PropertyObject"));
    EXPECT_EQ(SimpleProperty::StaticType(), QStringLiteral("SimpleProperty"));
    EXPECT_EQ(PropertyReference::StaticType(), QStringLiteral("PropertyReference"));
}

TEST(AbstractPropertyTest, OnDeserializationOfABareNodeAndFolderChangesNothing)
{
    BareNode bare;
    bare.OnDeserialization();
    EXPECT_EQ(bare.GetPropertyFlags(), 4U);
    PropertyObject folder(QStringLiteral("run"));
    addValue(folder, QStringLiteral("x"));
    folder.OnDeserialization();
    EXPECT_EQ(folder.GetName(), QStringLiteral("run"));
    EXPECT_EQ(childNames(folder), QStringList{QStringLiteral("x")});
}

TEST(AbstractPropertyTest, AHostsOwnKindLivesInATree)
{
    PropertyObject folder;
    auto node = std::make_unique<BareNode>();
    ASSERT_EQ(node->SetName(QStringLiteral("bare")), ER_SUCCESS);
    ASSERT_EQ(folder.InsertProperty(node.get()), ER_SUCCESS);
    const AbstractProperty* inserted = node.release();
    EXPECT_EQ(inserted->GetFullPath(), QStringLiteral("/bare"));
    const std::unique_ptr<AbstractProperty> clone(folder.Clone());
    const auto* copy = dynamic_cast<PropertyObject*>(clone.get());
    ASSERT_NE(copy, nullptr);
    ASSERT_NE(copy->GetPropertyConstPtr(QStringLiteral("bare")), nullptr); // Clone carries the name over
    EXPECT_EQ(folder.SetProperty(QStringLiteral("bare"), BVariant(1.0)), ER_INVALID_ARGUMENT);
    EXPECT_EQ(folder.DeleteProperty(QStringLiteral("bare")), ER_SUCCESS);
}

TEST(AbstractPropertyTest, TheRootOfANodeWithoutAParentIsTheNode)
{
    const SimpleProperty leaf(QStringLiteral("x"));
    EXPECT_EQ(leaf.GetRootProperty(), &leaf);
    EXPECT_EQ(leaf.GetFullPath(), QStringLiteral("/"));
    HostFolder top(QStringLiteral("top"));
    HostFolder* middle = addFolder(top, QStringLiteral("middle"));
    const SimpleProperty* bottom = addValue(*middle, QStringLiteral("bottom"));
    EXPECT_EQ(bottom->GetRootProperty(), &top);
    EXPECT_EQ(middle->GetRootProperty(), &top);
    const std::unique_ptr<AbstractProperty> taken(top.TakeProperty(QStringLiteral("middle")));
    EXPECT_EQ(bottom->GetRootProperty(), middle);
    EXPECT_EQ(bottom->GetFullPath(), QStringLiteral("/bottom"));
}

TEST(AbstractPropertyTest, HasNoFileRootInATreeWithoutOne)
{
    HostFolder top(QStringLiteral("top"));
    const SimpleProperty* leaf = addValue(top, QStringLiteral("x"));
    EXPECT_FALSE(top.HasFileRoot());
    EXPECT_FALSE(leaf->HasFileRoot());
    EXPECT_FALSE(SimpleProperty(QStringLiteral("x")).HasFileRoot());
    EXPECT_EQ(leaf->GetDataFile(), nullptr);
    EXPECT_EQ(top.GetDataFile(), nullptr);
}

TEST(AbstractPropertyTest, HasAFileRootBelowOne)
{
    RootLikeFolder root(QStringLiteral("Root"));
    HostFolder* child = addFolder(root, QStringLiteral("a"));
    const SimpleProperty* leaf = addValue(*child, QStringLiteral("x"));
    EXPECT_TRUE(root.HasFileRoot());
    EXPECT_TRUE(leaf->HasFileRoot());
    const std::unique_ptr<AbstractProperty> taken(root.TakeProperty(QStringLiteral("a")));
    EXPECT_FALSE(leaf->HasFileRoot());
}

TEST(AbstractPropertyTest, AFileRootThatIsNotAtTheTopDoesNotCount)
{
    HostFolder top(QStringLiteral("top"));
    auto root = std::make_unique<RootLikeFolder>(QStringLiteral("Root"));
    const SimpleProperty* leaf = addValue(*root, QStringLiteral("x"));
    ASSERT_EQ(top.InsertProperty(root.get()), ER_SUCCESS);
    root.release();
    EXPECT_FALSE(leaf->HasFileRoot());
}

TEST(SetName, RenamesANodeOutsideATree)
{
    for (const QString& name : awkwardNames()) {
        PropertyObject folder(QStringLiteral("old"));
        EXPECT_EQ(folder.SetName(name), ER_SUCCESS);
        EXPECT_EQ(folder.GetName(), name);
    }
}

TEST(SetName, RenamesAChildInItsFolder)
{
    PropertyObject folder;
    HostFolder* child = addFolder(folder, QStringLiteral("a"));
    QString previous = QStringLiteral("a");
    for (const QString& name : awkwardNames()) {
        ASSERT_EQ(child->SetName(name), ER_SUCCESS);
        EXPECT_EQ(child->GetName(), name);
        EXPECT_EQ(folder.GetPropertyPtr(name), child);
        if (name != previous) {
            EXPECT_EQ(folder.GetPropertyPtr(previous), nullptr);
        }
        previous = name;
        EXPECT_EQ(folder.GetPropertyCount(), 1);
        EXPECT_EQ(child->GetParent(), &folder);
    }
}

TEST(SetName, KeepsTheMapInOrder)
{
    PropertyObject folder;
    for (const char* name : {"a", "b", "c"})
        addFolder(folder, QLatin1String(name));
    ASSERT_EQ(folder.GetPropertyPtr(QStringLiteral("a"))->SetName(QStringLiteral("d")), ER_SUCCESS);
    EXPECT_EQ(childNames(folder),
              (QStringList{QStringLiteral("b"), QStringLiteral("c"), QStringLiteral("d")}));
}

TEST(SetName, FailsWhenASiblingHasTheName)
{
    LifeCount life;
    PropertyObject folder;
    HostFolder* first = addFolder(folder, QStringLiteral("a"), &life);
    HostFolder* second = addFolder(folder, QStringLiteral("b"), &life);
    const int changes = second->pathChanges;
    EXPECT_EQ(second->SetName(QStringLiteral("a")), ER_ALREADY_EXISTS);
    EXPECT_EQ(second->GetName(), QStringLiteral("b"));
    EXPECT_EQ(second->pathChanges, changes);
    EXPECT_EQ(folder.GetPropertyPtr(QStringLiteral("a")), first);
    EXPECT_EQ(folder.GetPropertyPtr(QStringLiteral("b")), second);
    EXPECT_EQ(life.destroyed, 0);
}

TEST(SetName, ToTheSameNameSucceeds)
{
    PropertyObject folder;
    HostFolder* child = addFolder(folder, QStringLiteral("a"));
    EXPECT_EQ(child->SetName(QStringLiteral("a")), ER_SUCCESS);
    EXPECT_EQ(folder.GetPropertyPtr(QStringLiteral("a")), child);
}

TEST(SetName, TakesItsOwnStoredNameAsArgument)
{
    PropertyObject folder;
    HostFolder* child = addFolder(folder, QStringLiteral("a"));
    QString name = child->GetName();
    name.append(QLatin1Char('2'));
    EXPECT_EQ(child->GetName(), QStringLiteral("a")); // GetName gave a copy
    EXPECT_EQ(child->SetName(name), ER_SUCCESS);
    name.clear();
    EXPECT_EQ(child->GetName(), QStringLiteral("a2"));
}

} // namespace
} // namespace Orrery
