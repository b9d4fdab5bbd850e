#pragma once

#include "foundations/property/PropertyObject.h"

namespace Orrery {

/// A folder of a type that this process doesn't know: it keeps the name of the type, so that saving writes it
/// back.
class ForeignPropertyObject final : public PropertyObject
{
public:
    explicit ForeignPropertyObject(const QString& typeName);
    ForeignPropertyObject(const ForeignPropertyObject& other);
    ForeignPropertyObject& operator=(const ForeignPropertyObject&) = delete;
    ~ForeignPropertyObject() override;

    const QString& PropertyObjType() const override;
    AbstractProperty* DoClone() const override;

private:
    const QString m_typeName;
};

} // namespace Orrery
