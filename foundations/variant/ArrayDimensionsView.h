#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <vector>

namespace Brindle::Quay {
/// The sizes of an array, one unsigned 64-bit number per dimension, seen through a pointer and a count.
///
/// Owns nothing: valid as long as the sizes it was made from, so a view of a payload ends with the payload, and
/// one made from a braced list with the full expression. An empty view stands for null, or for no dimensions.
class ArrayDimensionsView
{
public:
    using value_type = std::uint64_t;            ///< what is seen: the size of one dimension
    using const_iterator = const std::uint64_t*; ///< valid as long as the sizes

    constexpr ArrayDimensionsView() noexcept = default; ///< no dimensions
    /// Sees `count` sizes from `sizes` on, which must outlive the view.
    constexpr ArrayDimensionsView(const std::uint64_t* sizes, std::size_t count) noexcept
        : m_sizes(sizes)
        , m_count(count)
    {
    }
    /// Sees the sizes in the vector, which must outlive the view and not grow meanwhile.
    ArrayDimensionsView(const std::vector<std::uint64_t>& sizes) noexcept
        : m_sizes(sizes.data())
        , m_count(sizes.size())
    {
    }
    /// For arguments written in place, as in `createArray(type, {2, 3})`.
    constexpr ArrayDimensionsView(std::initializer_list<std::uint64_t> sizes) noexcept
    {
        m_sizes = sizes.begin();
        m_count = sizes.size();
    }

    /// The size of the first dimension.
    constexpr const std::uint64_t* begin() const noexcept { return m_sizes; }
    constexpr const std::uint64_t* end() const noexcept { return m_sizes + m_count; } ///< behind the last
    /// The sizes in memory; may be no pointer without dimensions.
    constexpr const std::uint64_t* data() const noexcept { return m_sizes; }
    constexpr std::size_t size() const noexcept { return m_count; } ///< the number of dimensions
    constexpr bool empty() const noexcept { return m_count == 0; }  ///< whether there are no dimensions
    /// Edge: unchecked; `position` must be below size().
    constexpr std::uint64_t operator[](std::size_t position) const noexcept { return m_sizes[position]; }

    /// The product of all sizes; 0, not 1, without dimensions.
    ///
    /// Edge: modulo 2^64. Whatever creates an array tests the product first, so that of a variant is exact.
    constexpr std::uint64_t elementCount() const noexcept
    {
        if (m_count == 0)
            return 0;
        std::uint64_t product = 1;
        for (std::size_t i = 0; i < m_count; ++i)
            product *= m_sizes[i];
        return product;
    }

    /// True when there is exactly one element: at least one dimension and all of them 1.
    constexpr bool holdsScalar() const noexcept
    {
        for (std::size_t i = 0; i < m_count; ++i) {
            if (m_sizes[i] != 1)
                return false;
        }
        return m_count != 0;
    }

    /// True when there are elements and at most one dimension is 2 or more: both orderings lay them out alike.
    constexpr bool isVectorShaped() const noexcept { return elementCount() != 0 && longDimensions() <= 1; }

    /// True when there are two elements or more, along more than one dimension: the ordering matters.
    constexpr bool isMultiDimensional() const noexcept { return elementCount() >= 2 && longDimensions() > 1; }

    std::vector<std::uint64_t> toVector() const { return {begin(), end()}; } ///< a copy that may outlive them

private:
    constexpr std::size_t longDimensions() const noexcept
    {
        std::size_t number = 0;
        for (std::size_t i = 0; i < m_count; ++i)
            number += m_sizes[i] >= 2 ? 1U : 0U;
        return number;
    }

    const std::uint64_t* m_sizes = nullptr;
    std::size_t m_count = 0;
};

/// Same number of dimensions and the same sizes.
constexpr bool operator==(ArrayDimensionsView a, ArrayDimensionsView b) noexcept
{
    if (a.size() != b.size())
        return false;
    for (std::size_t i = 0; i < a.size(); ++i) {
        if (a[i] != b[i])
            return false;
    }
    return true;
}

/// Another number of dimensions, or another size of one of them.
constexpr bool operator!=(ArrayDimensionsView a, ArrayDimensionsView b) noexcept
{
    return !(a == b);
}
} // namespace Brindle::Quay
