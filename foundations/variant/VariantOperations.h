#pragma once

#include "foundations/variant/ArraySlice.h"
#include "foundations/variant/BVariant.h"
#include "quaycore_export.h"

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <string>
#include <type_traits>
#include <typeinfo>
#include <utility>
#include <vector>

/// What acts on variants. Failures are standard exceptions with fixed words; a failed operation leaves its target as
/// it was. Conversion flags are 1, the only value in use.
///
/// An operation that acts by the element type fails with std::runtime_error "unknown type" on code 0 (null) or 32 (a
/// run-time type), and "not a numeric type" on a code with a storage class that no element type has.
/// Any operation that reads elements passes on what the payload throws when its data can't be fetched, but for the
/// ones named try... and equalWithConversion, which answer false.
namespace Brindle::Quay {
namespace Internal {
template <class T>
QUAYCORE_EXPORT bool tryReadScalar(const BVariant& variant, T* out, int flag);
template <class T>
QUAYCORE_EXPORT T readScalar(const BVariant& variant, int flag);
template <class T>
QUAYCORE_EXPORT void writeElement(BVariant& array, const std::uint64_t* indices, std::size_t count,
                                  const BVariant& value, int flag);
QUAYCORE_EXPORT void checkHolds(const BVariant& variant, WellKnownType type, const std::type_info& info);
/// Where IterableContainer begins; *count receives its length.
QUAYCORE_EXPORT const void* iterationBegin(const BVariant& variant, WellKnownType type,
                                           const std::type_info& info, std::uint64_t* count);
[[noreturn]] QUAYCORE_EXPORT void failOutOfBounds();
} // namespace Internal

/// The one element of `variant` as a T: any element type, or any other integer type by its width and sign.
///
/// False, with *out untouched, for null, for more or fewer elements than one, for what can't be converted, and for
/// elements that can't be fetched.
/// Errors: none.
template <class T>
bool tryGetScalar(const BVariant& variant, T* out, int flag = 1)
{
    using Stored = Internal::StoredElementType<T>;
    static_assert(Internal::isStorable<T>, "only element types and integers can be read as scalars");
    if constexpr (std::is_same_v<T, Stored>) {
        return Internal::tryReadScalar<T>(variant, out, flag);
    } else {
        Stored value{};
        if (!Internal::tryReadScalar<Stored>(variant, &value, flag))
            return false;
        *out = static_cast<T>(value);
        return true;
    }
}

/// The one element of `variant` as a T, or a failure.
///
/// Errors: std::runtime_error with the conversion message ("Cannot convert Brindle::Quay::BVariant of type 'double'
///         (size: 3) to 'std::string'"); null fails with "unknown type".
template <class T>
T getScalar(const BVariant& variant, int flag = 1)
{
    static_assert(Internal::isStorable<T>, "only element types and integers can be read as scalars");
    return static_cast<T>(Internal::readScalar<Internal::StoredElementType<T>>(variant, flag));
}

/// All elements as 32-bit integers, in row-major order of their positions whatever the ordering.
///
/// False, with *out untouched, for null, when one can't be converted, and for elements that can't be fetched.
/// Errors: none.
QUAYCORE_EXPORT bool tryGetIntVector(const BVariant& variant, std::vector<int>* out, int flag = 1);

/// What tryGetIntVector reads, or a failure.
///
/// Errors: std::runtime_error with the conversion message, to 'std::vector<int>'; null fails with "unknown type".
QUAYCORE_EXPORT std::vector<int> getIntVector(const BVariant& variant, int flag = 1);

/// The guard of every typed access: the variant must hold T, by its code or as a run-time type.
///
/// Errors: std::invalid_argument "Cannot access element of null variant." or "Wrong data type.".
template <class T>
void checkElementType(const BVariant& variant)
{
    Internal::checkHolds(variant, WellKnownType::of<T>(), typeid(T));
}

/// `variant` itself, sharing its payload, when it has that type; else with every element converted, in the same
/// shape, ordering and form; null when one element can't be converted.
///
/// Numbers convert to any number type that can hold them: a fraction is cut toward zero; out of range, NaN or an
/// infinity to an integer, or a negative number to an unsigned one can't be. Bool counts as 0 and 1, and is true for
/// all but 0. A complex number is a real one when its imaginary part is 0. Text that is a real number as a whole (no
/// blanks, no "+", independent of the locale) becomes that number, and a real number its shortest text that reads
/// back the same; bool is not text. Nothing else converts.
/// Edge: null converts to nothing but null.
QUAYCORE_EXPORT BVariant convertedTo(const BVariant& variant, WellKnownType type, int flag = 1);

/// Replaces `variant` by what convertedTo gives.
///
/// Errors: std::runtime_error with the conversion message where that is null.
QUAYCORE_EXPORT void convertInPlace(BVariant& variant, WellKnownType type, int flag = 1);

/// Writes the one element of `value`, as a T, at the indices of an array of T.
///
/// Errors: in this order, std::invalid_argument "The given Brindle::Quay::BVariant must hold a scalar value.";
///         std::runtime_error with the conversion message; std::out_of_range "Indices out of bounds." for an index
///         past its own dimension; those of checkElementType; std::out_of_range again for an offset past the end.
/// Cost:   copies the array first if it is shared.
template <class T>
void setElement(BVariant& array, const std::vector<std::uint64_t>& indices, BVariant value, int flag = 1)
{
    static_assert(Internal::isElementType<T>, "arrays hold the 25 element types");
    Internal::writeElement<T>(array, indices.data(), indices.size(), value, flag);
}
/// The same for indices written in place.
template <class T>
void setElement(BVariant& array, std::initializer_list<std::uint64_t> indices, BVariant value, int flag = 1)
{
    static_assert(Internal::isElementType<T>, "arrays hold the 25 element types");
    Internal::writeElement<T>(array, indices.begin(), indices.size(), value, flag);
}

/// The element at these indices: a slice by single indices, reshaped to one dimension of 1, in the same ordering.
///
/// Errors: those of slice; std::invalid_argument when fewer indices than dimensions leave more than one element.
/// Cost:   no heap allocation (a long text keeps its own).
QUAYCORE_EXPORT BVariant elementAt(const BVariant& variant, const std::uint64_t* indices, std::size_t count);
/// The same for indices written in place: `elementAt(matrix, {1, 2})`.
inline BVariant elementAt(const BVariant& variant, std::initializer_list<std::uint64_t> indices)
{
    return elementAt(variant, indices.begin(), indices.size());
}
/// The same for indices in a vector.
inline BVariant elementAt(const BVariant& variant, const std::vector<std::uint64_t>& indices)
{
    return elementAt(variant, indices.data(), indices.size());
}

/// The elements that `arraySlice` selects, as a new array with the ordering of `variant`.
///
/// Shape:  one set per dimension, missing ones at the end taking their dimension whole. A dimension selected by a
///         single IndexValue drops out of the result; when all drop out, one dimension of 1 stays.
/// Errors: std::invalid_argument "The given ArraySlice is invalid." for null, for more sets than dimensions and for
///         a stride of 0; "unknown type" or "not a numeric type"; std::out_of_range "Index value out-of-range" for
///         a selector past its dimension; std::length_error for a backward range; std::bad_alloc.
/// Cost:   elements side by side are copied as runs: one memcpy when all of them are. One element makes no array.
QUAYCORE_EXPORT BVariant slice(const BVariant& variant, const ArraySlice& arraySlice);

/// The run [first, last] of the first dimension: slice with the one set IndexRange(first, last, 1), and its failures,
/// without building it.
///
/// Cost: one allocation and one memcpy when the run lies together (row-major, or vector-shaped).
QUAYCORE_EXPORT BVariant sliceRange(const BVariant& variant, std::uint64_t first, std::uint64_t last);

/// The sub-array at one index of the first dimension: slice with the one set IndexValue(index), and its failures,
/// without building it.
QUAYCORE_EXPORT BVariant subArrayAt(const BVariant& variant, std::uint64_t index);

/// The elements of `first`, then those of `second`, in their common type, row-major.
///
/// Shape:  one dimension, or the dimensions of the first argument that has several, grown along the first one from
///         position 1 on that isn't 1, else along position 0. An empty argument gives the other one unchanged.
/// Errors: std::runtime_error "appendValues currently supports only vector arguments" for an argument with elements
///         along more than one dimension; std::length_error for a count beyond 64 bits; the conversion message (to '') without a common type; "Creating with
///         run-time wellknowntype is not allowed." for two run-time values.
QUAYCORE_EXPORT BVariant appendValues(BVariant first, BVariant second);

/// Same type, dimensions, ordering and elements. Two nulls are equal; NaN equals nothing, 0.0 equals -0.0.
///
/// Edge: two run-time values of different types are different.
QUAYCORE_EXPORT bool exactlyEqual(const BVariant& a, const BVariant& b);

/// Same dimensions, and the same elements position by position in the common type of both, whatever the ordering.
///
/// Any two empty variants are equal. False where there is no common type.
/// Errors: none; any exception on the way gives false.
QUAYCORE_EXPORT bool equalWithConversion(const BVariant& a, const BVariant& b, int flag = 1);

/// Compares `count` elements of a well-known type in memory: numbers by value (floating) or bytes (all others), text
/// by length and bytes, times by both words.
///
/// Errors: "unknown type" or "not a numeric type".
QUAYCORE_EXPORT bool rawElementsEqual(WellKnownType type, const void* a, const void* b, std::uint64_t count);

/// An array of an element type named at run time; every element is 0, false or the empty text.
///
/// Errors: std::runtime_error "Creating with run-time wellknowntype is not allowed." for code 32, "unknown type",
///         "not a numeric type"; std::length_error when the elements exceed the address space; std::bad_alloc.
/// Cost:   one allocation; memory that is never touched stays unused.
QUAYCORE_EXPORT BVariant createArray(WellKnownType type, ArrayDimensionsView dimensions,
                                     DataOrdering ordering = DataOrdering::RowMajor);

/// Like createArray, but numbers and times are raw memory: the caller writes every element before one is read.
QUAYCORE_EXPORT BVariant createUninitializedArray(WellKnownType type, ArrayDimensionsView dimensions,
                                                  DataOrdering ordering = DataOrdering::RowMajor);

/// Copies `count` elements from storage position `first` on to `target`, which points to that many elements of the
/// variant's type (live strings for text). A payload that is read piece by piece fetches only what it must.
///
/// Errors: std::out_of_range "Indices out of bounds." when the run isn't inside; "unknown type", "not a numeric type".
QUAYCORE_EXPORT void copyElements(const BVariant& variant, std::uint64_t first, std::uint64_t count,
                                  void* target);

/// Bytes of one element of a well-known type in memory. Errors: "unknown type", "not a numeric type".
QUAYCORE_EXPORT std::size_t elementSize(WellKnownType type);

/// The name of a well-known type in messages; empty for any other code.
QUAYCORE_EXPORT const char* elementTypeName(WellKnownType type) noexcept;

/// The text of a failed conversion to `type`, whose name is empty when it has none.
///
/// Errors: "unknown type" or "not a numeric type" by the code of `variant`.
QUAYCORE_EXPORT std::string conversionMessage(const BVariant& variant, WellKnownType type);

/// The elements of a variant as a range of T, in storage order. Keeps the variant, hence the elements, alive.
///
/// Edge: an empty variant of any type gives an empty range without pointers.
template <class T>
class IterableContainer
{
public:
    using value_type = T;            ///< the element type, exactly
    using const_iterator = const T*; ///< valid as long as a container of the variant
    using iterator = const T*;       ///< elements are never written through it

