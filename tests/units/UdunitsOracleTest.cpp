// The catalogue and its conversions beside UDUNITS-2 and beside a computation in long double.

#include "tests/support/RandomSeed.h"
#include "tests/units/CatalogueRows.h"
#include "tests/units/PlainConversion.h"

#include <gtest/gtest.h>
#include <udunits2.h>

#include <algorithm>
#include <cmath>
#include <iomanip>
#include <iostream>
#include <limits>
#include <map>
#include <memory>
#include <set>
#include <sstream>
#include <stdexcept>

namespace Orrery {
namespace {
using namespace CatalogueTest;
using namespace ConversionTest;
using Real = long double;

constexpr Real pi = 3.14159265358979323846264338327950288L;

/// What a unit is by its definition: the linear value times numerator / denominator plus offset is in SI base units.
struct Definition
{
    const char* udunits; ///< its text for UDUNITS-2
    Real numerator = 1.0L;
    Real denominator = 1.0L;
    Real offset = 0.0L;
    Real logScale = 0.0L;
};

/// The units that aren't SI strings, by their definitions: international inch and mile, Celsius and Fahrenheit by
/// their fixed points, the hour of 3600 s, the maxwell and the gauss of the CGS units, a level of 1/10 or 1/20 bel.
const std::map<std::string, Definition>& definitions()
{
    static const std::map<std::string, Definition> table = {
        {"mil", {"mil", 254.0L, 1e7L}},
        {"in", {"in", 254.0L, 1e4L}},
        {"in^2", {"in^2", 64516.0L, 1e8L}},
        {"in^3", {"in^3", 16387064.0L, 1e12L}},
        {"min", {"min", 60.0L}},
        {"h", {"h", 3600.0L}},
        {"°", {"°", pi, 180.0L}},
        {"degrees", {"arc_degree", pi, 180.0L}},
        {"deg", {"angular_degree", pi, 180.0L}},
        {"radians", {"radian"}},
        {"km/h", {"km/h", 10.0L, 36.0L}},
        {"miles/h", {"mile/h", 1609344.0L, 3600000.0L}},
        {"kWh", {"kW.h", 3600000.0L}},
        {"mho", {"1/Ω"}},
        {"Mx", {"maxwell", 1.0L, 1e8L}},
        {"Gs", {"gauss", 1.0L, 1e4L}},
        {"°C", {"°C", 1.0L, 1.0L, 273.15L}},
        {"degC", {"degC", 1.0L, 1.0L, 273.15L}},
        {"Celsius", {"celsius", 1.0L, 1.0L, 273.15L}},
        {"°F", {"°F", 5.0L, 9.0L, 459.67L * 5.0L / 9.0L}},
        {"degF", {"degF", 5.0L, 9.0L, 459.67L * 5.0L / 9.0L}},
        {"Fahrenheit", {"fahrenheit", 5.0L, 9.0L, 459.67L * 5.0L / 9.0L}},
        {"", {"1"}},
        {"Abs", {"1"}},
        {"hundreds", {"100", 100.0L}},
        {"thousands", {"1000", 1000.0L}},
        {"millions", {"1e6", 1e6L}},
        {"%", {"%", 1.0L, 100.0L}},
        {"log", {"lg(re 1)", 1.0L, 1.0L, 0.0L, 1.0L}},
        {"dB", {"0.1 lg(re 1)", 1.0L, 1.0L, 0.0L, 10.0L}},
        {"dB10", {"0.1 lg(re 1)", 1.0L, 1.0L, 0.0L, 10.0L}},
        {"dB20", {"0.05 lg(re 1)", 1.0L, 1.0L, 0.0L, 20.0L}},
        {"dBW", {"0.1 lg(re 1 W)", 1.0L, 1.0L, 0.0L, 10.0L}},
        {"dBm", {"0.1 lg(re 1 mW)", 1.0L, 1e3L, 0.0L, 10.0L}},
        {"dBµ", {"0.1 lg(re 1 µW)", 1.0L, 1e6L, 0.0L, 10.0L}},
        {"dBV", {"0.05 lg(re 1 V)", 1.0L, 1.0L, 0.0L, 20.0L}},
        {"dBmV", {"0.05 lg(re 1 mV)", 1.0L, 1e3L, 0.0L, 20.0L}},
        {"dBµV", {"0.05 lg(re 1 µV)", 1.0L, 1e6L, 0.0L, 20.0L}},
        // SI strings whose prefix a rule of thumb by the first letter would miss
        {"kg", {"kg"}},
        {"g", {"g", 1.0L, 1e3L}},
        {"mg", {"mg", 1.0L, 1e6L}},
        {"µg", {"µg", 1.0L, 1e9L}},
        {"L", {"L", 1.0L, 1e3L}},
        {"mL", {"mL", 1.0L, 1e6L}},
        {"mm^2", {"mm^2", 1.0L, 1e6L}},
        {"cm^2", {"cm^2", 1.0L, 1e4L}},
        {"km^2", {"km^2", 1e6L}},
        {"mm^3", {"mm^3", 1.0L, 1e9L}},
        {"cm^3", {"cm^3", 1.0L, 1e6L}},
    };
    return table;
}

/// An SI string of the catalogue with a prefix: what the prefix stands for.
Definition prefixed(const std::string& key, const char* udunits)
{
    static const std::set<std::string> bare = {"m", "m^2", "m^3", "m/s", "m/s^2", "cd", "mol"};
    Definition made{udunits};
    if (bare.count(key) || QString::fromStdString(key).size() == 1)
        return made;
    static const std::map<std::string, Real> large = {{"k", 1e3L}, {"M", 1e6L}, {"G", 1e9L}, {"T", 1e12L}};
    static const std::map<std::string, Real> small = {{"c", 1e2L}, {"m", 1e3L},  {"µ", 1e6L},
                                                      {"n", 1e9L}, {"p", 1e12L}, {"f", 1e15L}};
    static const std::set<std::string> symbols = {"Hz", "Wb", "rad",
                                                  "sr"}; // of several letters, without a prefix
    const std::string first = QString::fromStdString(key).left(1).toStdString();
    if (symbols.count(key) == 0 && large.count(first))
        made.numerator = large.at(first);
    else if (symbols.count(key) == 0 && small.count(first))
        made.denominator = small.at(first);
    return made;
}

/// A unit in all three computations.
struct OracleUnit
{
    std::string key;
    Units ours;
    Definition definition;
    std::shared_ptr<ut_unit> theirs;

