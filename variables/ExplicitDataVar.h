#pragma once

#include "variables/ExplicitDataVarStrategy.h"
#include "variables/Variable.h"

namespace Orrery {

/// A Variable that holds stored data: numbers that were measured, typed in or computed elsewhere.
///
/// It adds a type name to a plain Variable and nothing else; a plain Variable with the explicit strategy
/// behaves alike.
class ORRERYCOREVARIABLES_EXPORT ExplicitDataVar : public Variable
{
public:
    ExplicitDataVar();                                        ///< unnamed, with null data
    explicit ExplicitDataVar(const QString& name);            ///< with null data
    ExplicitDataVar(const ExplicitDataVar& other);            ///< as the copy of a Variable
    ExplicitDataVar& operator=(const ExplicitDataVar& other); ///< as the assignment of a Variable

    const QString& PropertyObjType() const override;
    ~ExplicitDataVar() override;
    AbstractProperty* DoClone() const override;

    /// "ExplVar", the name under which the class is saved.
    static const QString& StaticType();

    /// "Data": the name of the child that holds the data.
    static const QString& getDataPropName();

private:
    void Init();

    static const QString s_data;
};

extern template ORRERYCOREVARIABLES_EXPORT ExplicitDataVar*
PropertyObject::GetPtr<ExplicitDataVar>(const QString& name);

} // namespace Orrery
