#include "foundations/variant/ArrayIndexing.h"
#include "foundations/variant/ElementAccess_p.h"
#include "foundations/variant/VariantOperations.h"

#include <stdexcept>

/// Reading parts of arrays. Element reads and runs of the first dimension have ways of their own, which end as the
/// general one does.
namespace Brindle::Quay {
using namespace Internal;

namespace {
[[noreturn]] void failInvalidSlice()
{
    throw std::invalid_argument("The given ArraySlice is invalid.");
}

/// Dispatches on the element type; null has words of its own.
template <class Action>
decltype(auto) dispatchSource(const BVariant& variant, Action&& action)
{
    const WellKnownType type = variant.getWellKnownType();
    if ((type == WellKnownType::Null || type == WellKnownType::RunTime) && variant.isNull())
        failInvalidSlice();
    return dispatchElement(type, std::forward<Action>(action));
}

/// The failures that come before any index is looked at: null, then a type that no array has.
void checkSource(const BVariant& variant)
{
    dispatchSource(variant, [](auto) {});
}

BVariant adopt(PayloadPtr payload)
{
    return BVariant::fromPayload(payload.release());
}

/// One element as a scalar.
BVariant scalarAt(const BVariant& variant, std::uint64_t offset)
{
    return dispatchElement(variant.getWellKnownType(), [&](auto tag) {
        using T = typename decltype(tag)::type;
        return BVariant::scalar<T>(readElement<T>(variant.payload(), offset), variant.getDataOrdering());
    });
}

/// A run of the storage as an array.
BVariant runAt(const BVariant& variant, std::uint64_t first, ArrayDimensionsView dimensions)
{
    return dispatchElement(variant.getWellKnownType(), [&](auto tag) {
        using T = typename decltype(tag)::type;
        auto* result = ArrayPayload<T>::make(dimensions, variant.getDataOrdering(), Fill::Raw);
        PayloadPtr owner(result);
        if (const std::uint64_t count = dimensions.elementCount(); count != 0)
            readElements(variant.payload(), first, count, result->data());
        return adopt(std::move(owner));
    });
}

template <class T>
struct Gathering
{
    const T* source;
    T* target;
    std::uint64_t runLength;
};

template <class T>
void gatherRuns(void* state, std::uint64_t offset, std::uint64_t distance, std::uint64_t number)
{
    auto& gathering = *static_cast<Gathering<T>*>(state);
    const T* source = gathering.source + offset;
    if (gathering.runLength == 1) {
        for (std::uint64_t i = 0; i < number; ++i)
            gathering.target[i] = loadElement(source + i * distance);
        gathering.target += number;
        return;
    }
    for (std::uint64_t i = 0; i < number; ++i) {
        copyRun(source + i * distance, gathering.runLength, gathering.target);
        gathering.target += gathering.runLength;
    }
}

template <class T>
struct PieceGathering
{
    const IVariantData* source;
    T* target;
    std::uint64_t runLength;
};

template <class T>
void gatherPieces(void* state, std::uint64_t offset, std::uint64_t distance, std::uint64_t number)
{
    auto& gathering = *static_cast<PieceGathering<T>*>(state);
    for (std::uint64_t i = 0; i < number; ++i) {
        readElements(gathering.source, offset + i * distance, gathering.runLength, gathering.target);
        gathering.target += gathering.runLength;
    }
}

/// Whether a payload reads parts without the rest, and these are few enough for that to pay.
template <class T>
bool isReadInPieces(const BVariant& variant, std::uint64_t first, std::uint64_t count)
{
    constexpr std::uint64_t worthIt = 8;
    T probe{};
    return count != 0 && count <= variant.elementCount() / worthIt &&
           variant.payload()->readRun(first, 1, &probe);
}

/// The elements of a slice that isn't one run.
BVariant gather(const BVariant& variant, const SliceFlattener& flattener)
{
    return dispatchElement(variant.getWellKnownType(), [&](auto tag) {
        using T = typename decltype(tag)::type;
        const ArrayDimensionsView dimensions = flattener.dimensions();
        const bool inPieces = isReadInPieces<T>(variant, flattener.firstOffset(), dimensions.elementCount());
        const auto* source = inPieces ? nullptr : static_cast<const T*>(variant.constData());
        auto* result = ArrayPayload<T>::make(dimensions, variant.getDataOrdering(), Fill::Raw);
        PayloadPtr owner(result);
        if (inPieces) {
            PieceGathering<T> gathering{variant.payload(), result->data(), flattener.runLength()};
            flattener.forEachRun(&gatherPieces<T>, &gathering);
        } else {
            Gathering<T> gathering{source, result->data(), flattener.runLength()};
            flattener.forEachRun(&gatherRuns<T>, &gathering);
        }
        return adopt(std::move(owner));
    });
}

/// The same dimensions with another first one, without a heap block for the usual few.
class WithFirst
{
public:
    WithFirst(ArrayDimensionsView dimensions, std::uint64_t first)
        : m_count(dimensions.size())
    {
        if (m_count > m_few.size())
            m_many.resize(m_count);
        std::uint64_t* sizes = m_many.empty() ? m_few.data() : m_many.data();
        std::copy(dimensions.begin(), dimensions.end(), sizes);
        sizes[0] = first;
    }

