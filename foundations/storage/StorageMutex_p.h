#pragma once

#include <mutex>

namespace Orrery {

/// Held while a data file is opened and while the HDF5 library is in use.
///
/// One lock for both: a file that loads may open another one from a handler, and an open file loads, so two locks
/// would be taken in both orders.
std::recursive_mutex& StorageMutex();

} // namespace Orrery
