// A slice of any array by any selectors either fails with an exception of the library or selects what a plain walk
// over index lists selects, in the same order.
#include "foundations/variant/Variant.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <exception>
#include <numeric>
#include <vector>

using namespace Brindle::Quay;

namespace {

// Small numbers from the input; zeros once it is used up.
class Numbers
{
public:
    Numbers(const std::uint8_t* data, std::size_t size)
        : m_at(data)
        , m_end(data + size)
    {
    }

    std::uint64_t Next(std::uint64_t limit) { return m_at == m_end ? 0 : *m_at++ % limit; }

    // Mostly small, now and then at the far end of the range, where arithmetic wraps.
    std::uint64_t NextIndex()
    {
        const std::uint64_t value = Next(256);
        return value < 240 ? value % 8 : UINT64_MAX - (value - 240);
    }

private:
    const std::uint8_t* m_at;
    const std::uint8_t* m_end;
};

IndexValue NextValue(Numbers* numbers)
{
    const std::uint64_t value = numbers->NextIndex();
    return IndexValue(value, numbers->Next(2) == 1);
}

IndexSet NextSet(Numbers* numbers)
{
    switch (numbers->Next(4)) {
    case 3: {
        IndexSet several(NextValue(numbers));
        several.append(NextValue(numbers));
        return several;
    }
    case 0:
        return IndexSet(NextValue(numbers));
    case 1:
        return IndexSet(IndexRange::all);
    default: {
        const IndexValue first = NextValue(numbers);
        const IndexValue last = NextValue(numbers);
        return IndexSet(IndexRange(first, last, numbers->NextIndex()));
    }
    }
}

// What a set of selectors picks, one after the other.
std::vector<std::uint64_t> Resolved(const IndexSet& set, std::uint64_t dimension)
{
    std::vector<std::uint64_t> list;
    for (std::size_t i = 0; i < set.size(); ++i) {
        const std::vector<std::uint64_t> part = set[i].resolve(dimension);
        list.insert(list.end(), part.begin(), part.end());
    }
    return list;
}

// The storage offsets that the selectors pick, by walking the lists of indices that they resolve to; the first
// dimension is the outermost for row-major arrays, the last one for column-major ones.
std::vector<std::uint64_t> Expected(const ArraySlice& slice, const std::vector<std::uint64_t>& dimensions,
                                    bool rowMajor)
{
    std::vector<std::vector<std::uint64_t>> lists;
    for (std::size_t d = 0; d < dimensions.size(); ++d) {
        std::vector<std::uint64_t> list;
        if (d < slice.size()) {
            list = Resolved(slice[d], dimensions[d]);
        } else {
            list.resize(dimensions[d]);
            std::iota(list.begin(), list.end(), 0U);
        }
        lists.push_back(list);
    }
    std::vector<std::uint64_t> offsets{0};
    std::vector<std::size_t> order(dimensions.size());
    std::iota(order.begin(), order.end(), 0U);
    if (!rowMajor)
        std::reverse(order.begin(), order.end());
    for (const std::size_t d : order) {
        std::vector<std::uint64_t> next;
        for (const std::uint64_t offset : offsets) {
            for (const std::uint64_t index : lists[d])
                next.push_back(offset * dimensions[d] + index);
        }
        offsets = next;
    }
    return offsets;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    Numbers numbers(data, size);
    std::vector<std::uint64_t> dimensions(1 + numbers.Next(4));
    for (std::uint64_t& dimension : dimensions)
        dimension = numbers.Next(5);
    const bool rowMajor = numbers.Next(2) == 0;
    std::uint64_t count = 1;
    for (const std::uint64_t dimension : dimensions)
        count *= dimension;
    std::vector<double> elements(count);
    std::iota(elements.begin(), elements.end(), 0.0);
    const BVariant array(elements, dimensions, rowMajor ? DataOrdering::RowMajor : DataOrdering::ColumnMajor);

    ArraySlice arraySlice;
    for (std::uint64_t sets = numbers.Next(dimensions.size() + 2); sets > 0; --sets)
        arraySlice.push_back(NextSet(&numbers));
    try {
        const BVariant result = slice(array, arraySlice);
        const auto* const selected = static_cast<const double*>(result.constData());
        const std::vector<std::uint64_t> expected = Expected(arraySlice, dimensions, rowMajor);
        if (result.elementCount() != expected.size() || result.getDataOrdering() != array.getDataOrdering())
            std::abort();
        for (std::size_t i = 0; i < expected.size(); ++i) {
            if (selected[i] != static_cast<double>(expected[i]))
                std::abort();
        }
    } catch (const std::exception&) {
        return 0; // refused, as most of these are
    }
    return 0;
}
