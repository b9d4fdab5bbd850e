#pragma once

#include "orrerycorevariables_export.h"

namespace Orrery {

class Variable;

/// Gives a Variable the parts that a complete one has and a new one lacks, or takes its axes away again.
///
/// Threads: as the Variable.
struct ORRERYCOREVARIABLES_EXPORT VariableDefaults
{
    /// Add an independent variable that numbers the offsets: a range 0, 1, 2, ... with as many values as the
    /// variable has offsets now. It becomes a child of the variable, named after it with "_index" behind (and a
    /// number where that is taken), and the last of its independents.
    ///
    /// Errors: none are reported; a variable too deep in its tree for a child gets none.
    /// Edge:   data that grow later leave the range as it is. A second call adds a second independent.
    void GenerateDefaultIndep(Variable& variable) const;

    /// Add an empty folder of independents unless the name is taken.
    void InsertDefaultIndepFolder(Variable& variable) const;

    /// Give a variable without units default ones. Whatever else stands in their place is replaced.
    void InsertDefaultUnits(Variable& variable) const;

    /// Delete the folder of independents. The independent variables stay where they are.
    ///
    /// Errors: OrreryException with the code of a deletion that fails.
    void ClearIndepRefs(Variable& variable) const;
};

} // namespace Orrery
