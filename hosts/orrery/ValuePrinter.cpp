#include "hosts/orrery/ValuePrinter.h"

#include "hosts/orrery/ElementText.h"
#include "hosts/orrery/Failure.h"
#include "hosts/orrery/PlainText.h"

#include <algorithm>
#include <string_view>
#include <utility>

namespace Orrery::Host {

using Brindle::Quay::WellKnownType;

namespace {

using Shape = std::vector<std::uint64_t>;

// The next position of a counter over `shape`, the last digit fastest.
void advance(Shape* position, const Shape& shape)
{
    for (std::size_t i = shape.size(); i-- > 0;) {
        if (++(*position)[i] < shape[i])
            return;
        (*position)[i] = 0;
    }
}

std::string joined(const Shape& numbers)
{
    std::string text;
    for (const std::uint64_t number : numbers)
        text += (text.empty() ? "" : ",") + std::to_string(number);
    return text;
}

bool isBlank(char c)
{
    return c == ' ' || c == '\t';
}

// Appends one field, in quotes if a reader would take it apart or cut its blanks. At the begin of a line also if a reader
// would pass that line over: an empty one, or one that looks like a comment.
void appendField(std::string* out, std::string_view field, bool beginsLine)
{
    const bool isPassedOver = beginsLine && (field.empty() || field.front() == '#');
    const bool isCut = !field.empty() && (isBlank(field.front()) || isBlank(field.back()));
    const bool needsQuotes =
        isPassedOver || isCut || field.find_first_of(",;\t\"\r\n") != std::string_view::npos;
    if (!needsQuotes) {
        *out += field;
        return;
    }
    *out += '"';
    for (const char c : field) {
        if (c == '"')
            *out += '"';
        *out += c;
    }
    *out += '"';
}

class LinePrinter
{
public:
    LinePrinter(Output& out, const Selection& values)
        : m_out(out)
        , m_elements(values.data)
    {
        m_isText = values.data.getWellKnownType() == WellKnownType::of<std::string>();
    }

    std::uint64_t count() const { return m_elements.count(); }
    void printLine(std::uint64_t first, std::uint64_t count);

private:
    void append(std::uint64_t position);

    Output& m_out;
    ElementText m_elements;
    std::string m_text;
    bool m_isText = false;
};

void LinePrinter::append(std::uint64_t position)
{
    if (!m_isText) {
        m_elements.append(&m_out.buffer(), position);
        return;
    }
    m_text.clear();
    m_elements.append(&m_text, position);
    m_out.buffer() += printable(m_text);
}

void LinePrinter::printLine(std::uint64_t first, std::uint64_t count)
{
    for (std::uint64_t i = 0; i < count; ++i) {
        if (i > 0)
            m_out.buffer() += '\t';
        append(first + i);
        m_out.written();
    }
    m_out.buffer() += '\n';
    m_out.written();
}

void printMatrices(Output& out, LinePrinter& lines, const Selection& values)
{
    const Shape& shape = values.dimensions;
    Shape outer = shape;
    outer.resize(shape.size() - 2);
    const std::uint64_t columns = shape.back();
    const std::uint64_t matrix = columns * shape[shape.size() - 2];
    Shape position(outer.size(), 0);
    for (std::uint64_t first = 0; first < lines.count(); first += matrix) {
        if (!outer.empty()) {
            Shape shown = position;
            if (values.leadsWithOffset)
                shown.front() += values.firstOffset;
            out.write((first > 0 ? "\n" : "") + out.painted(Ink::Dim, '[' + joined(shown) + ",:,:]") + '\n');
        }
        for (std::uint64_t row = 0; row < matrix; row += columns)
            lines.printLine(first + row, columns);
        advance(&position, outer);
    }
}

// Puts a comma before every field of a line but its first. Returns whether this is that one.
bool separate(std::string* out, bool* isFirst)
{
    const bool beginsLine = std::exchange(*isFirst, false);
    if (!beginsLine)
        *out += ',';
    return beginsLine;
}

/// One column of CSV.
class CsvColumn
{
public:
    explicit CsvColumn(const ValueColumn& column)
        : m_column(column)
        , m_elements(column.values.data)
        , m_isComplex(m_elements.count() > 0 && m_elements.isComplex())
        , m_isText(column.values.data.getWellKnownType() == WellKnownType::of<std::string>())
    {
        const std::uint64_t offsets = column.values.offsets;
        m_lanes = offsets == 0 ? 1 : m_elements.count() / offsets;
    }

