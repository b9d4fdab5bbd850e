#include "foundations/variant/ArrayPayloads_p.h"

#include "foundations/variant/ElementConversion_p.h"

#include <cstdlib>
#include <limits>
#include <new>
#include <stdexcept>

#if defined(__linux__)
#include <sys/mman.h>
#endif

namespace Brindle::Quay {
namespace {
/// False where the product of the dimensions doesn't fit 64 bits.
bool countElements(ArrayDimensionsView dimensions, std::uint64_t* count)
{
    *count = 0;
    // a size of 0 beside others whose product is too large is still none
    if (dimensions.empty() || std::find(dimensions.begin(), dimensions.end(), 0U) != dimensions.end())
        return true;
    *count = 1;
    for (const std::uint64_t size : dimensions) {
        if (__builtin_mul_overflow(*count, size, count))
            return false;
    }
    return true;
}
} // namespace

std::uint64_t checkedElementCount(ArrayDimensionsView dimensions)
{
    std::uint64_t count = 0;
    if (!countElements(dimensions, &count))
        throw std::length_error("The dimensions have more elements than 64 bits can count.");
    return count;
}

namespace Internal {
namespace {
/// Asks for large pages behind a block that holds at least one: most of the time of a first write to fresh memory
/// goes into its page faults, one per 4 KiB otherwise.
void preferLargePages([[maybe_unused]] void* block, [[maybe_unused]] std::size_t size)
{
#if defined(__linux__)
    constexpr std::size_t worthIt = std::size_t(4) << 20U;
    constexpr std::size_t pageSize = 4096;
    if (size < worthIt)
        return;
    const auto begin = (reinterpret_cast<std::uintptr_t>(block) + pageSize - 1) / pageSize * pageSize;
    const auto end = (reinterpret_cast<std::uintptr_t>(block) + size) / pageSize * pageSize;
    ::madvise(reinterpret_cast<void*>(begin), end - begin, MADV_HUGEPAGE); // a refused hint changes nothing
#endif
}
} // namespace

void* allocateArrayBlock(std::size_t headerSize, std::uint64_t count, std::size_t elementSize, Fill fill)
{
    // far above any memory, and far enough below 2^63 that no sum of ours wraps
    constexpr std::uint64_t addressSpace = std::uint64_t(1) << 47U;
    if (count > addressSpace / elementSize)
        throw std::length_error("The elements of an array exceed the address space.");
    const std::size_t size = headerSize + arrayAlignment + static_cast<std::size_t>(count) * elementSize;
    // calloc hands out fresh pages without touching them
    void* block = fill == Fill::Zero ? std::calloc(1, size) : std::malloc(size);
    if (!block)
        throw std::bad_alloc();
    preferLargePages(block, size);
    return block;
}

void freeArrayBlock(void* block) noexcept
{
    std::free(block);
}

void checkCount(ArrayDimensionsView dimensions, std::uint64_t count)
{
    std::uint64_t product = 0;
    if (!countElements(dimensions, &product) || product != count)
        throw std::invalid_argument("The dimensions don't match the number of elements.");
}

PayloadPtr makeArray(WellKnownType type, ArrayDimensionsView dimensions, DataOrdering ordering, Fill fill,
                     bool isScalar)
{
    return dispatchElement(type, [&](auto tag) {
        using T = typename decltype(tag)::type;
        return PayloadPtr(ArrayPayload<T>::make(dimensions, ordering, fill, isScalar));
    });
}

IVariantData* copyPayload(const IVariantData* source, ArrayDimensionsView dimensions, DataOrdering ordering,
                          bool isScalar)
{
    return dispatchElement(source->getWellKnownType(), [&](auto tag) -> IVariantData* {
        using T = typename decltype(tag)::type;
        const std::uint64_t count = dimensions.elementCount();
        const auto* elements = static_cast<const T*>(source->constData());
        auto* copy = ArrayPayload<T>::make(dimensions, ordering, Fill::Raw, isScalar);
        PayloadPtr owner(copy);
        copyRun(elements, count, copy->data());
        return owner.release();
    });
}

IVariantData* convertPayload(const IVariantData* source, WellKnownType type)
{
    const WellKnownType from = source->getWellKnownType();
    if (!canConvert(from, type))
        return nullptr;
    const ArrayDimensionsView dimensions = source->getDimensions();
    const void* elements = source->constData();
    PayloadPtr converted =
        makeArray(type, dimensions, source->getDataOrdering(), Fill::Raw, source->isScalar());
    if (!convertElements(from, elements, type, converted->mutableData(), dimensions.elementCount()))
        return nullptr;
    return converted.release();
}

// ---- ViewPayload ------------------------------------------------------------------------------------------------

ViewPayload::ViewPayload(IVariantData* source, ArrayDimensionsView dimensions, DataOrdering ordering,
                         bool isScalar)
    : ShapedPayload(dimensions, ordering, isScalar)
    , m_source(source)
{
    m_source->addRef();
}

ViewPayload::~ViewPayload()
{
    m_source->release();
}

IVariantData* ViewPayload::make(const IVariantData* source, ArrayDimensionsView dimensions,
                                DataOrdering ordering, bool isScalar)
{
    // a view owns its source, which it may later detach: ownership isn't const
    auto* owned = const_cast<IVariantData*>(source);
    if (auto* view = dynamic_cast<ViewPayload*>(owned))
        owned = view->m_source;
    return new ViewPayload(owned, dimensions, ordering, isScalar);
}

IVariantData* ViewPayload::detach()
{
    if (isShared())
        return ShapedPayload::detach();
    m_source = m_source->detach();
    return this;
}

bool ViewPayload::readRun(std::uint64_t first, std::uint64_t count, void* target) const
{
    return m_source->readRun(first, count, target);
}
} // namespace Internal
} // namespace Brindle::Quay
