#include "tests/units/CatalogueRows.h"

#include <algorithm>
#include <stdexcept>

namespace Orrery::CatalogueTest {
namespace {
constexpr double degree = 0.017453292519943295;
constexpr double fahrenheit = 0.5555555555555556;
constexpr double fahrenheitZero = 255.37222222222223;

class RowList
{
public:
    void si(const UnitType& type, const char* key, double scale)
    {
        add(key, type, key, scale, 0.0, 0.0, key, Origin::SIString);
    }
    void labelled(const UnitType& type, const char* key, const char* siString, double scale, double logScale)
    {
        add(key, type, key, scale, 0.0, logScale, siString, Origin::Labelled);
    }
    void numbers(const UnitType& type, const char* reference, const char* key, const char* label,
                 double scale, double offset = 0.0, double logScale = 0.0)
    {
        add(key, type, label, scale, offset, logScale, reference, Origin::Numbers);
    }
    void add(const char* key, const UnitType& type, const char* label, double scale, double offset,
             double logScale, const char* siString, Origin origin)
    {
        m_rows.push_back({QString::fromUtf8(key), &type, QString::fromUtf8(label), scale, offset, logScale,
                          QString::fromUtf8(siString), origin});
    }
    std::vector<CatalogueRow> take() { return std::move(m_rows); }

private:
    std::vector<CatalogueRow> m_rows;
};

void addSpaceAndMass(RowList& list)
{
    list.si(UnitType::length, "m", 1.0);
    list.si(UnitType::length, "nm", 1e-9);
    list.si(UnitType::length, "µm", 1e-6);
    list.si(UnitType::length, "mm", 1e-3);
    list.si(UnitType::length, "cm", 1e-2);
    list.si(UnitType::length, "km", 1e3);
    list.si(UnitType::area, "m^2", 1.0);
    list.si(UnitType::area, "mm^2", 1e-6);
    list.si(UnitType::area, "cm^2", 1e-4);
    list.si(UnitType::area, "km^2", 1e6);
    list.si(UnitType::volume, "m^3", 1.0);
    list.si(UnitType::volume, "mm^3", 1e-9);
    list.si(UnitType::volume, "cm^3", 1.0000000000000002e-6); // the cube of the double nearest to 0.01
    list.si(UnitType::volume, "L", 1e-3);
    list.si(UnitType::volume, "mL", 1e-6);
    list.si(UnitType::mass, "kg", 1.0);
    list.si(UnitType::mass, "g", 1e-3);
    list.si(UnitType::mass, "mg", 1e-6);
    list.si(UnitType::mass, "µg", 1e-9);
    list.numbers(UnitType::length, "m", "mil", "mil", 2.54e-05);
    list.numbers(UnitType::length, "m", "in", "in", 0.0254);
    list.numbers(UnitType::area, "m^2", "in^2", "in^2", 0.00064516);
    list.numbers(UnitType::volume, "m^3", "in^3", "in^3", 1.6387064e-05);
    list.si(UnitType::planeAngle, "rad", 1.0);
    list.add("radians", UnitType::planeAngle, "rad", 1.0, 0.0, 0.0, "rad", Origin::Aliased);
    list.numbers(UnitType::planeAngle, "rad", "°", "°", degree);
    list.numbers(UnitType::planeAngle, "rad", "degrees", "°", degree);
    list.numbers(UnitType::planeAngle, "rad", "deg", "°", degree);
    list.si(UnitType::solidAngle, "sr", 1.0);
}

void addMotion(RowList& list)
{
    list.si(UnitType::time, "s", 1.0);
    list.si(UnitType::time, "ms", 1e-3);
    list.si(UnitType::time, "µs", 1e-6);
    list.si(UnitType::time, "ns", 1e-9);
    list.si(UnitType::time, "ps", 1e-12);
    list.numbers(UnitType::time, "s", "min", "min", 60.0);
    list.numbers(UnitType::time, "s", "h", "h", 3600.0);
    list.si(UnitType::frequency, "Hz", 1.0);
    list.si(UnitType::frequency, "kHz", 1e3);
    list.si(UnitType::frequency, "MHz", 1e6);
    list.si(UnitType::frequency, "GHz", 1e9);
    list.si(UnitType::frequency, "THz", 1e12);
    list.si(UnitType::velocity, "m/s", 1.0);
    list.si(UnitType::velocity, "km/s", 1e3);
    list.numbers(UnitType::velocity, "m/s", "km/h", "km/h", 0.2777777777777778);
    list.numbers(UnitType::velocity, "m/s", "miles/h", "miles/h", 0.44704);
    list.si(UnitType::acceleration, "m/s^2", 1.0);
    list.si(UnitType::force, "N", 1.0);
    list.si(UnitType::energy, "J", 1.0);
    list.si(UnitType::energy, "kJ", 1e3);
    list.si(UnitType::energy, "mJ", 1e-3);
    list.si(UnitType::energy, "µJ", 1e-6);
    list.numbers(UnitType::energy, "J", "kWh", "kWh", 3600000.0);
    list.si(UnitType::power, "W", 1.0);
    list.si(UnitType::power, "kW", 1e3);
    list.si(UnitType::power, "MW", 1e6);
    list.si(UnitType::power, "mW", 1e-3);
    list.si(UnitType::power, "µW", 1e-6);
    list.labelled(UnitType::power, "dBW", "dB(W)", 1.0, 10.0);
    list.labelled(UnitType::power, "dBm", "dB(mW)", 1e-3, 10.0);
    list.labelled(UnitType::power, "dBµ", "dB(µW)", 1e-6, 10.0);
}

void addElectricity(RowList& list)
{
    list.si(UnitType::electricCurrent, "A", 1.0);
    list.si(UnitType::electricCurrent, "kA", 1e3);
    list.si(UnitType::electricCurrent, "mA", 1e-3);
    list.si(UnitType::electricCurrent, "µA", 1e-6);
    list.si(UnitType::electricCurrent, "nA", 1e-9);
    list.si(UnitType::electricCurrent, "pA", 1e-12);
    list.si(UnitType::electricCharge, "C", 1.0);
    list.si(UnitType::electricCharge, "kC", 1e3);
    list.si(UnitType::electricCharge, "mC", 1e-3);
    list.si(UnitType::electricCharge, "µC", 1e-6);
    list.si(UnitType::electricCharge, "nC", 1e-9);
    list.si(UnitType::electricCharge, "pC", 1e-12);
    list.si(UnitType::electricPotential, "V", 1.0);
    list.si(UnitType::electricPotential, "kV", 1e3);
    list.si(UnitType::electricPotential, "mV", 1e-3);
    list.si(UnitType::electricPotential, "µV", 1e-6);
    list.si(UnitType::electricPotential, "nV", 1e-9);
    list.si(UnitType::electricPotential, "pV", 1e-12);
    list.labelled(UnitType::electricPotential, "dBV", "dB(V)", 1.0, 20.0);
    list.labelled(UnitType::electricPotential, "dBmV", "dB(mV)", 1e-3, 20.0);
    list.labelled(UnitType::electricPotential, "dBµV", "dB(µV)", 1e-6, 20.0);
    list.si(UnitType::electricResistance, "Ω", 1.0);
    list.si(UnitType::electricResistance, "kΩ", 1e3);
    list.si(UnitType::electricResistance, "MΩ", 1e6);
    list.si(UnitType::electricResistance, "GΩ", 1e9);
    list.si(UnitType::electricResistance, "mΩ", 1e-3);
    list.si(UnitType::electricCapacitance, "F", 1.0);
    list.si(UnitType::electricCapacitance, "mF", 1e-3);
    list.si(UnitType::electricCapacitance, "µF", 1e-6);
    list.si(UnitType::electricCapacitance, "nF", 1e-9);
    list.si(UnitType::electricCapacitance, "pF", 1e-12);
    list.si(UnitType::electricCapacitance, "fF", 1e-15);
    list.si(UnitType::conductance, "S", 1.0);
    list.si(UnitType::conductance, "mS", 1e-3);
    list.si(UnitType::conductance, "µS", 1e-6);
    list.si(UnitType::conductance, "nS", 1e-9);
    list.si(UnitType::conductance, "pS", 1e-12);
    list.numbers(UnitType::conductance, "S", "mho", "1/Ω", 1.0);
    list.si(UnitType::inductance, "H", 1.0);
    list.si(UnitType::inductance, "mH", 1e-3);
    list.si(UnitType::inductance, "µH", 1e-6);
    list.si(UnitType::inductance, "nH", 1e-9);
    list.si(UnitType::inductance, "pH", 1e-12);
    list.si(UnitType::inductance, "fH", 1e-15);
    list.si(UnitType::magneticFlux, "Wb", 1.0);
    list.numbers(UnitType::magneticFlux, "Wb", "Mx", "Mx", 1e-08);
    list.si(UnitType::magneticFluxDensity, "T", 1.0);
    list.numbers(UnitType::magneticFluxDensity, "T", "Gs", "Gs", 0.0001);
}

void addTemperaturesAndNumbers(RowList& list)
{
    const UnitType& temperature = UnitType::thermodynamicTemperature;
    list.si(temperature, "K", 1.0);
    for (const char* key : {"°C", "degC", "Celsius"})
        list.numbers(temperature, "K", key, "°C", 1.0, 273.15);
    for (const char* key : {"°F", "degF", "Fahrenheit"})
        list.numbers(temperature, "K", key, "°F", fahrenheit, fahrenheitZero);

    const UnitType& plain = UnitType::dimensionless;
    list.si(plain, "", 1.0);
    list.numbers(plain, "1", "log", "log", 1.0, 0.0, 1.0);
    list.numbers(plain, "1", "dB10", "dB10", 1.0, 0.0, 10.0);
    list.numbers(plain, "1", "dB", "dB10", 1.0, 0.0, 10.0);
    list.numbers(plain, "1", "dB20", "dB20", 1.0, 0.0, 20.0);
    list.numbers(plain, "1", "hundreds", "hundreds", 100.0);
    list.numbers(plain, "1", "thousands", "thousands", 1000.0);
    list.numbers(plain, "1", "millions", "millions", 1000000.0);
    list.numbers(plain, "1", "%", "%", 0.01);
    list.numbers(plain, "1", "Abs", "Abs", 1.0);
}
} // namespace

const std::vector<CatalogueRow>& catalogueRows()
{
    static const std::vector<CatalogueRow> rows = [] {
        RowList list;
        addSpaceAndMass(list);
        addMotion(list);
        addElectricity(list);
        addTemperaturesAndNumbers(list);
        return list.take();
    }();
    return rows;
}

std::vector<CatalogueRow> catalogueRowsInKeyOrder()
{
    std::vector<CatalogueRow> rows = catalogueRows();
    std::sort(rows.begin(), rows.end(), [](const CatalogueRow& a, const CatalogueRow& b) {
        return std::lexicographical_compare(a.key.utf16(), a.key.utf16() + a.key.size(), b.key.utf16(),
                                            b.key.utf16() + b.key.size());
    });
    return rows;
}

Units catalogueUnit(const char* key)
{
    Units found;
    if (SystemOfUnits::instance().GetUnitsByName(QString::fromUtf8(key), &found) != ER_SUCCESS)
        throw std::invalid_argument(std::string("no unit is named ") + key);
    return found;
}

Units unitOf(const char* siString)
{
    return Units::FromSIString(QString::fromUtf8(siString));
}

std::string labelOf(const Units& units)
{
    return units.GetUnitsLabel().toStdString();
}

std::vector<std::string> labelsOf(const QList<Units>& units)
{
    std::vector<std::string> labels;
    for (const Units& unit : units)
        labels.push_back(labelOf(unit));
    return labels;
}

std::vector<std::string> textsOf(const QStringList& texts)
{
    std::vector<std::string> converted;
    for (const QString& text : texts)
        converted.push_back(text.toStdString());
    return converted;
}
} // namespace Orrery::CatalogueTest
