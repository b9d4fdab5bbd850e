#include "hosts/orrery/Offsets.h"

#include "foundations/variant/ArraySlice.h"
#include "foundations/variant/VariantOperations.h"
#include "hosts/orrery/ElementText.h"
#include "hosts/orrery/Failure.h"
#include "hosts/orrery/FunctionCall.h"
#include "hosts/orrery/PlainText.h"
#include "hosts/orrery/TreeAccess.h"

#include <charconv>
#include <string_view>
#include <utility>

namespace Orrery::Host {

using namespace Brindle::Quay;

namespace {

// A reading that has failed is tried as a whole, if that isn't too much.
constexpr std::uint64_t s_mostOffsetsToTry = std::uint64_t(1) << 20U;

bool parseCount(std::string_view text, std::uint64_t* number)
{
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, *number);
    return error == std::errc() && stop == end;
}

// The dimension along which the offsets lie: the first one above 1 of data as a whole, so that a row (1 x n) has n
// offsets, and the first one of all else.
std::size_t offsetAxis(std::uint64_t offsets, const std::vector<std::uint64_t>& dimensions)
{
    std::size_t axis = 0;
    while (axis + 1 < dimensions.size() && dimensions[axis] == 1)
        ++axis;
    return axis < dimensions.size() && dimensions[axis] == offsets ? axis : 0;
}

// The library cuts along the first dimension only; a person means the offsets wherever they lie.
BVariant cut(const BVariant& data, std::size_t axis, std::uint64_t begin, std::uint64_t end)
{
    ArraySlice wanted(axis, IndexSet(IndexRange::all));
    wanted.emplace_back(IndexRange(IndexValue(begin), IndexValue(end - 1)));
    return slice(data, wanted);
}

std::string countText(std::uint64_t offsets)
{
    if (offsets == 0)
        return "there are no values";
    return "there are " + std::to_string(offsets) + ", from 0 to " + std::to_string(offsets - 1);
}

// `data` are values whose offsets lie along `axis`, from `first` on.
Selection makeSelection(BVariant data, std::size_t axis, std::uint64_t first)
{
    Selection selection;
    selection.dimensions = dimensionsOf(data);
    selection.firstOffset = first;
    selection.leadsWithOffset = axis == 0;
    if (!data.isEmpty()) {
        selection.offsets = selection.dimensions[axis];
        selection.elementShape.assign(selection.dimensions.begin() + static_cast<std::ptrdiff_t>(axis) + 1,
                                      selection.dimensions.end());
    }
    selection.data = std::move(data);
    return selection;
}

} // namespace

OffsetRange parseOffset(const std::string& text)
{
    std::uint64_t offset = 0;
    if (!parseCount(text, &offset))
        throw Failure("--at: expected an offset from 0, found " + inQuotes(text), ExitUsage);
    return {offset, offset + 1, true};
}

OffsetRange parseRange(const std::string& text)
{
    const std::size_t colon = text.find(':');
    const std::string_view from = std::string_view(text).substr(0, colon);
    const std::string_view to =
        colon == std::string::npos ? std::string_view() : std::string_view(text).substr(colon + 1);
    OffsetRange range;
    std::uint64_t end = 0;
    if (colon == std::string::npos || (!from.empty() && !parseCount(from, &range.begin)) ||
        (!to.empty() && !parseCount(to, &end)))
        throw Failure("--range: expected A:B, offsets from 0 with A up to but not including B, found " +
                          inQuotes(text),
                      ExitUsage);
    if (!to.empty())
        range.end = end;
    if (range.end && *range.end < range.begin)
        throw Failure("--range: expected A:B with A at or before B, found " + inQuotes(text), ExitUsage);
    return range;
}

OffsetSpan spanOf(const OffsetRange& range, std::uint64_t offsets)
{
    const std::uint64_t end = range.end.value_or(offsets);
    if (range.isSingle && range.begin >= offsets)
        throw Failure("there is no offset " + std::to_string(range.begin) + "; " + countText(offsets));
    if (range.begin > offsets || end > offsets)
        throw Failure("there is no offset " +
                      std::to_string((range.begin > offsets ? range.begin : end - 1)) + "; " +
                      countText(offsets));
    return {range.begin, end};
}

OffsetReader::OffsetReader(const Variable& variable)
    : m_variable(variable)
    , m_isHeld(holdsStoredData(variable) || isFunction(variable))
{
    if (!m_isHeld) {
        m_offsets = variable.GetMaxIndepOffset();
        return;
    }
    BVariant data = isFunction(variable) ? resultOf(variable) : variable.GetData();
    m_offsets = variable.GetMaxIndepOffset();
    m_axis = offsetAxis(m_offsets, dimensionsOf(data));
    m_held = makeSelection(std::move(data), m_axis, 0);
}

Selection OffsetReader::read(std::uint64_t begin, std::uint64_t end) const
{
    if (!m_isHeld)
        return readComputed(begin, end);
    if (begin == 0 && end == m_held.offsets)
        return m_held;
    return makeSelection(cut(m_held.data, m_axis, begin, end), m_axis, begin);
}

Selection OffsetReader::readComputed(std::uint64_t begin, std::uint64_t end) const
{
    BVariant values;
    const ERESULT code = m_variable.GetValueRange(&values, begin, end);
    Selection selection = makeSelection(code < 0 ? BVariant() : std::move(values), 0, begin);
    if (selection.offsets == end - begin)
        return selection;
    // The library's codes tell no reason; reading what is stored throws it if that is damaged.
    if (m_offsets <= s_mostOffsetsToTry)
        static_cast<void>(m_variable.GetData().constData());
    throw Failure("the values can't be computed");
}

// What an offset has is shown without its axis, but a row of a matrix stays one line, as in the whole.
Selection OffsetReader::readOne(std::uint64_t offset) const
{
    Selection selection = read(offset, offset + 1);
    selection.leadsWithOffset = false;
    if (selection.elementShape.size() >= 2)
        selection.dimensions = selection.elementShape;
    return selection;
}

Selection selectAll(const Variable& variable)
{
    const OffsetReader reader(variable);
    if (reader.isHeld())
        return reader.held();
    if (reader.offsets() == 0)
        return {};
    return reader.read(0, reader.offsets());
}

Selection select(const Variable& variable, const OffsetRange& range)
{
    const OffsetReader reader(variable);
    const OffsetSpan span = spanOf(range, reader.offsets());
    if (range.isSingle)
        return reader.readOne(span.begin);
    if (span.begin == span.end)
        return {};
    return reader.read(span.begin, span.end);
}

} // namespace Orrery::Host