    void appendNames(Output& out, bool* isFirst) const;
    void appendRecord(Output& out, std::uint64_t row, bool* isFirst);

private:
    void appendText(Output& out, std::uint64_t position, bool beginsLine);

    const ValueColumn& m_column;
    ElementText m_elements;
    bool m_isComplex;
    bool m_isText;
    std::uint64_t m_lanes = 1;
    std::string m_text;
};

void CsvColumn::appendNames(Output& out, bool* isFirst) const
{
    const Shape& shape = m_column.values.elementShape;
    Shape position(shape.size(), 0);
    for (std::uint64_t lane = 0; lane < m_lanes; ++lane) {
        const std::string field =
            position.empty() ? m_column.name : m_column.name + '[' + joined(position) + ']';
        for (const char* const part : {".re", ".im"}) {
            const bool beginsLine = separate(&out.buffer(), isFirst);
            appendField(&out.buffer(), (m_isComplex ? field + part : field) + m_column.unitsSuffix,
                        beginsLine);
            if (!m_isComplex)
                break;
        }
        out.written();
        advance(&position, shape);
    }
}

void CsvColumn::appendText(Output& out, std::uint64_t position, bool beginsLine)
{
    m_text.clear();
    m_elements.append(&m_text, position);
    appendField(&out.buffer(), m_text, beginsLine);
}

void CsvColumn::appendRecord(Output& out, std::uint64_t row, bool* isFirst)
{
    std::string& buffer = out.buffer();
    for (std::uint64_t position = row * m_lanes; position < (row + 1) * m_lanes; ++position) {
        const bool beginsLine = separate(&buffer, isFirst);
        if (m_isText) {
            appendText(out, position, beginsLine);
        } else if (m_isComplex) {
            m_elements.appendReal(&buffer, position);
            buffer += ',';
            m_elements.appendImaginary(&buffer, position);
        } else {
            m_elements.append(&buffer, position);
        }
        out.written();
    }
}

/// One column of a table for a person.
class TableColumn
{
public:
    explicit TableColumn(const ValueColumn& column)
        : m_elements(column.values.data)
        , m_isText(column.values.data.getWellKnownType() == WellKnownType::of<std::string>())
    {
        m_lanes = column.values.offsets == 0 ? 1 : m_elements.count() / column.values.offsets;
    }

    std::uint64_t lanes() const { return m_lanes; }
    std::uint64_t count() const { return m_elements.count(); }

    /// Of one value at each offset, the same stands at all lanes.
    std::string cell(std::uint64_t offset, std::uint64_t lane) const
    {
        std::string text;
        m_elements.append(&text, m_lanes == 1 ? offset : offset * m_lanes + lane);
        return m_isText ? printable(text) : text;
    }

private:
    ElementText m_elements;
    bool m_isText;
    std::uint64_t m_lanes = 1;
};

void requireSameOffsets(const std::vector<ValueColumn>& columns)
{
    const std::uint64_t offsets = columns.back().values.offsets;
    for (const ValueColumn& column : columns) {
        if (column.values.offsets != offsets)
            throw Failure("the axis " + inQuotes(column.name) + " has other offsets than the values");
    }
}

/// The lines of one piece of a table.
class TableRows
{
public:
    TableRows(const std::vector<ValueColumn>& columns, bool showsOffset)
        : m_values(columns.back().values)
        , m_position(m_values.elementShape.size(), 0)
        , m_showsOffset(showsOffset)
    {
        requireSameOffsets(columns);
        m_columns.reserve(columns.size());
        for (const ValueColumn& column : columns) {
            m_columns.emplace_back(column);
            const std::uint64_t lanes = m_columns.back().lanes();
            if (lanes != 1 && column.values.elementShape != m_values.elementShape)
                throw Failure("the axis " + inQuotes(column.name) + " has other dimensions than the values");
        }
    }

