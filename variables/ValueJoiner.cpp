#include "variables/ValueJoiner_p.h"

#include "foundations/variant/VariantOperations.h"
#include "variables/ReadInProgress_p.h"

#include <algorithm>
#include <cstring>
#include <exception>
#include <limits>
#include <new>
#include <string>
#include <utility>

#if defined(__unix__)
#include <unistd.h>
#endif

namespace Orrery {

using Brindle::Quay::DataOrdering;
using Brindle::Quay::WellKnownType;

namespace {

bool isText(const BVariant& value)
{
    return value.getWellKnownType() == WellKnownType::of<std::string>();
}

/// Whether appendValues takes it as far as the shape goes.
bool isJoinable(const BVariant& value)
{
    return value.elementCount() == 1 || value.getDimensions().isVectorShaped();
}

/// The dimensions of a piece under which what follows can be joined; none for a plain vector.
std::vector<std::uint64_t> shapeOf(const BVariant& piece)
{
    const auto dimensions = piece.getDimensions();
    return dimensions.size() < 2 ? std::vector<std::uint64_t>() : dimensions.toVector();
}

/// `shape` with the dimension along which it grows set to `count`.
void stretch(std::vector<std::uint64_t>& shape, std::uint64_t count)
{
    auto grown = std::find_if(shape.begin() + 1, shape.end(), [](std::uint64_t size) { return size != 1; });
    if (grown == shape.end())
        grown = shape.begin();
    *grown = count;
}

std::uint64_t memoryOfMachine()
{
#if defined(_SC_PHYS_PAGES) && defined(_SC_PAGESIZE)
    const long pages = ::sysconf(_SC_PHYS_PAGES);
    const long pageSize = ::sysconf(_SC_PAGESIZE);
    if (pages > 0 && pageSize > 0)
        return static_cast<std::uint64_t>(pages) * static_cast<std::uint64_t>(pageSize);
#endif
    return std::numeric_limits<std::uint64_t>::max();
}

/// Nested joins are put together from the inside. Where they double what they contain, level by level, the first of
/// them already knows that the last can't be held; the memory would be full long before that one fails.
void expectRoomForNested(std::size_t elementSize)
{
    constexpr std::uint64_t copies = 3; // the pieces, what they are joined to, and its place in the outer one
    const std::uint64_t elements = ReadInProgress::nestedElements();
    if (elements != 0 && elements > memoryOfMachine() / copies / elementSize)
        throw std::bad_alloc();
}

} // namespace

ValueJoiner::ValueJoiner(BVariant* out, std::uint64_t expected)
    : m_out(out)
    , m_expected(expected)
{
}

ValueJoiner::~ValueJoiner()
{
    try {
        finish();
    } catch (const std::exception&) {
        *m_out = BVariant();
    }
}

void ValueJoiner::append(const BVariant& piece)
{
    if (piece.isEmpty() || tryAppend(piece))
        return;
    // A new common type, of which there are few, or a failure.
    finish();
    *m_out = Brindle::Quay::appendValues(*m_out, piece);
}

/// False, with nothing changed, for what doesn't fit the type so far.
bool ValueJoiner::tryAppend(const BVariant& piece)
{
    BVariant fitting;
    if (!tryFit(piece, &fitting))
        return false;
    if (!isJoining()) {
        begin(fitting);
    } else {
        const std::uint64_t count = fitting.elementCount();
        if (count > m_capacity - m_count)
            moveToBuffer(capacityFor(m_count + count));
        Brindle::Quay::copyElements(fitting, 0, count, m_data + m_count * m_elementSize);
        m_count += count;
    }
    if (m_shape.empty())
        m_shape = shapeOf(piece);
    return true;
}

bool ValueJoiner::tryFit(const BVariant& piece, BVariant* fitting) const
{
    const BVariant& first = isJoining() ? m_buffer : *m_out;
    const WellKnownType type = first.getWellKnownType();
    const std::uint64_t room =
        std::numeric_limits<std::uint64_t>::max() - (isJoining() ? m_count : first.elementCount());
    if (type == WellKnownType::RunTime || !isJoinable(piece) || piece.elementCount() > room)
        return false;
    if (!isJoining() && !isJoinable(first))
        return false;
    if (piece.getWellKnownType() == type)
        *fitting = piece;
    else if (WellKnownType::getCommonWellKnownType(type, piece.getWellKnownType()) == type)
        *fitting = Brindle::Quay::convertedTo(piece, type);
    return !fitting->isNull();
}

/// Room for what is expected, as far as what there is makes that likely: memory that is never touched costs little, but
/// a Variable may claim any number of offsets. Text is made, so it is expected with more care.
std::uint64_t ValueJoiner::capacityFor(std::uint64_t needed) const
{
    constexpr std::uint64_t harmless = std::uint64_t(64) << 20U; // bytes
    const bool text = isText(isJoining() ? m_buffer : *m_out);
    const std::uint64_t factor = text ? 2 : 8;
    const std::uint64_t likely =
        std::max(needed <= std::numeric_limits<std::uint64_t>::max() / factor ? needed * factor : needed,
                 text ? 0 : harmless / m_elementSize);
    return std::max(needed, std::min(m_expected, likely));
}

/// Nothing has changed when this throws.
void ValueJoiner::begin(const BVariant& second)
{
    const WellKnownType type = m_out->getWellKnownType();
    const std::uint64_t firstCount = m_out->elementCount();
    const std::uint64_t count = firstCount + second.elementCount();
    m_elementSize = Brindle::Quay::elementSize(type);
    expectRoomForNested(m_elementSize);
    const std::uint64_t capacity = capacityFor(count);
    BVariant buffer = Brindle::Quay::createUninitializedArray(type, {&capacity, 1});
    auto* const data = static_cast<std::byte*>(buffer.mutableData());
    Brindle::Quay::copyElements(*m_out, 0, firstCount, data);
    Brindle::Quay::copyElements(second, 0, count - firstCount, data + firstCount * m_elementSize);
    std::vector<std::uint64_t> shape = shapeOf(*m_out);
    m_shape.swap(shape);
    m_buffer = std::move(buffer);
    m_data = data;
    m_capacity = capacity;
    m_count = count;
    *m_out = BVariant();
}

/// Nothing has changed when this throws.
void ValueJoiner::moveToBuffer(std::uint64_t capacity)
{
    BVariant buffer = Brindle::Quay::createUninitializedArray(m_buffer.getWellKnownType(), {&capacity, 1});
    auto* const data = static_cast<std::byte*>(buffer.mutableData());
    if (isText(m_buffer)) {
        auto* const texts = static_cast<std::string*>(m_buffer.mutableData());
        std::move(texts, texts + m_count, static_cast<std::string*>(buffer.mutableData()));
    } else {
        std::memcpy(data, m_data, m_count * m_elementSize);
    }
    m_buffer = std::move(buffer);
    m_data = data;
    m_capacity = capacity;
}

void ValueJoiner::finish()
{
    if (!isJoining())
        return;
    if (m_count != m_capacity)
        moveToBuffer(m_count);
    BVariant joined = std::move(m_buffer);
    m_capacity = 0;
    if (!m_shape.empty()) {
        stretch(m_shape, m_count);
        joined = BVariant::fromPayload(
            joined.payload()->reshaped(joined.payload(), m_shape, DataOrdering::RowMajor));
    }
    *m_out = std::move(joined);
}

} // namespace Orrery
