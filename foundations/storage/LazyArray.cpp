#include "foundations/storage/LazyArray_p.h"

#include "foundations/storage/OneLine_p.h"
#include "foundations/storage/StorageError_p.h"
#include "foundations/storage/StoredElements_p.h"
#include "foundations/variant/HeapVariantData.h"
#include "foundations/variant/VariantOperations.h"

#include <algorithm>
#include <atomic>
#include <mutex>
#include <new>
#include <optional>
#include <stdexcept>
#include <utility>
#include <vector>

#include <unistd.h>

namespace Orrery {

using Brindle::Quay::ArrayDimensionsView;
using Brindle::Quay::BVariant;
using Brindle::Quay::DataOrdering;
using Brindle::Quay::HeapVariantData;
using Brindle::Quay::IVariantData;
using Brindle::Quay::WellKnownType;

namespace {

// An array up to this length of which so much was read in parts is kept from then on.
constexpr std::uint64_t s_worthKeeping = std::uint64_t(64) * 1024 * 1024;

// A longer one is kept when its parts have been fetched so often, as by somebody who picks elements here and there:
// each may cost a block. One that would take much of the machine's memory never is.
constexpr std::uint64_t s_patience = 4;
constexpr std::uint64_t s_longestKept = std::uint64_t(1) * 1024 * 1024 * 1024;

std::uint64_t LongestKept()
{
    static const std::uint64_t memory = static_cast<std::uint64_t>(std::max(::sysconf(_SC_PHYS_PAGES), 0L)) *
                                        static_cast<std::uint64_t>(std::max(::sysconf(_SC_PAGESIZE), 0L));
    return std::min(s_longestKept, memory / 4);
}

// Run a read, and turn what ends it into the one exception that a payload may throw.
template <class Operation>
auto Describing(const StoredArray& array, Operation operation)
{
    const auto fail = [&](const QString& what) {
        throw std::runtime_error(OneLine(array.Describe(what)).toStdString());
    };
    try {
        return operation();
    } catch (const StorageError& error) {
        fail(error.Text());
    } catch (const std::bad_alloc&) {
        fail(QStringLiteral("there isn't enough memory for the array"));
    } catch (const std::length_error&) {
        fail(QStringLiteral("there isn't enough memory for the array"));
    }
    throw std::runtime_error(std::string()); // not reached
}

// Whether those who read the array in parts are better off with all of it in memory.
bool IsWorthKeeping(const StoredArray& array, std::uint64_t readInParts)
{
    const std::uint64_t length = array.Record().storedBytes;
    if (length <= s_worthKeeping)
        return readInParts >= length;
    return length <= LongestKept() && array.FetchedForRuns() / s_patience >= length;
}

/// An array that becomes one in memory when its elements are asked for.
///
/// Locks, in this order: the StorageMutex; m_reading, which is held while the elements are read, so that it happens
/// once; m_mutex for a moment. What may be the last share of the file is let go with none of ours held.
class LazyPayload final : public HeapVariantData
{
public:
    LazyPayload(std::shared_ptr<const StoredFile> file, std::size_t row,
                std::vector<std::uint64_t> dimensions)
        : m_dimensions(std::move(dimensions))
        , m_element(file->Structure().rows[row].element)
        , m_ordering(file->Structure().rows[row].ordering == 0 ? DataOrdering::RowMajor
                                                               : DataOrdering::ColumnMajor)
        , m_row(row)
        , m_file(std::move(file))
    {
    }

    ArrayDimensionsView getDimensions() const override { return m_dimensions; }
    DataOrdering getDataOrdering() const override { return m_ordering; }
    WellKnownType getWellKnownType() const override { return m_element; }

    const void* constData() const override
    {
        const void* const elements = m_elements.load(std::memory_order_acquire);
        return elements ? elements : Load();
    }

    void* mutableData() override
    {
        constData();
        void* const elements = m_value.mutableData();
        m_elements.store(elements, std::memory_order_release);
        return elements;
    }

    IVariantData* detach() override;
    bool readRun(std::uint64_t first, std::uint64_t count, void* target) const override;

    /// The array in its file; null as soon as it has been read.
    std::shared_ptr<const StoredArray> Stored() const;

private:
    const void* Load() const;
    bool IsKept() const;
    void LetGoOfFile() const;

