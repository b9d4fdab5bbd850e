#include "hosts/orrery/ValueTable.h"

#include "foundations/variant/VariantOperations.h"
#include "hosts/orrery/Diagnostics.h"
#include "hosts/orrery/ElementText.h"
#include "hosts/orrery/Failure.h"
#include "hosts/orrery/PlainText.h"
#include "hosts/orrery/UnitText.h"
#include "hosts/orrery/ValuePrinter.h"

#include <algorithm>
#include <complex>
#include <memory>
#include <stdexcept>
#include <utility>
#include <vector>

namespace Orrery::Host {

using Brindle::Quay::BVariant;
using Brindle::Quay::WellKnownType;

namespace {

constexpr std::uint64_t s_blockElements = std::uint64_t(1) << 20U;
constexpr int s_mostAxes = 8; // more than anybody looks at; a hostile file may have millions

/// The values of one variable, read block by block in one unit.
class ColumnReader
{
public:
    explicit ColumnReader(const Variable& variable)
        : m_name(variable.GetName().toStdString())
        , m_reader(variable)
        , m_units(unitsOf(variable)) // a function has told them by now
    {
    }

    /// Errors: Failure for a variable without units, and for units of another kind.
    void convertTo(const Units& target);

    /// Convert to the display units of the variable, if it has any.
    void preferDisplayUnits(const Variable& variable);

    /// Show complex values as real ones if all of them are, as a frequency of a complex plot is.
    void preferReal();

    const OffsetReader& reader() const { return m_reader; }

    ValueColumn read(std::uint64_t begin, std::uint64_t end);
    ValueColumn readOne(std::uint64_t offset);

private:
    ValueColumn prepared(Selection values);
    void keepParts(BVariant* data);

    std::string m_name;
    OffsetReader m_reader;
    std::optional<Units> m_units;
    std::optional<Units> m_target;
    bool m_isShownAsReal = false;
    std::optional<bool> m_isComplex; // of the first block; a table has either one column for it or two
};

bool isComplex(const BVariant& data)
{
    return !data.isEmpty() && ElementText(data).isComplex();
}

void ColumnReader::convertTo(const Units& target)
{
    if (!m_units)
        throw Failure("has no units, and can't be converted to " + unitsLabel(target));
    requireCommensurable(*m_units, target);
    if (*m_units != target)
        m_target = target;
}

void ColumnReader::preferDisplayUnits(const Variable& variable)
{
    if (const std::optional<Units> shown = shownUnitsOf(variable); m_units && shown)
        convertTo(*shown);
}

void ColumnReader::preferReal()
{
    BVariant data;
    if (m_reader.isHeld())
        data = m_reader.held().data;
    else if (m_reader.offsets() > 0 &&
             m_reader.offsets() <= s_blockElements) // worth a look before it is printed
        data = m_reader.read(0, m_reader.offsets()).data;
    if (!isComplex(data))
        return;
    static_cast<void>(data.constData()); // damaged data tell so themselves
    try {
        convertInPlace(data, WellKnownType::of<double>());
        m_isShownAsReal = true;
    } catch (const std::runtime_error&) {
        m_isShownAsReal = false; // there are imaginary parts
    }
}

// Blocks of a joined variable may be of several types; the columns are those of the first.
void ColumnReader::keepParts(BVariant* data)
{
    if (data->isEmpty())
        return;
    const bool hasParts = isComplex(*data);
    if (!m_isComplex)
        m_isComplex = hasParts;
    if (*m_isComplex && !hasParts)
        convertInPlace(*data, WellKnownType::of<std::complex<double>>());
    if (!*m_isComplex && hasParts)
        throw Failure("the values are real at first and complex later; --range shows them apart");
}

ValueColumn ColumnReader::prepared(Selection values)
{
    if (m_isShownAsReal)
        convertInPlace(values.data, WellKnownType::of<double>());
    keepParts(&values.data);
    if (m_target && !values.data.isEmpty()) {
        static_cast<void>(values.data.constData()); // damaged data tell so themselves
        BVariant converted;
        if (m_units->ConvertedTo(*m_target, values.data, &converted) < 0)
            throw Failure("values of the type " + Host::elementTypeName(values.data.getWellKnownType()) +
                          " can't be converted");
        values.data = std::move(converted);
    }
    return {m_name, unitsSuffix(m_target ? m_target : m_units), std::move(values)};
}

ValueColumn ColumnReader::read(std::uint64_t begin, std::uint64_t end)
{
    return prepared(begin == end ? Selection() : m_reader.read(begin, end));
}

ValueColumn ColumnReader::readOne(std::uint64_t offset)
{
    return prepared(m_reader.readOne(offset));
}

std::uint64_t countOf(const std::vector<std::uint64_t>& shape)
{
    std::uint64_t count = 1;
    for (const std::uint64_t size : shape)
        count *= size;
    return count;
}

/// Prints one variable; the parts of printVariable().
class VariablePrinter
{
public:
    VariablePrinter(Output& out, const Variable& variable, const TableOptions& options);

