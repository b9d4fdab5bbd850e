#include "hosts/orrery/csv/CsvFile.h"

#include "foundations/variant/VariantOperations.h"
#include "hosts/orrery/Numbers.h"
#include "hosts/orrery/PlainText.h"
#include "hosts/orrery/csv/CsvHeadings.h"
#include "hosts/orrery/csv/CsvRecords.h"
#include "hosts/orrery/csv/CsvTypes.h"

#include <algorithm>
#include <charconv>
#include <complex>
#include <cstring>
#include <utility>

namespace Orrery::Host {

using Brindle::Quay::BVariant;
using Brindle::Quay::WellKnownType;

namespace {

constexpr std::size_t s_mostColumns = 16384; // as many as spreadsheets have

/// The columns of one variable, and where their cells go.
struct Target
{
    CsvColumn column;
    CsvTypes types;
    WellKnownType type;
    BVariant data;
    char* to = nullptr; ///< place of the next cell
};

template <class T>
void store(char** to, const T& value)
{
    std::memcpy(*to, &value, sizeof value);
    *to += sizeof value;
}

template <class T>
bool storeInteger(std::string_view cell, char** to)
{
    if (!cell.empty() && cell.front() == '+')
        cell.remove_prefix(1);
    T value = 0;
    const auto [stop, error] = std::from_chars(cell.data(), cell.data() + cell.size(), value);
    store(to, value);
    return error == std::errc() && stop == cell.data() + cell.size();
}

std::string textOf(std::string_view cell)
{
    const bool isPlain = std::all_of(cell.begin(), cell.end(), [](char c) { return c >= 0; });
    return isPlain ? std::string(cell) : decoded(cell).toStdString();
}

/// One reading of the file, the same each time.
class Reading
{
public:
    Reading(const std::string& path, const CsvOptions& options, SourceFile::Progress progress)
        : m_options(options)
        , m_file(path, std::move(progress))
        , m_records(m_file)
    {
        if (!(options.separator ? m_records.nextWith(*options.separator) : m_records.nextAndDetect()))
            m_file.fail("a header line with the names of the columns", "the end of the file");
        m_columns = m_records.fields().size();
    }

    std::vector<CsvColumn> readHeader();

    /// Errors: false at the end of the file. Failure for a record that has more or fewer fields than the header.
    bool next();

    std::string_view cell(std::size_t column) const { return m_records.fields()[column]; }
    const QStringList& comments() const { return m_records.comments(); }

