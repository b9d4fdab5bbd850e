#pragma once

namespace Orrery::Host {

/// Make the measurements of this program known to the library. May be called again.
void registerMeasurements();

} // namespace Orrery::Host
