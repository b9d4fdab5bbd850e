#include "hosts/orrery/manual/Roff.h"

#include <QString>
#include <QVector>

#include <algorithm>
#include <cstdio>

namespace Orrery::Host {

namespace {

bool isLetter(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

void appendEscaped(std::string* out, uint character, bool isCode)
{
    switch (character) {
    case '\\':
        *out += "\\(rs";
        return;
    case '-':
        *out += isCode ? "\\-" : "-";
        return;
    case '\'':
        *out += isCode ? "\\(aq" : "\\(cq";
        return;
    case '"':
        *out += "\\(dq";
        return;
    case '`':
        *out += "\\(ga";
        return;
    case '^':
        *out += "\\(ha";
        return;
    case '~':
        *out += "\\(ti";
        return;
    default:
        break;
    }
    if (character < 0x80) {
        *out += static_cast<char>(character);
        return;
    }
    char name[16];
    std::snprintf(name, sizeof name, "\\[u%04X]", character);
    *out += name;
}

std::string escaped(std::string_view text, bool isCode)
{
    std::string out;
    for (const uint character : QString::fromUtf8(text.data(), static_cast<int>(text.size())).toUcs4())
        appendEscaped(&out, character, isCode);
    return out;
}

// A dot in front would make a request of the line.
std::string asText(const std::string& line)
{
    return !line.empty() && line.front() == '.' ? "\\&" + line : line;
}

bool isOption(std::string_view word)
{
    return word.size() > 1 && word[0] == '-' && (isLetter(word[1]) || (word[1] == '-' && word.size() > 2));
}

bool contains(const std::vector<std::string>& list, std::string_view word)
{
    return std::find(list.begin(), list.end(), word) != list.end();
}

/// Reads prose word by word.
class Prose
{
public:
    Prose(std::string_view text, const std::string& program, const std::vector<std::string>& commands,
          const std::vector<std::string>& placeholders)
        : m_text(text)
        , m_program(program)
        , m_commands(commands)
        , m_placeholders(placeholders)
    {
    }

    std::string marked();

private:
    bool takeQuoted();
    bool takeReference();
    void takeWord();
    std::string_view wordAhead() const;

    std::string_view m_text;
    const std::string& m_program;
    const std::vector<std::string>& m_commands;
    const std::vector<std::string>& m_placeholders;
    std::string m_out;
    bool m_isBehindOption = false;
};

// A run of characters that belong together in "--range A:B" or "moving-average:WINDOW".
std::string_view Prose::wordAhead() const
{
    std::size_t end = 0;
    if (isOption(m_text)) {
        while (end < m_text.size() && (isLetter(m_text[end]) || m_text[end] == '-'))
            ++end;
    } else {
        while (end < m_text.size() && isLetter(m_text[end]))
            ++end;
    }
    return m_text.substr(0, std::max<std::size_t>(end, 1));
}

bool Prose::takeQuoted()
{
    const bool isOpening =
        m_text.front() == '\'' && (m_out.empty() || m_out.back() == ' ' || m_out.back() == '(');
    const std::size_t end = isOpening ? m_text.find('\'', 1) : std::string_view::npos;
    if (end == std::string_view::npos)
        return false;
    const std::string_view quoted = m_text.substr(1, end - 1);
    const std::string_view command = quoted.substr(std::min(m_program.size() + 1, quoted.size()));
    if (quoted.substr(0, m_program.size() + 1) != m_program + ' ')
        m_out += "\\(oq" + escaped(quoted, true) + "\\(cq";
    else if (contains(m_commands, command))
        m_out += roffReference(m_program + '-' + std::string(command));
    else
        m_out += roffBold(quoted);
    m_text.remove_prefix(end + 1);
    return true;
}

// "h5dump(1)", or "orrery(1)"
bool Prose::takeReference()
{
    const std::size_t bracket = m_text.find("(1)");
    if (bracket == std::string_view::npos || bracket == 0 ||
        m_text.substr(0, bracket).find(' ') != std::string_view::npos)
        return false;
    m_out += roffReference(m_text.substr(0, bracket));
    m_text.remove_prefix(bracket + 3);
    return true;
}

void Prose::takeWord()
{
    const std::string_view word = wordAhead();
    if (isOption(word)) {
        m_out += roffBold(word);
        m_isBehindOption = true;
    } else if (contains(m_placeholders, word) && (word.size() > 1 || m_isBehindOption)) {
        m_out += roffItalic(word);
    } else {
        if (word != " " && word != ":")
            m_isBehindOption = false;
        std::size_t bytes = word.size(); // all of a character that isn't ASCII
        while (bytes < m_text.size() && (static_cast<unsigned char>(m_text[bytes]) & 0xC0U) == 0x80U)
            ++bytes;
        m_out += escaped(m_text.substr(0, bytes), false);
        m_text.remove_prefix(bytes);
        return;
    }
    m_text.remove_prefix(word.size());
}

std::string Prose::marked()
{
    bool isAtWord = true;
    while (!m_text.empty()) {
        const char first = m_text.front();
        const bool isDone = isAtWord && (takeQuoted() || takeReference());
        if (!isDone) {
            if (isAtWord || !isOption(m_text)) {
                takeWord();
            } else { // a hyphen inside a word
                m_out += '-';
                m_text.remove_prefix(1);
            }
        }
        isAtWord = !isDone && (first == ' ' || first == '(');
    }
    return m_out;
}

} // namespace

std::string roffLiteral(std::string_view text)
{
    return asText(escaped(text, true));
}

std::string roffBold(std::string_view text)
{
    return "\\fB" + roffLiteral(text) + "\\fR";
}

std::string roffItalic(std::string_view text)
{
    return "\\fI" + roffLiteral(text) + "\\fR";
}

std::string roffReference(std::string_view page)
{
    return roffBold(page) + "(1)";
}

std::string roffText(const std::string& text, const std::string& program,
                     const std::vector<std::string>& commands, const std::vector<std::string>& placeholders)
{
    std::string line = text;
    std::replace(line.begin(), line.end(), '\n', ' ');
    return asText(Prose(line, program, commands, placeholders).marked());
}

} // namespace Orrery::Host
