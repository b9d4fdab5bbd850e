#pragma once

#include "foundations/variant/WellKnownType.h"

#include <cstdint>

namespace Brindle::Quay::Internal {
/// Whether elements of one type can become elements of the other at all, whatever their values.
bool canConvert(WellKnownType from, WellKnownType to) noexcept;

/// Converts `count` elements at `source` to `target`, which for text are live strings.
///
/// Needs canConvert. False as soon as a value doesn't fit; `target` then holds anything.
bool convertElements(WellKnownType from, const void* source, WellKnownType to, void* target,
                     std::uint64_t count);
} // namespace Brindle::Quay::Internal
