#pragma once

#include "foundations/storage/DataFile.h"

#include <string>

namespace Orrery::Host {

/// Save a data file to a path, with a line that tells how far it is. An interruption from the keyboard, or another
/// request to end, gives the save up and then ends the program as it would have without: OUT is as it was, and no
/// unfinished file stays beside it.
///
/// Errors: throws Failure.
void saveDataFile(DataFile& file, const std::string& path);

/// The same for a file that was opened for writing, in its own place; `path` is what messages call it.
///
/// Errors: throws Failure.
void saveInPlace(DataFile& file, const std::string& path);

} // namespace Orrery::Host
