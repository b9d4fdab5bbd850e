#include "hosts/orrery/netcdf/NetcdfExport.h"

#include "foundations/variant/VariantOperations.h"
#include "hosts/orrery/Failure.h"
#include "hosts/orrery/UnitText.h"
#include "hosts/orrery/netcdf/NetcdfFile.h"

#include <algorithm>
#include <utility>

namespace Orrery::Host {

using Brindle::Quay::BVariant;
using Brindle::Quay::WellKnownType;

namespace {

/// A column, of which the first block tells what it is made of.
struct Column
{
    ColumnReader* reader;
    ValueColumn first;

    WellKnownType type() const { return first.values.data.getWellKnownType(); }
    bool isComplex() const { return (type().code() & WellKnownType::ComplexBit) != 0; }
    bool isCoordinate() const { return !isComplex() && first.values.elementShape.empty(); }
};

Column startOf(ColumnReader* reader, std::uint64_t blockLength)
{
    return {reader, reader->read(0, std::min(blockLength, reader->reader().offsets()))};
}

class Exporter
{
public:
    Exporter(const std::string& path, ExportedVariable& variable)
        : m_file(path)
        , m_offsets(variable.values->reader().offsets())
        , m_blockLength(variable.values->blockLength())
        , m_values(startOf(variable.values.get(), m_blockLength))
    {
        for (const std::unique_ptr<ColumnReader>& axis : variable.axes)
            m_axes.push_back(startOf(axis.get(), m_blockLength));
    }

    void write(const std::string& title);

private:
    void addOffsets();
    std::vector<std::string> addColumn(const Column& column, const std::vector<std::string>& coordinates);
    std::vector<NetcdfDimension> dimensionsOf(const Column& column);
    void describe(const NetcdfVariable& variable, const Column& column, NumberPart part);
    void fill(const Column& column, const std::vector<std::pair<NumberPart, NetcdfVariable>>& variables);

    NetcdfFile m_file;
    std::uint64_t m_offsets;
    std::uint64_t m_blockLength;
    Column m_values;
    std::vector<Column> m_axes;
    std::vector<NetcdfDimension> m_dimensions; // that of the offsets first
};

void Exporter::write(const std::string& title)
{
    m_file.setFileAttribute("Conventions", "CF-1.8");
    m_file.setFileAttribute("title", title);
    m_file.setFileAttribute("source", "orrery export");
    std::vector<std::string> coordinates;
    if (m_axes.size() == 1 && m_axes.front().isCoordinate()) {
        addOffsets();
    } else {
        m_dimensions.push_back(m_file.addDimension("offset", m_offsets));
        for (const Column& axis : m_axes) {
            for (std::string& name : addColumn(axis, {}))
                coordinates.push_back(std::move(name));
        }
    }
    addColumn(m_values, coordinates);
    m_file.close();
}

void Exporter::addOffsets()
{
    const Column& axis = m_axes.front();
    std::vector<std::pair<NumberPart, NetcdfVariable>> variables(1);
    variables.front().first = NumberPart::Whole;
    m_dimensions.push_back(
        m_file.addCoordinate(axis.first.name, m_offsets, axis.type(), &variables.front().second));
    describe(variables.front().second, axis, NumberPart::Whole);
    fill(axis, variables);
}

// Dimensions of arrays at the offsets; those of one place and length are shared.
std::vector<NetcdfDimension> Exporter::dimensionsOf(const Column& column)
{
    std::vector<NetcdfDimension> dimensions = {m_dimensions.front()};
    for (const std::uint64_t length : column.first.values.elementShape) {
        const std::size_t place = dimensions.size();
        if (place < m_dimensions.size() && m_dimensions[place].length == length) {
            dimensions.push_back(m_dimensions[place]);
            continue;
        }
        dimensions.push_back(m_file.addDimension("dim_" + std::to_string(place), length));
        if (place == m_dimensions.size())
            m_dimensions.push_back(dimensions.back());
    }
    return dimensions;
}

void Exporter::describe(const NetcdfVariable& variable, const Column& column, NumberPart part)
{
    const char* const parts[] = {"", ", real part", ", imaginary part"};
    m_file.setAttribute(variable, "long_name", column.first.name + parts[static_cast<int>(part)]);
    if (column.reader->units())
        m_file.setAttribute(variable, "units", unitsLabel(*column.reader->units()));
}

// Returns the names of the variables that hold the column.
std::vector<std::string> Exporter::addColumn(const Column& column,
                                             const std::vector<std::string>& coordinates)
{
    std::string names;
    for (const std::string& name : coordinates)
        names += (names.empty() ? "" : " ") + name;
    const std::vector<NetcdfDimension> dimensions = dimensionsOf(column);
    std::vector<std::pair<NumberPart, NetcdfVariable>> variables;
    std::vector<std::string> added;
    const auto add = [&](const char* ending, NumberPart part) {
        variables.emplace_back(
            part, m_file.addVariable(column.first.name + ending, dimensions, column.type(), part));
        describe(variables.back().second, column, part);
        if (!names.empty())
            m_file.setAttribute(variables.back().second, "coordinates", names);
        added.push_back(m_file.nameOf(variables.back().second));
    };
    if (column.isComplex()) {
        add("_re", NumberPart::Real);
        add("_im", NumberPart::Imaginary);
    } else {
        add("", NumberPart::Whole);
    }
    fill(column, variables);
    return added;
}

void Exporter::fill(const Column& column, const std::vector<std::pair<NumberPart, NetcdfVariable>>& variables)
{
    for (std::uint64_t begin = 0; begin < m_offsets;) {
        const std::uint64_t end = begin + std::min(m_blockLength, m_offsets - begin);
        ValueColumn block = begin == 0 ? column.first : column.reader->read(begin, end);
        if (block.values.elementShape != column.first.values.elementShape)
            throw Failure("the arrays at the offsets have several shapes, which netCDF can't hold");
        if (block.values.data.getWellKnownType() != column.type())
            convertInPlace(block.values.data, column.type());
        for (const auto& [part, variable] : variables)
            m_file.write(variable, block.values.data, part, begin);
        begin = end;
    }
}

} // namespace

void writeNetcdf(const std::string& path, const std::string& title, ExportedVariable& variable)
{
    if (variable.values->reader().offsets() == 0)
        throw Failure("has no values, and netCDF no dimension of length 0");
    Exporter(path, variable).write(title);
}

} // namespace Orrery::Host
