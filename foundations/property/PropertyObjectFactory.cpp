#include "foundations/property/PropertyObjectFactory.h"

#include "foundations/property/ForeignPropertyObject_p.h"
#include "foundations/property/PropertyObject.h"

#include <mutex>

namespace Orrery {

namespace {

PropertyObject* createFolder()
{
    return new PropertyObject;
}

} // namespace

PropertyObjectFactory::PropertyObjectFactory()
    : m_creators{{PropertyObject::StaticType(), &createFolder}}
{
}

PropertyObjectFactory::~PropertyObjectFactory() = default;

PropertyObjectFactory& PropertyObjectFactory::Instance()
{
    // Never destroyed: a host may load or close a file as late as in its own static destructors.
    static auto* const factory = new PropertyObjectFactory;
    return *factory;
}

// The name comes by value because hosts are built against that form.
// NOLINTNEXTLINE(performance-unnecessary-value-param)
ERESULT PropertyObjectFactory::RegisterType(QString typeName, Creator creator)
{
    if (typeName.isEmpty() || !creator)
        return ER_INVALID_ARGUMENT;
    const std::unique_lock lock(m_mutex);
    if (m_creators.contains(typeName))
        return ER_ALREADY_EXISTS;
    m_creators.insert(typeName, creator);
    return ER_SUCCESS;
}

bool PropertyObjectFactory::IsRegistered(const QString& typeName) const
{
    const std::shared_lock lock(m_mutex);
    return m_creators.contains(typeName);
}

PropertyObject* PropertyObjectFactory::Create(const QString& typeName) const
{
    Creator creator = nullptr;
    {
        const std::shared_lock lock(m_mutex);
        creator = m_creators.value(typeName, nullptr);
    }
    return creator ? creator() : nullptr; // outside the lock: a creator may use the factory
}

PropertyObject* PropertyObjectFactory::CreateOrKeepType(const QString& typeName) const
{
    PropertyObject* const known = Create(typeName);
    return known ? known : new ForeignPropertyObject(typeName);
}

} // namespace Orrery