    /// False behind the last line.
    bool next(std::vector<std::string>* cells)
    {
        if (m_columns.back().count() == 0 || m_offset == m_values.offsets)
            return false;
        cells->clear();
        if (m_showsOffset) {
            const std::string offset = std::to_string(m_values.firstOffset + m_offset);
            cells->push_back(m_position.empty() ? offset : offset + ',' + joined(m_position));
        }
        for (const TableColumn& column : m_columns)
            cells->push_back(column.cell(m_offset, m_lane));
        advance(&m_position, m_values.elementShape);
        if (++m_lane == m_columns.back().lanes()) {
            m_lane = 0;
            ++m_offset;
        }
        return true;
    }

private:
    const Selection& m_values;
    std::vector<TableColumn> m_columns;
    Shape m_position;
    std::uint64_t m_offset = 0;
    std::uint64_t m_lane = 0;
    bool m_showsOffset;
};

} // namespace

void printValues(Output& out, const Selection& values)
{
    LinePrinter lines(out, values);
    if (lines.count() == 0)
        return;
    if (values.dimensions.size() >= 2) {
        printMatrices(out, lines, values);
        return;
    }
    for (std::uint64_t i = 0; i < lines.count(); ++i)
        lines.printLine(i, 1);
}

void printCsvHeader(Output& out, const std::vector<ValueColumn>& columns, CsvOffsets offsets)
{
    bool isFirst = offsets == CsvOffsets::Hidden;
    if (!isFirst)
        out.write("offset");
    for (const ValueColumn& column : columns)
        CsvColumn(column).appendNames(out, &isFirst);
    out.write("\n");
}

void printCsvRecords(Output& out, const std::vector<ValueColumn>& columns, CsvOffsets offsets)
{
    requireSameOffsets(columns);
    std::vector<CsvColumn> written(columns.begin(), columns.end());
    const Selection& values = columns.back().values;
    for (std::uint64_t row = 0; row < values.offsets; ++row) {
        bool isFirst = offsets == CsvOffsets::Hidden;
        if (!isFirst)
            out.buffer() += std::to_string(values.firstOffset + row);
        for (CsvColumn& column : written)
            column.appendRecord(out, row, &isFirst);
        out.write("\n");
    }
}

void TablePrinter::print(const std::vector<ValueColumn>& columns)
{
    if (m_widths.empty())
        printHeading(columns);
    TableRows rows(columns, m_showsOffset);
    std::vector<std::string> cells;
    while (rows.next(&cells))
        printLine(cells);
}

void TablePrinter::printHeading(const std::vector<ValueColumn>& columns)
{
    m_showsOffset = m_showsOffset || !columns.back().values.elementShape.empty();
    std::vector<std::string> names;
    if (m_showsOffset)
        names.emplace_back("offset");
    for (const ValueColumn& column : columns)
        names.push_back(printable(column.name) + column.unitsSuffix);
    for (const std::string& name : names)
        m_widths.push_back(columnsOf(name));

    constexpr int linesToMeasure = 1000;
    TableRows rows(columns, m_showsOffset);
    std::vector<std::string> cells;
    for (int line = 0; line < linesToMeasure && rows.next(&cells); ++line) {
        for (std::size_t i = 0; i < cells.size(); ++i)
            m_widths[i] = std::max(m_widths[i], columnsOf(cells[i]));
    }
    printLine(names, Ink::Heading);
}

void TablePrinter::printLine(const std::vector<std::string>& cells, Ink ink)
{
    std::string& buffer = m_out.buffer();
    for (std::size_t i = 0; i + 1 < cells.size(); ++i) {
        const bool isOffset = i == 0 && m_showsOffset && ink == Ink::Plain;
        buffer += m_out.painted(isOffset ? Ink::Dim : ink, cells[i]);
        buffer.append(m_widths[i] + 2 - std::min(m_widths[i], columnsOf(cells[i])), ' ');
    }
    buffer += m_out.painted(ink, cells.back()) + '\n';
    m_out.written();
}

} // namespace Orrery::Host
