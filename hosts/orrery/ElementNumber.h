#pragma once

#include "foundations/variant/WellKnownType.h"

#include <complex>
#include <cstdint>

namespace Orrery::Host {

/// Any number of any element type, exactly: a long double has room for every 64-bit integer and every double.
using ElementNumber = std::complex<long double>;

/// Reads the element at a position of an array in memory.
using ReadElementNumber = ElementNumber (*)(const void* data, std::uint64_t position);

/// How to read the elements of a type as numbers, bools as 0 and 1; null for text, times and what is no element type.
ReadElementNumber numberReader(Brindle::Quay::WellKnownType type);

} // namespace Orrery::Host
