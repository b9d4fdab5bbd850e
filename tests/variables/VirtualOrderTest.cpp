#include "tests/support/VirtualSlot.h"
#include "variables/IVariableStrategy.h"
#include "variables/Variable.h"

#include <gtest/gtest.h>

// Hosts are compiled against the order of the virtual operations.

#if defined(__x86_64__) && defined(__GXX_ABI_VERSION)

namespace Orrery {
namespace {

using TestSupport::slotOf;

TEST(VirtualOrder, OfAVariableFollowsThatOfEveryNode)
{
    using Update = Variable& (Variable::*)(const BVariant&, bool, IsCellArray);
    EXPECT_EQ(slotOf(static_cast<Update>(&Variable::UpdateData)), 7);
    EXPECT_EQ(slotOf(&Variable::GetMaxIndepOffset), 8);
    EXPECT_EQ(slotOf(&Variable::GetValueAt), 9);
    EXPECT_EQ(slotOf(&Variable::GetValueRange), 10);
    EXPECT_EQ(slotOf(&Variable::GetElementDimCount), 11);
    EXPECT_EQ(slotOf(&Variable::GetElementShape), 12);
}

TEST(VirtualOrder, OfAStrategyHasItsDestructorEighth)
{
    EXPECT_EQ(slotOf(&IVariableStrategy::GetData), 0);
    EXPECT_EQ(slotOf(&IVariableStrategy::UpdateData), 1);
    EXPECT_EQ(slotOf(&IVariableStrategy::GetValueAt), 2);
    EXPECT_EQ(slotOf(&IVariableStrategy::GetValueRange), 3);
    EXPECT_EQ(slotOf(&IVariableStrategy::GetMaxIndepOffset), 4);
    EXPECT_EQ(slotOf(&IVariableStrategy::GetElementDimCount), 5);
    EXPECT_EQ(slotOf(&IVariableStrategy::GetElementShape), 6);
    EXPECT_EQ(slotOf(&IVariableStrategy::Copy), 9); // the destructor has two entries
    EXPECT_EQ(slotOf(&IVariableStrategy::GetType), 10);
}

} // namespace
} // namespace Orrery

#endif
