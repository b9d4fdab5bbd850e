#pragma once

#include "foundations/storage/DataFileCheck.h"

#include <functional>
#include <string>

namespace Orrery::Host {

/// How a check of one file in a process of its own went.
struct CheckOutcome
{
    DataFileCheck::Summary summary;
    std::string death; ///< why the process ended before the check did, on one line; empty if it didn't
};

/// What a check tells on its way. The texts are safe to print.
struct CheckListener
{
    std::function<void(DataFileCheck::Severity severity, const std::string& line)> finding;
    std::function<void(std::uint64_t done, std::uint64_t all)> progress;
};

/// Check the data file at `path` in a process of its own: this program's, started anew. The file may make the HDF5
/// library crash, hang or swallow memory, and then that process ends, not this one. One that says nothing for `timeout`
/// seconds is ended, and so is one whose caller leaves by an exception or dies.
///
/// Errors: Trouble when no process can be started.
CheckOutcome checkInProcess(const std::string& path, unsigned timeout, const CheckListener& listener);

/// The other side: check the file, tell everything on standard output in the form that checkInProcess understands, and
/// end the process.
[[noreturn]] void runCheckProcess(const std::string& path);

} // namespace Orrery::Host
