#include "foundations/variant/ArrayIndexing.h"

#include "foundations/variant/VariantOperations.h"

namespace Brindle::Quay {
namespace {
/// Adds index * distance to *sum; false where that doesn't fit 64 bits.
bool addProduct(std::uint64_t index, std::uint64_t distance, std::uint64_t* sum)
{
    std::uint64_t product = 0;
    return !__builtin_mul_overflow(index, distance, &product) && !__builtin_add_overflow(*sum, product, sum);
}

/// One step of both sums: the index at `position`, whose neighbours lie `distance` apart.
void addIndex(std::uint64_t index, std::size_t position, std::uint64_t distance,
              ArrayDimensionsView dimensions, bool check, std::uint64_t* sum)
{
    if (!check) {
        *sum += index * distance;
        return;
    }
    if (position < dimensions.size() && index >= dimensions[position])
        Internal::failOutOfBounds();
    if (!addProduct(index, distance, sum))
        Internal::failOutOfBounds();
}
} // namespace

std::uint64_t ArrayIndexing::calculateOffsetRowMajor(const std::uint64_t* indices, std::size_t count,
                                                     ArrayDimensionsView dimensions, bool check)
{
    std::uint64_t sum = 0;
    for (std::size_t i = dimensions.size(); i < count; ++i)
        addIndex(indices[i], i, 1, dimensions, check, &sum);
    std::uint64_t distance = 1;
    for (std::size_t i = dimensions.size(); i-- > 0;) {
        if (i < count)
            addIndex(indices[i], i, distance, dimensions, check, &sum);
        distance *= dimensions[i];
    }
    return sum;
}

std::uint64_t ArrayIndexing::calculateOffsetRowMajor(const std::vector<std::uint64_t>& indices,
                                                     ArrayDimensionsView dimensions, bool check)
{
    return calculateOffsetRowMajor(indices.data(), indices.size(), dimensions, check);
}

std::uint64_t ArrayIndexing::calculateOffsetColumnMajor(const std::uint64_t* indices, std::size_t count,
                                                        ArrayDimensionsView dimensions, bool check)
{
    std::uint64_t sum = 0;
    std::uint64_t distance = 1;
    for (std::size_t i = 0; i < count; ++i) {
        addIndex(indices[i], i, distance, dimensions, check, &sum);
        if (i < dimensions.size())
            distance *= dimensions[i];
    }
    return sum;
}

std::uint64_t ArrayIndexing::calculateOffsetColumnMajor(const std::vector<std::uint64_t>& indices,
                                                        ArrayDimensionsView dimensions, bool check)
{
    return calculateOffsetColumnMajor(indices.data(), indices.size(), dimensions, check);
}

void ArrayIndexing::CalculateIndicesRowMajor(std::vector<std::uint64_t>* outIndices, std::uint64_t offset,
                                             ArrayDimensionsView dimensions, bool check)
{
    const bool isEmpty = dimensions.elementCount() == 0;
    if (check && offset >= dimensions.elementCount())
        Internal::failOutOfBounds();
    outIndices->assign(dimensions.size(), 0);
    if (isEmpty)
        return;
    std::uint64_t rest = offset;
    for (std::size_t i = dimensions.size(); i-- > 1;) {
        (*outIndices)[i] = rest % dimensions[i];
        rest /= dimensions[i];
    }
    (*outIndices)[0] = rest;
}
} // namespace Brindle::Quay
