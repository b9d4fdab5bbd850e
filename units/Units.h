#pragma once

#include "foundations/property/PropertyObject.h"
#include "orrerycorevariables_export.h"
#include "units/Dimensions.h"
#include "units/SIStringDiagnosis.h"

#include <QString>

#include <complex>
#include <iosfwd>
#include <memory>

namespace Orrery {

/// In what a number is expressed: a kind of quantity, a label, and the numbers that lead to the SI base.
///
/// With v a value in this unit, its linear value is v when the logarithmic scale is 0, else 10^(v / logScale); the
/// value in SI base units is the linear value times scale plus offset. The SI string and the label are children
/// of this folder; the rest stands in an Impl.
///
/// A unit from an SI string comes back whole from a file. One from explicit numbers comes back with its numbers,
/// its SI string and its label, but without its dimensions: what is saved with it names no type.
///
/// Threads: no lock. Units may be read and copied on several threads at once; only those to which a host has given
///          children of its own classes, or a conversion function with a measurement, are copied on one at a time.
///          A parse can append to the registry of types (UnitType).
class ORRERYCOREVARIABLES_EXPORT Units : public PropertyObject
{
public:
    /// What a unit keeps outside its children.
    struct ORRERYCOREVARIABLES_EXPORT Impl
    {
        bool valid = false; ///< made from a good SI string, from numbers, or from a good saved form
        UnitType type = UnitType::dimensionless; ///< the kind of quantity
        double scale = 1.0;                      ///< multiplier to the SI base
        double offset = 0.0;                     ///< addend to the SI base
        double logScale = 0.0; ///< 0 for a linear unit, else the factor of the logarithmic form

        /// Read an SI string into type, scale and logScale; offset becomes 0, and `valid` is left alone.
        ///
        /// Errors: false for a refused text. Then type is what it was, offset and logScale are 0, and scale is
        ///         1, or what the last accepted term wrote into it: "km/x" leaves 1000.
        /// Cost:   linear in the length; nesting costs heap memory, no stack.
        bool ParseSIString(const QString& text);
    };

    /// Names of the children.
    static const QString SIUnits;
    static const QString DisplayUnit;        ///< "DisplayUnit", with the label
    static const QString ConversionFunction; ///< the Function with the numbers, of a unit made from numbers

    /// A plain number with no children. Not valid.
    Units();

    /// A unit from numbers, always valid.
    ///
    /// Its SI string is the reference string of the type, whatever the numbers: those of "in" and "m" are both
    /// "m". The numbers are saved in a child Function that nothing runs.
    Units(const UnitType& type, const QString& label, double scale, double offset, double logScale);

    /// Children and numbers of the other unit; the name as in a PropertyObject assignment.
    Units(const Units& other);

    /// As a copy, but the numbers are taken: the source may only be destroyed afterwards.
    Units(Units&& other); // NOLINT(performance-noexcept-move-constructor): clones

    /// Children and numbers of the other unit; the name as in a PropertyObject assignment.
    Units& operator=(const Units& other);

    /// As a copy, but the numbers are exchanged: the source keeps its children and gets the numbers of this unit.
    ///
    /// Edge:   a source that stands below this unit goes with the former children; its numbers and children are here
    ///         then. An assignment to itself changes nothing.
    Units& operator=(Units&& other); // NOLINT(performance-noexcept-move-constructor): clones

    const QString& PropertyObjType() const override;
    void OnDeserialization() override;
    ~Units() override;
    AbstractProperty* DoClone() const override;

    /// "Units", the name under which the class is saved.
    static const QString& StaticType();

    /// The unit of an SI string such as "km/s" or "dB(mW)". A refused text gives a unit that isn't valid and has
    /// no children.
    static Units FromSIString(const QString& siString);

    /// Where and why FromSIString refuses a text, with what might have been meant. Registers no type.
    ///
    /// Cost:   linear in the length; meant for messages, not for loops.
    static SIStringDiagnosis DiagnoseSIString(const QString& text);

    bool IsValid() const { return m_impl->valid; } ///< ask before use: nothing else tells of a refused text
    double GetScale() const { return m_impl->scale; }       ///< multiplier to the SI base
    double GetOffset() const { return m_impl->offset; }     ///< addend to the SI base, after the scale
    double GetLogScale() const { return m_impl->logScale; } ///< 0 for a linear unit; 10 or 20 for decibels
    const UnitType& GetUnitType() const { return m_impl->type; } ///< valid as long as this unit is unchanged

    /// Whether the logarithmic scale isn't 0; a NaN counts as not 0.
    bool IsLogarithmic() const { return m_impl->logScale != 0.0; }

    /// The SI string as it was given, blanks included; empty without one.
    QString GetSIUnits() const;

