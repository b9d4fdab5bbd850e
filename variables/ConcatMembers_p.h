#pragma once

#include "foundations/property/PropertyObject.h"

namespace Orrery {

class Variable;

/// Refer to one more member of a concatenation under the next number of its folder.
///
/// Errors: those of PropertyObject::nextNumberedChildName and SetPropertyRef.
ERESULT addMember(PropertyObject& owner, const Variable* variable);

} // namespace Orrery
