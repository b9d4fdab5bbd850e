#pragma once

#include <cstdint>
#include <string>

namespace Orrery {

/// Changes the structure of the data file at `path` at one or a few places and gives it the checksum that it has then,
/// so that the loader takes what a change of bytes alone would never bring past its first test.
///
/// False, with the file as it was or spoilt, when it isn't one that can be changed so.
bool MutateCatalogue(const std::string& path, std::uint32_t seed);

} // namespace Orrery
