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

using Brindle::Quay::ArrayDimensionsView;
using Brindle::Quay::DataOrdering;
using Brindle::Quay::WellKnownType;

namespace {

/// Whether appendValues takes it as far as the shape goes.
bool isJoinable(ArrayDimensionsView dimensions)
{
    return dimensions.size() == 1 || dimensions.isVectorShaped();
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

/// Nested joins are put together from the inside. Where they double what they contain, level by level, the
/// first of them already knows that one further out can't be held; the memory would be full long before that
/// one fails. Levels don't add up: the pieces of one are gone when the next has them.
void expectRoomForNested(std::size_t elementSize)
{
    constexpr std::uint64_t copies = 3; // the pieces, what they are joined to, and its place in the outer one
    const std::uint64_t elements = ReadInProgress::expectedBetween();
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
    const ArrayDimensionsView dimensions = piece.getDimensions();
    const std::uint64_t count = dimensions.elementCount();
    if (count == 0 || (isJoinable(dimensions) && tryAppend(piece, count)))
        return;
    // A new common type, of which there are few, or a failure.
    finish();
    *m_out = Brindle::Quay::appendValues(*m_out, piece);
}

/// False, with nothing changed, for what doesn't fit the type so far.
bool ValueJoiner::tryAppend(const BVariant& piece, std::uint64_t count)
{
    BVariant converted;
    const BVariant* const fitting = fit(piece, count, &converted);
    if (!fitting)
        return false;
    if (!isJoining()) {
        begin(*fitting, count);
    } else {
        if (count > m_capacity - m_count)
            moveToBuffer(capacityFor(m_count + count));
        Brindle::Quay::copyElements(*fitting, 0, count, m_data + m_count * m_elementSize);
        m_count += count;
    }
    if (m_shape.empty() && piece.getDimensions().size() > 1)
        m_shape = shapeOf(piece);
    return true;
}

/// The piece in the type so far: itself (a copy of a variant would cost more than one of its few elements),
/// or *converted; null for what doesn't fit.
const BVariant* ValueJoiner::fit(const BVariant& piece, std::uint64_t count, BVariant* converted) const
{
    if (!isJoining() && !isJoinable(m_out->getDimensions()))
        return nullptr;
    const WellKnownType type = isJoining() ? m_type : m_out->getWellKnownType();
    const std::uint64_t present = isJoining() ? m_count : m_out->elementCount();
    if (type == WellKnownType::RunTime || count > std::numeric_limits<std::uint64_t>::max() - present)
        return nullptr;
    const WellKnownType pieceType = piece.getWellKnownType();
    if (pieceType == type)
        return &piece;
    if (WellKnownType::getCommonWellKnownType(type, pieceType) != type)
        return nullptr;
    *converted = Brindle::Quay::convertedTo(piece, type);
    return converted->isNull() ? nullptr : converted;
}

/// Room for what is expected, as far as what there is makes that likely: memory that is never touched costs
/// little, but a Variable may claim any number of offsets. Text is made, so it is expected with more care.
std::uint64_t ValueJoiner::capacityFor(std::uint64_t needed) const
{
    constexpr std::uint64_t harmless = std::uint64_t(64) << 20U; // bytes
    const bool text = m_type == WellKnownType::of<std::string>();
    const std::uint64_t factor = text ? 2 : 8;
    const std::uint64_t likely =
        std::max(needed <= std::numeric_limits<std::uint64_t>::max() / factor ? needed * factor : needed,
                 text ? 0 : harmless / m_elementSize);
    return std::max(needed, std::min(m_expected, likely));
}

/// What there is stays in *m_out when this throws.
void ValueJoiner::begin(const BVariant& second, std::uint64_t secondCount)
{
    const std::uint64_t firstCount = m_out->elementCount();
    m_type = m_out->getWellKnownType();
    m_elementSize = Brindle::Quay::elementSize(m_type);
    m_shape = shapeOf(*m_out);
    expectRoomForNested(m_elementSize);
    const std::uint64_t capacity = capacityFor(firstCount + secondCount);
    BVariant buffer = Brindle::Quay::createUninitializedArray(m_type, {&capacity, 1});
    auto* const data = static_cast<std::byte*>(buffer.mutableData());
    Brindle::Quay::copyElements(*m_out, 0, firstCount, data);
    Brindle::Quay::copyElements(second, 0, secondCount, data + firstCount * m_elementSize);
    m_buffer = std::move(buffer);
    m_data = data;
    m_capacity = capacity;
    m_count = firstCount + secondCount;
    *m_out = BVariant();
}

/// Nothing has changed when this throws.
void ValueJoiner::moveToBuffer(std::uint64_t capacity)
{
    BVariant buffer = Brindle::Quay::createUninitializedArray(m_type, {&capacity, 1});
    auto* const data = static_cast<std::byte*>(buffer.mutableData());
    if (m_type == WellKnownType::of<std::string>()) {
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
