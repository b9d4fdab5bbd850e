#include "foundations/property/AbstractProperty.h"

#include "foundations/property/NodeAccess_p.h"
#include "foundations/property/PropertyObject.h"
#include "foundations/property/PropertyPath.h"
#include "foundations/property/TreeWalk_p.h"
#include "foundations/storage/DataFile.h"

#include <QStringList>

namespace Orrery {

AbstractProperty::AbstractProperty() = default;

AbstractProperty::AbstractProperty(const QString& name)
    : m_name(name)
{
}

AbstractProperty::AbstractProperty(const AbstractProperty& other)
    : m_name(other.m_name)
    , m_propertyFlags(other.m_propertyFlags)
{
}

AbstractProperty::~AbstractProperty()
{
    if (m_parent) {
        Internal::rememberDepartures(*this);
        m_parent->Unlink(m_parent->m_children.find(m_name));
    }
    ExpireHandles();
    Internal::forgetTree(*this);
}

const QString& AbstractProperty::StaticType()
{
    static const QString type = QStringLiteral("AbstractProperty");
    return type;
}

const QString& AbstractProperty::PropertyObjType() const
{
    return StaticType();
}

unsigned int AbstractProperty::GetTypeFlags() const
{
    return 0;
}

void AbstractProperty::OnDeserialization() {}

void AbstractProperty::OnPathChanged() {}

AbstractProperty* AbstractProperty::Clone() const
{
    // DoClone is a host's, which may do anything to this node.
    const QString name = m_name;
    const std::uint32_t flags = m_propertyFlags;
    AbstractProperty* const clone = DoClone();
    if (!clone || clone == this)
        return nullptr;
    if (clone->m_parent && clone->m_parent->TakeProperty(clone->m_name) != clone)
        return nullptr; // a handler has destroyed it, or given it away
    clone->m_name = name;
    clone->m_propertyFlags = flags;
    return clone;
}

ERESULT AbstractProperty::SetName(const QString& name)
{
    if (name == m_name)
        return ER_SUCCESS;
    if (m_parent) {
        const ERESULT code = m_parent->Rename(this, name);
        if (code < 0)
            return code;
    } else {
        m_name = name;
    }
    Internal::tellPathChanged(*this);
    return ER_SUCCESS;
}

QString AbstractProperty::GetFullPath() const
{
    QStringList names;
    for (const AbstractProperty* node = this; node->m_parent; node = node->m_parent)
        names.prepend(node->m_name);
    return Property::BuildPath(names);
}

const AbstractProperty* AbstractProperty::GetRootProperty() const
{
    const AbstractProperty* node = this;
    while (node->m_parent)
        node = node->m_parent;
    return node;
}

const DataFile* AbstractProperty::GetDataFile() const
{
    const auto* const root = dynamic_cast<const DataFile::RootProperty*>(GetRootProperty());
    return root ? root->GetParentFile() : nullptr;
}

bool AbstractProperty::HasFileRoot() const
{
    return GetRootProperty()->IsFileRoot();
}

void AbstractProperty::SetSerializable(bool serializable)
{
    if (serializable)
        m_propertyFlags |= PropertyFlagSerializable;
    else
        m_propertyFlags &= ~std::uint32_t{PropertyFlagSerializable};
}

void AbstractProperty::ExpireHandles()
{
    m_doomed = true;
    if (!m_life)
        return;
    if (m_parent)
        Internal::rememberDepartures(*this);
    m_life->node = nullptr;
    m_life = nullptr;
}

} // namespace Orrery
