#pragma once

#include "hosts/orrery/SourceFile.h"

#include <QStringList>

#include <string>
#include <string_view>
#include <vector>

namespace Orrery::Host {

/// The lines of a Touchstone file that say something, without their comments and cut into words.
class TouchstoneLines
{
public:
    explicit TouchstoneLines(SourceFile& file)
        : m_file(file)
    {
    }

    /// Go to the next line that has words. False at the end of the file.
    ///
    /// Errors: Failure for a line that is no text or longer than a mebibyte.
    bool next();

    /// Let the next call of next() stay at this line.
    void putBack() { m_isPutBack = true; }

    /// The present line, without comment and blanks at its ends. Valid until the next one.
    std::string_view text() const { return m_text; }
    const std::vector<std::string_view>& words() const { return m_words; }
    std::uint64_t number() const { return m_file.lineNumber(); }

    /// The line begins with '[': "[Number of Ports] 2".
    bool isKeyword() const { return !m_text.empty() && m_text.front() == '['; }

    /// What stands between the brackets, in lower case and with single blanks; `*rest` is what stands behind them.
    ///
    /// Errors: Failure without a closing bracket.
    std::string keyword(std::string_view* rest) const;

    /// Whether this is a line of options.
    bool isOptions() const { return !m_text.empty() && m_text.front() == '#'; }

    /// The comments so far that were no end of another line; of very many the first ones.
    const QStringList& comments() const { return m_comments; }

    /// Bytes that lie behind the present line.
    std::uint64_t remaining() const { return m_file.remaining(); }

    /// Whether the last line of the file had an end.
    bool isLineEnded() const { return m_file.isLineEnded(); }

    /// As SourceFile::fail().
    [[noreturn]] void fail(const std::string& expected, const std::string& found) const
    {
        m_file.fail(expected, found);
    }

    /// As fail(), with the present line as what was found.
    [[noreturn]] void failHere(const std::string& expected) const;

    /// As fail(), with the end of the file as what was found.
    [[noreturn]] void failAtEnd(const std::string& expected) const { fail(expected, "the end of the file"); }

private:
    void takeLine(std::string_view line);

    SourceFile& m_file;
    std::string_view m_text;
    std::vector<std::string_view> m_words;
    QStringList m_comments;
    bool m_isPutBack = false;
};

/// Words between blanks.
std::vector<std::string_view> wordsOf(std::string_view text);

/// ASCII letters in lower case.
std::string lowerCase(std::string_view text);

} // namespace Orrery::Host
