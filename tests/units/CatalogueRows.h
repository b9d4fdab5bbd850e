#pragma once

#include "units/SystemOfUnits.h"
#include "units/Units.h"

#include <QString>

#include <string>
#include <vector>

namespace Orrery::CatalogueTest {
/// How a row comes into being, which shows in the children that its unit has.
enum class Origin
{
    SIString, ///< from its key, an SI string; no label of its own
    Labelled, ///< from an SI string, with a label
    Aliased,  ///< from an SI string, under another key; no label of its own
    Numbers   ///< from explicit numbers
};

/// One name of the built-in catalogue and all that is to be seen of its unit.
struct CatalogueRow
{
    QString key;
    const UnitType* type;
    QString label;
    double scale;
    double offset;
    double logScale;
    QString siUnits;
    Origin origin;
};

/// All 125 names, written out here and not taken from the library.
const std::vector<CatalogueRow>& catalogueRows();

/// The same in the order of the keys' UTF-16 code units.
std::vector<CatalogueRow> catalogueRowsInKeyOrder();

/// The catalogue's unit of that name (UTF-8). Errors: std::invalid_argument without it.
Units catalogueUnit(const char* key);

/// The unit of an SI string (UTF-8), whether good or not.
Units unitOf(const char* siString);

/// What an exact comparison and a readable message need of a unit.
std::string labelOf(const Units& units);
std::vector<std::string> labelsOf(const QList<Units>& units);
std::vector<std::string> textsOf(const QStringList& texts);
} // namespace Orrery::CatalogueTest
