#pragma once

#include "hosts/orrery/SourceFile.h"
#include "hosts/orrery/touchstone/TouchstoneData.h"

#include <optional>
#include <string>

namespace Orrery::Host {

/// The number of ports that the name of a file tells: 2 for "x.s2p", in any case of its letters. None for other names.
std::optional<std::size_t> portsOfName(const std::string& path);

/// Read a Touchstone file of version 1 or 2, of up to 99 ports.
///
/// `ports` is the number of ports, which a file of version 1 doesn't tell; portsOfName() does.
/// Errors: Failure for a file that can't be read or is malformed anywhere: the file, the line, what was expected and
///         what stands there.
/// Cost:   one pass through the file; memory is what the values take, and a small multiple of that while they come.
TouchstoneData readTouchstone(const std::string& path, std::optional<std::size_t> ports,
                              SourceFile::Progress progress = {});

} // namespace Orrery::Host
