#include "foundations/property/PropertyHandle.h"

#include "foundations/property/NodeAccess_p.h"

#include <utility>

namespace Orrery {

using Internal::NodeAccess;
using Internal::NodeLife;

namespace {

NodeLife* share(NodeLife* life)
{
    if (life)
        life->handles.fetch_add(1, std::memory_order_relaxed);
    return life;
}

void release(NodeLife* life)
{
    if (!life || life->handles.fetch_sub(1, std::memory_order_acq_rel) != 1)
        return;
    if (life->node)
        NodeAccess::setLife(*life->node, nullptr);
    delete life;
}

NodeLife* lifeOf(const AbstractProperty* node)
{
    if (!node || NodeAccess::isDoomed(*node))
        return nullptr;
    if (!NodeAccess::life(*node)) {
        auto* const life = new NodeLife;
        life->node = const_cast<AbstractProperty*>(node);
        NodeAccess::setLife(*node, life);
    }
    return share(NodeAccess::life(*node));
}

} // namespace

PropertyHandle::PropertyHandle(const AbstractProperty* node)
    : m_life(lifeOf(node))
{
}

PropertyHandle::PropertyHandle(const PropertyHandle& other) noexcept
    : m_life(share(other.m_life))
{
}

PropertyHandle::PropertyHandle(PropertyHandle&& other) noexcept
    : m_life(std::exchange(other.m_life, nullptr))
{
}

PropertyHandle& PropertyHandle::operator=(PropertyHandle other) noexcept
{
    std::swap(m_life, other.m_life);
    return *this;
}

PropertyHandle::~PropertyHandle()
{
    release(m_life);
}

AbstractProperty* PropertyHandle::Get() const
{
    return m_life ? m_life->node : nullptr;
}

bool PropertyHandle::IsExpired() const
{
    return m_life && !m_life->node;
}

} // namespace Orrery