    Real scale() const { return definition.numerator / definition.denominator; }
};

class UnitDatabase
{
public:
    UnitDatabase()
    {
        ut_set_error_message_handler(ut_ignore);
        m_system.reset(ut_read_xml(nullptr), ut_free_system);
        if (!m_system)
            throw std::runtime_error("UDUNITS-2 can't read its units");
        for (const CatalogueRow& row : catalogueRows())
            m_units.push_back(make(row.key.toStdString()));
    }

    const std::vector<OracleUnit>& units() const { return m_units; }

private:
    OracleUnit make(const std::string& key) const
    {
        const auto found = definitions().find(key);
        const Definition definition =
            found != definitions().end() ? found->second : prefixed(key, key.c_str());
        std::shared_ptr<ut_unit> theirs(ut_parse(m_system.get(), definition.udunits, UT_UTF8), ut_free);
        if (!theirs)
            throw std::runtime_error("UDUNITS-2 doesn't know " + key);
        OracleUnit made{key, catalogueUnit(key.c_str()), definition, theirs};
        made.definition.udunits = nullptr; // may point into `key`
        return made;
    }

    std::shared_ptr<ut_system> m_system;
    std::vector<OracleUnit> m_units; // after the system, which must outlive them
};

Real lastPlaceOf(Real value)
{
    const double magnitude = std::fabs(static_cast<double>(value));
    return std::nextafter(magnitude, std::numeric_limits<double>::infinity()) - magnitude;
}

/// One value carried over in long double, and how much one unit in the last place matters there.
struct Expectation
{
    Real value;
    Real unit;
};

/// The unit is that of the value in SI base units as a double, carried to the target. The result can't be finer than
/// its own last place, which is coarser for a level far from 0.
Expectation expectationOf(const OracleUnit& source, const OracleUnit& target, double value)
{
    const Definition& from = source.definition;
    const Definition& to = target.definition;
    const Real linear = from.logScale != 0.0L ? std::pow(10.0L, Real(value) / from.logScale) : Real(value);
    const Real base = linear * source.scale() + from.offset;
    const Real ratio = (base - to.offset) / target.scale();
    const Real carried = lastPlaceOf(base) / target.scale();
    if (to.logScale == 0.0L)
        return {ratio, std::max(carried, lastPlaceOf(ratio))};
    const Real level = to.logScale * std::log10(ratio);
    return {level, std::max(to.logScale / std::log(10.0L) * carried / ratio, lastPlaceOf(level))};
}

/// A value that makes sense in the unit: a level of three powers of ten either way, a temperature that exists, else
/// any size, positive where a logarithm is to be taken.
double valueFor(const OracleUnit& source, bool positive, std::mt19937_64& random)
{
    const double fraction = randomFraction(random);
    if (source.definition.logScale != 0.0L)
        return static_cast<double>(source.definition.logScale) * (6.0 * fraction - 3.0);
    if (source.ours.GetUnitType() == UnitType::thermodynamicTemperature)
        return 2000.0 * fraction - (source.key == "K" ? 0.0 : 100.0);
    const double size = std::pow(10.0, 12.0 * fraction - 6.0);
    return positive || random() % 2 == 0 ? size : -size;
}

struct Worst
{
    Real units = 0.0L;
    std::string where;

