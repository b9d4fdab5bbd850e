#include "tests/support/VirtualSlot.h"
#include "units/Units.h"

#include <gtest/gtest.h>

// Hosts are compiled against the order of the virtual operations.

#if defined(__x86_64__) && defined(__GXX_ABI_VERSION)

namespace Orrery {
namespace {

using TestSupport::slotOf;

class UnitsProbe : public Units
{
public:
    void OnPathChanged() override { Units::OnPathChanged(); }
};

class FirstOfItsOwn : public Units
{
public:
    virtual void own() {}
};

TEST(UnitsVirtualOrder, IsThatOfEveryFolderAndAddsNothing)
{
    EXPECT_EQ(slotOf(&Units::PropertyObjType), 0);
    EXPECT_EQ(slotOf(&Units::GetTypeFlags), 1);
    EXPECT_EQ(slotOf(&Units::OnDeserialization), 2);
    EXPECT_EQ(slotOf(&Units::DoClone), 5); // the destructor has two entries
    EXPECT_EQ(slotOf(&UnitsProbe::OnPathChanged), 6);
    EXPECT_EQ(slotOf(&FirstOfItsOwn::own), 7);
}

} // namespace
} // namespace Orrery

#endif
