#include "benchmarks/foundations/storage/ProcessMemory.h"

#include <fstream>
#include <stdexcept>
#include <string>

namespace Orrery::StorageBenchmark {

namespace {

std::uint64_t StatusBytes(const std::string& field)
{
    std::ifstream status("/proc/self/status");
    std::string line;
    while (std::getline(status, line)) {
        if (line.compare(0, field.size(), field) == 0)
            return std::stoull(line.substr(field.size())) * 1024;
    }
    throw std::runtime_error("the process can't tell its memory");
}

} // namespace

std::uint64_t ResidentBytes()
{
    return StatusBytes("VmRSS:");
}

std::uint64_t PeakBytes()
{
    return StatusBytes("VmHWM:");
}

void ForgetPeak()
{
    std::ofstream("/proc/self/clear_refs") << 5;
}

} // namespace Orrery::StorageBenchmark
