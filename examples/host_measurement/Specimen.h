#pragma once

#include "foundations/property/PropertyObject.h"

/// What was measured: a property type of the host's own, which a file brings back as this class.
///
/// All that is to survive lies in children.
class Specimen final : public Orrery::PropertyObject
{
public:
    Specimen() = default;
    Specimen(const QString& name, const QString& material);

    /// The name under which the class is saved and registered.
    static const QString& StaticType();
    const QString& PropertyObjType() const override;
    Orrery::AbstractProperty* DoClone() const override;

    QString Material() const;
};
