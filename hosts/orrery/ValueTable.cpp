#include "hosts/orrery/ValueTable.h"

#include "hosts/orrery/ColumnReader.h"
#include "hosts/orrery/Diagnostics.h"
#include "hosts/orrery/Failure.h"
#include "hosts/orrery/PlainText.h"
#include "hosts/orrery/ValueJson.h"
#include "hosts/orrery/ValuePrinter.h"

#include <algorithm>
#include <memory>
#include <utility>
#include <vector>

namespace Orrery::Host {

namespace {

constexpr int s_mostAxes = 8; // more than anybody looks at; a hostile file may have millions

/// Prints one variable; the parts of printVariable().
class VariablePrinter
{
public:
    VariablePrinter(Output& out, const Variable& variable, const TableOptions& options);

    void print();

private:
    void addAxis(const Variable& variable, int index);
    std::vector<ValueColumn> readColumns(std::uint64_t begin, std::uint64_t end);
    void printTable();
    void printAsCsv();
    void printAsJson();
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

template <class PrintBlock>
void VariablePrinter::forEachBlock(const PrintBlock& printBlock)
{
    const std::uint64_t length = m_values.blockLength();
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

void VariablePrinter::printAsJson()
{
    ValueJson json(m_out);
    json.begin(*m_options.json, m_span, m_values.reader().offsets());
    for (const std::unique_ptr<ColumnReader>& axis : m_axes)
        json.addAxis(*axis, m_span);
    json.addValues(m_values, m_span);
    json.end();
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
    if (m_options.json)
        printAsJson();
    else if (m_options.isCsv)
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
