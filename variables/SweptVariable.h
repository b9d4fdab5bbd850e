#pragma once

#include "variables/SweptVarStrategy.h"
#include "variables/Variable.h"

namespace Orrery {

/// A Variable that stretches the values of a sweep's parameter along the concatenation of the results.
///
/// Edge:   no creator is registered for it: a saved one comes back as a folder of its type name. A plain
///         Variable with the swept strategy comes back working.
class ORRERYCOREVARIABLES_EXPORT SweptVariable : public Variable
{
public:
    SweptVariable();                                      ///< unnamed, without parameter and concatenation
    explicit SweptVariable(const QString& name);          ///< without parameter and concatenation
    SweptVariable(const SweptVariable& other);            ///< as the copy of a Variable
    SweptVariable& operator=(const SweptVariable& other); ///< as the assignment of a Variable

    const QString& PropertyObjType() const override;
    ~SweptVariable() override;
    AbstractProperty* DoClone() const override;

    /// Refer to the parameter or the concatenation, as the operations of these names of SweptVarStrategy.
    ///
    /// Errors: as there; ER_FAILED for a moved-from Variable.
    /// Edge:   the kind of the present strategy doesn't matter.
    ERESULT SetParameter(const Variable* variable);
    ERESULT SetConcatVar(const Variable* variable); ///< the concatenation to stretch along

    /// "SweptVariable", the name under which the class is saved.
    static const QString& StaticType();

private:
    void Init();
};

} // namespace Orrery
