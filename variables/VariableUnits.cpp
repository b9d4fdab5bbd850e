// What the data of a Variable, and its axes, are measured in: the children "Unit" and "DisplayUnit".

#include "foundations/property/PropertyHandle.h"
#include "units/Units.h"
#include "variables/Variable.h"
#include "variables/VariableDefaults.h"

#include <memory>

namespace Orrery {
namespace {

const Units* unitsAt(const PropertyObject& folder, const QString& name)
{
    return dynamic_cast<const Units*>(folder.GetPropertyConstPtr(name));
}

ERESULT findUnits(const Units** out, const PropertyObject& folder, const QString& name)
{
    if (!out)
        return ER_INVALID_ARGUMENT;
    *out = unitsAt(folder, name);
    return *out ? ER_SUCCESS : ER_NOT_FOUND;
}

/// Puts a copy of the units into the folder under that name.
ERESULT storeUnits(PropertyObject& folder, const QString& name, const Units& units)
{
    const PropertyHandle self(&folder);
    std::unique_ptr<AbstractProperty> copy(
        units.Clone()); // by the host's code, for a kind of units of its own
    if (!copy || self.IsExpired())
        return ER_FAILED;
    copy->SetName(name);
    const ERESULT inserted = folder.InsertOrReplaceProperty(copy.get());
    if (inserted >= 0)
        static_cast<void>(copy.release());
    return inserted;
}

} // namespace

ERESULT Variable::GetUnits(const Units** out) const
{
    return findUnits(out, *this, sUnitsPropertyName());
}

ERESULT Variable::GetDisplayUnits(const Units** out) const
{
    return findUnits(out, *this, sDisplayUnitsPropertyName());
}

const Units& Variable::GetUnits() const
{
    static const Units none;
    const Units* units = unitsAt(*this, sUnitsPropertyName());
    return units ? *units : none;
}

const Units& Variable::GetDisplayUnits() const
{
    const Units* units = unitsAt(*this, sDisplayUnitsPropertyName());
    return units ? *units : GetUnits();
}

ERESULT Variable::SetUnits(const Units& units)
{
    return storeUnits(*this, sUnitsPropertyName(), units);
}

ERESULT Variable::SetDisplayUnits(const Units& units)
{
    const Units* present = unitsAt(*this, sUnitsPropertyName());
    if (present && !units.IsCommensurable(*present))
        return ER_INVALID_ARGUMENT;
    return storeUnits(*this, sDisplayUnitsPropertyName(), units);
}

const Units& Variable::GetUnitsOfIndep(int index) const
{
    static const Units none;
    Variable* indep = nullptr;
    GetIndepVariable(&indep, index);
    return indep ? indep->GetUnits() : none;
}

ERESULT Variable::SetUnitsOfIndep(const Units& units, int index)
{
    Variable* indep = nullptr;
    GetIndepVariable(&indep, index);
    if (!indep) {
        // The default counts the offsets, which may compute and call handlers of the host.
        const PropertyHandle self(this);
        const VariableDefaults defaults;
        defaults.InsertDefaultIndepFolder(*this);
        if (!self.IsExpired())
            defaults.GenerateDefaultIndep(*this);
        if (self.IsExpired())
            return ER_FAILED;
        GetIndepVariable(&indep, index);
    }
    return indep ? storeUnits(*indep, sUnitsPropertyName(), units) : ER_NOT_FOUND;
}

} // namespace Orrery
