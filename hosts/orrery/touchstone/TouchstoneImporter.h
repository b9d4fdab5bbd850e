#pragma once

#include "hosts/orrery/touchstone/TouchstoneData.h"
#include "results/Result.h"
#include "units/Units.h"

#include <QString>

#include <vector>

namespace Orrery::Host {

/// The name of an element of the matrix, counted from 1: "S21", and "S2_1" where there are more than 9 ports.
QString elementName(char parameter, std::size_t row, std::size_t column, std::size_t ports);

/// Put what a Touchstone file holds into a result.
///
/// Names:  folder "network" with "frequency", the elements of the matrix over it, and "reference", the resistances of
///         the ports; folder "noise" with "frequency", and "NFmin", "Gamma_opt" and "Rn" over it, if there is noise.
///         Version, options, comments and information become texts of a hidden folder "network" of the setup folder.
/// Units:  Hz; S is a plain number; Y is in S, Z in ohm; of H, H11 is in ohm and H22 in S; of G the other way round.
///         NFmin is in dB10, Rn in ohm. Display units are the first of the given ones that measure the same.
/// Errors: Failure when the tree refuses a node.
void importTouchstone(Result* result, TouchstoneData data, const std::vector<Units>& displayUnits);

} // namespace Orrery::Host
