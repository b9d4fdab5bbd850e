#include "foundations/variant/ElementAccess_p.h"
#include "foundations/variant/VariantOperations.h"

#include <stdexcept>

namespace Brindle::Quay {
using namespace Internal;

namespace {
void checkVectorShaped(const BVariant& variant)
{
    if (variant.elementCount() > 1 && !variant.getDimensions().isVectorShaped())
        throw std::runtime_error("appendValues currently supports only vector arguments");
}

/// A payload need not have its elements in memory, so counts that no memory holds do meet here.
std::uint64_t joinedCount(std::uint64_t firstCount, std::uint64_t secondCount)
{
    std::uint64_t count = 0;
    if (__builtin_add_overflow(firstCount, secondCount, &count))
        throw std::length_error("The joined values have more elements than 64 bits can count.");
    return count;
}

/// The dimensions of the first argument that has several, grown to `count` elements; else one dimension.
std::vector<std::uint64_t> joinedDimensions(const BVariant& first, const BVariant& second,
                                            std::uint64_t count)
{
    const BVariant& shaped = first.getDimensions().size() >= 2 ? first : second;
    std::vector<std::uint64_t> dimensions = shaped.getDimensions().toVector();
    if (dimensions.size() < 2)
        return {count};
    auto grown =
        std::find_if(dimensions.begin() + 1, dimensions.end(), [](std::uint64_t size) { return size != 1; });
    if (grown == dimensions.end())
        grown = dimensions.begin();
    *grown = count;
    return dimensions;
}
} // namespace

BVariant appendValues(BVariant first, BVariant second)
{
    if (first.isEmpty())
        return second;
    if (second.isEmpty())
        return first;
    checkVectorShaped(first);
    checkVectorShaped(second);
    const std::uint64_t firstCount = first.elementCount();
    const std::uint64_t secondCount = second.elementCount();
    const std::vector<std::uint64_t> dimensions =
        joinedDimensions(first, second, joinedCount(firstCount, secondCount));
    const WellKnownType common =
        WellKnownType::getCommonWellKnownType(first.getWellKnownType(), second.getWellKnownType());
    convertInPlace(first, common);
    convertInPlace(second, common);
    if (common == WellKnownType::RunTime)
        throw std::runtime_error("Creating with run-time wellknowntype is not allowed.");
    return dispatchElement(common, [&](auto tag) {
        using T = typename decltype(tag)::type;
        auto* joined = ArrayPayload<T>::make(dimensions, DataOrdering::RowMajor, Fill::Raw);
        PayloadPtr owner(joined);
        readElements(first.payload(), 0, firstCount, joined->data());
        readElements(second.payload(), 0, secondCount, joined->data() + firstCount);
        return BVariant::fromPayload(owner.release());
    });
}
} // namespace Brindle::Quay
