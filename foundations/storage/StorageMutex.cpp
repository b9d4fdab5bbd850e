#include "foundations/storage/StorageMutex_p.h"

namespace Orrery {

std::recursive_mutex& StorageMutex()
{
    // Never destroyed: a data file may be closed by a static's destructor.
    static auto* const mutex = new std::recursive_mutex;
    return *mutex;
}

} // namespace Orrery
