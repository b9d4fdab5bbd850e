#pragma once

#include "foundations/variant/ArrayDimensionsView.h"
#include "foundations/variant/WellKnownType.h"
#include "quaycore_export.h"

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <memory>
#include <type_traits>
#include <vector>

namespace Brindle::Quay {
/// Selects indices in one dimension of an array. Hosts may derive selectors of their own.
class QUAYCORE_EXPORT IndexItem
{
public:
    virtual ~IndexItem() = default;

    /// The selected indices of a dimension of this size, in the order in which they are taken.
    virtual std::vector<std::uint64_t> resolve(std::uint64_t dimensionSize) const = 0;
    /// Whether this selects something in a dimension of this size.
    virtual bool isValid(std::uint64_t dimensionSize) const = 0;
    /// A new copy, owned by the caller.
    virtual IndexItem* clone() const = 0;

protected:
    constexpr IndexItem() noexcept = default;                  ///< selects what the derived class says
    constexpr IndexItem(const IndexItem&) noexcept = default;  ///< for derived classes; hosts call clone()
    IndexItem& operator=(const IndexItem&) noexcept = default; ///< for derived classes
};

/// One index, counted from the start or, with `fromEnd`, backward from the last one, which is 0.
///
/// Alone in its IndexSet it takes its dimension out of the result.
class QUAYCORE_EXPORT IndexValue final : public IndexItem
{
public:
    /// Any number is taken; whether it lies inside shows when a dimension is known.
    constexpr IndexValue(std::uint64_t value, bool fromEnd = false) noexcept
        : m_value(value)
        , m_fromEnd(fromEnd)
    {
    }

    std::uint64_t value() const noexcept { return m_value; } ///< as it was given
    bool fromEnd() const noexcept { return m_fromEnd; } ///< whether it counts backward from the last index

    /// The index itself, without a list around it.
    ///
    /// Errors: std::out_of_range "Index value out-of-range" past the last index, always in a dimension of size 0.
    std::uint64_t position(std::uint64_t dimensionSize) const;

    /// Errors: those of position().
    std::vector<std::uint64_t> resolve(std::uint64_t dimensionSize) const override;
    bool isValid(std::uint64_t dimensionSize) const override;
    IndexValue* clone() const override;

private:
    std::uint64_t m_value;
    bool m_fromEnd;
};

/// The indices from a first to a last one, both included, by a stride.
class QUAYCORE_EXPORT IndexRange final : public IndexItem
{
public:
    /// Start, step and number of the selected indices: a range as it is walked, without a list.
    struct Progression
    {
        std::uint64_t start;  ///< the first selected index
        std::uint64_t stride; ///< the distance of two neighbours
        std::uint64_t count;  ///< how many there are
    };

    /// Anything is taken; progression() tells what can't be.
    IndexRange(const IndexValue& first, const IndexValue& last, std::uint64_t stride = 1) noexcept
        : m_first(first)
        , m_last(last)
        , m_stride(stride)
    {
    }

    const IndexValue& first() const noexcept { return m_first; } ///< the first index, included
    const IndexValue& last() const noexcept { return m_last; }   ///< the last index, included
    std::uint64_t stride() const noexcept { return m_stride; }   ///< the distance of two selected indices

    /// What resolve lists.
    ///
    /// Errors: std::invalid_argument "The given ArraySlice is invalid." for a stride of 0; std::out_of_range "Index
    ///         value out-of-range" for an end past the dimension; std::length_error for a range that runs backward.
    /// Edge:   the number of entries is (end - start) / stride + 1 in unsigned 64 bits. A start one past the end
    ///         thus asks for none and is empty; one further back asks for more entries than there are indices and
    ///         fails, unless the stride is so long that they are not.
    ///         IndexRange::all, and a range made alike, selects nothing in a dimension of size 0; all others fail there.
    Progression progression(std::uint64_t dimensionSize) const;

    /// Errors: those of progression(); std::bad_alloc.
    std::vector<std::uint64_t> resolve(std::uint64_t dimensionSize) const override;
    /// Both ends are valid and the stride isn't 0.
    bool isValid(std::uint64_t dimensionSize) const override;
    IndexRange* clone() const override;

    /// A whole dimension: from the first index to the last one by 1.
    ///
    /// Threads: initialised at compile time, so it serves the static initialisers of any library.
    static const IndexRange all;

private:
    struct WholeDimension
    {
    };
    constexpr explicit IndexRange(WholeDimension) noexcept
        : m_first(0, false)
        , m_last(0, true)
        , m_stride(1)
    {
    }

    IndexValue m_first;
    IndexValue m_last;
    std::uint64_t m_stride;
};

/// The selectors of one dimension, taken one after the other. Owns them and clones them when it is copied.
///
/// Edge: a set without selectors selects nothing.
class QUAYCORE_EXPORT IndexSet
{
public:
    /// Stands for a selector in a braced list.
    class ItemReference
    {
    public:
        /// `item` must live until the set is made, as a temporary in the list does.
        ItemReference(const IndexItem& item) noexcept
            : m_item(&item)
        {
        }
        const IndexItem& get() const noexcept { return *m_item; } ///< the selector that it stands for

    private:
        const IndexItem* m_item;
    };

