#include "hosts/orrery/ValueJson.h"

#include "hosts/orrery/ColumnReader.h"
#include "hosts/orrery/ElementText.h"
#include "hosts/orrery/JsonElements.h"

#include <algorithm>
#include <vector>

namespace Orrery::Host {

using Brindle::Quay::BVariant;
using Brindle::Quay::DataOrdering;

namespace {

// The element type of no values: that of the values that there are.
std::string typeOfNone(const ColumnReader& column)
{
    const OffsetReader& reader = column.reader();
    return reader.isHeld() ? elementTypeName(reader.held().data.getWellKnownType()) : std::string("null");
}

// Where the offsets don't lie along the first dimension, blocks can't be put one behind the other.
std::uint64_t blockLength(const ColumnReader& column, const OffsetSpan& span)
{
    const OffsetReader& reader = column.reader();
    const bool isCuttable = !reader.isHeld() || reader.held().leadsWithOffset;
    return isCuttable ? column.blockLength() : span.end - span.begin;
}

bool isNull(const OffsetReader& reader)
{
    return reader.isHeld() && reader.held().dimensions.empty();
}

// How stored values with more than one dimension lie in memory and in the file.
void writeOrdering(JsonWriter& json, const OffsetReader& reader)
{
    const BVariant& data = reader.held().data;
    if (!reader.isHeld() || data.isEmpty() || data.getDimensions().size() < 2)
        return;
    json.key("ordering");
    json.string(data.getDataOrdering() == DataOrdering::RowMajor ? "row-major" : "column-major");
}

} // namespace

void ValueJson::begin(const JsonHead& head, const OffsetSpan& span, std::uint64_t offsets)
{
    m_json.open('{');
    m_json.key("file");
    m_json.string(head.file);
    m_json.key("path");
    m_json.string(head.path);
    m_json.key("type");
    m_json.string(head.type);
    if (!head.function.empty()) {
        m_json.key("function");
        m_json.string(head.function);
    }
    m_json.key("offsets");
    m_json.openInline('{');
    m_json.key("begin");
    m_json.integer(span.begin);
    m_json.key("end");
    m_json.integer(span.end);
    m_json.key("of");
    m_json.integer(offsets);
    m_json.close();
    m_json.key("axes");
    m_json.open('[');
}

void ValueJson::addAxis(ColumnReader& axis, const OffsetSpan& span)
{
    m_json.open('{');
    m_json.key("path");
    m_json.string(axis.path());
    addColumn(axis, span);
    m_json.close();
}

void ValueJson::addValues(ColumnReader& values, const OffsetSpan& span)
{
    m_json.close(); // the axes
    addColumn(values, span);
}

void ValueJson::addColumn(ColumnReader& column, const OffsetSpan& span)
{
    const std::uint64_t length = blockLength(column, span);
    std::uint64_t begin = span.begin;
    const auto next = [&] { return begin + std::min(length, span.end - begin); };
    Selection block;
    if (begin < span.end)
        block = column.read(begin, next()).values;
    m_json.key("units");
    writeUnits(m_json, column.units());
    m_json.key("elements");
    m_json.string(block.data.isEmpty() ? typeOfNone(column) : elementTypeName(block.data.getWellKnownType()));
    std::vector<std::uint64_t> shape = block.dimensions;
    if (shape.empty() && !isNull(column.reader()))
        shape.push_back(0);
    else if (!shape.empty() && block.leadsWithOffset)
        shape.front() = span.end - span.begin;
    m_json.key("shape");
    writeShape(m_json, shape);
    writeOrdering(m_json, column.reader());
    m_json.key("values");
    m_json.open('[');
    while (begin < span.end) {
        JsonElements(block.data).writeItems(m_json, block.dimensions);
        begin = next();
        if (begin < span.end)
            block = column.read(begin, next()).values;
    }
    m_json.close();
}

void ValueJson::end()
{
    m_json.close();
}

} // namespace Orrery::Host
