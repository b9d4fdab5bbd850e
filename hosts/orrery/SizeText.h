#pragma once

#include <cstdint>
#include <string>

namespace Orrery::Host {

/// A length in bytes for a person, in the largest decimal unit that leaves at least 1: "0 B", "38.2 kB", "1.6 GB".
std::string sizeText(std::uint64_t bytes);

} // namespace Orrery::Host