    /// Errors: std::runtime_error "Data type mismatch, cannot provide iterable container" when the variant has
    ///         elements of another type.
    explicit IterableContainer(BVariant variant)
        : m_variant(std::move(variant))
        , m_begin(static_cast<const T*>(
              Internal::iterationBegin(m_variant, WellKnownType::of<T>(), typeid(T), &m_count)))
    {
    }

    // the pointers may lead into m_variant's own buffer
    /// The copy shares the elements of an array.
    /// Errors: none that the original hasn't met.
    IterableContainer(const IterableContainer& other)
        : IterableContainer(other.m_variant)
    {
    }
    IterableContainer& operator=(const IterableContainer&) = delete; ///< make another container instead

    const T* begin() const noexcept { return m_begin; }         ///< the first element in storage order
    const T* end() const noexcept { return m_begin + m_count; } ///< behind the last element
    std::uint64_t size() const noexcept { return m_count; }     ///< the number of elements, of all dimensions
    bool empty() const noexcept { return m_count == 0; }        ///< whether there are no elements

    /// Errors: std::out_of_range "Indices out of bounds.".
    const T& at(std::uint64_t position) const
    {
        if (position >= m_count)
            Internal::failOutOfBounds();
        return m_begin[position];
    }
    /// Edge: unchecked.
    const T& operator[](std::uint64_t position) const noexcept { return m_begin[position]; }

private:
    BVariant m_variant;
    std::uint64_t m_count = 0;
    const T* m_begin;
};
} // namespace Brindle::Quay
