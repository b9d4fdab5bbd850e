#pragma once

#include "foundations/property/ErrorResult.h"
#include "orrerycorevariables_export.h"
#include "units/Units.h"

#include <QList>
#include <QMap>
#include <QString>
#include <QStringList>

namespace Orrery {
namespace Internal {
struct CatalogueAccess;
}

/// The catalogue of named units, one per process: what a user or a file calls a unit, and the unit that this means.
///
/// It starts with 125 names for 117 different units and forgets at exit what a host added or removed. It is the only
/// source of units with an offset ("°C") and of most that aren't SI ("in", "kWh"). There is no unit of pressure in
/// it: "Pa" and "kPa" are found all the same by GetUnitsFromString, which reads them as SI strings.
///
/// Names are exact and case-sensitive; wherever an order shows, it is that of their UTF-16 code units. The labels of
/// many built-in units pass through QObject::tr when the catalogue is built, and their names with them where a name
/// is just the label.
/// Threads: the first call of instance() is safe on any thread. Look-ups at once are safe while nobody inserts or
///          removes, also with one unit as the argument of several, except that GetUnitsFromString may parse, which
///          can register a new unit type.
class ORRERYCOREVARIABLES_EXPORT SystemOfUnits
{
public:
    /// The one catalogue.
    ///
    /// Edge: it goes at exit, after the statics that were complete only after its first call. A static that was made
    ///       before must not use it in its destructor.
    /// Cost: the first call builds it, one unit per name; afterwards a few loads.
    static SystemOfUnits& instance();

    ~SystemOfUnits();
    SystemOfUnits(const SystemOfUnits&) = delete;
    SystemOfUnits& operator=(const SystemOfUnits&) = delete;

    /// The forgiving look-up, for what people type: the unit of that name, or else the unit of that SI string.
    ///
    /// Before both, each "Ohm" becomes "Ω" (U+03A9) and each "u" becomes "µ" (U+00B5), so that "uF" and "kOhm" are
    /// found. The texts "Celsius", "hundreds" and "thousands", which contain a "u" of their own, are left alone; a
    /// name with a "u" that a host inserts is found by GetUnitsByName only.
    /// Errors: none; a text that is neither gives a unit whose IsValid() is false.
    /// Edge:   the unit of an SI string keeps the repaired text: "um/s" answers "µm/s" from GetSIUnits().
    ///         The catalogue never grows by a look-up.
    Units GetUnitsFromString(const QString& text) const;

    /// The exact look-up: no repair, no SI strings.
    ///
    /// Errors: ER_INVALID_ARGUMENT for a null `result`, ER_NOT_FOUND without that name; *result is then untouched.
    ERESULT GetUnitsByName(const QString& name, Units* result) const;

    /// The different units of that type (by name and dimensions), in the order of their names.
    ///
    /// Units that are equal by operator== stand once: "degC" and "Celsius" are "°C" again.
    /// Cost: linear in the catalogue, quadratic in the result; copies nothing but the result.
    QList<Units> GetUnits(const UnitType& type) const;

    /// All names of units of that type, aliases included, in order.
    QStringList GetUnitNames(const UnitType& type) const;

    /// The different units of every type, in the order of their names.
    QList<Units> const GetAllUnits() const;

    /// `units`, then the other units of its type as GetUnits lists them.
    ///
    /// Edge: `units` stands first even if the catalogue has nothing like it. The type decides, not IsCommensurable:
    ///       a unit of frequency is not compatible with one of radioactivity.
    QList<Units> GetCompatibleUnits(const Units& units) const;

    /// Keeps a copy of `units` under `name`.
    ///
    /// Errors: ER_ALREADY_EXISTS for a taken name, whose unit stays, then ER_INVALID_ARGUMENT for an invalid unit.
    ERESULT InsertUnits(const QString& name, const Units& units);

    /// Keeps a copy of `units` under its label.
    ///
    /// Errors: those of the other overload.
    /// Edge:   a dimensionless unit without a label has the empty name, which the plain number has taken.
    ERESULT InsertUnits(const Units& units);

    /// Forgets the unit of that name; other names of the same unit stay. A built-in one is gone until exit.
    ///
    /// Errors: ER_NOT_FOUND without that name.
    ERESULT RemoveUnits(const QString& name);

private:
    friend struct Internal::CatalogueAccess;

    SystemOfUnits();

    QMap<QString, Units> m_units;
};
} // namespace Orrery
