#pragma once

#include "foundations/variant/RunTimePayload.h"
#include "foundations/variant/VariantPayloads.h"
#include "quaycore_export.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace Brindle::Quay {
namespace Internal {
/// One payload pointer and a buffer of 40 bytes.
///
/// The pointer leads into the buffer (a scalar built in place), to a shared heap payload, to the null payload, or,
/// after a move, nowhere; nowhere reads as null.
/// Cost: a copy of a heap payload is one atomic increment; nothing here allocates.
class QUAYCORE_EXPORT BVariantDirectStorage
{
public:
    BVariantDirectStorage() noexcept
        : m_payload(constructVariantNull())
    {
    }
    /// Takes over one ownership of `heapPayload`.
    explicit BVariantDirectStorage(IVariantData* heapPayload) noexcept
        : m_payload(heapPayload)
    {
    }
    /// `construct(buffer, 40)` builds a scalar in the buffer and returns it.
    template <class Construct>
    BVariantDirectStorage(std::in_place_t, Construct&& construct)
        : m_payload(construct(static_cast<void*>(m_buffer), variantBufferSize))
    {
    }

    BVariantDirectStorage(const BVariantDirectStorage& other) { copyFrom(other); }
    BVariantDirectStorage(BVariantDirectStorage&& other) noexcept { moveFrom(other); }
    BVariantDirectStorage& operator=(const BVariantDirectStorage& other)
    {
        if (this != &other) {
            BVariantDirectStorage copy(other); // may throw, so before the old content goes
            destroy();
            moveFrom(copy);
        }
        return *this;
    }
    BVariantDirectStorage& operator=(BVariantDirectStorage&& other) noexcept
    {
        if (this != &other) {
            // the old content may own `other`, so it goes last
            BVariantDirectStorage old(std::move(*this));
            moveFrom(other);
        }
        return *this;
    }
    ~BVariantDirectStorage() { destroy(); }

    /// Never no pointer.
    const IVariantData* payload() const noexcept { return m_payload ? m_payload : constructVariantNull(); }
    IVariantData* payload() noexcept { return m_payload ? m_payload : constructVariantNull(); }

    /// Whether the payload is a scalar in the buffer.
    bool isInline() const noexcept { return static_cast<const void*>(m_payload) == m_buffer; }

    /// See IVariantData::detach.
    void detach()
    {
        if (m_payload && !isInline())
            m_payload = m_payload->detach();
    }

private:
    void copyFrom(const BVariantDirectStorage& other)
    {
        if (other.isInline()) {
            copyInline(other);
        } else {
            m_payload = other.m_payload;
            if (m_payload)
                m_payload->addRef();
        }
    }
    void moveFrom(BVariantDirectStorage& other) noexcept
    {
        if (other.isInline())
            moveInline(other);
        else
            m_payload = std::exchange(other.m_payload, nullptr);
    }
    void destroy() noexcept
    {
        if (isInline())
            destroyInline();
        else if (m_payload)
            m_payload->release();
    }

    // Out of line: where a compiler sees a payload class of a host, it would try that class on the buffer.
    void copyInline(const BVariantDirectStorage& other);
    void moveInline(BVariantDirectStorage& other) noexcept;
    void destroyInline() noexcept;

    IVariantData* m_payload = nullptr;
    alignas(void*) unsigned char m_buffer[variantBufferSize];
};
static_assert(sizeof(BVariantDirectStorage) == sizeof(void*) + variantBufferSize);
} // namespace Internal

/// A dynamically typed value with a shape: null, a scalar, or an n-dimensional array of one element type.
///
/// The 25 element types are those of WellKnownType. Scalars live inside the variant, arrays on the heap, shared
/// between copies until one is written to. What acts on variants stands in VariantOperations.h.
/// Edge:    a variant that was moved from is null.
/// Threads: like an int: any number of readers, or one writer. Copies that share an array count as separate
///          variants; each may be used, written to and destroyed on a thread of its own.
template <class Storage>
class BVariantGeneric
{
public:
    /// Null.
    BVariantGeneric() noexcept = default;

    /// A scalar of one of the 25 element types; every other integer type is stored by its width and sign.
    ///
    /// Cost: no heap allocation (a long text keeps its own).
    template <class T, std::enable_if_t<Internal::isStorable<T>, int> = 0>
    BVariantGeneric(T value)
        : BVariantGeneric(std::in_place, static_cast<Internal::StoredElementType<T>>(std::move(value)))
    {
    }

    /// No text: it would have no characters to read.
    BVariantGeneric(std::nullptr_t) = delete;

    /// A text scalar. Explicit, so that no literal turns into a variant (or a bool) unasked.
    explicit BVariantGeneric(const char* text)
        : BVariantGeneric(std::in_place, std::string(text))
    {
    }

    /// An array that takes the vector over; one of std::vector<bool> or of another integer type is copied.
    ///
    /// Shape:  no dimensions mean one as long as the data.
    /// Errors: std::invalid_argument when the dimensions don't have as many elements as the data.
    template <class T, std::enable_if_t<Internal::isStorable<T>, int> = 0>
    BVariantGeneric(std::vector<T> data, std::vector<std::uint64_t> dimensions = {},
                    DataOrdering ordering = DataOrdering::RowMajor)
        : m_storage(arrayPayload(std::move(data), dimensions, ordering))
    {
    }

