#include "hosts/orrery/SizeText.h"

#include <array>
#include <cstddef>
#include <cstdio>

namespace Orrery::Host {

std::string sizeText(std::uint64_t bytes)
{
    if (bytes < 1000)
        return std::to_string(bytes) + " B";
    constexpr std::array<const char*, 6> units = {"kB", "MB", "GB", "TB", "PB", "EB"};
    double size = static_cast<double>(bytes) / 1000.0;
    std::size_t unit = 0;
    while (size >= 999.95 && unit + 1 < units.size()) { // rounded, it would be 1000.0
        size /= 1000.0;
        ++unit;
    }
    char text[32];
    std::snprintf(text, sizeof text, "%.1f %s", size, units[unit]);
    return text;
}

} // namespace Orrery::Host
