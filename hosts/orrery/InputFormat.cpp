#include "hosts/orrery/InputFormat.h"

#include "hosts/orrery/Failure.h"
#include "hosts/orrery/PlainText.h"
#include "hosts/orrery/SourceFile.h"
#include "hosts/orrery/touchstone/TouchstoneFile.h"
#include "hosts/orrery/touchstone/TouchstoneLines.h"

#include <algorithm>
#include <optional>

namespace Orrery::Host {

namespace {

constexpr std::uint64_t s_longestStart = 16U << 20U;

// The first line with something on it that is no CSV comment, in lower case; `*comment` is the first of those. What
// isn't made of lines is none.
std::string firstLine(const std::string& path, std::string* comment)
{
    SourceFile file(path);
    std::string_view line;
    while (file.readLine(&line, s_longestStart)) {
        const std::string_view text = trimmed(line);
        if (text.empty())
            continue;
        if (text.find('\0') != std::string_view::npos)
            return {};
        if (text.front() != '#')
            return lowerCase(text);
        if (comment->empty())
            *comment = lowerCase(text);
    }
    return {};
}

bool beginsWith(const std::string& text, const char* beginning)
{
    return text.rfind(beginning, 0) == 0;
}

std::optional<InputFormat> formatOfName(const std::string& path)
{
    const std::string ending = lowerCase(path.substr(path.find_last_of("./") + 1));
    if (portsOfName(path) || ending == "ts")
        return InputFormat::Touchstone;
    if (ending == "csv" || ending == "tsv")
        return InputFormat::Csv;
    if (ending == "raw")
        return InputFormat::Raw;
    return std::nullopt;
}

bool isOptionWord(std::string_view word)
{
    static const char* const words[] = {"hz", "khz", "mhz", "ghz", "s",  "y", "z",
                                        "g",  "h",   "ma",  "db",  "ri", "r"};
    return std::any_of(std::begin(words), std::end(words),
                       [word](const char* known) { return word == known; });
}

bool isOptionLine(const std::string& comment)
{
    const std::string line = comment.empty() ? comment : comment.substr(1);
    const std::vector<std::string_view> words = wordsOf(line);
    return !words.empty() && isOptionWord(words.front());
}

} // namespace

InputFormat parseInputFormat(const std::string& text)
{
    if (text == "raw")
        return InputFormat::Raw;
    if (text == "touchstone")
        return InputFormat::Touchstone;
    if (text == "csv")
        return InputFormat::Csv;
    throw Failure("--format: expected raw, touchstone or csv, found " + inQuotes(text), ExitUsage);
}

InputFormat detectInputFormat(const std::string& path)
{
    const std::optional<InputFormat> named = formatOfName(path);
    std::string comment;
    std::string line;
    try {
        line = firstLine(path, &comment);
    } catch (const Failure&) {
        return named.value_or(InputFormat::Raw); // its reader tells the same
    }
    if (beginsWith(line, "title:"))
        return InputFormat::Raw;
    if (named)
        return *named;
    if (beginsWith(line, "!") || beginsWith(line, "[version]") || isOptionLine(comment))
        return InputFormat::Touchstone;
    return line.find_first_of(",;\t") != std::string::npos ? InputFormat::Csv : InputFormat::Raw;
}

} // namespace Orrery::Host
