#pragma once

#include <QString>

namespace Orrery::Internal {

// The names of the two functions that a unit from explicit numbers is saved with.
extern const QString s_logarithmicScaleName;
extern const QString s_linearScaleName;

} // namespace Orrery::Internal
