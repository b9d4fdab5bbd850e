#pragma once

#include "hosts/orrery/manual/CommandText.h"

#include <string>

namespace Orrery::Host {

/// What bash offers for a word of a command line: "files" and the endings of their names, "nodes" of the data file that
/// stands before, "units", "types" of units, "words" and the choices, or "none".
///
/// It is told by what the help says: the choices are parted by "|", UNIT and U are units, TYPE is a type of units,
/// PATH a node, and a description names the kind of a file.
std::string completionKind(const OptionText& option);

/// A script for bash that completes the program's command lines. It doesn't need the package bash-completion.
std::string bashCompletion(const ProgramText& text);

} // namespace Orrery::Host
