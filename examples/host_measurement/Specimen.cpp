#include "Specimen.h"

#include <memory>

Specimen::Specimen(const QString& name, const QString& material)
    : PropertyObject(name)
{
    SetProperty(QStringLiteral("Material"), material);
}

const QString& Specimen::StaticType()
{
    static const QString type = QStringLiteral("Specimen");
    return type;
}

const QString& Specimen::PropertyObjType() const
{
    return StaticType();
}

Orrery::AbstractProperty* Specimen::DoClone() const
{
    auto copy = std::make_unique<Specimen>();
    *copy = *this;
    return copy.release();
}

QString Specimen::Material() const
{
    QString material;
    GetProperty(QStringLiteral("Material"), &material);
    return material;
}
