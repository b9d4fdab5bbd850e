#include "variables/DataProperty_p.h"

#include "variables/ExplicitDataVar.h"

#include <memory>
#include <typeinfo>

namespace Orrery {

namespace {

/// A cast costs as much as the look-up before it; the type that is nearly always there is told without one.
SimpleProperty* asValue(AbstractProperty* node)
{
    if (node && typeid(*node) == typeid(SimpleProperty))
        return static_cast<SimpleProperty*>(node);
    return dynamic_cast<SimpleProperty*>(node);
}

} // namespace

SimpleProperty* ensureDataProperty(PropertyObject& owner)
{
    const QString& name = ExplicitDataVar::getDataPropName();
    if (SimpleProperty* property = asValue(owner.GetPropertyPtr(name)))
        return property;
    auto fresh = std::make_unique<SimpleProperty>(name);
    if (owner.InsertOrReplaceProperty(fresh.get()) < 0)
        return nullptr;
    return fresh.release();
}

} // namespace Orrery
