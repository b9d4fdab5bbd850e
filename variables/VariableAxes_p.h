#pragma once

#include <QList>

namespace Orrery {

class Variable;

/// The independent variables that GetIndepVariable() gives for all positions, in one walk. An entry that leads to no
/// Variable is left out, with the same warning.
QList<Variable*> independentsOf(const Variable& variable);

} // namespace Orrery
