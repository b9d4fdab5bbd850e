#pragma once

#include "results/ParameterizedResultData.h"
#include "variables/Variable.h"

#include <QString>

namespace Orrery::Host {

/// The variable of that name that joins those of a sweep's members; the sweep owns it.
///
/// Errors: Failure for a sweep without a parameter, one that contains itself, an unknown name, a name that one of the
///         sweep's own parts has, and a parameter with fewer values than there are members.
/// Edge:   a file that is open for reading is never changed by that, only its tree in memory.
Variable* joinedVariable(ParameterizedResultData& sweep, const QString& name);

/// The parameter of a sweep; null without one.
const Variable* parameterOf(const ParameterizedResultData& sweep);

} // namespace Orrery::Host
