#include "hosts/orrery/measurements/HostMeasurement.h"

namespace Orrery::Host {

void store(Variable& target, const Measured& found)
{
    const QString& name = Variable::sUnitsPropertyName();
    if (!found.units && target.HasProperty(name) && target.DeleteProperty(name) < 0)
        throw std::runtime_error("the units of the argument can't be removed from the result");
    if (found.units && target.SetUnits(*found.units) < 0)
        throw std::runtime_error("the result can't be given its units");
    target.UpdateData(found.data);
}

} // namespace Orrery::Host
