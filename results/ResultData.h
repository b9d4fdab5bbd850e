#pragma once

#include "foundations/property/PropertyObject.h"
#include "orrerycorevariables_export.h"

#include <QList>
#include <QString>
#include <QStringList>

namespace Orrery {

class Variable;

/// The variables of one run, or of one dataset within a Result: a folder whose children they are.
///
/// Whoever looks for a variable by name asks here and needn't know whether it is stored or, as in a
/// ParameterizedResultData, made on request.
class ORRERYCOREVARIABLES_EXPORT ResultData : public PropertyObject
{
public:
    ResultData();                                   ///< unnamed, without variables
    explicit ResultData(const QString& name);       ///< without variables
    ResultData(const ResultData& other);            ///< with clones of the variables; no parent
    ResultData& operator=(const ResultData& other); ///< as the assignment of a PropertyObject

    const QString& PropertyObjType() const override;
    ~ResultData() override;
    AbstractProperty* DoClone() const override;

    /// The variable of that name, owned by this folder; null without one. A reference to a variable isn't one.
    virtual Variable* FindResultVar(const QString& name);
    virtual const Variable* FindResultVar(const QString& name) const; ///< null without one

    /// Append the variables to the list, in the order of their names.
    ///
    /// Edge:   a null list is left alone.
    virtual void GetVariableList(QList<AbstractProperty*>* list);

    /// Append their names, likewise.
    virtual void GetVariableNameList(QStringList* list) const;

    /// "ResultData", the name under which the class is saved.
    static const QString& StaticType();
};

extern template ORRERYCOREVARIABLES_EXPORT ResultData*
PropertyObject::GetPtr<ResultData>(const QString& name);

} // namespace Orrery
