#pragma once

#include "foundations/property/PropertyObject.h"
#include "foundations/variant/BVariant.h"

namespace Orrery {

/// Store one parameter of a range in the child `name` of the folder that the range works on.
///
/// Errors: ER_INVALID_ARGUMENT, with nothing changed, for a value of more or less than one element; else what
///         PropertyObject::SetProperty says.
ERESULT setRangeParameter(PropertyObject& owner, const QString& name, const BVariant& value);

} // namespace Orrery
