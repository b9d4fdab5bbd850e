// Any bytes in place of a CSV file are refused with one line, or read as variables of as many records each. The first
// byte chooses the options.
#include "hosts/orrery/Failure.h"
#include "hosts/orrery/csv/CsvFile.h"
#include "tests/fuzz/TemporaryInput.h"

#include <cstdint>
#include <cstdlib>
#include <string>

using namespace Orrery;

namespace {

void check(bool holds)
{
    if (!holds)
        std::abort();
}

Host::CsvOptions optionsOf(std::uint8_t byte)
{
    Host::CsvOptions options;
    const char separators[] = {',', ';', '\t'};
    if ((byte & 3U) != 3U)
        options.separator = separators[byte & 3U];
    options.isDecimalComma = (byte & 4U) != 0;
    options.ignoresUnits = (byte & 8U) != 0;
    return options;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size == 0)
        return 0;
    const TemporaryInput input(data + 1, size - 1);
    try {
        const Host::CsvTable table = Host::readCsv(input.Path(), optionsOf(data[0]));
        check(!table.variables.empty());
        const std::uint64_t records = table.variables.front().data.getDimensions()[0];
        for (const Host::CsvVariable& variable : table.variables) {
            check(!variable.name.isEmpty());
            check(variable.data.getDimensions()[0] == records);
        }
    } catch (const Host::Failure& failure) {
        const std::string line = failure.what();
        check(!line.empty() && line.find('\n') == std::string::npos);
    }
    return 0;
}
