#pragma once

#include "foundations/variant/BVariant.h"

#include <algorithm>
#include <cstdint>

namespace Orrery {

using Brindle::Quay::BVariant;

/// The number of offsets of stored data: the first dimension above 1, wherever it stands; 1 if there is none, 0 for
/// empty data.
inline std::uint64_t offsetCount(const BVariant& data)
{
    if (data.isEmpty())
        return 0;
    const auto dimensions = data.getDimensions();
    const auto axis =
        std::find_if(dimensions.begin(), dimensions.end(), [](std::uint64_t n) { return n > 1; });
    return axis == dimensions.end() ? 1 : *axis;
}

} // namespace Orrery