    void print();

private:
    void addAxis(const Variable& variable, int index);
    std::uint64_t blockLength() const;
    std::vector<ValueColumn> readColumns(std::uint64_t begin, std::uint64_t end);
    void printTable();
    void printAsCsv();
    void printPlain();

    template <class PrintBlock>
    void forEachBlock(const PrintBlock& printBlock);

    Output& m_out;
    const TableOptions& m_options;
    ColumnReader m_values;
    OffsetSpan m_span;
    std::vector<std::unique_ptr<ColumnReader>> m_axes;
};

VariablePrinter::VariablePrinter(Output& out, const Variable& variable, const TableOptions& options)
    : m_out(out)
    , m_options(options)
    , m_values(variable)
{
    m_span = spanOf(options.range.value_or(OffsetRange()), m_values.reader().offsets());
    if (options.units)
        m_values.convertTo(*options.units);
    else
        m_values.preferDisplayUnits(variable);
    const int axes = variable.GetIndepCount();
    for (int i = 0; i < std::min(axes, s_mostAxes); ++i)
        addAxis(variable, i);
    if (axes > s_mostAxes)
        warn("of " + std::to_string(axes) + " axes the first " + std::to_string(s_mostAxes) + " are shown");
}

void VariablePrinter::addAxis(const Variable& variable, int index)
{
    Variable* axis = nullptr;
    if (variable.GetIndepVariable(&axis, index) < 0 || !axis) {
        warn("axis " + std::to_string(index + 1) + " leads nowhere and is left out");
        return;
    }
    const std::uint64_t offsets = axis->GetMaxIndepOffset();
    const std::string name = inQuotes(axis->GetName().toStdString());
    if (offsets != m_values.reader().offsets()) {
        warn("the axis " + name + " has " + std::to_string(offsets) + " values where the variable has " +
             std::to_string(m_values.reader().offsets()) + ", and is left out");
        return;
    }
    m_axes.push_back(std::make_unique<ColumnReader>(*axis));
    m_axes.back()->preferDisplayUnits(*axis);
    m_axes.back()->preferReal();
}

std::uint64_t VariablePrinter::blockLength() const
{
    const OffsetReader& reader = m_values.reader();
    const std::uint64_t elements =
        reader.isHeld() ? std::max<std::uint64_t>(countOf(reader.held().elementShape), 1) : 1;
    return std::max<std::uint64_t>(s_blockElements / elements, 1);
}

template <class PrintBlock>
void VariablePrinter::forEachBlock(const PrintBlock& printBlock)
{
    const std::uint64_t length = blockLength();
    for (std::uint64_t begin = m_span.begin; begin < m_span.end;) {
        const std::uint64_t end = begin + std::min(length, m_span.end - begin);
        printBlock(begin, end);
        begin = end;
    }
}

std::vector<ValueColumn> VariablePrinter::readColumns(std::uint64_t begin, std::uint64_t end)
{
    std::vector<ValueColumn> columns;
    for (const std::unique_ptr<ColumnReader>& axis : m_axes)
        columns.push_back(axis->read(begin, end));
    columns.push_back(m_values.read(begin, end));
    return columns;
}

void VariablePrinter::printTable()
{
    TablePrinter table(m_out, m_options.range.has_value());
    if (m_span.begin == m_span.end)
        table.print(readColumns(m_span.begin, m_span.end));
    forEachBlock([&](std::uint64_t begin, std::uint64_t end) { table.print(readColumns(begin, end)); });
}

void VariablePrinter::printAsCsv()
{
    bool isFirst = true;
    if (m_span.begin == m_span.end)
        printCsvHeader(m_out, readColumns(m_span.begin, m_span.end));
    forEachBlock([&](std::uint64_t begin, std::uint64_t end) {
        const std::vector<ValueColumn> columns = readColumns(begin, end);
        if (std::exchange(isFirst, false))
            printCsvHeader(m_out, columns);
        printCsvRecords(m_out, columns);
    });
}

void VariablePrinter::printPlain()
{
    const OffsetReader& reader = m_values.reader();
    if (m_options.range && m_options.range->isSingle)
        return printValues(m_out, m_values.readOne(m_span.begin).values);
    // Only lines that stand by themselves can be printed block by block.
    const bool isCuttable =
        !reader.isHeld() || (reader.held().leadsWithOffset && reader.held().elementShape.size() < 2);
    if (!isCuttable)
        return printValues(m_out, m_values.read(m_span.begin, m_span.end).values);
    forEachBlock([&](std::uint64_t begin, std::uint64_t end) {
        printValues(m_out, m_values.read(begin, end).values);
    });
}

void VariablePrinter::print()
{
    if (m_options.isCsv)
        printAsCsv();
    else if (!m_axes.empty())
        printTable();
    else
        printPlain();
}

} // namespace

void printVariable(Output& out, const Variable& variable, const TableOptions& options)
{
    VariablePrinter(out, variable, options).print();
}

} // namespace Orrery::Host
