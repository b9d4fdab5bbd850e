#include "foundations/storage/StoredElements_p.h"

#include "foundations/storage/ElementTypes_p.h"
#include "foundations/storage/StorageError_p.h"
#include "foundations/variant/VariantOperations.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

namespace Orrery {

using Brindle::Quay::BVariant;
using Brindle::Quay::DataOrdering;
using Brindle::Quay::WellKnownType;
using namespace CatalogueFormat;

namespace {

std::uint64_t ElementCount(const ArrayRecord& record)
{
    std::uint64_t count = 1; // the catalogue's check has proved that it fits
    for (const std::uint64_t size : record.dimensions)
        count *= size;
    return count;
}

bool IsMultiDimensional(const ArrayRecord& record)
{
    return std::count_if(record.dimensions.begin(), record.dimensions.end(),
                         [](std::uint64_t size) { return size != 1; }) > 1;
}

void ExpectSound(std::uint16_t element, const void* data, std::uint64_t count)
{
    if (!ElementTypes::AreSound(element, data, count))
        throw StorageError(QStringLiteral("a truth value is neither 0 nor 1"));
}

template <std::size_t Size>
struct ElementBytes
{
    unsigned char bytes[Size];
};

// Puts row-major elements, as they come from the file, to their places in column-major memory.
class ColumnMajorTarget
{
public:
    ColumnMajorTarget(const std::vector<std::uint64_t>& dimensions, std::uint64_t elementSize, void* elements)
        : m_dimensions(dimensions)
        , m_distances(dimensions.size())
        , m_indices(dimensions.size(), 0)
        , m_elementSize(elementSize)
        , m_elements(elements)
    {
        std::uint64_t distance = 1;
        for (std::size_t i = 0; i < dimensions.size(); ++i) {
            m_distances[i] = distance;
            distance *= dimensions[i];
        }
    }

    // The next `count` elements of the file.
    void Append(const char* from, std::uint64_t count)
    {
        switch (m_elementSize) {
        case 1:
            return AppendElements<1>(from, count);
        case 2:
            return AppendElements<2>(from, count);
        case 4:
            return AppendElements<4>(from, count);
        case 8:
            return AppendElements<8>(from, count);
        default:
            return AppendElements<16>(from, count);
        }
    }

private:
    template <std::size_t Size>
    void AppendElements(const char* from, std::uint64_t count)
    {
        using Element = ElementBytes<Size>;
        const auto* source = reinterpret_cast<const Element*>(from);
        auto* const target = static_cast<Element*>(m_elements);
        const std::uint64_t distance = m_distances.back();
        std::uint64_t& column = m_indices.back();
        while (count != 0) {
            const std::uint64_t run = std::min(count, m_dimensions.back() - column);
            for (std::uint64_t i = 0; i < run; ++i)
                target[m_row + (column + i) * distance] = source[i];
            source += run;
            count -= run;
            column += run;
            if (column == m_dimensions.back())
                NextRow();
        }
    }

    void NextRow()
    {
        m_indices.back() = 0;
        for (std::size_t i = m_indices.size() - 1; i-- > 0;) {
            m_row += m_distances[i];
            if (++m_indices[i] < m_dimensions[i])
                return;
            m_row -= m_distances[i] * m_dimensions[i];
            m_indices[i] = 0;
        }
    }

