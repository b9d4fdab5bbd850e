#pragma once

#include "orrerycore_export.h"

#include <cstdint>
#include <exception>

namespace Orrery {

/// Result code of almost every operation of the tree and of what is built on it.
///
/// The sign is the only test: `code >= 0` is success, `code < 0` is failure. No caller compares against one
/// particular failure. Code -2 is not produced.
enum ERESULT : std::int32_t
{
    ER_SUCCESS = 0,           ///< done
    ER_FAILED = -1,           ///< the operation ran and could not complete
    ER_NOT_FOUND = -3,        ///< a named thing is absent
    ER_INVALID_ARGUMENT = -4, ///< the argument can't be used
    ER_ALREADY_EXISTS = -5    ///< the name is taken
};

/// Kept beside a value and passed along with it; it doesn't change how data are stored.
enum IsCellArray
{
    IsCellArrayFalse = 0, ///< an ordinary array
    IsCellArrayTrue = 1   ///< data that came in as a cell array
};

/// Thrown where a failing ERESULT has no way back to the caller.
class ORRERYCORE_EXPORT OrreryException : public std::exception
{
public:
    explicit OrreryException(ERESULT result) noexcept; ///< carries `result`, which should be a failing one
    OrreryException(const OrreryException&) noexcept;  ///< carries the same code
    OrreryException(OrreryException&&) noexcept;       ///< carries the same code; the source keeps it
    OrreryException& operator=(const OrreryException&) noexcept; ///< takes the code over
    ~OrreryException() override;

    /// The code that had no way back.
    ERESULT GetResult() const noexcept;

private:
    /// The base's message, which is fixed: the code says it all.
    const char* what() const noexcept override;

    ERESULT m_result;
};

} // namespace Orrery
