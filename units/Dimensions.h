#pragma once

#include "orrerycorevariables_export.h"

#include <QList>
#include <QString>

#include <array>
#include <cstddef>
#include <list>

namespace Orrery {

class Units;

/// What a quantity is made of: one exponent for each base quantity, in the order m, kg, s, A, K, mol, cd, rad, sr.
///
/// The angles are dimensions of their own: a radian is not commensurable with a plain number. Mass counts in
/// kilograms. A plain value.
///
/// Edge:   exponents are 32 bits wide and wrap around; nothing checks them.
class ORRERYCOREVARIABLES_EXPORT Dimensions
{
public:
    static constexpr std::size_t Count = 9;

    /// All exponents 0: a plain number.
    constexpr Dimensions() = default;

    // The order is that of the base quantities, in which every table of units is written.
    // NOLINTNEXTLINE(bugprone-easily-swappable-parameters)
    constexpr Dimensions(int m, int kg, int s, int A, int K, int mol, int cd, int rad, int sr)
        : m_exponents{m, kg, s, A, K, mol, cd, rad, sr}
    {
    }

    explicit constexpr Dimensions(const std::array<int, Count>& exponents)
        : m_exponents(exponents)
    {
    }

    /// Each exponent times `n`: the dimensions of a power.
    Dimensions operator^(int n) const;

    /// The nine exponents in their order.
    constexpr const std::array<int, Count>& Exponents() const { return m_exponents; }

    /// The dimensions as an SI string: "m^2*kg/(s^3*A^2)", "1/s", "1" for a plain number.
    ///
    /// Symbols stand in the order of the base quantities, never alphabetically. The SI-string parser takes every
    /// text that this writes and finds the same dimensions, but for exponents of the smallest int.
    QString SIUnitsString() const;

private:
    std::array<int, Count> m_exponents{};
};

/// Exponents added.
ORRERYCOREVARIABLES_EXPORT Dimensions operator*(const Dimensions& a, const Dimensions& b);

/// Exponents of `b` subtracted from those of `a`.
ORRERYCOREVARIABLES_EXPORT Dimensions operator/(const Dimensions& a, const Dimensions& b);

ORRERYCOREVARIABLES_EXPORT bool operator==(const Dimensions& a, const Dimensions& b);
ORRERYCOREVARIABLES_EXPORT bool operator!=(const Dimensions& a, const Dimensions& b);

/// A kind of quantity: a name and a reference SI string for one combination of dimensions.
///
/// All types live in one registry of the process. It starts with the static members below, in their order, and
/// grows whenever a unit is parsed or computed whose dimensions have no type yet; nothing leaves it. Where two
/// types share their dimensions, the earlier one is the default. Names go through QObject::tr when the library
/// is loaded.
///
/// Threads: the registry has no lock, and a parse can append to it.
class ORRERYCOREVARIABLES_EXPORT UnitType
{
public:
    /// Whether decibels of a quantity are reckoned as of a power (factor 10) or of a field (factor 20).
    enum decibelType
    {
        powerDecibel = 0,
        fieldDecibel = 1
    };

    /// The name "none", no reference string, all exponents 0. Not in the registry and not equal to
    /// `dimensionless`.
    UnitType();

    /// Append a type to the registry, whether or not there is one like it.
    ///
    /// An empty `referenceSI` becomes dimensions.SIUnitsString(). The reference stays valid for the life of the
    /// library.
    static const UnitType& CreateType(QString name, Dimensions dimensions, QString referenceSI);

    /// Copies of all types of these dimensions, in the order of the registry.
    static const QList<UnitType> FindCompatibleTypes(const Dimensions& dimensions);

    /// The type of a unit of these dimensions that is written as `text`.
    ///
    /// Of several types the first one whose reference string occurs anywhere in `text`, else the first. Without
    /// any, a type is registered under the name `text`.
    ///
    /// Cost:   constant, whatever the length of the registry, but for the searches in `text`.
    static const UnitType FindUnitType(const Dimensions& dimensions, const QString& text);

    /// fieldDecibel for the dimensions of electricPotential and of electricCurrent, else powerDecibel.
    static decibelType GetDBType(const UnitType& type);

    QString GetName() const { return m_name; }
    QString GetReferenceSIString() const { return m_referenceSI; }
    Dimensions GetDimensions() const { return m_dimensions; }

    /// The unit of the reference string: "N" with scale 1 for `force`, "1" for `dimensionless`.
    Units GetBaseMKSUnits() const;

    /// Names and exponents are equal. The reference string takes no part.
    bool operator==(const UnitType& other) const;

    static const UnitType& length;
    static const UnitType& mass;
    static const UnitType& time;
    static const UnitType& area;
    static const UnitType& volume;
    static const UnitType& planeAngle;
    static const UnitType& solidAngle;
    static const UnitType& velocity;
    static const UnitType& acceleration;
    static const UnitType& force;
    static const UnitType& pressure;
    static const UnitType& energy;
    static const UnitType& power;
    static const UnitType& frequency;
    static const UnitType& electricCurrent;
    static const UnitType& electricCharge;
    static const UnitType& electricPotential;
    static const UnitType& electricResistance;
    static const UnitType& electricCapacitance;
    static const UnitType& magneticFlux;
    static const UnitType& magneticFluxDensity;
    static const UnitType& inductance;
    static const UnitType& conductance;
    static const UnitType& thermodynamicTemperature;
    static const UnitType& amountOfSubstance;
    static const UnitType& luminousIntensity;
    static const UnitType& luminousFlux;
    static const UnitType& illuminance;
    static const UnitType& radioactivity;
    static const UnitType& absorbedDose;
    static const UnitType& equivalentDose;
    static const UnitType& catalyticActivity;
    static const UnitType& dimensionless;

private:
    friend class Units;

    /// FindUnitType without the copy.
    static const UnitType& TypeFor(const Dimensions& dimensions, const QString& text);

    UnitType(QString name, QString referenceSI, Dimensions dimensions);

    QString m_name;
    QString m_referenceSI;
    Dimensions m_dimensions;

    static std::list<UnitType> s_unitTypes;
};

} // namespace Orrery
