#pragma once

#include "foundations/property/PropertyObject.h"

/// Where values come from: a property type of the host's own, which a data file brings back as this class.
///
/// What is to survive lies in children. What is worked out from them is worked out anew in OnDeserialization.
class Sensor final : public Orrery::PropertyObject
{
public:
    Sensor() = default;
    Sensor(const QString& name, const QString& serialNumber);

    /// The name under which the class is saved and registered.
    static const QString& StaticType();
    const QString& PropertyObjType() const override;
    Orrery::AbstractProperty* DoClone() const override;

    /// Runs when the sensor and all that it contains have come out of a file.
    ///
    /// Errors: std::runtime_error for a serial number that can't be one; the file is then refused.
    void OnDeserialization() override;

    QString SerialNumber() const;
    int YearOfMake() const { return m_yearOfMake; } ///< the first four digits of the serial number

private:
    void ReadYear();

    int m_yearOfMake = 0;
};