    void note(Real candidate, const std::string& name, double value)
    {
        if (candidate > units) {
            units = candidate;
            std::ostringstream text;
            text << std::setprecision(17) << value << ' ' << name;
            where = text.str();
        }
    }
    void print(const std::string& key) const
    {
        std::cout << std::fixed << std::setprecision(2) << key << ": " << static_cast<double>(units)
                  << " units in the last place, at " << where << '\n';
        std::ostringstream text;
        text << std::fixed << std::setprecision(2) << static_cast<double>(units);
        ::testing::Test::RecordProperty(key, text.str() + " at " + where);
    }
};

bool isAngle(const Units& units)
{
    return units.GetUnitType() == UnitType::planeAngle || units.GetUnitType() == UnitType::solidAngle;
}

bool isPlain(const Units& units)
{
    return Dimensionless(units);
}

constexpr Real allowed = 16.0L;

TEST(UdunitsOracle, HasTheSameDimensionsForEveryUnit)
{
    const UnitDatabase database;
    ASSERT_EQ(database.units().size(), 125u);
    for (const OracleUnit& a : database.units())
        for (const OracleUnit& b : database.units()) {
            const bool theirs = ut_are_convertible(a.theirs.get(), b.theirs.get()) != 0;
            // there an angle is a plain number, a time and a frequency are reciprocal
            const bool alike = a.ours.IsCommensurable(b.ours) || (isAngle(a.ours) && isPlain(b.ours)) ||
                               (isPlain(a.ours) && isAngle(b.ours)) || (isAngle(a.ours) && isAngle(b.ours)) ||
                               a.ours.IsCommensurable(Units() / b.ours);
            EXPECT_EQ(theirs, alike) << a.key << " to " << b.key;
        }
}

TEST(UdunitsOracle, AgreesOnEveryPairOfUnitsBothWays)
{
    const UnitDatabase database;
    const TestSupport::RandomSeed seed{1789};
    SCOPED_TRACE(seed);
    auto random = seed.engine();
    Worst ours;
    Worst theirs;
    Worst between;
    int pairs = 0;
    for (const OracleUnit& source : database.units())
        for (const OracleUnit& target : database.units()) {
            if (!source.ours.IsCommensurable(target.ours))
                continue;
            ++pairs;
            const std::string name = source.key + " to " + target.key;
            const std::unique_ptr<cv_converter, decltype(&cv_free)> converter(
                ut_get_converter(source.theirs.get(), target.theirs.get()), cv_free);
            ASSERT_TRUE(converter) << name;
            for (int i = 0; i < 1000; ++i) {
                const double value = valueFor(source, target.definition.logScale != 0.0L, random);
                const Expectation expected = expectationOf(source, target, value);
                double result = 0.0;
                ASSERT_EQ(source.ours.ConvertTo(target.ours, value, &result), ER_SUCCESS) << name;
                const double oracle = cv_convert_double(converter.get(), value);
                const Real ourError = std::fabs(Real(result) - expected.value) / expected.unit;
                const Real theirError = std::fabs(Real(oracle) - expected.value) / expected.unit;
                const Real difference = std::fabs(Real(result) - Real(oracle)) / expected.unit;
                ours.note(ourError, name, value);
                theirs.note(theirError, name, value);
                between.note(difference, name, value);
                ASSERT_LE(ourError, allowed) << std::setprecision(17) << value << ' ' << name;
                ASSERT_LE(difference, allowed) << std::setprecision(17) << value << ' ' << name;
            }
        }
    EXPECT_EQ(pairs, 791);
    ours.print("ours_beside_long_double");
    theirs.print("udunits_beside_long_double");
    between.print("ours_beside_udunits");
}
} // namespace
} // namespace Orrery
