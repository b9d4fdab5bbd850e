#include "foundations/property/SimpleProperty.h"

#include "foundations/property/NodeAccess_p.h"

#include <utility>

namespace Orrery {

SimpleProperty::SimpleProperty(const QString& name)
    : AbstractProperty(name)
{
    Internal::NodeAccess::markSimple(*this);
}

SimpleProperty::SimpleProperty(const SimpleProperty& other)
    : AbstractProperty(other)
    , m_value(other.m_value)
    , m_isCellArray(other.m_isCellArray)
{
    Internal::NodeAccess::markSimple(*this);
}

SimpleProperty& SimpleProperty::operator=(const SimpleProperty& other)
{
    m_value = other.m_value;
    m_isCellArray = other.m_isCellArray;
    return *this;
}

SimpleProperty::~SimpleProperty()
{
    Internal::NodeAccess::unmark(*this);
}

const QString& SimpleProperty::StaticType()
{
    static const QString type = QStringLiteral("SimpleProperty");
    return type;
}

const QString& SimpleProperty::PropertyObjType() const
{
    return StaticType();
}

unsigned int SimpleProperty::GetTypeFlags() const
{
    return PropertyTypeFlagSimple;
}

AbstractProperty* SimpleProperty::DoClone() const
{
    return new SimpleProperty(*this);
}

ERESULT SimpleProperty::SetValue(BVariant value, IsCellArray flag)
{
    m_value = std::move(value);
    m_isCellArray = flag;
    return ER_SUCCESS;
}

BVariant SimpleProperty::GetValue() const
{
    return m_value;
}

IsCellArray SimpleProperty::GetValueIsCellArray() const
{
    return m_isCellArray;
}

} // namespace Orrery
