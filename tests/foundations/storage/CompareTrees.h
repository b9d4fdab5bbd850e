#pragma once

#include "foundations/property/PropertyObject.h"
#include "foundations/variant/BVariant.h"

#include <string>

namespace Orrery::StorageTest {

/// The first difference between a tree and what has come back of it from a file, as one line; empty for none.
///
/// Compared are the names and the order of the children, kinds, type names, flags, values bit for bit with their
/// shapes and orderings, the flag beside a value, and what a reference tells of its target. What `original` holds
/// that isn't serializable must be missing in `copy`. The names of the two nodes themselves don't count.
std::string CompareTrees(const PropertyObject& original, const PropertyObject& copy);

/// The same for two values: type, dimensions, ordering, and every bit of every element.
std::string CompareValues(const Brindle::Quay::BVariant& original, const Brindle::Quay::BVariant& copy);

} // namespace Orrery::StorageTest
