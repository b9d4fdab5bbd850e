#pragma once

#include "foundations/variant/ArrayDimensionsView.h"
#include "foundations/variant/WellKnownType.h"
#include "quaycore_export.h"

#include <cstddef>
#include <cstdint>
#include <typeinfo>

namespace Brindle::Quay {
/// What a payload of a run-time type can do with its elements.
struct QUAYCORE_EXPORT TypeOperations
{
    /// Whether `count` elements at `first` equal those at `second`. The flag is 1 for an exact comparison, 0 for
    /// one that would also have converted.
    bool (*equal)(const void* first, const void* second, std::uint64_t count, int flag);
};

/// The content of a variant: null, a scalar, or an array, of one element type.
///
/// A payload lies either in the 40-byte buffer of one variant, which then destroys it in place, or on the heap,
/// shared by any number of owners that count themselves with addRef and release. A function that returns an
/// `IVariantData*` hands one ownership of a heap payload to the caller.
///
/// A host may bring payloads of its own (HeapVariantData is the base to start from, BVariant::fromPayload the
/// door). Nothing keeps the result of constData across calls, and shape, ordering and type are asked for without
/// it: a payload may fetch its elements at the first constData, and may then throw std::runtime_error.
/// Threads: const operations may run at once on several threads, as may addRef and release; a writer needs a
///          payload of its own, which is what detach gives.
class QUAYCORE_EXPORT IVariantData
{
public:
    virtual ~IVariantData() = default;

    /// One more owner; without effect on a payload in a buffer.
    virtual void addRef() const noexcept = 0;

    /// One owner less; the last one destroys a heap payload. Without effect on a payload in a buffer.
    virtual void release() const noexcept = 0;

    /// A payload with this one owner and the same content, to be called before every write.
    ///
    /// The holder replaces its pointer by the result: where that is another payload, the holder's ownership of
    /// this one has been given up. When it throws, nothing has changed.
    virtual IVariantData* detach() = 0;

    /// Builds this scalar anew in a buffer of `size` bytes, aligned like a pointer: as a copy, or, with `move`,
    /// taking the value over and leaving here one that can only be destroyed.
    ///
    /// Returns the new payload, whose address is `buffer`; none for a payload that isn't held in buffers.
    /// A move doesn't throw.
    virtual IVariantData* placeInto(void* buffer, std::size_t size, bool move) = 0;

    /// The sizes of the dimensions, none for null; valid as long as the payload.
    virtual ArrayDimensionsView getDimensions() const = 0;

    /// True for the scalar form; an array of one element isn't one.
    virtual bool isScalar() const = 0;

    virtual DataOrdering getDataOrdering() const = 0;   ///< how the elements of constData() follow each other
    virtual WellKnownType getWellKnownType() const = 0; ///< the type of all elements; code 0 for null

    /// The element's type; that of void for null.
    virtual const std::type_info& getTypeInfo() const = 0;

    /// The operations of a run-time type; none for the well-known types.
    virtual const TypeOperations* getTypeOperations() const = 0;

    /// A payload with the same elements under the same dimensions, laid out in `ordering`.
    ///
    /// Cost: where both orderings lay the elements out alike, the data are shared, not copied.
    virtual IVariantData* reordered(DataOrdering ordering) const = 0;

    /// Copies `count` elements from storage position `first` on to `target`, if this payload knows a shorter way
    /// than constData, such as reading only that part of a file; false, with nothing done, if it doesn't.
    ///
    /// `target` points to `count` elements, which for text are live strings. The run lies inside the array.
    virtual bool readRun(std::uint64_t first, std::uint64_t count, void* target) const = 0;

    /// A payload with the elements of `source`, in their storage order, under these dimensions and ordering.
    ///
    /// Called on the payload `source` itself. Data of a heap payload are shared, not copied.
    /// Errors: std::invalid_argument when the dimensions don't have as many elements as `source`.
    virtual IVariantData* reshaped(const IVariantData* source, ArrayDimensionsView dimensions,
                                   DataOrdering ordering) const = 0;

    /// The first element; may be no pointer when there is none.
    virtual const void* constData() const = 0;

    /// The first element, for writing. Only after detach.
    virtual void* mutableData() = 0;

    /// A new payload of the given type with every element converted, or none when one can't be.
    virtual IVariantData* convertedTo(WellKnownType type, int flag) const = 0;

protected:
    IVariantData() = default;                               ///< for derived classes, which count their owners
    IVariantData(const IVariantData&) = default;            ///< for derived classes; nothing is shared
    IVariantData& operator=(const IVariantData&) = default; ///< for derived classes; owners stay
};
} // namespace Brindle::Quay
