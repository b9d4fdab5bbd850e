#include "Sensor.h"

#include <memory>
#include <stdexcept>

Sensor::Sensor(const QString& name, const QString& serialNumber)
    : PropertyObject(name)
{
    SetProperty("SerialNumber", serialNumber);
    ReadYear();
}

const QString& Sensor::StaticType()
{
    static const QString type("Sensor");
    return type;
}

const QString& Sensor::PropertyObjType() const
{
    return StaticType();
}

Orrery::AbstractProperty* Sensor::DoClone() const
{
    auto copy = std::make_unique<Sensor>();
    *copy = *this; // the children, and what was worked out from them
    return copy.release();
}

void Sensor::OnDeserialization()
{
    PropertyObject::OnDeserialization();
    ReadYear();
}

QString Sensor::SerialNumber() const
{
    QString number;
    GetProperty("SerialNumber", &number);
    return number;
}

void Sensor::ReadYear()
{
    bool isNumber = false;
    m_yearOfMake = SerialNumber().left(4).toInt(&isNumber);
    if (!isNumber)
        throw std::runtime_error("a serial number begins with a year");
}
