#pragma once

#include <cstdint>

namespace TestSupport {
/// Heap allocations of this thread since construction, for tests that promise to need none.
///
/// A program that links test_counting_allocator counts every malloc and operator new, those inside shared
/// libraries included; under the sanitizers their own allocator reports to the same counters.
/// Threads: counts the constructing thread only; a block freed elsewhere stays in liveBytes().
class AllocationCount
{
public:
    AllocationCount();

    /// Blocks allocated or enlarged, whether freed again or not.
    std::uint64_t count() const;

    /// Bytes that were asked for.
    std::uint64_t bytes() const;

    /// Bytes allocated and not freed again; negative when older blocks were freed. Includes what the
    /// allocator rounds a block up by.
    std::int64_t liveBytes() const;

private:
    std::uint64_t m_count;
    std::uint64_t m_bytes;
    std::int64_t m_liveBytes;
};
} // namespace TestSupport
