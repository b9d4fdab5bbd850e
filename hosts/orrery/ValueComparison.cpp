#include "hosts/orrery/ValueComparison.h"

#include "foundations/variant/VariantOperations.h"
#include "hosts/orrery/ElementNumber.h"
#include "hosts/orrery/ElementText.h"
#include "hosts/orrery/Numbers.h"
#include "hosts/orrery/PlainText.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>

namespace Orrery::Host {

using namespace Brindle::Quay;

namespace {

// Data files have a checksum for each block of this size, which is tested when any of its bytes are read.
constexpr std::uint64_t s_blockBytes = 4U << 20U;

std::string formText(const BVariant& value)
{
    return value.isScalar() ? "scalar" : shapeText(dimensionsOf(value));
}

const char* orderingText(const BVariant& value)
{
    return value.getDataOrdering() == DataOrdering::RowMajor ? "row-major" : "column-major";
}

bool isText(const BVariant& value)
{
    return value.getWellKnownType() == WellKnownType::of<std::string>();
}

std::string elementText(const BVariant& block, std::uint64_t position)
{
    std::string text;
    ElementText(block).append(&text, position);
    return isText(block) ? inQuotes(text) : text;
}

// The larger of the two magnitudes is the measure: what is twice as large differs by a half, either way round.
long double relativeDifference(const ElementNumber& a, const ElementNumber& b)
{
    if (a == b)
        return 0.0L;
    const long double distance = std::abs(a - b);
    const long double measure = std::max(std::abs(a), std::abs(b));
    const bool isMeasured = std::isfinite(distance) && std::isfinite(measure);
    return isMeasured ? distance / measure : std::numeric_limits<long double>::infinity();
}

/// Counts the elements that differ in two arrays of as many elements, block by block.
class ElementComparison
{
public:
    ElementComparison(const BVariant& first, const BVariant& second, const ComparisonOptions& options)
        : m_first(first)
        , m_second(second)
        , m_tolerance(options.tolerance)
        , m_readFirst(numberReader(first.getWellKnownType()))
        , m_readSecond(numberReader(second.getWellKnownType()))
        , m_isOneType(first.getWellKnownType() == second.getWellKnownType())
    {
    }

    void run(bool* readsSecond);

    /// "3 of 201 values differ, ...", "value 1 and 2"; empty when none does.
    std::string text() const;

private:
    bool areNumbers() const { return m_readFirst && m_readSecond; }
    bool areSameBits(const void* a, const void* b, std::uint64_t position) const;
    bool areSame(const void* a, const void* b, std::uint64_t position);
    void compare(const BVariant& a, const BVariant& b, std::uint64_t count);
    void note(const BVariant& a, const BVariant& b, std::uint64_t position);

