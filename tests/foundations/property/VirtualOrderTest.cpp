#include "foundations/storage/DataFile.h"
#include "tests/foundations/property/TreeNodes.h"
#include "tests/support/VirtualSlot.h"

#include <gtest/gtest.h>

// Hosts are compiled against the order of the virtual operations. The common C++ ABI on x86-64 tells it: a
// pointer to a virtual member function is one more than the byte offset of its entry in the table.

#if defined(__x86_64__) && defined(__GXX_ABI_VERSION)

namespace Orrery {
namespace {

using TestSupport::slotOf;

/// An override stands in the entry of what it overrides, and these make the protected ones nameable.
class FolderProbe : public PropertyObject
{
public:
    void OnPathChanged() override { PropertyObject::OnPathChanged(); }
};

class ReferenceProbe : public PropertyReference
{
public:
    AbstractProperty* GetPropertyRef() const override { return PropertyReference::GetPropertyRef(); }
    const AbstractProperty* GetPropertyConstRef() const override
    {
        return PropertyReference::GetPropertyConstRef();
    }
    AbstractProperty* ResolveExternalRef() const override { return PropertyReference::ResolveExternalRef(); }
};

class FirstOfItsOwn : public PropertyObject
{
public:
    virtual void own() {}
};

TEST(VirtualOrder, OfEveryNode)
{
    EXPECT_EQ(slotOf(&AbstractProperty::PropertyObjType), 0);
    EXPECT_EQ(slotOf(&AbstractProperty::GetTypeFlags), 1);
    EXPECT_EQ(slotOf(&AbstractProperty::OnDeserialization), 2);
    EXPECT_EQ(slotOf(&AbstractProperty::DoClone), 5); // the destructor has two entries
    EXPECT_EQ(slotOf(&FolderProbe::OnPathChanged), 6);
}

TEST(VirtualOrder, OfAFolderAddsNothing)
{
    EXPECT_EQ(slotOf(&PropertyObject::PropertyObjType), 0);
    EXPECT_EQ(slotOf(&PropertyObject::GetTypeFlags), 1);
    EXPECT_EQ(slotOf(&PropertyObject::OnDeserialization), 2);
    EXPECT_EQ(slotOf(&PropertyObject::DoClone), 5);
    EXPECT_EQ(slotOf(&FirstOfItsOwn::own), 7);
}

TEST(VirtualOrder, OfAReferenceGoesOnAfterThat)
{
    EXPECT_EQ(slotOf(&ReferenceProbe::GetPropertyRef), 7);
    EXPECT_EQ(slotOf(&PropertyReference::ReferencePath), 8);
    EXPECT_EQ(slotOf(&PropertyReference::ReferenceFilePath), 9);
    EXPECT_EQ(slotOf(&PropertyReference::ReferenceFileType), 10);
    EXPECT_EQ(slotOf(&ReferenceProbe::GetPropertyConstRef), 11);
    EXPECT_EQ(slotOf(&ReferenceProbe::ResolveExternalRef), 12);
}

TEST(VirtualOrder, OfADataFileHasItsTypeFifth)
{
    EXPECT_EQ(slotOf(&DataFile::Load), 2); // the destructor, first, has two entries
    EXPECT_EQ(slotOf(&DataFile::Save), 3);
    EXPECT_EQ(slotOf(&DataFile::Close), 4);
    EXPECT_EQ(slotOf(&DataFile::GetFileType), 5);
}

} // namespace
} // namespace Orrery

#endif
