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
    static constexpr std::size_t Count = 9; ///< the number of base quantities

    /// All exponents 0: a plain number.
    constexpr Dimensions() = default;

    /// The exponents one by one: `Dimensions(1, 0, -1, 0, 0, 0, 0, 0, 0)` is a velocity.
    // The order is that of the base quantities, in which every table of units is written.
    // NOLINTNEXTLINE(bugprone-easily-swappable-parameters)
    constexpr Dimensions(int m, int kg, int s, int A, int K, int mol, int cd, int rad, int sr)
        : m_exponents{m, kg, s, A, K, mol, cd, rad, sr}
    {
    }

    /// The exponents in the order of the base quantities.
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

/// All nine exponents are equal.
ORRERYCOREVARIABLES_EXPORT bool operator==(const Dimensions& a, const Dimensions& b);
/// One exponent or more differ.
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
        powerDecibel = 0, ///< 10 times the logarithm to the base of 10
        fieldDecibel = 1  ///< 20 times it
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

    QString GetName() const { return m_name; }                     ///< for a person, and part of equality
    QString GetReferenceSIString() const { return m_referenceSI; } ///< as it was registered; "1" for numbers
    Dimensions GetDimensions() const { return m_dimensions; }      ///< a copy of the nine exponents

    /// The unit of the reference string: "N" with scale 1 for `force`, "1" for `dimensionless`.
    Units GetBaseMKSUnits() const;

    /// Names and exponents are equal. The reference string takes no part.
    bool operator==(const UnitType& other) const;

    static const UnitType& length;                   ///< "m"
    static const UnitType& mass;                     ///< "kg"
    static const UnitType& time;                     ///< "s"
    static const UnitType& area;                     ///< "m^2"
    static const UnitType& volume;                   ///< "m^3"
    static const UnitType& planeAngle;               ///< "rad"
    static const UnitType& solidAngle;               ///< "sr"
    static const UnitType& velocity;                 ///< "m/s"
    static const UnitType& acceleration;             ///< "m/s^2"
    static const UnitType& force;                    ///< "N"
    static const UnitType& pressure;                 ///< "Pa"
    static const UnitType& energy;                   ///< "J"
    static const UnitType& power;                    ///< "W"
    static const UnitType& frequency;                ///< "Hz"; radioactivity has the same dimensions
    static const UnitType& electricCurrent;          ///< "A"
    static const UnitType& electricCharge;           ///< "C"
    static const UnitType& electricPotential;        ///< "V"
    static const UnitType& electricResistance;       ///< "Ω"
    static const UnitType& electricCapacitance;      ///< "F"
    static const UnitType& magneticFlux;             ///< "Wb"
    static const UnitType& magneticFluxDensity;      ///< "T"
    static const UnitType& inductance;               ///< "H"
    static const UnitType& conductance;              ///< "S"
    static const UnitType& thermodynamicTemperature; ///< "K"
    static const UnitType& amountOfSubstance;        ///< "mol"
    static const UnitType& luminousIntensity;        ///< "cd"
    static const UnitType& luminousFlux;             ///< "lm"
    static const UnitType& illuminance;              ///< "lx"
    static const UnitType& radioactivity;            ///< "Bq"
    static const UnitType& absorbedDose;             ///< "Gy"; equivalentDose has the same dimensions
    static const UnitType& equivalentDose;           ///< "Sv"
    static const UnitType& catalyticActivity;        ///< "kat"
    static const UnitType& dimensionless;            ///< "1"

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
