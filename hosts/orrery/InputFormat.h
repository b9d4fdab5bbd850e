#pragma once

#include <string>

namespace Orrery::Host {

/// The kinds of files that can be imported.
enum class InputFormat
{
    Raw,
    Touchstone,
    Csv,
};

/// "raw", "touchstone" or "csv", as it is typed.
///
/// Errors: Failure (ExitUsage) for anything else.
InputFormat parseInputFormat(const std::string& text);

/// What kind of file that is. One that begins with a line "Title:" is a raw file. Of the others the name tells: .raw,
/// .sNp and .ts for Touchstone, .csv and .tsv. Where it doesn't, a file that begins with '!', a keyword in brackets or a
/// line of options is a Touchstone file, and one whose first line has separators a CSV file; all else should be a raw
/// file, whose reader tells what is wrong with it.
///
/// Errors: Failure when the file can't be read.
InputFormat detectInputFormat(const std::string& path);

} // namespace Orrery::Host
