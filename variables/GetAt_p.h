#pragma once

#include "foundations/property/ErrorResult.h"
#include "foundations/variant/BVariant.h"

#include <cstdint>

namespace Orrery {

using Brindle::Quay::BVariant;

/// Orrery::GetAt of a value that stays where it is: without the share in its payload that a copy takes.
ERESULT readAt(BVariant* out, const BVariant& variant, std::uint64_t index);

} // namespace Orrery
