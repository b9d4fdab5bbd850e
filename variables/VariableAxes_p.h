#pragma once

#include "foundations/property/PropertyHandle.h"

#include <vector>

namespace Orrery {

class Variable;

/// The independent variables that GetIndepVariable() gives for all positions, in one walk. An entry that leads to no
/// Variable is left out, with the same warning. All handles are to Variables.
std::vector<PropertyHandle> independentsOf(const Variable& variable);

} // namespace Orrery
