#pragma once

#include "hosts/orrery/touchstone/TouchstoneHeader.h"

namespace Orrery::Host {

/// Read what stands behind the header: the network data, and the noise data if there are any, up to the end of the
/// file.
///
/// Units:  version 1 has Y, Z, G and H, and the noise resistance, normalized to the resistance of the option line; here
///         they leave it behind. Those of version 2 aren't normalized.
/// Errors: Failure for a point that has too few or too many numbers, for frequencies that go down, are below 0 or no
///         numbers, for what is no number, and for an end before the announced one. A frequency that comes twice is a
///         remark.
/// Edge:   of the values, "nan" and "inf" are numbers.
void readTouchstoneValues(TouchstoneLines& lines, const TouchstoneHeader& header, TouchstoneData* data);

} // namespace Orrery::Host
