#pragma once

#include "hosts/orrery/Diagram.h"
#include "units/Units.h"
#include "variables/Variable.h"

#include <optional>

namespace Orrery::Host {

struct CurveOptions
{
    bool isLogX = false;
    bool isLogY = false;
    std::optional<Units> xUnits; ///< in which to show them; as they are if not given
    std::optional<Units> yUnits;
};

/// A variable over its first axis, as it is drawn.
struct Curve
{
    std::vector<QVector<QPointF>> pieces;
    bool isMagnitude = false; ///< its values are complex, and their magnitudes are drawn
};

/// The first axis of a variable; null for one that has none and is drawn over its offsets.
///
/// Errors: Failure for an axis that leads nowhere.
const Variable* firstAxisOf(const Variable& variable);

/// Read a variable over its first axis.
///
/// The curve is interrupted where a coordinate is no finite number, where it isn't above 0 on a logarithmic axis, and
/// where the axis begins anew, as it does in nested sweeps.
/// Shape:  of many points, those are kept that show in a picture: the first, the lowest, the highest and the last of
///         each small part.
/// Errors: Failure for values that can't be drawn: arrays, no numbers, more than 100 million, an axis of another
///         length, a complex axis, units of another kind. What reading the values throws.
/// Cost:   one pass through the values in blocks.
Curve readCurve(const Variable& variable, const CurveOptions& options);

} // namespace Orrery::Host
