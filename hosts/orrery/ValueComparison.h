#pragma once

#include "foundations/variant/BVariant.h"

#include <optional>
#include <string>
#include <vector>

namespace Orrery::Host {

/// What counts as the same.
struct ComparisonOptions
{
    std::optional<double>
        tolerance; ///< numbers may differ by this part of the larger of the two; bits count without
    bool ignoresTypes = false; ///< an int 3 is a double 3.0, and an ExplVar is a Variable
};

/// What differs between two values, one text for each difference; none for the same.
///
/// Without a tolerance elements are compared by their bits: 0.0 and -0.0 are different, and a NaN is the same as one
/// with the same bits. Elements are only compared when the shapes are the same, those of two types by what they are
/// worth.
/// Errors: what the values throw when they can't be read, with `*readsSecond` telling which one it was.
/// Cost:   one pass through both in blocks, so that arrays in a file are never in memory as a whole. An array that
///         is laid out in another ordering than its counterpart is.
std::vector<std::string> differencesOf(const Brindle::Quay::BVariant& first,
                                       const Brindle::Quay::BVariant& second,
                                       const ComparisonOptions& options, bool* readsSecond);

} // namespace Orrery::Host
