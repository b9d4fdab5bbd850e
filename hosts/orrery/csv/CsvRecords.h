#pragma once

#include "hosts/orrery/SourceFile.h"

#include <QStringList>

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace Orrery::Host {

/// The records of a CSV file, each cut into its fields as RFC 4180 has it.
///
/// Shape:  blanks around a field don't count. A field in quotes may hold separators, line ends and, doubled, quotes.
///         Lines without anything and lines that begin with '#' are no records.
class CsvRecords
{
public:
    explicit CsvRecords(SourceFile& file)
        : m_file(file)
    {
    }

    /// Go to the first record, the header, and take the separator from it: a tab if there is one outside quotes, else a
    /// semicolon, else a comma.
    ///
    /// Errors: false at the end of the file. Failure for what is no text, a quote that isn't closed, text beside a
    ///         quoted field, a carriage return outside quotes before the end of the line, and a record above 16 MiB.
    bool nextAndDetect();
    bool nextWith(char separator);

    /// Go to the next record.
    ///
    /// Errors: as above.
    bool next();

    char separator() const { return m_separator; }

    /// The fields of the present record, without quotes. Valid until the next one.
    const std::vector<std::string_view>& fields() const { return m_fields; }

    /// Number of the line in which the present record begins, from 1.
    std::uint64_t line() const { return m_line; }

    /// The comments so far, without their "#"; of very many the first ones.
    const QStringList& comments() const { return m_comments; }

private:
    bool nextLine();
    bool nextHeaderLine();
    bool isComment();
    void cut();
    void cutQuoted();
    void readQuoted(std::size_t* at, std::string* field);
    void requireText(std::string_view line) const;

    SourceFile& m_file;
    std::string_view m_text; // of the present record, as far as it is read
    std::string m_record;    // of several lines
    std::vector<std::string> m_unquoted;
    std::vector<std::string_view> m_fields;
    QStringList m_comments;
    std::uint64_t m_line = 0;
    char m_separator = ',';
};

} // namespace Orrery::Host