    IndexSet(); ///< no selectors
    /// Holds a clone of `item`.
    IndexSet(const IndexItem& item);
    /// Holds clones of the items: `IndexSet{IndexValue(0), IndexRange(2, 4)}`.
    IndexSet(std::initializer_list<ItemReference> items);
    /// Takes the items over. Errors: std::invalid_argument "The given ArraySlice is invalid." if one is missing.
    explicit IndexSet(std::vector<std::unique_ptr<IndexItem>> items);
    /// Holds clones of the items, which are all of one class.
    template <class Item, std::enable_if_t<std::is_base_of_v<IndexItem, Item>, int> = 0>
    explicit IndexSet(const std::vector<Item>& items)
    {
        for (const Item& item : items)
            append(item);
    }

    IndexSet(const IndexSet& other);                ///< clones every selector
    IndexSet(IndexSet&& other) noexcept;            ///< takes the selectors over; `other` has none afterwards
    IndexSet& operator=(const IndexSet& other);     ///< clones every selector; unchanged if a clone throws
    IndexSet& operator=(IndexSet&& other) noexcept; ///< takes the selectors over
    ~IndexSet();

    /// Adds a clone of `item`. Errors: std::invalid_argument "The given ArraySlice is invalid." if it makes none.
    void append(const IndexItem& item);

    std::size_t size() const noexcept { return m_items.size(); } ///< the number of selectors, not of indices
    /// Edge: unchecked; `position` must be below size().
    const IndexItem& operator[](std::size_t position) const noexcept { return *m_items[position]; }

private:
    std::vector<std::unique_ptr<IndexItem>> m_items;
};

/// What is taken from an array: one set per dimension, in order. The dimensions after the last set are taken whole.
using ArraySlice = std::vector<IndexSet>;

/// One set per index, each with one IndexValue.
QUAYCORE_EXPORT ArraySlice ArraySliceFromIndices(const std::vector<std::uint64_t>& indices);

/// The order in which SliceFlattener lists the offsets.
enum class UseDataOrdering
{
    RowMajor = 0,    ///< the last index of the result runs fastest, whatever the array's ordering
    ColumnMajor = 1, ///< the first index of the result runs fastest, whatever the array's ordering
    Source = 2,      ///< that of the array
};

/// Turns a slice of an array into storage offsets and the dimensions of the result.
///
/// Shape: a dimension selected by a single IndexValue drops out; when all drop out, one dimension of 1 stays.
class QUAYCORE_EXPORT SliceFlattener
{
public:
    /// Errors: std::invalid_argument "The given ArraySlice is invalid." for more sets than dimensions or a stride
    ///         of 0; std::out_of_range "Index value out-of-range" for a selector past its dimension, and "Indices
    ///         out of bounds." when a host's own selector lists an index past it; std::length_error for a backward
    ///         range or a result of more than 2^64 elements.
    /// Cost:   ranges are kept as ranges: no time or memory by their length.
    SliceFlattener(const ArraySlice& slice, ArrayDimensionsView dimensions, DataOrdering ordering,
                   UseDataOrdering use = UseDataOrdering::Source);
    SliceFlattener(const SliceFlattener&);                ///< a copy stands for itself: nothing is shared
    SliceFlattener(SliceFlattener&&) noexcept;            ///< the source may only be destroyed or assigned to
    SliceFlattener& operator=(const SliceFlattener&);     ///< as the copy
    SliceFlattener& operator=(SliceFlattener&&) noexcept; ///< as the move
    ~SliceFlattener();

    /// Dimensions of the result.
    const std::vector<std::uint64_t>& dimensions() const noexcept { return m_dimensions; }
    /// Elements of the result.
    std::uint64_t count() const noexcept { return m_count; }
    /// Whether every dimension dropped out: one element is read.
    bool isElement() const noexcept { return m_isElement; }

    /// The storage offset of each element of the result, in the result's order.
    std::vector<std::uint64_t> offsets() const;

    /// Elements that lie side by side in the array, `runLength` at a time, are taken together: the result is made
    /// of `count() / runLength` runs.
    std::uint64_t runLength() const noexcept { return m_runLength; }
    /// Whether the whole result is one run of the array, from `firstOffset` on.
    bool isContiguous() const noexcept { return m_runLength == m_count; }
    /// The storage offset of the first element of the result.
    std::uint64_t firstOffset() const noexcept { return m_firstOffset; }

    /// Called by forEachRun() with the state that it was given and a number of equally spaced runs.
    using Visit = void (*)(void* state, std::uint64_t offset, std::uint64_t distance, std::uint64_t number);
    /// Walks the runs: each call of `visit(state, offsets...)` gets the storage offset at which equally
    /// spaced runs begin, the distance between them in elements, and their number.
    /// Errors: what `visit` throws passes through.
    void forEachRun(Visit visit, void* state) const;

private:
    /// The selected indices of one dimension, times the distance of two neighbours in storage.
    struct Axis
    {
        std::uint64_t at(std::uint64_t i) const noexcept { return list.empty() ? i * step : list[i]; }

        std::uint64_t count = 0;
        std::uint64_t step = 0;               ///< of the progression, in storage elements
        std::vector<std::uint64_t> list = {}; ///< or the offsets themselves
    };

    void resolveDimension(const IndexSet* set, std::uint64_t size, std::uint64_t distance);
    void joinRuns();

    std::vector<std::uint64_t> m_dimensions;
    std::vector<Axis> m_axes; ///< slowest first; what is part of a run is left out
    std::uint64_t m_firstOffset = 0;
    std::uint64_t m_count = 0;
    std::uint64_t m_runLength = 1;
    bool m_isElement = false;
};
} // namespace Brindle::Quay
