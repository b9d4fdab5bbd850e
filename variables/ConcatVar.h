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
    ConcatVar();
    explicit ConcatVar(const QString& name);
    ConcatVar(const ConcatVar& other);
    ConcatVar& operator=(const ConcatVar& other);

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
