#pragma once

#include "variables/ConcatVarStrategy.h"
#include "variables/Variable.h"

namespace Orrery {

/// A Variable that puts other variables one after the other on one axis.
///
/// A plain Variable with the concatenating strategy reads alike, but a SweptVariable looks for this class.
class ORRERYCOREVARIABLES_EXPORT ConcatVar : public Variable
{
public:
    ConcatVar();                             ///< unnamed, without members
    explicit ConcatVar(const QString& name); ///< without members
    ConcatVar(const ConcatVar& other);       ///< as the copy of a Variable: with the references to members
    ConcatVar& operator=(const ConcatVar& other); ///< as the assignment of a Variable

    const QString& PropertyObjType() const override;
    ~ConcatVar() override;
    AbstractProperty* DoClone() const override;

    /// Refer to one more member, as ConcatVarStrategy::AddVariable.
    ///
    /// Errors: as there; ER_FAILED for a moved-from Variable.
    /// Edge:   the kind of the present strategy doesn't matter.
    ERESULT AddVariable(const Variable* variable);

    /// "ConcatVar", the name under which the class is saved.
    static const QString& StaticType();

private:
    void Init();
};

} // namespace Orrery