    const BVariant& m_first;
    const BVariant& m_second;
    std::optional<double> m_tolerance;
    ReadElementNumber m_readFirst;
    ReadElementNumber m_readSecond;
    bool m_isOneType;
    std::uint64_t m_begin = 0; // of the present block
    std::uint64_t m_count = 0;
    std::uint64_t m_firstPosition = 0;
    std::string m_firstTexts;
    long double m_largest = 0.0L;
};

BVariant blockOf(const BVariant& value, std::uint64_t first, std::uint64_t count)
{
    BVariant block = createUninitializedArray(value.getWellKnownType(), std::vector<std::uint64_t>{count});
    copyElements(value, first, count, block.mutableData());
    return block;
}

void ElementComparison::run(bool* readsSecond)
{
    const std::uint64_t all = m_first.elementCount();
    const std::size_t bytes =
        std::max(elementSize(m_first.getWellKnownType()), elementSize(m_second.getWellKnownType()));
    const std::uint64_t step = s_blockBytes / bytes;
    for (m_begin = 0; m_begin < all; m_begin += step) {
        const std::uint64_t count = std::min(step, all - m_begin);
        *readsSecond = false;
        const BVariant a = blockOf(m_first, m_begin, count);
        *readsSecond = true;
        const BVariant b = blockOf(m_second, m_begin, count);
        compare(a, b, count);
    }
}

void ElementComparison::compare(const BVariant& a, const BVariant& b, std::uint64_t count)
{
    const void* const first = a.constData();
    const void* const second = b.constData();
    const std::size_t size = elementSize(a.getWellKnownType());
    if (m_isOneType && !isText(a) && std::memcmp(first, second, count * size) == 0)
        return;
    for (std::uint64_t i = 0; i < count; ++i) {
        if (!areSame(first, second, i))
            note(a, b, i);
    }
}

bool ElementComparison::areSameBits(const void* a, const void* b, std::uint64_t position) const
{
    const WellKnownType type = m_first.getWellKnownType();
    if (isText(m_first))
        return static_cast<const std::string*>(a)[position] == static_cast<const std::string*>(b)[position];
    const std::size_t size = elementSize(type);
    return std::memcmp(static_cast<const char*>(a) + position * size,
                       static_cast<const char*>(b) + position * size, size) == 0;
}

// Values of two types are never the same bits, so a NaN of one is the same as a NaN of the other.
bool areSameParts(long double a, long double b)
{
    return a == b || (std::isnan(a) && std::isnan(b));
}

bool ElementComparison::areSame(const void* a, const void* b, std::uint64_t position)
{
    if (m_isOneType && areSameBits(a, b, position))
        return true;
    if (!areNumbers())
        return false;
    const ElementNumber first = m_readFirst(a, position);
    const ElementNumber second = m_readSecond(b, position);
    if (!m_isOneType && areSameParts(first.real(), second.real()) &&
        areSameParts(first.imag(), second.imag()))
        return true;
    const long double difference = relativeDifference(first, second);
    if (m_tolerance && difference <= static_cast<long double>(*m_tolerance))
        return true;
    m_largest = std::max(m_largest, difference);
    return false;
}

void ElementComparison::note(const BVariant& a, const BVariant& b, std::uint64_t position)
{
    if (m_count++ > 0)
        return;
    m_firstPosition = m_begin + position;
    const std::string first = elementText(a, position);
    const std::string second = elementText(b, position);
    m_firstTexts = first + " and " + second + (first == second ? " with other bits" : "");
}

std::string positionText(std::uint64_t position, const BVariant& array)
{
    std::vector<std::uint64_t> shape = dimensionsOf(array);
    if (shape.size() < 2)
        return std::to_string(position);
    const bool isRowMajor = array.getDataOrdering() == DataOrdering::RowMajor;
    std::vector<std::uint64_t> indices(shape.size());
    for (std::size_t i = 0; i < shape.size(); ++i) {
        const std::size_t axis = isRowMajor ? shape.size() - 1 - i : i;
        indices[axis] = position % shape[axis];
        position /= shape[axis];
    }
    std::string text;
    for (const std::uint64_t index : indices)
        text += (text.empty() ? "[" : ",") + std::to_string(index);
    return text + "]";
}

std::string ElementComparison::text() const
{
    if (m_count == 0)
        return {};
    const std::uint64_t all = m_first.elementCount();
    if (all == 1)
        return "value " + m_firstTexts;
    std::string text = std::to_string(m_count) + " of " + std::to_string(all) + " values " +
                       (m_count == 1 ? "differs: " : "differ, the first ") + "at " +
                       positionText(m_firstPosition, m_first) + (m_count == 1 ? ", " : ": ") + m_firstTexts;
    if (areNumbers() && m_largest > 0.0L)
        text += "; largest relative difference " + roundedText(static_cast<double>(m_largest), 3);
    return text;
}

} // namespace

std::vector<std::string> differencesOf(const BVariant& first, const BVariant& second,
                                       const ComparisonOptions& options, bool* readsSecond)
{
    std::vector<std::string> found;
    const WellKnownType typeA = first.getWellKnownType();
    const WellKnownType typeB = second.getWellKnownType();
    if (typeA != typeB && (!options.ignoresTypes || !numberReader(typeA) || !numberReader(typeB)))
        found.push_back("elements " + Host::elementTypeName(typeA) + " and " + Host::elementTypeName(typeB));
    if (dimensionsOf(first) != dimensionsOf(second) || first.isScalar() != second.isScalar()) {
        found.push_back("shape " + formText(first) + " and " + formText(second));
        return found;
    }
    const bool isReordered = first.getDataOrdering() != second.getDataOrdering();
    if (isReordered)
        found.push_back(std::string("ordering ") + orderingText(first) + " and " + orderingText(second));
    const bool areComparable = typeA == typeB || (numberReader(typeA) && numberReader(typeB));
    if (!areComparable || first.isEmpty())
        return found;

    *readsSecond = true;
    const BVariant like = isReordered ? second.reordered(first.getDataOrdering()) : second;
    ElementComparison elements(first, like, options);
    elements.run(readsSecond);
    if (const std::string text = elements.text(); !text.empty())
        found.push_back(text);
    return found;
}

} // namespace Orrery::Host
