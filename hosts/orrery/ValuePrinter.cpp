#include "hosts/orrery/ValuePrinter.h"

#include "hosts/orrery/ElementText.h"
#include "hosts/orrery/PlainText.h"

#include <string_view>

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

// Appends one field, in quotes if a reader would take it apart or cut its blanks.
void appendField(std::string* out, std::string_view field)
{
    const bool needsQuotes = field.find_first_of(",\"\r\n") != std::string_view::npos ||
                             (!field.empty() && (field.front() == ' ' || field.back() == ' '));
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
            out.write((first > 0 ? "\n[" : "[") + joined(shown) + ",:,:]\n");
        }
        for (std::uint64_t row = 0; row < matrix; row += columns)
            lines.printLine(first + row, columns);
        advance(&position, outer);
    }
}

class CsvPrinter
{
public:
    CsvPrinter(Output& out, const Selection& values)
        : m_out(out)
        , m_values(values)
        , m_elements(values.data)
    {
    }

    void print(const std::string& name);

private:
    void printHeader(const std::string& name, std::uint64_t columns);
    void printRecord(std::uint64_t row, std::uint64_t columns);
    void appendText(std::uint64_t position);

    Output& m_out;
    const Selection& m_values;
    ElementText m_elements;
    bool m_isComplex = false;
    bool m_isText = false;
    std::string m_text;
};

void CsvPrinter::print(const std::string& name)
{
    m_isComplex = m_elements.count() > 0 && m_elements.isComplex();
    m_isText = m_values.data.getWellKnownType() == WellKnownType::of<std::string>();
    const std::uint64_t columns = m_values.offsets == 0 ? 1 : m_elements.count() / m_values.offsets;
    printHeader(name, columns);
    for (std::uint64_t row = 0; row < m_values.offsets; ++row)
        printRecord(row, columns);
}

void CsvPrinter::printHeader(const std::string& name, std::uint64_t columns)
{
    Shape position(m_values.elementShape.size(), 0);
    m_out.write("offset");
    for (std::uint64_t column = 0; column < columns; ++column) {
        const std::string field = position.empty() ? name : name + '[' + joined(position) + ']';
        for (const char* const part : {".re", ".im"}) {
            m_out.buffer() += ',';
            appendField(&m_out.buffer(), m_isComplex ? field + part : field);
            if (!m_isComplex)
                break;
        }
        m_out.written();
        advance(&position, m_values.elementShape);
    }
    m_out.write("\n");
}

void CsvPrinter::appendText(std::uint64_t position)
{
    m_text.clear();
    m_elements.append(&m_text, position);
    appendField(&m_out.buffer(), m_text);
}

void CsvPrinter::printRecord(std::uint64_t row, std::uint64_t columns)
{
    std::string& buffer = m_out.buffer();
    buffer += std::to_string(m_values.firstOffset + row);
    for (std::uint64_t position = row * columns; position < (row + 1) * columns; ++position) {
        buffer += ',';
        if (m_isText) {
            appendText(position);
        } else if (m_isComplex) {
            m_elements.appendReal(&buffer, position);
            buffer += ',';
            m_elements.appendImaginary(&buffer, position);
        } else {
            m_elements.append(&buffer, position);
        }
        m_out.written();
    }
    buffer += '\n';
    m_out.written();
}

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

void printCsv(Output& out, const Selection& values, const std::string& name)
{
    CsvPrinter(out, values).print(name);
}

} // namespace Orrery::Host
