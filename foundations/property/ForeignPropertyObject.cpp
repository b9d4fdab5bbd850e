#include "foundations/property/ForeignPropertyObject_p.h"

namespace Orrery {

ForeignPropertyObject::ForeignPropertyObject(const QString& typeName)
    : m_typeName(typeName)
{
}

ForeignPropertyObject::ForeignPropertyObject(const ForeignPropertyObject&) = default;
ForeignPropertyObject::~ForeignPropertyObject() = default;

const QString& ForeignPropertyObject::PropertyObjType() const
{
    return m_typeName;
}

AbstractProperty* ForeignPropertyObject::DoClone() const
{
    return new ForeignPropertyObject(*this);
}

} // namespace Orrery
