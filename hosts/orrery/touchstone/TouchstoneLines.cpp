#include "hosts/orrery/touchstone/TouchstoneLines.h"

#include "hosts/orrery/PlainText.h"

#include <algorithm>

namespace Orrery::Host {

namespace {

constexpr std::uint64_t s_longestLine = 1U << 20U;
constexpr int s_mostComments = 1000; // a note, not a way to fill the tree

} // namespace

std::string lowerCase(std::string_view text)
{
    std::string lower(text);
    std::transform(lower.begin(), lower.end(), lower.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c; });
    return lower;
}

std::vector<std::string_view> wordsOf(std::string_view text)
{
    const char* const blanks = " \t\r\f\v";
    std::vector<std::string_view> words;
    for (std::size_t at = text.find_first_not_of(blanks); at != std::string_view::npos;) {
        const std::size_t end = std::min(text.find_first_of(blanks, at), text.size());
        words.push_back(text.substr(at, end - at));
        at = text.find_first_not_of(blanks, end);
    }
    return words;
}

void TouchstoneLines::takeLine(std::string_view line)
{
    if (line.find('\0') != std::string_view::npos)
        fail("a line of text", inQuotes(line));
    const std::size_t mark = line.find('!');
    m_text = trimmed(line.substr(0, mark));
    m_words = wordsOf(m_text);
    if (!m_words.empty() || mark == std::string_view::npos || m_comments.size() >= s_mostComments)
        return;
    const std::string_view comment = trimmed(line.substr(mark + 1));
    if (!comment.empty())
        m_comments += decoded(comment);
}

bool TouchstoneLines::next()
{
    if (m_isPutBack) {
        m_isPutBack = false;
        return true;
    }
    m_text = {};
    m_words.clear();
    std::string_view line;
    while (m_file.readLine(&line, s_longestLine)) {
        takeLine(line);
        if (!m_words.empty())
            return true;
    }
    return false;
}

std::string TouchstoneLines::keyword(std::string_view* rest) const
{
    const std::size_t end = m_text.find(']');
    if (end == std::string_view::npos)
        failHere("']' behind a keyword");
    *rest = trimmed(m_text.substr(end + 1));
    std::string name;
    for (const std::string_view word : wordsOf(m_text.substr(1, end - 1)))
        name += (name.empty() ? "" : " ") + lowerCase(word);
    return name;
}

void TouchstoneLines::failHere(const std::string& expected) const
{
    fail(expected, inQuotes(m_text));
}

} // namespace Orrery::Host
