#pragma once

#include "hosts/orrery/manual/CommandText.h"

#include <string>

namespace Orrery::Host {

/// What stands at the head and the foot of each page.
struct Edition
{
    std::string version;
    std::string date; ///< YYYY-MM-DD; may be empty
};

/// The manual page of the program, "orrery.1".
std::string programPage(const ProgramText& text, const Edition& edition);

/// The manual page of one of its commands, "orrery-ls.1".
std::string commandPage(const ProgramText& text, const CommandText& command, const Edition& edition);

} // namespace Orrery::Host
