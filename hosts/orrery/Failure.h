#pragma once

#include <stdexcept>
#include <string>

namespace Orrery::Host {

/// How the program ends; also its exit code.
enum ExitCode
{
    ExitGood = 0,   ///< done
    ExitFailed = 1, ///< the work could not be done, and one line on standard error says why
    ExitUsage = 2   ///< the command line can't be understood
};

/// What ends a command: one line for a person, without the program's name and without a line end, and the exit
/// code that goes with it.
class Failure : public std::runtime_error
{
public:
    explicit Failure(const std::string& line, ExitCode exitCode = ExitFailed)
        : std::runtime_error(line)
        , m_exitCode(exitCode)
    {
    }

    ExitCode exitCode() const noexcept { return m_exitCode; }

private:
    ExitCode m_exitCode;
};

} // namespace Orrery::Host
