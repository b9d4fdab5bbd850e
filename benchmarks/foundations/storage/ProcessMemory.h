#pragma once

#include <cstdint>

namespace Orrery::StorageBenchmark {

/// Bytes of memory that this process has now.
std::uint64_t ResidentBytes();

/// The most that it has had since the last call of ForgetPeak().
std::uint64_t PeakBytes();
void ForgetPeak();

} // namespace Orrery::StorageBenchmark