    std::vector<std::uint64_t> m_dimensions;
    WellKnownType m_element;
    DataOrdering m_ordering;
    std::size_t m_row;
    mutable std::mutex m_reading;
    mutable std::mutex m_mutex;
    mutable std::shared_ptr<const StoredFile> m_file;    ///< under m_mutex; null when the array has been read
    mutable std::shared_ptr<const StoredArray> m_stored; ///< the same; made when it is first asked for
    mutable std::atomic<std::uint64_t> m_readInParts{0}; ///< bytes that somebody got
    mutable std::atomic<bool> m_cannotBeKept{false};     ///< to keep it was tried, and failed
    mutable BVariant m_value;                            ///< written once, before m_elements
    mutable std::atomic<const void*> m_elements{nullptr};
};

std::shared_ptr<const StoredArray> LazyPayload::Stored() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (!m_stored && m_file)
        m_stored = std::make_shared<const StoredArray>(m_file, m_row);
    return m_stored;
}

const void* LazyPayload::Load() const
{
    const std::shared_ptr<const StoredArray> stored = Stored(); // outlives the locks below
    if (stored) {
        Describing(*stored, [&] {
            stored->Locate();
            std::optional<Hdf5Session> session;
            if (stored->IsCompressed())
                session.emplace();
            const std::lock_guard<std::mutex> lock(m_reading);
            if (m_elements.load(std::memory_order_acquire))
                return;
            m_value = StoredElements::Read(*stored);
            m_elements.store(m_value.constData(), std::memory_order_release);
        });
        stored->File().ForgetBlocks(m_row);
        LetGoOfFile();
    }
    return m_elements.load(std::memory_order_acquire);
}

void LazyPayload::LetGoOfFile() const
{
    std::shared_ptr<const StoredFile> file;
    std::shared_ptr<const StoredArray> stored;
    const std::lock_guard<std::mutex> lock(m_mutex);
    file.swap(m_file);
    stored.swap(m_stored);
}

bool LazyPayload::readRun(std::uint64_t first, std::uint64_t count, void* target) const
{
    if (m_elements.load(std::memory_order_acquire))
        return false;
    const std::shared_ptr<const StoredArray> stored = Stored();
    if (!stored || !StoredElements::HasRuns(*stored))
        return false;
    // One block is read as a whole anyway; it is kept unless all of it is asked for.
    if (stored->BlockCount() == 1 && count != getDimensions().elementCount())
        return false;
    const std::uint64_t before =
        m_readInParts.fetch_add(count * StoredElements::Size(*stored), std::memory_order_relaxed);
    if (IsWorthKeeping(*stored, before) && IsKept())
        return false;
    Describing(*stored, [&] { StoredElements::ReadRun(*stored, first, count, target); });
    return true;
}

// What can't be kept, for want of memory or because another part is damaged, goes on being read in parts.
bool LazyPayload::IsKept() const
{
    if (m_cannotBeKept.load(std::memory_order_relaxed))
        return false;
    try {
        Load();
        return true;
    } catch (const std::runtime_error&) {
        m_cannotBeKept.store(true, std::memory_order_relaxed);
        return false;
    }
}

// A shared array that hasn't been read is read for the one that is about to be written to; the others stay as they
// are, so that a write costs no second copy in memory.
IVariantData* LazyPayload::detach()
{
    BVariant own;
    const std::shared_ptr<const StoredArray> stored = isShared() ? Stored() : nullptr;
    if (stored) {
        own = Describing(*stored, [&] { return StoredElements::Read(*stored); });
    } else {
        constData();
        own = m_value;
        if (isShared())
            own.detach();
    }
    IVariantData* const payload = const_cast<IVariantData*>(std::as_const(own).payload());
    payload->addRef();
    release();
    return payload;
}

} // namespace

BVariant LazyArray::Make(std::shared_ptr<const StoredFile> file, std::size_t row)
{
    const CatalogueFormat::Row& entry = file->Structure().rows[row];
    ArrayRecord record = file->Structure().Array(entry);
    const DataOrdering ordering = entry.ordering == 0 ? DataOrdering::RowMajor : DataOrdering::ColumnMajor;
    const ArrayDimensionsView dimensions(record.dimensions);
    if (dimensions.elementCount() == 0)
        return createArray(WellKnownType(entry.element), dimensions, ordering);
    return BVariant::fromPayload(new LazyPayload(std::move(file), row, std::move(record.dimensions)));
}

std::shared_ptr<const StoredArray> LazyArray::Unread(const BVariant& value)
{
    const auto* const payload = dynamic_cast<const LazyPayload*>(value.payload());
    return payload ? payload->Stored() : nullptr;
}

} // namespace Orrery
