// Any bytes in place of a Touchstone file are refused with one line, or read as parameters that have a value at each
// frequency. The first byte says how many ports the name tells, 0 for none.
#include "hosts/orrery/Failure.h"
#include "hosts/orrery/touchstone/TouchstoneFile.h"
#include "tests/fuzz/TemporaryInput.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <optional>
#include <string>

using namespace Orrery;

namespace {

void check(bool holds)
{
    if (!holds)
        std::abort();
}

void checkData(const Host::TouchstoneData& data)
{
    check(!data.frequencies.empty() && std::is_sorted(data.frequencies.begin(), data.frequencies.end()));
    check(data.ports > 0 && data.references.size() == data.ports);
    check(data.values.size() == data.ports * data.ports);
    for (const auto& values : data.values)
        check(values.size() == data.frequencies.size());
    if (!data.noise)
        return;
    const std::size_t count = data.noise->frequencies.size();
    check(data.noise->minimumFigures.size() == count && data.noise->optimum.size() == count &&
          data.noise->resistances.size() == count);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size == 0)
        return 0;
    const std::size_t ports = data[0] % 6;
    const TemporaryInput input(data + 1, size - 1);
    try {
        checkData(Host::readTouchstone(input.Path(), ports > 0 ? std::make_optional(ports) : std::nullopt));
    } catch (const Host::Failure& failure) {
        const std::string line = failure.what();
        check(!line.empty() && line.find('\n') == std::string::npos);
    }
    return 0;
}
