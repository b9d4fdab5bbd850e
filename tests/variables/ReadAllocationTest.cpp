// What a read of stored data must not cost: a program of its own, since it replaces malloc.
#include "tests/support/CountingAllocator.h"
#include "tests/variables/VariableTestSupport.h"
#include "variables/ExplicitDataVar.h"

#include <gtest/gtest.h>

namespace Orrery {
namespace {

using TestSupport::AllocationCount;

TEST(ReadAllocation, OfOneElementIsNone)
{
    for (const std::vector<std::uint64_t>& shape : {std::vector<std::uint64_t>{1000}, {1, 1000}, {1000, 1}}) {
        const ExplicitDataVar variable = [&shape] {
            ExplicitDataVar made(QStringLiteral("x"));
            made.UpdateData(MakeCounting(shape));
            return ExplicitDataVar(made);
        }();
        BVariant out;
        ERESULT code = ER_FAILED;
        const AllocationCount allocations;
        for (std::uint64_t offset = 0; offset < 1000 && (offset == 0 || code >= 0); ++offset)
            code = variable.GetValueAt(&out, offset);
        EXPECT_EQ(allocations.count(), 0u);
        EXPECT_EQ(code, ER_SUCCESS);
        EXPECT_EQ(ToDoubles(out), (std::vector<double>{999}));
    }
}

TEST(ReadAllocation, OfTheWholeIsNone)
{
    const Variable variable(QStringLiteral("x"), MakeCounting({1000}));
    BVariant out;
    const AllocationCount allocations;
    const BVariant data = variable.GetData();
    const ERESULT code = variable.GetValueRange(&out, 0, 0);
    const std::uint64_t offsets = variable.GetMaxIndepOffset();
    EXPECT_EQ(allocations.count(), 0u);
    EXPECT_EQ(code, ER_SUCCESS);
    EXPECT_EQ(offsets, 1000u);
}

TEST(ReadAllocation, OfARangeIsItsResult)
{
    const Variable variable(QStringLiteral("x"), MakeCounting({100000}));
    BVariant out;
    const AllocationCount allocations;
    ASSERT_EQ(variable.GetValueRange(&out, 1, 50001), ER_SUCCESS);
    EXPECT_LE(allocations.bytes(), 50000 * sizeof(double) + 1024);
}

TEST(WriteAllocation, OfAScalarOverAScalarIsNone)
{
    Variable variable(QStringLiteral("x"), BVariant(1.0));
    const BVariant data(2.0);
    const AllocationCount allocations;
    variable.UpdateData(data);
    EXPECT_EQ(allocations.count(), 0u);
    EXPECT_EQ(ToDoubles(variable.GetData()), (std::vector<double>{2}));
}

} // namespace
} // namespace Orrery
