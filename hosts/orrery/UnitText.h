#pragma once

#include "units/Units.h"

#include <optional>
#include <string>

namespace Orrery {
class Variable;
}

namespace Orrery::Host {

/// The unit that a person means by a text: a name of the catalogue, or an SI string.
///
/// Errors: Failure of three lines for a text that is neither: what is wrong, the text, and a caret below the place.
Units parseUnits(const std::string& text);

/// The label of a unit, safe to print; "1" for a plain number, which has none.
std::string unitsLabel(const Units& units);

/// What a unit measures, with the dimensions: "power (m^2*kg/s^3)".
std::string kindText(const Units& units);

/// What a value in this unit is in SI base units: "1 in = 0.0254 m", "x °C = x + 273.15 K",
/// "x dBm = 10^(x/10) * 0.001 W".
std::string definitionText(const Units& units);

/// " [V]" to stand behind a name; empty without units.
std::string unitsSuffix(const std::optional<Units>& units);

/// The unit with what a file has not kept of it: one from explicit numbers, such as "°C", comes back with its numbers
/// and without its dimensions, which its SI string tells.
Units recognized(const Units& units);

/// The units of a variable's data, recognized; none if it has none, or what can't be used.
std::optional<Units> unitsOf(const Variable& variable);

/// The units in which to show a variable: its display units where it has any that fit, else those of its data.
std::optional<Units> shownUnitsOf(const Variable& variable);

/// Fails unless the two are commensurable, with the dimensions of both.
void requireCommensurable(const Units& from, const Units& to);

} // namespace Orrery::Host
