#pragma once

#include <QString>

#include <string>
#include <string_view>

namespace Orrery::Host {

/// `text` for a terminal: control characters become \n, \t or \x1b and the like, so that what stands in a file
/// can neither break a line nor steer the terminal. Everything else stays as it is, backslashes included.
std::string printable(std::string_view text);

/// As printable, in single quotes and no longer than about 40 bytes; UTF-8 sequences aren't cut.
std::string inQuotes(std::string_view text);

/// UTF-8 where the bytes are UTF-8, else Latin-1: files of older programs have "µ" and "°" in that form.
QString decoded(std::string_view bytes);

/// `text` without blanks, tabs and carriage returns at its ends.
std::string_view trimmed(std::string_view text);

} // namespace Orrery::Host
