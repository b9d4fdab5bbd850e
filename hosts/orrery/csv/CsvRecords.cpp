#include "hosts/orrery/csv/CsvRecords.h"

#include "hosts/orrery/PlainText.h"

#include <cstring>

namespace Orrery::Host {

namespace {

constexpr std::uint64_t s_longestRecord = 16U << 20U;
constexpr int s_mostComments = 1000; // a note, not a way to fill the tree

bool isBlank(char c)
{
    return c == ' ' || c == '\t' || c == '\r';
}

/// Blanks at the ends of a field; a tab is none where it parts fields, and none gets here then.
std::string_view withoutBlanks(std::string_view text)
{
    while (!text.empty() && isBlank(text.front()))
        text.remove_prefix(1);
    while (!text.empty() && isBlank(text.back()))
        text.remove_suffix(1);
    return text;
}

char separatorOf(std::string_view header)
{
    bool isQuoted = false;
    bool hasSemicolon = false;
    for (const char c : header) {
        if (c == '"')
            isQuoted = !isQuoted;
        else if (c == '\t' && !isQuoted)
            return '\t';
        else if (c == ';' && !isQuoted)
            hasSemicolon = true;
    }
    return hasSemicolon ? ';' : ',';
}

// As in a file whose lines end in carriage returns alone, which would be one header without a record.
bool hasReturnWithin(std::string_view header)
{
    bool isQuoted = false;
    for (const char c : withoutBlanks(header)) {
        if (c == '"')
            isQuoted = !isQuoted;
        else if (c == '\r' && !isQuoted)
            return true;
    }
    return false;
}

} // namespace

void CsvRecords::requireText(std::string_view line) const
{
    if (std::memchr(line.data(), '\0', line.size()))
        m_file.fail("a line of text", inQuotes(line));
}

bool CsvRecords::isComment()
{
    if (m_text.empty() || m_text.front() != '#')
        return false;
    const std::string_view comment = withoutBlanks(m_text.substr(1));
    if (!comment.empty() && m_comments.size() < s_mostComments)
        m_comments += decoded(comment);
    return true;
}

bool CsvRecords::nextLine()
{
    while (m_file.readLine(&m_text, s_longestRecord)) {
        if (m_text.empty())
            continue;
        requireText(m_text);
        if (isComment() || withoutBlanks(m_text).empty())
            continue;
        m_line = m_file.lineNumber();
        return true;
    }
    return false;
}

bool CsvRecords::nextHeaderLine()
{
    if (!nextLine())
        return false;
    if (hasReturnWithin(m_text))
        m_file.fail("a line feed at the end of the header", inQuotes(m_text));
    return true;
}

bool CsvRecords::nextAndDetect()
{
    if (!nextHeaderLine())
        return false;
    m_separator = separatorOf(m_text);
    cut();
    return true;
}

bool CsvRecords::nextWith(char separator)
{
    if (!nextHeaderLine())
        return false;
    m_separator = separator;
    cut();
    return true;
}

bool CsvRecords::next()
{
    if (!nextLine())
        return false;
    cut();
    return true;
}

void CsvRecords::cut()
{
    m_fields.clear();
    if (std::memchr(m_text.data(), '"', m_text.size()))
        return cutQuoted();
    const char* at = m_text.data();
    const char* const end = at + m_text.size();
    while (true) {
        const auto left = static_cast<std::size_t>(end - at);
        const auto* const stop = static_cast<const char*>(std::memchr(at, m_separator, left));
        m_fields.push_back(withoutBlanks({at, stop ? static_cast<std::size_t>(stop - at) : left}));
        if (!stop)
            return;
        at = stop + 1;
    }
}

// `*at` is behind the opening quote, and goes behind the closing one.
void CsvRecords::readQuoted(std::size_t* at, std::string* field)
{
    while (true) {
        const std::size_t quote = m_record.find('"', *at);
        if (quote != std::string::npos) {
            field->append(m_record, *at, quote - *at);
            *at = quote + 1;
            if (*at == m_record.size() || m_record[*at] != '"')
                return;
            *field += '"';
            ++*at;
            continue;
        }
        field->append(m_record, *at, std::string::npos);
        *field += '\n';
        std::string_view line;
        const std::string expected =
            "the closing quote of a field of the record that begins in line " + std::to_string(m_line);
        if (field->size() > s_longestRecord)
            m_file.fail(expected, "more than " + std::to_string(s_longestRecord) + " bytes");
        if (!m_file.readLine(&line, s_longestRecord))
            m_file.fail(expected, "the end of the file");
        requireText(line);
        m_record.assign(line);
        *at = 0;
    }
}

void CsvRecords::cutQuoted()
{
    m_unquoted.clear();
    m_record.assign(m_text);
    std::size_t total = 0;
    for (std::size_t at = 0;;) {
        m_unquoted.emplace_back();
        std::string& field = m_unquoted.back();
        while (at < m_record.size() && m_record[at] != m_separator && isBlank(m_record[at]))
            ++at;
        const bool isQuoted = at < m_record.size() && m_record[at] == '"';
        if (isQuoted)
            readQuoted(&++at, &field);
        const std::size_t end = m_record.find(m_separator, at);
        const std::string_view rest =
            withoutBlanks(std::string_view(m_record).substr(at, end == std::string::npos ? end : end - at));
        if (isQuoted ? !rest.empty() : rest.find('"') != std::string_view::npos)
            m_file.fail("quotes around the whole of field " + std::to_string(m_unquoted.size()),
                        inQuotes(rest) + (isQuoted ? " behind them" : ""));
        if (!isQuoted)
            field = rest;
        total += field.size();
        if (total > s_longestRecord)
            m_file.fail("a record of at most " + std::to_string(s_longestRecord) + " bytes", "a longer one");
        if (end == std::string::npos)
            break;
        at = end + 1;
    }
    m_fields.assign(m_unquoted.begin(), m_unquoted.end());
}

} // namespace Orrery::Host
