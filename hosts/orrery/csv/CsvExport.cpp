#include "hosts/orrery/csv/CsvExport.h"

#include "foundations/variant/VariantOperations.h"
#include "hosts/orrery/UnitText.h"
#include "hosts/orrery/ValuePrinter.h"
#include "units/SystemOfUnits.h"

#include <algorithm>
#include <complex>
#include <utility>

namespace Orrery::Host {

using Brindle::Quay::WellKnownType;

namespace {

bool readsBack(const QString& text, const Units& units)
{
    const Units read = SystemOfUnits::instance().GetUnitsFromString(text);
    return read.IsValid() && read.IsCommensurable(units) && read.GetScale() == units.GetScale() &&
           read.GetOffset() == units.GetOffset() && read.GetLogScale() == units.GetLogScale();
}

// Empty brackets keep those that are part of a name from being read as units.
std::string suffixOf(const std::string& name, const std::optional<Units>& units)
{
    if (!units)
        return !name.empty() && name.back() == ']' ? " []" : "";
    const std::string label = unitsLabel(*units);
    const QString siString = units->GetSIUnits();
    if (!readsBack(QString::fromStdString(label), *units) && readsBack(siString, *units))
        return " [" + siString.toStdString() + "]";
    return " [" + label + "]";
}

// The shortest text of a float isn't that of the double into which it is read.
void widen(Brindle::Quay::BVariant* data)
{
    if (data->getWellKnownType() == WellKnownType::of<float>())
        convertInPlace(*data, WellKnownType::of<double>());
    else if (data->getWellKnownType() == WellKnownType::of<std::complex<float>>())
        convertInPlace(*data, WellKnownType::of<std::complex<double>>());
}

std::vector<ValueColumn> readColumns(ExportedVariable& variable, std::uint64_t begin, std::uint64_t end)
{
    std::vector<ValueColumn> columns;
    const auto add = [&](ColumnReader& reader) {
        columns.push_back(reader.read(begin, end));
        columns.back().unitsSuffix = suffixOf(columns.back().name, reader.units());
        if (begin != end)
            widen(&columns.back().values.data);
    };
    for (const std::unique_ptr<ColumnReader>& axis : variable.axes)
        add(*axis);
    add(*variable.values);
    return columns;
}

} // namespace

void writeCsv(Output& out, ExportedVariable& variable)
{
    const std::uint64_t offsets = variable.values->reader().offsets();
    const std::uint64_t length = variable.values->blockLength();
    if (offsets == 0)
        printCsvHeader(out, readColumns(variable, 0, 0), CsvOffsets::Hidden);
    for (std::uint64_t begin = 0; begin < offsets;) {
        const std::uint64_t end = begin + std::min(length, offsets - begin);
        const std::vector<ValueColumn> columns = readColumns(variable, begin, end);
        if (begin == 0)
            printCsvHeader(out, columns, CsvOffsets::Hidden);
        printCsvRecords(out, columns, CsvOffsets::Hidden);
        begin = end;
    }
}

} // namespace Orrery::Host
