#include "variables/DataProperty_p.h"

#include "variables/ExplicitDataVar.h"

#include <memory>

namespace Orrery {

SimpleProperty* ensureDataProperty(PropertyObject& owner)
{
    const QString& name = ExplicitDataVar::getDataPropName();
    if (auto* property = owner.GetPtr<SimpleProperty>(name))
        return property;
    auto fresh = std::make_unique<SimpleProperty>(name);
    if (owner.InsertOrReplaceProperty(fresh.get()) < 0)
        return nullptr;
    return fresh.release();
}

} // namespace Orrery