    const std::vector<std::uint64_t>& m_dimensions;
    std::vector<std::uint64_t> m_distances; ///< of neighbours along each dimension
    std::vector<std::uint64_t> m_indices;   ///< of the next element
    std::uint64_t m_elementSize;
    void* m_elements;
    std::uint64_t m_row = 0; ///< where the first element of the row stands that is being filled
};

void ReadInPlace(const StoredArray& array, char* out)
{
    const std::uint64_t size = ElementTypes::Size(array.Element());
    const auto place = [&](std::uint64_t block) { return out + block * ChecksumBlock; };
    array.ReadBlocks(place, [&](std::uint64_t block) {
        ExpectSound(array.Element(), place(block), array.BlockBytes(block) / size);
    });
}

void ReadToColumnMajor(const StoredArray& array, void* out)
{
    const std::uint64_t size = ElementTypes::Size(array.Element());
    ColumnMajorTarget target(array.Record().dimensions, size, out);
    const std::unique_ptr<char[]> block(new char[std::min(ChecksumBlock, array.Record().storedBytes)]);
    array.ReadBlocks([&](std::uint64_t) { return block.get(); },
                     [&](std::uint64_t index) {
                         const std::uint64_t count = array.BlockBytes(index) / size;
                         ExpectSound(array.Element(), block.get(), count);
                         target.Append(block.get(), count);
                     });
}

void Unpad(const char* bytes, std::uint64_t length, std::uint64_t count, std::string* texts)
{
    for (std::uint64_t i = 0; i < count; ++i) {
        std::uint64_t size = length;
        while (size > 0 && bytes[i * length + size - 1] == '\0')
            --size;
        texts[i].assign(bytes + i * length, size);
    }
}

void Unpack(const std::string& bytes, std::uint64_t count, std::string* texts)
{
    std::uint64_t at = count * sizeof(std::uint64_t);
    for (std::uint64_t i = 0; i < count; ++i) {
        std::uint64_t size = 0;
        std::memcpy(&size, bytes.data() + i * sizeof size, sizeof size);
        if (size > bytes.size() - at)
            throw StorageError(QStringLiteral("the array's texts are longer than its dataset"));
        texts[i].assign(bytes, at, size);
        at += size;
    }
    if (at != bytes.size())
        throw StorageError(QStringLiteral("the array's texts are shorter than its dataset"));
}

void ReadTexts(const StoredArray& array, std::uint64_t count, std::string* texts)
{
    std::string bytes(array.Record().storedBytes, '\0');
    array.ReadBlocks([&](std::uint64_t block) { return &bytes[block * ChecksumBlock]; },
                     [](std::uint64_t) {});
    if (array.Record().layout == LayoutPaddedText)
        Unpad(bytes.data(), bytes.size() / count, count, texts);
    else
        Unpack(bytes, count, texts);
}

} // namespace

BVariant StoredElements::Read(const StoredArray& array)
{
    const ArrayRecord& record = array.Record();
    array.Locate(); // before the memory is asked for
    const DataOrdering ordering = array.IsColumnMajor() ? DataOrdering::ColumnMajor : DataOrdering::RowMajor;
    const bool isText = array.Element() == ElementTypes::TextCode;
    BVariant value = createUninitializedArray(WellKnownType(array.Element()), record.dimensions,
                                              isText ? DataOrdering::RowMajor : ordering);
    void* const elements = value.mutableData();
    if (isText) {
        ReadTexts(array, ElementCount(record), static_cast<std::string*>(elements));
        return value.reordered(ordering);
    }
    if (array.IsColumnMajor() && IsMultiDimensional(record))
        ReadToColumnMajor(array, elements);
    else
        ReadInPlace(array, static_cast<char*>(elements));
    return value;
}

bool StoredElements::HasRuns(const StoredArray& array)
{
    return array.Record().layout != LayoutPackedText &&
           !(array.IsColumnMajor() && IsMultiDimensional(array.Record()));
}

std::uint64_t StoredElements::Size(const StoredArray& array)
{
    return array.Record().storedBytes / ElementCount(array.Record());
}

void StoredElements::ReadRun(const StoredArray& array, std::uint64_t first, std::uint64_t count, void* target)
{
    const std::uint64_t size = Size(array);
    if (array.Element() != ElementTypes::TextCode) {
        array.ReadRun(first * size, count * size, static_cast<char*>(target));
        ExpectSound(array.Element(), target, count);
        return;
    }
    std::string bytes(count * size, '\0');
    array.ReadRun(first * size, bytes.size(), &bytes[0]);
    Unpad(bytes.data(), size, count, static_cast<std::string*>(target));
}

} // namespace Orrery
