#include "hosts/orrery/SweepValues.h"

#include "hosts/orrery/Failure.h"
#include "hosts/orrery/Numbers.h"
#include "hosts/orrery/PlainText.h"
#include "hosts/orrery/SourceFile.h"

#include <string_view>

namespace Orrery::Host {

namespace {

constexpr std::uint64_t s_longestLine = 1U << 20U;

std::vector<double> valuesOf(std::string_view list)
{
    std::vector<double> values;
    while (true) {
        const std::size_t comma = list.find(',');
        const std::string_view text = trimmed(list.substr(0, comma));
        double value = 0.0;
        if (!parseNumber(text, &value))
            throw Failure("--sweep: expected a number, found " + inQuotes(text), ExitUsage);
        values.push_back(value);
        if (comma == std::string_view::npos)
            return values;
        list.remove_prefix(comma + 1);
    }
}

std::vector<double> valuesInFile(const std::string& path)
{
    constexpr std::string_view between = ", \t\r";
    SourceFile file(path);
    std::vector<double> values;
    std::string_view line;
    while (file.readLine(&line, s_longestLine)) {
        for (std::size_t begin = line.find_first_not_of(between); begin != std::string_view::npos;
             begin = line.find_first_not_of(between)) {
            line.remove_prefix(begin);
            const std::string_view text = line.substr(0, line.find_first_of(between));
            double value = 0.0;
            if (!parseNumber(text, &value))
                file.fail("a number", inQuotes(text));
            values.push_back(value);
            line.remove_prefix(text.size());
        }
    }
    return values;
}

} // namespace

SweepValues parseSweep(const std::string& text)
{
    const std::size_t sign = text.find('=');
    if (sign == std::string::npos || sign == 0 || sign + 1 == text.size())
        throw Failure("--sweep: expected NAME=v1,v2,... or NAME=@FILE, found " + inQuotes(text), ExitUsage);
    SweepValues sweep;
    sweep.name = QString::fromStdString(text.substr(0, sign));
    const std::string list = text.substr(sign + 1);
    sweep.values = list.front() == '@' ? valuesInFile(list.substr(1)) : valuesOf(list);
    return sweep;
}

} // namespace Orrery::Host
