#pragma once

#include <cstring>
#include <string>
#include <vector>

namespace Orrery::Host {

/// The pieces of a raw file, each of which a test may change. Two points of two variables as they stand.
struct RawText
{
    std::string title = "Title: test\n";
    std::string date = "Date: today\n";
    std::string plotName = "Plotname: DC transfer characteristic\n";
    std::string flags = "Flags: real\n";
    std::string variableCount = "No. Variables: 2\n";
    std::string pointCount = "No. Points: 2\n";
    std::string more;
    std::string variables = "Variables:\n\t0\tx\tvoltage\n\t1\ty\tcurrent\n";
    std::string values = "Values:\n 0\t1.5\n\t-2\n\n 1\t2.5\n\t-4\n\n";

    std::string text() const
    {
        return title + date + plotName + flags + variableCount + pointCount + more + variables + values;
    }
};

/// The bytes of the values, as a binary file has them.
template <class T>
std::string bytesOf(const std::vector<T>& values)
{
    std::string bytes(values.size() * sizeof(T), '\0');
    std::memcpy(bytes.data(), values.data(), bytes.size());
    return bytes;
}

} // namespace Orrery::Host
