#pragma once

#include <QString>

#include <cstddef>
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

/// Columns that UTF-8 text takes on a terminal, as near as a count of its characters tells.
std::size_t columnsOf(std::string_view text);

/// `text` with blanks behind it, up to `width` columns.
std::string padded(std::string_view text, std::size_t width);

/// `text` without blanks, tabs and carriage returns at its ends.
std::string_view trimmed(std::string_view text);

} // namespace Orrery::Host
