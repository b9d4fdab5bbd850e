#pragma once

#include "foundations/property/PropertyObject.h"
#include "foundations/property/SimpleProperty.h"

namespace Orrery {

/// The child "Data" of `owner`. One that is missing is made, with a null value; one that isn't a
/// SimpleProperty is destroyed and replaced.
///
/// Errors: null if the new property can't be put in.
SimpleProperty* ensureDataProperty(PropertyObject& owner);

} // namespace Orrery
