#include "variables/GetAt.h"

#include "foundations/variant/VariantOperations.h"
#include "variables/GetAt_p.h"

#include <algorithm>
#include <cstddef>
#include <exception>
#include <iterator>
#include <vector>

namespace Orrery {
namespace {

using Brindle::Quay::ArrayDimensionsView;

bool isColumnLike(ArrayDimensionsView dimensions)
{
    return std::all_of(std::next(dimensions.begin()), dimensions.end(),
                       [](std::uint64_t n) { return n == 1; });
}

BVariant elementOfColumn(const BVariant& variant, std::size_t dimensionCount, std::uint64_t index)
{
    std::vector<std::uint64_t> indices(dimensionCount, 0);
    indices.front() = index;
    return Brindle::Quay::elementAt(variant, indices.data(), indices.size());
}

BVariant partAt(const BVariant& variant, std::uint64_t index)
{
    using Brindle::Quay::elementAt;

    const ArrayDimensionsView dimensions = variant.getDimensions();
    if (dimensions.size() == 1)
        return elementAt(variant, &index, 1);
    if (dimensions.size() == 2 && dimensions[0] == 1) {
        const std::uint64_t inRow[] = {0, index};
        return elementAt(variant, inRow, 2);
    }
    if (dimensions.size() == 2 && dimensions[1] == 1) {
        const std::uint64_t inColumn[] = {index, 0};
        return elementAt(variant, inColumn, 2);
    }
    if (isColumnLike(dimensions))
        return elementOfColumn(variant, dimensions.size(), index);
    return Brindle::Quay::subArrayAt(variant, index);
}

} // namespace

ERESULT readAt(BVariant* out, const BVariant& variant, std::uint64_t index)
{
    if (!out)
        return ER_INVALID_ARGUMENT;
    if (variant.isEmpty()) {
        *out = variant;
        return ER_SUCCESS;
    }
    try {
        *out = partAt(variant, index);
        return ER_SUCCESS;
    } catch (const std::exception&) {
        return ER_FAILED;
    }
}

// NOLINTNEXTLINE(performance-unnecessary-value-param): hosts are linked with the form that takes a value
ERESULT GetAt(BVariant* out, BVariant variant, std::uint64_t index)
{
    return readAt(out, variant, index);
}

} // namespace Orrery