    /// The label; without one the SI string, but for plain numbers, whose label is then empty.
    QString GetUnitsLabel() const;

    /// Whether the exponents of both types are equal. Validity and logarithms take no part.
    bool IsCommensurable(const Units& other) const;

    /// Replace the numbers by those of an SI string. The label and what was saved of explicit numbers stay, and
    /// the latter win over the new string when the unit is loaded from a file.
    ///
    /// Errors: ER_INVALID_ARGUMENT for a refused text; the unit is not valid then, and keeps its old SI string.
    ERESULT SetSIUnits(const QString& siString);

    /// What GetUnitsLabel() answers from now on; it takes part in equality. Returns this unit.
    Units& SetUnitsLabel(const QString& label);

    /// Convert one value from this unit to `target`, by way of the SI base.
    ///
    /// Units:  `value` in this unit, `*result` in `target`.
    /// Errors: ER_INVALID_ARGUMENT if `result` is null or the dimensions differ; `*result` is then untouched.
    /// Edge:   before a logarithm, values below 1e-300 become 1e-300; NaN stays NaN. Equal units are not
    ///         skipped: a value may lose its last bits on the way through a logarithm.
    /// Threads: reads only.
    ERESULT ConvertTo(const Units& target, double value, double* result) const;

    /// The same for the real and the imaginary part, each by itself: an offset is added to both.
    ERESULT ConvertTo(const Units& target, std::complex<double> value, std::complex<double>* result) const;

    /// Tell whether `data` can be converted to `target`; `data` keeps its elements. ConvertedTo() hands the
    /// converted elements over.
    ///
    /// Errors: ER_INVALID_ARGUMENT if the dimensions differ or the elements are no numbers.
    /// Edge:   a success without a look at anything else if the SI strings are equal.
    ERESULT ConvertTo(const Units& target, BVariant& data) const;

    /// Convert all elements of `data` from this unit to `target`: an addition of this library for those who need the
    /// numbers, which ConvertTo() of an array doesn't hand over.
    ///
    /// Nothing is decided by SI strings here: "in" are converted to "mil", though both have "m". Each element comes
    /// out with the bits that ConvertTo() gives for it.
    /// Shape:  a new array with that of `data`, in its order of storage; a scalar of a scalar. Elements are doubles,
    ///         or complex doubles if those of `data` are complex.
    /// Units:  `data` in this unit, `*result` in `target`.
    /// Errors: ER_INVALID_ARGUMENT for units that aren't commensurable, a null `result`, and data that can't be
    ///         converted (null, text that isn't a number, times, elements that can't be fetched); `*result` is then
    ///         untouched. No exception comes out.
    /// Edge:   `result` may be `&data`.
    /// Cost:   one pass over the elements into one new array, at the speed of memory between linear units.
    /// Threads: reads only.
    ERESULT ConvertedTo(const Units& target, const BVariant& data, BVariant* result) const;

protected:
    explicit Units(const QString& siString); ///< as FromSIString(), for derived classes

    /// ConvertTo for one double without any test.
    double ConvertValueToUnit(double value, const Units& target) const;

private:
    friend class UnitType;

    Units(const Units& other, std::unique_ptr<Impl> numbers);
    std::unique_ptr<Impl> TakeOver(const Units& other, std::unique_ptr<Impl> numbers);
    bool RestoreNumbers();
    void KeepNumbers();

    std::unique_ptr<Impl> m_impl; // null only in a unit that was moved from
};

/// Whether the type of the unit is that of plain numbers, by name and exponents.
ORRERYCOREVARIABLES_EXPORT bool Dimensionless(const Units& units);

/// Equal dimensions, equal numbers and equal labels. Validity, SI strings and names of types take no part.
ORRERYCOREVARIABLES_EXPORT bool operator==(const Units& a, const Units& b);
/// Other dimensions, other numbers or another label.
ORRERYCOREVARIABLES_EXPORT bool operator!=(const Units& a, const Units& b);

/// The base unit of the product's, the quotient's and the power's dimensions: scale 1, and the type's reference
/// string as the label. The numbers and the validity of the operands are dropped: km times km is m^2.
ORRERYCOREVARIABLES_EXPORT Units operator*(const Units& a, const Units& b);
/// As the product, of the quotient's dimensions.
ORRERYCOREVARIABLES_EXPORT Units operator/(const Units& a, const Units& b);
/// As the product, of the power's dimensions.
ORRERYCOREVARIABLES_EXPORT Units operator^(const Units& a, int n);

/// One line for a log: name, SI string, label and scale.
ORRERYCOREVARIABLES_EXPORT std::ostream& operator<<(std::ostream& stream, const Units& units);

} // namespace Orrery
