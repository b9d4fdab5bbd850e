#include "hosts/orrery/RawUnits.h"

#include "units/SystemOfUnits.h"

namespace Orrery::Host {

namespace {

struct Row
{
    const char* type;
    const char* units; ///< as the catalogue or an SI string has it
};

constexpr Row s_rows[] = {
    {"time", "s"},
    {"frequency", "Hz"},
    {"voltage", "V"},
    {"current", "A"},
    {"device_current", "A"},
    {"subckt_current", "A"},
    {"power", "W"},
    {"charge", "C"},
    {"capacitance", "F"},
    {"inductance", "H"},
    {"impedance", "\u03A9"},
    {"res-sweep", "\u03A9"},
    {"admittance", "S"},
    {"conductance", "S"},
    {"temperature", "\u00B0C"},
    {"temp-sweep", "\u00B0C"},
    {"degree", "\u00B0"},
    {"degrees", "\u00B0"},
    {"radian", "rad"},
    {"radians", "rad"},
    {"decibel", "dB20"}, // simulators reckon 20 times the logarithm, whatever the quantity
    {"voltage^2-density", "V^2/Hz"},
    {"current^2-density", "A^2/Hz"},
};

} // namespace

std::optional<Units> unitsOfRawType(const QString& type)
{
    const QString lower = type.trimmed().toLower();
    for (const Row& row : s_rows) {
        if (lower == QLatin1String(row.type))
            return SystemOfUnits::instance().GetUnitsFromString(QString::fromUtf8(row.units));
    }
    return std::nullopt;
}

} // namespace Orrery::Host
