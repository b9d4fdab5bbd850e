#include "units/SystemOfUnits.h"

#include <QObject>

#include <algorithm>
#include <mutex>
#include <vector>

namespace Orrery {
namespace {
// In all texts here the micro sign is U+00B5 and the omega U+03A9, as in the parser of SI strings: "\u00B5" and
// "\u03A9" can't be mistaken for the Greek mu and the ohm sign, which look the same.
constexpr QChar s_micro(0x00B5);
constexpr QChar s_omega(0x03A9);

/// Units that are their SI string, which is also their name.
constexpr const char* s_plainUnits[] = {
    "m",      "nm",      "\u00B5m", "mm",      "cm",      "km", // length
    "m^2",    "mm^2",    "cm^2",    "km^2",                     // area
    "m^3",    "mm^3",    "cm^3",    "L",       "mL",            // volume
    "kg",     "g",       "mg",      "\u00B5g",                  // mass
    "s",      "ms",      "\u00B5s", "ns",      "ps",            // time
    "rad",                                                      // plane angle
    "sr",                                                       // solid angle
    "m/s",    "km/s",                                           // velocity
    "m/s^2",                                                    // acceleration
    "N",                                                        // force
    "J",      "kJ",      "mJ",      "\u00B5J",                  // energy
    "W",      "kW",      "MW",      "mW",      "\u00B5W",       // power
    "Hz",     "kHz",     "MHz",     "GHz",     "THz",           // frequency
    "A",      "kA",      "mA",      "\u00B5A", "nA",      "pA", // electric current
    "C",      "kC",      "mC",      "\u00B5C", "nC",      "pC", // electric charge
    "V",      "kV",      "mV",      "\u00B5V", "nV",      "pV", // electric potential
    "\u03A9", "k\u03A9", "M\u03A9", "G\u03A9", "m\u03A9",       // electric resistance
    "F",      "mF",      "\u00B5F", "nF",      "pF",      "fF", // electric capacitance
    "S",      "mS",      "\u00B5S", "nS",      "pS",            // conductance
    "H",      "mH",      "\u00B5H", "nH",      "pH",      "fH", // inductance
    "Wb",                                                       // magnetic flux
    "T",                                                        // magnetic flux density
    "K",                                                        // thermodynamic temperature
    "",                                                         // a plain number
};

/// Units that are an SI string under a label of their own.
struct LabelledUnit
{
    const char* label;
    const char* siString;
};
constexpr LabelledUnit s_labelledUnits[] = {
    {"dBW", "dB(W)"},
    {"dBm", "dB(mW)"},
    {"dB\u00B5", "dB(\u00B5W)"}, // against a microwatt, though without its "W"
    {"dBV", "dB(V)"},
    {"dBmV", "dB(mV)"},
    {"dB\u00B5V", "dB(\u00B5V)"},
};

/// A unit that no SI string can express, or another name for one.
struct ExplicitUnit
{
    const char* name; ///< none: the label is the name
    const UnitType& type;
    const char* label;
    double scale;
    double offset;
    double logScale;
};

constexpr double s_radiansPerDegree = 0.017453292519943295;
constexpr double s_kelvinsPerFahrenheit = 0.5555555555555556;
constexpr double s_zeroCelsius = 273.15;
constexpr double s_zeroFahrenheit = 255.37222222222223;

void insertExplicitUnit(SystemOfUnits& catalogue, const ExplicitUnit& row, const QString& label)
{
    const Units units(row.type, label, row.scale, row.offset, row.logScale);
    catalogue.InsertUnits(row.name ? QString::fromUtf8(row.name) : label, units);
}

// The tables that name types are no constants: the types exist only once the library is loaded.

/// Labels that go to the translator; the macro is how its tools find them.
void insertTranslatedUnits(SystemOfUnits& catalogue)
{
    const ExplicitUnit rows[] = {
        {nullptr, UnitType::length, QT_TRANSLATE_NOOP("QObject", "mil"), 2.54e-05, 0, 0},
        {nullptr, UnitType::length, QT_TRANSLATE_NOOP("QObject", "in"), 0.0254, 0, 0},
        {nullptr, UnitType::area, QT_TRANSLATE_NOOP("QObject", "in^2"), 0.00064516, 0, 0},
        {nullptr, UnitType::volume, QT_TRANSLATE_NOOP("QObject", "in^3"), 1.6387064e-05, 0, 0},
        {nullptr, UnitType::time, QT_TRANSLATE_NOOP("QObject", "min"), 60, 0, 0},
        {nullptr, UnitType::time, QT_TRANSLATE_NOOP("QObject", "h"), 3600, 0, 0},
        {nullptr, UnitType::velocity, QT_TRANSLATE_NOOP("QObject", "km/h"), 0.2777777777777778, 0, 0},
        {nullptr, UnitType::velocity, QT_TRANSLATE_NOOP("QObject", "miles/h"), 0.44704, 0, 0},
        {nullptr, UnitType::energy, QT_TRANSLATE_NOOP("QObject", "kWh"), 3600000, 0, 0},
        {nullptr, UnitType::magneticFlux, QT_TRANSLATE_NOOP("QObject", "Mx"), 1e-08, 0, 0},
        {nullptr, UnitType::magneticFluxDensity, QT_TRANSLATE_NOOP("QObject", "Gs"), 0.0001, 0, 0},
        {nullptr, UnitType::dimensionless, QT_TRANSLATE_NOOP("QObject", "log"), 1, 0, 1},
        {nullptr, UnitType::dimensionless, QT_TRANSLATE_NOOP("QObject", "dB10"), 1, 0, 10},
        {"dB", UnitType::dimensionless, QT_TRANSLATE_NOOP("QObject", "dB10"), 1, 0, 10},
        {nullptr, UnitType::dimensionless, QT_TRANSLATE_NOOP("QObject", "dB20"), 1, 0, 20},
        {nullptr, UnitType::dimensionless, QT_TRANSLATE_NOOP("QObject", "hundreds"), 100, 0, 0},
        {nullptr, UnitType::dimensionless, QT_TRANSLATE_NOOP("QObject", "thousands"), 1000, 0, 0},
        {nullptr, UnitType::dimensionless, QT_TRANSLATE_NOOP("QObject", "millions"), 1000000, 0, 0},
        {nullptr, UnitType::dimensionless, QT_TRANSLATE_NOOP("QObject", "%"), 0.01, 0, 0},
        {nullptr, UnitType::dimensionless, QT_TRANSLATE_NOOP("QObject", "Abs"), 1, 0, 0},
    };
    for (const ExplicitUnit& row : rows)
        insertExplicitUnit(catalogue, row, QObject::tr(row.label));
}

/// Labels that are the same in every language.
void insertUntranslatedUnits(SystemOfUnits& catalogue)
{
    const UnitType& temperature = UnitType::thermodynamicTemperature;
    const ExplicitUnit rows[] = {
        {nullptr, UnitType::planeAngle, "\u00B0", s_radiansPerDegree, 0, 0},
        {"degrees", UnitType::planeAngle, "\u00B0", s_radiansPerDegree, 0, 0},
        {"deg", UnitType::planeAngle, "\u00B0", s_radiansPerDegree, 0, 0},
        {"mho", UnitType::conductance, "1/\u03A9", 1, 0, 0},
        {nullptr, temperature, "\u00B0C", 1, s_zeroCelsius, 0},
        {"degC", temperature, "\u00B0C", 1, s_zeroCelsius, 0},
        {"Celsius", temperature, "\u00B0C", 1, s_zeroCelsius, 0},
        {nullptr, temperature, "\u00B0F", s_kelvinsPerFahrenheit, s_zeroFahrenheit, 0},
        {"degF", temperature, "\u00B0F", s_kelvinsPerFahrenheit, s_zeroFahrenheit, 0},
        {"Fahrenheit", temperature, "\u00B0F", s_kelvinsPerFahrenheit, s_zeroFahrenheit, 0},
    };
    for (const ExplicitUnit& row : rows)
        insertExplicitUnit(catalogue, row, QString::fromUtf8(row.label));
}

void insertParsedUnits(SystemOfUnits& catalogue)
{
    for (const char* siString : s_plainUnits)
        catalogue.InsertUnits(Units::FromSIString(QString::fromUtf8(siString)));
    catalogue.InsertUnits(QStringLiteral("radians"), Units::FromSIString(QStringLiteral("rad")));
    for (const LabelledUnit& row : s_labelledUnits) {
        Units units = Units::FromSIString(QString::fromUtf8(row.siString));
        catalogue.InsertUnits(units.SetUnitsLabel(QString::fromUtf8(row.label)));
    }
}

/// The built-in names with a "u" that means nothing else.
bool isExemptFromRepair(const QString& text)
{
    return text == QLatin1String("Celsius") || text == QLatin1String("hundreds") ||
           text == QLatin1String("thousands");
}

/// What is meant by a text that was typed without the keys for micro and omega.
QString repaired(const QString& text)
{
    const auto mayBeRepaired = [](QChar c) { return c == QLatin1Char('u') || c == QLatin1Char('O'); };
    if (std::none_of(text.begin(), text.end(), mayBeRepaired) || isExemptFromRepair(text))
        return text;
    QString meant = text;
    meant.replace(QLatin1String("Ohm"), QString(s_omega));
    meant.replace(QLatin1Char('u'), s_micro);
    return meant;
}

/// Held while units of the catalogue are copied.
///
/// A unit of the system's own making may be copied on several threads at once. A host's may not, when it has children
/// of a class of the host or a measurement of its conversion function: notes are made at the children then as long as
/// the copy runs. Recursive, since the host's code that copies such a child may look units up.
std::unique_lock<std::recursive_mutex> oneCopyAtATime()
{
    static std::recursive_mutex mutex;
    return std::unique_lock<std::recursive_mutex>(mutex);
}

Units copyOf(const Units& units)
{
    const auto lock = oneCopyAtATime();
    return units;
}

using UnitsList = std::vector<const Units*>;

/// The units that `isWanted`, without those that equal an earlier one.
template <class Predicate>
UnitsList differentUnits(const QMap<QString, Units>& catalogue, Predicate isWanted)
{
    UnitsList taken;
    for (const Units& units : catalogue) {
        const auto isTwin = [&](const Units* other) { return *other == units; };
        if (isWanted(units) && std::none_of(taken.begin(), taken.end(), isTwin))
            taken.push_back(&units);
    }
    return taken;
}

QList<Units> copiesOf(const UnitsList& source)
{
    QList<Units> copies;
    const auto lock = oneCopyAtATime();
    copies.reserve(static_cast<int>(source.size()));
    for (const Units* units : source)
        copies.append(*units);
    return copies;
}
} // namespace

SystemOfUnits& SystemOfUnits::instance()
{
    static SystemOfUnits catalogue;
    return catalogue;
}

SystemOfUnits::SystemOfUnits()
{
    insertParsedUnits(*this);
    insertTranslatedUnits(*this);
    insertUntranslatedUnits(*this);
}

SystemOfUnits::~SystemOfUnits() = default;

Units SystemOfUnits::GetUnitsFromString(const QString& text) const
{
    const QString meant = repaired(text);
    const auto found = m_units.constFind(meant);
    if (found != m_units.constEnd())
        return copyOf(found.value());
    return Units::FromSIString(meant);
}

ERESULT SystemOfUnits::GetUnitsByName(const QString& name, Units* result) const
{
    if (!result)
        return ER_INVALID_ARGUMENT;
    const auto found = m_units.constFind(name);
    if (found == m_units.constEnd())
        return ER_NOT_FOUND;
    *result = copyOf(found.value()); // what hears of the change of *result runs without the lock
    return ER_SUCCESS;
}

QList<Units> SystemOfUnits::GetUnits(const UnitType& type) const
{
    return copiesOf(differentUnits(m_units, [&](const Units& units) { return units.GetUnitType() == type; }));
}

QStringList SystemOfUnits::GetUnitNames(const UnitType& type) const
{
    QStringList names;
    for (auto row = m_units.constBegin(); row != m_units.constEnd(); ++row) {
        if (row.value().GetUnitType() == type)
            names.append(row.key());
    }
    return names;
}

QList<Units> const SystemOfUnits::GetAllUnits() const
{
    return copiesOf(differentUnits(m_units, [](const Units&) { return true; }));
}

QList<Units> SystemOfUnits::GetCompatibleUnits(const Units& units) const
{
    const UnitType& type = units.GetUnitType();
    const UnitsList others = differentUnits(m_units, [&](const Units& candidate) {
        return candidate.GetUnitType() == type && !(candidate == units);
    });
    UnitsList all = {&units};
    all.insert(all.end(), others.begin(), others.end());
    return copiesOf(all);
}

ERESULT SystemOfUnits::InsertUnits(const QString& name, const Units& units)
{
    if (m_units.contains(name))
        return ER_ALREADY_EXISTS;
    if (!units.IsValid())
        return ER_INVALID_ARGUMENT;
    m_units.insert(name, units);
    return ER_SUCCESS;
}

ERESULT SystemOfUnits::InsertUnits(const Units& units)
{
    return InsertUnits(units.GetUnitsLabel(), units);
}

ERESULT SystemOfUnits::RemoveUnits(const QString& name)
{
    return m_units.remove(name) > 0 ? ER_SUCCESS : ER_NOT_FOUND;
}
} // namespace Orrery
