#include "foundations/property/PropertyObjectFactory.h"

#include "foundations/property/Extensions.h"
#include "tests/foundations/property/TreeNodes.h"

#include <gtest/gtest.h>

#include <memory>
#include <type_traits>

namespace Orrery {
namespace {

using namespace TreeTest;

PropertyObject* makeFirst()
{
    return new HostFolder(QStringLiteral("first"));
}

PropertyObject* makeSecond()
{
    return new HostFolder(QStringLiteral("second"));
}

TEST(PropertyObjectFactory, IsOnePerProcess)
{
    EXPECT_EQ(&PropertyObjectFactory::Instance(), &PropertyObjectFactory::Instance());
    EXPECT_TRUE((std::is_same_v<decltype(PropertyObjectFactory::Instance()), PropertyObjectFactory&>));
}

TEST(PropertyObjectFactory, CallsTheRegisteredCreator)
{
    PropertyObjectFactory& factory = PropertyObjectFactory::Instance();
    ASSERT_EQ(factory.RegisterType(QStringLiteral("FactoryTest.First"), &makeFirst), ER_SUCCESS);
    ASSERT_EQ(factory.RegisterType(QStringLiteral("FactoryTest.Second"), &makeSecond), ER_SUCCESS);
    const std::unique_ptr<PropertyObject> first(factory.Create(QStringLiteral("FactoryTest.First")));
    const std::unique_ptr<PropertyObject> second(factory.Create(QStringLiteral("FactoryTest.Second")));
    ASSERT_NE(first, nullptr);
    ASSERT_NE(second, nullptr);
    EXPECT_EQ(first->GetName(), QStringLiteral("first"));
    EXPECT_EQ(second->GetName(), QStringLiteral("second"));
}

TEST(PropertyObjectFactory, KeepsTheFirstCreatorOfAName)
{
    PropertyObjectFactory& factory = PropertyObjectFactory::Instance();
    const QString name = QStringLiteral("FactoryTest.Twice");
    ASSERT_EQ(factory.RegisterType(name, &makeFirst), ER_SUCCESS);
    EXPECT_EQ(factory.RegisterType(name, &makeSecond), ER_ALREADY_EXISTS);
    const std::unique_ptr<PropertyObject> made(factory.Create(name));
    ASSERT_NE(made, nullptr);
    EXPECT_EQ(made->GetName(), QStringLiteral("first"));
}

TEST(PropertyObjectFactory, RefusesAnEmptyNameAndANullCreator)
{
    PropertyObjectFactory& factory = PropertyObjectFactory::Instance();
    EXPECT_EQ(factory.RegisterType(QString(), &makeFirst), ER_INVALID_ARGUMENT);
    EXPECT_EQ(factory.RegisterType(QStringLiteral("FactoryTest.Null"), nullptr), ER_INVALID_ARGUMENT);
    EXPECT_FALSE(factory.IsRegistered(QStringLiteral("FactoryTest.Null")));
    EXPECT_FALSE(factory.IsRegistered(QString()));
}

TEST(PropertyObjectFactory, KnowsTheNamesThatWereRegistered)
{
    PropertyObjectFactory& factory = PropertyObjectFactory::Instance();
    EXPECT_FALSE(factory.IsRegistered(QStringLiteral("FactoryTest.Known")));
    ASSERT_EQ(factory.RegisterType(QStringLiteral("FactoryTest.Known"), &makeFirst), ER_SUCCESS);
    EXPECT_TRUE(factory.IsRegistered(QStringLiteral("FactoryTest.Known")));
    EXPECT_FALSE(factory.IsRegistered(QStringLiteral("factorytest.known")));
}

TEST(PropertyObjectFactory, KnowsThePlainFolderFromTheStart)
{
    const std::unique_ptr<PropertyObject> folder(
        PropertyObjectFactory::Instance().Create(PropertyObject::StaticType()));
    ASSERT_NE(folder, nullptr);
    EXPECT_EQ(folder->PropertyObjType(), PropertyObject::StaticType());
    EXPECT_EQ(folder->GetPropertyCount(), 0);
}

TEST(PropertyObjectFactory, MakesNothingForAnUnknownName)
{
    EXPECT_EQ(PropertyObjectFactory::Instance().Create(QStringLiteral("FactoryTest.Unknown")), nullptr);
    EXPECT_EQ(PropertyObjectFactory::Instance().Create(QString()), nullptr);
}

TEST(PropertyObjectFactory, KeepsAnUnknownTypeNameThroughClones)
{
    const QString type = QStringLiteral("FactoryTest.OfAnotherHost");
    const std::unique_ptr<PropertyObject> folder(PropertyObjectFactory::Instance().CreateOrKeepType(type));
    ASSERT_NE(folder, nullptr);
    EXPECT_EQ(folder->PropertyObjType(), type);
    EXPECT_EQ(folder->GetTypeFlags(), 1U);
    addValue(*folder, QStringLiteral("x"));
    folder->SetPropertyFlags(PropertyFlagHidden);
    const std::unique_ptr<AbstractProperty> clone(folder->Clone());
    EXPECT_EQ(clone->PropertyObjType(), type);
    EXPECT_EQ(clone->GetPropertyFlags(), 2U);
    EXPECT_EQ(childNames(dynamic_cast<PropertyObject&>(*clone)), QStringList{QStringLiteral("x")});
    PropertyObject parent;
    ASSERT_EQ(clone->SetName(QStringLiteral("inner")), ER_SUCCESS);
    auto inner = std::unique_ptr<AbstractProperty>(clone->Clone());
    ASSERT_EQ(parent.InsertProperty(inner.get()), ER_SUCCESS);
    inner.release();
    const PropertyObject copy(parent);
    EXPECT_EQ(copy.GetPropertyConstPtr(QStringLiteral("inner"))->PropertyObjType(), type);
}

TEST(PropertyObjectFactory, KeepsTheTypeNameWhenTheCreatorMakesNothing)
{
    PropertyObjectFactory& factory = PropertyObjectFactory::Instance();
    const QString type = QStringLiteral("FactoryTest.MakesNothing");
    ASSERT_EQ(factory.RegisterType(type, []() -> PropertyObject* { return nullptr; }), ER_SUCCESS);
    const std::unique_ptr<PropertyObject> folder(factory.CreateOrKeepType(type));
    ASSERT_NE(folder, nullptr);
    EXPECT_EQ(folder->PropertyObjType(), type);
}

TEST(PropertyObjectFactory, PrefersTheCreatorOverKeepingTheName)
{
    PropertyObjectFactory& factory = PropertyObjectFactory::Instance();
    ASSERT_EQ(factory.RegisterType(QStringLiteral("FactoryTest.Preferred"), &makeFirst), ER_SUCCESS);
    const std::unique_ptr<PropertyObject> folder(
        factory.CreateOrKeepType(QStringLiteral("FactoryTest.Preferred")));
    EXPECT_NE(dynamic_cast<HostFolder*>(folder.get()), nullptr);
}

TEST(Extensions, AreInterfacesWithoutData)
{
    EXPECT_TRUE(std::has_virtual_destructor_v<Extensions::IExtender>);
    EXPECT_TRUE(std::has_virtual_destructor_v<Extensions::IAbstractExtension>);
    EXPECT_EQ(sizeof(Extensions::IExtender), sizeof(void*));
    EXPECT_EQ(sizeof(Extensions::IAbstractExtension), sizeof(void*));
    EXPECT_TRUE(std::is_default_constructible_v<Extensions::IExtender>);
    EXPECT_TRUE(std::is_copy_constructible_v<Extensions::IExtender>);
    EXPECT_TRUE(std::is_copy_assignable_v<Extensions::IExtender>);
    EXPECT_TRUE(std::is_default_constructible_v<Extensions::IAbstractExtension>);
    EXPECT_TRUE(std::is_copy_constructible_v<Extensions::IAbstractExtension>);
    EXPECT_TRUE(std::is_copy_assignable_v<Extensions::IAbstractExtension>);
}

} // namespace
} // namespace Orrery
