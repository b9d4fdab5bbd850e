#pragma once

namespace Orrery::Host {

/// Run the program on its arguments and return its exit code.
///
/// A failure is one line on standard error, "orrery: ...", and 1; a command line that can't be understood is one
/// line with a hint at --help, and 2. If the reader of standard output goes away, the program ends quietly.
int runCommandLine(int argc, const char* const* argv);

} // namespace Orrery::Host
