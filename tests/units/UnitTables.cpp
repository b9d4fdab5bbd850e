// The tables of the unit library once more, from the definitions of the SI: what the tests expect.
#include "tests/units/UnitTables.h"

namespace Orrery {

void PrintTo(const Dimensions& dimensions, std::ostream* out)
{
    *out << dimensions.SIUnitsString().toStdString();
}

namespace UnitsTest {

Dimensions toDimensions(const Exponents& e)
{
    return Dimensions(e[0], e[1], e[2], e[3], e[4], e[5], e[6], e[7], e[8]);
}

const std::vector<TypeRow>& typeRows()
{
    // clang-format off
    static const std::vector<TypeRow> rows = {
        {"length", &UnitType::length, "length", "m", {1, 0, 0, 0, 0, 0, 0, 0, 0}},
        {"mass", &UnitType::mass, "mass", "kg", {0, 1, 0, 0, 0, 0, 0, 0, 0}},
        {"time", &UnitType::time, "time", "s", {0, 0, 1, 0, 0, 0, 0, 0, 0}},
        {"area", &UnitType::area, "area", "m^2", {2, 0, 0, 0, 0, 0, 0, 0, 0}},
        {"volume", &UnitType::volume, "volume", "m^3", {3, 0, 0, 0, 0, 0, 0, 0, 0}},
        {"planeAngle", &UnitType::planeAngle, "plane angle", "rad", {0, 0, 0, 0, 0, 0, 0, 1, 0}},
        {"solidAngle", &UnitType::solidAngle, "solid angle", "sr", {0, 0, 0, 0, 0, 0, 0, 0, 1}},
        {"velocity", &UnitType::velocity, "velocity", "m/s", {1, 0, -1, 0, 0, 0, 0, 0, 0}},
        {"acceleration", &UnitType::acceleration, "acceleration", "m/s^2", {1, 0, -2, 0, 0, 0, 0, 0, 0}},
        {"force", &UnitType::force, "force", "N", {1, 1, -2, 0, 0, 0, 0, 0, 0}},
        {"pressure", &UnitType::pressure, "pressure", "Pa", {-1, 1, -2, 0, 0, 0, 0, 0, 0}},
        {"energy", &UnitType::energy, "energy", "J", {2, 1, -2, 0, 0, 0, 0, 0, 0}},
        {"power", &UnitType::power, "power", "W", {2, 1, -3, 0, 0, 0, 0, 0, 0}},
        {"frequency", &UnitType::frequency, "frequency", "Hz", {0, 0, -1, 0, 0, 0, 0, 0, 0}},
        {"electricCurrent", &UnitType::electricCurrent, "electric current", "A", {0, 0, 0, 1, 0, 0, 0, 0, 0}},
        {"electricCharge", &UnitType::electricCharge, "electric charge", "C", {0, 0, 1, 1, 0, 0, 0, 0, 0}},
        {"electricPotential", &UnitType::electricPotential, "electric potential", "V", {2, 1, -3, -1, 0, 0, 0, 0, 0}},
        {"electricResistance", &UnitType::electricResistance, "electric resistance", "\xCE\xA9", {2, 1, -3, -2, 0, 0, 0, 0, 0}},
        {"electricCapacitance", &UnitType::electricCapacitance, "electric capacitance", "F", {-2, -1, 4, 2, 0, 0, 0, 0, 0}},
        {"magneticFlux", &UnitType::magneticFlux, "magnetic flux", "Wb", {2, 1, -2, -1, 0, 0, 0, 0, 0}},
        {"magneticFluxDensity", &UnitType::magneticFluxDensity, "magnetic flux density", "T", {0, 1, -2, -1, 0, 0, 0, 0, 0}},
        {"inductance", &UnitType::inductance, "inductance", "H", {2, 1, -2, -2, 0, 0, 0, 0, 0}},
        {"conductance", &UnitType::conductance, "conductance", "S", {-2, -1, 3, 2, 0, 0, 0, 0, 0}},
        {"thermodynamicTemperature", &UnitType::thermodynamicTemperature, "thermodynamic temperature", "K", {0, 0, 0, 0, 1, 0, 0, 0, 0}},
        {"amountOfSubstance", &UnitType::amountOfSubstance, "amount of substance", "mol", {0, 0, 0, 0, 0, 1, 0, 0, 0}},
        {"luminousIntensity", &UnitType::luminousIntensity, "luminous intensity", "cd", {0, 0, 0, 0, 0, 0, 1, 0, 0}},
        {"luminousFlux", &UnitType::luminousFlux, "luminous flux", "lm", {0, 0, 0, 0, 0, 0, 1, 0, 1}},
        {"illuminance", &UnitType::illuminance, "illuminance", "lx", {-2, 0, 0, 0, 0, 0, 1, 0, 1}},
        {"radioactivity", &UnitType::radioactivity, "radioactivity", "Bq", {0, 0, -1, 0, 0, 0, 0, 0, 0}},
        {"absorbedDose", &UnitType::absorbedDose, "absorbed dose of radiation", "Gy", {2, 0, -2, 0, 0, 0, 0, 0, 0}},
        {"equivalentDose", &UnitType::equivalentDose, "equivalent dose of radiation", "Sv", {2, 0, -2, 0, 0, 0, 0, 0, 0}},
        {"catalyticActivity", &UnitType::catalyticActivity, "catalytic activity", "kat", {0, 0, -1, 0, 0, 1, 0, 0, 0}},
        {"dimensionless", &UnitType::dimensionless, "scalar", "1", {0, 0, 0, 0, 0, 0, 0, 0, 0}},
    };
    // clang-format on
    return rows;
}

const std::vector<PrefixRow>& prefixRows()
{
    static const std::vector<PrefixRow> rows = {
        {"Y", 24}, {"Z", 21},  {"E", 18},  {"P", 15},  {"T", 12},  {"G", 9},   {"M", 6},
        {"k", 3},  {"h", 2},   {"da", 1},  {"d", -1},  {"c", -2},  {"m", -3},  {QChar(0x00B5), -6},
        {"n", -9}, {"p", -12}, {"f", -15}, {"a", -18}, {"z", -21}, {"y", -24},
    };
    return rows;
}

const std::vector<SymbolRow>& symbolRows()
{
    // clang-format off
    static const std::vector<SymbolRow> rows = {
        {"m", {1, 0, 0, 0, 0, 0, 0, 0, 0}, 1.0},
        {"g", {0, 1, 0, 0, 0, 0, 0, 0, 0}, 0.001}, // the base of mass is the kilogram
        {"s", {0, 0, 1, 0, 0, 0, 0, 0, 0}, 1.0},
        {"A", {0, 0, 0, 1, 0, 0, 0, 0, 0}, 1.0},
        {"K", {0, 0, 0, 0, 1, 0, 0, 0, 0}, 1.0},
        {"mol", {0, 0, 0, 0, 0, 1, 0, 0, 0}, 1.0},
        {"cd", {0, 0, 0, 0, 0, 0, 1, 0, 0}, 1.0},
        {"Hz", {0, 0, -1, 0, 0, 0, 0, 0, 0}, 1.0},
        {"N", {1, 1, -2, 0, 0, 0, 0, 0, 0}, 1.0},
        {"Pa", {-1, 1, -2, 0, 0, 0, 0, 0, 0}, 1.0},
        {"J", {2, 1, -2, 0, 0, 0, 0, 0, 0}, 1.0},
        {"W", {2, 1, -3, 0, 0, 0, 0, 0, 0}, 1.0},
        {"C", {0, 0, 1, 1, 0, 0, 0, 0, 0}, 1.0},
        {"V", {2, 1, -3, -1, 0, 0, 0, 0, 0}, 1.0},
        {"F", {-2, -1, 4, 2, 0, 0, 0, 0, 0}, 1.0},
        {QChar(0x03A9), {2, 1, -3, -2, 0, 0, 0, 0, 0}, 1.0},
        {"S", {-2, -1, 3, 2, 0, 0, 0, 0, 0}, 1.0},
        {"Wb", {2, 1, -2, -1, 0, 0, 0, 0, 0}, 1.0},
        {"T", {0, 1, -2, -1, 0, 0, 0, 0, 0}, 1.0},
        {"H", {2, 1, -2, -2, 0, 0, 0, 0, 0}, 1.0},
        {"lm", {0, 0, 0, 0, 0, 0, 1, 0, 1}, 1.0},
        {"lx", {-2, 0, 0, 0, 0, 0, 1, 0, 1}, 1.0},
        {"Bq", {0, 0, -1, 0, 0, 0, 0, 0, 0}, 1.0},
        {"Gy", {2, 0, -2, 0, 0, 0, 0, 0, 0}, 1.0},
        {"Sv", {2, 0, -2, 0, 0, 0, 0, 0, 0}, 1.0},
        {"kat", {0, 0, -1, 0, 0, 1, 0, 0, 0}, 1.0},
        {"l", {3, 0, 0, 0, 0, 0, 0, 0, 0}, 0.001},
        {"L", {3, 0, 0, 0, 0, 0, 0, 0, 0}, 0.001},
        {"rad", {0, 0, 0, 0, 0, 0, 0, 1, 0}, 1.0},
        {"deg", {0, 0, 0, 0, 0, 0, 0, 1, 0}, 0.017453292519943295}, // pi / 180
        {"sr", {0, 0, 0, 0, 0, 0, 0, 0, 1}, 1.0},
    };
    // clang-format on
    return rows;
}

} // namespace UnitsTest
} // namespace Orrery
