#include "foundations/variant/ArraySlice.h"

#include "foundations/variant/ArrayPayloads_p.h"
#include "foundations/variant/VariantOperations.h"

#include <stdexcept>
#include <utility>

namespace Brindle::Quay {
namespace {
[[noreturn]] void failInvalidSlice()
{
    throw std::invalid_argument("The given ArraySlice is invalid.");
}

[[noreturn]] void failIndexValue()
{
    throw std::out_of_range("Index value out-of-range");
}
} // namespace

// ---- IndexValue -------------------------------------------------------------------------------------------------

std::uint64_t IndexValue::position(std::uint64_t dimensionSize) const
{
    if (!isValid(dimensionSize))
        failIndexValue();
    return m_fromEnd ? dimensionSize - 1 - m_value : m_value;
}

std::vector<std::uint64_t> IndexValue::resolve(std::uint64_t dimensionSize) const
{
    return {position(dimensionSize)};
}

bool IndexValue::isValid(std::uint64_t dimensionSize) const
{
    return m_value < dimensionSize;
}

IndexValue* IndexValue::clone() const
{
    return new IndexValue(*this);
}

// ---- IndexRange -------------------------------------------------------------------------------------------------

const IndexRange IndexRange::all{IndexRange::WholeDimension()};

IndexRange::Progression IndexRange::progression(std::uint64_t dimensionSize) const
{
    if (m_stride == 0)
        failInvalidSlice();
    const bool isWhole = m_first.value() == 0 && !m_first.fromEnd() && m_last.value() == 0 &&
                         m_last.fromEnd() && m_stride == 1;
    if (isWhole)
        return {0, 1, dimensionSize};
    const std::uint64_t start = m_first.position(dimensionSize);
    const std::uint64_t end = m_last.position(dimensionSize);
    const std::uint64_t room =
        (end - start) / m_stride + 1; // backward, the difference wraps, and so may the sum
    if (start <= end)
        return {start, m_stride, room};
    // Nothing lies between, so only the room asked for counts: more than there are indices can't be meant.
    if (room > dimensionSize)
        throw std::length_error("The index range runs backward.");
    return {start, m_stride, 0};
}

std::vector<std::uint64_t> IndexRange::resolve(std::uint64_t dimensionSize) const
{
    const Progression range = progression(dimensionSize);
    std::vector<std::uint64_t> indices;
    indices.reserve(range.count);
    for (std::uint64_t i = 0; i < range.count; ++i)
        indices.push_back(range.start + i * range.stride);
    return indices;
}

bool IndexRange::isValid(std::uint64_t dimensionSize) const
{
    return m_first.isValid(dimensionSize) && m_last.isValid(dimensionSize) && m_stride > 0;
}

IndexRange* IndexRange::clone() const
{
    return new IndexRange(*this);
}

// ---- IndexSet ---------------------------------------------------------------------------------------------------

IndexSet::IndexSet() = default;

IndexSet::IndexSet(const IndexItem& item)
{
    append(item);
}

IndexSet::IndexSet(std::initializer_list<ItemReference> items)
{
    m_items.reserve(items.size());
    for (const ItemReference& item : items)
        append(item.get());
}

IndexSet::IndexSet(std::vector<std::unique_ptr<IndexItem>> items)
    : m_items(std::move(items))
{
    for (const auto& item : m_items) {
        if (!item)
            failInvalidSlice();
    }
}

IndexSet::IndexSet(const IndexSet& other)
{
    m_items.reserve(other.m_items.size());
    for (const auto& item : other.m_items)
        append(*item);
}

IndexSet::IndexSet(IndexSet&& other) noexcept = default;

IndexSet& IndexSet::operator=(const IndexSet& other)
{
    IndexSet copy(other);
    m_items.swap(copy.m_items);
    return *this;
}

IndexSet& IndexSet::operator=(IndexSet&& other) noexcept = default;

IndexSet::~IndexSet() = default;

void IndexSet::append(const IndexItem& item)
{
    std::unique_ptr<IndexItem> copy(item.clone());
    if (!copy)
        failInvalidSlice();
    m_items.push_back(std::move(copy));
}

ArraySlice ArraySliceFromIndices(const std::vector<std::uint64_t>& indices)
{
    ArraySlice slice;
    slice.reserve(indices.size());
    for (const std::uint64_t index : indices)
        slice.emplace_back(IndexValue(index));
    return slice;
}

// ---- SliceFlattener ---------------------------------------------------------------------------------------------

namespace {
/// What can be told before any dimension is looked at.
void checkForm(const ArraySlice& slice, ArrayDimensionsView dimensions)
{
    if (slice.size() > dimensions.size())
        failInvalidSlice();
    for (const IndexSet& set : slice) {
        for (std::size_t i = 0; i < set.size(); ++i) {
            const auto* range = dynamic_cast<const IndexRange*>(&set[i]);
            if (range && range->stride() == 0)
                failInvalidSlice();
        }
    }
}

std::vector<std::uint64_t> resolveAll(const IndexSet& set, std::uint64_t size)
{
    std::vector<std::uint64_t> indices;
    for (std::size_t i = 0; i < set.size(); ++i) {
        const std::vector<std::uint64_t> part = set[i].resolve(size);
        indices.insert(indices.end(), part.begin(), part.end());
    }
    for (const std::uint64_t index : indices) {
        if (index >= size) // a host's own selector
            Internal::failOutOfBounds();
    }
    return indices;
}

/// Whether a position in a list of dimensions comes first to last (row-major) or last to first.
std::size_t walkPosition(std::size_t i, std::size_t rank, bool rowMajor)
{
    return rowMajor ? i : rank - 1 - i;
}

std::vector<std::uint64_t> storageDistances(ArrayDimensionsView dimensions, DataOrdering ordering)
{
    const bool rowMajor = ordering == DataOrdering::RowMajor;
    std::vector<std::uint64_t> distances(dimensions.size());
    std::uint64_t distance = 1;
    for (std::size_t i = dimensions.size(); i-- > 0;) {
        const std::size_t position = walkPosition(i, dimensions.size(), rowMajor);
        distances[position] = distance;
        distance *= dimensions[position];
    }
    return distances;
}
} // namespace

SliceFlattener::SliceFlattener(const ArraySlice& slice, ArrayDimensionsView dimensions, DataOrdering ordering,
                               UseDataOrdering use)
{
    checkForm(slice, dimensions);
    const std::vector<std::uint64_t> distances = storageDistances(dimensions, ordering);
    for (std::size_t i = 0; i < dimensions.size(); ++i)
        resolveDimension(i < slice.size() ? &slice[i] : nullptr, dimensions[i], distances[i]);

    m_isElement = m_dimensions.empty() && !dimensions.empty();
    if (m_isElement)
        m_dimensions.push_back(1);
    m_count = checkedElementCount(m_dimensions);

    const bool rowMajor = use == UseDataOrdering::Source ? ordering == DataOrdering::RowMajor
                                                         : use == UseDataOrdering::RowMajor;
    if (!rowMajor)
        std::reverse(m_axes.begin(), m_axes.end());
    if (m_count == 0) {
        m_axes.clear();
        m_runLength = 0;
    } else {
        joinRuns();
    }
}

SliceFlattener::SliceFlattener(const SliceFlattener&) = default;
SliceFlattener::SliceFlattener(SliceFlattener&&) noexcept = default;
SliceFlattener& SliceFlattener::operator=(const SliceFlattener&) = default;
SliceFlattener& SliceFlattener::operator=(SliceFlattener&&) noexcept = default;
SliceFlattener::~SliceFlattener() = default;

void SliceFlattener::resolveDimension(const IndexSet* set, std::uint64_t size, std::uint64_t distance)
{
    Axis axis;
    axis.count = size;
    axis.step = distance;
    const IndexItem* single = set && set->size() == 1 ? &(*set)[0] : nullptr;
    if (const auto* value = dynamic_cast<const IndexValue*>(single)) {
        m_firstOffset += value->position(size) * distance;
        return; // drops out
    }
    if (const auto* range = dynamic_cast<const IndexRange*>(single)) {
        const IndexRange::Progression progression = range->progression(size);
        axis.count = progression.count;
        axis.step = progression.stride * distance; // wraps only where no second index is left to reach
        m_firstOffset += progression.start * distance;
    } else if (set) {
        axis.list = resolveAll(*set, size);
        axis.count = axis.list.size();
        for (std::uint64_t& offset : axis.list)
            offset *= distance;
    }
    m_dimensions.push_back(axis.count);
    m_axes.push_back(std::move(axis));
}

void SliceFlattener::joinRuns()
{
    std::vector<Axis> axes;
    for (Axis& axis : m_axes) {
        if (axis.count == 1)
            m_firstOffset += axis.at(0);
        else
            axes.push_back(std::move(axis));
    }
    while (!axes.empty() && axes.back().list.empty() && axes.back().step == m_runLength) {
        m_runLength *= axes.back().count;
        axes.pop_back();
    }
    m_axes = std::move(axes);
}

void SliceFlattener::forEachRun(Visit visit, void* state) const
{
    if (m_count == 0)
        return;
    if (m_axes.empty()) {
        visit(state, m_firstOffset, 0, 1);
        return;
    }
    const Axis& inner = m_axes.back();
    const std::size_t outerCount = m_axes.size() - 1;
    std::vector<std::uint64_t> indices(outerCount);
    for (;;) {
        std::uint64_t offset = m_firstOffset;
        for (std::size_t i = 0; i < outerCount; ++i)
            offset += m_axes[i].at(indices[i]);
        if (inner.list.empty())
            visit(state, offset, inner.step, inner.count);
        for (const std::uint64_t entry : inner.list)
            visit(state, offset + entry, 0, 1);

        std::size_t position = outerCount;
        while (position > 0 && ++indices[position - 1] == m_axes[position - 1].count)
            indices[--position] = 0;
        if (position == 0)
            return;
    }
}

std::vector<std::uint64_t> SliceFlattener::offsets() const
{
    struct Collector
    {
        std::vector<std::uint64_t> offsets;
        std::uint64_t runLength;
    };
    Collector collector{{}, m_runLength};
    collector.offsets.reserve(m_count);
    forEachRun(
        [](void* state, std::uint64_t offset, std::uint64_t distance, std::uint64_t number) {
            auto& result = *static_cast<Collector*>(state);
            for (std::uint64_t run = 0; run < number; ++run) {
                for (std::uint64_t i = 0; i < result.runLength; ++i)
                    result.offsets.push_back(offset + run * distance + i);
            }
        },
        &collector);
    return std::move(collector.offsets);
}
} // namespace Brindle::Quay
