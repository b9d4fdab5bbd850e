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

/// What keeps a command whose exit code is an answer from giving one: as a Failure, but with the exit code 2.
class Trouble : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

/// Thrown by a command that has done its work, to end the program with an exit code of its own.
struct Ended
{
    int exitCode;
};

} // namespace Orrery::Host
