#pragma once

#include <string>

namespace Orrery::Host {

/// Make sure, before any work, that a data file may be written to `output`, which may replace a data file or an empty
/// one, and with `isForced` any other regular file.
///
/// Errors: Failure for a folder that isn't there, for what is no regular file, for a file of another kind, and for the
///         file at `input`.
void checkOutput(const std::string& input, const std::string& output, bool isForced);

} // namespace Orrery::Host