    /// A scalar that carries an ordering, as an element taken out of a column-major array does.
    template <class T, std::enable_if_t<Internal::isElementType<T>, int> = 0>
    static BVariantGeneric scalar(T value, DataOrdering ordering = DataOrdering::RowMajor)
    {
        return BVariantGeneric(std::in_place, std::move(value), ordering);
    }

    /// A scalar of code 32, told by typeid(T): any type that can be copied and compared with ==.
    ///
    /// Cost: no heap allocation when the value fits the buffer beside one pointer and its move can't throw.
    template <class T>
    static BVariantGeneric runTime(T value)
    {
        if constexpr (Internal::fitsBuffer<T>) {
            return BVariantGeneric(Storage(std::in_place, [&](void* buffer, std::size_t) -> IVariantData* {
                return ::new (buffer) Internal::RunTimeScalar<T>(std::move(value));
            }));
        } else {
            return fromPayload(new Internal::RunTimeHeapScalar<T>(
                std::move(value), {Internal::scalarDimension, std::size_t(1)}, DataOrdering::RowMajor));
        }
    }

    /// A variant with a heap payload, such as a host's own; takes over one ownership of it, also on failure.
    ///
    /// Errors: std::length_error when the product of its dimensions doesn't fit 64 bits.
    /// Edge:   no payload gives null.
    static BVariantGeneric fromPayload(IVariantData* payload);

    /// True when the code is 0, or 32 with the type void.
    bool isNull() const
    {
        const WellKnownType type = getWellKnownType();
        return type == WellKnownType::Null ||
               (type == WellKnownType::RunTime && getTypeInfo() == typeid(void));
    }
    /// True without elements: no dimensions, or one of size 0. Null is empty.
    bool isEmpty() const { return elementCount() == 0; }
    /// The product of the dimensions; 0 without any.
    std::uint64_t elementCount() const { return getDimensions().elementCount(); }
    /// True when there is exactly one element: a scalar, or an array whose dimensions are all 1.
    bool holdsScalar() const { return getDimensions().holdsScalar(); }
    /// True for the scalar form only.
    bool isScalar() const { return payload()->isScalar(); }

    /// Valid as long as this variant is neither changed nor moved.
    ArrayDimensionsView getDimensions() const { return payload()->getDimensions(); }
    DataOrdering getDataOrdering() const { return payload()->getDataOrdering(); }    ///< RowMajor for null
    WellKnownType getWellKnownType() const { return payload()->getWellKnownType(); } ///< of all elements
    const std::type_info& getTypeInfo() const { return payload()->getTypeInfo(); }   ///< void's for null

    /// The first element, the others after it in storage order; may be no pointer when there is none.
    ///
    /// Valid as long as this variant is neither changed nor moved.
    /// Errors: what the payload throws that fetches its elements now, std::runtime_error from a damaged file.
    const void* constData() const { return payload()->constData(); }

    /// Makes this variant the only owner of its payload, copying a shared one. To be called before every write.
    ///
    /// Errors: std::bad_alloc; the variant is then as it was.
    void detach() { m_storage.detach(); }

    /// The first element, for writing, after detach; one pointer serves any number of elements.
    ///
    /// Edge: a variant that isn't the only owner is detached here, so that no write reaches a copy.
    void* mutableData()
    {
        m_storage.detach();
        return m_storage.payload()->mutableData();
    }

    /// The same elements under the same dimensions, laid out in `ordering`.
    ///
    /// Cost: shares the data where both orderings lay them out alike.
    BVariantGeneric reordered(DataOrdering ordering) const;

    void swap(BVariantGeneric& other) noexcept { std::swap(m_storage, other.m_storage); } ///< copies no array

    /// The payload itself, for what acts on variants; never no pointer.
    const IVariantData* payload() const noexcept { return m_storage.payload(); }
    /// Whether the payload is a scalar inside this variant.
    bool isInline() const noexcept { return m_storage.isInline(); }

private:
    explicit BVariantGeneric(Storage&& storage) noexcept
        : m_storage(std::move(storage))
    {
    }
    template <class Element>
    BVariantGeneric(std::in_place_t, Element value, DataOrdering ordering = DataOrdering::RowMajor)
        : m_storage(std::in_place, [&](void* buffer, std::size_t size) {
            return constructVariantScalar<Element>(buffer, size, std::move(value), ordering);
        })
    {
    }

    template <class T>
    static IVariantData* arrayPayload(std::vector<T>&& data, ArrayDimensionsView dimensions,
                                      DataOrdering ordering)
    {
        using Stored = Internal::StoredElementType<T>;
        if constexpr (std::is_same_v<T, Stored>)
            return constructVariantDataFromMovedVector<T>(std::move(data), dimensions, ordering);
        else
            return constructVariantDataFromMovedVector<Stored>(std::vector<Stored>(data.begin(), data.end()),
                                                               dimensions, ordering);
    }

    Storage m_storage;
};

extern template class QUAYCORE_EXPORT BVariantGeneric<Internal::BVariantDirectStorage>;

using BVariant = BVariantGeneric<Internal::BVariantDirectStorage>; ///< the variant of all interfaces

/// Exchange two variants without copying an array.
inline void swap(BVariant& a, BVariant& b) noexcept
{
    a.swap(b);
}
} // namespace Brindle::Quay
