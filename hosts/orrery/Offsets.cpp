#include "hosts/orrery/Offsets.h"

#include "foundations/variant/ArraySlice.h"
#include "foundations/variant/VariantOperations.h"
#include "hosts/orrery/ElementText.h"
#include "hosts/orrery/Failure.h"
#include "hosts/orrery/PlainText.h"
#include "hosts/orrery/TreeAccess.h"

#include <charconv>
#include <string_view>

namespace Orrery::Host {

using namespace Brindle::Quay;

namespace {

bool parseNumber(std::string_view text, std::uint64_t* number)
{
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, *number);
    return error == std::errc() && stop == end;
}

// The dimension along which the offsets lie: the first one above 1 of stored data, so that a row (1 x n) has n
// offsets, and the first one of all else.
std::size_t offsetAxis(const Variable& variable, const std::vector<std::uint64_t>& dimensions)
{
    std::size_t axis = 0;
    while (axis + 1 < dimensions.size() && dimensions[axis] == 1)
        ++axis;
    return axis < dimensions.size() && dimensions[axis] == variable.GetMaxIndepOffset() ? axis : 0;
}

// The library cuts along the first dimension only; a person means the offsets wherever they lie.
BVariant cut(const BVariant& data, std::size_t axis, std::uint64_t begin, std::uint64_t end)
{
    ArraySlice wanted(axis, IndexSet(IndexRange::all));
    wanted.emplace_back(IndexRange(IndexValue(begin), IndexValue(end - 1)));
    return slice(data, wanted);
}

[[noreturn]] void failReading(const Variable& variable)
{
    // The library's codes tell no reason; reading the stored values throws it if they are damaged.
    static_cast<void>(variable.GetData().constData());
    throw Failure("the values can't be read");
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

Selection selectSome(const Variable& variable, std::uint64_t begin, std::uint64_t end)
{
    if (holdsStoredData(variable)) { // of computed data, no more than is wanted is computed
        const BVariant data = variable.GetData();
        const std::size_t axis = offsetAxis(variable, dimensionsOf(data));
        if (axis > 0)
            return makeSelection(cut(data, axis, begin, end), axis, begin);
    }
    BVariant values;
    if (variable.GetValueRange(&values, begin, end) < 0)
        failReading(variable);
    return makeSelection(std::move(values), 0, begin);
}

// What an offset has is shown without its axis, but a row of a matrix stays one line, as in the whole.
Selection selectOne(const Variable& variable, std::uint64_t offset)
{
    Selection selection = selectSome(variable, offset, offset + 1);
    selection.leadsWithOffset = false;
    if (selection.elementShape.size() >= 2)
        selection.dimensions = selection.elementShape;
    return selection;
}

} // namespace

OffsetRange parseOffset(const std::string& text)
{
    std::uint64_t offset = 0;
    if (!parseNumber(text, &offset))
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
    if (colon == std::string::npos || (!from.empty() && !parseNumber(from, &range.begin)) ||
        (!to.empty() && !parseNumber(to, &end)))
        throw Failure("--range: expected A:B, offsets from 0 with A up to but not including B, found " +
                          inQuotes(text),
                      ExitUsage);
    if (!to.empty())
        range.end = end;
    if (range.end && *range.end < range.begin)
        throw Failure("--range: expected A:B with A at or before B, found " + inQuotes(text), ExitUsage);
    return range;
}

Selection selectAll(const Variable& variable)
{
    BVariant data = variable.GetData();
    if (data.isEmpty() && variable.GetMaxIndepOffset() > 0)
        throw Failure("the values can't be computed");
    const std::size_t axis = offsetAxis(variable, dimensionsOf(data));
    return makeSelection(std::move(data), axis, 0);
}

Selection select(const Variable& variable, const OffsetRange& range)
{
    const std::uint64_t offsets = variable.GetMaxIndepOffset();
    const std::uint64_t end = range.end.value_or(offsets);
    if (range.isSingle && range.begin >= offsets)
        throw Failure("there is no offset " + std::to_string(range.begin) + "; " + countText(offsets));
    if (range.begin > offsets || end > offsets)
        throw Failure("there is no offset " +
                      std::to_string((range.begin > offsets ? range.begin : end - 1)) + "; " +
                      countText(offsets));
    if (range.isSingle)
        return selectOne(variable, range.begin);
    if (range.begin == end)
        return {};
    if (range.begin == 0 && end == offsets)
        return selectAll(variable);
    return selectSome(variable, range.begin, end);
}

} // namespace Orrery::Host