    [[noreturn]] void failAt(const Target& target, const std::string& expected, std::size_t column) const;
    [[noreturn]] void failChanged() const { m_file.fail("the values of the first look", "others"); }

private:
    const CsvOptions& m_options;
    SourceFile m_file;
    CsvRecords m_records;
    std::size_t m_columns = 0;
};

std::vector<CsvColumn> Reading::readHeader()
{
    if (m_columns > s_mostColumns)
        m_file.fail("at most " + std::to_string(s_mostColumns) + " columns", std::to_string(m_columns));
    std::vector<CsvHeading> headings(m_columns);
    for (std::size_t i = 0; i < m_columns; ++i) {
        const std::string number = std::to_string(i + 1);
        std::string why;
        if (!parseHeading(cell(i), m_options.ignoresUnits, &headings[i], &why))
            m_file.fail("units in the brackets of column " + number, inQuotes(cell(i)) + ": " + why);
        if (headings[i].name.isEmpty())
            headings[i].name = headings[i].base = QStringLiteral("column") + QString::fromStdString(number);
    }
    return joinHeadings(headings);
}

bool Reading::next()
{
    if (!m_records.next())
        return false;
    if (m_records.fields().size() != m_columns)
        m_file.fail(std::to_string(m_columns) + " fields, as the header has",
                    std::to_string(m_records.fields().size()));
    return true;
}

void Reading::failAt(const Target& target, const std::string& expected, std::size_t column) const
{
    m_file.fail(expected + " in column " + std::to_string(column + 1) + ", " +
                    inQuotes(target.column.name.toStdString()),
                inQuotes(cell(column)));
}

bool mustBeNumeric(const Target& target)
{
    return target.column.units || target.column.isComplex;
}

/// The first pass: types and the number of records.
std::uint64_t findTypes(Reading& file, const CsvOptions& options, std::vector<Target>* targets)
{
    std::uint64_t records = 0;
    for (; file.next(); ++records) {
        for (Target& target : *targets) {
            const std::size_t end = target.column.first + target.column.count;
            for (std::size_t column = target.column.first; column < end; ++column) {
                target.types.add(file.cell(column), options.isDecimalComma);
                if (!target.types.isNumeric() && mustBeNumeric(target))
                    file.failAt(target, "a number", column);
            }
        }
    }
    return records;
}

void makeArray(Target* target, std::uint64_t records)
{
    target->type =
        target->column.isComplex ? WellKnownType::of<std::complex<double>>() : target->types.type();
    std::vector<std::uint64_t> dimensions = {records};
    dimensions.insert(dimensions.end(), target->column.elementShape.begin(),
                      target->column.elementShape.end());
    const bool isText = target->type == WellKnownType::of<std::string>();
    target->data =
        isText ? createArray(target->type, dimensions) : createUninitializedArray(target->type, dimensions);
    target->data.detach();
    if (records > 0)
        target->to = static_cast<char*>(target->data.mutableData());
}

bool storeCell(std::string_view cell, bool isDecimalComma, Target* target)
{
    char** const to = &target->to;
    if (target->type == WellKnownType::of<std::string>()) {
        *reinterpret_cast<std::string*>(*to) = textOf(cell);
        *to += sizeof(std::string);
        return true;
    }
    if (target->type == WellKnownType::of<std::int64_t>())
        return storeInteger<std::int64_t>(cell, to);
    if (target->type == WellKnownType::of<std::uint64_t>())
        return storeInteger<std::uint64_t>(cell, to);
    if (target->type == WellKnownType::of<bool>()) {
        store(to, cell == "true");
        return true;
    }
    double value = 0.0;
    const bool isNumber = parseCell(cell, isDecimalComma, &value);
    store(to, value);
    return isNumber;
}

/// The second pass.
void readValues(Reading& file, const CsvOptions& options, std::uint64_t records, std::vector<Target>* targets)
{
    for (std::uint64_t record = 0; record < records; ++record) {
        if (!file.next())
            file.failChanged();
        for (Target& target : *targets) {
            const std::size_t end = target.column.first + target.column.count;
            for (std::size_t column = target.column.first; column < end; ++column) {
                if (!storeCell(file.cell(column), options.isDecimalComma, &target))
                    file.failChanged();
            }
        }
    }
}

/// The progress of one of two passes.
SourceFile::Progress halfOf(const SourceFile::Progress& progress, bool isSecond)
{
    if (!progress)
        return {};
    return [progress, isSecond](std::uint64_t done, std::uint64_t size) {
        progress((done + (isSecond ? size : 0)) / 2, size);
    };
}

} // namespace

CsvTable readCsv(const std::string& path, const CsvOptions& options, const SourceFile::Progress& progress)
{
    std::vector<Target> targets;
    std::uint64_t records = 0;
    CsvTable table;
    {
        Reading file(path, options, halfOf(progress, false));
        for (CsvColumn& column : file.readHeader())
            targets.push_back({std::move(column), {}, {}, {}, nullptr});
        records = findTypes(file, options, &targets);
        table.comments = file.comments();
    }
    for (Target& target : targets)
        makeArray(&target, records);
    Reading file(path, options, halfOf(progress, true));
    std::size_t columns = 0;
    for (const CsvColumn& column : file.readHeader())
        columns += column.count;
    if (columns != targets.back().column.first + targets.back().column.count)
        file.failChanged();
    readValues(file, options, records, &targets);
    for (Target& target : targets) {
        const bool isSingle = target.column.elementShape.empty() && !target.column.isComplex;
        table.variables.push_back(
            {target.column.name, target.column.units, std::move(target.data), isSingle});
    }
    return table;
}

} // namespace Orrery::Host
