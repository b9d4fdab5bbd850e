#include "variables/SweptValues_p.h"

#include "foundations/variant/VariantOperations.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace Orrery {

using Brindle::Quay::WellKnownType;

namespace {

std::vector<std::uint64_t> dimensionsFor(const BVariant& sample, std::uint64_t count)
{
    std::vector<std::uint64_t> dimensions = sample.getDimensions().toVector();
    if (dimensions.size() == 1 && dimensions.front() == 1)
        dimensions.front() = count;
    else
        dimensions.insert(dimensions.begin(), count);
    return dimensions;
}

template <std::size_t Size>
void repeatBytes(std::byte* first, std::uint64_t count)
{
    std::array<std::byte, Size> element;
    std::memcpy(element.data(), first, Size);
    for (std::uint64_t i = 1; i < count; ++i)
        std::memcpy(first + i * Size, element.data(), Size);
}

/// Copies the element at `first` to the places behind it, `count` in all.
void repeatElement(std::byte* first, std::uint64_t count, std::size_t size, bool text)
{
    if (text) {
        auto* const texts = reinterpret_cast<std::string*>(first);
        std::fill(texts + 1, texts + count, texts[0]);
        return;
    }
    switch (size) {
    case 1:
        return repeatBytes<1>(first, count);
    case 2:
        return repeatBytes<2>(first, count);
    case 4:
        return repeatBytes<4>(first, count);
    case 8:
        return repeatBytes<8>(first, count);
    default:
        return repeatBytes<16>(first, count); // complex numbers of doubles and 64-bit integers, times
    }
}

} // namespace

SweptValues::SweptValues(const BVariant& sample, std::uint64_t count)
    : m_type(sample.getWellKnownType())
    , m_count(count)
{
    const std::vector<std::uint64_t> dimensions = dimensionsFor(sample, count);
    for (std::size_t i = 1; i < dimensions.size(); ++i)
        m_stride *= dimensions[i];
    // Where every place is one element, what isn't filled in the end is all that has to be cleared.
    m_array = m_stride == 1 ? Brindle::Quay::createUninitializedArray(m_type, dimensions)
                            : Brindle::Quay::createArray(m_type, dimensions);
    m_data = static_cast<std::byte*>(m_array.mutableData());
    m_elementSize = Brindle::Quay::elementSize(m_type);
}

bool SweptValues::isText() const
{
    return m_type == WellKnownType::of<std::string>();
}

/// The value in the type of the array: itself, or *converted.
const BVariant& SweptValues::fit(const BVariant& value, BVariant* converted) const
{
    if (!value.holdsScalar())
        throw std::invalid_argument("The given Brindle::Quay::BVariant must hold a scalar value.");
    if (value.getWellKnownType() == m_type)
        return value;
    *converted = Brindle::Quay::convertedTo(value, m_type);
    if (converted->isNull())
        throw std::runtime_error(Brindle::Quay::conversionMessage(value, m_type));
    return *converted;
}

void SweptValues::append(const BVariant& value, std::uint64_t length)
{
    if (length == 0)
        return;
    BVariant converted;
    appendFitting(fit(value, &converted), 0, length);
}

void SweptValues::appendElement(const BVariant& vector, std::uint64_t position, std::uint64_t length)
{
    if (length == 0)
        return;
    if (vector.getWellKnownType() == m_type)
        appendFitting(vector, position, length);
    else
        append(Brindle::Quay::elementAt(vector, {position}), length);
}

void SweptValues::appendFitting(const BVariant& source, std::uint64_t position, std::uint64_t length)
{
    if (length > m_count - m_written || m_stride == 0)
        throw std::out_of_range("Indices out of bounds.");
    Brindle::Quay::copyElements(source, position, 1, place(m_written));
    if (m_stride == 1) {
        repeatElement(place(m_written), length, m_elementSize, isText());
    } else {
        for (std::uint64_t i = 1; i < length; ++i)
            Brindle::Quay::copyElements(source, position, 1, place(m_written + i));
    }
    m_written += length;
}

BVariant SweptValues::take()
{
    if (m_stride == 1 && m_written < m_count && !isText())
        std::memset(place(m_written), 0, (m_count - m_written) * m_elementSize);
    return std::move(m_array);
}

} // namespace Orrery