    ArrayDimensionsView view() const { return {m_many.empty() ? m_few.data() : m_many.data(), m_count}; }

private:
    std::array<std::uint64_t, 6> m_few = {};
    std::vector<std::uint64_t> m_many;
    std::size_t m_count;
};

ArrayDimensionsView withoutFirst(ArrayDimensionsView dimensions)
{
    return {dimensions.data() + 1, dimensions.size() - 1};
}

/// Elements of one position of the first dimension; 1 for a vector.
std::uint64_t elementsPerPosition(ArrayDimensionsView dimensions)
{
    const ArrayDimensionsView rest = withoutFirst(dimensions);
    return rest.empty() ? 1 : rest.elementCount();
}

/// Whether positions of the first dimension that follow each other also do so in storage, element by element.
bool firstDimensionIsSlowest(const BVariant& variant, std::uint64_t perPosition)
{
    return perPosition <= 1 || variant.getDataOrdering() == DataOrdering::RowMajor;
}

/// The offset of the first element that these indices leave; the remaining dimensions are taken whole.
std::uint64_t offsetOfElement(ArrayDimensionsView dimensions, DataOrdering ordering,
                              const std::uint64_t* indices, std::size_t count)
{
    for (std::size_t i = 0; i < count; ++i) {
        if (indices[i] >= dimensions[i])
            IndexValue(indices[i]).position(dimensions[i]); // fails with its own words
    }
    return ordering == DataOrdering::RowMajor
               ? ArrayIndexing::calculateOffsetRowMajor(indices, count, dimensions, false)
               : ArrayIndexing::calculateOffsetColumnMajor(indices, count, dimensions, false);
}

/// What elementAt ends with: one dimension of 1, which takes what the indices leave only if it is one element.
void checkOneElementLeft(ArrayDimensionsView dimensions, std::size_t indexCount)
{
    const ArrayDimensionsView left = {dimensions.data() + indexCount, dimensions.size() - indexCount};
    const bool allDroppedOut = left.empty() && indexCount != 0;
    if (!allDroppedOut)
        checkCount(left, 1);
}
} // namespace

BVariant elementAt(const BVariant& variant, const std::uint64_t* indices, std::size_t count)
{
    return dispatchSource(variant, [&](auto tag) {
        using T = typename decltype(tag)::type;
        const IVariantData* payload = variant.payload();
        const ArrayDimensionsView dimensions = payload->getDimensions();
        const DataOrdering ordering = payload->getDataOrdering();
        if (count > dimensions.size())
            failInvalidSlice();
        const std::uint64_t offset = offsetOfElement(dimensions, ordering, indices, count);
        checkOneElementLeft(dimensions, count);
        return BVariant::scalar<T>(readElement<T>(payload, offset), ordering);
    });
}

BVariant slice(const BVariant& variant, const ArraySlice& arraySlice)
{
    checkSource(variant);
    const SliceFlattener flattener(arraySlice, variant.getDimensions(), variant.getDataOrdering());
    if (flattener.isElement())
        return scalarAt(variant, flattener.firstOffset());
    if (flattener.isContiguous())
        return runAt(variant, flattener.firstOffset(), flattener.dimensions());
    return gather(variant, flattener);
}

BVariant sliceRange(const BVariant& variant, std::uint64_t first, std::uint64_t last)
{
    const ArrayDimensionsView dimensions = variant.getDimensions();
    const std::uint64_t perPosition = dimensions.empty() ? 0 : elementsPerPosition(dimensions);
    if (dimensions.empty() || !firstDimensionIsSlowest(variant, perPosition))
        return slice(variant, {IndexSet(IndexRange(first, last))});
    checkSource(variant);
    const IndexRange::Progression range = IndexRange(first, last).progression(dimensions[0]);
    return runAt(variant, range.start * perPosition, WithFirst(dimensions, range.count).view());
}

BVariant subArrayAt(const BVariant& variant, std::uint64_t index)
{
    const ArrayDimensionsView dimensions = variant.getDimensions();
    const std::uint64_t perPosition = dimensions.empty() ? 0 : elementsPerPosition(dimensions);
    if (dimensions.empty() || !firstDimensionIsSlowest(variant, perPosition))
        return slice(variant, {IndexSet(IndexValue(index))});
    checkSource(variant);
    const std::uint64_t offset = IndexValue(index).position(dimensions[0]) * perPosition;
    if (dimensions.size() == 1)
        return scalarAt(variant, offset);
    return runAt(variant, offset, withoutFirst(dimensions));
}
} // namespace Brindle::Quay
