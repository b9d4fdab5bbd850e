#include "hosts/orrery/touchstone/TouchstoneFile.h"

#include "hosts/orrery/touchstone/TouchstoneHeader.h"
#include "hosts/orrery/touchstone/TouchstoneLines.h"
#include "hosts/orrery/touchstone/TouchstoneValues.h"

#include <charconv>
#include <utility>

namespace Orrery::Host {

std::optional<std::size_t> portsOfName(const std::string& path)
{
    const std::string ending = lowerCase(path.substr(path.find_last_of("./") + 1));
    if (ending.size() < 3 || ending.front() != 's' || ending.back() != 'p' || ending.size() == path.size())
        return std::nullopt;
    std::size_t ports = 0;
    const char* const end = ending.data() + ending.size() - 1;
    const auto [stop, error] = std::from_chars(ending.data() + 1, end, ports);
    if (error != std::errc() || stop != end || ports == 0 || ports > s_mostPorts)
        return std::nullopt;
    return ports;
}

TouchstoneData readTouchstone(const std::string& path, std::optional<std::size_t> ports,
                              SourceFile::Progress progress)
{
    SourceFile file(path, std::move(progress));
    TouchstoneLines lines(file);
    TouchstoneData data;
    const TouchstoneHeader header = readTouchstoneHeader(lines, ports, &data);
    readTouchstoneValues(lines, header, &data);
    return data;
}

} // namespace Orrery::Host
