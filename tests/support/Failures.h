#pragma once

#include <functional>
#include <ostream>
#include <string>

namespace TestSupport {
/// What an operation failed with: the class of the exception, exactly, and its words.
struct Failure
{
    std::string type;
    std::string words;

    friend bool operator==(const Failure& a, const Failure& b)
    {
        return a.type == b.type && a.words == b.words;
    }
    friend std::ostream& operator<<(std::ostream& out, const Failure& failure)
    {
        return out << failure.type << " \"" << failure.words << '"';
    }
};

/// Runs `operation`; the type is "none" if it didn't fail, "unknown" if it threw no std::exception.
///
///     EXPECT_EQ(failureOf([&] { slice(BVariant(), {}); }), invalidArgument("The given ArraySlice is invalid."));
Failure failureOf(const std::function<void()>& operation);

Failure invalidArgument(const std::string& words);
Failure outOfRange(const std::string& words);
Failure runtimeError(const std::string& words);
} // namespace TestSupport
