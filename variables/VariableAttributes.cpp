#include "variables/VariableAttributes_p.h"

#include "foundations/property/PropertyReference.h"
#include "foundations/property/SimpleProperty.h"
#include "foundations/storage/ArrayAttributes.h"
#include "units/Units.h"
#include "variables/ExplicitDataVar.h"
#include "variables/Variable.h"

#include <QList>

#include <vector>

namespace Orrery {
namespace {

/// The data of the Variable that an entry of "Indep" is or refers to. Null for one in another file, which a save isn't
/// to open, and for one whose data are computed and not stored.
const SimpleProperty* dataOfAxis(const AbstractProperty* entry)
{
    const auto* const reference = dynamic_cast<const PropertyReference*>(entry);
    const AbstractProperty* target = entry;
    if (reference)
        target = reference->ReferenceFilePath().isEmpty() ? reference->ResolveConst() : nullptr;
    const auto* const variable = dynamic_cast<const Variable*>(target);
    return variable ? dynamic_cast<const SimpleProperty*>(
                          variable->GetPropertyConstPtr(ExplicitDataVar::getDataPropName()))
                    : nullptr;
}

std::vector<const SimpleProperty*> dataOfAxes(const Variable& variable)
{
    std::vector<const SimpleProperty*> data;
    const auto* const axes =
        dynamic_cast<const PropertyObject*>(variable.GetPropertyConstPtr(Variable::sIndependentVars()));
    if (!axes)
        return data;
    QList<AbstractProperty*> entries;
    axes->GetPrefixedChildrenProperties(&entries, QString());
    for (const AbstractProperty* const entry : qAsConst(entries))
        data.push_back(dataOfAxis(entry));
    return data;
}

} // namespace

void describeVariableData(const SimpleProperty& array, ArrayAttributes* attributes)
{
    const auto* const variable = dynamic_cast<const Variable*>(array.GetParent());
    if (!variable || array.GetName() != ExplicitDataVar::getDataPropName())
        return;
    attributes->AddText(QStringLiteral("type"), variable->PropertyObjType());
    const Units* units = nullptr;
    if (variable->GetUnits(&units) >= 0)
        attributes->AddText(QStringLiteral("units"), units->GetSIUnits());
    attributes->AddPaths(QStringLiteral("axes"), dataOfAxes(*variable));
}

} // namespace Orrery
